// What late-bound callers get back: out-parameters, results, conversions and failures.
#include "com/late_function.h"

#include <sstream>

#include "tests/support/compounds.h"
#include "tests/support/late_call.h"

namespace qs::test {
namespace {

// A number as text, an array as its elements in brackets.
std::string shown(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_EMPTY:
      return "nothing";
    case VT_R8:
      return "R8 " + std::to_string(V_R8(&value));
    case VT_I4:
      return "I4 " + std::to_string(V_I4(&value));
    case VT_UI1:
      return "UI1 " + std::to_string(V_UI1(&value));
    case VT_BOOL:
      return V_BOOL(&value) ? "True" : "False";
    case VT_BSTR:
      return "'" + narrow(viewOf(V_BSTR(&value))) + "'";
    case VT_DISPATCH:
      return V_DISPATCH(&value) ? "object" : "no object";
    case VT_ARRAY | VT_VARIANT: {
      std::string text = "[";
      const auto* elements = static_cast<const VARIANT*>(V_ARRAY(&value)->pvData);
      for (ULONG i = 0; i < V_ARRAY(&value)->rgsabound[0].cElements; ++i)
        text.append(i ? ", " : "").append(shown(elements[i]));
      return text.append("]");
    }
    default:
      return "type " + std::to_string(V_VT(&value));
  }
}

class LateFunctions : public CompoundTest {
 protected:
  // What a call by name gives, as text; a failure as its code.
  template <class... Arguments>
  std::string invoke(WORD flags, const wchar_t* name, Arguments&&... arguments) {
    LateValue result;
    return shownOr(callByName(compound.get(), name, flags, result, std::forward<Arguments>(arguments)...), result);
  }
  static std::string shownOr(HRESULT hr, const LateValue& result) {
    if (SUCCEEDED(hr)) return shown(result.variant);
    std::ostringstream code;
    code << std::hex << static_cast<ULONG>(hr);
    return code.str();
  }
  template <class... Arguments>
  std::string get(const wchar_t* name, Arguments&&... arguments) {
    return invoke(DISPATCH_PROPERTYGET | DISPATCH_METHOD, name, std::forward<Arguments>(arguments)...);
  }
  template <class... Arguments>
  std::string put(const wchar_t* name, Arguments&&... arguments) {
    return invoke(DISPATCH_PROPERTYPUT, name, std::forward<Arguments>(arguments)...);
  }

