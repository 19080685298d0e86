// The phases of a calculation.
#include "phase/phase_collection.h"

#include <functional>

#include "tests/support/failing_arrays.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

// Notes every phase: O, F and U for one of type overall, feed and user's, E and the temperature for any other; a star
// for a composition that is set. Fails at a given one.
class Observer final : public HostObject<IPhaseCollectionActor> {
 public:
  explicit Observer(int allowed = 100) : allowed_(allowed) {}
  STDMETHODIMP Act(IBasicPhase* phase) noexcept override {
    tagPhaseTypeEnum type{};
    IRealArrayDisp* composition = nullptr;
    double temperature = 0, first = kUnset;
    phase->get_PhaseType(&type);
    phase->get_Temperature(&temperature);
    phase->get_MolarCompositionDisp(&composition);
    composition->get_IthValue(0, &first);
    const bool numbered = type != xptOverall && type != xptFeed && type != xptUserType;
    slots += type == xptOverall ? 'O' : type == xptFeed ? 'F' : type == xptUserType ? 'U' : 'E';
    if (numbered) slots += std::to_string(static_cast<int>(temperature));
    if (first != kUnset) slots += '*';
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

class PhaseCollection : public PhaseTest {
 protected:
  struct Object {
    ComPtr<IPhaseCollection> phases = create<IPhaseCollection>(__uuidof(::COQSPhaseCollection));
    ComPtr<IFlashPhaseCollection> order = query<IFlashPhaseCollection>(phases);
    ComPtr<IReplacePhase> replace = query<IReplacePhase>(phases);
    IPhaseCollection* operator->() const { return phases.get(); }
  };

  // Equilibrium phases have their index as temperature.
  Object finalized(INT equilibrium, INT feeds) {
    Object object;
    EXPECT_EQ(object->Finalize(&two, equilibrium, feeds), S_OK);
    for (INT i = 0; i < equilibrium; ++i) equilibriumPhase(object, i)->put_Temperature(i);
    return object;
  }
  static ComPtr<IBasicPhase> equilibriumPhase(const Object& object, INT index, HRESULT expected = S_OK) {
    ComPtr<IBasicPhase> phase;
    EXPECT_EQ(object->GetEquilibriumPhase(index, phase.out()), expected) << index;
    return phase;
  }
  static ComPtr<IBasicPhase> located(const Object& object, tagPhaseTypeEnum type, INT index = 0) {
    ComPtr<IBasicPhase> phase;
    EXPECT_EQ(object->LocatePhase(type, index, phase.out()), S_OK) << type << " " << index;
    return phase;
  }
  // The place among the equilibrium phases; both ways of locating a phase must agree.
  static INT eqmIndex(const Object& object, tagPhaseTypeEnum type, INT index, HRESULT expected = S_OK) {
    ComPtr<IBasicPhase> phase;
    INT found = 99;
    EXPECT_EQ(object->LocatePhase(type, index, phase.out()), expected) << type << " " << index;
    EXPECT_EQ(object.replace->LocateEqmPhaseIndex(type, index, &found), expected) << type << " " << index;
    if (found >= 0 && found < got(object.phases, &IPhaseCollection::get_MaximumNumberOfEquilibriumPhases)) {
      EXPECT_EQ(equilibriumPhase(object, found).get(), phase.get());
    }
    return found;
  }
  static std::string slotsOf(const Object& object) {
    Observer observer;
    const HRESULT result = object->ApplyActor(&observer);
    EXPECT_EQ(result, observer.calls > 0 ? S_FALSE : S_OK) << "the actor's last result";
    return observer.slots;
  }

  CountedCompounds two{2};
};

TEST_F(PhaseCollection, ANewOneIsEmpty) {
  const Object object;
  ComPtr<IDispatch> compounds;
  ComPtr<IBasicPhase> phase;
  EXPECT_EQ(slotsOf(object), "");
  EXPECT_EQ(object->get_Compounds(compounds.out()), S_FALSE);
  EXPECT_EQ(got(object.phases, &IPhaseCollection::get_MaximumNumberOfEquilibriumPhases), 0);
  EXPECT_EQ(got(object.phases, &IPhaseCollection::get_NumberOfActivePhases), 0);
  EXPECT_EQ(object->GetActivePhase(0, phase.out()), S_FALSE);
  equilibriumPhase(object, 0, E_FAIL);
  EXPECT_EQ(object->ResetCollection(0), S_OK);
  EXPECT_EQ(object->PutFeedComposition(nullptr, 0), S_OK) << "no feeds: ignored";
  refusesNull(object.phases, &IPhaseCollection::get_Compounds);
  refusesNull(object.phases, &IPhaseCollection::get_MaximumNumberOfEquilibriumPhases);
  refusesNull(object.phases, &IPhaseCollection::get_NumberOfFeedPhases);
  refusesNull(object.phases, &IPhaseCollection::LocatePhase);
  refusesNull(object.phases, &IPhaseCollection::get_NumberOfEquilibriumPhases);
  refusesNull(object.phases, &IPhaseCollection::GetEquilibriumPhase);
  refusesNull(object.phases, &IPhaseCollection::get_NumberOfActivePhases);
  refusesNull(object.phases, &IPhaseCollection::GetActivePhase);
  refusesNull(object.phases, &IReplacePhase::LocateEqmPhaseIndex);
  for (const auto type : {xptOverall, xptFeed, xptUserType}) EXPECT_EQ(eqmIndex(object, type, 0, E_FAIL), 99);
  EXPECT_EQ(object->ApplyActor(nullptr), E_FAIL);
  EXPECT_EQ(object->ApplyActor(object.phases.get()), E_NOINTERFACE);
}

TEST_F(PhaseCollection, SlotsAreLaidOutByTheCounts) {
  const struct {
    INT equilibrium, feeds, feedSection;
    const char* slots;
  } rows[] = {{3, 0, 1, "FE0E1E2U"},
              {1, 1, 1, "FE0U"},
              {3, 2, 3, "OFFE0E1E2U"},
              {0, 0, 1, "FU"},
              {9, 10, 11, "OFFFFFFFFFFE0E1E2E3E4E5E6E7E8U"}};
  for (const auto& row : rows) {
    const auto object = finalized(row.equilibrium, row.feeds);
    EXPECT_EQ(slotsOf(object), row.slots);
    EXPECT_EQ(got(object.phases, &IPhaseCollection::get_MaximumNumberOfEquilibriumPhases), row.equilibrium);
    EXPECT_EQ(got(object.phases, &IPhaseCollection::get_NumberOfFeedPhases), row.feeds);
    EXPECT_EQ(eqmIndex(object, xptOverall, -7), -row.feedSection);
    EXPECT_EQ(eqmIndex(object, xptUserType, 0), row.equilibrium);
    EXPECT_EQ(eqmIndex(object, xptFeed, 0), (row.feeds > 1 ? 1 : 0) - row.feedSection);
    for (const INT outside : {1, 2, -1, -100}) eqmIndex(object, xptUserType, outside, E_FAIL);
    for (const INT outside : {-1, row.equilibrium, INT{2147483647}}) equilibriumPhase(object, outside, E_FAIL);
  }
  EXPECT_EQ(two.references, 1u);
}

TEST_F(PhaseCollection, FinalizeChecksItsCounts) {
  const auto object = finalized(2, 2);
  for (const auto& [equilibrium, feeds] : {std::pair<INT, INT>{10, 0}, {0, 11}, {-1, 0}, {0, -1}})
    EXPECT_EQ(object->Finalize(&two, equilibrium, feeds), E_FAIL);
  EXPECT_EQ(slotsOf(object), "OFFE0E1U") << "nothing changed";
  ComPtr<IDispatch> compounds;
  const ULONG before = two.references;
  EXPECT_EQ(object->get_Compounds(compounds.out()), S_OK);
  EXPECT_EQ(compounds.get(), &two);
  EXPECT_EQ(two.references, before + 1);

  EXPECT_EQ(object->Finalize(nullptr, 1, 1), E_FAIL);
  two.result = Observer::kFailure;
  EXPECT_EQ(object->Finalize(&two, 1, 1), Observer::kFailure);
  eqmIndex(object, xptOverall, 0, E_FAIL);
  Observer observer;
  EXPECT_EQ(object->ApplyActor(&observer), S_FALSE);
  EXPECT_EQ(observer.calls, 1) << "the phase made before the failure stays";
  two.result = S_OK;
  EXPECT_EQ(object->Finalize(&two, 1, 1), S_OK) << "and can be finalized again";
}

TEST_F(PhaseCollection, FeedsTakeTheirCompositions) {
  const struct {
    INT feeds, feed;
    HRESULT result;
    const char* slots;
  } rows[] = {{0, 0, S_OK, "FU"},      {1, 0, S_OK, "F*U"},
              {1, 1, S_OK, "FU"},      {2, 0, S_OK, "OF*FU"},
              {2, 1, S_OK, "OFF*U"},   {2, 2, S_OK, "OFFU"},
              {1, -1, S_OK, "F*U"},    {2, -1, S_OK, "O*FFU"},
              {2, -2, E_FAIL, "OFFU"}, {2, INT{-2147483647} - 1, E_FAIL, "OFFU"}};
  for (const auto& row : rows) {
    const auto object = finalized(0, row.feeds);
    EXPECT_EQ(object->PutFeedComposition(reals({0.3, 0.7}).get(), row.feed), row.result);
    EXPECT_EQ(slotsOf(object), row.slots) << row.feeds << " " << row.feed;
  }
  EXPECT_EQ(finalized(1, 1)->PutFeedComposition(nullptr, 0), E_FAIL);
}

TEST_F(PhaseCollection, ResetsReachTheEquilibriumPhasesAlone) {
  const auto object = finalized(2, 1);
  for (const auto& phase : {located(object, xptFeed), located(object, xptUserType), equilibriumPhase(object, 0)})
    phase->put_Pressure(3.0);
  EXPECT_EQ(object->put_NumberOfEquilibriumPhases(2), S_OK);
  for (const INT outside : {-1, 3}) EXPECT_EQ(object->put_NumberOfEquilibriumPhases(outside), E_FAIL);
  EXPECT_EQ(got(object.phases, &IPhaseCollection::get_NumberOfEquilibriumPhases), 2);
  EXPECT_EQ(object->ResetCollection(0x10), S_OK);
  EXPECT_EQ(got(object.phases, &IPhaseCollection::get_NumberOfEquilibriumPhases), 0);
  EXPECT_EQ(got(located(object, xptFeed), &IBasicPhase::get_Pressure), 3.0);
  EXPECT_EQ(got(located(object, xptUserType), &IBasicPhase::get_Pressure), 3.0);
  EXPECT_EQ(got(equilibriumPhase(object, 0), &IBasicPhase::get_Pressure), kUnset);
  EXPECT_EQ(slotsOf(object), "FE0E1U") << "the settings keep the temperatures";
}

TEST_F(PhaseCollection, PhasesAreFoundByKindAndActivity) {
  const auto object = finalized(4, 2);
  const tagPhaseTypeEnum kinds[] = {xptLiquid, xptVapour, xptLiquid, xptSolid};
  for (INT i = 0; i < 4; ++i) equilibriumPhase(object, i)->put_PhaseType(kinds[i]);
  EXPECT_EQ(eqmIndex(object, xptLiquid, 1), 2);
  EXPECT_EQ(eqmIndex(object, xptFeed, 1), -1);
  for (const INT outside : {2, -1, INT{-2147483647 - 1}}) EXPECT_EQ(eqmIndex(object, xptLiquid, outside, E_FAIL), 99);
  eqmIndex(object, xptHydrate, 0, E_FAIL);

  INT count = -1;
  EXPECT_EQ(object->get_NumberOfActivePhases(&count), S_FALSE) << "the status of the last phase is not set";
  EXPECT_EQ(count, 0);
  for (const auto& phase : {equilibriumPhase(object, 1), equilibriumPhase(object, 3), located(object, xptFeed)})
    phase->put_PhaseStatus(xpsActivePhase);
  located(object, xptUserType)->put_PhaseStatus(xpsInactivePhase);
  EXPECT_EQ(object->get_NumberOfActivePhases(&count), S_OK);
  EXPECT_EQ(count, 3);
  ComPtr<IBasicPhase> active;
  EXPECT_EQ(object->GetActivePhase(2, active.out()), S_OK);
  EXPECT_EQ(active.get(), equilibriumPhase(object, 3).get());
  for (const INT outside : {3, -1}) {
    EXPECT_EQ(object->GetActivePhase(outside, active.out()), S_FALSE);
    EXPECT_FALSE(active);
  }
  EXPECT_EQ(object->ApplyActor(create<IDispatch>(__uuidof(::PhaseActivator)).get()), S_OK);
  EXPECT_EQ(got(object.phases, &IPhaseCollection::get_NumberOfActivePhases), 8);
}

TEST_F(PhaseCollection, EquilibriumPhasesChangePlaces) {
  const auto relocate = &IFlashPhaseCollection::RelocatePhaseAfter,
             swap = &IFlashPhaseCollection::SwapEquilibriumPhases;
  const struct {
    decltype(relocate) call;
    INT first, second;
    HRESULT result;
    const char* slots;
  } rows[] = {{relocate, 2, 0, S_OK, "OFFE1E2E0E3U"},    {relocate, 3, 0, S_OK, "OFFE1E2E3E0U"},
              {relocate, 0, 3, S_OK, "OFFE0E3E1E2U"},    {relocate, 0, 1, S_OK, "OFFE0E1E2E3U"},
              {relocate, -1, 2, S_OK, "OFFE2E0E1E3U"},   {relocate, -1, 0, S_OK, "OFFE0E1E2E3U"},
              {relocate, 1, 1, S_OK, "OFFE0E1E2E3U"},    {relocate, 4, 0, E_FAIL, "OFFE0E1E2E3U"},
              {relocate, -2, 0, E_FAIL, "OFFE0E1E2E3U"}, {relocate, 0, 4, E_FAIL, "OFFE0E1E2E3U"},
              {relocate, 0, -1, E_FAIL, "OFFE0E1E2E3U"}, {relocate, 4, 4, E_FAIL, "OFFE0E1E2E3U"},
              {swap, 3, 1, S_OK, "OFFE0E3E2E1U"},        {swap, 2, 2, S_OK, "OFFE0E1E2E3U"},
              {swap, -1, 0, E_FAIL, "OFFE0E1E2E3U"},     {swap, 0, 4, E_FAIL, "OFFE0E1E2E3U"},
              {swap, 0, -1, E_FAIL, "OFFE0E1E2E3U"},     {swap, 4, 4, E_FAIL, "OFFE0E1E2E3U"}};
  for (const auto& row : rows) {
    const auto object = finalized(4, 2);
    EXPECT_EQ((object.order.get()->*row.call)(row.first, row.second), row.result);
    EXPECT_EQ(slotsOf(object), row.slots) << &row - rows;
  }
}

TEST_F(PhaseCollection, AnEmptySlotIsPassedOver) {
  const auto object = finalized(3, 1);
  const auto own = newPhase();
  own->put_Temperature(7.0);
  own->put_MolarComposition(reals({kUnset}).get());
  EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(1, own.get()), S_OK);
  EXPECT_EQ(referencesOf(own.get()), 2u);
  for (const INT outside : {-1, 3}) EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(outside, own.get()), E_FAIL);
  EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(1, nullptr), E_FAIL);
  EXPECT_EQ(slotsOf(object), "FE0E7E2U");

  EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(1, object.phases.get()), E_FAIL) << "no phase";
  EXPECT_EQ(referencesOf(own.get()), 1u) << "released all the same";
  equilibriumPhase(object, 1, E_FAIL);
  EXPECT_EQ(object.order->RelocatePhaseAfter(0, 1), E_FAIL);
  EXPECT_EQ(object->ResetCollection(0x10), S_OK);
  EXPECT_EQ(got(object.phases, &IPhaseCollection::get_NumberOfActivePhases), 0);
  eqmIndex(object, xptSolid, 0, E_FAIL);
  EXPECT_EQ(slotsOf(object), "FE0E2U");
  EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(1, own.get()), S_OK) << "filled again";
}

