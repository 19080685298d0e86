// What late-bound callers get back: out-parameters, results, conversions and failures.
#include "automation/late_function.h"

#include <sstream>

#include "tests/support/late_call.h"
#include "tests/support/phases.h"

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
  static std::string invoke(IDispatch* object, WORD flags, const wchar_t* name, Arguments&&... arguments) {
    LateValue result;
    return shownOr(callByName(object, name, flags, result, std::forward<Arguments>(arguments)...), result);
  }
  static std::string shownOr(HRESULT hr, const LateValue& result) {
    if (SUCCEEDED(hr)) return shown(result.variant);
    std::ostringstream code;
    code << std::hex << static_cast<ULONG>(hr);
    return code.str();
  }
  template <class... Arguments>
  std::string get(const wchar_t* name, Arguments&&... arguments) {
    return invoke(compound.get(), DISPATCH_PROPERTYGET | DISPATCH_METHOD, name, std::forward<Arguments>(arguments)...);
  }
  template <class... Arguments>
  std::string put(const wchar_t* name, Arguments&&... arguments) {
    return invoke(compound.get(), DISPATCH_PROPERTYPUT, name, std::forward<Arguments>(arguments)...);
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

TEST_F(LateFunctions, OutputsAreConvertedToTheVariablesGivenForThem) {
  get(L"SetEquationProperty", L"VP", 1, int{PropCurvePOLY2}, 200.0, 400.0, 1.0, 2.0,
      std::initializer_list<double>{1.0, 1.0, 0.0});
  const std::string mismatch = "80020005", overflow = "8002000a";
  const struct {
    VARTYPE type;
    std::string number, text;  // what becomes of the number 200 and of the text `Y = A + X^B`
  } rows[] = {{VT_I1, overflow, mismatch},      {VT_UI1, "200", mismatch},
              {VT_I2, "200", mismatch},         {VT_UI2, "200", mismatch},
              {VT_I4, "200", mismatch},         {VT_UI4, "200", mismatch},
              {VT_INT, "200", mismatch},        {VT_UINT, "200", mismatch},
              {VT_I8, "200", mismatch},         {VT_UI8, "200", mismatch},
              {VT_R4, "200", mismatch},         {VT_R8, "200", mismatch},
              {VT_CY, "200", mismatch},         {VT_DECIMAL, "200", mismatch},
              {VT_BOOL, "True", mismatch},      {VT_BSTR, "200", "Y = A + X^B"},
              {VT_ERROR, mismatch, mismatch},   {VT_DISPATCH, mismatch, mismatch},
              {VT_UNKNOWN, mismatch, mismatch}, {VT_ARRAY | VT_R8, mismatch, mismatch}};
  const auto attributes = create<IDispatch>(__uuidof(::AttributeSet));
  for (const auto& row : rows) {
    SCOPED_TRACE(row.type);
    const auto received = [&](const wchar_t* name, auto... arguments) {
      DECIMAL place{};  // of the largest size; null where the type is a pointer
      LateValue variable(row.type, &place), result, text;
      const HRESULT hr = callByName(compound.get(), name, DISPATCH_METHOD, result, arguments..., std::move(variable));
      const LateValue value(row.type, &place);
      if (FAILED(hr)) {
        EXPECT_EQ(place.Lo64, 0u) << "left as it was";
        return shownOr(hr, result);
      }
      EXPECT_EQ(VariantChangeType(&text.variant, const_cast<VARIANT*>(&value.variant), VARIANT_ALPHABOOL, VT_BSTR),
                S_OK);
      if (row.type == VT_BSTR) SysFreeString(*V_BSTRREF(&value.variant));
      return narrow(viewOf(V_BSTR(&text.variant)));
    };
    EXPECT_EQ(received(L"get_VPTPRange"), row.number);
    EXPECT_EQ(received(L"GetEquationInfo", int{PropCurveEXPO2}), row.text);
    DECIMAL place{};
    EXPECT_EQ(invoke(attributes.get(), DISPATCH_METHOD, L"GetByIndex", 5, LateValue(row.type, &place), 0),
              row.number == mismatch ? mismatch : "8000000b")
        << "refused before the call, which fails";
  }

  double low = 1;
  signed char high = 1;
  EXPECT_EQ(get(L"get_VPTPRange", &low, LateValue(VT_I1, &high)), overflow);
  EXPECT_EQ(low, 1) << "none is changed when one does not fit";
  ULONG natural = 1;
  EXPECT_EQ(get(L"GetEquationInfo", 12345, 0, LateValue(VT_UI4, &natural)), overflow) << "the empty value";
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
  const std::string equation =
      invoke(create<IDispatch>(__uuidof(::JsonLoader)).get(), DISPATCH_METHOD, L"Get_PropEquation", L"", L"", L"VP");
  EXPECT_EQ(std::ranges::count(equation, ','), 13) << "the function with the most parameters: " << equation;
}

TEST_F(LateFunctions, ArraysOfNumbersBecomeArrayObjects) {
  const auto set = [&](LateValue array) {
    return get(L"SetEquationProperty", L"VP", 1, int{PropCurvePOLY2}, 200, 400, 1, 2, std::move(array));
  };
  for (const VARTYPE type : {VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_I8, VT_UI8, VT_R4, VT_R8, VT_CY, VT_DATE,
                             VT_DECIMAL, VT_BSTR, VT_VARIANT}) {
    SCOPED_TRACE(type);
    get(L"SetVoidProperty", L"VP", 1);
    const LateValue array(type, {{3, 5}}, {3, 2, 1});
    EXPECT_EQ(set(LateValue(static_cast<VARTYPE>(VT_ARRAY | type), const_cast<SAFEARRAY**>(&V_ARRAY(&array.variant)))),
              "True");
    EXPECT_EQ(get(L"VP", 250, 1, 0, 0), "R8 63003.000000");
  }
  LateValue wide(VT_I4, {{32, 0}}, {}), records(VT_I8, {{3, 0}}, {3, 2, 1}), null(VT_ARRAY | VT_R8, nullptr);
  V_ARRAY(&wide.variant)->cbElements *= 8;
  V_ARRAY(&wide.variant)->rgsabound[0].cElements /= 8;
  V_VT(&records.variant) = VT_ARRAY | VT_RECORD;
  for (LateValue* refused : {&wide, &records, &null}) EXPECT_EQ(set(LateValue(refused)), "80020005");
  V_VT(&records.variant) = VT_ARRAY | VT_I8;

  const auto phase = create<IBasicPhase>(__uuidof(::COQSPhase));
  const auto call = [&](const wchar_t* name, auto&&... arguments) {
    return invoke(phase.get(), DISPATCH_METHOD, name, std::forward<decltype(arguments)>(arguments)...);
  };
  EXPECT_EQ(call(L"AddDerivativeProp", 1, 2, int{RealMatrix}, int{RealMatrix}), "I4 0");
  for (const wchar_t* put : {L"PutMatrixDerivative", L"PutVariantDerivative"}) {
    EXPECT_EQ(call(put, 0, LateValue(VT_VARIANT, {{2, 1}, {3, 0}}, {1, 2, 3, 4, 5, 6})), "True");
    ComPtr<IRealMatrixDisp> matrix;
    double value = 0;
    ASSERT_EQ(query<IDerivativeProp>(phase)->GetMatrixDerivative(0, matrix.out()), S_OK);
    EXPECT_EQ(matrix->get_Value(1, 0, &value), S_OK);
    EXPECT_EQ(value, 2) << "row by row of the first dimension";
    EXPECT_EQ(call(put, 0, std::initializer_list<double>{1, 2}), "80020005") << "of one dimension";
  }
}

TEST_F(LateFunctions, TrueIsOneForAByte) {
  const auto setter = query<ICompoundPropPut>(compound);
  for (IDispatch* face : {static_cast<IDispatch*>(compound.get()), static_cast<IDispatch*>(setter.get())})
    for (const bool fixed : {true, false}) {
      VARIANT_BOOL flag = fixed ? VARIANT_TRUE : VARIANT_FALSE;
      get(L"SetVoidProperty", L"TC", 1);
      invoke(face, DISPATCH_METHOD, L"SetPointProperty", L"TC", LateValue(VT_BOOL, &flag), 500);
      invoke(face, DISPATCH_METHOD, L"SetPointProperty", L"PC", fixed, 600);
      EXPECT_EQ(get(L"TC", 300, 1, 0, 0), fixed ? "R8 500.000000" : kEmptyReal);
    }
  EXPECT_EQ(get(L"PC", 300, 1, 0, 0), "R8 600.000000");
}

TEST_F(LateFunctions, ObjectsArePutByReferenceAndTheirElementsByPosition) {
  const auto phase = create<IBasicPhase>(__uuidof(::COQSPhase));
  const auto array = reals({0.25, 0.75});
  const auto call = [&](WORD flags, const wchar_t* name, auto&&... arguments) {
    return invoke(phase.get(), flags, name, std::forward<decltype(arguments)>(arguments)...);
  };
  constexpr WORD kGet = DISPATCH_PROPERTYGET | DISPATCH_METHOD, kPut = DISPATCH_PROPERTYPUT,
                 kSet = DISPATCH_PROPERTYPUTREF;
  EXPECT_EQ(call(kSet, L"MolarComposition", array.get()), "nothing");
  EXPECT_EQ(call(kSet, L"Temperature", array.get()), "80020003") << "takes no object";
  EXPECT_EQ(call(kGet, L"MolarComposition", 1), "R8 0.750000");
  EXPECT_EQ(call(kPut, L"MolarComposition", 1, 0.5), "nothing");
  EXPECT_EQ(call(kGet, L"MolarComposition", 1), "R8 0.500000");
  EXPECT_EQ(call(kGet, L"MolarComposition", 2), "8000000b") << "the array's own failure";
  EXPECT_EQ(call(kGet, L"MolarComposition", 1, 1), "8002000e");
  EXPECT_EQ(call(kGet, L"MassComposition", 1), "80004001");
  EXPECT_EQ(call(kGet, L"Compounds", 0), "80020003") << "there is no object";
  EXPECT_EQ(call(kGet, L"Temperature", 1), "8002000e") << "nor can there be one";
  EXPECT_EQ(call(kPut, L"Temperature", 1, 300), "8002000e");
  EXPECT_EQ(referencesOf(array.get()), 1u);
}

TEST_F(LateFunctions, AGetterAndASetterNameTheirOwnArguments) {
  const auto ids = [&](std::vector<WideString> names) {
    std::vector<LPOLESTR> pointers;
    for (WideString& name : names) pointers.push_back(name.data());
    std::vector<DISPID> found(names.size());
    const HRESULT hr =
        compound->GetIDsOfNames(IID_NULL, pointers.data(), static_cast<UINT>(names.size()), 0, found.data());
    return std::pair(hr, found);
  };
  const auto put = ids({L"UNIFAC1Groups", L"pgrouptypes", L"nNumGroup"});
  EXPECT_EQ(put.first, S_OK);
  const auto get = ids({L"UNIFAC1Groups", L"ppGroupCounts"});
  EXPECT_EQ(get, (std::pair(S_OK, std::vector{put.second[0], DISPID{1}})));
  const auto none = ids({L"UNIFAC1Groups", L"nNumGroup", L"ppGroupCounts"});
  EXPECT_EQ(none.first, DISP_E_UNKNOWNNAME) << "of neither";
  LateValue types(integers({1, 2}).get()), count(2), counts(integers({3, 4}).get()), result;
  VARIANT given[] = {counts.variant, types.variant, count.variant};
  DISPID names[] = {DISPID_PROPERTYPUT, put.second[1], put.second[2]};
  DISPPARAMS parameters{given, names, 3, 3};
  EXPECT_EQ(invokeByName(compound.get(), L"UNIFAC1Groups", DISPATCH_PROPERTYPUT, result, parameters), S_OK);
  EXPECT_EQ(this->get(L"UNIFAC1NumberOfGroups"), "I4 2");
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
