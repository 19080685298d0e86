#include "hostkit/phases.h"

#include <algorithm>

#include "com/bstr.h"
#include "com/component.h"

namespace qs::hostkit {

HRESULT PropertyRegistry::GetNumberOfProperties(LONG* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = static_cast<LONG>(names_.size());
  return S_OK;
}

HRESULT PropertyRegistry::GetPropertyName(LONG number, BSTR* name) noexcept {
  if (!name) return report(E_POINTER);
  *name = nullptr;
  if (number < 1 || static_cast<std::size_t>(number) > names_.size())
    return report(S_FALSE, {"no name has the number ", number});
  return guarded([&] {
    *name = Bstr(names_[static_cast<std::size_t>(number) - 1]).release();
    return S_OK;
  });
}

HRESULT PropertyRegistry::RegisterProperty(BSTR name, LONG* number) noexcept {
  if (!number) return report(E_POINTER);
  return guarded([&] {
    const auto found = std::ranges::find(names_, viewOf(name));
    const auto position = found - names_.begin();
    if (found == names_.end()) names_.emplace_back(viewOf(name));
    *number = static_cast<LONG>(position) + 1;
    return S_OK;
  });
}

HRESULT PhaseActivator::Act(IBasicPhase* phase) noexcept {
  if (!phase) return report(E_INVALIDARG, {"the phase is null"});
  return guarded([&] {
    const HRESULT put = phase->put_PhaseStatus(xpsActivePhase);
    return FAILED(put) ? because(phase, put, {"the phase"}) : put;
  });
}

}  // namespace qs::hostkit
