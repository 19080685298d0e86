#include "collection/component_registry.h"

#include "com/query.h"

namespace qs {
namespace {

// A loader's description of its data; null when it has none or lacks the method. Throws CQSCOMError.
Bstr identificationOf(IDispatch* component) {
  Bstr text;
  if (const auto loader = implemented<ILoad>(component))
    if (const HRESULT said = loader->Get_DBIdentification(text.out()); said != E_NOTIMPL) check(said);
  return text;
}

}  // namespace

HRESULT CQSLoader::init(BSTR name, BSTR className, IDispatch* component) {
  if (!name || !className || !component) return S_FALSE;
  Bstr newName = Bstr::copyOf(name);
  ClassName = Bstr::copyOf(className);
  Name = std::move(newName);
  object = ComPtr(component);
  return S_OK;
}

HRESULT ComponentRegistry::add(BSTR name, BSTR className, BSTR path, IDispatch* component) {
  if (!name || !component || find(name)) return S_FALSE;
  CQSLoader record;
  record.Name = Bstr::copyOf(name);
  record.Path = Bstr::copyOf(path);
  record.Description = identificationOf(component);
  const HRESULT result = record.init(name, className, component);
  const HRESULT stored = restore(std::move(record));
  return stored == S_OK ? result : stored;
}

HRESULT ComponentRegistry::restore(CQSLoader record) {
  if (!record.Name) return S_FALSE;
  return records_.emplace(WideString(record.Name.view()), std::move(record)).second ? S_OK : S_FALSE;
}

HRESULT ComponentRegistry::addDefault(BSTR name, BSTR className, BSTR path, IDispatch* component) {
  if (!name || !className || find(name)) return S_FALSE;
  ComPtr<IDispatch> created(component);
  if (!component) {
    CLSID clsid;
    check(CLSIDFromString(className, &clsid));
    check(created.create(clsid, CLSCTX_ALL));
  }
  Bstr newDefault = Bstr::copyOf(name);
  const HRESULT result = add(name, className, path, created.get());
  if (result == S_OK) default_ = std::move(newDefault);
  return result;
}

HRESULT ComponentRegistry::remove(BSTR name) {
  if (!find(name)) return S_FALSE;
  if (default_ && default_.view() == viewOf(name)) default_ = Bstr();
  // The component is released after it has left the table.
  const auto removed = records_.extract(records_.find(viewOf(name)));
  return S_OK;
}

HRESULT ComponentRegistry::makeDefault(BSTR name) {
  if (!find(name)) return S_FALSE;
  default_ = Bstr::copyOf(name);
  return S_OK;
}

HRESULT ComponentRegistry::get(BSTR name, IDispatch** component) const {
  *component = nullptr;
  const CQSLoader* record = find(name);
  if (!record || !record->object) return S_FALSE;
  *component = ComPtr(record->object).release();
  return S_OK;
}

HRESULT ComponentRegistry::getDefault(BSTR* name, IDispatch** component) const {
  *name = nullptr;
  *component = nullptr;
  const CQSLoader* record = findDefault();
  if (!record) return S_FALSE;
  *name = Bstr(record->Name).release();
  *component = ComPtr(record->object).release();
  return S_OK;
}

HRESULT ComponentRegistry::getAt(INT index, BSTR* name, IDispatch** component) const {
  *name = nullptr;
  *component = nullptr;
  if (static_cast<UINT>(index) >= records_.size()) return S_FALSE;
  const CQSLoader& record = std::next(records_.begin(), index)->second;
  *name = Bstr(record.Name).release();
  *component = ComPtr(record.object).release();
  return S_OK;
}

const CQSLoader* ComponentRegistry::find(BSTR name) const {
  if (!name) return nullptr;
  const auto found = records_.find(viewOf(name));
  return found == records_.end() ? nullptr : &found->second;
}

}  // namespace qs
