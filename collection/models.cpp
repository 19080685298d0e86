// Interaction-parameter models by name.
#include <utility>

#include "collection/collection.h"
#include "com/component.h"

namespace qs {
namespace {

WideView modelName(BSTR name) { return name ? viewOf(name) : WideView(OLESTR("Default")); }

HRESULT noModel(BSTR name) { return because(S_FALSE, {"there is no model \"", modelName(name), "\""}); }

}  // namespace

HRESULT COQSCompoundCollection::get_InteractionParameters(BSTR model, IDispatch** parameters) noexcept {
  if (!parameters) return report(E_POINTER);
  *parameters = nullptr;
  const auto found = state_.models.find(modelName(model));
  if (found == state_.models.end()) return report(noModel(model));
  *parameters = ComPtr(found->second.parameters).release();
  return S_OK;
}

HRESULT COQSCompoundCollection::put_InteractionParameters(BSTR model, IDispatch* parameters) noexcept {
  if (!parameters) return report(E_INVALIDARG, {"the interaction parameters are null"});
  return guarded([&] {
    ComPtr<IInteractionParameters> queried;
    const HRESULT result = queried.query(parameters);
    if (FAILED(result) || !queried)
      return because(FAILED(result) ? result : E_FAIL, {"the object has no interaction parameters"});
    state_.models[WideString(modelName(model))].parameters = std::move(queried);
    return result;
  });
}

HRESULT COQSCompoundCollection::SetPane(BSTR model, BSTR pane) noexcept {
  return guardedLookUp([&] {
    const auto found = state_.models.find(modelName(model));
    if (found == state_.models.end()) return noModel(model);
    found->second.pane = Bstr::copyOf(pane);
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::CompCollnIPInfo(INT model, INT* number, BSTR* name, BSTR* pane) noexcept {
  if (!number || !name || !pane) return report(E_POINTER);
  *name = *pane = nullptr;
  return guarded([&] {
    *number = static_cast<INT>(state_.models.size());
    if (model < 0 || model >= *number) return S_FALSE;
    const auto& [key, entry] = *std::next(state_.models.begin(), model);
    Bstr nameCopy(key);
    *pane = Bstr(entry.pane).release();
    *name = nameCopy.release();
    return S_OK;
  });
}

HRESULT COQSCompoundCollection::AddLastCompoundLoadIPs(IDispatch* compound, BSTR directory) noexcept {
  return guarded([&] {
    // A copy, since their calls may change the models.
    std::vector<std::pair<WideString, ComPtr<IInteractionParameters>>> models;
    for (const auto& [name, model] : state_.models) models.emplace_back(name, model.parameters);

    // What adding may lengthen: this collection and, for a view, its parents.
    struct Lengthened {
      ComPtr<ICompoundCollection> list;
      INT before;
      LONG position;  // of the new entry in the parent; -1 in an own list
    };
    std::vector<Lengthened> lists;
    for (ComPtr<ICompoundCollection> list(this); list; list = implementation(list).state_.parent)
      lists.push_back({list, implementation(list).count(), -1});

    const HRESULT added = AddCompound(compound);
    if (added != S_OK) return passOn(added);
    ComPtr<IBasicCompound> last;
    GetBasicCompound(count() - 1, last.out());
    // A parent that had the compound already was not lengthened.
    std::erase_if(lists, [](const Lengthened& entry) { return implementation(entry.list).count() <= entry.before; });
    for (Lengthened& entry : lists)
      if (const auto& list = implementation(entry.list); list.isView())
        entry.position = list.inParent(list.count() - 1);

    for (const auto& [name, model] : models) {
      const auto loading = ComPtr<ILoadInteractionParameters>::from(model.get());
      if (!loading) continue;
      const HRESULT loaded = loading->LoadLastCompound(static_cast<ICompoundCollection*>(this), directory);
      if (SUCCEEDED(loaded)) continue;
      // From the own list to the view. A model may have moved the entry, or taken it out itself.
      bool parentLost = false;
      for (auto entry = lists.rbegin(); entry != lists.rend(); ++entry) {
        COQSCompoundCollection& list = implementation(entry->list);
        const bool lost = list.count() > entry->before && list.takeOut(last.get(), entry->position);
        if (std::exchange(parentLost, lost) && list.isView())
          for (LONG& position : *list.state_.positions) position -= position > entry->position ? 1 : 0;
      }
      return because(loading.get(), loaded, {"model \"", name, "\", directory \"", directory, "\""});
    }
    return S_OK;
  });
}

bool COQSCompoundCollection::takeOut(IBasicCompound* compound, LONG position) {
  for (INT i = count() - 1; i >= 0; --i)
    if (isView() ? inParent(i) == position : compound && state_.slots.at(i) == compound) {
      MoveCompound(i, count());
      RemoveLastCompound();
      return true;
    }
  return false;
}

}  // namespace qs
