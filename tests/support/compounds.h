// Short ways to make and read compounds in tests.
#pragma once

#include <cmath>
#include <initializer_list>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/component_test.h"

namespace qs::test {

class CompoundTest : public ComponentTest {
 public:
  static constexpr double kEmpty = -32767.0;

  static ComPtr<IRealArrayDisp> reals(std::initializer_list<double> values) {
    return filled(create<IRealArrayDisp>(__uuidof(::HostRealArray)), values);
  }
  static ComPtr<IIntegerArrayDisp> integers(std::initializer_list<LONG> values) {
    return filled(create<IIntegerArrayDisp>(__uuidof(::HostIntegerArray)), values);
  }

 protected:
  static ComPtr<IBasicCompound> newCompound() { return create<IBasicCompound>(__uuidof(::COQSCompound)); }

 private:
  template <class Array, class T>
  static Array filled(Array array, std::initializer_list<T> values) {
    EXPECT_EQ(array->put_Size(static_cast<LONG>(values.size())), S_OK);
    LONG i = 0;
    for (const T value : values) EXPECT_EQ(array->put_IthValue(i++, value), S_OK);
    return array;
  }
};

// The elements of an array of integers.
inline std::vector<LONG> valuesOf(IDispatch* array) {
  const auto integers = ComPtr<IIntegerArrayDisp>::from(array);
  EXPECT_TRUE(integers);
  LONG size = 0;
  EXPECT_EQ(integers->get_Size(&size), S_OK);
  std::vector<LONG> values(static_cast<std::size_t>(size));
  for (LONG i = 0; i < size; ++i) EXPECT_EQ(integers->get_IthValue(i, &values[static_cast<std::size_t>(i)]), S_OK);
  return values;
}

// What a string getter gave, as a caller owns it; a null string shows as "(null)".
inline WideString taken(BSTR text) {
  const Bstr owned = Bstr::adopt(text);
  return owned ? WideString(owned.view()) : WideString(OLESTR("(null)"));
}

// What a getter answers, whether it is set or not; strings are taken over.
template <class I, class T, class J>
auto got(const ComPtr<J>& object, HRESULT (STDMETHODCALLTYPE I::*getter)(T*)) {
  T value{};
  EXPECT_TRUE(SUCCEEDED((query<I>(object).get()->*getter)(&value)));
  if constexpr (std::is_same_v<T, BSTR>)
    return taken(value);
  else
    return value;
}

// A method that gives something refuses to give it nowhere.
template <class I, class J, class... Parameters>
void refusesNull(const ComPtr<J>& object, HRESULT (STDMETHODCALLTYPE I::*method)(Parameters...)) {
  EXPECT_EQ((query<I>(object).get()->*method)(Parameters{}...), E_POINTER);
}

// What a compound answers for a property by name; the value is 0.5 where none is written.
struct PropertyReading {
  HRESULT result;
  double value;
  bool operator==(const PropertyReading&) const = default;
};
inline PropertyReading propertyOf(const ComPtr<IBasicCompound>& compound, WideView name, double temperature = 300.0) {
  LONG dependencies = 0;
  PropertyReading reading{S_OK, 0.5};
  reading.result = query<ICompoundProp>(compound)->GetPropertyValue(Bstr(name).get(), temperature, 101.325,
                                                                    eNoExtrapolation, &dependencies, &reading.value);
  return reading;
}

// Names; numbers; family and flag; synonyms; groups and their counts.
inline std::string identityOf(const ComPtr<IBasicCompound>& compound) {
  std::ostringstream text;
  for (const auto getter :
       {&ICompoundID::get_Name, &ICompoundID::get_IUPACName, &ICompoundID::get_ChemicalFormula, &ICompoundID::get_CASN})
    text << narrow(got(compound, getter)) << ' ';
  text << ';';
  for (const auto getter : {&ICompoundID::get_VelcorinID, &ICompoundID::get_PPAttribute, &ICompoundID::get_DIPPRID,
                            &ICompoundID::get_DDBID, &ICompoundID::get_PPDSID, &ICompoundID::get_CMAID})
    text << ' ' << got(compound, getter);
  text << "; " << INT{got(compound, &ICompoundFamily::get_Family)} << ' '
       << INT{got(compound, &IBasicCompound::GetNonCondensable)} << ';';
  for (INT i = 0; i < got(compound, &ICompoundID::get_NumberOfSynonymNames); ++i) {
    BSTR synonym = nullptr;
    EXPECT_EQ(query<ICompoundID>(compound)->get_SynonymName(i, &synonym), S_OK);
    text << ' ' << narrow(taken(synonym));
  }
  ComPtr<IDispatch> types, counts;
  query<ICompoundUNIFAC1>(compound)->get_UNIFAC1Groups(types.out(), counts.out());
  for (const auto& list : {types, counts}) {
    text << ';';
    for (const LONG number : valuesOf(list.get())) text << ' ' << number;
  }
  return text.str();
}

}  // namespace qs::test
