// Writes compounds as a sheet, in the columns of bank/csv_columns.h.
#pragma once

#include <string>
#include <string_view>

#include "bank/source.h"

namespace qs::bank {

// A row for each compound, with the columns that some compound needs. Throws std::runtime_error, naming the compound,
// for a synonym that has the sign between two synonyms.
std::string writeCsv(const Source& source);

// A cell as a sheet holds it, in quotation marks where it needs them.
std::string csvCell(std::string_view text);

}  // namespace qs::bank
