// Properties by name and position, user properties and copies.
#include <climits>
#include <iterator>
#include <map>

#include "props/forms.h"
#include "props/key_table.h"
#include "tests/support/files.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

class CompoundProperties : public XmlTest {
 protected:
  // The calls of names.txt.
  HRESULT act(const std::string& action) {
    std::istringstream words(action);
    std::string verb, name;
    int flag = 0;
    words >> verb >> name >> flag;
    const std::vector<double> numbers(std::istream_iterator<double>(words), {});
    const Bstr key(widen(name));
    const auto fixed = static_cast<BYTE>(flag);
    if (verb == "point") return put_->SetPointProperty(key.get(), fixed, numbers[0]);
    if (verb == "void") return put_->SetVoidProperty(key.get(), fixed);
    if (verb == "erase") return put_->ErasePropFromMap(key.get(), fixed);
    if (verb == "load") return put_->SetPropertyLoader(key.get(), Bstr(OLESTR("bank")).get());
    if (verb == "unload") return put_->SetPropertyLoader(key.get(), nullptr);
    EXPECT_EQ(verb, "equation");
    const auto array = reals({});
    array->put_Size(static_cast<LONG>(numbers.size()) - 1);
    for (std::size_t i = 1; i < numbers.size(); ++i) array->put_IthValue(static_cast<LONG>(i) - 1, numbers[i]);
    return put_->SetEquationProperty(key.get(), fixed, static_cast<tagEquationShapeEnum>(numbers[0]), 1, 2, 3, 4,
                                     array.get());
  }
  // What names.txt states of a name.
  std::string state(const std::string& name) {
    const Bstr key(widen(name));
    BYTE found = 9, fixed = 9;
    tagPropTypeEnum type{};
    Bstr loader;
    std::ostringstream text;
    const HRESULT result = put_->FindProperty(key.get(), &found, &fixed);
    EXPECT_EQ(result, found ? S_OK : S_FALSE);
    const HRESULT known = props_->GetPropertyType(key.get(), &type);
    text << int{found} << int{fixed} << ' ' << INT{type} << (known == S_OK ? "" : "?");
    const PropertyReading reading = propertyOf(compound_, key.view());
    if (reading.value != 0.5) text << ' ' << reading.value << (reading.result == S_OK ? "" : "?");
    if (put_->GetPropertyLoader(key.get(), loader.out()) == S_OK) text << ' ' << narrow(loader.view());
    return text.str();
  }
  // The lines of the compound's description after that of its identity.
  std::string properties() { return describe(compound_).substr(describe(compound_).find('\n') + 1); }

  ComPtr<IBasicCompound> compound_ = newCompound();
  ComPtr<ICompoundProp> props_ = query<ICompoundProp>(compound_);
  ComPtr<ICompoundPropPut> put_ = query<ICompoundPropPut>(compound_);
};

TEST_F(CompoundProperties, AreListedInCodeUnitOrder) {
  std::vector<WideString> keys;
  for (const KeyEntry& key : kKeys) keys.emplace_back(key.name);
  std::sort(keys.begin(), keys.end());
  BSTR name = nullptr;
  tagPropTypeEnum type{};
  INT count = 0;
  act("point TC 1 500");
  EXPECT_EQ(props_->GetNumbOfProperty(1, &count), S_OK);
  ASSERT_EQ(static_cast<std::size_t>(count), keys.size());
  for (INT i = 0; i < count; ++i) {
    EXPECT_EQ(props_->GetPropertyName(1, i, &name, &type), S_OK);
    EXPECT_EQ(taken(name), keys[static_cast<std::size_t>(i)]);
  }
  for (const INT outside : {-1, count, INT_MAX, INT_MIN})
    EXPECT_EQ(props_->GetPropertyName(1, outside, &name, &type), S_FALSE) << outside;
  EXPECT_EQ(props_->GetNumbOfProperty(2, &count), S_OK);
  EXPECT_EQ(count, 0) << "only 1 chooses the fixed keys";

  EXPECT_EQ(props_->GetNumbOfCommonProperty(&count), S_OK);
  EXPECT_EQ(count, 15);
  EXPECT_EQ(props_->GetCommonPropertyName(6, &name, &type), S_OK);
  EXPECT_EQ(taken(name), OLESTR("VelcorinID"));
  EXPECT_EQ(type, PointPropBSTR);
  for (const INT outside : {-1, count}) EXPECT_EQ(props_->GetCommonPropertyName(outside, &name, &type), S_FALSE);
}