TEST_F(PhaseCollection, AFailureOfAPhaseIsAnswered) {
  HostPhase broken(0);
  const auto object = finalized(3, 0);
  ASSERT_EQ(object.replace->ReplaceEquilibriumPhase(1, &broken), S_OK);
  for (const INT i : {0, 2}) {
    equilibriumPhase(object, i)->put_PhaseType(i == 0 ? xptVapour : xptLiquid);
    equilibriumPhase(object, i)->put_PhaseStatus(xpsActivePhase);
  }
  INT count = -1;
  EXPECT_EQ(object->get_NumberOfActivePhases(&count), HostPhase::kFailure);
  EXPECT_EQ(count, 1) << "those before the failure";
  EXPECT_EQ(eqmIndex(object, xptVapour, 0), 0);
  EXPECT_EQ(eqmIndex(object, xptLiquid, 0, HostPhase::kFailure), 99);
  EXPECT_EQ(object->ResetCollection(0x3), HostPhase::kFailure);
  EXPECT_EQ(got(equilibriumPhase(object, 0), &IBasicPhase::get_Temperature), kUnset) << "reset before the failure";
  EXPECT_EQ(got(equilibriumPhase(object, 2), &IBasicPhase::get_Temperature), 2.0) << "not reached";

  NumberingRegistry accepting(64), refusing(40);
  const auto registerable = query<IRegisterableObject>(object.phases);
  EXPECT_EQ(registerable->RegisterProperties(&accepting), E_NOINTERFACE) << "of the broken phase";
  EXPECT_EQ(accepting.names.size(), 64u);
  ASSERT_EQ(object.replace->ReplaceEquilibriumPhase(1, newPhase().get()), S_OK);
  EXPECT_EQ(registerable->RegisterProperties(&refusing), NumberingRegistry::kRefused);
  EXPECT_EQ(registerable->RegisterProperties(object.phases.get()), E_NOINTERFACE) << "which keeps neither";
}

