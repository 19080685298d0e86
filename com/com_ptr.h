// An owned interface pointer.
#pragma once

#include <utility>

#include "platform/com_types.h"

namespace qs {

template <class I>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(const ComPtr& other) : ComPtr(other.pointer_) {}
  ComPtr(ComPtr&& other) noexcept : pointer_(other.release()) {}
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(pointer_, other.pointer_);
    return *this;
  }
  ~ComPtr() {
    if (pointer_) pointer_->Release();
  }

  // Adds a reference of its own to a pointer that the caller keeps; null is allowed.
  explicit ComPtr(I* borrowed) : pointer_(borrowed) {
    if (pointer_) pointer_->AddRef();
  }

  // Queries an object for the interface: its result, or E_NOINTERFACE for no object.
  HRESULT query(IUnknown* object) { return object ? object->QueryInterface(__uuidof(I), outAny()) : E_NOINTERFACE; }

  // Creates an object of a class, with the result of CoCreateInstance.
  HRESULT create(REFCLSID clsid, DWORD context = CLSCTX_INPROC_SERVER) {
    return CoCreateInstance(clsid, nullptr, context, __uuidof(I), outAny());
  }

  // The interface of an object, empty when the object is null or lacks it.
  static ComPtr from(IUnknown* object) {
    ComPtr result;
    result.query(object);
    return result;
  }

  I* get() const { return pointer_; }
  I* operator->() const { return pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }

  // Gives the reference up to the caller.
  I* release() { return std::exchange(pointer_, nullptr); }

  // The address for a function's out-parameter; releases what was held.
  I** out() {
    *this = ComPtr();
    return &pointer_;
  }
  // The same for a function that returns any interface, as QueryInterface does.
  void** outAny() { return reinterpret_cast<void**>(out()); }

 private:
  I* pointer_ = nullptr;
};

}  // namespace qs
