#include "tests/support/component_test.h"

#include <span>

#include "tests/support/failing_arrays.h"

namespace qs::test {
namespace {

#define QS_CLASS(name, ...) &__uuidof(::name),
constexpr const CLSID* kContainers[] = {
#include "module/classes.def"
};
constexpr const CLSID* kHostKit[] = {
#include "hostkit/classes.def"
};
#undef QS_CLASS

// The modules stay loaded and registered until the process ends.
host::LoadedModule& load(const char* name, std::span<const CLSID* const> classes) {
  auto* module = new host::LoadedModule(name);
  for (const CLSID* clsid : classes) {
    if (IsEqualGUID(*clsid, __uuidof(::HostRealArray))) continue;
    EXPECT_EQ(module->registerClass(*clsid), S_OK);
  }
  return *module;
}

}  // namespace

host::LoadedModule& ComponentTest::containers() {
  static host::LoadedModule& module = load("qscontainers", kContainers);
  return module;
}

host::LoadedModule& ComponentTest::hostKit() {
  static host::LoadedModule& module = [&]() -> host::LoadedModule& {
    host::LoadedModule& kit = load("qshostkit", kHostKit);
    const CLSID& array = __uuidof(::HostRealArray);
    ComPtr<IClassFactory> arrays;
    EXPECT_EQ(kit.getClassObject(array, __uuidof(IClassFactory), arrays.outAny()), S_OK);
    DWORD cookie = 0;
    EXPECT_EQ(CoRegisterClassObject(array, FailingArrays::classObject(std::move(arrays)), CLSCTX_INPROC_SERVER,
                                    REGCLS_MULTIPLEUSE, &cookie),
              S_OK);
    return kit;
  }();
  return module;
}

ComponentTest::ComponentTest() {
  containers();
  hostKit();
}

ComponentTest::~ComponentTest() {
  EXPECT_EQ(containers().canUnloadNow(), S_OK) << "an object of the main module is still alive";
  EXPECT_EQ(hostKit().canUnloadNow(), S_OK) << "an object of the host kit is still alive";
}

}  // namespace qs::test
