// Writes a collection as XML; docs/xml.md describes the text.
#pragma once

#include "collection/collection.h"
#include "xml/text.h"

namespace qs {

class COQSCompoundCollection::CollectionXmlWriter {
 public:
  CollectionXmlWriter(COQSCompoundCollection& collection, XmlText& text)
      : collection_(collection), text_(text), complete_(text.form().complete()) {}

  // Throws CQSCOMError: E_INVALIDARG for data that the form cannot hold, E_NOINTERFACE for a compound or a model that
  // has no XML form, and what their own writers and the offset arrays fail with. Any of them may change the collection.
  void write();

 private:
  void compounds();
  void models();
  // The registered components, and the default, which `always` writes even when there is none.
  void components(const ComponentRegistry& registry, WideView element, bool always);
  void offsets(WideView element, const ComPtr<IRealArrayDisp>& array);
  void namedViews();

  void stored(IUnknown* object, INT form);

  COQSCompoundCollection& collection_;
  XmlText& text_;
  const bool complete_;
};

}  // namespace qs
