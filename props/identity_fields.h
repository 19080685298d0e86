// The names of the fields that identify a compound.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "platform/text.h"

namespace qs {

enum class IdentityField : int {
#define IDENTITY_FIELD(key, field, interface_name, attribute) key,
#include "props/identity.def"
};

// In the order of IdentityField.
inline constexpr auto kIdentityNames = std::to_array<WideView>({
#define IDENTITY_FIELD(key, field, interface_name, attribute) OLESTR(#key),
#include "props/identity.def"
});

// The most synonyms that a compound takes.
inline constexpr std::size_t kMostSynonyms = 64;

constexpr WideView nameOf(IdentityField field) { return kIdentityNames[static_cast<std::size_t>(field)]; }

}  // namespace qs
