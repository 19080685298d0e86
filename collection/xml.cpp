// The XML form of a collection: its text, and the receiver of a parser's events.
#include "collection/collection.h"
#include "collection/xml_reader.h"
#include "collection/xml_writer.h"

namespace qs {

HRESULT COQSCompoundCollection::StoreAsXML(BSTR* text) noexcept { return StoreAsXMLEx(xmlDefaultForm, text); }

HRESULT COQSCompoundCollection::StoreAsXMLEx(INT form, BSTR* text) noexcept {
  if (!text) return E_POINTER;
  *text = nullptr;
  return guarded([&] {
    XmlText xml(XmlForm(form), 0);
    XmlWriter(*this, xml).write();
    *text = xml.take().release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::StartElement(BSTR name, TaggedAttributes* attributes) noexcept {
  const HRESULT result = guarded([&] {
    if (!xmlReader_) {
      if (!XmlReader::isCollection(viewOf(name))) return S_FALSE;
      xmlReader_ = std::make_shared<XmlReader>(*this);
      return xmlReader_->startCollection(attributes);
    }
    // A component that is called meanwhile may call back and end the reading.
    const auto reader = xmlReader_;
    return reader->startElement(name, attributes);
  });
  if (FAILED(result)) xmlReader_.reset();
  return result;
}

HRESULT COQSCompoundCollection::EndElement(BSTR name) noexcept {
  const auto reader = xmlReader_;
  if (!reader) return S_OK;
  const HRESULT result = guarded([&] { return reader->endElement(name); });
  if (SUCCEEDED(result) && !reader->isComplete()) return result;
  xmlReader_.reset();
  if (FAILED(result)) return result;
  // Released in the end, when calls back find the collection as it was read.
  const State old = std::exchange(state_, reader->take());
  return result;
}

HRESULT COQSCompoundCollection::CharacterData(BSTR text) noexcept {
  return xmlReader_ ? xmlReader_->handOn([&](XMLParserClient& receiver) { return receiver.CharacterData(text); })
                    : S_OK;
}

HRESULT COQSCompoundCollection::Comment() noexcept {
  return xmlReader_ ? xmlReader_->handOn([](XMLParserClient& receiver) { return receiver.Comment(); }) : S_OK;
}

HRESULT COQSCompoundCollection::ProcessElement(BSTR name, TaggedAttributes* attributes) noexcept {
  return xmlReader_
             ? xmlReader_->handOn([&](XMLParserClient& receiver) { return receiver.ProcessElement(name, attributes); })
             : S_OK;
}

HRESULT COQSCompoundCollection::StartDocument() noexcept {
  xmlReader_.reset();
  return S_OK;
}

HRESULT COQSCompoundCollection::EndDocument() noexcept { return StartDocument(); }
HRESULT COQSCompoundCollection::Error() noexcept { return StartDocument(); }

}  // namespace qs
