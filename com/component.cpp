#include "com/component.h"

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "interfaces/interfaces.h"

namespace qs {

HRESULT because(IUnknown* component, HRESULT result, TextParts words) noexcept {
  return because(component, result, words, result);
}

HRESULT because(IUnknown* component, HRESULT result, TextParts words, HRESULT returned) noexcept {
  LONG known = S_OK;
  Bstr member, text;
  const HRESULT asked = contained([&] {
    const auto speaker = ComPtr<ILastError>::from(component);
    return speaker ? speaker->GetLastError(&known, member.out(), text.out()) : S_FALSE;
  });
  because(returned, words);
  if (asked == S_OK && known == result) return also(returned, {": ", member.get(), ": ", text.get()});
  return also(returned, {": ", Meaning{result}});
}

void fail(IUnknown* component, HRESULT result, TextParts words) {
  throw CQSCOMError(because(component, result, words));
}

}  // namespace qs
