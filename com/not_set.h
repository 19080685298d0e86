// The numbers that stand for "not set" where hosts read a value, and in the database; compared exactly.
#pragma once

#include <cstdint>

#include "platform/com_types.h"

namespace qs {

inline constexpr INT kEmptyInteger = -32767;
inline constexpr double kEmptyValue = kEmptyInteger;

// As quick as a comparison of integers; no number but one is equal to the empty value.
constexpr bool isEmpty(double value) {
  return __builtin_bit_cast(std::uint64_t, value) == __builtin_bit_cast(std::uint64_t, kEmptyValue);
}

}  // namespace qs
