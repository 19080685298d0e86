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
  if (!text) return E_POINTER;
  return guarded([&] {
    XmlText xml(XmlForm(form), kExpectedLength);
    writeCompound(xml, content_);
    *text = xml.take().release();
    return S_OK;
  });
}

HRESULT COQSCompound::StartElement(BSTR name, TaggedAttributes* attributes) noexcept {
  const HRESULT result = guarded([&] {
    if (!xmlReader_) {
      if (viewOf(name) != CompoundXmlReader::kCompound) return S_FALSE;
      if (!beforeText_) beforeText_ = std::make_unique<CompoundContent>(content_.copy());
      xmlReader_ = std::make_shared<CompoundXmlReader>(content_);
    }
    const auto reader = xmlReader_;
    return reader->startElement(viewOf(name), attributes);
  });
  if (FAILED(result)) undoReading();
  return result;
}

HRESULT COQSCompound::EndElement(BSTR name) noexcept {
  if (!xmlReader_ || !xmlReader_->endElement(viewOf(name))) return S_OK;
  xmlReader_.reset();
  if (!inDocument_) endReading();
  return S_OK;
}

HRESULT COQSCompound::StartDocument() noexcept {
  endReading();
  inDocument_ = true;
  return S_OK;
}

HRESULT COQSCompound::EndDocument() noexcept {
  endReading();
  return S_OK;
}

HRESULT COQSCompound::Error() noexcept {
  undoReading();
  return S_OK;
}

void COQSCompound::endReading() {
  xmlReader_.reset();
  inDocument_ = false;
  const auto before = std::move(beforeText_);
}

void COQSCompound::undoReading() {
  if (beforeText_) std::swap(content_, *beforeText_);
  endReading();
}

HRESULT COQSCompound::CharacterData(BSTR) noexcept { return S_OK; }
HRESULT COQSCompound::Comment() noexcept { return S_OK; }
HRESULT COQSCompound::ProcessElement(BSTR, TaggedAttributes*) noexcept { return S_OK; }

}  // namespace qs
