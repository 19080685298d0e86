// UTF-8 as the system code page.
#include "platform/text.h"

namespace qs {
namespace {

// The code point that starts `text` and its length in bytes; a byte that starts no valid sequence is a character of its
// own.
std::pair<char32_t, std::size_t> decode(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  const std::size_t length = first < 0x80 ? 1 : first >> 5 == 6 ? 2 : first >> 4 == 14 ? 3 : first >> 3 == 30 ? 4 : 0;
  if (length == 1 || length == 0 || length > text.size()) return {first, 1};

  char32_t point = first & (0x7Fu >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (byte(i) >> 6 != 2) return {first, 1};
    point = point << 6 | (byte(i) & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
  if (point < kSmallest[length] || point > 0x10FFFF || surrogate) return {first, 1};
  return {point, length};
}

}  // namespace

WideString widen(std::string_view text) {
  WideString wide;
  wide.reserve(text.size());
  while (!text.empty()) {
    const auto [point, length] = decode(text);
    text.remove_prefix(length);
    if (point < 0x10000) {
      wide.push_back(static_cast<OLECHAR>(point));
    } else {
      wide.push_back(static_cast<OLECHAR>(0xD800 + ((point - 0x10000) >> 10)));
      wide.push_back(static_cast<OLECHAR>(0xDC00 + ((point - 0x10000) & 0x3FF)));
    }
  }
  return wide;
}

std::string narrow(WideView text) {
  std::string bytes;
  bytes.reserve(text.size());
  const auto put = [&bytes](char32_t value) { bytes.push_back(static_cast<char>(value)); };
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t point = text[i];
    if (point >= 0xD800 && point <= 0xDFFF) {
      const bool pair = point < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
      point = pair ? 0x10000 + ((point - 0xD800) << 10) + (text[++i] - 0xDC00u) : U'?';
    }
    if (point < 0x80) {
      put(point);
    } else if (point < 0x800) {
      put(0xC0 | point >> 6);
      put(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
      put(0xE0 | point >> 12);
      put(0x80 | (point >> 6 & 0x3F));
      put(0x80 | (point & 0x3F));
    } else {
      put(0xF0 | point >> 18);
      put(0x80 | (point >> 12 & 0x3F));
      put(0x80 | (point >> 6 & 0x3F));
      put(0x80 | (point & 0x3F));
    }
  }
  return bytes;
}

}  // namespace qs
