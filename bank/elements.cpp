#include "bank/elements.h"

#include <algorithm>
#include <charconv>
#include <vector>

namespace qs::bank {
namespace {

// Weights: standard atomic weights of the IUPAC, 2021, abridged to five digits; D is deuterium. Entropies: CODATA Key
// Values for Thermodynamics, 1989.
constexpr Element kElements[] = {
    {"H", 1.008, 65.340},    {"D", 2.0141},           {"He", 4.0026, 126.153}, {"Li", 6.94, 29.12},
    {"Be", 9.0122, 9.50},    {"B", 10.81, 5.90},      {"C", 12.011, 5.74},     {"N", 14.007, 95.8045},
    {"O", 15.999, 102.576},  {"F", 18.998, 101.396},  {"Ne", 20.180, 146.328}, {"Na", 22.990, 51.30},
    {"Mg", 24.305, 32.67},   {"Al", 26.982, 28.30},   {"Si", 28.085, 18.81},   {"P", 30.974, 41.09},
    {"S", 32.06, 32.054},    {"Cl", 35.45, 111.541},  {"Ar", 39.95, 154.846},  {"K", 39.098, 64.68},
    {"Ca", 40.078, 41.59},   {"Sc", 44.956},          {"Ti", 47.867, 30.72},   {"V", 50.942},
    {"Cr", 51.996},          {"Mn", 54.938},          {"Fe", 55.845},          {"Co", 58.933},
    {"Ni", 58.693},          {"Cu", 63.546, 33.15},   {"Zn", 65.38, 41.63},    {"Ga", 69.723},
    {"Ge", 72.630, 31.09},   {"As", 74.922},          {"Se", 78.971},          {"Br", 79.904, 76.103},
    {"Kr", 83.798, 164.085}, {"Rb", 85.468, 76.78},   {"Sr", 87.62},           {"Y", 88.906},
    {"Zr", 91.224},          {"Nb", 92.906},          {"Mo", 95.95},           {"Ru", 101.07},
    {"Rh", 102.91},          {"Pd", 106.42},          {"Ag", 107.87, 42.55},   {"Cd", 112.41, 51.80},
    {"In", 114.82},          {"Sn", 118.71, 51.18},   {"Sb", 121.76},          {"Te", 127.60},
    {"I", 126.90, 58.07},    {"Xe", 131.29, 169.685}, {"Cs", 132.91, 85.23},   {"Ba", 137.33},
    {"La", 138.91},          {"Ce", 140.12},          {"Pr", 140.91},          {"Nd", 144.24},
    {"Sm", 150.36},          {"Eu", 151.96},          {"Gd", 157.25},          {"Tb", 158.93},
    {"Dy", 162.50},          {"Ho", 164.93},          {"Er", 167.26},          {"Tm", 168.93},
    {"Yb", 173.05},          {"Lu", 174.97},          {"Hf", 178.49},          {"Ta", 180.95},
    {"W", 183.84},           {"Re", 186.21},          {"Os", 190.23},          {"Ir", 192.22},
    {"Pt", 195.08},          {"Au", 196.97},          {"Hg", 200.59, 75.90},   {"Tl", 204.38},
    {"Pb", 207.2, 64.80},    {"Bi", 208.98},          {"Th", 232.04},          {"U", 238.03, 50.20},
};

bool isLower(char c) { return c >= 'a' && c <= 'z'; }

// Takes a symbol off the front of a formula; null when there is none.
const Element* takeElement(std::string_view& rest) {
  const std::string_view symbol = rest.substr(0, rest.size() > 1 && isLower(rest[1]) ? 2 : 1);
  const auto* found = std::ranges::find(kElements, symbol, &Element::symbol);
  if (found == std::end(kElements)) return nullptr;
  rest.remove_prefix(symbol.size());
  return found;
}

double takeCount(std::string_view& rest) {
  int count = 1;
  const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), count);
  rest.remove_prefix(static_cast<std::size_t>(read.ptr - rest.data()));
  return count;
}

}  // namespace

std::variant<Atoms, FormulaFault> atomsOf(std::string_view formula) {
  std::vector<Atoms> open(1);  // the formula, and the brackets that are open
  std::string_view rest = formula;
  while (!rest.empty()) {
    if (rest[0] == '(' || rest[0] == '[') {
      open.emplace_back();
      rest.remove_prefix(1);
    } else if (rest[0] == ')' || rest[0] == ']') {
      if (open.size() == 1) return FormulaFault{rest, "a bracket that was not opened"};
      const Atoms group = std::move(open.back());
      open.pop_back();
      rest.remove_prefix(1);
      const double count = takeCount(rest);
      for (const auto& [element, atoms] : group) open.back()[element] += count * atoms;
    } else if (const Element* element = takeElement(rest)) {
      open.back()[element] += takeCount(rest);
    } else {
      return FormulaFault{rest, "no element"};
    }
  }
  if (open.size() > 1) return FormulaFault{rest, "a bracket that is not closed"};
  return std::move(open.back());
}

}  // namespace qs::bank
