// Interfaces of objects that a host passes or makes.
#pragma once

#include "com/com_ptr.h"
#include "com/error.h"

namespace qs {

// The interface of an object, which errors call `what`. Throws CQSCOMError: E_FAIL for no object and for a query that
// succeeds without a pointer, else the result of the failed query.
template <class I>
ComPtr<I> required(IUnknown* object, const char* what = "object") {
  if (!object) fail(E_FAIL, {"the ", what, " is null"});
  ComPtr<I> found;
  const HRESULT queried = found.query(object);
  if (FAILED(queried)) fail(queried, {"the ", what, " does not give an interface that is needed: ", Meaning{queried}});
  if (!found) fail(E_FAIL, {"the ", what, " gives no interface"});
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
