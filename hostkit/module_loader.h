// Loads a component module from the program's folder and makes its classes creatable in this process without
// installation, for C++ hosts, tests and benchmarks.
#pragma once

#include <string>
#include <vector>

#include "com/com_ptr.h"
#include "platform/com_types.h"

namespace qs::host {

class LoadedModule {
 public:
  // `name` is the module's, without prefix and ending, as "qscontainers". Throws std::runtime_error when the file
  // or one of its entry points is missing. The file stays loaded until the process ends.
  explicit LoadedModule(const std::string& name);
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;
  // Ends the registrations of registerClass.
  ~LoadedModule();

  HRESULT getClassObject(REFCLSID clsid, REFIID iid, void** out) const { return getClassObject_(clsid, iid, out); }
  HRESULT canUnloadNow() const { return canUnloadNow_(); }

  // From now on CoGetClassObject and CoCreateInstance find the class in this process.
  HRESULT registerClass(REFCLSID clsid);

 private:
  HRESULT(STDAPICALLTYPE* getClassObject_)(REFCLSID, REFIID, void**);
  HRESULT(STDAPICALLTYPE* canUnloadNow_)();
  std::vector<DWORD> cookies_;
};

// A new instance of a class that is registered in this process or installed; empty on failure.
template <class I>
ComPtr<I> createInstance(REFCLSID clsid) {
  ComPtr<I> instance;
  instance.create(clsid);
  return instance;
}

}  // namespace qs::host
