#include "bank/units.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "bank/names.h"
#include "math/functions.h"
#include "props/forms.h"

namespace qs::bank {
namespace {

using database::Correlation;

constexpr Unit kUnits[] = {
#define QS_UNIT(target, name, times, over, offset) {target, name, times, over, offset},
#include "bank/units.def"
};

// Units whose factor is another for each compound.
constexpr struct {
  std::string_view target, name;
} kMassUnits[] = {
    {"kg/m3", "kmol/m3"},        {"kg/m3", "mol/m3"},        {"kg/m3", "mol/l"},           {"kg/m3", "mol/dm3"},
    {"kg/m3", "mol/cm3"},        {"m3/kmol", "m3/kg"},       {"m3/kmol", "cm3/g"},         {"kJ/kmol", "kJ/kg"},
    {"kJ/kmol", "J/g"},          {"kJ/kmol", "cal/g"},       {"kJ/kmol", "Btu/lb"},        {"kJ/(kmol K)", "kJ/(kg K)"},
    {"kJ/(kmol K)", "J/(kg K)"}, {"kJ/(kmol K)", "J/(g K)"}, {"kJ/(kmol K)", "cal/(g K)"},
};

// Null for the target itself, and otherwise with the reason.
struct Found {
  const Unit* unit = nullptr;
  std::string refusal = {};
};

Found findUnit(std::string_view target, std::string_view name) {
  if (name == target) return {};
  std::vector<std::string_view> known{target};
  for (const Unit& unit : kUnits) {
    if (unit.target != target) continue;
    if (unit.name == name) return {&unit};
    known.push_back(unit.name);
  }
  const std::string refusal = '"' + std::string(name) + "\" cannot be converted to \"" + std::string(target) + '"';
  for (const auto& unit : kMassUnits)
    if (unit.target == target && unit.name == name) return {nullptr, refusal + ": that takes the molecular weight"};
  return {nullptr, refusal + suggestion(name, known)};
}

enum class Scale { Linear, Ln, Log10, None };

// How Y depends on the property.
Scale scaleOf(tagXYShapeEnum shape) {
  switch (shape) {
    case COMx:
    case COMxr:
    case COMxxo:
    case COMxdp:
    case COMxp:
      return Scale::Linear;
    case COMlnx:
    case COMlnxr:
    case COMlnxxo:
    case COMlnxp:
      return Scale::Ln;
    case COMlogx:
    case COMlogxr:
      return Scale::Log10;
    default:
      return Scale::None;
  }
}

constexpr std::string_view kLogarithm = "ln ";

}  // namespace

std::span<const Unit> convertedUnits() { return kUnits; }

std::string convertNumber(std::string_view target, std::string_view unit, double& number) {
  auto [found, refusal] = findUnit(target, unit);
  if (found && found->offset != 0.0) number += found->offset;  // a negative zero stays one
  if (found) number = number * found->times / found->over;
  return refusal;
}

std::string convertCorrelation(Key key, std::string_view unitName, Correlation& correlation) {
  const Found found = findUnit(unitOf(key), unitName);
  const Unit* unit = found.unit;
  if (!unit || (unit->times == unit->over && unit->offset == 0.0)) return found.refusal;
  const std::string why = unit->offset != 0.0 ? "their zeros differ, which coefficients cannot express"
                                              : scaleCorrelation(key, unit->times, unit->over, correlation);
  if (why.empty()) return {};
  return '"' + std::string(unitName) + "\" cannot be converted to \"" + std::string(unit->target) + "\" here: " + why;
}

std::string scaleCorrelation(Key key, double times, double over, Correlation& correlation) {
  if (correlation.yPower != 1.0) return "Y is raised to a power";
  const EquationForm* form = findForm(LONG{correlation.form});
  if (!form || correlation.coefficients.size() != database::coefficientCount(key, correlation.form))
    return "the form has another number of coefficients";
  const std::string_view scale = form->scale;
  const auto coefficient = [&](char letter) -> double& {
    return correlation.coefficients[static_cast<std::size_t>(letter - 'A')];
  };
  const double factor = times / over;
  const Scale shape = scaleOf(correlation.yShape);
  if (shape == Scale::Linear && scale.starts_with(kLogarithm)) {
    coefficient(scale.back()) += qs::math::log(factor);
  } else if (shape == Scale::Linear && !scale.empty()) {
    for (const char letter : scale)
      if (letter != '+') coefficient(letter) = coefficient(letter) * times / over;
    if (key == Key::IGH) coefficient('G') = coefficient('G') * times / over;
  } else if (shape != Scale::Linear && shape != Scale::None && scale.find('+') != scale.npos) {
    coefficient(scale.front()) += shape == Scale::Ln ? math::log(factor) : math::log10(factor);
  } else if (shape == Scale::None) {
    return "the transformation " + std::string(nameOf(kTransformations, correlation.yShape)) + " of Y takes no factor";
  } else {
    return "no coefficient of the form " + std::string(nameOf(kForms, correlation.form)) + " takes " +
           (shape == Scale::Linear ? "a factor" : "the logarithm of a factor");
  }
  return {};
}

}  // namespace qs::bank
