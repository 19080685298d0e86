// The Key(value) items that property objects write themselves as.
#pragma once

#include <optional>

#include "com/bstr.h"
#include "platform/text.h"

namespace qs {

// The text in brackets behind the first occurrence of `key`, up to the first closing bracket, within `text`. Nothing
// when the key is missing, or its first occurrence is not followed by a bracket that is closed. Keys are not
// delimited: an occurrence within a longer word counts.
std::optional<WideView> ReadKeyValue(WideView key, WideView text);

// A new string of 8-bit text.
inline Bstr bstrOf(std::string_view text) { return Bstr(widen(text)); }

}  // namespace qs
