// The forms of equations: each against its formula as hosts display it, and what is special about one of them.
#include <algorithm>
#include <array>
#include <cmath>

#include "tests/support/curve_formulas.h"
#include "tests/support/properties.h"
#include "tests/support/ulps.h"

namespace qs {
namespace {

using Real = long double;

// The last letter of a formula tells how many coefficients there are.
TEST(CurveForms, EvaluateTheFormulaThatTheyDisplay) {
  for (const EquationForm& form : kEquationForms) {
    if (form.shape == PropCurveVoid) continue;
    SCOPED_TRACE(narrow(form.className));
    const auto curve = equation(form.shape);
    const std::vector<double> coefficients = test::coefficientsFor(form);
    ASSERT_EQ(curve->SetParameters(coefficients.data(), form.coefficients), S_OK);
    for (const double x : {0.3, 0.55, 0.9}) {
      const Evaluation value = evaluate(*curve, x);
      EXPECT_EQ(value.result, S_OK);
      EXPECT_EQ(value.dependencies, 1);
      EXPECT_LE(ulps(value.value, test::valueOfForm(form, coefficients, x)), 8.0) << x;
    }
    char last = 'A';
    for (const char letter : narrow(form.formula))
      if (letter >= 'A' && letter <= 'G') last = std::max(last, letter);
    EXPECT_EQ(last, 'A' + form.coefficients - 1);
  }
}

TEST(CurveForms, AreKnownByNumberAndName) {
  for (const EquationForm& form : kEquationForms) {
    const auto curve = equation(form.shape);
    Bstr name, formula;
    EXPECT_EQ(curve->GetClassName(name.out()), S_OK);
    EXPECT_EQ(curve->GetForm(formula.out()), S_OK);
    EXPECT_EQ(findForm(name.view()), &form);
    EXPECT_EQ(formula.view(), form.formula);
    LONG type = 0, shape = 0, count = 0;
    curve->GetType(&type);
    curve->GetShape(&shape);
    curve->GetNumbOfParameters(&count);
    EXPECT_EQ((std::array{type, shape, count}), (std::array{LONG{EquationProp}, form.shape, form.coefficients}));
  }
  EXPECT_EQ(findForm(OLESTR("PropCurveEXPO2"))->formula, OLESTR("Y = A + X^B"));
  EXPECT_EQ(findForm(OLESTR("propcurveveldb1")), nullptr);
  CQSVoidProp untouched;
  for (const LONG shape : {-2147483647 - 1, -1, static_cast<int>(kFormCount), 999, 1001, 2147483647}) {
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
// central difference in long double, are those at the bound. The bound is transformed, the temperature beyond is not.
TEST(CurveForms, VELDB5Extrapolates) {
  const std::array c{1.5, -200.0, 20.0, 0.5, 1e-5, 2.0};
  const auto curve = veldb5(c, 250.0, 400.0);
  const auto exponent = [&](Real x) { return c[0] + c[1] / (c[2] + x) + c[3] * std::log(x) + c[4] * x * x; };
  for (const Real norm : {1.0L, 1.25L}) {
    curve->SetXYShape(norm == 1 ? COMx : COMxr, COMx);
    curve->SetXYNorm(static_cast<double>(norm), 1.0);
    for (const double T : {250.0, 249.999, 100.0, 1.0, 400.0, 400.001, 500.0, 5000.0}) {
      const Real bound = (T < 300.0 ? 250.0L : 400.0L) / norm, step = 1e-8L;
      const Real slope = (exponent(1 / (1 / bound + step)) - exponent(1 / (1 / bound - step))) / (2 * step);
      const bool inside = T == 250.0 || T == 400.0;
      const Real expected = std::exp(exponent(bound) + (inside ? 0 : slope * (1 / Real(T) - 1 / bound)));
      const Evaluation value = evaluate(*curve, T);
      EXPECT_EQ(value.result, S_OK);
      EXPECT_NEAR(static_cast<double>(value.value / expected), 1.0, 1e-8) << T;
    }
  }
  curve->SetXYShape(COMscalexy, COMx);
  EXPECT_EQ(evaluate(*curve, 800.0), (Evaluation{S_FALSE, kUnwrittenLong, kUnwritten}));
}

TEST(CurveForms, VELDB5IsCapped) {
  const auto curve = veldb5({0.0, 0.0, 0.0, 0.0, 10.0, 1.0}, 10.0, 100.0);  // exp(10 X)
  EXPECT_LE(ulps(evaluate(*curve, 68.0).value, std::exp(680.0L)), 1.0);
  for (const double T : {69.5, 100.0, 1e5}) EXPECT_LE(ulps(evaluate(*curve, T).value, std::exp(690.0L)), 1.0) << T;
  EXPECT_EQ(evaluate(*curve, 0.0).value, 0.0);
}

}  // namespace
}  // namespace qs
