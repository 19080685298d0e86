// What a compound keeps of properties that a host computes in components of its own.
#pragma once

#include <functional>
#include <map>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "interfaces/interfaces.h"

namespace qs {

struct UserProperty {
  Bstr classId;
  ComPtr<IDispatch> component;  // empty when a text named a class that could not be created
  Bstr content;                 // of a text that no component took over; null for none
};

// By name.
using UserProperties = std::map<WideString, UserProperty, std::less<>>;

}  // namespace qs
