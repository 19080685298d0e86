// Properties by name and position, user properties and copies.
#include <gmock/gmock.h>

#include <climits>

#include "props/key_table.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

// An external property that answers 100 plus the temperature and the result it is told to.
class Component final : public HostProperty {
 public:
  STDMETHODIMP GetProperty(double temperature, double, tagExtrapolationEnum, LONG* dependencies,
                           double* value) noexcept override {
    *dependencies = 3;
    *value = 100.0 + temperature;
    return E_FAIL;
  }
};

class CompoundProperties : public XmlTest {
 protected:
  struct Found {
    HRESULT result;
    int found, fixed;
    bool operator==(const Found&) const = default;
  };
  HRESULT setPoint(WideView name, BYTE fixed, double value) {
    return put->SetPointProperty(Bstr(name).get(), fixed, value);
  }
  HRESULT setEquation(WideView name, BYTE fixed, int shape, std::initializer_list<double> coefficients) {
    return put->SetEquationProperty(Bstr(name).get(), fixed, static_cast<tagEquationShapeEnum>(shape), 1, 2, 3, 4,
                                    reals(coefficients).get());
  }
  Found find(WideView name) {
    BYTE found = 9, fixed = 9;
    const HRESULT result = put->FindProperty(Bstr(name).get(), &found, &fixed);
    return {result, found, fixed};
  }
  std::string text(WideView name) { return propertyText(compound, Bstr(name)); }
  // The value at 300 K.
  double value(WideView name, HRESULT expected = S_OK) {
    const PropertyReading reading = propertyOf(compound, name);
    EXPECT_EQ(reading.result, expected);
    return reading.value;
  }
  std::vector<WideString> names(BYTE fixed) {
    INT count = 0;
    EXPECT_EQ(props->GetNumbOfProperty(fixed, &count), S_OK);
    std::vector<WideString> result;
    for (INT i = 0; i < count; ++i) {
      BSTR name = nullptr;
      tagPropTypeEnum type{};
      EXPECT_EQ(props->GetPropertyName(fixed, i, &name, &type), S_OK);
      result.push_back(taken(name));
    }
    return result;
  }

  ComPtr<IBasicCompound> compound = newCompound();
  ComPtr<ICompoundProp> props = query<ICompoundProp>(compound);
  ComPtr<ICompoundPropPut> put = query<ICompoundPropPut>(compound);
};

TEST_F(CompoundProperties, FixedKeysAreAlwaysListedInCodeUnitOrder) {
  std::vector<WideString> keys;
  for (const KeyEntry& key : kKeys) keys.emplace_back(key.name);
  std::sort(keys.begin(), keys.end());
  EXPECT_EQ(names(1), keys);
  EXPECT_EQ(names(0), std::vector<WideString>());
  setPoint(OLESTR("TC"), 1, 500.0);
  EXPECT_EQ(names(1), keys);
  EXPECT_EQ(names(2), std::vector<WideString>()) << "only 1 chooses the fixed keys";

  BSTR name = nullptr;
  tagPropTypeEnum type{};
  for (const INT index : {-1, 105, INT_MAX, INT_MIN})
    EXPECT_EQ(props->GetPropertyName(1, index, &name, &type), S_FALSE) << index;
}

TEST_F(CompoundProperties, IdentityFieldsAreListedAsStrings) {
  INT count = 0;
  BSTR name = nullptr;
  tagPropTypeEnum type{};
  EXPECT_EQ(props->GetNumbOfCommonProperty(&count), S_OK);
  EXPECT_EQ(count, 15);
  EXPECT_EQ(props->GetCommonPropertyName(6, &name, &type), S_OK);
  EXPECT_EQ(taken(name), OLESTR("VelcorinID"));
  EXPECT_EQ(type, PointPropBSTR);
  for (const INT outside : {-1, 15}) EXPECT_EQ(props->GetCommonPropertyName(outside, &name, &type), S_FALSE);
}

