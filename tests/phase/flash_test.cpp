// What the flash example stores in phases, against the same flash solved by bisection in extended precision.
#include <cmath>

#include "examples/flash/flash.h"
#include "tests/support/bundled_compounds.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

using Extended = std::vector<long double>;

class FlashExample : public PhaseTest {
 protected:
  static ComPtr<ICompoundCollection> alkanes() {
    const BundledCompounds bundled;
    auto compounds = create<ICompoundCollection>(__uuidof(::COQSCompoundCollection));
    for (const INT number : {3, 4, 5, 6, 7}) {
      const auto compound = newCompound();
      EXPECT_EQ(query<ICompoundInitFromVelDB>(compound)->Init(Bstr(bundled.directory.name()).get(), number), S_OK);
      EXPECT_EQ(compounds->AddCompound(compound.get()), S_OK);
    }
    return compounds;
  }
  // In kPa.
  static Extended vapourPressures(const ComPtr<ICompoundCollection>& compounds, double temperature) {
    Extended pressures;
    for (INT i = 0; i < 5; ++i) {
      ComPtr<IBasicCompound> compound;
      LONG dependencies = 0;
      double value = 0;
      EXPECT_EQ(compounds->GetBasicCompound(i, compound.out()), S_OK);
      EXPECT_EQ(compound->get_VP(temperature, 101.325, eNoExtrapolation, &dependencies, &value), S_OK);
      pressures.push_back(value);
    }
    return pressures;
  }
  // The vapour fraction at which the mole fractions of both phases have the same sum, within 0 to 1.
  static long double bisected(const Reals& feed, const Extended& ratios) {
    long double low = 0, high = 1;
    for (int i = 0; i < 200; ++i) {
      const long double middle = (low + high) / 2;
      long double liquid = 0, vapour = 0;
      for (std::size_t j = 0; j < feed.size(); ++j) {
        const long double x = feed[j] / (1 - middle + middle * ratios[j]);
        liquid += x;
        vapour += x * ratios[j];
      }
      (vapour > liquid ? low : high) = middle;
    }
    return low;
  }

  struct Stored {
    ComPtr<IBasicPhase> phase;
    double fraction = 0;
    Reals composition, lnCoefficients;
  };
  static Stored stored(const ComPtr<IPhaseCollection>& phases, tagPhaseTypeEnum type, const flash::Feed& feed) {
    Stored result;
    double temperature = 0, pressure = 0;
    EXPECT_EQ(phases->LocatePhase(type, 0, result.phase.out()), S_OK);
    EXPECT_EQ(result.phase->get_PhaseFraction(&result.fraction), S_OK);
    EXPECT_EQ(result.phase->get_Temperature(&temperature), S_OK);
    EXPECT_EQ(result.phase->get_Pressure(&pressure), S_OK);
    EXPECT_EQ(temperature, feed.temperature);
    EXPECT_EQ(pressure, feed.pressure);
    result.composition = compositionOf(result.phase);
    IRealArrayDisp* lent = nullptr;
    result.phase->GetLnFugacityCoeff(&lent);
    result.lnCoefficients = realsIn(lent);
    return result;
  }
};

TEST_F(FlashExample, StoresTheFlashWrittenDirectly) {
  const auto compounds = alkanes();
  const auto registry = query<IEnumeratedPropertyRegistry>(newRegistry());
  const auto phases = create<IPhaseCollection>(__uuidof(::COQSPhaseCollection));
  ASSERT_EQ(query<IRegisterableObject>(phases)->RegisterProperties(registry.get()), S_OK);
  for (const Reals& composition : {Reals{0.15, 0.25, 0.30, 0.20, 0.10}, Reals{0.001, 0.01, 0.978, 0.01, 0.001}})
    for (const double temperature : {280.0, 330.0, 360.0})
      for (const double place :
           {-0.5, 0.0001, 0.3, 0.7, 0.9999, 1.5}) {  // from the bubble point's pressure to the dew point's
        SCOPED_TRACE(testing::Message() << composition[0] << ", " << temperature << " K, at " << place);
        Extended ratios = vapourPressures(compounds, temperature);
        const Extended above = vapourPressures(compounds, temperature + 0.1),
                       below = vapourPressures(compounds, temperature - 0.1);
        long double bubble = 0, dew = 0;
        for (std::size_t i = 0; i < ratios.size(); ++i) {
          bubble += composition[i] * ratios[i];
          dew += composition[i] / ratios[i];
        }
        const flash::Feed feed{composition, temperature,
                               static_cast<double>(bubble * std::pow(1 / (dew * bubble), place))};
        for (long double& ratio : ratios) ratio /= feed.pressure;
        const long double fraction = bisected(composition, ratios);

        ASSERT_EQ(phases->Finalize(compounds.get(), 2, 1), S_OK);
        flash::calculate(compounds, feed, phases, registry);
        const Stored fed = stored(phases, xptFeed, feed), vapour = stored(phases, xptVapour, feed),
                     liquid = stored(phases, xptLiquid, feed);
        INT active = 0, index = -1;
        phases->get_NumberOfActivePhases(&active);
        EXPECT_EQ(active, place > 0 && place < 1 ? 3 : 2);
        EXPECT_EQ(fed.composition, composition);
        EXPECT_NEAR(vapour.fraction, static_cast<double>(fraction), 1e-10);
        EXPECT_EQ(liquid.fraction, 1 - vapour.fraction);

        const auto derivatives = query<IDerivativeProp>(liquid.phase);
        ComPtr<IRealArrayDisp> slopes;
        EXPECT_EQ(derivatives->GetDerivativePropIndex(flash::numberOf(registry, OLESTR("LnFugacityCoeff")),
                                                      flash::numberOf(registry, OLESTR("dT")), &index),
                  S_OK);
        EXPECT_EQ(derivatives->GetArrayDerivative(index, slopes.out()), S_OK);
        const Reals lnSlopes = realsIn(slopes.get());
        for (std::size_t i = 0; i < ratios.size(); ++i) {
          const long double x = composition[i] / (1 - fraction + fraction * ratios[i]);
          EXPECT_NEAR(liquid.composition[i], static_cast<double>(x), 1e-10);
          EXPECT_NEAR(vapour.composition[i], static_cast<double>(x * ratios[i]), 1e-10);
          EXPECT_NEAR(vapour.fraction * vapour.composition[i] + liquid.fraction * liquid.composition[i],
                      fed.composition[i], 1e-10);
          EXPECT_NEAR(liquid.lnCoefficients[i], static_cast<double>(std::log(ratios[i])), 1e-12);
          EXPECT_EQ(vapour.lnCoefficients[i], 0.0);
          EXPECT_NEAR(lnSlopes[i], static_cast<double>(std::log(above[i] / below[i]) / 0.2L), 1e-7);
        }
      }
}

}  // namespace
}  // namespace qs::test
