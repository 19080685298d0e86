// What phases.calls cannot show of a collection of phases: phases, compounds and actors that fail or call back.
#include "tests/support/phases.h"

namespace qs::test {
namespace {

constexpr auto kUnreadable = static_cast<HRESULT>(0x80040C02);

class PhaseCollection : public PhaseTest {
 protected:
  static ComPtr<IBasicPhase> equilibriumPhase(const ComPtr<IPhaseCollection>& phases, INT index) {
    ComPtr<IBasicPhase> phase;
    EXPECT_EQ(phases->GetEquilibriumPhase(index, phase.out()), S_OK) << index;
    return phase;
  }

  CountedCompounds two{2};
};

TEST_F(PhaseCollection, WhatAFailedFinalizeMadeStays) {
  const auto phases = phasesOf(&two, 2, 2);
  two.result = kUnreadable;
  EXPECT_EQ(phases->Finalize(&two, 1, 1), kUnreadable);
  ComPtr<IBasicPhase> overall;
  EXPECT_EQ(phases->LocatePhase(xptOverall, 0, overall.out()), E_FAIL);
  EXPECT_EQ(phases->ApplyActor(create<IDispatch>(__uuidof(::PhaseActivator)).get()), S_OK);
  EXPECT_EQ(got(phases, &IPhaseCollection::get_NumberOfActivePhases), 1) << "the phase made before the failure";
  two.result = S_OK;
  EXPECT_EQ(phases->Finalize(&two, 1, 1), S_OK) << "and can be finalized again";
}

TEST_F(PhaseCollection, ReturnsTheFailureOfAPhase) {
  HostPhase broken(0);
  const auto phases = phasesOf(&two, 3, 0);
  ASSERT_EQ(query<IReplacePhase>(phases)->ReplaceEquilibriumPhase(1, &broken), S_OK);
  for (const INT i : {0, 2}) {
    equilibriumPhase(phases, i)->put_PhaseType(i == 0 ? xptVapour : xptLiquid);
    equilibriumPhase(phases, i)->put_PhaseStatus(xpsActivePhase);
  }
  INT count = -1;
  ComPtr<IBasicPhase> phase;
  EXPECT_EQ(phases->get_NumberOfActivePhases(&count), HostPhase::kFailure);
  EXPECT_EQ(count, 1) << "those before the failure";
  EXPECT_EQ(phases->LocatePhase(xptVapour, 0, phase.out()), S_OK);
  EXPECT_EQ(phases->LocatePhase(xptLiquid, 0, phase.out()), HostPhase::kFailure);
  EXPECT_EQ(query<IReplacePhase>(phases)->LocateEqmPhaseIndex(xptLiquid, 0, &count), HostPhase::kFailure);
  EXPECT_EQ(phases->ResetCollection(0x3), HostPhase::kFailure);
  EXPECT_EQ(got(equilibriumPhase(phases, 0), &IBasicPhase::get_Temperature), kUnset) << "reset before the failure";
  EXPECT_EQ(got(equilibriumPhase(phases, 2), &IBasicPhase::get_Temperature), 2.0) << "not reached";

  NumberingRegistry accepting(64), refusing(40);
  const auto registerable = query<IRegisterableObject>(phases);
  EXPECT_EQ(registerable->RegisterProperties(&accepting), E_NOINTERFACE) << "of the broken phase";
  EXPECT_EQ(accepting.names, 64);
  ASSERT_EQ(query<IReplacePhase>(phases)->ReplaceEquilibriumPhase(1, newPhase().get()), S_OK);
  EXPECT_EQ(registerable->RegisterProperties(&refusing), NumberingRegistry::kRefused);
  EXPECT_EQ(registerable->RegisterProperties(phases.get()), E_NOINTERFACE) << "which keeps neither";
}

class ThrowingPhase final : public Stub<IBasicPhase> {
 public:
  STDMETHODIMP get_PhaseStatus(tagPhaseStatusEnum*) override { throw 1; }
  STDMETHODIMP ResetProperties(DWORD) override { throw 1; }
};

TEST_F(PhaseCollection, WhatAPhaseThrowsIsAFailure) {
  if (!kExceptionsPass) GTEST_SKIP() << "on x86 an exception that reaches another module ends the process";
  ThrowingPhase throwing;
  const auto phases = phasesOf(&two, 1, 1);
  ASSERT_EQ(query<IReplacePhase>(phases)->ReplaceEquilibriumPhase(0, &throwing), S_OK);
  INT count = 0;
  ComPtr<IBasicPhase> active;
  EXPECT_EQ(phases->get_NumberOfActivePhases(&count), E_FAIL);
  EXPECT_EQ(phases->GetActivePhase(9, active.out()), S_FALSE) << "no phase has this position";
  EXPECT_EQ(phases->ResetCollection(0), E_FAIL);
}

TEST_F(PhaseCollection, ActorsStopAtAFailureAndMayChangeTheCollection) {
  const auto phases = phasesOf(&two, 3, 1);
  Observer failing(2), shrinking;
  EXPECT_EQ(phases->ApplyActor(&failing), Observer::kFailure);
  EXPECT_EQ(failing.slots, "FE0E1");
  shrinking.onAct = [&] {
    if (shrinking.slots == "FE0") phases->Finalize(&two, 0, 1);
  };
  EXPECT_EQ(phases->ApplyActor(&shrinking), S_FALSE);
  EXPECT_EQ(shrinking.slots, "FE0") << "the two slots that are left were passed";
}

TEST_F(PhaseCollection, ALastReleaseMayUseTheCollectionThatEnds) {
  HostPhase first(0), second(0);
  {
    const auto phases = phasesOf(&two, 2, 1);
    IPhaseCollection* dying = phases.get();
    ASSERT_EQ(query<IReplacePhase>(phases)->ReplaceEquilibriumPhase(0, &first), S_OK);
    first.onRelease = [&, dying] {
      EXPECT_EQ(dying->Finalize(&two, 3, 2), S_OK);
      EXPECT_EQ(ComPtr<IReplacePhase>::from(dying)->ReplaceEquilibriumPhase(2, &second), S_OK);
    };
    second.onRelease = [&, dying] { EXPECT_EQ(dying->Finalize(&two, 1, 1), S_OK); };
  }
  EXPECT_EQ(first.references, 1u);
  EXPECT_EQ(second.references, 1u);
  EXPECT_EQ(two.references, 1u);
}

}  // namespace
}  // namespace qs::test
