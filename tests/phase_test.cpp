// The state of a phase through IBasicPhase and IUserPhaseType.
#include "phase/phase.h"

#include "tests/support/failing_arrays.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

using Phase = PhaseTest;
constexpr auto kBroken = static_cast<HRESULT>(0x80040B01);

TEST_F(Phase, RealsHoldWhatTheyAreGiven) {
  const auto phase = newPhase();
  double given = 1.5;
  for (const RealProperty& real : kRealProperties) {
    SCOPED_TRACE(narrow(real.name));
    double value = 0;
    EXPECT_EQ((phase.get()->*real.get)(&value), S_FALSE);
    EXPECT_EQ(value, kUnset);
    EXPECT_EQ((phase.get()->*real.put)(given += 1), S_OK);
  }
  given = 1.5;
  for (const RealProperty& real : kRealProperties) {
    SCOPED_TRACE(narrow(real.name));
    double value = 0;
    EXPECT_EQ((phase.get()->*real.get)(&value), S_OK);
    EXPECT_EQ(value, given += 1);
    EXPECT_EQ((phase.get()->*real.put)(kUnset), S_OK);
    EXPECT_EQ((phase.get()->*real.get)(&value), S_FALSE) << "the marker makes it unset again";
  }
}

TEST_F(Phase, KindsHoldAnyNumber) {
  const auto phase = newPhase();
  const auto user = query<IUserPhaseType>(phase);
  for (const LONG number : {-32767, 0, 1, 2, 11, 4711, -1}) {
    SCOPED_TRACE(number);
    const HRESULT expected = number == -32767 ? S_FALSE : S_OK;
    tagPhaseTypeEnum type{};
    tagPhaseStatusEnum status{};
    VARIANT_BOOL active = 7;
    EXPECT_EQ(phase->put_PhaseType(static_cast<tagPhaseTypeEnum>(number)), S_OK);
    EXPECT_EQ(phase->get_PhaseType(&type), expected);
    EXPECT_EQ(static_cast<LONG>(type), number);
    EXPECT_EQ(user->get_UserPhaseType(&type), number == -32767 ? S_FALSE : S_OK);
    EXPECT_EQ(user->put_UserPhaseType(static_cast<tagPhaseTypeEnum>(number)), S_OK);
    EXPECT_EQ(phase->put_PhaseStatus(static_cast<tagPhaseStatusEnum>(number)), S_OK);
    EXPECT_EQ(phase->get_PhaseStatus(&status), expected);
    EXPECT_EQ(static_cast<LONG>(status), number);
    EXPECT_EQ(phase->IsActivePhase(&active), S_OK);
    EXPECT_EQ(active, number == 1 ? VARIANT_TRUE : VARIANT_FALSE);
    if (number == -32767) user->put_UserPhaseType(xptUserType);
  }
}

TEST_F(Phase, ANewPhaseHasNoCompoundsAndEmptyArrays) {
  const auto phase = newPhase();
  INT count = 5;
  ComPtr<IDispatch> compounds;
  ComPtr<ICompoundCollection> collection;
  EXPECT_EQ(phase->get_NumberOfCompounds(&count), S_FALSE);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(phase->get_Compounds(compounds.out()), S_FALSE);
  EXPECT_EQ(phase->GetCompounds(collection.out()), S_FALSE);
  EXPECT_FALSE(compounds || collection);
  BYTE pseudo = 9;
  EXPECT_EQ(phase->get_IsPseudoRoot(&pseudo), S_OK);
  EXPECT_EQ(pseudo, 0);
  EXPECT_EQ(compositionOf(phase), Reals());
  EXPECT_EQ(phase->get_MassComposition(compounds.out()), E_NOTIMPL);
  EXPECT_EQ(phase->put_MassComposition(nullptr), E_NOTIMPL);
}

