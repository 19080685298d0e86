#include "examples/flash/flash.h"

#include <stdexcept>

#include "com/bstr.h"
#include "examples/flash/raoult.h"
#include "hostkit/module_loader.h"

namespace flash {
namespace {

ComPtr<IRealArrayDisp> arrayOf(const Reals& values) {
  auto array = qs::host::createInstance<IRealArrayDisp>(__uuidof(HostRealArray));
  if (!array) throw std::runtime_error("an array cannot be created");
  must(array->put_Size(static_cast<LONG>(values.size())), "Size");
  for (std::size_t i = 0; i < values.size(); ++i)
    must(array->put_IthValue(static_cast<LONG>(i), values[i]), "IthValue");
  return array;
}

void setState(const ComPtr<IBasicPhase>& phase, const Feed& feed, double fraction) {
  must(phase->put_Temperature(feed.temperature), "Temperature");
  must(phase->put_Pressure(feed.pressure), "Pressure");
  must(phase->put_PhaseFraction(fraction), "PhaseFraction");
  must(phase->put_PhaseStatus(fraction > 0 ? xpsActivePhase : xpsInactivePhase), "PhaseStatus");
}

ComPtr<IBasicPhase> storePhase(const ComPtr<IPhaseCollection>& phases, INT index, tagPhaseTypeEnum type,
                               const Feed& feed, double fraction, const Reals& composition,
                               const Reals& lnCoefficients) {
  ComPtr<IBasicPhase> phase;
  must(phases->GetEquilibriumPhase(index, phase.out()), "GetEquilibriumPhase");
  setState(phase, feed, fraction);
  must(phase->put_PhaseType(type), "PhaseType");
  must(phase->put_MolarComposition(arrayOf(composition).get()), "MolarComposition");
  must(phase->put_LnFugacityCoeff(arrayOf(lnCoefficients).get()), "LnFugacityCoeff");
  return phase;
}

// What Raoult's law makes of the vapour pressures: equilibrium ratios, the logarithms of the liquid's fugacity
// coefficients, and their derivatives in temperature by central differences.
struct LiquidFugacities {
  Reals ratios, lnCoefficients, derivatives;
};
LiquidFugacities liquidFugacities(const ComPtr<ICompoundCollection>& compounds, const Feed& feed) {
  constexpr double kStep = 0.01;  // K
  LiquidFugacities result;
  for (std::size_t i = 0; i < feed.composition.size(); ++i) {
    const auto compound = compoundAt(compounds, static_cast<INT>(i));
    const auto ratio = [&](double temperature) {
      return valueOf(compound, &IBasicCompound::get_VP, temperature, feed.pressure) / feed.pressure;
    };
    const double above = feed.temperature + kStep, below = feed.temperature - kStep;
    result.ratios.push_back(ratio(feed.temperature));
    result.lnCoefficients.push_back(std::log(result.ratios.back()));
    result.derivatives.push_back(std::log(ratio(above) / ratio(below)) / (above - below));
  }
  return result;
}

}  // namespace

void must(HRESULT result, const std::string& what) {
  if (FAILED(result)) throw std::runtime_error(what + " failed");
}

ComPtr<IBasicCompound> compoundAt(const ComPtr<ICompoundCollection>& compounds, INT index) {
  ComPtr<IBasicCompound> compound;
  must(compounds->GetBasicCompound(index, compound.out()), "GetBasicCompound");
  return compound;
}

double valueOf(const ComPtr<IBasicCompound>& compound, Getter getter, double temperature, double pressure) {
  LONG dependencies = 0;
  double value = 0;
  if ((compound.get()->*getter)(temperature, pressure, eNoExtrapolation, &dependencies, &value) != S_OK)
    throw std::runtime_error("a property is not set");
  return value;
}

LONG numberOf(const ComPtr<IEnumeratedPropertyRegistry>& registry, const OLECHAR* name) {
  LONG number = 0;
  must(registry->RegisterProperty(qs::Bstr(name).get(), &number), "RegisterProperty");
  return number;
}

void calculate(const ComPtr<ICompoundCollection>& compounds, const Feed& feed, const ComPtr<IPhaseCollection>& phases,
               const ComPtr<IEnumeratedPropertyRegistry>& registry) {
  must(phases->PutFeedComposition(arrayOf(feed.composition).get(), 0), "PutFeedComposition");
  ComPtr<IBasicPhase> feedPhase;
  must(phases->LocatePhase(xptFeed, 0, feedPhase.out()), "LocatePhase");
  setState(feedPhase, feed, 1.0);

  const LiquidFugacities fugacities = liquidFugacities(compounds, feed);
  const Split split = isothermal(feed.composition, fugacities.ratios);
  must(phases->put_NumberOfEquilibriumPhases(2), "NumberOfEquilibriumPhases");
  storePhase(phases, 0, xptVapour, feed, split.vapourFraction, split.vapour, Reals(feed.composition.size(), 0.0));
  const auto liquid =
      storePhase(phases, 1, xptLiquid, feed, 1 - split.vapourFraction, split.liquid, fugacities.lnCoefficients);

  const auto derivatives = ComPtr<IDerivativeProp>::from(liquid.get());
  INT index = -1;
  must(derivatives->AddDerivativeProp(numberOf(registry, OLESTR("LnFugacityCoeff")), numberOf(registry, OLESTR("dT")),
                                      RealArray, RealArray, &index),
       "AddDerivativeProp");
  must(derivatives->PutArrayDerivative(index, arrayOf(fugacities.derivatives).get()), "PutArrayDerivative");
  must(derivatives->SetDerivativeStatus(index, xdsCalculatedNumerically), "SetDerivativeStatus");
}

}  // namespace flash
