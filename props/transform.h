// The transformations of an equation's X before, and of its result after, evaluation.
#pragma once

#include "com/not_set.h"
#include "interfaces/interfaces.h"

namespace qs {

// One transformation: a tagXYShapeEnum, its norm and power, and the constants of COMxppdsm1.
struct Transformation {
  LONG shape;
  double norm;
  double power;
  double a;
  double b;

  bool operator==(const Transformation&) const = default;

  // Whether the shape is that of a transformation, with the constants that it needs.
  bool isDefined() const { return shape == COMx || shape == COMlnx || isOther(); }
  bool lacksConstants() const { return shape == COMxppdsm1 && (a == kEmptyValue || b == kEmptyValue); }

 private:
  bool isOther() const;
};

// Transforms *x at pressure P, then raises it to the power. False for a shape that is no transformation, for missing
// constants and for the empty value; *x then holds nothing of use. A number is a double, a Series<double, 2> or a
// ShiftedPower.
template <class Number>
bool transformForward(const Transformation& transformation, double P, Number* x);

// The same for results: undoes the power, then the shape.
template <class Number>
bool transformBack(const Transformation& transformation, double P, Number* y);

}  // namespace qs
