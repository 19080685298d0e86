#include "props/property_text.h"

#include "tests/support/properties.h"

namespace qs {
namespace {

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

  // At every place of texts of every length, among parts of the key.
  for (const WideView key : {WideView(OLESTR("T")), WideView(OLESTR("Tmin"))})
    for (std::size_t before = 0; before < 40; ++before)
      for (std::size_t after = 0; after < 40; after += 13) {
        const WideString text = WideString(before, 'n') + WideString(key) + OLESTR("(1)") + WideString(after, 'm');
        EXPECT_EQ(ReadKeyValue(key, text), WideView(OLESTR("1"))) << narrow(text);
      }
}

TEST(PropertyText, IsStoredWithSixDigitsAndRecalledFromNothing) {
  CQSPointProp point;
  point.SetValue(1234567.0);
  EXPECT_EQ(stored(point), "Value(1.23457e+06)");
  EXPECT_EQ(point.Recall(nullptr), S_OK);
  EXPECT_EQ(evaluate(point).value, 0.0);
  CQSVoidProp placeholder;
  recall(placeholder, "Value(3)");
  EXPECT_EQ(stored(placeholder), "Void");

  const auto curve = equation(PropCurvePOLY2);
  const std::string text =
      "Tmin(250.5) Tmax(500) Pmin(-2) Pmax(1e+06) nParams(3) Values(1.5,-2e-07,1e+20) "
      "Xshape(26) Yshape(7) Xnorm(2) Ynorm(3) Xpow(0.5) Ypow(4) A(5) B(6.25)";
  recall(*curve, text);
  EXPECT_EQ(stored(*curve), text);
  EXPECT_EQ(curve->Recall(nullptr), S_OK);
  EXPECT_EQ(stored(*curve), "Tmin(0) Tmax(0) Pmin(0) Pmax(0)" + text.substr(text.find(" nParams")));
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

}  // namespace
}  // namespace qs
