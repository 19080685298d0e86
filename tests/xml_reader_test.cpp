// Compounds built from a parser's events: what comes back, and what hostile texts and events do.
#include "compound/xml_reader.h"

#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

constexpr LPCOLESTR kValueClass = OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A01}");
constexpr LPCOLESTR kUserClass = OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A02}");

Bstr bstr(std::string_view text) { return Bstr(widen(text)); }

class XmlReading : public XmlTest {};

TEST_F(XmlReading, TheExactFormLosesNothing) {
  ComponentClass<ValueComponent> values(kValueClass);
  ComponentClass<UserComponent> users(kUserClass);
  const WideView strings[] = {OLESTR(""),
                              OLESTR("\t"),
                              OLESTR("\r\n"),
                              OLESTR(" "),
                              OLESTR("a & <b> \"c\" 'd' ]]> &amp; "),
                              OLESTR(" Value(1) ClassName(x) ComContent((y)"),
                              OLESTR("\x85 \x2028 \xE9 \xD83D\xDE00")};
  INT integer = -2147483647 - 1;
  for (const WideView text : strings) {
    const auto compound = newCompound();
    const Bstr string(text);
    fill(compound, string, integer);
    integer += 613566750;
    if (text.empty()) query<ICompoundIDPut>(compound)->put_NumberOfSynonymNames(-1);
    const auto put = query<ICompoundPropPut>(compound);
    EXPECT_EQ(put->SetCOMProperty(bstr("HVP").get(), 1, Bstr(kValueClass).get(), values.make(text)), S_OK);
    EXPECT_EQ(query<IUserProperty>(compound)->SetUserProperty(string.get(), Bstr(kUserClass).get(), users.make(text)),
              S_OK);
    const WideString written = textOf(compound, xmlExactForm);
    EXPECT_NE(textOf(compound, xmlEscaped), written);
    EXPECT_EQ(textOf(compound, xmlExactNumbers) == written, written.find(OLESTR('&')) == WideString::npos);
    const auto again = read(written);
    EXPECT_EQ(narrow(textOf(again, xmlExactForm)), narrow(written));
    for (const INT synonyms : {3, 4}) {
      for (const auto& one : {again, compound}) query<ICompoundIDPut>(one)->put_NumberOfSynonymNames(synonyms);
      EXPECT_EQ(descriptionOf(again), descriptionOf(compound)) << "with synonyms past the count";
    }
  }
  const auto empty = newCompound();
  EXPECT_EQ(descriptionOf(read(textOf(empty, xmlExactForm))), descriptionOf(empty));
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
  EXPECT_EQ(propertyOf(compound, OLESTR("TC")).value, 512.5);
  EXPECT_EQ(propertyOf(compound, OLESTR("PC")).value, kEmpty) << "without a value";
  EXPECT_EQ(propertyOf(compound, OLESTR("Else")).value, 0.5) << "no fixed key";
  const std::pair<const char*, const char*> equations[] = {
      {"VP", "2 0: 0 'Y = A + B*X + C*X^2 + D*X^3 + E*X^4' 200 400 1 100000 ( 1.5 -2 0 4 5) 1 1 1 1 1 1 -32767 -32767"},
      {"LDN",
       "2 0: 0 'Y = A + B*X + C*X^2 + D*X^3 + E*X^4' 1.0000000000000001e-05 10000000000 1.0000000000000001e-05 "
       "1000000000000000 "
       "( 7 8 -32767 -32767 -32767) 1 1 1 1 1 1 -32767 -32767"},
      {"VDN", "0 1:"},
      {"SDN", "0 1:"},
      {"ST", "0 1:"},
      {"HVP", "0 1:"}};
  for (const auto& [key, text] : equations) EXPECT_EQ(propertyText(compound, bstr(key)), text) << key;
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
    EXPECT_EQ(propertyOf(compound, OLESTR("MW")).value, 18.0) << row.text;
  }
}

TEST_F(XmlReading, EventsInImpossibleOrders) {
  const auto compound = newCompound();
  const auto client = query<XMLParserClient>(compound);
  const auto attributes = create<TaggedAttributes>(__uuidof(::AttributeSet));
  for (const auto& [tag, value] : std::vector<std::pair<const char*, const char*>>{
           {"NAME", "TC"}, {"TYPE", "PointProp"}, {"CONTENT", "Value(3)"}, {"NUMB", "1"}})
    attributes->Add(bstr(tag).get(), bstr(value).get());
  // "+" starts an element, "-" ends one; a "?" stands behind one that is passed over.
  std::istringstream events(
      "-Compound +FixedProperty? +PropertyContent? - "
      "+Compound -Synonyms +PropertyContent? -PropertyContent "
      "+FixedProperty -AdditionProperty +PropertyContent +PropertyContent? -FixedProperty -FixedProperty "
      "+x? +Compound? -Compound -x "
      "+Synonyms +Synonym -Compound +Synonym?");
  for (std::string event; events >> event;) {
    const bool passedOver = event.back() == '?';
    const Bstr name = bstr(event.substr(1, event.size() - (passedOver ? 2 : 1)));
    EXPECT_EQ(event[0] == '+' ? client->StartElement(name.get(), attributes.get()) : client->EndElement(name.get()),
              passedOver ? S_FALSE : S_OK)
        << event;
  }
  EXPECT_EQ(propertyOf(compound, OLESTR("TC")).value, 3.0);
  EXPECT_EQ(client->StartElement(bstr("Compound").get(), nullptr), S_OK);
  EXPECT_EQ(client->StartElement(nullptr, nullptr), S_FALSE);
  EXPECT_EQ(client->EndElement(nullptr), S_OK);
  EXPECT_EQ(client->StartElement(bstr("UserProperty").get(), nullptr), S_FALSE);
  for (const HRESULT hr : {client->CharacterData(nullptr), client->Comment(), client->ProcessElement(nullptr, nullptr),
                           client->Error(), client->StartDocument(), client->EndDocument()})
    EXPECT_EQ(hr, S_OK);
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
    EXPECT_EQ(propertyText(compound, bstr("VP")), "3 0: " + narrow(value) + ' ' + (bad ? "(null)" : narrow(content)))
        << "the class name stays";
    ComPtr<IDispatch> component;
    EXPECT_EQ(query<IUserProperty>(compound)->GetUserProperty(bstr("u").get(), component.out()), S_OK);
    ASSERT_EQ(static_cast<bool>(component), !bad);
    EXPECT_EQ(narrow(textOf(read(textOf(compound, xmlExactForm)), xmlExactForm)),
              narrow(textOf(compound, xmlExactForm)))
        << "the content stays";
    if (bad) continue;
    EXPECT_EQ(static_cast<UserComponent*>(static_cast<ICOMUserProp*>(component.get()))->content, content);
  }
}

}  // namespace
}  // namespace qs::test
