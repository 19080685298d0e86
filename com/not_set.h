// The numbers that stand for "not set" where hosts read a value, and in the database; compared exactly.
#pragma once

#include "platform/com_types.h"

namespace qs {

inline constexpr INT kEmptyInteger = -32767;
inline constexpr double kEmptyValue = kEmptyInteger;

}  // namespace qs
