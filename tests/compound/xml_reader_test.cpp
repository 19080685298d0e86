// Compounds built from a parser's events: what comes back, and what hostile texts and events do.
#include "compound/xml_reader.h"

#include <random>
#include <sstream>

#include "tests/support/files.h"
#include "tests/support/random_compound.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

Bstr bstr(std::string_view text) { return Bstr(widen(text)); }

class XmlReading : public XmlTest {
 protected:
  double point(const ComPtr<IBasicCompound>& compound, std::string_view name) {
    return propertyOf(compound, widen(name)).value;
  }
  void fill(const ComPtr<IBasicCompound>& compound) { random_.fill(compound.get()); }

  ComponentClass<ValueComponent> values_{kValueClass};
  ComponentClass<UserComponent> users_{kUserClass};

 private:
  std::mt19937_64 engine_{20261121};
  RandomCompound random_{
      [this] { return engine_(); },
      [this](WideView content) { return std::pair<IDispatch*, Bstr>(values_.make(content), WideView(kValueClass)); },
      [this](WideView content) { return std::pair<IDispatch*, Bstr>(users_.make(content), WideView(kUserClass)); }};
};

TEST_F(XmlReading, TheExactFormAndCopiesLoseNothing) {
  for (int i = 0; i < 1000; ++i) {
    const auto compound = newCompound(), copy = newCompound();
    fill(compound);
    const WideString text = textOf(compound, xmlExactForm);
    const auto again = read(text);
    ASSERT_EQ(query<ICompoundCopy>(copy)->CopyToThis(-32767, compound.get()), S_OK);
    for (const auto& one : {again, copy}) {
      ASSERT_EQ(describe(one), describe(compound)) << i << narrow(text);
      ASSERT_EQ(narrow(textOf(one, xmlExactForm)), narrow(text)) << "what no interface gives";
    }
    for (const auto& one : {again, compound}) query<ICompoundIDPut>(one)->put_NumberOfSynonymNames(70);
    ASSERT_EQ(describe(again), describe(compound)) << "synonyms past the count";
    for (const INT form : {xmlExactNumbers, xmlEscaped}) EXPECT_NE(textOf(compound, form), text);
  }
}

// The text of an empty compound names everything but what has a name of the host's own.
TEST_F(XmlReading, ReplacesWhatTheTextNames) {
  const auto compound = newCompound();
  fill(compound);
  const WideString empty = textOf(newCompound());
  ASSERT_EQ(parse(empty, compound.get()), S_OK);
  EXPECT_TRUE(textOf(compound).starts_with(empty.substr(0, empty.find(OLESTR("   </Compound>")))));
}

TEST_F(XmlReading, Version1) {
  const auto compound = read(OLESTR(
      "<Compound VERSION='1' Name='Old' CASN='1-2-3'>"
      "<Property NAME='TC' VALUE='512.5'/><Property NAME='Else' VALUE='1'/><Property NAME='PC'/>"
      "<EqnProperty NAME='VP' ID='19' TMIN='200' TMAX='4e2' PMIN='1' PMAX='1e5' NUMBCOEFF='3'>"
      "<EquationCoeff VALUE='1.5'/><EquationCoeff VALUE='x'/><EquationCoeff VALUE='4'/><EquationCoeff VALUE='5'/>"
      "</EqnProperty>"
      "<EqnProperty NAME='LDN' ID='19' NUMBCOEFF='2'><EquationCoeff VALUE='7'/><EquationCoeff VALUE='8'/></EqnProperty>"
      "<EqnProperty NAME='LCP' ID='19' NUMBCOEFF='4'><EquationCoeff VALUE='1'/><EquationCoeff VALUE='2'/>"
      "<EquationCoeff VALUE='3'/><EquationCoeff VALUE='4'/></EqnProperty>"
      "<EqnProperty NAME='LTC' ID='25' NUMBCOEFF='0'/>"
      "<EqnProperty NAME='VDN' ID='19' NUMBCOEFF='2'><EquationCoeff VALUE='7'/></EqnProperty>"
      "<EqnProperty NAME='SDN' ID='999' NUMBCOEFF='1'><EquationCoeff VALUE='7'/></EqnProperty>"
      "<EqnProperty NAME='ST' ID='19' NUMBCOEFF='-1'><EquationCoeff VALUE='7'/></EqnProperty>"
      "<EqnProperty NAME='HVP' ID='19' NUMBCOEFF='2147483647'><EquationCoeff VALUE='7'/></EqnProperty>"
      "</Compound>"));
  const std::string description = describe(compound);
  const std::string form = " 2 2 19 Y = A + B*X + C*X^2 ", unset = "1e-05 1e+10 1e-05 1e+15 ";
  const std::string plain = " 1 1 1 1 1 1 -32767 -32767 ";
  EXPECT_EQ(description.substr(description.find('\n')),
            "\nLCP" + form + unset + "1 2 3" + plain + "\nLDN" + form + unset + "7 8 -32767" + plain +
                "\nLTC 2 2 25 Y = A + X^B " + unset + "-32767 -32767" + plain + "\nPC 1 1 -32767 \nTC 1 1 512.5 \nVP" +
                form + "200 400 1 1e+05 1.5 0 4" + plain);
}

