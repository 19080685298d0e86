// Loaders and estimators of a host that have every kind of property, fail, claim or call back. The rest is in
// components.calls.
#include <algorithm>
#include <functional>
#include <sstream>

#include "tests/support/claiming_array.h"
#include "tests/support/collections.h"

namespace qs::test {
namespace {

// A component behind a property: 2 T.
struct DoubledTemperature : HostProperty {
  STDMETHODIMP GetProperty(double T, double, tagExtrapolationEnum, LONG* dependencies,
                           double* value) noexcept override {
    *dependencies = 1;
    *value = 2.0 * T;
    return S_OK;
  }
};

// What the loader below has: a property of each kind.
constexpr double kNone = -32767.0;
struct Property {
  WideView name;
  tagPropTypeEnum type;
  double number = kNone;
  const OLECHAR* text = nullptr;
};
constexpr Property kProperties[] = {
    {OLESTR("TC"), PointProp, 513.9},
    {OLESTR("MW"), PointProp},  // which it does not have after all
    {OLESTR("Own"), PointProp, 7.0},
    {OLESTR("Family"), PointPropLong, 4.0},
    {OLESTR("PPDSID"), PointPropLong, 120.0},
    {OLESTR("CMAID"), PointPropLong, 1e10},  // too large for one
    {OLESTR("Name"), PointPropBSTR, kNone, OLESTR("Ethanol")},
    {OLESTR("CASN"), PointPropBSTR, kNone, OLESTR("64-17-5")},
    {OLESTR("DDBID"), PointPropBSTR, kNone, OLESTR("11")},
    {OLESTR("Remark"), PointPropBSTR, kNone, OLESTR("none")},
    {OLESTR("VP"), EquationProp},
    {OLESTR("HVP"), COMProp},
    {OLESTR("VELUNIFACSubGr"), MultiPointPropLong},
    {OLESTR("VELUNIFACNoGr"), MultiPointPropLong},
    {OLESTR("UNIQUAC1Parameters"), MultiPointPropReal},
    {OLESTR("Texts"), MultiPointPropBSTR},
    {OLESTR("Void"), VoidProp},
};

// A loader that knows one compound, as CASN 64-17-5.
class FakeLoader : public Stub<ILoad> {
 public:
  int calls = 0;
  int failingCall = 0;  // counted from 1
  std::function<void()> onCall;
  WideString path;
  IDispatch* groups = nullptr;  // lent, in place of its own
  bool endless = false;         // one property again and again
  DoubledTemperature component;

  STDMETHODIMP Set_Path(BSTR newPath) noexcept override {
    if (fails()) return E_BOUNDS;
    path = WideString(viewOf(newPath));
    return S_OK;
  }
  STDMETHODIMP Get_Prop(BSTR key, BSTR id, INT index, BSTR* name, tagPropTypeEnum* type) noexcept override {
    if (fails()) return E_BOUNDS;
    if (endless) index = 0;
    if (!knows(key, id) || static_cast<std::size_t>(index) >= std::size(kProperties)) return S_FALSE;
    *name = Bstr(kProperties[index].name).release();
    *type = kProperties[index].type;
    return S_OK;
  }
  STDMETHODIMP Get_PropType(BSTR key, BSTR id, BSTR name, tagPropTypeEnum* type) noexcept override {
    if (fails()) return E_BOUNDS;
    const Property* property = find(name);
    if (!knows(key, id) || !property) return S_FALSE;
    *type = property->type;
    return S_OK;
  }
  STDMETHODIMP Get_PropSingleVal(BSTR, BSTR, BSTR name, double* number, BSTR* text) noexcept override {
    if (fails()) return E_BOUNDS;
    const Property* property = find(name);
    if (property->number == kNone && !property->text) return S_FALSE;
    *number = property->number;
    if (property->text) *text = Bstr(property->text).release();
    return S_OK;
  }
  // exp(A + B / T), with the temperature halved first: xnorm 2 in COMxr.
  STDMETHODIMP Get_PropEquation(BSTR, BSTR, BSTR, tagEquationShapeEnum* shape, double* tMin, double* tMax, double* pMin,
                                double* pMax, IRealArrayDisp** coefficients, tagXYShapeEnum* xShape,
                                tagXYShapeEnum* yShape, double* xNorm, double* yNorm, double* xPow, double* yPow,
                                double* a, double* b) noexcept override {
    if (fails()) return E_BOUNDS;
    *shape = PropCurveDIPPR101;
    *tMin = *pMin = 1.0;
    *tMax = *pMax = 1000.0;
    *coefficients = CompoundTest::reals({10.0, -1500.0, 0.0, 0.0, 1.0}).release();
    *xShape = COMxr;
    *yShape = COMx;
    *xNorm = 2.0;
    *yNorm = *xPow = *yPow = 1.0;
    *a = *b = kNone;
    return S_OK;
  }
  STDMETHODIMP Get_PropCOM(BSTR, BSTR, BSTR, BSTR* className, IPCProperty** property) noexcept override {
    if (fails()) return E_BOUNDS;
    *className = Bstr(OLESTR("Doubled")).release();
    component.AddRef();
    *property = &component;
    return S_OK;
  }
  STDMETHODIMP Get_PropMultiVal(BSTR, BSTR, BSTR name, IDispatch** values) noexcept override {
    if (fails()) return E_BOUNDS;
    if (viewOf(name) == OLESTR("UNIQUAC1Parameters"))
      *values = CompoundTest::reals({2.1, 1.9}).release();
    else if (groups)
      *values = ComPtr(groups).release();
    else
      *values =
          (viewOf(name) == OLESTR("VELUNIFACNoGr") ? CompoundTest::integers({1, 2}) : CompoundTest::integers({14, 15}))
              .release();
    return S_OK;
  }
  STDMETHODIMP Get_AllSynonyms(BSTR key, BSTR id, INT index, BSTR* synonym) noexcept override {
    if (fails()) return E_BOUNDS;
    if (!knows(key, id) || index > 1) return S_FALSE;
    *synonym = Bstr(index == 0 ? OLESTR("Spirit") : OLESTR("Alcohol")).release();
    return S_OK;
  }

