#include "props/evaluator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

#include "props/curve.h"
#include "props/derivatives.h"
#include "props/form_functions.h"
#include "props/masked_exceptions.h"

namespace qs {
namespace {

double valueOf(const CQSAbstractProp& property, double T, double P, double noValue) {
  double value = kEmptyValue;
  LONG dependencies = 0;
  property.GetValue(T, P, eNoExtrapolation, &dependencies, &value);
  return isEmpty(value) ? noValue : value;
}

// Whether the form's functions give the equation's values: not where VELDB5 extrapolates, nor without a form or the
// constants of a transformation.
bool isPlain(const Equation& equation, std::span<const double> temperatures) {
  if (equation.form.shape == PropCurveVoid || equation.lacksConstants()) return false;
  return equation.form.shape != PropCurveVELDB5 ||
         std::ranges::none_of(temperatures, [&](double T) { return equation.extrapolatesAt(T); });
}

// Has the processor fetch a block of numbers while it computes another.
template <bool forWriting>
void fetch(const double* numbers, std::size_t count) {
  constexpr std::size_t kInCacheLine = 8;
  for (std::size_t i = 0; i < count; i += kInCacheLine) __builtin_prefetch(numbers + i, forWriting ? 1 : 0);
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

// The same with the derivatives.
bool evaluateBlock(const Equation& equation, std::span<const double> temperatures, double P, double* values,
                   double* slopes, const BlockFunctions& functions) {
  if (!isPlain(equation, temperatures)) return false;
  Block block, slopesOfBlock, slopesOfX;
  std::ranges::copy(temperatures, block.values);
  const std::size_t count = block.pad(temperatures.size());
  const Transformation x = equation.x();
  const bool isT = x.shape == COMx && x.power == 1.0;
  if (!isT) std::fill_n(slopesOfX.values, count, 1.0);
  if (!(isT ? functions.forward(block.values, count, P, x)
            : functions.forwardWithSlopes(block.values, slopesOfX.values, count, P, x)))
    return false;
  functions.formsWithSlopes[equation.form.shape](block.values, slopesOfBlock.values, count,
                                                 equation.coefficients.data(), equation.whole);
  if (!isT)
    for (std::size_t i = 0; i < count; ++i) slopesOfBlock.values[i] *= slopesOfX.values[i];
  if (!functions.backWithSlopes(block.values, slopesOfBlock.values, count, P, equation.y())) return false;

  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto areNumbers = [&](const double* numbers) {
    return functions.allWithin(numbers, temperatures.size(), -kInfinity, kInfinity);
  };
  if (!areNumbers(block.values) || !areNumbers(slopesOfBlock.values)) {
    Derivatives exact;
    for (std::size_t i = 0; i < temperatures.size(); ++i) {
      double& slope = slopesOfBlock.values[i];
      if (std::isnan(block.values[i]))
        slope = block.values[i];
      else if (std::isnan(slope))
        slope = derivativesOf(equation, temperatures[i], P, exact) ? exact.first : slope;
    }
  }
  std::copy_n(block.values, temperatures.size(), values);
  std::copy_n(slopesOfBlock.values, temperatures.size(), slopes);
  return true;
}

}  // namespace

void evaluate(const CQSAbstractProp& property, std::span<const double> temperatures, double P, double* values,
              const BlockFunctions& functions, double noValue) {
  const Equation* equation = property.equation();
  if (!equation) {
    for (const double T : temperatures) *values++ = valueOf(property, T, P, noValue);
    return;
  }
  const MaskedExceptions masked;
  while (!temperatures.empty()) {
    const auto block = temperatures.first(std::min(temperatures.size(), kBlockLength));
    const std::size_t next = std::min(temperatures.size() - block.size(), kBlockLength);
    fetch<false>(block.data() + block.size(), next);
    fetch<true>(values + block.size(), next);
    if (!evaluateBlock(*equation, block, P, values, functions))
      for (std::size_t i = 0; i < block.size(); ++i) values[i] = valueOf(property, block[i], P, noValue);
    temperatures = temperatures.subspan(block.size());
    values += block.size();
  }
}

void evaluateWithSlopes(const CQSAbstractProp& property, std::span<const double> temperatures, double P, double* values,
                        double* slopes, const BlockFunctions& functions, double noValue) {
  const Equation* equation = property.equation();
  if (!equation) {
    LONG type = VoidProp;
    property.GetType(&type);
    for (const double T : temperatures) {
      const double value = valueOf(property, T, P, kEmptyValue);
      *values++ = isEmpty(value) ? noValue : value;
      *slopes++ = isEmpty(value) || type != PointProp ? noValue : 0.0;
    }
    return;
  }
  const MaskedExceptions masked;
  while (!temperatures.empty()) {
    const auto block = temperatures.first(std::min(temperatures.size(), kBlockLength));
    if (!evaluateBlock(*equation, block, P, values, slopes, functions)) {
      for (std::size_t i = 0; i < block.size(); ++i) {
        const double T = block[i];
        Derivatives derivatives;
        const bool done = derivativesOf(*equation, T, P, derivatives);
        values[i] = done ? derivatives.value : valueOf(property, T, P, noValue);
        slopes[i] = done ? derivatives.first : noValue;
      }
    }
    temperatures = temperatures.subspan(block.size());
    values += block.size();
    slopes += block.size();
  }
}

AlikeEquations::Group* AlikeEquations::groupOf(const Equation& equation) {
  if (equation.form.shape == PropCurveVoid) return nullptr;
  const auto groups = std::span(groups_).first(groupCount_);
  const auto found = std::ranges::find_if(groups, [&](const Group& group) { return group.takes(equation); });
  if (found != groups.end()) return &*found;
  if (groupCount_ == groups_.size()) return nullptr;
  Group& group = groups_[groupCount_++];
  group.form = &equation.form;
  group.whole = equation.whole;
  group.way = equation.way;
  group.count = 0;
  return &group;
}

void AlikeEquations::finish() {
  for (Group& group : std::span(groups_).first(groupCount_)) evaluate(group);
}

void AlikeEquations::evaluate(Group& group) {
  if (group.count == 0) return;
  const MaskedExceptions masked;
  const std::size_t lanes = (group.count + kBlockStep - 1) / kBlockStep * kBlockStep;
  double values[kGroup];
  std::fill_n(values, lanes, T_);
  for (std::size_t c = 0; c < static_cast<std::size_t>(group.form->coefficients); ++c) {
    double* column = group.coefficients + c * kGroup;
    std::fill(column + group.count, column + lanes, column[0]);
  }
  functions_.formsOfMany[group.form->shape](values, lanes, group.coefficients, kGroup, group.whole);
  if (group.way == Equation::Way::LnY)
    functions_.back(values, lanes, 0.0, {COMlnx, 1.0, 1.0, kEmptyValue, kEmptyValue});
  for (std::size_t i = 0; i < group.count; ++i) values_[group.places[i]] = values[i];
  group.count = 0;
}

void evaluate(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
              const BlockFunctions& functions, double noValue) {
  AlikeEquations equations(T, values, functions);
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const Equation* equation = properties[i] ? properties[i]->equation() : nullptr;
    if (!equation || !equations.add(*equation, i))
      values[i] = properties[i] ? valueOf(*properties[i], T, P, kEmptyValue) : kEmptyValue;
  }
  equations.finish();
  for (double& value : std::span(values, properties.size()))
    if (isEmpty(value)) value = noValue;
}

}  // namespace qs
