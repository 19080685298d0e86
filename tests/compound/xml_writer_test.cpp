// The XML text of a compound, against one put together here from its fragments.
#include "compound/xml_writer.h"

#include <cstdio>
#include <map>
#include <sstream>

#include "tests/support/bundled_compounds.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

const char kWritingOrder[] =
    "MW TC PC VC ACEN NBP SLDN DM RG MP HFUS RI FP FLML FLMU AIT SVEL IGHF25 IGSF25 IGHC25 PRTC PRPC PRVC PRACEN "
    "PRMC PRPVOLT COSTALDACEN COSTALDVCHAR CavettParameter THETAA THETAB ChaoSeaderACEN ChaoSeaderMVOL "
    "ChaoSeaderSOLP ChaoSeaderPVOLT ChienNullMVOL ChienNullSOLP ChienNullPVOLT VirialSOLV PRSVTC PRSVPC PRSVVC "
    "PRSVACEN PRSVKAPPA PRSVPVOLT SRKTC SRKPC SRKVC SRKACEN SRKMC SRKPVOLT WilsonKVAL WilsonMVOL UNIQUACR UNIQUACQ "
    "SolidAverageDiameter SolidSphericity SolidSurfaceArea SolidCarbon SolidHydrogen SolidNitrogen SolidOxygen "
    "SolidSulphur SolidChlorine LDN VDN VP SP HVP LCP VCP SVR LVS VVS LTC VTC ST IT LIQH VAPH LIQS VAPS IGG IGH IGS "
    "IGCP IGGF25 EntropyGC KV1 KV2 AltTC AltPC AltVC ZC AltZC THETAC THETAD SolidOther SepFactorBeta SDN SOLH SOLS "
    "SOLCP SOLTC SUBP";

std::string formatted(double value) {
  char digits[40];
  std::snprintf(digits, sizeof digits, "%g", value);
  return digits;
}

// What a compound of the database holds, put into the text by hand.
class ExpectedText {
 public:
  explicit ExpectedText(const ComPtr<IBasicCompound>& compound, int index)
      : id_(query<ICompoundID>(compound)), props_(query<ICompoundProp>(compound)) {
    out_ << "   <Compound VERSION = \"2\" CompIdx = \"" << index << "\" \n";
    attribute("Name", string(&ICompoundID::get_Name));
    attribute("Formula", string(&ICompoundID::get_ChemicalFormula));
    tagCompoundFamilyEnum family{};
    VARIANT_BOOL nonCondensable = 0;
    query<ICompoundFamily>(compound)->get_Family(&family);
    const bool known = query<ICompoundFamily>(compound)->get_NonCondensable(&nonCondensable) == S_OK;
    attribute("FamilyArribute", std::to_string(int{family}));
    attribute("NonCondensable", known ? nonCondensable ? "1" : "0" : "-32767");
    attribute("PPAttribute", integer(&ICompoundID::get_PPAttribute));
    attribute("VelcorinID", integer(&ICompoundID::get_VelcorinID));
    attribute("CASN", string(&ICompoundID::get_CASN));
    attribute("IUPACName", string(&ICompoundID::get_IUPACName));
    attribute("PPDSID", integer(&ICompoundID::get_PPDSID));
    attribute("DDBID", integer(&ICompoundID::get_DDBID));
    attribute("DIPPRID", integer(&ICompoundID::get_DIPPRID));
    out_ << "            CMAID = \"" << integer(&ICompoundID::get_CMAID) << "\"> \n";

    out_ << "      <Synonyms NUMB = \"" << integer(&ICompoundID::get_NumberOfSynonymNames) << "\"> \n";
    BSTR text = nullptr;
    for (INT i = 0; id_->get_SynonymName(i, &text) == S_OK; ++i)
      out_ << "            <Synonym NAME=\"" << narrow(taken(text)) << "\"/> \n";
    out_ << "      </Synonyms> \n";

    INT groups = 0;
    query<ICompoundUNIFAC1>(compound)->get_UNIFAC1NumberOfGroups(&groups);
    out_ << "      <GroupProperty NAME=\"UNIFAC1\" NUMB = \"" << groups << "\" > \n";
    ComPtr<IDispatch> types, counts;
    query<ICompoundUNIFAC1>(compound)->get_UNIFAC1Groups(types.out(), counts.out());
    for (INT i = 0; i < groups; ++i)
      out_ << "            <Group ID = \"" << element(types.get(), i) << "\" NUMB = \"" << element(counts.get(), i)
           << "\"/> \n";
    out_ << "      </GroupProperty>\n";

    std::istringstream keys(kWritingOrder);
    for (std::string key; keys >> key;) property("FixedProperty", key);
    INT others = 0;
    props_->GetNumbOfProperty(0, &others);
    for (INT i = 0; i < others; ++i) {
      Bstr name;
      tagPropTypeEnum type{};
      props_->GetPropertyName(0, i, name.out(), &type);
      property("AdditionProperty", narrow(name.view()));
    }
    out_ << "   </Compound> \n";
  }

