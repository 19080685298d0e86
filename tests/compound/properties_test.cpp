// Properties by name and position, user properties and copies.
#include <climits>
#include <limits>

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
  STDMETHODIMP Store(BSTR* text) noexcept override {
    *text = nullptr;
    return S_OK;
  }
};

class CompoundProperties : public XmlTest {
 protected:
  struct Found {
    HRESULT result;
    int found, fixed;
    bool operator==(const Found&) const = default;
  };
  struct Kind {
    HRESULT result;
    int type;
    bool operator==(const Kind&) const = default;
  };

  void SetUp() override {
    CompoundTest::SetUp();
    compound = newCompound();
    props = query<ICompoundProp>(compound);
    put = query<ICompoundPropPut>(compound);
  }
  void TearDown() override {
    compound = {};
    props = {};
    put = {};
    CompoundTest::TearDown();
  }

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
  static Kind kind(ICompoundProp* of, WideView name) {
    tagPropTypeEnum type{};
    const HRESULT result = of->GetPropertyType(Bstr(name).get(), &type);
    return {result, type};
  }
  Kind kind(WideView name) { return kind(props.get(), name); }
  // The value at 300 K; NaN when nothing was written.
  static double value(ICompoundProp* of, WideView name, HRESULT expected) {
    LONG dependencies = 0;
    double result = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(of->GetPropertyValue(Bstr(name).get(), 300.0, 1.0, eNoExtrapolation, &dependencies, &result), expected);
    return result;
  }
  double value(WideView name, HRESULT expected = S_OK) { return value(props.get(), name, expected); }
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

