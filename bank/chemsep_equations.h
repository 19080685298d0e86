// The equations of ChemSep's libraries and the forms that they become.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "bank/refit.h"
#include "persist/database_writer.h"

namespace qs::bank {

// A correlation of a library: coefficients A to E and limits as in the file.
struct LibraryCorrelation {
  std::array<double, 5> coefficients{};
  double tmin = 0.0, tmax = 0.0;              // K
  std::optional<double> criticalTemperature;  // of the compound, K
  double times = 1.0, over = 1.0;             // to the unit of the key

  double scaled(double coefficient) const { return coefficient * times / over; }
};

struct LibraryEquation {
  int number;
  std::string_view formula;
  // The temperature at which it ends, where there is one; nothing where that is not known. Null for an equation that
  // does not end.
  std::optional<double> (*end)(const LibraryCorrelation&);
  // The same curve in a form that a database holds, without limits; null where there is none.
  database::Correlation (*exact)(const LibraryCorrelation&);
  // The value in the unit of the library, where there is no such form.
  double (*value)(const LibraryCorrelation&, double T);
};

// Null for a number that is not known.
const LibraryEquation* findEquation(int number);

}  // namespace qs::bank
