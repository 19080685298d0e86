// COQSPhaseCollection, all phases of one calculation in slots: the feed section (an overall phase and the feeds, or one
// phase that is both), the equilibrium phases, and one phase of the user's own.
//
// A host may replace equilibrium phases by its own, and its objects may call back: a loop holds only the phase that it
// is calling. Slots that a failed call left empty are skipped. A position outside returns E_FAIL; a null
// out-parameter returns E_POINTER, and nothing has changed. An object belongs to its apartment; calls are not
// synchronised.
#pragma once

#include <vector>

#include "automation/coclass.h"
#include "com/com_ptr.h"
#include "phase/state.h"

namespace qs {

class COQSPhaseCollection final : public Coclass<COQSPhaseCollection, IPhaseCollection, IFlashPhaseCollection,
                                                 IRegisterableObject, IReplacePhase, IItems> {
 public:
  ~COQSPhaseCollection();

  STDMETHODIMP Finalize(IDispatch* compounds, INT equilibriumPhases, INT feeds) noexcept override;
  STDMETHODIMP get_Compounds(IDispatch** compounds) noexcept override;
  STDMETHODIMP get_MaximumNumberOfEquilibriumPhases(INT* count) noexcept override;
  STDMETHODIMP PutFeedComposition(IDispatch* array, INT feed) noexcept override;
  STDMETHODIMP get_NumberOfFeedPhases(INT* count) noexcept override;
  STDMETHODIMP ResetCollection(DWORD kept) noexcept override;
  STDMETHODIMP LocatePhase(tagPhaseTypeEnum type, INT index, IBasicPhase** phase) noexcept override;
  STDMETHODIMP get_NumberOfEquilibriumPhases(INT* count) noexcept override;
  STDMETHODIMP put_NumberOfEquilibriumPhases(INT count) noexcept override;
  STDMETHODIMP GetEquilibriumPhase(INT index, IBasicPhase** phase) noexcept override;
  STDMETHODIMP get_NumberOfActivePhases(INT* count) noexcept override;
  STDMETHODIMP GetActivePhase(INT index, IBasicPhase** phase) noexcept override;
  STDMETHODIMP ApplyActor(IDispatch* actor) noexcept override;

  STDMETHODIMP RelocatePhaseAfter(INT afterThis, INT target) noexcept override;
  STDMETHODIMP SwapEquilibriumPhases(INT first, INT second) noexcept override;

  STDMETHODIMP RegisterProperties(IDispatch* registry) noexcept override;

  STDMETHODIMP LocateEqmPhaseIndex(tagPhaseTypeEnum type, INT index, INT* equilibriumIndex) noexcept override;
  STDMETHODIMP ReplaceEquilibriumPhase(INT index, IDispatch* phase) noexcept override;

  // All slots in their order. A position outside and an empty slot return S_FALSE; DISP_E_TYPEMISMATCH for what is no
  // number.
  STDMETHODIMP get_Item(VARIANT position, IDispatch** phase) noexcept override;
  STDMETHODIMP get_Count(LONG* count) noexcept override;
  STDMETHODIMP get__NewEnum(IUnknown** enumerator) noexcept override;

 private:
  using Phases = std::vector<ComPtr<IBasicPhase>>;

  // How many slots each section has.
  struct Layout {
    INT feeds = 0;
    INT feedSection = 0;
    INT equilibrium = 0;
  };

  bool isEquilibriumIndex(INT index) const { return index >= 0 && index < layout_.equilibrium; }
  ComPtr<IBasicPhase>& equilibriumPhase(INT index) {
    return phases_[static_cast<std::size_t>(layout_.feedSection) + static_cast<std::size_t>(index)];
  }
  // Makes the phases of a layout one by one; those made before a failure stay in `phases`.
  void makePhases(IDispatch* compounds, const Layout& layout, Phases& phases);
  // The slot of the phase that LocatePhase finds for any type but the overall phase's. Throws CQSCOMError.
  std::size_t slotOf(tagPhaseTypeEnum type, INT index);
  // Calls an action with each phase in the order of the slots, up to the first failure. Returns the last result, S_OK
  // when there is no phase.
  template <class Action>
  HRESULT forEachPhase(Action&& action);

  ComPtr<IEnumeratedPropertyRegistry> registry_;
  ComPtr<ICompoundCollection> compounds_;
  Phases phases_;
  ComPtr<IBasicPhase> overall_;
  Layout layout_;
  INT equilibriumCount_ = 0;
  // Progress of a calculation; a reset starts it again.
  INT iteration_ = kEmptyInteger;
  double residual_ = 0;
};

}  // namespace qs
