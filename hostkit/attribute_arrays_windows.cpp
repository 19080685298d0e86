// Attributes as arrays: tags and values in turn.
#include "com/locked_array.h"
#include "com/variant.h"
#include "hostkit/attribute_set.h"

namespace qs::hostkit {
namespace {

SAFEARRAY* arrayIn(VARIANT& variant) {
  VARIANT* inner = V_VT(&variant) == (VT_BYREF | VT_VARIANT) ? V_VARIANTREF(&variant) : &variant;
  if (!inner || (V_VT(inner) & VT_ARRAY) == 0) return nullptr;
  const bool referred = (V_VT(inner) & VT_BYREF) != 0;
  if (referred && !V_ARRAYREF(inner)) return nullptr;
  SAFEARRAY* array = referred ? *V_ARRAYREF(inner) : V_ARRAY(inner);
  return array && SafeArrayGetDim(array) == 1 ? array : nullptr;
}

WideString textOf(const VARIANT& variant) {
  const Variant text = Variant::converted(variant, VT_BSTR);
  return WideString(viewOf(V_BSTR(&text.get())));
}

}  // namespace

HRESULT AttributeSet::AddMultiple(VARIANT attributes) noexcept {
  return guarded([&] {
    SAFEARRAY* array = arrayIn(attributes);
    VARTYPE type = VT_EMPTY;
    if (!array || FAILED(SafeArrayGetVartype(array, &type)) || (type != VT_BSTR && type != VT_VARIANT))
      return because(E_INVALIDARG, {"the attributes are no array of texts or variants"});
    const LockedArray locked(array);
    if (locked.extent(1) % 2 != 0) return because(E_INVALIDARG, {"the last attribute has no value"});
    std::vector<WideString> texts;
    for (std::size_t i = 0; i < locked.extent(1); ++i)
      texts.push_back(type == VT_BSTR ? WideString(viewOf(*static_cast<BSTR*>(locked.element(i))))
                                      : textOf(*static_cast<VARIANT*>(locked.element(i))));
    own();
    // Once there is room nothing can fail.
    attributes_.reserve(attributes_.size() + texts.size() / 2);
    for (std::size_t i = 0; i < texts.size(); i += 2) add(std::move(texts[i]), std::move(texts[i + 1]));
    return S_OK;
  });
}

HRESULT AttributeSet::GetMultiple(VARIANT* attributes) noexcept {
  if (!attributes) return report(E_POINTER);
  VariantInit(attributes);
  if (const HRESULT owned = guarded([&] { return own(), S_OK; }); FAILED(owned)) return owned;
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(2 * attributes_.size()));
  if (!array) return report(E_OUTOFMEMORY);
  const HRESULT filled = guarded([&] {
    const LockedArray locked(array);
    auto* element = static_cast<VARIANT*>(locked.element(0));
    for (const auto& [tag, value] : attributes_)
      for (const WideString* text : {&tag, &value}) {
        V_BSTR(element) = Bstr(*text).release();
        V_VT(element) = VT_BSTR;
        ++element;
      }
    return S_OK;
  });
  if (FAILED(filled)) {
    SafeArrayDestroy(array);
    return filled;
  }
  V_VT(attributes) = VT_ARRAY | VT_VARIANT;
  V_ARRAY(attributes) = array;
  return S_OK;
}

}  // namespace qs::hostkit
