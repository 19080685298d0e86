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
    CollectionXmlWriter(*this, xml).write();
    *text = xml.take().release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::StartElement(BSTR name, TaggedAttributes* attributes) noexcept {
  const HRESULT result = guarded([&] {
    if (!xmlReader_) {
      if (!CollectionXmlReader::isCollection(viewOf(name))) return S_FALSE;
      xmlReader_ = std::make_shared<CollectionXmlReader>(*this);
      return xmlReader_->startCollection(attributes);
    }
    // A component that is called meanwhile may call back and end the reading.
    const auto reader = xmlReader_;
    return reader->startElement(name, attributes);
  });
  if (FAILED(result)) undoReading();
  return result;
}

HRESULT COQSCompoundCollection::EndElement(BSTR name) noexcept {
  const auto reader = xmlReader_;
  if (!reader) return S_OK;
  const HRESULT result = guarded([&] { return reader->endElement(name); });
  if (FAILED(result)) {
    undoReading();
  } else if (reader->isComplete()) {
    xmlReader_.reset();
    // Released in the end, when calls back find the collection as it was read.
    State old = std::exchange(state_, reader->take());
    if (inDocument_ && !beforeText_) beforeText_ = std::move(old);
  }
  return result;
}

HRESULT COQSCompoundCollection::CharacterData(BSTR text) noexcept {
  return handOn([&](XMLParserClient& receiver) { return receiver.CharacterData(text); });
}

HRESULT COQSCompoundCollection::Comment() noexcept {
  return handOn([](XMLParserClient& receiver) { return receiver.Comment(); });
}

HRESULT COQSCompoundCollection::ProcessElement(BSTR name, TaggedAttributes* attributes) noexcept {
  return handOn([&](XMLParserClient& receiver) { return receiver.ProcessElement(name, attributes); });
}

template <class Event>
HRESULT COQSCompoundCollection::handOn(Event&& event) noexcept {
  const auto reader = xmlReader_;
  const HRESULT result = guarded([&] { return reader ? reader->handOn(event) : S_OK; });
  if (FAILED(result)) undoReading();
  return result;
}

HRESULT COQSCompoundCollection::StartDocument() noexcept {
  endReading();
  inDocument_ = true;
  return S_OK;
}

HRESULT COQSCompoundCollection::EndDocument() noexcept {
  endReading();
  return S_OK;
}

HRESULT COQSCompoundCollection::Error() noexcept {
  undoReading();
  return S_OK;
}

void COQSCompoundCollection::endReading() {
  xmlReader_.reset();
  inDocument_ = false;
  const auto before = std::exchange(beforeText_, std::nullopt);
}

void COQSCompoundCollection::undoReading() {
  if (beforeText_) std::swap(state_, *beforeText_);
  endReading();
}

}  // namespace qs
