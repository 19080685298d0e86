// Chemical family and the non-condensable flag.
#include "compound/compound.h"

namespace qs {

HRESULT COQSCompound::basicFamily(tagCompoundFamilyEnum* value) noexcept {
  if (!value) return report(E_POINTER, {}, "get_Family");
  *value = static_cast<tagCompoundFamilyEnum>(content_.identity.family);
  return S_OK;
}

HRESULT COQSCompound::knownFamily(tagCompoundFamilyEnum* value) noexcept {
  const HRESULT given = basicFamily(value);
  if (FAILED(given)) return given;
  return content_.identity.family == kEmptyInteger ? S_FALSE : S_OK;
}

HRESULT COQSCompound::put_Family(tagCompoundFamilyEnum value) noexcept {
  content_.identity.family = value;
  return S_OK;
}

HRESULT COQSCompound::get_NonCondensable(VARIANT_BOOL* value) noexcept {
  if (!value) return report(E_POINTER);
  if (content_.identity.nonCondensable == kEmptyInteger) return S_FALSE;
  *value = content_.identity.nonCondensable ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT COQSCompound::GetNonCondensable(BYTE* value) noexcept {
  if (!value) return report(E_POINTER);
  if (content_.identity.nonCondensable == kEmptyInteger) return S_FALSE;
  *value = content_.identity.nonCondensable ? 1 : 0;
  return S_OK;
}

HRESULT COQSCompound::put_NonCondensable(VARIANT_BOOL value) noexcept {
  content_.identity.nonCondensable = value ? 1 : 0;
  return S_OK;
}

}  // namespace qs
