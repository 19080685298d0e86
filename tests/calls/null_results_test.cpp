// What every member of every class does where it can return nothing.
#include "tests/calls/calls.h"
#include "tests/support/component_test.h"

namespace qs::test {
namespace {

template <class T>
struct Argument {
  static constexpr bool kIsResult = false;
  T pass() { return {}; }
  bool isNull() const { return true; }
};
// A place for a result.
template <class T>
requires(!std::is_same_v<T, OLECHAR> && !std::is_base_of_v<IUnknown, T>) struct Argument<T*> {
  static constexpr bool kIsResult = true;
  T* pass() {
    if constexpr (std::is_pointer_v<T>) result = reinterpret_cast<T>(1);
    return &result;
  }
  bool isNull() const {
    if constexpr (std::is_pointer_v<T>) return !result;
    return true;
  }
  T result{};
};
// The null pointers of a member that returns something are refused. A collection's member that finds nothing returns
// null for every object and text.
template <class I, class... Types>
void call(IUnknown* object, HRESULT (STDMETHODCALLTYPE I::*member)(Types...), std::string_view name) {
  // These are called at every state of a calculation, and do not look.
  constexpr bool isValue = std::is_same_v<void(Types...), void(double, double, tagExtrapolationEnum, LONG*, double*)>;
  const auto found = ComPtr<I>::from(object);
  if constexpr ((Argument<Types>::kIsResult || ...) && !isValue) {
    if (!found || name.ends_with("TPRange")) return;
    const HRESULT refused = (found.get()->*member)(Types{}...);
    EXPECT_TRUE(refused == E_POINTER || refused == E_NOTIMPL) << name;
    const bool isThere = ((std::is_same_v<Types, INT*> || std::is_same_v<Types, LONG*>) || ...) ||
                         name.starts_with("Store") || name == "get_LastError" || name == "get__NewEnum";
    if (!ComPtr<ICompoundCollection>::from(object) || isThere) return;
    std::tuple<Argument<Types>...> arguments;
    std::apply(
        [&](auto&... each) {
          EXPECT_NE((found.get()->*member)(each.pass()...), S_OK) << name;
          EXPECT_TRUE((each.isNull() && ...)) << name;
        },
        arguments);
  }
}

using NullResults = ComponentTest;

TEST_F(NullResults, AreRefusedAndReturned) {
  for (const CreatableClass& each : std::span(kClasses, kClassCount)) {
    SCOPED_TRACE(each.name);
    const auto object = create<IUnknown>(each.clsid);
#define INTERFACE_BEGIN(I)
#define MEMBER(I, name, parameters, arguments) call<I>(object.get(), &I::name, #name);
#define INTERFACE_END(I)
#include "members.def"
#undef INTERFACE_END
#undef MEMBER
#undef INTERFACE_BEGIN
  }
}

}  // namespace
}  // namespace qs::test
