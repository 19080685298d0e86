// Interfaces of what a host passes.
#pragma once

#include "com/com_ptr.h"
#include "com/error.h"

namespace qs {

// The interface of an object. Throws CQSCOMError: E_FAIL for no object, else the result of the failed query.
template <class I>
ComPtr<I> required(IUnknown* object) {
  if (!object) throw CQSCOMError(E_FAIL);
  ComPtr<I> found;
  check(object->QueryInterface(__uuidof(I), reinterpret_cast<void**>(found.out())));
  return found;
}

}  // namespace qs
