// A component object with any number of interfaces: identity, reference counts, aggregation, the interface map and late
// binding are written here once for all classes.
#pragma once

#include <array>
#include <type_traits>

#include "com/dispatch.h"
#include "com/error.h"
#include "com/module_lock.h"

namespace qs {

// A dual interface with its four dispatch methods, answered from the interface's own type information.
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

// What a class derives from for each entry of its interface list: an entry is an interface, or a class of its own
// between the interface and the object, derived from Dual or Plain, where the same method of two interfaces must
// differ.
template <class Entry>
struct FaceOf {
  using Type = std::conditional_t<std::is_base_of_v<IDispatch, Entry>, Dual<Entry>, Plain<Entry>>;
};
template <class Entry>
requires requires { typename Entry::Interface; }
struct FaceOf<Entry> {
  using Type = Entry;
};
template <class Entry>
using Face = typename FaceOf<Entry>::Type;

// The default interface of a class: by name it answers for all dual interfaces of the object.
template <class Entry, class Object>
class DefaultFace : public Face<Entry> {
 public:
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) noexcept final {
    return Object::sharedNames().idsOfNames({names, count, ids});
  }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                      EXCEPINFO* exception, UINT* argumentError) noexcept final {
    return Object::sharedNames().invoke(
        {member, flags, parameters, result, exception, argumentError},
        [this](std::size_t face) { return static_cast<Object*>(this)->dispatchFace(face); });
  }
};

// The base of a class: `First` and `Rest` are its interfaces in order, the default one first and all dual ones before
// any other. Derived is final and has a constructor without arguments. What can fail with a result code of its own
// belongs into `HRESULT finalConstruct() noexcept`, which a class may have: creation answers its failure.
template <class Derived, class First, class... Rest>
class Coclass : public DefaultFace<First, Coclass<Derived, First, Rest...>>, public Face<Rest>... {
 public:
  // Makes an object, aggregated into `outer` unless that is null, and answers it queried for `iid`, which must be
  // IUnknown in an aggregate.
  static HRESULT create(IUnknown* outer, REFIID iid, void** out) noexcept {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer && !IsEqualGUID(iid, __uuidof(IUnknown))) return CLASS_E_NOAGGREGATION;
    return guarded([&] {
      auto* object = new Derived;
      if (outer) object->outer_ = outer;
      HRESULT hr = S_OK;
      if constexpr (requires { object->finalConstruct(); }) {
        static_assert(noexcept(object->finalConstruct()));
        hr = object->finalConstruct();
      }
      if (SUCCEEDED(hr)) hr = object->inner_.QueryInterface(iid, out);
      object->inner_.Release();
      return hr;
    });
  }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept final { return outer_->QueryInterface(iid, out); }
  STDMETHODIMP_(ULONG) AddRef() noexcept final { return outer_->AddRef(); }
  STDMETHODIMP_(ULONG) Release() noexcept final { return outer_->Release(); }

 protected:
  Coclass() : inner_(*this), outer_(&inner_) {}
  ~Coclass() = default;

  bool isAggregated() const { return outer_ != &inner_; }

 private:
  using Default = DefaultFace<First, Coclass>;
  friend Default;

  struct MapEntry {
    const IID* iid;
    void* (*face)(Coclass*);
    IDispatch* (*dispatch)(Coclass*);
  };

  template <class F>
  static constexpr MapEntry entryOf() {
    using I = typename F::Interface;
    MapEntry entry{&__uuidof(I), [](Coclass* object) -> void* { return static_cast<I*>(static_cast<F*>(object)); },
                   nullptr};
    if constexpr (std::is_base_of_v<IDispatch, I>)
      entry.dispatch = [](Coclass* object) -> IDispatch* { return static_cast<F*>(object); };
    return entry;
  }
  static inline const std::array<MapEntry, 1 + sizeof...(Rest)> kMap{entryOf<Default>(), entryOf<Face<Rest>>()...};

  static constexpr std::size_t kDualCount =
      (std::size_t{std::is_base_of_v<IDispatch, First>} + ... + std::size_t{std::is_base_of_v<IDispatch, Rest>});
  template <class F>
  static TypeInfo* typeOf() {
    if constexpr (std::is_base_of_v<IDispatch, F>)
      return &F::typeInfo();
    else
      return nullptr;
  }
  static inline const std::array<TypeInfo*, 1 + sizeof...(Rest)> kTypes{typeOf<Default>(), typeOf<Face<Rest>>()...};

  static SharedNames& sharedNames() {
    static SharedNames names({kTypes.data(), kDualCount});
    return names;
  }

  IDispatch* dispatchFace(std::size_t index) { return kMap[index].dispatch(this); }

  // The unknown that does not delegate: it alone counts the references that keep this object alive.
  class Inner final : public IUnknown {
   public:
    explicit Inner(Coclass& object) : object_(object) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
      if (!out) return E_POINTER;
      if (IsEqualGUID(iid, __uuidof(IUnknown))) {
        *out = static_cast<IUnknown*>(this);
      } else {
        *out = object_.faceFor(iid);
        if (!*out) return E_NOINTERFACE;
      }
      static_cast<IUnknown*>(*out)->AddRef();
      return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references_; }
    STDMETHODIMP_(ULONG) Release() noexcept override {
      const ULONG left = --references_;
      if (left == 0) {
        // What the destructor releases may refer back to this object: that must not end it again.
        references_ = 1;
        delete static_cast<Derived*>(&object_);
      }
      return left;
    }

   private:
    Coclass& object_;
    ULONG references_ = 1;
  };

  void* faceFor(REFIID iid) {
    if (IsEqualGUID(iid, __uuidof(IDispatch))) return kMap[0].dispatch ? kMap[0].dispatch(this) : nullptr;
    for (const MapEntry& entry : kMap)
      if (IsEqualGUID(iid, *entry.iid)) return entry.face(this);
    return nullptr;
  }

  ModuleLock lock_;
  Inner inner_;
  IUnknown* outer_;
};

}  // namespace qs
