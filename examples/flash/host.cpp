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
#include "examples/flash/flash.h"
#include "interfaces/interfaces.h"

namespace {

using namespace flash;
using qs::Bstr;

constexpr INT kNumbers[] = {3, 4, 5, 6, 7};  // propane to n-heptane
const Feed kFeed{{0.15, 0.25, 0.30, 0.20, 0.10}, 330.0, 250.0};

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
    for (const CLSID* own : {&__uuidof(HostIntegerArray), &__uuidof(HostRealArray), &__uuidof(PropertyRegistry)})
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

Reals realsOf(IUnknown* object) {
  const auto array = ComPtr<IRealArrayDisp>::from(object);
  LONG size = 0;
  must(array->get_Size(&size), "Size");
  Reals values(static_cast<std::size_t>(size));
  for (LONG i = 0; i < size; ++i) must(array->get_IthValue(i, &values[static_cast<std::size_t>(i)]), "IthValue");
  return values;
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
    const auto property = [&](Getter getter) { return valueOf(compound, getter, temperature, pressure); };
    for (const double value :
         {property(&IBasicCompound::get_TC), property(&IBasicCompound::get_PC), property(&IBasicCompound::get_VP),
          feed.composition[i], vapour.composition[i], liquid.composition[i], lnCoefficients[i], derivatives[i]})
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
  const auto registry = newObject<IEnumeratedPropertyRegistry>(__uuidof(PropertyRegistry));
  const auto compounds = mixture(directory);
  const auto phases = newObject<IPhaseCollection>(__uuidof(COQSPhaseCollection));
  must(ComPtr<IRegisterableObject>::from(phases.get())->RegisterProperties(registry.get()), "RegisterProperties");
  must(phases->Finalize(compounds.get(), 2, 1), "Finalize");
  calculate(compounds, kFeed, phases, registry);
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
