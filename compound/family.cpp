// Chemical family and the non-condensable flag.
#include "compound/compound.h"

namespace qs {

HRESULT COQSCompound::basicFamily(tagCompoundFamilyEnum* value) noexcept {
  *value = static_cast<tagCompoundFamilyEnum>(identity_.family);
  return S_OK;
}

HRESULT COQSCompound::knownFamily(tagCompoundFamilyEnum* value) noexcept {
  basicFamily(value);
  return identity_.family == kEmptyInteger ? S_FALSE : S_OK;
}

HRESULT COQSCompound::put_Family(tagCompoundFamilyEnum value) noexcept {
  identity_.family = value;
  return S_OK;
}

HRESULT COQSCompound::get_SubFamily(BSTR* value) noexcept { return giveCopy(identity_.subFamily, value); }
HRESULT COQSCompound::put_SubFamily(BSTR value) noexcept { return takeCopy(identity_.subFamily, value); }

HRESULT COQSCompound::get_NonCondensable(VARIANT_BOOL* value) noexcept {
  if (identity_.nonCondensable == kEmptyInteger) return S_FALSE;
  *value = identity_.nonCondensable ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT COQSCompound::GetNonCondensable(BYTE* value) noexcept {
  if (identity_.nonCondensable == kEmptyInteger) return S_FALSE;
  *value = identity_.nonCondensable ? 1 : 0;
  return S_OK;
}

HRESULT COQSCompound::put_NonCondensable(VARIANT_BOOL value) noexcept {
  identity_.nonCondensable = value ? 1 : 0;
  return S_OK;
}

}  // namespace qs