TEST_F(CompoundProperties, AreStoredWhereTheFlagSaysAndReadByName) {
  const std::map<std::string, HRESULT> results{{"S_OK", S_OK}, {"S_FALSE", S_FALSE}, {"E_FAIL", E_FAIL}};
  std::ifstream lines(kSourceFolder / "tests/compound/names.txt");
  int calls = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    const std::size_t equals = line.find(" = "), end = line.find(' ', equals + 3), name = line.find(' ') + 1;
    EXPECT_EQ(act(line.substr(0, equals)), results.at(line.substr(equals + 3, end - equals - 3))) << line;
    EXPECT_EQ(state(line.substr(name, line.find(' ', name) - name)), line.substr(end + 1)) << line;
    ++calls;
  }
  EXPECT_GT(calls, 20);
  const std::string longName(200, 'n');
  EXPECT_EQ(act("point " + longName + " 1 2"), S_FALSE);
  EXPECT_EQ(act("point " + longName + " 0 2"), S_OK);
  EXPECT_EQ(state(longName), "10 1 2");
  EXPECT_EQ(act("equation VP 1 " + std::to_string(kFormCount) + " 1 2 3 4 5 6 7"), E_FAIL);
  EXPECT_EQ(put_->SetPointProperty(nullptr, 1, 1.0), S_FALSE);
  EXPECT_EQ(put_->SetPointProperty(nullptr, 0, 1.0), S_OK);
  EXPECT_EQ(state(""), "10 1 1");
  EXPECT_EQ(put_->SetEquationProperty(Bstr(OLESTR("VP")).get(), 1, PropCurvePOLY2, 1, 2, 3, 4, nullptr), E_FAIL);
}

TEST_F(CompoundProperties, EquationsGiveTheirDataAndTransformation) {
  ASSERT_EQ(act("equation own 0 34 1.5 2.5 3.5"), S_OK);
  EXPECT_EQ(properties(), "own 2 2 34 Y = A*X^B*(1 + C*X) 1 2 3 4 1.5 2.5 3.5 1 1 1 1 1 1 -32767 -32767 ");
  const auto shapes = query<ICompEqnXYShape>(compound_);
  const auto transform = [&](LPCOLESTR name) {
    return shapes->SetEquationPropertyXYShape(Bstr(WideView(name)).get(), COMxr, COMlnx, 10, 5, 2, 1, 8, 9);
  };
  EXPECT_EQ(transform(OLESTR("own")), S_OK);
  EXPECT_EQ(properties(), "own 2 2 34 Y = A*X^B*(1 + C*X) 1 2 3 4 1.5 2.5 3.5 2 7 10 5 2 1 8 9 ");

  // What is no equation has neither; an unknown name changes nothing.
  act("point TC 1 1");
  for (const LPCOLESTR name : {OLESTR("TC"), OLESTR("PC"), OLESTR("unknown")}) {
    const bool unknown = name == WideView(OLESTR("unknown"));
    const Bstr key{WideView(name)};
    auto shape = static_cast<tagEquationShapeEnum>(5);
    auto x = static_cast<tagXYShapeEnum>(5), y = x;
    auto* form = reinterpret_cast<BSTR>(1);
    std::vector<double> v(10, 5.0);
    INT count = 5;
    auto* array = reinterpret_cast<IRealArrayDisp*>(1);
    EXPECT_EQ(transform(name), S_FALSE);
    EXPECT_EQ(props_->GetEquationProperty(key.get(), &shape, &form, &v[0], &v[1], &v[2], &v[3], &count, &array),
              S_FALSE);
    EXPECT_EQ(shapes->GetEquationPropertyXYShape(key.get(), &x, &y, &v[4], &v[5], &v[6], &v[7], &v[8], &v[9]), S_FALSE);
    EXPECT_EQ(v, std::vector<double>(10, unknown ? 5.0 : kEmpty));
    for (const int number : {int{shape}, int{x}, int{y}}) EXPECT_EQ(number, unknown ? 5 : 1000);
    EXPECT_EQ(count, unknown ? 5 : 0);
    EXPECT_EQ(!form, !unknown);
    EXPECT_EQ(!array, !unknown);
  }

  BSTR form = nullptr;
  INT count = 0;
  EXPECT_EQ(put_->GetEquationInfo(PropCurveVELDB10, &form, &count), S_OK);
  EXPECT_EQ(taken(form), OLESTR("Y = B*ln(X) + 2*C*X + (3/2)*D*X^2 + (4/3)*E*X^3 + (5/4)*F*X^4 + G"));
  EXPECT_EQ(count, 7);
  for (const int none : {-1, static_cast<int>(kFormCount), 999, 1001})
    EXPECT_EQ(put_->GetEquationInfo(static_cast<tagEquationShapeEnum>(none), &form, &count), S_FALSE) << none;
}

