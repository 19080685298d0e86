// Properties in their order, external components and copies, and what a call leaves unwritten.
#include "props/key_table.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

class CompoundProperties : public XmlTest {
 protected:
  HRESULT setPoint(LPCOLESTR name, double value) {
    return put_->SetPointProperty(Bstr(WideView(name)).get(), 1, value);
  }

  ComPtr<IBasicCompound> compound_ = newCompound();
  ComPtr<ICompoundProp> props_ = query<ICompoundProp>(compound_);
  ComPtr<ICompoundPropPut> put_ = query<ICompoundPropPut>(compound_);
};

TEST_F(CompoundProperties, NameKeepsEveryCodeUnit) {
  for (const WideString& text : {WideString(OLESTR("a\"<\xE9\xD800")) + OLECHAR{0} + OLESTR("z"), WideString()}) {
    query<ICompoundIDPut>(compound_)->put_Name(Bstr(text).get());
    EXPECT_EQ(got(compound_, &ICompoundID::get_Name), text);
  }
}

TEST_F(CompoundProperties, AreListedInCodeUnitOrder) {
  std::vector<WideString> keys;
  for (const KeyEntry& key : kKeys) keys.emplace_back(key.name);
  std::sort(keys.begin(), keys.end());
  BSTR name = nullptr;
  tagPropTypeEnum type{};
  for (std::size_t i = 0; i < keys.size(); ++i) {
    EXPECT_EQ(props_->GetPropertyName(1, static_cast<INT>(i), &name, &type), S_OK);
    EXPECT_EQ(taken(name), keys[i]);
  }
}

// Results that a call leaves as they are, and those that it sets to nothing.
TEST_F(CompoundProperties, UnknownIsNotWritten) {
  VARIANT_BOOL flag = 7;
  BYTE byte = 7;
  query<ICompoundFamily>(compound_)->get_NonCondensable(&flag);
  compound_->GetNonCondensable(&byte);
  EXPECT_EQ(flag * byte, 49);
  for (const LPCOLESTR name : {OLESTR("PC"), OLESTR("unknown")}) {
    const bool unknown = name == WideView(OLESTR("unknown"));
    auto* form = reinterpret_cast<BSTR>(1);
    auto* array = reinterpret_cast<IRealArrayDisp*>(1);
    tagEquationShapeEnum shape{};
    double v[4];
    INT count = 5;
    props_->GetEquationProperty(Bstr(WideView(name)).get(), &shape, &form, v, v + 1, v + 2, v + 3, &count, &array);
    EXPECT_EQ(count, unknown ? 5 : 0);
    EXPECT_EQ(!form, !unknown);
    EXPECT_EQ(!array, !unknown);
  }
}

TEST_F(CompoundProperties, AnExternalComponentIsHeldAndAsked) {
  ValueComponent component;
  component.result = E_FAIL;
  const Bstr name(OLESTR("VP")), className(OLESTR("My.Class"));
  ASSERT_EQ(put_->SetCOMProperty(name.get(), 1, className.get(), &component), S_OK);
  EXPECT_EQ(component.references, 2u);
  EXPECT_EQ(propertyOf(compound_, name.view()), (PropertyReading{S_OK, 401.325})) << "whatever it returns";
  tagPropTypeEnum type{};
  EXPECT_EQ(props_->GetPropertyType(name.get(), &type), S_OK);
  EXPECT_EQ(type, COMProp);
  BSTR text = nullptr;
  ComPtr<IPCProperty> given;
  EXPECT_EQ(props_->GetCOMProperty(name.get(), &text, given.out()), S_OK);
  EXPECT_EQ(taken(text), OLESTR("My.Class"));
  EXPECT_EQ(given.get(), &component);
  given = {};
  EXPECT_EQ(put_->SetCOMProperty(Bstr(OLESTR("vp")).get(), 1, className.get(), &component), S_OK)
      << "a name that is no fixed key is not reported";
  EXPECT_EQ(component.references, 2u) << "nor stored";

  setPoint(OLESTR("VP"), 1);
  EXPECT_EQ(component.references, 1u);
  EXPECT_EQ(props_->GetCOMProperty(name.get(), &text, given.out()), S_FALSE);
  EXPECT_EQ(text, nullptr);
}

TEST_F(CompoundProperties, ACopyHasEverythingAndStandsAlone) {
  ValueComponent component;
  put_->SetCOMProperty(Bstr(OLESTR("LDN")).get(), 1, Bstr(OLESTR("My.Class")).get(), &component);
  setPoint(OLESTR("TC"), 647);
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
  setPoint(OLESTR("TC"), 1);
  EXPECT_EQ(describe(copy), source);
  query<ICompoundPropPut>(copy)->ErasePropFromMap(Bstr(OLESTR("LDN")).get(), 1);
  put_->ErasePropFromMap(Bstr(OLESTR("LDN")).get(), 1);
  EXPECT_EQ(component.references, 1u);
}

}  // namespace
}  // namespace qs::test
