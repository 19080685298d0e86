// Reads a compound source: compounds as JSON text for people, in the form that docs/database.md describes.
#pragma once

#include <filesystem>
#include <vector>

#include "persist/database_writer.h"

namespace qs::bank {

// The compounds of a source file, in its order. Throws std::runtime_error for anything that is not as described, names
// included, with the file, and the line of a syntax error or the compound and field. What a database cannot hold is not
// checked here.
std::vector<database::CompoundData> readCompoundSource(const std::filesystem::path& path);

}  // namespace qs::bank
