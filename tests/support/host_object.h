// Objects of a host's own: a test derives and writes the methods that it needs.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>
#include <utility>

#include "interfaces/interfaces.h"

namespace qs::test {

// Lives on the stack of a test or in its fixture. When it goes, nothing may refer to it any more.
template <class I>
class HostUnknown : public I {
 public:
  ~HostUnknown() { EXPECT_EQ(references, 1u); }
  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    const bool known =
        IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IDispatch)) || IsEqualGUID(iid, __uuidof(I));
    *out = known ? static_cast<I*>(this) : nullptr;
    if (known) ++references;
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references; }
  STDMETHODIMP_(ULONG) Release() noexcept override {
    const ULONG left = --references;
    if (left == 1 && onRelease) std::exchange(onRelease, {})();
    return left;
  }

  ULONG references = 1;
  std::function<void()> onRelease;  // runs once, when nothing else refers to the object any more

 protected:
  template <class... Arguments>
  static HRESULT missing(Arguments...) {
    return E_NOTIMPL;
  }
};

template <class I>
class HostObject : public HostUnknown<I> {};
template <class I>
requires std::is_base_of_v<IDispatch, I>
class HostObject<I> : public HostUnknown<I> {
 public:
  STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
    return E_NOTIMPL;
  }
};

// An object with an interface whose methods are not there.
template <class I>
class Stub;
#define INTERFACE_BEGIN(I)               \
  template <>                            \
  class Stub<I> : public HostObject<I> { \
   public:
#define MEMBER(I, name, parameters, arguments) \
  STDMETHODIMP name parameters override { return missing arguments; }
#define INTERFACE_END(I) \
  }                      \
  ;
#include "members.def"
#undef INTERFACE_END
#undef MEMBER
#undef INTERFACE_BEGIN

// Whether an exception passes from one module to another; in a 32-bit process on Windows it ends the process.
inline constexpr bool kExceptionsPass = sizeof(void*) == 8 || !std::is_same_v<OLECHAR, wchar_t>;

// An external property of which a test writes the value alone.
class HostProperty : public Stub<IPCProperty> {
 public:
  STDMETHODIMP Store(BSTR* text) noexcept override {
    *text = nullptr;
    return S_OK;
  }
};

}  // namespace qs::test