TEST_F(CompoundProperties, AnExternalComponentIsHeldAndAsked) {
  ValueComponent component;
  component.result = E_FAIL;
  const Bstr name(OLESTR("VP")), className(OLESTR("My.Class"));
  ASSERT_EQ(put_->SetCOMProperty(name.get(), 1, className.get(), &component), S_OK);
  EXPECT_EQ(component.references, 2u);
  EXPECT_EQ(state("VP"), "11 3 401.325") << "whatever it returns";
  BSTR text = nullptr;
  ComPtr<IPCProperty> given;
  EXPECT_EQ(props_->GetCOMProperty(name.get(), &text, given.out()), S_OK);
  EXPECT_EQ(taken(text), OLESTR("My.Class"));
  EXPECT_EQ(given.get(), &component);
  given = {};
  EXPECT_EQ(put_->SetCOMProperty(Bstr(OLESTR("vp")).get(), 1, className.get(), &component), S_OK)
      << "a name that is no fixed key is not reported";
  EXPECT_EQ(component.references, 2u) << "nor stored";

  act("point VP 1 1");
  EXPECT_EQ(component.references, 1u);
  EXPECT_EQ(props_->GetCOMProperty(name.get(), &text, given.out()), S_FALSE);
  EXPECT_EQ(text, nullptr);
}

TEST_F(CompoundProperties, UserPropertiesAreKeptByName) {
  const auto user = query<IUserProperty>(compound_);
  UserComponent one, two;
  two.content = OLESTR("two");
  const Bstr zeta(OLESTR("zeta")), alpha(OLESTR("alpha")), classId(OLESTR("{id}"));
  EXPECT_EQ(user->SetUserProperty(zeta.get(), classId.get(), nullptr), S_FALSE);
  EXPECT_EQ(user->SetUserProperty(zeta.get(), classId.get(), &one), S_OK);
  EXPECT_EQ(user->SetUserProperty(alpha.get(), nullptr, &one), S_OK);
  EXPECT_EQ(user->SetUserProperty(zeta.get(), classId.get(), &two), S_OK);
  EXPECT_EQ(one.references, 2u);
  EXPECT_EQ(got(user, &IUserProperty::GetNumbOfUserProperty), 2);
  EXPECT_EQ(properties(), "user alpha (null)  \nuser zeta {id} two ");

  BSTR name = nullptr, id = nullptr;
  ComPtr<IDispatch> component;
  for (const INT outside : {-1, 2, INT_MAX})
    EXPECT_EQ(user->GetUserPropertyI(outside, &name, &id, component.out()), S_FALSE);
  ASSERT_EQ(user->GetUserProperty(zeta.get(), component.out()), S_OK);
  EXPECT_EQ(component.get(), &two);
  ASSERT_EQ(user->GetUserPropertyClassID(zeta.get(), &id), S_OK);
  EXPECT_EQ(taken(id), OLESTR("{id}"));
  component = {};
  EXPECT_EQ(user->DeleteUserProperty(zeta.get()), S_OK);
  EXPECT_EQ(two.references, 1u);
  EXPECT_EQ(user->DeleteUserProperty(zeta.get()), S_FALSE);
  EXPECT_EQ(user->GetUserProperty(zeta.get(), component.out()), S_FALSE);
  user->DeleteUserProperty(alpha.get());
}

TEST_F(CompoundProperties, ACopyHasEverythingAndStandsAlone) {
  ValueComponent component;
  put_->SetCOMProperty(Bstr(OLESTR("LDN")).get(), 1, Bstr(OLESTR("My.Class")).get(), &component);
  act("point TC 1 647");
  const auto copy = newCompound();
  query<ICompoundPropPut>(copy)->SetPointProperty(Bstr(OLESTR("old")).get(), 0, 1.0);
  const std::string before = describe(copy), source = describe(compound_);
  EXPECT_EQ(query<ICompoundCopy>(copy)->CopyToThis(1, nullptr), E_INVALIDARG);
  EXPECT_EQ(query<ICompoundCopy>(copy)->CopyToThis(1, reals({1.0}).get()), E_NOINTERFACE);
  EXPECT_EQ(describe(copy), before);
  for (const auto& from : {compound_, copy}) {
    ASSERT_EQ(query<ICompoundCopy>(copy)->CopyToThis(42, from.get()), S_OK);
    EXPECT_EQ(describe(copy), source) << "nothing of it stays, and it may be its own original";
    EXPECT_EQ(component.references, 3u);
    EXPECT_NE(textOf(copy).find(OLESTR("CompIdx = \"42\"")), WideString::npos);
  }
  act("point TC 1 1");
  EXPECT_EQ(describe(copy), source);
  query<ICompoundPropPut>(copy)->ErasePropFromMap(Bstr(OLESTR("LDN")).get(), 1);
  act("erase LDN 1");
  EXPECT_EQ(component.references, 1u);
}

}  // namespace
}  // namespace qs::test
