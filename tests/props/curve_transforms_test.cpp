// The transformations of X and Y, seen through an equation whose form is Y = X.
#include <cmath>

#include "tests/support/curve_formulas.h"
#include "tests/support/numbers.h"
#include "tests/support/properties.h"
#include "tests/support/ulps.h"

namespace qs {
namespace {

using Real = long double;

using test::kA, test::kB, test::kNorm, test::kPressure;

std::unique_ptr<CQSAbstractProp> identity() {
  auto curve = equation(PropCurvePOLY2);
  const double coefficients[] = {0.0, 1.0, 0.0};
  curve->SetParameters(coefficients, 3);
  curve->SetXYNorm(kNorm, kNorm);
  curve->SetAB(kA, kB);
  return curve;
}

// As one of Y a transformation is undone, but for the scale, whose sign turns.
TEST(CurveTransforms, TransformBothWays) {
  const auto curve = identity();
  for (const auto& [shape, formula] : test::transformationFormulas()) {
    for (const double x : {0.3, 0.45, 0.7}) {
      SCOPED_TRACE(testing::Message() << "shape " << shape << " of " << x);
      const Real y = test::transformed(formula, x);
      curve->SetXYShape(shape, COMx);
      const Evaluation forward = evaluate(*curve, x, kPressure);
      EXPECT_EQ(forward.result, S_OK);
      EXPECT_EQ(forward.dependencies, 1);
      // Differences such as 1 - X/N lose the digits that they cancel.
      EXPECT_LE(ulps(forward.value, y), 3.0);

      curve->SetXYShape(COMx, shape);
      const Evaluation back = evaluate(*curve, static_cast<double>(y), kPressure);
      EXPECT_EQ(back.result, S_OK);
      EXPECT_NEAR(back.value, shape == COMxscale ? -x : x, 1e-14);
    }
  }
  EXPECT_EQ(test::transformationFormulas().rbegin()->first, COMlnxp);
}

TEST(CurveTransforms, ApplyPowersInsideTheShapes) {
  const auto curve = identity();
  curve->SetXYShape(COMxr, COMx);
  curve->SetXYPow(2.5, 1.0);
  EXPECT_LE(ulps(evaluate(*curve, 0.3).value, std::pow(Real(0.3) / Real(kNorm), 2.5L)), 3.0);
  curve->SetXYShape(COMx, COMlnx);
  curve->SetXYPow(1.0, 2.0);
  EXPECT_LE(ulps(evaluate(*curve, 0.3).value, std::exp(std::sqrt(Real(0.3)))), 2.0);
}

TEST(CurveTransforms, FailOrLeaveItToArithmetic) {
  constexpr double kEmpty = -32767.0;
  const Evaluation failsInX{S_FALSE, kUnwrittenLong, kUnwritten};
  const auto failsInY = [](double y) { return Evaluation{S_FALSE, kUnwrittenLong, y}; };
  const auto gives = [](double y) { return Evaluation{S_OK, 1, y}; };
  const struct {
    LONG xShape, yShape;
    double xPower, T;
    Evaluation expected;
    double a = kA, b = kB, P = kPressure;
  } rows[] = {
      // The empty value, before and after a transformation.
      {COMx, COMx, 1.0, kEmpty, failsInX},
      {COMx, COMx, 2.0, kEmpty, failsInX},
      {COMxm1, COMx, 1.0, kEmpty + 1, failsInX},
      {COMx, COMxm1, 1.0, kEmpty - 1, failsInY(kEmpty - 1)},
      {COMxm1, COMx, 1.0, 1.5, gives(0.5)},
      // Without both constants.
      {COMxppdsm1, COMx, 1.0, 0.3, failsInX, kEmpty, 1.0},
      {COMxppdsm1, COMx, 1.0, 0.3, failsInX, 1.0, kEmpty},
      {COMx, COMxppdsm1, 1.0, 0.3, failsInY(0.3), 1.0, kEmpty},
      {COMx, COMx, 1.0, 0.3, gives(0.3), kEmpty, kEmpty},
      // Outside the domain; COMexpx is undone by a logarithm.
      {COMx, COMx, 1.0, -0.3, gives(-0.3)},
      {COMx, COMx, 2.0, -0.5, gives(0.25)},
      {COMx, COMexpx, 1.0, 0.0, gives(-kInfinity)},
      {COMx, COMxp, 1.0, 1.0, gives(kInfinity), kA, kB, 0.0},
  };
  for (const auto& row : rows) {
    const auto curve = identity();
    curve->SetXYShape(row.xShape, row.yShape);
    curve->SetXYPow(row.xPower, 1.0);
    curve->SetAB(row.a, row.b);
    EXPECT_EQ(evaluate(*curve, row.T, row.P), row.expected) << &row - rows;
  }
  const auto curve = identity();
  for (const LONG shape : {-2147483647 - 1, -1, 0, 31, 32, 33, 37, 1000, 2147483647}) {
    curve->SetXYShape(shape, COMx);
    EXPECT_EQ(evaluate(*curve, 0.3), failsInX) << shape;
    curve->SetXYShape(COMxm1, shape);
    EXPECT_EQ(evaluate(*curve, 1.5), failsInY(0.5)) << shape;
  }
  curve->SetXYShape(COMlnx, COMx);
  EXPECT_TRUE(std::isnan(evaluate(*curve, -1.0).value));
  // A form may answer the empty value too.
  const double constant[] = {kEmpty, 0.0, 0.0};
  curve->SetParameters(constant, 3);
  curve->SetXYShape(COMx, COMx);
  EXPECT_EQ(evaluate(*curve, 5.0), failsInY(kEmpty));
}

}  // namespace
}  // namespace qs
