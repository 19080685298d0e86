#include "automation/script_values.h"

#include <limits>
#include <optional>
#include <vector>

#include "com/host_arrays.h"
#include "com/locked_array.h"
#include "com/variant.h"
#include "platform/text.h"
#include "platform/variant_size.h"

namespace qs {
namespace {

[[noreturn]] void refuse() { throw CQSCOMError(DISP_E_TYPEMISMATCH); }

// The elements of an array; of a matrix column by column.
struct Numbers {
  LONG rows = 0;
  LONG columns = 1;
  std::vector<double> elements;
};

LONG countOf(const LockedArray& array, UINT dimension) {
  const ULONG count = array.extent(dimension);
  if (count > static_cast<ULONG>(std::numeric_limits<LONG>::max())) refuse();
  return static_cast<LONG>(count);
}

Numbers elementsOf(SAFEARRAY* array, VARTYPE type, UINT dimensions) {
  if (!array || SafeArrayGetDim(array) != dimensions) refuse();
  if (valueSize(type) == 0 || array->cbElements != valueSize(type)) refuse();
  const LockedArray locked(array);
  Numbers numbers{countOf(locked, 1), dimensions == 2 ? countOf(locked, 2) : 1, {}};
  const auto count = static_cast<std::size_t>(numbers.rows) * static_cast<std::size_t>(numbers.columns);
  numbers.elements.reserve(count);
  VARIANT element;
  VariantInit(&element);
  element.vt = static_cast<VARTYPE>(VT_BYREF | type);
  for (std::size_t i = 0; i < count; ++i) {
    element.byref = locked.element(i);
    numbers.elements.push_back(numberFrom(element));
  }
  return numbers;
}

// A property of a script's object; nothing when there is none of that name.
std::optional<Variant> readMember(IDispatch* object, WideString name) {
  LPOLESTR names[] = {name.data()};
  DISPID id = 0;
  if (FAILED(object->GetIDsOfNames(IID{}, names, 1, LOCALE_USER_DEFAULT, &id))) return {};
  DISPPARAMS none{};
  Variant value;
  const HRESULT hr =
      object->Invoke(id, IID{}, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value.address(), nullptr, nullptr);
  if (FAILED(hr)) return {};
  return value;
}

std::optional<Numbers> elementsOf(IDispatch* object, UINT dimensions) {
  const auto length = readMember(object, OLESTR("length"));
  if (!length) return {};
  if (dimensions != 1) refuse();
  const double size = numberFrom(length->get());
  if (!(size >= 0 && size <= std::numeric_limits<LONG>::max())) refuse();
  Numbers numbers;
  while (numbers.rows < size) {
    const auto element = readMember(object, widen(std::to_string(numbers.rows)));
    if (!element) refuse();
    numbers.elements.push_back(numberFrom(element->get()));
    ++numbers.rows;
  }
  return numbers;
}

// The object, perhaps null, that a variant holds or refers to; nothing for other types.
std::optional<ComPtr<IUnknown>> objectIn(const VARIANT& given) {
  const int type = given.vt & ~VT_BYREF;
  if (type != VT_DISPATCH && type != VT_UNKNOWN) return {};
  if (!(given.vt & VT_BYREF)) return ComPtr<IUnknown>(given.punkVal);
  if (!given.byref) refuse();
  return ComPtr<IUnknown>(*static_cast<IUnknown**>(given.byref));
}

// The elements of a safe array or of a script's own array; nothing for other values.
std::optional<Numbers> numbersIn(const VARIANT& given, const std::optional<ComPtr<IUnknown>>& object, UINT dimensions) {
  if (given.vt & VT_ARRAY) {
    if ((given.vt & VT_BYREF) && !given.byref) refuse();
    SAFEARRAY* array = given.vt & VT_BYREF ? *static_cast<SAFEARRAY**>(given.byref) : given.parray;
    return elementsOf(array, static_cast<VARTYPE>(given.vt & ~(VT_ARRAY | VT_BYREF)), dimensions);
  }
  const auto scripted = object ? ComPtr<IDispatch>::from(object->get()) : ComPtr<IDispatch>();
  return scripted ? elementsOf(scripted.get(), dimensions) : std::nullopt;
}

// An object of the host's class for the elements.
ComPtr<IDispatch> arrayObject(REFIID iid, const Numbers& numbers) {
  if (IsEqualGUID(iid, __uuidof(IRealArrayDisp)) || IsEqualGUID(iid, __uuidof(IDispatch)))
    return ComPtr<IDispatch>(newRealArray(numbers.elements).get());
  if (IsEqualGUID(iid, __uuidof(IRealMatrixDisp)))
    return ComPtr<IDispatch>(newRealMatrix(numbers.rows, numbers.columns, numbers.elements).get());
  if (!IsEqualGUID(iid, __uuidof(IIntegerArrayDisp))) refuse();
  std::vector<LONG> integers;
  for (const double element : numbers.elements) {
    if (!(element > -2147483649.0 && element < 2147483648.0)) refuse();
    integers.push_back(static_cast<LONG>(element));
    if (integers.back() != element) refuse();
  }
  return ComPtr<IDispatch>(newIntegerArray(integers).get());
}

template <class T>
VARIANT variantOfAny(std::span<const T> numbers, bool isArray, std::size_t rows) {
  if (!isArray) return Variant(numbers[0]).release();
  const std::size_t columns = rows > 0 ? numbers.size() / rows : numbers.size();
  SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(rows > 0 ? rows : columns), 0}, {static_cast<ULONG>(columns), 0}};
  VARIANT result{};
  result.parray = SafeArrayCreate(VT_VARIANT, rows > 0 ? 2 : 1, bounds);
  if (!result.parray) throw CQSCOMError(E_OUTOFMEMORY);
  result.vt = VT_ARRAY | VT_VARIANT;
  // In memory the first dimension varies fastest. A new array's elements are empty.
  auto* const elements = static_cast<VARIANT*>(result.parray->pvData);
  for (std::size_t i = 0; i < numbers.size(); ++i)
    elements[rows > 0 ? i % columns * rows + i / columns : i] = Variant(numbers[i]).release();
  return result;
}

}  // namespace

