#include "hostkit/xml_parser.h"

#include <algorithm>
#include <utility>

#include "platform/input_file.h"
#include "platform/system_reason.h"
#include "platform/unit_block.h"
#include "xml/character.h"

namespace qs::hostkit {
namespace {

constexpr WideView kBlanks = OLESTR(" \t\r\n");

WideView withoutBlanks(WideView text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text;
}

// The characters that most texts have are examined a block at a time.
bool holdsCharactersAlone(WideView text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    while (i + kBlockUnits <= text.size()) {
      const WideBlock block = blockAt(text.data() + i);
      if (any(((block < 0x20) | (block >= 0xD800)) & (block != '\n'))) break;
      i += kBlockUnits;
    }
    if (i < text.size() && !isXmlCharacter(text, i)) return false;
  }
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
  if (!client) return because(E_INVALIDARG, {"the object is null or reads no XML"});
  check(client.get(), client->StartDocument(), {"the reader"});
  EventFeed events(*client.get());
  const HRESULT parsed = contained([&] { return parseXml(source, events) ? S_OK : E_FAIL; });
  if (events.isRefused()) return events.result();
  const HRESULT result = FAILED(events.result()) ? events.result() : parsed;
  if (SUCCEEDED(result)) {
    const HRESULT ended = client->EndDocument();
    return ended == S_OK ? ended : because(client.get(), ended, {"the reader"});
  }
  client->Error();
  return result;
}

std::vector<std::byte> contentOf(const WideString& path) {
  const auto file = InputFile::open(path);
  if (!file) fail(E_FAIL, {systemReason().text});
  std::vector<std::byte> bytes(static_cast<std::size_t>(file->stamp().size));
  const auto got = file->readAt(0, bytes);
  if (!got) fail(E_FAIL, {systemReason().text});
  if (*got != bytes.size()) fail(E_FAIL, {"it has become shorter"});
  return bytes;
}

}  // namespace

void EventFeed::release(AttributeSet& all) {
  const bool mine = (all.AddRef(), all.Release()) == 1;
  if (mine) return all.clear();
  const auto kept = std::exchange(attributes_, ComPtr<TaggedAttributes>());
  all.own();
}

HRESULT XmlParser::ParseText(BSTR text, IDispatch* client) noexcept {
  return guardedLookUp([&] {
    // Some parsers take the encoding from the first character.
    WideView document = viewOf(text);
    if (document.starts_with(OLECHAR{0xFEFF})) document.remove_prefix(1);
    document = withoutBlanks(document);
    if (!text) return because(E_INVALIDARG, {"the text is null"});
    if (!holdsCharactersAlone(document))
      return because(E_INVALIDARG, {"the text has a character that XML cannot hold"});
    if (hasDocumentType(document)) return because(E_INVALIDARG, {"the text has a document type, which is refused"});
    return feed(document, client);
  });
}

HRESULT XmlParser::ParseFile(BSTR path, IDispatch* client) noexcept {
  return guardedLookUp([&] {
    const HRESULT result = contained([&] {
      const std::vector<std::byte> bytes = contentOf(WideString(viewOf(path)));
      return feed(std::span<const std::byte>(bytes), client);
    });
    return also(result, {" (file ", path, ")"});
  });
}

}  // namespace qs::hostkit
