// The one boundary between exceptions and result codes.
#pragma once

#include <utility>

#include "platform/com_types.h"

namespace qs {

// An error that carries the result code which the interface method answers.
class CQSCOMError {
 public:
  explicit CQSCOMError(HRESULT result) : result_(result) {}
  HRESULT result() const { return result_; }

 private:
  HRESULT result_;
};

// Turns the exception in flight into a result code: CQSCOMError gives its own, std::bad_alloc E_OUTOFMEMORY, all else
// E_FAIL. To be called from a catch block only.
HRESULT resultOfException() noexcept;

// Runs the body of an interface method and answers its result, or that of the exception which ended it.
template <class Body>
HRESULT guarded(Body&& body) noexcept try {
  return std::forward<Body>(body)();
} catch (...) {
  return resultOfException();
}

// Raises a failing result; success codes pass.
inline void check(HRESULT result) {
  if (FAILED(result)) throw CQSCOMError(result);
}

// Whether a call succeeded whose failure is an answer like others. A lack of memory is none, and is raised.
inline bool succeeded(HRESULT result) {
  if (result == E_OUTOFMEMORY) throw CQSCOMError(result);
  return SUCCEEDED(result);
}

}  // namespace qs