TEST_F(XmlReading, HostileTextsLeaveAUsableCompound) {
  std::ifstream cases(kSourceFolder / "tests/compound/texts.txt");
  std::string text, written;
  int expectations = 0;
  for (std::string line; std::getline(cases, line);) {
    if (line.empty() || line[0] == '#') continue;
    if (line[1] != '>' || line[2] != ' ') {
      text += line;
      continue;
    }
    if (!text.empty()) {
      const auto compound = read(widen("<Compound VERSION='2'>" + std::exchange(text, {}) +
                                       "<FixedProperty NAME='MW' TYPE='PointProp'><PropertyContent "
                                       "CONTENT='Value(18)'/></FixedProperty></Compound>"));
      EXPECT_EQ(point(compound, "MW"), 18.0) << line;
      written = narrow(textOf(compound));
    }
    EXPECT_EQ(written.find(line.substr(3)) != std::string::npos, line[0] == '=') << line << '\n' << written;
    ++expectations;
  }
  EXPECT_GT(expectations, 20);
}

TEST_F(XmlReading, EventsInImpossibleOrders) {
  const auto compound = newCompound();
  const auto client = query<XMLParserClient>(compound);
  const auto attributes = create<TaggedAttributes>(__uuidof(::AttributeSet));
  for (const auto& [tag, value] : std::vector<std::pair<const char*, const char*>>{
           {"NAME", "TC"}, {"TYPE", "PointProp"}, {"CONTENT", "Value(3)"}, {"NUMB", "1"}})
    attributes->Add(bstr(tag).get(), bstr(value).get());
  // "+" starts an element, "-" ends one; "?" follows an event that returns S_FALSE.
  std::istringstream events(
      "-Compound +FixedProperty? +PropertyContent? - +Compound -Synonyms +PropertyContent? -PropertyContent "
      "+FixedProperty -AdditionProperty +PropertyContent +PropertyContent? -FixedProperty -FixedProperty +x? "
      "+Compound? "
      "-Compound -x +Synonyms +Synonym -Compound +Synonym?");
  for (std::string event; events >> event;) {
    const HRESULT expected = event.ends_with('?') ? S_FALSE : S_OK;
    const Bstr name = bstr(event.substr(1, event.find('?') - 1));
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
  const auto compound = newCompound();
  fill(compound);
  const WideString before = textOf(compound, xmlExactForm);
  const std::string component = "<FixedProperty NAME='VP' TYPE='COMProp' CLASSNAME='" + narrow(kValueClass) + "'>";
  const struct {
    std::string rest;  // of a document, after much has been read
    HRESULT expected;
    HRESULT created = S_OK;
  } cases[] = {
      {component + "<PropertyContent CONTENT='ComContent(much)'/>", E_OUTOFMEMORY},
      {component + "<PropertyContent CONTENT='ComContent(x)'/>", E_OUTOFMEMORY, E_OUTOFMEMORY},
      {"<UserProperty NAME='u' CONTENT='ClassID(" + narrow(kUserClass) + ") ComContent(much)'/>", E_OUTOFMEMORY},
      {"</Compound", E_FAIL},
      {"</Compound><Compound Name='second'/></Doc", E_FAIL},
  };
  for (const auto& row : cases) {
    values_.result = row.created;
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
  const auto compound = newCompound();
  for (const WideView content : {WideView(OLESTR("k=(1)) 2")), WideView(OLESTR("bad"))}) {
    const bool bad = content == OLESTR("bad");
    const std::string end = ") ComContent(" + narrow(content) + ")", name = narrow(kValueClass);
    ASSERT_EQ(parse(widen("<Compound VERSION='2'><FixedProperty NAME='VP' TYPE='COMProp' CLASSNAME='" + name +
                          "'><PropertyContent CONTENT='ClassName(" + name + end +
                          "'/></FixedProperty><UserProperty NAME='u' CONTENT='ClassID(" + narrow(kUserClass) + end +
                          "'/></Compound>"),
                    compound.get()),
              S_OK);
    Bstr className;
    ComPtr<IPCProperty> asked;
    ComPtr<IDispatch> component;
    EXPECT_EQ(query<ICompoundProp>(compound)->GetCOMProperty(bstr("VP").get(), className.out(), asked.out()), S_OK);
    EXPECT_EQ(className.view(), kValueClass) << "the name stays";
    EXPECT_EQ(query<IUserProperty>(compound)->GetUserProperty(bstr("u").get(), component.out()), S_OK);
    ASSERT_EQ(static_cast<bool>(asked), !bad);
    ASSERT_EQ(static_cast<bool>(component), !bad);
    EXPECT_EQ(narrow(textOf(read(textOf(compound, xmlExactForm)), xmlExactForm)),
              narrow(textOf(compound, xmlExactForm)))
        << "the content stays";
    const auto copy = newCompound();
    EXPECT_EQ(query<ICompoundCopy>(copy)->CopyToThis(-32767, compound.get()), S_OK);
    EXPECT_EQ(narrow(textOf(copy, xmlExactForm)), narrow(textOf(compound, xmlExactForm))) << "in a copy too";
    if (bad) continue;
    EXPECT_EQ(static_cast<ValueComponent*>(asked.get())->content, content);
    EXPECT_EQ(static_cast<UserComponent*>(static_cast<ICOMUserProp*>(component.get()))->content, content);
  }
}

}  // namespace
}  // namespace qs::test
