// What evaluating members are given, and what they return to scripts.
#pragma once

#include <cstdint>
#include <type_traits>

#include "automation/script_values.h"
#include "com/host_arrays.h"
#include "com/variant.h"
#include "interfaces/interfaces.h"
#include "platform/text.h"
#include "props/evaluation.h"

namespace qs {

inline WideView viewOf(LPCOLESTR name) { return name ? WideView(name) : WideView(); }

// Whether results may be written to `out`, which may be null, while arguments from `in` on are read: the buffers are
// one and the same or have nothing in common.
template <class In, class Out>
bool mayReplace(const In* in, std::size_t count, const Out* out, std::size_t outCount) {
  const auto inBegin = reinterpret_cast<std::uintptr_t>(in), outBegin = reinterpret_cast<std::uintptr_t>(out);
  return !out || (std::is_same_v<In, Out> && inBegin == outBegin) || outBegin >= inBegin + count * sizeof(In) ||
         inBegin >= outBegin + outCount * sizeof(Out);
}

constexpr bool isPolicy(tagLimitPolicyEnum policy) { return policy >= eAsFormGoesOn && policy <= eRecommended; }

// Arguments of EvaluateArray and EvaluateCompoundArray: E_INVALIDARG for numbers that are out of their ranges and for
// results that overlap what is read, E_POINTER where no result is wanted or no temperature is given.
inline HRESULT checkEvaluation(LONG rows, LONG count, const double* temperatures, tagLimitPolicyEnum policy,
                               const EvaluationResults& results) {
  if (rows < 0 || count < 0) return because(E_INVALIDARG, {"the number of temperatures or of compounds is negative"});
  if (!isPolicy(policy)) return because(E_INVALIDARG, {"there is no policy ", policy});
  if (!results.values && !results.firstDerivatives && !results.secondDerivatives && !results.statuses)
    return because(E_POINTER, {"no result is wanted"});
  if (!temperatures && count > 0) return because(E_POINTER, {"there are no temperatures"});
  const auto read = static_cast<std::size_t>(count);
  const std::size_t written = static_cast<std::size_t>(rows) * read;
  const auto overlaps = [&](const auto* out) { return !mayReplace(temperatures, read, out, written); };
  return written > 1 && (overlaps(results.values) || overlaps(results.firstDerivatives) ||
                         overlaps(results.secondDerivatives) || overlaps(results.statuses))
             ? because(E_INVALIDARG, {"the results overlap what is read"})
             : S_OK;
}

// Results of which one quantity goes to `numbers`. Throws CQSCOMError(E_INVALIDARG) for another quantity.
inline EvaluationResults resultsOf(tagQuantityEnum quantity, double* numbers, LONG* statuses) {
  switch (quantity) {
    case eValue:
      return {numbers, nullptr, nullptr, statuses};
    case eFirstDerivative:
      return {nullptr, numbers, nullptr, statuses};
    case eSecondDerivative:
      return {nullptr, nullptr, numbers, statuses};
  }
  fail(E_INVALIDARG, {"there is no quantity ", quantity});
}

// Numbers and statuses as a member for scripts returns them; both or none.
inline void give(std::span<const double> numbers, std::span<const LONG> statuses, bool isArray, std::size_t rows,
                 VARIANT* numbersOut, VARIANT* statusesOut) {
  Variant first = Variant::adopt(variantOf(numbers, isArray, rows));
  *statusesOut = variantOf(statuses, isArray, rows);
  *numbersOut = first.release();
}

}  // namespace qs