TEST_F(PhaseCollection, TheRegistryReachesEveryPhaseNowAndLater) {
  const auto registry = newRegistry();
  const auto object = finalized(1, 0);
  const auto registerable = query<IRegisterableObject>(object.phases);
  const auto knows = [](const ComPtr<IBasicPhase>& phase) {
    VARIANT_BOOL supported = VARIANT_FALSE;
    query<IEnumeratedPropertyContainer>(phase)->SupportsProperty(6, &supported);
    return supported == VARIANT_TRUE;
  };
  EXPECT_FALSE(knows(equilibriumPhase(object, 0)));
  EXPECT_EQ(registerable->RegisterProperties(registry.get()), S_OK);
  EXPECT_TRUE(knows(equilibriumPhase(object, 0)) && knows(located(object, xptUserType)));
  EXPECT_EQ(referencesOf(registry.get()), 2u);
  ASSERT_EQ(object->Finalize(&two, 2, 0), S_OK);
  EXPECT_TRUE(knows(equilibriumPhase(object, 1)));
  EXPECT_EQ(registerable->RegisterProperties(object.phases.get()), E_NOINTERFACE);
  EXPECT_EQ(referencesOf(registry.get()), 1u) << "the earlier one is released first";
  ASSERT_EQ(object->Finalize(&two, 1, 0), S_OK);
  EXPECT_FALSE(knows(equilibriumPhase(object, 0)));
}

