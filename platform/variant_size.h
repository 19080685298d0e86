// The sizes of values in variants.
#pragma once

#include <cstddef>

#include "platform/com_types.h"

namespace qs {

// The bytes of a number or a boolean; 0 for other types.
constexpr std::size_t numberSize(VARTYPE type) {
  switch (type) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
      return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      return 8;
    case VT_DECIMAL:
      return sizeof(DECIMAL);
    default:
      return 0;
  }
}

}  // namespace qs
