// What list.calls cannot show of a collection: reference counts, components that fail or call back, interaction
// parameters, and limits.
#include "tests/support/claiming_array.h"
#include "tests/support/collections.h"

namespace qs::test {
namespace {

using CollectionListTest = CollectionTest;

// A compound of another implementation, by aggregation of one of ours. It uses the collection when it is queried.
struct Visitor : HostObject<IDispatch> {
  Visitor() {
    CoCreateInstance(__uuidof(::COQSCompound), this, CLSCTX_INPROC_SERVER, __uuidof(IUnknown),
                     reinterpret_cast<void**>(inner.out()));
  }
  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    if (onQuery) std::exchange(onQuery, {})();
    if (FAILED(naming) && IsEqualGUID(iid, __uuidof(ICompoundID))) return *out = nullptr, naming;
    if (IsEqualGUID(iid, __uuidof(IBasicCompound)) || IsEqualGUID(iid, __uuidof(ICompoundID)))
      return inner->QueryInterface(iid, out);
    return HostObject::QueryInterface(iid, out);
  }

  ComPtr<IUnknown> inner;
  HRESULT naming = S_OK;
  std::function<void()> onQuery;
};

TEST_F(CollectionListTest, ACallBackFindsTheListInOrder) {
  Visitor visitor;
  auto collection = collectionOf("ab");
  const auto another = named(OLESTR("c"));

  visitor.onQuery = [&] { collection->Reset(); };
  EXPECT_EQ(collection->AddCompound(&visitor), S_OK);
  EXPECT_EQ(countOf(collection), 1);
  EXPECT_EQ(visitor.references, 2u);

  visitor.onRelease = [&] {
    EXPECT_EQ(countOf(collection), 0);
    collection->AddCompound(another.get());
  };
  EXPECT_EQ(query<ICompoundManipulation>(collection)->RemoveLastCompound(), S_OK);
  EXPECT_EQ(lettersOf(collection), "c");

  visitor.onQuery = [&] { collection->put_NumberOfCompounds(0); };
  EXPECT_EQ(collection->put_Compound(0, &visitor), S_FALSE) << "the slot is gone";
  EXPECT_EQ(visitor.references, 1u);

  // A release that replaces the same slot, one that empties the list under a shrinking, one while the collection ends.
  ASSERT_EQ(collection->AddCompound(&visitor), S_OK);
  visitor.onRelease = [&] { collection->put_Compound(0, nullptr); };
  EXPECT_EQ(collection->put_Compound(0, another.get()), S_OK);
  EXPECT_EQ(lettersOf(collection), " ");
  ASSERT_EQ(collection->AddCompound(&visitor), S_OK);
  visitor.onRelease = [&] { collection->Reset(); };
  EXPECT_EQ(collection->put_NumberOfCompounds(1), S_OK);
  EXPECT_EQ(countOf(collection), 0);
  ASSERT_EQ(collection->AddCompound(&visitor), S_OK);
  ICompoundCollection* dying = collection.get();
  // Each release leaves something for the next: the compound again, then a loader, then a compound.
  Visitor loader;
  const Bstr name(OLESTR("Fake"));
  visitor.onRelease = [&] {
    dying->AddCompound(another.get());
    dying->AddCompound(&visitor);
    visitor.onRelease = [&] {
      ComPtr<ILoadCompoundProp>::from(dying)->AddLoader(name.get(), name.get(), nullptr, &loader);
      loader.onRelease = [&] { dying->AddCompound(another.get()); };
    };
  };
  collection = {};
  EXPECT_EQ(visitor.references, 1u);
  EXPECT_EQ(loader.references, 1u);
  EXPECT_EQ(referencesOf(another.get()), 1u);
}

TEST_F(CollectionListTest, AViewAddsNothingToItsParentWhileNamesCannotBeRead) {
  Visitor compound;
  query<ICompoundIDPut>(compound.inner)->put_Name(Bstr(OLESTR("b")).get());
  const auto parent = collectionOf("a");
  const auto view = viewOf(parent, {});
  ASSERT_EQ(view->AddCompound(&compound), S_OK);
  compound.naming = E_OUTOFMEMORY;
  EXPECT_EQ(view->AddCompound(&compound), E_OUTOFMEMORY);
  EXPECT_EQ(view->AddCompound(named(OLESTR("c")).get()), E_OUTOFMEMORY) << "it may be the one that has no name to show";
  compound.naming = E_NOINTERFACE;
  EXPECT_EQ(view->AddCompound(named(OLESTR("c")).get()), S_OK) << "a compound may have no name";
  EXPECT_EQ(countOf(view), 2);
  EXPECT_EQ(countOf(parent), 3);
  parent->Reset();
}

TEST_F(CollectionListTest, PositionsAreReadAsFarAsTheyAreGiven) {
  const auto views = query<ISubCompList>(collectionOf("abc"));
  const struct {
    LONG given, stated;
    HRESULT result;
    int reads;
  } claims[] = {{5, 2147483647, E_OUTOFMEMORY, 0}, {5, 1 << 24, E_BOUNDS, 6}, {5, -1, E_FAIL, 0}, {5, 5, S_OK, 5}};
  for (const auto& claim : claims) {
    ClaimingIntegers positions(claim.given, claim.stated);
    ComPtr<ICompoundCollection> view;
    EXPECT_EQ(views->CreateSubCompList(&positions, view.out()), claim.result) << claim.stated;
    EXPECT_EQ(positions.reads, claim.reads);
  }
}

TEST_F(CollectionListTest, AViewStandsOnSoManyOthersAndNoMore) {
  auto view = viewOf(collectionOf("ab"), {1, 0});
  const auto positions = integers({1, 0});
  const Bstr name(OLESTR("one more"));
  int others = 0;
  for (; others < 50'000; ++others) {
    ComPtr<ICompoundCollection> next;
    if (query<ISubCompList>(view)->CreateSubCompList(positions.get(), next.out()) != S_OK) break;
    view = std::move(next);
  }
  EXPECT_EQ(others, 255);
  EXPECT_EQ(lettersOf(view), "ab");
  EXPECT_EQ(query<ISubCompList1>(view)->AddSubCompList(name.get(), positions.get()), S_OK);
  ComPtr<ICompoundCollection> none;
  EXPECT_EQ(query<ISubCompList1>(view)->GetSubCompList(name.get(), none.out()), E_FAIL);
  EXPECT_EQ(view->Reset(), S_OK) << "releases all others";
}

// Interaction parameters of a host, which note what they were asked to load.
struct Parameters : HostObject<IInteractionParameters> {
  struct Loading : Stub<ILoadInteractionParameters> {
    STDMETHODIMP LoadLastCompound(IDispatch* collection, BSTR directory) noexcept override {
      ComPtr<ICompoundCollection>::from(collection)->get_NumberOfCompounds(&seen);
      path = WideString(viewOf(directory));
      if (onLoad) onLoad();
      return result;
    }
    HRESULT result = S_OK;
    std::function<void()> onLoad;
    INT seen = 0;
    WideString path;
  };
  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    const bool forLoading = loads && IsEqualGUID(iid, __uuidof(ILoadInteractionParameters));
    return forLoading ? loading.QueryInterface(iid, out) : HostObject::QueryInterface(iid, out);
  }

