// No late binding where there is no type library.
#include "automation/dispatch.h"

namespace qs {

HRESULT TypeInfo::get(ITypeInfo**) noexcept { return E_NOTIMPL; }

HRESULT typeInfoCount(TypeInfo&, UINT* count) noexcept {
  if (!count) return E_POINTER;
  *count = 0;
  return S_OK;
}

HRESULT typeInfoOf(TypeInfo&, UINT, ITypeInfo** info) noexcept {
  if (!info) return E_POINTER;
  *info = nullptr;
  return E_NOTIMPL;
}

SharedNames::~SharedNames() {}
HRESULT SharedNames::idsOfNames(const NameQuery&) noexcept { return E_NOTIMPL; }
HRESULT SharedNames::find(const Invocation&, Target&) noexcept { return E_NOTIMPL; }
HRESULT SharedNames::invoke(const Target&, IDispatch*, const Invocation&) noexcept { return E_NOTIMPL; }

}  // namespace qs
