// Runs the files *.calls: calls of members by their names, and what each must return.
//
// A line at the margin is the title of a test; the indented lines below it are its steps, `name = call -> expected`,
// where both ends may be missing. `%` stands for each of the words in braces at the end of the title. A call is
//   Class                      a new object of a class
//   object.Member arguments    with numbers, words, 'texts', objects, arrays, and - for null; Interface::Member names
//                              one of the members that have the same name
//   object                     the object itself
//   compounds ab_              a new collection of compounds with these names; _ is an empty slot
//   compound a                 a new compound with a name
//   host                       an object of a host's own with every interface
//   phases 3 2                 a new phase collection with three equilibrium phases and two feeds
// Behind ` | ` may stand what LastError of the object returns after the call; paths are then without the source folder.
// An array is [1 2] of integers or [1.0 2] of reals, and /tests a path in the source folder. Expected are the result,
// unless it is S_OK, and all out-parameters; without `->` the result is S_OK. An object is shown by its name, or else
// by its content.
#include <cstdlib>
#include <map>
#include <stdexcept>

#include "tests/calls/any_object.h"
#include "tests/support/collections.h"
#include "tests/support/files.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

using Words = std::vector<std::string>;

// Divided at blanks that stand neither in quotes nor in brackets.
Words wordsOf(const std::string& line) {
  Words words(1);
  char closing = 0;
  for (const char c : line) {
    if (c == ' ' && !closing)
      words.emplace_back();
    else
      words.back() += c;
    if (closing)
      closing = c == closing ? '\0' : closing;
    else
      closing = c == '\'' ? '\'' : c == '[' ? ']' : '\0';
  }
  std::erase(words, "");
  return words;
}

struct Transcript {
  std::string file, title;
  std::vector<std::pair<int, std::string>> steps;  // each with the number of its line
};
void PrintTo(const Transcript& transcript, std::ostream* out) { *out << transcript.file << ": " << transcript.title; }

std::vector<Transcript> readTranscripts() {
  std::vector<Transcript> all;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kSourceFolder / "tests")) {
    if (entry.path().extension() != ".calls") continue;
    std::ifstream in(entry.path());
    int number = 1;
    for (std::string line; std::getline(in, line); ++number) {
      if (line.empty() || line.front() == '#') continue;
      if (line.front() == ' ')
        all.back().steps.emplace_back(number, line);
      else
        all.push_back({entry.path().filename().string(), line, {}});
    }
  }
  return all;
}

// A result other than S_OK as text.
std::string codeOf(HRESULT result) {
  static const std::map<HRESULT, const char*> kNames{{S_OK, ""},
                                                     {S_FALSE, " S_FALSE"},
                                                     {E_FAIL, " E_FAIL"},
                                                     {E_INVALIDARG, " E_INVALIDARG"},
                                                     {E_OUTOFMEMORY, " E_OUTOFMEMORY"},
                                                     {E_NOINTERFACE, " E_NOINTERFACE"},
                                                     {E_BOUNDS, " E_BOUNDS"},
                                                     {E_NOTIMPL, " E_NOTIMPL"},
                                                     {CO_E_CLASSSTRING, " CO_E_CLASSSTRING"},
                                                     {REGDB_E_CLASSNOTREG, " REGDB_E_CLASSNOTREG"},
                                                     {DISP_E_TYPEMISMATCH, " DISP_E_TYPEMISMATCH"},
                                                     {DISP_E_OVERFLOW, " DISP_E_OVERFLOW"},
                                                     {0x000406DC, " REMOVED"}};
  const auto found = kNames.find(result);
  return found == kNames.end() ? " " + std::to_string(result) : found->second;
}

// The objects of a transcript by their names, and the arguments and results of its calls.
class Objects final : public Values {
 public:
  // What a step returns, as text.
  std::string run(Words words) {
    std::string name;
    if (words.size() > 2 && words[1] == "=") {
      name = words[0];
      words.erase(words.begin(), words.begin() + 2);
    }
    arguments_.assign(words.rbegin(), words.rend() - 1);
    shown_.str({});
    const std::size_t dot = words[0].find('.');
    const HRESULT result =
        dot == std::string::npos ? make(words[0]) : call(words[0].substr(0, dot), words[0].substr(dot + 1));
    if (!arguments_.empty()) throw std::runtime_error("too many arguments");
    if (!name.empty()) objects_[name] = last_;
    return codeOf(result) + shown_.str();
  }

