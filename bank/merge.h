// Puts several sources together.
#pragma once

#include <vector>

#include "bank/source.h"

namespace qs::bank {

// What becomes of a compound whose number an earlier source has.
enum class SameNumber { Refuse, Keep, Replace };

// The compounds of all sources, with what is known of their values; origins of the same name that differ get names of
// their own, and waivers go with their compounds. An identity member keeps its origin where all sources agree. Throws
// std::runtime_error, naming both places, for a number that is refused.
Source merge(std::vector<Source> sources, SameNumber rule);

}  // namespace qs::bank
