#include "tests/failures/scenario.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace qs::test {
namespace {

std::vector<std::string> words(const std::string& line) {
  std::vector<std::string> found;
  std::istringstream in(line);
  for (std::string word; in >> word;) {
    if (word.front() == '\'')
      while (word.size() < 2 || word.back() != '\'') {
        std::string more;
        if (!(in >> more)) throw std::runtime_error("open text: " + line);
        word += ' ' + more;
      }
    found.push_back(word);
  }
  return found;
}

Step stepOf(const std::string& line) {
  Step step;
  auto all = words(line);
  if (const auto equals = std::ranges::find(all, "="); equals != all.end()) {
    step.results.assign(all.begin(), equals);
    all.erase(all.begin(), equals + 1);
  }
  const std::size_t dot = all.at(0).find('.');
  step.object = all[0].substr(0, dot);
  if (dot != std::string::npos) step.member = all[0].substr(dot + 1);
  step.arguments.assign(all.begin() + 1, all.end());
  return step;
}

// Steps with " ; " between them.
std::vector<Step> stepsOf(const std::string& line) {
  std::vector<Step> steps;
  std::size_t begin = 0;
  for (std::size_t end; (end = line.find(" ; ", begin)) != std::string::npos; begin = end + 3)
    steps.push_back(stepOf(line.substr(begin, end - begin)));
  steps.push_back(stepOf(line.substr(begin)));
  return steps;
}

}  // namespace

std::vector<Scenario> readScenarios(std::istream& in) {
  std::vector<Scenario> scenarios;
  std::map<std::string, std::vector<Step>> preludes;
  std::vector<Step> first;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line.front() == '#') continue;
    if (const std::size_t colon = line.find(": "); line.starts_with("with ")) {
      first.clear();
      for (const std::string& name : words(line.substr(5)))
        std::ranges::copy(preludes.at(name), std::back_inserter(first));
    } else if (line.front() == '@') {
      preludes[line.substr(1, colon - 1)] = stepsOf(line.substr(colon + 2));
    } else {
      Scenario scenario{line, {}, false, false, first};
      for (std::size_t option; (option = line.rfind(" !")) != std::string::npos; line.erase(option)) {
        scenario.partial |= line.substr(option) == " !partial";
        scenario.isLong |= line.substr(option) == " !long";
        if (line.substr(option) == " !E_FAIL") scenario.allowed.push_back(E_FAIL);
      }
      std::ranges::copy(stepsOf(line), std::back_inserter(scenario.steps));
      scenarios.push_back(scenario);
    }
  }
  return scenarios;
}

// What an object's members tell that only read it, for a few numbers as arguments.
class Call::Reader final : public Values {
 public:
  Reader(std::ostream& out, bool deep) : out_(out), deep_(deep) {}
  void read(IUnknown* object) {
    if (ComPtr<IBasicCompound>::from(object) && ComPtr<IBasicPhase>::from(object)) return;  // a host's own
    for (const Member& member : members()) {
      const std::string_view name = member.name;
      if (name.ends_with("LastError")) continue;  // of the thread, not of the object
      // What the typed getters tell of a compound's properties is in its exact form.
      if (name.ends_with("TPRange") || (name.starts_with("get_") && member.arguments == kValueArguments)) continue;
      const bool form = name == "StoreAsXMLEx";
      if (!form && !name.starts_with("get_") && !name.starts_with("Get") && name != "CompCollnIPInfo" && name != "Size")
        continue;
      asked_ = false;
      for (const int number : {form ? 3 : 0, 1}) {
        number_ = number;
        const HRESULT hr = member.call(object, *this);
        if (hr == E_NOINTERFACE) break;
        out_ << ' ' << member.name << ' ' << hr << '\n';
        if (!asked_ || form) break;
      }
    }
  }

 private:
  static constexpr std::size_t kValueArguments = 5;

