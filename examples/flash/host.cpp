// A host in C++ that flashes a mixture of five alkanes and keeps feed, vapour and liquid in a collection of phases.
//   flash DATABASE-DIRECTORY
// Installed classes are used through CoCreateInstance; without an installation the modules beside the program are.
#include "hostkit/module_loader.h"

#include <array>
#include <charconv>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/interfaces.h"
#include "examples/flash/raoult.h"
#include "hostkit/class_ids.h"

namespace {

using qs::Bstr;
using qs::ComPtr;
using Reals = std::vector<double>;

constexpr INT kNumbers[] = {3, 4, 5, 6, 7};  // propane to n-heptane
constexpr double kFeed[] = {0.15, 0.25, 0.30, 0.20, 0.10};
constexpr double kTemperature = 330.0;  // K
constexpr double kPressure = 250.0;     // kPa

// A call that must succeed.
void must(HRESULT result, const char* what) {
  if (FAILED(result)) throw std::runtime_error(std::string(what) + " failed");
}

// Six significant digits, the same on every target.
std::string text(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}
std::string padded(const std::string& cell, std::size_t width = 14) {
  return std::string(cell.size() < width ? width - cell.size() : 0, ' ') + cell;
}

// The class as it is installed, or else from the modules beside this program.
template <class I>
ComPtr<I> newObject(REFCLSID clsid) {
  static std::vector<std::unique_ptr<qs::host::LoadedModule>> loaded;
  auto object = qs::host::createInstance<I>(clsid);
  if (!object && loaded.empty()) {
    loaded.push_back(std::make_unique<qs::host::LoadedModule>("qscontainers"));
    for (const CLSID* own : {&__uuidof(COQSCompound), &__uuidof(COQSCompoundCollection), &__uuidof(COQSPhase),
                             &__uuidof(COQSPhaseCollection)})
      loaded.back()->registerClass(*own);
    loaded.push_back(std::make_unique<qs::host::LoadedModule>("qshostkit"));
    for (const CLSID* own : {&__uuidof(HostIntegerArray), &__uuidof(HostRealArray), &qs::host::kPropertyRegistry})
      loaded.back()->registerClass(*own);
    object = qs::host::createInstance<I>(clsid);
  }
  if (!object) throw std::runtime_error("a class cannot be created: are both modules installed?");
  return object;
}

ComPtr<ICompoundCollection> mixture(const std::string& directory) {
  auto compounds = newObject<ICompoundCollection>(__uuidof(COQSCompoundCollection));
  for (const INT number : kNumbers) {
    const auto compound = newObject<IBasicCompound>(__uuidof(COQSCompound));
    const auto database = ComPtr<ICompoundInitFromVelDB>::from(compound.get());
    if (database->Init(Bstr(qs::widen(directory)).get(), number) != S_OK)
      throw std::runtime_error("compound " + std::to_string(number) + " cannot be read from " + directory);
    must(compounds->AddCompound(compound.get()), "AddCompound");
  }
  return compounds;
}

ComPtr<IBasicCompound> compoundAt(const ComPtr<ICompoundCollection>& compounds, INT index) {
  ComPtr<IBasicCompound> compound;
  must(compounds->GetBasicCompound(index, compound.out()), "GetBasicCompound");
  return compound;
}

using Getter = HRESULT (STDMETHODCALLTYPE IBasicCompound::*)(double, double, tagExtrapolationEnum, LONG*, double*);
double valueOf(const ComPtr<IBasicCompound>& compound, Getter getter, double temperature = kTemperature) {
  LONG dependencies = 0;
  double value = 0;
  if ((compound.get()->*getter)(temperature, kPressure, eNoExtrapolation, &dependencies, &value) != S_OK)
    throw std::runtime_error("a property is not set");
  return value;
}

ComPtr<IRealArrayDisp> arrayOf(const Reals& values) {
  auto array = newObject<IRealArrayDisp>(__uuidof(HostRealArray));
  must(array->put_Size(static_cast<LONG>(values.size())), "Size");
  for (std::size_t i = 0; i < values.size(); ++i)
    must(array->put_IthValue(static_cast<LONG>(i), values[i]), "IthValue");
  return array;
}
Reals realsOf(IUnknown* object) {
  const auto array = ComPtr<IRealArrayDisp>::from(object);
  LONG size = 0;
  must(array->get_Size(&size), "Size");
  Reals values(static_cast<std::size_t>(size));
  for (LONG i = 0; i < size; ++i) must(array->get_IthValue(i, &values[static_cast<std::size_t>(i)]), "IthValue");
  return values;
}

LONG numberOf(const ComPtr<IEnumeratedPropertyRegistry>& registry, const OLECHAR* name) {
  LONG number = 0;
  must(registry->RegisterProperty(Bstr(name).get(), &number), "RegisterProperty");
  return number;
}

void setState(IBasicPhase* phase, double fraction) {
  must(phase->put_Temperature(kTemperature), "Temperature");
  must(phase->put_Pressure(kPressure), "Pressure");
  must(phase->put_PhaseFraction(fraction), "PhaseFraction");
  must(phase->put_PhaseStatus(xpsActivePhase), "PhaseStatus");
}

void storePhase(const ComPtr<IPhaseCollection>& phases, INT index, tagPhaseTypeEnum type, double fraction,
                const Reals& composition, const Reals& lnCoefficients) {
  ComPtr<IBasicPhase> phase;
  must(phases->GetEquilibriumPhase(index, phase.out()), "GetEquilibriumPhase");
  setState(phase.get(), fraction);
  must(phase->put_PhaseType(type), "PhaseType");
  must(phase->put_MolarComposition(arrayOf(composition).get()), "MolarComposition");
  must(phase->put_LnFugacityCoeff(arrayOf(lnCoefficients).get()), "LnFugacityCoeff");
}

// The logarithms of the liquid's fugacity coefficients and their derivatives in temperature, by central differences.
struct LiquidFugacities {
  Reals ratios, lnCoefficients, derivatives;
};
LiquidFugacities liquidFugacities(const ComPtr<ICompoundCollection>& compounds) {
  constexpr double kStep = 0.01;
  LiquidFugacities result;
  for (INT i = 0; i < static_cast<INT>(std::size(kNumbers)); ++i) {
    const auto compound = compoundAt(compounds, i);
    const auto lnPressure = [&](double temperature) {
      return std::log(valueOf(compound, &IBasicCompound::get_VP, temperature));
    };
    result.ratios.push_back(valueOf(compound, &IBasicCompound::get_VP) / kPressure);
    result.lnCoefficients.push_back(std::log(result.ratios.back()));
    result.derivatives.push_back((lnPressure(kTemperature + kStep) - lnPressure(kTemperature - kStep)) / (2 * kStep));
  }
  return result;
}

void calculate(const ComPtr<ICompoundCollection>& compounds, const ComPtr<IPhaseCollection>& phases,
               const ComPtr<IEnumeratedPropertyRegistry>& registry) {
  const Reals feed(std::begin(kFeed), std::end(kFeed));
  must(phases->PutFeedComposition(arrayOf(feed).get(), 0), "PutFeedComposition");
  ComPtr<IBasicPhase> feedPhase;
  must(phases->LocatePhase(xptFeed, 0, feedPhase.out()), "LocatePhase");
  setState(feedPhase.get(), 1.0);

  const LiquidFugacities fugacities = liquidFugacities(compounds);
  const flash::Split split = flash::isothermal(feed, fugacities.ratios);
  must(phases->put_NumberOfEquilibriumPhases(2), "NumberOfEquilibriumPhases");
  storePhase(phases, 0, xptVapour, split.vapourFraction, split.vapour, Reals(feed.size(), 0.0));
  storePhase(phases, 1, xptLiquid, 1 - split.vapourFraction, split.liquid, fugacities.lnCoefficients);

  ComPtr<IBasicPhase> liquid;
  must(phases->LocatePhase(xptLiquid, 0, liquid.out()), "LocatePhase");
  const auto derivatives = ComPtr<IDerivativeProp>::from(liquid.get());
  INT index = -1;
  must(derivatives->AddDerivativeProp(numberOf(registry, OLESTR("LnFugacityCoeff")), numberOf(registry, OLESTR("dT")),
                                      RealArray, RealArray, &index),
       "AddDerivativeProp");
  must(derivatives->PutArrayDerivative(index, arrayOf(fugacities.derivatives).get()), "PutArrayDerivative");
  must(derivatives->SetDerivativeStatus(index, xdsCalculatedNumerically), "SetDerivativeStatus");
}

// What is read back from a phase.
struct StoredPhase {
  ComPtr<IBasicPhase> phase;
  double fraction = 0;
  Reals composition;
};
StoredPhase stored(const ComPtr<IPhaseCollection>& phases, tagPhaseTypeEnum type) {
  StoredPhase result;
  must(phases->LocatePhase(type, 0, result.phase.out()), "LocatePhase");
  must(result.phase->get_PhaseFraction(&result.fraction), "PhaseFraction");
  ComPtr<IDispatch> composition;
  must(result.phase->get_MolarComposition(composition.out()), "MolarComposition");
  result.composition = realsOf(composition.get());
  return result;
}

Reals storedDerivatives(const StoredPhase& liquid, const ComPtr<IEnumeratedPropertyRegistry>& registry) {
  const auto derivatives = ComPtr<IDerivativeProp>::from(liquid.phase.get());
  INT index = -1;
  ComPtr<IRealArrayDisp> values;
  must(derivatives->GetDerivativePropIndex(numberOf(registry, OLESTR("LnFugacityCoeff")),
                                           numberOf(registry, OLESTR("dT")), &index),
       "GetDerivativePropIndex");
  must(derivatives->GetArrayDerivative(index, values.out()), "GetArrayDerivative");
  return realsOf(values.get());
}

void print(const ComPtr<ICompoundCollection>& compounds, const ComPtr<IPhaseCollection>& phases,
           const ComPtr<IEnumeratedPropertyRegistry>& registry) {
  const StoredPhase feed = stored(phases, xptFeed), vapour = stored(phases, xptVapour),
                    liquid = stored(phases, xptLiquid);
  IRealArrayDisp* lent = nullptr;
  must(liquid.phase->GetLnFugacityCoeff(&lent), "GetLnFugacityCoeff");
  const Reals lnCoefficients = realsOf(lent), derivatives = storedDerivatives(liquid, registry);
  double temperature = 0, pressure = 0;
  must(vapour.phase->get_Temperature(&temperature), "Temperature");
  must(vapour.phase->get_Pressure(&pressure), "Pressure");

  std::cout << "flash at " << text(temperature) << " K and " << text(pressure) << " kPa\n"
            << padded("") << padded("TC, K") << padded("PC, kPa") << padded("VP, kPa") << padded("feed")
            << padded("vapour") << padded("liquid") << padded("ln phi liquid") << padded("d/dT, 1/K") << "\n";
  double worst = 0;
  for (std::size_t i = 0; i < feed.composition.size(); ++i) {
    const auto compound = compoundAt(compounds, static_cast<INT>(i));
    Bstr name;
    must(ComPtr<ICompoundID>::from(compound.get())->get_Name(name.out()), "Name");
    std::cout << padded(qs::narrow(name.view()));
    for (const double value : {valueOf(compound, &IBasicCompound::get_TC), valueOf(compound, &IBasicCompound::get_PC),
                               valueOf(compound, &IBasicCompound::get_VP, temperature), feed.composition[i],
                               vapour.composition[i], liquid.composition[i], lnCoefficients[i], derivatives[i]})
      std::cout << padded(text(value));
    std::cout << "\n";
    const double recovered = vapour.fraction * vapour.composition[i] + liquid.fraction * liquid.composition[i];
    worst = std::max(worst, std::abs(recovered - feed.composition[i]));
  }
  INT active = 0;
  must(phases->get_NumberOfActivePhases(&active), "NumberOfActivePhases");
  std::cout << "vapour fraction " << text(vapour.fraction) << ", liquid fraction " << text(liquid.fraction) << ", "
            << active << " active phases\n"
            << "the material balance " << (worst <= 1e-10 ? "closes to 1e-10" : "does not close") << "\n";
  if (worst > 1e-10) throw std::runtime_error("the phases do not make up the feed");
}

void run(const std::string& directory) {
  const auto registry = newObject<IEnumeratedPropertyRegistry>(qs::host::kPropertyRegistry);
  const auto compounds = mixture(directory);
  const auto phases = newObject<IPhaseCollection>(__uuidof(COQSPhaseCollection));
  must(ComPtr<IRegisterableObject>::from(phases.get())->RegisterProperties(registry.get()), "RegisterProperties");
  must(phases->Finalize(compounds.get(), 2, 1), "Finalize");
  calculate(compounds, phases, registry);
  print(compounds, phases, registry);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: flash DATABASE-DIRECTORY\n";
    return 2;
  }
  CoInitialize(nullptr);
  try {
    run(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "flash: " << error.what() << "\n";
    return 1;
  }
  CoUninitialize();
}
