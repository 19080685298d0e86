// Number types over which a form gives not its value but the terms that the value is a sum of, where it is such a sum.
// What is known of an expression is in its type, so that recording costs next to nothing.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <limits>

#include "com/not_set.h"
#include "math/functions.h"

namespace qs::form {

// factor T^power.
struct Power {
  double factor;
  double power;
};

// factor T^power, times ln T where it says so.
struct Term {
  double factor;
  double power;
  bool withLog;
};

template <std::size_t count>
struct Sum {
  std::array<Term, count> terms;
};

// What is no sum of terms, and all that is computed from it.
struct Unknown {};

template <class>
inline constexpr bool isSum = false;
template <std::size_t count>
inline constexpr bool isSum<Sum<count>> = true;
template <class T>
concept Recorded = std::same_as<T, Power> || std::same_as<T, Unknown> || isSum<T>;
template <class Y, class X>
concept RecordedWith = Recorded<X> || Recorded<Y>;
template <class T>
concept Factor = std::same_as<T, Power> || std::same_as<T, double>;

inline Power powerOf(double x) { return {x, 0.0}; }
inline Power powerOf(Power x) { return x; }
template <Factor X>
Sum<1> sumOf(X x) {
  return {{Term{powerOf(x).factor, powerOf(x).power, false}}};
}
template <std::size_t count>
Sum<count> sumOf(Sum<count> x) {
  return x;
}

template <std::size_t m, std::size_t n>
Sum<m + n> joined(Sum<m> x, Sum<n> y) {
  Sum<m + n> sum;
  std::copy(y.terms.begin(), y.terms.end(), std::copy(x.terms.begin(), x.terms.end(), sum.terms.begin()));
  return sum;
}

template <class X, RecordedWith<X> Y>
QS_INLINE auto operator*(X x, Y y) {
  if constexpr (Factor<X> && Factor<Y>) {
    return Power{powerOf(x).factor * powerOf(y).factor, powerOf(x).power + powerOf(y).power};
  } else if constexpr (isSum<X> && Factor<Y>) {
    for (Term& term : x.terms) {
      term.factor *= powerOf(y).factor;
      term.power += powerOf(y).power;
    }
    return x;
  } else if constexpr (Factor<X> && isSum<Y>) {
    return y * x;
  } else {
    return Unknown();
  }
}
template <class X, RecordedWith<X> Y>
QS_INLINE auto operator/(X x, Y y) {
  if constexpr (Factor<Y>)
    return x * Power{1.0 / powerOf(y).factor, -powerOf(y).power};
  else
    return Unknown();
}
template <class X, RecordedWith<X> Y>
QS_INLINE auto operator+(X x, Y y) {
  if constexpr (std::same_as<X, Unknown> || std::same_as<Y, Unknown>) {
    return Unknown();
  } else {
    return joined(sumOf(x), sumOf(y));
  }
}
template <Recorded X>
QS_INLINE X operator-(X x) {
  if constexpr (std::same_as<X, Unknown>)
    return x;
  else
    return x * -1.0;
}
template <class X, RecordedWith<X> Y>
QS_INLINE auto operator-(X x, Y y) {
  return x + -y;
}

inline Power pow(Power x, double exponent) {
  return {x.factor == 1.0 ? 1.0 : math::pow(x.factor, exponent), x.power * exponent};
}
inline Power pow(Power x, double exponent, int) { return pow(x, exponent); }
inline Power powOneThird(Power x) { return pow(x, 1.0 / 3.0); }
inline Sum<2> log(Power x) {
  return {{Term{x.factor == 1.0 ? 0.0 : math::log(x.factor), 0.0, false}, Term{x.power, 0.0, true}}};
}
inline Sum<2> log10(Power x) { return log(x) * (1.0 / math::log(10.0)); }

// The others give nothing that is known.
template <class X, RecordedWith<X> Y>
Unknown pow(X, Y) {
  return {};
}
template <Recorded X>
Unknown pow(X, X) {
  return {};
}
template <Recorded X>
Unknown pow(X, double, int) {
  return {};
}
template <int n, std::size_t count>
Unknown power(Sum<count>) {
  return {};
}
template <Recorded X>
Unknown atMost(X, double) {
  return {};
}
#define QS_UNKNOWN(function) \
  template <Recorded X>      \
  Unknown function(X) {      \
    return {};               \
  }
QS_UNKNOWN(log)
QS_UNKNOWN(exp)
QS_UNKNOWN(sinh)
QS_UNKNOWN(cosh)
QS_UNKNOWN(orZero)
#undef QS_UNKNOWN

// offset + factor x^power: what a transformation may make of its argument for the closed form to remain. NaN where it
// makes anything else.
struct ShiftedPower {
  double offset = 0.0;
  double factor = 0.0;
  double power = 0.0;

  static ShiftedPower unknown() {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    return {kNaN, kNaN, kNaN};
  }
  friend bool isEmpty(const ShiftedPower& x) { return x.factor == 0.0 && qs::isEmpty(x.offset); }

  friend ShiftedPower operator+(ShiftedPower x, double y) { return {x.offset + y, x.factor, x.power}; }
  friend ShiftedPower operator-(ShiftedPower x, double y) { return x + -y; }
  friend ShiftedPower operator-(double x, ShiftedPower y) { return y * -1.0 + x; }
  friend ShiftedPower operator*(ShiftedPower x, double y) { return {x.offset * y, x.factor * y, x.power}; }
  friend ShiftedPower operator*(double x, ShiftedPower y) { return y * x; }
  friend ShiftedPower operator/(ShiftedPower x, double y) { return {x.offset / y, x.factor / y, x.power}; }
  friend ShiftedPower operator/(double x, ShiftedPower y) {
    return y.offset == 0.0 ? ShiftedPower{0.0, x / y.factor, -y.power} : unknown();
  }
  friend ShiftedPower operator*(ShiftedPower x, ShiftedPower y) {
    return x.offset == 0.0 && y.offset == 0.0 ? ShiftedPower{0.0, x.factor * y.factor, x.power + y.power} : unknown();
  }
  friend ShiftedPower pow(ShiftedPower x, double exponent) {
    return x.offset == 0.0 ? ShiftedPower{0.0, math::pow(x.factor, exponent), x.power * exponent} : unknown();
  }

  friend ShiftedPower operator/(ShiftedPower, ShiftedPower) { return unknown(); }
  friend ShiftedPower pow(double, ShiftedPower) { return unknown(); }
#define QS_UNKNOWN(function) \
  friend ShiftedPower function(ShiftedPower) { return unknown(); }
  QS_UNKNOWN(powOneThird)
  QS_UNKNOWN(exp)
  QS_UNKNOWN(log)
  QS_UNKNOWN(log10)
  QS_UNKNOWN(sin)
  QS_UNKNOWN(cos)
  QS_UNKNOWN(tan)
  QS_UNKNOWN(asin)
  QS_UNKNOWN(acos)
  QS_UNKNOWN(atan)
#undef QS_UNKNOWN
};

}  // namespace qs::form
