// The one place that writes numbers as text and reads them back, the same in every locale and on every target.
#pragma once

#include <cstdint>
#include <string_view>

namespace qs {

// Room for any double with six significant digits and for any 32-bit integer.
inline constexpr int kNumberLength = 16;

// Write into kNumberLength characters, without a terminator, and answer the end of what they wrote.
char* writeDouble(char* out, double value);
char* writeInteger(char* out, std::int32_t value);

// Appends what "%g" writes in the C locale: six significant digits, two or more digits of an exponent.
template <class Text>
void appendDouble(Text& text, double value) {
  char digits[kNumberLength];
  text.append(static_cast<const char*>(digits), static_cast<const char*>(writeDouble(digits, value)));
}

// Appends what "%d" writes.
template <class Text>
void appendInteger(Text& text, std::int32_t value) {
  char digits[kNumberLength];
  text.append(static_cast<const char*>(digits), static_cast<const char*>(writeInteger(digits, value)));
}

// Reads as atof does in the C locale: leading blanks, a sign, a decimal or hexadecimal number, "inf" or "nan"; what
// follows is ignored. Too large a number reads as infinity, text without a number as 0.
double readDouble(std::string_view text);

// Reads as atoi does; too large a number reads as the nearest 32-bit integer.
std::int32_t readInteger(std::string_view text);

}  // namespace qs
