// UTF-8 as the system code page.
#include "platform/text.h"

#include <algorithm>
#include <cstring>

#include "platform/unit_block.h"

namespace qs {
namespace {

// The code point that starts `text` and its length in bytes; a byte that starts no valid sequence is a character of its
// own.
std::pair<char32_t, std::size_t> decode(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return {first, 1};
  const std::size_t length = first >> 5 == 6 ? 2 : first >> 4 == 14 ? 3 : first >> 3 == 30 ? 4 : 0;
  if (length == 0 || length > text.size()) return {first, 1};

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

using NarrowBlock [[gnu::vector_size(kBlockUnits)]] = std::uint8_t;

// Moves blocks of ASCII, which most text is, from the start of a text to `out`, up to `room` units. Returns the end.
template <class From, class To, class Unit, class Target>
Target* takeAscii(std::basic_string_view<Unit>& text, Target* out, std::size_t room) {
  room = std::min(room, text.size());
  std::size_t taken = 0;
  while (taken < room && room >= kBlockUnits) {
    const std::size_t place = std::min(taken, room - kBlockUnits);  // the last block may begin in the one before
    From block;
    std::memcpy(&block, text.data() + place, sizeof block);
    if (any(block >= 0x80)) break;
    const auto converted = __builtin_convertvector(block, To);
    std::memcpy(out + place, &converted, sizeof converted);
    taken = place + kBlockUnits;
  }
  text.remove_prefix(taken);
  return out + taken;
}

}  // namespace

WideString widen(std::string_view text) {
  WideString wide(text.size(), 0);
  wide.resize(static_cast<std::size_t>(writeWide(text, wide.data()) - wide.data()));
  return wide;
}

WideString widenUtf8(std::string_view text) { return widen(text); }

OLECHAR* writeWide(std::string_view text, OLECHAR* out) {
  while (!text.empty()) {
    out = takeAscii<NarrowBlock, WideBlock>(text, out, text.size());
    for (std::size_t i = 0; i < kBlockUnits && !text.empty(); ++i) {
      const auto [point, length] = decode(text);
      text.remove_prefix(length);
      if (point < 0x10000) {
        *out++ = static_cast<OLECHAR>(point);
      } else {
        *out++ = static_cast<OLECHAR>(0xD800 + ((point - 0x10000) >> 10));
        *out++ = static_cast<OLECHAR>(0xDC00 + ((point - 0x10000) & 0x3FF));
      }
    }
  }
  return out;
}

std::string narrow(WideView text) {
  std::string bytes;
  bytes.reserve(text.size());
  const auto put = [&bytes](char32_t value) { bytes.push_back(static_cast<char>(value)); };
  while (!text.empty()) {
    char piece[512];
    bytes.append(piece, takeAscii<WideBlock, NarrowBlock>(text, piece, sizeof piece));
    for (std::size_t i = 0; i < kBlockUnits && !text.empty(); ++i) {
      char32_t point = text[0];
      text.remove_prefix(1);
      if (point >= 0xD800 && point <= 0xDFFF) {
        const bool pair = point < 0xDC00 && !text.empty() && text[0] >= 0xDC00 && text[0] <= 0xDFFF;
        point = pair ? 0x10000 + ((point - 0xD800) << 10) + (text[0] - 0xDC00u) : U'?';
        if (pair) text.remove_prefix(1);
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
  }
  return bytes;
}

}  // namespace qs
