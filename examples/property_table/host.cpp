// A host in C++: fills compounds from the database, prints what they are, tabulates their properties and says where
// some come from.
//   property_table DATABASE-DIRECTORY
// Installed classes are used; without an installation the modules beside the program are.
#include <qscontainers.hpp>

#include <array>
#include <charconv>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int kNumbers[] = {19, 29, 30, 511, 54};
constexpr double kTemperatures[] = {280.0, 298.15, 320.0, 350.0, 373.15, 400.0};

struct Property {
  const char* title;
  const char* unit;
  const char* key;
};
constexpr Property kConstants[] = {
    {"molecular weight", "kg/kmol", "MW"}, {"critical temperature", "K", "TC"},  {"critical pressure", "kPa", "PC"},
    {"acentric factor", "-", "ACEN"},      {"normal boiling point", "K", "NBP"}, {"refractive index", "-", "RI"},
};
constexpr Property kCorrelations[] = {
    {"vapour pressure", "kPa", "VP"},
    {"liquid density", "kg/m3", "LDN"},
    {"heat of vaporisation", "kJ/kmol", "HVP"},
    {"ideal-gas heat capacity", "kJ/(kmol K)", "IGCP"},
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

std::string text(const qs::Result<double>& value, const char* other) { return value ? text(*value) : other; }

void printIdentity(const qs::Compound& compound) {
  std::cout << "\n"
            << compound.name().value_or("not set") << "  " << compound.formula().value_or("not set") << "  CAS "
            << compound.casNumber().value_or("not set") << "  synonyms:";
  const char* separator = " ";
  for (const std::string& synonym : compound.synonyms()) {
    std::cout << separator << synonym;
    separator = ", ";
  }
  const auto id = compound.as<ICompoundID>();
  std::cout << "\nIsWater " << text(id->IsWater()) << "  IsMethanol " << text(id->IsMethanol()) << "  IsEG "
            << text(id->IsEG()) << "  IsDEG " << text(id->IsDEG()) << "  IsTEG " << text(id->IsTEG()) << "\n";
}

void printConstants(const qs::Compound& compound) {
  for (const Property& constant : kConstants) {
    const auto value = compound[constant.key].at();
    std::cout << "  " << constant.title << std::string(24 - std::string(constant.title).size(), ' ')
              << padded(text(value, "not set"), 12) << " " << constant.unit << "  " << text(value.code()) << "\n";
  }
}

void printCorrelations(const qs::Compound& compound) {
  constexpr std::size_t kWidth = 25;
  std::cout << padded("T", 9);
  for (const Property& property : kCorrelations) std::cout << padded(property.title, kWidth);
  std::cout << "\n" << padded("K", 9);
  for (const Property& property : kCorrelations) std::cout << padded(property.unit, kWidth);
  std::cout << "\n";
  for (const double temperature : kTemperatures) {
    std::cout << padded(text(temperature), 9);
    for (const Property& property : kCorrelations)
      std::cout << padded(text(compound[property.key].at(temperature), "-"), kWidth);
    std::cout << "\n";
  }
  std::cout << padded("range", 9);
  for (const Property& property : kCorrelations) {
    const auto range = compound[property.key].range();
    std::cout << padded(range ? text(range->tMin) + " to " + text(range->tMax) + " K" : "none", kWidth);
  }
  std::cout << "\n";
}

void printSources(const qs::Compound& compound) {
  for (const char* key : {"TC", "VP", "LDN"}) {
    const auto source = compound[key].source();
    std::cout << "  " << key << " from ";
    if (!source) {
      std::cout << "an unknown source\n";
      continue;
    }
    std::cout << source->title;
    if (source->kind == eKindFitted) std::cout << "; fitted";
    if (source->quality == eQualityDoubtful) std::cout << "; doubtful";
    if (!source->note.empty()) std::cout << "; " << source->note;
    std::cout << "\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: property_table DATABASE-DIRECTORY\n";
    return 2;
  }
  try {
    const auto session = qs::Session::open().value();
    for (const int number : kNumbers) {
      const auto compound = qs::Compound::read(argv[1], number).value();
      printIdentity(compound);
      printConstants(compound);
      printCorrelations(compound);
      printSources(compound);
    }
  } catch (const std::exception& error) {
    std::cerr << "property_table: " << error.what() << "\n";
    return 1;
  }
}
