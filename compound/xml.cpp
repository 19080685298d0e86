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
  return guarded([&] {
    XmlText xml(XmlForm(form), kExpectedLength);
    writeCompound(xml, identity_, properties_, userProperties_);
    *text = xml.take().release();
    return S_OK;
  });
}

HRESULT COQSCompound::StartElement(BSTR name, TaggedAttributes* attributes) noexcept {
  return guarded([&] {
    if (!xmlReader_) {
      if (viewOf(name) != XmlReader::kCompound) return S_FALSE;
      xmlReader_ = std::make_shared<XmlReader>(identity_, properties_, userProperties_);
    }
    const auto reader = xmlReader_;
    return reader->startElement(viewOf(name), attributes);
  });
}

HRESULT COQSCompound::EndElement(BSTR name) noexcept {
  if (xmlReader_ && xmlReader_->endElement(viewOf(name))) xmlReader_.reset();
  return S_OK;
}

HRESULT COQSCompound::StartDocument() noexcept {
  xmlReader_.reset();
  return S_OK;
}

HRESULT COQSCompound::EndDocument() noexcept { return StartDocument(); }

// What was built before the error stays.
HRESULT COQSCompound::Error() noexcept { return StartDocument(); }

HRESULT COQSCompound::CharacterData(BSTR) noexcept { return S_OK; }
HRESULT COQSCompound::Comment() noexcept { return S_OK; }
HRESULT COQSCompound::ProcessElement(BSTR, TaggedAttributes*) noexcept { return S_OK; }

}  // namespace qs
