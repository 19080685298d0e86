// The values of a phase by property name. A value that is not set is -32767.
#pragma once

#include <array>

#include "com/com_ptr.h"
#include "com/not_set.h"
#include "interfaces/interfaces.h"
#include "platform/text.h"

namespace qs {

// Enumerations are kept as numbers, which may be any.
struct PhaseState {
#define PHASE_ENUMERATION(name, type) LONG name = kEmptyInteger;
#define PHASE_REAL(name) double name = kEmptyValue;
#define PHASE_ARRAY(name) ComPtr<IRealArrayDisp> name;
#define PHASE_FLAG(name) BYTE name = 0;
#include "phase/properties.def"

  bool holdsArrays() const {
#define PHASE_ARRAY(name) \
  if (name) return true;
#include "phase/properties.def"
    return false;
  }
};

// The properties that every phase has, in the order of their registration.
enum class StandardProperty : std::size_t {
#define PHASE_PROPERTY(name) name,
#include "phase/properties.def"
  None
};
inline constexpr auto kStandardCount = static_cast<std::size_t>(StandardProperty::None);
static_assert(kStandardCount == 16);

// All names that a phase registers: the standard properties, then the derivative identifiers.
inline constexpr WideView kRegisteredNames[] = {
#define PHASE_PROPERTY(name) OLESTR(#name),
#define PHASE_DERIVATIVE(name) OLESTR(#name),
#include "phase/properties.def"
};
inline constexpr std::size_t kRegisteredCount = std::size(kRegisteredNames);
static_assert(kRegisteredCount == 32);

// The number that the host has assigned to each registered name.
struct RegisteredNumbers : std::array<LONG, kRegisteredCount> {
  constexpr RegisteredNumbers() { fill(kEmptyInteger); }
};

}  // namespace qs
