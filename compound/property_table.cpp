#include "compound/property_table.h"

#include <algorithm>

#include "props/curve.h"

namespace qs {
namespace {

PropertyPtr emptyLike(const CQSAbstractProp& source, LONG type) {
  switch (type) {
    case PointProp:
      return std::make_unique<CQSPointProp>();
    case COMProp:
      return std::make_unique<CQSCOMProp>();
    case EquationProp: {
      LONG shape = 0;
      source.GetShape(&shape);
      CQSAbstractProp* equation = nullptr;
      check(CreateEquationProp(shape, &equation));
      return PropertyPtr(equation);
    }
    default:
      return std::make_unique<CQSVoidProp>();
  }
}

}  // namespace

PropertyPtr duplicate(const CQSAbstractProp& source) {
  LONG type = 0;
  source.GetType(&type);
  PropertyPtr copy = emptyLike(source, type);
  copy->SetType(type);
  copy->Copy(&source);
  copy->Loader = Bstr::copyOf(source.Loader.get());
  if (type == COMProp) {
    Bstr className;
    ComPtr<IPCProperty> component;
    if (source.GetCOMClassName(className.out()) == S_OK) copy->SetCOMClassName(className.get());
    if (source.GetCOMObject(component.out()) == S_OK) copy->SetCOMObject(component.get());
    static_cast<CQSCOMProp&>(*copy).keepContent(
        Bstr::copyOf(static_cast<const CQSCOMProp&>(source).keptContent().get()));
  }
  return copy;
}

PropertyTable::Entry PropertyTable::find(WideView name) const {
  if (const auto key = findKey(name)) return {true, true, (*this)[*key]};
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
