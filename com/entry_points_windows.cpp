// Registration, and the module's own file and lifetime. Compiled into each module.
#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/error.h"
#include "com/module.h"
#include "com/module_file.h"
#include "com/registrar.h"

namespace qs {
namespace {

HMODULE self = nullptr;

void registerModule() {
  for (const ClassObject& object : moduleClasses()) registerClass(object.entry());
  if (!moduleRegistersTypeLibrary) return;

  WideString path = moduleFile();
  ComPtr<ITypeLib> library;
  check(LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.out()));
  check(RegisterTypeLib(library.get(), path.data(), nullptr));
}

void unregisterModule() {
  for (const ClassObject& object : moduleClasses()) unregisterClass(object.entry());
  if (!moduleRegistersTypeLibrary) return;

  ComPtr<ITypeLib> library;
  check(LoadTypeLibEx(moduleFile().c_str(), REGKIND_NONE, library.out()));
  TLIBATTR* attributes = nullptr;
  check(library->GetLibAttr(&attributes));
  const TLIBATTR id = *attributes;
  library->ReleaseTLibAttr(attributes);
  check(UnRegisterTypeLib(id.guid, id.wMajorVerNum, id.wMinorVerNum, id.lcid, id.syskind));
}

}  // namespace

HMODULE moduleHandle() noexcept { return self; }

WideString moduleFile() {
  WideString path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0) throw CQSCOMError(HRESULT_FROM_WIN32(GetLastError()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(2 * path.size());
  }
}

}  // namespace qs

STDAPI DllRegisterServer() {
  return qs::guarded([] {
    qs::registerModule();
    return S_OK;
  });
}

STDAPI DllUnregisterServer() {
  return qs::guarded([] {
    qs::unregisterModule();
    return S_OK;
  });
}

// `regsvr32 /n /i:user` installs for the current user alone, without any rights; /i without a text for all users.
STDAPI DllInstall(BOOL install, PCWSTR target) {
  return qs::guarded([&] {
    const qs::WideView who = target ? target : L"";
    if (!who.empty() && who != L"user") return E_INVALIDARG;
    const qs::ClassesRoot root(who.empty() ? qs::ClassesRoot::Owner::AllUsers : qs::ClassesRoot::Owner::CurrentUser);
    return install ? DllRegisterServer() : DllUnregisterServer();
  });
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* processEnds) {
  if (reason == DLL_PROCESS_ATTACH) {
    qs::self = instance;
    DisableThreadLibraryCalls(instance);
  } else if (reason == DLL_PROCESS_DETACH && !processEnds) {
    qs::releaseKept();
  }
  return TRUE;
}
