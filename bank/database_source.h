// Reads a database back into the model of a source.
#pragma once

#include <filesystem>
#include <vector>

#include "bank/finding.h"
#include "bank/source.h"

namespace qs::bank {

// All that a database holds, in the order of its index. What a source cannot hold, or a build refuses, becomes a
// finding of the rule not-kept, with the severity of a warning; a database that qsdb made has none. Throws
// std::runtime_error when the database cannot be read.
Source readDatabase(const std::filesystem::path& directory, std::vector<Finding>& findings);

// A source file, or the database in a directory.
Source readSourceOrDatabase(const std::filesystem::path& place, std::vector<Finding>& findings);

}  // namespace qs::bank
