// The attributes of a PropertySource element.
#pragma once

#include "props/value_source.h"
#include "xml/events.h"

namespace qs {

inline constexpr XmlTag kSourceKind{OLESTR("KIND")};
inline constexpr XmlTag kSourceQuality{OLESTR("QUALITY")};
inline constexpr XmlTag kSourceYear{OLESTR("YEAR")};

// Calls `use` with the attribute and the text for each text of a source.
template <class Source, class Function>
void forEachText(Source& source, Function use) {
  use(XmlTag(OLESTR("TITLE")), source.title);
  use(XmlTag(OLESTR("AUTHORS")), source.authors);
  use(XmlTag(OLESTR("LICENCE")), source.licence);
  use(XmlTag(OLESTR("CHANGES")), source.changes);
  use(XmlTag(OLESTR("UNCERTAINTY")), source.uncertainty);
  use(XmlTag(OLESTR("NOTE")), source.note);
}

}  // namespace qs
