// The XML text of a compound, byte for byte.
#include "props/key_table.h"
#include "tests/support/files.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

// What follows the name of a fixed key without a property.
const char kEmptySlot[] =
    "   TYPE = \"VOID\"   EQUATIONSHAPE = \"1000\"   CLASSID = \"VOID\">\n"
    "           <PropertyContent CONTENT = \"VOID\"/>\n"
    "      </FixedProperty>\n";

class XmlWriter : public XmlTest {
 protected:
  static Bstr bstr(std::string_view text) { return Bstr(widen(text)); }

  ComponentClass<ValueComponent> values_{kValueClass};
  ComponentClass<UserComponent> users_{kUserClass};
  BSTR untouched_ = nullptr;
};

// The text of a compound with properties of all kinds. A key that the file does not have yet has an empty slot.
std::string defaultForm() {
  std::string text = readFile(kSourceFolder / "tests/compound/default_form.xml");
  for (const KeyEntry& key : kKeys) {
    const std::string name = "NAME=\"" + narrow(key.name) + "\"";
    if (text.find(name) == std::string::npos)
      text.insert(text.find("      <AdditionProperty"), "      <FixedProperty " + name + kEmptySlot);
  }
  return text;
}

TEST_F(XmlWriter, WritesTheDefaultFormByteForByte) {
  const auto compound = read(widen(defaultForm()));
  EXPECT_EQ(describe(compound),
            "s1 s4 s2 s3 ; 6 5 9 8 7 10; 4 1; a  a; 1 2; 7 -32767;(null) 3 2 0 \n"
            "PC 1 1 1234570 \n"
            "VP 2 2 19 Y = A + B*X + C*X^2 250.5 1e+06 -2 5e-05 1.5 -2 1e+20 26 7 2 3 0.5 4 5 6.25 \n"
            "Mine 3 3 Vendor.Cp (null) \n"
            "user Colour Some.Class (null) ");
  // What this form leaves out, or writes like something else.
  query<ICompoundIDPut>(compound)->put_SynonymName(1, nullptr);
  query<ICompoundFamilyPut>(compound)->put_SubFamily(bstr("left out").get());
  query<ICompoundUNIFAC1Put>(compound)->put_VELUNIFACNoGr(1, integers({7}).get());
  query<ICompoundUNIFAC1Put>(compound)->put_UNIFAC1NumberOfGroups(2);
  const auto put = query<ICompoundPropPut>(compound);
  put->SetVoidProperty(bstr("Left out").get(), 0);
  put->SetPointProperty(bstr("PC").get(), 1, 1234567.0);
  put->SetPropertyLoader(bstr("PC").get(), bstr("left out").get());
  EXPECT_EQ(narrow(textOf(compound)), defaultForm());
  EXPECT_EQ(narrow(textOf(compound, xmlDefaultForm)), defaultForm());
  put->SetVoidProperty(bstr("TC").get(), 1);
  EXPECT_EQ(textOf(compound).find(OLESTR("NAME=\"TC\"")), WideView::npos) << "an empty object is no empty slot";
}

TEST_F(XmlWriter, WritesComponentsThatFailOrAct) {
  const auto compound = newCompound();
  const auto put = query<ICompoundPropPut>(compound);
  ValueComponent* value = values_.make({});
  UserComponent* user = users_.make({});
  put->SetPointProperty(bstr("R&D").get(), 0, 1.0);
  put->SetCOMProperty(bstr("Mine").get(), 0, bstr("C").get(), value);
  query<IUserProperty>(compound)->SetUserProperty(bstr("Colour").get(), bstr("C").get(), user);
  for (HRESULT* result : {&user->result, &value->result}) {
    *result = E_BOUNDS;
    EXPECT_EQ(query<IXMLStore>(compound)->StoreAsXML(&untouched_), E_BOUNDS) << "what a component fails with";
    *result = S_OK;
  }
  EXPECT_EQ(untouched_, nullptr);

  // A component that puts another property in its own place while it stores itself.
  for (const INT form : {xmlDefaultForm, xmlExactForm}) {
    ValueComponent* component = values_.make(OLESTR("itself"));
    component->act = [&] { put->SetPointProperty(bstr("Mine").get(), 0, 1.0); };
    put->SetCOMProperty(bstr("Mine").get(), 0, bstr("C").get(), component);
    const WideString text = textOf(compound, form);
    EXPECT_NE(text.find(OLESTR("ComContent(itself)")), WideView::npos);
    EXPECT_NE(text.find(form == xmlDefaultForm ? OLESTR("\"R&D\"") : OLESTR("\"R&amp;D\"")), WideView::npos);
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
    EXPECT_EQ(query<IXMLStoreEx>(compound)->StoreAsXMLEx(xmlExactForm, &untouched_), E_INVALIDARG) << row.what;
    EXPECT_EQ(untouched_, nullptr);
    EXPECT_FALSE(textOf(compound).empty()) << "the default form writes anything";
  }
  const auto compound = newCompound();
  for (const INT form : {-1, 8}) EXPECT_EQ(query<IXMLStoreEx>(compound)->StoreAsXMLEx(form, &untouched_), E_INVALIDARG);
  query<ICompoundPropPut>(compound)->SetCOMProperty(Bstr(OLESTR("VP")).get(), 1, Bstr(OLESTR("a) ComContent(b")).get(),
                                                    values_.make({}));
  EXPECT_EQ(query<IXMLStoreEx>(compound)->StoreAsXMLEx(xmlExactForm, &untouched_), E_INVALIDARG)
      << "a class name that would be cut";
}

}  // namespace
}  // namespace qs::test
