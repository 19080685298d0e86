// The attributes of one XML element, in their order.
//
// Results: S_FALSE and a null string for a tag that is not there, E_BOUNDS for a position outside, E_INVALIDARG for an
// array of another kind, E_POINTER for a null out-parameter, E_OUTOFMEMORY; nothing else is changed then. Of equal tags
// the first is found.
#pragma once

#include <utility>
#include <vector>

#include "automation/coclass.h"
#include "com/bstr.h"

namespace qs::hostkit {

class AttributeSet final : public Coclass<AttributeSet, TaggedAttributes> {
 public:
  STDMETHODIMP Add(BSTR tag, BSTR value) noexcept override;
  STDMETHODIMP find(BSTR tag, BSTR* value) noexcept override;
  STDMETHODIMP GetByIndex(INT index, BSTR* tag, BSTR* value) noexcept override;
  STDMETHODIMP Size(INT* count) noexcept override;

  // Arrays of strings, or of variants that hold strings. E_NOTIMPL on Linux, where variants hold no such arrays.
  STDMETHODIMP AddMultiple(VARIANT attributes) noexcept override;
  STDMETHODIMP GetMultiple(VARIANT* attributes) noexcept override;

  void clear() {
    shown_ = nullptr;
    attributes_.clear();
  }
  void add(WideString tag, WideString value) { attributes_.emplace_back(std::move(tag), std::move(value)); }

  // Makes an empty set show what a parser holds: tags and values in turn up to a null. Nothing is widened but what is
  // asked for. Before the parser goes on, the set must be cleared or own them.
  void show(const char* const* attributes) { shown_ = attributes; }
  void own();

 private:
  const char* const* shown_ = nullptr;
  std::vector<std::pair<WideString, WideString>> attributes_;
};

}  // namespace qs::hostkit
