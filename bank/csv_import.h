// Makes a source of a sheet that has a compound in each row, in the columns of bank/csv_columns.h.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "bank/finding.h"
#include "bank/source.h"

namespace qs::bank {

// All faults become findings of the rule `import`, each with its line and the header of its column. Throws
// std::runtime_error for a file that cannot be read.
Source importCsv(const std::filesystem::path& file, std::vector<Finding>& findings);

// The keys of a sheet that is to be filled in.
std::span<const Key> usualKeys();

// The header of such a sheet: the identity, and for each key a value or, where it depends on temperature, an equation.
std::string csvTemplate(std::span<const Key> keys);

}  // namespace qs::bank
