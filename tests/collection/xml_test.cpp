// The XML form of a collection: its text from its fragments, what comes back, and models. Other texts are in xml.calls.
#include <cmath>
#include <limits>

#include "collection/collection.h"
#include "tests/support/claiming_array.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

constexpr LPCOLESTR kModelClass = OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A03}");
constexpr LPCOLESTR kLoaderClass = OLESTR("{5B7D9D9F-0C2E-4C8C-9E0B-6D3B1C1B2A04}");

Bstr bstr(std::string_view text) { return Bstr(widen(text)); }

// Interaction parameters whose content is a text, an attribute of their element; they refuse the content "bad".
class Model final : public Stub<XMLParserClient> {
 public:
  struct Store final : Stub<IXMLStore> {
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return model->AddRef(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return model->Release(); }
    STDMETHODIMP StoreAsXML(BSTR* text) noexcept override {
      *text = Bstr(OLESTR("<IPModel CLASSNAME='") + WideString(kModelClass) + OLESTR("' T='") + model->content +
                   OLESTR("'><Compound/>") + model->events + OLESTR("</IPModel>"))
                  .release();
      return model->content == OLESTR("bad") ? E_BOUNDS : S_OK;
    }
    Model* model = nullptr;
  };

  STDMETHODIMP QueryInterface(REFIID iid, void** out) noexcept override {
    const bool store = IsEqualGUID(iid, __uuidof(IXMLStore));
    // Interaction parameters have no methods of their own.
    if (!store && !IsEqualGUID(iid, __uuidof(IInteractionParameters))) return Stub::QueryInterface(iid, out);
    store_.model = this;
    *out = store ? static_cast<IDispatch*>(&store_) : static_cast<IDispatch*>(this);
    ++references;
    return S_OK;
  }
  STDMETHODIMP StartElement(BSTR name, TaggedAttributes* attributes) noexcept override {
    if (viewOf(name) != OLESTR("IPModel")) return S_OK;
    Bstr text;
    attributes->find(bstr("T").get(), text.out());
    content = text.view();
    return content == OLESTR("bad") ? E_BOUNDS : S_OK;
  }
  STDMETHODIMP CharacterData(BSTR text) override {
    if (viewOf(text) == OLESTR("throw")) throw 1;
    events += viewOf(text);
    return S_OK;
  }
  STDMETHODIMP EndElement(BSTR) noexcept override { return S_OK; }

  WideString content, events;

 private:
  Store store_;
};

class CollectionXml : public XmlTest {
 protected:
  static HRESULT read(std::string_view text, const ComPtr<ICompoundCollection>& collection) {
    return parse(widen(text), collection.get());
  }

  // The compounds as letters, then the loaders, each with a star when it has its component, and the default in
  // brackets.
  static std::string summary(const ComPtr<ICompoundCollection>& collection) {
    std::string text = lettersOf(collection) + "|";
    const auto loaders = query<ILoadCompoundProp>(collection);
    Bstr name;
    ComPtr<IDispatch> object;
    for (INT i = 0; loaders->GetLoaderI(i, name.out(), object.out()) == S_OK; ++i)
      text += narrow(name.view()) + (object ? "*" : "") + " ";
    return loaders->GetDefaultLoader(name.out(), object.out()) == S_OK ? text + "(" + narrow(name.view()) + ")" : text;
  }

  static void put(const ComPtr<ICompoundCollection>& collection, LPCOLESTR name, Model& model) {
    EXPECT_EQ(
        query<ICompoundCollectionSetup>(collection)->put_InteractionParameters(Bstr(WideView(name)).get(), &model),
        S_OK);
  }

  ComponentClass<Model> models_{kModelClass};
  ComponentClass<UserComponent> loaders_{kLoaderClass};
};

