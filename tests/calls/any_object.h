// An object of a host's own that has every interface of the system. All its members are answered in one place.
#pragma once

#include <memory>

#include "tests/calls/calls.h"

namespace qs::test {

template <class I>
class AnyInterface;

class AnyObject {
 public:
  // A new object with one reference. What its members answer comes from `values`, which must outlive it.
  static ComPtr<IUnknown> create(Values& values);

  virtual HRESULT query(REFIID iid, void** out) = 0;
  ULONG addReference() { return ++references_; }
  ULONG release() {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  Values& values() { return values_; }

 protected:
  explicit AnyObject(Values& values) : values_(values) {}
  virtual ~AnyObject() = default;

 private:
  Values& values_;
  ULONG references_ = 1;
};

// The members that AnyInterface<I> does not get from members.def.
template <class I>
class InterfaceBase : public I {
 public:
  explicit InterfaceBase(AnyObject& object) : object_(object) {}
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override { return object_.query(iid, out); }
  STDMETHODIMP_(ULONG) AddRef() override { return object_.addReference(); }
  STDMETHODIMP_(ULONG) Release() override { return object_.release(); }

 protected:
  // What a member returns: a result of Values::answer, and results in all places for them when that succeeds.
  template <class... Types>
  HRESULT react(Types... arguments) {
    const ComPtr<IUnknown> alive(static_cast<IUnknown*>(this));
    const HRESULT hr = object_.values().answer();
    if (SUCCEEDED(hr)) (give(arguments), ...);
    return hr;
  }

 private:
  template <class T>
  void give(T) {}
  template <class T>
  void give(T* result) {
    if constexpr (!std::is_base_of_v<IUnknown, T> && !std::is_same_v<T*, BSTR>)
      *result = within<T>(object_.values().number());
  }
  void give(BSTR* result) { *result = object_.values().text().release(); }
  void give(VARIANT) {}
  void give(VARIANT* result) { *result = object_.values().variant().release(); }
  template <class J>
  void give(J** result) {
    *result = ComPtr<J>::from(object_.values().object().get()).release();
  }

  AnyObject& object_;
};
template <class I>
class DispatchBase : public InterfaceBase<I> {
 public:
  using InterfaceBase<I>::InterfaceBase;
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
    return E_NOTIMPL;
  }
};
template <class I>
using BaseOf = std::conditional_t<std::is_base_of_v<IDispatch, I>, DispatchBase<I>, InterfaceBase<I>>;

}  // namespace qs::test