  bool loads = true;
  Loading loading;
};

TEST_F(CollectionListTest, ACompoundWhoseParametersCannotBeLoadedGoesAgain) {
  const auto collection = collectionOf("a");
  const auto inList = query<ICompoundManipulation>(collection);
  const Bstr path(OLESTR("data")), silentName(OLESTR("1")), name(OLESTR("2"));
  const auto compound = named(OLESTR("b"));
  Parameters silent, model;
  silent.loads = false;
  for (const auto& [key, parameters] : {std::pair(&silentName, &silent), {&name, &model}})
    ASSERT_EQ(query<ICompoundCollectionSetup>(collection)->put_InteractionParameters(key->get(), parameters), S_OK);
  EXPECT_EQ(inList->AddLastCompoundLoadIPs(compound.get(), path.get()), S_OK);
  EXPECT_EQ(lettersOf(collection), "ab");
  EXPECT_EQ(model.loading.seen, 2);
  EXPECT_EQ(model.loading.path, OLESTR("data"));
  model.loading.result = E_BOUNDS;
  EXPECT_EQ(inList->AddLastCompoundLoadIPs(compound.get(), path.get()), E_BOUNDS);
  EXPECT_EQ(lettersOf(collection), "ab");

  // Whatever a model does before it fails, the compound that was added goes, out of the parent too, and no other does.
  const auto view = viewOf(collection, {1});
  ASSERT_EQ(query<ICompoundCollectionSetup>(view)->put_InteractionParameters(name.get(), &model), S_OK);
  const auto inView = query<ICompoundManipulation>(view);
  const struct {
    std::function<void()> deed;
    const char* letters;
  } rows[] = {
      {{}, "b/ab"},
      {[&] { inList->MoveCompound(2, 0); }, "b/ab"},
      {[&] { inView->MoveCompound(1, 0); }, "b/ab"},
      {[&] { inList->RemoveLastCompound(); }, "b/ab"},
      {[&] { inView->RemoveLastCompound(); }, "b/ab"},
      {[&] { view->AddCompound(named(OLESTR("d")).get()); }, "bd/abd"},
  };
  for (const auto& row : rows) {
    model.loading.onLoad = row.deed;
    EXPECT_EQ(inView->AddLastCompoundLoadIPs(named(OLESTR("c")).get(), path.get()), E_BOUNDS);
    EXPECT_EQ(lettersOf(view) + "/" + lettersOf(collection), row.letters) << &row - rows;
  }
  view->Reset();
  collection->Reset();
}

}  // namespace
}  // namespace qs::test