TEST_F(PhaseCollection, ActorsStopAtAFailureAndMayChangeTheCollection) {
  const auto object = finalized(3, 1);
  Observer failing(2);
  EXPECT_EQ(object->ApplyActor(&failing), Observer::kFailure);
  EXPECT_EQ(failing.slots, "FE0E1");

  Observer shrinking;
  shrinking.onAct = [&] {
    if (shrinking.slots == "FE0") object->Finalize(&two, 0, 1);
  };
  EXPECT_EQ(object->ApplyActor(&shrinking), S_FALSE);
  EXPECT_EQ(shrinking.slots, "FE0") << "the two slots that are left were passed";
}

TEST_F(PhaseCollection, ALastReleaseMayUseTheCollectionThatEnds) {
  CallingBack<HostPhase> first(0), second(0);
  {
    const auto object = finalized(2, 1);
    IPhaseCollection* dying = object.phases.get();
    ASSERT_EQ(object.replace->ReplaceEquilibriumPhase(0, &first), S_OK);
    first.onRelease = [&] {
      EXPECT_EQ(dying->Finalize(&two, 3, 2), S_OK);
      EXPECT_EQ(ComPtr<IReplacePhase>::from(dying)->ReplaceEquilibriumPhase(2, &second), S_OK);
    };
    second.onRelease = [&] { EXPECT_EQ(dying->Finalize(&two, 1, 1), S_OK); };
  }
  EXPECT_EQ(first.references, 1u);
  EXPECT_EQ(second.references, 1u);
  EXPECT_EQ(two.references, 1u);
}

TEST_F(PhaseCollection, SurvivesEveryFailureOfTheHostsArrays) {
  bool done = false;
  for (int failing = 0; !done; ++failing) {
    SCOPED_TRACE(failing);
    {
      const Object object;
      FailingArrays arrays(failing);
      const HRESULT hr = object->Finalize(&two, 1, 0);
      done = !arrays.reached();
      EXPECT_TRUE(done ? hr == S_OK : hr == E_FAIL || hr == FailingArrays::kFailure) << hr;
      arrays.repair();
      EXPECT_EQ(object->Finalize(&two, 1, 0), S_OK);
    }
    ASSERT_EQ(FailingArrays::live(), 0);
    ASSERT_EQ(two.references, 1u);
  }
}

}  // namespace
}  // namespace qs::test
