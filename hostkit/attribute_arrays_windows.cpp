// Attributes as arrays: tags and values in turn.
#include "hostkit/attribute_set.h"

namespace qs::hostkit {
namespace {

// The elements of an array of one dimension, readable while this lives.
class ArrayAccess {
 public:
  explicit ArrayAccess(SAFEARRAY* array) : array_(array) { check(SafeArrayAccessData(array_, &data_)); }
  ArrayAccess(const ArrayAccess&) = delete;
  ArrayAccess& operator=(const ArrayAccess&) = delete;
  ~ArrayAccess() { SafeArrayUnaccessData(array_); }

  std::size_t size() const { return array_->rgsabound[0].cElements; }
  template <class T>
  T* elements() const {
    return static_cast<T*>(data_);
  }

 private:
  SAFEARRAY* array_;
  void* data_ = nullptr;
};

SAFEARRAY* arrayIn(VARIANT& variant) {
  VARIANT* inner = V_VT(&variant) == (VT_BYREF | VT_VARIANT) ? V_VARIANTREF(&variant) : &variant;
  if (!inner || (V_VT(inner) & VT_ARRAY) == 0) return nullptr;
  const bool referred = (V_VT(inner) & VT_BYREF) != 0;
  if (referred && !V_ARRAYREF(inner)) return nullptr;
  SAFEARRAY* array = referred ? *V_ARRAYREF(inner) : V_ARRAY(inner);
  return array && SafeArrayGetDim(array) == 1 ? array : nullptr;
}

WideString textOf(VARIANT& variant) {
  VARIANT text;
  VariantInit(&text);
  check(VariantChangeType(&text, &variant, 0, VT_BSTR));
  return WideString(Bstr::adopt(V_BSTR(&text)).view());
}

}  // namespace

HRESULT AttributeSet::AddMultiple(VARIANT attributes) noexcept {
  return guarded([&] {
    SAFEARRAY* array = arrayIn(attributes);
    VARTYPE type = VT_EMPTY;
    if (!array || FAILED(SafeArrayGetVartype(array, &type)) || (type != VT_BSTR && type != VT_VARIANT))
      return E_INVALIDARG;
    const ArrayAccess access(array);
    if (access.size() % 2 != 0) return E_INVALIDARG;
    std::vector<WideString> texts;
    for (std::size_t i = 0; i < access.size(); ++i)
      texts.push_back(type == VT_BSTR ? WideString(viewOf(access.elements<BSTR>()[i]))
                                      : textOf(access.elements<VARIANT>()[i]));
    // Once there is room nothing can fail.
    attributes_.reserve(attributes_.size() + texts.size() / 2);
    for (std::size_t i = 0; i < texts.size(); i += 2) add(std::move(texts[i]), std::move(texts[i + 1]));
    return S_OK;
  });
}

HRESULT AttributeSet::GetMultiple(VARIANT* attributes) noexcept {
  if (!attributes) return E_POINTER;
  VariantInit(attributes);
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(2 * attributes_.size()));
  if (!array) return E_OUTOFMEMORY;
  const HRESULT filled = guarded([&] {
    const ArrayAccess access(array);
    VARIANT* element = access.elements<VARIANT>();
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