TEST_F(Phase, CompositionIsCopiedAndGivenOutInTwoWays) {
  const auto phase = newPhase();
  const auto given = reals({0.25, 0.75});
  ASSERT_EQ(phase->put_MolarComposition(given.get()), S_OK);
  given->put_IthValue(0, 9.0);
  EXPECT_EQ(compositionOf(phase), (Reals{0.25, 0.75})) << "not shared";

  IRealArrayDisp* lent = nullptr;
  ASSERT_EQ(phase->get_MolarCompositionDisp(&lent), S_OK);
  const ULONG before = referencesOf(lent);
  EXPECT_EQ(phase->get_MolarCompositionDisp(&lent), S_OK);
  EXPECT_EQ(referencesOf(lent), before) << "lent";
  ComPtr<IDispatch> owned;
  EXPECT_EQ(phase->get_MolarComposition(owned.out()), S_OK);
  EXPECT_EQ(referencesOf(lent), before + 1) << "add-referenced";

  EXPECT_EQ(phase->put_MolarCompositionDisp(reals({1.0}).get()), S_OK);
  EXPECT_EQ(compositionOf(phase), Reals{1.0});
  EXPECT_EQ(phase->put_MolarComposition(nullptr), E_FAIL);
  EXPECT_EQ(phase->put_MolarCompositionDisp(nullptr), E_FAIL);
  EXPECT_EQ(phase->put_MolarComposition(integers({1}).get()), E_NOINTERFACE);
  EXPECT_EQ(compositionOf(phase), Reals{1.0});
  EXPECT_EQ(phase->ResetProperties(0), S_OK) << "with empty fugacities";
  EXPECT_EQ(compositionOf(phase), Reals{kUnset});
}

struct Fugacity {
  HRESULT (STDMETHODCALLTYPE IBasicPhase::*get)(IRealArrayDisp**);
  HRESULT (STDMETHODCALLTYPE IBasicPhase::*put)(IRealArrayDisp*);
  HRESULT (STDMETHODCALLTYPE IBasicPhase::*lend)(IRealArrayDisp**);
};
constexpr Fugacity kFugacities[] = {
    {&IBasicPhase::get_LnFugacity, &IBasicPhase::put_LnFugacity, &IBasicPhase::GetLnFugacity},
    {&IBasicPhase::get_LnFugacityCoeff, &IBasicPhase::put_LnFugacityCoeff, &IBasicPhase::GetLnFugacityCoeff},
};

TEST_F(Phase, FugacitiesTellByTheirFirstElementWhetherTheyAreSet) {
  struct Case {
    std::initializer_list<double> values;
    HRESULT got, lent;
  };
  const Case cases[] = {
      {{}, S_OK, S_FALSE}, {{kUnset, 1.0}, S_FALSE, S_FALSE}, {{0.5, kUnset}, S_OK, S_OK}, {{-0.1}, S_OK, S_OK}};
  for (const Fugacity& fugacity : kFugacities) {
    const auto phase = newPhase();
    for (const Case& one : cases) {
      const auto given = reals(one.values);
      ASSERT_EQ((phase.get()->*fugacity.put)(given.get()), S_OK);
      EXPECT_EQ(referencesOf(given.get()), 1u);
      IRealArrayDisp* lent = nullptr;
      EXPECT_EQ((phase.get()->*fugacity.lend)(&lent), one.lent);
      ASSERT_NE(lent, nullptr);
      const ULONG before = referencesOf(lent);
      ComPtr<IRealArrayDisp> owned;
      EXPECT_EQ((phase.get()->*fugacity.get)(owned.out()), one.got);
      EXPECT_EQ(referencesOf(lent), before + 1);
      EXPECT_EQ(realsIn(owned.get()), Reals(one.values));
      EXPECT_EQ((phase.get()->*fugacity.put)(nullptr), S_FALSE);
      EXPECT_EQ(realsIn(owned.get()), Reals(one.values));
    }
  }
}

