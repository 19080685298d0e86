// An owned length-prefixed string, and the ways between it and views. A null string and an empty one differ. What makes
// or copies a string throws CQSCOMError(E_OUTOFMEMORY).
#pragma once

#include <utility>

#include "com/error.h"
#include "platform/text.h"

namespace qs {

// What a caller's string holds; a null string reads as empty.
inline WideView viewOf(BSTR text) { return text ? WideView(text, SysStringLen(text)) : WideView(); }

class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(WideView text) {
    const auto length = static_cast<UINT>(text.size());
    if (length == text.size()) text_ = SysAllocStringLen(text.data(), length);
    if (!text_) throw CQSCOMError(E_OUTOFMEMORY);
  }
  Bstr(const Bstr& other) : Bstr(copyOf(other.text_)) {}
  Bstr(Bstr&& other) noexcept : text_(other.release()) {}
  Bstr& operator=(Bstr other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }
  ~Bstr() {
    if (text_) SysFreeString(text_);
  }

  // Takes over a string that a function returned.
  static Bstr adopt(BSTR text) {
    Bstr result;
    result.text_ = text;
    return result;
  }

  // A copy of a caller's string, null for null.
  static Bstr copyOf(BSTR text) { return text ? Bstr(viewOf(text)) : Bstr(); }

  BSTR get() const { return text_; }
  WideView view() const { return viewOf(text_); }
  explicit operator bool() const { return text_ != nullptr; }

  // Gives the string up to the caller.
  BSTR release() { return std::exchange(text_, nullptr); }

  // The address for a function's out-parameter; frees what was held.
  BSTR* out() {
    SysFreeString(release());
    return &text_;
  }

 private:
  BSTR text_ = nullptr;
};

}  // namespace qs