TEST_F(CollectionXml, TheDefaultFormIsWrittenByteForByte) {
  EXPECT_EQ(narrow(textOf(newCollection())),
            "<CompoundCollection VERSION = \"2\" NUMBCOMPOUND = \"0\" > \n"
            "   <DefaultLoader  NAME = \"\"/>\n"
            "</CompoundCollection>\n");
  auto collection = collectionOf("a b");
  Model& model = *models_.make(OLESTR("t"));
  put(collection, OLESTR("Any"), model);
  const auto jsonLoader = create<IDispatch>(__uuidof(::JsonLoader));
  const auto registry = query<ILoadCompoundProp>(collection);
  registry->SetDefaultLoader(bstr("Z").get(), bstr("C.z").get(), bstr("p").get(), loaders_.make({}));
  registry->AddLoader(bstr("A").get(), bstr("C").get(), nullptr, jsonLoader.get());
  const auto textAt = [&](INT i) {
    ComPtr<IBasicCompound> compound;
    collection->GetBasicCompound(i, compound.out());
    return narrow(textOf(compound));
  };
  EXPECT_EQ(narrow(textOf(collection)), "<CompoundCollection VERSION = \"2\" NUMBCOMPOUND = \"3\" > \n" + textAt(0) +
                                            textAt(2) + "<IPModel CLASSNAME='" + narrow(kModelClass) +
                                            "' T='t'><Compound/></IPModel>"
                                            "   <AddedLoaders  NUMB = \"2\">\n"
                                            "      <Loader  NAME = \"A\"\n"
                                            "               CLASSNAME = \"C\"\n"
                                            "               DESCRIPTION = \"Folder of JSON compounds\"\n"
                                            "               PATH = \"\">\n"
                                            "      </Loader>\n"
                                            "      <Loader  NAME = \"Z\"\n"
                                            "               CLASSNAME = \"C.z\"\n"
                                            "               DESCRIPTION = \"\"\n"
                                            "               PATH = \"p\">\n"
                                            "      </Loader>\n"
                                            "   </AddedLoaders>\n"
                                            "   <DefaultLoader  NAME = \"Z\"/>\n"
                                            "</CompoundCollection>\n");
  EXPECT_EQ(narrow(textOf(viewOf(collection, {2, 0, 1}))),
            "<SubCompList VERSION = \"1\" NUMBCOMPOUND = \"3\" > \n"
            "   <DefaultLoader  NAME = \"\"/>\n"
            "</SubCompList>\n");

  BSTR untouched = nullptr;
  model.content = OLESTR("bad");
  EXPECT_EQ(query<IXMLStore>(collection)->StoreAsXML(&untouched), E_BOUNDS) << "what a model fails with";
  EXPECT_EQ(query<IXMLStoreEx>(collection)->StoreAsXMLEx(xmlExactForm, &untouched), E_BOUNDS);
  EXPECT_EQ(untouched, nullptr);
}