  std::string text() const { return out_.str(); }

 private:
  void attribute(const char* name, const std::string& value) {
    out_ << "            " << name << " = \"" << value << "\" \n";
  }
  std::string string(HRESULT (STDMETHODCALLTYPE ICompoundID::*get)(BSTR*)) {
    Bstr text;
    (id_.get()->*get)(text.out());
    return narrow(text.view());
  }
  std::string integer(HRESULT (STDMETHODCALLTYPE ICompoundID::*get)(INT*)) {
    INT value = 0;
    (id_.get()->*get)(&value);
    return std::to_string(value);
  }
  static int element(IDispatch* array, INT i) {
    LONG value = 0;
    ComPtr<IIntegerArrayDisp>::from(array)->get_IthValue(i, &value);
    return static_cast<int>(value);
  }

  void property(const std::string& elementName, const std::string& key) {
    const Bstr name(widen(key));
    tagPropTypeEnum type{};
    props_->GetPropertyType(name.get(), &type);
    out_ << "      <" << elementName << " NAME=\"" << key;
    if (type == VoidProp) {
      out_ << "\"   TYPE = \"VOID\"   EQUATIONSHAPE = \"1000\"   CLASSID = \"VOID\">\n"
           << "           <PropertyContent CONTENT = \"VOID\"/>\n";
    } else if (type == PointProp) {
      double value = 0;
      LONG dependencies = 0;
      props_->GetPropertyValue(name.get(), 298.15, 101.325, eNoExtrapolation, &dependencies, &value);
      out_ << "\"   TYPE = \"PointProp\"   EQUATIONSHAPE = \"1000\"   CLASSID = \"VOID\">\n"
           << "           <PropertyContent CONTENT = \"Value(" << formatted(value) << ")\"/> \n";
    } else {
      equation(name.get());
    }
    out_ << "      </" << elementName << ">\n";
  }

  void equation(BSTR name) {
    tagEquationShapeEnum shape{};
    BSTR form = nullptr;
    double v[6]{};
    INT count = 0;
    ComPtr<IRealArrayDisp> coefficients;
    ASSERT_EQ(props_->GetEquationProperty(name, &shape, &form, v, v + 1, v + 2, v + 3, &count, coefficients.out()),
              S_OK);
    SysFreeString(form);
    out_ << "\"   TYPE = \"EquationProp\"   EQUATIONSHAPE = \"" << int{shape} << "\"   CLASSID = \"VOID\">\n"
         << "           <PropertyContent CONTENT = \"Tmin(" << formatted(v[0]) << ") Tmax(" << formatted(v[1])
         << ") Pmin(" << formatted(v[2]) << ") Pmax(" << formatted(v[3]) << ") nParams(" << count << ") Values(";
    for (INT i = 0; i < count; ++i) {
      coefficients->get_IthValue(i, v);
      out_ << (i > 0 ? "," : "") << formatted(v[0]);
    }
    tagXYShapeEnum x{}, y{};
    ComPtr<ICompEqnXYShape>::from(props_.get())
        ->GetEquationPropertyXYShape(name, &x, &y, v, v + 1, v + 2, v + 3, v + 4, v + 5);
    out_ << ") Xshape(" << int{x} << ") Yshape(" << int{y} << ") Xnorm(" << formatted(v[0]) << ") Ynorm("
         << formatted(v[1]) << ") Xpow(" << formatted(v[2]) << ") Ypow(" << formatted(v[3]) << ") A(" << formatted(v[4])
         << ") B(" << formatted(v[5]) << ")\"/> \n";
  }

  ComPtr<ICompoundID> id_;
  ComPtr<ICompoundProp> props_;
  std::ostringstream out_;
};

class XmlWriter : public XmlTest {};

TEST_F(XmlWriter, BundledCompoundsAreWrittenByteForByte) {
  const BundledCompounds database;
  for (const int number : database.numbers) {
    const auto compound = newCompound();
    ASSERT_EQ(query<ICompoundInitFromVelDB>(compound)->Init(Bstr(database.directory.name()).get(), number), S_OK);
    const WideString text = textOf(compound);
    EXPECT_EQ(narrow(text), ExpectedText(compound, number).text());
    EXPECT_EQ(textOf(compound, xmlDefaultForm), text);
    // Six digits of everything come back, and nothing of a bundled compound is left out.
    EXPECT_EQ(narrow(textOf(read(text))), narrow(text)) << number;
    EXPECT_EQ(narrow(Description::of(read(textOf(compound, xmlExactForm)))), narrow(Description::of(compound)));
  }
}

TEST_F(XmlWriter, AnEmptyCompoundHasAllKeys) {
  EXPECT_EQ(narrow(textOf(newCompound())), [] {
    std::string text = ExpectedText(newCompound(), -32767).text();
    for (std::size_t at; (at = text.find("(null)")) != std::string::npos;) text.erase(at, 6);
    return text;
  }());
}

