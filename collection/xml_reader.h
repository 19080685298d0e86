// Builds a collection from the events of an XML parser; docs/xml.md describes the text.
#pragma once

#include "collection/collection.h"
#include "com/component.h"
#include "xml/events.h"

namespace qs {

// The state within one CompoundCollection or SubCompList element. Elements may come in any order and number, and memory
// grows with what arrives, never with a number that the text states.
class COQSCompoundCollection::CollectionXmlReader {
 public:
  // A model that the text gives no class is read into the object that `collection` has under its name.
  explicit CollectionXmlReader(const COQSCompoundCollection& collection) : collection_(collection) {}

  // Whether an element is one that a reader reads.
  static bool isRoot(WideView name) { return name == OLESTR("CompoundCollection") || name == OLESTR("SubCompList"); }

  // S_FALSE for a version that is not known; what can be read of it is read.
  HRESULT startCollection(TaggedAttributes* attributes);

  // S_OK when all data of the element was used. S_FALSE when the element is skipped, with all that it holds if it is
  // unknown or of a model without an object, and when a loader or an estimator is stored without the component that it
  // names. Within a compound or a model, the result of their own reader.
  HRESULT startElement(BSTR name, TaggedAttributes* attributes);
  HRESULT endElement(BSTR name);

  // Whether the collection's own element has ended: then it can be taken.
  bool isComplete() const { return complete_; }
  State take() { return std::move(state_); }

  // Hands an event on to the reader of the compound or model that is being read; S_OK when there is none.
  template <class Event>
  HRESULT handOn(Event&& event) {
    const ComPtr<XMLParserClient> receiver = receiver_;
    const bool isCompound = static_cast<bool>(compound_);
    const HRESULT result = receiver ? event(*receiver.get()) : S_OK;
    if (result == S_OK) return result;
    return isCompound ? passOn(result) : because(receiver.get(), result, {"the interaction parameters"});
  }

 private:
  struct Element {
    WideView name;
    HRESULT (CollectionXmlReader::*start)(const XmlAttributes&);
  };
  static const Element kElements[];

  HRESULT startCompound(const XmlAttributes& attributes);
  HRESULT startModel(const XmlAttributes& attributes);
  HRESULT nameModel(const XmlAttributes& attributes);
  HRESULT group(const XmlAttributes&) { return S_OK; }
  HRESULT addEmptySlot(const XmlAttributes& attributes);
  template <ComponentRegistry State::*registry>
  HRESULT addComponent(const XmlAttributes& attributes);
  template <Bstr CollectionXmlReader::*name>
  HRESULT nameDefault(const XmlAttributes& attributes);
  template <ComPtr<IRealArrayDisp> State::*array>
  HRESULT readOffsets(const XmlAttributes& attributes);
  HRESULT addNamedView(const XmlAttributes& attributes);

  HRESULT finish();

  const COQSCompoundCollection& collection_;
  State state_;
  bool complete_ = false;
  struct {
    Bstr name, pane;
  } model_;  // of the Model element that is open
  Bstr defaultLoader_, defaultEstimator_;

  // The element that has a reader of its own, or is skipped without one, and the compound that it builds.
  XmlSpan span_;
  ComPtr<XMLParserClient> receiver_;
  ComPtr<IBasicCompound> compound_;
};

}  // namespace qs
