// How system calls on files are made.
#pragma once

#include "platform/com_types.h"
#include "platform/file_faults.h"

namespace qs {

// Call it before each call of the system; false when that is to fail, with the last error set.
inline bool mayHappen(FileOperation operation) {
  const int fault = faultOf(operation);
  if (fault != 0) SetLastError(static_cast<DWORD>(fault));
  return fault == 0;
}

}  // namespace qs
