// The XML form of a compound: its text, and the receiver of a parser's events.
#include "compound/compound.h"
#include "compound/xml_writer.h"

namespace qs {
namespace {

// Room for most compounds, so that the text grows in place.
constexpr std::size_t kExpectedLength = 32 * 1024;

}  // namespace

HRESULT COQSCompound::StoreAsXML(BSTR* text) noexcept { return StoreAsXMLEx(xmlDefaultForm, text); }

HRESULT COQSCompound::StoreAsXMLEx(INT form, BSTR* text) noexcept {
  if (!text) return report(E_POINTER);
  return guarded([&] {
    XmlText xml(XmlForm(form), kExpectedLength);
    CompoundXmlWriter(content_, xml).write();
    *text = xml.take().release();
    return S_OK;
  });
}

HRESULT COQSCompound::StartElement(BSTR name, TaggedAttributes* attributes) noexcept {
  const HRESULT result = guardedLookUp([&] {
    if (!reading_.reader) {
      if (!CompoundXmlReader::isRoot(viewOf(name)))
        return because(S_FALSE, {"the element <", name, "> is outside a compound"});
      if (!reading_.before) reading_.before = std::make_unique<CompoundContent>(content_.copy());
      reading_.reader = std::make_shared<CompoundXmlReader>(content_);
    }
    const auto reader = reading_.reader;
    return reader->startElement(viewOf(name), attributes);
  });
  if (FAILED(result)) reading_.undo(content_);
  return result;
}

HRESULT COQSCompound::EndElement(BSTR name) noexcept {
  if (!reading_.reader || !reading_.reader->endElement(viewOf(name))) return S_OK;
  reading_.reader.reset();
  if (!reading_.isInDocument()) reading_.end();
  return S_OK;
}

HRESULT COQSCompound::StartDocument() noexcept {
  reading_.startDocument();
  return S_OK;
}

HRESULT COQSCompound::EndDocument() noexcept {
  reading_.end();
  return S_OK;
}

HRESULT COQSCompound::Error() noexcept {
  reading_.undo(content_);
  return S_OK;
}

HRESULT COQSCompound::CharacterData(BSTR) noexcept { return S_OK; }
HRESULT COQSCompound::Comment() noexcept { return S_OK; }
HRESULT COQSCompound::ProcessElement(BSTR, TaggedAttributes*) noexcept { return S_OK; }

}  // namespace qs
