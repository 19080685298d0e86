// A component object with any number of interfaces: identity, reference counts, aggregation and the interface map are
// written here once for all classes.
#pragma once

#include <array>
#include <type_traits>

#include "com/com_ptr.h"
#include "com/error.h"
#include "com/module_lock.h"

namespace qs {

// The base of a class, which derives from `Impls` in their order, the default interface first. Each of them derives
// from one interface, its `Interface`. `Derived` is final and has a constructor without arguments. It may have `HRESULT
// finalConstruct() noexcept` for what can fail with a result code of its own; creation returns that failure.
template <class Derived, class... Impls>
class ComObject : public Impls... {
 public:
  // Makes an object, aggregated into `outer` unless that is null, and returns it queried for `iid`, which must be
  // IUnknown in an aggregate.
  static HRESULT create(IUnknown* outer, REFIID iid, void** out) noexcept {
    static constexpr const char* kMember = "CreateInstance";
    if (!out) return report(E_POINTER, {}, kMember);
    *out = nullptr;
    if (outer && !IsEqualGUID(iid, __uuidof(IUnknown)))
      return report(CLASS_E_NOAGGREGATION, {"the outer object must ask for IUnknown"}, kMember);
    const auto make = [&] {
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
    };
    return guarded(make, kMember);
  }

  // A new object that is not aggregated. Throws CQSCOMError.
  template <class I>
  static ComPtr<I> make() {
    ComPtr<I> object;
    check(create(nullptr, __uuidof(I), object.outAny()));
    return object;
  }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept final { return outer_->QueryInterface(iid, out); }
  STDMETHODIMP_(ULONG) AddRef() noexcept final { return outer_->AddRef(); }
  STDMETHODIMP_(ULONG) Release() noexcept final { return outer_->Release(); }

 protected:
  ComObject() : inner_(*this), outer_(&inner_) {}
  ~ComObject() = default;

  bool isAggregated() const { return outer_ != &inner_; }

  // The dispatch interface at a position in `Impls`; null when that interface has no dispatch.
  IDispatch* dispatchAt(std::size_t position) {
    return kMap[position].dispatch ? kMap[position].dispatch(this) : nullptr;
  }

 private:
  struct MapEntry {
    const IID* iid;
    void* (*pointer)(ComObject*);
    IDispatch* (*dispatch)(ComObject*);
  };

  template <class Impl>
  static constexpr MapEntry entryOf() {
    using I = typename Impl::Interface;
    MapEntry entry{&__uuidof(I), [](ComObject* object) -> void* { return static_cast<I*>(static_cast<Impl*>(object)); },
                   nullptr};
    if constexpr (std::is_base_of_v<IDispatch, I>)
      entry.dispatch = [](ComObject* object) -> IDispatch* { return static_cast<Impl*>(object); };
    return entry;
  }
  static inline const std::array<MapEntry, sizeof...(Impls)> kMap{entryOf<Impls>()...};

  // The unknown that does not delegate: it alone counts the references that keep this object alive.
  class Inner final : public IUnknown {
   public:
    explicit Inner(ComObject& object) : object_(object) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
      if (!out) return E_POINTER;
      if (IsEqualGUID(iid, __uuidof(IUnknown))) {
        *out = static_cast<IUnknown*>(this);
      } else {
        *out = object_.interfaceFor(iid);
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
    ComObject& object_;
    ULONG references_ = 1;
  };

  void* interfaceFor(REFIID iid) {
    if (IsEqualGUID(iid, __uuidof(IDispatch))) return dispatchAt(0);
    for (const MapEntry& entry : kMap)
      if (IsEqualGUID(iid, *entry.iid)) return entry.pointer(this);
    return nullptr;
  }

  ModuleLock lock_;
  Inner inner_;
  IUnknown* outer_;
};

}  // namespace qs
