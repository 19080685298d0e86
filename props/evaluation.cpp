#include "props/evaluation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "math/functions.h"
#include "props/curve.h"
#include "props/derivatives.h"
#include "props/evaluator.h"
#include "props/inverse.h"
#include "props/masked_exceptions.h"

namespace qs {
namespace {

// A temperature so near to the range is within it: the steps of a table do not end exactly at its limits.
constexpr int kNearUlps = 4;

// Temperatures that are looked at before they are evaluated: several blocks of the evaluator.
constexpr std::size_t kMostTogether = 8 * kBlockLength;

bool isTemperature(double T) { return std::isfinite(T) && T > 0.0; }

// A temperature some units in the last place away.
double ulpsAway(double T, int ulps) {
  constexpr double kLeast = 1e-300;
  if (!(T > kLeast && T < kMostNumber / 2)) return T;
  return __builtin_bit_cast(double, math::bitsOf(T) + static_cast<std::uint64_t>(std::int64_t{ulps}));
}

bool hasValues(const Equation& equation) {
  return equation.form.shape != PropCurveVoid && equation.x().isDefined() && equation.y().isDefined();
}

// One property at one pressure, by one policy.
class Evaluation {
 public:
  Evaluation(const CQSAbstractProp* property, LONG missing, const EvaluationRequest& request)
      : request_(request), property_(property) {
    if (!property) {
      status_ = missing;
      return;
    }
    equation_ = property->equation();
    if (equation_) {
      range_ = {equation_->tMin, equation_->tMax, equation_->pMin, equation_->pMax};
      status_ = hasValues(*equation_) ? 0 : LONG{eStatusNotSet};
    } else {
      LONG type = VoidProp;
      property->GetType(&type);
      if (type == COMProp) property->GetCOMObject(component_.out());
      isConstant_ = type == PointProp;
      status_ = (isConstant_ ? !isEmpty(valueOf(0.0)) : type == COMProp) ? 0 : LONG{eStatusNotSet};
      if (const auto range = rangeOf(*property)) range_ = *range;
    }
    if (!(range_.pMin <= request.P && request.P <= range_.pMax)) status_ |= eStatusOutsidePressure;
    const int margin = asFormGoesOn() ? 0 : kNearUlps;
    low_ = ulpsAway(range_.tMin, -margin);
    high_ = ulpsAway(range_.tMax, margin);
  }

  bool evaluate(std::span<const double> temperatures, const EvaluationResults& results) {
    constexpr std::size_t kFew = 4;
    bool all = true;
    std::optional<MaskedExceptions> masked;
    if (!isAsked()) masked.emplace();
    if (!equation_ || hasNone() || results.secondDerivatives || temperatures.size() < kFew) {
      const bool derivatives = results.firstDerivatives || results.secondDerivatives;
      for (std::size_t i = 0; i < temperatures.size(); ++i)
        all &= put(at(temperatures[i], derivatives), results.from(i));
      return all;
    }
    for (std::size_t i = 0; i < temperatures.size(); i += kMostTogether)
      all &= putTogether(temperatures.subspan(i, std::min(temperatures.size() - i, kMostTogether)), results.from(i));
    return all;
  }

  NumberWithStatus integrate(Integrand integrand, double from, double to) {
    const auto none = [&](LONG status) {
      return NumberWithStatus{request_.noValue, status & ~LONG{eStatusByPolicy | eStatusClamped}};
    };
    if (hasNone() || isAsked()) return none(hasNone() ? status_ : status_ | eStatusNotSet);
    const MaskedExceptions masked;
    const double least = std::min(from, to), most = std::max(from, to);
    LONG status = status_ | place(least) | place(most);
    if (!isTemperature(from) || !isTemperature(to)) return none((status & ~LONG{eStatusInside}) | eStatusNotANumber);
    if (!asFormGoesOn() && !(range_.tMin <= range_.tMax)) return none(status | eStatusNotSet);
    if (status & (eStatusBelow | eStatusAbove)) {
      status = (status & ~LONG{eStatusInside}) | eStatusByPolicy;
      // What a policy lacks at an end it lacks between.
      for (const double end : {least, most})
        if (const Numbers there = at(end, false); !asFormGoesOn() && !isNumber(there.value))
          return none(status | there.status);
    }
    constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();
    double sum = 0.0;
    const auto addEquation = [&](double begin, double end) {
      if (begin <= end) sum += integral(*property_, integrand, begin, end, request_.P).value_or(kNoValue);
    };
    const auto addContinuation = [&](double begin, double end) {
      const auto integrated = [&](double T) {
        const double value = at(T, false).value;
        if (isEmpty(value)) return kNoValue;
        return integrand == Integrand::YOverT ? value / T : value;
      };
      if (begin < end) sum += quadrature(integrated, begin, end).value_or(kNoValue);
    };
    if (!equation_) {
      addContinuation(least, most);
    } else if (asFormGoesOn()) {
      addEquation(least, most);
    } else {
      // The continuation has a kink at the critical temperature.
      const double critical = std::max(range_.tMax, request_.criticalTemperature);
      addContinuation(least, std::min(most, range_.tMin));
      addEquation(std::max(least, range_.tMin), std::min(most, range_.tMax));
      addContinuation(std::max(least, range_.tMax), std::min(most, critical));
      addContinuation(std::max(least, critical), most);
    }
    if (!isNumber(sum)) return none(status | eStatusNoConvergence);
    return {from <= to ? sum : -sum, status};
  }

