// Identity, reference counts, aggregation and class objects, on the classes that hosts create.
#include "com/coclass.h"

#include <vector>

#include "tests/support/component_test.h"

namespace qs::test {
namespace {

template <class... Interfaces>
std::vector<const IID*> idsOf() {
  return {&__uuidof(Interfaces)...};
}
const auto kCompoundInterfaces =
    idsOf<IBasicCompound, ICompoundReferenceStateProperties, ICompoundPR, ICompoundCOSTALD, ICompoundCavett,
          ICompoundViscosity, ICompoundChaoSeader, ICompoundChienNull, ICompoundVirial, ICompoundPRSV, ICompoundSRK,
          ICompoundWilson, ICompoundID, ICompoundFamily, ICompoundUNIFAC1, ICompoundUNIQUAC1, ICompoundSolidProperties,
          ICompoundIDPut, ICompoundFamilyPut, ICompoundUNIFAC1Put, ICompoundInitFromVelDB, ICompoundProp,
          ICompoundPropPut, ICompoundCopy, XMLParserClient, IXMLStore, IUserProperty, ICompEqnXYShape, IXMLStoreEx>();

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

class ClassObjects : public ComponentTest {
 protected:
  static ComPtr<IClassFactory> compoundFactory() {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(containers().getClassObject(__uuidof(::COQSCompound), __uuidof(IClassFactory),
                                          reinterpret_cast<void**>(factory.out())),
              S_OK);
    return factory;
  }
};

TEST_F(Identity, EveryInterfaceAnswersFromEveryOther) {
  ASSERT_EQ(kCompoundInterfaces.size(), 29u);
  const auto compound = create<IUnknown>(__uuidof(::COQSCompound));
  for (std::size_t from = 0; from < kCompoundInterfaces.size(); ++from) {
    const auto start = queryFor(compound.get(), *kCompoundInterfaces[from]);
    ASSERT_TRUE(start) << from;
    EXPECT_EQ(queryFor(start.get(), __uuidof(IUnknown)).get(), compound.get()) << from;
    for (const IID* to : kCompoundInterfaces)
      EXPECT_EQ(queryFor(start.get(), *to).get(), queryFor(compound.get(), *to).get()) << from;
  }
  EXPECT_EQ(queryFor(compound.get(), __uuidof(IDispatch)).get(),
            queryFor(compound.get(), __uuidof(IBasicCompound)).get())
      << "the default interface";

  void* out = &out;
  EXPECT_EQ(compound->QueryInterface(__uuidof(IRealArrayDisp), &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
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
  for (const IID* iid : kCompoundInterfaces) {
    const auto face = queryFor(&outer, *iid);
    ASSERT_TRUE(face);
    EXPECT_EQ(queryFor(face.get(), __uuidof(IUnknown)).get(), &outer);
  }
  void* out = &out;
  EXPECT_EQ(CoCreateInstance(__uuidof(::COQSCompound), &outer, CLSCTX_INPROC_SERVER, __uuidof(IBasicCompound), &out),
            CLASS_E_NOAGGREGATION);
  EXPECT_EQ(out, nullptr);
}

TEST_F(ClassObjects, AnswerForTheirClassAlone) {
  ComPtr<IClassFactory> none;
  const auto get = [&](REFCLSID clsid, REFIID iid) {
    return containers().getClassObject(clsid, iid, reinterpret_cast<void**>(none.out()));
  };
  EXPECT_EQ(get(__uuidof(::COQSCompound), __uuidof(IDispatch)), E_NOINTERFACE);
  EXPECT_EQ(get(__uuidof(::HostRealArray), __uuidof(IClassFactory)), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(get(__uuidof(IBasicCompound), __uuidof(IClassFactory)), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(containers().getClassObject(__uuidof(::COQSCompound), __uuidof(IClassFactory), nullptr), E_POINTER);
}

TEST_F(ClassObjects, FailedCreationLeavesNothing) {
  const auto factory = compoundFactory();
  void* out = &out;
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IClassFactory), &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr), E_POINTER);
  EXPECT_EQ(containers().canUnloadNow(), S_OK);
}

TEST_F(ClassObjects, ObjectsAndServerLocksKeepTheModuleLoaded) {
  const auto factory = compoundFactory();
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
