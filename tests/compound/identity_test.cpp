// Names, numbers, family and UNIFAC groups of a compound.
#include <climits>

#include "tests/support/compounds.h"

namespace qs::test {
namespace {

class CompoundIdentity : public CompoundTest {
 protected:
  HRESULT putSynonym(INT index, WideView text) { return put->put_SynonymName(index, Bstr(text).get()); }
  // "-" for S_FALSE, which writes nothing.
  WideString synonym(INT index) {
    BSTR text = nullptr;
    const bool given = id->get_SynonymName(index, &text) == S_OK;
    EXPECT_TRUE(given || !text);
    return given ? taken(text) : OLESTR("-");
  }

  ComPtr<IBasicCompound> compound = newCompound();
  ComPtr<ICompoundID> id = query<ICompoundID>(compound);
  ComPtr<ICompoundIDPut> put = query<ICompoundIDPut>(compound);
};

TEST_F(CompoundIdentity, StringsAreNullUntilSetAndKeepEveryCodeUnit) {
  INT next = 1;
  EXPECT_EQ(identityOf(compound).find("(null) (null) (null) (null) ;"), 0u);
  for (const auto field : {&ICompoundIDPut::put_Name, &ICompoundIDPut::put_CASN, &ICompoundIDPut::put_IUPACName,
                           &ICompoundIDPut::put_ChemicalFormula})
    EXPECT_EQ((put.get()->*field)(Bstr(widen("s" + std::to_string(next++))).get()), S_OK);
  EXPECT_EQ(identityOf(compound).find("s1 s3 s4 s2 ;"), 0u);
  const WideString awkward = WideString(OLESTR("a\"<\xE9\xD800")) + OLECHAR{0} + OLESTR("z");
  for (const WideString& text : {awkward, WideString()}) {
    put->put_Name(Bstr(text).get());
    EXPECT_EQ(got(id, &ICompoundID::get_Name), text);
  }
  EXPECT_EQ(put->put_Name(nullptr), S_OK);
  EXPECT_EQ(got(id, &ICompoundID::get_Name), OLESTR("(null)"));
}

TEST_F(CompoundIdentity, NumbersAreUnknownUntilSetAndTakeAnything) {
  INT next = 1;
  for (const auto field :
       {&ICompoundIDPut::put_PPAttribute, &ICompoundIDPut::put_VelcorinID, &ICompoundIDPut::put_PPDSID,
        &ICompoundIDPut::put_DDBID, &ICompoundIDPut::put_DIPPRID, &ICompoundIDPut::put_CMAID})
    EXPECT_EQ((put.get()->*field)(next++), S_OK);
  EXPECT_NE(identityOf(compound).find("; 2 1 5 4 3 6;"), std::string::npos);
  const auto unknown = query<ICompoundID>(newCompound());
  for (const auto get :
       {&ICompoundID::get_PPAttribute, &ICompoundID::get_VelcorinID, &ICompoundID::get_PPDSID, &ICompoundID::get_DDBID,
        &ICompoundID::get_DIPPRID, &ICompoundID::get_CMAID, &ICompoundID::get_NumberOfSynonymNames}) {
    EXPECT_EQ((unknown.get()->*get)(&next), S_FALSE);
    EXPECT_EQ(next, -32767);
  }
  for (const INT number : {0, INT_MAX, INT_MIN, -32767}) {
    EXPECT_EQ(put->put_NumberOfSynonymNames(number), S_OK);
    EXPECT_EQ(id->get_NumberOfSynonymNames(&next), number == -32767 ? S_FALSE : S_OK);
    EXPECT_EQ(next, number);
  }
}

TEST_F(CompoundIdentity, SynonymsAreAppendedAtTheCountAndReplacedBelowIt) {
  EXPECT_EQ(putSynonym(0, OLESTR("early")), S_FALSE) << "the count is not known yet";
  ASSERT_EQ(put->put_NumberOfSynonymNames(0), S_OK);
  for (const auto& [index, text] :
       {std::pair(0, OLESTR("a")), std::pair(1, OLESTR("b")), std::pair(2, OLESTR("c")), std::pair(1, OLESTR("B"))})
    EXPECT_EQ(putSynonym(index, text), S_OK);
  for (const INT index : {4, -1}) EXPECT_EQ(putSynonym(index, OLESTR("x")), S_FALSE);
  EXPECT_EQ(got(id, &ICompoundID::get_NumberOfSynonymNames), 3);
  EXPECT_EQ(synonym(0) + synonym(1) + synonym(2), OLESTR("aBc"));
  for (const INT outside : {-1, 3, INT_MAX}) EXPECT_EQ(synonym(outside), OLESTR("-"));

  // A count that promises too much reads as null synonyms.
  put->put_NumberOfSynonymNames(INT_MAX);
  EXPECT_EQ(synonym(INT_MAX - 1), OLESTR("(null)"));
  EXPECT_EQ(putSynonym(64, OLESTR("x")), S_FALSE);
  EXPECT_EQ(putSynonym(63, OLESTR("x")), S_OK);
  EXPECT_EQ(synonym(62) + synonym(63), OLESTR("(null)x"));
}

TEST_F(CompoundIdentity, SpeciesAreKnownByNumberAlone) {
  const struct {
    INT number;
    HRESULT (STDMETHODCALLTYPE ICompoundID::*is)();
  } known[] = {{19, &ICompoundID::IsWater},
               {511, &ICompoundID::IsDEG},
               {54, &ICompoundID::IsTEG},
               {30, &ICompoundID::IsEG},
               {29, &ICompoundID::IsMethanol}};
  put->put_Name(Bstr(OLESTR("Water")).get());
  for (const INT number : {-32767, 0, 19, 29, 30, 54, 511}) {
    put->put_VelcorinID(number);
    for (const auto& species : known)
      EXPECT_EQ((id.get()->*species.is)(), number == species.number ? S_OK : S_FALSE) << number << species.number;
  }
}

TEST_F(CompoundIdentity, BasicInterfaceReturnsSuccessForUnknownNumberAndFamily) {
  const auto family = query<ICompoundFamily>(compound);
  const auto familyPut = query<ICompoundFamilyPut>(compound);
  INT number = 0;
  EXPECT_EQ(compound->get_VelcorinID(&number), S_OK);
  EXPECT_EQ(number, -32767);
  for (const INT value : {INT{-32767}, INT{ePolymer}}) {
    tagCompoundFamilyEnum basic{}, own{};
    familyPut->put_Family(static_cast<tagCompoundFamilyEnum>(value));
    EXPECT_EQ(compound->get_Family(&basic), S_OK);
    EXPECT_EQ(family->get_Family(&own), value == ePolymer ? S_OK : S_FALSE);
    EXPECT_EQ(INT{basic}, value);
    EXPECT_EQ(INT{own}, value);
  }
  familyPut->put_SubFamily(Bstr(OLESTR("glycol")).get());
  EXPECT_EQ(got(compound, &IBasicCompound::get_SubFamily), OLESTR("glycol"));
  EXPECT_EQ(got(compound, &ICompoundFamily::get_SubFamily), OLESTR("glycol"));

  // Unset until it is true or false.
  VARIANT_BOOL flag = 7;
  BYTE byte = 7;
  EXPECT_EQ(family->get_NonCondensable(&flag), S_FALSE);
  EXPECT_EQ(compound->GetNonCondensable(&byte), S_FALSE);
  EXPECT_EQ(flag * byte, 49);
  for (const VARIANT_BOOL value : {VARIANT_BOOL{5}, VARIANT_TRUE, VARIANT_FALSE}) {
    EXPECT_EQ(familyPut->put_NonCondensable(value), S_OK);
    EXPECT_EQ(family->get_NonCondensable(&flag), S_OK);
    EXPECT_EQ(compound->GetNonCondensable(&byte), S_OK);
    EXPECT_EQ(flag, value ? VARIANT_TRUE : VARIANT_FALSE);
    EXPECT_EQ(byte, value ? 1 : 0);
  }
}

TEST_F(CompoundIdentity, GroupsAreTakenFromArraysThatFit) {
  const auto groups = query<ICompoundUNIFAC1Put>(compound);
  const auto two = integers({1, 15}), one = integers({17});
  // The number of groups, the types and their counts after a call.
  const auto expect = [&](HRESULT called, HRESULT result, INT count, const std::vector<LONG>& types,
                          const std::vector<LONG>& counts) {
    EXPECT_EQ(called, result);
    ComPtr<IDispatch> typeArray, countArray;
    EXPECT_EQ(query<ICompoundUNIFAC1>(compound)->get_UNIFAC1Groups(typeArray.out(), countArray.out()),
              count == -32767 ? S_FALSE : S_OK);
    EXPECT_EQ(got(compound, &ICompoundUNIFAC1::get_UNIFAC1NumberOfGroups), count);
    EXPECT_EQ(valuesOf(typeArray.get()), types);
    EXPECT_EQ(valuesOf(countArray.get()), counts);
  };
  expect(S_OK, S_OK, -32767, {}, {});
  expect(groups->put_UNIFAC1Groups(2, two.get(), integers({3, 4}).get()), S_OK, 2, {1, 15}, {3, 4});
  expect(groups->put_VELUNIFACSubGr(1, one.get()), S_OK, 1, {17}, {3, 4});
  expect(groups->put_VELUNIFACNoGr(1, one.get()), S_OK, 1, {17}, {17});
  expect(groups->put_VELUNIFACNoGr(0, nullptr), S_OK, 0, {17}, {});

  // Both at once: nothing changes.
  expect(groups->put_UNIFAC1Groups(-1, two.get(), two.get()), S_FALSE, 0, {17}, {});
  expect(groups->put_UNIFAC1Groups(2, two.get(), nullptr), S_FALSE, 0, {17}, {});
  expect(groups->put_UNIFAC1Groups(2, two.get(), reals({1, 2}).get()), S_FALSE, 0, {17}, {});
  expect(groups->put_UNIFAC1Groups(2, two.get(), one.get()), S_FALSE, 0, {17}, {});
  // One array alone: the count is taken and the array left empty.
  expect(groups->put_VELUNIFACNoGr(-1, two.get()), S_FALSE, 0, {17}, {});
  expect(groups->put_VELUNIFACNoGr(1, two.get()), S_FALSE, 1, {17}, {});
  expect(groups->put_VELUNIFACSubGr(INT_MAX, nullptr), S_FALSE, INT_MAX, {}, {});
}

TEST_F(CompoundIdentity, GivesNothingNowhere) {
  const auto refuse = [this](auto... getters) { (refusesNull(compound, getters), ...); };
  refuse(&ICompoundID::get_Name, &ICompoundID::get_NumberOfSynonymNames, &ICompoundID::get_SynonymName,
         &ICompoundID::get_PPAttribute, &ICompoundID::get_CASN, &ICompoundID::get_VelcorinID,
         &ICompoundFamily::get_Family, &ICompoundFamily::get_SubFamily, &ICompoundFamily::get_NonCondensable,
         &IBasicCompound::get_VelcorinID, &IBasicCompound::get_Family, &IBasicCompound::GetNonCondensable,
         &ICompoundUNIFAC1::get_UNIFAC1NumberOfGroups, &ICompoundUNIFAC1::get_UNIFAC1Groups);
  refuse(&ICompoundProp::GetNumbOfProperty, &ICompoundProp::GetPropertyName, &ICompoundProp::GetPropertyValue,
         &ICompoundProp::GetPropertyType, &ICompoundProp::GetEquationProperty, &ICompoundProp::GetCOMProperty,
         &ICompoundProp::GetNumbOfCommonProperty, &ICompoundProp::GetCommonPropertyName,
         &ICompoundPropPut::FindProperty, &ICompoundPropPut::GetEquationInfo, &ICompoundPropPut::GetPropertyLoader,
         &ICompEqnXYShape::GetEquationPropertyXYShape, &IUserProperty::GetUserProperty,
         &IUserProperty::GetUserPropertyClassID, &IUserProperty::GetNumbOfUserProperty,
         &IUserProperty::GetUserPropertyI, &IXMLStore::StoreAsXML, &IXMLStoreEx::StoreAsXMLEx,
         &ICompoundViscosity::get_ViscosityThetas, &ICompoundUNIQUAC1::get_UNIQUAC1Parameters);
}

}  // namespace
}  // namespace qs::test