  double number() override {
    asked_ = true;
    return number_;
  }
  void take(double result) override { out_ << ' ' << result; }
  void take(const Bstr& result) override { out_ << ' ' << narrow(result.view()); }
  void take(const ComPtr<IUnknown>& result) override {
    out_ << (result ? " object" : " null");
    const bool small = ComPtr<IRealArrayDisp>::from(result.get()) || ComPtr<IIntegerArrayDisp>::from(result.get()) ||
                       ComPtr<IRealMatrixDisp>::from(result.get()) || ComPtr<IBasicPhase>::from(result.get());
    if (deep_ && small) Reader(out_, false).read(result.get());
  }
  void take(const Variant& result) override { out_ << ' ' << result.get().vt; }

  std::ostream& out_;
  bool deep_;
  int number_ = 0;
  bool asked_ = false;
};

Call::Call(const std::map<std::string, std::string>& texts) {
  for (const auto& [name, text] : texts) texts_[name] = widen(text);
}

HRESULT Call::run(const Step& step) {
  step_ = &step;
  nextArgument_ = nextResult_ = 0;
  if (step.member.empty()) return createObject(step);
  for (const Member& member : members()) {
    if (step.member != member.name) continue;
    const HRESULT hr = member.call(objectNamed(step.object), *this);
    if (hr == E_NOINTERFACE) continue;
    if (!isStated(member, hr)) throw std::runtime_error("interfaces/reference.txt lacks a result of " + step.member);
    return hr;
  }
  throw std::runtime_error("no member " + step.object + '.' + step.member);
}

std::string Call::description() {
  std::ostringstream text;
  for (const auto& [name, object] : objects_) Reader(text << name << ":\n", true).read(object.get());
  for (const auto& [name, value] : texts_) text << name << ": " << narrow(value) << '\n';
  return text.str();
}

double Call::number() { return std::strtod(argument().c_str(), nullptr); }

Bstr Call::text() {
  std::string word = argument();
  if (word == "-") return {};
  if (word.front() == '$') return Bstr(texts_.at(word.substr(1)));
  if (word.front() == '\'') word = word.substr(1, word.size() - 2);
  return Bstr(widen(word));
}

ComPtr<IUnknown> Call::object() {
  const std::string& name = argument();
  return ComPtr<IUnknown>(name == "-" ? nullptr : objectNamed(name));
}

Variant Call::variant() {
  const std::string& word = argument();
  if (objects_.contains(word)) return Variant(ComPtr<IDispatch>::from(objectNamed(word)));
  VARIANT value;
  VariantInit(&value);
  if (word.front() == '\'') {
    --nextArgument_;
    value.vt = VT_BSTR;
    value.bstrVal = text().release();
    return Variant::adopt(value);
  }
  if (word.front() != '[') return Variant(std::strtod(word.c_str(), nullptr));
  SAFEARRAYBOUND bound{3, 0};
  value.vt = VT_ARRAY | VT_R8;
  value.parray = SafeArrayCreate(VT_R8, 1, &bound);
  return Variant::adopt(value);
}

const std::string& Call::argument() {
  if (nextArgument_ == step_->arguments.size()) throw std::runtime_error("too few arguments for " + step_->member);
  return step_->arguments[nextArgument_++];
}

std::string Call::resultName() {
  return nextResult_ < step_->results.size() ? step_->results[nextResult_++] : "result" + std::to_string(nextResult_++);
}

IUnknown* Call::objectNamed(const std::string& name) const {
  const auto found = objects_.find(name);
  if (found == objects_.end()) throw std::runtime_error("no object " + name);
  return found->second.get();
}

HRESULT Call::createObject(const Step& step) {
  const std::string& name = step.results.at(0);
  if (step.object == "host") {
    objects_[name] = AnyObject::create(host_);
    return S_OK;
  }
  for (std::size_t i = 0; i < kClassCount; ++i) {
    if (step.object != kClasses[i].name) continue;
    ComPtr<IUnknown> made;
    begin();
    const HRESULT hr = made.create(kClasses[i].clsid);
    end(hr);
    if (SUCCEEDED(hr)) objects_[name] = std::move(made);
    return hr;
  }
  throw std::runtime_error("no class " + step.object);
}

}  // namespace qs::test
