// Compounds built from a parser's events: what comes back, and what hostile texts and events do.
#include "compound/xml_reader.h"

#include <cmath>
#include <random>

#include "props/key_table.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

constexpr LPCOLESTR kValueClass = OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A01}");
constexpr LPCOLESTR kUserClass = OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A02}");

Bstr bstr(std::string_view text) { return Bstr(widen(text)); }

// Puts any data that a host could into a compound.
class RandomCompound {
 public:
  RandomCompound(ComponentClass<ValueComponent>& values, ComponentClass<UserComponent>& users)
      : values_(values), users_(users) {}

  void fill(const ComPtr<IBasicCompound>& compound) {
    identity(query<ICompoundIDPut>(compound), query<ICompoundFamilyPut>(compound));
    groups(query<ICompoundUNIFAC1Put>(compound));
    const auto put = query<ICompoundPropPut>(compound);
    for (INT i = 0; i < kCount; ++i) {
      const bool fixed = below(2) == 0;
      property(compound, put, fixed ? Bstr(kKeys[below(kKeyCount)].name) : string(), fixed ? 1 : 0);
    }
    for (unsigned i = below(3); i > 0; --i)
      query<IUserProperty>(compound)->SetUserProperty(string().get(), Bstr(kUserClass).get(),
                                                      users_.make(string().view()));
  }

 private:
  static constexpr INT kCount = 12;

  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  bool sometimes() { return below(4) == 0; }
  INT integer() { return sometimes() ? static_cast<INT>(random_()) : static_cast<INT>(below(1000)); }
  double real() {
    return sometimes() ? std::bit_cast<double>(random_()) : std::ldexp(static_cast<double>(random_() >> 11), -60);
  }
  Bstr string() {
    static constexpr WideView kParts[] = {OLESTR("a"),
                                          OLESTR("&"),
                                          OLESTR("<"),
                                          OLESTR(">"),
                                          OLESTR("\""),
                                          OLESTR("'"),
                                          OLESTR("\t"),
                                          OLESTR("\r"),
                                          OLESTR("\n"),
                                          OLESTR(" "),
                                          OLESTR("("),
                                          OLESTR(")"),
                                          OLESTR("]]>"),
                                          OLESTR("\x85"),
                                          OLESTR("\x2028"),
                                          OLESTR("\xE9"),
                                          OLESTR("\xD83D\xDE00"),
                                          OLESTR("Value("),
                                          OLESTR("&amp;")};
    WideString text;
    for (unsigned i = below(50); i > 0; --i) text += kParts[below(std::size(kParts))];
    return Bstr(text);
  }

  void identity(const ComPtr<ICompoundIDPut>& id, const ComPtr<ICompoundFamilyPut>& family) {
    for (const auto put : {&ICompoundIDPut::put_Name, &ICompoundIDPut::put_CASN, &ICompoundIDPut::put_IUPACName,
                           &ICompoundIDPut::put_ChemicalFormula})
      if (!sometimes()) (id.get()->*put)(string().get());
    for (const auto put : {&ICompoundIDPut::put_PPAttribute, &ICompoundIDPut::put_VelcorinID,
                           &ICompoundIDPut::put_PPDSID, &ICompoundIDPut::put_DDBID, &ICompoundIDPut::put_DIPPRID,
                           &ICompoundIDPut::put_CMAID, &ICompoundIDPut::put_NumberOfSynonymNames})
      if (!sometimes()) (id.get()->*put)(integer());
    if (!sometimes()) id->put_NumberOfSynonymNames(0);
    for (unsigned i = below(70); i > 0; --i)
      id->put_SynonymName(static_cast<INT>(below(70)), sometimes() ? nullptr : string().get());
    if (sometimes()) id->put_NumberOfSynonymNames(static_cast<INT>(below(70)));
    if (!sometimes()) family->put_SubFamily(string().get());
    if (!sometimes()) family->put_NonCondensable(static_cast<VARIANT_BOOL>(below(2)));
    family->put_Family(static_cast<tagCompoundFamilyEnum>(below(14)));
  }

