// Interfaces of objects that a host passes or makes.
#pragma once

#include "com/com_ptr.h"
#include "com/error.h"

namespace qs {

// The interface of an object. Throws CQSCOMError: E_FAIL for no object and for a query that succeeds without a pointer,
// else the result of the failed query.
template <class I>
ComPtr<I> required(IUnknown* object) {
  if (!object) throw CQSCOMError(E_FAIL);
  ComPtr<I> found;
  check(found.query(object));
  if (!found) throw CQSCOMError(E_FAIL);
  return found;
}

// The same of an object that may be null or lack the interface: then it is empty.
template <class I>
ComPtr<I> implemented(IUnknown* object) {
  ComPtr<I> found;
  const HRESULT queried = found.query(object);
  if (queried != E_NOINTERFACE) check(queried);
  return found;
}

}  // namespace qs
