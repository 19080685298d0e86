#include "hostkit/xml_parser.h"

#include <algorithm>
#include <utility>

#include "platform/input_file.h"
#include "xml/character.h"

namespace qs::hostkit {
namespace {

constexpr WideView kBlanks = OLESTR(" \t\r\n");

WideView withoutBlanks(WideView text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text;
}

bool holdsCharactersAlone(WideView text) {
  for (std::size_t i = 0; i < text.size(); ++i)
    if (!isXmlCharacter(text, i)) return false;
  return true;
}

// Whether there is a document type before the first element.
bool hasDocumentType(WideView text) {
  for (;;) {
    text = withoutBlanks(text);
    const bool isComment = text.starts_with(OLESTR("<!--"));
    if (!isComment && !text.starts_with(OLESTR("<?"))) return text.starts_with(OLESTR("<!DOCTYPE"));
    const WideView end(isComment ? OLESTR("-->") : OLESTR("?>"));
    const std::size_t found = text.find(end, isComment ? 4 : 2);
    if (found == WideView::npos) return false;
    text.remove_prefix(found + end.size());
  }
}

template <class Source>
HRESULT feed(const Source& source, IDispatch* receiver) {
  const auto client = ComPtr<XMLParserClient>::from(receiver);
  if (!client) return E_INVALIDARG;
  check(client->StartDocument());
  EventFeed events(*client.get());
  const HRESULT parsed = guarded([&] { return parseXml(source, events) ? S_OK : E_FAIL; });
  if (events.isRefused()) return events.result();
  const HRESULT result = FAILED(events.result()) ? events.result() : parsed;
  if (SUCCEEDED(result)) return client->EndDocument();
  client->Error();
  return result;
}

std::vector<std::byte> contentOf(const WideString& path) {
  const auto file = InputFile::open(path);
  if (!file) throw CQSCOMError(E_FAIL);
  std::vector<std::byte> bytes(static_cast<std::size_t>(file->stamp().size));
  if (file->readAt(0, bytes) != bytes.size()) throw CQSCOMError(E_FAIL);
  return bytes;
}

}  // namespace

template <class Make>
HRESULT EventFeed::make(Make&& event) noexcept {
  if (SUCCEEDED(result_))
    if (const HRESULT made = guarded(std::forward<Make>(event)); FAILED(made)) result_ = made;
  return result_;
}

template <class Call>
HRESULT EventFeed::hand(Call&& call) {
  const HRESULT answer = guarded(std::forward<Call>(call));
  refused_ = FAILED(answer);
  return answer;
}

// The set of the element that starts next: the last one emptied, unless the client has kept it.
AttributeSet& EventFeed::attributes() {
  if (!collecting_) {
    const bool mine = attributes_ && (attributes_->AddRef(), attributes_->Release()) == 1;
    if (!mine) attributes_ = AttributeSet::make<TaggedAttributes>();
    static_cast<AttributeSet*>(attributes_.get())->clear();
    collecting_ = true;
  }
  return *static_cast<AttributeSet*>(attributes_.get());
}

HRESULT EventFeed::attribute(WideView name, WideView value) noexcept {
  return make([&] {
    attributes().add(WideString(name), WideString(value));
    return S_OK;
  });
}

HRESULT EventFeed::startElement(WideView name) noexcept {
  return make([&] {
    AttributeSet& all = attributes();
    collecting_ = false;
    const Bstr tag(name);
    return hand([&] { return client_.StartElement(tag.get(), &all); });
  });
}

HRESULT EventFeed::endElement(WideView name) noexcept {
  return make([&] {
    const Bstr tag(name);
    return hand([&] { return client_.EndElement(tag.get()); });
  });
}

HRESULT EventFeed::text(WideView characters) noexcept {
  return make([&] {
    const Bstr data(characters);
    return hand([&] { return client_.CharacterData(data.get()); });
  });
}

HRESULT EventFeed::comment() noexcept {
  return make([&] { return hand([&] { return client_.Comment(); }); });
}

HRESULT EventFeed::instruction(WideView target, WideView text) noexcept {
  return make([&] {
    AttributeSet& all = attributes();
    all.add(WideString(target), WideString(text));
    collecting_ = false;
    const Bstr tag(target);
    return hand([&] { return client_.ProcessElement(tag.get(), &all); });
  });
}

HRESULT XmlParser::ParseText(BSTR text, IDispatch* client) noexcept {
  return guarded([&] {
    // Some parsers take the encoding from the first character.
    WideView document = viewOf(text);
    if (document.starts_with(OLECHAR{0xFEFF})) document.remove_prefix(1);
    document = withoutBlanks(document);
    if (!text || !holdsCharactersAlone(document) || hasDocumentType(document)) return E_INVALIDARG;
    return feed(document, client);
  });
}

HRESULT XmlParser::ParseFile(BSTR path, IDispatch* client) noexcept {
  return guarded([&] {
    const std::vector<std::byte> bytes = contentOf(WideString(viewOf(path)));
    return feed(std::span<const std::byte>(bytes), client);
  });
}

}  // namespace qs::hostkit
