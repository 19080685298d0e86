// The one boundary between exceptions and result codes, and what is kept of a failure.
//
// Every thread keeps its last failure: the result code, the member that returned it, and a text that says why. Whoever
// returns or throws a result code says why (`because`, `fail`); the boundary of the member records it with the member's
// name. A success stores nothing. Recording takes memory once for each thread, and never fails: without that memory
// the failure is not kept.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "platform/text.h"

namespace qs {

// An error that carries the result code which the interface method returns.
class CQSCOMError {
 public:
  explicit CQSCOMError(HRESULT result) : result_(result) {}
  HRESULT result() const { return result_; }

 private:
  HRESULT result_;
};

// What a result code says by itself.
struct Meaning {
  HRESULT result;
};

// A part of a text: wide, in UTF-8, a number, or the meaning of a result code. It is lent.
class TextPart {
 public:
  TextPart(WideView text) : content_(text) {}
  TextPart(const WideString& text) : content_(WideView(text)) {}
  TextPart(BSTR text) : content_(text ? WideView(text, SysStringLen(text)) : WideView()) {}
  TextPart(std::string_view text) : content_(text) {}
  TextPart(const std::string& text) : content_(std::string_view(text)) {}
  TextPart(const char* text) : content_(std::string_view(text)) {}
  TextPart(Meaning meaning) : content_(meaning) {}
  template <class Number>
  requires(std::is_integral_v<Number> || std::is_enum_v<Number>) TextPart(Number number)
      : content_(static_cast<std::int32_t>(number)) {}

  const auto& content() const { return content_; }

 private:
  std::variant<WideView, std::string_view, std::int32_t, Meaning> content_;
};
using TextParts = std::initializer_list<TextPart>;

// Says why a result code is returned, for the boundary that returns it. Returns the code.
[[gnu::cold]] HRESULT because(HRESULT result, TextParts why) noexcept;
// The same, and throws CQSCOMError.
[[noreturn, gnu::cold]] void fail(HRESULT result, TextParts why);
// Adds to what was said of a result code; without that, and for S_OK, it does nothing.
HRESULT also(HRESULT result, TextParts more) noexcept;
// Takes back what was said, for a body that goes on after all: no other failure has that reason.
[[gnu::cold]] void unsay() noexcept;

// For members that return without `guarded`: records a failure, or an S_FALSE that says that something is not there,
// with what was said of it before or is said here. Returns the code.
[[gnu::cold]] HRESULT report(HRESULT result, TextParts why = {}, const char* member = __builtin_FUNCTION()) noexcept;
// What a member of this module has just reported, for another that returns it too.
[[gnu::cold]] HRESULT passOn(HRESULT result) noexcept;

// The last failure of this thread; null before the first. The text is never empty, and is this thread's: another
// failure writes over it.
struct LastFailure {
  HRESULT result;
  const char* member;
  WideView text;
};
const LastFailure* lastFailure() noexcept;

// Turns the exception in flight into a result code: CQSCOMError gives its own, std::bad_alloc E_OUTOFMEMORY, all else
// E_FAIL; the text of a std::runtime_error says why. Call it from a catch block only.
HRESULT resultOfException() noexcept;

// Runs a body and returns its result, or that of the exception which ended it. What it said is left to the boundary
// around it.
template <class Body>
HRESULT contained(Body&& body) noexcept try {
  return std::forward<Body>(body)();
} catch (...) {
  return resultOfException();
}

// The same for the body of an interface method, whose failure is recorded. A function that several methods share
// passes on their name.
template <class Body>
HRESULT guarded(Body&& body, const char* member = __builtin_FUNCTION()) noexcept {
  const HRESULT result = contained(std::forward<Body>(body));
  return FAILED(result) ? report(result, {}, member) : result;
}

// The same for a method that looks something up: S_FALSE, which says that it is not there, is recorded too.
template <class Body>
HRESULT guardedLookUp(Body&& body, const char* member = __builtin_FUNCTION()) noexcept {
  const HRESULT result = contained(std::forward<Body>(body));
  return result == S_OK ? result : report(result, {}, member);
}

// Throws CQSCOMError for a failing result.
inline void check(HRESULT result) {
  if (FAILED(result)) throw CQSCOMError(result);
}

// Whether a call succeeded that may fail. Throws CQSCOMError(E_OUTOFMEMORY) when it failed for want of memory.
inline bool succeeded(HRESULT result) {
  if (result == E_OUTOFMEMORY) throw CQSCOMError(result);
  return SUCCEEDED(result);
}

}  // namespace qs
