// The values of properties in one call: of one at many temperatures, or of many at one.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "props/block_functions.h"
#include "props/curve.h"
#include "props/property.h"

namespace qs {

// Writes to `values`, which has as many places and may be the same array, what GetValue writes at each of the
// temperatures, in K, and pressure P, in kPa: bit for bit the same, and `noValue` in the place of the empty value and
// where it writes nothing.
// Allocates nothing for constants and equations, and leaves the floating-point state as it was; the host's exceptions
// are masked while an equation is evaluated. An external component is asked for each value; the caller keeps the
// property alive meanwhile. Throws what GetValue throws.
void evaluate(const CQSAbstractProp& property, std::span<const double> temperatures, double P, double* values,
              const BlockFunctions& functions = *supportedBlockFunctions().back(), double noValue = kEmptyValue);

// The same with the derivatives by T, per K: bit for bit the first of derivativesOf, and `noValue` where it has no
// result and for an external component. Either array may be that of the temperatures.
void evaluateWithSlopes(const CQSAbstractProp& property, std::span<const double> temperatures, double P, double* values,
                        double* slopes, const BlockFunctions& functions = *supportedBlockFunctions().back(),
                        double noValue = kEmptyValue);

// The values of many properties, of which null has none, at one temperature.
void evaluate(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
              const BlockFunctions& functions = *supportedBlockFunctions().back(), double noValue = kEmptyValue);

// Evaluates equations at one temperature, which come one after the other, together where they are alike: of one form,
// with exponents multiplied out alike and without transformations but of ln Y.
class AlikeEquations {
 public:
  // Values go to the places of `values`.
  AlikeEquations(double T, double* values, const BlockFunctions& functions = *supportedBlockFunctions().back())
      : T_(T), values_(values), functions_(functions) {}

  // False for an equation that must be evaluated by itself. Coefficients are copied.
  bool add(const Equation& equation, std::size_t place) {
    if (equation.way == Equation::Way::Any || isEmpty(T_) || equation.extrapolatesAt(T_)) return false;
    if (!last_ || !last_->takes(equation)) {
      Group* const group = groupOf(equation);
      if (!group) return false;
      last_ = group;
    }
    Group& group = *last_;
    double* column = group.coefficients + group.count;
    for (const double coefficient : equation.coefficients) {
      *column = coefficient;
      column += kGroup;
    }
    group.places[group.count++] = static_cast<std::uint32_t>(place);
    if (group.count == kGroup) evaluate(group);
    return true;
  }

  // Puts the values that are not there yet.
  void finish();

 private:
  static constexpr std::size_t kGroup = 4 * kBlockStep;
  struct Group {
    bool takes(const Equation& equation) const {
      return form == &equation.form && whole == equation.whole && way == equation.way;
    }

    const EquationForm* form;
    int whole;
    Equation::Way way;
    std::size_t count;
    std::uint32_t places[kGroup];
    double coefficients[kMostCoefficients * kGroup];
  };

  Group* groupOf(const Equation& equation);
  void evaluate(Group& group);

  const double T_;
  double* const values_;
  const BlockFunctions& functions_;
  std::size_t groupCount_ = 0;
  Group* last_ = nullptr;
  std::array<Group, 6> groups_;
};

}  // namespace qs
