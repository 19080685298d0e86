#include "examples/flash/flash.h"

#include "examples/flash/raoult.h"

namespace flash {
namespace {

void must(HRESULT result, const char* what) {
  if (FAILED(result)) throw qs::Error({result, what});
}

void setState(const qs::Phase& phase, const Feed& feed, double fraction) {
  phase.setTemperature(feed.temperature).value();
  phase.setPressure(feed.pressure).value();
  phase.setFraction(fraction).value();
  phase.setActive(fraction > 0).value();
}

qs::Phase storePhase(const qs::Phases& phases, int index, tagPhaseTypeEnum type, const Feed& feed, double fraction,
                     const Reals& composition, const Reals& lnCoefficients) {
  auto phase = phases.equilibriumPhase(index).value();
  setState(phase, feed, fraction);
  phase.setType(type).value();
  phase.setComposition(composition).value();
  phase.setLnFugacityCoefficients(lnCoefficients).value();
  return phase;
}

// What Raoult's law makes of the vapour pressures: equilibrium ratios, the logarithms of the liquid's fugacity
// coefficients, and their derivatives in temperature by central differences.
struct LiquidFugacities {
  Reals ratios, lnCoefficients, derivatives;
};
LiquidFugacities liquidFugacities(const qs::Collection& compounds, const Feed& feed) {
  constexpr double kStep = 0.01;  // K
  LiquidFugacities result;
  for (const qs::Compound& compound : compounds) {
    const auto property = compound["VP"];
    const auto ratio = [&](double temperature) {
      return property.at(temperature, feed.pressure).value() / feed.pressure;
    };
    const double above = feed.temperature + kStep, below = feed.temperature - kStep;
    result.ratios.push_back(ratio(feed.temperature));
    result.lnCoefficients.push_back(std::log(result.ratios.back()));
    result.derivatives.push_back(std::log(ratio(above) / ratio(below)) / (above - below));
  }
  return result;
}

// A derivative has no function in qscontainers.hpp: the phase's interface and an array of the host take it.
void storeDerivatives(const qs::Phase& phase, LONG property, LONG variable, const Reals& values) {
  const auto array = qs::makeArray(values).value();
  const auto derivatives = phase.as<IDerivativeProp>();
  INT index = -1;
  must(derivatives->AddDerivativeProp(property, variable, RealArray, RealArray, &index), "AddDerivativeProp");
  must(derivatives->PutArrayDerivative(index, array.get()), "PutArrayDerivative");
  must(derivatives->SetDerivativeStatus(index, xdsCalculatedNumerically), "SetDerivativeStatus");
}

}  // namespace

LONG numberOf(const qs::ComPtr<IEnumeratedPropertyRegistry>& registry, std::string_view name) {
  LONG number = 0;
  must(registry->RegisterProperty(qs::InterfaceText(name).get(), &number), "RegisterProperty");
  return number;
}

void calculate(const qs::Collection& compounds, const Feed& feed, const qs::Phases& phases,
               const qs::ComPtr<IEnumeratedPropertyRegistry>& registry) {
  phases.setFeed(feed.composition).value();
  setState(phases.locate(xptFeed).value(), feed, 1.0);

  const LiquidFugacities fugacities = liquidFugacities(compounds, feed);
  const Split split = isothermal(feed.composition, fugacities.ratios);
  phases.setEquilibriumPhases(2).value();
  storePhase(phases, 0, xptVapour, feed, split.vapourFraction, split.vapour, Reals(feed.composition.size(), 0.0));
  const auto liquid =
      storePhase(phases, 1, xptLiquid, feed, 1 - split.vapourFraction, split.liquid, fugacities.lnCoefficients);
  storeDerivatives(liquid, numberOf(registry, "LnFugacityCoeff"), numberOf(registry, "dT"), fugacities.derivatives);
}

}  // namespace flash
