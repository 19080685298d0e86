// The registry of loaders, and filling compounds through them.
#include "collection/collection.h"
#include "collection/compound_filler.h"

namespace qs {

template <class Fill>
HRESULT COQSCompoundCollection::load(INT index, BSTR loader, BSTR searchKey, BSTR id, BYTE useLoader, Fill fill) {
  const ComPtr<IBasicCompound> compound(state_.slots.at(index));
  if (!compound) return because(S_FALSE, {"there is no compound at position ", index});
  Bstr name;
  ComPtr<ILoad> component;
  const HRESULT chosen = state_.loaders.choose(loader, useLoader != 0, name, component);
  if (chosen != S_OK) return chosen;
  const Bstr known = id ? Bstr::copyOf(id) : identityText(compound.get(), viewOf(searchKey));
  if (!known) return because(S_FALSE, {"the compound at position ", index, " has no ", searchKey});

  // The compound itself changes only after the loader has finished.
  return changeAsCopy(compound.get(), [&](IBasicCompound* copy) {
    CompoundFiller filler({component.get(), name.get(), searchKey, known.get()}, copy);
    return fill(filler);
  });
}

HRESULT COQSCompoundCollection::LoadOneCompound(INT index, BSTR loader, BSTR searchKey, BSTR id,
                                                BYTE useLoader) noexcept {
  if (isView()) return forward(&ILoadCompoundProp::LoadOneCompound, inParent(index), loader, searchKey, id, useLoader);
  return guardedLookUp([&] {
    return load(index, loader, searchKey, id, useLoader, [](CompoundFiller& filler) { return filler.fillAll(); });
  });
}

HRESULT COQSCompoundCollection::LoadOneProperty(INT index, BSTR property, BSTR loader, BSTR searchKey, BSTR id,
                                                BYTE useLoader) noexcept {
  if (!property) return report(S_FALSE, {"the name of the property is null"});
  if (isView())
    return forward(&ILoadCompoundProp::LoadOneProperty, inParent(index), property, loader, searchKey, id, useLoader);
  return guardedLookUp([&] {
    return load(index, loader, searchKey, id, useLoader,
                [property](CompoundFiller& filler) { return filler.fillProperty(property); });
  });
}

HRESULT COQSCompoundCollection::LoadAllCompounds(BSTR loader, BSTR searchKey, BYTE useLoader) noexcept {
  HRESULT all = S_OK;
  // A loader may add compounds during the call.
  const INT number = count();
  for (INT i = 0; i < number; ++i) {
    const HRESULT one = LoadOneCompound(i, loader, searchKey, nullptr, useLoader);
    if (FAILED(one)) return report(passOn(one));
    if (one != S_OK) all = passOn(S_FALSE);
  }
  return all == S_OK ? all : report(all);
}

HRESULT COQSCompoundCollection::AddCompoundFromLoader(BSTR searchKey, BSTR id, BSTR loader, BYTE useLoader) noexcept {
  return guardedLookUp([&] {
    if (!id) return because(S_FALSE, {"the identifier of the compound is null"});
    if (isView()) {
      const auto parent = state_.parent;
      const auto positions = state_.positions;
      // Memory first: once the compound is in the parent nothing may fail.
      if (positions->size() == positions->capacity()) positions->reserve(2 * positions->size() + 1);
      const HRESULT added = parent->AddCompoundFromLoader(searchKey, id, loader, useLoader);
      if (added != S_OK) return passOn(added);
      INT number = 0;
      parent->get_NumberOfCompounds(&number);
      positions->push_back(number - 1);
      return S_OK;
    }
    Bstr name;
    ComPtr<ILoad> component;
    const HRESULT chosen = state_.loaders.choose(loader, useLoader != 0, name, component);
    if (chosen != S_OK) return chosen;
    auto compound = newCompound();
    const HRESULT filled = CompoundFiller({component.get(), name.get(), searchKey, id}, compound.get()).fillAll();
    if (filled != S_OK) return filled;
    copyCompound(compound.get(), compound.get(), count());
    state_.slots.append(std::move(compound));
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::SetDefaultLoader(BSTR name, BSTR className, BSTR path, IDispatch* loader) noexcept {
  if (isView()) return forward(&ILoadCompoundProp::SetDefaultLoader, name, className, path, loader);
  return guardedLookUp([&] { return state_.loaders.addDefault(name, className, path, loader); });
}

HRESULT COQSCompoundCollection::AddLoader(BSTR name, BSTR className, BSTR path, IDispatch* loader) noexcept {
  if (!name || !loader) return report(S_FALSE, {"the name or the loader is null"});
  if (isView()) return forward(&ILoadCompoundProp::AddLoader, name, className, path, loader);
  return guardedLookUp([&] { return state_.loaders.add(name, className, path, loader); });
}

HRESULT COQSCompoundCollection::RemoveLoader(BSTR name) noexcept {
  if (isView()) return forward(&ILoadCompoundProp::RemoveLoader, name);
  return guardedLookUp([&] { return state_.loaders.remove(name); });
}

HRESULT COQSCompoundCollection::GetLoader(BSTR name, IDispatch** loader) noexcept {
  if (!loader) return report(E_POINTER);
  if (isView()) return forward(&ILoadCompoundProp::GetLoader, name, loader);
  return guardedLookUp([&] { return state_.loaders.get(name, loader); });
}

HRESULT COQSCompoundCollection::GetDefaultLoader(BSTR* name, IDispatch** loader) noexcept {
  if (!name || !loader) return report(E_POINTER);
  if (isView()) return forward(&ILoadCompoundProp::GetDefaultLoader, name, loader);
  return guardedLookUp([&] { return state_.loaders.getDefault(name, loader); });
}

HRESULT COQSCompoundCollection::GetNumOfLoaders(INT* number) noexcept {
  if (!number) return report(E_POINTER);
  *number = state_.loaders.count();
  return S_OK;
}

HRESULT COQSCompoundCollection::GetLoaderI(INT index, BSTR* name, IDispatch** loader) noexcept {
  if (!name || !loader) return report(E_POINTER);
  if (isView()) return forward(&ILoadCompoundProp::GetLoaderI, index, name, loader);
  return guardedLookUp([&] { return state_.loaders.getAt(index, name, loader); });
}

HRESULT COQSCompoundCollection::SetAsDefaultLoader(BSTR name) noexcept {
  if (isView()) return forward(&ILoadCompoundProp::SetAsDefaultLoader, name);
  return guardedLookUp([&] { return state_.loaders.makeDefault(name); });
}

}  // namespace qs
