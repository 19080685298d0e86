// New property objects with their name and kind.
#pragma once

#include <span>

#include "compound/property_table.h"

namespace qs {

PropertyPtr newPoint(WideView name, double value);

struct EquationData {
  LONG shape;  // a tagEquationShapeEnum
  double tMin, tMax, pMin, pMax;
  std::span<const double> coefficients;
};

// Throws CQSCOMError(E_FAIL) for a number that is no shape and for too few coefficients; further ones are ignored.
PropertyPtr newEquation(WideView name, const EquationData& data);

}  // namespace qs
