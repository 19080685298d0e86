// Eight wide characters that are examined together, in a vector register.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/text.h"

namespace qs {

inline constexpr std::size_t kBlockUnits = 8;
using WideBlock [[gnu::vector_size(2 * kBlockUnits)]] = std::uint16_t;

inline WideBlock blockAt(const OLECHAR* text) {
  WideBlock block;
  std::memcpy(&block, text, sizeof block);
  return block;
}

// A block of one unit, repeated.
inline WideBlock blockOf(OLECHAR unit) { return WideBlock{} + static_cast<std::uint16_t>(unit); }

// Whether a comparison of blocks is true for a unit.
template <class Comparison>
bool any(Comparison comparison) {
  std::uint64_t words[sizeof comparison / sizeof(std::uint64_t)];
  std::memcpy(words, &comparison, sizeof words);
  std::uint64_t all = 0;
  for (const std::uint64_t word : words) all |= word;
  return all != 0;
}

}  // namespace qs
