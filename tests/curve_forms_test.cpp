// The forms of equations. Expected values are computed in long double from the formula
// as its authors publish it, with the coefficients as the table holds them.
#include <array>
#include <cmath>
#include <vector>

#include "props/forms.h"
#include "tests/support/properties.h"
#include "tests/support/ulps.h"

namespace qs {
namespace {

using Real = long double;
using Coefficients = const std::vector<Real>&;

Real ln(Real x) { return std::log(x); }
Real raised(Real x, Real exponent) { return std::pow(x, exponent); }
Real third(Real x) { return std::cbrt(x); }

struct FormCase {
  LONG shape;
  std::vector<double> coefficients;
  std::array<double, 3> temperatures;
  Real (*expected)(Real x, Coefficients c);
  double ulps;  // the largest error allowed, in units of the last place
};

// A sum is good to two units in the last place; an exponential multiplies the error of its argument by the size of it,
// about 18 in VELDB8. The maths libraries of the targets differ by less than a hundredth of a unit at these points.
const std::vector<FormCase>& formCases() {
  // clang-format off
  static const std::vector<FormCase> cases = {
      {PropCurveVELDB1, {3.5, 0.25, 1.5e-3, 2e-7, 3e-10}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return (((c[4] * x + c[3]) * x + c[2]) * x + c[1]) * x + c[0]; }, 2},
      {PropCurveVELDB2, {3.5, 120, 2.5, 0.01, 1e-5}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] + c[1] / x + c[2] * ln(x) + (c[3] + c[4] * x) * x; }, 2},
      {PropCurveVELDB3, {3.5, 0.25, 1.5e-3, 2e-7, 3e-10, 4e-13}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return ((((c[5] * x + c[4]) * x + c[3]) * x + c[2]) * x + c[1]) * x + c[0]; }, 2},
      {PropCurveVELDB4, {1.5, -200, 0.5, 1e-5, 2}, {200, 350.5, 500},
       [](Real x, Coefficients c) {
         return std::exp(c[0] + c[1] / x) * raised(x, c[2]) * std::exp(c[3] * raised(x, c[4]));
       }, 2},
      {PropCurveVELDB5, {1.5, -200, 20, 0.5, 1e-5, 2}, {200, 350.5, 500},
       [](Real x, Coefficients c) {
         return std::exp(c[0] + c[1] / (c[2] + x)) * raised(x, c[3]) * std::exp(c[4] * raised(x, c[5]));
       }, 3},
      {PropCurveVELDB6, {2.5, 0.75, 1.25, 30, 400}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] * std::exp(ln(x) * c[1] * x * x / ((c[2] * x + c[3]) * x + c[4])); }, 2},
      {PropCurveVELDB7, {1.25, 0.27, 560, 0.2857}, {200, 350.5, 500},
       [](Real x, Coefficients c) { return c[0] * std::exp(-ln(c[1]) * (1 + raised((c[2] - x) / c[2], c[3]))); }, 2},
      {PropCurveVELDB8, {5.2e7, 0.3, -0.2, 0.25, 0.1}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) { return c[0] * raised(1 - x, c[1] + (c[2] + (c[3] + c[4] * x) * x) * x); }, 8},
      {PropCurveDIPPR107, {33363, 26790, 2610.5, 8896, 1169}, {200, 350.5, 900},
       [](Real x, Coefficients c) {
         const Real u = c[2] / x, v = c[4] / x;
         return c[0] + 4 * c[1] * u * u / (std::exp(2 * u) - 2 + std::exp(-2 * u)) +
                4 * c[3] * v * v / (std::exp(2 * v) + 2 + std::exp(-2 * v));
       }, 2},
      {PropCurveVELDB9, {9e9, 0.25, 1.5e-3, 2e-7, 3e-10, 4e-13}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return (((5 * c[5] * x + 4 * c[4]) * x + 3 * c[3]) * x + 2 * c[2]) * x + c[1]; }, 2},
      {PropCurveVELDB10, {9e9, 0.25, 1.5e-3, 2e-7, 3e-3, 4e-13, 7.5}, {200, 350.5, 900},
       [](Real x, Coefficients c) {
         return c[1] * ln(x) + 2 * c[2] * x + 3 * c[3] * x * x / 2 + Real(1.33333333333) * c[4] * x * x * x +
                5 * c[5] * x * x * x * x / 4 + c[6];
       }, 2},
      {PropCurveDIPPR101, {1.5, -200, 0.5, 1e-5, 2}, {200, 350.5, 500},
       [](Real x, Coefficients c) {
         return std::exp(c[0] + c[1] / x) * raised(x, c[2]) * std::exp(c[3] * raised(x, c[4]));
       }, 2},
      {PropCurveDIPPR102, {1.7e-6, 0.45, 290, 2000}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] * raised(x, c[1] + 2) / ((x + c[2]) * x + c[3]); }, 2},
      {PropCurveDIPPR103, {1.5, 2.5, 40, 0.75}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] + c[1] * std::exp(-c[2] * raised(x, -c[3])); }, 2},
      {PropCurveDIPPR104, {0.05, 40, 1e6, 1e18, 1e20}, {200, 350.5, 900},
       [](Real x, Coefficients c) {
         return c[0] + c[1] / x + (c[2] + (c[3] + c[4] / x) / (x * x * x * x * x)) / (x * x * x);
       }, 2},
      {PropCurveDIPPR106, {5.2e7, 0.3, -0.2, 0.25, 0.1, 647.096}, {280, 373.15, 600},
       [](Real x, Coefficients c) {
         const Real r = x / c[5];
         return c[0] * raised(1 - r, c[1] + (c[2] + (c[3] + c[4] * r) * r) * r);
       }, 2},
      {PropCurveDIPPR114, {60, 12e4, -650, -1600, 190.5}, {95, 120.5, 180},
       [](Real x, Coefficients c) {
         const Real t = (c[4] - x) / c[4];
         const Real slope = c[2] + c[3] * t;  // C + D t; the last three terms are the integral of its square
         const Real integral = t * t * t * (c[2] * c[2] / 3 + c[2] * c[3] * t / 2 + c[3] * c[3] * t * t / 5);
         return c[0] * c[0] / t + c[1] - c[0] * t * (c[2] + slope) - integral;
       }, 2},
      {PropCurveDIPPR115, {1.5, 200, 0.5, 1e-5, 2000}, {200, 350.5, 500},
       [](Real x, Coefficients c) { return c[0] + c[1] / x + c[2] * ln(x) + c[3] * x * x + c[4] / x / x; }, 2},
      {PropCurveDIPPR116, {17.8, 58.6, 95.4, 213.9, 141.3}, {0.1, 0.45, 0.8},
       [](Real x, Coefficients c) {
         const Real root = third(x);
         return c[0] + c[1] * raised(x, 0.35) + c[2] * root * root + c[3] * x + c[4] * x * root;
       }, 2},
      {PropCurvePOLY2, {3.5, 0.25, 1.5e-3}, {-200, 350.5, 900},
       [](Real x, Coefficients c) { return (c[2] * x + c[1]) * x + c[0]; }, 2},
      {PropCurvePOLY3, {3.5, 0.25, 1.5e-3, 2.5, 1e6}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return (c[2] * x + c[1]) * x + c[0] + c[3] * ln(x * x * x - c[4]); }, 2},
      {PropCurveANTO1, {1.5, 200, 0.5, 1e-5, 2}, {200, 350.5, 500},
       [](Real x, Coefficients c) { return c[0] + c[1] / x + c[2] * ln(x) + c[3] * raised(x, c[4]); }, 2},
      {PropCurveANTO2, {1.5, 200, 0.5, 1e-5, 2}, {200, 350.5, 500},
       [](Real x, Coefficients c) { return c[0] + c[1] / x + c[2] * ln(x) / ln(10) + c[3] * raised(x, c[4]); }, 2},
      {PropCurveQUOT1, {2.5, 1.75, 1.25, 30, 400}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] * std::exp(ln(c[1]) * ((c[2] * x + c[3]) * x + c[4]) / x / x); }, 2},
      {PropCurveEXPO1, {1.5, 2.5, 40, 0.75}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] + c[1] * std::exp(c[2] * raised(x, -c[3])); }, 2},
      {PropCurveEXPO2, {1.5, 0.75}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] + std::exp(c[1] * ln(x)); }, 2},
      {PropCurveWTSN1, {5.2e7, 0.3, -0.2, 0.25, 0.1}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) { return ln(c[0] * raised(1 - x, c[1] + (c[2] + (c[3] + c[4] * x) * x) * x)); }, 2},
      {PropCurveKFAC2, {1.5, 200, 3e4, 4e6, 5e8}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] + (c[1] + (c[2] + (c[3] + c[4] / x) / x) / x) / x; }, 2},
      {PropCurveKFAC4, {1.5, 200, 0.5, 1e-5, 2e-8}, {200, 350.5, 900},
       [](Real x, Coefficients c) { return c[0] + c[1] / x + c[2] * ln(x) + (c[3] + c[4] * x) * x * x; }, 2},
      {PropCurvePPDS1, {7.5, 1.75, 2.5, 3.5}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) {
         return x * (c[0] + c[1] * std::sqrt(x) + x * x * (c[2] + c[3] * x * x * x)) / (1 - x);
       }, 2},
      {PropCurvePPDS8, {7.5, 1.75, 2.5, 3.5}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) {
         const Real root = third(x);
         return c[0] * (1 + root * (c[1] + root * (c[2] + c[3] * root)));
       }, 2},
      {PropCurvePPDS9, {1.25, 0.5, 9e9, 9e9, 3e-5}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) { return 1000 * c[4] * std::exp(third(x) * (c[0] + c[1] * x)); }, 2},
      {PropCurvePPDS10, {17.8, 58.6, 95.4, 213.9, 141.3}, {0.1, 0.45, 0.8},
       [](Real x, Coefficients c) {
         const Real root = third(x);
         return c[0] + c[1] * raised(x, 0.35) + c[2] * root * root + c[3] * x + c[4] * x * root;
       }, 2},
      {PropCurvePPDS12, {7.5, 1.75, 2.5, 3.5, 4.5}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) {
         const Real six = raised(x, 6);
         return Real(8.314) * (((c[2] * x + c[1]) * x + c[0]) * x + six * (c[3] + c[4] * six * six));
       }, 2},
      {PropCurvePPDS14, {0.06, 1.25, 0.15}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) { return c[0] * std::exp(c[1] * ln(x)) * (1 + c[2] * x); }, 2},
      {PropCurvePPDS15, {0.5, 1.75, 2.5, 3.5, 4.5, 5.5}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) {
         return Real(8.314) * (c[0] / x + c[1] + (c[2] + (c[3] + (c[4] + c[5] * x) * x) * x) * x);
       }, 2},
      {PropCurvePPDS16, {7.5, 1.75, 2.5, 3.5}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) {
         const Real root = std::sqrt(x);
         return x * (c[0] + root * (c[1] + c[2] * x) + c[3] * x * x * x * x) / (1 - x);
       }, 3},
      {PropCurvePPDS17, {9e9, 8.5, 0.25, 1.5}, {0.3, 0.55, 0.9},
       [](Real x, Coefficients c) {
         const Real base = c[2] + c[3] * x;
         return base * raised(base, raised(x, 2.0L / 7)) / c[1];
       }, 2},
  };
  // clang-format on
  return cases;
}

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
    const std::vector<Real> exact(row.coefficients.begin(), row.coefficients.end());
    for (const double T : row.temperatures) {
      const Evaluation value = evaluate(*curve, T);
      EXPECT_EQ(value.result, S_OK);
      EXPECT_EQ(value.dependencies, 1);
      EXPECT_LE(ulps(value.value, row.expected(T, exact)), row.ulps) << T;
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
