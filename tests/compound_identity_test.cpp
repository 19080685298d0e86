// Names, numbers, family and UNIFAC groups of a compound.
#include <climits>

#include "tests/support/compounds.h"

namespace qs::test {
namespace {

class CompoundIdentity : public CompoundTest {
 protected:
  void SetUp() override {
    CompoundTest::SetUp();
    compound = newCompound();
    id = query<ICompoundID>(compound);
    idPut = query<ICompoundIDPut>(compound);
  }
  void TearDown() override {
    compound = {};
    id = {};
    idPut = {};
    CompoundTest::TearDown();
  }

  HRESULT putSynonym(INT index, WideView text) { return idPut->put_SynonymName(index, Bstr(text).get()); }
  INT synonymCount() {
    INT count = 0;
    id->get_NumberOfSynonymNames(&count);
    return count;
  }
  WideString synonym(INT index) {
    BSTR text = nullptr;
    EXPECT_EQ(id->get_SynonymName(index, &text), S_OK) << index;
    return taken(text);
  }

  ComPtr<IBasicCompound> compound;
  ComPtr<ICompoundID> id;
  ComPtr<ICompoundIDPut> idPut;
};

TEST_F(CompoundIdentity, StringsAreNullUntilSetAndKeepEveryCodeUnit) {
  struct Field {
    HRESULT (STDMETHODCALLTYPE ICompoundID::*get)(BSTR*);
    HRESULT (STDMETHODCALLTYPE ICompoundIDPut::*put)(BSTR);
  };
  const Field fields[] = {
      {&ICompoundID::get_Name, &ICompoundIDPut::put_Name},
      {&ICompoundID::get_CASN, &ICompoundIDPut::put_CASN},
      {&ICompoundID::get_IUPACName, &ICompoundIDPut::put_IUPACName},
      {&ICompoundID::get_ChemicalFormula, &ICompoundIDPut::put_ChemicalFormula},
  };
  const auto read = [&](const Field& field) {
    BSTR text = nullptr;
    EXPECT_EQ((id.get()->*field.get)(&text), S_OK);
    return taken(text);
  };
  const WideString awkward = WideString(OLESTR("a\"<\xE9\xD800")) + OLECHAR{0} + OLESTR("z");
  for (const Field& field : fields) {
    EXPECT_EQ(read(field), OLESTR("(null)"));
    EXPECT_EQ((idPut.get()->*field.put)(Bstr(awkward).get()), S_OK);
    EXPECT_EQ(read(field), awkward);
    EXPECT_EQ((idPut.get()->*field.put)(Bstr(OLESTR("")).get()), S_OK);
    EXPECT_EQ(read(field), OLESTR(""));
    EXPECT_EQ((idPut.get()->*field.put)(nullptr), S_OK);
    EXPECT_EQ(read(field), OLESTR("(null)"));
  }
}

TEST_F(CompoundIdentity, NumbersAreUnknownUntilSetAndTakeAnything) {
  struct Field {
    HRESULT (STDMETHODCALLTYPE ICompoundID::*get)(INT*);
    HRESULT (STDMETHODCALLTYPE ICompoundIDPut::*put)(INT);
  };
  const Field fields[] = {
      {&ICompoundID::get_PPAttribute, &ICompoundIDPut::put_PPAttribute},
      {&ICompoundID::get_VelcorinID, &ICompoundIDPut::put_VelcorinID},
      {&ICompoundID::get_PPDSID, &ICompoundIDPut::put_PPDSID},
      {&ICompoundID::get_DDBID, &ICompoundIDPut::put_DDBID},
      {&ICompoundID::get_DIPPRID, &ICompoundIDPut::put_DIPPRID},
      {&ICompoundID::get_CMAID, &ICompoundIDPut::put_CMAID},
      {&ICompoundID::get_NumberOfSynonymNames, &ICompoundIDPut::put_NumberOfSynonymNames},
  };
  for (const Field& field : fields) {
    INT value = 0;
    EXPECT_EQ((id.get()->*field.get)(&value), S_FALSE);
    EXPECT_EQ(value, -32767);
    for (const INT number : {0, 19, -1, INT_MAX, INT_MIN}) {
      EXPECT_EQ((idPut.get()->*field.put)(number), S_OK);
      EXPECT_EQ((id.get()->*field.get)(&value), S_OK);
      EXPECT_EQ(value, number);
    }
    EXPECT_EQ((idPut.get()->*field.put)(-32767), S_OK);
    EXPECT_EQ((id.get()->*field.get)(&value), S_FALSE);
  }
}

TEST_F(CompoundIdentity, SynonymsAreAppendedAtTheCountAndReplacedBelowIt) {
  EXPECT_EQ(putSynonym(0, OLESTR("early")), S_FALSE) << "the count is not known yet";
  ASSERT_EQ(idPut->put_NumberOfSynonymNames(0), S_OK);
  EXPECT_EQ(putSynonym(0, OLESTR("a")), S_OK);
  EXPECT_EQ(putSynonym(1, OLESTR("b")), S_OK);
  EXPECT_EQ(putSynonym(2, OLESTR("c")), S_OK);
  EXPECT_EQ(synonymCount(), 3);
  EXPECT_EQ(putSynonym(4, OLESTR("x")), S_FALSE);
  EXPECT_EQ(putSynonym(-1, OLESTR("x")), S_FALSE);
  EXPECT_EQ(putSynonym(1, OLESTR("B")), S_OK);
  EXPECT_EQ(synonymCount(), 3);
  EXPECT_EQ(synonym(0), OLESTR("a"));
  EXPECT_EQ(synonym(1), OLESTR("B"));
  EXPECT_EQ(synonym(2), OLESTR("c"));

  BSTR untouched = reinterpret_cast<BSTR>(this);
  for (const INT outside : {-1, 3, INT_MAX}) {
    EXPECT_EQ(id->get_SynonymName(outside, &untouched), S_FALSE);
    EXPECT_EQ(untouched, reinterpret_cast<BSTR>(this));
  }
}

TEST_F(CompoundIdentity, ACountThatPromisesTooMuchReadsAsNullSynonyms) {
  idPut->put_NumberOfSynonymNames(INT_MAX);
  EXPECT_EQ(synonym(0), OLESTR("(null)"));
  EXPECT_EQ(synonym(INT_MAX - 1), OLESTR("(null)"));
  EXPECT_EQ(putSynonym(INT_MAX - 1, OLESTR("x")), S_FALSE);
  EXPECT_EQ(putSynonym(63, OLESTR("x")), S_OK);
  EXPECT_EQ(synonym(62), OLESTR("(null)"));
  EXPECT_EQ(synonym(63), OLESTR("x"));
}

TEST_F(CompoundIdentity, SpeciesAreKnownByNumberAlone) {
  struct Species {
    INT number;
    HRESULT (STDMETHODCALLTYPE ICompoundID::*is)();
  };
  const Species known[] = {{19, &ICompoundID::IsWater},
                           {511, &ICompoundID::IsDEG},
                           {54, &ICompoundID::IsTEG},
                           {30, &ICompoundID::IsEG},
                           {29, &ICompoundID::IsMethanol}};
  idPut->put_Name(Bstr(OLESTR("Water")).get());
  idPut->put_CASN(Bstr(OLESTR("7732-18-5")).get());
  for (const INT number : {-32767, 0, 19, 29, 30, 54, 511}) {
    if (number != -32767) idPut->put_VelcorinID(number);
    for (const Species& species : known)
      EXPECT_EQ((id.get()->*species.is)(), number == species.number ? S_OK : S_FALSE) << number << species.number;
  }
}

TEST_F(CompoundIdentity, BasicInterfaceAnswersSuccessForUnknownNumberAndFamily) {
  const auto family = query<ICompoundFamily>(compound);
  INT number = 0;
  EXPECT_EQ(compound->get_VelcorinID(&number), S_OK);
  EXPECT_EQ(number, -32767);
  tagCompoundFamilyEnum basic{}, own{};
  EXPECT_EQ(compound->get_Family(&basic), S_OK);
  EXPECT_EQ(family->get_Family(&own), S_FALSE);
  EXPECT_EQ(INT{basic}, -32767);
  EXPECT_EQ(INT{own}, -32767);

  query<ICompoundFamilyPut>(compound)->put_Family(ePolymer);
  EXPECT_EQ(compound->get_Family(&basic), S_OK);
  EXPECT_EQ(family->get_Family(&own), S_OK);
  EXPECT_EQ(basic, ePolymer);
  EXPECT_EQ(own, ePolymer);

  query<ICompoundFamilyPut>(compound)->put_SubFamily(Bstr(OLESTR("glycol")).get());
  BSTR basicText = nullptr, ownText = nullptr;
  EXPECT_EQ(compound->get_SubFamily(&basicText), S_OK);
  EXPECT_EQ(family->get_SubFamily(&ownText), S_OK);
  EXPECT_EQ(taken(basicText), OLESTR("glycol"));
  EXPECT_EQ(taken(ownText), OLESTR("glycol"));
}

TEST_F(CompoundIdentity, NonCondensableIsUnsetTrueOrFalse) {
  const auto family = query<ICompoundFamily>(compound);
  const auto put = query<ICompoundFamilyPut>(compound);
  VARIANT_BOOL flag = 7;
  BYTE byte = 7;
  EXPECT_EQ(family->get_NonCondensable(&flag), S_FALSE);
  EXPECT_EQ(compound->GetNonCondensable(&byte), S_FALSE);
  EXPECT_EQ(flag, 7);
  EXPECT_EQ(byte, 7);
  struct Row {
    VARIANT_BOOL put, flag;
    BYTE byte;
  };
  for (const Row& row : {Row{5, VARIANT_TRUE, 1}, Row{VARIANT_TRUE, VARIANT_TRUE, 1}, Row{0, VARIANT_FALSE, 0}}) {
    EXPECT_EQ(put->put_NonCondensable(row.put), S_OK);
    EXPECT_EQ(family->get_NonCondensable(&flag), S_OK);
    EXPECT_EQ(compound->GetNonCondensable(&byte), S_OK);
    EXPECT_EQ(flag, row.flag);
    EXPECT_EQ(byte, row.byte);
  }
}

class CompoundGroups : public CompoundTest {
 protected:
  struct Groups {
    HRESULT result;
    std::vector<LONG> types, counts;
    bool operator==(const Groups&) const = default;
  };
  static Groups groupsOf(ICompoundUNIFAC1* groups) {
    ComPtr<IDispatch> types, counts;
    const HRESULT result = groups->get_UNIFAC1Groups(types.out(), counts.out());
    return {result, valuesOf(types.get()), valuesOf(counts.get())};
  }
  static INT countOf(ICompoundUNIFAC1* groups) {
    INT count = 0;
    groups->get_UNIFAC1NumberOfGroups(&count);
    return count;
  }
};

TEST_F(CompoundGroups, ComeBackAsNewArrays) {
  const auto compound = newCompound();
  const auto groups = query<ICompoundUNIFAC1>(compound);
  const auto put = query<ICompoundUNIFAC1Put>(compound);
  EXPECT_EQ(countOf(groups.get()), -32767);
  EXPECT_EQ(groupsOf(groups.get()), (Groups{S_FALSE, {}, {}}));

  ASSERT_EQ(put->put_UNIFAC1Groups(2, integers({1, 15}).get(), integers({3, 1}).get()), S_OK);
  EXPECT_EQ(countOf(groups.get()), 2);
  EXPECT_EQ(groupsOf(groups.get()), (Groups{S_OK, {1, 15}, {3, 1}}));
  ASSERT_EQ(put->put_VELUNIFACSubGr(1, integers({17}).get()), S_OK);
  ASSERT_EQ(put->put_VELUNIFACNoGr(1, integers({2}).get()), S_OK);
  EXPECT_EQ(groupsOf(groups.get()), (Groups{S_OK, {17}, {2}}));
  ASSERT_EQ(put->put_VELUNIFACNoGr(0, nullptr), S_OK);
  EXPECT_EQ(groupsOf(groups.get()), (Groups{S_OK, {17}, {}}));
}

TEST_F(CompoundGroups, RefuseArraysThatDoNotFit) {
  const auto compound = newCompound();
  const auto groups = query<ICompoundUNIFAC1>(compound);
  const auto put = query<ICompoundUNIFAC1Put>(compound);
  ASSERT_EQ(put->put_UNIFAC1Groups(1, integers({16}).get(), integers({1}).get()), S_OK);
  const Groups methanol{S_OK, {16}, {1}};

  // Both at once: nothing changes.
  const auto two = integers({1, 2});
  EXPECT_EQ(put->put_UNIFAC1Groups(-1, two.get(), two.get()), S_FALSE);
  EXPECT_EQ(put->put_UNIFAC1Groups(2, two.get(), nullptr), S_FALSE);
  EXPECT_EQ(put->put_UNIFAC1Groups(2, two.get(), reals({1, 2}).get()), S_FALSE);
  EXPECT_EQ(put->put_UNIFAC1Groups(3, two.get(), two.get()), S_FALSE);
  EXPECT_EQ(put->put_VELUNIFACNoGr(-1, two.get()), S_FALSE);
  EXPECT_EQ(groupsOf(groups.get()), methanol);
  EXPECT_EQ(countOf(groups.get()), 1);

  // One array alone: the count is taken and the array left empty.
  EXPECT_EQ(put->put_VELUNIFACNoGr(3, integers({1, 2, 3, 4}).get()), S_FALSE);
  EXPECT_EQ(countOf(groups.get()), 3);
  EXPECT_EQ(groupsOf(groups.get()), (Groups{S_OK, {16}, {}}));
  EXPECT_EQ(put->put_VELUNIFACSubGr(INT_MAX, nullptr), S_FALSE);
  EXPECT_EQ(groupsOf(groups.get()), (Groups{S_OK, {}, {}}));
}

}  // namespace
}  // namespace qs::test