  LONG status() const { return status_; }

 private:
  // Those at one temperature; the empty value for what there is not. They are judged where they are put.
  struct Numbers {
    double value, first, second;
    LONG status;
  };
  static Numbers none(LONG status) { return {kEmptyValue, kEmptyValue, kEmptyValue, status}; }

  bool asFormGoesOn() const { return request_.policy == eAsFormGoesOn; }
  bool hasNone() const { return status_ & (eStatusNotSet | eStatusNoSuchProperty); }
  // Whether something external computes it, of which no more is known than its values.
  bool isAsked() const { return !equation_ && !isConstant_; }

  LONG place(double T) const {
    const LONG beside = (T < low_ ? eStatusBelow : 0) | (T > high_ ? eStatusAbove : 0);
    return T >= low_ && T <= high_ ? LONG{eStatusInside} : beside;
  }

  // What is at a temperature, with what the property itself has there from `own(T)`.
  template <class Own>
  Numbers at(double T, Own&& own) {
    if (hasNone()) return {asFormGoesOn() && equation_ ? valueOf(T) : kEmptyValue, kEmptyValue, kEmptyValue, status_};
    const LONG status = status_ | place(T);
    const bool inside = status & eStatusInside;
    Numbers numbers = none(status | eStatusNotANumber);
    if (asFormGoesOn()) {
      numbers = own(T);
      numbers.status |= inside ? status : status | eStatusByPolicy;
    } else if (inside && isTemperature(T)) {
      numbers = own(std::clamp(T, range_.tMin, range_.tMax));
      numbers.status |= status;
    } else if (isTemperature(T)) {
      numbers = beyond(T, status);
    }
    return numbers;
  }
  Numbers at(double T, bool derivatives) {
    return at(T, [&](double within) { return own(within, derivatives); });
  }

  double valueOf(double T) const {
    double value = kEmptyValue;
    LONG dependencies = 0;
    if (component_)
      component_->GetProperty(T, request_.P, eNoExtrapolation, &dependencies, &value);
    else
      property_->GetValue(T, request_.P, eNoExtrapolation, &dependencies, &value);
    return value;
  }

  // What the property itself has, in its range or not.
  Numbers own(double T, bool derivatives) const {
    if (isAsked()) return {valueOf(T), kEmptyValue, kEmptyValue, derivatives ? LONG{eStatusNotSet} : 0};
    if (!equation_ || !derivatives) return {valueOf(T), 0.0, 0.0, 0};
    Derivatives found{};
    if (!derivativesOf(*equation_, T, request_.P, found)) return {valueOf(T), kEmptyValue, kEmptyValue, 0};
    return {found.value, found.first, found.second, 0};
  }

