// The array classes of the host kit, through their interfaces.
#include <climits>

#include "tests/support/claiming_array.h"
#include "tests/support/component_test.h"
#include "tests/support/failing_arrays.h"

namespace qs::test {
namespace {

// One array class by the type of its elements.
template <class T>
class HostKitArrays : public ComponentTest {
 public:
  static constexpr bool kIntegers = std::is_same_v<T, LONG>;
  using I = std::conditional_t<kIntegers, IIntegerArrayDisp, IRealArrayDisp>;

  static ComPtr<I> make() { return create<I>(kIntegers ? __uuidof(::HostIntegerArray) : __uuidof(::HostRealArray)); }

  static std::vector<T> valuesOf(const ComPtr<I>& array) {
    LONG size = -1;
    EXPECT_EQ(array->get_Size(&size), S_OK);
    std::vector<T> values(static_cast<std::size_t>(size));
    for (LONG i = 0; i < size; ++i) EXPECT_EQ(array->get_IthValue(i, &values[static_cast<std::size_t>(i)]), S_OK);
    return values;
  }
};
using ArrayKinds = testing::Types<LONG, double>;
TYPED_TEST_SUITE(HostKitArrays, ArrayKinds);

TYPED_TEST(HostKitArrays, KeepElementsWithinTheirSize) {
  using T = TypeParam;
  const auto array = this->make();
  ASSERT_EQ(array->put_Size(2), S_OK);
  ASSERT_EQ(array->put_IthValue(0, 7), S_OK);
  ASSERT_EQ(array->put_Size(3), S_OK);
  const std::vector<T> resized{7, -32767, -32767};
  EXPECT_EQ(this->valuesOf(array), resized);
  for (const LONG index : {-1, 3, INT_MAX, INT_MIN}) {
    T value = 5;
    EXPECT_EQ(array->get_IthValue(index, &value), E_BOUNDS) << index;
    EXPECT_EQ(value, 5) << index;
    EXPECT_EQ(array->put_IthValue(index, 1), E_BOUNDS) << index;
  }
  EXPECT_EQ(array->put_Size(-1), E_INVALIDARG);
  EXPECT_EQ(array->get_Size(nullptr), E_POINTER);
  EXPECT_EQ(this->valuesOf(array), resized);
  ASSERT_EQ(array->put_Size(1), S_OK);
  EXPECT_EQ(this->valuesOf(array), std::vector<T>{7});
}

TYPED_TEST(HostKitArrays, CopyWholeArraysOrNothing) {
  using T = TypeParam;
  const auto source = this->make(), copy = this->make();
  source->put_Size(2);
  source->put_IthValue(0, 3);
  source->put_IthValue(1, 4);
  const std::vector<T> values{3, 4};
  ASSERT_EQ(copy->Copy(source.get()), S_OK);
  source->put_IthValue(0, 9);
  EXPECT_EQ(copy->Copy(copy.get()), S_OK);
  EXPECT_EQ(copy->Copy(nullptr), E_INVALIDARG);
  ClaimingArray<typename TestFixture::I, T> broken(2);
  EXPECT_EQ(copy->Copy(&broken), E_BOUNDS) << "without memory for all that it states";
  EXPECT_EQ(this->valuesOf(copy), values);
}

using HostKitVector = ComponentTest;

TEST_F(HostKitVector, SharesItsElementsWithTheDispatchInterface) {
  const auto array = create<IRealArrayDisp>(__uuidof(::HostRealArray));
  const auto vector = query<IRealVector>(array);
  ASSERT_EQ(vector->SetSize(2), S_OK);
  ASSERT_EQ(vector->SetElement(1, 2.5), S_OK);
  double value = 0;
  EXPECT_EQ(array->get_IthValue(1, &value), S_OK);
  EXPECT_EQ(value, 2.5);
}

// The main module makes arrays by classes that may be anyone's: calls that answer S_OK without an object.
TEST_F(HostKitVector, AnArrayThatIsNotThereIsAFailure) {
  const auto compound = create<ICompoundPropPut>(__uuidof(::COQSCompound));
  const Bstr name(OLESTR("VP"));
  const auto coefficients = create<IRealArrayDisp>(__uuidof(::HostRealArray));
  ASSERT_EQ(coefficients->put_Size(5), S_OK);
  ASSERT_EQ(compound->SetEquationProperty(name.get(), 1, PropCurveDIPPR101, 0, 0, 0, 0, coefficients.get()), S_OK);
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

using HostKitMatrix = ComponentTest;

TEST_F(HostKitMatrix, KeepsElementsByRowAndColumn) {
  const auto matrix = create<IRealMatrixDisp>(__uuidof(::HostRealMatrix)),
             copy = create<IRealMatrixDisp>(__uuidof(::HostRealMatrix));
  ASSERT_EQ(matrix->SetSize(2, 3), S_OK);
  for (LONG row = 0; row < 2; ++row)
    for (LONG column = 0; column < 3; ++column) ASSERT_EQ(matrix->put_Value(row, column, 10 * row + column), S_OK);
  EXPECT_EQ(matrix->SetSize(-1, 2), E_INVALIDARG);
  EXPECT_EQ(matrix->SetSize(INT_MAX, INT_MAX), E_OUTOFMEMORY);
  ASSERT_EQ(copy->Copy(matrix.get()), S_OK);
  ASSERT_EQ(copy->SetSize(3, 4), S_OK);
  const double expected[3][4] = {{0, 1, 2, -32767}, {10, 11, 12, -32767}, {-32767, -32767, -32767, -32767}};
  for (LONG row = -1; row <= 3; ++row)
    for (LONG column = -1; column <= 4; ++column) {
      const bool inside = row >= 0 && row < 3 && column >= 0 && column < 4;
      double value = 5;
      EXPECT_EQ(copy->get_Value(row, column, &value), inside ? S_OK : E_BOUNDS);
      EXPECT_EQ(value, inside ? expected[row][column] : 5) << row << ", " << column;
      EXPECT_EQ(copy->put_Value(row, column, value), inside ? S_OK : E_BOUNDS);
    }
}

}  // namespace
}  // namespace qs::test
