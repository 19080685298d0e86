// Finds compounds by what people call them. Letters of ASCII count the same in either case.
#pragma once

#include <string_view>
#include <vector>

#include "bank/source.h"

namespace qs::bank {

// Those whose number, name, IUPAC name, CAS number or synonym is the text.
std::vector<const Compound*> compoundsNamed(const Source& source, std::string_view text);

// Those whose number is the text, or whose names, formula, CAS number or a synonym have it within them.
std::vector<const Compound*> compoundsLike(const Source& source, std::string_view text);

}  // namespace qs::bank
