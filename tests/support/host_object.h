// The part of a host's own objects that does not matter to a test: identity, a visible reference count and dispatch
// methods that are not there. A test derives and writes the interface's own methods.
#pragma once

#include <gtest/gtest.h>

#include <type_traits>

#include "interfaces/interfaces.h"

namespace qs::test {

// Lives on the stack of a test or in its fixture. When it goes, nothing may refer to it any more.
template <class I>
class HostObject : public I {
 public:
  ~HostObject() { EXPECT_EQ(references, 1u); }
  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    const bool known =
        IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IDispatch)) || IsEqualGUID(iid, __uuidof(I));
    *out = known ? static_cast<I*>(this) : nullptr;
    if (known) ++references;
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references; }
  STDMETHODIMP_(ULONG) Release() noexcept override { return --references; }
  STDMETHODIMP GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
    return E_NOTIMPL;
  }

  ULONG references = 1;
};

// Whether an exception passes from one module to another; in a 32-bit process on Windows it ends the process.
inline constexpr bool kExceptionsPass = sizeof(void*) == 8 || !std::is_same_v<OLECHAR, wchar_t>;

// An external property of which a test writes the value alone.
class HostProperty : public HostObject<IPCProperty> {
 public:
  STDMETHODIMP GetClassID(BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetClassName(BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Store(BSTR* text) noexcept override {
    *text = nullptr;
    return S_OK;
  }
  STDMETHODIMP Recall(BSTR) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Copy(IPCProperty*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetMethod(BSTR*) noexcept override { return E_NOTIMPL; }
};

}  // namespace qs::test
