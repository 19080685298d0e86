// The transformations of an equation's X before, and of its result after, evaluation.
#pragma once

#include "platform/com_types.h"

namespace qs {

// One transformation: a tagXYShapeEnum, its norm and power, and the constants of COMxppdsm1.
struct Transformation {
  LONG shape;
  double norm;
  double power;
  double a;
  double b;
};

// Transforms *x at pressure P, then raises it to the power. False for a shape that is no transformation, for missing
// constants and for the empty value; *x then holds nothing of use.
bool transformForward(const Transformation& transformation, double P, double* x);

// The inverse, for results: undoes the power, then the shape. COMxscale is undone by norm / (1 - 1/y), the negative of
// its algebraic inverse: the stored data were fitted that way.
bool transformBack(const Transformation& transformation, double P, double* y);

}  // namespace qs
