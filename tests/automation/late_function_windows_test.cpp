// What scripts cannot show of late-bound calls: variables and arrays of every type, and named arguments.
// tests/scripts/late_binding.vbs has the rest.
#include "automation/late_function.h"

#include "tests/support/compounds.h"
#include "tests/support/late_call.h"

namespace qs::test {
namespace {

class LateFunctions : public CompoundTest {
 protected:
  // What a call by name gives, as text; a failure as its code.
  template <class... Arguments>
  static std::string call(IDispatch* object, const wchar_t* name, Arguments&&... arguments) {
    LateValue result;
    return shownOr(
        callByName(object, name, DISPATCH_PROPERTYGET | DISPATCH_METHOD, result, std::forward<Arguments>(arguments)...),
        result);
  }
  static std::string shownOr(HRESULT hr, const LateValue& result) {
    if (FAILED(hr)) return std::to_string(hr);
    LateValue text;
    EXPECT_EQ(VariantChangeType(&text.variant, const_cast<VARIANT*>(&result.variant), VARIANT_ALPHABOOL, VT_BSTR),
              S_OK);
    return narrow(viewOf(V_BSTR(&text.variant)));
  }
  std::string setEquation(LateValue coefficients) {
    return call(compound.get(), L"SetEquationProperty", L"VP", 1, int{PropCurvePOLY2}, 200, 400, 1, 2,
                std::move(coefficients));
  }

