// External components - loaders or estimators - that a collection knows by name, one of which may be the default.
#pragma once

#include <functional>
#include <map>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/component.h"
#include "com/query.h"
#include "interfaces/interfaces.h"

namespace qs {

// A registered component. Strings are null until set.
struct CQSLoader {
  ComPtr<IDispatch> object;
  Bstr Name;
  Bstr ClassName;
  Bstr Path;
  Bstr Description;  // of a loader: its own description of its data

  // Sets name, class name and object; S_FALSE, and no change, when one of them is null.
  HRESULT init(BSTR name, BSTR className, IDispatch* component);
};

// Names are compared by code unit. For null and unknown names the result is S_FALSE, nothing changes and the
// out-parameters are null. The caller owns what is returned. The methods throw std::bad_alloc and CQSCOMError, and then
// have changed nothing.
class ComponentRegistry {
 public:
  using Records = std::map<WideString, CQSLoader, std::less<>>;  // by name

  const Records& records() const { return records_; }
  INT count() const { return static_cast<INT>(records_.size()); }
  const Bstr& defaultName() const { return default_; }  // null for none

  // S_FALSE when the name or the component is null or the name is taken. Without a class name the record keeps name and
  // path alone, and the result is S_FALSE as well.
  HRESULT add(BSTR name, BSTR className, BSTR path, IDispatch* component);

  // As add, and makes the component the default. Without a component, one of the class named - by its ProgID or its
  // identifier - is created; a failure to do so is returned.
  HRESULT addDefault(BSTR name, BSTR className, BSTR path, IDispatch* component);

  // Adds a record from a text, which may lack its component. S_FALSE when it has no name or the name is taken.
  HRESULT restore(CQSLoader record);

  // Removing the default leaves no default.
  HRESULT remove(BSTR name);
  HRESULT makeDefault(BSTR name);

  HRESULT get(BSTR name, IDispatch** component) const;
  HRESULT getDefault(BSTR* name, IDispatch** component) const;
  // By position in name order, compared as an unsigned number.
  HRESULT getAt(INT index, BSTR* name, IDispatch** component) const;

  // The component of a name, or the default one, and its name: its interface I, after Set_Path with its path. S_FALSE
  // when there is none; the failure of Set_Path. Throws CQSCOMError when the component lacks the interface.
  template <class I>
  HRESULT choose(BSTR name, bool named, Bstr& foundName, ComPtr<I>& found) const {
    const CQSLoader* record = named ? find(name) : findDefault();
    if (!record || !record->object) return noComponent(named, name);
    const ComPtr<IDispatch> object = record->object;
    const Bstr path = record->Path;
    foundName = record->Name;
    found = required<I>(object.get(), "component");
    const HRESULT told = path ? found->Set_Path(path.get()) : S_OK;
    return FAILED(told) ? because(object.get(), told, {"the component \"", foundName.get(), "\""}) : S_OK;
  }

 private:
  static HRESULT noComponent(bool named, BSTR name);
  const CQSLoader* find(BSTR name) const;
  const CQSLoader* findDefault() const { return find(default_.get()); }

  Records records_;
  Bstr default_;
};

}  // namespace qs
