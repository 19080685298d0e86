// The life of a phase: its arrays, the compounds that they describe, resets and copies.
#include "phase/phase.h"

#include <utility>

#include "com/bstr.h"
#include "com/host_arrays.h"
#include "com/query.h"

namespace qs {
namespace {

ComPtr<IRealArrayDisp> newArray(IClassFactory* factory) {
  ComPtr<IDispatch> created;
  check(factory->CreateInstance(nullptr, __uuidof(IDispatch), created.outAny()));
  return required<IRealArrayDisp>(created.get(), "array of the host");
}

void makeUnset(IRealArrayDisp* array, INT size) {
  if (!array) throw CQSCOMError(noArray());
  setElements(array, size, kEmptyValue);
}

// Makes the first element unset: that element says whether the array is set.
void makeFirstUnset(IRealArrayDisp* array) {
  if (!array) throw CQSCOMError(noArray());
  LONG size = 0;
  checkSize(array, array->get_Size(&size));
  if (size > 0) checkElement(array, array->put_IthValue(0, kEmptyValue), 0);
}

template <class T>
LONG read(IBasicPhase* phase, HRESULT (STDMETHODCALLTYPE IBasicPhase::*getter)(T*)) {
  T value{};
  check(phase, (phase->*getter)(&value), {"the phase to copy"});
  return static_cast<LONG>(value);
}

// What a clear bit of a reset's settings makes unset, beside status, type and composition.
struct ResettableReal {
  DWORD bit;
  double PhaseState::*value;
};
constexpr DWORD kKeepStatus = 0x1, kKeepType = 0x2, kKeepComposition = 0x80;
constexpr ResettableReal kResettableReals[] = {{0x4, &PhaseState::PhaseFraction}, {0x4, &PhaseState::PhaseMassFraction},
                                               {0x8, &PhaseState::Pressure},      {0x10, &PhaseState::Temperature},
                                               {0x20, &PhaseState::Entropy},      {0x40, &PhaseState::Enthalpy},
                                               {0x80, &PhaseState::PhaseFraction}};

}  // namespace

COQSPhase::~COQSPhase() {
  // The last release of a host's object may call back, and may even give this phase something new.
  while (compounds_ || !further_.empty() || !derivatives_.empty() || state_.holdsArrays()) {
    const auto compounds = std::exchange(compounds_, {});
    const auto further = std::exchange(further_, {});
    const auto derivatives = std::exchange(derivatives_, {});
    const auto state = std::exchange(state_, {});
  }
}

HRESULT COQSPhase::finalConstruct() noexcept {
  const HRESULT hr = contained([&] {
    ComPtr<IClassFactory> factory;
    const HRESULT found =
        CoGetClassObject(__uuidof(HostRealArray), CLSCTX_ALL, nullptr, __uuidof(IClassFactory), factory.outAny());
    if (FAILED(found) || !factory) return because(E_FAIL, {"the host's array class: ", Meaning{found}});
#define PHASE_ARRAY(name) state_.name = newArray(factory.get());
#include "phase/properties.def"
    return S_OK;
  });
  return SUCCEEDED(hr) ? S_OK : E_FAIL;
}

HRESULT COQSPhase::get_IsPseudoRoot(BYTE* value) noexcept {
  if (!value) return report(E_POINTER);
  *value = state_.IsPseudoRoot;
  return S_OK;
}

HRESULT COQSPhase::IsActivePhase(VARIANT_BOOL* value) noexcept {
  if (!value) return report(E_POINTER);
  *value = state_.PhaseStatus == xpsActivePhase ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT COQSPhase::Finalize(IDispatch* compounds) noexcept {
  return guarded([&] {
    const auto bound = required<ICompoundCollection>(compounds, "collection of compounds");
    compounds_ = bound;
    INT count = 0;
    check(bound.get(), bound->get_NumberOfCompounds(&count), {"the collection of compounds"});
    checkCount(count);
    compoundCount_ = 0;  // should an array fail, they describe no compounds
#define PHASE_ARRAY(name) makeUnset(state_.name.get(), count);
#include "phase/properties.def"
    compoundCount_ = count;
    return S_OK;
  });
}

HRESULT COQSPhase::get_NumberOfCompounds(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = compounds_ ? compoundCount_ : 0;
  return compounds_ ? S_OK : S_FALSE;
}

HRESULT COQSPhase::get_Compounds(IDispatch** compounds) noexcept {
  if (!compounds) return report(E_POINTER);
  *compounds = nullptr;
  if (!compounds_) return S_FALSE;
  return guarded([&] {
    ComPtr<IDispatch> dispatch;
    const HRESULT queried = dispatch.query(compounds_.get());
    *compounds = dispatch.release();
    return FAILED(queried) ? because(queried, {"the collection of compounds has no dispatch"}) : queried;
  });
}

HRESULT COQSPhase::GetCompounds(ICompoundCollection** compounds) noexcept {
  if (!compounds) return report(E_POINTER);
  *compounds = ComPtr(compounds_).release();
  return *compounds ? S_OK : S_FALSE;
}

HRESULT COQSPhase::ResetProperties(DWORD kept) noexcept {
  return guarded([&] {
    state_.Homotopy = state_.Cp = state_.MolarVolume = state_.MolecularWeight = kEmptyValue;
    for (auto& [number, property] : further_) property.removed = true;
    propertyCount_ = kStandardCount;
    state_.IsPseudoRoot = 0;
    if (compoundCount_ > 0) {
      makeFirstUnset(state_.LnFugacity.get());
      makeFirstUnset(state_.LnFugacityCoeff.get());
    }

    if (!(kept & kKeepStatus)) state_.PhaseStatus = kEmptyInteger;
    if (!(kept & kKeepType)) state_.PhaseType = kEmptyInteger;
    for (const ResettableReal& real : kResettableReals)
      if (!(kept & real.bit)) state_.*real.value = kEmptyValue;
    if (kept & kKeepComposition || compoundCount_ <= 0) return S_OK;
    const auto composition = required<IRealVector>(state_.MolarComposition.get(), "array of the composition");
    for (INT i = 0; i < compoundCount_; ++i)
      checkElement(composition.get(), composition->SetElement(i, kEmptyValue), static_cast<std::size_t>(i));
    return S_OK;
  });
}

HRESULT COQSPhase::CopyProperties(IDispatch* source) noexcept {
  return guarded([&] {
    const auto phase = required<IBasicPhase>(source, "phase to copy");
    const auto got = [&](HRESULT result) { check(phase.get(), result, {"the phase to copy"}); };
    const auto put = [](HRESULT result) {
      if (FAILED(result)) throw CQSCOMError(passOn(result));
    };
#define PHASE_ENUMERATION(name, type) state_.name = read(phase.get(), &IBasicPhase::get_##name);
#define PHASE_REAL(name) got(phase->get_##name(&state_.name));
#include "phase/properties.def"

    ComPtr<IDispatch> compounds;
    const HRESULT given = phase->get_Compounds(compounds.out());
    compounds_ = ComPtr<ICompoundCollection>();  // released even where the new one fails
    got(given);
    if (compounds) compounds_ = required<ICompoundCollection>(compounds.get(), "collection of compounds");
    got(phase->get_NumberOfCompounds(&compoundCount_));

    ComPtr<IDispatch> composition;
    got(phase->get_MolarComposition(composition.out()));
    if (composition) put(put_MolarComposition(composition.get()));

    copyFurtherProperties(source);

    got(phase->get_IsPseudoRoot(&state_.IsPseudoRoot));
    ComPtr<IRealArrayDisp> fugacities;
    got(phase->get_LnFugacity(fugacities.out()));
    put(put_LnFugacity(fugacities.get()));
    got(phase->get_LnFugacityCoeff(fugacities.out()));
    put(put_LnFugacityCoeff(fugacities.get()));
    return S_OK;
  });
}

HRESULT COQSPhase::RegisterProperties(IDispatch* registry) noexcept {
  return guarded([&] {
    const auto names = required<IEnumeratedPropertyRegistry>(registry, "registry of properties");
    for (std::size_t i = 0; i < kRegisteredCount; ++i)
      check(names.get(), names->RegisterProperty(Bstr(kRegisteredNames[i]).get(), &numbers_[i]),
            {"the registry of properties, ", kRegisteredNames[i]});
    return S_OK;
  });
}

}  // namespace qs