  const std::string mismatch = std::to_string(DISP_E_TYPEMISMATCH), overflow = std::to_string(DISP_E_OVERFLOW);
  ComPtr<IBasicCompound> compound = newCompound();
};

TEST_F(LateFunctions, OutputsAreConvertedToTheVariablesGivenForThem) {
  ASSERT_EQ(setEquation({1.0, 1.0, 0.0}), "True");
  const std::vector<VARTYPE> none = {VT_ERROR, VT_DISPATCH, VT_UNKNOWN, VT_ARRAY | VT_R8};
  std::vector<VARTYPE> all = {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4,     VT_INT,  VT_UINT,
                              VT_I8, VT_UI8, VT_R4, VT_R8,  VT_CY, VT_DECIMAL, VT_BOOL, VT_BSTR};
  all.insert(all.end(), none.begin(), none.end());
  const auto attributes = create<IDispatch>(__uuidof(::AttributeSet));
  for (const VARTYPE type : all) {
    SCOPED_TRACE(type);
    const auto received = [&](const wchar_t* name, auto... arguments) {
      DECIMAL place{};  // of the largest size; null where the type is a pointer
      LateValue variable(type, &place), result;
      const HRESULT hr = callByName(compound.get(), name, DISPATCH_METHOD, result, arguments..., std::move(variable));
      if (FAILED(hr)) {
        EXPECT_EQ(place.Lo64, 0u) << "left as it was";
      }
      const std::string text = shownOr(hr, LateValue(type, &place));
      if (type == VT_BSTR) SysFreeString(reinterpret_cast<BSTR>(static_cast<std::uintptr_t>(place.Lo64)));
      return text;
    };
    const bool fits = std::ranges::count(none, type) == 0;
    EXPECT_EQ(received(L"get_VPTPRange"), !fits             ? mismatch
                                          : type == VT_I1   ? overflow
                                          : type == VT_BOOL ? "True"
                                                            : "200");
    EXPECT_EQ(received(L"GetEquationInfo", int{PropCurveEXPO2}), type == VT_BSTR ? "Y = A + X^B" : mismatch);
    DECIMAL place{};
    EXPECT_EQ(call(attributes.get(), L"GetByIndex", 5, LateValue(type, &place), 0),
              fits ? std::to_string(E_BOUNDS) : mismatch)
        << "refused before the call, which fails";
  }

  double low = 1;
  signed char high = 1;
  EXPECT_EQ(call(compound.get(), L"get_VPTPRange", LateValue(VT_R8, &low), LateValue(VT_I1, &high)), overflow);
  EXPECT_EQ(low, 1) << "none is changed when one does not fit";
  ULONG natural = 1;
  EXPECT_EQ(call(compound.get(), L"GetEquationInfo", 12345, 0, LateValue(VT_UI4, &natural)), overflow)
      << "the empty value";
}

TEST_F(LateFunctions, ArraysOfNumbersBecomeArrayObjects) {
  for (const VARTYPE type : {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_I8, VT_UI8, VT_R4, VT_R8, VT_CY, VT_DATE,
                             VT_DECIMAL, VT_BSTR, VT_VARIANT}) {
    SCOPED_TRACE(type);
    call(compound.get(), L"SetVoidProperty", L"VP", 1);
    const LateValue array(type, {{3, 5}}, {3, 2, 1});
    EXPECT_EQ(setEquation({static_cast<VARTYPE>(VT_ARRAY | type), const_cast<SAFEARRAY**>(&V_ARRAY(&array.variant))}),
              "True");
    EXPECT_EQ(call(compound.get(), L"VP", 250, 1, 0, 0), "63003");
  }
  LateValue wide(VT_I4, {{32, 0}}, {}), records(VT_I8, {{3, 0}}, {3, 2, 1}), null(VT_ARRAY | VT_R8, nullptr);
  V_ARRAY(&wide.variant)->cbElements *= 8;
  V_ARRAY(&wide.variant)->rgsabound[0].cElements /= 8;
  V_VT(&records.variant) = VT_ARRAY | VT_RECORD;
  for (LateValue* refused : {&wide, &records, &null}) EXPECT_EQ(setEquation({VT_VARIANT, &refused->variant}), mismatch);
  V_VT(&records.variant) = VT_ARRAY | VT_I8;
}

TEST_F(LateFunctions, ArraysAreLentForTheCallAlone) {
  ASSERT_EQ(setEquation({0.0, 1.0, 0.0}), "True");
  LateValue array(VT_R8, {{3, 0}}, {250, 300, 350});
  const auto evaluate = [&](LateValue& result, int quantity) {
    return callByName(compound.get(), L"Evaluate", DISPATCH_METHOD, result, L"VP", quantity,
                      LateValue(VT_VARIANT, &array.variant), 1.5, int{eNotSetOutside},
                      LateValue(VT_VARIANT, &array.variant));
  };
  LateValue none, values;
  EXPECT_EQ(evaluate(none, 99), E_INVALIDARG);
  EXPECT_EQ(V_ARRAY(&array.variant)->cLocks, 0u);
  ASSERT_EQ(evaluate(values, eValue), S_OK);
  EXPECT_EQ(shownOr(S_OK, LateValue(VT_VARIANT, V_ARRAY(&values.variant)->pvData)), "250");
  // The statuses took the place of the temperatures.
  EXPECT_EQ(V_VT(&array.variant), VT_ARRAY | VT_VARIANT);
  EXPECT_EQ(shownOr(S_OK, LateValue(VT_VARIANT, V_ARRAY(&array.variant)->pvData)), std::to_string(eStatusInside));
}

TEST_F(LateFunctions, ArgumentsMayBeNamed) {
  const auto ids = [&](std::vector<WideString> names) {
    std::vector<LPOLESTR> pointers;
    for (WideString& name : names) pointers.push_back(name.data());
    std::vector<DISPID> found(names.size());
    const auto count = static_cast<UINT>(names.size());
    return std::pair(compound->GetIDsOfNames(IID_NULL, pointers.data(), count, 0, found.data()), found);
  };
  setEquation({0.0, 1.0, 0.0});
  auto named = ids({L"VP", L"dPres", L"eExtrapolationMethod", L"dTemp"}).second;
  LateValue one(1.0), none(0), hot(350.0);
  VARIANT given[] = {one.variant, none.variant, hot.variant};
  const auto value = [&] {
    DISPPARAMS parameters{given, named.data() + 1, 3, 3};
    LateValue result, low(0.0);
    const HRESULT hr = invokeByName(compound.get(), L"VP", DISPATCH_PROPERTYGET, result, parameters);
    if (FAILED(hr)) return std::to_string(hr);
    return shownOr(S_OK, LateValue(VT_VARIANT, V_ARRAY(&result.variant)->pvData));
  };
  EXPECT_EQ(value(), "350");
  named[1] = named[3];
  EXPECT_EQ(value(), std::to_string(DISP_E_BADPARAMCOUNT)) << "one argument twice";
  named[1] = 99;
  EXPECT_EQ(value(), std::to_string(DISP_E_PARAMNOTFOUND));

  // A getter and a setter name their own arguments.
  const auto put = ids({L"UNIFAC1Groups", L"pgrouptypes", L"nNumGroup"});
  EXPECT_EQ(put.first, S_OK);
  EXPECT_EQ(ids({L"UNIFAC1Groups", L"ppGroupCounts"}), (std::pair(S_OK, std::vector{put.second[0], DISPID{1}})));
  EXPECT_EQ(ids({L"UNIFAC1Groups", L"nNumGroup", L"ppGroupCounts"}).first, DISP_E_UNKNOWNNAME) << "of neither";
  LateValue types(integers({1, 2}).get()), count(2), counts(integers({3, 4}).get()), result;
  VARIANT groups[] = {counts.variant, types.variant, count.variant};
  DISPID names[] = {DISPID_PROPERTYPUT, put.second[1], put.second[2]};
  DISPPARAMS parameters{groups, names, 3, 3};
  EXPECT_EQ(invokeByName(compound.get(), L"UNIFAC1Groups", DISPATCH_PROPERTYPUT, result, parameters), S_OK);
  EXPECT_EQ(call(compound.get(), L"UNIFAC1NumberOfGroups"), "2");
}

TEST_F(LateFunctions, PressureMethodAndPolicyMayBeLeftOut) {
  setEquation({0.0, 1.0, 0.0});
  EXPECT_EQ(call(compound.get(), L"VP", 350.0), "350");
  EXPECT_EQ(call(compound.get(), L"VP", 350.0, 1.0), "350");
  EXPECT_EQ(call(compound.get(), L"GetPropertyValue", L"VP", 350.0), "350");
  EXPECT_EQ(call(compound.get(), L"VP"), std::to_string(DISP_E_PARAMNOTOPTIONAL)) << "a temperature must be given";
}

}  // namespace
}  // namespace qs::test
