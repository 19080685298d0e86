#include "hostkit/module_loader.h"

#include <stdexcept>

#include "hostkit/shared_library.h"

namespace qs::host {

LoadedModule::LoadedModule(const std::string& name) {
  void* library = openSharedLibrary(name);
  if (!library) throw std::runtime_error("cannot load module " + name);
  const auto find = [&](auto& function, const char* entry) {
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(findEntry(library, entry));
    if (!function) throw std::runtime_error("module " + name + " lacks " + entry);
  };
  find(getClassObject_, "DllGetClassObject");
  find(canUnloadNow_, "DllCanUnloadNow");
}

LoadedModule::~LoadedModule() {
  for (const DWORD cookie : cookies_) CoRevokeClassObject(cookie);
}

HRESULT LoadedModule::registerClass(REFCLSID clsid) {
  ComPtr<IUnknown> classObject;
  const HRESULT found = getClassObject(clsid, __uuidof(IUnknown), classObject.outAny());
  if (FAILED(found)) return found;
  DWORD cookie = 0;
  const HRESULT hr = CoRegisterClassObject(clsid, classObject.get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie);
  if (SUCCEEDED(hr)) cookies_.push_back(cookie);
  return hr;
}

}  // namespace qs::host
