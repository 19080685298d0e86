// The entry points that every module has on every target, and its class objects. Compiled into each module.
#include "com/module.h"

namespace qs {

std::atomic<LONG> moduleLocks = 0;

HRESULT ClassObject::QueryInterface(REFIID iid, void** out) noexcept {
  if (!out) return E_POINTER;
  const bool known = IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IClassFactory));
  *out = known ? static_cast<IClassFactory*>(this) : nullptr;
  return known ? S_OK : E_NOINTERFACE;
}

HRESULT ClassObject::CreateInstance(IUnknown* outer, REFIID iid, void** out) noexcept {
  return entry_.create(outer, iid, out);
}

HRESULT ClassObject::LockServer(BOOL lock) noexcept {
  moduleLocks += lock ? 1 : -1;
  return S_OK;
}

}  // namespace qs

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  for (qs::ClassObject& object : qs::moduleClasses())
    if (IsEqualGUID(clsid, *object.entry().clsid)) return object.QueryInterface(iid, out);
  return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() { return qs::moduleLocks == 0 ? S_OK : S_FALSE; }
