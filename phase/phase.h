// COQSPhase, the state of one phase of a calculation: kind, fractions, conditions, thermal properties, composition and
// fugacities, further values by number, and derivatives. The phase stores what a host calculates and calculates
// nothing.
//
// A getter of a value that is not set writes -32767 and returns S_FALSE; a null out-parameter returns E_POINTER, and
// nothing has changed. The three arrays are the host's own objects, which the phase keeps until it ends. An object
// belongs to its apartment; calls are not synchronised.
#pragma once

#include <map>

#include "automation/coclass.h"
#include "com/variant.h"
#include "phase/derivatives.h"
#include "phase/state.h"

namespace qs {

// Says that a phase lacks the array that a member needs; returns E_FAIL.
inline HRESULT noArray() noexcept { return because(E_FAIL, {"the phase has no array"}); }

// The result of GetPropertyValue for a property that was removed; the value is the one kept.
inline constexpr HRESULT kRemovedProperty = 0x000406DC;

class COQSPhase final : public Coclass<COQSPhase, IBasicPhase, IUserPhaseType, IEnumeratedPropertyContainer,
                                       IRegisterableObject, IDerivativeProp> {
 public:
  ~COQSPhase();
  // Creates the arrays; E_FAIL when the host has no class for them.
  HRESULT finalConstruct() noexcept;

#define PHASE_ENUMERATION(name, type)                                                         \
  STDMETHODIMP get_##name(type* value) noexcept override { return give(state_.name, value); } \
  STDMETHODIMP put_##name(type value) noexcept override { return take(value, state_.name); }
#define PHASE_REAL(name)                                                                        \
  STDMETHODIMP get_##name(double* value) noexcept override { return give(state_.name, value); } \
  STDMETHODIMP put_##name(double value) noexcept override { return take(value, state_.name); }
#include "phase/properties.def"
  STDMETHODIMP get_IsPseudoRoot(BYTE* value) noexcept override;
  STDMETHODIMP put_IsPseudoRoot(BYTE value) noexcept override { return take(value, state_.IsPseudoRoot); }
  STDMETHODIMP get_UserPhaseType(tagPhaseTypeEnum* value) noexcept override { return give(userType_, value); }
  STDMETHODIMP put_UserPhaseType(tagPhaseTypeEnum value) noexcept override { return take(value, userType_); }
  STDMETHODIMP IsActivePhase(VARIANT_BOOL* value) noexcept override;

  // arrays.cpp
  STDMETHODIMP get_MolarComposition(IDispatch** array) noexcept override;
  STDMETHODIMP put_MolarComposition(IDispatch* array) noexcept override;
  STDMETHODIMP get_MassComposition(IDispatch**) noexcept override { return report(E_NOTIMPL); }
  STDMETHODIMP put_MassComposition(IDispatch*) noexcept override { return report(E_NOTIMPL); }
  STDMETHODIMP get_MolarCompositionDisp(IRealArrayDisp** lent) noexcept override;
  STDMETHODIMP put_MolarCompositionDisp(IRealArrayDisp* array) noexcept override;
  STDMETHODIMP get_LnFugacity(IRealArrayDisp** array) noexcept override;
  STDMETHODIMP put_LnFugacity(IRealArrayDisp* array) noexcept override;
  STDMETHODIMP get_LnFugacityCoeff(IRealArrayDisp** array) noexcept override;
  STDMETHODIMP put_LnFugacityCoeff(IRealArrayDisp* array) noexcept override;
  STDMETHODIMP GetLnFugacity(IRealArrayDisp** lent) noexcept override;
  STDMETHODIMP GetLnFugacityCoeff(IRealArrayDisp** lent) noexcept override;

  // phase.cpp
  // Keeps the collection, reads its number of compounds and sizes the arrays. After a failure the steps not reached
  // have changed nothing, and a phase whose arrays could not be sized has no compounds.
  STDMETHODIMP Finalize(IDispatch* compounds) noexcept override;
  STDMETHODIMP get_NumberOfCompounds(INT* count) noexcept override;
  STDMETHODIMP get_Compounds(IDispatch** compounds) noexcept override;
  STDMETHODIMP GetCompounds(ICompoundCollection** compounds) noexcept override;
  STDMETHODIMP ResetProperties(DWORD kept) noexcept override;
  STDMETHODIMP CopyProperties(IDispatch* source) noexcept override;
  // The numbers given before a failure stay.
  STDMETHODIMP RegisterProperties(IDispatch* registry) noexcept override;

  // numbered_properties.cpp
  STDMETHODIMP GetNumberOfProperties(INT* count) noexcept override;
  STDMETHODIMP GetPropertyIDs(INT most, IIntegerArrayDisp** numbers) noexcept override;
  STDMETHODIMP SupportsProperty(LONG number, VARIANT_BOOL* present) noexcept override;
  STDMETHODIMP AddProperty(LONG number, VARIANT value) noexcept override;
  STDMETHODIMP RemoveProperty(LONG number) noexcept override;
  STDMETHODIMP PutPropertyValue(LONG number, VARIANT value) noexcept override;
  STDMETHODIMP GetPropertyValue(LONG number, VARIANT* value) noexcept override;

  // derivatives.cpp
  STDMETHODIMP ClearDerivativesProps() noexcept override;
  STDMETHODIMP AddDerivativeProp(LONG property, LONG derivative, tagResultTypeEnum propertyShape,
                                 tagResultTypeEnum shape, INT* index) noexcept override;
  STDMETHODIMP GetDerivativePropIndex(LONG property, LONG derivative, INT* index) noexcept override;
  STDMETHODIMP RemoveDerivativeProp(INT index, LONG property, LONG derivative) noexcept override;
  STDMETHODIMP GetNumDerivativeProps(INT* count) noexcept override;
  STDMETHODIMP GetDerivativePropIDs(INT index, LONG* property, LONG* derivative) noexcept override;
  STDMETHODIMP SetNeedDerivative(INT index, BYTE needed) noexcept override;
  STDMETHODIMP GetNeedDerivative(INT index, BYTE* needed) noexcept override;
  STDMETHODIMP SetDerivativeStatus(INT index, tagDerivativeStatusEnum status) noexcept override;
  STDMETHODIMP GetDerivativeStatus(INT index, tagDerivativeStatusEnum* status) noexcept override;
  STDMETHODIMP PutPointDerivative(INT index, double value) noexcept override;
  STDMETHODIMP GetPointDerivative(INT index, double* value) noexcept override;
  STDMETHODIMP PutArrayDerivative(INT index, IRealArrayDisp* array) noexcept override;
  STDMETHODIMP GetArrayDerivative(INT index, IRealArrayDisp** array) noexcept override;
  STDMETHODIMP PutMatrixDerivative(INT index, IRealMatrixDisp* matrix) noexcept override;
  STDMETHODIMP GetMatrixDerivative(INT index, IRealMatrixDisp** matrix) noexcept override;
  // Put takes a number in any form that VariantChangeType reads, an object with the array or matrix interface, or an
  // array of numbers, which becomes an object; DISP_E_TYPEMISMATCH for what does not fit the derivative's shape. Get
  // returns a double or an object.
  STDMETHODIMP PutVariantDerivative(INT index, VARIANT value) noexcept override;
  STDMETHODIMP GetVariantDerivative(INT index, VARIANT* value) noexcept override;
  STDMETHODIMP GetResultValueType(INT index, tagResultTypeEnum* propertyShape,
                                  tagResultTypeEnum* shape) noexcept override;
  STDMETHODIMP PutDerivativeType(INT index, tagDerivativeTypeEnum method) noexcept override;
  STDMETHODIMP GetDerivativeType(INT index, tagDerivativeTypeEnum* method) noexcept override;

 private:
  struct FurtherProperty {
    bool removed = false;
    Variant value;
  };

  template <class Stored, class T>
  static HRESULT give(Stored stored, T* value, const char* member = __builtin_FUNCTION()) noexcept {
    if (!value) return report(E_POINTER, {}, member);
    *value = static_cast<T>(stored);
    return stored == kEmptyInteger ? S_FALSE : S_OK;
  }
  template <class T, class Stored>
  static HRESULT take(T value, Stored& stored) noexcept {
    stored = static_cast<Stored>(value);
    return S_OK;
  }

  StandardProperty standardProperty(LONG number) const noexcept;
  HRESULT putStandard(StandardProperty property, const VARIANT& value);
  HRESULT getStandard(StandardProperty property, VARIANT* value);
  bool accepts(LONG number) const noexcept;
  void add(LONG number, Variant value);
  void copyFurtherProperties(IUnknown* source);

  INT indexOf(LONG property, LONG derivative) const noexcept;
  // The record at a position, null outside.
  DerivativeRecord* recordAt(INT index) noexcept;
  // Runs an action on the record at a position; S_FALSE outside.
  template <class Action>
  HRESULT withRecord(INT index, Action&& action) noexcept;
  // An array or matrix of the record at a position: put unless it is null, got when the record's shape is `shape`.
  template <class I>
  HRESULT putObject(INT index, ComPtr<I> DerivativeRecord::*held, I* object) noexcept;
  template <class I>
  HRESULT getObject(INT index, ComPtr<I> DerivativeRecord::*held, tagResultTypeEnum shape, I** object,
                    const char* member = __builtin_FUNCTION()) noexcept;

  PhaseState state_;
  LONG userType_ = kEmptyInteger;
  ComPtr<ICompoundCollection> compounds_;
  INT compoundCount_ = 0;
  RegisteredNumbers numbers_;
  INT propertyCount_ = kStandardCount;
  std::map<LONG, FurtherProperty> further_;
  DerivativeRecords derivatives_;
};

}  // namespace qs
