// The derivatives of equations by temperature.
#pragma once

#include "props/curve.h"

namespace qs {

struct Derivatives {
  double value;
  double first;   // per K
  double second;  // per K^2
};

// At temperature T, in K, and pressure P, in kPa: the value that GetValue writes, bit for bit, and the derivatives of
// the curve as the equation goes on outside its ranges. A derivative may be infinite; it is NaN where the value is, and
// where it is not known. False, and no result, where GetValue returns S_FALSE, and without a form.
bool derivativesOf(const Equation& equation, double T, double P, Derivatives& result);

}  // namespace qs
