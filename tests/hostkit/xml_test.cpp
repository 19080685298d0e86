// The host kit's parser and attribute sets.
#include "hostkit/xml_parser.h"

#include "tests/support/database_builder.h"
#include "tests/support/files.h"
#include "tests/support/host_object.h"
#include "tests/support/xml_compounds.h"

namespace qs::test {
namespace {

// Writes the events down; fails at an element named "stop".
class Recorder final : public HostObject<XMLParserClient> {
 public:
  STDMETHODIMP CharacterData(BSTR text) noexcept override { return note("'", text); }
  STDMETHODIMP StartElement(BSTR name, TaggedAttributes* attributes) noexcept override {
    note("+", name);
    INT size = 0;
    attributes->Size(&size);
    for (INT i = 0; i < size; ++i) {
      Bstr tag, value;
      attributes->GetByIndex(i, tag.out(), value.out());
      note(" ", tag.get());
      note("=", value.get());
    }
    if (viewOf(name) == OLESTR("keep")) kept = ComPtr<TaggedAttributes>(attributes);
    return viewOf(name) == OLESTR("stop") ? CLASS_E_NOAGGREGATION : S_FALSE;
  }
  STDMETHODIMP EndElement(BSTR name) noexcept override { return note("-", name); }
  STDMETHODIMP Comment() noexcept override { return note("#", nullptr); }
  STDMETHODIMP ProcessElement(BSTR name, TaggedAttributes*) noexcept override { return note("?", name); }
  STDMETHODIMP Error() noexcept override { return note("!", nullptr); }
  STDMETHODIMP StartDocument() noexcept override { return note("{", nullptr); }
  STDMETHODIMP EndDocument() noexcept override { return note("}", nullptr); }

  std::string events;
  ComPtr<TaggedAttributes> kept;

 private:
  HRESULT note(const char* kind, BSTR text) {
    const std::string bytes = narrow(viewOf(text));
    // Where a text is divided is the parser's affair.
    events +=
        (*kind == '\'' && events.ends_with('\'') ? events.pop_back(), "" : kind) + bytes + (*kind == '\'' ? "'" : "");
    return S_OK;
  }
};

class HostKitXml : public XmlTest {};

TEST_F(HostKitXml, HandsOnEventsInTheirOrder) {
  const struct {
    const char* text;
    HRESULT result;
    const char* events;
  } cases[] = {
      {"<a x='1' y=\"&lt;&quot;&#10;&amp;\"><b/>t&gt;u<!-- c --></a>", S_OK, "{+a x=1 y=<\"\n&+b-b't>u'#-a}"},
      {"<keep x='1'><b y='2'/></keep>", S_OK, "{+keep x=1+b y=2-b-keep}"},
      {"<a><stop/><b/></a>", CLASS_E_NOAGGREGATION, "{+a+stop"},
      {"<a></b>", E_FAIL, "{+a!"},
      {"", E_FAIL, "{!"},
      {"<R&D/>", E_FAIL, "{!"},
      {"<a x='1' x='2'/>", E_FAIL, "{!"},
  };
  for (const auto& row : cases) {
    Recorder recorder;
    EXPECT_EQ(parse(widen(row.text), &recorder), row.result) << row.text;
    EXPECT_EQ(recorder.events, row.events) << row.text;
    if (recorder.kept) {
      Bstr value;
      EXPECT_EQ(recorder.kept->find(Bstr(OLESTR("x")).get(), value.out()), S_OK) << "a kept set keeps its attributes";
    }
    recorder.kept = ComPtr<TaggedAttributes>();
    EXPECT_EQ(recorder.references, 1u);
  }
  EXPECT_EQ(parse(OLESTR("<a/>"), nullptr), E_INVALIDARG);
}

TEST_F(HostKitXml, RefusesTextsThatXmlCannotHoldBeforeTheClientKnows) {
  const WideString texts[] = {
      {'<', 'a', '>', 0, '<', '/', 'a', '>'},
      {'<', 'a', ' ', 'x', '=', '"', 0xD800, '"', '/', '>'},
      {'<', 'a', '>', 0xDE00, 0xD83D, '<', '/', 'a', '>'},
      {'<', 'a', '/', '>', 0xDBFF},
      {'<', 'a', '/', '>', 0xFFFE},
      {'<', 'a', '/', '>', 0xFFFF},
      OLESTR("<a>\x0B</a>"),
      OLESTR("<a x='\x1F'/>"),
      OLESTR("<!DOCTYPE a [<!ENTITY e 'entity'>]><a x='&e;'>&e;</a>"),
      OLESTR("\xFEFF<?xml version='1.0'?> <!-- <a> --> <?p <a?>\n<!DOCTYPE a><a/>"),
  };
  Recorder recorder;
  for (const WideString& text : texts) EXPECT_EQ(parse(text, &recorder), E_INVALIDARG) << narrow(text);
  EXPECT_EQ(create<IXMLParser>(__uuidof(::XMLParser))->ParseText(nullptr, &recorder), E_INVALIDARG);
  for (std::size_t place = 0; place < 40; ++place) {
    WideString text = OLESTR("<!--") + WideString(40, 'x') + OLESTR("--><a/>");
    text[4 + place] = 0x1F;
    EXPECT_EQ(parse(text, &recorder), E_INVALIDARG) << place;
  }
  EXPECT_EQ(recorder.events, "");
}

// Asks for attributes without looking at the others, in the event and after it.
class Finder final : public HostObject<XMLParserClient> {
 public:
  STDMETHODIMP CharacterData(BSTR) noexcept override { return S_OK; }
  STDMETHODIMP StartElement(BSTR, TaggedAttributes* attributes) noexcept override {
    inside = found(attributes);
    kept = ComPtr<TaggedAttributes>(attributes);
    return S_OK;
  }
  STDMETHODIMP EndElement(BSTR) noexcept override { return S_OK; }
  STDMETHODIMP Comment() noexcept override { return S_OK; }
  STDMETHODIMP ProcessElement(BSTR, TaggedAttributes*) noexcept override { return S_OK; }
  STDMETHODIMP Error() noexcept override { return S_OK; }
  STDMETHODIMP StartDocument() noexcept override { return S_OK; }
  STDMETHODIMP EndDocument() noexcept override { return S_OK; }