TEST_F(CompoundProperties, NamesAreStoredWhereTheFlagSays) {
  const WideString longName(200, OLESTR('n'));
  struct Row {
    WideString name;
    BYTE fixed;
    HRESULT stored;
    Found found;
  };
  const Row rows[] = {
      {OLESTR("TC"), 1, S_OK, {S_OK, 1, 1}},
      {OLESTR("SUBP"), 1, S_OK, {S_OK, 1, 1}},
      {OLESTR("mw"), 1, S_FALSE, {S_FALSE, 0, 0}},
      {OLESTR("MW "), 1, S_FALSE, {S_FALSE, 0, 0}},
      {OLESTR("Void"), 1, S_FALSE, {S_FALSE, 0, 0}},
      {OLESTR(""), 1, S_FALSE, {S_FALSE, 0, 0}},
      {longName, 1, S_FALSE, {S_FALSE, 0, 0}},
      {OLESTR("Void"), 0, S_OK, {S_OK, 1, 0}},
      {OLESTR("mw"), 0, S_OK, {S_OK, 1, 0}},
      {longName, 0, S_OK, {S_OK, 1, 0}},
      {OLESTR(""), 0, S_OK, {S_OK, 1, 0}},
      {OLESTR("VC"), 0, S_OK, {S_FALSE, 0, 1}},  // hidden by the fixed key
  };
  for (const Row& row : rows) {
    EXPECT_EQ(setPoint(row.name, row.fixed, 1.5), row.stored) << narrow(row.name);
    EXPECT_EQ(find(row.name), row.found) << narrow(row.name);
    if (row.found.found == 1) {
      EXPECT_EQ(value(row.name), 1.5) << narrow(row.name);
    }
  }
  EXPECT_EQ(put->SetPointProperty(nullptr, 1, 1.0), S_FALSE);
  EXPECT_EQ(find(OLESTR("PC")), (Found{S_FALSE, 0, 1}));
}

TEST_F(CompoundProperties, KindsTellEmptyFixedKeysFromVoidOthers) {
  EXPECT_EQ(text(OLESTR("TC")), "0 1:");
  EXPECT_EQ(text(OLESTR("mine")), "0 1:");
  EXPECT_EQ(put->SetVoidProperty(Bstr(OLESTR("mine")).get(), 1), S_FALSE);
  EXPECT_EQ(put->SetVoidProperty(Bstr(OLESTR("mine")).get(), 0), S_OK);
  EXPECT_EQ(put->SetVoidProperty(Bstr(OLESTR("TC")).get(), 1), S_OK);
  EXPECT_EQ(text(OLESTR("TC")), "0 0:");
  EXPECT_EQ(text(OLESTR("mine")), "0 0:");
}

TEST_F(CompoundProperties, ErasingRemovesFromTheChosenMapOnly) {
  setPoint(OLESTR("TC"), 1, 1.0);
  setPoint(OLESTR("mine"), 0, 2.0);
  const auto erase = [&](WideView name, BYTE fixed) { return put->ErasePropFromMap(Bstr(name).get(), fixed); };
  EXPECT_EQ(erase(OLESTR("TC"), 0), S_FALSE);
  EXPECT_EQ(erase(OLESTR("mine"), 1), S_FALSE);
  EXPECT_EQ(erase(OLESTR("TC"), 1), S_OK);
  EXPECT_EQ(erase(OLESTR("TC"), 1), S_FALSE);
  EXPECT_EQ(erase(OLESTR("mine"), 0), S_OK);
  EXPECT_EQ(names(0), std::vector<WideString>());
  value(OLESTR("TC"), S_FALSE);
  EXPECT_EQ(names(1).size(), 105u);
}

TEST_F(CompoundProperties, AnEquationThatCannotBeMadeLeavesWhatStoodThere) {
  setPoint(OLESTR("VP"), 1, 7.0);
  EXPECT_EQ(setEquation(OLESTR("VP"), 1, PropCurvePOLY2, {1, 2}), E_FAIL);
  EXPECT_EQ(setEquation(OLESTR("VP"), 1, 38, {1, 2, 3, 4, 5, 6, 7}), E_FAIL);
  EXPECT_EQ(setEquation(OLESTR("VP"), 1, -1, {1, 2, 3, 4, 5, 6, 7}), E_FAIL);
  EXPECT_EQ(put->SetEquationProperty(Bstr(OLESTR("VP")).get(), 1, PropCurvePOLY2, 1, 2, 3, 4, nullptr), E_FAIL);
  EXPECT_EQ(value(OLESTR("VP")), 7.0);
  EXPECT_EQ(setEquation(OLESTR("vp"), 1, PropCurvePOLY2, {1, 2, 3}), S_FALSE);
  EXPECT_EQ(setEquation(OLESTR("VP"), 1, PropCurvePOLY2, {1, 2, 0, 99}), S_OK) << "further coefficients are ignored";
  EXPECT_EQ(value(OLESTR("VP")), 601.0);
}

