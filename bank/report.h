// Writes the report of a bank.
#pragma once

#include <filesystem>
#include <functional>
#include <span>

#include "bank/finding.h"
#include "bank/source.h"

namespace qs::bank {

// The most compounds that a report of one page has.
inline constexpr std::size_t kMostOnOnePage = 500;

// Writes a file with everything or, for more compounds than kMostOnOnePage, a folder of pages with the name of the
// file without ".html". An earlier report is replaced; whatever fails, it is left as it was. Returns the page to open
// first. `done` is told how many compounds are ready. Throws std::runtime_error, naming the file or folder.
std::filesystem::path saveReport(const Source& source, std::span<const Finding> findings,
                                 const std::filesystem::path& file, const std::function<void(std::size_t)>& done);

}  // namespace qs::bank