  void groups(const ComPtr<ICompoundUNIFAC1Put>& unifac) {
    const auto array = host::createInstance<IIntegerArrayDisp>(__uuidof(::HostIntegerArray));
    for (const auto put : {&ICompoundUNIFAC1Put::put_VELUNIFACNoGr, &ICompoundUNIFAC1Put::put_VELUNIFACSubGr}) {
      if (sometimes()) continue;
      const auto size = static_cast<LONG>(below(6));
      array->put_Size(size);
      for (LONG i = 0; i < size; ++i) array->put_IthValue(i, integer());
      (unifac.get()->*put)(size, array.get());
    }
    if (sometimes()) unifac->put_UNIFAC1NumberOfGroups(integer());
  }

  void property(const ComPtr<IBasicCompound>& compound, const ComPtr<ICompoundPropPut>& put, const Bstr& name,
                BYTE fixed) {
    switch (below(5)) {
      case 0:
        put->SetVoidProperty(name.get(), fixed);
        break;
      case 1:
        put->SetPointProperty(name.get(), fixed, real());
        break;
      case 2:
        put->SetCOMProperty(name.get(), fixed, Bstr(kValueClass).get(), values_.make(string().view()));
        break;
      default: {
        const auto coefficients = host::createInstance<IRealArrayDisp>(__uuidof(::HostRealArray));
        coefficients->put_Size(10);
        for (LONG i = 0; i < 10; ++i) coefficients->put_IthValue(i, real());
        const auto shape = static_cast<tagEquationShapeEnum>(sometimes() ? 1000 : below(38));
        put->SetEquationProperty(name.get(), fixed, shape, real(), real(), real(), real(), coefficients.get());
        query<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(name.get(), static_cast<tagXYShapeEnum>(below(40)),
                                                                     static_cast<tagXYShapeEnum>(below(40)), real(),
                                                                     real(), real(), real(), real(), real());
      }
    }
    if (sometimes()) put->SetPropertyLoader(name.get(), string().get());
  }

  ComponentClass<ValueComponent>& values_;
  ComponentClass<UserComponent>& users_;
  std::mt19937_64 random_{20261121};
};

class XmlReading : public XmlTest {
 protected:
  static double point(const ComPtr<IBasicCompound>& compound, std::string_view name) {
    double value = 0.5;
    LONG dependencies = 0;
    query<ICompoundProp>(compound)->GetPropertyValue(bstr(name).get(), 300, 100, eNoExtrapolation, &dependencies,
                                                     &value);
    return value;
  }
};

TEST_F(XmlReading, TheExactFormLosesNothing) {
  ComponentClass<ValueComponent> values(kValueClass);
  ComponentClass<UserComponent> users(kUserClass);
  RandomCompound random(values, users);
  for (int i = 0; i < 1000; ++i) {
    const auto compound = newCompound();
    random.fill(compound);
    const WideString text = textOf(compound, xmlExactForm);
    const auto again = read(text);
    ASSERT_EQ(narrow(Description::of(again)), narrow(Description::of(compound))) << i << narrow(text);
    ASSERT_EQ(narrow(textOf(again, xmlExactForm)), narrow(text)) << "what no interface tells";
    for (const auto& one : {again, compound}) query<ICompoundIDPut>(one)->put_NumberOfSynonymNames(70);
    ASSERT_EQ(narrow(Description::of(again)), narrow(Description::of(compound))) << "synonyms past the count";
    for (const INT form : {xmlExactNumbers, xmlEscaped}) EXPECT_NE(textOf(compound, form), text);
  }
}

