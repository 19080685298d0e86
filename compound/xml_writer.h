// Writes the parts of a compound as XML; docs/xml.md describes the text.
#pragma once

#include "compound/content.h"
#include "xml/text.h"

namespace qs {

// Appends the Compound element. Throws CQSCOMError: E_INVALIDARG for data that the form cannot hold, and what a
// component fails with that is asked for its content.
void writeCompound(XmlText& text, const CompoundContent& content);

}  // namespace qs
