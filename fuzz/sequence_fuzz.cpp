// A sequence of calls that is decoded from the input: objects of all classes are created, passed to one another, read
// and released in any order, beside objects of a host's own whose answers come from the input too, and which call back
// and throw. Every result is one that the reference has, and in the end nothing may be alive.
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "fuzz/fuzz_target.h"
#include "persist/database_writer.h"
#include "tests/calls/any_object.h"
#include "tests/support/database_builder.h"

namespace qs {
namespace {

using namespace test;

constexpr std::size_t kMostObjects = 24;
constexpr int kMostSteps = 200;
constexpr int kDeepestCallback = 3;

// With '|' between them.
constexpr std::string_view kTexts =
    "|TC|VP|LDN|ViscosityThetas|VELUNIFACSubGr|Name|CASN|CompIdx|Default|NRTL|x|Value(1.5)|ClassName(x) ComContent(y)|"
    "{4CA3B834-4CB3-11D2-B8D4-00A0C986F9F7}|{2AB3CA21-4AD0-49C3-97E1-846ADD11538D}|"
    "{071B69C1-B6AF-4B88-A43D-C50C3A86E1FE}|<Compound VERSION='2' Name='a&amp;&#x20AC;'><Synonyms NUMB='1'>"
    "<Synonym NAME='s'/></Synonyms></Compound>|<Compound VERSION='2'><Synonyms NUMB='2'><Synonym NAME='a'/><Synonym/>"
    "</Synonyms><FixedProperty NAME='LDN' TYPE='COMProp' CLASSNAME='x'><PropertyContent CONTENT='ClassName(x) "
    "ComContent(y)'/></FixedProperty></Compound>|<CompoundCollection VERSION='2'><Compound VERSION='2' Name='n'/>"
    "<EmptySlot/></CompoundCollection>";
constexpr double kNumbers[] = {0, 1, 2, 3, -1, 4, 8, 63, 64, 300, 101.325, -32767, 1000, 1e300, 1e-300, 0.5};

// An object with its age: only what is older is passed to it, so that no two hold each other.
struct Held {
  ComPtr<IUnknown> object;
  int age;
  std::size_t kind;  // of its class, kClassCount for a host's own
};

class Sequence final : public Values {
 public:
  Sequence(const std::uint8_t* data, std::size_t size) : data_(data), end_(data + size) {}

  void run() {
    for (int i = 0; i < kMostSteps && data_ != end_; ++i) step();
  }

  HRESULT answer() override {
    if (answering_ == kDeepestCallback) return E_FAIL;
    const struct Depth {
      int& depth;
      explicit Depth(int& counter) : depth(++counter) {}
      ~Depth() { --depth; }
    } depth(answering_);
    switch (byte() % 16) {
      case 1:
        return S_FALSE;
      case 2:
        return E_FAIL;
      case 3:
        return E_OUTOFMEMORY;
      case 4:
        throw std::runtime_error("a host's own");
      case 5:
        throw 5;
      case 6:
      case 7:
        step();
        break;
      case 8:
        if (!objects_.empty()) objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(byte() % objects_.size()));
    }
    return S_OK;
  }

 private:
  std::uint8_t byte() { return data_ == end_ ? 0 : *data_++; }

  void step() {
    const std::uint8_t operation = byte();
    if (operation < 0x30) return add(operation % (kClassCount + 1));
    if (objects_.empty()) return;
    const std::size_t at = byte() % objects_.size();
    if (operation < 0x40) {
      objects_.erase(objects_.begin() + static_cast<std::ptrdiff_t>(at));
      return;
    }
    const Held target = objects_[at];
    if (target.kind == kClassCount) return;
    const auto& callable = membersOf(target);
    const int outer = std::exchange(age_, target.age);
    const Member& member = *callable[(byte() * 256u + operation) % callable.size()];
    require(isStated(member, member.call(target.object.get(), *this)));
    age_ = outer;
  }

  void add(std::size_t kind) {
    if (objects_.size() == kMostObjects) return;
    if (kind == kClassCount) {
      objects_.push_back({AnyObject::create(*this), ++youngest_, kind});
      return;
    }
    ComPtr<IUnknown> made;
    if (SUCCEEDED(made.create(kClasses[kind].clsid))) objects_.push_back({std::move(made), ++youngest_, kind});
  }

  // The members of the interfaces that objects of a class have.
  static const std::vector<const Member*>& membersOf(const Held& held) {
    static std::vector<std::vector<const Member*>> all(kClassCount);
    auto& found = all[held.kind];
    if (found.empty())
      for (const Member& member : members()) {
        ComPtr<IUnknown> face;
        held.object->QueryInterface(member.iid, face.outAny());
        if (face) found.push_back(&member);
      }
    return found;
  }

