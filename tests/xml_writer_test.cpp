// The XML text of a compound.
#include "compound/xml_writer.h"

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

class XmlWriter : public XmlTest {};

TEST_F(XmlWriter, BundledCompoundsComeBack) {
  const BundledCompounds database;
  for (const int number : database.numbers) {
    const auto compound = newCompound();
    ASSERT_EQ(query<ICompoundInitFromVelDB>(compound)->Init(Bstr(database.directory.name()).get(), number), S_OK);
    const WideString text = textOf(compound);
    EXPECT_EQ(textOf(compound, xmlDefaultForm), text);
    // Six digits of everything come back, and nothing of a bundled compound is left out.
    EXPECT_EQ(narrow(textOf(read(text))), narrow(text)) << number;
    EXPECT_EQ(descriptionOf(read(textOf(compound, xmlExactForm))), descriptionOf(compound)) << number;
  }
}

TEST_F(XmlWriter, TheDefaultFormIsWrittenByteForByte) {
  const auto compound = newCompound();
  const auto bstr = [](const char* text) { return Bstr(widen(text)); };
  const auto id = query<ICompoundIDPut>(compound);
  id->put_Name(bstr("Water").get());
  id->put_ChemicalFormula(bstr("H2O").get());
  id->put_IUPACName(bstr("oxidane").get());
  id->put_PPAttribute(1);
  id->put_VelcorinID(2);
  id->put_PPDSID(3);
  id->put_DDBID(4);
  id->put_CMAID(5);
  id->put_NumberOfSynonymNames(0);
  for (INT i = 0; i < 2; ++i) id->put_SynonymName(i, bstr(i == 0 ? "Aqua" : "Ice").get());
  query<ICompoundFamilyPut>(compound)->put_Family(eMiscellaneous);
  query<ICompoundFamilyPut>(compound)->put_NonCondensable(VARIANT_TRUE);
  query<ICompoundUNIFAC1Put>(compound)->put_UNIFAC1Groups(2, integers({17, 8}).get(), integers({1, 6}).get());
  const auto put = query<ICompoundPropPut>(compound);
  put->SetPointProperty(bstr("MW").get(), 1, 18.0152833);
  put->SetEquationProperty(bstr("TC").get(), 1, PropCurvePOLY2, 1, 1e10, 2.5, 1e-5, reals({0.5, 0, -7}).get());
  query<ICompEqnXYShape>(compound)->SetEquationPropertyXYShape(bstr("TC").get(), COMxr, COMlnx, 3, 4, 5, 6, 7, 8);
  const std::string text = narrow(textOf(compound));
  EXPECT_EQ(text.substr(0, text.find("      <FixedProperty NAME=\"PC\"")),
            "   <Compound VERSION = \"2\" CompIdx = \"-32767\" \n"
            "            Name = \"Water\" \n"
            "            Formula = \"H2O\" \n"
            "            FamilyArribute = \"2\" \n"
            "            NonCondensable = \"1\" \n"
            "            PPAttribute = \"1\" \n"
            "            VelcorinID = \"2\" \n"
            "            CASN = \"\" \n"
            "            IUPACName = \"oxidane\" \n"
            "            PPDSID = \"3\" \n"
            "            DDBID = \"4\" \n"
            "            DIPPRID = \"-32767\" \n"
            "            CMAID = \"5\"> \n"
            "      <Synonyms NUMB = \"2\"> \n"
            "            <Synonym NAME=\"Aqua\"/> \n"
            "            <Synonym NAME=\"Ice\"/> \n"
            "      </Synonyms> \n"
            "      <GroupProperty NAME=\"UNIFAC1\" NUMB = \"2\" > \n"
            "            <Group ID = \"17\" NUMB = \"1\"/> \n"
            "            <Group ID = \"8\" NUMB = \"6\"/> \n"
            "      </GroupProperty>\n"
            "      <FixedProperty NAME=\"MW\"   TYPE = \"PointProp\"   EQUATIONSHAPE = \"1000\"   "
            "CLASSID = \"VOID\">\n"
            "           <PropertyContent CONTENT = \"Value(18.0153)\"/> \n"
            "      </FixedProperty>\n"
            "      <FixedProperty NAME=\"TC\"   TYPE = \"EquationProp\"   EQUATIONSHAPE = \"19\"   "
            "CLASSID = \"VOID\">\n"
            "           <PropertyContent CONTENT = \"Tmin(1) Tmax(1e+10) Pmin(2.5) Pmax(1e-05) nParams(3) "
            "Values(0.5,0,-7) Xshape(2) Yshape(7) Xnorm(3) Ynorm(4) Xpow(5) Ypow(6) A(7) B(8)\"/> \n"
            "      </FixedProperty>\n");

  std::string fixed;
  std::istringstream keys(kWritingOrder);
  for (std::string key; keys >> key;)
    fixed += "      <FixedProperty NAME=\"" + key +
             "\"   TYPE = \"VOID\"   EQUATIONSHAPE = \"1000\"   CLASSID = \"VOID\">\n"
             "           <PropertyContent CONTENT = \"VOID\"/>\n"
             "      </FixedProperty>\n";
  const std::string empty = narrow(textOf(newCompound()));
  EXPECT_EQ(empty.substr(std::min(empty.find("      <Synonyms"), empty.size())),
            "      <Synonyms NUMB = \"-32767\"> \n      </Synonyms> \n"
            "      <GroupProperty NAME=\"UNIFAC1\" NUMB = \"-32767\" > \n      </GroupProperty>\n" +
                fixed + "   </Compound> \n");
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
  put->SetCOMProperty(bstr("Mine").get(), 0, bstr("Vendor.Cp").get(), values.make(OLESTR("k=1")));
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
  user->stored = E_FAIL;
  BSTR untouched = nullptr;
  EXPECT_EQ(query<IXMLStore>(compound)->StoreAsXML(&untouched), E_FAIL) << "what a component fails with";
  EXPECT_EQ(untouched, nullptr);

  // A component that puts another property in its own place while it stores itself.
  user->stored = S_OK;
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
