// Reads a compound source: compounds as JSON text for people, in the form that docs/database.md describes.
#pragma once

#include <filesystem>
#include <vector>

#include "bank/finding.h"
#include "bank/source.h"

namespace qs::bank {

// A source file. What is not as described becomes a finding, in the order of lines, and is left out, a whole value or
// compound at a time; the rules are
//   syntax   the text is no JSON, and nothing is read
//   shape    a member is missing, unknown, there twice or of another type
//   name     a key, form, transformation, family, word or source that does not exist
//   unit     a unit that is not that of the key
// What a database cannot hold is not checked here. Throws std::runtime_error, with the system's reason, when the file
// cannot be read.
Source readSource(const std::filesystem::path& file, std::vector<Finding>& findings);

// The same; throws std::runtime_error for the first finding.
Source readSource(const std::filesystem::path& file);

}  // namespace qs::bank
