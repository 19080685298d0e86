// Late-bound calls as scripts make them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "interfaces/interfaces.h"

namespace qs::test {

// An owned variant, made from what a script passes.
class LateValue {
 public:
  LateValue() { VariantInit(&variant); }
  LateValue(double number) : LateValue() {
    V_VT(&variant) = VT_R8;
    V_R8(&variant) = number;
  }
  LateValue(int number) : LateValue() {
    V_VT(&variant) = VT_I4;
    V_I4(&variant) = number;
  }
  LateValue(IUnknown* object) : LateValue() {
    V_VT(&variant) = VT_UNKNOWN;
    V_UNKNOWN(&variant) = object;
    if (object) object->AddRef();
  }
  LateValue(const wchar_t* text) : LateValue() {
    V_VT(&variant) = VT_BSTR;
    V_BSTR(&variant) = SysAllocString(text);
  }
  LateValue(std::initializer_list<double> elements) : LateValue() {
    V_VT(&variant) = VT_ARRAY | VT_R8;
    V_ARRAY(&variant) = SafeArrayCreateVector(VT_R8, 1, static_cast<ULONG>(elements.size()));
    std::copy(elements.begin(), elements.end(), static_cast<double*>(V_ARRAY(&variant)->pvData));
  }
  // A reference to a variable of any type.
  LateValue(VARTYPE type, void* referred) : LateValue() {
    V_VT(&variant) = static_cast<VARTYPE>(VT_BYREF | type);
    V_BYREF(&variant) = referred;
  }
  // An array of numbers in another type, in the order of memory.
  LateValue(VARTYPE type, std::vector<SAFEARRAYBOUND> bounds, const std::vector<double>& elements) : LateValue() {
    V_VT(&variant) = static_cast<VARTYPE>(VT_ARRAY | type);
    V_ARRAY(&variant) = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
    auto* place = static_cast<std::byte*>(V_ARRAY(&variant)->pvData);
    for (const double number : elements) {
      LateValue element(number);
      if (type != VT_VARIANT) VariantChangeType(&element.variant, &element.variant, 0, type);
      const ULONG size = V_ARRAY(&variant)->cbElements;
      const bool whole = type == VT_VARIANT || type == VT_DECIMAL;
      std::memcpy(place, whole ? static_cast<void*>(&element.variant) : &element.variant.llVal, size);
      VariantInit(&element.variant);
      place += size;
    }
  }
  LateValue(LateValue&& other) noexcept : variant(other.variant) { VariantInit(&other.variant); }
  ~LateValue() { VariantClear(&variant); }

  VARIANT variant;
};

inline HRESULT idOf(IDispatch* object, std::wstring name, DISPID* id) {
  LPOLESTR names[] = {name.data()};
  return object->GetIDsOfNames(IID_NULL, names, 1, 0, id);
}

// Calls a member by name. Returns the code of a failure of the member itself.
inline HRESULT invokeByName(IDispatch* object, const wchar_t* name, WORD flags, LateValue& result,
                            DISPPARAMS& parameters) {
  DISPID id = 0;
  if (const HRESULT hr = idOf(object, name, &id); FAILED(hr)) return hr;
  VariantClear(&result.variant);
  EXCEPINFO exception{};
  const HRESULT hr = object->Invoke(id, IID_NULL, 0, flags, &parameters, &result.variant, &exception, nullptr);
  return hr == DISP_E_EXCEPTION ? exception.scode : hr;
}

// The same with arguments in their order.
template <class... Arguments>
HRESULT callByName(IDispatch* object, const wchar_t* name, WORD flags, LateValue& result, Arguments&&... arguments) {
  std::vector<LateValue> given;
  (given.push_back(LateValue(std::forward<Arguments>(arguments))), ...);
  std::vector<VARIANT> reversed;
  for (auto i = given.rbegin(); i != given.rend(); ++i) reversed.push_back(i->variant);
  DISPID put = DISPID_PROPERTYPUT;
  const bool putting = flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF);
  DISPPARAMS parameters{reversed.data(), putting ? &put : nullptr, static_cast<UINT>(reversed.size()), putting};
  return invokeByName(object, name, flags, result, parameters);
}

}  // namespace qs::test
