// Components that call back into their compound, or throw. Property objects of a compound live on the heap, so that the
// address sanitizer sees every use of one that a call back has taken away.
#include <functional>
#include <new>
#include <stdexcept>

#include "tests/support/bundled_compounds.h"
#include "tests/support/claiming_array.h"
#include "tests/support/failing_arrays.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

// A component for both kinds of properties. Every call ends with `act`, which may throw.
template <class I>
class Actor : public HostObject<I> {
 public:
  // As the interface declares them: a host's own methods promise nothing about exceptions.
  STDMETHODIMP GetClassID(BSTR*) override { return done(); }
  STDMETHODIMP Store(BSTR* text) override {
    *text = nullptr;
    return done();
  }
  STDMETHODIMP Recall(BSTR) override { return done(); }
  STDMETHODIMP Copy(I*) override { return done(); }
  STDMETHODIMP_(ULONG) Release() noexcept override {
    const ULONG left = HostObject<I>::Release();
    if (left == 1 && onLastRelease) std::exchange(onLastRelease, nullptr)();
    return left;
  }

  std::function<void()> act, onLastRelease;

 protected:
  HRESULT done() {
    if (act) act();
    return S_OK;
  }
};
class PropertyActor final : public Actor<IPCProperty> {
 public:
  STDMETHODIMP GetProperty(double, double, tagExtrapolationEnum, LONG* dependencies, double* value) override {
    *dependencies = 0;
    *value = 7.0;
    return done();
  }
  STDMETHODIMP GetClassName(BSTR*) override { return done(); }
  STDMETHODIMP GetMethod(BSTR*) override { return done(); }
};
class UserActor final : public Actor<ICOMUserProp> {};

class CompoundComponents : public XmlTest {
 protected:
  void setComponent(LPCOLESTR name, BYTE fixed, IPCProperty* component) {
    EXPECT_EQ(put_->SetCOMProperty(Bstr(WideView(name)).get(), fixed, Bstr(OLESTR("C")).get(), component), S_OK);
  }
  void setUser(IDispatch* component) {
    EXPECT_EQ(query<IUserProperty>(compound_)->SetUserProperty(user_.get(), nullptr, component), S_OK);
  }
  HRESULT erase(LPCOLESTR name, BYTE fixed) { return put_->ErasePropFromMap(Bstr(WideView(name)).get(), fixed); }

  ComPtr<IBasicCompound> compound_ = newCompound();
  ComPtr<ICompoundPropPut> put_ = query<ICompoundPropPut>(compound_);
  const Bstr user_{OLESTR("u")};
};

TEST_F(CompoundComponents, TheFirstOfTwoValuesMayTakeTheSecondAway) {
  const struct {
    LPCOLESTR first, second;
    std::function<HRESULT(double*, double*)> read;
  } pairs[] = {{OLESTR("THETAA"), OLESTR("THETAB"),
                [&](double* a, double* b) { return query<ICompoundViscosity>(compound_)->get_ViscosityThetas(a, b); }},
               {OLESTR("UNIQUACR"), OLESTR("UNIQUACQ"), [&](double* a, double* b) {
                  return query<ICompoundUNIQUAC1>(compound_)->get_UNIQUAC1Parameters(a, b);
                }}};
  for (const auto& pair : pairs) {
    PropertyActor component;
    component.act = [&] { erase(pair.second, 1); };
    setComponent(pair.first, 1, &component);
    put_->SetPointProperty(Bstr(WideView(pair.second)).get(), 1, 2.0);
    double first = 0.5, second = 0.5;
    EXPECT_EQ(pair.read(&first, &second), S_FALSE);
    EXPECT_EQ(first, 0.5);
    EXPECT_EQ(second, 0.5);
    erase(pair.first, 1);
  }
}

// In its last release a component takes everything away and puts more in its place.
TEST_F(CompoundComponents, LastReleasesFindTheCompoundAsItIsNow) {
  const BundledCompounds database;
  const Bstr directory(database.directory.name());
  const auto other = newCompound();
  IBasicCompound* const lent = compound_.get();
  const std::pair<const char*, std::function<void()>> calls[] = {
      {"SetUserProperty",
       [&] {
         UserActor one;
         setUser(&one);
         query<IUserProperty>(compound_)->DeleteUserProperty(user_.get());
       }},
      {"DeleteUserProperty", [&] { query<IUserProperty>(compound_)->DeleteUserProperty(user_.get()); }},
      {"SetPointProperty",
       [&] {
         for (const BYTE fixed : {BYTE{1}, BYTE{0}}) put_->SetPointProperty(Bstr(OLESTR("TC")).get(), fixed, 1.0);
       }},
      {"ErasePropFromMap", [&] { erase(OLESTR("TC"), 0), erase(OLESTR("TC"), 1); }},
      {"Init", [&] { query<ICompoundInitFromVelDB>(compound_)->Init(directory.get(), database.numbers[0]); }},
      {"CopyToThis", [&] { query<ICompoundCopy>(compound_)->CopyToThis(1, other.get()); }},
      {"ParseText",
       [&] {
         parse(OLESTR("<Compound><FixedProperty NAME='TC' TYPE='VOID'/><AdditionProperty NAME='TC' TYPE='PointProp'>"
                      "<PropertyContent CONTENT=''/></AdditionProperty><UserProperty NAME='u' CONTENT=''/></Compound>"),
               compound_.get());
       }},
      {"a text that fails",
       [&] { parse(OLESTR("<Compound><FixedProperty NAME='TC' TYPE='VOID'/>"), compound_.get()); }},
      {"the end of the compound", [&] { compound_ = {}, put_ = {}; }},
  };
  for (const auto& [name, call] : calls) {
    SCOPED_TRACE(name);
    PropertyActor fixed, added, late;
    UserActor user;
    int released = 0;
    const auto change = [&] {
      ++released;
      // Lent: while the compound ends nobody has a reference.
      const auto props = ComPtr<ICompoundProp>::from(lent);
      const auto puts = ComPtr<ICompoundPropPut>::from(lent);
      INT count = 0;
      props->GetNumbOfProperty(0, &count);
      for (INT i = 0; i < count; ++i) {
        Bstr key;
        tagPropTypeEnum type{};
        EXPECT_EQ(props->GetPropertyName(0, i, key.out(), &type), S_OK);
      }
      const Bstr key(OLESTR("TC"));
      for (const BYTE chosen : {BYTE{1}, BYTE{0}}) {
        puts->ErasePropFromMap(key.get(), chosen);
        puts->SetPointProperty(key.get(), chosen, 3.0);
      }
      ComPtr<IUserProperty>::from(lent)->DeleteUserProperty(user_.get());
      puts->SetCOMProperty(Bstr(OLESTR("late")).get(), 0, nullptr, &late);
    };
    fixed.onLastRelease = added.onLastRelease = user.onLastRelease = change;
    setComponent(OLESTR("TC"), 1, &fixed);
    setComponent(OLESTR("TC"), 0, &added);
    setUser(&user);
    call();
    if (compound_) {
      erase(OLESTR("TC"), 0), erase(OLESTR("TC"), 1), erase(OLESTR("late"), 0);
      query<IUserProperty>(compound_)->DeleteUserProperty(user_.get());
      erase(OLESTR("TC"), 0), erase(OLESTR("TC"), 1), erase(OLESTR("late"), 0);
    }
    EXPECT_EQ(released, 3);
  }
}