TEST_F(CollectionXml, TheExactFormGivesEverythingBack) {
  auto collection = collectionOf("a bc ");
  put(collection, OLESTR("NRTL \"<&>"), *models_.make(OLESTR("first")));
  put(collection, OLESTR("Default"), *models_.make(OLESTR("second")));
  query<ICompoundCollectionSetup>(collection)->SetPane(bstr("Default").get(), bstr("").get());
  const auto registry = query<ILoadCompoundProp>(collection);
  const struct {
    const char *name, *className, *path;
  } loaders[] = {{"<A&\"\t", "No.Such", ""}, {"", "", nullptr}, {"bare", nullptr, "x"}, {"made", "", "\r\n"}};
  for (const auto& row : loaders) {
    const Bstr className = row.className ? *row.className ? bstr(row.className) : Bstr(WideView(kLoaderClass)) : Bstr();
    registry->AddLoader(bstr(row.name).get(), className.get(), row.path ? bstr(row.path).get() : nullptr,
                        loaders_.make({}));
  }
  registry->SetAsDefaultLoader(bstr("").get());
  query<IPureEstimatorHandler>(collection)
      ->SetDefaultEstimator(bstr("e").get(), Bstr(WideView(kLoaderClass)).get(), nullptr, loaders_.make({}));
  const double values[] = {0.1, -0.0, std::bit_cast<double>(0xFFF8000000000123), 5e-324, -HUGE_VAL};
  auto offsets = reals({values[0], values[1], values[2], values[3], values[4]});
  collection->PutOffsetS(offsets.release());
  // An offset of each compound is all that is needed.
  ClaimingReals endless(1000);
  endless.AddRef();
  collection->PutOffsetH(&endless);
  textOf(collection, xmlExactForm);
  EXPECT_EQ(endless.reads, 5);
  collection->PutOffsetH(reals({5, 4, 3, 2, 1}).release());
  const auto views = query<ISubCompList1>(collection);
  views->AddSubCompList(bstr("v&").get(), integers({3, 0, 1}).get());
  views->AddSubCompList(bstr("").get(), integers({}).get());

  const WideString text = textOf(collection, xmlExactForm);
  for (const INT form : {xmlExactNumbers, xmlEscaped}) EXPECT_NE(textOf(collection, form), text);
  auto again = collectionOf("xyz");
  ASSERT_EQ(parse(text, again.get()), S_OK);
  EXPECT_EQ(summary(again), "a bc |* <A&\"\t bare made* ()");
  EXPECT_EQ(narrow(textOf(again, xmlExactForm)), narrow(text));
  ComPtr<IDispatch> model;
  ASSERT_EQ(again->get_InteractionParameters(bstr("NRTL \"<&>").get(), model.out()), S_OK);
  EXPECT_EQ(static_cast<Model*>(model.get())->content, OLESTR("first"));
  IRealArrayDisp* lent = nullptr;
  EXPECT_EQ(again->GetOffsetH(&lent), S_OK);
  ASSERT_EQ(again->GetOffsetS(&lent), S_OK);
  for (LONG i = 0; i < 5; ++i) {
    double value = 0;
    EXPECT_EQ(lent->get_IthValue(i, &value), S_OK);
    EXPECT_EQ(std::bit_cast<std::int64_t>(value), std::bit_cast<std::int64_t>(values[i]));
  }
  ComPtr<ICompoundCollection> view;
  ASSERT_EQ(query<ISubCompList1>(again)->GetSubCompList(bstr("v&").get(), view.out()), S_OK);
  EXPECT_EQ(lettersOf(view), "ca ");

  // A view's text has its compounds; what reads it has a list of its own.
  ASSERT_EQ(parse(textOf(view, xmlExactForm), view.get()), S_OK);
  EXPECT_EQ(summary(view), "ca |");
  ComPtr<ICompoundCollection> parent;
  EXPECT_EQ(query<ISubCompList>(view)->GetParent(parent.out()), S_FALSE);
}

TEST_F(CollectionXml, ModelsReadTheirElements) {
  // What fails leaves what the collection held before.
  const std::string ip = "<SubCompList><Compound/><IPModel CLASSNAME='" + narrow(kModelClass) + "'";
  const std::pair<std::string, HRESULT> failing[] = {{" T='bad'/>", E_BOUNDS}, {">throw</IPModel>", E_FAIL}};
  for (const auto& [model, result] : failing) {
    if (!kExceptionsPass && result == E_FAIL) continue;
    const auto collection = collectionOf("xy");
    EXPECT_EQ(read(ip + model + "<Compound/></SubCompList>", collection), result) << model;
    EXPECT_EQ(lettersOf(collection), "xy") << model;
  }

  // A model without a class is read by the object that the collection has under its name.
  const auto collection = newCollection();
  Model& own = *models_.make({});
  put(collection, OLESTR("N"), own);
  EXPECT_EQ(
      read("<CompoundCollection><IPModel NAME='N' T='t'><Compound/>x&amp;y</IPModel></CompoundCollection>", collection),
      S_OK);
  EXPECT_EQ(narrow(own.content + own.events), "tx&y");
  ComPtr<IDispatch> found;
  EXPECT_EQ(collection->get_InteractionParameters(bstr("N").get(), found.out()), S_OK);
}

}  // namespace
}  // namespace qs::test