 private:
  bool fails() {
    // A copy: what is called may replace it.
    if (const auto deed = onCall) deed();
    return ++calls == failingCall;
  }
  static const Property* find(BSTR name) {
    const auto* found = std::ranges::find(kProperties, viewOf(name), &Property::name);
    return found == std::end(kProperties) ? nullptr : found;
  }
  static bool knows(BSTR key, BSTR id) { return viewOf(key) == OLESTR("CASN") && viewOf(id) == OLESTR("64-17-5"); }
};

// Estimates every property as a number of its own choice.
struct FakeEstimator : Stub<IPurePropEstimator> {
  STDMETHODIMP Set_Path(BSTR) noexcept override { return S_FALSE; }
  STDMETHODIMP Estimate(IDispatch*, BSTR, double* out) noexcept override {
    *out = value;
    return result;
  }
  HRESULT result = S_OK;
  double value = 512.0;
};

class CollectionLoadingTest : public CollectionTest {
 protected:
  void SetUp() override {
    CollectionTest::SetUp();
    query<ICompoundIDPut>(compound_)->put_CASN(cas_.get());
    query<ICompoundPropPut>(compound_)->SetPointProperty(Bstr(OLESTR("MW")).get(), 1, 46.0);
    query<ICompoundPropPut>(compound_)->SetPointProperty(Bstr(OLESTR("TC")).get(), 1, 1.0);
    ASSERT_EQ(collection_->AddCompound(compound_.get()), S_OK);
    ASSERT_EQ(loaders_->SetDefaultLoader(name_.get(), name_.get(), Bstr(OLESTR("folder")).get(), &loader_), S_OK);
  }
  // All that the loader may change, as one text: properties with their loaders at 300 K, then the identity.
  static std::string stateOf(const ComPtr<IBasicCompound>& compound) {
    std::ostringstream state;
    for (const OLECHAR* name :
         {OLESTR("TC"), OLESTR("Own"), OLESTR("VP"), OLESTR("HVP"), OLESTR("UNIQUACR"), OLESTR("UNIQUACQ")}) {
      BSTR loader = nullptr;
      query<ICompoundPropPut>(compound)->GetPropertyLoader(Bstr(name).get(), &loader);
      state << narrow(name) << ' ' << propertyOf(compound, name).value << ' ' << narrow(taken(loader)) << ", ";
    }
    return state.str() + identityOf(compound);
  }
  static constexpr const char* kLoaded =
      "TC 513.9 Fake, Own 7 Fake, VP 1 Fake, HVP 600 Fake, UNIQUACR 2.1 Fake, UNIQUACQ 1.9 Fake, "
      "Ethanol (null) (null) 64-17-5 ; -32767 -32767 -32767 11 120 -32767; 4 0; Spirit Alcohol; 14 15; 1 2";

  // The index that the compound's XML form tells.
  static std::string indexOf(const ComPtr<IBasicCompound>& compound) {
    const std::string text = narrow(got(compound, &IXMLStore::StoreAsXML)), mark = "CompIdx = \"";
    const std::size_t start = text.find(mark) + mark.size();
    return text.substr(start, text.find('"', start) - start);
  }

  static ComPtr<IBasicCompound> at(const ComPtr<ICompoundCollection>& collection, INT index) {
    ComPtr<IBasicCompound> compound;
    EXPECT_EQ(collection->GetBasicCompound(index, compound.out()), S_OK);
    return compound;
  }
  HRESULT loadOne(INT index = 0) { return loaders_->LoadOneCompound(index, name_.get(), casField_.get(), nullptr, 1); }

