#include "props/transform.h"

#include "props/form_functions.h"
#include "props/series.h"
#include "props/terms.h"

namespace qs {
namespace form {
namespace {

template <class Number>
Number forward(Number x, [[maybe_unused]] double P, const Transformation& t) {
  const double n = t.norm, a = t.a, b = t.b;
  switch (t.shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) \
  case shape:                                \
    return of_x;
#include "props/transformations.def"
    default:
      return Number{} + kEmptyValue;
  }
}

template <class Number>
Number back(Number y, double P, const Transformation& t) {
  const double n = t.norm, a = t.a, b = t.b;
  switch (t.shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) \
  case shape:                                \
    return of_y;
#include "props/transformations.def"
    default:
      return Number{} + kEmptyValue;
  }
}

}  // namespace
}  // namespace form

bool Transformation::isOther() const {
  switch (shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) case shape:
#include "props/transformations.def"
    return !lacksConstants();
    default:
      return false;
  }
}

template <class Number>
bool transformForward(const Transformation& transformation, double P, Number* x) {
  if (transformation.lacksConstants()) return false;
  *x = form::forward(*x, P, transformation);
  if (isEmpty(*x)) return false;
  const double power = transformation.power;
  if (power != 1.0) *x = form::pow(*x, power, form::wholeOf(power));
  return true;
}

template <class Number>
bool transformBack(const Transformation& transformation, double P, Number* y) {
  if (transformation.lacksConstants()) return false;
  const double power = 1.0 / transformation.power;
  if (transformation.power != 1.0) *y = form::pow(*y, power, form::wholeOf(power));
  *y = form::back(*y, P, transformation);
  return !isEmpty(*y);
}

template bool transformForward(const Transformation&, double, double*);
template bool transformBack(const Transformation&, double, double*);
template bool transformForward(const Transformation&, double, form::Series<double, 2>*);
template bool transformBack(const Transformation&, double, form::Series<double, 2>*);
template bool transformForward(const Transformation&, double, form::ShiftedPower*);
template bool transformBack(const Transformation&, double, form::ShiftedPower*);

}  // namespace qs
