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

enum class Found { OneByOneOnly, Values, Numbers };

// At most a block of temperatures.
Found evaluateBlock(const Equation& equation, std::span<const double> temperatures, double P, double* values,
                    const BlockFunctions& functions) {
  if (!isPlain(equation, temperatures)) return Found::OneByOneOnly;
  Block block;
  std::ranges::copy(temperatures, block.values);
  const std::size_t count = block.pad(temperatures.size());
  if (!functions.forward(block.values, count, P, equation.x())) return Found::OneByOneOnly;
  functions.forms[equation.form.shape](block.values, count, equation.coefficients.data(), equation.whole);
  if (!functions.back(block.values, count, P, equation.y())) return Found::OneByOneOnly;
  return functions.copyWithin(block.values, temperatures.size(), kAboveEmpty, kMostNumber, values) ? Found::Numbers
                                                                                                   : Found::Values;
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

// Equations that are evaluated together, with the places of their values.
class Group {
 public:
  // What is alike in an equation is so in all that come.
  void start(const Equation& equation) {
    form_ = &equation.form;
    whole_ = equation.whole;
    way_ = equation.way;
    count_ = 0;
  }

  bool takes(const Equation& equation) const {
    return form_ == &equation.form && whole_ == equation.whole && way_ == equation.way;
  }

  bool isFull() const { return count_ == kMost; }

  void add(const Equation& equation, std::size_t place) {
    double* const column = columns_ + count_;
    const double* const coefficients = equation.coefficients.data();
    static_assert(kMostCoefficients == 7);
    switch (equation.coefficients.size()) {
      case 7:
        column[6 * kMost] = coefficients[6];
        [[fallthrough]];
      case 6:
        column[5 * kMost] = coefficients[5];
        [[fallthrough]];
      case 5:
        column[4 * kMost] = coefficients[4];
        [[fallthrough]];
      case 4:
        column[3 * kMost] = coefficients[3];
        [[fallthrough]];
      case 3:
        column[2 * kMost] = coefficients[2];
        [[fallthrough]];
      case 2:
        column[1 * kMost] = coefficients[1];
        [[fallthrough]];
      default:
        column[0] = coefficients[0];
    }
    places_[count_++] = static_cast<std::uint32_t>(place);
  }

  // Writes the values, and is empty then.
  void evaluate(double T, double* values, std::span<const BlockFunctions* const> supported) {
    if (count_ == 0) return;
    // Few need no wide vectors, which take longer.
    const auto wide = std::ranges::find_if(supported, [&](const auto* each) { return each->lanes >= count_; });
    const BlockFunctions& functions = wide == supported.end() ? *supported.back() : **wide;
    const std::size_t lanes = (count_ + functions.lanes - 1) / functions.lanes * functions.lanes;
    double computed[kMost];
    std::fill_n(computed, lanes, T);
    for (std::size_t lane = count_; lane < lanes; ++lane)
      for (std::size_t c = 0; c < static_cast<std::size_t>(form_->coefficients); ++c)
        columns_[c * kMost + lane] = columns_[c * kMost];
    functions.formsOfMany[form_->shape](computed, lanes, columns_, kMost, whole_);
    if (way_ == Equation::Way::LnY) functions.back(computed, lanes, 0.0, {COMlnx, 1.0, 1.0, kEmptyValue, kEmptyValue});
    for (std::size_t i = 0; i < count_; ++i) values[places_[i]] = computed[i];
    count_ = 0;
  }

 private:
  static constexpr std::size_t kMost = 4 * kBlockStep;

  const EquationForm* form_;
  int whole_;
  Equation::Way way_;
  std::size_t count_;
  std::uint32_t places_[kMost];
  double columns_[kMostCoefficients * kMost];
};

}  // namespace

bool evaluate(const CQSAbstractProp& property, std::span<const double> temperatures, double P, double* values,
              const BlockFunctions& functions, double noValue) {
  const Equation* equation = property.equation();
  if (!equation) {
    for (const double T : temperatures) *values++ = valueOf(property, T, P, noValue);
    return false;
  }
  const MaskedExceptions masked;
  bool areNumbers = true;
  while (!temperatures.empty()) {
    const auto block = temperatures.first(std::min(temperatures.size(), kBlockLength));
    const std::size_t next = std::min(temperatures.size() - block.size(), kBlockLength);
    fetch<false>(block.data() + block.size(), next);
    fetch<true>(values + block.size(), next);
    const Found found = evaluateBlock(*equation, block, P, values, functions);
    areNumbers &= found == Found::Numbers;
    if (found == Found::OneByOneOnly)
      for (std::size_t i = 0; i < block.size(); ++i) values[i] = valueOf(property, block[i], P, noValue);
    temperatures = temperatures.subspan(block.size());
    values += block.size();
  }
  return areNumbers;
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

void evaluateAlike(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
                   std::span<const BlockFunctions* const> functions) {
  std::fill_n(values, properties.size(), kEmptyValue);
  if (isEmpty(T)) return;
  const MaskedExceptions masked;
  std::array<Group, 6> groups;
  Group *last = nullptr, *end = groups.data();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const Equation* equation = properties[i] ? properties[i]->equation() : nullptr;
    if (!equation || !equation->isWithin(T, P)) continue;
    if (!last || !last->takes(*equation)) {
      if (equation->way == Equation::Way::Any || equation->form.shape == PropCurveVoid) continue;
      Group* const group = std::find_if(groups.data(), end, [&](const Group& each) { return each.takes(*equation); });
      if (group == groups.data() + groups.size()) continue;
      if (group == end) (end++)->start(*equation);
      last = group;
    }
    last->add(*equation, i);
    if (last->isFull()) last->evaluate(T, values, functions);
  }
  for (Group* group = groups.data(); group != end; ++group) group->evaluate(T, values, functions);
}

}  // namespace qs
