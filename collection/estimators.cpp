// The registry of estimators, and estimating properties through them.
#include "collection/collection.h"
#include "collection/compound_filler.h"
#include "props/property.h"

namespace qs {

HRESULT COQSCompoundCollection::EstimateProperty(INT index, BSTR property, BSTR estimator, BYTE useEstimator) noexcept {
  if (!property) return report(S_FALSE, {"the name of the property is null"});
  if (isView())
    return forward(&IPureEstimatorHandler::EstimateProperty, inParent(index), property, estimator, useEstimator);
  return guardedLookUp([&] {
    const ComPtr<IBasicCompound> compound(state_.slots.at(index));
    if (!compound) return because(S_FALSE, {"there is no compound at position ", index});
    Bstr name;
    ComPtr<IPurePropEstimator> component;
    const HRESULT chosen = state_.estimators.choose(estimator, useEstimator != 0, name, component);
    if (chosen != S_OK) return chosen;

    double value = kEmptyValue;
    const HRESULT estimated = component->Estimate(compound.get(), property, &value);
    if (estimated != S_OK) return because(component.get(), estimated, {"estimator \"", name.get(), "\", ", property});
    if (value == kEmptyValue) return because(S_FALSE, {"estimator \"", name.get(), "\" gave no value for ", property});
    const auto store = [&](IBasicCompound* target) {
      return storePoint(target, property, value, {name.get(), component.get()});
    };
    return isCopyable(compound.get()) ? changeAsCopy(compound.get(), store) : store(compound.get());
  });
}

HRESULT COQSCompoundCollection::SetDefaultEstimator(BSTR name, BSTR className, BSTR path,
                                                    IDispatch* estimator) noexcept {
  if (isView()) return forward(&IPureEstimatorHandler::SetDefaultEstimator, name, className, path, estimator);
  return guardedLookUp([&] { return state_.estimators.addDefault(name, className, path, estimator); });
}

HRESULT COQSCompoundCollection::AddEstimator(BSTR name, BSTR className, BSTR path, IDispatch* estimator) noexcept {
  if (isView()) return forward(&IPureEstimatorHandler::AddEstimator, name, className, path, estimator);
  return guardedLookUp([&] { return state_.estimators.add(name, className, path, estimator); });
}

HRESULT COQSCompoundCollection::RemoveEstimator(BSTR name) noexcept {
  if (isView()) return forward(&IPureEstimatorHandler::RemoveEstimator, name);
  return guardedLookUp([&] { return state_.estimators.remove(name); });
}

HRESULT COQSCompoundCollection::GetEstimator(BSTR name, IDispatch** estimator) noexcept {
  if (!estimator) return report(E_POINTER);
  if (isView()) return forward(&IPureEstimatorHandler::GetEstimator, name, estimator);
  return guardedLookUp([&] { return state_.estimators.get(name, estimator); });
}

HRESULT COQSCompoundCollection::GetDefaultEstimator(BSTR* name, IDispatch** estimator) noexcept {
  if (!name || !estimator) return report(E_POINTER);
  if (isView()) return forward(&IPureEstimatorHandler::GetDefaultEstimator, name, estimator);
  return guardedLookUp([&] { return state_.estimators.getDefault(name, estimator); });
}

HRESULT COQSCompoundCollection::GetNumOfEstimators(INT* number) noexcept {
  if (!number) return report(E_POINTER);
  *number = state_.estimators.count();
  return S_OK;
}

HRESULT COQSCompoundCollection::GetEstimatorI(INT index, BSTR* name, IDispatch** estimator) noexcept {
  if (!name || !estimator) return report(E_POINTER);
  if (isView()) return forward(&IPureEstimatorHandler::GetEstimatorI, index, name, estimator);
  return guardedLookUp([&] { return state_.estimators.getAt(index, name, estimator); });
}

HRESULT COQSCompoundCollection::SetAsDefaultEstimator(BSTR name) noexcept {
  if (isView()) return forward(&IPureEstimatorHandler::SetAsDefaultEstimator, name);
  return guardedLookUp([&] { return state_.estimators.makeDefault(name); });
}

}  // namespace qs
