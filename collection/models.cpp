// Interaction-parameter models by name.
#include <utility>

#include "collection/collection.h"

namespace qs {
namespace {

WideView modelName(BSTR name) { return name ? viewOf(name) : WideView(OLESTR("Default")); }

}  // namespace

HRESULT COQSCompoundCollection::get_InteractionParameters(BSTR model, IDispatch** parameters) noexcept {
  if (!parameters) return E_POINTER;
  *parameters = nullptr;
  const auto found = state_.models.find(modelName(model));
  if (found == state_.models.end()) return S_FALSE;
  *parameters = ComPtr(found->second.parameters).release();
  return S_OK;
}

HRESULT COQSCompoundCollection::put_InteractionParameters(BSTR model, IDispatch* parameters) noexcept {
  if (!parameters) return E_INVALIDARG;
  return guarded([&] {
    ComPtr<IInteractionParameters> queried;
    const HRESULT result =
        parameters->QueryInterface(__uuidof(IInteractionParameters), reinterpret_cast<void**>(queried.out()));
    if (SUCCEEDED(result)) state_.models[WideString(modelName(model))].parameters = std::move(queried);
    return result;
  });
}

HRESULT COQSCompoundCollection::SetPane(BSTR model, BSTR pane) noexcept {
  return guarded([&] {
    const auto found = state_.models.find(modelName(model));
    if (found == state_.models.end()) return S_FALSE;
    found->second.pane = Bstr::copyOf(pane);
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::CompCollnIPInfo(INT model, INT* number, BSTR* name, BSTR* pane) noexcept {
  if (!number || !name || !pane) return E_POINTER;
  *name = *pane = nullptr;
  return guarded([&] {
    *number = static_cast<INT>(state_.models.size());
    if (model < 0 || model >= *number) return S_FALSE;
    const auto& [key, entry] = *std::next(state_.models.begin(), model);
    Bstr nameCopy(key);
    *pane = Bstr::copyOf(entry.pane.get()).release();
    *name = nameCopy.release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::AddLastCompoundLoadIPs(IDispatch* compound, BSTR directory) noexcept {
  return guarded([&] {
    // The models as they are now, whatever their calls do.
    std::vector<ComPtr<IInteractionParameters>> models;
    for (const auto& [name, model] : state_.models) models.push_back(model.parameters);

    // What adding may lengthen: this collection and, behind a view, its parents.
    std::vector<std::pair<ComPtr<ICompoundCollection>, INT>> lengths;
    for (ComPtr<ICompoundCollection> list(this); list;) {
      INT length = 0;
      check(list->get_NumberOfCompounds(&length));
      ComPtr<ICompoundCollection> parent;
      check(ComPtr<ISubCompList>::from(list.get())->GetParent(parent.out()));
      lengths.emplace_back(std::exchange(list, std::move(parent)), length);
    }

    const HRESULT added = AddCompound(compound);
    if (added != S_OK) return added;
    for (const auto& model : models) {
      const auto loading = ComPtr<ILoadInteractionParameters>::from(model.get());
      if (!loading) continue;
      const HRESULT loaded = loading->LoadLastCompound(static_cast<ICompoundCollection*>(this), directory);
      if (SUCCEEDED(loaded)) continue;
      for (const auto& [list, length] : lengths) {
        INT now = 0;
        list->get_NumberOfCompounds(&now);
        if (now == length + 1) list->put_NumberOfCompounds(length);
      }
      return loaded;
    }
    return S_OK;
  });
}

}  // namespace qs
