#include "collection/component_registry.h"

#include "com/component.h"
#include "com/query.h"

namespace qs {
namespace {

// A loader's description of its data; null when it has none or lacks the method. Throws CQSCOMError.
Bstr identificationOf(IDispatch* component) {
  Bstr text;
  if (const auto loader = implemented<ILoad>(component))
    if (const HRESULT said = loader->Get_DBIdentification(text.out()); said != E_NOTIMPL)
      check(component, said, {"the loader"});
  return text;
}

HRESULT incomplete() { return because(S_FALSE, {"the name, the class name or the component is null"}); }
HRESULT taken(WideView name) { return because(S_FALSE, {"the name \"", name, "\" is taken"}); }
HRESULT unknown(WideView name) { return because(S_FALSE, {"nothing is registered under the name \"", name, "\""}); }
HRESULT withoutComponent(WideView name) {
  return because(S_FALSE, {"no component is registered under the name \"", name, "\""});
}

}  // namespace

HRESULT CQSLoader::init(BSTR name, BSTR className, IDispatch* component) {
  if (!name || !className || !component) return incomplete();
  Bstr newName = Bstr::copyOf(name);
  ClassName = Bstr::copyOf(className);
  Name = std::move(newName);
  object = ComPtr(component);
  return S_OK;
}

HRESULT ComponentRegistry::add(BSTR name, BSTR className, BSTR path, IDispatch* component) {
  if (!name || !component) return incomplete();
  if (find(name)) return taken(viewOf(name));
  CQSLoader record;
  record.Name = Bstr::copyOf(name);
  record.Path = Bstr::copyOf(path);
  record.Description = identificationOf(component);
  const HRESULT result = record.init(name, className, component);
  const HRESULT stored = restore(std::move(record));
  return stored == S_OK ? result : stored;
}

HRESULT ComponentRegistry::restore(CQSLoader record) {
  if (!record.Name) return incomplete();
  const auto [found, isNew] = records_.try_emplace(WideString(record.Name.view()));
  if (!isNew) return taken(found->first);
  found->second = std::move(record);
  return S_OK;
}

HRESULT ComponentRegistry::addDefault(BSTR name, BSTR className, BSTR path, IDispatch* component) {
  if (!name || !className) return incomplete();
  if (find(name)) return taken(viewOf(name));
  ComPtr<IDispatch> created(component);
  if (!component) {
    CLSID clsid;
    HRESULT made = CLSIDFromString(className, &clsid);
    if (SUCCEEDED(made)) made = created.create(clsid, CLSCTX_ALL);
    if (FAILED(made)) fail(made, {"the class \"", className, "\": ", Meaning{made}});
  }
  Bstr newDefault = Bstr::copyOf(name);
  const HRESULT result = add(name, className, path, created.get());
  if (result == S_OK) default_ = std::move(newDefault);
  return result;
}

HRESULT ComponentRegistry::remove(BSTR name) {
  if (!find(name)) return unknown(viewOf(name));
  if (default_ && default_.view() == viewOf(name)) default_ = Bstr();
  // The component is released after it has left the table.
  const auto removed = records_.extract(records_.find(viewOf(name)));
  return S_OK;
}

HRESULT ComponentRegistry::makeDefault(BSTR name) {
  if (!find(name)) return unknown(viewOf(name));
  default_ = Bstr::copyOf(name);
  return S_OK;
}

HRESULT ComponentRegistry::get(BSTR name, IDispatch** component) const {
  *component = nullptr;
  const CQSLoader* record = find(name);
  if (!record || !record->object) return withoutComponent(viewOf(name));
  *component = ComPtr(record->object).release();
  return S_OK;
}

HRESULT ComponentRegistry::getDefault(BSTR* name, IDispatch** component) const {
  *name = nullptr;
  *component = nullptr;
  const CQSLoader* record = findDefault();
  if (!record) return because(S_FALSE, {"there is no default"});
  *name = Bstr(record->Name).release();
  *component = ComPtr(record->object).release();
  return S_OK;
}

HRESULT ComponentRegistry::getAt(INT index, BSTR* name, IDispatch** component) const {
  *name = nullptr;
  *component = nullptr;
  if (static_cast<UINT>(index) >= records_.size())
    return because(S_FALSE, {"position ", index, " is outside; there are ", records_.size()});
  const CQSLoader& record = std::next(records_.begin(), index)->second;
  *name = Bstr(record.Name).release();
  *component = ComPtr(record.object).release();
  return S_OK;
}

HRESULT ComponentRegistry::noComponent(bool named, BSTR name) {
  return named ? withoutComponent(viewOf(name)) : because(S_FALSE, {"there is no default, or it has no component"});
}

const CQSLoader* ComponentRegistry::find(BSTR name) const {
  if (!name) return nullptr;
  const auto found = records_.find(viewOf(name));
  return found == records_.end() ? nullptr : &found->second;
}

}  // namespace qs
