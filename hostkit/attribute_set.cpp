#include "hostkit/attribute_set.h"

#include <algorithm>

namespace qs::hostkit {
namespace {

bool isTag(const char* tag, WideView wanted) {
  const auto byte = [tag](std::size_t i) { return static_cast<unsigned char>(tag[i]); };
  std::size_t i = 0;
  while (i < wanted.size() && byte(i) == wanted[i] && byte(i) != 0 && byte(i) < 0x80) ++i;
  return byte(i) < 0x80 ? i == wanted.size() && byte(i) == 0 : widen(tag) == wanted;
}

Bstr widened(std::string_view text) {
  const auto length = static_cast<UINT>(text.size());
  Bstr wide = Bstr::adopt(length == text.size() ? SysAllocStringLen(nullptr, length) : nullptr);
  if (!wide) throw CQSCOMError(E_OUTOFMEMORY);
  const WideView written(wide.get(), static_cast<std::size_t>(writeWide(text, wide.get()) - wide.get()));
  return written.size() == length ? std::move(wide) : Bstr(written);
}

}  // namespace

void AttributeSet::own() {
  const char* const* shown = std::exchange(shown_, nullptr);
  for (; shown && *shown; shown += 2) add(widen(shown[0]), widen(shown[1]));
}

HRESULT AttributeSet::Add(BSTR tag, BSTR value) noexcept {
  return guarded([&] {
    own();
    add(WideString(viewOf(tag)), WideString(viewOf(value)));
    return S_OK;
  });
}

HRESULT AttributeSet::find(BSTR tag, BSTR* value) noexcept {
  if (!value) return report(E_POINTER);
  *value = nullptr;
  return guardedLookUp([&] {
    const WideView wanted = viewOf(tag);
    for (const char* const* shown = shown_; shown && *shown; shown += 2)
      if (isTag(*shown, wanted)) {
        *value = widened(shown[1]).release();
        return S_OK;
      }
    const auto found = std::find_if(attributes_.begin(), attributes_.end(),
                                    [wanted](const auto& entry) { return entry.first == wanted; });
    if (found == attributes_.end()) return S_FALSE;
    *value = Bstr(found->second).release();
    return S_OK;
  });
}

HRESULT AttributeSet::GetByIndex(INT index, BSTR* tag, BSTR* value) noexcept {
  if (!tag || !value) return report(E_POINTER);
  return guarded([&] {
    own();
    if (index < 0 || static_cast<std::size_t>(index) >= attributes_.size())
      return because(E_BOUNDS, {"position ", index, " is outside ", attributes_.size(), " attributes"});
    const auto& [foundTag, foundValue] = attributes_[static_cast<std::size_t>(index)];
    Bstr tagCopy(foundTag);
    *value = Bstr(foundValue).release();
    *tag = tagCopy.release();
    return S_OK;
  });
}

HRESULT AttributeSet::Size(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  return guarded([&] {
    own();
    *count = static_cast<INT>(attributes_.size());
    return S_OK;
  });
}

}  // namespace qs::hostkit