TEST_F(XmlReading, Version1) {
  const auto compound = read(OLESTR(
      "<Compound VERSION='1' Name='Old' CASN='1-2-3'>"
      "<Property NAME='TC' VALUE='512.5'/><Property NAME='Else' VALUE='1'/><Property NAME='PC'/>"
      "<EqnProperty NAME='VP' ID='0' TMIN='200' TMAX='4e2' PMIN='1' PMAX='1e5' NUMBCOEFF='5'>"
      "<EquationCoeff VALUE='1.5'/><EquationCoeff VALUE='-2'/><EquationCoeff VALUE='x'/><EquationCoeff VALUE='4'/>"
      "<EquationCoeff VALUE='5'/><EquationCoeff VALUE='6'/></EqnProperty>"
      "<EqnProperty NAME='LDN' ID='0' NUMBCOEFF='2'><EquationCoeff VALUE='7'/><EquationCoeff VALUE='8'/></EqnProperty>"
      "<EqnProperty NAME='VDN' ID='0' NUMBCOEFF='2'><EquationCoeff VALUE='7'/></EqnProperty>"
      "<EqnProperty NAME='SDN' ID='38' NUMBCOEFF='1'><EquationCoeff VALUE='7'/></EqnProperty>"
      "<EqnProperty NAME='ST' ID='0' NUMBCOEFF='-1'><EquationCoeff VALUE='7'/></EqnProperty>"
      "<EqnProperty NAME='HVP' ID='0' NUMBCOEFF='2147483647'><EquationCoeff VALUE='7'/></EqnProperty>"
      "</Compound>"));
  EXPECT_EQ(point(compound, "TC"), 512.5);
  EXPECT_EQ(point(compound, "PC"), kEmpty) << "without a value";
  EXPECT_EQ(point(compound, "Else"), 0.5) << "no fixed key";
  const auto props = query<ICompoundProp>(compound);
  const struct {
    const char* key;
    std::vector<double> expected;  // the bounds and the coefficients; none when the equation is not there
  } cases[] = {{"VP", {200, 400, 1, 1e5, 1.5, -2, 0, 4, 5}},
               {"LDN", {1e-5, 1e10, 1e-5, 1e15, 7, 8, kEmpty, kEmpty, kEmpty}},
               {"VDN", {}},
               {"SDN", {}},
               {"ST", {}},
               {"HVP", {}}};
  for (const auto& row : cases) {
    tagEquationShapeEnum shape{};
    Bstr form;
    double v[4]{}, value = 0;
    INT count = 0;
    ComPtr<IRealArrayDisp> coefficients;
    std::vector<double> found;
    if (props->GetEquationProperty(bstr(row.key).get(), &shape, form.out(), v, v + 1, v + 2, v + 3, &count,
                                   coefficients.out()) == S_OK) {
      found.assign(v, v + 4);
      for (INT i = 0; i < count; ++i) found.push_back((coefficients->get_IthValue(i, &value), value));
    }
    EXPECT_EQ(found, row.expected) << row.key;
  }
}

