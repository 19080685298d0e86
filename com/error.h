// The one boundary between exceptions and result codes.
#pragma once

#include <utility>

#include "platform/com_types.h"

namespace qs {

// An error that carries the result code which the interface method returns.
class CQSCOMError {
 public:
  explicit CQSCOMError(HRESULT result) : result_(result) {}
  HRESULT result() const { return result_; }

 private:
  HRESULT result_;
};

// Turns the exception in flight into a result code: CQSCOMError gives its own, std::bad_alloc E_OUTOFMEMORY, all else
// E_FAIL. Call it from a catch block only.
HRESULT resultOfException() noexcept;

// Runs the body of an interface method and returns its result, or that of the exception which ended it.
template <class Body>
HRESULT guarded(Body&& body) noexcept try {
  return std::forward<Body>(body)();
} catch (...) {
  return resultOfException();
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
