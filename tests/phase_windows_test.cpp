// Phases by name, as scripts use them.
#include "tests/support/phases.h"

namespace qs::test {
namespace {

class PhaseLateBinding : public PhaseTest {
 protected:
  // Calls a member by name; the arguments stand in their order. A failure of the member is answered as its own code.
  static HRESULT call(IDispatch* object, const wchar_t* name, WORD flags, VARIANT* result,
                      std::initializer_list<VARIANT> arguments) {
    WideString copy = name;
    LPOLESTR names[] = {copy.data()};
    DISPID id = 0, put = DISPID_PROPERTYPUT;
    if (const HRESULT hr = object->GetIDsOfNames(IID_NULL, names, 1, 0, &id); FAILED(hr)) return hr;
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    const bool putting = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{reversed.data(), putting ? &put : nullptr, static_cast<UINT>(reversed.size()), putting};
    EXCEPINFO exception{};
    const HRESULT hr = object->Invoke(id, IID_NULL, 0, flags, &parameters, result, &exception, nullptr);
    return hr == DISP_E_EXCEPTION ? exception.scode : hr;
  }
};

TEST_F(PhaseLateBinding, ValuesGoByNameAndByNumber) {
  const auto phase = newPhase();
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(call(phase.get(), L"Temperature", DISPATCH_PROPERTYPUT, nullptr, {Variant(350.0).get()}), S_OK);
  EXPECT_EQ(call(phase.get(), L"Temperature", DISPATCH_PROPERTYGET, &result, {}), S_OK);
  EXPECT_EQ(result.dblVal, 350.0);
  VARIANT variable = Variant(2.5).get(), reference;
  VariantInit(&reference);
  reference.vt = VT_BYREF | VT_VARIANT;
  reference.pvarVal = &variable;
  EXPECT_EQ(call(phase.get(), L"AddProperty", DISPATCH_METHOD, nullptr, {Variant(LONG{500}).get(), reference}), S_OK);
  EXPECT_EQ(call(phase.get(), L"GetPropertyValue", DISPATCH_METHOD, &result, {Variant(LONG{500}).get()}), S_OK);
  EXPECT_EQ(result.vt, VT_R8);
  EXPECT_EQ(result.dblVal, 2.5);
}

TEST_F(PhaseLateBinding, WhatIsLentIsNotForScripts) {
  const auto phase = newPhase();
  IRealArrayDisp* lent = nullptr;
  phase->get_MolarCompositionDisp(&lent);
  const ULONG before = referencesOf(lent);
  for (const wchar_t* name : {L"MolarCompositionDisp", L"GetLnFugacity", L"GetLnFugacityCoeff"}) {
    VARIANT result;
    VariantInit(&result);
    EXPECT_TRUE(FAILED(call(phase.get(), name, DISPATCH_PROPERTYGET | DISPATCH_METHOD, &result, {})));
  }
  for (const wchar_t* name : {L"MolarComposition", L"LnFugacity"}) {
    VARIANT result;
    VariantInit(&result);
    EXPECT_EQ(call(phase.get(), name, DISPATCH_PROPERTYGET, &result, {}), S_OK);
    VariantClear(&result);
  }
  EXPECT_EQ(referencesOf(lent), before);
}

}  // namespace
}  // namespace qs::test
