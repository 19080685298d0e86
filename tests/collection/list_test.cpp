// The own list of a collection: slots, order, reference counts, offsets and interaction-parameter models.
#include <functional>
#include <utility>

#include "tests/support/collections.h"
#include "tests/support/host_object.h"

namespace qs::test {
namespace {

using CollectionListTest = CollectionTest;

// An object that is no compound and tells so in its own way.
struct NoCompound : HostObject<IDispatch> {
  STDMETHODIMP QueryInterface(REFIID, void** out) noexcept override {
    *out = nullptr;
    return result;
  }
  HRESULT result = E_OUTOFMEMORY;
};

TEST_F(CollectionListTest, HoldsOneReferenceOnEachCompoundAndGivesItsOwnInterface) {
  const auto collection = newCollection();
  const auto compound = named(OLESTR("a")), other = named(OLESTR("b"));
  ASSERT_EQ(collection->AddCompound(compound.get()), S_OK);
  EXPECT_EQ(referencesOf(compound.get()), 2u);
  {
    ComPtr<IDispatch> given;
    EXPECT_EQ(collection->get_Compound(0, given.out()), S_OK);
    EXPECT_EQ(given.get(), static_cast<IDispatch*>(compound.get()));
    EXPECT_EQ(referencesOf(compound.get()), 3u);
  }
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(collection->put_Compound(0, other.get()), S_OK);
    EXPECT_EQ(referencesOf(compound.get()), 1u) << "replaced";
    EXPECT_EQ(referencesOf(other.get()), 2u) << "by itself too";
  }
  EXPECT_EQ(collection->Reset(), S_OK);
  EXPECT_EQ(referencesOf(other.get()), 1u);
}

TEST_F(CollectionListTest, PositionsOutsideAnswerFalseAndNull) {
  const auto collection = collectionOf("ab ");
  const auto another = named(OLESTR("c"));
  for (const INT index : {-1, -2147483647 - 1, 3, 2147483647}) {
    auto* compound = reinterpret_cast<IDispatch*>(1);
    auto* basic = reinterpret_cast<IBasicCompound*>(1);
    EXPECT_EQ(collection->get_Compound(index, &compound), S_FALSE) << index;
    EXPECT_EQ(compound, nullptr);
    EXPECT_EQ(collection->GetBasicCompound(index, &basic), S_FALSE) << index;
    EXPECT_EQ(basic, nullptr);
    EXPECT_EQ(collection->put_Compound(index, another.get()), S_FALSE) << index;
  }
  EXPECT_EQ(lettersOf(collection), "ab ") << "never grown";
  EXPECT_EQ(collection->put_Compound(2, another.get()), S_OK);
  EXPECT_EQ(lettersOf(collection), "abc");
  EXPECT_EQ(collection->get_Compound(0, nullptr), E_POINTER);
  EXPECT_EQ(query<ILoadCompoundProp>(collection)->GetLoaderI(0, nullptr, nullptr), E_POINTER);
  EXPECT_EQ(query<ISubCompList>(collection)->CreateSubCompList(nullptr, nullptr), E_POINTER);
}

TEST_F(CollectionListTest, TheNumberGrowsByEmptySlotsAndShrinksByReleasing) {
  const auto collection = newCollection();
  const ComPtr<IBasicCompound> compounds[] = {named(OLESTR("a")), named(OLESTR("b")), named(OLESTR("c"))};
  for (const auto& compound : compounds) ASSERT_EQ(collection->AddCompound(compound.get()), S_OK);
  const struct {
    INT number;
    HRESULT result;
    std::string letters;
  } steps[] = {{3, S_OK, "abc"},
               {-1, E_FAIL, "abc"},
               {-2147483647 - 1, E_FAIL, "abc"},
               {2147483647, E_OUTOFMEMORY, "abc"},
               {5, S_OK, "abc  "},
               {2, S_OK, "ab"},
               {2, S_OK, "ab"},
               {3, S_OK, "ab "},
               {1, S_OK, "a"},
               {100000, S_OK, {}},
               {1, S_OK, "a"},
               {0, S_OK, ""}};
  for (const auto& step : steps) {
    EXPECT_EQ(collection->put_NumberOfCompounds(step.number), step.result) << step.number;
    if (step.result == S_OK && step.number > 10) continue;
    EXPECT_EQ(lettersOf(collection), step.letters) << step.number;
    for (std::size_t i = 0; i < 3; ++i)
      EXPECT_EQ(referencesOf(compounds[i].get()), step.letters.find("abc"[i]) == std::string::npos ? 1u : 2u)
          << step.number;
  }
}

TEST_F(CollectionListTest, RemovesTheLastCompound) {
  const auto collection = collectionOf("ab ");
  const auto order = query<ICompoundManipulation>(collection);
  for (const char* letters : {"ab", "a", "", ""}) {
    EXPECT_EQ(order->RemoveLastCompound(), S_OK);
    EXPECT_EQ(lettersOf(collection), letters);
  }
}

TEST_F(CollectionListTest, FailuresOfTheQueryArePassedBack) {
  const auto collection = collectionOf("ab");
  NoCompound object;
  for (const HRESULT result : {E_NOINTERFACE, E_OUTOFMEMORY, E_FAIL}) {
    object.result = result;
    EXPECT_EQ(collection->AddCompound(&object), result);
  }
  EXPECT_EQ(collection->AddCompound(nullptr), E_INVALIDARG);
  EXPECT_EQ(lettersOf(collection), "ab");
  EXPECT_EQ(collection->put_Compound(0, &object), E_FAIL);
  EXPECT_EQ(collection->put_Compound(1, nullptr), S_OK);
  EXPECT_EQ(lettersOf(collection), "  ") << "the old compounds are released first";
}

TEST_F(CollectionListTest, MovesAnEntryBeforeAnother) {
  const struct {
    INT from, before;
    HRESULT result;
    const char* letters;
  } moves[] = {{3, 1, S_OK, "adbc e"},    {1, 4, S_OK, "acdb e"},     {0, 6, S_OK, "bcd ea"},
               {4, 0, S_OK, " abcde"},    {2, 2, S_OK, "abcd e"},     {2, 3, S_OK, "abcd e"},
               {5, 6, S_OK, "abcd e"},    {0, 2, S_OK, "bacd e"},     {-1, 2, S_FALSE, "abcd e"},
               {6, 2, S_FALSE, "abcd e"}, {2, -1, S_FALSE, "abcd e"}, {2, 7, S_FALSE, "abcd e"}};
  for (const auto& move : moves) {
    const auto collection = collectionOf("abcd e");
    EXPECT_EQ(query<ICompoundManipulation>(collection)->MoveCompound(move.from, move.before), move.result);
    EXPECT_EQ(lettersOf(collection), move.letters) << move.from << " before " << move.before;
  }
}

TEST_F(CollectionListTest, LendsTheOffsetsThatItTookOver) {
  using Get = HRESULT (STDMETHODCALLTYPE ICompoundCollection::*)(IRealArrayDisp**);
  using Put = HRESULT (STDMETHODCALLTYPE ICompoundCollection::*)(IRealArrayDisp*);
  const std::pair<Get, Put> offsets[] = {{&ICompoundCollection::GetOffsetH, &ICompoundCollection::PutOffsetH},
                                         {&ICompoundCollection::GetOffsetS, &ICompoundCollection::PutOffsetS}};
  for (const auto& [get, put] : offsets) {
    auto collection = newCollection();
    IRealArrayDisp* lent = reinterpret_cast<IRealArrayDisp*>(1);
    EXPECT_EQ((collection.get()->*get)(&lent), S_FALSE);
    EXPECT_EQ(lent, nullptr);
    EXPECT_EQ((collection.get()->*put)(nullptr), S_FALSE);

    const auto first = reals({1.0, 2.0}), second = reals({3.0});
    first->AddRef();
    EXPECT_EQ((collection.get()->*put)(first.get()), S_OK);
    EXPECT_EQ(referencesOf(first.get()), 2u) << "the caller's reference, no other";
    EXPECT_EQ((collection.get()->*get)(&lent), S_OK);
    EXPECT_EQ(lent, first.get());
    EXPECT_EQ(referencesOf(first.get()), 2u) << "lent";
    first->AddRef();
    EXPECT_EQ((collection.get()->*put)(first.get()), S_OK);
    EXPECT_EQ(referencesOf(first.get()), 2u) << "the same again";
    second->AddRef();
    EXPECT_EQ((collection.get()->*put)(second.get()), S_OK);
    EXPECT_EQ(referencesOf(first.get()), 1u);
    collection = {};
    EXPECT_EQ(referencesOf(second.get()), 1u);
  }
}

// A compound of another implementation, by aggregation of one of ours. It uses the collection when it is queried or
// released.
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
  STDMETHODIMP_(ULONG) Release() noexcept override {
    const ULONG left = HostObject::Release();
    if (onRelease) std::exchange(onRelease, {})();
    return left;
  }

