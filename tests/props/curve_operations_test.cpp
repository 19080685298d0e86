// Coefficients, ranges, transformation settings and copying, which all equations share.
#include "props/forms.h"
#include "tests/support/properties.h"

namespace qs {
namespace {

// Gives every field a value of its own.
void fill(CQSAbstractProp& curve) {
  LONG count = 0;
  curve.GetNumbOfParameters(&count);
  for (LONG i = 0; i < count; ++i) EXPECT_EQ(curve.SetParameter(i, i + 0.5), S_OK);
  EXPECT_EQ(curve.SetTRange(20, 21), S_OK);
  EXPECT_EQ(curve.SetPRange(23, 22), S_OK);
  EXPECT_EQ(curve.SetXYShape(-5, 1000), S_OK);
  EXPECT_EQ(curve.SetXYNorm(24, 25), S_OK);
  EXPECT_EQ(curve.SetXYPow(26, 27), S_OK);
  EXPECT_EQ(curve.SetAB(28, 29), S_OK);
  curve.Name = PropertyName(OLESTR("VP"));
}

std::vector<double> settingsOf(const CQSAbstractProp& curve) {
  std::vector<double> settings;
  for (const auto getter : {&CQSAbstractProp::GetTRange, &CQSAbstractProp::GetPRange, &CQSAbstractProp::GetXYNorm,
                            &CQSAbstractProp::GetXYPow, &CQSAbstractProp::GetAB}) {
    double first = 0.0, second = 0.0;
    EXPECT_EQ((curve.*getter)(&first, &second), S_OK);
    settings.insert(settings.end(), {first, second});
  }
  LONG x = 0, y = 0;
  EXPECT_EQ(curve.GetXYShape(&x, &y), S_OK);
  settings.insert(settings.end(), {static_cast<double>(x), static_cast<double>(y)});
  return settings;
}

TEST(CurveOperations, KeepAndCopyEveryFieldUnchecked) {
  for (const EquationForm& form : kEquationForms) {
    SCOPED_TRACE(form.shape);
    const auto source = equation(form.shape), target = equation(form.shape);
    EXPECT_EQ(settingsOf(*target), (std::vector<double>{1e-5, 1e10, 1e-5, 1e15, 1, 1, 1, 1, -32767, -32767, 1, 1}));
    double value = 0.0;
    if (form.coefficients > 0) {
      EXPECT_EQ(target->GetParameter(form.coefficients - 1, &value), S_OK);
      EXPECT_EQ(value, -32767.0);
    }
    fill(*source);
    const std::string filled = stored(*source);
    EXPECT_EQ(settingsOf(*source), (std::vector<double>{20, 21, 23, 22, 24, 25, 26, 27, 28, 29, -5, 1000}));
    for (const CQSAbstractProp* from : {source.get(), target.get()}) {
      EXPECT_EQ(target->Copy(from), S_OK);
      EXPECT_EQ(stored(*target), filled);
      EXPECT_EQ(target->Name.view(), OLESTR("VP"));
    }
    for (const LONG i : {LONG{-1}, LONG{-2147483647 - 1}, form.coefficients, LONG{2147483647}}) {
      EXPECT_EQ(target->GetParameter(i, &value), S_FALSE);
      EXPECT_EQ(target->SetParameter(i, 1.0), S_FALSE);
    }
    EXPECT_EQ(target->SetValue(1.0), S_FALSE);
    EXPECT_EQ(stored(*target), filled);

    // Another form with as many coefficients refuses it.
    const auto other = equation(form.shape == PropCurvePOLY2 ? PropCurvePPDS14 : PropCurvePOLY2);
    const std::string before = stored(*other);
    EXPECT_EQ(other->Copy(source.get()), S_FALSE);
    EXPECT_EQ(stored(*other), before);
  }
}

TEST(CurveOperations, CopyRefusesWhatIsNoEquation) {
  const auto target = equation(PropCurveVELDB4), untyped = equation(PropCurveVELDB4);
  const std::string before = stored(*target);
  // An object that only calls itself an equation has no shape.
  CQSPointProp impostor;
  impostor.SetType(EquationProp);
  untyped->SetType(PointProp);
  for (const CQSAbstractProp* source : std::initializer_list<CQSAbstractProp*>{&impostor, untyped.get(), nullptr})
    EXPECT_EQ(target->Copy(source), S_FALSE);
  EXPECT_EQ(stored(*target), before);
  EXPECT_TRUE(target->Name.isNull());
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