  double number() override { return kNumbers[byte() % std::size(kNumbers)]; }
  Bstr text() override {
    const std::size_t which = byte();
    if (which == 255) return {};
    if (which >= 248) return Bstr(database());
    if (which >= 224) {
      WideString raw;
      for (std::size_t length = which - 224; length > 0; --length) {
        const unsigned low = byte();
        raw += static_cast<OLECHAR>(low | (low < 0x20 ? byte() * 256u : 0u));
      }
      return Bstr(raw);
    }
    if (which >= 192 && !texts_.empty()) return Bstr(texts_[which % texts_.size()]);
    static const std::vector<WideString> texts = [] {
      std::vector<WideString> all;
      std::istringstream in{std::string(kTexts)};
      for (std::string text; std::getline(in, text, '|');) all.push_back(widen(text));
      return all;
    }();
    return Bstr(texts[which % texts.size()]);
  }
  ComPtr<IUnknown> object() override {
    const std::uint8_t which = byte();
    if (which < 8 || objects_.empty()) return {};
    if (which < 64) return AnyObject::create(*this);
    const Held& held = objects_[which % objects_.size()];
    // A callback may be in a member of any object.
    return held.age < age_ && answering_ == 0 ? held.object : ComPtr<IUnknown>();
  }
  Variant variant() override {
    switch (byte() % 4) {
      case 0:
        return Variant(number());
      case 1:
        return Variant(within<LONG>(number()));
      case 2:
        return Variant(ComPtr<IDispatch>::from(object().get()));
      default: {
        VARIANT value;
        VariantInit(&value);
        SAFEARRAYBOUND bounds[] = {{byte() % 8u, 0}, {byte() % 8u, 1}};
        value.vt = VT_ARRAY | VT_R8;
        value.parray = SafeArrayCreate(VT_R8, 1 + byte() % 2u, bounds);
        return Variant::adopt(value);
      }
    }
  }
  void take(const Bstr& result) override {
    if (texts_.size() == 8) texts_.erase(texts_.begin());
    texts_.emplace_back(result.view());
  }
  void take(const ComPtr<IUnknown>& result) override {
    if (!result || objects_.size() >= kMostObjects) return;
    const auto identity = ComPtr<IUnknown>::from(result.get());
    for (const Held& held : objects_)
      if (ComPtr<IUnknown>::from(held.object.get()).get() == identity.get()) return;
    for (std::size_t kind = 0; kind <= kClassCount; ++kind) {
      ComPtr<IUnknown> face;
      if (kind < kClassCount) result->QueryInterface(kClasses[kind].iid, face.outAny());
      if (face && ComPtr<IBasicPhase>::from(result.get()) && ComPtr<IBasicCompound>::from(result.get())) return;
      // As old as what it came from, which may hold it.
      if (face) return objects_.push_back({identity, age_, kind});
    }
  }

  // The directory of a database of two compounds.
  static const WideString& database() {
    static const TemporaryDirectory directory;
    static const WideString name = [] {
      std::vector<database::CompoundData> compounds(2);
      for (std::int32_t number = 1; database::CompoundData & each : compounds) {
        each.number = number++;
        each.name = each.cas = std::to_string(number);
        each.synonyms = {"uno"};
        each.constants[Key::TC] = 100.0 * number;
      }
      database::saveDatabase(database::encodeDatabase(compounds), directory.path());
      return directory.name();
    }();
    return name;
  }

  const std::uint8_t* data_;
  const std::uint8_t* end_;
  std::vector<Held> objects_;
  std::vector<WideString> texts_;
  int youngest_ = 0, age_ = 0, answering_ = 0;
};

}  // namespace

std::vector<std::string> fuzzSeeds() {
  std::vector<std::string> seeds;
  for (unsigned start = 0; start < 24; ++start) {
    std::string seed;
    for (unsigned i = 0; i <= kClassCount; ++i) seed += static_cast<char>((i + start) % (kClassCount + 1));
    for (unsigned i = 0, value = 1 + start; i < 400; ++i) {
      value = value * 1103515245 + 12345;
      seed += static_cast<char>(value >> 16);
    }
    seeds.push_back(seed);
  }
  return seeds;
}

}  // namespace qs

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qs::test::registerClasses();
  qs::Sequence(data, size).run();
  qs::require(qs::test::nothingAlive());
  return 0;
}