  ComPtr<IUnknown> inner;
  HRESULT naming = S_OK;
  std::function<void()> onQuery, onRelease;
};

TEST_F(CollectionListTest, ACallBackFindsTheListInOrder) {
  Visitor visitor;
  auto collection = collectionOf("ab");
  auto order = query<ICompoundManipulation>(collection);
  const auto another = named(OLESTR("c"));

  visitor.onQuery = [&] { collection->Reset(); };
  EXPECT_EQ(collection->AddCompound(&visitor), S_OK);
  EXPECT_EQ(countOf(collection), 1);
  EXPECT_EQ(visitor.references, 2u);

  visitor.onRelease = [&] {
    EXPECT_EQ(countOf(collection), 0);
    collection->AddCompound(another.get());
  };
  EXPECT_EQ(order->RemoveLastCompound(), S_OK);
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
  order = {};
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

// Interaction parameters of a host, which note what they were asked to load.
struct Parameters : HostObject<IInteractionParameters> {
  struct Loading : HostObject<ILoadInteractionParameters> {
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

TEST_F(CollectionListTest, KeepsModelsByName) {
  const auto collection = newCollection();
  const auto setup = query<ICompoundCollectionSetup>(collection);
  const auto info = query<ICompCollnIPInfo>(collection);
  Parameters nrtl, standard;
  NoCompound none;
  const Bstr nrtlName(OLESTR("NRTL")), defaultName(OLESTR("Default")), pane(OLESTR("Binary pairs"));
  auto* found = reinterpret_cast<IDispatch*>(1);
  EXPECT_EQ(collection->get_InteractionParameters(nullptr, &found), S_FALSE);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(setup->put_InteractionParameters(nullptr, &none), E_OUTOFMEMORY);
  EXPECT_EQ(setup->put_InteractionParameters(nullptr, nullptr), E_INVALIDARG);
  EXPECT_EQ(setup->put_InteractionParameters(nrtlName.get(), &nrtl), S_OK);
  EXPECT_EQ(setup->put_InteractionParameters(nullptr, &standard), S_OK);
  for (const BSTR name : {defaultName.get(), BSTR()}) {
    ComPtr<IDispatch> model;
    EXPECT_EQ(collection->get_InteractionParameters(name, model.out()), S_OK);
    EXPECT_EQ(model.get(), &standard);
    EXPECT_EQ(standard.references, 3u);
  }
  EXPECT_EQ(setup->SetPane(nrtlName.get(), pane.get()), S_OK);
  EXPECT_EQ(setup->SetPane(pane.get(), pane.get()), S_FALSE);
  const struct {
    INT index;
    HRESULT result;
    const OLECHAR *name, *pane;
  } rows[] = {{-1, S_FALSE, OLESTR("(null)"), OLESTR("(null)")},
              {0, S_OK, OLESTR("Default"), OLESTR("(null)")},
              {1, S_OK, OLESTR("NRTL"), OLESTR("Binary pairs")},
              {2, S_FALSE, OLESTR("(null)"), OLESTR("(null)")}};
  for (const auto& row : rows) {
    INT number = -1;
    BSTR name = nullptr, shown = nullptr;
    EXPECT_EQ(info->CompCollnIPInfo(row.index, &number, &name, &shown), row.result);
    EXPECT_EQ(number, 2);
    EXPECT_EQ(taken(name), row.name);
    EXPECT_EQ(taken(shown), row.pane);
  }
  EXPECT_EQ(setup->put_InteractionParameters(nullptr, &nrtl), S_OK);
  EXPECT_EQ(standard.references, 1u) << "replaced";
  collection->Reset();
}

TEST_F(CollectionListTest, AddsACompoundWithItsInteractionParameters) {
  const auto collection = collectionOf("a");
  const auto order = query<ICompoundManipulation>(collection);
  const Bstr path(OLESTR("data")), silentName(OLESTR("1")), name(OLESTR("2"));
  const auto compound = named(OLESTR("b"));
  Parameters silent, model;
  silent.loads = false;
  const auto setup = query<ICompoundCollectionSetup>(collection);
  ASSERT_EQ(setup->put_InteractionParameters(silentName.get(), &silent), S_OK);
  ASSERT_EQ(setup->put_InteractionParameters(name.get(), &model), S_OK);
  EXPECT_EQ(order->AddLastCompoundLoadIPs(compound.get(), path.get()), S_OK);
  EXPECT_EQ(lettersOf(collection), "ab");
  EXPECT_EQ(model.loading.seen, 2);
  EXPECT_EQ(model.loading.path, OLESTR("data"));
  model.loading.result = E_BOUNDS;
  EXPECT_EQ(order->AddLastCompoundLoadIPs(compound.get(), path.get()), E_BOUNDS);
  EXPECT_EQ(lettersOf(collection), "ab") << "taken out again";
  EXPECT_EQ(order->AddLastCompoundLoadIPs(nullptr, path.get()), E_INVALIDARG);
  {
    const auto view = viewOf(collection, {1});
    ASSERT_EQ(query<ICompoundCollectionSetup>(view)->put_InteractionParameters(name.get(), &model), S_OK);
    EXPECT_EQ(query<ICompoundManipulation>(view)->AddLastCompoundLoadIPs(named(OLESTR("c")).get(), path.get()),
              E_BOUNDS);
    EXPECT_EQ(lettersOf(view) + "/" + lettersOf(collection), "b/ab") << "of the parent too";
    // Whatever a model does before it fails, the compound that was added goes and no other does.
    const auto inList = query<ICompoundManipulation>(collection), inView = query<ICompoundManipulation>(view);
    const struct {
      std::function<void()> deed;
      const char* letters;
    } rows[] = {
        {[&] { inList->MoveCompound(2, 0); }, "b/ab"},
        {[&] { inView->MoveCompound(1, 0); }, "b/ab"},
        {[&] { inList->RemoveLastCompound(); }, "b/ab"},
        {[&] { inView->RemoveLastCompound(); }, "b/ab"},
        {[&] { view->AddCompound(named(OLESTR("d")).get()); }, "bd/abd"},
    };
    for (const auto& row : rows) {
      model.loading.onLoad = row.deed;
      EXPECT_EQ(query<ICompoundManipulation>(view)->AddLastCompoundLoadIPs(named(OLESTR("c")).get(), path.get()),
                E_BOUNDS);
      EXPECT_EQ(lettersOf(view) + "/" + lettersOf(collection), row.letters) << &row - rows;
    }
    model.loading.onLoad = {};
    view->Reset();
  }
  collection->Reset();
}

}  // namespace
}  // namespace qs::test
