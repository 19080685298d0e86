#include "props/transform.h"

#include "props/form_functions.h"

namespace qs {
namespace form {
namespace {

double forward(double x, [[maybe_unused]] double P, const Transformation& t) {
  const double n = t.norm, a = t.a, b = t.b;
  switch (t.shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) \
  case shape:                                \
    return of_x;
#include "props/transformations.def"
    default:
      return kEmptyValue;
  }
}

double back(double y, double P, const Transformation& t) {
  const double n = t.norm, a = t.a, b = t.b;
  switch (t.shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) \
  case shape:                                \
    return of_y;
#include "props/transformations.def"
    default:
      return kEmptyValue;
  }
}

}  // namespace
}  // namespace form

bool transformForward(const Transformation& transformation, double P, double* x) {
  if (transformation.lacksConstants()) return false;
  *x = form::forward(*x, P, transformation);
  if (*x == kEmptyValue) return false;
  const double power = transformation.power;
  if (power != 1.0) *x = form::pow(*x, power, form::wholeOf(power));
  return true;
}

bool transformBack(const Transformation& transformation, double P, double* y) {
  if (transformation.lacksConstants()) return false;
  const double power = 1.0 / transformation.power;
  if (transformation.power != 1.0) *y = form::pow(*y, power, form::wholeOf(power));
  *y = form::back(*y, P, transformation);
  return *y != kEmptyValue;
}

}  // namespace qs
