#include "props/evaluator.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <numeric>

#include "props/curve.h"
#include "props/form_functions.h"
#include "props/masked_exceptions.h"

namespace qs {
namespace {

double valueOf(const CQSAbstractProp& property, double T, double P) {
  double value = kEmptyValue;
  LONG dependencies = 0;
  property.GetValue(T, P, eNoExtrapolation, &dependencies, &value);
  return value;
}

// Whether the form's functions give the equation's values: not where VELDB5 extrapolates, nor without a form or the
// constants of a transformation.
bool isPlain(const Equation& equation, std::span<const double> temperatures) {
  if (equation.form.shape == PropCurveVoid || equation.x().lacksConstants() || equation.y().lacksConstants())
    return false;
  const auto within = [&](double T) { return equation.tMin <= T && T <= equation.tMax; };
  return equation.form.shape != PropCurveVELDB5 || std::ranges::all_of(temperatures, within);
}

// At most a block of temperatures. False when the values are to be had one by one only.
bool evaluateBlock(const Equation& equation, std::span<const double> temperatures, double P, double* values,
                   const BlockFunctions& functions) {
  if (!isPlain(equation, temperatures)) return false;
  Block block;
  std::ranges::copy(temperatures, block.values);
  const std::size_t count = block.pad(temperatures.size());
  if (!functions.forward(block.values, count, P, equation.x())) return false;
  functions.forms[equation.form.shape](block.values, count, equation.coefficients.data(), equation.whole);
  if (!functions.back(block.values, count, P, equation.y())) return false;
  std::copy_n(block.values, temperatures.size(), values);
  return true;
}

// At most a block of equations of one form, whose exponents are multiplied out alike, at one temperature. False as
// above.
bool evaluateTogether(std::span<const Equation* const> equations, double T, double P, double* values,
                      const BlockFunctions& functions) {
  const Equation& first = *equations[0];
  const std::size_t coefficients = first.coefficients.size();
  Block block;
  Block columns[kMostCoefficients];
  for (std::size_t i = 0; i < equations.size(); ++i) {
    block.values[i] = T;
    if (!isPlain(*equations[i], {&T, 1}) || !transformForward(equations[i]->x(), P, &block.values[i])) return false;
    for (std::size_t c = 0; c < coefficients; ++c) columns[c].values[i] = equations[i]->coefficients[c];
  }
  for (std::size_t c = 0; c < coefficients; ++c) columns[c].pad(equations.size());
  const std::size_t count = block.pad(equations.size());
  functions.formsOfMany[first.form.shape](block.values, count, columns, first.whole);

  const auto sameY = [&](const Equation* equation) { return equation->y() == first.y(); };
  if (std::ranges::all_of(equations, sameY)) {
    if (!functions.back(block.values, count, P, first.y())) return false;
  } else {
    for (std::size_t i = 0; i < equations.size(); ++i)
      if (!transformBack(equations[i]->y(), P, &block.values[i])) return false;
  }
  std::copy_n(block.values, equations.size(), values);
  return true;
}

// At most a block of properties.
void evaluateMany(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
                  const BlockFunctions& functions) {
  // The equations sorted by form and by what is multiplied out: how many are before each kind, then their places.
  constexpr std::size_t kWholes = form::kNotWhole + 2;
  const auto kindOf = [](const Equation& equation) {
    return static_cast<std::size_t>(equation.form.shape) * kWholes + static_cast<std::size_t>(equation.whole + 1);
  };
  std::array<std::uint16_t, kFormCount * kWholes + 1> ends{};
  std::array<const Equation*, kBlockLength> equations{};
  for (std::size_t i = 0; i < properties.size(); ++i) {
    equations[i] = properties[i] ? properties[i]->equation() : nullptr;
    if (equations[i] && equations[i]->form.shape == PropCurveVoid) equations[i] = nullptr;
    if (equations[i])
      ++ends[kindOf(*equations[i]) + 1];
    else
      values[i] = properties[i] ? valueOf(*properties[i], T, P) : kEmptyValue;
  }
  const MaskedExceptions masked;
  std::partial_sum(ends.begin(), ends.end(), ends.begin());
  std::array<std::uint8_t, kBlockLength> places;
  for (std::size_t i = 0; i < properties.size(); ++i)
    if (equations[i]) places[ends[kindOf(*equations[i])]++] = static_cast<std::uint8_t>(i);
  // Each end is now that of its own kind.
  std::array<const Equation*, kBlockLength> together{};
  std::array<double, kBlockLength> results{};
  for (std::size_t kind = 0, begin = 0; kind < kFormCount * kWholes; begin = ends[kind++]) {
    const auto group = std::span(places).subspan(begin, ends[kind] - begin);
    if (group.empty()) continue;
    std::ranges::transform(group, together.begin(), [&](std::uint8_t place) { return equations[place]; });
    const bool done = evaluateTogether(std::span(together).first(group.size()), T, P, results.data(), functions);
    for (std::size_t i = 0; i < group.size(); ++i)
      values[group[i]] = done ? results[i] : valueOf(*properties[group[i]], T, P);
  }
}

}  // namespace

void evaluate(const CQSAbstractProp& property, std::span<const double> temperatures, double P, double* values,
              const BlockFunctions& functions) {
  const Equation* equation = property.equation();
  if (!equation) {
    for (const double T : temperatures) *values++ = valueOf(property, T, P);
    return;
  }
  const MaskedExceptions masked;
  while (!temperatures.empty()) {
    const auto block = temperatures.first(std::min(temperatures.size(), kBlockLength));
    if (!evaluateBlock(*equation, block, P, values, functions))
      for (std::size_t i = 0; i < block.size(); ++i) values[i] = valueOf(property, block[i], P);
    temperatures = temperatures.subspan(block.size());
    values += block.size();
  }
}

void evaluate(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
              const BlockFunctions& functions) {
  while (!properties.empty()) {
    const auto block = properties.first(std::min(properties.size(), kBlockLength));
    evaluateMany(block, T, P, values, functions);
    properties = properties.subspan(block.size());
    values += block.size();
  }
}

}  // namespace qs
