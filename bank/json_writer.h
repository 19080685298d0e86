// Writes a compound source as JSON text, in the form that docs/database.md describes.
#pragma once

#include <string>

#include "bank/source.h"

namespace qs::bank {

// A line for each value; readSource reads the same from it. Values must be finite, as those of a source or a database
// are.
std::string writeSource(const Source& source);

}  // namespace qs::bank
