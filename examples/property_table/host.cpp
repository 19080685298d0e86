// A host in C++: fills compounds from the database, prints what they are, tabulates their properties and says where
// some come from.
//   property_table DATABASE-DIRECTORY
// Installed classes are used through CoCreateInstance; without an installation the modules beside the program are.
#include <array>
#include <charconv>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "hostkit/module_loader.h"
#include "interfaces/interfaces.h"

namespace {

using qs::Bstr;
using qs::ComPtr;

constexpr INT kNumbers[] = {19, 29, 30, 511, 54};
constexpr double kTemperatures[] = {280.0, 298.15, 320.0, 350.0, 373.15, 400.0};
constexpr double kPressure = 101.325;

// A typed getter of IBasicCompound, with its range getter where it has one.
struct Property {
  const char* title;
  const char* unit;
  HRESULT (STDMETHODCALLTYPE IBasicCompound::*value)(double, double, tagExtrapolationEnum, LONG*, double*);
  HRESULT (STDMETHODCALLTYPE IBasicCompound::*range)(double*, double*, double*, double*);
};
constexpr Property kConstants[] = {
    {"molecular weight", "kg/kmol", &IBasicCompound::get_MW, nullptr},
    {"critical temperature", "K", &IBasicCompound::get_TC, nullptr},
    {"critical pressure", "kPa", &IBasicCompound::get_PC, nullptr},
    {"acentric factor", "-", &IBasicCompound::get_ACEN, nullptr},
    {"normal boiling point", "K", &IBasicCompound::get_NBP, nullptr},
    {"refractive index", "-", &IBasicCompound::get_RI, nullptr},
};
constexpr Property kCorrelations[] = {
    {"vapour pressure", "kPa", &IBasicCompound::get_VP, &IBasicCompound::get_VPTPRange},
    {"liquid density", "kg/m3", &IBasicCompound::get_LDN, &IBasicCompound::get_LDNTPRange},
    {"heat of vaporisation", "kJ/kmol", &IBasicCompound::get_HVP, &IBasicCompound::get_HVPTPRange},
    {"ideal-gas heat capacity", "kJ/(kmol K)", &IBasicCompound::get_IGCP, nullptr},
};

// Six significant digits, the same on every target.
std::string text(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}

std::string text(HRESULT result) { return result == S_OK ? "S_OK" : result == S_FALSE ? "S_FALSE" : "failed"; }

std::string padded(const std::string& cell, std::size_t width) {
  return std::string(cell.size() < width ? width - cell.size() : 0, ' ') + cell;
}

std::string stringOf(ICompoundID* id, HRESULT (STDMETHODCALLTYPE ICompoundID::*get)(BSTR*)) {
  Bstr value;
  (id->*get)(value.out());
  return value ? qs::narrow(value.view()) : "not set";
}

// The property at a temperature; "-" when it is not set.
std::string valueAt(IBasicCompound* compound, const Property& property, double temperature) {
  LONG dependencies = 0;
  double value = 0;
  const HRESULT result = (compound->*property.value)(temperature, kPressure, eNoExtrapolation, &dependencies, &value);
  return result == S_OK ? text(value) : "-";
}

// The class as it is installed, or else from the module beside this program.
ComPtr<IBasicCompound> newCompound() {
  static std::vector<std::unique_ptr<qs::host::LoadedModule>> loaded;
  auto compound = qs::host::createInstance<IBasicCompound>(__uuidof(COQSCompound));
  if (!compound && loaded.empty()) {
    loaded.push_back(std::make_unique<qs::host::LoadedModule>("qscontainers"));
    loaded.back()->registerClass(__uuidof(COQSCompound));
    loaded.push_back(std::make_unique<qs::host::LoadedModule>("qshostkit"));
    loaded.back()->registerClass(__uuidof(HostIntegerArray));
    compound = qs::host::createInstance<IBasicCompound>(__uuidof(COQSCompound));
  }
  if (!compound) throw std::runtime_error("the class COQSCompound cannot be created");
  return compound;
}

ComPtr<IBasicCompound> compoundFrom(const std::string& directory, INT number) {
  auto compound = newCompound();
  const HRESULT result =
      ComPtr<ICompoundInitFromVelDB>::from(compound.get())->Init(Bstr(qs::widen(directory)).get(), number);
  if (result != S_OK)
    throw std::runtime_error("compound " + std::to_string(number) + " of " + directory + ": " +
                             (result == S_FALSE ? "not in the database" : "the database cannot be read"));
  return compound;
}

void printIdentity(IBasicCompound* compound) {
  const auto id = ComPtr<ICompoundID>::from(compound);
  INT synonyms = 0;
  id->get_NumberOfSynonymNames(&synonyms);
  std::cout << "\n"
            << stringOf(id.get(), &ICompoundID::get_Name) << "  "
            << stringOf(id.get(), &ICompoundID::get_ChemicalFormula) << "  CAS "
            << stringOf(id.get(), &ICompoundID::get_CASN) << "  synonyms:";
  for (INT i = 0; i < synonyms; ++i) {
    Bstr synonym;
    id->get_SynonymName(i, synonym.out());
    std::cout << (i ? ", " : " ") << qs::narrow(synonym.view());
  }
  std::cout << "\nIsWater " << text(id->IsWater()) << "  IsMethanol " << text(id->IsMethanol()) << "  IsEG "
            << text(id->IsEG()) << "  IsDEG " << text(id->IsDEG()) << "  IsTEG " << text(id->IsTEG()) << "\n";
}

void printConstants(IBasicCompound* compound) {
  for (const Property& constant : kConstants) {
    LONG dependencies = 0;
    double value = 0;
    const HRESULT result = (compound->*constant.value)(298.15, kPressure, eNoExtrapolation, &dependencies, &value);
    std::cout << "  " << constant.title << std::string(24 - std::string(constant.title).size(), ' ')
              << padded(result == S_OK ? text(value) : "not set", 12) << " " << constant.unit << "  " << text(result)
              << "\n";
  }
}

void printCorrelations(IBasicCompound* compound) {
  constexpr std::size_t kWidth = 25;
  std::cout << padded("T", 9);
  for (const Property& property : kCorrelations) std::cout << padded(property.title, kWidth);
  std::cout << "\n" << padded("K", 9);
  for (const Property& property : kCorrelations) std::cout << padded(property.unit, kWidth);
  std::cout << "\n";
  for (const double temperature : kTemperatures) {
    std::cout << padded(text(temperature), 9);
    for (const Property& property : kCorrelations)
      std::cout << padded(valueAt(compound, property, temperature), kWidth);
    std::cout << "\n";
  }
  std::cout << padded("range", 9);
  const auto reference = ComPtr<ICompoundReferenceStateProperties>::from(compound);
  for (const Property& property : kCorrelations) {
    double tMin = 0, tMax = 0, pMin = 0, pMax = 0;
    const HRESULT result = property.range ? (compound->*property.range)(&tMin, &tMax, &pMin, &pMax)
                                          : reference->get_IGCPTPRange(&tMin, &tMax, &pMin, &pMax);
    std::cout << padded(result == S_OK ? text(tMin) + " to " + text(tMax) + " K" : "none", kWidth);
  }
  std::cout << "\n";
}

void printSources(IBasicCompound* compound) {
  const auto sources = ComPtr<IPropertySource>::from(compound);
  for (const OLECHAR* name : {OLESTR("TC"), OLESTR("VP"), OLESTR("LDN")}) {
    tagValueKindEnum kind{};
    tagValueQualityEnum quality{};
    INT year = 0;
    Bstr title, authors, licence, changes, uncertainty, note;
    const HRESULT result =
        sources->GetPropertySource(Bstr(name).get(), &kind, &quality, title.out(), authors.out(), &year, licence.out(),
                                   changes.out(), uncertainty.out(), note.out());
    std::cout << "  " << qs::narrow(name) << " from ";
    if (result != S_OK) {
      std::cout << "an unknown source\n";
      continue;
    }
    std::cout << qs::narrow(title.view());
    if (kind == eKindFitted) std::cout << "; fitted";
    if (quality == eQualityDoubtful) std::cout << "; doubtful";
    if (note) std::cout << "; " << qs::narrow(note.view());
    std::cout << "\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: property_table DATABASE-DIRECTORY\n";
    return 2;
  }
  CoInitialize(nullptr);
  try {
    for (const INT number : kNumbers) {
      const auto compound = compoundFrom(argv[1], number);
      printIdentity(compound.get());
      printConstants(compound.get());
      printCorrelations(compound.get());
      printSources(compound.get());
    }
  } catch (const std::exception& error) {
    std::cerr << "property_table: " << error.what() << "\n";
    return 1;
  }
  CoUninitialize();
}
