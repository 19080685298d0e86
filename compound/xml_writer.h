// Writes the parts of a compound as XML; docs/xml.md describes the text.
#pragma once

#include "compound/identity.h"
#include "compound/property_table.h"
#include "compound/user_properties.h"
#include "persist/xml_text.h"

namespace qs {

// Appends the Compound element. Throws CQSCOMError: E_INVALIDARG for data that the form cannot hold, and what a
// component fails with that is asked for its content; that of a property has no content then in the default form.
void writeCompound(XmlText& text, const Identity& identity, const PropertyTable& properties,
                   const UserProperties& userProperties);

}  // namespace qs
