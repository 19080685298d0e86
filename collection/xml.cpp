// The XML form of a collection: its text, and the receiver of a parser's events.
#include "collection/collection.h"
#include "collection/xml_reader.h"
#include "collection/xml_writer.h"

namespace qs {

HRESULT COQSCompoundCollection::StoreAsXML(BSTR* text) noexcept { return StoreAsXMLEx(xmlDefaultForm, text); }

HRESULT COQSCompoundCollection::StoreAsXMLEx(INT form, BSTR* text) noexcept {
  if (!text) return report(E_POINTER);
  *text = nullptr;
  return guarded([&] {
    XmlText xml(XmlForm(form), 0);
    CollectionXmlWriter(*this, xml).write();
    *text = xml.take().release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::StartElement(BSTR name, TaggedAttributes* attributes) noexcept {
  const HRESULT result = guardedLookUp([&] {
    if (!reading_.reader) {
      if (!CollectionXmlReader::isRoot(viewOf(name)))
        return because(S_FALSE, {"the element <", name, "> is outside a collection"});
      reading_.reader = std::make_shared<CollectionXmlReader>(*this);
      return reading_.reader->startCollection(attributes);
    }
    const auto reader = reading_.reader;
    return reader->startElement(name, attributes);
  });
  if (FAILED(result)) reading_.undo(state_);
  return result;
}

HRESULT COQSCompoundCollection::EndElement(BSTR name) noexcept {
  const auto reader = reading_.reader;
  if (!reader) return S_OK;
  const HRESULT result = guardedLookUp([&] { return reader->endElement(name); });
  if (FAILED(result)) {
    reading_.undo(state_);
  } else if (reader->isComplete()) {
    reading_.reader.reset();
    // Released in the end, when calls back find the collection as it was read.
    State old = std::exchange(state_, reader->take());
    if (reading_.isInDocument() && !reading_.before) reading_.before = std::move(old);
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
HRESULT COQSCompoundCollection::handOn(Event&& event, const char* member) noexcept {
  const auto reader = reading_.reader;
  const HRESULT result = guarded([&] { return reader ? reader->handOn(event) : S_OK; }, member);
  if (FAILED(result)) reading_.undo(state_);
  return result;
}

HRESULT COQSCompoundCollection::StartDocument() noexcept {
  reading_.startDocument();
  return S_OK;
}

HRESULT COQSCompoundCollection::EndDocument() noexcept {
  reading_.end();
  return S_OK;
}

HRESULT COQSCompoundCollection::Error() noexcept {
  reading_.undo(state_);
  return S_OK;
}

}  // namespace qs
