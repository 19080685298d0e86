// Brings a curve to a form of equation that a database can hold.
#pragma once

#include <functional>
#include <optional>

#include "persist/database_writer.h"

namespace qs::bank {

struct Curve {
  std::function<double(double)> value;  // at a temperature in K
  double tmin, tmax;
  bool isExponential;                         // in 1/T
  std::optional<double> criticalTemperature;  // where it is zero
};

struct Refit {
  database::Correlation correlation;  // the coefficients have twelve digits
  double deviation;                   // the largest, relative to the curve
};

// The largest deviation of a refit that is worth having.
inline constexpr double kLargestDeviation = 0.02;

// The best of VELDB3, DIPPR101 for an exponential curve, and DIPPR106 for one that is zero at the critical temperature;
// all are fitted by least squares of the relative deviation. Nothing for a curve that is not positive inside its range.
std::optional<Refit> refit(const Curve& curve);

// The same with VELDB1 alone.
std::optional<Refit> refitQuartic(const Curve& curve);

}  // namespace qs::bank
