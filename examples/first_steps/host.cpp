// First steps in C++: fills three compounds, prints a table of properties, flashes a mixture of them by Raoult's law,
// stores the result in a collection of phases, reads it back, and writes the last compound as XML.
//   first_steps DATABASE-DIRECTORY XML-FILE
// Installed classes are used; without an installation the modules beside the program are.
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "examples/flash/raoult.h"
#include "hostkit/module_loader.h"
#include "interfaces/interfaces.h"

namespace {

using qs::Bstr;
using qs::ComPtr;
using Reals = std::vector<double>;

constexpr double kTemperature = 330, kPressure = 250;  // K, kPa

void must(HRESULT result, const char* what) {
  if (FAILED(result)) throw std::runtime_error(std::string(what) + " failed");
}

// The classes of both modules without an installation.
class Modules {
 public:
  Modules() {
    for (const CLSID* own : {&__uuidof(COQSCompound), &__uuidof(COQSCompoundCollection), &__uuidof(COQSPhase),
                             &__uuidof(COQSPhaseCollection)})
      containers_.registerClass(*own);
    for (const CLSID* own : {&__uuidof(HostIntegerArray), &__uuidof(HostRealArray), &__uuidof(PropertyRegistry)})
      hostKit_.registerClass(*own);
  }

 private:
  qs::host::LoadedModule containers_{"qscontainers"}, hostKit_{"qshostkit"};
};

template <class I>
ComPtr<I> create(REFCLSID clsid) {
  static std::unique_ptr<Modules> modules;
  auto object = qs::host::createInstance<I>(clsid);
  if (object) return object;
  if (!modules) modules = std::make_unique<Modules>();
  object = qs::host::createInstance<I>(clsid);
  if (!object) throw std::runtime_error("a class cannot be created");
  return object;
}

std::string rounded(double value, int digits) {
  const double unit = std::pow(10, digits);
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), std::round(value * unit) / unit);
  return {text.data(), end.ptr};
}

using Getter = HRESULT (STDMETHODCALLTYPE IBasicCompound::*)(double, double, tagExtrapolationEnum, LONG*, double*);
double valueOf(const ComPtr<IBasicCompound>& compound, Getter getter) {
  LONG dependencies = 0;
  double value = 0;
  must((compound.get()->*getter)(kTemperature, kPressure, eNoExtrapolation, &dependencies, &value), "a property");
  return value;
}

ComPtr<IBasicCompound> compoundAt(const ComPtr<ICompoundCollection>& compounds, INT index) {
  ComPtr<IBasicCompound> compound;
  must(compounds->GetBasicCompound(index, compound.out()), "GetBasicCompound");
  return compound;
}

void fill(const ComPtr<ICompoundCollection>& compounds, const std::string& directory) {
  for (const INT number : {3, 5, 7}) {
    const auto compound = create<IBasicCompound>(__uuidof(COQSCompound));
    must(ComPtr<ICompoundInitFromVelDB>::from(compound.get())->Init(Bstr(qs::widen(directory)).get(), number), "Init");
    must(compounds->AddCompound(compound.get()), "AddCompound");
  }
}

// Prints the table; returns the equilibrium ratios.
Reals tabulate(const ComPtr<ICompoundCollection>& compounds) {
  Reals ratios;
  for (INT i = 0; i < 3; ++i) {
    const auto compound = compoundAt(compounds, i);
    const auto identity = ComPtr<ICompoundID>::from(compound.get());
    Bstr name, cas;
    must(identity->get_Name(name.out()), "Name");
    must(identity->get_CASN(cas.out()), "CASN");
    const double pressure = valueOf(compound, &IBasicCompound::get_VP);
    std::cout << qs::narrow(name.view()) << " " << qs::narrow(cas.view()) << ": TC "
              << rounded(valueOf(compound, &IBasicCompound::get_TC), 2) << " K, PC "
              << rounded(valueOf(compound, &IBasicCompound::get_PC), 2) << " kPa, VP " << rounded(pressure, 2)
              << " kPa\n";
    ratios.push_back(pressure / kPressure);
  }
  return ratios;
}

