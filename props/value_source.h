// Where a value comes from, as interfaces give and take it.
#pragma once

#include "com/bstr.h"
#include "com/not_set.h"
#include "interfaces/interfaces.h"

namespace qs {

constexpr bool isKind(INT number) { return number >= eKindNotKnown && number <= eKindDecided; }
constexpr bool isQuality(INT number) { return number >= eQualityNotKnown && number <= eQualityDoubtful; }

// Strings are null where nothing is known.
struct ValueSource {
  tagValueKindEnum kind = eKindNotKnown;
  tagValueQualityEnum quality = eQualityNotKnown;
  Bstr title, authors;
  INT year = kEmptyInteger;
  Bstr licence;
  Bstr changes;  // to the published values
  Bstr uncertainty, note;

  bool isKnown() const {
    return kind != eKindNotKnown || quality != eQualityNotKnown || title || authors || year != kEmptyInteger ||
           licence || changes || uncertainty || note;
  }

  // Writes all members: S_OK, or S_FALSE when none is known. E_POINTER, and nothing is written, for a null one.
  HRESULT give(tagValueKindEnum* kindOut, tagValueQualityEnum* qualityOut, BSTR* titleOut, BSTR* authorsOut,
               INT* yearOut, BSTR* licenceOut, BSTR* changesOut, BSTR* uncertaintyOut, BSTR* noteOut) &&;
};

}  // namespace qs
