// What changed between two sources or databases.
#pragma once

#include <string>
#include <vector>

#include "bank/source.h"

namespace qs::bank {

struct Difference {
  std::string compound = {};  // as database::describe names it; empty for what is of no compound
  std::string field = {};     // a column of bank/csv_columns.h; empty where the whole compound is in one of them only
  std::string before = {}, after = {};
};

// In the order of the compounds' numbers. Where values come from is compared when both know it of some.
std::vector<Difference> differences(const Source& before, const Source& after);

// In one line: "+ COMPOUND", "- COMPOUND" or "COMPOUND, FIELD: BEFORE -> AFTER".
std::string textOf(const Difference& difference);

}  // namespace qs::bank