  ComPtr<IBasicCompound> compound = newCompound();
};

const char kEmptyReal[] = "R8 -32767.000000";

TEST_F(LateFunctions, OutputsLeftOutAreReturned) {
  ASSERT_EQ(get(L"SetEquationProperty", L"VP", 1, int{PropCurvePOLY2}, 200.0, 400.0, 1.0, 2.0,
                std::initializer_list<double>{1.0, 1.0, 0.0}),
            "True");
  EXPECT_EQ(get(L"VP", 300.0, 1.0, 0, 0), "R8 301.000000");
  EXPECT_EQ(get(L"VP", 300.0, 1.0, 0), "[R8 301.000000, I4 1]");
  EXPECT_EQ(get(L"get_VPTPRange"), "[R8 200.000000, R8 400.000000, R8 1.000000, R8 2.000000]");
  EXPECT_EQ(get(L"FindProperty", L"VP"), "[UI1 1, UI1 1]");
  EXPECT_EQ(get(L"FindProperty", L"none", 0, 0), "False");
  EXPECT_EQ(get(L"GetEquationInfo", int{PropCurveEXPO2}), "['Y = A + X^B', I4 2]");
  EXPECT_EQ(get(L"GetEquationProperty", L"VP"),
            "[I4 19, 'Y = A + B*X + C*X^2', R8 200.000000, R8 400.000000, R8 1.000000, R8 2.000000, I4 3, object]");
}

TEST_F(LateFunctions, OutputsFillTheReferencesGivenForThem) {
  put(L"VelcorinID", 19);
  get(L"SetPointProperty", L"TC", 1, 647.0);
  LateValue low(L"a string"), high, dependencies(2.5);
  double typed = 1.0;
  EXPECT_EQ(get(L"TC", 300.0, 1.0, 0, &dependencies), "R8 647.000000");
  EXPECT_EQ(shown(dependencies.variant), "I4 0");
  EXPECT_EQ(get(L"get_TCTPRange", &low, &high, &typed, 0), "False");
  EXPECT_EQ(shown(low.variant), kEmptyReal);
  EXPECT_EQ(shown(high.variant), kEmptyReal);
  EXPECT_EQ(typed, -32767.0);
}

TEST_F(LateFunctions, WhatIsNotWrittenReadsAsTheEmptyValue) {
  EXPECT_EQ(get(L"RI", 300.0, 1.0, 0, 0), kEmptyReal);
  EXPECT_EQ(get(L"get_RITPRange"),
            std::string("[") + kEmptyReal + ", " + kEmptyReal + ", " + kEmptyReal + ", " + kEmptyReal + "]");
  EXPECT_EQ(get(L"GetNonCondensable"), "I4 -32767");
  EXPECT_EQ(get(L"NonCondensable"), "I4 -32767");
  EXPECT_EQ(get(L"SynonymName", 3), "''");
  EXPECT_EQ(get(L"GetUserProperty", L"none"), "no object");
  EXPECT_EQ(put(L"NonCondensable", 1), "nothing");
  EXPECT_EQ(get(L"GetNonCondensable"), "UI1 1");
  EXPECT_EQ(get(L"NonCondensable"), "True");
}

TEST_F(LateFunctions, AMethodWithoutResultsTellsSuccess) {
  EXPECT_EQ(get(L"IsWater"), "False");
  put(L"VelcorinID", 19);
  EXPECT_EQ(get(L"IsWater"), "True");
  EXPECT_EQ(get(L"IsMethanol"), "False");
  EXPECT_EQ(get(L"SetVoidProperty", L"no key", 1), "False");
}

TEST_F(LateFunctions, ArgumentsAreConverted) {
  EXPECT_EQ(get(L"SetPointProperty", L"TC", L"1", L"647"), "True");
  LateValue temperature(300);
  EXPECT_EQ(get(L"TC", &temperature, L"1", L"0", 0), "R8 647.000000");
  EXPECT_EQ(put(L"Name", 12), "nothing");
  EXPECT_EQ(get(L"Name"), "'12'");
  EXPECT_EQ(get(L"TC", L"hot", 1.0, 0, 0), "80020005") << "a type mismatch";
  EXPECT_EQ(get(L"SetEquationProperty", L"VP", 1, int{PropCurvePOLY2}, 1, 2, 3, 4, 5.0), "80020005");
  EXPECT_EQ(
      get(L"SetEquationProperty", L"VP", 1, int{PropCurvePOLY2}, 1, 2, 3, 4, std::initializer_list<double>{1.0, 2.0}),
      "80004005")
      << "the method's own failure";
  EXPECT_EQ(get(L"CopyToThis", 1), "8002000f") << "an argument is missing";
  EXPECT_EQ(get(L"IsWater", 1), "8002000e") << "too many arguments";
}

TEST_F(LateFunctions, ArgumentsMayBeNamed) {
  get(L"SetEquationProperty", L"VP", 1, int{PropCurvePOLY2}, 200.0, 400.0, 1.0, 2.0,
      std::initializer_list<double>{0.0, 1.0, 0.0});
  WideString member = L"VP", pressure = L"dPres", temperature = L"dTemp", method = L"eExtrapolationMethod";
  LPOLESTR names[] = {member.data(), pressure.data(), method.data(), temperature.data()};
  DISPID ids[4] = {};
  ASSERT_EQ(compound->GetIDsOfNames(IID_NULL, names, 4, 0, ids), S_OK);
  LateValue one(1.0), none(0), hot(350.0);
  VARIANT given[] = {one.variant, none.variant, hot.variant};
  DISPPARAMS parameters{given, ids + 1, 3, 3};
  const auto invokeNamed = [&] {
    LateValue result;
    return shownOr(invokeByName(compound.get(), L"VP", DISPATCH_PROPERTYGET, result, parameters), result);
  };
  EXPECT_EQ(invokeNamed(), "[R8 350.000000, I4 1]");
  ids[1] = ids[3];
  EXPECT_EQ(invokeNamed(), "8002000e") << "one argument twice";
  ids[1] = 99;
  EXPECT_EQ(invokeNamed(), "80020004");
}

}  // namespace
}  // namespace qs::test
