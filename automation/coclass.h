// The base of every creatable class: a component object whose dual interfaces also serve late-bound callers.
#pragma once

#include "automation/dispatch.h"
#include "com/bstr.h"
#include "com/com_object.h"

namespace qs {

// A dual interface with its four dispatch methods, which use the interface's own type information.
template <class I>
class Dual : public I {
 public:
  using Interface = I;
  static TypeInfo& typeInfo() { return typeInfo_; }

  STDMETHODIMP GetTypeInfoCount(UINT* count) noexcept override { return typeInfoCount(typeInfo_, count); }
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) noexcept override {
    return typeInfoOf(typeInfo_, index, info);
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept override {
    return ownNames().idsOfNames({names, count, ids});
  }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* argumentError) noexcept override {
    return ownNames().invoke({member, flags, parameters, result, exception, argumentError},
                             [this](std::size_t) { return this; });
  }

 private:
  static SharedNames& ownNames() {
    static TypeInfo* const types[] = {&typeInfo_};
    static SharedNames names(types);
    return names;
  }

  static inline constinit TypeInfo typeInfo_{__uuidof(I)};
};

// An interface without dispatch.
template <class I>
class Plain : public I {
 public:
  using Interface = I;
};

// The last failure of the calling thread, which every class gives. A failure for want of memory is not recorded here,
// so that the one before can be asked for again.
class LastErrorImpl : public Dual<ILastError> {
 public:
  STDMETHODIMP get_LastError(BSTR* sentence) noexcept final {
    if (!sentence) return report(E_POINTER);
    *sentence = nullptr;
    return contained([&] {
      const LastFailure* last = lastFailure();
      if (!last) return S_FALSE;
      *sentence = Bstr(widen(last->member).append(OLESTR(": ")).append(last->text)).release();
      return S_OK;
    });
  }
  STDMETHODIMP GetLastError(LONG* result, BSTR* member, BSTR* text) noexcept final {
    if (!result || !member || !text) return report(E_POINTER);
    *result = S_OK;
    *member = *text = nullptr;
    return contained([&] {
      const LastFailure* last = lastFailure();
      if (!last) return S_FALSE;
      Bstr name(widen(last->member));
      *text = Bstr(last->text).release();
      *member = name.release();
      *result = last->result;
      return S_OK;
    });
  }
};

// What a class derives from for an entry of its interface list. An entry is an interface, or a class derived from Dual
// or Plain that implements some of an interface's methods: where two interfaces have a method of the same name and
// signature that must differ, each gets such a class.
template <class Entry>
struct InterfaceImplOf {
  using Type = std::conditional_t<std::is_base_of_v<IDispatch, Entry>, Dual<Entry>, Plain<Entry>>;
};
template <class Entry>
requires requires { typename Entry::Interface; }
struct InterfaceImplOf<Entry> {
  using Type = Entry;
};
template <class Entry>
using InterfaceImpl = typename InterfaceImplOf<Entry>::Type;

// The default interface of a class: by name it reaches the members of all dual interfaces of the object.
template <class Entry, class Object>
class DefaultInterfaceImpl : public InterfaceImpl<Entry> {
 public:
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept final {
    return Object::sharedNames().idsOfNames({names, count, ids});
  }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* argumentError) noexcept final {
    return Object::sharedNames().invoke(
        {member, flags, parameters, result, exception, argumentError},
        [this](std::size_t position) { return static_cast<Object*>(this)->dispatchAt(position); });
  }
};

// `Default` and `Others` are the interfaces of `Derived` in order, the default one first; ILastError is added to them.
// ComObject describes what `Derived` may have.
template <class Derived, class Default, class... Others>
class Coclass : public ComObject<Derived, DefaultInterfaceImpl<Default, Coclass<Derived, Default, Others...>>,
                                 InterfaceImpl<Others>..., LastErrorImpl> {
  using DefaultImpl = DefaultInterfaceImpl<Default, Coclass>;
  friend DefaultImpl;

  template <class Impl>
  static TypeInfo* typeOf() {
    if constexpr (std::is_base_of_v<IDispatch, Impl>)
      return &Impl::typeInfo();
    else
      return nullptr;
  }
  static inline const std::array<TypeInfo*, 2 + sizeof...(Others)> kTypes{
      typeOf<DefaultImpl>(), typeOf<InterfaceImpl<Others>>()..., typeOf<LastErrorImpl>()};

  static SharedNames& sharedNames() {
    static SharedNames names(kTypes);
    return names;
  }
};

}  // namespace qs