  ComPtr<IBasicCompound> compound;
  ComPtr<ICompoundProp> props;
  ComPtr<ICompoundPropPut> put;
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
  EXPECT_EQ(kind(OLESTR("TC")), (Kind{S_FALSE, VoidProp}));
  EXPECT_EQ(kind(OLESTR("unknown")), (Kind{S_FALSE, VoidProp}));
  EXPECT_EQ(put->SetVoidProperty(Bstr(OLESTR("unknown")).get(), 1), S_FALSE);
  EXPECT_EQ(put->SetVoidProperty(Bstr(OLESTR("mine")).get(), 0), S_OK);
  EXPECT_EQ(kind(OLESTR("mine")), (Kind{S_OK, VoidProp}));
  EXPECT_EQ(put->SetVoidProperty(Bstr(OLESTR("TC")).get(), 1), S_OK);
  EXPECT_EQ(kind(OLESTR("TC")), (Kind{S_OK, VoidProp}));
  setPoint(OLESTR("TC"), 1, 1.0);
  EXPECT_EQ(kind(OLESTR("TC")), (Kind{S_OK, PointProp}));
  setEquation(OLESTR("TC"), 1, PropCurvePOLY2, {1, 2, 3});
  EXPECT_EQ(kind(OLESTR("TC")), (Kind{S_OK, EquationProp}));
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
  EXPECT_TRUE(std::isnan(value(OLESTR("TC"), S_FALSE)));
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

TEST_F(CompoundProperties, EquationsTellFormRangeAndCoefficients) {
  ASSERT_EQ(setEquation(OLESTR("own"), 0, PropCurvePPDS14, {1.5, 2.5, 3.5}), S_OK);
  tagEquationShapeEnum shape{};
  BSTR form = nullptr;
  double tMin, tMax, pMin, pMax;
  INT count = 0;
  ComPtr<IRealArrayDisp> coefficients;
  const auto read = [&](WideView name) {
    return props->GetEquationProperty(Bstr(name).get(), &shape, &form, &tMin, &tMax, &pMin, &pMax, &count,
                                      coefficients.out());
  };
  ASSERT_EQ(read(OLESTR("own")), S_OK);
  EXPECT_EQ(shape, PropCurvePPDS14);
  EXPECT_EQ(taken(form), OLESTR("Y = A*X^B*(1 + C*X)"));
  EXPECT_EQ((std::vector<double>{tMin, tMax, pMin, pMax}), (std::vector<double>{1, 2, 3, 4}));
  ASSERT_EQ(count, 3);
  for (LONG i = 0; i < 3; ++i) {
    double element = 0;
    EXPECT_EQ(coefficients->get_IthValue(i, &element), S_OK);
    EXPECT_EQ(element, 1.5 + i);
  }

  setPoint(OLESTR("TC"), 1, 1.0);
  EXPECT_EQ(read(OLESTR("TC")), S_FALSE);
  EXPECT_EQ(INT{shape}, 1000);
  EXPECT_EQ(taken(form), OLESTR("(null)"));
  EXPECT_EQ(tMin, kEmpty);
  EXPECT_EQ(count, 0);
  EXPECT_FALSE(coefficients);
  EXPECT_EQ(read(OLESTR("unknown")), S_FALSE);

  EXPECT_EQ(put->GetEquationInfo(PropCurveVELDB10, &form, &count), S_OK);
  EXPECT_EQ(taken(form), OLESTR("Y = B*ln(X) + 2*C*X + (3/2)*D*X^2 + (4/3)*E*X^3 + (5/4)*F*X^4 + G"));
  EXPECT_EQ(count, 7);
  for (const int none : {-1, 38, 999, 1001})
    EXPECT_EQ(put->GetEquationInfo(static_cast<tagEquationShapeEnum>(none), &form, &count), S_FALSE) << none;
}

TEST_F(CompoundProperties, TransformationsAreReadAndSetByName) {
  const auto shapes = query<ICompEqnXYShape>(compound);
  struct Shapes {
    HRESULT result;
    int x, y;
    double xNorm, yNorm, xPow, yPow, a, b;
    bool operator==(const Shapes&) const = default;
  };
  const auto read = [&](WideView name) {
    Shapes s{0, 5, 5, 5, 5, 5, 5, 5, 5};
    tagXYShapeEnum x = static_cast<tagXYShapeEnum>(5), y = x;
    s.result =
        shapes->GetEquationPropertyXYShape(Bstr(name).get(), &x, &y, &s.xNorm, &s.yNorm, &s.xPow, &s.yPow, &s.a, &s.b);
    s.x = x;
    s.y = y;
    return s;
  };
  const auto set = [&](WideView name) {
    return shapes->SetEquationPropertyXYShape(Bstr(name).get(), COMxr, COMlnx, 10.0, 1.0, 2.0, 1.0, 8.0, 9.0);
  };
  EXPECT_EQ(read(OLESTR("unknown")), (Shapes{S_FALSE, 5, 5, 5, 5, 5, 5, 5, 5}));
  const Shapes none{S_FALSE, 1000, 1000, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty};
  EXPECT_EQ(read(OLESTR("VP")), none);
  EXPECT_EQ(set(OLESTR("VP")), S_FALSE);
  setPoint(OLESTR("VP"), 1, 1.0);
  EXPECT_EQ(read(OLESTR("VP")), none);
  setEquation(OLESTR("VP"), 1, PropCurvePOLY2, {0, 1, 0});
  EXPECT_EQ(read(OLESTR("VP")), (Shapes{S_OK, 1, 1, 1, 1, 1, 1, kEmpty, kEmpty}));
  EXPECT_EQ(set(OLESTR("VP")), S_OK);
  EXPECT_EQ(read(OLESTR("VP")), (Shapes{S_OK, COMxr, COMlnx, 10, 1, 2, 1, 8, 9}));
  EXPECT_DOUBLE_EQ(value(OLESTR("VP")), std::exp(900.0)) << "e^((300/10)^2)";
}

TEST_F(CompoundProperties, AnExternalComponentIsHeldAndAsked) {
  Component component;
  ASSERT_EQ(put->SetCOMProperty(Bstr(OLESTR("VP")).get(), 1, Bstr(OLESTR("My.Class")).get(), &component), S_OK);
  EXPECT_EQ(component.references, 2u);
  EXPECT_EQ(kind(OLESTR("VP")), (Kind{S_OK, COMProp}));
  EXPECT_EQ(value(OLESTR("VP")), 400.0);
  BSTR className = nullptr;
  ComPtr<IPCProperty> given;
  EXPECT_EQ(props->GetCOMProperty(Bstr(OLESTR("VP")).get(), &className, given.out()), S_OK);
  EXPECT_EQ(taken(className), OLESTR("My.Class"));
  EXPECT_EQ(given.get(), &component);
  EXPECT_EQ(component.references, 3u);
  given = {};
  EXPECT_EQ(put->SetCOMProperty(Bstr(OLESTR("vp")).get(), 1, Bstr(OLESTR("x")).get(), &component), S_OK)
      << "a name that is no fixed key is not reported";
  EXPECT_EQ(component.references, 2u) << "nor stored";

  setPoint(OLESTR("VP"), 1, 1.0);
  EXPECT_EQ(component.references, 1u);
  EXPECT_EQ(props->GetCOMProperty(Bstr(OLESTR("VP")).get(), &className, given.out()), S_FALSE);
  EXPECT_EQ(className, nullptr);
}

TEST_F(CompoundProperties, LoadersBelongToTheirProperty) {
  const auto loader = [&](WideView name) {
    BSTR text = nullptr;
    return put->GetPropertyLoader(Bstr(name).get(), &text) == S_OK ? taken(text) : WideString(OLESTR("-"));
  };
  const auto set = [&](WideView name) { return put->SetPropertyLoader(Bstr(name).get(), Bstr(OLESTR("bank")).get()); };
  EXPECT_EQ(set(OLESTR("TC")), S_FALSE);
  setPoint(OLESTR("TC"), 1, 1.0);
  EXPECT_EQ(loader(OLESTR("TC")), OLESTR("-"));
  EXPECT_EQ(set(OLESTR("TC")), S_OK);
  EXPECT_EQ(loader(OLESTR("TC")), OLESTR("bank"));
  setPoint(OLESTR("TC"), 1, 2.0);
  EXPECT_EQ(loader(OLESTR("TC")), OLESTR("-")) << "another value came from elsewhere";
  set(OLESTR("TC"));
  EXPECT_EQ(put->SetPropertyLoader(Bstr(OLESTR("TC")).get(), nullptr), S_OK);
  EXPECT_EQ(loader(OLESTR("TC")), OLESTR("-")) << "a null name takes it away";
  set(OLESTR("TC"));
  // The same name among the others is another property, which the fixed one hides.
  setPoint(OLESTR("TC"), 0, 3.0);
  EXPECT_EQ(loader(OLESTR("TC")), OLESTR("bank"));
  put->ErasePropFromMap(Bstr(OLESTR("TC")).get(), 0);
  EXPECT_EQ(loader(OLESTR("TC")), OLESTR("bank"));
  put->ErasePropFromMap(Bstr(OLESTR("TC")).get(), 1);
  setPoint(OLESTR("TC"), 0, 3.0);
  EXPECT_EQ(loader(OLESTR("TC")), OLESTR("-"));
  EXPECT_EQ(set(OLESTR("TC")), S_FALSE);
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
  const auto id = query<ICompoundIDPut>(compound);
  id->put_Name(Bstr(OLESTR("Water")).get());
  id->put_VelcorinID(19);
  id->put_DDBID(174);
  id->put_NumberOfSynonymNames(0);
  id->put_SynonymName(0, Bstr(OLESTR("Oxidane")).get());
  query<ICompoundFamilyPut>(compound)->put_Family(eMiscellaneous);
  query<ICompoundFamilyPut>(compound)->put_SubFamily(Bstr(OLESTR("w")).get());
  query<ICompoundUNIFAC1Put>(compound)->put_UNIFAC1Groups(1, integers({17}).get(), integers({1}).get());
  setPoint(OLESTR("TC"), 1, 647.0);
  setPoint(OLESTR("mine"), 0, 5.0);
  put->SetPropertyLoader(Bstr(OLESTR("mine")).get(), Bstr(OLESTR("bank")).get());
  put->SetVoidProperty(Bstr(OLESTR("PC")).get(), 1);
  setEquation(OLESTR("VP"), 1, PropCurvePOLY2, {1, 2, 0});
  query<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(Bstr(OLESTR("VP")).get(), COMxr, COMx, 2.0, 1, 1, 1, 0,
                                                               0);
  put->SetCOMProperty(Bstr(OLESTR("LDN")).get(), 1, Bstr(OLESTR("My.Class")).get(), &component);

  ASSERT_EQ(
      parse(OLESTR("<Compound VERSION='2'><FixedProperty NAME='ST' TYPE='COMProp' CLASSNAME='No.Such'><PropertyContent "
                   "CONTENT='ComContent(kept)'/></FixedProperty><UserProperty NAME='u' CONTENT='ComContent(too)'/>"
                   "</Compound>"),
            compound.get()),
      S_OK);
  const WideString described = Description::of(compound);
  const WideString text = textOf(compound);

  const auto copy = newCompound();
  query<ICompoundIDPut>(copy)->put_CMAID(4);
  query<ICompoundPropPut>(copy)->SetPointProperty(Bstr(OLESTR("old")).get(), 0, 1.0);
  ASSERT_EQ(query<ICompoundCopy>(copy)->CopyToThis(42, compound.get()), S_OK);
  setPoint(OLESTR("TC"), 1, 1.0);
  put->ErasePropFromMap(Bstr(OLESTR("mine")).get(), 0);
  EXPECT_EQ(narrow(Description::of(copy)), narrow(described)) << "nothing of either stays with the other";
  EXPECT_EQ(narrow(textOf(copy)).substr(narrow(textOf(copy)).find("Name")),
            narrow(text).substr(narrow(text).find("Name")))
      << "what no component took over";
  EXPECT_EQ(component.references, 3u);

  // What cannot be copied changes nothing, nor does a copy onto itself.
  EXPECT_EQ(query<ICompoundCopy>(copy)->CopyToThis(1, nullptr), E_INVALIDARG);
  EXPECT_EQ(query<ICompoundCopy>(copy)->CopyToThis(1, reals({1.0}).get()), E_NOINTERFACE);
  ASSERT_EQ(query<ICompoundCopy>(copy)->CopyToThis(43, copy.get()), S_OK);
  EXPECT_EQ(narrow(Description::of(copy)), narrow(described));
  EXPECT_EQ(component.references, 3u);
  query<ICompoundPropPut>(copy)->ErasePropFromMap(Bstr(OLESTR("LDN")).get(), 1);
  put->ErasePropFromMap(Bstr(OLESTR("LDN")).get(), 1);
  EXPECT_EQ(component.references, 1u);
}

}  // namespace
}  // namespace qs::test
