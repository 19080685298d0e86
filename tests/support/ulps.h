// The distance of a computed number from its expected value, in units of the last place of the latter.
#pragma once

#include <cmath>
#include <limits>

namespace qs {

inline double ulps(double actual, long double expected) {
  const double rounded = std::fabs(static_cast<double>(expected));
  const double unit = std::nextafter(rounded, std::numeric_limits<double>::infinity()) - rounded;
  return static_cast<double>(std::fabs(actual - expected)) / unit;
}

}  // namespace qs
