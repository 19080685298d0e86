// The transformations of X and Y, seen through an equation whose form is Y = X.
#include <cmath>

#include "tests/support/properties.h"
#include "tests/support/ulps.h"

namespace qs {
namespace {

using Real = long double;

constexpr double kNorm = 0.9;
constexpr double kPressure = 2.5;
constexpr double kA = 3.0;
constexpr double kB = 1.25;

std::unique_ptr<CQSAbstractProp> identity() {
  auto curve = equation(PropCurvePOLY2);
  const double coefficients[] = {0.0, 1.0, 0.0};
  curve->SetParameters(coefficients, 3);
  curve->SetXYNorm(kNorm, kNorm);
  curve->SetAB(kA, kB);
  return curve;
}

struct TransformCase {
  LONG shape;
  Real (*forward)(Real x, Real n, Real P);
  Real (*back)(Real y, Real n, Real P);
};

constexpr Real kTenth = 2.302585092994045684017991454684364208L;  // ln 10

const TransformCase kTransformCases[] = {
    {1, [](Real x, Real, Real) { return x; }, [](Real y, Real, Real) { return y; }},
    {2, [](Real x, Real n, Real) { return x / n; }, [](Real y, Real n, Real) { return y * n; }},
    {3, [](Real x, Real n, Real) { return (n - x) / n; }, [](Real y, Real n, Real) { return n - y * n; }},
    {4, [](Real x, Real, Real) { return std::log(x) / kTenth; },
     [](Real y, Real, Real) { return std::exp(y * kTenth); }},
    {5, [](Real x, Real n, Real) { return (std::log(x) - std::log(n)) / kTenth; },
     [](Real y, Real n, Real) { return n * std::exp(y * kTenth); }},
    {6, [](Real x, Real n, Real) { return std::log((n - x) / n) / kTenth; },
     [](Real y, Real n, Real) { return -n * std::expm1(y * kTenth); }},
    {7, [](Real x, Real, Real) { return 2 * std::atanh((x - 1) / (x + 1)); },
     [](Real y, Real, Real) { return std::sinh(y) + std::cosh(y); }},
    {8, [](Real x, Real n, Real) { return std::log(x) - std::log(n); },
     [](Real y, Real n, Real) { return n * std::exp(y); }},
    {9, [](Real x, Real n, Real) { return std::log1p(-x / n); },
     [](Real y, Real n, Real) { return -n * std::expm1(y); }},
    {10, [](Real x, Real, Real) { return std::sinh(x) + std::cosh(x); },
     [](Real y, Real, Real) { return 2 * std::atanh((y - 1) / (y + 1)); }},
    {11, [](Real x, Real n, Real) { return 1 / std::exp(-x / n); },
     [](Real y, Real n, Real) { return -n * std::log(1 / y); }},
    {12, [](Real x, Real n, Real) { return std::exp((n - x) / n); },
     [](Real y, Real n, Real) { return n - n * std::log(y); }},
    {13, [](Real x, Real, Real) { return std::sin(x); },
     [](Real y, Real, Real) { return std::atan2(y, std::sqrt(1 - y * y)); }},
    {14, [](Real x, Real, Real) { return std::cos(x); },
     [](Real y, Real, Real) { return std::atan2(std::sqrt(1 - y * y), y); }},
    {15, [](Real x, Real, Real) { return std::sin(x) / std::cos(x); },
     [](Real y, Real, Real) { return std::atan2(y, Real(1)); }},
    {16, [](Real x, Real n, Real) { return std::sin(x / n); },
     [](Real y, Real n, Real) { return n * std::atan2(y, std::sqrt(1 - y * y)); }},
    {17, [](Real x, Real n, Real) { return std::cos(x / n); },
     [](Real y, Real n, Real) { return n * std::atan2(std::sqrt(1 - y * y), y); }},
    {18, [](Real x, Real n, Real) { return std::sin(x / n) / std::cos(x / n); },
     [](Real y, Real n, Real) { return n * std::atan2(y, Real(1)); }},
    {19, [](Real x, Real n, Real) { return std::sin((n - x) / n); },
     [](Real y, Real n, Real) { return n - n * std::atan2(y, std::sqrt(1 - y * y)); }},
    {20, [](Real x, Real n, Real) { return std::cos((n - x) / n); },
     [](Real y, Real n, Real) { return n - n * std::atan2(std::sqrt(1 - y * y), y); }},
    {21, [](Real x, Real n, Real) { return std::sin((n - x) / n) / std::cos((n - x) / n); },
     [](Real y, Real n, Real) { return n - n * std::atan2(y, Real(1)); }},
    {22, [](Real x, Real, Real) { return 1 - x; }, [](Real y, Real, Real) { return 1 - y; }},
    {23, [](Real x, Real, Real) { return x - 1; }, [](Real y, Real, Real) { return y + 1; }},
    {24, [](Real x, Real n, Real) { return (x - n) / n; }, [](Real y, Real n, Real) { return n + n * y; }},
    {25, [](Real x, Real n, Real) { return std::cbrt((n - x) / n); },
     [](Real y, Real n, Real) { return n - n * y * y * y; }},
    {26, [](Real x, Real, Real) { return (kA - x) / (x - kB); },
     [](Real y, Real, Real) { return (kA + kB * y) / (y + 1); }},
    {27, [](Real x, Real n, Real) { return std::log(n) + std::log(x); },
     [](Real y, Real n, Real) { return std::exp(y) / n; }},
    {28, [](Real x, Real n, Real) { return 1 / (1 + n / x); }, [](Real y, Real n, Real) { return n * y / (y - 1); }},
    {29, [](Real x, Real n, Real) { return n * x; }, [](Real y, Real n, Real) { return y / n; }},
    {30, [](Real x, Real n, Real) { return std::sqrt(n) / x; }, [](Real y, Real n, Real) { return std::sqrt(n) / y; }},
    {34, [](Real x, Real, Real P) { return x / P; }, [](Real y, Real, Real P) { return y * P; }},
    {35, [](Real x, Real, Real P) { return x * P; }, [](Real y, Real, Real P) { return y / P; }},
    {36, [](Real x, Real, Real P) { return std::log(x) + std::log(P); },
     [](Real y, Real, Real P) { return std::exp(y) / P; }},
};
constexpr double kPoints[] = {0.3, 0.45, 0.7};

// Differences such as 1 - X/n lose the digits that they cancel.
constexpr double kUlps = 3.0;

TEST(CurveTransforms, TransformBothWays) {
  ASSERT_EQ(std::size(kTransformCases), 33u);
  const auto curve = identity();
  double largest = 0.0;
  for (const TransformCase& row : kTransformCases) {
    for (const double x : kPoints) {
      curve->SetXYShape(row.shape, COMx);
      const Evaluation forward = evaluate(*curve, x, kPressure);
      EXPECT_EQ(forward.result, S_OK);
      EXPECT_EQ(forward.dependencies, 1);
      const double forwardError = ulps(forward.value, row.forward(x, kNorm, kPressure));
      EXPECT_LE(forwardError, kUlps) << "X shape " << row.shape << " of " << x;

      curve->SetXYShape(COMx, row.shape);
      const Evaluation back = evaluate(*curve, x, kPressure);
      EXPECT_EQ(back.result, S_OK);
      EXPECT_EQ(back.dependencies, 1);
      const double backError = ulps(back.value, row.back(x, kNorm, kPressure));
      EXPECT_LE(backError, kUlps) << "Y shape " << row.shape << " of " << x;
      largest = std::fmax(largest, std::fmax(forwardError, backError));
    }
  }
  RecordProperty("LargestError", std::to_string(largest));
}

TEST(CurveTransforms, ApplyPowersInsideTheShapes) {
  const auto curve = identity();
  curve->SetXYShape(COMxr, COMx);
  curve->SetXYPow(2.5, 1.0);
  EXPECT_LE(ulps(evaluate(*curve, 0.3).value, std::pow(Real(0.3) / Real(kNorm), 2.5L)), 3.0);

  curve->SetXYShape(COMx, COMlnx);
  curve->SetXYPow(1.0, 2.0);
  EXPECT_LE(ulps(evaluate(*curve, 0.3).value, std::exp(std::sqrt(Real(0.3)))), 2.0);

  curve->SetXYShape(COMx, COMx);
  curve->SetXYPow(1.0, 1.0);
  EXPECT_EQ(evaluate(*curve, -0.3).value, -0.3);
  curve->SetXYPow(2.0, 1.0);
  EXPECT_EQ(evaluate(*curve, -0.5).value, 0.25);
  curve->SetXYPow(0.5, 1.0);
  const Evaluation root = evaluate(*curve, -0.5);
  EXPECT_EQ(root.result, S_OK);
  EXPECT_TRUE(std::isnan(root.value));
}

TEST(CurveTransforms, FailOnWhatIsNoTransformation) {
  const auto curve = identity();
  for (const LONG shape : {-2147483647 - 1, -1, 0, 31, 32, 33, 37, 1000, 2147483647}) {
    curve->SetXYShape(shape, COMx);
    EXPECT_EQ(evaluate(*curve, 0.3), (Evaluation{S_FALSE, kUnwrittenLong, kUnwritten})) << shape;
    curve->SetXYShape(COMxm1, shape);
    EXPECT_EQ(evaluate(*curve, 1.5), (Evaluation{S_FALSE, kUnwrittenLong, 0.5})) << shape;
  }
}

TEST(CurveTransforms, FailWithoutTheirConstants) {
  const auto curve = identity();
  for (const auto& [a, b] : {std::pair(-32767.0, 1.0), std::pair(1.0, -32767.0), std::pair(-32767.0, -32767.0)}) {
    curve->SetAB(a, b);
    curve->SetXYShape(COMxppdsm1, COMx);
    EXPECT_EQ(evaluate(*curve, 0.3), (Evaluation{S_FALSE, kUnwrittenLong, kUnwritten}));
    curve->SetXYShape(COMx, COMxppdsm1);
    EXPECT_EQ(evaluate(*curve, 0.3), (Evaluation{S_FALSE, kUnwrittenLong, 0.3}));
    curve->SetXYShape(COMx, COMx);
    EXPECT_EQ(evaluate(*curve, 0.3), (Evaluation{S_OK, 1, 0.3}));
  }
}

TEST(CurveTransforms, FailOnTheEmptyValue) {
  const auto curve = identity();
  EXPECT_EQ(evaluate(*curve, -32767.0), (Evaluation{S_FALSE, kUnwrittenLong, kUnwritten}));
  curve->SetXYPow(2.0, 1.0);
  EXPECT_EQ(evaluate(*curve, -32767.0), (Evaluation{S_FALSE, kUnwrittenLong, kUnwritten}));
  curve->SetXYPow(1.0, 1.0);
  curve->SetXYShape(COMxm1, COMx);
  EXPECT_EQ(evaluate(*curve, -32766.0), (Evaluation{S_FALSE, kUnwrittenLong, kUnwritten}));

  curve->SetXYShape(COMx, COMxm1);
  EXPECT_EQ(evaluate(*curve, -32768.0), (Evaluation{S_FALSE, kUnwrittenLong, -32768.0}));
  curve->SetXYShape(COMxm1, COMx);
  const double constant[] = {-32767.0, 0.0, 0.0};
  curve->SetParameters(constant, 3);
  EXPECT_EQ(evaluate(*curve, 5.0), (Evaluation{S_FALSE, kUnwrittenLong, -32767.0}));
}

TEST(CurveTransforms, LeaveDomainErrorsToArithmetic) {
  const auto curve = identity();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  curve->SetXYShape(COMlnx, COMx);
  EXPECT_TRUE(std::isnan(evaluate(*curve, -1.0).value));
  curve->SetXYShape(COMx, COMexpx);  // undone by a logarithm
  EXPECT_EQ(evaluate(*curve, 0.0), (Evaluation{S_OK, 1, -kInfinity}));
  curve->SetXYShape(COMx, COMxp);
  EXPECT_EQ(evaluate(*curve, 1.0, 0.0), (Evaluation{S_OK, 1, kInfinity}));
}

}  // namespace
}  // namespace qs