  static WideString found(TaggedAttributes* attributes) {
    WideString values;
    for (const LPCOLESTR tag : {OLESTR("ab"), OLESTR("a"), OLESTR("abc"), OLESTR(""), OLESTR("A"), OLESTR("a\xE9"),
                                OLESTR("a\xE8"), OLESTR("empty")}) {
      Bstr value;
      const HRESULT hr = attributes->find(Bstr(tag).get(), value.out());
      EXPECT_EQ(hr == S_OK, !!value) << narrow(tag);
      values += hr == S_OK ? WideString(value.view()) + OLESTR(";") : WideString(OLESTR("-"));
    }
    return values;
  }

  WideString inside;
  ComPtr<TaggedAttributes> kept;
};

TEST_F(HostKitXml, FindsAttributesByTheirWholeNames) {
  Finder finder;
  EXPECT_EQ(parse(OLESTR("<e a='1' ab='twelve letters\xFC\xD83D\xDE00' a\xE9='&lt;\xE9' empty=''/>"), &finder), S_OK);
  EXPECT_EQ(finder.inside, OLESTR("twelve letters\xFC\xD83D\xDE00;1;---<\xE9;-;"));
  EXPECT_EQ(Finder::found(finder.kept.get()), finder.inside);
}

TEST_F(HostKitXml, AStringHasNoOtherEncodingThanItsOwn) {
  for (const LPCOLESTR declaration :
       {OLESTR("<?xml version='1.0' encoding='ISO-8859-1'?>"), OLESTR("<?xml version='1.0' encoding = \"UTF-8\" ?>"),
        OLESTR("<?xml version='1.0' encoding='No-Such' standalone='yes'?>"), OLESTR("\xFEFF"), OLESTR(" \n"),
        OLESTR("\xFEFF<?xml version='1.0' encoding='UTF-16'?>")}) {
    Recorder recorder;
    EXPECT_EQ(parse(declaration + WideString(OLESTR("<a x='\xE9\t\xD83D\xDE00'/>")), &recorder), S_OK)
        << narrow(declaration);
    EXPECT_EQ(recorder.events, "{+a x=" + narrow(OLESTR("\xE9 \xD83D\xDE00")) + "-a}");
  }
}

TEST_F(HostKitXml, ReadsFilesInTheEncodingThatTheyDeclare) {
  const TemporaryDirectory directory;
  const auto parser = create<IXMLParser>(__uuidof(::XMLParser));
  const std::pair<const char*, const char*> files[] = {
      {"<a x='\xC3\xA9'/>", "utf8"}, {"<?xml version='1.0' encoding='ISO-8859-1'?><a x='\xE9'/>", "latin1"}};
  for (const auto& [content, name] : files) {
    writeFile(directory.path() / name, content);
    Recorder recorder;
    EXPECT_EQ(parser->ParseFile(Bstr((directory.path() / name).string<OLECHAR>()).get(), &recorder), S_OK) << name;
    EXPECT_EQ(recorder.events, "{+a x=" + narrow(OLESTR("\xE9")) + "-a}") << name;
  }
  Recorder recorder;
  EXPECT_EQ(parser->ParseFile(Bstr(directory.name()).get(), &recorder), E_FAIL);
  EXPECT_EQ(recorder.events, "");
}

}  // namespace
}  // namespace qs::test
