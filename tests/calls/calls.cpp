#include "tests/calls/calls.h"

#include <algorithm>
#include <initializer_list>
#include <stdexcept>
#include <string_view>
#include <tuple>

#include "hostkit/module_loader.h"

namespace qs::test {
namespace {

// An argument that a call passes.
template <class T, class Held = T>
struct Input {
  void finish(Values&) {}
  auto pass() {
    if constexpr (std::is_same_v<T, Held>)
      return value;
    else
      return value.get();
  }
  Held value;
};
template <class T>
struct Argument : Input<T> {
  explicit Argument(Values& values) : Input<T>{within<T>(values.number())} {}
};
template <>
struct Argument<BSTR> : Input<BSTR, Bstr> {
  explicit Argument(Values& values) : Input{values.text()} {}
};
template <>
struct Argument<VARIANT> : Input<VARIANT, Variant> {
  explicit Argument(Values& values) : Input{values.variant()} {}
};
template <class I>
requires std::is_base_of_v<IUnknown, I>
struct Argument<I*> : Input<I*, ComPtr<I>> {
  explicit Argument(Values& values) : Input<I*, ComPtr<I>>{ComPtr<I>::from(values.object().get())} {}
};

// A place for a result of a call.
template <class T>
struct Argument<T*> {
  explicit Argument(Values&) {}
  T* pass() { return &value; }
  void finish(Values& values) {
    using Number = std::conditional_t<std::is_enum_v<T>, LONG, T>;
    values.take(static_cast<double>(static_cast<Number>(value)));
  }
  T value{};
};
template <>
struct Argument<BSTR*> {
  explicit Argument(Values&) {}
  BSTR* pass() { return value.out(); }
  void finish(Values& values) { values.take(value); }
  Bstr value;
};
template <>
struct Argument<VARIANT*> {
  explicit Argument(Values&) {}
  ~Argument() { VariantClear(&value); }
  Argument(Argument&&) = default;
  VARIANT* pass() { return &value; }
  void finish(Values& values) {
    values.take(Variant::adopt(value));
    VariantInit(&value);
  }
  VARIANT value{};
};
template <class I>
struct Argument<I**> {
  explicit Argument(Values&) {}
  I** pass() { return value.out(); }
  void finish(Values& values) { values.take(ComPtr<IUnknown>(value.get())); }
  ComPtr<I> value;
};

constexpr bool contains(std::initializer_list<std::string_view> names, std::string_view name) {
  for (const std::string_view each : names)
    if (each == name) return true;
  return false;
}
// Members that give without a reference, and members that take over the caller's.
constexpr bool lends(std::string_view name) {
  return contains({"GetOffsetH", "GetOffsetS", "get_MolarCompositionDisp", "GetLnFugacity", "GetLnFugacityCoeff"},
                  name);
}
constexpr bool takesOver(std::string_view name) { return contains({"PutOffsetH", "PutOffsetS"}, name); }

template <class I, class... Types>
HRESULT callMember(HRESULT (STDMETHODCALLTYPE I::*member)(Types...), std::string_view name, IUnknown* object,
                   Values& values) {
  const auto face = ComPtr<I>::from(object);
  if (!face) return E_NOINTERFACE;
  std::tuple<Argument<Types>...> arguments{Argument<Types>(values)...};
  return std::apply(
      [&](Argument<Types>&... each) {
        values.begin();
        const HRESULT hr = (face.get()->*member)(each.pass()...);
        values.end(hr);
        [[maybe_unused]] const auto settle = [&](auto& argument) {
          if constexpr (requires { argument.value->AddRef(); }) {
            if (lends(name) && argument.value) argument.value->AddRef();
            if (takesOver(name)) argument.value.release();
          }
          if (SUCCEEDED(hr)) argument.finish(values);
        };
        (settle(each), ...);
        return hr;
      },
      arguments);
}

template <class I, class... Types>
constexpr std::size_t argumentsOf(HRESULT (STDMETHODCALLTYPE I::*)(Types...)) {
  return sizeof...(Types);
}

host::LoadedModule* modules[2];

}  // namespace

std::span<const Member> members() {
#define INTERFACE_BEGIN(I)
#define INTERFACE_END(I)
#define MEMBER(I, name, parameters, arguments)       \
  {#I, #name, __uuidof(I), argumentsOf<I>(&I::name), \
   [](IUnknown* object, Values& values) -> HRESULT { return callMember<I>(&I::name, #name, object, values); }},
  static constexpr Member kMembers[] = {
#include "members.def"
  };
#undef MEMBER
#undef INTERFACE_END
#undef INTERFACE_BEGIN
  return kMembers;
}

#define CLASS(name, I) \
  { #name, __uuidof(::name), __uuidof(I) }
const CreatableClass kClasses[] = {CLASS(COQSCompound, IBasicCompound),
                                   CLASS(COQSCompoundCollection, ICompoundCollection),
                                   CLASS(COQSPhase, IBasicPhase),
                                   CLASS(COQSPhaseCollection, IPhaseCollection),
                                   CLASS(HostIntegerArray, IIntegerArrayDisp),
                                   CLASS(HostRealArray, IRealArrayDisp),
                                   CLASS(HostRealMatrix, IRealMatrixDisp),
                                   CLASS(JsonLoader, ILoad),
                                   CLASS(JobackEstimator, IPurePropEstimator),
                                   CLASS(PropertyRegistry, IEnumeratedPropertyRegistry),
                                   CLASS(PhaseActivator, IPhaseCollectionActor),
                                   CLASS(AttributeSet, TaggedAttributes),
                                   CLASS(XMLParser, IXMLParser)};
#undef CLASS
const std::size_t kClassCount = std::size(kClasses);

bool isStated(const Member& member, HRESULT result) {
  struct Row {
    std::string_view face, name;
    bool passesFailuresOn;
    std::initializer_list<HRESULT> codes;
  };
  static const Row kRows[] = {
#include "results.def"
  };
  const auto* row = std::ranges::find_if(
      kRows, [&](const Row& each) { return each.face == member.face && each.name == member.name; });
  return row != std::end(kRows) &&
         (std::ranges::count(row->codes, result) > 0 || (row->passesFailuresOn && FAILED(result)));
}

void registerClasses() {
  if (modules[0]) return;
  modules[0] = new host::LoadedModule("qscontainers");
  modules[1] = new host::LoadedModule("qshostkit");
  for (const CreatableClass& each : kClasses)
    if (FAILED(modules[0]->registerClass(each.clsid)) && FAILED(modules[1]->registerClass(each.clsid)))
      throw std::runtime_error(std::string("no class ") + each.name);
}

bool nothingAlive() { return modules[0]->canUnloadNow() == S_OK && modules[1]->canUnloadNow() == S_OK; }

}  // namespace qs::test