TEST_F(CompoundProperties, EquationsTellFormRangeCoefficientsAndTransformations) {
  ASSERT_EQ(setEquation(OLESTR("own"), 0, PropCurvePPDS14, {1.5, 2.5, 3.5}), S_OK);
  EXPECT_EQ(text(OLESTR("own")), "2 0: 34 'Y = A*X^B*(1 + C*X)' 1 2 3 4 ( 1.5 2.5 3.5) 1 1 1 1 1 1 -32767 -32767");
  const auto shapes = query<ICompEqnXYShape>(compound);
  const auto transform = [&](WideView name) {
    return shapes->SetEquationPropertyXYShape(Bstr(name).get(), COMxr, COMlnx, 10.0, 1.0, 2.0, 1.0, 8.0, 9.0);
  };
  setEquation(OLESTR("VP"), 1, PropCurvePOLY2, {0, 1, 0});
  EXPECT_EQ(transform(OLESTR("VP")), S_OK);
  EXPECT_TRUE(text(OLESTR("VP")).ends_with("( 0 1 0) 2 7 10 1 2 1 8 9")) << text(OLESTR("VP"));
  EXPECT_DOUBLE_EQ(value(OLESTR("VP")), std::exp(900.0)) << "e^((300/10)^2)";

  // What is no equation has a shape and a form of its own; of an unknown name nothing is written.
  setPoint(OLESTR("TC"), 1, 1.0);
  for (const WideView name : {WideView(OLESTR("TC")), WideView(OLESTR("PC")), WideView(OLESTR("unknown"))}) {
    tagEquationShapeEnum shape{};
    tagXYShapeEnum x{}, y{};
    BSTR form = nullptr;
    double v[10] = {5, 5, 5, 5, 5, 5, 5, 5, 5, 5};
    INT count = 5;
    ComPtr<IRealArrayDisp> coefficients;
    EXPECT_EQ(
        props->GetEquationProperty(Bstr(name).get(), &shape, &form, v, v + 1, v + 2, v + 3, &count, coefficients.out()),
        S_FALSE);
    EXPECT_EQ(shapes->GetEquationPropertyXYShape(Bstr(name).get(), &x, &y, v + 4, v + 5, v + 6, v + 7, v + 8, v + 9),
              S_FALSE);
    EXPECT_EQ(transform(name), S_FALSE);
    const bool known = name != OLESTR("unknown");
    EXPECT_THAT(
        (std::vector<int>{shape, x, y, count}),
        testing::ElementsAreArray(known ? std::vector<int>{1000, 1000, 1000, 0} : std::vector<int>{0, 0, 0, 5}));
    EXPECT_THAT(v, testing::Each(known ? kEmpty : 5.0));
    EXPECT_FALSE(form || coefficients);
  }

  BSTR form = nullptr;
  INT count = 0;
  EXPECT_EQ(put->GetEquationInfo(PropCurveVELDB10, &form, &count), S_OK);
  EXPECT_EQ(taken(form), OLESTR("Y = B*ln(X) + 2*C*X + (3/2)*D*X^2 + (4/3)*E*X^3 + (5/4)*F*X^4 + G"));
  EXPECT_EQ(count, 7);
  for (const int none : {-1, 38, 999, 1001})
    EXPECT_EQ(put->GetEquationInfo(static_cast<tagEquationShapeEnum>(none), &form, &count), S_FALSE) << none;
}

TEST_F(CompoundProperties, AnExternalComponentIsHeldAndAsked) {
  Component component;
  ASSERT_EQ(put->SetCOMProperty(Bstr(OLESTR("VP")).get(), 1, Bstr(OLESTR("My.Class")).get(), &component), S_OK);
  EXPECT_EQ(text(OLESTR("VP")), "3 0: My.Class (null)");
  EXPECT_EQ(value(OLESTR("VP")), 400.0);
  EXPECT_EQ(put->SetCOMProperty(Bstr(OLESTR("vp")).get(), 1, Bstr(OLESTR("x")).get(), &component), S_OK)
      << "a name that is no fixed key is not reported";
  EXPECT_EQ(component.references, 2u) << "nor stored";

  setPoint(OLESTR("VP"), 1, 1.0);
  EXPECT_EQ(component.references, 1u);
  BSTR className = nullptr;
  ComPtr<IPCProperty> given;
  EXPECT_EQ(props->GetCOMProperty(Bstr(OLESTR("VP")).get(), &className, given.out()), S_FALSE);
  EXPECT_EQ(className, nullptr);
}

TEST_F(CompoundProperties, LoadersBelongToTheirProperty) {
  const Bstr name(OLESTR("TC")), bank(OLESTR("bank"));
  EXPECT_EQ(put->SetPropertyLoader(name.get(), bank.get()), S_FALSE);
  const std::pair<std::function<void()>, const char*> steps[] = {
      {[&] { setPoint(OLESTR("TC"), 1, 1.0); }, "1 0: 1"},  // another value came from elsewhere
      {[&] { put->SetPropertyLoader(name.get(), nullptr); }, "1 0: 1"},
      {[&] { put->ErasePropFromMap(name.get(), 1); }, "0 1:"}};
  for (const auto& [step, expected] : steps) {
    setPoint(OLESTR("TC"), 1, 1.0);
    EXPECT_EQ(put->SetPropertyLoader(name.get(), bank.get()), S_OK);
    EXPECT_EQ(text(OLESTR("TC")), "1 0 from bank: 1");
    step();
    EXPECT_EQ(text(OLESTR("TC")), expected);
  }
}

