// Properties with the status of every number, for C++ and for scripts.
#include "props/evaluation.h"

#include "compound/compound.h"
#include "compound/evaluation_arguments.h"
#include "props/curve.h"

namespace qs {
namespace {

// The value and the status of an equation within its range.
HRESULT evaluateWithin(const CQSAbstractProp& equation, double T, double P, tagLimitPolicyEnum policy, double* value,
                       LONG* status) {
  double own;  // either is written where the result is S_OK
  double* const found = value ? value : &own;
  LONG dependencies;
  const HRESULT hr = equation.GetValue(T, P, eNoExtrapolation, &dependencies, found);
  if (!status && !value) return report(E_POINTER, {}, "EvaluateArray");
  if (hr != S_OK || !isNumber(*found)) [[unlikely]]
    return evaluate(&equation, 0, {&T, 1}, {P, policy}, {value, nullptr, nullptr, status}) ? S_OK : S_FALSE;
  if (status) *status = eStatusInside;
  return S_OK;
}

// What a member for scripts does with one number or many: `compute` puts results in place of the arguments.
template <class Compute>
HRESULT forScript(const VARIANT& arguments, VARIANT* numbers, VARIANT* statuses, Compute&& compute,
                  const char* member = __builtin_FUNCTION()) noexcept {
  if (!numbers || !statuses) return report(E_POINTER, {}, member);
  const auto evaluate = [&] {
    OneOrMany given = numbersFrom(arguments);
    std::vector<LONG> found(given.numbers.size());
    const HRESULT hr = compute(static_cast<LONG>(given.numbers.size()), given.numbers.data(), found.data());
    check(FAILED(hr) ? passOn(hr) : hr);
    give(given.numbers, found, given.isArray, 0, numbers, statuses);
    return hr;
  };
  return guarded(evaluate, member);
}

// Puts the number of each place where it is wanted. S_FALSE when one is not there.
template <class Compute>
HRESULT putEach(LONG count, const EvaluationResults& results, Compute&& compute) {
  HRESULT hr = S_OK;
  for (LONG i = 0; i < count; ++i) {
    const NumberWithStatus number = compute(i);
    if (results.values) results.values[i] = number.value;
    if (results.statuses) results.statuses[i] = number.status;
    if (!number.isThere()) hr = S_FALSE;
  }
  return hr;
}

}  // namespace

EvaluationRequest COQSCompound::requestFor(const std::optional<Key>& key, double P, tagLimitPolicyEnum policy) const {
  if (policy == eRecommended) policy = key ? kKeys[static_cast<std::size_t>(*key)].policy : eNotSetOutside;
  EvaluationRequest request{P, policy};
  const CQSAbstractProp* critical = content_.properties[Key::TC];
  if (policy == eTangentToCritical && critical) request.criticalTemperature = standardValue(*critical);
  return request;
}

COQSCompound::Found COQSCompound::find(const std::optional<Key>& key, WideView name) const {
  const PropertyTable::Entry entry = content_.properties.find(key, name);
  return {entry.property, entry.present ? eStatusNotSet : eStatusNoSuchProperty};
}

bool COQSCompound::evaluate(const std::optional<Key>& key, WideView name, std::span<const double> temperatures,
                            double P, tagLimitPolicyEnum policy, const EvaluationResults& results) const {
  // First, since the critical temperature may be of a component that takes the property away.
  const EvaluationRequest request = requestFor(key, P, policy);
  const Found found = find(key, name);
  return qs::evaluate(found.property, found.missing, temperatures, request, results);
}

// Most calls want one value of a key with a short name: it has a way of its own, with few instructions.
HRESULT COQSCompound::EvaluateArray(LPCOLESTR name, LONG count, const double* temperatures, double P,
                                    tagLimitPolicyEnum policy, double* values, double* firstDerivatives,
                                    double* secondDerivatives, LONG* statuses) noexcept {
  if (count == 1 && name && !firstDerivatives && !secondDerivatives && isPolicy(policy)) {
    const Key* key = findShortKey(name);
    const CQSAbstractProp* property = key ? content_.properties[*key] : nullptr;
    const Equation* equation = property ? property->equation() : nullptr;
    if (equation && temperatures && equation->isWithin(*temperatures, P))
      return evaluateWithin(*property, *temperatures, P, policy, values, statuses);
  }
  return evaluateArray(name, count, temperatures, P, policy, {values, firstDerivatives, secondDerivatives, statuses});
}

HRESULT COQSCompound::evaluateArray(LPCOLESTR name, LONG count, const double* temperatures, double P,
                                    tagLimitPolicyEnum policy, const EvaluationResults& results) const noexcept {
  if (const HRESULT hr = checkEvaluation(1, count, temperatures, policy, results); FAILED(hr))
    return report(hr, {}, "EvaluateArray");
  const auto all = [&] {
    const WideView text = viewOf(name);
    const std::span given(temperatures, static_cast<std::size_t>(count));
    return evaluate(findKey(text), text, given, P, policy, results) ? S_OK : S_FALSE;
  };
  return guarded(all, "EvaluateArray");
}

HRESULT COQSCompound::IntegrateArray(LPCOLESTR name, tagIntegrandEnum integrand, LONG count, const double* from,
                                     const double* to, double P, tagLimitPolicyEnum policy, double* integrals,
                                     LONG* statuses) noexcept {
  const EvaluationResults results{integrals, nullptr, nullptr, statuses};
  for (const double* ends : {from, to})
    if (const HRESULT hr = checkEvaluation(1, count, ends, policy, results); FAILED(hr)) return report(hr);
  if (integrand != eIntegralOfY && integrand != eIntegralOfYOverT)
    return report(E_INVALIDARG, {"there is no integrand ", integrand});
  return guarded([&] {
    const WideView text = viewOf(name);
    const auto key = findKey(text);
    const EvaluationRequest request = requestFor(key, P, policy);
    const Found found = find(key, text);
    const Integrand of = integrand == eIntegralOfY ? Integrand::Y : Integrand::YOverT;
    return putEach(count, results,
                   [&](LONG i) { return integrate(found.property, found.missing, of, from[i], to[i], request); });
  });
}

HRESULT COQSCompound::FindTemperatures(LPCOLESTR name, LONG count, const double* values, double P, double* temperatures,
                                       LONG* statuses) noexcept {
  const EvaluationResults results{temperatures, nullptr, nullptr, statuses};
  if (const HRESULT hr = checkEvaluation(1, count, values, eNotSetOutside, results); FAILED(hr)) return report(hr);
  return guarded([&] {
    const WideView text = viewOf(name);
    const Found found = find(findKey(text), text);
    return putEach(count, results,
                   [&](LONG i) { return findTemperature(found.property, found.missing, values[i], P); });
  });
}

HRESULT COQSCompound::Evaluate(BSTR name, tagQuantityEnum quantity, VARIANT temperatures, double P,
                               tagLimitPolicyEnum policy, VARIANT* statuses, VARIANT* values) noexcept {
  return forScript(temperatures, values, statuses, [&](LONG count, double* numbers, LONG* found) {
    const EvaluationResults results = resultsOf(quantity, numbers, found);
    return EvaluateArray(name, count, numbers, P, policy, results.values, results.firstDerivatives,
                         results.secondDerivatives, found);
  });
}

HRESULT COQSCompound::Integrate(BSTR name, tagIntegrandEnum integrand, double from, VARIANT to, double P,
                                tagLimitPolicyEnum policy, VARIANT* statuses, VARIANT* values) noexcept {
  return forScript(to, values, statuses, [&](LONG count, double* numbers, LONG* found) {
    const std::vector<double> begins(static_cast<std::size_t>(count), from);
    return IntegrateArray(name, integrand, count, begins.data(), numbers, P, policy, numbers, found);
  });
}

HRESULT COQSCompound::FindTemperature(BSTR name, VARIANT values, double P, VARIANT* statuses,
                                      VARIANT* temperatures) noexcept {
  return forScript(values, temperatures, statuses, [&](LONG count, double* numbers, LONG* found) {
    return FindTemperatures(name, count, numbers, P, numbers, found);
  });
}

HRESULT COQSCompound::GetRange(BSTR name, double* tMin, double* tMax, double* pMin, double* pMax) noexcept {
  if (!tMin || !tMax || !pMin || !pMax) return report(E_POINTER);
  return guarded([&] {
    const CQSAbstractProp* property = content_.properties.named(viewOf(name));
    const auto range = property ? qs::rangeOf(*property) : std::nullopt;
    const PropertyRange found = range.value_or(PropertyRange{kEmptyValue, kEmptyValue, kEmptyValue, kEmptyValue});
    *tMin = found.tMin;
    *tMax = found.tMax;
    *pMin = found.pMin;
    *pMax = found.pMax;
    return range ? S_OK : S_FALSE;
  });
}

HRESULT COQSCompound::Describe(BSTR name, tagPropTypeEnum* type, tagEquationShapeEnum* shape, BSTR* form,
                               VARIANT* coefficients, double* tMin, double* tMax, double* pMin, double* pMax,
                               VARIANT* transformations, BSTR* unit, BSTR* help, tagLimitPolicyEnum* policy) noexcept {
  if (!type || !shape || !form || !coefficients || !tMin || !tMax || !pMin || !pMax || !transformations || !unit ||
      !help || !policy)
    return report(E_POINTER);
  return guarded([&] {
    const auto key = findKey(viewOf(name));
    const CQSAbstractProp* property = content_.properties.find(key, viewOf(name)).property;
    const Equation* equation = property ? property->equation() : nullptr;
    const KeyEntry described = key ? kKeys[static_cast<std::size_t>(*key)] : KeyEntry{{}, {}, {}, eNotSetOutside};
    Bstr formText, unitText, helpText;
    Variant coefficientList, transformationList;
    if (key) {
      unitText = Bstr(described.unit);
      helpText = Bstr(described.help);
    }
    if (equation) {
      formText = Bstr(equation->form.formula);
      coefficientList = Variant::adopt(variantOf(std::span<const double>(equation->coefficients), true));
      const double listed[] = {static_cast<double>(equation->xShape),
                               static_cast<double>(equation->yShape),
                               equation->xNorm,
                               equation->yNorm,
                               equation->xPow,
                               equation->yPow,
                               equation->a,
                               equation->b};
      transformationList = Variant::adopt(variantOf(std::span<const double>(listed), true));
    }
    LONG kind = VoidProp;
    if (property) property->GetType(&kind);
    *type = static_cast<tagPropTypeEnum>(kind);
    *shape = static_cast<tagEquationShapeEnum>(equation ? equation->form.shape : LONG{PropCurveVoid});
    *form = formText.release();
    *coefficients = coefficientList.release();
    GetRange(name, tMin, tMax, pMin, pMax);
    *transformations = transformationList.release();
    *unit = unitText.release();
    *help = helpText.release();
    *policy = described.policy;
    return property ? S_OK : S_FALSE;
  });
}

}  // namespace qs