  // How the policy goes on.
  Numbers beyond(double T, LONG status) {
    const bool below = status & eStatusBelow;
    if (request_.policy == eNotSetOutside || isAsked() || !(range_.tMin <= range_.tMax))
      return none(status | eStatusNotSet);
    const double bound = below ? range_.tMin : range_.tMax;
    const Numbers limit = limitAt(bound, below);
    if (!isTemperature(bound) || !isNumber(limit.value)) return none(status | eStatusNotANumber);
    status |= eStatusByPolicy;
    const Numbers held{limit.value, 0.0, 0.0, status | eStatusClamped};
    if (request_.policy == eValueAtLimit || !equation_) return held;
    if (request_.policy == eTangentLnYOverInverseT) {
      if (!(limit.value > 0.0)) return none(status | eStatusNotANumber);
      // ln Y = ln Yb + s (1/T - 1/Tb), s = d ln Y/d(1/T) = -Tb^2 Y'/Y.
      const double s = -bound * (bound * limit.first) / limit.value;
      const double value = limit.value * math::exp(s * (1.0 / T - 1.0 / bound));
      const double slope = -s / (T * T);  // of ln Y
      return {value, value * slope, value * slope * (slope - 2.0 / T), status};
    }
    if (request_.policy == eTangentAtLimit || below) return tangent(limit, T - bound, status);
    const double critical = request_.criticalTemperature;
    // At the end of a curve that has a critical temperature of its own the slope is unbounded.
    if (!(critical > bound) || !std::isfinite(limit.first)) return held;
    if (T <= critical) return tangent(limit, T - bound, status);
    const Numbers there = tangent(limit, critical - bound, status);
    return isEmpty(there.value) ? there : Numbers{there.value, 0.0, 0.0, status | eStatusClamped};
  }

  // A tangent to the critical temperature is of a property that does not change its sign.
  Numbers tangent(const Numbers& limit, double distance, LONG status) const {
    const Numbers numbers{limit.value + limit.first * distance, limit.first, 0.0, status};
    const bool changesSign = request_.policy == eTangentToCritical && numbers.value * limit.value < 0.0;
    return changesSign ? none(status | eStatusNotSet) : numbers;
  }

  const Numbers& limitAt(double bound, bool below) {
    std::optional<Numbers>& limit = below ? lower_ : upper_;
    if (!limit) limit = own(bound, true);
    return *limit;
  }

  // Judges what is at a temperature, and puts it where the caller wants it.
  bool put(Numbers numbers, const EvaluationResults& results) const {
    const auto isMissing = [](const double* wanted, double number) { return wanted && !isNumber(number); };
    if (isEmpty(numbers.value) && !(numbers.status & kNoNumber)) numbers.status |= eStatusNotSet;
    if (!std::isfinite(numbers.value) || isMissing(results.firstDerivatives, numbers.first) ||
        isMissing(results.secondDerivatives, numbers.second))
      if (!(numbers.status & kNoNumber)) numbers.status |= eStatusNotANumber;
    if (numbers.status & kNoNumber) numbers.status &= ~LONG{eStatusByPolicy | eStatusClamped};
    const auto settled = [&](double number) {
      return isEmpty(number) || !(asFormGoesOn() || std::isfinite(number)) ? request_.noValue : number;
    };
    if (results.values) *results.values = settled(numbers.value);
    if (results.firstDerivatives) *results.firstDerivatives = settled(numbers.first);
    if (results.secondDerivatives) *results.secondDerivatives = settled(numbers.second);
    if (results.statuses) *results.statuses = numbers.status;
    return !(numbers.status & kNoNumber);
  }

  // Values and first derivatives of an equation at no more than kMostTogether temperatures.
  bool putTogether(std::span<const double> temperatures, const EvaluationResults& results) {
    const BlockFunctions& functions = *supportedBlockFunctions().back();
    const std::size_t count = temperatures.size();
    double given[kMostTogether], clamped[kMostTogether], ownValues[kMostTogether], ownSlopes[kMostTogether];
    double* const values = results.values ? results.values : ownValues;
    double* const slopes = results.firstDerivatives ? results.firstDerivatives : ownSlopes;
    // Results may be written over the temperatures.
    const bool within = (asFormGoesOn() && !results.statuses) ||
                        functions.allWithin(temperatures.data(), count, range_.tMin, range_.tMax);
    if (!within) {
      std::ranges::copy(temperatures, given);
      std::ranges::transform(temperatures, clamped, [&](double T) {
        return asFormGoesOn() ? T : place(T) & eStatusInside ? std::clamp(T, range_.tMin, range_.tMax) : range_.tMin;
      });
      temperatures = {clamped, count};
    }
    const auto areFrom = [&](double least, const double* numbers) {
      return functions.allWithin(numbers, count, least, kMostNumber);
    };
    bool areNumbers;
    if (results.firstDerivatives) {
      evaluateWithSlopes(*property_, temperatures, request_.P, values, slopes, functions);
      areNumbers = areFrom(kAboveEmpty, values);
    } else {
      areNumbers = qs::evaluate(*property_, temperatures, request_.P, values, functions);
    }
    areNumbers = areNumbers ||
                 (areFrom(-kMostNumber, values) && std::find(values, values + count, kEmptyValue) == values + count);
    if (within && areNumbers && (!results.firstDerivatives || areFrom(-kMostNumber, slopes))) {
      if (results.statuses) std::fill_n(results.statuses, count, status_ | eStatusInside);
      return true;
    }
    bool all = true;
    for (std::size_t i = 0; i < count; ++i) {
      const auto own = [&](double) { return Numbers{values[i], results.firstDerivatives ? slopes[i] : 0.0, 0.0, 0}; };
      all &= put(at(within ? range_.tMin : given[i], own), results.from(i));
    }
    return all;
  }

