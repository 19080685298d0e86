// Short ways to make and read compounds in tests.
#pragma once

#include <cmath>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/component_test.h"

namespace qs::test {

class CompoundTest : public ComponentTest {
 protected:
  static constexpr double kEmpty = -32767.0;

  static ComPtr<IBasicCompound> newCompound() { return create<IBasicCompound>(__uuidof(::COQSCompound)); }

  static ComPtr<IRealArrayDisp> reals(std::initializer_list<double> values) {
    auto array = create<IRealArrayDisp>(__uuidof(::HostRealArray));
    EXPECT_EQ(array->put_Size(static_cast<LONG>(values.size())), S_OK);
    LONG i = 0;
    for (const double value : values) EXPECT_EQ(array->put_IthValue(i++, value), S_OK);
    return array;
  }

  static ComPtr<IIntegerArrayDisp> integers(std::initializer_list<LONG> values) {
    auto array = create<IIntegerArrayDisp>(__uuidof(::HostIntegerArray));
    EXPECT_EQ(array->put_Size(static_cast<LONG>(values.size())), S_OK);
    LONG i = 0;
    for (const LONG value : values) EXPECT_EQ(array->put_IthValue(i++, value), S_OK);
    return array;
  }

  static std::vector<LONG> valuesOf(IDispatch* array) {
    const auto integers = ComPtr<IIntegerArrayDisp>::from(array);
    EXPECT_TRUE(integers);
    LONG size = 0;
    EXPECT_EQ(integers->get_Size(&size), S_OK);
    std::vector<LONG> values(static_cast<std::size_t>(size));
    for (LONG i = 0; i < size; ++i) EXPECT_EQ(integers->get_IthValue(i, &values[static_cast<std::size_t>(i)]), S_OK);
    return values;
  }
};

// What a string getter gave, as a caller owns it; a null string shows as "(null)".
inline WideString taken(BSTR text) {
  const Bstr owned = Bstr::adopt(text);
  return owned ? WideString(owned.view()) : WideString(OLESTR("(null)"));
}

}  // namespace qs::test