TEST_F(Phase, FinalizeBindsAndSizes) {
  CountedCompounds three(3), two(2);
  {
    const auto phase = newPhase();
    ASSERT_EQ(phase->Finalize(&three), S_OK);
    EXPECT_EQ(three.references, 2u);
    ComPtr<IDispatch> compounds;
    ComPtr<ICompoundCollection> collection;
    EXPECT_EQ(phase->get_Compounds(compounds.out()), S_OK);
    EXPECT_EQ(phase->GetCompounds(collection.out()), S_OK);
    EXPECT_EQ(collection.get(), &three);
    EXPECT_EQ(three.references, 4u);
    EXPECT_EQ(compositionOf(phase), Reals(3, kUnset));

    ASSERT_EQ(phase->put_MolarComposition(reals({0.1, 0.2, 0.3, 0.4}).get()), S_OK);
    EXPECT_EQ(numberOfCompounds(phase), 4) << "those of the composition";
    ASSERT_EQ(phase->Finalize(&two), S_OK);
    EXPECT_EQ(three.references, 3u) << "the earlier collection is released";
    EXPECT_EQ(numberOfCompounds(phase), 2);
    EXPECT_EQ(compositionOf(phase), Reals(2, kUnset)) << "nothing of the old composition";
    for (const Fugacity& fugacity : kFugacities) {
      IRealArrayDisp* lent = nullptr;
      EXPECT_EQ((phase.get()->*fugacity.lend)(&lent), S_FALSE);
      EXPECT_EQ(realsIn(lent), Reals(2, kUnset));
    }

    CountedCompounds failing(7), negative(-1);
    failing.result = kBroken;
    EXPECT_EQ(phase->Finalize(nullptr), E_FAIL);
    EXPECT_EQ(phase->Finalize(reals({}).get()), E_NOINTERFACE);
    EXPECT_EQ(phase->Finalize(&failing), kBroken);
    EXPECT_EQ(phase->Finalize(&negative), E_FAIL);
    EXPECT_EQ(failing.references + negative.references, 2u);
    EXPECT_EQ(numberOfCompounds(phase), 2) << "still bound";
  }
  EXPECT_EQ(three.references, 1u);
  EXPECT_EQ(two.references, 1u);
}

TEST_F(Phase, EachBitOfAResetKeepsItsGroup) {
  CountedCompounds two(2);
  for (const DWORD kept : {0x0u, 0x1u, 0x2u, 0x4u, 0x8u, 0x10u, 0x20u, 0x40u, 0x80u, 0x84u, 0xFFu, 0xFFFFFFFFu}) {
    SCOPED_TRACE(kept);
    const auto phase = newPhase();
    ASSERT_EQ(phase->Finalize(&two), S_OK);
    for (const RealProperty& real : kRealProperties) (phase.get()->*real.put)(4.0);
    phase->put_PhaseType(xptLiquid);
    phase->put_PhaseStatus(xpsActivePhase);
    phase->put_IsPseudoRoot(1);
    query<IUserPhaseType>(phase)->put_UserPhaseType(xptSolid);
    phase->put_MolarComposition(reals({0.4, 0.6}).get());
    for (const Fugacity& fugacity : kFugacities) (phase.get()->*fugacity.put)(reals({0.1, 0.2}).get());

    ASSERT_EQ(phase->ResetProperties(kept), S_OK);
    for (const RealProperty& real : kRealProperties) {
      double value = 0;
      (phase.get()->*real.get)(&value);
      const bool keeps = real.keptBy && (kept & real.keptBy) == real.keptBy;
      EXPECT_EQ(value, keeps ? 4.0 : kUnset) << narrow(real.name);
    }
    tagPhaseTypeEnum type{};
    tagPhaseStatusEnum status{};
    BYTE pseudo = 1;
    EXPECT_EQ(phase->get_PhaseStatus(&status), kept & 0x1 ? S_OK : S_FALSE);
    EXPECT_EQ(phase->get_PhaseType(&type), kept & 0x2 ? S_OK : S_FALSE);
    EXPECT_EQ(compositionOf(phase), kept & 0x80 ? (Reals{0.4, 0.6}) : Reals(2, kUnset));
    phase->get_IsPseudoRoot(&pseudo);
    EXPECT_EQ(pseudo, 0);
    EXPECT_EQ(query<IUserPhaseType>(phase)->get_UserPhaseType(&type), S_OK) << "never reset";
    EXPECT_EQ(numberOfCompounds(phase), 2);
    for (const Fugacity& fugacity : kFugacities) {
      IRealArrayDisp* lent = nullptr;
      EXPECT_EQ((phase.get()->*fugacity.lend)(&lent), S_FALSE);
      EXPECT_EQ(realsIn(lent), (Reals{kUnset, 0.2})) << "the first element alone";
    }
  }
}