TEST_F(CompoundComponents, TheHostsArraysMayTakeTheEquationAway) {
  put_->SetEquationProperty(Bstr(OLESTR("VP")).get(), 1, PropCurvePOLY2, 1, 2, 3, 4, reals({1, 2, 3}).get());
  const FailingArrays arrays(-1, S_OK, [&] { erase(OLESTR("VP"), 1); });
  tagEquationShapeEnum shape{};
  Bstr form;
  double range[4]{};
  INT count = 0;
  ComPtr<IRealArrayDisp> coefficients;
  EXPECT_EQ(
      query<ICompoundProp>(compound_)->GetEquationProperty(Bstr(OLESTR("VP")).get(), &shape, form.out(), range,
                                                           range + 1, range + 2, range + 3, &count, coefficients.out()),
      S_OK);
  EXPECT_EQ(shape, PropCurvePOLY2);
  EXPECT_EQ(range[3], 4.0);
}

TEST_F(CompoundComponents, ReadsNoMoreCoefficientsThanTheFormHas) {
  ClaimingReals array(1000);
  EXPECT_EQ(put_->SetEquationProperty(Bstr(OLESTR("VP")).get(), 1, PropCurvePOLY2, 1, 2, 3, 4, &array), S_OK);
  EXPECT_EQ(array.reads, 3);
}

TEST_F(CompoundComponents, WhatTheyThrowIsAFailure) {
  if (!kExceptionsPass) GTEST_SKIP() << "on x86 an exception that reaches another module ends the process";
  PropertyActor property;
  UserActor user;
  ClaimingReals array(0);
  array.throws = true;
  const Bstr name(OLESTR("TC"));
  LONG dependencies = 0;
  double one = 0, two = 0;
  BSTR text = nullptr;
  const auto store = [&] { return query<IXMLStore>(compound_)->StoreAsXML(&text); };
  const std::pair<const char*, std::function<HRESULT()>> calls[] = {
      {"a typed getter", [&] { return compound_->get_TC(300, 100, eNoExtrapolation, &dependencies, &one); }},
      {"GetPropertyValue",
       [&] {
         return query<ICompoundProp>(compound_)->GetPropertyValue(name.get(), 300, 100, eNoExtrapolation, &dependencies,
                                                                  &one);
       }},
      {"two values", [&] { return query<ICompoundUNIQUAC1>(compound_)->get_UNIQUAC1Parameters(&one, &two); }},
      {"storing", store},
      {"storing a user property",
       [&] {
         const auto act = std::exchange(property.act, nullptr);
         const HRESULT result = store();
         property.act = act;
         return result;
       }},
      {"coefficients", [&] { return put_->SetEquationProperty(name.get(), 1, PropCurvePOLY2, 1, 2, 3, 4, &array); }},
  };
  for (const LPCOLESTR key : {OLESTR("TC"), OLESTR("UNIQUACR"), OLESTR("UNIQUACQ")}) setComponent(key, 1, &property);
  setUser(&user);
  const std::pair<std::function<void()>, HRESULT> thrown[] = {
      {[] { throw 1; }, E_FAIL},
      {[] { throw std::runtime_error("x"); }, E_FAIL},
      {[] { throw std::bad_alloc(); }, E_OUTOFMEMORY},
  };
  for (const auto& [act, expected] : thrown) {
    property.act = user.act = act;
    for (const auto& [what, call] : calls)
      EXPECT_EQ(call(), std::string_view(what) == "coefficients" ? E_FAIL : expected) << what;
  }
  EXPECT_EQ(text, nullptr);
  property.act = user.act = nullptr;
  EXPECT_EQ(compound_->get_TC(300, 100, eNoExtrapolation, &dependencies, &one), S_OK);
  for (const LPCOLESTR key : {OLESTR("TC"), OLESTR("UNIQUACR"), OLESTR("UNIQUACQ")}) erase(key, 1);
  query<IUserProperty>(compound_)->DeleteUserProperty(user_.get());
}

}  // namespace
}  // namespace qs::test
