// Correlation equations: property objects that depend on temperature.
#pragma once

#include <cmath>
#include <span>

#include "props/forms.h"
#include "props/property.h"
#include "props/transform.h"

namespace qs {

// What an equation consists of, beside its name.
struct Equation {
  const EquationForm& form;
  std::span<double> coefficients;  // as many as the form has
  int whole;                       // form::wholeOf the form's exponent, where it has one
  // Which transformations there are: none, that to ln Y alone, or others.
  enum class Way { Plain, LnY, Any } way = Way::Plain;
  double tMin = 1e-05;
  double tMax = 1e+10;
  double pMin = 1e-05;
  double pMax = 1e+15;
  LONG xShape = COMx;
  LONG yShape = COMx;
  double xNorm = 1.0;
  double yNorm = 1.0;
  double xPow = 1.0;
  double yPow = 1.0;
  double a = kEmptyValue;
  double b = kEmptyValue;

  Transformation x() const { return {xShape, xNorm, xPow, a, b}; }
  Transformation y() const { return {yShape, yNorm, yPow, a, b}; }
  bool lacksConstants() const {
    return (xShape == COMxppdsm1 || yShape == COMxppdsm1) && (a == kEmptyValue || b == kEmptyValue);
  }

  // Whether a state is in the range. These comparisons raise nothing that a host could trap.
  bool isWithin(double T, double P) const {
    return std::isgreaterequal(T, tMin) && std::islessequal(T, tMax) && std::isgreaterequal(P, pMin) &&
           std::islessequal(P, pMax);
  }

  // Whether not the form's function holds but form::extrapolatedVELDB5.
  bool extrapolatesAt(double T) const { return form.shape == PropCurveVELDB5 && !(tMin <= T && T <= tMax); }
};

// Creates the equation of a tagEquationShapeEnum, of type EquationProp, with empty coefficients, for the caller to
// own. E_FAIL, with *out as it was, for a number that is no shape; E_OUTOFMEMORY, with *out null.
HRESULT CreateEquationProp(LONG shape, CQSAbstractProp** out);

}  // namespace qs
