#include "bank/units.h"

#include <gmock/gmock.h>

#include <cmath>

#include "bank/names.h"
#include "bank/properties.h"

namespace {

using namespace qs;
using namespace qs::bank;
using database::CompoundData;
using database::Correlation;
using testing::HasSubstr;

// Definitions of the units, and values that everybody knows.
TEST(Units, ConvertNumbers) {
  const struct {
    const char *target, *unit;
    double number, expected;
  } cases[] = {
      {"K", "degC", 25, 298.15},
      {"K", "degF", 212, 373.15},
      {"K", "degR", 491.67, 273.15},
      {"kPa", "atm", 1, 101.325},
      {"kPa", "torr", 760, 101.325},
      {"kPa", "psi", 14.695948775513, 101.325},
      {"kPa", "MPa", 22.064, 22064},
      {"kPa", "mbar", 1013.25, 101.325},
      {"kPa", "kPa", 0.1, 0.1},
      {"kg/m3", "lb/ft3", 62.42796057614461, 1000},
      {"kJ/kmol", "kcal/mol", 1, 4184},
      {"kJ/kmol", "Btu/lbmol", 1, 2.326},
      {"m3/kmol", "ft3/lbmol", 359.0, 22.4116378},
      {"Pa s", "cP", 0.89, 0.00089},
      {"(kJ/m3)^0.5", "MPa^0.5", 47.8, 1511.568721},
      {"debye", "C m", 6.187e-30, 1.854815966},
      {"-", "", 0.5, 0.5},
      {"W/(m K)", "Btu/(h ft degF)", 1, 1.730734666},
      {"m", "angstrom", 0.615, 6.15e-11},
  };
  for (const auto& [target, unit, number, expected] : cases) {
    double converted = number;
    EXPECT_EQ(convertNumber(target, unit, converted), "") << unit;
    EXPECT_NEAR(converted, expected, 1e-6 * std::abs(expected)) << unit;
  }
  double number = 7;
  EXPECT_THAT(convertNumber("kPa", "bars", number), HasSubstr("did you mean \"bar\"?"));
  EXPECT_THAT(convertNumber("kg/m3", "mol/l", number), HasSubstr("molecular weight"));
  EXPECT_EQ(number, 7);
}

// Every form and the transformations of Y: a converted correlation has the converted values, or is refused.
TEST(Units, ConvertCorrelations) {
  std::string refused;
  for (const tagXYShapeEnum shape : {COMx, COMxdp, COMxp, COMlnx, COMlnxp, COMlogx}) {
    refused += nameOf(kTransformations, shape);
    for (const auto& [name, form] : kForms) {
      CompoundData before;
      Correlation& correlation = before.correlations[Key::VP];
      correlation = {.form = form, .coefficients = {}, .tmin = 0.1, .tmax = 1, .yShape = shape};
      for (std::size_t i = 0; i < database::coefficientCount(Key::VP, form); ++i)
        correlation.coefficients.push_back(0.5 + 0.125 * static_cast<double>(i));
      CompoundData after = before;
      if (!convertCorrelation(Key::VP, "bar", after.correlations[Key::VP]).empty()) {
        EXPECT_EQ(after.correlations[Key::VP].coefficients, correlation.coefficients);
        refused.append(" ").append(name);
        continue;
      }
      for (const double T : {0.2, 0.45}) {
        double old = 0.0, converted = 0.0;
        LONG dependencies = 0;
        propertyOf(before, Key::VP)->GetValue(T, 3.0, eNoExtrapolation, &dependencies, &old);
        propertyOf(after, Key::VP)->GetValue(T, 3.0, eNoExtrapolation, &dependencies, &converted);
        EXPECT_EQ(std::isfinite(converted), std::isfinite(old));
        if (!std::isfinite(old)) continue;
        EXPECT_NEAR(converted, 100 * old, 1e-12 * std::abs(converted)) << name << ' ' << shape;
      }
    }
    refused += '\n';
  }
  const std::string linear = " DIPPR114 EXPO2 WTSN1 PPDS17\n",
                    logarithmic =
                        " VELDB4 VELDB5 VELDB6 VELDB7 VELDB8 DIPPR101 DIPPR102 DIPPR106 DIPPR114 QUOT1 EXPO2 WTSN1 "
                        "PPDS1 PPDS8 PPDS9 PPDS12 PPDS14 PPDS15 PPDS16 PPDS17\n";
  EXPECT_EQ(refused, "COMx" + linear + "COMxdp" + linear + "COMxp" + linear + "COMlnx" + logarithmic + "COMlnxp" +
                         logarithmic + "COMlogx" + logarithmic);
}

// The entropy that follows from an ideal-gas enthalpy has its constant in the seventh coefficient.
TEST(Units, ConvertsTheEntropyConstant) {
  Correlation enthalpy{.form = PropCurveVELDB3, .coefficients = {1, 2, 3, 4, 5, 6, 7}};
  EXPECT_EQ(convertCorrelation(Key::IGH, "kJ/mol", enthalpy), "");
  EXPECT_EQ(enthalpy.coefficients, (std::vector<double>{1000, 2000, 3000, 4000, 5000, 6000, 7000}));
}

TEST(Units, SayWhyTheyAreNotConverted) {
  const struct {
    Correlation correlation;
    const char *unit, *reason;
  } cases[] = {
      {{.form = PropCurvePOLY2, .coefficients = {1, 2, 3}}, "degC", "zeros"},
      {{.form = PropCurvePOLY2, .coefficients = {1, 2, 3}, .yPower = 2}, "degR", "power"},
      {{.form = PropCurvePOLY2, .coefficients = {1, 2, 3}, .yShape = COM1mx}, "degR", "COM1mx"},
      {{.form = PropCurvePOLY2, .coefficients = {1, 2}}, "degR", "number of coefficients"},
      {{.form = PropCurveEXPO2, .coefficients = {1, 2}}, "degR", "EXPO2"},
      {{.form = PropCurvePOLY2, .coefficients = {1, 2, 3}}, "degrees", "cannot be converted to \"K\""},
  };
  for (auto [correlation, unit, reason] : cases)
    EXPECT_THAT(convertCorrelation(Key::NBP, unit, correlation), HasSubstr(reason));
}

}  // namespace
