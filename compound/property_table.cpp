#include "compound/property_table.h"

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
    forgetLoader(name);
    slots_[static_cast<std::size_t>(*key)] = std::move(prop);
  } else {
    PropertyPtr& entry = others_[WideString(name)];
    forgetLoader(name);
    entry = std::move(prop);
  }
  return S_OK;
}

HRESULT PropertyTable::erase(WideView name, bool fixed) {
  if (fixed) {
    const auto key = findKey(name);
    if (!key || !(*this)[*key]) return S_FALSE;
    slots_[static_cast<std::size_t>(*key)].reset();
  } else {
    const auto found = others_.find(name);
    if (found == others_.end()) return S_FALSE;
    others_.erase(found);
  }
  forgetLoader(name);
  return S_OK;
}

void PropertyTable::clear() { *this = PropertyTable(); }

const Bstr* PropertyTable::loaderOf(WideView name) const {
  const auto found = loaders_.find(name);
  return found == loaders_.end() ? nullptr : &found->second;
}

void PropertyTable::setLoader(WideView name, Bstr loader) {
  if (loader)
    loaders_[WideString(name)] = std::move(loader);
  else
    forgetLoader(name);
}

void PropertyTable::forgetLoader(WideView name) {
  if (const auto found = loaders_.find(name); found != loaders_.end()) loaders_.erase(found);
}

PropertyTable PropertyTable::copy() const {
  PropertyTable result;
  for (std::size_t i = 0; i < slots_.size(); ++i)
    if (slots_[i]) result.slots_[i] = duplicate(*slots_[i]);
  for (const auto& [name, property] : others_) result.others_.emplace(name, property ? duplicate(*property) : nullptr);
  for (const auto& [name, loader] : loaders_) result.loaders_.emplace(name, Bstr::copyOf(loader.get()));
  return result;
}

}  // namespace qs
