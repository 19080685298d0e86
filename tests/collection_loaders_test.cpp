// The registries of loaders and estimators, and what loading and estimating do to compounds.
#include <cmath>
#include <functional>
#include <map>

#include "tests/support/collections.h"
#include "tests/support/host_object.h"

namespace qs::test {
namespace {

class CollectionLoadersTest : public CollectionTest {};

// Both registries have the same methods under their own names.
struct LoaderRegistry {
  using Interface = ILoadCompoundProp;
  static constexpr auto add = &Interface::AddLoader;
  static constexpr auto addDefault = &Interface::SetDefaultLoader;
  static constexpr auto remove = &Interface::RemoveLoader;
  static constexpr auto get = &Interface::GetLoader;
  static constexpr auto getDefault = &Interface::GetDefaultLoader;
  static constexpr auto count = &Interface::GetNumOfLoaders;
  static constexpr auto getAt = &Interface::GetLoaderI;
  static constexpr auto makeDefault = &Interface::SetAsDefaultLoader;
};
struct EstimatorRegistry {
  using Interface = IPureEstimatorHandler;
  static constexpr auto add = &Interface::AddEstimator;
  static constexpr auto addDefault = &Interface::SetDefaultEstimator;
  static constexpr auto remove = &Interface::RemoveEstimator;
  static constexpr auto get = &Interface::GetEstimator;
  static constexpr auto getDefault = &Interface::GetDefaultEstimator;
  static constexpr auto count = &Interface::GetNumOfEstimators;
  static constexpr auto getAt = &Interface::GetEstimatorI;
  static constexpr auto makeDefault = &Interface::SetAsDefaultEstimator;
};

template <class R>
class CollectionRegistryTest : public CollectionTest {
 protected:
  template <class... Parameters, class... Arguments>
  HRESULT call(HRESULT (STDMETHODCALLTYPE R::Interface::*method)(Parameters...), Arguments... arguments) {
    return (query<typename R::Interface>(collection_).get()->*method)(arguments...);
  }

  INT count() {
    INT number = -1;
    EXPECT_EQ(call(R::count, &number), S_OK);
    return number;
  }

  // "name result" of the default, and "(null)" where there is no name.
  std::string defaultName() {
    BSTR name = nullptr;
    ComPtr<IDispatch> object;
    const HRESULT result = call(R::getDefault, &name, object.out());
    EXPECT_EQ(result == S_OK, static_cast<bool>(object));
    return narrow(taken(name));
  }

  // The names in their order.
  std::string names() {
    std::string list;
    for (INT i = 0;; ++i) {
      BSTR name = nullptr;
      ComPtr<IDispatch> object;
      if (call(R::getAt, i, &name, object.out()) != S_OK) return list;
      list += narrow(taken(name)) + " ";
    }
  }

  void TearDown() override {
    collection_ = {};
    EXPECT_EQ(first_.references, 1u);
    EXPECT_EQ(second_.references, 1u);
    CompoundTest::TearDown();
  }

