#include "hostkit/xml_parser.h"

#include <utility>

#include "platform/input_file.h"

namespace qs::hostkit {
namespace {

template <class Source>
HRESULT feed(const Source& source, IDispatch* receiver) {
  const auto client = ComPtr<XMLParserClient>::from(receiver);
  if (!client) return E_INVALIDARG;
  check(client->StartDocument());
  EventFeed events(*client.get());
  const bool wellFormed = parseXml(source, events);
  if (FAILED(events.result())) return events.result();
  if (!wellFormed) {
    client->Error();
    return E_FAIL;
  }
  return client->EndDocument();
}

std::vector<std::byte> contentOf(const WideString& path) {
  const auto file = InputFile::open(path);
  if (!file) throw CQSCOMError(E_FAIL);
  std::vector<std::byte> bytes(static_cast<std::size_t>(file->stamp().size));
  if (file->readAt(0, bytes) != bytes.size()) throw CQSCOMError(E_FAIL);
  return bytes;
}

}  // namespace

template <class Call>
HRESULT EventFeed::hand(Call&& call) noexcept {
  if (SUCCEEDED(result_)) {
    const HRESULT answer = guarded(std::forward<Call>(call));
    if (FAILED(answer)) result_ = answer;
  }
  return result_;
}

// The set of the element that starts next: the last one emptied, unless the client has kept it.
AttributeSet& EventFeed::attributes() {
  if (!collecting_) {
    const bool mine = attributes_ && (attributes_->AddRef(), attributes_->Release()) == 1;
    if (!mine)
      check(AttributeSet::create(nullptr, __uuidof(TaggedAttributes), reinterpret_cast<void**>(attributes_.out())));
    static_cast<AttributeSet*>(attributes_.get())->clear();
    collecting_ = true;
  }
  return *static_cast<AttributeSet*>(attributes_.get());
}

HRESULT EventFeed::attribute(WideView name, WideView value) noexcept {
  return hand([&] {
    attributes().add(WideString(name), WideString(value));
    return S_OK;
  });
}

HRESULT EventFeed::startElement(WideView name) noexcept {
  return hand([&] {
    AttributeSet& all = attributes();
    collecting_ = false;
    return client_.StartElement(Bstr(name).get(), &all);
  });
}

HRESULT EventFeed::endElement(WideView name) noexcept {
  return hand([&] { return client_.EndElement(Bstr(name).get()); });
}

HRESULT EventFeed::text(WideView characters) noexcept {
  return hand([&] { return client_.CharacterData(Bstr(characters).get()); });
}

HRESULT EventFeed::comment() noexcept {
  return hand([&] { return client_.Comment(); });
}

HRESULT EventFeed::instruction(WideView target, WideView text) noexcept {
  return hand([&] {
    AttributeSet& all = attributes();
    all.add(WideString(target), WideString(text));
    collecting_ = false;
    return client_.ProcessElement(Bstr(target).get(), &all);
  });
}

HRESULT XmlParser::ParseText(BSTR text, IDispatch* client) noexcept {
  return guarded([&] { return feed(viewOf(text), client); });
}

HRESULT XmlParser::ParseFile(BSTR path, IDispatch* client) noexcept {
  return guarded([&] {
    const std::vector<std::byte> bytes = contentOf(WideString(viewOf(path)));
    return feed(std::span<const std::byte>(bytes), client);
  });
}

}  // namespace qs::hostkit
