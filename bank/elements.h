// The chemical elements, and what a compound's formula says.
#pragma once

#include <limits>
#include <map>
#include <string_view>
#include <variant>

namespace qs::bank {

struct Element {
  std::string_view symbol;
  double weight;  // kg/kmol
  // Of an atom of the reference state at 298.15 K and 100 kPa, kJ/(kmol K).
  double entropy = std::numeric_limits<double>::quiet_NaN();
};

// The number of atoms of each element.
using Atoms = std::map<const Element*, double>;

// What is wrong with a formula.
struct FormulaFault {
  std::string_view rest;  // from the fault on
  const char* reason;
};

// Reads symbols and round or square brackets, each with a number behind it or none: "CH3(CH2)4CH3".
std::variant<Atoms, FormulaFault> atomsOf(std::string_view formula);

}  // namespace qs::bank
