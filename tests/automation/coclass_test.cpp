// Identity, reference counts, aggregation and class objects, on the classes that hosts create.
#include "automation/coclass.h"

#include <array>

#include "tests/support/component_test.h"

namespace qs::test {
namespace {

template <class... Interfaces>
const std::array<const IID*, sizeof...(Interfaces)> kIds{&__uuidof(Interfaces)...};
const auto& kCompoundInterfaces =
    kIds<IBasicCompound, ICompoundReferenceStateProperties, ICompoundPR, ICompoundCOSTALD, ICompoundCavett,
         ICompoundViscosity, ICompoundChaoSeader, ICompoundChienNull, ICompoundVirial, ICompoundPRSV, ICompoundSRK,
         ICompoundWilson, ICompoundID, ICompoundFamily, ICompoundUNIFAC1, ICompoundUNIQUAC1, ICompoundSolidProperties,
         ICompoundIDPut, ICompoundFamilyPut, ICompoundUNIFAC1Put, ICompoundInitFromVelDB, ICompoundProp,
         ICompoundPropPut, ICompoundCopy, XMLParserClient, IXMLStore, IUserProperty, ICompEqnXYShape, IXMLStoreEx>;

ComPtr<IUnknown> queryFor(IUnknown* object, REFIID iid) {
  ComPtr<IUnknown> found;
  object->QueryInterface(iid, found.outAny());
  return found;
}

// An object that contains another and hands out its interfaces as its own.
class Outer final : public IUnknown {
 public:
  explicit Outer(REFCLSID clsid) {
    EXPECT_EQ(CoCreateInstance(clsid, this, CLSCTX_INPROC_SERVER, __uuidof(IUnknown), inner.outAny()), S_OK);
  }
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

using CoclassTest = ComponentTest;

TEST_F(CoclassTest, EveryInterfaceIsReachedFromEveryOther) {
  const auto compound = create<IUnknown>(__uuidof(::COQSCompound));
  for (std::size_t from = 0; from < kCompoundInterfaces.size(); ++from) {
    const auto start = queryFor(compound.get(), *kCompoundInterfaces[from]);
    ASSERT_TRUE(start) << from;
    EXPECT_EQ(queryFor(start.get(), __uuidof(IUnknown)).get(), compound.get()) << from;
    for (const IID* to : kCompoundInterfaces)
      EXPECT_EQ(queryFor(start.get(), *to).get(), queryFor(compound.get(), *to).get()) << from;
    EXPECT_EQ(referencesOf(start.get()), 2u) << "one count for all";
  }
  EXPECT_EQ(queryFor(compound.get(), __uuidof(IDispatch)).get(),
            queryFor(compound.get(), __uuidof(IBasicCompound)).get())
      << "the default interface";

  void* out = &out;
  EXPECT_EQ(compound->QueryInterface(__uuidof(IRealArrayDisp), &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(compound->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
}

TEST_F(CoclassTest, AnInnerObjectIsPartOfItsOuter) {
  for (const CLSID* clsid : {&__uuidof(::COQSCompound), &__uuidof(::COQSPhase), &__uuidof(::COQSPhaseCollection),
                             &__uuidof(::HostRealMatrix)}) {
    Outer outer(*clsid);
    EXPECT_EQ(outer.references, 1u) << "creation keeps no reference to the outer object";
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
  Outer outer(__uuidof(::COQSCompound));
  for (const IID* iid : kCompoundInterfaces)
    EXPECT_EQ(queryFor(queryFor(&outer, *iid).get(), __uuidof(IUnknown)).get(), &outer);
}

TEST_F(CoclassTest, ClassObjectsCreateLockOrRefuse) {
  const CLSID& clsid = __uuidof(::COQSCompound);
  ComPtr<IClassFactory> factory;
  void** const out = factory.outAny();
  EXPECT_EQ(containers().getClassObject(clsid, __uuidof(IDispatch), out), E_NOINTERFACE);
  EXPECT_EQ(containers().getClassObject(__uuidof(::HostRealArray), __uuidof(IClassFactory), out),
            CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(containers().getClassObject(clsid, __uuidof(IClassFactory), nullptr), E_POINTER);

  ASSERT_EQ(containers().getClassObject(clsid, __uuidof(IClassFactory), out), S_OK);
  void* made = &made;
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IClassFactory), &made), E_NOINTERFACE);
  EXPECT_EQ(made, nullptr);
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(IUnknown), nullptr), E_POINTER);
  Outer outer(__uuidof(::HostRealMatrix));
  EXPECT_EQ(factory->CreateInstance(&outer, __uuidof(IBasicCompound), &made), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(containers().canUnloadNow(), S_OK) << "a class object alone keeps no module";
  {
    const auto compound = create<IBasicCompound>(clsid);
    EXPECT_EQ(containers().canUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
  }
  EXPECT_EQ(containers().canUnloadNow(), S_FALSE);
  EXPECT_EQ(factory->LockServer(FALSE), S_OK);
}

}  // namespace
}  // namespace qs::test
