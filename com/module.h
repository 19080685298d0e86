// The creatable classes of a module, and what the module does when it is unloaded.
#pragma once

#include <span>

#include "com/module_lock.h"
#include "platform/text.h"

namespace qs {

// A creatable class.
struct ClassEntry {
  const CLSID* clsid;
  int script;        // number of its registry script among the module's REGISTRY resources
  WideView program;  // version-independent ProgID; the versioned one ends in .1
  WideView description;
  // Makes an instance, aggregated when `outer` is not null.
  HRESULT (*create)(IUnknown* outer, REFIID iid, void** out) noexcept;
};

// The class object of one class: a class factory of static storage, which lives as long as the module and keeps it
// loaded through LockServer only.
class ClassObject final : public IClassFactory {
 public:
  constexpr explicit ClassObject(const ClassEntry& entry) : entry_(entry) {}
  const ClassEntry& entry() const { return entry_; }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override;
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return 2; }
  STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) noexcept override;
  STDMETHODIMP LockServer(BOOL lock) noexcept override;

 private:
  ClassEntry entry_;
};

// The module's class objects in their order of registration, and whether it registers the type library that it carries.
// Each module defines both.
std::span<ClassObject> moduleClasses();
extern const bool moduleRegistersTypeLibrary;

// Releases what the module keeps from its first use on; called when it is unloaded from a process that goes on (Windows
// only). automation/ defines it.
void releaseKept() noexcept;

}  // namespace qs
