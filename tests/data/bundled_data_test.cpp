// The bundled compounds as a host reads them: every number of the source arrives, and agrees with published values.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "tests/support/bundled_compounds.h"
#include "tests/support/compounds.h"

namespace qs::test {
namespace {

using nlohmann::json;

class BundledData : public CompoundTest {
 protected:
  // Made once for all tests of this file.
  static const BundledCompounds& bundled() {
    static const BundledCompounds made;
    return made;
  }
  static const json& source() {
    static const json parsed = json::parse(std::ifstream(kSourceFolder / "data/compounds.json"));
    return parsed["compounds"];
  }

  static ComPtr<IBasicCompound> load(INT number) {
    auto compound = newCompound();
    EXPECT_EQ(query<ICompoundInitFromVelDB>(compound)->Init(Bstr(bundled().directory.name()).get(), number), S_OK);
    return compound;
  }
  static ComPtr<IBasicCompound> load(const std::string& name) {
    for (const json& compound : source())
      if (compound["name"] == name) return load(compound["number"].get<INT>());
    ADD_FAILURE() << "no compound " << name;
    return newCompound();
  }
  // NaN when the property is not set.
  static double value(const ComPtr<IBasicCompound>& compound, const std::string& key, double temperature) {
    const PropertyReading reading = propertyOf(compound, widen(key), temperature);
    return reading.result == S_OK ? reading.value : std::nan("");
  }
};

TEST_F(BundledData, EveryNumberOfTheSourceArrives) {
  std::size_t count = 0;
  for (const json& entry : source()) {
    const auto compound = load(entry["number"].get<INT>());
    for (const auto& [key, constant] : entry["constants"].items()) {
      EXPECT_EQ(value(compound, key, 298.15), constant["value"].get<double>()) << entry["name"] << key;
      ++count;
    }
    for (const auto& [key, correlation] : entry["correlations"].items()) {
      tagEquationShapeEnum shape{};
      Bstr form;
      double range[4];
      INT size = 0;
      ComPtr<IRealArrayDisp> given;
      ASSERT_EQ(
          query<ICompoundProp>(compound)->GetEquationProperty(Bstr(widen(key)).get(), &shape, form.out(), range,
                                                              range + 1, range + 2, range + 3, &size, given.out()),
          S_OK);
      const auto coefficients = realsIn(given.get());
      auto expected = correlation["coefficients"].get<std::vector<double>>();
      expected.resize(std::min(expected.size(), coefficients.size()));  // without the entropy constant
      EXPECT_EQ(std::tie(range[0], range[1], coefficients),
                std::tuple(correlation["tmin"].get<double>(), correlation["tmax"].get<double>(), expected))
          << entry["name"] << key;
      ++count;
    }
  }
  EXPECT_GE(count, 1500u);
}

TEST_F(BundledData, SpecialSpeciesAreKnown) {
  const std::pair<const char*, HRESULT (STDMETHODCALLTYPE ICompoundID::*)()> rows[] = {
      {"Water", &ICompoundID::IsWater},
      {"Methanol", &ICompoundID::IsMethanol},
      {"Ethylene glycol", &ICompoundID::IsEG},
      {"Diethylene glycol", &ICompoundID::IsDEG},
      {"Triethylene glycol", &ICompoundID::IsTEG}};
  for (const auto& [name, is] : rows) EXPECT_EQ((query<ICompoundID>(load(name)).get()->*is)(), S_OK) << name;
}

// What readers derive from the ideal-gas enthalpy.
TEST_F(BundledData, IdealGasAgreesWithItsEnthalpy) {
  for (const json& entry : source()) {
    const auto compound = load(entry["number"].get<INT>());
    const auto slope = [&](const char* key) {
      return (value(compound, key, 400.01) - value(compound, key, 399.99)) / 0.02;
    };
    const double capacity = value(compound, "IGCP", 400.0);
    EXPECT_NEAR(slope("IGH") / capacity, 1.0, 1e-4) << entry["name"];
    EXPECT_NEAR(slope("IGS") * 400.0 / capacity, 1.0, 1e-4) << entry["name"];
  }
}

// Values at 298.15 K by tables 2-32, 2-156 and 2-179 of Perry's Chemical Engineers' Handbook, 8th ed., 2008.
TEST_F(BundledData, ValuesAgreeWithASecondSource) {
  const json published = json::parse(std::ifstream(kSourceFolder / "tests/data/published.json"));
  for (const auto& [key, values] : published.items())
    for (const auto& [name, expected] : values.items())
      EXPECT_NEAR(value(load(name), key, 298.15), expected.get<double>(), 0.01 * expected.get<double>()) << key << name;
}

// Every correlation over its range in 201 steps, and beyond it by every policy.
TEST_F(BundledData, EveryNumberComesWithItsStatus) {
  std::size_t count = 0;
  for (const json& entry : source()) {
    const auto compound = load(entry["number"].get<INT>());
    const auto arrays = query<ICompoundEvaluationArrays>(compound);
    for (const auto& [key, correlation] : entry["correlations"].items()) {
      SCOPED_TRACE(entry["name"].get<std::string>() + " " + key);
      ++count;
      const double tMin = correlation["tmin"], tMax = correlation["tmax"];
      std::vector<double> T{-1.0, 0.0}, values(400);
      for (int j = 0; j < 20; ++j) T.push_back(1.0 + (tMin - 1.0) * j / 20);
      const std::size_t first = T.size(), beyond = first + 201;
      for (int j = 0; j <= 200; ++j) T.push_back(tMin + (tMax - tMin) * j / 200);
      for (int j = 1; j <= 50; ++j) T.push_back(tMax + 10.0 * j);
      std::vector<LONG> statuses(400);
      for (const auto policy : {eNotSetOutside, eValueAtLimit, eTangentAtLimit, eTangentLnYOverInverseT,
                                eTangentToCritical, eRecommended, eAsFormGoesOn}) {
        SCOPED_TRACE(policy);
        arrays->EvaluateArray(widen(key).c_str(), static_cast<LONG>(T.size()), T.data(), 101.325, policy, values.data(),
                              nullptr, nullptr, statuses.data());
        double before = 0.0;
        for (std::size_t i = 0; i < T.size(); ++i) {
          const bool isNumber = std::isfinite(values[i]) && values[i] != -32767.0;
          EXPECT_EQ(isNumber, (statuses[i] & (eStatusNotSet | eStatusNotANumber)) == 0) << T[i];
          if (i >= first && i < beyond && policy != eAsFormGoesOn) {
            EXPECT_EQ(statuses[i], eStatusInside) << T[i];
          } else if (T[i] < tMin || i >= beyond) {
            EXPECT_TRUE(statuses[i] & (T[i] < tMin ? eStatusBelow : eStatusAbove)) << T[i];
          }
          if (policy == eAsFormGoesOn) continue;
          EXPECT_TRUE(isNumber || values[i] == -32767.0) << T[i];
          if (policy != eRecommended || !isNumber) continue;
          EXPECT_TRUE(key != "VP" || values[i] >= std::exchange(before, values[i])) << T[i];
          EXPECT_TRUE((key != "LDN" && key != "SDN") || values[i] >= 0.0) << T[i];
        }
      }
    }
  }
  EXPECT_GE(count, 600u);
}

}  // namespace
}  // namespace qs::test