TEST_F(Phase, ACopyHasTheValuesButNotTheUsersOwn) {
  CountedCompounds two(2), five(5);
  {
    const auto source = newPhase(), copy = newPhase();
    ASSERT_EQ(source->Finalize(&two), S_OK);
    ASSERT_EQ(copy->Finalize(&five), S_OK);
    double given = 10;
    for (const RealProperty& real : kRealProperties)
      if (real.place != 5) (source.get()->*real.put)(given += 1);
    copy->put_Temperature(300.0);
    source->put_PhaseType(xptVapour);
    source->put_IsPseudoRoot(3);
    source->put_MolarComposition(reals({0.1, 0.9}).get());
    source->put_LnFugacity(reals({1.0, 2.0}).get());
    query<IUserPhaseType>(source)->put_UserPhaseType(xptSolid);
    INT index = -1;
    query<IDerivativeProp>(source)->AddDerivativeProp(1, 2, RealPoint, RealPoint, &index);

    ASSERT_EQ(copy->CopyProperties(source.get()), S_OK);
    given = 10;
    for (const RealProperty& real : kRealProperties) {
      double value = 0;
      (copy.get()->*real.get)(&value);
      EXPECT_EQ(value, real.place == 5 ? kUnset : given += 1) << narrow(real.name);
    }
    tagPhaseTypeEnum type{};
    BYTE pseudo = 0;
    INT count = -1;
    EXPECT_EQ(copy->get_PhaseType(&type), S_OK);
    EXPECT_EQ(type, xptVapour);
    copy->get_IsPseudoRoot(&pseudo);
    EXPECT_EQ(pseudo, 3);
    EXPECT_EQ(numberOfCompounds(copy), 2);
    EXPECT_EQ(five.references, 1u);
    EXPECT_EQ(two.references, 3u);
    EXPECT_EQ(compositionOf(copy), (Reals{0.1, 0.9}));
    IRealArrayDisp* lent = nullptr;
    EXPECT_EQ(copy->GetLnFugacity(&lent), S_OK);
    EXPECT_EQ(realsIn(lent), (Reals{1.0, 2.0}));
    EXPECT_EQ(copy->GetLnFugacityCoeff(&lent), S_FALSE);
    EXPECT_EQ(query<IUserPhaseType>(copy)->get_UserPhaseType(&type), S_FALSE);
    EXPECT_EQ(query<IDerivativeProp>(copy)->GetNumDerivativeProps(&count), S_OK);
    EXPECT_EQ(count, 0);

    EXPECT_EQ(copy->CopyProperties(copy.get()), S_OK) << "onto itself";
    EXPECT_EQ(compositionOf(copy), (Reals{0.1, 0.9}));
    EXPECT_EQ(copy->CopyProperties(nullptr), E_FAIL);
    EXPECT_EQ(copy->CopyProperties(&two), E_NOINTERFACE);
    EXPECT_EQ(copy->CopyProperties(newPhase().get()), S_OK) << "of an empty phase";
    EXPECT_EQ(two.references, 2u);
  }
  EXPECT_EQ(two.references, 1u);
}

