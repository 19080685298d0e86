// UNIFAC groups.
#include "com/component.h"
#include "com/host_arrays.h"
#include "compound/compound.h"

namespace qs {
namespace {

// Fills one array of the compound and the number of groups from the host's array. A failure of the array ends
// it.
HRESULT fill(INT groupCount, IIntegerArrayDisp* source, INT& count, std::vector<LONG>& field) {
  if (groupCount < 0) return because(S_FALSE, {"the number of groups is ", groupCount});
  field.clear();
  count = groupCount;
  if (groupCount == 0) return S_OK;
  if (!source) return because(S_FALSE, {"there is no array of the groups"});

  LONG size = 0;
  check(source, source->get_Size(&size), {"the array of groups"});
  if (size != groupCount) return because(S_FALSE, {"the array has ", size, " elements for ", groupCount, " groups"});
  field = elementsOf<LONG>(source, size);
  return S_OK;
}

}  // namespace

HRESULT COQSCompound::get_UNIFAC1NumberOfGroups(INT* value) noexcept {
  if (!value) return report(E_POINTER);
  *value = content_.identity.groupCount;
  return content_.identity.groupCount == kEmptyInteger ? S_FALSE : S_OK;
}

HRESULT COQSCompound::put_UNIFAC1NumberOfGroups(INT value) noexcept {
  content_.identity.groupCount = value;
  return S_OK;
}

HRESULT COQSCompound::get_UNIFAC1Groups(IDispatch** types, IDispatch** counts) noexcept {
  if (!types || !counts) return report(E_POINTER);
  return guarded([&] {
    // Copies: the host makes the arrays, and may put other groups meanwhile.
    const INT groupCount = content_.identity.groupCount;
    const std::vector<LONG> groupTypes = content_.identity.groupTypes;
    const std::vector<LONG> groupCounts = content_.identity.groupCounts;
    auto typeArray = newIntegerArray(groupTypes);
    auto countArray = newIntegerArray(groupCounts);
    *types = typeArray.release();
    *counts = countArray.release();
    return groupCount == kEmptyInteger ? S_FALSE : S_OK;
  });
}

HRESULT COQSCompound::put_UNIFAC1Groups(INT groupCount, IDispatch* types, IDispatch* counts) noexcept {
  return guardedLookUp([&] {
    INT count = kEmptyInteger;
    std::vector<LONG> newTypes;
    std::vector<LONG> newCounts;
    const HRESULT typesFilled = fill(groupCount, ComPtr<IIntegerArrayDisp>::from(types).get(), count, newTypes);
    if (typesFilled != S_OK) return typesFilled;
    const HRESULT countsFilled = fill(groupCount, ComPtr<IIntegerArrayDisp>::from(counts).get(), count, newCounts);
    if (countsFilled != S_OK) return countsFilled;
    content_.identity.groupCount = count;
    content_.identity.groupTypes = std::move(newTypes);
    content_.identity.groupCounts = std::move(newCounts);
    return S_OK;
  });
}

HRESULT COQSCompound::put_VELUNIFACNoGr(INT groupCount, IIntegerArrayDisp* counts) noexcept {
  return guardedLookUp(
      [&] { return fill(groupCount, counts, content_.identity.groupCount, content_.identity.groupCounts); });
}

HRESULT COQSCompound::put_VELUNIFACSubGr(INT groupCount, IIntegerArrayDisp* types) noexcept {
  return guardedLookUp(
      [&] { return fill(groupCount, types, content_.identity.groupCount, content_.identity.groupTypes); });
}

}  // namespace qs