const VARIANT& behind(const VARIANT& given) {
  return given.vt == (VT_BYREF | VT_VARIANT) && given.pvarVal ? *given.pvarVal : given;
}

std::size_t valueSize(VARTYPE type) {
  switch (type) {
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return sizeof(void*);
    case VT_VARIANT:
      return sizeof(VARIANT);
    default:
      return numberSize(type);
  }
}

double numberFrom(const VARIANT& value) {
  const VARIANT& given = behind(value);
  if (given.vt == VT_R8) return given.dblVal;
  if (given.vt == (VT_BYREF | VT_R8) && given.byref) return *static_cast<const double*>(given.byref);
  Variant number;
  const HRESULT hr = VariantChangeType(number.address(), const_cast<VARIANT*>(&value), 0, VT_R8);
  if (FAILED(hr)) throw CQSCOMError(hr == DISP_E_OVERFLOW || hr == E_OUTOFMEMORY ? hr : DISP_E_TYPEMISMATCH);
  return number.get().dblVal;
}

std::optional<LONG> positionFrom(const VARIANT& value) {
  if (value.vt == VT_EMPTY || value.vt == VT_NULL) refuse();
  const double number = numberFrom(value);
  if (!(number >= 0 && number <= std::numeric_limits<LONG>::max())) return {};
  const auto position = static_cast<LONG>(number);
  return position == number ? std::optional(position) : std::nullopt;
}

void interfaceFrom(const VARIANT& value, REFIID iid, void** out) {
  *out = nullptr;
  const VARIANT& given = behind(value);
  if (given.vt == VT_EMPTY || given.vt == VT_NULL) return;
  const auto object = objectIn(given);
  if (object && !object->get()) return;
  // A script's array has IDispatch too, but is not a host's array.
  const bool any = IsEqualGUID(iid, __uuidof(IDispatch));
  if (object && !any && SUCCEEDED(object->get()->QueryInterface(iid, out))) return;
  if (const auto numbers = numbersIn(given, object, IsEqualGUID(iid, __uuidof(IRealMatrixDisp)) ? 2 : 1))
    check(arrayObject(iid, *numbers)->QueryInterface(iid, out));
  else if (!object || !any || FAILED(object->get()->QueryInterface(iid, out)))
    refuse();
}

OneOrMany numbersFrom(const VARIANT& value) {
  const VARIANT& given = behind(value);
  const auto object = objectIn(given);
  if (object) {
    if (const auto reals = ComPtr<IRealArrayDisp>::from(object->get())) return {elementsOf<double>(reals.get()), true};
    if (const auto integers = ComPtr<IIntegerArrayDisp>::from(object->get())) {
      const std::vector<LONG> elements = elementsOf<LONG>(integers.get());
      return {{elements.begin(), elements.end()}, true};
    }
  }
  if (auto numbers = numbersIn(given, object, 1)) return {std::move(numbers->elements), true};
  if (given.vt == VT_EMPTY || given.vt == VT_NULL || (object && !object->get())) refuse();
  return {{numberFrom(given)}, false};
}

VARIANT variantOf(std::span<const double> numbers, bool isArray, std::size_t rows) {
  return variantOfAny(numbers, isArray, rows);
}
VARIANT variantOf(std::span<const LONG> numbers, bool isArray, std::size_t rows) {
  return variantOfAny(numbers, isArray, rows);
}

}  // namespace qs
