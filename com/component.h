// What components say of their failures.
#pragma once

#include "com/error.h"
#include "platform/com_types.h"

namespace qs {

// Says why a component's call did not return S_OK: the words for the component, and what it gives as its own last
// failure (ILastError) when that is of the same result. Returns that result, or the other one that the member returns.
[[gnu::cold]] HRESULT because(IUnknown* component, HRESULT result, TextParts words) noexcept;
[[gnu::cold]] HRESULT because(IUnknown* component, HRESULT result, TextParts words, HRESULT returned) noexcept;

// The same, and throws CQSCOMError.
[[noreturn, gnu::cold]] void fail(IUnknown* component, HRESULT result, TextParts words);

// Throws where the call failed.
inline void check(IUnknown* component, HRESULT result, TextParts words) {
  if (FAILED(result)) fail(component, result, words);
}

}  // namespace qs
