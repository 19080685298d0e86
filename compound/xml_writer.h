// Writes a compound as XML; docs/xml.md describes the text.
#pragma once

#include "compound/content.h"
#include "xml/text.h"

namespace qs {

class CompoundXmlWriter {
 public:
  CompoundXmlWriter(const CompoundContent& content, XmlText& text)
      : content_(content),
        text_(text),
        complete_(text.form().complete()),
        database_(text.form().provenance() ? content.record.openProvenance() : std::nullopt) {}

  // Throws CQSCOMError: E_INVALIDARG for data that the form cannot hold, and the failure of a component that is asked
  // for its content. A component may change the content.
  void write();

 private:
  void openCompound(const Identity& identity);
  void synonyms(const Identity& identity);
  void groups(const Identity& identity);
  void properties(const PropertyTable& table);
  void userProperties(const UserProperties& properties);

  // A line with an attribute of the Compound element; it first ends the line before. A complete text omits a string
  // that is null.
  void attribute(WideView name, const Bstr& value);
  void attribute(WideView name, INT value);
  void nextAttribute(WideView name) { text_ << OLESTR("\" \n            ") << name << OLESTR(" = \""); }

  void emptySlot(Key key);
  // The element named `element` of a property under a name.
  void property(WideView element, WideView name, const CQSAbstractProp& property);
  void openProperty(WideView element, WideView name) {
    text_ << OLESTR("      <") << element << OLESTR(" NAME=\"");
    text_.value(name) << OLESTR("\"   TYPE = \"");
  }
  void source(WideView name, const CQSAbstractProp& property);
  void closeProperty(WideView element) { text_ << OLESTR("      </") << element << OLESTR(">\n"); }
  void className(const CQSAbstractProp& component);
  void content(const CQSAbstractProp& property, LONG kind);
  void componentText(WideView key, const Bstr& className, const Bstr& content);

  const CompoundContent& content_;
  XmlText& text_;
  const bool complete_;
  const std::optional<database::ProvenanceFile> database_;
};

}  // namespace qs
