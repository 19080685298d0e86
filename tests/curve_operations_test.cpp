// Coefficients, ranges, transformation settings and copying, which all equations share.
#include "tests/support/properties.h"

namespace qs {
namespace {

struct Pair {
  HRESULT (CQSAbstractProp::*get)(double*, double*) const;
  HRESULT (CQSAbstractProp::*set)(double, double);
  double first;
  double second;
};
const Pair kPairs[] = {
    {&CQSAbstractProp::GetTRange, &CQSAbstractProp::SetTRange, 1e-05, 1e+10},
    {&CQSAbstractProp::GetPRange, &CQSAbstractProp::SetPRange, 1e-05, 1e+15},
    {&CQSAbstractProp::GetXYNorm, &CQSAbstractProp::SetXYNorm, 1.0, 1.0},
    {&CQSAbstractProp::GetXYPow, &CQSAbstractProp::SetXYPow, 1.0, 1.0},
    {&CQSAbstractProp::GetAB, &CQSAbstractProp::SetAB, -32767.0, -32767.0},
};

void expectPair(const CQSAbstractProp& curve, const Pair& pair, double first, double second) {
  double values[2] = {};
  EXPECT_EQ((curve.*pair.get)(&values[0], &values[1]), S_OK);
  EXPECT_THAT(values, testing::ElementsAre(first, second));
}

void expectShapes(const CQSAbstractProp& curve, LONG x, LONG y) {
  LONG shapes[2] = {};
  EXPECT_EQ(curve.GetXYShape(&shapes[0], &shapes[1]), S_OK);
  EXPECT_THAT(shapes, testing::ElementsAre(x, y));
}

TEST(CurveOperations, KeepPairsInOrderAndUnchecked) {
  for (const LONG shape : {LONG{0}, LONG{4}, LONG{37}, LONG{1000}}) {
    const auto curve = equation(shape);
    double next = 10.0;
    for (const Pair& pair : kPairs) {
      expectPair(*curve, pair, pair.first, pair.second);
      EXPECT_EQ(((*curve).*pair.set)(next, -next), S_OK);
      next += 1.0;
    }
    expectShapes(*curve, 1, 1);
    EXPECT_EQ(curve->SetXYShape(-5, 1000), S_OK);

    next = 10.0;
    for (const Pair& pair : kPairs) {
      expectPair(*curve, pair, next, -next);
      next += 1.0;
    }
    expectShapes(*curve, -5, 1000);
  }
}

TEST(CurveOperations, RejectIndicesOutsideTheirCoefficients) {
  for (LONG shape = 0; shape < 38; ++shape) {
    const auto curve = equation(shape);
    LONG count = 0;
    curve->GetNumbOfParameters(&count);
    for (LONG i = 0; i < count; ++i) {
      double value = 0.0;
      EXPECT_EQ(curve->GetParameter(i, &value), S_OK);
      EXPECT_EQ(value, -32767.0) << shape;
      EXPECT_EQ(curve->SetParameter(i, i + 0.5), S_OK);
    }
    for (LONG i = 0; i < count; ++i) {
      double value = 0.0;
      curve->GetParameter(i, &value);
      EXPECT_EQ(value, i + 0.5) << shape;
    }
    for (const LONG i : {LONG{-1}, LONG{-2147483647 - 1}, count, LONG{2147483647}}) {
      double value = kUnwritten;
      EXPECT_EQ(curve->GetParameter(i, &value), S_FALSE) << shape;
      EXPECT_EQ(value, kUnwritten);
      EXPECT_EQ(curve->SetParameter(i, 1.0), S_FALSE) << shape;
    }
    EXPECT_EQ(curve->SetValue(1.0), S_FALSE);
  }
}

TEST(CurveOperations, TakeCoefficientsTogether) {
  const auto curve = equation(PropCurvePOLY2);
  const double values[] = {1.0, 2.0, 3.0, 4.0};
  for (const LONG tooFew : {-1, 0, 2}) EXPECT_EQ(curve->SetParameters(values, tooFew), E_FAIL);
  double value = 0.0;
  curve->GetParameter(0, &value);
  EXPECT_EQ(value, -32767.0);
  EXPECT_EQ(curve->SetParameters(values, 4), S_OK);
  curve->SetTRange(500.0, 400.0);
  curve->SetPRange(1.0, 2.0);
  EXPECT_EQ(evaluate(*curve, 10.0, 100.0), (Evaluation{S_OK, 1, 321.0})) << "ranges do not matter";
}

// Fills every field with a value of its own.
void fill(CQSAbstractProp& curve) {
  LONG count = 0;
  curve.GetNumbOfParameters(&count);
  for (LONG i = 0; i < count; ++i) curve.SetParameter(i, 1.25 * i + 2.0);
  double next = 20.0;
  for (const Pair& pair : kPairs) {
    (curve.*pair.set)(next, next + 1.0);
    next += 2.0;
  }
  curve.SetXYShape(COMlnx, COMxr);
  curve.Name = Bstr(OLESTR("VP"));
}

TEST(CurveOperations, CopyEveryField) {
  for (LONG shape = 0; shape <= 38; ++shape) {
    const LONG number = shape == 38 ? static_cast<LONG>(PropCurveVoid) : shape;
    const auto source = equation(number);
    const auto target = equation(number);
    fill(*source);
    const std::string expected = stored(*source);
    EXPECT_NE(stored(*target), expected);
    EXPECT_EQ(target->Copy(source.get()), S_OK) << number;
    EXPECT_EQ(stored(*target), expected);
    EXPECT_EQ(target->Name.view(), OLESTR("VP"));
    EXPECT_NE(target->Name.get(), source->Name.get());
    EXPECT_EQ(target->Copy(target.get()), S_OK);
    EXPECT_EQ(stored(*target), expected);
    EXPECT_EQ(target->Name.view(), OLESTR("VP"));
  }
}

TEST(CurveOperations, CopyRefusesOtherForms) {
  const auto target = equation(PropCurveVELDB4);
  const std::string before = stored(*target);
  for (const LONG other : {PropCurveDIPPR101, PropCurveVELDB1, PropCurveVoid}) {
    const auto source = equation(other);
    fill(*source);
    EXPECT_EQ(target->Copy(source.get()), S_FALSE);
  }
  // An object that only calls itself an equation has no shape.
  CQSPointProp impostor;
  impostor.SetType(EquationProp);
  EXPECT_EQ(target->Copy(&impostor), S_FALSE);
  const auto untyped = equation(PropCurveVELDB4);
  untyped->SetType(PointProp);
  EXPECT_EQ(target->Copy(untyped.get()), S_FALSE);
  EXPECT_EQ(target->Copy(nullptr), S_FALSE);
  EXPECT_EQ(stored(*target), before);
  EXPECT_EQ(target->Name.get(), nullptr);
}

}  // namespace
}  // namespace qs