TEST_F(Phase, AFailingReadEndsACopy) {
  for (int reads = 0; reads <= 12; ++reads) {
    SCOPED_TRACE(reads);
    const auto copy = newPhase();
    for (const RealProperty& real : kRealProperties) (copy.get()->*real.put)(3.0);
    HostPhase source(reads);
    EXPECT_EQ(copy->CopyProperties(&source), reads < 12 ? HostPhase::kFailure : E_NOINTERFACE) << "no numbers";
    EXPECT_EQ(source.references, 1u);
    tagPhaseTypeEnum type{};
    tagPhaseStatusEnum status{};
    EXPECT_EQ(copy->get_PhaseType(&type), reads > 0 ? S_OK : S_FALSE);
    EXPECT_EQ(copy->get_PhaseStatus(&status), reads > 1 ? S_OK : S_FALSE);
    for (const RealProperty& real : kRealProperties) {
      double value = 0;
      (copy.get()->*real.get)(&value);
      EXPECT_EQ(value, real.place < reads ? 1.0 : 3.0) << narrow(real.name);
    }
  }
}

// Uses every call that reaches the arrays; the first result that is a failure, or none.
HRESULT useArrays(IBasicPhase* phase, IDispatch* compounds, IRealArrayDisp* values, IBasicPhase* source) {
  ComPtr<IDispatch> composition;
  ComPtr<IRealArrayDisp> owned;
  IRealArrayDisp* lent = nullptr;
  phase->GetLnFugacity(&lent);
  for (const HRESULT hr :
       {phase->Finalize(compounds), phase->put_MolarComposition(values), phase->put_MolarCompositionDisp(values),
        phase->put_LnFugacity(values), phase->put_LnFugacityCoeff(values), phase->get_LnFugacity(owned.out()),
        phase->get_LnFugacityCoeff(owned.out()), phase->get_MolarComposition(composition.out()),
        phase->ResetProperties(0), source ? phase->CopyProperties(source) : S_OK})
    if (FAILED(hr)) return hr;
  return S_OK;
}

TEST_F(Phase, SurvivesEveryFailureOfTheHostsArrays) {
  CountedCompounds two(2);
  const auto values = reals({0.5, 0.5});
  const auto source = newPhase();
  ASSERT_EQ(source->Finalize(&two), S_OK);
  int refused = 0, reported = 0;
  for (int failing = 0;; ++failing) {
    SCOPED_TRACE(failing);
    FailingArrays arrays(failing);
    IBasicPhase* created = nullptr;
    const HRESULT made = CoCreateInstance(__uuidof(::COQSPhase), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IBasicPhase),
                                          reinterpret_cast<void**>(&created));
    if (FAILED(made)) {
      EXPECT_EQ(made, E_FAIL);
      EXPECT_EQ(created, nullptr);
      ++refused;
    } else {
      const HRESULT hr = useArrays(created, &two, values.get(), source.get());
      if (FAILED(hr)) {
        EXPECT_EQ(hr, FailingArrays::kFailure);
        ++reported;
      }
      const bool done = !arrays.reached();
      arrays.repair();
      EXPECT_EQ(created->ResetProperties(0), S_OK) << "whatever size the arrays were left with";
      EXPECT_EQ(useArrays(created, &two, values.get(), source.get()), S_OK) << "works again";
      EXPECT_EQ(created->Release(), 0u);
      if (done) break;
    }
    ASSERT_EQ(FailingArrays::live(), 0);
  }
  EXPECT_GE(refused, 10) << "the class object, and three times a creation and two queries";
  EXPECT_EQ(reported, 27) << "9 by Finalize, 4 by the puts, 4 by the gets, 7 by the reset, 3 by the copy";
}

}  // namespace
}  // namespace qs::test
