// The state of a phase through IBasicPhase and IUserPhaseType.
#include "phase/phase.h"

#include <climits>

#include "tests/support/failing_arrays.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

using Phase = PhaseTest;
constexpr auto kBroken = static_cast<HRESULT>(0x80040B01);

TEST_F(Phase, ValuesAreHeldAsGiven) {
  const auto phase = newPhase();
  const std::string empty = "0: - - - 0; - - - - - - - - - -;;;";
  EXPECT_EQ(stateOf(phase), empty);
  fill(phase);
  EXPECT_EQ(stateOf(phase), "0: 4 1 8 3; 1.5 2.5 3.5 4.5 5.5 6.5 7.5 8.5 9.5 10.5; 0.4 0.6; 0.1 0.2; -0.3 -0.4");
  for (const RealProperty& real : kRealProperties) EXPECT_EQ((phase.get()->*real.put)(kUnset), S_OK) << real.name;
  EXPECT_EQ(stateOf(phase), "0: 4 1 8 3; - - - - - - - - - -; 0.4 0.6; 0.1 0.2; -0.3 -0.4");

  for (const LONG number : {0, 1, 2, 11, 4711, -1}) {
    phase->put_PhaseType(static_cast<tagPhaseTypeEnum>(number));
    phase->put_PhaseStatus(static_cast<tagPhaseStatusEnum>(number + 1));
    query<IUserPhaseType>(phase)->put_UserPhaseType(static_cast<tagPhaseTypeEnum>(number + 2));
    std::ostringstream kinds;
    kinds << "0: " << number << ' ' << number + 1 << ' ' << number + 2 << " 3;";
    EXPECT_TRUE(stateOf(phase).starts_with(kinds.str())) << stateOf(phase);
  }
}

TEST_F(Phase, CompositionIsCopiedAndGivenOutInTwoWays) {
  const auto phase = newPhase();
  const auto given = reals({0.25, 0.75});
  ASSERT_EQ(phase->put_MolarComposition(given.get()), S_OK);
  given->put_IthValue(0, 9.0);
  EXPECT_EQ(compositionOf(phase), (Reals{0.25, 0.75})) << "not shared";

  IRealArrayDisp* lent = got(phase, &IBasicPhase::get_MolarCompositionDisp);
  const ULONG before = referencesOf(lent);
  EXPECT_EQ(got(phase, &IBasicPhase::get_MolarCompositionDisp), lent);
  EXPECT_EQ(referencesOf(lent), before) << "lent";
  ComPtr<IDispatch> owned;
  EXPECT_EQ(phase->get_MolarComposition(owned.out()), S_OK);
  EXPECT_EQ(referencesOf(lent), before + 1) << "add-referenced";
  EXPECT_EQ(phase->get_MassComposition(owned.out()), E_NOTIMPL);

  EXPECT_EQ(phase->put_MolarCompositionDisp(reals({1.0}).get()), S_OK);
  EXPECT_EQ(phase->put_MolarComposition(nullptr), E_FAIL);
  EXPECT_EQ(phase->put_MolarCompositionDisp(nullptr), E_FAIL);
  EXPECT_EQ(phase->put_MolarComposition(integers({1}).get()), E_NOINTERFACE);
  EXPECT_EQ(compositionOf(phase), Reals{1.0});
  EXPECT_EQ(phase->ResetProperties(0), S_OK) << "with empty fugacities";
  EXPECT_EQ(compositionOf(phase), Reals{kUnset});
}

TEST_F(Phase, FugacitiesTellByTheirFirstElementWhetherTheyAreSet) {
  const struct {
    std::initializer_list<double> values;
    std::string text;
  } rows[] = {{{}, ""}, {{kUnset, 1.0}, " - 1"}, {{0.5, kUnset}, " 0.5 -"}, {{-0.1}, " -0.1"}};
  for (const auto& [values, text] : rows) {
    const auto phase = newPhase();
    const auto given = reals(values);
    for (const Fugacity& fugacity : kFugacities) {
      EXPECT_EQ((phase.get()->*fugacity.put)(given.get()), S_OK);
      EXPECT_EQ((phase.get()->*fugacity.put)(nullptr), S_FALSE);
    }
    EXPECT_EQ(referencesOf(given.get()), 1u);
    EXPECT_TRUE(stateOf(phase).ends_with(";;" + text + ";" + text)) << stateOf(phase);
  }
}

