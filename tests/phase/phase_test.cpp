// What phase.calls cannot show of a phase: its whole state after resets and copies, counts and arrays of a host that
// fail, and calls back.
#include <climits>

#include "tests/support/failing_arrays.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

using Phase = PhaseTest;
constexpr auto kBroken = static_cast<HRESULT>(0x80040B01);

TEST_F(Phase, ValuesAreHeldAsGiven) {
  const auto phase = newPhase();
  EXPECT_EQ(stateOf(phase), "0: - - - 0; - - - - - - - - - -;;;");
  fill(phase);
  EXPECT_EQ(stateOf(phase), "0: 4 1 8 3; 1.5 2.5 3.5 4.5 5.5 6.5 7.5 8.5 9.5 10.5; 0.4 0.6; 0.1 0.2; -0.3 -0.4");
  for (const RealProperty& real : kRealProperties) EXPECT_EQ((phase.get()->*real.put)(kUnset), S_OK) << real.name;
  EXPECT_EQ(stateOf(phase), "0: 4 1 8 3; - - - - - - - - - -; 0.4 0.6; 0.1 0.2; -0.3 -0.4");
}

TEST_F(Phase, FinalizeBindsAndSizes) {
  CountedCompounds three(3), two(2), failing(7), negative(-1), endless(INT_MAX);
  const auto phase = newPhase();
  ASSERT_EQ(phase->Finalize(&three), S_OK);
  EXPECT_EQ(three.references, 2u);
  EXPECT_TRUE(stateOf(phase).ends_with("; - - -; - - -; - - -"));
  ASSERT_EQ(phase->put_MolarComposition(reals({0.1, 0.2, 0.3, 0.4}).get()), S_OK);

  const std::string fresh = "2: - - - 0; - - - - - - - - - -; - -; - -; - -";
  ASSERT_EQ(phase->Finalize(&two), S_OK);
  EXPECT_EQ(three.references, 1u) << "the earlier collection is released";
  EXPECT_EQ(stateOf(phase), fresh) << "nothing of the old composition";
  failing.result = kBroken;
  const std::tuple<IDispatch*, HRESULT, IDispatch*> uncounted[] = {{nullptr, E_FAIL, &two},
                                                                   {phase.get(), E_NOINTERFACE, &two},
                                                                   {&failing, kBroken, &failing},
                                                                   {&negative, E_FAIL, &negative},
                                                                   {&endless, E_OUTOFMEMORY, &endless}};
  for (const auto& [given, result, bound] : uncounted) {
    ComPtr<ICompoundCollection> compounds;
    EXPECT_EQ(phase->Finalize(given), result);
    EXPECT_EQ(phase->GetCompounds(compounds.out()), S_OK);
    EXPECT_EQ(compounds.get(), bound) << "bound before its compounds are counted";
    EXPECT_EQ(stateOf(phase), fresh);
  }
}

