// Builds a compound from the events of an XML parser; docs/xml.md describes the text.
#pragma once

#include <optional>

#include "compound/content.h"
#include "xml/events.h"

namespace qs {

// The state within one Compound element. Nothing is trusted: elements may come in any order and number, and memory
// grows with what arrives, never with a number that the text states.
class CompoundXmlReader {
 public:
  explicit CompoundXmlReader(CompoundContent& content) : content_(content) {}

  // Whether an element is one that a reader reads.
  static bool isRoot(WideView name) { return name == kCompound; }

  // S_OK when all data of the element was used. S_FALSE when the element is skipped, with all that it holds if it is
  // unknown or out of place, and when a property is refused, or is stored without the component that it names. A
  // missing attribute changes nothing. Null attributes are none. Throws CQSCOMError(E_OUTOFMEMORY), of a component too,
  // and what components throw: the content is then partly read.
  HRESULT startElement(WideView name, TaggedAttributes* attributes);

  // Whether the element that ends is the compound itself.
  bool endElement(WideView name);

 private:
  static constexpr WideView kCompound = OLESTR("Compound");

  // Where the reader is: one bit each, since an element may be allowed in several places.
  enum Place : unsigned {
    InNothing = 0x1,
    InCompound = 0x2,
    InSynonyms = 0x4,
    InGroups = 0x8,
    InFixedProperty = 0x10,
    InAdditionProperty = 0x20,
    InEquation = 0x40,
  };
  struct Element {
    WideView name;
    unsigned home;    // the places where it is allowed
    unsigned inside;  // the place that it opens until its end; 0 for none
    HRESULT (CompoundXmlReader::*start)(const XmlAttributes&);
    bool version1Only;
  };
  static const Element kElements[];

  // A property whose content is still to come.
  struct Pending {
    Bstr name;
    bool fixed;
    PropertyPtr property;
    Bstr className;  // of a component
    Bstr loader;     // null for none
    INT coefficients = 0;
    INT arrived = 0;
  };

  HRESULT startCompound(const XmlAttributes& attributes);
  HRESULT startSynonyms(const XmlAttributes& attributes);
  HRESULT addSynonym(const XmlAttributes& attributes);
  HRESULT addUnusedSynonym(const XmlAttributes& attributes);
  HRESULT startGroups(const XmlAttributes& attributes);
  HRESULT addGroup(const XmlAttributes& attributes);
  HRESULT startProperty(const XmlAttributes& attributes);
  HRESULT readSource(const XmlAttributes& attributes);
  HRESULT recallProperty(const XmlAttributes& attributes);
  HRESULT addUserProperty(const XmlAttributes& attributes);
  HRESULT addPoint(const XmlAttributes& attributes);
  HRESULT startEquation(const XmlAttributes& attributes);
  HRESULT addCoefficient(const XmlAttributes& attributes);

  HRESULT skip(WideView name);
  HRESULT store(Pending& pending);

  CompoundContent& content_;

  unsigned place_ = InNothing;
  INT version_ = 0;
  INT synonyms_ = 0;  // read so far
  std::optional<Pending> pending_;

  XmlSpan skipped_;
};

}  // namespace qs