TEST_F(Phase, FinalizeBindsAndSizes) {
  CountedCompounds three(3), two(2), failing(7), negative(-1), endless(INT_MAX);
  const auto phase = newPhase();
  ComPtr<IDispatch> compounds;
  ComPtr<ICompoundCollection> collection;
  EXPECT_EQ(phase->get_NumberOfCompounds(&failing.count), S_FALSE);
  EXPECT_EQ(phase->get_Compounds(compounds.out()), S_FALSE);
  EXPECT_EQ(phase->GetCompounds(collection.out()), S_FALSE);
  EXPECT_FALSE(compounds || collection);

  ASSERT_EQ(phase->Finalize(&three), S_OK);
  EXPECT_EQ(phase->get_Compounds(compounds.out()), S_OK);
  EXPECT_EQ(phase->GetCompounds(collection.out()), S_OK);
  EXPECT_EQ(collection.get(), &three);
  EXPECT_EQ(three.references, 4u);
  EXPECT_TRUE(stateOf(phase).ends_with("; - - -; - - -; - - -"));
  ASSERT_EQ(phase->put_MolarComposition(reals({0.1, 0.2, 0.3, 0.4}).get()), S_OK);
  EXPECT_TRUE(stateOf(phase).starts_with("4:")) << "the compounds of the composition";

  const std::string fresh = "2: - - - 0; - - - - - - - - - -; - -; - -; - -";
  ASSERT_EQ(phase->Finalize(&two), S_OK);
  EXPECT_EQ(three.references, 3u) << "the earlier collection is released";
  EXPECT_EQ(stateOf(phase), fresh) << "nothing of the old composition";
  failing.result = kBroken;
  EXPECT_EQ(phase->Finalize(nullptr), E_FAIL);
  EXPECT_EQ(phase->Finalize(reals({}).get()), E_NOINTERFACE);
  collection = {};
  EXPECT_EQ(phase->GetCompounds(collection.out()), S_OK);
  EXPECT_EQ(collection.get(), &two) << "still bound";
  const std::pair<CountedCompounds*, HRESULT> uncounted[] = {
      {&failing, kBroken}, {&negative, E_FAIL}, {&endless, E_OUTOFMEMORY}};
  for (const auto& [given, result] : uncounted) {
    EXPECT_EQ(phase->Finalize(given), result);
    EXPECT_EQ(phase->GetCompounds(collection.out()), S_OK);
    EXPECT_EQ(collection.get(), given) << "bound before its compounds are counted";
    EXPECT_EQ(stateOf(phase), fresh);
  }
}

