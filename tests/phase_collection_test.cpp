// The phases of a calculation.
#include "phase/phase_collection.h"

#include <functional>

#include "tests/support/failing_arrays.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

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
  static ComPtr<IBasicPhase> equilibriumPhase(const Object& object, INT index) {
    ComPtr<IBasicPhase> phase;
    EXPECT_EQ(object->GetEquilibriumPhase(index, phase.out()), S_OK);
    return phase;
  }
  static ComPtr<IBasicPhase> located(const Object& object, tagPhaseTypeEnum type, INT index, HRESULT expected) {
    ComPtr<IBasicPhase> phase;
    EXPECT_EQ(object->LocatePhase(type, index, phase.out()), expected) << type << " " << index;
    return phase;
  }
  static INT eqmIndex(const Object& object, tagPhaseTypeEnum type, INT index, HRESULT expected) {
    INT found = 99;
    EXPECT_EQ(object.replace->LocateEqmPhaseIndex(type, index, &found), expected) << type << " " << index;
    return found;
  }
  static LONG typeOf(const ComPtr<IBasicPhase>& phase) {
    tagPhaseTypeEnum type{};
    phase->get_PhaseType(&type);
    return type;
  }
  static std::vector<int> order(const Object& object, INT equilibrium) {
    std::vector<int> temperatures;
    for (INT i = 0; i < equilibrium; ++i) {
      double value = 0;
      equilibriumPhase(object, i)->get_Temperature(&value);
      temperatures.push_back(static_cast<int>(value));
    }
    return temperatures;
  }
  static INT numberActive(const Object& object) {
    INT count = -1;
    EXPECT_TRUE(SUCCEEDED(object->get_NumberOfActivePhases(&count)));
    return count;
  }

  CountedCompounds two{2};
};

// Sees the phases and fails at a given one.
class Observer final : public HostObject<IPhaseCollectionActor> {
 public:
  explicit Observer(std::size_t allowed = 100) : allowed_(allowed) {}
  STDMETHODIMP Act(IBasicPhase* phase) noexcept override {
    tagPhaseTypeEnum type{};
    phase->get_PhaseType(&type);
    types.push_back(type);
    if (onAct) onAct();
    return types.size() > allowed_ ? kFailure : S_FALSE;
  }
  static constexpr auto kFailure = static_cast<HRESULT>(0x80040C01);

  std::vector<LONG> types;
  std::function<void()> onAct;

 private:
  std::size_t allowed_;
};

TEST_F(PhaseCollection, ANewOneIsEmpty) {
  const Object object;
  ComPtr<IDispatch> compounds;
  ComPtr<IBasicPhase> phase;
  INT value = -1;
  EXPECT_EQ(object->get_Compounds(compounds.out()), S_FALSE);
  EXPECT_EQ(object->get_MaximumNumberOfEquilibriumPhases(&value), S_OK);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(numberActive(object), 0);
  EXPECT_EQ(object->GetActivePhase(0, phase.out()), S_FALSE);
  EXPECT_EQ(object->GetEquilibriumPhase(0, phase.out()), E_FAIL);
  EXPECT_EQ(object->ResetCollection(0), S_OK);
  EXPECT_EQ(object->PutFeedComposition(nullptr, 0), S_OK) << "no feeds: ignored";
  for (const auto type : {xptOverall, xptFeed, xptUserType}) {
    located(object, type, 0, E_FAIL);
    EXPECT_EQ(eqmIndex(object, type, 0, E_FAIL), 99);
  }
  Observer observer;
  EXPECT_EQ(object->ApplyActor(&observer), S_OK);
  EXPECT_EQ(object->ApplyActor(nullptr), E_FAIL);
  EXPECT_EQ(object->ApplyActor(object.phases.get()), E_NOINTERFACE);
}

