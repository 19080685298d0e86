#include "phase/phase_collection.h"

#include <algorithm>
#include <utility>

#include "com/query.h"

namespace qs {
namespace {

constexpr INT kMostEquilibriumPhases = 9;
constexpr INT kMostFeeds = 10;
constexpr double kNotConverged = 1e20;

}  // namespace

COQSPhaseCollection::~COQSPhaseCollection() {
  // The last release of a host's object may call back, and may even make new phases.
  while (registry_ || compounds_ || overall_ || !phases_.empty()) {
    layout_ = Layout();
    const auto registry = std::exchange(registry_, {});
    const auto compounds = std::exchange(compounds_, {});
    const auto overall = std::exchange(overall_, {});
    const auto phases = std::exchange(phases_, {});
  }
}

template <class Action>
HRESULT COQSPhaseCollection::forEachPhase(Action&& action) {
  HRESULT hr = S_OK;
  for (std::size_t slot = 0; slot < phases_.size() && SUCCEEDED(hr); ++slot)
    if (const ComPtr<IBasicPhase> phase = phases_[slot]) hr = action(phase.get());
  return hr;
}

void COQSPhaseCollection::makePhases(IDispatch* compounds, const Layout& layout, Phases& phases) {
  ComPtr<IClassFactory> factory;
  check(CoGetClassObject(__uuidof(::COQSPhase), CLSCTX_ALL, nullptr, __uuidof(IClassFactory), factory.outAny()));
  if (!factory) throw CQSCOMError(E_FAIL);
  const auto registry = registry_;
  const auto feedSection = static_cast<std::size_t>(layout.feedSection);
  for (std::size_t slot = 0; slot < phases.size(); ++slot) {
    ComPtr<IBasicPhase>& phase = phases[slot];
    check(factory->CreateInstance(nullptr, __uuidof(IBasicPhase), phase.outAny()));
    if (!phase) throw CQSCOMError(E_FAIL);
    if (registry) check(required<IRegisterableObject>(phase.get())->RegisterProperties(registry.get()));
    check(phase->Finalize(compounds));
    if (slot < feedSection) check(phase->put_PhaseType(xptFeed));
    if (slot == phases.size() - 1) check(phase->put_PhaseType(xptUserType));
  }
}

HRESULT COQSPhaseCollection::Finalize(IDispatch* compounds, INT equilibriumPhases, INT feeds) noexcept {
  return guarded([&] {
    if (equilibriumPhases < 0 || equilibriumPhases > kMostEquilibriumPhases) return E_FAIL;
    if (feeds < 0 || feeds > kMostFeeds) return E_FAIL;
    const Layout layout{feeds, feeds < 2 ? 1 : feeds + 1, equilibriumPhases};

    layout_ = Layout();
    equilibriumCount_ = 0;
    Phases().swap(phases_);
    overall_ = ComPtr<IBasicPhase>();

    Phases phases(static_cast<std::size_t>(layout.feedSection + layout.equilibrium + 1));
    const HRESULT made = guarded([&] {
      makePhases(compounds, layout, phases);
      return S_OK;
    });
    phases_.swap(phases);
    layout_ = layout;
    check(made);

    const auto overall = phases_[0];
    overall_ = overall;
    if (feeds > 1) check(overall->put_PhaseType(xptOverall));
    compounds_ = required<ICompoundCollection>(compounds);
    check(ResetCollection(0));
    return S_OK;
  });
}

HRESULT COQSPhaseCollection::get_Compounds(IDispatch** compounds) noexcept {
  if (!compounds) return E_POINTER;
  *compounds = ComPtr(compounds_).release();
  return *compounds ? S_OK : S_FALSE;
}

HRESULT COQSPhaseCollection::get_MaximumNumberOfEquilibriumPhases(INT* count) noexcept {
  if (!count) return E_POINTER;
  *count = layout_.equilibrium;
  return S_OK;
}

HRESULT COQSPhaseCollection::PutFeedComposition(IDispatch* array, INT feed) noexcept {
  if (feed >= layout_.feeds) return S_OK;
  // Position -1 is that of the overall phase.
  const auto slot = static_cast<std::size_t>(layout_.feeds == 1 ? 0 : feed + 1);
  const ComPtr<IBasicPhase> target = slot < phases_.size() ? phases_[slot] : ComPtr<IBasicPhase>();
  return target ? target->put_MolarComposition(array) : E_FAIL;
}

HRESULT COQSPhaseCollection::get_NumberOfFeedPhases(INT* count) noexcept {
  if (!count) return E_POINTER;
  *count = layout_.feeds;
  return S_OK;
}

HRESULT COQSPhaseCollection::ResetCollection(DWORD kept) noexcept {
  equilibriumCount_ = 0;
  iteration_ = 0;
  residual_ = kNotConverged;
  for (INT i = 0; i < layout_.equilibrium; ++i)
    if (const ComPtr<IBasicPhase> phase = equilibriumPhase(i))
      if (const HRESULT hr = phase->ResetProperties(kept); FAILED(hr)) return hr;
  return S_OK;
}

std::size_t COQSPhaseCollection::slotOf(tagPhaseTypeEnum type, INT index) {
  if (type == xptUserType) {
    if (index != 0 || phases_.empty()) throw CQSCOMError(E_FAIL);
    return phases_.size() - 1;
  }
  INT left = index;
  for (std::size_t slot = 0; slot < phases_.size() && left >= 0; ++slot) {
    const ComPtr<IBasicPhase> phase = phases_[slot];
    if (!phase) continue;
    tagPhaseTypeEnum found{};
    check(phase->get_PhaseType(&found));
    if (found == type && left-- == 0) return slot;
  }
  throw CQSCOMError(E_FAIL);
}

HRESULT COQSPhaseCollection::LocatePhase(tagPhaseTypeEnum type, INT index, IBasicPhase** phase) noexcept {
  if (!phase) return E_POINTER;
  *phase = nullptr;
  return guarded([&] {
    if (type == xptOverall) {
      *phase = ComPtr(overall_).release();
    } else if (const std::size_t slot = slotOf(type, index); slot < phases_.size()) {
      *phase = ComPtr(phases_[slot]).release();
    }
    return *phase ? S_OK : E_FAIL;
  });
}

HRESULT COQSPhaseCollection::LocateEqmPhaseIndex(tagPhaseTypeEnum type, INT index, INT* equilibriumIndex) noexcept {
  if (!equilibriumIndex) return E_POINTER;
  return guarded([&] {
    if (type == xptOverall && !overall_) return E_FAIL;
    const INT slot = type == xptOverall ? 0 : static_cast<INT>(slotOf(type, index));
    *equilibriumIndex = slot - layout_.feedSection;
    return S_OK;
  });
}

HRESULT COQSPhaseCollection::get_NumberOfEquilibriumPhases(INT* count) noexcept {
  if (!count) return E_POINTER;
  *count = equilibriumCount_;
  return S_OK;
}

HRESULT COQSPhaseCollection::put_NumberOfEquilibriumPhases(INT count) noexcept {
  if (count < 0 || count > layout_.equilibrium) return E_FAIL;
  equilibriumCount_ = count;
  return S_OK;
}

HRESULT COQSPhaseCollection::GetEquilibriumPhase(INT index, IBasicPhase** phase) noexcept {
  if (!phase) return E_POINTER;
  *phase = isEquilibriumIndex(index) ? ComPtr(equilibriumPhase(index)).release() : nullptr;
  return *phase ? S_OK : E_FAIL;
}

HRESULT COQSPhaseCollection::get_NumberOfActivePhases(INT* count) noexcept {
  if (!count) return E_POINTER;
  INT active = 0;
  const HRESULT hr = forEachPhase([&](IBasicPhase* phase) {
    tagPhaseStatusEnum status{};
    const HRESULT read = phase->get_PhaseStatus(&status);
    if (SUCCEEDED(read) && status == xpsActivePhase) ++active;
    return read;
  });
  *count = active;
  return hr;
}

HRESULT COQSPhaseCollection::GetActivePhase(INT index, IBasicPhase** phase) noexcept {
  if (!phase) return E_POINTER;
  *phase = nullptr;
  if (index < 0) return S_FALSE;
  for (std::size_t slot = 0; slot < phases_.size(); ++slot) {
    ComPtr<IBasicPhase> candidate = phases_[slot];
    tagPhaseStatusEnum status{};
    if (!candidate || FAILED(candidate->get_PhaseStatus(&status)) || status != xpsActivePhase || index-- > 0) continue;
    *phase = candidate.release();
    return S_OK;
  }
  return S_FALSE;
}

HRESULT COQSPhaseCollection::ApplyActor(IDispatch* actor) noexcept {
  return guarded([&] {
    const auto found = required<IPhaseCollectionActor>(actor);
    return forEachPhase([&](IBasicPhase* phase) { return found->Act(phase); });
  });
}

HRESULT COQSPhaseCollection::RelocatePhaseAfter(INT afterThis, INT target) noexcept {
  if (!isEquilibriumIndex(target) || !(afterThis == -1 || isEquilibriumIndex(afterThis))) return E_FAIL;
  if (!equilibriumPhase(target)) return E_FAIL;
  const auto at = [&](INT index) { return phases_.begin() + layout_.feedSection + index; };
  if (target < afterThis)
    std::rotate(at(target), at(target + 1), at(afterThis + 1));
  else if (target > afterThis)
    std::rotate(at(afterThis + 1), at(target), at(target + 1));
  return S_OK;
}

HRESULT COQSPhaseCollection::SwapEquilibriumPhases(INT first, INT second) noexcept {
  if (!isEquilibriumIndex(first) || !isEquilibriumIndex(second)) return E_FAIL;
  std::swap(equilibriumPhase(first), equilibriumPhase(second));
  return S_OK;
}

HRESULT COQSPhaseCollection::RegisterProperties(IDispatch* registry) noexcept {
  return guarded([&] {
    registry_ = ComPtr<IEnumeratedPropertyRegistry>();
    registry_ = required<IEnumeratedPropertyRegistry>(registry);
    check(forEachPhase(
        [&](IBasicPhase* phase) { return required<IRegisterableObject>(phase)->RegisterProperties(registry); }));
    return S_OK;
  });
}

HRESULT COQSPhaseCollection::ReplaceEquilibriumPhase(INT index, IDispatch* phase) noexcept {
  if (!isEquilibriumIndex(index) || !phase) return E_FAIL;
  // Releasing a phase or querying the new one may call back and change the slots.
  equilibriumPhase(index) = ComPtr<IBasicPhase>();
  auto replacement = ComPtr<IBasicPhase>::from(phase);
  if (!replacement || !isEquilibriumIndex(index)) return E_FAIL;
  equilibriumPhase(index) = std::move(replacement);
  return S_OK;
}

}  // namespace qs
