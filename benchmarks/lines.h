// The printed lines, alike in every benchmark program: title, measured value, bound and whether it is kept.
#pragma once

#include <iomanip>
#include <iostream>
#include <string>

namespace qs::bench {

// Whether the bound is kept. The line is left open for what the caller adds.
inline bool printLine(const std::string& title, double measured, double bound, const std::string& unit, int digits) {
  const bool kept = measured <= bound;
  std::cout << std::left << std::setw(50) << title << std::right << std::fixed << std::setprecision(digits)
            << std::setw(8) << measured << " " << unit << "   at most " << std::setw(6) << bound << " " << unit
            << (kept ? "   ok" : "   short");
  return kept;
}

}  // namespace qs::bench
