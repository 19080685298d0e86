// Properties of a phase by number, and the registration of the numbers.
#include "tests/support/phases.h"

namespace qs::test {
namespace {

constexpr auto kRemoved = static_cast<HRESULT>(0x000406DC);

class NumberedProperties : public PhaseTest {
 protected:
  struct Object {
    ComPtr<IBasicPhase> phase = newPhase();
    ComPtr<IEnumeratedPropertyContainer> numbered = query<IEnumeratedPropertyContainer>(phase);
    IEnumeratedPropertyContainer* operator->() const { return numbered.get(); }
  };

  static Object registered() {
    Object object;
    NumberingRegistry registry;
    EXPECT_EQ(query<IRegisterableObject>(object.phase)->RegisterProperties(&registry), S_OK);
    return object;
  }

  static Variant got(const Object& object, LONG number, HRESULT expected) {
    VARIANT value;
    EXPECT_EQ(object->GetPropertyValue(number, &value), expected) << number;
    return Variant::adopt(value);
  }
  static INT count(const Object& object) {
    return qs::test::got(object.numbered, &IEnumeratedPropertyContainer::GetNumberOfProperties);
  }
  static std::vector<LONG> numbers(const Object& object, INT most) {
    ComPtr<IIntegerArrayDisp> array;
    EXPECT_EQ(object->GetPropertyIDs(most, array.out()), S_OK);
    EXPECT_EQ(referencesOf(array.get()), 1u);
    return valuesOf(array.get());
  }
  static bool supports(const Object& object, LONG number) {
    VARIANT_BOOL value = 5;
    EXPECT_EQ(object->SupportsProperty(number, &value), S_OK);
    EXPECT_TRUE(value == VARIANT_TRUE || value == VARIANT_FALSE);
    return value == VARIANT_TRUE;
  }
};

TEST_F(NumberedProperties, NamesAreRegisteredInTheirOrder) {
  const auto phase = newPhase();
  const auto registerable = query<IRegisterableObject>(phase);
  NumberingRegistry registry;
  ASSERT_EQ(registerable->RegisterProperties(&registry), S_OK);
  WideString names;
  for (const WideString& name : registry.names) names += name + OLESTR(' ');
  EXPECT_EQ(narrow(names),
            "PhaseType PhaseStatus PhaseFraction PhaseMassFraction Pressure Temperature Homotopy Enthalpy Entropy Cp "
            "MolarVolume MolecularWeight MolarComposition LnFugacityCoeff LnFugacity IsPseudoRoot "
            "dT dP dN dX dT2 dTdP dNdT dXdT dNdP dXdP dT3 dT2dP dNdT2 dXdT2 dNdTdP dXdTdP ");
  EXPECT_EQ(registry.references, 1u) << "not kept";

  const auto other = newPhase();
  NumberingRegistry failing(3);
  EXPECT_EQ(query<IRegisterableObject>(other)->RegisterProperties(&failing), NumberingRegistry::kRefused);
  for (const LONG number : {102, 103}) {
    VARIANT_BOOL known = VARIANT_FALSE;
    EXPECT_EQ(query<IEnumeratedPropertyContainer>(other)->SupportsProperty(number, &known), S_OK);
    EXPECT_EQ(known == VARIANT_TRUE, number == 102) << "the numbers before the failure stay";
  }
  EXPECT_EQ(registerable->RegisterProperties(nullptr), E_FAIL);
  EXPECT_EQ(registerable->RegisterProperties(phase.get()), E_NOINTERFACE);
}

TEST_F(NumberedProperties, TheHostKitsRegistryNumbersEachNameOnce) {
  const auto registry = newRegistry();
  const auto names = query<IEnumeratedPropertyRegistry>(registry);
  for (int phase = 0; phase < 2; ++phase)
    EXPECT_EQ(query<IRegisterableObject>(newPhase())->RegisterProperties(registry.get()), S_OK);
  LONG known = 0, number = 0;
  EXPECT_EQ(names->GetNumberOfProperties(&known), S_OK);
  EXPECT_EQ(known, 32);
  EXPECT_EQ(names->RegisterProperty(Bstr(OLESTR("Temperature")).get(), &number), S_OK);
  EXPECT_EQ(number, 6);
  Bstr name;
  EXPECT_EQ(names->GetPropertyName(17, name.out()), S_OK);
  EXPECT_EQ(name.view(), OLESTR("dT"));
  for (const LONG outside : {0, 33, -1}) EXPECT_EQ(names->GetPropertyName(outside, name.out()), S_FALSE);
}

TEST_F(NumberedProperties, StandardOnesAreThoseOfTheTypedInterface) {
  const auto object = registered();
  EXPECT_EQ(got(object, 101, S_FALSE).get().vt, VT_I4);
  EXPECT_EQ(got(object, 102, S_FALSE).get().dblVal, kUnset);
  for (LONG number = 100; number < 112; ++number)
    EXPECT_EQ(object->PutPropertyValue(number, Variant(number - 99.5).get()), S_OK);
  const auto array = reals({0.5, 0.25});
  for (const LONG number : {112, 113, 114}) {
    EXPECT_EQ(object->PutPropertyValue(number, Variant(ComPtr<IDispatch>(array.get())).get()), S_OK);
    EXPECT_NE(got(object, number, S_OK).get().pdispVal, array.get()) << "a copy";
    array->put_IthValue(0, number);
  }
  object->PutPropertyValue(115, Variant(9.0).get());
  EXPECT_EQ(stateOf(object.phase),
            "0: 0 2 - 1; 2.5 3.5 4.5 5.5 6.5 7.5 8.5 9.5 10.5 11.5; 0.5 0.25; 112 0.25; 113 0.25")
      << "halves go to the even number";
  EXPECT_EQ(got(object, 101, S_OK).get().lVal, 2);
  for (LONG number = 102; number < 112; ++number) {
    const Variant value = got(object, number, S_OK);
    EXPECT_EQ(value.get().vt, VT_R8);
    EXPECT_EQ(value.get().dblVal, number - 99.5);
  }
  object.phase->put_LnFugacity(reals({kUnset}).get());
  EXPECT_EQ(got(object, 114, S_FALSE).get().vt, VT_DISPATCH);
  EXPECT_EQ(referencesOf(array.get()), 1u);
}

TEST_F(NumberedProperties, ValuesAreConverted) {
  struct Case {
    LONG number;
    Variant given;
    HRESULT result;
    double value;
  };
  const auto object = registered();
  Case cases[] = {
      {105, text(OLESTR(" 350.5 ")), S_OK, 350.5},
      {105, Variant(LONG{-4}), S_OK, -4.0},
      {105, Variant(), S_OK, 0.0},
      {105, text(OLESTR("warm")), DISP_E_TYPEMISMATCH, 0.0},
      {101, Variant(2.6), S_OK, 3.0},
      {101, Variant(1e12), DISP_E_OVERFLOW, 3.0},
      {105, typed(VT_UI2, 40000), S_OK, 40000.0},
      {105, typed(VT_BOOL, VARIANT_TRUE), S_OK, -1.0},
      {115, typed(VT_BOOL, VARIANT_TRUE), S_OK, 1.0},
      {115, Variant(0.0), S_OK, 0.0},
      {115, Variant(256.0), S_OK, 1.0},
      {115, Variant(), S_OK, 0.0},
      {115, text(OLESTR("0.5")), S_OK, 1.0},
      {115, text(OLESTR("yes")), DISP_E_TYPEMISMATCH, 1.0},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(testing::Message() << one.number << " type " << one.given.get().vt);
    EXPECT_EQ(object->PutPropertyValue(one.number, one.given.get()), one.result);
    const Variant value = got(object, one.number, S_OK);
    EXPECT_EQ(value.get().vt == VT_I4 ? value.get().lVal : value.get().dblVal, one.value);
  }
  for (const LONG array : {112, 113, 114}) {
    EXPECT_EQ(object->PutPropertyValue(array, Variant(1.0).get()), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(object->PutPropertyValue(array, Variant(ComPtr<IDispatch>(integers({1}).get())).get()), E_NOINTERFACE);
  }
}

TEST_F(NumberedProperties, FurtherOnesComeAndGo) {
  const auto object = registered();
  EXPECT_EQ(count(object), 16);
  EXPECT_EQ(object->AddProperty(7, Variant(1.25).get()), S_OK);
  EXPECT_EQ(object->AddProperty(7, Variant(2.0).get()), S_FALSE) << "present";
  EXPECT_EQ(object->AddProperty(100, Variant(2.0).get()), S_FALSE) << "standard";
  EXPECT_EQ(object->AddProperty(-5, text(OLESTR("a")).get()), S_OK);
  EXPECT_EQ(count(object), 18);
  EXPECT_TRUE(supports(object, 7) && supports(object, 115) && !supports(object, 116) && !supports(object, 8));
  EXPECT_EQ(got(object, 7, S_OK).get().dblVal, 1.25);
  EXPECT_EQ(viewOf(got(object, -5, S_OK).get().bstrVal), OLESTR("a"));
  EXPECT_EQ(got(object, 8, S_FALSE).get().vt, VT_EMPTY);

  EXPECT_EQ(object->RemoveProperty(100), E_FAIL);
  EXPECT_EQ(object->RemoveProperty(8), S_FALSE);
  EXPECT_EQ(object->RemoveProperty(7), S_OK);
  EXPECT_EQ(count(object), 17);
  EXPECT_FALSE(supports(object, 7));
  EXPECT_EQ(got(object, 7, kRemoved).get().dblVal, 1.25) << "the value is kept";
  EXPECT_EQ(object->PutPropertyValue(7, Variant(3.0).get()), S_OK);
  EXPECT_EQ(count(object), 18) << "present again";
  EXPECT_EQ(object->PutPropertyValue(9, Variant(4.0).get()), S_OK);
  EXPECT_EQ(count(object), 18) << "created by a put: not counted";
  EXPECT_TRUE(supports(object, 9));

  EXPECT_EQ(object.phase->ResetProperties(0xFF), S_OK);
  EXPECT_EQ(count(object), 16);
  EXPECT_EQ(got(object, 7, kRemoved).get().dblVal, 3.0);
  EXPECT_EQ(object->AddProperty(7, Variant(5.0).get()), S_OK);
  EXPECT_EQ(got(object, 7, S_OK).get().dblVal, 5.0);
  EXPECT_EQ(count(object), 17);
}

TEST_F(NumberedProperties, NumbersAreListedWithinTheCount) {
  const auto object = registered();
  std::vector<LONG> all(16);
  for (LONG i = 0; i < 16; ++i) all[static_cast<std::size_t>(i)] = 100 + i;
  EXPECT_EQ(numbers(object, 1000), all);
  for (const LONG number : {50, -3, 7}) object->AddProperty(number, Variant(1.0).get());
  auto more = all;
  more.insert(more.end(), {-3, 7, 50});
  EXPECT_EQ(numbers(object, 1000), more) << "ascending";
  more.resize(17);
  EXPECT_EQ(numbers(object, 17), more);
  EXPECT_EQ(numbers(object, 2), (std::vector<LONG>{100, 101}));
  for (const INT hostile : {0, -1, INT{-2147483647}}) EXPECT_EQ(numbers(object, hostile), std::vector<LONG>());

  for (int i = 0; i < 40; ++i) EXPECT_EQ(object->RemoveProperty(7), S_OK) << "lowers the count each time";
  EXPECT_EQ(count(object), -21);
  EXPECT_EQ(numbers(object, 1000), std::vector<LONG>());
  EXPECT_EQ(newPhase()->CopyProperties(object.phase.get()), S_OK);
}

TEST_F(NumberedProperties, StoredObjectsAreReleasedInTime) {
  const auto array = reals({1.0});
  {
    const auto object = registered();
    const Variant held(ComPtr<IDispatch>(array.get()));
    EXPECT_EQ(object->AddProperty(1, held.get()), S_OK);
    EXPECT_EQ(object->AddProperty(1, held.get()), S_FALSE);
    EXPECT_EQ(referencesOf(array.get()), 3u);
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = const_cast<VARIANT*>(&held.get());
    EXPECT_EQ(object->PutPropertyValue(2, reference), S_OK);
    EXPECT_EQ(got(object, 2, S_OK).get().vt, VT_DISPATCH) << "what a reference refers to, not the reference";
    EXPECT_EQ(referencesOf(array.get()), 4u);
    EXPECT_EQ(object->PutPropertyValue(1, Variant(1.0).get()), S_OK);
    EXPECT_EQ(referencesOf(array.get()), 3u);
  }
  EXPECT_EQ(referencesOf(array.get()), 1u);
}

TEST_F(NumberedProperties, ACopyTakesFurtherOnesThatArePresent) {
  const auto source = registered(), copy = registered();
  for (const LONG number : {1, 2, 3}) source->AddProperty(number, Variant(number * 10.0).get());
  copy->AddProperty(3, Variant(7.0).get());
  source->RemoveProperty(2);
  source->AddProperty(4, text(OLESTR("four")).get());
  ASSERT_EQ(copy.phase->CopyProperties(source.phase.get()), S_OK);
  EXPECT_EQ(got(copy, 1, S_OK).get().dblVal, 10.0);
  got(copy, 2, S_FALSE);
  EXPECT_EQ(got(copy, 3, S_OK).get().dblVal, 7.0) << "what is there stays";
  // The list has as many places as properties are present, and a removed one takes the place of the last.
  got(copy, 4, S_FALSE);
}

}  // namespace
}  // namespace qs::test
