// Identity, reference counts, aggregation and class objects, on the classes that hosts create.
#include "com/coclass.h"

#include <array>

#include "tests/support/component_test.h"

namespace qs::test {
namespace {

struct InterfaceName {
  const IID* iid;
  const char* name;
};
#define QS_INTERFACE(name) \
  { &__uuidof(name), #name }
const InterfaceName kCompoundInterfaces[] = {
    QS_INTERFACE(IBasicCompound),
    QS_INTERFACE(ICompoundReferenceStateProperties),
    QS_INTERFACE(ICompoundPR),
    QS_INTERFACE(ICompoundCOSTALD),
    QS_INTERFACE(ICompoundCavett),
    QS_INTERFACE(ICompoundViscosity),
    QS_INTERFACE(ICompoundChaoSeader),
    QS_INTERFACE(ICompoundChienNull),
    QS_INTERFACE(ICompoundVirial),
    QS_INTERFACE(ICompoundPRSV),
    QS_INTERFACE(ICompoundSRK),
    QS_INTERFACE(ICompoundWilson),
    QS_INTERFACE(ICompoundID),
    QS_INTERFACE(ICompoundFamily),
    QS_INTERFACE(ICompoundUNIFAC1),
    QS_INTERFACE(ICompoundUNIQUAC1),
    QS_INTERFACE(ICompoundSolidProperties),
    QS_INTERFACE(ICompoundIDPut),
    QS_INTERFACE(ICompoundFamilyPut),
    QS_INTERFACE(ICompoundUNIFAC1Put),
    QS_INTERFACE(ICompoundInitFromVelDB),
    QS_INTERFACE(ICompoundProp),
    QS_INTERFACE(ICompoundPropPut),
    QS_INTERFACE(ICompoundCopy),
    QS_INTERFACE(XMLParserClient),
    QS_INTERFACE(IXMLStore),
    QS_INTERFACE(IUserProperty),
    QS_INTERFACE(ICompEqnXYShape),
};
#undef QS_INTERFACE
static_assert(std::size(kCompoundInterfaces) == 28);

ComPtr<IUnknown> queryFor(IUnknown* object, REFIID iid) {
  ComPtr<IUnknown> found;
  object->QueryInterface(iid, reinterpret_cast<void**>(found.out()));
  return found;
}

// An object that contains others and hands out their interfaces as its own.
class Outer final : public IUnknown {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    if (!IsEqualGUID(iid, __uuidof(IUnknown))) return inner->QueryInterface(iid, out);
    *out = static_cast<IUnknown*>(this);
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return ++references; }
  STDMETHODIMP_(ULONG) Release() noexcept override { return --references; }

  ComPtr<IUnknown> inner;
  ULONG references = 1;
};

using Aggregation = ComponentTest;
using Identity = ComponentTest;
using ClassObjects = ComponentTest;

TEST_F(Identity, EveryInterfaceAnswersFromEveryOther) {
  const auto compound = create<IUnknown>(__uuidof(::COQSCompound));
  for (const InterfaceName& from : kCompoundInterfaces) {
    const auto start = queryFor(compound.get(), *from.iid);
    ASSERT_TRUE(start) << from.name;
    EXPECT_EQ(queryFor(start.get(), __uuidof(IUnknown)).get(), compound.get()) << from.name;
    for (const InterfaceName& to : kCompoundInterfaces)
      EXPECT_EQ(queryFor(start.get(), *to.iid).get(), queryFor(compound.get(), *to.iid).get())
          << from.name << " to " << to.name;
  }
}

TEST_F(Identity, DispatchIsTheDefaultInterface) {
  const auto compound = create<IUnknown>(__uuidof(::COQSCompound));
  EXPECT_EQ(queryFor(compound.get(), __uuidof(IDispatch)).get(),
            queryFor(compound.get(), __uuidof(IBasicCompound)).get());
}

TEST_F(Identity, RefusesWhatItDoesNotHave) {
  const auto compound = create<IUnknown>(__uuidof(::COQSCompound));
  void* out = &out;
  EXPECT_EQ(compound->QueryInterface(__uuidof(IClassFactory), &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(compound->QueryInterface(__uuidof(IRealArrayDisp), &out), E_NOINTERFACE);
  EXPECT_EQ(compound->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
}

TEST_F(Identity, AllInterfacesShareOneCount) {
  const auto compound = create<IBasicCompound>(__uuidof(::COQSCompound));
  const auto id = query<ICompoundID>(compound);
  const auto copy = query<ICompoundCopy>(compound);
  EXPECT_EQ(referencesOf(compound.get()), 3u);
  EXPECT_EQ(referencesOf(id.get()), 3u);
  EXPECT_EQ(id->AddRef(), 4u);
  EXPECT_EQ(copy->Release(), 3u);
}

TEST_F(Aggregation, AnInnerObjectIsPartOfItsOuter) {
  for (const CLSID* clsid : {&__uuidof(::COQSCompound), &__uuidof(::COQSPhase), &__uuidof(::COQSPhaseCollection),
                             &__uuidof(::HostRealMatrix)}) {
    Outer outer;
    ASSERT_EQ(CoCreateInstance(*clsid, &outer, CLSCTX_INPROC_SERVER, __uuidof(IUnknown),
                               reinterpret_cast<void**>(outer.inner.out())),
              S_OK);
    EXPECT_EQ(outer.references, 1u) << "creation keeps no reference to the outer object";
    EXPECT_EQ(referencesOf(outer.inner.get()), 1u);
    {
      const auto face = ComPtr<IDispatch>::from(&outer);
      ASSERT_TRUE(face);
      EXPECT_EQ(outer.references, 2u);
      EXPECT_EQ(referencesOf(outer.inner.get()), 1u) << "interfaces count on the outer object";
      EXPECT_EQ(queryFor(face.get(), __uuidof(IUnknown)).get(), &outer);
      EXPECT_NE(queryFor(outer.inner.get(), __uuidof(IUnknown)).get(), &outer);
    }
    EXPECT_EQ(outer.references, 1u);
  }
}

TEST_F(Aggregation, AllInterfacesAnswerThroughTheOuter) {
  Outer outer;
  ASSERT_EQ(CoCreateInstance(__uuidof(::COQSCompound), &outer, CLSCTX_INPROC_SERVER, __uuidof(IUnknown),
                             reinterpret_cast<void**>(outer.inner.out())),
            S_OK);
  for (const InterfaceName& entry : kCompoundInterfaces) {
    const auto face = queryFor(&outer, *entry.iid);
    ASSERT_TRUE(face) << entry.name;
    EXPECT_EQ(queryFor(face.get(), __uuidof(IUnknown)).get(), &outer) << entry.name;
  }
}

TEST_F(Aggregation, AnAggregateIsCreatedByIUnknownOnly) {
  Outer outer;
  void* out = &out;
  EXPECT_EQ(CoCreateInstance(__uuidof(::COQSCompound), &outer, CLSCTX_INPROC_SERVER, __uuidof(IBasicCompound), &out),
            CLASS_E_NOAGGREGATION);
  EXPECT_EQ(out, nullptr);
}

TEST_F(ClassObjects, AnswerForTheirClassAlone) {
  ComPtr<IClassFactory> factory;
  const auto get = [&](REFCLSID clsid, REFIID iid) {
    return containers().getClassObject(clsid, iid, reinterpret_cast<void**>(factory.out()));
  };
  EXPECT_EQ(get(__uuidof(::COQSCompound), __uuidof(IClassFactory)), S_OK);
  EXPECT_EQ(get(__uuidof(::COQSCompound), __uuidof(IDispatch)), E_NOINTERFACE);
  EXPECT_EQ(get(__uuidof(::HostRealArray), __uuidof(IClassFactory)), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(get(__uuidof(IBasicCompound), __uuidof(IClassFactory)), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(containers().getClassObject(__uuidof(::COQSCompound), __uuidof(IClassFactory), nullptr), E_POINTER);
}

TEST_F(ClassObjects, FailedCreationLeavesNothing) {
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(containers().getClassObject(__uuidof(::COQSCompound), __uuidof(IClassFactory),
                                        reinterpret_cast<void**>(factory.out())),
            S_OK);
  void* out = &out;
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IClassFactory), &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr), E_POINTER);
  EXPECT_EQ(containers().canUnloadNow(), S_OK);
}

TEST_F(ClassObjects, ObjectsAndServerLocksKeepTheModuleLoaded) {
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(containers().getClassObject(__uuidof(::COQSCompound), __uuidof(IClassFactory),
                                        reinterpret_cast<void**>(factory.out())),
            S_OK);
  EXPECT_EQ(containers().canUnloadNow(), S_OK) << "a class object alone does not";
  {
    const auto compound = create<IBasicCompound>(__uuidof(::COQSCompound));
    EXPECT_EQ(containers().canUnloadNow(), S_FALSE);
    Outer outer;
    factory->CreateInstance(&outer, __uuidof(IUnknown), reinterpret_cast<void**>(outer.inner.out()));
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
  }
  EXPECT_EQ(containers().canUnloadNow(), S_FALSE);
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
}

}  // namespace
}  // namespace qs::test
