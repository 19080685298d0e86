// Composition and fugacities of a phase.
#include "com/host_arrays.h"
#include "com/query.h"
#include "phase/phase.h"

namespace qs {
namespace {

// An array with a reference of its own. S_FALSE when it has elements and the first is not set.
HRESULT giveArray(const ComPtr<IRealArrayDisp>& stored, IRealArrayDisp** array,
                  const char* member = __builtin_FUNCTION()) noexcept {
  if (!array) return report(E_POINTER, {}, member);
  *array = nullptr;
  if (!stored) return S_FALSE;
  const auto give = [&] {
    LONG size = 0;
    double first = kEmptyValue;
    checkSize(stored.get(), stored->get_Size(&size));
    if (size >= 1) checkElement(stored.get(), stored->get_IthValue(0, &first), 0);
    *array = ComPtr(stored).release();
    return size >= 1 && first == kEmptyValue ? S_FALSE : S_OK;
  };
  return guarded(give, member);
}

// An array without a reference. S_FALSE when its first element is not set or cannot be read.
HRESULT lendArray(const ComPtr<IRealArrayDisp>& stored, IRealArrayDisp** lent,
                  const char* member = __builtin_FUNCTION()) noexcept {
  if (!lent) return report(E_POINTER, {}, member);
  *lent = stored.get();
  if (!stored) return S_FALSE;
  double first = kEmptyValue;
  const HRESULT got = contained([&] { return stored->get_IthValue(0, &first); });
  return FAILED(got) || first == kEmptyValue ? S_FALSE : S_OK;
}

// Copies a host's array into one of the phase. Throws CQSCOMError.
HRESULT copy(IRealArrayDisp* from, IRealArrayDisp* to) {
  const HRESULT copied = to->Copy(from);
  check(to, copied, {"the phase's array"});
  return copied;
}

HRESULT takeValues(const ComPtr<IRealArrayDisp>& stored, IRealArrayDisp* array,
                   const char* member = __builtin_FUNCTION()) noexcept {
  if (!array) return S_FALSE;
  const auto take = [&] { return stored ? copy(array, stored.get()) : noArray(); };
  return guarded(take, member);
}

}  // namespace

HRESULT COQSPhase::get_MolarComposition(IDispatch** array) noexcept {
  if (!array) return report(E_POINTER);
  *array = ComPtr<IDispatch>(state_.MolarComposition.get()).release();
  return *array ? S_OK : report(noArray());
}

HRESULT COQSPhase::put_MolarComposition(IDispatch* array) noexcept {
  return guarded([&] {
    const HRESULT put = put_MolarCompositionDisp(required<IRealArrayDisp>(array, "composition").get());
    return FAILED(put) ? passOn(put) : put;
  });
}

HRESULT COQSPhase::get_MolarCompositionDisp(IRealArrayDisp** lent) noexcept {
  if (!lent) return report(E_POINTER);
  *lent = state_.MolarComposition.get();
  return *lent ? S_OK : report(noArray());
}

HRESULT COQSPhase::put_MolarCompositionDisp(IRealArrayDisp* array) noexcept {
  return guarded([&] {
    if (!array) return because(E_FAIL, {"the composition is null"});
    if (!state_.MolarComposition) return noArray();
    LONG size = 0;
    checkSize(array, array->get_Size(&size));
    copy(array, state_.MolarComposition.get());
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
