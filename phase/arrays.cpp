// Composition and fugacities of a phase.
#include "com/query.h"
#include "phase/phase.h"

namespace qs {
namespace {

// An array with a reference of its own. S_FALSE when it has elements and the first is not set.
HRESULT giveArray(const ComPtr<IRealArrayDisp>& stored, IRealArrayDisp** array) noexcept {
  if (!array) return E_POINTER;
  *array = nullptr;
  if (!stored) return S_FALSE;
  return guarded([&] {
    LONG size = 0;
    double first = kEmptyValue;
    check(stored->get_Size(&size));
    if (size >= 1) check(stored->get_IthValue(0, &first));
    *array = ComPtr(stored).release();
    return size >= 1 && first == kEmptyValue ? S_FALSE : S_OK;
  });
}

// An array without a reference. S_FALSE when its first element is not set or cannot be read.
HRESULT lendArray(const ComPtr<IRealArrayDisp>& stored, IRealArrayDisp** lent) noexcept {
  if (!lent) return E_POINTER;
  *lent = stored.get();
  if (!stored) return S_FALSE;
  double first = kEmptyValue;
  const HRESULT got = guarded([&] { return stored->get_IthValue(0, &first); });
  return FAILED(got) || first == kEmptyValue ? S_FALSE : S_OK;
}

HRESULT takeValues(const ComPtr<IRealArrayDisp>& stored, IRealArrayDisp* array) noexcept {
  if (!array) return S_FALSE;
  return stored ? guarded([&] { return stored->Copy(array); }) : E_FAIL;
}

}  // namespace

HRESULT COQSPhase::get_MolarComposition(IDispatch** array) noexcept {
  if (!array) return E_POINTER;
  *array = ComPtr<IDispatch>(state_.MolarComposition.get()).release();
  return *array ? S_OK : E_FAIL;
}

HRESULT COQSPhase::put_MolarComposition(IDispatch* array) noexcept {
  return guarded([&] { return put_MolarCompositionDisp(required<IRealArrayDisp>(array).get()); });
}

HRESULT COQSPhase::get_MolarCompositionDisp(IRealArrayDisp** lent) noexcept {
  if (!lent) return E_POINTER;
  *lent = state_.MolarComposition.get();
  return *lent ? S_OK : E_FAIL;
}

HRESULT COQSPhase::put_MolarCompositionDisp(IRealArrayDisp* array) noexcept {
  return guarded([&] {
    if (!array || !state_.MolarComposition) return E_FAIL;
    LONG size = 0;
    check(array->get_Size(&size));
    check(state_.MolarComposition->Copy(array));
    compoundCount_ = size;
    return S_OK;
  });
}

HRESULT COQSPhase::get_LnFugacity(IRealArrayDisp** array) noexcept { return giveArray(state_.LnFugacity, array); }

HRESULT COQSPhase::put_LnFugacity(IRealArrayDisp* array) noexcept { return takeValues(state_.LnFugacity, array); }

HRESULT COQSPhase::get_LnFugacityCoeff(IRealArrayDisp** array) noexcept {
  return giveArray(state_.LnFugacityCoeff, array);
}

HRESULT COQSPhase::put_LnFugacityCoeff(IRealArrayDisp* array) noexcept {
  return takeValues(state_.LnFugacityCoeff, array);
}

HRESULT COQSPhase::GetLnFugacity(IRealArrayDisp** lent) noexcept { return lendArray(state_.LnFugacity, lent); }

HRESULT COQSPhase::GetLnFugacityCoeff(IRealArrayDisp** lent) noexcept {
  return lendArray(state_.LnFugacityCoeff, lent);
}

}  // namespace qs