  std::string lastErrorOf(const std::string& object) {
    std::string sentence = narrow(got(objects_.at(object), &ILastError::get_LastError));
    const std::string folder = kSourceFolder.string();
    for (std::size_t at; (at = sentence.find(folder)) != std::string::npos;) sentence.erase(at, folder.size());
    std::ranges::replace(sentence, '\\', '/');
    return sentence;
  }

 private:
  struct Host final : Values {
    double number() override { return 0; }
  };

  HRESULT call(const std::string& object, const std::string& name) {
    for (const Member& member : members()) {
      ComPtr<IUnknown> found;
      if ((name == member.name || name == std::string(member.face) + "::" + member.name) &&
          objects_.at(object)->QueryInterface(member.iid, reinterpret_cast<void**>(found.out())) == S_OK) {
        const HRESULT result = member.call(found.get(), *this);
        EXPECT_TRUE(isStated(member, result)) << "interfaces/reference.txt lacks a result of " << name;
        return result;
      }
    }
    throw std::runtime_error("no member " + name);
  }
  HRESULT make(const std::string& word) {
    const auto* known =
        std::find_if(kClasses, kClasses + kClassCount, [&](const auto& each) { return each.name == word; });
    if (objects_.contains(word)) {
      shown_ << ' ' << contentOf(objects_[word].get());
      last_ = objects_[word];
    } else if (word == "compounds") {
      std::string letters = arguments_.empty() ? "" : next();
      std::ranges::replace(letters, '_', ' ');
      last_ = ComPtr<IUnknown>(CollectionTest::collectionOf(letters).get());
    } else if (word == "host") {
      last_ = AnyObject::create(host_);
    } else if (word == "compound") {
      last_ = ComPtr<IUnknown>(CollectionTest::named(widen(next())).get());
    } else if (word == "phases") {
      const auto compounds = CollectionTest::collectionOf("  ");
      const auto equilibrium = static_cast<INT>(number()), feeds = static_cast<INT>(number());
      last_ = ComPtr<IUnknown>(PhaseTest::phasesOf(compounds.get(), equilibrium, feeds).get());
    } else if (known != kClasses + kClassCount) {
      last_ = host::createInstance<IUnknown>(known->clsid);
    } else {
      throw std::runtime_error("no object " + word);
    }
    return S_OK;
  }

  std::string next() {
    if (arguments_.empty()) throw std::runtime_error("too few arguments");
    std::string word = std::move(arguments_.back());
    arguments_.pop_back();
    return word;
  }
  double number() override { return std::stod(next()); }
  Bstr text() override {
    const std::string word = next();
    if (word == "-") return {};
    if (word.front() == '/') return Bstr(widen(kSourceFolder.string() + word));
    return Bstr(widen(word.front() == '\'' ? word.substr(1, word.size() - 2) : word));
  }
  ComPtr<IUnknown> object() override {
    const std::string word = next();
    if (word.front() != '[') return word == "-" ? ComPtr<IUnknown>() : objects_.at(word);
    std::vector<double> values;
    for (const std::string& value : wordsOf(word.substr(1, word.size() - 2))) values.push_back(std::stod(value));
    if (word.find('.') != std::string::npos) return ComPtr<IUnknown>(CompoundTest::reals(values).get());
    return ComPtr<IUnknown>(CompoundTest::integers({values.begin(), values.end()}).get());
  }
  Variant variant() override {
    const std::string word = arguments_.empty() ? "-" : arguments_.back();
    if (word.front() == '\'') return PhaseTest::text(text().get());
    if (word.front() == '[' || objects_.contains(word)) return Variant(ComPtr<IDispatch>::from(object().get()));
    if (word == "empty") return next(), Variant();
    return Variant(number());
  }