TEST_F(XmlReading, HostileTextsLeaveAUsableCompound) {
  const WideString wellKnown =
      OLESTR("<FixedProperty NAME='MW' TYPE='PointProp'><PropertyContent CONTENT='Value(18)'/></FixedProperty>");
  const struct {
    const char* text;      // stands within a compound of version 2, before a property that must still be read
    const char* expected;  // what must, after a '!' must not, stand in the default text of the compound
  } cases[] = {
      {"<Synonyms NUMB='2147483647'/>", "Synonyms NUMB = \"2147483647\"> \n      </Syn"},
      {"<Synonyms NUMB='-5'><Synonym NAME='a'/></Synonyms>", "Synonyms NUMB = \"-5\"> \n      </Syn"},
      {"<Synonyms NUMB='1'><Synonym NAME='a'/><Synonym NAME='b'/><Synonym/></Synonyms>", "NUMB = \"3\""},
      {"<Synonyms NUMB='x'><Synonym NAME='a'/></Synonyms>", "Synonyms NUMB = \"1\""},
      {"<Synonym NAME='stray'/>", "!stray"},
      {"<Synonyms NUMB='0'><FixedProperty NAME='TC' TYPE='PointProp'><PropertyContent CONTENT='Value(77)'/>"
       "</FixedProperty><Synonym NAME='after'/></Synonyms>",
       "after"},
      {"<FixedProperty NAME='TC' TYPE='PointProp'><FixedProperty NAME='PC' TYPE='PointProp'><PropertyContent "
       "CONTENT='Value(77)'/></FixedProperty></FixedProperty>",
       "!Value(77)"},
      {"<FixedProperty NAME='Else' TYPE='PointProp'><PropertyContent CONTENT='Value(77)'/></FixedProperty>",
       "!Value(77)"},
      {"<FixedProperty NAME='TC' TYPE='Point'><PropertyContent CONTENT='Value(77)'/></FixedProperty>", "!Value(77)"},
      {"<FixedProperty NAME='TC'><PropertyContent CONTENT='Value(77)'/></FixedProperty>", "!Value(77)"},
      {"<FixedProperty TYPE='PointProp'><PropertyContent CONTENT='Value(77)'/></FixedProperty>", "!Value(77)"},
      {"<FixedProperty NAME='TC' TYPE='PointProp'><PropertyContent/></FixedProperty><PropertyContent "
       "CONTENT='Value(77)'/>",
       "!Value(77)"},
      {"<FixedProperty NAME='TC' TYPE='PointProp'><PropertyContent CONTENT='Value(77)'/><PropertyContent "
       "CONTENT='Value(88)'/></FixedProperty>",
       "Value(77)"},
      {"<FixedProperty NAME='VP' TYPE='EquationProp' EQUATIONSHAPE='99999999999'><PropertyContent CONTENT=''/>"
       "</FixedProperty>",
       "!EquationProp"},
      {"<FixedProperty NAME='VP' TYPE='EquationProp' EQUATIONSHAPE='0'><PropertyContent "
       "CONTENT='nParams(2147483647) Values(1,2,3,4,5,6,7)'/></FixedProperty>",
       "nParams(5) Values(1,2,3,4,5)"},
      {"<FixedProperty NAME='VP' TYPE='COMProp' CLASSNAME='No.Such'><PropertyContent CONTENT='ComContent(x)'/>"
       "</FixedProperty>",
       "ClassName(No.Such) ComContent(x)"},
      {"<UserProperty NAME='u' CONTENT='ClassID(No.Such) ComContent(x)'/>", "ClassID(No.Such) ComContent(x)"},
      {"<Synonyms NUMB='0'><UnusedSynonym NAME='a'/><Synonym NAME='b'/><UnusedSynonym/></Synonyms>", "NUMB = \"1\""},
      {"<AdditionProperty NAME='' TYPE='PointProp'><PropertyContent CONTENT='Value(5)'/></AdditionProperty>",
       "NAME=\"\"   TYPE = \"PointProp\""},
      {"<GroupProperty NAME='UNIFAC1' NUMB='-2147483648'><Group ID='1'/><Group/><Group NUMB='x'/></GroupProperty>",
       "ID = \"1\" NUMB = \"0\""},
      {"<GroupProperty NAME='UNIFAC2' NUMB='1'><Group ID='41' NUMB='1'/></GroupProperty>", "!\"41\""},
      {"<GroupProperty NUMB='2000000000'/>", "!2000000000"},
      {"<UserProperty NAME='u'/><UserProperty CONTENT='ClassID(x) ComContent()'/>", "!UserProperty"},
      {"<UserProperty NAME='u' CONTENT='ClassID(x'/>", "ClassID() ComContent()"},
      {"<Unknown><Unknown><FixedProperty NAME='TC' TYPE='PointProp'><PropertyContent CONTENT='Value(77)'/>"
       "</FixedProperty></Unknown><Synonyms NUMB='9'/></Unknown>",
       "!Value(77)"},
      {"<Property NAME='TC' VALUE='77'/><EqnProperty NAME='VP' ID='0' NUMBCOEFF='0'/>", "!Value(77)"},
  };
  for (const auto& row : cases) {
    const auto compound = read(OLESTR("<Compound VERSION='2'>") + widen(row.text) + wellKnown + OLESTR("</Compound>"));
    const std::string text = narrow(textOf(compound));
    const bool absent = row.expected[0] == '!';
    EXPECT_EQ(text.find(row.expected + (absent ? 1 : 0)) == std::string::npos, absent) << row.text << text;
    EXPECT_EQ(point(compound, "MW"), 18.0) << row.text;
  }
}

