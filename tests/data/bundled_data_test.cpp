// The bundled compounds as a host reads them: every number of the source arrives, and what it means agrees with the
// others and with published values.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <set>

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
  struct Compound;
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

// A bundled compound: a property's value at a temperature in K, NaN when it is not set.
struct BundledData::Compound {
  const json& entry;
  ComPtr<IBasicCompound> compound = load(entry["number"].get<INT>());

  double operator()(const char* key, double temperature = 298.15) const { return value(compound, key, temperature); }
  double limit(const char* key, const char* end) const { return entry["correlations"][key][end]; }
  // By how much the widest range of the keys passes a temperature, in K.
  double excess(std::initializer_list<const char*> keys, double temperature) const {
    double most = 0.0;
    for (const char* key : keys)
      if (entry["correlations"].contains(key)) most = std::max(most, limit(key, "tmax") - temperature);
    return most;
  }
  // The sum over the atoms of the formula; an element that is not given counts nothing.
  double sum(const std::map<std::string, double>& ofAtom) const {
    const std::string formula = entry["formula"];
    double total = 0.0;
    for (std::size_t at = 0, next; at < formula.size(); at = next) {
      next = std::min(formula.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ", at + 1), formula.size());
      const std::size_t digits = std::min(formula.find_first_of("0123456789", at), next);
      if (const auto of = ofAtom.find(formula.substr(at, digits - at)); of != ofAtom.end())
        total += of->second * (digits < next ? std::stod(formula.substr(digits, next - digits)) : 1.0);
    }
    return total;
  }
};

constexpr double kGasConstant = 8.314462618;

TEST_F(BundledData, ValuesAgreeWithEachOther) {
  std::vector<Compound> compounds;
  for (const json& entry : source()) compounds.push_back({entry});
  // As many compounds as stated are asked; the others give NaN. The notes of the source explain the exceptions.
  const auto expectWithin = [&](double limit, const char* what, int stated, const std::set<std::string>& exceptions,
                                const std::function<double(const Compound&)>& deviationOf) {
    int asked = 0;
    for (const Compound& compound : compounds) {
      const double deviation = std::abs(deviationOf(compound));
      if (std::isnan(deviation)) continue;
      ++asked;
      const std::string name = compound.entry["name"];
      EXPECT_EQ(deviation > limit, exceptions.contains(name)) << name << ", " << what << ": " << deviation;
    }
    EXPECT_EQ(asked, stated) << what;
  };
  expectWithin(0.01, "VP at NBP is one atmosphere", 53, {"Triethylene glycol"},
               [](auto& c) { return c("VP", c("NBP")) / 101.325 - 1.0; });
  expectWithin(0.03, "VP at TC is PC", 52, {"Methyl tert-butyl ether"}, [](auto& c) {
    return c.limit("VP", "tmax") < 0.995 * c("TC") ? std::nan("") : c("VP", c("TC")) / c("PC") - 1.0;
  });
  expectWithin(0.0, "NBP lies between MP and TC", 53, {"Acetylene"}, [](auto& c) {
    return std::max({c("MP") - c("NBP"), c("NBP") - c("TC"), 0.0});
  });
  expectWithin(0.01, "ACEN is that of VP", 54, {"Triethylene glycol"},
               [](auto& c) { return c("ACEN") + 1.0 + std::log10(c("VP", 0.7 * c("TC")) / c("PC")); });
  expectWithin(0.015, "ZC is that of TC, PC and VC", 54, {},
               [](auto& c) { return c("ZC") * kGasConstant * c("TC") / (c("PC") * c("VC")) - 1.0; });
  expectWithin(0.0, "no liquid is above TC", 54, {}, [](auto& c) {
    return c.excess({"LDN", "VP", "HVP", "LCP", "LVS", "LTC", "ST"}, c("TC"));
  });
  expectWithin(0.0, "no solid is above MP", 54, {}, [](auto& c) { return c.excess({"SDN", "SOLCP"}, c("MP")); });

  const auto slope = [](auto& c, const char* key, double t) { return (c(key, t + 0.01) - c(key, t - 0.01)) / 0.02; };
  expectWithin(1e-4, "IGCP is the slope of IGH", 54, {},
               [&](auto& c) { return slope(c, "IGH", 400.0) / c("IGCP", 400.0) - 1.0; });
  expectWithin(1e-4, "IGCP/T is the slope of IGS", 54, {},
               [&](auto& c) { return slope(c, "IGS", 400.0) * 400.0 / c("IGCP", 400.0) - 1.0; });
  expectWithin(0.5, "IGH is zero at 25 degrees Celsius", 54, {}, [](auto& c) { return c("IGH"); });

  // In the middle of the range; the vapour's volume is from the virial coefficient of C. Tsonopoulos, AIChE J. 20
  // (1974) 263, without polar terms.
  expectWithin(0.05, "HVP is Clapeyron's", 54, {"Acetic acid"}, [&](auto& c) {
    const double low = std::max(c.limit("HVP", "tmin"), c.limit("VP", "tmin"));
    const double t = (low + std::min(c.limit("HVP", "tmax"), c.limit("VP", "tmax"))) / 2;
    const double r = t / c("TC"), r2 = r * r, r3 = r2 * r, r8 = r3 * r3 * r2;
    const double virial = kGasConstant * c("TC") / c("PC") *
                          (0.1445 - 0.33 / r - 0.1385 / r2 - 0.0121 / r3 - 0.000607 / r8 +
                           c("ACEN") * (0.0637 + 0.331 / r2 - 0.423 / r3 - 0.008 / r8));
    const double ideal = kGasConstant * t / c("VP", t);
    const double vapour = ideal * (1.0 + std::sqrt(1.0 + 4.0 * virial / ideal)) / 2;
    return c("HVP", t) / (t * slope(c, "VP", t) * (vapour - c("MW") / c("LDN", t))) - 1.0;
  });

  // kJ/(kmol K) of an atom of the element at 298.15 K: CODATA Key Values for Thermodynamics.
  const std::map<std::string, double> entropies = {{"C", 5.740},       {"H", 130.680 / 2}, {"O", 205.152 / 2},
                                                   {"N", 191.609 / 2}, {"S", 32.054},      {"Cl", 223.081 / 2},
                                                   {"Ar", 154.846}};
  expectWithin(500.0, "heat, entropy and Gibbs energy of formation agree", 54, {},
               [&](auto& c) { return c("IGHF25") - 298.15 * (c("IGS") - c.sum(entropies)) - c("IGGF25"); });
  const auto formation = [](const char* name) { return value(load(name), "IGHF25", 298.15); };
  const std::map<std::string, double> burnt = {
      {"C", formation("Carbon dioxide")}, {"H", formation("Water") / 2}, {"S", formation("Sulfur dioxide")}};
  expectWithin(300.0, "IGHC25 is the net heat of the ideal gas", 53, {},
               [&](auto& c) { return c("IGHC25") - (c.sum(burnt) - c("IGHF25")); });
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
