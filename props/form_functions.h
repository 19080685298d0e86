// The functions of the forms and what forms.def and transformations.def are written in: over one temperature, or over a
// vector of them where math/vectors.h is included before.
#pragma once

#include <cstddef>
#include <span>

#include "math/functions.h"
#include "props/forms.h"

namespace qs::form {

using math::acos, math::asin, math::atan, math::atMost, math::cos, math::cosh, math::exp, math::log, math::log10;
using math::orZero, math::pow, math::powOneThird, math::sin, math::sinh, math::sqrt, math::tan;

// Integral powers by multiplication.
template <int n, class Real>
QS_INLINE constexpr Real power(Real x) {
  if constexpr (n == 1)
    return x;
  else if constexpr (n % 2 == 0)
    return power<n / 2>(x) * power<n / 2>(x);
  else
    return power<n - 1>(x) * x;
}

// The exponent as a whole number when pow below multiplies it out: up to the fourth power that costs less than 2 ulp.
inline constexpr int kNotWhole = 5;
constexpr int wholeOf(double exponent) {
  for (int whole = -1; whole < kNotWhole; ++whole)
    if (math::bitsOf(exponent + 0.0) == math::bitsOf(whole)) return whole;
  return kNotWhole;
}

// x^exponent, of which `whole` is wholeOf(exponent).
template <class Real, class Exponent>
QS_INLINE Real pow(Real x, Exponent exponent, int whole) {
  switch (whole) {
    case -1:
      return 1.0 / x;
    case 0:
      return Real{} + 1.0;
    case 1:
      return x;
    case 2:
      return power<2>(x);
    case 3:
      return power<3>(x);
    case 4:
      return power<4>(x);
    default:
      return pow(x, exponent);
  }
}

// The molar gas constant as the forms that use it were fitted, J/(mol K).
inline constexpr double kR = 8.314;

inline constexpr double kLargestExponentOfVELDB5 = 690.0;
template <class Real, class Coefficient>
QS_INLINE auto exponentOfVELDB5(Real X, Coefficient A, Coefficient B, Coefficient C, Coefficient D, Coefficient E,
                                Coefficient F, int whole) {
  return A + B / (C + X) + E * pow(X, F, whole) + D * log(X);
}

// From a bound of the temperature range on, x when it is transformed, VELDB5's exponent goes on linearly in 1/T.
template <class Real>
Real extrapolatedVELDB5(Real T, double x, std::span<const double> coefficients, int whole) {
  const double A = coefficients[0], B = coefficients[1], C = coefficients[2], D = coefficients[3], E = coefficients[4],
               F = coefficients[5];
  const double slope = -power<2>(x) * (E * F * pow(x, F - 1.0) + D / x - B / power<2>(x + C));
  const double exponent = exponentOfVELDB5(x, A, B, C, D, E, F, whole);
  return exp(atMost(exponent - slope / x + slope / T, kLargestExponentOfVELDB5));
}

// A struct for each form: its function of the transformed temperature, the coefficients, of which it may leave some
// unused, and the wholeOf its exponent.
#define QS_LETTERS_2 [[maybe_unused]] Coefficient A, [[maybe_unused]] Coefficient B
#define QS_LETTERS_3 QS_LETTERS_2, [[maybe_unused]] Coefficient C
#define QS_LETTERS_4 QS_LETTERS_3, [[maybe_unused]] Coefficient D
#define QS_LETTERS_5 QS_LETTERS_4, [[maybe_unused]] Coefficient E
#define QS_LETTERS_6 QS_LETTERS_5, [[maybe_unused]] Coefficient F
#define QS_LETTERS_7 QS_LETTERS_6, [[maybe_unused]] Coefficient G
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...)                       \
  struct name {                                                                                  \
    static constexpr std::size_t kNumber = number;                                               \
    static constexpr std::size_t kCoefficients = coefficients;                                   \
    static constexpr bool kHasExponent = letter::exponent >= 0;                                  \
    template <class Real, class Coefficient>                                                     \
    QS_INLINE static auto value(Real X, QS_LETTERS_##coefficients, [[maybe_unused]] int whole) { \
      __VA_ARGS__                                                                                \
    }                                                                                            \
  };
#include "props/forms.def"

}  // namespace qs::form