TEST_F(XmlWriter, OtherKindsInTheDefaultForm) {
  ComponentClass<ValueComponent> values(OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A01}"));
  ComponentClass<UserComponent> users(OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A02}"));
  const auto compound = newCompound();
  const auto put = query<ICompoundPropPut>(compound);
  const auto bstr = [](const char* text) { return Bstr(widen(text)); };
  put->SetVoidProperty(bstr("TC").get(), 1);
  put->SetVoidProperty(bstr("Left out").get(), 0);
  put->SetPointProperty(bstr("R&D").get(), 0, 1234567.0);
  ValueComponent* value = values.make(OLESTR("k=1"));
  put->SetCOMProperty(bstr("Mine").get(), 0, bstr("Vendor.Cp").get(), value);
  UserComponent* user = users.make(OLESTR("u"));
  query<IUserProperty>(compound)->SetUserProperty(bstr("Colour").get(), bstr("Some.Class").get(), user);
  const std::string text = narrow(textOf(compound));
  EXPECT_EQ(text.find("NAME=\"TC\""), std::string::npos) << "an empty object is no empty slot";
  EXPECT_EQ(text.substr(text.find("      <Addition")),
            "      <AdditionProperty NAME=\"Mine\"   TYPE = \"COMProp\"   EQUATIONSHAPE = \"1000\"   "
            "CLASSNAME = \"Vendor.Cp\">\n"
            "           <PropertyContent CONTENT = \"ClassName(Vendor.Cp) ComContent(k=1)\"/> \n"
            "      </AdditionProperty>\n"
            "      <AdditionProperty NAME=\"R&D\"   TYPE = \"PointProp\"   EQUATIONSHAPE = \"1000\"   "
            "CLASSID = \"VOID\">\n"
            "           <PropertyContent CONTENT = \"Value(1.23457e+06)\"/> \n"
            "      </AdditionProperty>\n"
            "      <UserProperty NAME=\"Colour\"   CONTENT = \"ClassID(Some.Class) ComContent(u)\"> \n"
            "      </UserProperty>\n"
            "   </Compound> \n");
  BSTR untouched = nullptr;
  for (HRESULT* stored : {&user->stored, &value->stored}) {
    *stored = E_BOUNDS;
    EXPECT_EQ(query<IXMLStore>(compound)->StoreAsXML(&untouched), E_BOUNDS) << "what a component fails with";
    EXPECT_EQ(untouched, nullptr);
    *stored = S_OK;
  }

  // A component that puts another property in its own place while it stores itself.
  for (const INT form : {xmlDefaultForm, xmlExactForm}) {
    ValueComponent* component = values.make(OLESTR("itself"));
    component->onStore = [&] { put->SetPointProperty(bstr("Mine").get(), 0, 1.0); };
    put->SetCOMProperty(bstr("Mine").get(), 0, bstr("C").get(), component);
    EXPECT_NE(textOf(compound, form).find(OLESTR("ComContent(itself)")), WideView::npos);
    EXPECT_NE(textOf(compound, form).find(OLESTR("\"R")), WideView::npos) << "what comes after it";
  }
}

TEST_F(XmlWriter, RefusesWhatTheExactFormCannotHold) {
  const struct {
    const char* what;
    WideString name;
  } cases[] = {{"NUL", WideString(1, OLECHAR{})}, {"control", OLESTR("a\x1b")},           {"no character", {0xFFFE}},
               {"no character", {0xFFFF}},        {"high alone", {0xD800, 'x'}},          {"high last", {'x', 0xDBFF}},
               {"low alone", {0xDC00}},           {"low twice", {0xD83D, 0xDE00, 0xDE00}}};
  for (const auto& row : cases) {
    const auto compound = newCompound();
    query<ICompoundIDPut>(compound)->put_IUPACName(Bstr(row.name).get());
    BSTR untouched = nullptr;
    EXPECT_EQ(query<IXMLStoreEx>(compound)->StoreAsXMLEx(xmlExactForm, &untouched), E_INVALIDARG) << row.what;
    EXPECT_EQ(untouched, nullptr);
    EXPECT_FALSE(textOf(compound).empty()) << "the default form writes anything";
  }
  ComponentClass<ValueComponent> values(OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A01}"));
  const auto compound = newCompound();
  BSTR untouched = nullptr;
  for (const INT form : {4, -1, 8})
    EXPECT_EQ(query<IXMLStoreEx>(compound)->StoreAsXMLEx(form, &untouched), E_INVALIDARG);
  query<ICompoundPropPut>(compound)->SetCOMProperty(Bstr(OLESTR("VP")).get(), 1, Bstr(OLESTR("a) ComContent(b")).get(),
                                                    values.make({}));
  EXPECT_EQ(query<IXMLStoreEx>(compound)->StoreAsXMLEx(xmlExactForm, &untouched), E_INVALIDARG)
      << "a class name that would be cut";
}

}  // namespace
}  // namespace qs::test
