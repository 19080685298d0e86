// Identification data of a compound.
#pragma once

#include <vector>

#include "com/bstr.h"
#include "com/not_set.h"
#include "props/identity_fields.h"

namespace qs {

struct Identity {
  // Null strings were never set.
#define IDENTITY_TEXT(key, field, interface_name, attribute) Bstr field;
#define IDENTITY_INTEGER(key, field, interface_name, attribute) INT field = kEmptyInteger;
#define IDENTITY_RULED IDENTITY_INTEGER
#include "props/identity.def"

  // The count is what callers set and read; a synonym below it that was never set is null.
  INT synonymCount = kEmptyInteger;
  std::vector<Bstr> synonyms;

  // Position in the host's list of compounds; not set until the compound was loaded or copied.
  INT compoundIndex = kEmptyInteger;

  // UNIFAC groups: type numbers and how often each occurs.
  INT groupCount = kEmptyInteger;
  std::vector<LONG> groupTypes;
  std::vector<LONG> groupCounts;

  // Replaces the synonym at a position, or appends one at the position of the count. S_FALSE, and no change, for any
  // other position and for one past the most that a compound keeps.
  HRESULT putSynonym(INT index, BSTR value);
};

// A string field as the interfaces read and write it: a new copy for the caller, and one of the caller's; null for
// null.
inline HRESULT giveCopy(const Bstr& field, BSTR* value, const char* member = __builtin_FUNCTION()) noexcept {
  if (!value) return report(E_POINTER, {}, member);
  const auto give = [&] {
    *value = Bstr(field).release();
    return S_OK;
  };
  return guarded(give, member);
}
inline HRESULT takeCopy(Bstr& field, BSTR value, const char* member = __builtin_FUNCTION()) noexcept {
  const auto take = [&] {
    field = Bstr::copyOf(value);
    return S_OK;
  };
  return guarded(take, member);
}

// An integer field likewise; the value is written even when it is not known, which is S_FALSE.
inline HRESULT giveInteger(INT field, INT* value, const char* member = __builtin_FUNCTION()) noexcept {
  if (!value) return report(E_POINTER, {}, member);
  *value = field;
  return field == kEmptyInteger ? S_FALSE : S_OK;
}
inline HRESULT takeInteger(INT& field, INT value) noexcept {
  field = value;
  return S_OK;
}

}  // namespace qs