TEST_F(PhaseCollection, SlotsAreLaidOutByTheCounts) {
  struct Case {
    INT equilibrium, feeds;
    std::vector<LONG> types;
  };
  const LONG none = -32767;
  const Case cases[] = {{3, 0, {2, none, none, none, 11}},
                        {1, 1, {2, none, 11}},
                        {3, 2, {1, 2, 2, none, none, none, 11}},
                        {0, 0, {2, 11}}};
  for (const Case& one : cases) {
    SCOPED_TRACE(testing::Message() << one.equilibrium << " and " << one.feeds);
    const auto object = finalized(one.equilibrium, one.feeds);
    Observer observer;
    EXPECT_EQ(object->ApplyActor(&observer), S_FALSE) << "the actor's last result";
    EXPECT_EQ(observer.types, one.types);
    INT value = -1;
    object->get_MaximumNumberOfEquilibriumPhases(&value);
    EXPECT_EQ(value, one.equilibrium);
    object->get_NumberOfFeedPhases(&value);
    EXPECT_EQ(value, one.feeds);
    const INT feedSection = static_cast<INT>(one.types.size()) - one.equilibrium - 1;
    EXPECT_EQ(eqmIndex(object, xptOverall, 5, S_OK), -feedSection);
    EXPECT_EQ(eqmIndex(object, xptUserType, 0, S_OK), one.equilibrium);
    EXPECT_EQ(eqmIndex(object, xptFeed, 0, S_OK), one.feeds > 1 ? 1 - feedSection : -feedSection);
    EXPECT_EQ(typeOf(located(object, xptOverall, -7, S_OK)), one.types[0]);
    EXPECT_EQ(typeOf(located(object, xptUserType, 0, S_OK)), 11);
    for (const INT outside : {1, 2, -1, -100}) {
      located(object, xptUserType, outside, E_FAIL);
      eqmIndex(object, xptUserType, outside, E_FAIL);
    }
    ComPtr<IBasicPhase> phase;
    for (const INT outside : {-1, one.equilibrium, INT{2147483647}})
      EXPECT_EQ(object->GetEquilibriumPhase(outside, phase.out()), E_FAIL);
  }
  EXPECT_EQ(two.references, 1u);
}

TEST_F(PhaseCollection, FinalizeChecksItsCounts) {
  const auto object = finalized(2, 2);
  for (const auto& [equilibrium, feeds] : {std::pair<INT, INT>{10, 0}, {0, 11}, {-1, 0}, {0, -1}})
    EXPECT_EQ(object->Finalize(&two, equilibrium, feeds), E_FAIL);
  EXPECT_EQ(order(object, 2), (std::vector<int>{0, 1})) << "nothing changed";
  ASSERT_EQ(object->Finalize(&two, 9, 10), S_OK);
  Observer observer;
  EXPECT_EQ(object->ApplyActor(&observer), S_FALSE);
  EXPECT_EQ(observer.types.size(), 21u);
  ComPtr<IDispatch> compounds;
  const ULONG before = two.references;
  EXPECT_EQ(object->get_Compounds(compounds.out()), S_OK);
  EXPECT_EQ(compounds.get(), &two);
  EXPECT_EQ(two.references, before + 1);
  compounds = ComPtr<IDispatch>();

  EXPECT_EQ(object->Finalize(nullptr, 1, 1), E_FAIL);
  two.result = Observer::kFailure;
  EXPECT_EQ(object->Finalize(&two, 1, 1), Observer::kFailure);
  located(object, xptOverall, 0, E_FAIL);
  EXPECT_EQ(object->ApplyActor(&observer), S_FALSE);
  EXPECT_EQ(observer.types.size(), 22u) << "the phase made before the failure stays";
  two.result = S_OK;
  EXPECT_EQ(object->Finalize(&two, 1, 1), S_OK) << "and can be finalized again";
}

TEST_F(PhaseCollection, FeedsTakeTheirCompositions) {
  const auto given = reals({0.3, 0.7});
  struct Case {
    INT feeds, feed;
    HRESULT result;
    INT slot;  // among the phases of the feed section, -1 for none
  };
  for (const Case& one : {Case{0, 0, S_OK, -1}, Case{1, 0, S_OK, 0}, Case{1, 1, S_OK, -1}, Case{2, 0, S_OK, 1},
                          Case{2, 1, S_OK, 2}, Case{2, 2, S_OK, -1}, Case{1, -1, S_OK, 0}, Case{2, -1, S_OK, 0},
                          Case{2, -2, E_FAIL, -1}, Case{2, INT{-2147483647} - 1, E_FAIL, -1}}) {
    SCOPED_TRACE(testing::Message() << one.feeds << " " << one.feed);
    const auto object = finalized(1, one.feeds);
    EXPECT_EQ(object->PutFeedComposition(given.get(), one.feed), one.result);
    const INT section = one.feeds < 2 ? 1 : one.feeds + 1;
    for (INT slot = 0; slot < section; ++slot) {
      const bool overall = slot == 0 && section > 1;
      const auto phase = located(object, overall ? xptOverall : xptFeed, section > 1 ? slot - 1 : 0, S_OK);
      EXPECT_EQ(compositionOf(phase)[0], slot == one.slot ? 0.3 : kUnset) << slot;
    }
  }
  EXPECT_EQ(finalized(1, 1)->PutFeedComposition(nullptr, 0), E_FAIL);
}

