// Short ways to make and read compounds in tests.
#pragma once

#include <initializer_list>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/number_text.h"
#include "tests/support/component_test.h"

namespace qs::test {

class CompoundTest : public ComponentTest {
 public:
  static constexpr double kEmpty = -32767.0;

  static ComPtr<IRealArrayDisp> reals(const std::vector<double>& values) {
    return filled(create<IRealArrayDisp>(__uuidof(::HostRealArray)), values);
  }
  static ComPtr<IIntegerArrayDisp> integers(const std::vector<LONG>& values) {
    return filled(create<IIntegerArrayDisp>(__uuidof(::HostIntegerArray)), values);
  }

 protected:
  static ComPtr<IBasicCompound> newCompound() { return create<IBasicCompound>(__uuidof(::COQSCompound)); }

 private:
  template <class Array, class T>
  static Array filled(Array array, const std::vector<T>& values) {
    EXPECT_EQ(array->put_Size(static_cast<LONG>(values.size())), S_OK);
    LONG i = 0;
    for (const T value : values) EXPECT_EQ(array->put_IthValue(i++, value), S_OK);
    return array;
  }
};

// The elements of a host's array.
template <class Array, class T>
std::vector<T> elementsIn(IUnknown* object) {
  const auto array = ComPtr<Array>::from(object);
  EXPECT_TRUE(array);
  LONG size = 0;
  EXPECT_EQ(array->get_Size(&size), S_OK);
  std::vector<T> values(static_cast<std::size_t>(size));
  for (LONG i = 0; i < size; ++i) EXPECT_EQ(array->get_IthValue(i, &values[static_cast<std::size_t>(i)]), S_OK);
  return values;
}
inline std::vector<LONG> valuesOf(IUnknown* integers) { return elementsIn<IIntegerArrayDisp, LONG>(integers); }
inline std::vector<double> realsIn(IUnknown* reals) { return elementsIn<IRealArrayDisp, double>(reals); }

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
  BSTR synonym = nullptr;
  for (INT i = 0; i < 80 && query<ICompoundID>(compound)->get_SynonymName(i, &synonym) == S_OK; ++i)
    text << ' ' << narrow(taken(synonym));
  ComPtr<IDispatch> types, counts;
  query<ICompoundUNIFAC1>(compound)->get_UNIFAC1Groups(types.out(), counts.out());
  for (const auto& list : {types, counts}) {
    text << ';';
    for (const LONG number : valuesOf(list.get())) text << ' ' << number;
  }
  return text.str();
}

// Everything that a compound's interfaces give: the identity, then a line for each property that is set; doubles with
// every bit.
inline std::string describe(const ComPtr<IBasicCompound>& compound) {
  std::string text = identityOf(compound) + ';';
  const auto add = [&text](const auto&... items) {
    const auto one = [&text](const auto& item) {
      if constexpr (std::is_same_v<std::decay_t<decltype(item)>, double>) {
        char digits[kExactNumberLength];
        text.append(digits, writeExactDouble(digits, item)) += ' ';
      } else if constexpr (std::is_arithmetic_v<std::decay_t<decltype(item)>>) {
        text += std::to_string(item) + ' ';
      } else {
        text += narrow(item) + ' ';
      }
    };
    (one(items), ...);
  };
  VARIANT_BOOL flag = 0;
  add(got(compound, &ICompoundFamily::get_SubFamily), got(compound, &ICompoundID::get_NumberOfSynonymNames),
      got(compound, &ICompoundUNIFAC1::get_UNIFAC1NumberOfGroups),
      query<ICompoundFamily>(compound)->get_NonCondensable(&flag));

  const auto props = query<ICompoundProp>(compound);
  for (const BYTE fixed : {BYTE{1}, BYTE{0}}) {
    INT count = 0;
    props->GetNumbOfProperty(fixed, &count);
    for (INT i = 0; i < count; ++i) {
      Bstr name, loader, form;
      tagPropTypeEnum type{}, byName{};
      props->GetPropertyName(fixed, i, name.out(), &type);
      if (props->GetPropertyType(name.get(), &byName) != S_OK && fixed) continue;
      text += '\n';
      add(name.view(), INT{type}, INT{byName});
      if (query<ICompoundPropPut>(compound)->GetPropertyLoader(name.get(), loader.out()) == S_OK)
        add(OLESTR("from"), loader.view());
      double v[6]{};
      LONG dependencies = 0;
      tagEquationShapeEnum shape{};
      tagXYShapeEnum x{}, y{};
      INT coefficients = 0;
      ComPtr<IRealArrayDisp> array;
      ComPtr<IPCProperty> component;
      BSTR className = nullptr, content = nullptr;
      if (byName == PointProp) {
        props->GetPropertyValue(name.get(), 300, 100, eNoExtrapolation, &dependencies, v);
        add(v[0]);
      } else if (byName == EquationProp) {
        props->GetEquationProperty(name.get(), &shape, form.out(), v, v + 1, v + 2, v + 3, &coefficients, array.out());
        add(INT{shape}, form.view(), v[0], v[1], v[2], v[3]);
        for (LONG at = 0; at < coefficients; ++at) array->get_IthValue(at, v), add(v[0]);
        query<ICompEqnXYShape>(compound)->GetEquationPropertyXYShape(name.get(), &x, &y, v, v + 1, v + 2, v + 3, v + 4,
                                                                     v + 5);
        add(INT{x}, INT{y}, v[0], v[1], v[2], v[3], v[4], v[5]);
      } else if (byName == COMProp) {
        props->GetCOMProperty(name.get(), &className, component.out());
        if (component) component->Store(&content);
        add(taken(className), taken(content));
      }
    }
  }
  const auto user = query<IUserProperty>(compound);
  BSTR classId = nullptr, content = nullptr;
  Bstr name;
  ComPtr<IDispatch> component;
  for (INT i = 0; user->GetUserPropertyI(i, name.out(), &classId, component.out()) == S_OK; ++i) {
    const auto store = ComPtr<ICOMUserProp>::from(component.get());
    if (store) store->Store(&content);
    text += '\n';
    add(OLESTR("user"), name.view(), taken(classId), taken(std::exchange(content, nullptr)));
  }
  return text;
}

}  // namespace qs::test
