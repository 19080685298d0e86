// The forms of equations. Expected values are computed in long double from the formula
// as its authors publish it, with the coefficients as the table holds them.
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "props/forms.h"
#include "tests/support/properties.h"
#include "tests/support/ulps.h"

namespace qs {
namespace {

using Real = long double;
Real ln(Real x) { return std::log(x); }
Real raised(Real x, Real exponent) { return std::pow(x, exponent); }
Real third(Real x) { return std::cbrt(x); }
// (u / sinh u)^2 and (u / cosh u)^2, by sign.
Real bell(Real u, int sign) { return 4 * u * u / (std::exp(2 * u) + 2 * sign + std::exp(-2 * u)); }
// DIPPR 114 in t = 1 - X/E; its last three terms are the integral of (C + D t)^2.
Real criticalSeries(Real t, Real A, Real B, Real C, Real D) {
  return A * A / t + B - A * t * (2 * C + D * t) - t * t * t * (C * C / 3 + C * D * t / 2 + D * D * t * t / 5);
}

struct FormCase {
  LONG shape;
  std::vector<double> coefficients;
  std::array<double, 3> temperatures;
  double ulps;  // the largest error allowed, in units of the last place
  Real (*expected)(Real X, Real A, Real B, Real C, Real D, Real E, Real F, Real G);
};
constexpr std::array<double, 3> kWide = {200, 350.5, 900}, kCool = {200, 350.5, 500}, kReduced = {0.3, 0.55, 0.9};

#define QS_VALUE(...)                                                                                            \
  [](Real X, [[maybe_unused]] Real A, [[maybe_unused]] Real B, [[maybe_unused]] Real C, [[maybe_unused]] Real D, \
     [[maybe_unused]] Real E, [[maybe_unused]] Real F, [[maybe_unused]] Real G) { return __VA_ARGS__; }

// A sum is good to two units in the last place; an exponential multiplies the error of its argument by the size of it,
// about 18 in VELDB8. The maths libraries of the targets differ by less than a hundredth of a unit at these points.
const std::vector<FormCase>& formCases() {
  // clang-format off
  static const std::vector<FormCase> cases = {
      {PropCurveVELDB1, {3.5, 0.25, 1.5e-3, 2e-7, 3e-10}, kWide, 2, QS_VALUE((((E * X + D) * X + C) * X + B) * X + A)},
      {PropCurveVELDB2, {3.5, 120, 2.5, 0.01, 1e-5}, kWide, 2, QS_VALUE(A + B / X + C * ln(X) + (D + E * X) * X)},
      {PropCurveVELDB3, {3.5, 0.25, 1.5e-3, 2e-7, 3e-10, 4e-13}, kWide, 2,
       QS_VALUE(((((F * X + E) * X + D) * X + C) * X + B) * X + A)},
      {PropCurveVELDB4, {1.5, -200, 0.5, 1e-5, 2}, kCool, 2,
       QS_VALUE(std::exp(A + B / X) * raised(X, C) * std::exp(D * raised(X, E)))},
      {PropCurveVELDB5, {1.5, -200, 20, 0.5, 1e-5, 2}, kCool, 3,
       QS_VALUE(std::exp(A + B / (C + X)) * raised(X, D) * std::exp(E * raised(X, F)))},
      {PropCurveVELDB6, {2.5, 0.75, 1.25, 30, 400}, kWide, 2,
       QS_VALUE(A * std::exp(ln(X) * B * X * X / ((C * X + D) * X + E)))},
      {PropCurveVELDB7, {1.25, 0.27, 560, 0.2857}, kCool, 2,
       QS_VALUE(A * std::exp(-ln(B) * (1 + raised((C - X) / C, D))))},
      {PropCurveVELDB8, {5.2e7, 0.3, -0.2, 0.25, 0.1}, kReduced, 8,
       QS_VALUE(A * raised(1 - X, B + (C + (D + E * X) * X) * X))},
      {PropCurveDIPPR107, {33363, 26790, 2610.5, 8896, 1169}, kWide, 2,
       QS_VALUE(A + B * bell(C / X, -1) + D * bell(E / X, 1))},
      {PropCurveVELDB9, {9e9, 0.25, 1.5e-3, 2e-7, 3e-10, 4e-13}, kWide, 2,
       QS_VALUE((((5 * F * X + 4 * E) * X + 3 * D) * X + 2 * C) * X + B)},
      {PropCurveVELDB10, {9e9, 0.25, 1.5e-3, 2e-7, 3e-3, 4e-13, 7.5}, kWide, 2,
       QS_VALUE(B * ln(X) + (2 * C + (1.5L * D + (Real(1.33333333333) * E + 1.25L * F * X) * X) * X) * X + G)},
      {PropCurveDIPPR101, {1.5, -200, 0.5, 1e-5, 2}, kCool, 2,
       QS_VALUE(std::exp(A + B / X) * raised(X, C) * std::exp(D * raised(X, E)))},
      {PropCurveDIPPR102, {1.7e-6, 0.45, 290, 2000}, kWide, 2, QS_VALUE(A * raised(X, B + 2) / ((X + C) * X + D))},
      {PropCurveDIPPR103, {1.5, 2.5, 40, 0.75}, kWide, 2, QS_VALUE(A + B * std::exp(-C * raised(X, -D)))},
      {PropCurveDIPPR104, {0.05, 40, 1e6, 1e18, 1e20}, kWide, 2,
       QS_VALUE(A + B / X + (C + (D + E / X) / (X * X * X * X * X)) / (X * X * X))},
      {PropCurveDIPPR106, {5.2e7, 0.3, -0.2, 0.25, 0.1, 647.096}, {280, 373.15, 600}, 2,
       QS_VALUE(A * raised(1 - X / F, B + (C + (D + E * X / F) * X / F) * X / F))},
      {PropCurveDIPPR114, {60, 12e4, -650, -1600, 190.5}, {95, 120.5, 180}, 2,
       QS_VALUE(criticalSeries((E - X) / E, A, B, C, D))},
      {PropCurveDIPPR115, {1.5, 200, 0.5, 1e-5, 2000}, kCool, 2,
       QS_VALUE(A + B / X + C * ln(X) + D * X * X + E / X / X)},
      {PropCurveDIPPR116, {17.8, 58.6, 95.4, 213.9, 141.3}, {0.1, 0.45, 0.8}, 2,
       QS_VALUE(A + B * raised(X, 0.35) + C * third(X * X) + D * X + E * X * third(X))},
      {PropCurvePOLY2, {3.5, 0.25, 1.5e-3}, {-200, 350.5, 900}, 2, QS_VALUE((C * X + B) * X + A)},
      {PropCurvePOLY3, {3.5, 0.25, 1.5e-3, 2.5, 1e6}, kWide, 2, QS_VALUE((C * X + B) * X + A + D * ln(X * X * X - E))},
      {PropCurveANTO1, {1.5, 200, 0.5, 1e-5, 2}, kCool, 2, QS_VALUE(A + B / X + C * ln(X) + D * raised(X, E))},
      {PropCurveANTO2, {1.5, 200, 0.5, 1e-5, 2}, kCool, 2, QS_VALUE(A + B / X + C * ln(X) / ln(10) + D * raised(X, E))},
      {PropCurveQUOT1, {2.5, 1.75, 1.25, 30, 400}, kWide, 2,
       QS_VALUE(A * std::exp(ln(B) * ((C * X + D) * X + E) / X / X))},
      {PropCurveEXPO1, {1.5, 2.5, 40, 0.75}, kWide, 2, QS_VALUE(A + B * std::exp(C * raised(X, -D)))},
      {PropCurveEXPO2, {1.5, 0.75}, kWide, 2, QS_VALUE(A + std::exp(B * ln(X)))},
      {PropCurveWTSN1, {5.2e7, 0.3, -0.2, 0.25, 0.1}, kReduced, 2,
       QS_VALUE(ln(A * raised(1 - X, B + (C + (D + E * X) * X) * X)))},
      {PropCurveKFAC2, {1.5, 200, 3e4, 4e6, 5e8}, kWide, 2, QS_VALUE(A + (B + (C + (D + E / X) / X) / X) / X)},
      {PropCurveKFAC4, {1.5, 200, 0.5, 1e-5, 2e-8}, kWide, 2, QS_VALUE(A + B / X + C * ln(X) + (D + E * X) * X * X)},
      {PropCurvePPDS1, {7.5, 1.75, 2.5, 3.5}, kReduced, 2,
       QS_VALUE(X * (A + B * std::sqrt(X) + X * X * (C + D * X * X * X)) / (1 - X))},
      {PropCurvePPDS8, {7.5, 1.75, 2.5, 3.5}, kReduced, 2, QS_VALUE(A * (1 + B * third(X) + C * third(X * X) + D * X))},
      {PropCurvePPDS9, {1.25, 0.5, 9e9, 9e9, 3e-5}, kReduced, 2, QS_VALUE(1000 * E * std::exp(third(X) * (A + B * X)))},
      {PropCurvePPDS10, {17.8, 58.6, 95.4, 213.9, 141.3}, {0.1, 0.45, 0.8}, 2,
       QS_VALUE(A + B * raised(X, 0.35) + C * third(X * X) + D * X + E * X * third(X))},
      {PropCurvePPDS12, {7.5, 1.75, 2.5, 3.5, 4.5}, kReduced, 2,
       QS_VALUE(Real(8.314) * (((C * X + B) * X + A) * X + raised(X, 6) * (D + E * raised(X, 12))))},
      {PropCurvePPDS14, {0.06, 1.25, 0.15}, kReduced, 2, QS_VALUE(A * std::exp(B * ln(X)) * (1 + C * X))},
      {PropCurvePPDS15, {0.5, 1.75, 2.5, 3.5, 4.5, 5.5}, kReduced, 2,
       QS_VALUE(Real(8.314) * (A / X + B + (C + (D + (E + F * X) * X) * X) * X))},
      {PropCurvePPDS16, {7.5, 1.75, 2.5, 3.5}, kReduced, 3,
       QS_VALUE(X * (A + std::sqrt(X) * (B + C * X) + D * X * X * X * X) / (1 - X))},
      {PropCurvePPDS17, {9e9, 8.5, 0.25, 1.5}, kReduced, 2,
       QS_VALUE((C + D * X) * raised(C + D * X, raised(X, 2.0L / 7)) / B)},
  };
  // clang-format on
  return cases;
}
#undef QS_VALUE

TEST(CurveForms, EvaluateTheirFormulas) {
  ASSERT_EQ(formCases().size(), 38u);
  for (const FormCase& row : formCases()) {
    SCOPED_TRACE(row.shape);
    const auto curve = equation(row.shape);
    const auto count = static_cast<LONG>(row.coefficients.size());
    LONG type = 0, shape = 0, coefficients = 0;
    curve->GetType(&type);
    curve->GetShape(&shape);
    curve->GetNumbOfParameters(&coefficients);
    EXPECT_THAT((std::array{type, shape, coefficients}), testing::ElementsAre(EquationProp, row.shape, count));
    ASSERT_EQ(curve->SetParameters(row.coefficients.data(), count), S_OK);
    std::array<Real, 7> c{};
    std::ranges::copy(row.coefficients, c.begin());
    for (const double T : row.temperatures) {
      const Evaluation value = evaluate(*curve, T);
      EXPECT_EQ(value.result, S_OK);
      EXPECT_EQ(value.dependencies, 1);
      EXPECT_LE(ulps(value.value, row.expected(T, c[0], c[1], c[2], c[3], c[4], c[5], c[6])), row.ulps) << T;
    }
  }
}

TEST(CurveForms, AreKnownByNumberAndName) {
  const struct {
    LONG shape;
    const char *className, *formula;
  } rows[] = {{0, "PropCurveVELDB1", "Y = A + B*X + C*X^2 + D*X^3 + E*X^4"},
              {25, "PropCurveEXPO2", "Y = A + X^B"},
              {37, "PropCurvePPDS17", "Y = (1/(B*(C + DX)^-(1+X^(2/7)))"},
              {1000, "PropCurveVoid", ""}};
  for (const auto& row : rows) {
    BSTR text = nullptr;
    EXPECT_EQ(equation(row.shape)->GetClassName(&text), S_OK);
    EXPECT_EQ(taken(text), row.className);
    EXPECT_EQ(equation(row.shape)->GetForm(&text), S_OK);
    EXPECT_EQ(taken(text), row.formula);
    EXPECT_EQ(findForm(widen(row.className))->shape, row.shape);
  }
  EXPECT_EQ(findForm(OLESTR("propcurveveldb1")), nullptr);
  CQSVoidProp untouched;
  for (const LONG shape : {-2147483647 - 1, -1, 38, 999, 1001, 2147483647}) {
    CQSAbstractProp* out = &untouched;
    EXPECT_EQ(CreateEquationProp(shape, &out), E_FAIL);
    EXPECT_EQ(out, &untouched);
  }
  EXPECT_EQ(evaluate(*equation(PropCurveVoid)), (Evaluation{S_OK, 0, -32767.0}));
}

std::unique_ptr<CQSAbstractProp> veldb5(const std::array<double, 6>& coefficients, double tMin, double tMax) {
  auto curve = equation(PropCurveVELDB5);
  curve->SetParameters(coefficients.data(), 6);
  curve->SetTRange(tMin, tMax);
  return curve;
}

// Outside its temperature range VELDB5 goes on linearly in 1/T: the exponent and its derivative by 1/T, here from a
// central difference in long double, are those at the bound.
TEST(CurveForms, VELDB5Extrapolates) {
  const std::array c{1.5, -200.0, 20.0, 0.5, 1e-5, 2.0};
  const auto curve = veldb5(c, 250.0, 400.0);
  const auto exponent = [&](Real t) { return c[0] + c[1] / (c[2] + t) + c[3] * ln(t) + c[4] * t * t; };
  for (const double T : {249.999, 100.0, 1.0, 400.001, 500.0, 5000.0}) {
    const Real bound = T < 300.0 ? 250.0L : 400.0L;
    const Real step = 1e-8L;
    const Real slope = (exponent(1 / (1 / bound + step)) - exponent(1 / (1 / bound - step))) / (2 * step);
    const Real expected = std::exp(exponent(bound) + slope * (1 / Real(T) - 1 / bound));
    const Evaluation value = evaluate(*curve, T);
    EXPECT_EQ(value.result, S_OK);
    EXPECT_NEAR(static_cast<double>(value.value / expected), 1.0, 1e-8) << T;
  }
  EXPECT_LE(ulps(evaluate(*curve, 250.0).value, std::exp(exponent(250))), 8.0);
  EXPECT_LE(ulps(evaluate(*curve, 400.0).value, std::exp(exponent(400))), 8.0);
}

// The bound is transformed, the temperature beyond it is not.
TEST(CurveForms, VELDB5TransformsItsBound) {
  const auto curve = veldb5({1.0, -0.5, 0.25, 2.0, 0.75, 3.0}, 250.0, 400.0);
  curve->SetXYShape(COMxr, COMx);
  curve->SetXYNorm(200.0, 1.0);
  const Real x = 2.0;  // 400 / 200
  const Real T = 800.0;
  const Real slope = -(x * x) * (0.75L * 3 * x * x + 2 / x + 0.5L / ((x + 0.25L) * (x + 0.25L)));
  const Real expected = 1 - 0.5L / (x + 0.25L) + 2 * ln(x) + 0.75L * x * x * x - slope / x + slope / T;
  EXPECT_NEAR(static_cast<double>(std::log(Real(evaluate(*curve, 800.0).value)) / expected), 1.0, 1e-14);

  curve->SetXYShape(COMscalexy, COMx);
  EXPECT_EQ(evaluate(*curve, 800.0), (Evaluation{S_FALSE, kUnwrittenLong, kUnwritten}));
}

TEST(CurveForms, VELDB5IsCapped) {
  const auto curve = veldb5({0.0, 0.0, 0.0, 0.0, 10.0, 1.0}, 10.0, 100.0);  // exp(10 X)
  const Real cap = std::exp(690.0L);
  EXPECT_LE(ulps(evaluate(*curve, 68.0).value, std::exp(680.0L)), 1.0);
  for (const double T : {69.5, 100.0, 1e5}) EXPECT_LE(ulps(evaluate(*curve, T).value, cap), 1.0) << T;
  EXPECT_EQ(evaluate(*curve, 0.0).value, 0.0);
}

}  // namespace
}  // namespace qs
