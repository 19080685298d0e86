// The one conversion between wide strings and 8-bit text of the system code page: CP_ACP on Windows, UTF-8 elsewhere.
#pragma once

#include <string>
#include <string_view>

#include "platform/com_types.h"

namespace qs {

using WideString = std::basic_string<OLECHAR>;
using WideView = std::basic_string_view<OLECHAR>;

// Widens 8-bit text. Bytes that the code page does not define never fail: each becomes one wide character (elsewhere
// than on Windows, the character of the same number). Throws std::bad_alloc.
WideString widen(std::string_view text);

// Narrows wide text. Characters that the code page lacks become '?'. Throws std::bad_alloc.
std::string narrow(WideView text);

}  // namespace qs
