// Components that call back into their compound, or throw. Property objects of a compound live on the heap, so that the
// address sanitizer sees every use of one that a call back has taken away.
#include <new>
#include <stdexcept>

#include "tests/support/bundled_compounds.h"
#include "tests/support/claiming_array.h"
#include "tests/support/failing_arrays.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

class CompoundComponents : public XmlTest {
 protected:
  void set(WideView name, BYTE fixed, IPCProperty* component) {
    EXPECT_EQ(put_->SetCOMProperty(Bstr(name).get(), fixed, Bstr(OLESTR("C")).get(), component), S_OK);
  }
  void setUser(IDispatch* component) {
    EXPECT_EQ(query<IUserProperty>(compound_)->SetUserProperty(user_.get(), nullptr, component), S_OK);
  }
  HRESULT setVapourPressure(IRealArrayDisp* coefficients) {
    return put_->SetEquationProperty(vp_.get(), 1, PropCurvePOLY2, 1, 2, 3, 4, coefficients);
  }
  void eraseAll() {
    for (const WideView name : {OLESTR("TC"), OLESTR("UNIQUACR"), OLESTR("UNIQUACQ"), OLESTR("late")})
      for (const BYTE fixed : {BYTE{1}, BYTE{0}}) put_->ErasePropFromMap(Bstr(name).get(), fixed);
    query<IUserProperty>(compound_)->DeleteUserProperty(user_.get());
  }

  ComPtr<IBasicCompound> compound_ = newCompound();
  ComPtr<ICompoundPropPut> put_ = query<ICompoundPropPut>(compound_);
  const Bstr tc_{OLESTR("TC")}, vp_{OLESTR("VP")}, user_{OLESTR("u")};
};

// In its last release a component takes everything away and puts more in its place.
TEST_F(CompoundComponents, LastReleasesFindTheCompoundAsItIsNow) {
  const BundledCompounds database;
  const auto other = newCompound();
  IBasicCompound* const lent = compound_.get();
  const WideString text = OLESTR(
      "<Compound><FixedProperty NAME='TC' TYPE='VOID'/><AdditionProperty NAME='TC' TYPE='PointProp'>"
      "<PropertyContent CONTENT=''/></AdditionProperty><UserProperty NAME='u' CONTENT=''/>");
  const std::pair<const char*, std::function<void()>> calls[] = {
      {"SetUserProperty",
       [&] {
         UserComponent one;
         setUser(&one);
         query<IUserProperty>(compound_)->DeleteUserProperty(user_.get());
       }},
      {"SetPointProperty", [&] { put_->SetPointProperty(tc_.get(), 1, 1), put_->SetPointProperty(tc_.get(), 0, 1); }},
      {"ErasePropFromMap", [&] { eraseAll(); }},
      {"Init",
       [&] {
         query<ICompoundInitFromVelDB>(compound_)->Init(Bstr(database.directory.name()).get(), database.numbers[0]);
       }},
      {"CopyToThis", [&] { query<ICompoundCopy>(compound_)->CopyToThis(1, other.get()); }},
      {"ParseText", [&] { parse(text + OLESTR("</Compound>"), compound_.get()); }},
      {"a text that fails", [&] { parse(text, compound_.get()); }},
      {"the end of the compound", [&] { compound_ = {}, put_ = {}; }},
  };
  for (const auto& [name, call] : calls) {
    SCOPED_TRACE(name);
    ValueComponent fixed, added, late;
    UserComponent user;
    int released = 0;
    fixed.onLastRelease = added.onLastRelease = user.onLastRelease = [&] {
      ++released;
      // Lent: while the compound ends nobody has a reference.
      const auto put = ComPtr<ICompoundPropPut>::from(lent);
      for (const BYTE chosen : {BYTE{1}, BYTE{0}}) {
        put->ErasePropFromMap(tc_.get(), chosen);
        put->SetPointProperty(tc_.get(), chosen, 3.0);
      }
      ComPtr<IUserProperty>::from(lent)->DeleteUserProperty(user_.get());
      put->SetCOMProperty(Bstr(OLESTR("late")).get(), 0, nullptr, &late);
    };
    set(OLESTR("TC"), 1, &fixed);
    set(OLESTR("TC"), 0, &added);
    setUser(&user);
    call();
    for (int i = 0; compound_ && i < 2; ++i) eraseAll();
    EXPECT_EQ(released, 3);
  }
}

TEST_F(CompoundComponents, HostArraysAreReadOnceAndMayTakeTheEquationAway) {
  ClaimingReals endless(1000);
  EXPECT_EQ(setVapourPressure(&endless), S_OK);
  EXPECT_EQ(endless.reads, 3) << "no more than the form needs";

  const FailingArrays arrays(-1, S_OK, [&] { put_->ErasePropFromMap(vp_.get(), 1); });
  tagEquationShapeEnum shape{};
  Bstr form;
  double range[4]{};
  INT count = 0;
  ComPtr<IRealArrayDisp> coefficients;
  EXPECT_EQ(query<ICompoundProp>(compound_)->GetEquationProperty(vp_.get(), &shape, form.out(), range, range + 1,
                                                                 range + 2, range + 3, &count, coefficients.out()),
            S_OK);
  EXPECT_EQ(shape, PropCurvePOLY2);
  EXPECT_EQ(range[3], 4.0);
}

TEST_F(CompoundComponents, WhatTheyThrowIsAFailure) {
  if (!kExceptionsPass) GTEST_SKIP() << "on x86 an exception that reaches another module ends the process";
  ValueComponent property;
  UserComponent user;
  ClaimingReals array(0);
  array.throws = true;
  LONG dependencies = 0;
  double one = 0, two = 0;
  BSTR text = nullptr;
  const auto getTC = [&] { return compound_->get_TC(300, 100, eNoExtrapolation, &dependencies, &one); };
  const std::function<HRESULT()> calls[] = {
      getTC, [&] { return propertyOf(compound_, OLESTR("TC")).result; },
      [&] { return query<ICompoundUNIQUAC1>(compound_)->get_UNIQUAC1Parameters(&one, &two); },
      [&] { return query<IXMLStore>(compound_)->StoreAsXML(&text); }};
  for (const WideView key : {OLESTR("TC"), OLESTR("UNIQUACR"), OLESTR("UNIQUACQ")}) set(key, 1, &property);
  setUser(&user);
  const std::pair<std::function<void()>, HRESULT> thrown[] = {{[] { throw 1; }, E_FAIL},
                                                              {[] { throw std::runtime_error("x"); }, E_FAIL},
                                                              {[] { throw std::bad_alloc(); }, E_OUTOFMEMORY}};
  for (const auto& [act, expected] : thrown) {
    property.act = user.act = act;
    for (const auto& call : calls) EXPECT_EQ(call(), expected) << &call - calls;
  }
  EXPECT_EQ(setVapourPressure(&array), E_FAIL);
  property.act = nullptr;
  EXPECT_EQ(getTC(), S_OK);
  EXPECT_EQ(query<IXMLStore>(compound_)->StoreAsXML(&text), E_OUTOFMEMORY) << "of the user property";
  EXPECT_EQ(text, nullptr);
  eraseAll();
}

}  // namespace
}  // namespace qs::test