  ComPtr<ICompoundCollection> collection_ = newCollection();
  HostObject<IDispatch> first_, second_;
  const Bstr zeta_{WideView(OLESTR("Zeta"))}, alpha_{WideView(OLESTR("Alpha"))}, class_{WideView(OLESTR("Class"))},
      path_{WideView(OLESTR("path"))};
};
using Registries = testing::Types<LoaderRegistry, EstimatorRegistry>;
TYPED_TEST_SUITE(CollectionRegistryTest, Registries);

TYPED_TEST(CollectionRegistryTest, RegistersANameOnceAndNumbersByName) {
  using R = TypeParam;
  EXPECT_EQ(this->count(), 0);
  EXPECT_EQ(this->names(), "");
  EXPECT_EQ(this->call(R::add, this->zeta_.get(), this->class_.get(), this->path_.get(), &this->first_), S_OK);
  EXPECT_EQ(this->first_.references, 2u);
  EXPECT_EQ(this->call(R::add, this->zeta_.get(), this->class_.get(), nullptr, &this->second_), S_FALSE);
  EXPECT_EQ(this->second_.references, 1u);
  EXPECT_EQ(this->count(), 1);
  EXPECT_EQ(this->call(R::add, this->alpha_.get(), this->class_.get(), nullptr, &this->second_), S_OK);
  EXPECT_EQ(this->names(), "Alpha Zeta ");
  EXPECT_EQ(this->call(R::add, nullptr, this->class_.get(), nullptr, &this->second_), S_FALSE);
  EXPECT_EQ(this->call(R::add, this->path_.get(), this->class_.get(), nullptr, nullptr), S_FALSE);
  EXPECT_EQ(this->count(), 2);
  ComPtr<IDispatch> object;
  EXPECT_EQ(this->call(R::get, this->zeta_.get(), object.out()), S_OK);
  EXPECT_EQ(object.get(), &this->first_);
  for (const BSTR unknown : {BSTR(), this->path_.get()}) {
    EXPECT_EQ(this->call(R::get, unknown, object.out()), S_FALSE);
    EXPECT_EQ(object.get(), nullptr);
  }
  for (const INT index : {-1, 2, 2147483647}) {
    BSTR name = nullptr;
    EXPECT_EQ(this->call(R::getAt, index, &name, object.out()), S_FALSE) << index;
    EXPECT_EQ(name, nullptr);
  }
  // Without a class name there is a record, but nothing behind it.
  EXPECT_EQ(this->call(R::add, this->path_.get(), nullptr, nullptr, &this->second_), S_FALSE);
  EXPECT_EQ(this->names(), "Alpha Zeta path ");
  EXPECT_EQ(this->call(R::get, this->path_.get(), object.out()), S_FALSE);
}

TYPED_TEST(CollectionRegistryTest, KnowsADefault) {
  using R = TypeParam;
  EXPECT_EQ(this->defaultName(), "(null)");
  EXPECT_EQ(this->call(R::makeDefault, this->zeta_.get()), S_FALSE);
  EXPECT_EQ(this->call(R::add, this->alpha_.get(), this->class_.get(), nullptr, &this->first_), S_OK);
  EXPECT_EQ(this->defaultName(), "(null)");
  EXPECT_EQ(this->call(R::addDefault, this->zeta_.get(), this->class_.get(), nullptr, &this->second_), S_OK);
  EXPECT_EQ(this->defaultName(), "Zeta");
  EXPECT_EQ(this->call(R::addDefault, this->alpha_.get(), this->class_.get(), nullptr, &this->second_), S_FALSE);
  EXPECT_EQ(this->defaultName(), "Zeta") << "the name was taken";
  EXPECT_EQ(this->call(R::makeDefault, this->alpha_.get()), S_OK);
  EXPECT_EQ(this->call(R::makeDefault, nullptr), S_FALSE);
  EXPECT_EQ(this->defaultName(), "Alpha");
  EXPECT_EQ(this->call(R::remove, this->zeta_.get()), S_OK);
  EXPECT_EQ(this->defaultName(), "Alpha");
  EXPECT_EQ(this->call(R::remove, this->alpha_.get()), S_OK);
  EXPECT_EQ(this->defaultName(), "(null)");
  EXPECT_EQ(this->call(R::remove, this->alpha_.get()), S_FALSE);
  EXPECT_EQ(this->call(R::remove, nullptr), S_FALSE);
  EXPECT_EQ(this->call(R::add, this->alpha_.get(), this->class_.get(), nullptr, &this->first_), S_OK);
  EXPECT_EQ(this->defaultName(), "(null)") << "not by its name alone";
}

TYPED_TEST(CollectionRegistryTest, CreatesADefaultFromItsClass) {
  using R = TypeParam;
  const Bstr array(OLESTR("{5E58EFBA-3C34-11D2-B8CA-00A0C986F9F7}"));
  const Bstr nobody(OLESTR("{00000000-1111-2222-3333-444444444444}"));
  const auto made = [&](BSTR className) {
    return this->call(R::addDefault, this->zeta_.get(), className, nullptr, nullptr);
  };
  EXPECT_EQ(made(nullptr), S_FALSE);
  EXPECT_EQ(made(nobody.get()), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(made(this->path_.get()), CO_E_CLASSSTRING);
  EXPECT_EQ(this->count(), 0);
  EXPECT_EQ(made(array.get()), S_OK);
  EXPECT_EQ(this->defaultName(), "Zeta");
  ComPtr<IDispatch> object;
  EXPECT_EQ(this->call(R::get, this->zeta_.get(), object.out()), S_OK);
  EXPECT_TRUE(ComPtr<IRealArrayDisp>::from(object.get()));
}

TYPED_TEST(CollectionRegistryTest, AViewUsesThatOfItsParent) {
  using R = TypeParam;
  const auto parent = this->collection_;
  this->collection_ = this->viewOf(this->viewOf(parent, {}), {});
  EXPECT_EQ(this->call(R::addDefault, this->zeta_.get(), this->class_.get(), nullptr, &this->first_), S_OK);
  EXPECT_EQ(this->call(R::add, this->zeta_.get(), this->class_.get(), nullptr, &this->second_), S_FALSE);
  EXPECT_EQ(this->names(), "Zeta ");
  EXPECT_EQ(this->defaultName(), "Zeta");
  EXPECT_EQ(this->count(), 0) << "its own";
  this->collection_ = parent;
  EXPECT_EQ(this->count(), 1);
  EXPECT_EQ(this->names(), "Zeta ");
  EXPECT_EQ(parent->Reset(), S_OK);
  EXPECT_EQ(this->first_.references, 1u);
  EXPECT_EQ(this->defaultName(), "(null)");
}

// A component behind a property: 2 T.
struct DoubledTemperature : HostProperty {
  STDMETHODIMP GetProperty(double T, double, tagExtrapolationEnum, LONG* dependencies,
                           double* value) noexcept override {
    *dependencies = 1;
    *value = 2.0 * T;
    return S_OK;
  }
};

// A loader that knows one compound, as CASN 64-17-5 or by its name Spirit, with a property of each kind.
class FakeLoader : public HostObject<ILoad> {
 public:
  int calls = 0;
  int failingCall = 0;  // counted from 1
  std::function<void()> onCall;
  WideString path;
  DoubledTemperature component;

  STDMETHODIMP Get_SupportedPropList(INT, BSTR*, tagPropTypeEnum*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Get_DBIdentification(BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Get_AllCompounds(BSTR, INT, BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Set_Path(BSTR newPath) noexcept override {
    path = WideString(viewOf(newPath));
    return step();
  }
  STDMETHODIMP Get_Prop(BSTR key, BSTR id, INT index, BSTR* name, tagPropTypeEnum* type) noexcept override {
    if (const HRESULT failed = step(); failed != S_OK) return failed;
    if (!knows(key, id) || static_cast<std::size_t>(index) >= std::size(kProperties)) return S_FALSE;
    *name = Bstr(kProperties[index].name).release();
    *type = kProperties[index].type;
    return S_OK;
  }
  STDMETHODIMP Get_PropType(BSTR key, BSTR id, BSTR name, tagPropTypeEnum* type) noexcept override {
    if (const HRESULT failed = step(); failed != S_OK) return failed;
    if (knows(key, id))
      for (const auto& property : kProperties) {
        if (viewOf(name) != property.name) continue;
        *type = property.type;
        return S_OK;
      }
    return S_FALSE;
  }
  STDMETHODIMP Get_PropSingleVal(BSTR, BSTR, BSTR name, double* number, BSTR* text) noexcept override {
    if (const HRESULT failed = step(); failed != S_OK) return failed;
    static const std::map<WideString, double> kNumbers = {{OLESTR("TC"), 513.9},
                                                          {OLESTR("Own"), 7.0},
                                                          {OLESTR("Family"), 4.0},
                                                          {OLESTR("PPDSID"), 120.0},
                                                          {OLESTR("CMAID"), 1e10}};
    static const std::map<WideString, WideString> kTexts = {
        {OLESTR("Name"), OLESTR("Ethanol")}, {OLESTR("DDBID"), OLESTR("11")}, {OLESTR("Remark"), OLESTR("none")}};
    const WideString wanted(viewOf(name));
    if (kNumbers.contains(wanted))
      *number = kNumbers.at(wanted);
    else if (kTexts.contains(wanted))
      *text = Bstr(kTexts.at(wanted)).release();
    else
      return S_FALSE;
    return S_OK;
  }
  // exp(A + B / T), with the temperature halved first: xnorm 2 in COMxr.
  STDMETHODIMP Get_PropEquation(BSTR, BSTR, BSTR, tagEquationShapeEnum* shape, double* tMin, double* tMax, double* pMin,
                                double* pMax, IRealArrayDisp** coefficients, tagXYShapeEnum* xShape,
                                tagXYShapeEnum* yShape, double* xNorm, double* yNorm, double* xPow, double* yPow,
                                double* a, double* b) noexcept override {
    if (const HRESULT failed = step(); failed != S_OK) return failed;
    *shape = PropCurveDIPPR101;
    *tMin = 200.0;
    *tMax = 500.0;
    *pMin = 1.0;
    *pMax = 1000.0;
    auto array = host::createInstance<IRealArrayDisp>(__uuidof(::HostRealArray));
    array->put_Size(5);
    const double values[] = {10.0, -1500.0, 0.0, 0.0, 1.0};
    for (LONG i = 0; i < 5; ++i) array->put_IthValue(i, values[i]);
    *coefficients = array.release();
    *xShape = COMxr;
    *yShape = COMx;
    *xNorm = 2.0;
    *yNorm = *xPow = *yPow = 1.0;
    *a = *b = -32767.0;
    return S_OK;
  }
  STDMETHODIMP Get_PropCOM(BSTR, BSTR, BSTR, BSTR* className, IPCProperty** property) noexcept override {
    if (const HRESULT failed = step(); failed != S_OK) return failed;
    *className = Bstr(OLESTR("Doubled")).release();
    component.AddRef();
    *property = &component;
    return S_OK;
  }
  STDMETHODIMP Get_PropMultiVal(BSTR, BSTR, BSTR name, IDispatch** values) noexcept override {
    if (const HRESULT failed = step(); failed != S_OK) return failed;
    if (viewOf(name) == OLESTR("UNIQUAC1Parameters")) {
      auto array = host::createInstance<IRealArrayDisp>(__uuidof(::HostRealArray));
      array->put_Size(2);
      array->put_IthValue(0, 2.1);
      array->put_IthValue(1, 1.9);
      *values = array.release();
      return S_OK;
    }
    auto array = host::createInstance<IIntegerArrayDisp>(__uuidof(::HostIntegerArray));
    array->put_Size(2);
    for (LONG i = 0; i < 2; ++i) array->put_IthValue(i, viewOf(name) == OLESTR("VELUNIFACNoGr") ? 1 : 14 + i);
    *values = array.release();
    return S_OK;
  }
  STDMETHODIMP Get_AllSynonyms(BSTR key, BSTR id, INT index, BSTR* synonym) noexcept override {
    if (const HRESULT failed = step(); failed != S_OK) return failed;
    if (!knows(key, id) || index > 1) return S_FALSE;
    *synonym = Bstr(index == 0 ? OLESTR("Spirit") : OLESTR("Alcohol")).release();
    return S_OK;
  }

 private:
  struct Property {
    const OLECHAR* name;
    tagPropTypeEnum type;
  };
  static constexpr Property kProperties[] = {
      {OLESTR("TC"), PointProp},
      {OLESTR("MW"), PointProp},  // which it does not have after all
      {OLESTR("Own"), PointProp},
      {OLESTR("Family"), PointPropLong},
      {OLESTR("PPDSID"), PointPropLong},
      {OLESTR("CMAID"), PointPropLong},  // too large for one
      {OLESTR("Name"), PointPropBSTR},
      {OLESTR("DDBID"), PointPropBSTR},
      {OLESTR("Remark"), PointPropBSTR},
      {OLESTR("VP"), EquationProp},
      {OLESTR("HVP"), COMProp},
      {OLESTR("VELUNIFACSubGr"), MultiPointPropLong},
      {OLESTR("VELUNIFACNoGr"), MultiPointPropLong},
      {OLESTR("UNIQUAC1Parameters"), MultiPointPropReal},
      {OLESTR("Texts"), MultiPointPropBSTR},
      {OLESTR("Void"), VoidProp},
  };

  HRESULT step() {
    // A copy: what is called may replace it.
    if (const auto deed = onCall) deed();
    return ++calls == failingCall ? E_BOUNDS : S_OK;
  }
  static bool knows(BSTR key, BSTR id) {
    return (viewOf(key) == OLESTR("CASN") && viewOf(id) == OLESTR("64-17-5")) ||
           (viewOf(key) == OLESTR("Name") && viewOf(id) == OLESTR("Spirit"));
  }
};

double valueOf(const ComPtr<IBasicCompound>& compound, const OLECHAR* name, double T = 300.0) {
  LONG dependencies = 0;
  double value = -1.0;
  query<ICompoundProp>(compound)->GetPropertyValue(Bstr(name).get(), T, 100.0, eNoExtrapolation, &dependencies, &value);
  return value;
}

// All that the loader may change, as one text.
std::string stateOf(const ComPtr<IBasicCompound>& compound) {
  std::string state;
  for (const OLECHAR* name : {OLESTR("TC"), OLESTR("MW"), OLESTR("Own"), OLESTR("VP"), OLESTR("HVP"),
                              OLESTR("UNIQUACR"), OLESTR("UNIQUACQ")}) {
    BSTR loader = nullptr;
    query<ICompoundPropPut>(compound)->GetPropertyLoader(Bstr(name).get(), &loader);
    state += std::to_string(valueOf(compound, name)) + narrow(taken(loader)) + ";";
  }
  const auto id = query<ICompoundID>(compound);
  BSTR name = nullptr, synonym = nullptr;
  INT numbers[4] = {};
  tagCompoundFamilyEnum family{};
  id->get_Name(&name);
  id->get_SynonymName(0, &synonym);
  id->get_NumberOfSynonymNames(&numbers[0]);
  id->get_PPDSID(&numbers[1]);
  id->get_DDBID(&numbers[2]);
  query<ICompoundUNIFAC1>(compound)->get_UNIFAC1NumberOfGroups(&numbers[3]);
  query<ICompoundFamily>(compound)->get_Family(&family);
  state += narrow(taken(name)) + ";" + narrow(taken(synonym));
  for (const INT number : numbers) state += ";" + std::to_string(number);
  return state + ";" + std::to_string(static_cast<int>(family));
}

class CollectionLoadingTest : public CollectionTest {
 protected:
  void SetUp() override {
    CollectionTest::SetUp();
    const auto id = query<ICompoundIDPut>(compound_);
    id->put_Name(Bstr(OLESTR("before")).get());
    id->put_CASN(cas_.get());
    query<ICompoundPropPut>(compound_)->SetPointProperty(Bstr(OLESTR("MW")).get(), 1, 46.0);
    query<ICompoundPropPut>(compound_)->SetPointProperty(Bstr(OLESTR("TC")).get(), 1, 1.0);
    ASSERT_EQ(collection_->AddCompound(compound_.get()), S_OK);
    ASSERT_EQ(loaders_->SetDefaultLoader(name_.get(), name_.get(), Bstr(OLESTR("folder")).get(), &loader_), S_OK);
    ASSERT_EQ(loaders_->AddLoader(none_.get(), name_.get(), nullptr, &noLoader_), S_OK);
  }
  void TearDown() override {
    loaders_ = {};
    collection_ = {};
    compound_ = {};
    EXPECT_EQ(loader_.references, 1u);
    EXPECT_EQ(loader_.component.references, 1u);
    EXPECT_EQ(noLoader_.references, 1u);
    CollectionTest::TearDown();
  }

  void expectLoaded(const ComPtr<IBasicCompound>& compound) {
    EXPECT_EQ(valueOf(compound, OLESTR("TC")), 513.9);
    EXPECT_EQ(valueOf(compound, OLESTR("Own")), 7.0);
    EXPECT_DOUBLE_EQ(valueOf(compound, OLESTR("VP")), std::exp(10.0 - 1500.0 / 150.0));
    EXPECT_EQ(valueOf(compound, OLESTR("HVP")), 600.0);
    double r = 0, q = 0;
    EXPECT_EQ(query<ICompoundUNIQUAC1>(compound)->get_UNIQUAC1Parameters(&r, &q), S_OK);
    EXPECT_EQ(r, 2.1);
    EXPECT_EQ(q, 1.9);
    ComPtr<IDispatch> types, counts;
    EXPECT_EQ(query<ICompoundUNIFAC1>(compound)->get_UNIFAC1Groups(types.out(), counts.out()), S_OK);
    EXPECT_EQ(valuesOf(types.get()), (std::vector<LONG>{14, 15}));
    EXPECT_EQ(valuesOf(counts.get()), (std::vector<LONG>{1, 1}));
    const auto id = query<ICompoundID>(compound);
    BSTR text = nullptr;
    EXPECT_EQ(id->get_Name(&text), S_OK);
    EXPECT_EQ(taken(text), OLESTR("Ethanol"));
    EXPECT_EQ(id->get_SynonymName(1, &text), S_OK);
    EXPECT_EQ(taken(text), OLESTR("Alcohol"));
    INT number = 0;
    EXPECT_EQ(id->get_PPDSID(&number), S_OK);
    EXPECT_EQ(number, 120);
    EXPECT_EQ(id->get_DDBID(&number), S_OK);
    EXPECT_EQ(number, 11);
    tagCompoundFamilyEnum family{};
    EXPECT_EQ(query<ICompoundFamily>(compound)->get_Family(&family), S_OK);
    EXPECT_EQ(family, eAlcohol);
    const auto put = query<ICompoundPropPut>(compound);
    for (const OLECHAR* property : {OLESTR("TC"), OLESTR("VP"), OLESTR("HVP"), OLESTR("Own")}) {
      EXPECT_EQ(put->GetPropertyLoader(Bstr(property).get(), &text), S_OK);
      EXPECT_EQ(taken(text), OLESTR("Fake"));
    }
  }

  HRESULT loadOne(INT index = 0) { return loaders_->LoadOneCompound(index, name_.get(), casField_.get(), nullptr, 1); }

  FakeLoader loader_;
  HostObject<IDispatch> noLoader_;
  const Bstr name_{WideView(OLESTR("Fake"))}, none_{WideView(OLESTR("None"))}, cas_{WideView(OLESTR("64-17-5"))},
      casField_{WideView(OLESTR("CASN"))}, nameField_{WideView(OLESTR("Name"))}, spirit_{WideView(OLESTR("Spirit"))};
  ComPtr<IBasicCompound> compound_ = newCompound();
  ComPtr<ICompoundCollection> collection_ = newCollection();
  ComPtr<ILoadCompoundProp> loaders_ = query<ILoadCompoundProp>(collection_);
};

TEST_F(CollectionLoadingTest, FillsACompoundWithEveryKindOfProperty) {
  EXPECT_EQ(loadOne(), S_OK);
  expectLoaded(compound_);
  EXPECT_EQ(valueOf(compound_, OLESTR("MW")), 46.0) << "what the loader lacks keeps its value";
  EXPECT_EQ(loader_.path, OLESTR("folder"));
  EXPECT_EQ(loadOne(), S_OK) << "again";
  expectLoaded(compound_);
}

TEST_F(CollectionLoadingTest, AnswersForWhatIsNotThere) {
  const std::string before = stateOf(compound_);
  const Bstr unknown(OLESTR("1-1-1"));
  ASSERT_EQ(collection_->put_NumberOfCompounds(2), S_OK);
  for (const INT index : {-1, 1, 2}) EXPECT_EQ(loadOne(index), S_FALSE) << index;
  EXPECT_EQ(loaders_->LoadOneCompound(0, name_.get(), casField_.get(), unknown.get(), 1), S_FALSE);
  EXPECT_EQ(loaders_->LoadOneCompound(0, unknown.get(), casField_.get(), nullptr, 1), S_FALSE);
  EXPECT_EQ(loaders_->LoadOneCompound(0, nullptr, casField_.get(), nullptr, 1), S_FALSE);
  EXPECT_EQ(loaders_->LoadOneCompound(0, name_.get(), nullptr, nullptr, 1), S_FALSE) << "no field, no id";
  EXPECT_EQ(loaders_->LoadOneCompound(0, name_.get(), unknown.get(), nullptr, 1), S_FALSE) << "no such field";
  EXPECT_EQ(loaders_->LoadOneCompound(0, none_.get(), casField_.get(), nullptr, 1), E_NOINTERFACE);
  EXPECT_EQ(loaders_->LoadOneProperty(0, nullptr, name_.get(), casField_.get(), nullptr, 1), S_FALSE);
  EXPECT_EQ(stateOf(compound_), before);
  EXPECT_EQ(loaders_->LoadOneCompound(0, none_.get(), casField_.get(), nullptr, 0), S_OK) << "the default";
  ASSERT_EQ(loaders_->RemoveLoader(name_.get()), S_OK);
  EXPECT_EQ(loaders_->LoadOneCompound(0, none_.get(), casField_.get(), nullptr, 0), S_FALSE) << "no default";
}

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
  EXPECT_EQ(valueOf(compound_, OLESTR("TC")), 1.0) << "nobody asked for it";
  EXPECT_EQ(valueOf(compound_, OLESTR("Own")), 7.0);
  INT number = 0;
  EXPECT_EQ(query<ICompoundID>(compound_)->get_NumberOfSynonymNames(&number), S_OK);
  EXPECT_EQ(number, 2);
}

TEST_F(CollectionLoadingTest, FillsAllCompoundsByTheirOwnField) {
  const auto another = newCompound();
  ASSERT_EQ(collection_->AddCompound(another.get()), S_OK);
  EXPECT_EQ(loaders_->LoadAllCompounds(name_.get(), casField_.get(), 1), S_FALSE) << "the second has no CAS number";
  expectLoaded(compound_);
  query<ICompoundIDPut>(another)->put_CASN(cas_.get());
  EXPECT_EQ(loaders_->LoadAllCompounds(nullptr, casField_.get(), 0), S_OK);
  expectLoaded(another);
}

TEST_F(CollectionLoadingTest, AFailureOfTheLoaderLeavesTheCompoundAsItWas) {
  const std::string before = stateOf(compound_);
  ASSERT_EQ(loadOne(), S_OK);
  const int all = loader_.calls;
  ASSERT_GT(all, 25);
  const auto fresh = newCompound();
  query<ICompoundIDPut>(fresh)->put_CASN(cas_.get());
  ASSERT_EQ(collection_->put_Compound(0, fresh.get()), S_OK);
  const std::string empty = stateOf(fresh);
  for (int call = 1; call <= all; ++call) {
    loader_.calls = 0;
    loader_.failingCall = call;
    EXPECT_EQ(loadOne(), E_BOUNDS) << call;
    EXPECT_EQ(stateOf(fresh), empty) << call;
    loader_.calls = 0;
    EXPECT_EQ(collection_->AddCompoundFromLoader(casField_.get(), cas_.get(), name_.get(), 1), E_BOUNDS) << call;
    EXPECT_EQ(countOf(collection_), 1) << call;
    EXPECT_EQ(loader_.component.references, 2u) << "the component of the first compound alone";
  }
  EXPECT_NE(stateOf(compound_), before);
}

TEST_F(CollectionLoadingTest, ALoaderMayCallBack) {
  const std::function<void()> deeds[] = {
      [&] { collection_->Reset(); },
      [&] { loaders_->RemoveLoader(name_.get()); },
      [&] { collection_->put_NumberOfCompounds(0); },
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
      expectLoaded(compound_);
    }
  }
}

TEST_F(CollectionLoadingTest, AddsCompoundsFromALoader) {
  EXPECT_EQ(collection_->AddCompoundFromLoader(nameField_.get(), spirit_.get(), name_.get(), 1), S_OK);
  EXPECT_EQ(collection_->AddCompoundFromLoader(casField_.get(), spirit_.get(), name_.get(), 1), S_FALSE);
  EXPECT_EQ(collection_->AddCompoundFromLoader(casField_.get(), nullptr, name_.get(), 1), S_FALSE);
  EXPECT_EQ(collection_->AddCompoundFromLoader(casField_.get(), cas_.get(), spirit_.get(), 1), S_FALSE);
  EXPECT_EQ(collection_->AddCompoundFromLoader(casField_.get(), cas_.get(), none_.get(), 1), E_NOINTERFACE);
  ASSERT_EQ(countOf(collection_), 2);
  ComPtr<IBasicCompound> added;
  ASSERT_EQ(collection_->GetBasicCompound(1, added.out()), S_OK);
  expectLoaded(added);
}

TEST_F(CollectionLoadingTest, AViewLoadsThroughItsParent) {
  ASSERT_EQ(collection_->put_NumberOfCompounds(3), S_OK);
  const auto view = viewOf(collection_, {2, 0});
  const auto viewLoaders = query<ILoadCompoundProp>(view);
  const Bstr critical(OLESTR("TC"));
  EXPECT_EQ(viewLoaders->LoadOneProperty(1, critical.get(), name_.get(), casField_.get(), nullptr, 1), S_OK);
  EXPECT_EQ(valueOf(compound_, OLESTR("TC")), 513.9);
  for (const INT index : {-1, 0, 2})
    EXPECT_EQ(viewLoaders->LoadOneCompound(index, name_.get(), casField_.get(), cas_.get(), 1), S_FALSE) << index;
  EXPECT_EQ(viewLoaders->LoadAllCompounds(name_.get(), casField_.get(), 1), S_FALSE) << "one is an empty slot";
  expectLoaded(compound_);
  EXPECT_EQ(view->AddCompoundFromLoader(casField_.get(), cas_.get(), name_.get(), 1), S_OK);
  EXPECT_EQ(countOf(collection_), 4);
  EXPECT_EQ(countOf(view), 3);
  ComPtr<IBasicCompound> added;
  ASSERT_EQ(view->GetBasicCompound(2, added.out()), S_OK);
  expectLoaded(added);
}

// Estimates every property as a number of its own choice.
struct FakeEstimator : HostObject<IPurePropEstimator> {
  STDMETHODIMP Get_SupportedPropList(INT, BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Set_Path(BSTR) noexcept override { return S_FALSE; }
  STDMETHODIMP Estimate(IDispatch* compound, BSTR, double* out) noexcept override {
    seen = compound;
    *out = value;
    return result;
  }
  HRESULT result = S_OK;
  double value = 512.0;
  IDispatch* seen = nullptr;
};

TEST_F(CollectionLoadingTest, StoresWhatAnEstimatorAnswers) {
  FakeEstimator estimator;
  const auto handler = query<IPureEstimatorHandler>(collection_);
  const Bstr critical(OLESTR("TC")), own(OLESTR("Guess"));
  EXPECT_EQ(handler->EstimateProperty(0, critical.get(), name_.get(), 0), S_FALSE) << "no default yet";
  ASSERT_EQ(handler->SetDefaultEstimator(name_.get(), name_.get(), cas_.get(), &estimator), S_OK);
  ASSERT_EQ(handler->AddEstimator(none_.get(), name_.get(), nullptr, &noLoader_), S_OK);
  EXPECT_EQ(handler->EstimateProperty(0, critical.get(), none_.get(), 1), E_NOINTERFACE);
  EXPECT_EQ(handler->EstimateProperty(0, critical.get(), cas_.get(), 1), S_FALSE);
  EXPECT_EQ(handler->EstimateProperty(1, critical.get(), name_.get(), 1), S_FALSE);
  EXPECT_EQ(handler->EstimateProperty(0, nullptr, name_.get(), 1), S_FALSE);
  const std::pair<HRESULT, double> nothing[] = {{S_FALSE, 3.0}, {E_BOUNDS, 3.0}, {S_OK, kEmpty}};
  for (const auto& [result, value] : nothing) {
    estimator.result = result;
    estimator.value = value;
    EXPECT_EQ(handler->EstimateProperty(0, critical.get(), name_.get(), 1), result == S_OK ? S_FALSE : result);
    EXPECT_EQ(valueOf(compound_, OLESTR("TC")), 1.0);
  }
  estimator.value = 512.0;
  EXPECT_EQ(handler->EstimateProperty(0, critical.get(), nullptr, 0), S_OK);
  EXPECT_EQ(estimator.seen, compound_.get());
  EXPECT_EQ(valueOf(compound_, OLESTR("TC")), 512.0);
  BSTR source = nullptr;
  EXPECT_EQ(query<ICompoundPropPut>(compound_)->GetPropertyLoader(critical.get(), &source), S_OK);
  EXPECT_EQ(taken(source), OLESTR("Fake"));
  const auto view = viewOf(collection_, {0});
  EXPECT_EQ(query<IPureEstimatorHandler>(view)->EstimateProperty(0, own.get(), name_.get(), 1), S_OK);
  EXPECT_EQ(valueOf(compound_, OLESTR("Guess")), 512.0);
  EXPECT_EQ(handler->RemoveEstimator(name_.get()), S_OK);
  EXPECT_EQ(estimator.references, 1u);
}

}  // namespace
}  // namespace qs::test