TEST_F(XmlReading, EventsInImpossibleOrders) {
  const auto compound = newCompound();
  const auto client = query<XMLParserClient>(compound);
  const auto attributes = create<TaggedAttributes>(__uuidof(::AttributeSet));
  for (const auto& [tag, value] : std::vector<std::pair<const char*, const char*>>{
           {"NAME", "TC"}, {"TYPE", "PointProp"}, {"CONTENT", "Value(3)"}, {"NUMB", "1"}})
    attributes->Add(bstr(tag).get(), bstr(value).get());
  // "+" starts an element, "-" ends one; then the result.
  const std::vector<std::pair<std::string, HRESULT>> events = {
      {"-Compound", S_OK},
      {"+FixedProperty", S_FALSE},
      {"+PropertyContent", S_FALSE},
      {"-", S_OK},
      {"+Compound", S_OK},
      {"-Synonyms", S_OK},
      {"+PropertyContent", S_FALSE},
      {"-PropertyContent", S_OK},
      {"+FixedProperty", S_OK},
      {"-AdditionProperty", S_OK},
      {"+PropertyContent", S_OK},
      {"+PropertyContent", S_FALSE},
      {"-FixedProperty", S_OK},
      {"-FixedProperty", S_OK},
      {"+x", S_FALSE},
      {"+Compound", S_FALSE},
      {"-Compound", S_OK},
      {"-x", S_OK},
      {"+Synonyms", S_OK},
      {"+Synonym", S_OK},
      {"-Compound", S_OK},
      {"+Synonym", S_FALSE},
  };
  for (const auto& [event, expected] : events) {
    const Bstr name = bstr(event.substr(1));
    EXPECT_EQ(event[0] == '+' ? client->StartElement(name.get(), attributes.get()) : client->EndElement(name.get()),
              expected)
        << event;
  }
  EXPECT_EQ(point(compound, "TC"), 3.0);
  EXPECT_EQ(client->StartElement(bstr("Compound").get(), nullptr), S_OK);
  EXPECT_EQ(client->StartElement(nullptr, nullptr), S_FALSE);
  EXPECT_EQ(client->EndElement(nullptr), S_OK);
  EXPECT_EQ(client->StartElement(bstr("UserProperty").get(), nullptr), S_FALSE);
  for (const HRESULT hr : {client->CharacterData(nullptr), client->Comment(), client->ProcessElement(nullptr, nullptr),
                           client->Error(), client->StartDocument(), client->EndDocument()})
    EXPECT_EQ(hr, S_OK);
}

