#include "compound/property_table.h"

#include <algorithm>

namespace qs {

PropertyTable::Entry PropertyTable::findOther(WideView name) const {
  const auto found = others_.find(name);
  return found == others_.end() ? Entry{} : Entry{true, false, found->second.get()};
}

HRESULT PropertyTable::AddPropertyToMap(WideView name, bool fixed, PropertyPtr& prop) {
  if (fixed) {
    const auto key = findKey(name);
    if (!key) return S_FALSE;
    std::swap(slots_[static_cast<std::size_t>(*key)], prop);
  } else {
    std::swap(others_[WideString(name)], prop);
  }
  return S_OK;
}

HRESULT PropertyTable::erase(WideView name, bool fixed) {
  if (fixed) {
    const auto key = findKey(name);
    if (!key || !(*this)[*key]) return S_FALSE;
    const PropertyPtr old = std::move(slots_[static_cast<std::size_t>(*key)]);
  } else {
    const auto found = others_.find(name);
    if (found == others_.end()) return S_FALSE;
    const auto old = others_.extract(found);
  }
  return S_OK;
}

bool PropertyTable::empty() const {
  return others_.empty() && std::none_of(slots_.begin(), slots_.end(), [](const PropertyPtr& slot) { return !!slot; });
}

PropertyTable PropertyTable::copy() const {
  PropertyTable result;
  for (std::size_t i = 0; i < slots_.size(); ++i)
    if (slots_[i]) result.slots_[i] = duplicate(*slots_[i]);
  for (const auto& [name, property] : others_) result.others_.emplace(name, property ? duplicate(*property) : nullptr);
  return result;
}

}  // namespace qs
