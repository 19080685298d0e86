// What the tests of phases share: a collection of compounds that only has a number, and short ways to read phases.
#pragma once

#include <vector>

#include "com/variant.h"
#include "tests/support/compounds.h"
#include "tests/support/host_object.h"

namespace qs::test {

class CountedCompounds final : public HostObject<ICompoundCollection> {
 public:
  explicit CountedCompounds(INT number) : count(number) {}
  STDMETHODIMP get_Compound(INT, IDispatch**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP put_Compound(INT, IDispatch*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP get_NumberOfCompounds(INT* value) noexcept override {
    *value = count;
    return result;
  }
  STDMETHODIMP put_NumberOfCompounds(INT) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP AddCompound(IDispatch*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP get_InteractionParameters(BSTR, IDispatch**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Reset() noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetBasicCompound(INT, IBasicCompound**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetOffsetH(IRealArrayDisp**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP PutOffsetH(IRealArrayDisp*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetOffsetS(IRealArrayDisp**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP PutOffsetS(IRealArrayDisp*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP AddCompoundFromLoader(BSTR, BSTR, BSTR, BYTE) noexcept override { return E_NOTIMPL; }

  INT count;
  HRESULT result = S_OK;
};

// A phase of another implementation that only has values, each 1. After `reads` of them reading fails, as resets do.
class HostPhase final : public HostObject<IBasicPhase> {
 public:
  explicit HostPhase(int reads) : reads_(reads) {}
#define QS_UNUSED(name, type)                                            \
  STDMETHODIMP get_##name(type*) noexcept override { return E_NOTIMPL; } \
  STDMETHODIMP put_##name(type) noexcept override { return E_NOTIMPL; }
#define PHASE_ENUMERATION(name, type)                                            \
  STDMETHODIMP get_##name(type* value) noexcept override { return give(value); } \
  STDMETHODIMP put_##name(type) noexcept override { return E_NOTIMPL; }
#define PHASE_REAL(name) PHASE_ENUMERATION(name, double)
#include "phase/properties.def"
  QS_UNUSED(MassComposition, IDispatch*)
  QS_UNUSED(MolarCompositionDisp, IRealArrayDisp*)
  QS_UNUSED(LnFugacity, IRealArrayDisp*)
  QS_UNUSED(LnFugacityCoeff, IRealArrayDisp*)
  QS_UNUSED(IsPseudoRoot, BYTE)
#undef QS_UNUSED
  STDMETHODIMP get_MolarComposition(IDispatch**) noexcept override { return S_OK; }
  STDMETHODIMP put_MolarComposition(IDispatch*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP Finalize(IDispatch*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP get_NumberOfCompounds(INT*) noexcept override { return S_FALSE; }
  STDMETHODIMP get_Compounds(IDispatch**) noexcept override { return S_FALSE; }
  STDMETHODIMP ResetProperties(DWORD) noexcept override { return kFailure; }
  STDMETHODIMP IsActivePhase(VARIANT_BOOL*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP CopyProperties(IDispatch*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetCompounds(ICompoundCollection**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetLnFugacity(IRealArrayDisp**) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetLnFugacityCoeff(IRealArrayDisp**) noexcept override { return E_NOTIMPL; }
  static constexpr auto kFailure = static_cast<HRESULT>(0x80040D01);

 private:
  template <class T>
  HRESULT give(T* value) {
    if (reads_-- <= 0) return kFailure;
    *value = static_cast<T>(1);
    return S_OK;
  }

  int reads_;
};

// Numbers names 100, 101, ... and refuses from a given one on.
class NumberingRegistry final : public HostObject<IEnumeratedPropertyRegistry> {
 public:
  explicit NumberingRegistry(std::size_t accepted = 32) : accepted_(accepted) {}
  STDMETHODIMP GetNumberOfProperties(LONG*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP GetPropertyName(LONG, BSTR*) noexcept override { return E_NOTIMPL; }
  STDMETHODIMP RegisterProperty(BSTR name, LONG* number) noexcept override {
    if (names.size() == accepted_) return kRefused;
    names.emplace_back(viewOf(name));
    *number = 99 + static_cast<LONG>(names.size());
    return S_OK;
  }
  static constexpr auto kRefused = static_cast<HRESULT>(0x80070005);

  std::vector<WideString> names;

 private:
  std::size_t accepted_;
};

using Reals = std::vector<double>;

class PhaseTest : public CompoundTest {
 protected:
  static constexpr double kUnset = -32767.0;

  static ComPtr<IBasicPhase> newPhase() { return create<IBasicPhase>(__uuidof(::COQSPhase)); }
  static ComPtr<IDispatch> newRegistry() { return create<IDispatch>(__uuidof(::PropertyRegistry)); }

  static Reals realsIn(IUnknown* object) {
    const auto array = ComPtr<IRealArrayDisp>::from(object);
    EXPECT_TRUE(array);
    LONG size = 0;
    EXPECT_EQ(array->get_Size(&size), S_OK);
    Reals values(static_cast<std::size_t>(size));
    for (LONG i = 0; i < size; ++i) EXPECT_EQ(array->get_IthValue(i, &values[static_cast<std::size_t>(i)]), S_OK);
    return values;
  }
  static Reals compositionOf(const ComPtr<IBasicPhase>& phase) {
    IRealArrayDisp* lent = nullptr;
    EXPECT_EQ(phase->get_MolarCompositionDisp(&lent), S_OK);
    return realsIn(lent);
  }
  static INT numberOfCompounds(const ComPtr<IBasicPhase>& phase) {
    INT count = -1;
    phase->get_NumberOfCompounds(&count);
    return count;
  }
};

using RealGetter = HRESULT (STDMETHODCALLTYPE IBasicPhase::*)(double*);
using RealSetter = HRESULT (STDMETHODCALLTYPE IBasicPhase::*)(double);

// The reals of a phase: the place of their names in the registration, and the bits of a reset's settings that keep
// them; a real without one is always reset.
struct RealProperty {
  const OLECHAR* name;
  LONG place;
  DWORD keptBy;
  RealGetter get;
  RealSetter put;
};
#define QS_REAL(name, place, keptBy) \
  { OLESTR(#name), place, keptBy, &IBasicPhase::get_##name, &IBasicPhase::put_##name }
inline constexpr RealProperty kRealProperties[] = {
    QS_REAL(PhaseFraction, 2, 0x84), QS_REAL(PhaseMassFraction, 3, 0x4),
    QS_REAL(Pressure, 4, 0x8),       QS_REAL(Temperature, 5, 0x10),
    QS_REAL(Homotopy, 6, 0),         QS_REAL(Enthalpy, 7, 0x40),
    QS_REAL(Entropy, 8, 0x20),       QS_REAL(Cp, 9, 0),
    QS_REAL(MolarVolume, 10, 0),     QS_REAL(MolecularWeight, 11, 0),
};
#undef QS_REAL

}  // namespace qs::test