TEST_F(PhaseCollection, ResetsReachTheEquilibriumPhasesAlone) {
  const auto object = finalized(2, 1);
  located(object, xptFeed, 0, S_OK)->put_Pressure(1.0);
  located(object, xptUserType, 0, S_OK)->put_Pressure(2.0);
  equilibriumPhase(object, 1)->put_Pressure(3.0);
  EXPECT_EQ(object->put_NumberOfEquilibriumPhases(2), S_OK);
  for (const INT outside : {-1, 3}) EXPECT_EQ(object->put_NumberOfEquilibriumPhases(outside), E_FAIL);
  INT count = -1;
  object->get_NumberOfEquilibriumPhases(&count);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(object->ResetCollection(0x10), S_OK);
  object->get_NumberOfEquilibriumPhases(&count);
  EXPECT_EQ(count, 0);
  double value = 0;
  EXPECT_EQ(located(object, xptFeed, 0, S_OK)->get_Pressure(&value), S_OK);
  EXPECT_EQ(located(object, xptUserType, 0, S_OK)->get_Pressure(&value), S_OK);
  EXPECT_EQ(equilibriumPhase(object, 1)->get_Pressure(&value), S_FALSE);
  EXPECT_EQ(order(object, 2), (std::vector<int>{0, 1})) << "the settings keep the temperatures";
}

TEST_F(PhaseCollection, PhasesAreFoundByKindAndActivity) {
  const auto object = finalized(4, 2);
  const tagPhaseTypeEnum kinds[] = {xptLiquid, xptVapour, xptLiquid, xptSolid};
  for (INT i = 0; i < 4; ++i) equilibriumPhase(object, i)->put_PhaseType(kinds[i]);
  EXPECT_EQ(located(object, xptLiquid, 1, S_OK).get(), equilibriumPhase(object, 2).get());
  EXPECT_EQ(eqmIndex(object, xptLiquid, 1, S_OK), 2);
  EXPECT_EQ(eqmIndex(object, xptFeed, 1, S_OK), -1);
  for (const INT outside : {2, -1, INT{-2147483647 - 1}}) {
    located(object, xptLiquid, outside, E_FAIL);
    EXPECT_EQ(eqmIndex(object, xptLiquid, outside, E_FAIL), 99);
  }
  located(object, xptHydrate, 0, E_FAIL);

  INT count = -1;
  EXPECT_EQ(object->get_NumberOfActivePhases(&count), S_FALSE) << "the status of the last phase is not set";
  EXPECT_EQ(count, 0);
  for (const INT i : {1, 3}) equilibriumPhase(object, i)->put_PhaseStatus(xpsActivePhase);
  located(object, xptFeed, 0, S_OK)->put_PhaseStatus(xpsActivePhase);
  located(object, xptUserType, 0, S_OK)->put_PhaseStatus(xpsInactivePhase);
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
  EXPECT_EQ(numberActive(object), 8);
}

TEST_F(PhaseCollection, EquilibriumPhasesChangePlaces) {
  struct Case {
    INT after, target;
    HRESULT result;
    std::vector<int> order;
  };
  const std::vector<int> same{0, 1, 2, 3};
  const Case cases[] = {{2, 0, S_OK, {1, 2, 0, 3}}, {3, 0, S_OK, {1, 2, 3, 0}},  {0, 3, S_OK, {0, 3, 1, 2}},
                        {0, 1, S_OK, same},         {-1, 2, S_OK, {2, 0, 1, 3}}, {-1, 0, S_OK, same},
                        {1, 1, S_OK, same},         {4, 0, E_FAIL, same},        {-2, 0, E_FAIL, same},
                        {0, 4, E_FAIL, same},       {0, -1, E_FAIL, same},       {4, 4, E_FAIL, same}};
  for (const Case& one : cases) {
    SCOPED_TRACE(testing::Message() << one.target << " after " << one.after);
    const auto object = finalized(4, 2);
    EXPECT_EQ(object.order->RelocatePhaseAfter(one.after, one.target), one.result);
    EXPECT_EQ(order(object, 4), one.order);
    EXPECT_EQ(typeOf(located(object, xptUserType, 0, S_OK)), 11);
  }
  const auto object = finalized(4, 0);
  EXPECT_EQ(object.order->SwapEquilibriumPhases(3, 1), S_OK);
  EXPECT_EQ(object.order->SwapEquilibriumPhases(2, 2), S_OK);
  for (const INT outside : {-1, 4}) {
    EXPECT_EQ(object.order->SwapEquilibriumPhases(outside, 0), E_FAIL);
    EXPECT_EQ(object.order->SwapEquilibriumPhases(0, outside), E_FAIL);
    EXPECT_EQ(object.order->SwapEquilibriumPhases(outside, outside), E_FAIL);
  }
  EXPECT_EQ(order(object, 4), (std::vector<int>{0, 3, 2, 1}));
}

