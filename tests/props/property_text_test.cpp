#include "props/property_text.h"

#include "tests/support/properties.h"

namespace qs {
namespace {

using testing::ElementsAre;

std::vector<double> coefficients(const CQSAbstractProp& property) {
  LONG count = 0;
  property.GetNumbOfParameters(&count);
  std::vector<double> values(static_cast<std::size_t>(count));
  for (LONG i = 0; i < count; ++i) property.GetParameter(i, &values[static_cast<std::size_t>(i)]);
  return values;
}

TEST(PropertyText, ReadsTheFirstOccurrenceOfAKey) {
  const struct {
    WideView key;
    WideView text;
    std::optional<WideView> value;
  } rows[] = {{OLESTR("A"), OLESTR("A(1)"), OLESTR("1")},       {OLESTR("A"), OLESTR("x A() B(2)"), OLESTR("")},
              {OLESTR("A"), OLESTR("BA(1) A(2)"), OLESTR("1")}, {OLESTR("A"), OLESTR("A(f(x)) "), OLESTR("f(x")},
              {OLESTR("A"), OLESTR("A A(2)"), std::nullopt},    {OLESTR("A"), OLESTR("A (2)"), std::nullopt},
              {OLESTR("A"), OLESTR("A(2"), std::nullopt},       {OLESTR("A"), OLESTR("A("), std::nullopt},
              {OLESTR("A"), OLESTR("A"), std::nullopt},         {OLESTR("A"), OLESTR("a(1)"), std::nullopt},
              {OLESTR("A"), OLESTR(""), std::nullopt}};
  for (const auto& row : rows) EXPECT_EQ(ReadKeyValue(row.key, row.text), row.value) << narrow(row.text);
}

TEST(PropertyText, PointStoresSixDigitsAndRecallsAnything) {
  const std::string fits(75, '0');
  const struct {
    std::string text;
    double value;
  } rows[] = {
      {"Value(0.344)", 0.344},
      {"noise Value( 12.5 kg) Value(3)", 12.5},
      {"Value()", 0.0},
      {"Value(x)", 0.0},
      {"value(3)", 0.0},
      {"Value(" + fits + "12.5)", 12.5},   // 79 bytes
      {"Value(" + fits + "012.5)", 99.0},  // 80 bytes do not fit: unchanged
  };
  for (const auto& row : rows) {
    CQSPointProp point;
    point.SetValue(99.0);
    recall(point, row.text);
    EXPECT_EQ(evaluate(point).value, row.value) << row.text;
  }
  CQSPointProp point;
  point.SetValue(1234567.0);
  EXPECT_EQ(stored(point), "Value(1.23457e+06)");
  EXPECT_EQ(point.Recall(nullptr), S_OK);
  EXPECT_EQ(evaluate(point).value, 0.0);
  CQSVoidProp placeholder;
  recall(placeholder, "Value(3)");
  EXPECT_EQ(stored(placeholder), "Void");
}

TEST(PropertyText, ComponentStoresClassNameAndContent) {
  test::ValueComponent fake;
  fake.content = OLESTR("k=1");
  CQSCOMProp property;
  EXPECT_EQ(stored(property), "ClassName() ComContent()");
  property.SetCOMClassName(Bstr(OLESTR("Vendor.Cp")).get());
  property.SetCOMObject(&fake);
  EXPECT_EQ(stored(property), "ClassName(Vendor.Cp) ComContent(k=1)");
  fake.result = E_FAIL;
  EXPECT_THROW(stored(property), CQSCOMError);
  fake.result = S_OK;

  recall(property, "ComContent(x) ClassName(Other.Cp)");
  EXPECT_EQ(stored(property), "ClassName(Other.Cp) ComContent(k=1)");
  BSTR name = nullptr;
  recall(property, "ClassName()");
  EXPECT_EQ(property.GetCOMClassName(&name), S_OK);
  EXPECT_EQ(taken(name), "");
  recall(property, "Name(x)");
  EXPECT_EQ(property.GetCOMClassName(&name), S_FALSE);
}

TEST(PropertyText, EquationStoresEveryFieldAndRecallsWhatIsThere) {
  const std::string text =
      "Tmin(250.5) Tmax(500) Pmin(-2) Pmax(1e+06) nParams(3) Values(1.5,-2e-07,1e+20) "
      "Xshape(26) Yshape(7) Xnorm(2) Ynorm(3) Xpow(0.5) Ypow(4) A(5) B(6.25)";
  const auto curve = equation(PropCurvePOLY2);
  recall(*curve, text);
  EXPECT_EQ(stored(*curve), text);
  recall(*curve, "Tmax(x) Yshape(8) Ypow() B(70) nonsense");
  EXPECT_EQ(stored(*curve),
            "Tmin(0) Tmax(0) Pmin(0) Pmax(0) nParams(3) Values(1.5,-2e-07,1e+20) "
            "Xshape(26) Yshape(8) Xnorm(2) Ynorm(3) Xpow(0.5) Ypow(0) A(5) B(70)");
  EXPECT_EQ(curve->Recall(nullptr), S_OK);
}

TEST(PropertyText, EquationRecallsNoMoreValuesThanEitherCount) {
  const struct {
    std::string text;
    std::vector<double> values;
  } rows[] = {{"nParams(5) Values(1,2,3,4,5)", {1, 2, 3, 4, 5}},
              {"nParams(3) Values(1,2,3,4,5)", {1, 2, 3, 94, 95}},
              {"nParams(5) Values(1,2,3,4,5,6,7,8,9)", {1, 2, 3, 4, 5}},
              {"nParams(5) Values(1,2)", {1, 2, 93, 94, 95}},
              {"nParams(5) Values(,1,, 2e1x,,x,4,)", {1, 20, 0, 4, 95}},
              {"nParams(-1) Values(1,2)", {91, 92, 93, 94, 95}},
              {"nParams(2147483647) Values(1,2)", {1, 2, 93, 94, 95}},
              {"nParams(99999999999) Values(1,2,3,4,5,6)", {1, 2, 3, 4, 5}},
              {"Values(1,2,3,4,5)", {91, 92, 93, 94, 95}},
              {"nParams(5)", {91, 92, 93, 94, 95}},
              {"nParams(5) Values(,,,)", {91, 92, 93, 94, 95}}};
  for (const auto& row : rows) {
    const auto curve = equation(PropCurveVELDB1);
    const double before[] = {91, 92, 93, 94, 95};
    curve->SetParameters(before, 5);
    recall(*curve, row.text);
    EXPECT_EQ(coefficients(*curve), row.values) << row.text;
  }
  const auto empty = equation(PropCurveVoid);
  recall(*empty, "nParams(3) Values(1,2,3)");
  EXPECT_THAT(coefficients(*empty), ElementsAre());
}

}  // namespace
}  // namespace qs
