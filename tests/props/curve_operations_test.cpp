// Coefficients, ranges, transformation settings and copying, which all equations share.
#include "tests/support/properties.h"

namespace qs {
namespace {

struct Pair {
  HRESULT (CQSAbstractProp::*get)(double*, double*) const;
  HRESULT (CQSAbstractProp::*set)(double, double);
  double first, second;
};
const Pair kPairs[] = {
    {&CQSAbstractProp::GetTRange, &CQSAbstractProp::SetTRange, 1e-05, 1e+10},
    {&CQSAbstractProp::GetPRange, &CQSAbstractProp::SetPRange, 1e-05, 1e+15},
    {&CQSAbstractProp::GetXYNorm, &CQSAbstractProp::SetXYNorm, 1.0, 1.0},
    {&CQSAbstractProp::GetXYPow, &CQSAbstractProp::SetXYPow, 1.0, 1.0},
    {&CQSAbstractProp::GetAB, &CQSAbstractProp::SetAB, -32767.0, -32767.0},
};

std::vector<double> settingsOf(const CQSAbstractProp& curve) {
  std::vector<double> settings;
  for (const Pair& pair : kPairs) {
    double first = 0.0, second = 0.0;
    EXPECT_EQ((curve.*pair.get)(&first, &second), S_OK);
    settings.insert(settings.end(), {first, second});
  }
  LONG x = 0, y = 0;
  EXPECT_EQ(curve.GetXYShape(&x, &y), S_OK);
  settings.insert(settings.end(), {static_cast<double>(x), static_cast<double>(y)});
  return settings;
}

// Gives every field a value of its own.
void fill(CQSAbstractProp& curve) {
  LONG count = 0;
  curve.GetNumbOfParameters(&count);
  for (LONG i = 0; i < count; ++i) EXPECT_EQ(curve.SetParameter(i, 1.25 * i + 2.0), S_OK);
  double next = 20.0;
  for (const Pair& pair : kPairs) {
    EXPECT_EQ((curve.*pair.set)(next, next + 1.0), S_OK);
    next += 2.0;
  }
  EXPECT_EQ(curve.SetXYShape(-5, 1000), S_OK);
  curve.Name = Bstr(OLESTR("VP"));
}
const std::vector<double> kFilled{20, 21, 22, 23, 24, 25, 26, 27, 28, 29, -5, 1000};

TEST(CurveOperations, KeepAndCopyEveryFieldUnchecked) {
  for (LONG number = 0; number <= 38; ++number) {
    const LONG shape = number == 38 ? static_cast<LONG>(PropCurveVoid) : number;
    SCOPED_TRACE(shape);
    const auto source = equation(shape), target = equation(shape);
    std::vector<double> defaults;
    for (const Pair& pair : kPairs) defaults.insert(defaults.end(), {pair.first, pair.second});
    defaults.insert(defaults.end(), {1.0, 1.0});
    EXPECT_EQ(settingsOf(*target), defaults);
    fill(*source);
    EXPECT_EQ(settingsOf(*source), kFilled);
    for (CQSAbstractProp* from : {source.get(), target.get()}) {
      EXPECT_EQ(target->Copy(from), S_OK);
      EXPECT_EQ(stored(*target), stored(*source));
      EXPECT_EQ(target->Name.view(), OLESTR("VP"));
      EXPECT_NE(target->Name.get(), source->Name.get());
    }
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

TEST(CurveOperations, RejectIndicesOutsideTheirCoefficients) {
  for (LONG shape = 0; shape < 38; ++shape) {
    SCOPED_TRACE(shape);
    const auto curve = equation(shape);
    LONG count = 0;
    double value = 0.0;
    curve->GetNumbOfParameters(&count);
    EXPECT_EQ(curve->GetParameter(count - 1, &value), S_OK);
    EXPECT_EQ(value, -32767.0);
    EXPECT_EQ(curve->SetParameter(count - 1, 0.5), S_OK);
    EXPECT_EQ(curve->GetParameter(count - 1, &value), S_OK);
    for (const LONG i : {LONG{-1}, LONG{-2147483647 - 1}, count, LONG{2147483647}}) {
      EXPECT_EQ(curve->GetParameter(i, &value), S_FALSE);
      EXPECT_EQ(curve->SetParameter(i, 1.0), S_FALSE);
    }
    EXPECT_EQ(value, 0.5);
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
  EXPECT_EQ(evaluate(*curve, 10.0), (Evaluation{S_OK, 1, 321.0})) << "the range does not matter";
}

}  // namespace
}  // namespace qs
