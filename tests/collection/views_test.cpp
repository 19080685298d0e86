// Views of a collection: forwarding, positions, life time, names.
#include "tests/support/claiming_array.h"
#include "tests/support/collections.h"

namespace qs::test {
namespace {

using CollectionViewsTest = CollectionTest;

TEST_F(CollectionViewsTest, ReadsAndWritesItsParent) {
  const auto parent = collectionOf("abcd");
  const auto view = viewOf(parent, {3, 0, 0, 2});
  EXPECT_EQ(lettersOf(view), "daac");
  for (const bool isView : {true, false}) {
    const auto list = query<ISubCompList>(isView ? view : parent);
    ComPtr<ICompoundCollection> behind;
    ComPtr<IIntegerArrayDisp> positions;
    EXPECT_EQ(list->GetParent(behind.out()), isView ? S_OK : S_FALSE);
    EXPECT_EQ(list->GetPositions(positions.out()), isView ? S_OK : S_FALSE);
    EXPECT_EQ(behind.get(), isView ? parent.get() : nullptr);
    EXPECT_EQ(isView, positions && valuesOf(positions.get()) == std::vector<LONG>({3, 0, 0, 2}));
  }
  EXPECT_EQ(view->put_Compound(1, named(OLESTR("x")).get()), S_OK);
  EXPECT_EQ(lettersOf(parent), "xbcd");
  EXPECT_EQ(lettersOf(view), "dxxc");
  for (const INT index : {-1, 4, 2147483647}) {
    ComPtr<IDispatch> compound;
    EXPECT_EQ(view->get_Compound(index, compound.out()), S_FALSE);
    EXPECT_EQ(view->put_Compound(index, parent.get()), S_FALSE);
  }
  EXPECT_EQ(view->Reset(), S_OK);
  EXPECT_EQ(view->AddCompound(named(OLESTR("y")).get()), S_OK);
  EXPECT_EQ(lettersOf(view) + "/" + lettersOf(parent), "y/xbcd") << "no view any more";
}

TEST_F(CollectionViewsTest, OrdersAndShortensItsPositionsOnly) {
  const auto parent = collectionOf("abcd");
  const auto view = viewOf(parent, {3, 1, 0});
  const auto order = query<ICompoundManipulation>(view);
  EXPECT_EQ(order->MoveCompound(2, 0), S_OK);
  EXPECT_EQ(lettersOf(view), "adb");
  EXPECT_EQ(order->MoveCompound(0, 3), S_OK);
  EXPECT_EQ(lettersOf(view), "dba");
  EXPECT_EQ(order->MoveCompound(3, 0), S_FALSE);
  EXPECT_EQ(order->RemoveLastCompound(), S_OK);
  EXPECT_EQ(lettersOf(view), "db");
  EXPECT_EQ(view->put_NumberOfCompounds(3), E_FAIL);
  EXPECT_EQ(view->put_NumberOfCompounds(-1), E_FAIL);
  EXPECT_EQ(view->put_NumberOfCompounds(1), S_OK);
  EXPECT_EQ(lettersOf(view), "d");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(order->RemoveLastCompound(), S_OK);
  EXPECT_EQ(lettersOf(view), "");
  EXPECT_EQ(lettersOf(parent), "abcd");
}

TEST_F(CollectionViewsTest, AViewOfAViewAndAParentThatShrinks) {
  auto parent = collectionOf("abcd");
  auto view = viewOf(parent, {3, 2, 1});
  const auto inner = viewOf(view, {2, 0});
  EXPECT_EQ(lettersOf(inner), "bd");
  ASSERT_EQ(parent->put_NumberOfCompounds(3), S_OK);
  EXPECT_EQ(lettersOf(view), " cb");
  EXPECT_EQ(lettersOf(inner), "b ");
  EXPECT_EQ(inner->put_Compound(1, named(OLESTR("x")).get()), S_FALSE);
  EXPECT_EQ(query<ICompoundManipulation>(parent)->MoveCompound(0, 3), S_OK);
  EXPECT_EQ(lettersOf(view), " ac") << "positions, not compounds";

  // The innermost view keeps all of them alive; they do not keep it.
  const ULONG before = referencesOf(inner.get());
  parent = {};
  view = {};
  EXPECT_EQ(lettersOf(inner), "c ");
  EXPECT_EQ(referencesOf(inner.get()), before);
}

TEST_F(CollectionViewsTest, RefusesPositionsOutside) {
  const auto parent = collectionOf("abc");
  const auto views = query<ISubCompList>(parent);
  const auto namedViews = query<ISubCompList1>(parent);
  const Bstr name(OLESTR("light"));
  for (const LONG position : {-1, 3, -32767, 2147483647}) {
    const auto positions = integers({0, position});
    auto* view = reinterpret_cast<ICompoundCollection*>(1);
    EXPECT_EQ(views->CreateSubCompList(positions.get(), &view), E_FAIL) << position;
    EXPECT_EQ(view, nullptr);
    EXPECT_EQ(namedViews->AddSubCompList(name.get(), positions.get()), E_FAIL) << position;
  }
  ComPtr<ICompoundCollection> none;
  EXPECT_EQ(views->CreateSubCompList(nullptr, none.out()), E_INVALIDARG);
  const struct {
    LONG given, stated;
    HRESULT result;
    int reads;
  } claims[] = {{5, 2147483647, E_OUTOFMEMORY, 0}, {5, 1 << 24, E_BOUNDS, 6}, {5, -1, E_FAIL, 0}, {5, 5, S_OK, 5}};
  for (const auto& claim : claims) {
    ClaimingIntegers positions(claim.given, claim.stated);
    EXPECT_EQ(views->CreateSubCompList(&positions, none.out()), claim.result) << claim.stated;
    EXPECT_EQ(positions.reads, claim.reads);
  }
  EXPECT_EQ(got(namedViews, &ISubCompList1::GetNumOfSubCompLists), 0);
}

TEST_F(CollectionViewsTest, StandsOnSoManyOthersAndNoMore) {
  auto view = viewOf(collectionOf("ab"), {1, 0});
  const auto positions = integers({1, 0});
  int others = 0;
  for (; others < 50'000; ++others) {
    ComPtr<ICompoundCollection> next;
    if (query<ISubCompList>(view)->CreateSubCompList(positions.get(), next.out()) != S_OK) break;
    view = std::move(next);
  }
  EXPECT_EQ(others, 255);
  EXPECT_EQ(lettersOf(view), "ab");
  EXPECT_EQ(query<ISubCompList1>(view)->AddSubCompList(Bstr(OLESTR("one more")).get(), positions.get()), S_OK);
  auto* none = reinterpret_cast<ICompoundCollection*>(1);
  EXPECT_EQ(query<ISubCompList1>(view)->GetSubCompList(Bstr(OLESTR("one more")).get(), &none), E_FAIL);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(view->AddCompound(named(OLESTR("c")).get()), S_OK);
  EXPECT_EQ(view->Reset(), S_OK) << "releases all others";
}

TEST_F(CollectionViewsTest, AddsThroughItsParentByName) {
  const auto parent = collectionOf("ab c");
  const auto view = viewOf(parent, {0});
  const auto inner = viewOf(view, {});
  EXPECT_EQ(inner->AddCompound(named(OLESTR("c")).get()), S_OK);
  EXPECT_EQ(lettersOf(inner) + "/" + lettersOf(view) + "/" + lettersOf(parent), "c/ac/ab c") << "known by its name";
  EXPECT_EQ(inner->AddCompound(named(OLESTR("d")).get()), S_OK);
  EXPECT_EQ(lettersOf(inner) + "/" + lettersOf(view) + "/" + lettersOf(parent), "cd/acd/ab cd");
  // Compounds without a name are all different.
  for (int i = 0; i < 2; ++i) EXPECT_EQ(inner->AddCompound(newCompound().get()), S_OK);
  EXPECT_EQ(countOf(parent), 7);
  EXPECT_EQ(inner->AddCompound(parent.get()), E_NOINTERFACE);
  EXPECT_EQ(inner->AddCompound(nullptr), E_INVALIDARG);
  EXPECT_EQ(countOf(inner), 4);
}

TEST_F(CollectionViewsTest, NamesViewsInTheOrderOfTheirNames) {
  auto parent = collectionOf("abc");
  auto lists = query<ISubCompList1>(parent);
  const auto add = [&](const OLECHAR* name, std::initializer_list<LONG> positions) {
    return lists->AddSubCompList(Bstr(name).get(), integers(positions).get());
  };
  EXPECT_EQ(add(OLESTR("Zeta"), {2, 1}), S_OK);
  EXPECT_EQ(add(OLESTR("alpha"), {}), S_OK);
  EXPECT_EQ(add(OLESTR("Alpha"), {0}), S_OK);
  EXPECT_EQ(add(OLESTR("Alpha"), {1}), S_FALSE) << "taken";
  EXPECT_EQ(lists->AddSubCompList(nullptr, integers({1}).get()), S_FALSE);
  EXPECT_EQ(got(lists, &ISubCompList1::GetNumOfSubCompLists), 3);
  const struct {
    INT index;
    HRESULT result;
    const OLECHAR* name;
    const char* letters;
  } rows[] = {{0, S_OK, OLESTR("Alpha"), "a"},
              {1, S_OK, OLESTR("Zeta"), "cb"},
              {2, S_OK, OLESTR("alpha"), ""},
              {-1, S_FALSE, OLESTR("(null)"), nullptr},
              {3, S_FALSE, OLESTR("(null)"), nullptr}};
  for (const auto& row : rows) {
    BSTR name = nullptr;
    ComPtr<ICompoundCollection> byIndex, byName;
    EXPECT_EQ(lists->GetSubCompListI(row.index, &name, byIndex.out()), row.result);
    EXPECT_EQ(taken(name), row.name);
    EXPECT_EQ(lists->GetSubCompList(Bstr(row.name).get(), byName.out()), row.result);
    for (const auto& view : {byIndex, byName}) {
      ASSERT_EQ(static_cast<bool>(view), row.letters != nullptr);
      if (view) {
        EXPECT_EQ(lettersOf(view), row.letters);
      }
    }
  }

  const Bstr zeta(OLESTR("Zeta"));
  ComPtr<ICompoundCollection> view, again;
  ASSERT_EQ(lists->GetSubCompList(zeta.get(), view.out()), S_OK);
  EXPECT_EQ(view->AddCompound(named(OLESTR("d")).get()), S_OK);
  ASSERT_EQ(lists->GetSubCompList(zeta.get(), again.out()), S_OK);
  EXPECT_EQ(lettersOf(again), "cbd") << "the name stands for what its views made of it";
  EXPECT_EQ(lists->RemoveSubCompList(zeta.get()), S_OK);
  EXPECT_EQ(lists->RemoveSubCompList(zeta.get()), S_FALSE);
  EXPECT_EQ(lists->RemoveSubCompList(nullptr), S_FALSE);
  lists = {};
  parent = {};
  EXPECT_EQ(lettersOf(view), "cbd") << "views outlive their name";
}

}  // namespace
}  // namespace qs::test