TEST_F(CompoundProperties, UserPropertiesAreKeptByName) {
  const auto user = query<IUserProperty>(compound);
  Component one, two;
  const Bstr zeta(OLESTR("zeta")), alpha(OLESTR("alpha")), classId(OLESTR("{id}"));
  EXPECT_EQ(user->SetUserProperty(zeta.get(), classId.get(), nullptr), S_FALSE);
  EXPECT_EQ(user->SetUserProperty(zeta.get(), classId.get(), &one), S_OK);
  EXPECT_EQ(user->SetUserProperty(alpha.get(), nullptr, &one), S_OK);
  EXPECT_EQ(user->SetUserProperty(zeta.get(), classId.get(), &two), S_OK);
  EXPECT_EQ(one.references, 2u);
  EXPECT_EQ(two.references, 2u);
  INT count = 0;
  EXPECT_EQ(user->GetNumbOfUserProperty(&count), S_OK);
  EXPECT_EQ(count, 2);

  BSTR name = nullptr, id = nullptr;
  ComPtr<IDispatch> component;
  ASSERT_EQ(user->GetUserPropertyI(0, &name, &id, component.out()), S_OK);
  EXPECT_EQ(taken(name), OLESTR("alpha"));
  EXPECT_EQ(taken(id), OLESTR("(null)"));
  EXPECT_EQ(component.get(), &one);
  for (const INT outside : {-1, 2, INT_MAX})
    EXPECT_EQ(user->GetUserPropertyI(outside, &name, &id, component.out()), S_FALSE);
  ASSERT_EQ(user->GetUserProperty(zeta.get(), component.out()), S_OK);
  EXPECT_EQ(component.get(), &two);
  ASSERT_EQ(user->GetUserPropertyClassID(zeta.get(), &id), S_OK);
  EXPECT_EQ(taken(id), OLESTR("{id}"));
  component = {};
  EXPECT_EQ(user->DeleteUserProperty(zeta.get()), S_OK);
  EXPECT_EQ(user->DeleteUserProperty(zeta.get()), S_FALSE);
  EXPECT_EQ(user->GetUserProperty(zeta.get(), component.out()), S_FALSE);
  EXPECT_EQ(two.references, 1u);
  user->DeleteUserProperty(alpha.get());
}

TEST_F(CompoundProperties, ACopyHasEverythingAndStandsAlone) {
  Component component;
  fill(compound, Bstr(OLESTR("mine")), 19);
  put->SetCOMProperty(Bstr(OLESTR("LDN")).get(), 1, Bstr(OLESTR("My.Class")).get(), &component);
  ASSERT_EQ(
      parse(OLESTR("<Compound VERSION='2'><FixedProperty NAME='ST' TYPE='COMProp' CLASSNAME='No.Such'><PropertyContent "
                   "CONTENT='ComContent(kept)'/></FixedProperty><UserProperty NAME='u' CONTENT='ComContent(too)'/>"
                   "</Compound>"),
            compound.get()),
      S_OK);
  const std::string described = descriptionOf(compound);
  const WideString text = textOf(compound);

  const auto copy = newCompound();
  query<ICompoundIDPut>(copy)->put_CMAID(4);
  query<ICompoundPropPut>(copy)->SetPointProperty(Bstr(OLESTR("old")).get(), 0, 1.0);
  ASSERT_EQ(query<ICompoundCopy>(copy)->CopyToThis(42, compound.get()), S_OK);
  setPoint(OLESTR("TC"), 1, 1.0);
  put->ErasePropFromMap(Bstr(OLESTR("mine")).get(), 0);
  EXPECT_EQ(descriptionOf(copy), described) << "nothing of either stays with the other";
  const auto withoutIndex = [](const WideString& xml) { return narrow(xml.substr(xml.find(OLESTR("Name")))); };
  EXPECT_EQ(withoutIndex(textOf(copy)), withoutIndex(text)) << "what no component took over";
  EXPECT_EQ(component.references, 3u);

  // What cannot be copied changes nothing, nor does a copy onto itself.
  EXPECT_EQ(query<ICompoundCopy>(copy)->CopyToThis(1, nullptr), E_INVALIDARG);
  EXPECT_EQ(query<ICompoundCopy>(copy)->CopyToThis(1, reals({1.0}).get()), E_NOINTERFACE);
  ASSERT_EQ(query<ICompoundCopy>(copy)->CopyToThis(43, copy.get()), S_OK);
  EXPECT_EQ(descriptionOf(copy), described);
  EXPECT_EQ(component.references, 3u);
  query<ICompoundPropPut>(copy)->ErasePropFromMap(Bstr(OLESTR("LDN")).get(), 1);
  put->ErasePropFromMap(Bstr(OLESTR("LDN")).get(), 1);
  EXPECT_EQ(component.references, 1u);
}

}  // namespace
}  // namespace qs::test