// Attributes that are found with a null string, until a call fails for want of memory.
class NullAttributes final : public HostObject<TaggedAttributes> {
 public:
  STDMETHODIMP Add(BSTR, BSTR) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP AddMultiple(VARIANT) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP find(BSTR, BSTR* value) noexcept override {
    *value = nullptr;
    return callsLeft-- == 0 ? E_OUTOFMEMORY : S_OK;
  }
  STDMETHODIMP GetByIndex(INT, BSTR*, BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetMultiple(VARIANT*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Size(INT*) noexcept override { return E_NOTIMPL; }

  int callsLeft = -1;
};

TEST_F(XmlReading, WhatFailsChangesNothing) {
  ComponentClass<ValueComponent> values(kValueClass);
  ComponentClass<UserComponent> users(kUserClass);
  const auto compound = newCompound();
  RandomCompound(values, users).fill(compound);
  const WideString before = textOf(compound, xmlExactForm);
  const std::string value = narrow(kValueClass), user = narrow(kUserClass);
  const struct {
    std::string rest;  // of a document, after much has been read
    HRESULT expected;
    HRESULT created = S_OK;
  } cases[] = {
      {"<FixedProperty NAME='VP' TYPE='COMProp' CLASSNAME='" + value +
           "'><PropertyContent CONTENT='ComContent(much)'/>",
       E_OUTOFMEMORY},
      {"<FixedProperty NAME='VP' TYPE='COMProp' CLASSNAME='" + value + "'><PropertyContent CONTENT='ComContent(x)'/>",
       E_OUTOFMEMORY, E_OUTOFMEMORY},
      {"<UserProperty NAME='u' CONTENT='ClassID(" + user + ") ComContent(much)'/>", E_OUTOFMEMORY},
      {"</Compound", E_FAIL},
      {"</Compound><Compound Name='second'/></Doc", E_FAIL},
  };
  for (const auto& row : cases) {
    values.result = row.created;
    EXPECT_EQ(parse(OLESTR("<Doc><Compound VERSION='2' Name='new'><Synonyms NUMB='0'/><FixedProperty NAME='TC' "
                           "TYPE='PointProp'><PropertyContent CONTENT='Value(3)'/></FixedProperty>") +
                        widen(row.rest),
                    compound.get()),
              row.expected)
        << row.rest;
    EXPECT_EQ(narrow(textOf(compound, xmlExactForm)), narrow(before)) << row.rest;
  }

  // An attribute that is found with a null string is empty.
  const auto client = query<XMLParserClient>(compound);
  NullAttributes attributes;
  for (int failing = 0;; ++failing) {
    attributes.callsLeft = failing;
    const HRESULT result = client->StartElement(bstr("Compound").get(), &attributes);
    if (result == S_OK) break;
    ASSERT_EQ(result, E_OUTOFMEMORY) << failing;
    ASSERT_EQ(narrow(textOf(compound, xmlExactForm)), narrow(before)) << failing;
  }
  EXPECT_EQ(got(compound, &ICompoundID::get_Name), OLESTR(""));
  EXPECT_EQ(got(compound, &ICompoundID::get_DDBID), 0);
  EXPECT_EQ(client->EndElement(bstr("Compound").get()), S_OK);
  EXPECT_EQ(client->Error(), S_OK);
  EXPECT_EQ(got(compound, &ICompoundID::get_Name), OLESTR("")) << "an element that has ended stays";
}

TEST_F(XmlReading, ComponentsThatRefuseTheirContent) {
  ComponentClass<ValueComponent> values(kValueClass);
  ComponentClass<UserComponent> users(kUserClass);
  const auto compound = newCompound();
  const WideString value = kValueClass, user = kUserClass;
  for (const WideView content : {WideView(OLESTR("k=(1)) 2")), WideView(OLESTR("bad"))}) {
    const bool bad = content == OLESTR("bad");
    ASSERT_EQ(parse(OLESTR("<Compound VERSION='2'><FixedProperty NAME='VP' TYPE='COMProp' CLASSNAME='") + value +
                        OLESTR("'><PropertyContent CONTENT='ClassName(") + value + OLESTR(") ComContent(") +
                        WideString(content) + OLESTR(")'/></FixedProperty><UserProperty NAME='u' CONTENT='ClassID(") +
                        user + OLESTR(") ComContent(") + WideString(content) + OLESTR(")'/></Compound>"),
                    compound.get()),
              S_OK);
    Bstr className;
    ComPtr<IPCProperty> property;
    ComPtr<IDispatch> component;
    EXPECT_EQ(query<ICompoundProp>(compound)->GetCOMProperty(bstr("VP").get(), className.out(), property.out()), S_OK);
    EXPECT_EQ(className.view(), value) << "the name stays";
    EXPECT_EQ(query<IUserProperty>(compound)->GetUserProperty(bstr("u").get(), component.out()), S_OK);
    ASSERT_EQ(static_cast<bool>(property), !bad);
    ASSERT_EQ(static_cast<bool>(component), !bad);
    EXPECT_EQ(narrow(textOf(read(textOf(compound, xmlExactForm)), xmlExactForm)),
              narrow(textOf(compound, xmlExactForm)))
        << "the content stays";
    if (bad) continue;
    EXPECT_EQ(static_cast<ValueComponent*>(property.get())->content, content);
    EXPECT_EQ(static_cast<UserComponent*>(static_cast<ICOMUserProp*>(component.get()))->content, content);
  }
}

}  // namespace
}  // namespace qs::test