  const EvaluationRequest& request_;
  const CQSAbstractProp* property_;
  const Equation* equation_ = nullptr;
  bool isConstant_ = false;
  ComPtr<IPCProperty> component_;  // it may delete the property while it is asked
  PropertyRange range_;
  double low_, high_;  // of the temperatures that count as within the range
  LONG status_;        // at every temperature
  std::optional<Numbers> lower_, upper_;
};

}  // namespace

std::optional<PropertyRange> rangeOf(const CQSAbstractProp& property) {
  PropertyRange range;
  if (property.GetTRange(&range.tMin, &range.tMax) == S_OK && property.GetPRange(&range.pMin, &range.pMax) == S_OK)
    return range;
  LONG dependencies = 0, type = VoidProp;
  double value = kEmptyValue;
  property.GetType(&type);
  if (type == PointProp) property.GetValue(0.0, 0.0, eNoExtrapolation, &dependencies, &value);
  return isEmpty(value) ? std::nullopt : std::optional(PropertyRange());
}

bool evaluate(const CQSAbstractProp* property, LONG missing, std::span<const double> temperatures,
              const EvaluationRequest& request, const EvaluationResults& results) {
  return Evaluation(property, missing, request).evaluate(temperatures, results);
}

bool evaluateWithin(std::span<const CQSAbstractProp* const> properties, double T, double P, double* values,
                    LONG* statuses) {
  const std::size_t count = properties.size();
  evaluateAlike(properties, T, P, values);
  const bool all = supportedBlockFunctions().back()->allWithin(values, count, kAboveEmpty, kMostNumber);
  if (all)
    std::fill_n(statuses, count, LONG{eStatusInside});
  else
    std::transform(values, values + count, statuses,
                   [](double value) { return isNumber(value) ? LONG{eStatusInside} : 0; });
  return all;
}

NumberWithStatus integrate(const CQSAbstractProp* property, LONG missing, Integrand integrand, double from, double to,
                           const EvaluationRequest& request) {
  // Within the range, which most calls ask for, no policy matters.
  const Equation* equation = property ? property->equation() : nullptr;
  if (equation && from > 0.0 && to > 0.0 && equation->isWithin(from, request.P) && equation->isWithin(to, request.P))
    if (const auto sum = integral(*property, integrand, from, to, request.P); sum && isNumber(*sum))
      return {*sum, eStatusInside};
  return Evaluation(property, missing, request).integrate(integrand, from, to);
}

NumberWithStatus findTemperature(const CQSAbstractProp* property, LONG missing, double value, double P,
                                 double noValue) {
  const Equation* equation = property ? property->equation() : nullptr;
  if (!equation || !hasValues(*equation) || isEmpty(value)) {
    const LONG status = Evaluation(property, missing, {P, eNotSetOutside}).status();
    return {noValue, status & eStatusNoSuchProperty ? status : status | eStatusNotSet};
  }
  const LONG status = equation->pMin <= P && P <= equation->pMax ? 0 : LONG{eStatusOutsidePressure};
  const Solution solution = temperatureAt(*property, value, P);
  if (solution.crossings == 0) return {noValue, status | eStatusNoConvergence};
  const LONG several = solution.crossings > 1 ? eStatusSeveralSolutions : 0;
  return {solution.temperature, status | eStatusInside | several};
}

}  // namespace qs
