// The derivatives of equations: against differences of the formulas in long double, and where they are special.
#include "props/derivatives.h"

#include <cmath>
#include <functional>

#include "props/evaluator.h"
#include "tests/support/curve_formulas.h"
#include "tests/support/numbers.h"

namespace qs {
namespace {

using test::curveOf;
using test::Real;

Derivatives derivativesAt(const CQSAbstractProp& curve, double T) {
  Derivatives result{kUnwritten, kUnwritten, kUnwritten};
  EXPECT_TRUE(derivativesOf(*curve.equation(), T, test::kPressure, result));
  return result;
}

// The first and second, of eighth order.
std::pair<Real, Real> differences(const std::function<Real(Real)>& f, Real x) {
  constexpr Real kFirst[] = {4.0L / 5, -1.0L / 5, 4.0L / 105, -1.0L / 280};
  constexpr Real kSecond[] = {8.0L / 5, -1.0L / 5, 8.0L / 315, -1.0L / 560};
  const Real step = x / 2048;
  Real first = 0, second = -205.0L / 72 * f(x);
  for (int i = 0; i < 4; ++i) {
    const Real above = f(x + (i + 1) * step), below = f(x - (i + 1) * step);
    first += kFirst[i] * (above - below);
    second += kSecond[i] * (above + below);
  }
  return {first / step, second / (step * step)};
}

// A derivative's terms are about as large as the value divided by T, also where they cancel.
void expectDerivatives(const CQSAbstractProp& curve, double T, const std::function<Real(Real)>& f) {
  const Derivatives actual = derivativesAt(curve, T);
  EXPECT_EQ(actual.value, evaluate(curve, T, test::kPressure).value);
  const auto [first, second] = differences(f, T);
  const Real scale = std::fabs(first) + std::fabs(actual.value / T);
  EXPECT_LE(std::fabs(actual.first - first), 1e-13L * scale) << T;
  EXPECT_LE(std::fabs(actual.second - second), 1e-11L * (std::fabs(second) + scale / T)) << T;
}

TEST(CurveDerivatives, AreThoseOfEveryForm) {
  for (const EquationForm& form : kEquationForms) {
    if (form.shape == PropCurveVoid) continue;
    std::vector<double> coefficients = test::coefficientsFor(form);
    for (const double exponent : {1.5, -1.0, 0.0, 1.0, 2.0, 3.0, 4.0}) {
      SCOPED_TRACE(testing::Message() << narrow(form.className) << " " << exponent);
      if (form.exponent != letter::None) coefficients[static_cast<std::size_t>(form.exponent)] = exponent;
      for (const double T : {0.5, 0.65, 0.8})
        expectDerivatives(*curveOf(form.shape, coefficients), T,
                          [&](Real x) { return test::valueOfForm(form, coefficients, x); });
      if (form.exponent == letter::None) break;
    }
  }
}

// What Y was before its transformation: the inverse by Newton's method, from a value nearby.
Real undone(const std::function<Real(Real)>& transformation, Real value, Real start) {
  for (int i = 0; i < 6; ++i) start -= (transformation(start) - value) / differences(transformation, start).first;
  return start;
}

// X is transformed into a polynomial, Y out of it; the scale of Y has its sign turned.
TEST(CurveDerivatives, AreThoseThroughEveryTransformation) {
  const EquationForm& form = *findForm(PropCurvePOLY2);
  const std::vector<double> coefficients{0.1, 0.7, 0.2};
  const auto curve = curveOf(form.shape, coefficients);
  const auto polynomial = [&](Real x) { return test::valueOfForm(form, coefficients, x); };
  for (const auto& [shape, formula] : test::transformationFormulas())
    for (const double power : {1.0, 3.0, 0.4}) {
      const auto transformation = [&, &formula = formula](Real x) {
        const Real y = test::transformed(formula, x);
        return power == 1.0 ? y : std::pow(y, Real(power));
      };
      for (const double T : {0.5, 0.65, 0.8}) {
        SCOPED_TRACE(testing::Message() << "shape " << shape << " to the " << power << " at " << T);
        curve->SetXYShape(shape, COMx);
        curve->SetXYPow(power, 1.0);
        if (std::isnan(transformation(T)))
          EXPECT_TRUE(std::isnan(derivativesAt(*curve, T).first));
        else
          expectDerivatives(*curve, T, [&](Real x) { return polynomial(transformation(x)); });

        curve->SetXYShape(COMx, shape);
        curve->SetXYPow(1.0, power);
        const Real sign = shape == COMxscale ? -1 : 1;
        const Real start = sign * derivativesAt(*curve, T).value;
        expectDerivatives(*curve, T, [&](Real x) { return sign * undone(transformation, polynomial(x), start); });
      }
    }
}

// Where a quotient or a logarithm of zero would give NaN, and where the value is NaN.
TEST(CurveDerivatives, AreKnownAtTheEndsOfDomains) {
  const struct {
    LONG shape;
    std::vector<double> coefficients;
    double T, first, second;
    LONG xShape = COMx;
  } rows[] = {
      {PropCurveEXPO2, {1.0, 0.5}, 0.0, kInfinity, kNaN},
      {PropCurveEXPO2, {1.0, 1.0}, 0.0, 1.0, 0.0},
      {PropCurveEXPO2, {1.0, 1.5}, 0.0, 0.0, kInfinity},
      {PropCurveEXPO2, {1.0, 2.0}, 0.0, 0.0, 2.0},
      {PropCurveEXPO2, {1.0, 6.0}, 0.0, 0.0, 0.0},
      {PropCurveEXPO2, {1.0, 6.0}, -1.0, -6.0, 30.0},
      {PropCurveEXPO2, {1.0, 0.5}, -1.0, kNaN, kNaN},
      {PropCurvePPDS8, {2.0, 0.0, 0.0, 0.5}, 0.0, 1.0, 0.0},
      {PropCurveDIPPR116, {1.0, 2.0, 0.0, 0.5, 0.0}, test::kNorm, -kInfinity, kNaN, COM1mxr},
      {PropCurveDIPPR116, {1.0, 0.0, 0.0, 4.5, 0.0}, test::kNorm, -5.0, 0.0, COM1mxr},
      {PropCurveDIPPR106, {2.0, 0.4, 0.1, 0.0, 0.0, 4.0}, 4.0, -kInfinity, kNaN},
      {PropCurveDIPPR106, {2.0, 1.0, 0.0, 0.0, 0.0, 4.0}, 4.0, -0.5, 0.0},
      {PropCurveDIPPR106, {2.0, 1.5, 0.5, 0.0, 0.0, 4.0}, 4.0, 0.0, 0.25},
      {PropCurveDIPPR106, {2.0, 2.0, 0.0, 0.0, 0.0, 4.0}, 8.0, 1.0, 0.25},
      {PropCurveDIPPR107, {5.0, 2.0, 1e4, 3.0, 1e4}, 1.0, 0.0, 0.0},
      {PropCurveVELDB2, {1.0, 0.0, 1.0, 0.0, 0.0}, -2.0, kNaN, kNaN},
  };
  for (const auto& row : rows) {
    const auto curve = curveOf(row.shape, row.coefficients);
    curve->SetXYShape(row.xShape, COMx);
    const Derivatives actual = derivativesAt(*curve, row.T);
    // A second derivative beside an infinite first one is not known.
    const auto text = [](double x) { return std::isnan(x) ? "nan" : testing::PrintToString(x + 0.0); };
    EXPECT_EQ(text(actual.first), text(row.first)) << &row - rows;
    EXPECT_EQ(text(std::isinf(row.first) ? kNaN : actual.second), text(row.second)) << &row - rows;
  }
}

// ln Y is linear in 1/T beyond the range, until it is capped.
TEST(CurveDerivatives, FollowVELDB5Beyond) {
  const auto curve = curveOf(PropCurveVELDB5, {1.5, -200.0, 20.0, 0.5, 1e-5, 2.0});
  curve->SetTRange(250.0, 400.0);
  for (const double T : {125.0, 500.0}) {
    const double beyond = 2 * T - 200.0;
    const Derivatives at = derivativesAt(*curve, T);
    const double slope = std::log(at.value / derivativesAt(*curve, beyond).value) / (1.0 / T - 1.0 / beyond);
    EXPECT_NEAR(at.first / (-slope / (T * T) * at.value), 1.0, 1e-12);
    EXPECT_NEAR(at.second / (slope * (slope / T + 2.0) / (T * T * T) * at.value), 1.0, 1e-12);
  }
  const auto steep = curveOf(PropCurveVELDB5, {0.0, 0.0, 0.0, 0.0, 10.0, 1.0});
  steep->SetTRange(10.0, 100.0);
  for (const double T : {80.0, 1e5}) {
    EXPECT_EQ(derivativesAt(*steep, T).first, 0.0);
    EXPECT_EQ(derivativesAt(*steep, T).second, 0.0);
  }
}

TEST(CurveDerivatives, AreAbsentWithoutAValue) {
  constexpr double kEmpty = -32767.0;
  const auto values = [](const CQSAbstractProp& property, double T, double noValue) {
    double value = T, slope = kUnwritten;
    evaluateWithSlopes(property, {&value, 1}, 1.0, &value, &slope, *supportedBlockFunctions().back(), noValue);
    double alone = T;
    evaluate(property, {&alone, 1}, 1.0, &alone, *supportedBlockFunctions().back(), noValue);
    EXPECT_EQ(value, alone);
    return std::pair(value, slope);
  };
  const auto curve = curveOf(PropCurvePOLY2, {0.0, 1.0, 0.0});
  EXPECT_EQ(values(*curve, kEmpty, -1.0), std::pair(-1.0, -1.0));
  EXPECT_EQ(values(*curve, 0.5, -1.0), std::pair(0.5, 1.0));
  // GetValue writes the value before the transformation that fails.
  curve->SetXYShape(COMx, COMscalexy);
  EXPECT_EQ(values(*curve, 0.5, -1.0), std::pair(0.5, -1.0));
  EXPECT_EQ(values(*equation(PropCurveVoid), 0.5, -1.0), std::pair(-1.0, -1.0));
  CQSPointProp point;
  point.SetType(PointProp);
  EXPECT_EQ(values(point, 0.5, -1.0), std::pair(-1.0, -1.0));
  point.SetValue(18.0);
  EXPECT_EQ(values(point, 0.5, kNaN), std::pair(18.0, 0.0));
  CQSCOMProp component;
  component.SetType(COMProp);
  EXPECT_EQ(values(component, 0.5, -1.0), std::pair(-1.0, -1.0));
}

TEST(CurveDerivatives, LanesKnowWhatIsWithin) {
  for (const BlockFunctions* functions : supportedBlockFunctions())
    for (std::size_t count = 0; count < 60; ++count)
      for (const double last : {kNaN, 0.5, 1.0, 2.0}) {
        std::vector<double> values(count + 2, 1.0);
        values.back() = last;
        EXPECT_TRUE(functions->allWithin(&values[1], count, 1.0, 1.0));
        EXPECT_EQ(functions->allWithin(&values[1], count + 1, 1.0, 1.0), last == 1.0) << last;
        EXPECT_EQ(functions->allWithin(&values[1], count + 1, -kInfinity, kInfinity), last == last) << last;
      }
}

}  // namespace
}  // namespace qs