TEST_F(Phase, GivesNothingNowhere) {
  const auto phase = newPhase();
  for (const RealProperty& real : kRealProperties) refusesNull(phase, real.get);
  for (const Fugacity& fugacity : kFugacities) {
    refusesNull(phase, fugacity.get);
    refusesNull(phase, fugacity.lend);
  }
  refusesNull(phase, &IBasicPhase::get_PhaseType);
  refusesNull(phase, &IBasicPhase::get_PhaseStatus);
  refusesNull(phase, &IBasicPhase::get_MolarComposition);
  refusesNull(phase, &IBasicPhase::get_MolarCompositionDisp);
  refusesNull(phase, &IBasicPhase::get_NumberOfCompounds);
  refusesNull(phase, &IBasicPhase::get_Compounds);
  refusesNull(phase, &IBasicPhase::GetCompounds);
  refusesNull(phase, &IBasicPhase::get_IsPseudoRoot);
  refusesNull(phase, &IBasicPhase::IsActivePhase);
  refusesNull(phase, &IUserPhaseType::get_UserPhaseType);
  refusesNull(phase, &IEnumeratedPropertyContainer::GetNumberOfProperties);
  refusesNull(phase, &IEnumeratedPropertyContainer::GetPropertyIDs);
  refusesNull(phase, &IEnumeratedPropertyContainer::SupportsProperty);
  refusesNull(phase, &IEnumeratedPropertyContainer::GetPropertyValue);
  refusesNull(phase, &IDerivativeProp::AddDerivativeProp);
  refusesNull(phase, &IDerivativeProp::GetDerivativePropIndex);
  refusesNull(phase, &IDerivativeProp::GetNumDerivativeProps);
  refusesNull(phase, &IDerivativeProp::GetDerivativePropIDs);
  refusesNull(phase, &IDerivativeProp::GetNeedDerivative);
  refusesNull(phase, &IDerivativeProp::GetDerivativeStatus);
  refusesNull(phase, &IDerivativeProp::GetPointDerivative);
  refusesNull(phase, &IDerivativeProp::GetArrayDerivative);
  refusesNull(phase, &IDerivativeProp::GetMatrixDerivative);
  refusesNull(phase, &IDerivativeProp::GetVariantDerivative);
  refusesNull(phase, &IDerivativeProp::GetResultValueType);
  refusesNull(phase, &IDerivativeProp::GetDerivativeType);
}

TEST_F(Phase, ALastReleaseMayUseThePhaseThatEnds) {
  CallingBack<CountedCompounds> compounds(2), others(1);
  auto phase = newPhase();
  IBasicPhase* dying = phase.get();
  ASSERT_EQ(phase->Finalize(&compounds), S_OK);
  const auto give = [&] {
    const auto array = reals({1.0});
    INT index = -1;
    VARIANT held = Variant(ComPtr<IDispatch>(array.get())).release();
    const Variant owned = Variant::adopt(held);
    EXPECT_EQ(ComPtr<IEnumeratedPropertyContainer>::from(dying)->AddProperty(7, held), S_OK);
    const auto derivatives = ComPtr<IDerivativeProp>::from(dying);
    EXPECT_EQ(derivatives->AddDerivativeProp(1, 2, RealArray, RealArray, &index), S_OK);
    EXPECT_EQ(derivatives->PutArrayDerivative(index, array.get()), S_OK);
  };
  give();
  compounds.onRelease = [&] {
    give();
    dying->Finalize(&others);
  };
  others.onRelease = [&] {
    give();
    dying->ResetProperties(0);
    ComPtr<IDispatch> composition;
    dying->get_MolarComposition(composition.out());
  };
  phase = {};
  EXPECT_EQ(compounds.references, 1u);
  EXPECT_EQ(others.references, 1u);
}

TEST_F(Phase, EachBitOfAResetKeepsItsGroup) {
  CountedCompounds two(2);
  const struct {
    DWORD kept;
    const char *kinds, *reals, *composition;
  } rows[] = {{0x00, "- - 8 0", "- - - - - - - - - -", "- -"},
              {0x01, "- 1 8 0", "- - - - - - - - - -", "- -"},
              {0x02, "4 - 8 0", "- - - - - - - - - -", "- -"},
              {0x04, "- - 8 0", "- 2.5 - - - - - - - -", "- -"},
              {0x08, "- - 8 0", "- - 3.5 - - - - - - -", "- -"},
              {0x10, "- - 8 0", "- - - 4.5 - - - - - -", "- -"},
              {0x20, "- - 8 0", "- - - - - - 7.5 - - -", "- -"},
              {0x40, "- - 8 0", "- - - - - 6.5 - - - -", "- -"},
              {0x80, "- - 8 0", "- - - - - - - - - -", "0.4 0.6"},
              {0x84, "- - 8 0", "1.5 2.5 - - - - - - - -", "0.4 0.6"},
              {0xFFFFFFFF, "4 1 8 0", "1.5 2.5 3.5 4.5 - 6.5 7.5 - - -", "0.4 0.6"}};
  for (const auto& row : rows) {
    const auto phase = newPhase();
    ASSERT_EQ(phase->Finalize(&two), S_OK);
    fill(phase);
    ASSERT_EQ(phase->ResetProperties(row.kept), S_OK);
    // Of the fugacities the first element alone is lost.
    EXPECT_EQ(stateOf(phase),
              std::string("2: ") + row.kinds + "; " + row.reals + "; " + row.composition + "; - 0.2; - -0.4")
        << row.kept;
  }
}

