// What the tests of phases share: a collection of compounds that only has a number, and short ways to read phases.
#pragma once

#include <cmath>
#include <functional>
#include <utility>
#include <vector>

#include "com/variant.h"
#include "tests/support/compounds.h"
#include "tests/support/host_object.h"

namespace qs::test {

struct CountedCompounds : Stub<ICompoundCollection> {
  explicit CountedCompounds(INT number) : count(number) {}
  STDMETHODIMP get_NumberOfCompounds(INT* value) noexcept override {
    *value = count;
    return result;
  }
  INT count;
  HRESULT result = S_OK;
};

// A phase of another implementation that only has values, each 1. After `reads` of them reading fails, as resets do.
class HostPhase : public Stub<IBasicPhase> {
 public:
  explicit HostPhase(int reads) : reads_(reads) {}
#define PHASE_ENUMERATION(name, type) \
  STDMETHODIMP get_##name(type* value) noexcept override { return give(value); }
#define PHASE_REAL(name) PHASE_ENUMERATION(name, double)
#include "phase/properties.def"
  STDMETHODIMP get_MolarComposition(IDispatch**) noexcept override { return S_OK; }
  STDMETHODIMP get_NumberOfCompounds(INT*) noexcept override { return S_FALSE; }
  STDMETHODIMP get_Compounds(IDispatch**) noexcept override { return S_FALSE; }
  STDMETHODIMP ResetProperties(DWORD) noexcept override { return kFailure; }
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
class NumberingRegistry final : public Stub<IEnumeratedPropertyRegistry> {
 public:
  explicit NumberingRegistry(LONG accepted) : accepted_(accepted) {}
  STDMETHODIMP RegisterProperty(BSTR, LONG* number) noexcept override {
    if (names == accepted_) return kRefused;
    *number = 100 + names++;
    return S_OK;
  }
  static constexpr auto kRefused = static_cast<HRESULT>(0x80070005);

  LONG names = 0;

 private:
  LONG accepted_;
};

using Reals = std::vector<double>;
inline constexpr double kUnset = -32767.0;

// Notes every phase: O, F and U for one of type overall, feed and user's, E and the temperature for any other; a star
// for a composition that is set. Fails at a given one.
class Observer final : public Stub<IPhaseCollectionActor> {
 public:
  explicit Observer(int allowed = 100) : allowed_(allowed) {}
  STDMETHODIMP Act(IBasicPhase* phase) noexcept override {
    const auto type = got(ComPtr(phase), &IBasicPhase::get_PhaseType);
    slots += type == xptOverall ? "O" : type == xptFeed ? "F" : type == xptUserType ? "U" : "E";
    if (slots.back() == 'E') slots += std::to_string(std::lround(got(ComPtr(phase), &IBasicPhase::get_Temperature)));
    if (realsIn(got(ComPtr(phase), &IBasicPhase::get_MolarCompositionDisp))[0] != kUnset) slots += '*';
    if (onAct) onAct();
    return ++calls > allowed_ ? kFailure : S_FALSE;
  }
  static constexpr auto kFailure = static_cast<HRESULT>(0x80040C01);

  std::string slots;
  int calls = 0;
  std::function<void()> onAct;

 private:
  int allowed_;
};

class PhaseTest : public CompoundTest {
 public:
  // Equilibrium phases have their index as temperature.
  static ComPtr<IPhaseCollection> phasesOf(IDispatch* compounds, INT equilibrium, INT feeds) {
    const auto phases = create<IPhaseCollection>(__uuidof(::COQSPhaseCollection));
    EXPECT_EQ(phases->Finalize(compounds, equilibrium, feeds), S_OK);
    ComPtr<IBasicPhase> phase;
    for (INT i = 0; phases->GetEquilibriumPhase(i, phase.out()) == S_OK; ++i) phase->put_Temperature(i);
    return phases;
  }
  static std::string slotsOf(const ComPtr<IPhaseCollection>& phases) {
    Observer observer;
    const HRESULT result = phases->ApplyActor(&observer);
    EXPECT_EQ(result, observer.calls > 0 ? S_FALSE : S_OK) << "the actor's last result";
    return observer.slots;
  }
  static ComPtr<IBasicPhase> newPhase() { return create<IBasicPhase>(__uuidof(::COQSPhase)); }
  static Variant text(const OLECHAR* value) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = SysAllocString(value);
    return Variant::adopt(variant);
  }
  // Any other type: its bits, and those that stand before them.
  static Variant typed(VARTYPE type, LONGLONG bits, WORD before = 0) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    variant.wReserved1 = before;
    variant.llVal = bits;
    return Variant::adopt(variant);
  }
  static ComPtr<IDispatch> newRegistry() { return create<IDispatch>(__uuidof(::PropertyRegistry)); }

  static Reals compositionOf(const ComPtr<IBasicPhase>& phase) {
    return realsIn(got(phase, &IBasicPhase::get_MolarCompositionDisp));
  }

  // The number of compounds; type, status, the user's type and the flag; the reals; composition, fugacity coefficients
  // and fugacities. What is not set shows as "-". Every getter must tell so by its result.
  static std::string stateOf(const ComPtr<IBasicPhase>& phase) {
    std::ostringstream text;
    const auto note = [&](double value) { value == kUnset ? text << " -" : text << ' ' << value; };
    const auto read = [&]<class I, class T>(const ComPtr<I>& object, HRESULT (STDMETHODCALLTYPE I::*get)(T*)) {
      T value{};
      const HRESULT result = (object.get()->*get)(&value);
      double number = 0;
      if constexpr (std::is_enum_v<T>)
        number = static_cast<LONG>(value);
      else
        number = value;
      EXPECT_EQ(result, number == kUnset ? S_FALSE : S_OK);
      note(number);
      return value;
    };
    text << got(phase, &IBasicPhase::get_NumberOfCompounds) << ':';
    read(phase, &IBasicPhase::get_PhaseType);
    const auto status = read(phase, &IBasicPhase::get_PhaseStatus);
    EXPECT_EQ(got(phase, &IBasicPhase::IsActivePhase), status == xpsActivePhase ? VARIANT_TRUE : VARIANT_FALSE);
    read(query<IUserPhaseType>(phase), &IUserPhaseType::get_UserPhaseType);
    read(phase, &IBasicPhase::get_IsPseudoRoot);
    text << ';';
#define PHASE_REAL(name) read(phase, &IBasicPhase::get_##name);
#include "phase/properties.def"
    text << ';';
    for (const double value : compositionOf(phase)) note(value);
    for (const auto& lend : {&IBasicPhase::GetLnFugacityCoeff, &IBasicPhase::GetLnFugacity}) {
      text << ';';
      IRealArrayDisp* lent = nullptr;
      (phase.get()->*lend)(&lent);
      for (const double value : realsIn(lent)) note(value);
    }
    return text.str();
  }
};

}  // namespace qs::test