  FakeLoader loader_;
  const Bstr name_{WideView(OLESTR("Fake"))}, cas_{WideView(OLESTR("64-17-5"))}, casField_{WideView(OLESTR("CASN"))};
  ComPtr<IBasicCompound> compound_ = newCompound();
  ComPtr<ICompoundCollection> collection_ = newCollection();
  ComPtr<ILoadCompoundProp> loaders_ = query<ILoadCompoundProp>(collection_);
};

TEST_F(CollectionLoadingTest, FillsOneProperty) {
  const struct {
    const OLECHAR* property;
    HRESULT result;
  } rows[] = {{OLESTR("MW"), S_FALSE},       {OLESTR("NBP"), S_FALSE},  {OLESTR("Remark"), S_FALSE},
              {OLESTR("CMAID"), S_FALSE},    {OLESTR("Void"), S_FALSE}, {OLESTR("VELUNIFACNoGr"), S_OK},
              {OLESTR("SynonymName"), S_OK}, {OLESTR("DDBID"), S_OK},   {OLESTR("Own"), S_OK}};
  for (const auto& row : rows)
    EXPECT_EQ(loaders_->LoadOneProperty(0, Bstr(row.property).get(), name_.get(), casField_.get(), nullptr, 1),
              row.result)
        << narrow(row.property);
  EXPECT_EQ(propertyOf(compound_, OLESTR("TC")).value, 1.0) << "nobody asked for it";
  EXPECT_EQ(propertyOf(compound_, OLESTR("Own")).value, 7.0);
  EXPECT_EQ(got(compound_, &ICompoundID::get_NumberOfSynonymNames), 2);
}

TEST_F(CollectionLoadingTest, FillsAllCompoundsThatWereThere) {
  loader_.onCall = [&] {
    if (countOf(collection_) < 100) collection_->AddCompound(newCompound().get());
  };
  EXPECT_EQ(loaders_->LoadAllCompounds(nullptr, casField_.get(), 0), S_OK);
  EXPECT_EQ(stateOf(compound_), kLoaded);
  EXPECT_GT(countOf(collection_), 2);
}

TEST_F(CollectionLoadingTest, ACompoundKeepsItsIndexAndANewOneHasItsPosition) {
  FakeEstimator estimator;
  const auto handler = query<IPureEstimatorHandler>(collection_);
  ASSERT_EQ(handler->AddEstimator(name_.get(), name_.get(), nullptr, &estimator), S_OK);
  ASSERT_EQ(query<ICompoundCopy>(compound_)->CopyToThis(77, compound_.get()), S_OK);
  const Bstr critical(OLESTR("TC"));
  EXPECT_EQ(loaders_->LoadOneProperty(0, critical.get(), name_.get(), casField_.get(), nullptr, 1), S_OK);
  EXPECT_EQ(loadOne(), S_OK);
  EXPECT_EQ(handler->EstimateProperty(0, critical.get(), name_.get(), 1), S_OK);
  EXPECT_EQ(indexOf(compound_), "77");
  const auto view = viewOf(collection_, {});
  for (const auto& list : {collection_, view})
    EXPECT_EQ(list->AddCompoundFromLoader(casField_.get(), cas_.get(), name_.get(), 1), S_OK);
  EXPECT_EQ(indexOf(at(collection_, 1)) + indexOf(at(view, 0)), "12");
  EXPECT_EQ(handler->RemoveEstimator(name_.get()), S_OK);
}

TEST_F(CollectionLoadingTest, ALoaderThatStatesMoreThanItHasIsAnError) {
  const std::string before = stateOf(compound_);
  const Bstr groups(OLESTR("VELUNIFACSubGr"));
  const struct {
    LONG given, stated;
    HRESULT result;
    int reads;
  } claims[] = {{5, 2147483647, E_OUTOFMEMORY, 0}, {5, 1 << 24, E_BOUNDS, 6}, {5, -1, S_FALSE, 0}, {2, 2, S_OK, 2}};
  for (const auto& claim : claims) {
    EXPECT_EQ(stateOf(compound_), before);
    ClaimingIntegers array(claim.given, claim.stated);
    loader_.groups = &array;
    EXPECT_EQ(loaders_->LoadOneProperty(0, groups.get(), name_.get(), casField_.get(), nullptr, 1), claim.result)
        << claim.stated;
    EXPECT_EQ(array.reads, claim.reads) << claim.stated;
  }
  loader_.endless = true;
  EXPECT_EQ(loadOne(), E_FAIL);
}

TEST_F(CollectionLoadingTest, AFailureOfTheLoaderLeavesTheCompoundAsItWas) {
  ASSERT_EQ(loadOne(), S_OK);
  EXPECT_EQ(stateOf(compound_), kLoaded);
  EXPECT_EQ(propertyOf(compound_, OLESTR("MW")).value, 46.0) << "what the loader lacks keeps its value";
  EXPECT_EQ(loader_.path, OLESTR("folder"));
  const int all = loader_.calls;
  ASSERT_GT(all, 25);
  const auto fresh = newCompound();
  query<ICompoundIDPut>(fresh)->put_CASN(cas_.get());
  ASSERT_EQ(collection_->put_Compound(0, fresh.get()), S_OK);
  const std::string empty = stateOf(fresh);
  for (loader_.failingCall = 1; loader_.failingCall <= all; ++loader_.failingCall) {
    SCOPED_TRACE(loader_.failingCall);
    loader_.calls = 0;
    EXPECT_EQ(loadOne(), E_BOUNDS);
    EXPECT_EQ(stateOf(fresh), empty);
    loader_.calls = 0;
    EXPECT_EQ(collection_->AddCompoundFromLoader(casField_.get(), cas_.get(), name_.get(), 1), E_BOUNDS);
    EXPECT_EQ(countOf(collection_), 1);
    EXPECT_EQ(loader_.component.references, 2u) << "the component of the first compound alone";
  }
}

TEST_F(CollectionLoadingTest, ALoaderMayCallBack) {
  const std::function<void()> deeds[] = {
      [&] { collection_->Reset(); },
      [&] { loaders_->RemoveLoader(name_.get()); },
      [&] { collection_->put_Compound(0, nullptr); },
      [&] { collection_->AddCompound(newCompound().get()); },
      [&] { loaders_->LoadAllCompounds(name_.get(), casField_.get(), 1); },
      [&] { query<ICompoundPropPut>(compound_)->ErasePropFromMap(Bstr(OLESTR("TC")).get(), 1); },
  };
  for (const auto& deed : deeds) {
    for (const int call : {1, 2, 10, 20}) {
      collection_->Reset();
      ASSERT_EQ(collection_->AddCompound(compound_.get()), S_OK);
      ASSERT_EQ(loaders_->AddLoader(name_.get(), name_.get(), Bstr(OLESTR("p")).get(), &loader_), S_OK);
      loader_.calls = 0;
      loader_.onCall = [&, call] {
        if (loader_.calls != call) return;
        loader_.onCall = {};
        deed();
      };
      EXPECT_EQ(loadOne(), S_OK) << call;
      loader_.onCall = {};
      EXPECT_EQ(stateOf(compound_), kLoaded);
    }
  }
}

// A compound of another implementation, which takes numbers and does not remember where they come from.
struct ForgetfulCompound : CompoundAround<ICompoundPropPut> {
  STDMETHODIMP SetPointProperty(BSTR, BYTE, double) noexcept override { return S_OK; }
  STDMETHODIMP SetPropertyLoader(BSTR, BSTR) noexcept override { return E_OUTOFMEMORY; }
};

TEST_F(CollectionLoadingTest, ReturnsThatTheNameOfAnEstimatorIsNotKept) {
  FakeEstimator estimator;
  ForgetfulCompound compound;
  const auto handler = query<IPureEstimatorHandler>(collection_);
  ASSERT_EQ(handler->AddEstimator(name_.get(), name_.get(), nullptr, &estimator), S_OK);
  ASSERT_EQ(collection_->put_Compound(0, &compound), S_OK);
  EXPECT_EQ(handler->EstimateProperty(0, cas_.get(), name_.get(), 1), E_OUTOFMEMORY);
  collection_->Reset();
}

TEST_F(CollectionLoadingTest, StoresWhatAnEstimatorReturns) {
  FakeEstimator estimator;
  const auto handler = query<IPureEstimatorHandler>(collection_);
  const Bstr own(OLESTR("Guess"));
  ASSERT_EQ(handler->AddEstimator(name_.get(), name_.get(), cas_.get(), &estimator), S_OK);
  const struct {
    HRESULT given;
    double value;
    HRESULT result;
  } rows[] = {{S_FALSE, 3.0, S_FALSE}, {E_BOUNDS, 3.0, E_BOUNDS}, {S_OK, kEmpty, S_FALSE}, {S_OK, 512.0, S_OK}};
  for (const auto& row : rows) {
    EXPECT_EQ(propertyOf(compound_, own.view()).result, S_FALSE);
    estimator.result = row.given;
    estimator.value = row.value;
    EXPECT_EQ(handler->EstimateProperty(0, own.get(), name_.get(), 1), row.result);
  }
  EXPECT_EQ(propertyOf(compound_, own.view()).value, 512.0);
  EXPECT_EQ(handler->RemoveEstimator(name_.get()), S_OK);
}

}  // namespace
}  // namespace qs::test
