// The conversions between wide strings and 8-bit text: of the system code page, which is CP_ACP on Windows and UTF-8
// elsewhere, and of UTF-8.
#pragma once

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/com_types.h"

namespace qs {

using WideString = std::basic_string<OLECHAR>;
using WideView = std::basic_string_view<OLECHAR>;

// Widens 8-bit text. Bytes that the code page does not define never fail: each becomes one wide character (elsewhere
// than on Windows, the character of the same number). Throws std::bad_alloc.
WideString widen(std::string_view text);

// The same for UTF-8 on every system. Bytes that are none never fail either.
WideString widenUtf8(std::string_view text);

// What == says, in fewer steps.
inline bool same(WideView a, WideView b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(OLECHAR)) == 0;
}

// Write text as wide units, no more than it has units itself, and return their end.
OLECHAR* writeWide(std::string_view text, OLECHAR* out);
inline OLECHAR* writeWide(WideView text, OLECHAR* out) { return std::copy(text.begin(), text.end(), out); }

// Narrows wide text. Characters that the code page lacks become '?'. Throws std::bad_alloc.
std::string narrow(WideView text);

}  // namespace qs
