// There is no registry here: a host loads the modules by their names and asks them for their class objects.
#include <dlfcn.h>

#include <map>

#include "com/com_ptr.h"
#include "tools/doctor.h"

namespace qs::tools {
namespace {

using GetClassObject = HRESULT (*)(REFCLSID, REFIID, void**);

// Loads a module as hosts do, and reports from where; null on failure.
GetClassObject load(const std::string& module, Report& report) {
  const std::string file = "lib" + module + ".so";
  void* library = dlopen(file.c_str(), RTLD_NOW);
  void* entry = library ? dlsym(library, "DllGetClassObject") : nullptr;
  Dl_info place{};
  if (entry && dladdr(entry, &place)) {
    report.tell(file + " is " + place.dli_fname);
    return reinterpret_cast<GetClassObject>(entry);
  }
  const char* reason = dlerror();
  report.complain(file + " cannot be loaded: " + (reason ? reason : "unknown reason"),
                  "Put " + file +
                      " and the libraries that it needs beside the host, into ../lib beside its folder, or "
                      "into a folder that LD_LIBRARY_PATH names.");
  return nullptr;
}

// Makes the class creatable until this process ends, as a host does, and creates an object.
bool canBeCreated(GetClassObject getClassObject, REFCLSID clsid) {
  ComPtr<IUnknown> classObject, object;
  DWORD cookie = 0;
  return SUCCEEDED(getClassObject(clsid, __uuidof(IUnknown), classObject.outAny())) &&
         SUCCEEDED(
             CoRegisterClassObject(clsid, classObject.get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie)) &&
         SUCCEEDED(object.create(clsid));
}

}  // namespace

Report examineInstallation() {
  Report report;
  std::map<std::string, GetClassObject> modules;
  for (const NeededClass& needed : kNeededClasses) {
    if (!modules.contains(needed.module)) modules[needed.module] = load(needed.module, report);
    const GetClassObject getClassObject = modules[needed.module];
    if (getClassObject && canBeCreated(getClassObject, *needed.clsid))
      report.tell(std::string(needed.name) + ": can be created");
    else
      report.complain(std::string(needed.name) + ": cannot be created",
                      std::string("Take lib") + needed.module +
                          ".so from the same package as this program; a host may "
                          "bring array classes of its own.");
  }
  return report;
}

}  // namespace qs::tools
