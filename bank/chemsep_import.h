// Makes a source of a library in ChemSep's XML form. docs/import.md describes what becomes of each element.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "bank/finding.h"
#include "bank/source.h"

namespace qs::bank {

struct ChemsepOptions {
  std::int32_t firstNumber = 1000;  // of the compounds, which are numbered in their order
  bool libraryNumbers = false;      // instead the numbers that the library gives them
};

// Elements of one name that were left out for one reason.
struct LeftOut {
  std::string element, reason;
  std::string first;  // the compound of the first
  std::size_t times = 0;
};

struct ChemsepImport {
  Source source;
  std::vector<LeftOut> leftOut;
};

// Faults in elements become findings, each with its line, of the rule `import`; the import goes on without the element.
// Throws std::runtime_error for a file that cannot be read or is no such library.
ChemsepImport importChemsep(const std::filesystem::path& file, const ChemsepOptions& options,
                            std::vector<Finding>& findings);

}  // namespace qs::bank
