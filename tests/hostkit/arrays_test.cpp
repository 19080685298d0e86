// The array classes of the host kit where arrays fail; the rest is in hostkit.calls.
#include "tests/support/claiming_array.h"
#include "tests/support/compounds.h"
#include "tests/support/failing_arrays.h"

namespace qs::test {
namespace {

using HostKitArrays = CompoundTest;

TEST_F(HostKitArrays, CopyWholeArraysOrNothing) {
  const auto integers = CompoundTest::integers({3, 4});
  const auto reals = CompoundTest::reals({3, 4});
  ClaimingIntegers brokenIntegers(2);
  ClaimingReals brokenReals(2);
  EXPECT_EQ(integers->Copy(&brokenIntegers), E_BOUNDS) << "without memory for all that it states";
  EXPECT_EQ(reals->Copy(&brokenReals), E_BOUNDS);
  EXPECT_EQ(valuesOf(integers.get()), (std::vector<LONG>{3, 4}));
  double value = 5;
  EXPECT_EQ(reals->get_IthValue(2, &value), E_BOUNDS);
  EXPECT_EQ(value, 5) << "nothing is written";
  EXPECT_EQ(realsIn(reals.get()), (std::vector<double>{3, 4}));
}

// The main module makes arrays by classes that may be anyone's: calls that answer S_OK without an object.
TEST_F(HostKitArrays, AnArrayThatIsNotThereIsAFailure) {
  const auto compound = create<ICompoundPropPut>(__uuidof(::COQSCompound));
  const Bstr name(OLESTR("VP"));
  ASSERT_EQ(compound->SetEquationProperty(name.get(), 1, PropCurveDIPPR101, 0, 0, 0, 0, reals({0, 0, 0, 0, 0}).get()),
            S_OK);
  int missing = 0;
  for (int failing = 0;; ++failing) {
    FailingArrays arrays(failing, S_OK);
    tagEquationShapeEnum shape{};
    Bstr form;
    double tMin = 0, tMax = 0, pMin = 0, pMax = 0;
    INT count = 0;
    ComPtr<IRealArrayDisp> given;
    const HRESULT result = query<ICompoundProp>(compound)->GetEquationProperty(
        name.get(), &shape, form.out(), &tMin, &tMax, &pMin, &pMax, &count, given.out());
    EXPECT_EQ(SUCCEEDED(result), static_cast<bool>(given)) << failing;
    if (result == E_FAIL) ++missing;
    if (given) break;
  }
  EXPECT_GE(missing, 3) << "the class, its array, and the array's interface";
}

}  // namespace
}  // namespace qs::test
