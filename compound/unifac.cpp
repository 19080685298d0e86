// UNIFAC groups.
#include "com/host_arrays.h"
#include "compound/compound.h"

namespace qs {
namespace {

// Fills one array of the compound and the number of groups from the host's array. What the array object answers ends
// it.
HRESULT fill(INT groupCount, IIntegerArrayDisp* source, INT& count, std::vector<LONG>& field) noexcept {
  return guarded([&] {
    if (groupCount < 0) return S_FALSE;
    field.clear();
    count = groupCount;
    if (groupCount == 0) return S_OK;
    if (!source) return S_FALSE;

    LONG size = 0;
    check(source->get_Size(&size));
    if (size != groupCount) return S_FALSE;
    field = elementsOf<LONG>(source, size);
    return S_OK;
  });
}

}  // namespace

HRESULT COQSCompound::get_UNIFAC1NumberOfGroups(INT* value) noexcept {
  *value = identity_.groupCount;
  return identity_.groupCount == kEmptyInteger ? S_FALSE : S_OK;
}

HRESULT COQSCompound::put_UNIFAC1NumberOfGroups(INT value) noexcept {
  identity_.groupCount = value;
  return S_OK;
}

HRESULT COQSCompound::get_UNIFAC1Groups(IDispatch** types, IDispatch** counts) noexcept {
  return guarded([&] {
    auto typeArray = newIntegerArray(identity_.groupTypes);
    auto countArray = newIntegerArray(identity_.groupCounts);
    *types = typeArray.release();
    *counts = countArray.release();
    return identity_.groupCount == kEmptyInteger ? S_FALSE : S_OK;
  });
}

HRESULT COQSCompound::put_UNIFAC1Groups(INT groupCount, IDispatch* types, IDispatch* counts) noexcept {
  return guarded([&] {
    INT count = kEmptyInteger;
    std::vector<LONG> newTypes;
    std::vector<LONG> newCounts;
    const HRESULT typesFilled = fill(groupCount, ComPtr<IIntegerArrayDisp>::from(types).get(), count, newTypes);
    if (typesFilled != S_OK) return typesFilled;
    const HRESULT countsFilled = fill(groupCount, ComPtr<IIntegerArrayDisp>::from(counts).get(), count, newCounts);
    if (countsFilled != S_OK) return countsFilled;
    identity_.groupCount = count;
    identity_.groupTypes = std::move(newTypes);
    identity_.groupCounts = std::move(newCounts);
    return S_OK;
  });
}

HRESULT COQSCompound::put_VELUNIFACNoGr(INT groupCount, IIntegerArrayDisp* counts) noexcept {
  return fill(groupCount, counts, identity_.groupCount, identity_.groupCounts);
}

HRESULT COQSCompound::put_VELUNIFACSubGr(INT groupCount, IIntegerArrayDisp* types) noexcept {
  return fill(groupCount, types, identity_.groupCount, identity_.groupTypes);
}

}  // namespace qs
