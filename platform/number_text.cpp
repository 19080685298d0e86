#include "platform/number_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>

namespace qs {
namespace {

constexpr bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Takes leading blanks and one sign off the text; whether the sign was a minus.
bool takeSign(std::string_view& text) {
  while (!text.empty() && isBlank(text[0])) text.remove_prefix(1);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  return negative;
}

bool startsHexadecimal(std::string_view text) {
  if (!text.starts_with("0x") && !text.starts_with("0X")) return false;
  text.remove_prefix(2);
  if (text.starts_with('.')) text.remove_prefix(1);
  return text.find_first_of("0123456789abcdefABCDEF") == 0;
}

// Whether a number beyond the range of double is too large, and not too small: by the place of its first digit other
// than 0, counted from the point, and by its exponent.
bool isTooLarge(std::string_view number, bool hexadecimal) {
  const std::size_t mark = std::min(number.find_first_of(hexadecimal ? "pP" : "eE"), number.size());
  const std::string_view digits = number.substr(0, mark);
  const std::string_view exponent = number.substr(std::min(mark + 1, number.size()));
  const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
  const auto first = static_cast<std::int64_t>(digits.find_first_not_of("0."));
  return (point - first) * (hexadecimal ? 4 : 1) + readInteger(exponent) > 0;
}

// The bits of a double below its sign and exponent.
constexpr std::uint64_t kFraction = (std::uint64_t{1} << 52) - 1;
constexpr std::uint64_t kUsualNaN = std::uint64_t{1} << 51;
constexpr std::string_view kNaNBits = "nan:";

std::uint64_t nanBits(bool negative, std::string_view hexadecimal) {
  std::uint64_t fraction = 0;
  std::from_chars(hexadecimal.data(), hexadecimal.data() + hexadecimal.size(), fraction, 16);
  fraction &= kFraction;
  const auto infinity = std::bit_cast<std::uint64_t>(negative ? -HUGE_VAL : HUGE_VAL);
  return infinity | (fraction ? fraction : kUsualNaN);
}

template <class Number>
std::optional<Number> whole(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  Number value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// Reads the 8-bit form of a text, unless it is too long to be a value.
template <class Read>
void readNarrow(WideView text, Read&& read) {
  constexpr std::size_t kCapacity = 80;
  if (text.size() < kCapacity && std::all_of(text.begin(), text.end(), [](OLECHAR c) { return c < 0x80; })) {
    char bytes[kCapacity];
    std::copy(text.begin(), text.end(), bytes);
    read(std::string_view(bytes, text.size()));
  } else if (const std::string bytes = narrow(text); bytes.size() < kCapacity) {
    read(bytes);
  }
}

}  // namespace

char* writeDouble(char* out, double value) {
  return std::to_chars(out, out + kNumberLength, value, std::chars_format::general, 6).ptr;
}

char* writeInteger(char* out, std::int32_t value) { return std::to_chars(out, out + kNumberLength, value).ptr; }

char* writeExactDouble(char* out, double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  if (!std::isnan(value) || (bits & kFraction) == kUsualNaN)
    return std::to_chars(out, out + kExactNumberLength, value).ptr;
  if (std::signbit(value)) *out++ = '-';
  out = std::copy(kNaNBits.begin(), kNaNBits.end(), out);
  return std::to_chars(out, out + 16, bits & kFraction, 16).ptr;
}

double readDouble(std::string_view text) {
  double value;
  readExactDouble(text, &value);
  return value;
}

void readExactDouble(std::string_view text, double* value) {
  *value = 0.0;
  const bool negative = takeSign(text);
  if (text.starts_with('-')) return;
  if (text.starts_with(kNaNBits)) {
    const std::uint64_t bits = nanBits(negative, text.substr(kNaNBits.size()));
    std::memcpy(value, &bits, sizeof bits);
    return;
  }

  const bool hexadecimal = startsHexadecimal(text);
  if (hexadecimal) text.remove_prefix(2);
  double magnitude = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude,
                                            hexadecimal ? std::chars_format::hex : std::chars_format::general);
  if (error == std::errc::result_out_of_range) {
    const std::string_view number = text.substr(0, static_cast<std::size_t>(end - text.data()));
    magnitude = isTooLarge(number, hexadecimal) ? HUGE_VAL : 0.0;
  }
  *value = negative ? -magnitude : magnitude;
}

std::int32_t readInteger(std::string_view text) {
  const bool negative = takeSign(text);
  std::uint64_t magnitude = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude);
  using Limits = std::numeric_limits<std::int32_t>;
  const std::uint64_t largest = static_cast<std::uint64_t>(Limits::max()) + (negative ? 1 : 0);
  if (error == std::errc::result_out_of_range || magnitude > largest) magnitude = largest;
  const auto value = static_cast<std::int64_t>(magnitude);
  return static_cast<std::int32_t>(negative ? -value : value);
}

std::optional<double> wholeDouble(std::string_view text) {
  const auto value = whole<double>(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<std::int32_t> wholeInteger(std::string_view text) { return whole<std::int32_t>(text); }

double roundedToDigits(double value, int digits) {
  char text[kExactNumberLength];
  const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, digits - 1).ptr;
  return readDouble({text, end});
}

void convertValue(WideView text, double* target) {
  readNarrow(text, [target](std::string_view bytes) { readExactDouble(bytes, target); });
}

void convertValue(WideView text, LONG* target) {
  readNarrow(text, [target](std::string_view bytes) { *target = readInteger(bytes); });
}

}  // namespace qs