  void take(double result) override { shown_ << ' ' << result; }
  void take(const Bstr& result) override { shown_ << ' ' << (result ? narrow(result.view()) : "-"); }
  void take(const ComPtr<IUnknown>& result) override {
    const auto same = [&](const auto& known) {
      return ComPtr<IUnknown>::from(known.second.get()).get() == ComPtr<IUnknown>::from(result.get()).get();
    };
    const auto known = std::ranges::find_if(objects_, same);
    shown_ << ' ' << (!result ? "-" : known != objects_.end() ? known->first : contentOf(result.get()));
    last_ = result;
  }
  void take(const Variant& result) override {
    const VARIANT& value = result.get();
    if (value.vt == VT_R8) take(value.dblVal);
    if (value.vt == VT_I4) shown_ << " (I4)" << value.lVal;
    if (value.vt == VT_BSTR) shown_ << ' ' << narrow(viewOf(value.bstrVal));
    if (value.vt == VT_DISPATCH) take(ComPtr<IUnknown>(value.pdispVal));
    if (value.vt == VT_EMPTY) shown_ << " empty";
  }

  static std::string contentOf(IUnknown* object) {
    if (const auto list = ComPtr<ICompoundCollection>::from(object)) {
      std::string letters = CollectionTest::lettersOf(list);
      std::ranges::replace(letters, ' ', '_');
      return letters.empty() ? "empty" : letters;
    }
    if (const auto phases = ComPtr<IPhaseCollection>::from(object)) return PhaseTest::slotsOf(phases);
    if (const auto phase = ComPtr<IBasicPhase>::from(object)) return PhaseTest::stateOf(phase);
    if (const auto compound = ComPtr<ICompoundID>::from(object)) return narrow(got(compound, &ICompoundID::get_Name));
    std::ostringstream text;
    if (ComPtr<IRealArrayDisp>::from(object))
      for (const double value : realsIn(object)) text << ' ' << value;
    else if (const auto integers = ComPtr<IIntegerArrayDisp>::from(object))
      for (const LONG value : valuesOf(integers.get())) text << ' ' << value;
    else
      return "object";
    return '[' + text.str().erase(0, 1) + ']';
  }

  Host host_;
  std::map<std::string, ComPtr<IUnknown>> objects_;
  ComPtr<IUnknown> last_;
  Words arguments_;  // of the call, the last one first
  std::ostringstream shown_;
};

class Calls : public ComponentTest, public testing::WithParamInterface<Transcript> {};

TEST_P(Calls, ReturnWhatIsWritten) {
  const std::string& title = GetParam().title;
  const std::size_t brace = title.find('{');
  Words kinds{""};
  if (brace != std::string::npos) kinds = wordsOf(title.substr(brace + 1, title.size() - brace - 2));
  for (const std::string& kind : kinds) {
    Objects objects;
    for (auto [number, line] : GetParam().steps) {
      for (std::size_t at; (at = line.find('%')) != std::string::npos;) line.replace(at, 1, kind);
      SCOPED_TRACE(GetParam().file + ':' + std::to_string(number) + ": " + line);
      const std::size_t bar = line.find(" | ");
      const std::string sentence = bar == std::string::npos ? "" : line.substr(bar + 3);
      line.erase(std::min(bar, line.size()));
      const std::size_t arrow = line.find(" -> ");
      const std::string returned = objects.run(wordsOf(line.substr(0, arrow)));
      if (arrow != std::string::npos) {
        EXPECT_EQ(returned, line.substr(arrow + 3));
      } else {
        EXPECT_FALSE(returned.starts_with(" S_") || returned.starts_with(" E_")) << returned;
      }
      if (!sentence.empty()) {
        EXPECT_EQ(objects.lastErrorOf(line.substr(2, line.find('.') - 2)), sentence);
      }
    }
  }
}
INSTANTIATE_TEST_SUITE_P(Written, Calls, testing::ValuesIn(readTranscripts()));

}  // namespace
}  // namespace qs::test
