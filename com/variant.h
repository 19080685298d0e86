// An owned variant.
#pragma once

#include <utility>

#include "com/com_ptr.h"
#include "com/error.h"

namespace qs {

class Variant {
 public:
  Variant() = default;
  explicit Variant(LONG value) : Variant() {
    value_.vt = VT_I4;
    value_.lVal = value;
  }
  explicit Variant(double value) : Variant() {
    value_.vt = VT_R8;
    value_.dblVal = value;
  }
  explicit Variant(ComPtr<IDispatch> object) : Variant() {
    value_.vt = VT_DISPATCH;
    value_.pdispVal = object.release();
  }
  Variant(Variant&& other) noexcept : value_(other.release()) {}
  Variant& operator=(Variant other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Variant() {
    if (ownsMemory()) VariantClear(&value_);
  }

  // Takes over a variant that a function returned.
  static Variant adopt(const VARIANT& value) {
    Variant result;
    result.value_ = value;
    return result;
  }

  // A copy of a caller's variant or of what it refers to. Throws CQSCOMError.
  static Variant copyOf(const VARIANT& source) {
    Variant result;
    check(VariantCopyInd(&result.value_, const_cast<VARIANT*>(&source)));
    return result;
  }

  // A caller's variant as another type. Throws CQSCOMError with the result of the failed conversion.
  static Variant converted(const VARIANT& source, VARTYPE type) {
    Variant result;
    check(VariantChangeType(&result.value_, const_cast<VARIANT*>(&source), 0, type));
    return result;
  }

  const VARIANT& get() const { return value_; }
  // For functions that take or fill a variant in place.
  VARIANT* address() { return &value_; }

  // Gives the content up to the caller.
  VARIANT release() {
    VARIANT result = value_;
    value_ = VARIANT{};
    return result;
  }

 private:
  // Numbers do not, nor what is referred to.
  bool ownsMemory() const { return value_.vt >= VT_BSTR && !(value_.vt & VT_BYREF); }

  VARIANT value_{};
};

}  // namespace qs
