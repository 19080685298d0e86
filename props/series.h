// A Taylor series in one variable, the temperature: a number, or a vector of numbers, with its first and perhaps its
// second derivative. It serves the forms and the transformations in the place of the number; the value has the very
// bits that the number has.
#pragma once

#include <type_traits>

#include "com/not_set.h"
#include "props/form_functions.h"

namespace qs::form {

struct Nothing {};

template <class V, int order>
struct Series {
  static_assert(order == 1 || order == 2);
  V value;
  V first;
  std::conditional_t<order == 2, V, Nothing> second;
};

template <class V, int order>
bool isEmpty(const Series<V, order>& x) {
  return qs::isEmpty(x.value);
}

// A factor that is zero removes a derivative even where that is infinite or none, as that of x^0.35 at zero. Vectors
// leave NaN in its place; such a lane is then computed again as one number.
QS_INLINE double scaled(double factor, double derivative) {
  const double product = factor * derivative;
  return factor == 0.0 && product != product ? 0.0 : product;
}
template <class V>
QS_INLINE V scaled(double factor, V derivative) {
  return factor * derivative;
}

// f(x), whose value and derivatives are given at the value of x.
template <class V, int order>
QS_INLINE Series<V, order> composed(Series<V, order> x, V value, V first, [[maybe_unused]] V second) {
  if constexpr (order == 1)
    return {value, first * x.first, {}};
  else
    return {value, first * x.first, second * (x.first * x.first) + first * x.second};
}

template <class V, int order>
QS_INLINE Series<V, order> operator-(Series<V, order> x) {
  if constexpr (order == 1)
    return {-x.value, -x.first, {}};
  else
    return {-x.value, -x.first, -x.second};
}

#define QS_SUM(op)                                                                 \
  template <class V, int order>                                                    \
  QS_INLINE Series<V, order> operator op(Series<V, order> x, Series<V, order> y) { \
    if constexpr (order == 1)                                                      \
      return {x.value op y.value, x.first op y.first, {}};                         \
    else                                                                           \
      return {x.value op y.value, x.first op y.first, x.second op y.second};       \
  }                                                                                \
  template <class V, int order>                                                    \
  QS_INLINE Series<V, order> operator op(Series<V, order> x, double y) {           \
    return {x.value op y, x.first, x.second};                                      \
  }
QS_SUM(+)
QS_SUM(-)
#undef QS_SUM
template <class V, int order>
QS_INLINE Series<V, order> operator+(double x, Series<V, order> y) {
  return {x + y.value, y.first, y.second};
}
template <class V, int order>
QS_INLINE Series<V, order> operator-(double x, Series<V, order> y) {
  const Series<V, order> negative = -y;
  return {x - y.value, negative.first, negative.second};
}

template <class V, int order>
QS_INLINE Series<V, order> operator*(Series<V, order> x, Series<V, order> y) {
  Series<V, order> product{x.value * y.value, x.first * y.value + x.value * y.first, {}};
  if constexpr (order == 2) product.second = x.second * y.value + 2.0 * (x.first * y.first) + x.value * y.second;
  return product;
}
template <class V, int order>
QS_INLINE Series<V, order> operator*(double x, Series<V, order> y) {
  Series<V, order> product{x * y.value, scaled(x, y.first), {}};
  if constexpr (order == 2) product.second = scaled(x, y.second);
  return product;
}
template <class V, int order>
QS_INLINE Series<V, order> operator*(Series<V, order> x, double y) {
  return y * x;
}

// Reciprocals are written as such: the many in one form are computed once.
template <class V, int order>
QS_INLINE Series<V, order> operator/(Series<V, order> x, Series<V, order> y) {
  const V inverse = 1.0 / y.value;
  Series<V, order> quotient{x.value / y.value, {}, {}};
  quotient.first = (x.first - quotient.value * y.first) * inverse;
  if constexpr (order == 2)
    quotient.second = (x.second - 2.0 * (quotient.first * y.first) - quotient.value * y.second) * inverse;
  return quotient;
}
template <class V, int order>
QS_INLINE Series<V, order> operator/(double x, Series<V, order> y) {
  const V quotient = x / y.value, inverse = 1.0 / y.value, first = -(quotient * inverse);
  return composed(y, quotient, first, -2.0 * (first * inverse));
}
template <class V, int order>
QS_INLINE Series<V, order> operator/(Series<V, order> x, double y) {
  Series<V, order> quotient{x.value / y, x.first / y, {}};
  if constexpr (order == 2) quotient.second = x.second / y;
  return quotient;
}

template <int n, class V, int order>
QS_INLINE Series<V, order> power(Series<V, order> x) {
  if constexpr (n == 2)
    return composed(x, power<2>(x.value), 2.0 * x.value, V{} + 2.0);
  else
    return composed(x, power<n>(x.value), n * power<n - 1>(x.value), (n * (n - 1)) * power<n - 2>(x.value));
}

// x^exponent, whose value is given. At zero, where the quotients are NaN, the derivatives are powers of zero.
template <class V, int order>
QS_INLINE Series<V, order> raised(Series<V, order> x, double exponent, V value) {
  const V inverse = 1.0 / x.value;
  V first = exponent * value * inverse, second = (exponent - 1.0) * first * inverse;
  if constexpr (std::is_same_v<V, double>) {
    if (x.value == 0.0 && first != first) {
      first = scaled(exponent, pow(0.0, exponent - 1.0));
      second = scaled(exponent * (exponent - 1.0), pow(0.0, exponent - 2.0));
    }
  }
  return composed(x, value, first, second);
}
template <class V, int order>
QS_INLINE Series<V, order> pow(Series<V, order> x, double exponent) {
  return raised(x, exponent, pow(x.value, exponent));
}
template <class V, int order>
QS_INLINE Series<V, order> powOneThird(Series<V, order> x) {
  return raised(x, 1.0 / 3.0, powOneThird(x.value));
}
template <class V, int order>
QS_INLINE Series<V, order> pow(double base, Series<V, order> y) {
  const V value = pow(base, y.value), first = log(base) * value;
  return composed(y, value, first, log(base) * first);
}
// The logarithm's derivatives are those of y ln x.
template <class V, int order>
QS_INLINE Series<V, order> pow(Series<V, order> x, Series<V, order> y) {
  const V value = pow(x.value, y.value), logOfX = log(x.value), inverse = 1.0 / x.value;
  const V growth = x.first * inverse;
  const V first = y.first * logOfX + y.value * growth;
  Series<V, order> result{value, value * first, {}};
  if constexpr (order == 2)
    result.second = value * (first * first + y.second * logOfX + 2.0 * (y.first * growth) +
                             y.value * (x.second * inverse - growth * growth));
  if constexpr (std::is_same_v<V, double>) {
    if (result.first != result.first && (x.value == 0.0 || y.first == 0.0)) return raised(x, y.value, value);
  }
  return result;
}

template <class V, int order>
QS_INLINE Series<V, order> exp(Series<V, order> x) {
  const V value = exp(x.value);
  return composed(x, value, value, value);
}
template <class V, int order>
QS_INLINE Series<V, order> log(Series<V, order> x) {
  const V inverse = 1.0 / x.value;
  return composed(x, log(x.value), inverse, -(inverse * inverse));
}
template <class V, int order>
QS_INLINE Series<V, order> log10(Series<V, order> x) {
  constexpr double kInverseLn10 = 0.43429448190325182765;
  const V inverse = 1.0 / x.value, first = kInverseLn10 * inverse;
  return composed(x, log10(x.value), first, -(first * inverse));
}

template <class V, int order>
QS_INLINE Series<V, order> sinh(Series<V, order> x) {
  const auto both = math::sinhAndCosh(x.value);
  return composed(x, both.sinh, both.cosh, both.sinh);
}
template <class V, int order>
QS_INLINE Series<V, order> cosh(Series<V, order> x) {
  const auto both = math::sinhAndCosh(x.value);
  return composed(x, both.cosh, both.sinh, both.cosh);
}

template <class V, int order>
QS_INLINE Series<V, order> sin(Series<V, order> x) {
  const V value = sin(x.value);
  return composed(x, value, cos(x.value), -value);
}
template <class V, int order>
QS_INLINE Series<V, order> cos(Series<V, order> x) {
  const V value = cos(x.value);
  return composed(x, value, -sin(x.value), -value);
}
template <class V, int order>
QS_INLINE Series<V, order> tan(Series<V, order> x) {
  const V value = tan(x.value), first = 1.0 + value * value;
  return composed(x, value, first, 2.0 * (value * first));
}
template <class V, int order>
QS_INLINE Series<V, order> asin(Series<V, order> x) {
  const V rest = (1.0 - x.value) * (1.0 + x.value), first = 1.0 / sqrt(rest);
  return composed(x, asin(x.value), first, x.value * first / rest);
}
template <class V, int order>
QS_INLINE Series<V, order> acos(Series<V, order> x) {
  const V rest = (1.0 - x.value) * (1.0 + x.value), first = -1.0 / sqrt(rest);
  return composed(x, acos(x.value), first, x.value * first / rest);
}
template <class V, int order>
QS_INLINE Series<V, order> atan(Series<V, order> x) {
  const V first = 1.0 / (1.0 + x.value * x.value);
  return composed(x, atan(x.value), first, -2.0 * (x.value * first * first));
}

// Where the value is the limit or zero instead, it does not change.
template <class V, int order>
QS_INLINE Series<V, order> atMost(Series<V, order> x, double limit) {
  const V most = V{} + limit;
  Series<V, order> result{atMost(x.value, limit), math::zeroWhereLess(x.first, most, x.value), {}};
  if constexpr (order == 2) result.second = math::zeroWhereLess(x.second, most, x.value);
  return result;
}
template <class V, int order>
QS_INLINE Series<V, order> orZero(Series<V, order> x) {
  const V magnitude = math::kernel::fromBits<V>(math::kernel::toBits(x.value) & ~math::kSignBit);
  const V least = V{} + math::kLeastSquared;
  Series<V, order> result{orZero(x.value), math::zeroWhereLess(x.first, magnitude, least), {}};
  if constexpr (order == 2) result.second = math::zeroWhereLess(x.second, magnitude, least);
  return result;
}

}  // namespace qs::form
