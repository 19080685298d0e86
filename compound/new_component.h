// New objects of classes that a text names.
#pragma once

#include "com/com_ptr.h"
#include "com/error.h"

namespace qs {

// A new component of a class given by identifier or name; empty when there is none with the interface. Throws
// CQSCOMError(E_OUTOFMEMORY).
template <class I>
ComPtr<I> newComponent(BSTR className) {
  ComPtr<I> component;
  CLSID clsid;
  if (className && succeeded(CLSIDFromString(className, &clsid))) succeeded(component.create(clsid));
  return component;
}

}  // namespace qs