void store(const ComPtr<IPhaseCollection>& phases, tagPhaseTypeEnum type, double fraction, const Reals& composition) {
  ComPtr<IBasicPhase> phase;
  must(phases->LocatePhase(type, 0, phase.out()), "LocatePhase");
  must(phase->put_Temperature(kTemperature), "Temperature");
  must(phase->put_Pressure(kPressure), "Pressure");
  must(phase->put_PhaseStatus(xpsActivePhase), "PhaseStatus");
  must(phase->put_PhaseFraction(fraction), "PhaseFraction");
  const auto array = create<IRealArrayDisp>(__uuidof(HostRealArray));
  must(array->put_Size(static_cast<LONG>(composition.size())), "Size");
  for (std::size_t i = 0; i < composition.size(); ++i)
    must(array->put_IthValue(static_cast<LONG>(i), composition[i]), "IthValue");
  must(phase->put_MolarComposition(array.get()), "MolarComposition");
}

ComPtr<IPhaseCollection> flashed(const ComPtr<ICompoundCollection>& compounds, const Reals& ratios) {
  auto phases = create<IPhaseCollection>(__uuidof(COQSPhaseCollection));
  const auto registry = create<IEnumeratedPropertyRegistry>(__uuidof(PropertyRegistry));
  must(ComPtr<IRegisterableObject>::from(phases.get())->RegisterProperties(registry.get()), "RegisterProperties");
  must(phases->Finalize(compounds.get(), 2, 1), "Finalize");
  must(phases->put_NumberOfEquilibriumPhases(2), "NumberOfEquilibriumPhases");
  INT position = 0;
  for (const tagPhaseTypeEnum type : {xptVapour, xptLiquid}) {
    ComPtr<IBasicPhase> phase;
    must(phases->GetEquilibriumPhase(position++, phase.out()), "GetEquilibriumPhase");
    must(phase->put_PhaseType(type), "PhaseType");
  }
  const Reals feed{0.3, 0.4, 0.3};
  const flash::Split split = flash::isothermal(feed, ratios);
  store(phases, xptFeed, 1, feed);
  store(phases, xptVapour, split.vapourFraction, split.vapour);
  store(phases, xptLiquid, 1 - split.vapourFraction, split.liquid);
  return phases;
}

void print(const ComPtr<IPhaseCollection>& phases) {
  INT count = 0;
  must(phases->get_NumberOfActivePhases(&count), "NumberOfActivePhases");
  for (INT i = 0; i < count; ++i) {
    ComPtr<IBasicPhase> phase;
    tagPhaseTypeEnum type{};
    double fraction = 0;
    ComPtr<IDispatch> composition;
    must(phases->GetActivePhase(i, phase.out()), "GetActivePhase");
    must(phase->get_PhaseType(&type), "PhaseType");
    must(phase->get_PhaseFraction(&fraction), "PhaseFraction");
    must(phase->get_MolarComposition(composition.out()), "MolarComposition");
    std::cout << "phase of kind " << type << ": fraction " << rounded(fraction, 4) << ", composition";
    const auto array = ComPtr<IRealArrayDisp>::from(composition.get());
    for (LONG j = 0; j < 3; ++j) {
      double value = 0;
      must(array->get_IthValue(j, &value), "IthValue");
      std::cout << " " << rounded(value, 4);
    }
    std::cout << "\n";
  }
}

void run(const std::string& directory, const std::string& file) {
  const auto compounds = create<ICompoundCollection>(__uuidof(COQSCompoundCollection));
  fill(compounds, directory);
  print(flashed(compounds, tabulate(compounds)));
  Bstr text;
  must(ComPtr<IXMLStore>::from(compoundAt(compounds, 2).get())->StoreAsXML(text.out()), "StoreAsXML");
  std::ofstream(file, std::ios::binary) << qs::narrow(text.view());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: first_steps DATABASE-DIRECTORY XML-FILE\n";
    return 2;
  }
  CoInitialize(nullptr);
  try {
    run(argv[1], argv[2]);
  } catch (const std::exception& error) {
    std::cerr << "first_steps: " << error.what() << "\n";
    return 1;
  }
  CoUninitialize();
}
