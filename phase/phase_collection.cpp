#include "phase/phase_collection.h"

#include <algorithm>
#include <utility>

#include "automation/enumerator.h"
#include "automation/script_values.h"
#include "com/component.h"
#include "com/query.h"

namespace qs {
namespace {

constexpr INT kMostEquilibriumPhases = 9;
constexpr INT kMostFeeds = 10;
constexpr double kNotConverged = 1e20;

[[noreturn]] void noPhase(tagPhaseTypeEnum type, INT index) {
  fail(E_FAIL, {"there is no phase ", index, " of the type ", type});
}

HRESULT noEquilibriumPhase(INT index) noexcept { return because(E_FAIL, {"there is no equilibrium phase ", index}); }

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
  const HRESULT found =
      CoGetClassObject(__uuidof(::COQSPhase), CLSCTX_ALL, nullptr, __uuidof(IClassFactory), factory.outAny());
  if (FAILED(found) || !factory) fail(FAILED(found) ? found : E_FAIL, {"the class of phases: ", Meaning{found}});
  const auto registry = registry_;
  const auto feedSection = static_cast<std::size_t>(layout.feedSection);
  for (std::size_t slot = 0; slot < phases.size(); ++slot) {
    ComPtr<IBasicPhase>& phase = phases[slot];
    const HRESULT made = factory->CreateInstance(nullptr, __uuidof(IBasicPhase), phase.outAny());
    if (FAILED(made)) throw CQSCOMError(passOn(made));
    if (!phase) fail(E_FAIL, {"the class of phases makes none"});
    const auto did = [&](HRESULT result) { check(phase.get(), result, {"the phase in slot ", slot}); };
    if (registry) did(required<IRegisterableObject>(phase.get(), "phase")->RegisterProperties(registry.get()));
    did(phase->Finalize(compounds));
    if (slot < feedSection) did(phase->put_PhaseType(xptFeed));
    if (slot == phases.size() - 1) did(phase->put_PhaseType(xptUserType));
  }
}

HRESULT COQSPhaseCollection::Finalize(IDispatch* compounds, INT equilibriumPhases, INT feeds) noexcept {
  return guarded([&] {
    if (equilibriumPhases < 0 || equilibriumPhases > kMostEquilibriumPhases)
      return because(E_FAIL, {equilibriumPhases, " equilibrium phases are not from 0 to ", kMostEquilibriumPhases});
    if (feeds < 0 || feeds > kMostFeeds) return because(E_FAIL, {feeds, " feeds are not from 0 to ", kMostFeeds});
    const Layout layout{feeds, feeds < 2 ? 1 : feeds + 1, equilibriumPhases};

    layout_ = Layout();
    equilibriumCount_ = 0;
    Phases().swap(phases_);
    overall_ = ComPtr<IBasicPhase>();

    Phases phases(static_cast<std::size_t>(layout.feedSection + layout.equilibrium + 1));
    const HRESULT made = contained([&] {
      makePhases(compounds, layout, phases);
      return S_OK;
    });
    phases_.swap(phases);
    layout_ = layout;
    check(made);

    const auto overall = phases_[0];
    overall_ = overall;
    if (feeds > 1) check(overall.get(), overall->put_PhaseType(xptOverall), {"the overall phase"});
    compounds_ = required<ICompoundCollection>(compounds, "collection of compounds");
    if (const HRESULT reset = ResetCollection(0); FAILED(reset)) return passOn(reset);
    return S_OK;
  });
}

HRESULT COQSPhaseCollection::get_Compounds(IDispatch** compounds) noexcept {
  if (!compounds) return report(E_POINTER);
  *compounds = ComPtr(compounds_).release();
  return *compounds ? S_OK : S_FALSE;
}

HRESULT COQSPhaseCollection::get_MaximumNumberOfEquilibriumPhases(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = layout_.equilibrium;
  return S_OK;
}

HRESULT COQSPhaseCollection::PutFeedComposition(IDispatch* array, INT feed) noexcept {
  if (feed >= layout_.feeds) return S_OK;
  // Position -1 is that of the overall phase.
  const auto slot = static_cast<std::size_t>(layout_.feeds == 1 ? 0 : feed + 1);
  const ComPtr<IBasicPhase> target = slot < phases_.size() ? phases_[slot] : ComPtr<IBasicPhase>();
  if (!target) return report(E_FAIL, {"there is no feed ", feed});
  return guarded([&] {
    const HRESULT put = target->put_MolarComposition(array);
    return FAILED(put) ? because(target.get(), put, {"feed ", feed}) : put;
  });
}

HRESULT COQSPhaseCollection::get_NumberOfFeedPhases(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = layout_.feeds;
  return S_OK;
}

HRESULT COQSPhaseCollection::ResetCollection(DWORD kept) noexcept {
  equilibriumCount_ = 0;
  iteration_ = 0;
  residual_ = kNotConverged;
  return guarded([&] {
    for (INT i = 0; i < layout_.equilibrium; ++i)
      if (const ComPtr<IBasicPhase> phase = equilibriumPhase(i))
        check(phase.get(), phase->ResetProperties(kept), {"equilibrium phase ", i});
    return S_OK;
  });
}

std::size_t COQSPhaseCollection::slotOf(tagPhaseTypeEnum type, INT index) {
  if (type == xptUserType) {
    if (index != 0 || phases_.empty()) noPhase(type, index);
    return phases_.size() - 1;
  }
  INT left = index;
  for (std::size_t slot = 0; slot < phases_.size() && left >= 0; ++slot) {
    const ComPtr<IBasicPhase> phase = phases_[slot];
    if (!phase) continue;
    tagPhaseTypeEnum found{};
    check(phase.get(), phase->get_PhaseType(&found), {"the phase in slot ", slot});
    if (found == type && left-- == 0) return slot;
  }
  noPhase(type, index);
}

HRESULT COQSPhaseCollection::LocatePhase(tagPhaseTypeEnum type, INT index, IBasicPhase** phase) noexcept {
  if (!phase) return report(E_POINTER);
  *phase = nullptr;
  return guarded([&] {
    if (type == xptOverall) {
      *phase = ComPtr(overall_).release();
    } else if (const std::size_t slot = slotOf(type, index); slot < phases_.size()) {
      *phase = ComPtr(phases_[slot]).release();
    }
    if (!*phase) noPhase(type, index);
    return S_OK;
  });
}

HRESULT COQSPhaseCollection::LocateEqmPhaseIndex(tagPhaseTypeEnum type, INT index, INT* equilibriumIndex) noexcept {
  if (!equilibriumIndex) return report(E_POINTER);
  return guarded([&] {
    if (type == xptOverall && !overall_) noPhase(type, index);
    const INT slot = type == xptOverall ? 0 : static_cast<INT>(slotOf(type, index));
    *equilibriumIndex = slot - layout_.feedSection;
    return S_OK;
  });
}

HRESULT COQSPhaseCollection::get_NumberOfEquilibriumPhases(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = equilibriumCount_;
  return S_OK;
}

HRESULT COQSPhaseCollection::put_NumberOfEquilibriumPhases(INT count) noexcept {
  if (count < 0 || count > layout_.equilibrium)
    return report(E_FAIL, {count, " equilibrium phases are not from 0 to ", layout_.equilibrium});
  equilibriumCount_ = count;
  return S_OK;
}

HRESULT COQSPhaseCollection::GetEquilibriumPhase(INT index, IBasicPhase** phase) noexcept {
  if (!phase) return report(E_POINTER);
  *phase = isEquilibriumIndex(index) ? ComPtr(equilibriumPhase(index)).release() : nullptr;
  return *phase ? S_OK : report(noEquilibriumPhase(index));
}

HRESULT COQSPhaseCollection::get_NumberOfActivePhases(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = 0;
  return guarded([&] {
    return forEachPhase([count](IBasicPhase* phase) {
      tagPhaseStatusEnum status{};
      const HRESULT read = phase->get_PhaseStatus(&status);
      if (SUCCEEDED(read) && status == xpsActivePhase) ++*count;
      return FAILED(read) ? because(phase, read, {"the status of a phase"}) : read;
    });
  });
}

HRESULT COQSPhaseCollection::GetActivePhase(INT index, IBasicPhase** phase) noexcept {
  if (!phase) return report(E_POINTER);
  *phase = nullptr;
  if (index < 0) return S_FALSE;
  for (std::size_t slot = 0; slot < phases_.size(); ++slot) {
    ComPtr<IBasicPhase> candidate = phases_[slot];
    tagPhaseStatusEnum status{};
    if (!candidate || FAILED(contained([&] { return candidate->get_PhaseStatus(&status); }))) continue;
    if (status != xpsActivePhase || index-- > 0) continue;
    *phase = candidate.release();
    return S_OK;
  }
  return S_FALSE;
}

HRESULT COQSPhaseCollection::ApplyActor(IDispatch* actor) noexcept {
  return guarded([&] {
    const auto found = required<IPhaseCollectionActor>(actor, "actor");
    return forEachPhase([&](IBasicPhase* phase) {
      const HRESULT acted = found->Act(phase);
      return FAILED(acted) ? because(found.get(), acted, {"the actor"}) : acted;
    });
  });
}

HRESULT COQSPhaseCollection::RelocatePhaseAfter(INT afterThis, INT target) noexcept {
  if (!isEquilibriumIndex(target) || !equilibriumPhase(target)) return report(noEquilibriumPhase(target));
  if (afterThis != -1 && !isEquilibriumIndex(afterThis)) return report(noEquilibriumPhase(afterThis));
  const auto at = [&](INT index) { return phases_.begin() + layout_.feedSection + index; };
  if (target < afterThis)
    std::rotate(at(target), at(target + 1), at(afterThis + 1));
  else if (target > afterThis)
    std::rotate(at(afterThis + 1), at(target), at(target + 1));
  return S_OK;
}

HRESULT COQSPhaseCollection::SwapEquilibriumPhases(INT first, INT second) noexcept {
  for (const INT index : {first, second})
    if (!isEquilibriumIndex(index)) return report(noEquilibriumPhase(index));
  std::swap(equilibriumPhase(first), equilibriumPhase(second));
  return S_OK;
}

HRESULT COQSPhaseCollection::RegisterProperties(IDispatch* registry) noexcept {
  return guarded([&] {
    registry_ = ComPtr<IEnumeratedPropertyRegistry>();
    registry_ = required<IEnumeratedPropertyRegistry>(registry, "registry of properties");
    check(forEachPhase([&](IBasicPhase* phase) {
      const HRESULT registered = required<IRegisterableObject>(phase, "phase")->RegisterProperties(registry);
      return FAILED(registered) ? because(phase, registered, {"a phase"}) : registered;
    }));
    return S_OK;
  });
}

HRESULT COQSPhaseCollection::ReplaceEquilibriumPhase(INT index, IDispatch* phase) noexcept {
  if (!isEquilibriumIndex(index)) return report(noEquilibriumPhase(index));
  if (!phase) return report(E_FAIL, {"the new phase is null"});
  // Releasing a phase or querying the new one may call back and change the slots.
  equilibriumPhase(index) = ComPtr<IBasicPhase>();
  return guarded([&] {
    auto replacement = ComPtr<IBasicPhase>::from(phase);
    if (!replacement) return because(E_FAIL, {"the object is no phase"});
    if (!isEquilibriumIndex(index)) return noEquilibriumPhase(index);
    equilibriumPhase(index) = std::move(replacement);
    return S_OK;
  });
}

HRESULT COQSPhaseCollection::get_Item(VARIANT position, IDispatch** phase) noexcept {
  if (!phase) return report(E_POINTER);
  *phase = nullptr;
  return guarded([&] {
    const auto slot = positionFrom(position);
    if (!slot || static_cast<std::size_t>(*slot) >= phases_.size()) return S_FALSE;
    *phase = ComPtr<IBasicPhase>(phases_[static_cast<std::size_t>(*slot)]).release();
    return *phase ? S_OK : S_FALSE;
  });
}

HRESULT COQSPhaseCollection::get_Count(LONG* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = static_cast<LONG>(phases_.size());
  return S_OK;
}

HRESULT COQSPhaseCollection::get__NewEnum(IUnknown** enumerator) noexcept {
  return newEnumerator(ItemsOf{ComPtr<IItems>(this)}, enumerator);
}

}  // namespace qs
