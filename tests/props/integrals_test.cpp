// Integrals: against quadrature of the formulas in long double, and where there are none.
#include "props/integrals.h"

#include <cmath>
#include <functional>

#include "tests/support/curve_formulas.h"
#include "tests/support/numbers.h"

namespace qs {
namespace {

using test::curveOf;
using test::Real;
using Function = std::function<Real(Real)>;

struct Integrals {
  Real ofY, ofYOverT, magnitude, magnitudeOverT;
};
// By the double-exponential rule, for which ends may be singular.
Integrals integralsOf(const Function& f, Real from, Real to) {
  constexpr Real kStep = 1.0L / 18, kHalfPi = 1.5707963267948966192L;
  Integrals result{};
  for (int i = -66; i <= 66; ++i) {
    const Real u = kHalfPi * std::sinh(i * kStep), half = (to - from) / 2;
    const Real T = from + half * (1 + std::tanh(u));
    const Real weight = kStep * half * kHalfPi * std::cosh(i * kStep) / (std::cosh(u) * std::cosh(u));
    const Real y = f(T) * weight;
    result.ofY += y;
    result.ofYOverT += y / T;
    result.magnitude += std::fabs(y);
    result.magnitudeOverT += std::fabs(y / T);
  }
  return result;
}

void expectIntegral(const CQSAbstractProp& curve, Integrand integrand, double from, double to, Real expected,
                    Real magnitude) {
  const auto actual = integral(curve, integrand, from, to, test::kPressure);
  ASSERT_TRUE(actual) << from << " to " << to;
  EXPECT_LE(std::fabs(*actual - expected), 1e-12L * magnitude) << from << " to " << to;
}

void expectIntegrals(const CQSAbstractProp& curve, double from, double to, const Function& f) {
  const Integrals expected = integralsOf(f, from, to);
  for (const double sign : {1.0, -1.0}) {
    expectIntegral(curve, Integrand::Y, from, to, sign * expected.ofY, expected.magnitude);
    expectIntegral(curve, Integrand::YOverT, from, to, sign * expected.ofYOverT, expected.magnitudeOverT);
    std::swap(from, to);
  }
}

TEST(Integrals, AreThoseOfEveryForm) {
  for (const EquationForm& form : kEquationForms) {
    if (form.shape == PropCurveVoid) continue;
    std::vector<double> coefficients = test::coefficientsFor(form);
    for (const double exponent : {1.5, -1.0, 0.0, 1.0, 2.0, 4.0}) {
      SCOPED_TRACE(testing::Message() << narrow(form.className) << " " << exponent);
      if (form.exponent != letter::None) coefficients[static_cast<std::size_t>(form.exponent)] = exponent;
      const auto curve = curveOf(form.shape, coefficients);
      const Function f = [&](Real x) { return test::valueOfForm(form, coefficients, x); };
      expectIntegrals(*curve, 0.3, 0.9, f);
      expectIntegrals(*curve, 0.6, 0.6 + 1e-7, f);
      if (form.exponent == letter::None) break;
    }
  }
}

// From where its exponentials vanish to where they are nearly 1, and without the constant that hides them.
TEST(Integrals, OfIdealGasHeatCapacities) {
  const EquationForm& form = kEquationForms[PropCurveDIPPR107];
  for (const double A : {33.4, 0.0, -20.0})
    for (const auto& [C, E] : {std::pair(2610.0, 1170.0), {-2610.0, 0.0}, {20.0, 3000.0}, {0.01, 0.02}}) {
      const std::vector<double> coefficients{A, 26.8, C, 8.9, E};
      for (const auto& [from, to] : {std::pair(298.15, 1500.0), {4.0, 9.0}, {20.0, 400.0}, {300.0, 300.01}}) {
        SCOPED_TRACE(testing::Message() << A << " " << C << " " << E);
        expectIntegrals(*curveOf(form.shape, coefficients), from, to,
                        [&](Real x) { return test::valueOfForm(form, coefficients, x); });
      }
    }
}

TEST(Integrals, AreThoseOfEveryTransformationOfX) {
  for (const LONG formShape : {PropCurvePOLY2, PropCurveVELDB2, PropCurveDIPPR107})
    for (const auto& [shape, formula] : test::transformationFormulas())
      for (const double power : {1.0, 2.0}) {
        const EquationForm& form = kEquationForms[static_cast<std::size_t>(formShape)];
        SCOPED_TRACE(testing::Message() << narrow(form.className) << " " << formula << " ^" << power);
        if (!(test::transformed(formula, 0.5L) > 0 && test::transformed(formula, 0.8L) > 0)) continue;
        const auto coefficients = test::coefficientsFor(form);
        const auto curve = curveOf(formShape, coefficients);
        curve->SetXYShape(shape, COMx);
        curve->SetXYPow(power, 1.0);
        expectIntegrals(*curve, 0.5, 0.8, [&, text = &formula](Real x) {
          return test::valueOfForm(form, coefficients, std::pow(test::transformed(*text, x), power));
        });
      }
}

// With t the transformed y, the integral of y over t is that of t over y by parts.
TEST(Integrals, AreThoseOfEveryTransformationOfY) {
  for (const auto& [shape, formula] : test::transformationFormulas()) {
    SCOPED_TRACE(formula);
    const auto curve = curveOf(PropCurvePOLY2, {0.0, 1.0, 0.0});
    curve->SetXYShape(COMx, shape);
    const auto t = [text = &formula](Real y) { return test::transformed(*text, y); };
    const Real low = 0.3L, high = 0.7L, sign = shape == COMxscale ? -1 : 1;
    const auto from = static_cast<double>(t(low)), to = static_cast<double>(t(high));
    const Integrals byParts = integralsOf(t, low, high);
    const Real expected = high * t(high) - low * t(low) - byParts.ofY;
    expectIntegral(*curve, Integrand::Y, from, to, sign * expected, std::fabs(expected));
    if (!(from > 0 && to > 0)) continue;
    const Integrals ofLogs = integralsOf([&](Real y) { return std::log(t(y)); }, low, high);
    const Real overT = high * std::log(t(high)) - low * std::log(t(low)) - ofLogs.ofY;
    expectIntegral(*curve, Integrand::YOverT, from, to, sign * overT, std::fabs(overT));
  }
  // Linear ones keep the closed form of the heat capacity.
  const EquationForm& form = kEquationForms[PropCurveDIPPR107];
  const auto coefficients = test::coefficientsFor(form);
  const auto curve = curveOf(form.shape, coefficients);
  curve->SetXYShape(COMxxo, COM1mxr);
  expectIntegrals(*curve, 0.3, 0.9,
                  [&](Real x) { return (1 - test::valueOfForm(form, coefficients, x * test::kNorm)) * test::kNorm; });
}

TEST(Integrals, ReachEndsWithUnboundedSlope) {
  const double from = 273.15, critical = 647.14;
  for (const double exponent : {0.5, 0.3, 0.05}) {
    const auto curve = curveOf(PropCurveDIPPR106, {5e7, exponent, 0.0, 0.0, 0.0, critical});
    const Real expected =
        5e7L * critical / (1 + Real(exponent)) * std::pow(1 - Real(from) / critical, 1 + Real(exponent));
    expectIntegral(*curve, Integrand::Y, from, critical, expected, expected);
    expectIntegral(*curve, Integrand::Y, critical, from, -expected, expected);
  }
}

// Beyond its limits VELDB5's exponent goes on linearly in 1/T.
TEST(Integrals, FollowVELDB5BeyondItsLimits) {
  const auto curve = curveOf(PropCurveVELDB5, {1.5, -200.0, 20.0, 0.5, 1e-5, 2.0});
  curve->SetTRange(250.0, 400.0);
  const Function f = [](Real T) {
    const Real b = std::clamp(T, 250.0L, 400.0L),
               slope = -200 * b * b / ((20 + b) * (20 + b)) - 0.5L * b - 2e-5L * b * b * b;
    return std::exp(1.5L - 200 / (20 + b) + 0.5L * std::log(b) + 1e-5L * b * b + slope * (1 / T - 1 / b));
  };
  const Real expected = integralsOf(f, 100, 250).ofY + integralsOf(f, 250, 400).ofY + integralsOf(f, 400, 900).ofY;
  expectIntegral(*curve, Integrand::Y, 100.0, 900.0, expected, expected);
  expectIntegral(*curve, Integrand::Y, 900.0, 100.0, -expected, expected);
}

TEST(Integrals, OfAnyFunctionOrNone) {
  const struct {
    const char* what;
    double (*function)(double T);
    double from, to;
    std::optional<double> expected;
    double magnitude = 0.0;
  } rows[] = {
      {"a kink", [](double T) { return std::fabs(T - 450.1); }, 300.0, 600.0, 22500.01, 22500.01},
      {"a jump", [](double T) { return T > 450.1 ? 1.0 : 2.0; }, 300.0, 600.0, 450.1, 450.1},
      {"what cancels", [](double T) { return std::sinh((T - 450.0) / 10.0); }, 300.0, 600.0, 0.0, 3.2e7},
      {"nothing", [](double) { return 0.0; }, 300.0, 600.0, 0.0},
      {"a pole", [](double T) { return 1.0 / (T - 450.1); }, 300.0, 600.0, {}},
      {"a pole in the middle", [](double T) { return 1.0 / (T - 450.0); }, 300.0, 600.0, {}},
      {"a pole of order 1/2", [](double T) { return 1.0 / std::sqrt(std::fabs(T - 450.1)); }, 300.0, 600.0, {}},
      {"oscillations", [](double T) { return std::sin(1e4 * T); }, 300.0, 600.0, {}},
      {"no number within", [](double T) { return std::sqrt((T - 449.0) * (T - 451.0)); }, 300.0, 600.0, {}},
      {"no number at the end", [](double T) { return T < 600.0 ? 1.0 : kNaN; }, 300.0, 600.0, {}},
      {"infinity at the start", [](double T) { return 1.0 / (T - 300.0); }, 300.0, 300.0, {}},
      {"from nowhere", [](double) { return 1.0; }, kNaN, 600.0, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    int evaluations = 0;
    const auto counted = [&](double T) { return ++evaluations, row.function(T); };
    const auto actual = quadrature(counted, row.from, row.to);
    ASSERT_EQ(actual.has_value(), row.expected.has_value());
    EXPECT_LE(std::fabs(actual.value_or(0.0) - row.expected.value_or(0.0)), 1e-12 * row.magnitude);
    EXPECT_LE(evaluations, 12'433);
  }
}

TEST(Integrals, OfNoNumbersAreNone) {
  const auto withPole = curveOf(PropCurveDIPPR114, {1.0, 2.0, 3.0, 4.0, 450.0});
  const auto empty = curveOf(PropCurvePOLY2, {-32767.0, 0.0, 0.0});
  const auto lacking = curveOf(PropCurvePOLY2, {1.0, 1.0, 0.0});
  lacking->SetXYShape(COMxppdsm1, COMx);
  lacking->SetAB(-32767.0, 1.0);
  const auto none = equation(PropCurveVoid);
  const auto linear = curveOf(PropCurvePOLY2, {1.0, 1.0, 0.0});
  const struct {
    const CQSAbstractProp* property;
    double from, to;
  } rows[] = {{withPole.get(), 300.0, 600.0},   {withPole.get(), 300.0, 450.0}, {empty.get(), 300.0, 600.0},
              {lacking.get(), 300.0, 600.0},    {none.get(), 300.0, 600.0},     {linear.get(), -1.0, 1.0},
              {linear.get(), 300.0, kInfinity}, {linear.get(), kNaN, 300.0}};
  for (const auto& row : rows)
    EXPECT_FALSE(integral(*row.property, Integrand::YOverT, row.from, row.to, 1.0)) << &row - rows;
}

}  // namespace
}  // namespace qs
