// Texts of external components: "Key(" class name ") ComContent(" content ")".
#pragma once

#include <optional>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "interfaces/interfaces.h"

namespace qs {

struct ComponentText {
  std::optional<WideView> className;  // missing when the text names no class
  WideView content;
};

// The parts of a text, whose content may hold brackets. `key` is "ClassName" or "ClassID".
ComponentText readComponentText(WideView key, WideView text);

// Whether readComponentText finds a class name again that was written into a text.
bool isReadable(WideView className);

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
