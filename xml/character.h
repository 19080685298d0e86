// The characters that an XML text can hold.
#pragma once

#include "platform/text.h"

namespace qs {

// Whether XML allows the character of the code unit at a position. A surrogate alone is no character.
constexpr bool isXmlCharacter(WideView text, std::size_t position) {
  const auto isHigh = [](OLECHAR c) { return c >= 0xD800 && c <= 0xDBFF; };
  const auto isLow = [](OLECHAR c) { return c >= 0xDC00 && c <= 0xDFFF; };
  const OLECHAR c = text[position];
  if (isHigh(c)) return position + 1 < text.size() && isLow(text[position + 1]);
  if (isLow(c)) return position > 0 && isHigh(text[position - 1]);
  return (c >= 0x20 && c != 0xFFFE && c != 0xFFFF) || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace qs
