// What the flash example stores in phases, against the conditions that define the equilibrium of ideal phases.
#include <cmath>
#include <numeric>

#include "examples/flash/flash.h"
#include "tests/support/bundled_compounds.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

using FlashExample = PhaseTest;

TEST_F(FlashExample, StoresPhasesInEquilibrium) {
  const BundledCompounds bundled;
  const auto compounds = Collection::create().value();
  for (const int number : {3, 4, 5, 6, 7})
    compounds.add(Compound::read(utf8(bundled.directory.path()), number).value()).value();
  const auto vapourPressure = [&](std::size_t i, double temperature) {
    return compounds.at(static_cast<int>(i)).value()["VP"].at(temperature).value();
  };
  const auto registry = query<IEnumeratedPropertyRegistry>(newRegistry());
  const auto phases = create<IPhaseCollection>(__uuidof(::COQSPhaseCollection));
  ASSERT_EQ(query<IRegisterableObject>(phases)->RegisterProperties(registry.get()), S_OK);
  for (const Reals& composition : {Reals{0.15, 0.25, 0.30, 0.20, 0.10}, Reals{0.001, 0.01, 0.978, 0.01, 0.001}})
    for (const double temperature : {280.0, 330.0, 360.0})
      for (const double place : {-0.5, 0.0001, 0.3, 0.7, 0.9999, 1.5}) {  // from bubble to dew pressure
        SCOPED_TRACE(testing::Message() << composition[0] << ", " << temperature << " K, at " << place);
        double bubble = 0, dew = 0;
        for (std::size_t i = 0; i < 5; ++i) {
          bubble += composition[i] * vapourPressure(i, temperature);
          dew += composition[i] / vapourPressure(i, temperature);
        }
        const flash::Feed feed{composition, temperature, bubble * std::pow(1 / (dew * bubble), place)};
        ASSERT_EQ(phases->Finalize(compounds.get(), 2, 1), S_OK);
        flash::calculate(compounds, feed, Phases(phases.get()), registry);
        ComPtr<IBasicPhase> found[3];
        double fraction[3]{};
        Reals stored[3];
        for (const auto type : {xptVapour, xptLiquid, xptFeed}) {
          const int i = type == xptVapour ? 0 : type == xptLiquid ? 1 : 2;
          EXPECT_EQ(phases->LocatePhase(type, 0, found[i].out()), S_OK);
          EXPECT_EQ(got(found[i], &IBasicPhase::get_Temperature), temperature);
          EXPECT_EQ(got(found[i], &IBasicPhase::get_Pressure), feed.pressure);
          fraction[i] = got(found[i], &IBasicPhase::get_PhaseFraction);
          stored[i] = compositionOf(found[i]);
        }
        const auto& [vapour, liquid, fed] = stored;
        const bool split = place > 0 && place < 1;
        EXPECT_EQ(got(phases, &IPhaseCollection::get_NumberOfActivePhases), split ? 3 : 2);
        EXPECT_EQ(fed, composition);
        EXPECT_EQ(fraction[0] + fraction[1], 1);
        if (!split) {
          EXPECT_EQ(fraction[0], place < 0 ? 0 : 1);
        }
        for (const int i : {0, 1}) {
          if (fraction[i] == 0) continue;
          EXPECT_NEAR(std::accumulate(stored[i].begin(), stored[i].end(), 0.0), 1, 1e-9);
        }

        INT index = -1;
        ComPtr<IRealArrayDisp> slopes, coefficients, ones;
        const auto derivatives = query<IDerivativeProp>(found[1]);
        EXPECT_EQ(derivatives->GetDerivativePropIndex(flash::numberOf(registry, "LnFugacityCoeff"),
                                                      flash::numberOf(registry, "dT"), &index),
                  S_OK);
        EXPECT_EQ(derivatives->GetArrayDerivative(index, slopes.out()), S_OK);
        EXPECT_EQ(found[0]->get_LnFugacityCoeff(ones.out()), S_OK);
        EXPECT_EQ(found[1]->get_LnFugacityCoeff(coefficients.out()), S_OK);
        EXPECT_EQ(realsIn(ones.get()), Reals(5, 0.0));
        for (std::size_t i = 0; i < 5; ++i) {
          const double above = vapourPressure(i, temperature + 0.1), below = vapourPressure(i, temperature - 0.1);
          EXPECT_NEAR(realsIn(coefficients.get())[i], std::log(vapourPressure(i, temperature) / feed.pressure), 1e-12);
          EXPECT_NEAR(realsIn(slopes.get())[i], std::log(above / below) / 0.2, 1e-7);
          EXPECT_NEAR(vapour[i] * feed.pressure, liquid[i] * vapourPressure(i, temperature), 1e-9 * feed.pressure);
          EXPECT_NEAR(fraction[0] * vapour[i] + fraction[1] * liquid[i], fed[i], 1e-10);
        }
      }
}

}  // namespace
}  // namespace qs::test