TEST_F(PhaseCollection, AnEmptySlotIsPassedOver) {
  const auto object = finalized(3, 1);
  const auto own = newPhase();
  own->put_Temperature(7.0);
  EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(1, own.get()), S_OK);
  EXPECT_EQ(equilibriumPhase(object, 1).get(), own.get());
  EXPECT_EQ(referencesOf(own.get()), 2u);
  for (const INT outside : {-1, 3}) EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(outside, own.get()), E_FAIL);
  EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(1, nullptr), E_FAIL);
  EXPECT_EQ(order(object, 3), (std::vector<int>{0, 7, 2}));

  EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(1, object.phases.get()), E_FAIL) << "no phase";
  EXPECT_EQ(referencesOf(own.get()), 1u) << "released all the same";
  ComPtr<IBasicPhase> phase;
  EXPECT_EQ(object->GetEquilibriumPhase(1, phase.out()), E_FAIL);
  EXPECT_EQ(object.order->RelocatePhaseAfter(0, 1), E_FAIL);
  EXPECT_EQ(object->ResetCollection(0), S_OK);
  EXPECT_EQ(numberActive(object), 0);
  located(object, xptSolid, 0, E_FAIL);
  Observer observer;
  EXPECT_EQ(object->ApplyActor(&observer), S_FALSE);
  EXPECT_EQ(observer.types.size(), 4u);
  EXPECT_EQ(object.replace->ReplaceEquilibriumPhase(1, own.get()), S_OK) << "filled again";
}

TEST_F(PhaseCollection, AFailureOfAPhaseIsAnswered) {
  HostPhase broken(0);
  {
    const auto object = finalized(3, 0);
    ASSERT_EQ(object.replace->ReplaceEquilibriumPhase(1, &broken), S_OK);
    for (const INT i : {0, 2}) {
      equilibriumPhase(object, i)->put_PhaseType(i == 0 ? xptVapour : xptLiquid);
      equilibriumPhase(object, i)->put_PhaseStatus(xpsActivePhase);
    }
    INT count = -1;
    EXPECT_EQ(object->get_NumberOfActivePhases(&count), HostPhase::kFailure);
    EXPECT_EQ(count, 1) << "those before the failure";
    EXPECT_TRUE(located(object, xptVapour, 0, S_OK));
    located(object, xptLiquid, 0, HostPhase::kFailure);
    EXPECT_EQ(eqmIndex(object, xptLiquid, 0, HostPhase::kFailure), 99);
    EXPECT_EQ(object->ResetCollection(0x3), HostPhase::kFailure);
    double value = -1;
    EXPECT_EQ(equilibriumPhase(object, 0)->get_Temperature(&value), S_FALSE) << "reset before the failure";
    EXPECT_EQ(equilibriumPhase(object, 2)->get_Temperature(&value), S_OK) << "not reached";

    NumberingRegistry accepting(64), refusing(40);
    const auto registerable = query<IRegisterableObject>(object.phases);
    EXPECT_EQ(registerable->RegisterProperties(&accepting), E_NOINTERFACE) << "of the broken phase";
    EXPECT_EQ(accepting.names.size(), 64u);
    ASSERT_EQ(object.replace->ReplaceEquilibriumPhase(1, newPhase().get()), S_OK);
    EXPECT_EQ(registerable->RegisterProperties(&refusing), NumberingRegistry::kRefused);
    EXPECT_EQ(registerable->RegisterProperties(object.phases.get()), E_NOINTERFACE) << "which keeps neither";
  }
  EXPECT_EQ(broken.references, 1u);
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
  EXPECT_TRUE(knows(equilibriumPhase(object, 0)) && knows(located(object, xptUserType, 0, S_OK)));
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
  EXPECT_EQ(failing.types.size(), 3u);
  EXPECT_EQ(failing.references, 1u);

  Observer shrinking;
  shrinking.onAct = [&] {
    if (shrinking.types.size() == 2) {
      EXPECT_EQ(object->Finalize(&two, 0, 1), S_OK);
    }
  };
  EXPECT_EQ(object->ApplyActor(&shrinking), S_FALSE);
  EXPECT_EQ(shrinking.types.size(), 2u) << "the two slots that are left were passed";
}

TEST_F(PhaseCollection, SurvivesEveryFailureOfTheHostsArrays) {
  bool done = false;
  for (int failing = 0; !done; ++failing) {
    SCOPED_TRACE(failing);
    {
      const Object object;
      {
        FailingArrays arrays(failing);
        const HRESULT hr = object->Finalize(&two, 1, 0);
        done = !arrays.reached();
        EXPECT_EQ(SUCCEEDED(hr), done);
        EXPECT_TRUE(done || hr == E_FAIL || hr == FailingArrays::kFailure);
        arrays.repair();
        EXPECT_EQ(object->Finalize(&two, 1, 0), S_OK);
        EXPECT_EQ(order(object, 1).size(), 1u);
      }
    }
    ASSERT_EQ(FailingArrays::live(), 0);
    ASSERT_EQ(two.references, 1u);
  }
}

}  // namespace
}  // namespace qs::test
