// The equations of ChemSep's libraries and the forms that they become.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "bank/refit.h"
#include "persist/database_writer.h"

namespace qs::bank {

// A correlation of a library, in its unit: coefficients A to E and limits.
struct LibraryCorrelation {
  std::array<double, 5> coefficients{};
  double tmin = 0.0, tmax = 0.0;              // K
  std::optional<double> criticalTemperature;  // of the compound, K
};

struct LibraryEquation {
  int number;
  std::string_view formula;
  // The temperature at which it ends, where there is one; nothing where that is not known. Null for an equation that
  // does not end.
  std::optional<double> (*end)(const LibraryCorrelation&);
  // The same curve in a form that a database holds, without limits; null where there is none.
  database::Correlation (*exact)(const LibraryCorrelation&);
  // The value, where there is no such form.
  double (*value)(const LibraryCorrelation&, double T);
};

// Null for a number that is not known.
const LibraryEquation* findEquation(int number);

}  // namespace qs::bank
