// The fixture of tests that use the system as a host does: through its modules and interfaces.
#pragma once

#include <gtest/gtest.h>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "hostkit/module_loader.h"
#include "interfaces/interfaces.h"

namespace qs::test {

// Both modules are loaded and their classes registered in this process. Every test ends with no live object.
class ComponentTest : public testing::Test {
 protected:
  // Around the members of a derived fixture: they find the modules loaded, and are gone when live objects are counted.
  ComponentTest();
  ~ComponentTest() override;

  static host::LoadedModule& containers();
  static host::LoadedModule& hostKit();

  template <class I>
  static ComPtr<I> create(REFCLSID clsid) {
    ComPtr<I> instance = host::createInstance<I>(clsid);
    EXPECT_TRUE(instance);
    return instance;
  }
};

// An interface of an object; the test fails when the object lacks it.
template <class I, class J>
ComPtr<I> query(const ComPtr<J>& object) {
  ComPtr<I> found = ComPtr<I>::from(object.get());
  EXPECT_TRUE(found);
  return found;
}

// The references that an object has, as AddRef and Release tell them.
inline ULONG referencesOf(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

}  // namespace qs::test
