// The entries of a folder.
#pragma once

#include <optional>
#include <vector>

#include "platform/text.h"

namespace qs {

// The names of a folder's entries, in no order; nothing when it cannot be read, and then systemReason says why. Throws
// std::bad_alloc.
std::optional<std::vector<WideString>> namesIn(const WideString& folder);

}  // namespace qs
