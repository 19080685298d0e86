// Values, derivatives, integrals and inverses of a property, each with its status: within the range of its data and, by
// a policy, beyond it. docs/evaluation.md describes what the statuses and policies mean.
#pragma once

#include <cmath>
#include <optional>
#include <span>

#include "com/not_set.h"
#include "props/evaluator.h"
#include "props/integrals.h"
#include "props/property.h"

namespace qs {

// The range of what has no range of its own.
struct PropertyRange {
  double tMin = 1e-05;
  double tMax = 1e+10;
  double pMin = 1e-05;
  double pMax = 1e+15;
};

// The range of a property; nothing where there is no value, and where only an external component knows it.
std::optional<PropertyRange> rangeOf(const CQSAbstractProp& property);

// The statuses of a number that there is not.
inline constexpr LONG kNoNumber = eStatusNotSet | eStatusNoSuchProperty | eStatusNotANumber | eStatusNoConvergence;

inline bool isNumber(double value) {
  const bool isOrdinary = std::isgreater(value, kAboveEmpty) && std::islessequal(value, kMostNumber);
  return isOrdinary || (std::isfinite(value) && !isEmpty(value));
}

struct EvaluationRequest {
  double P;                   // kPa
  tagLimitPolicyEnum policy;  // not eRecommended
  // Of the compound, K, for eTangentToCritical; the empty value for none.
  double criticalTemperature = kEmptyValue;
  // What stands for a number that there is not.
  double noValue = kEmptyValue;
};

// Where results go: arrays as long as the temperatures, or null for what is not wanted. Each may be the array of the
// temperatures itself.
struct EvaluationResults {
  double* values = nullptr;
  double* firstDerivatives = nullptr;
  double* secondDerivatives = nullptr;
  LONG* statuses = nullptr;  // sums of tagEvaluationStatusEnum, for all numbers that are wanted at a temperature

  EvaluationResults from(std::size_t place) const {
    const auto moved = [place](auto* array) { return array ? array + place : nullptr; };
    return {moved(values), moved(firstDerivatives), moved(secondDerivatives), moved(statuses)};
  }
};

// Writes numbers and statuses of a property at temperatures, in K. Returns whether there are all numbers. A null
// property has the status `missing` everywhere. Allocates nothing and leaves the floating-point state as it was, but
// for an external component, which is asked for each value and may delete the property meanwhile. Throws what it
// throws.
bool evaluate(const CQSAbstractProp* property, LONG missing, std::span<const double> temperatures,
              const EvaluationRequest& request, const EvaluationResults& results);

// The values at one temperature of those properties that are equations within their ranges, where they are numbers. The
// status of all others, null ones too, is 0, and they are still to be evaluated. Returns whether there are none.
bool evaluateWithin(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
                    LONG* statuses);

struct NumberWithStatus {
  double value;
  LONG status;

  bool isThere() const { return !(status & kNoNumber); }
};

// The integral of a property from a temperature to another; an external component has none. Allocates nothing.
NumberWithStatus integrate(const CQSAbstractProp* property, LONG missing, Integrand integrand, double from, double to,
                           const EvaluationRequest& request);

// The lowest temperature of its range at which a property has a value; constants and external components have none.
// Allocates nothing.
NumberWithStatus findTemperature(const CQSAbstractProp* property, LONG missing, double value, double P,
                                 double noValue = kEmptyValue);

}  // namespace qs