TEST_F(Phase, ALastReleaseMayUseThePhaseThatEnds) {
  CountedCompounds compounds(2), others(1);
  auto phase = newPhase();
  IBasicPhase* dying = phase.get();
  ASSERT_EQ(phase->Finalize(&compounds), S_OK);
  const auto give = [&] {
    const auto array = reals({1.0});
    INT index = -1;
    const Variant held(ComPtr<IDispatch>(array.get()));
    EXPECT_EQ(ComPtr<IEnumeratedPropertyContainer>::from(dying)->AddProperty(7, held.get()), S_OK);
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
  for (const auto& from : {source, copy}) {
    ASSERT_EQ(copy->CopyProperties(from.get()), S_OK);
    EXPECT_EQ(stateOf(copy), "2: 4 1 - 3; 1.5 2.5 3.5 - 5.5 6.5 7.5 8.5 9.5 10.5; 0.4 0.6; 0.1 0.2; -0.3 -0.4");
    EXPECT_EQ(got(copy, &IDerivativeProp::GetNumDerivativeProps), 0);
    EXPECT_EQ(five.references, 1u);
    EXPECT_EQ(two.references, 3u);
  }
  EXPECT_EQ(copy->CopyProperties(nullptr), E_FAIL);
  EXPECT_EQ(copy->CopyProperties(&two), E_NOINTERFACE);
  EXPECT_EQ(copy->CopyProperties(newPhase().get()), S_OK) << "of an empty phase";
  EXPECT_EQ(stateOf(copy), "0: - - - 0; - - - - - - - - - -;;;");
  EXPECT_EQ(two.references, 2u) << "of the source alone";
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

TEST_F(Phase, NamesAreRegisteredInTheirOrder) {
  NumberingRegistry registry, failing(3);
  ASSERT_EQ(query<IRegisterableObject>(newPhase())->RegisterProperties(&registry), S_OK);
  WideString names;
  for (const WideString& name : registry.names) names += name + OLESTR(' ');
  EXPECT_EQ(narrow(names),
            "PhaseType PhaseStatus PhaseFraction PhaseMassFraction Pressure Temperature Homotopy Enthalpy Entropy Cp "
            "MolarVolume MolecularWeight MolarComposition LnFugacityCoeff LnFugacity IsPseudoRoot "
            "dT dP dN dX dT2 dTdP dNdT dXdT dNdP dXdP dT3 dT2dP dNdT2 dXdT2 dNdTdP dXdTdP ");

  const auto other = newPhase();
  EXPECT_EQ(query<IRegisterableObject>(other)->RegisterProperties(&failing), NumberingRegistry::kRefused);
  for (const LONG number : {102, 103}) {
    VARIANT_BOOL known = VARIANT_FALSE;
    EXPECT_EQ(query<IEnumeratedPropertyContainer>(other)->SupportsProperty(number, &known), S_OK);
    EXPECT_EQ(known == VARIANT_TRUE, number == 102) << "the numbers before the failure stay";
  }
}

TEST_F(Phase, AResultIsWrittenOverAnyContent) {
  VARIANT value;
  value.vt = VT_BSTR;
  EXPECT_EQ(query<IEnumeratedPropertyContainer>(newPhase())->GetPropertyValue(7, &value), S_FALSE);
  EXPECT_EQ(value.vt, VT_EMPTY);
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
        phase->ResetProperties(0), phase->CopyProperties(source)})
    if (FAILED(hr)) return hr;
  return S_OK;
}

TEST_F(Phase, SurvivesEveryFailureOfTheHostsArrays) {
  CountedCompounds two(2);
  const auto values = reals({0.5, 0.5});
  const auto source = newPhase();
  ASSERT_EQ(source->Finalize(&two), S_OK);
  int reported = 0;
  // With and without the call telling that it failed.
  for (const HRESULT result : {FailingArrays::kFailure, S_OK}) {
    bool done = false;
    for (int failing = 0; !done; ++failing) {
      SCOPED_TRACE(testing::Message() << (FAILED(result) ? "fails " : "is silent ") << failing);
      FailingArrays arrays(failing, result);
      ComPtr<IBasicPhase> created;
      const HRESULT made = CoCreateInstance(__uuidof(::COQSPhase), nullptr, CLSCTX_INPROC_SERVER, __uuidof(IBasicPhase),
                                            reinterpret_cast<void**>(created.out()));
      if (created) {
        const HRESULT hr = useArrays(created.get(), &two, values.get(), source.get());
        reported += hr == FailingArrays::kFailure ? 1 : 0;
        done = !arrays.reached();
        arrays.repair();
        EXPECT_EQ(created->ResetProperties(0), S_OK) << "whatever size the arrays were left with";
        EXPECT_EQ(useArrays(created.get(), &two, values.get(), source.get()), S_OK) << "works again";
      } else {
        EXPECT_EQ(made, E_FAIL);
      }
      created = {};
      ASSERT_EQ(FailingArrays::live(), 0);
    }
  }
  EXPECT_EQ(reported, 27) << "9 by Finalize, 4 by the puts, 4 by the gets, 7 by the reset, 3 by the copy";
}

}  // namespace
}  // namespace qs::test
