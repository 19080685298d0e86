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

// At most a block of equations of one form, whose exponents are multiplied out alike, at one temperature. False as
// above.
bool evaluateAlike(std::span<const Equation* const> equations, double T, double P, double* values,
                   const BlockFunctions& functions) {
  if (isEmpty(T)) return false;
  const Equation& first = *equations[0];
  const std::size_t coefficients = first.coefficients.size();
  Block block;
  Block columns[kMostCoefficients];
  for (std::size_t i = 0; i < equations.size(); ++i) {
    block.values[i] = T;
    const Equation& equation = *equations[i];
    if (!isPlain(equation, {&T, 1})) return false;
    const bool isT = equation.xShape == COMx && equation.xPow == 1.0;
    if (!isT && !transformForward(equation.x(), P, &block.values[i])) return false;
    for (std::size_t c = 0; c < coefficients; ++c) columns[c].values[i] = equation.coefficients[c];
  }
  for (std::size_t c = 0; c < coefficients; ++c) columns[c].pad(equations.size());
  const std::size_t count = block.pad(equations.size());
  functions.formsOfMany[first.form.shape](block.values, count, columns, first.whole);

  const Transformation y = first.y();
  const auto sameY = [&](const Equation* equation) {
    const bool plain = equation->yShape == COMx && y.shape == COMx && equation->yPow == 1.0 && y.power == 1.0;
    return plain || equation->y() == y;
  };
  if (std::ranges::all_of(equations, sameY)) {
    if (!functions.back(block.values, count, P, y)) return false;
  } else {
    for (std::size_t i = 0; i < equations.size(); ++i)
      if (!transformBack(equations[i]->y(), P, &block.values[i])) return false;
  }
  std::copy_n(block.values, equations.size(), values);
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

void evaluateTogether(std::span<const Equation* const> equations, double T, double P, double* values,
                      const BlockFunctions& functions) {
  constexpr int kMostKinds = 8;
  const MaskedExceptions masked;
  std::array<const Equation*, kBlockLength> left, together;
  std::array<std::uint8_t, kBlockLength> places, placesTogether;
  std::array<double, kBlockLength> results;
  std::size_t count = 0;
  for (std::size_t i = 0; i < equations.size(); ++i) {
    values[i] = kEmptyValue;
    if (!equations[i]) continue;
    left[count] = equations[i];
    places[count++] = static_cast<std::uint8_t>(i);
  }
  for (int kind = 0; count > 0 && kind < kMostKinds; ++kind) {
    const Equation& first = *left[0];
    std::size_t alike = 0, others = 0;
    for (std::size_t i = 0; i < count; ++i) {
      if (&left[i]->form == &first.form && left[i]->whole == first.whole) {
        together[alike] = left[i];
        placesTogether[alike++] = places[i];
      } else {
        left[others] = left[i];
        places[others++] = places[i];
      }
    }
    count = others;
    if (!evaluateAlike({together.data(), alike}, T, P, results.data(), functions)) continue;
    for (std::size_t i = 0; i < alike; ++i) values[placesTogether[i]] = results[i];
  }
}

void evaluate(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
              const BlockFunctions& functions, double noValue) {
  std::array<const Equation*, kBlockLength> equations;
  while (!properties.empty()) {
    const auto block = properties.first(std::min(properties.size(), kBlockLength));
    std::ranges::transform(block, equations.begin(),
                           [](const CQSAbstractProp* property) { return property ? property->equation() : nullptr; });
    evaluateTogether(std::span(equations).first(block.size()), T, P, values, functions);
    for (std::size_t i = 0; i < block.size(); ++i)
      if (isEmpty(values[i])) values[i] = block[i] ? valueOf(*block[i], T, P, noValue) : noValue;
    properties = properties.subspan(block.size());
    values += block.size();
  }
}

}  // namespace qs
