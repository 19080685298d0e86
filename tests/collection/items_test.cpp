// Lists as scripts see them: counts, items by position or text, and enumerators.
#include <string>

#include "com/variant.h"
#include "tests/support/collections.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

using Items = CollectionTest;

Variant text(WideView value) {
  VARIANT variant{};
  variant.vt = VT_BSTR;
  variant.bstrVal = Bstr(value).release();
  return Variant::adopt(variant);
}

template <class I>
ComPtr<IEnumVARIANT> enumeratorOf(const ComPtr<I>& list) {
  ComPtr<IUnknown> made;
  EXPECT_EQ(list->get__NewEnum(made.out()), S_OK);
  return query<IEnumVARIANT>(made);
}

// The letters of at most `most` next compounds, as collectionOf names them, and the result code.
std::string next(const ComPtr<IEnumVARIANT>& enumerator, ULONG most) {
  VARIANT elements[8]{};
  ULONG fetched = 99;
  const HRESULT result = enumerator->Next(most, elements, &fetched);
  std::string letters;
  for (ULONG i = 0; i < fetched; ++i) {
    Bstr name;
    const auto element = Variant::adopt(elements[i]);
    ComPtr<ICompoundID>::from(element.get().pdispVal)->get_Name(name.out());
    letters += narrow(name.view());
  }
  return letters + (result == S_OK ? "" : result == S_FALSE ? "." : "!");
}

TEST_F(Items, OfCompoundsByPositionOrText) {
  const auto collection = collectionOf("ab c");
  const auto items = query<IItems>(collection);
  const auto found = [&](const Variant& index) {
    ComPtr<IDispatch> item;
    const HRESULT result = items->get_Item(index.get(), item.out());
    EXPECT_EQ(result == S_OK, static_cast<bool>(item));
    return result != S_OK ? std::to_string(result) : narrow(got(item, &ICompoundID::get_Name));
  };
  ComPtr<IBasicCompound> c;
  collection->GetBasicCompound(3, c.out());
  query<ICompoundIDPut>(c)->put_CASN(Bstr(OLESTR("50-00-0")).get());
  query<ICompoundIDPut>(c)->put_NumberOfSynonymNames(0);
  for (const INT i : {0, 1, 2})
    query<ICompoundIDPut>(c)->put_SynonymName(i, i == 1 ? nullptr : Bstr(i == 0 ? OLESTR("A") : OLESTR("Sea")).get());
  query<ICompoundIDPut>(c)->put_NumberOfSynonymNames(9);
  const std::string none = std::to_string(S_FALSE), mismatch = std::to_string(DISP_E_TYPEMISMATCH);
  const std::pair<Variant, std::string> rows[] = {
      {Variant(LONG{0}), "a"},        {Variant(3.0), "c"},        {Variant(LONG{2}), none},
      {Variant(LONG{4}), none},       {Variant(-1.0), none},      {Variant(0.5), none},
      {Variant(1e300), none},         {text(OLESTR("B")), "b"},   {text(OLESTR("A")), "a"},
      {text(OLESTR("50-00-0")), "c"}, {text(OLESTR("sEA")), "c"}, {text(OLESTR("")), none},
      {text(OLESTR("0")), none},      {Variant(), mismatch},
  };
  for (const auto& [index, expected] : rows) EXPECT_EQ(found(index), expected);
  LONG count = 0;
  EXPECT_EQ(items->get_Count(&count), S_OK);
  EXPECT_EQ(count, 4);
  const auto view = query<IItems>(viewOf(collection, {3, 0}));
  ComPtr<IDispatch> item;
  EXPECT_EQ(view->get_Item(text(OLESTR("a")).get(), item.out()), S_OK);
  EXPECT_EQ(view->get_Item(text(OLESTR("b")).get(), item.out()), S_FALSE);
}

