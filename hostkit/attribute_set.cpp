#include "hostkit/attribute_set.h"

#include <algorithm>

namespace qs::hostkit {

HRESULT AttributeSet::Add(BSTR tag, BSTR value) noexcept {
  return guarded([&] {
    add(WideString(viewOf(tag)), WideString(viewOf(value)));
    return S_OK;
  });
}

HRESULT AttributeSet::find(BSTR tag, BSTR* value) noexcept {
  if (!value) return E_POINTER;
  *value = nullptr;
  return guarded([&] {
    const auto found = std::find_if(attributes_.begin(), attributes_.end(),
                                    [wanted = viewOf(tag)](const auto& entry) { return entry.first == wanted; });
    if (found == attributes_.end()) return S_FALSE;
    *value = Bstr(found->second).release();
    return S_OK;
  });
}

HRESULT AttributeSet::GetByIndex(INT index, BSTR* tag, BSTR* value) noexcept {
  if (!tag || !value) return E_POINTER;
  if (index < 0 || static_cast<std::size_t>(index) >= attributes_.size()) return E_BOUNDS;
  return guarded([&] {
    const auto& [foundTag, foundValue] = attributes_[static_cast<std::size_t>(index)];
    Bstr tagCopy(foundTag);
    *value = Bstr(foundValue).release();
    *tag = tagCopy.release();
    return S_OK;
  });
}

HRESULT AttributeSet::Size(INT* count) noexcept {
  if (!count) return E_POINTER;
  *count = static_cast<INT>(attributes_.size());
  return S_OK;
}

}  // namespace qs::hostkit