TEST_F(Phase, ACopyHasTheValuesButNotTheUsersOwn) {
  CountedCompounds two(2), five(5);
  const auto source = newPhase(), copy = newPhase();
  ASSERT_EQ(source->Finalize(&two), S_OK);
  ASSERT_EQ(copy->Finalize(&five), S_OK);
  fill(source);
  source->put_Temperature(kUnset);
  copy->put_Temperature(300.0);
  INT index = -1;
  query<IDerivativeProp>(source)->AddDerivativeProp(1, 2, RealPoint, RealPoint, &index);

  const std::string copied = "2: 4 1 - 3; 1.5 2.5 3.5 - 5.5 6.5 7.5 8.5 9.5 10.5; 0.4 0.6; 0.1 0.2; -0.3 -0.4";
  for (const auto& from : {source, copy}) {
    ASSERT_EQ(copy->CopyProperties(from.get()), S_OK);
    EXPECT_EQ(stateOf(copy), copied);
    EXPECT_EQ(got(copy, &IDerivativeProp::GetNumDerivativeProps), 0);
    EXPECT_EQ(five.references, 1u);
    EXPECT_EQ(two.references, 3u);
  }
  EXPECT_EQ(copy->CopyProperties(nullptr), E_FAIL);
  EXPECT_EQ(copy->CopyProperties(&two), E_NOINTERFACE);
  EXPECT_EQ(copy->CopyProperties(newPhase().get()), S_OK) << "of an empty phase";
  EXPECT_EQ(stateOf(copy), "0: - - - 0; - - - - - - - - - -;;;");
  EXPECT_EQ(two.references, 2u);
}

TEST_F(Phase, AFailingReadEndsACopy) {
  for (std::size_t reads = 0; reads <= 12; ++reads) {
    const auto copy = newPhase();
    fill(copy);
    HostPhase source(static_cast<int>(reads));
    EXPECT_EQ(copy->CopyProperties(&source), reads < 12 ? HostPhase::kFailure : E_NOINTERFACE) << "no numbers";
    // The values in the order of reading, each 1 once it was read.
    std::string values[] = {"4", "1", "1.5", "2.5", "3.5", "4.5", "5.5", "6.5", "7.5", "8.5", "9.5", "10.5"};
    std::fill_n(values, reads, "1");
    std::string expected = "0: " + values[0] + ' ' + values[1] + " 8 3;";
    for (std::size_t i = 2; i < 12; ++i) expected += ' ' + values[i];
    EXPECT_EQ(stateOf(copy), expected + "; 0.4 0.6; 0.1 0.2; -0.3 -0.4") << reads;
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
  // With and without the call telling that it failed.
  for (const HRESULT result : {FailingArrays::kFailure, S_OK}) {
    const bool tells = FAILED(result);
    for (int failing = 0;; ++failing) {
      SCOPED_TRACE(testing::Message() << (tells ? "fails " : "is silent ") << failing);
      FailingArrays arrays(failing, result);
      IBasicPhase* created = nullptr;
      const HRESULT made = CoCreateInstance(__uuidof(::COQSPhase), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IBasicPhase),
                                            reinterpret_cast<void**>(&created));
      if (FAILED(made)) {
        EXPECT_EQ(made, E_FAIL);
        EXPECT_EQ(created, nullptr);
        if (tells) ++refused;
      } else {
        const HRESULT hr = useArrays(created, &two, values.get(), source.get());
        if (FAILED(hr) && tells) {
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
  }
  EXPECT_GE(refused, 10) << "the class object, and three times a creation and two queries";
  EXPECT_EQ(reported, 27) << "9 by Finalize, 4 by the puts, 4 by the gets, 7 by the reset, 3 by the copy";
}

}  // namespace
}  // namespace qs::test