TEST_F(Items, AreEnumeratedAsTheyAreWhenTheirTurnComes) {
  auto collection = collectionOf("a bcd");
  const auto all = enumeratorOf(query<IItems>(collection));
  EXPECT_EQ(next(all, 2), "ab") << "empty slots are skipped";
  ComPtr<IEnumVARIANT> copy;
  ASSERT_EQ(all->Clone(copy.out()), S_OK);
  EXPECT_EQ(next(copy, 8), "cd.");
  EXPECT_EQ(next(copy, 1), ".");
  EXPECT_EQ(all->Skip(1), S_OK);
  EXPECT_EQ(next(all, 0), "");
  ASSERT_EQ(query<ICompoundManipulation>(collection)->MoveCompound(4, 0), S_OK);
  EXPECT_EQ(next(all, 1), "c") << "at the position that comes next";
  EXPECT_EQ(all->Skip(1), S_FALSE);
  EXPECT_EQ(all->Reset(), S_OK);
  EXPECT_EQ(all->Skip(3), S_OK);
  ASSERT_EQ(collection->put_NumberOfCompounds(1), S_OK);
  EXPECT_EQ(next(all, 3), ".") << "the list has become shorter";
  EXPECT_EQ(next(enumeratorOf(query<IItems>(viewOf(collection, {0, 0}))), 8), "dd.");

  VARIANT element{};
  ULONG fetched = 0;
  EXPECT_EQ(all->Next(1, nullptr, &fetched), E_POINTER);
  EXPECT_EQ(all->Next(2, &element, nullptr), E_POINTER) << "the caller could not know how many";
  EXPECT_EQ(all->Clone(nullptr), E_POINTER);
  all->Reset();
  collection = {};
  EXPECT_EQ(all->Next(1, &element, nullptr), S_OK) << "an enumerator keeps its list";
  Variant::adopt(element);
}

TEST_F(Items, OfPhasesAreAllSlotsInTheirOrder) {
  CountedCompounds two(2);
  const auto phases = create<IPhaseCollection>(__uuidof(::COQSPhaseCollection));
  ASSERT_EQ(phases->Finalize(&two, 2, 1), S_OK);
  const auto items = query<IItems>(phases);
  LONG count = 0;
  ASSERT_EQ(items->get_Count(&count), S_OK);
  EXPECT_EQ(count, 4) << "a feed, two in equilibrium and the user's own";
  const auto enumerator = enumeratorOf(items);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IDispatch> phase;
    VARIANT element{};
    ASSERT_EQ(items->get_Item(Variant(i).get(), phase.out()), S_OK);
    ASSERT_EQ(enumerator->Next(1, &element, nullptr), S_OK);
    EXPECT_EQ(Variant::adopt(element).get().pdispVal, phase.get());
  }
  ComPtr<IBasicPhase> first;
  ComPtr<IDispatch> item;
  ASSERT_EQ(phases->GetEquilibriumPhase(0, first.out()), S_OK);
  ASSERT_EQ(items->get_Item(Variant(LONG{1}).get(), item.out()), S_OK);
  EXPECT_EQ(item.get(), first.get());
  item = {};
  EXPECT_EQ(items->get_Item(Variant(count).get(), item.out()), S_FALSE);
  EXPECT_EQ(items->get_Item(text(OLESTR("feed")).get(), item.out()), DISP_E_TYPEMISMATCH);
}

TEST_F(Items, OfArraysAndMatrices) {
  const auto matrix = create<IRealMatrixDisp>(__uuidof(::HostRealMatrix));
  ASSERT_EQ(matrix->SetSize(2, 3), S_OK);
  for (LONG i = 0; i < 6; ++i) matrix->put_Value(i / 3, i % 3, i);
  const auto sum = [](const auto& array) {
    const auto elements = query<IElements>(array);
    LONG count = 0;
    EXPECT_EQ(elements->get_Count(&count), S_OK);
    std::string numbers = std::to_string(count) + ":";
    const auto enumerator = enumeratorOf(elements);
    for (VARIANT element{}; enumerator->Next(1, &element, nullptr) == S_OK;) {
      EXPECT_TRUE(element.vt == VT_R8 || element.vt == VT_I4);
      numbers += ' ' + std::to_string(element.vt == VT_R8 ? static_cast<LONG>(element.dblVal) : element.lVal);
    }
    return numbers;
  };
  EXPECT_EQ(sum(matrix), "6: 0 1 2 3 4 5");
  EXPECT_EQ(sum(reals({4, -32767})), "2: 4 -32767");
  EXPECT_EQ(sum(integers({7})), "1: 7");
  EXPECT_EQ(sum(reals({})), "0:");
}

}  // namespace
}  // namespace qs::test
