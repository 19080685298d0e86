// Writes numbers as text and reads them back, the same in every locale and on every target. No other code does so.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/text.h"

namespace qs {

// Room for any double with six significant digits and for any 32-bit integer.
inline constexpr int kNumberLength = 16;

// Room for any double with as many digits as give it back exactly.
inline constexpr int kExactNumberLength = 32;

// Write into kNumberLength characters, without a terminator, and return the end of what they wrote.
char* writeDouble(char* out, double value);
char* writeInteger(char* out, std::int32_t value);

// Writes into kExactNumberLength characters the shortest text from which readExactDouble restores every bit. A NaN
// other than the usual one is followed by its bits, as in "nan:8000000000001".
char* writeExactDouble(char* out, double value);

// Appends digits to narrow or wide text.
template <class Text>
void appendDigits(Text& text, std::string_view digits) {
  const std::size_t length = text.size();
  text.resize(length + digits.size());
  std::copy(digits.begin(), digits.end(), text.begin() + static_cast<std::ptrdiff_t>(length));
}

// Appends what "%g" writes in the C locale: six significant digits, two or more digits of an exponent.
template <class Text>
void appendDouble(Text& text, double value) {
  char digits[kNumberLength];
  appendDigits(text, {digits, writeDouble(digits, value)});
}

// Appends what "%d" writes.
template <class Text>
void appendInteger(Text& text, std::int32_t value) {
  char digits[kNumberLength];
  appendDigits(text, {digits, writeInteger(digits, value)});
}

// Reads as atof does in the C locale: leading blanks, a sign, a decimal or hexadecimal number, "inf" or "nan", and the
// bits of a NaN as writeExactDouble writes them; what follows is ignored. A number that is too large reads as infinity,
// text without a number as 0.
double readDouble(std::string_view text);

// The same, with every bit: on 32-bit x86 a function that returns a double makes signalling NaNs quiet.
void readExactDouble(std::string_view text, double* value);

// Reads as atoi does; a number that is too large reads as the nearest 32-bit integer.
std::int32_t readInteger(std::string_view text);

// The finite decimal number, or the 32-bit integer, that the whole text is; nothing for any other text.
std::optional<double> wholeDouble(std::string_view text);
std::optional<std::int32_t> wholeInteger(std::string_view text);

// The nearest number of so many significant decimal digits, 17 at most.
double roundedToDigits(double value, int digits);

// Read a number from wide text. Text of 80 bytes or more leaves the target as it was.
void convertValue(WideView text, double* target);
void convertValue(WideView text, LONG* target);

}  // namespace qs
