// What phase.calls cannot show of a phase: counts, reads, names and arrays of a host that fail, and calls back.
#include <climits>

#include "tests/support/failing_arrays.h"
#include "tests/support/phases.h"

namespace qs::test {
namespace {

using Phase = PhaseTest;
constexpr auto kBroken = static_cast<HRESULT>(0x80040B01);

TEST_F(Phase, CompoundsAreBoundBeforeTheyAreCounted) {
  CountedCompounds two(2), failing(7), negative(-1), endless(INT_MAX);
  failing.result = kBroken;
  const auto phase = newPhase();
  ASSERT_EQ(phase->Finalize(&two), S_OK);
  const std::string fresh = stateOf(phase);
  const std::pair<IDispatch*, HRESULT> uncounted[] = {
      {&failing, kBroken}, {&negative, E_FAIL}, {&endless, E_OUTOFMEMORY}};
  for (const auto& [given, result] : uncounted) {
    ComPtr<ICompoundCollection> compounds;
    EXPECT_EQ(phase->Finalize(given), result);
    EXPECT_EQ(phase->GetCompounds(compounds.out()), S_OK);
    EXPECT_EQ(compounds.get(), given);
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

TEST_F(Phase, AFailingReadEndsACopy) {
  for (std::size_t reads = 0; reads <= 12; ++reads) {
    const auto copy = newPhase();
    copy->put_PhaseFraction(1.5);
    copy->put_MolecularWeight(10.5);
    HostPhase source(static_cast<int>(reads));
    EXPECT_EQ(copy->CopyProperties(&source), reads < 12 ? HostPhase::kFailure : E_NOINTERFACE) << "no numbers";
    // The values in the order of reading, each 1 once it was read.
    std::string values[] = {"-", "-", "1.5", "-", "-", "-", "-", "-", "-", "-", "-", "10.5"};
    std::fill_n(values, reads, "1");
    std::string expected = "0: " + values[0] + ' ' + values[1] + " - 0;";
    for (std::size_t i = 2; i < 12; ++i) expected += ' ' + values[i];
    EXPECT_EQ(stateOf(copy), expected + ";;;") << reads;
  }
}

TEST_F(Phase, NumbersBeforeARefusedNameStay) {
  NumberingRegistry refusing(3);
  const auto phase = newPhase();
  EXPECT_EQ(query<IRegisterableObject>(phase)->RegisterProperties(&refusing), NumberingRegistry::kRefused);
  for (const LONG number : {102, 103}) {
    VARIANT_BOOL known = VARIANT_FALSE;
    EXPECT_EQ(query<IEnumeratedPropertyContainer>(phase)->SupportsProperty(number, &known), S_OK);
    EXPECT_EQ(known == VARIANT_TRUE, number == 102) << number;
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
