// The file that this code was loaded from (Windows only).
#pragma once

#include "platform/text.h"

namespace qs {

// The module's handle and full path. Throws CQSCOMError.
HMODULE moduleHandle() noexcept;
WideString moduleFile();

}  // namespace qs
