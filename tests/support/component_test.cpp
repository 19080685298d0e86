#include "tests/support/component_test.h"

#include "tests/support/failing_arrays.h"

namespace qs::test {
namespace {

// The modules stay loaded and registered until the process ends.
host::LoadedModule& load(const char* name, std::initializer_list<const CLSID*> classes) {
  auto* module = new host::LoadedModule(name);
  for (const CLSID* clsid : classes) EXPECT_EQ(module->registerClass(*clsid), S_OK);
  return *module;
}

}  // namespace

host::LoadedModule& ComponentTest::containers() {
  static host::LoadedModule& module =
      load("qscontainers", {&__uuidof(::COQSCompound), &__uuidof(::COQSCompoundCollection), &__uuidof(::COQSPhase),
                            &__uuidof(::COQSPhaseCollection)});
  return module;
}

host::LoadedModule& ComponentTest::hostKit() {
  static host::LoadedModule& module = [&]() -> host::LoadedModule& {
    host::LoadedModule& kit =
        load("qshostkit", {&__uuidof(::HostIntegerArray), &__uuidof(::HostRealMatrix), &__uuidof(::JsonLoader),
                           &__uuidof(::JobackEstimator), &__uuidof(::PropertyRegistry), &__uuidof(::PhaseActivator),
                           &__uuidof(::AttributeSet), &__uuidof(::XMLParser)});
    ComPtr<IClassFactory> arrays;
    EXPECT_EQ(
        kit.getClassObject(__uuidof(::HostRealArray), __uuidof(IClassFactory), reinterpret_cast<void**>(arrays.out())),
        S_OK);
    DWORD cookie = 0;
    EXPECT_EQ(CoRegisterClassObject(__uuidof(::HostRealArray), FailingArrays::classObject(std::move(arrays)),
                                    CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie),
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
