// Variants and safe arrays, where the system has none.
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <string>

#include "platform/com_types.h"
#include "platform/variant_size.h"

namespace {

// The bytes of a value that is copied as it is; 0 for other types.
std::size_t plainSize(VARTYPE type) noexcept { return type == VT_ERROR ? sizeof(HRESULT) : qs::numberSize(type); }

std::size_t headerSize(UINT dimensions) noexcept {
  return offsetof(SAFEARRAY, rgsabound) + dimensions * sizeof(SAFEARRAYBOUND);
}

// The bounds of a dimension, null when there is no such dimension.
const SAFEARRAYBOUND* boundOf(const SAFEARRAY* array, UINT dimension) noexcept {
  return dimension >= 1 && dimension <= array->cDims ? array->rgsabound + (array->cDims - dimension) : nullptr;
}

// How many bytes the elements take; none when the product does not fit.
std::optional<std::size_t> dataSize(std::size_t element, const SAFEARRAYBOUND* bounds, UINT dimensions) noexcept {
  std::size_t size = element;
  for (UINT i = 0; i < dimensions; ++i)
    if (__builtin_mul_overflow(size, bounds[i].cElements, &size)) return std::nullopt;
  return size;
}

// The elements of an array of variants; none of another.
std::span<VARIANT> variantsOf(SAFEARRAY* array) noexcept {
  if (!(array->fFeatures & FADF_VARIANT)) return {};
  const auto count = dataSize(1, array->rgsabound, array->cDims);
  return {static_cast<VARIANT*>(array->pvData), count.value_or(0)};
}

// Text that is a number from its first to its last character, blanks around it aside.
HRESULT parse(BSTR text, double& number) noexcept {
  char digits[64];
  UINT length = 0;
  for (UINT i = 0; i < SysStringLen(text); ++i) {
    if (text[i] > 0x7E || length == sizeof digits) return DISP_E_TYPEMISMATCH;
    digits[length++] = static_cast<char>(text[i]);
  }
  const char* first = digits;
  const char* last = digits + length;
  while (first < last && *first == ' ') ++first;
  while (first < last && last[-1] == ' ') --last;
  if (first + 1 < last && *first == '+' && first[1] != '-') ++first;
  double value = 0;
  const auto [end, error] = std::from_chars(first, last, value);
  if (error == std::errc::result_out_of_range) return DISP_E_OVERFLOW;
  if (error != std::errc() || end != last || !std::isfinite(value)) return DISP_E_TYPEMISMATCH;
  number = value;
  return S_OK;
}

double numberOf(const DECIMAL& source) noexcept {
  long double number = static_cast<long double>(source.Hi32) * 18446744073709551616.0L + source.Lo64;
  for (int digit = 0; digit < source.scale; ++digit) number /= 10;
  return static_cast<double>(source.sign & 0x80 ? -number : number);
}

HRESULT numberOf(const VARIANT& source, double& number) noexcept {
  switch (source.vt) {
    case VT_EMPTY:
      number = 0;
      return S_OK;
    case VT_I1:
      number = source.cVal;
      return S_OK;
    case VT_UI1:
      number = source.bVal;
      return S_OK;
    case VT_I2:
      number = source.iVal;
      return S_OK;
    case VT_UI2:
      number = source.uiVal;
      return S_OK;
    case VT_I4:
    case VT_INT:
      number = source.lVal;
      return S_OK;
    case VT_UI4:
    case VT_UINT:
      number = source.ulVal;
      return S_OK;
    case VT_I8:
      number = static_cast<double>(source.llVal);
      return S_OK;
    case VT_UI8:
      number = static_cast<double>(source.ullVal);
      return S_OK;
    case VT_BOOL:
      number = source.boolVal;
      return S_OK;
    case VT_R4:
      number = source.fltVal;
      return S_OK;
    case VT_R8:
    case VT_DATE:
      number = source.dblVal;
      return S_OK;
    case VT_CY:
      number = static_cast<double>(source.cyVal.int64) / 10000;
      return S_OK;
    case VT_DECIMAL: {
      DECIMAL decimal;
      std::memcpy(&decimal, &source, sizeof decimal);
      number = numberOf(decimal);
      return S_OK;
    }
    case VT_BSTR:
      return parse(source.bstrVal, number);
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

HRESULT convert(VARIANT& result, const VARIANT& source, VARTYPE type) noexcept {
  result.vt = type;
  if (source.vt == type) return VariantCopy(&result, &source);
  if (type == VT_DISPATCH || type == VT_UNKNOWN) {
    const bool holdsObject = source.vt == VT_DISPATCH || source.vt == VT_UNKNOWN;
    result.punkVal = nullptr;
    if (!holdsObject) return DISP_E_TYPEMISMATCH;
    if (!source.punkVal) return S_OK;
    const IID& iid = type == VT_DISPATCH ? __uuidof(IDispatch) : __uuidof(IUnknown);
    return source.punkVal->QueryInterface(iid, &result.byref);
  }
  double number = 0;
  if (const HRESULT hr = numberOf(source, number); FAILED(hr)) return hr;
  if (type == VT_R8) {
    result.dblVal = number;
    return S_OK;
  }
  if (type != VT_I4) return DISP_E_TYPEMISMATCH;
  const double rounded = std::nearbyint(number);
  constexpr double kLeast = std::numeric_limits<LONG>::min(), kMost = std::numeric_limits<LONG>::max();
  if (!(rounded >= kLeast && rounded <= kMost)) return DISP_E_OVERFLOW;
  result.lVal = static_cast<LONG>(rounded);
  return S_OK;
}

}  // namespace

extern "C" {

void VariantInit(VARIANT* variant) noexcept { *variant = VARIANT(); }

HRESULT VariantClear(VARIANT* variant) noexcept {
  const VARIANT old = *variant;
  VariantInit(variant);
  if (old.vt & VT_BYREF)
    return S_OK;  // NOLINT(clang-analyzer-unix.Malloc): it believes a copied array to be referred to
  if (old.vt & VT_ARRAY) return SafeArrayDestroy(old.parray);
  if (old.vt == VT_BSTR) SysFreeString(old.bstrVal);
  if ((old.vt == VT_DISPATCH || old.vt == VT_UNKNOWN) && old.punkVal) old.punkVal->Release();
  return S_OK;
}

HRESULT VariantCopy(VARIANT* destination, const VARIANT* source) noexcept {
  if (destination == source) return S_OK;
  VARIANT copy = *source;
  if (!(copy.vt & VT_BYREF)) {
    if (copy.vt & VT_ARRAY) {
      if (const HRESULT hr = SafeArrayCopy(source->parray, &copy.parray); FAILED(hr)) return hr;
    } else if (copy.vt == VT_BSTR) {
      copy.bstrVal = SysAllocStringLen(source->bstrVal, SysStringLen(source->bstrVal));
      if (!copy.bstrVal) return E_OUTOFMEMORY;
    } else if (copy.vt == VT_DISPATCH || copy.vt == VT_UNKNOWN) {
      if (copy.punkVal) copy.punkVal->AddRef();
    } else if (copy.vt > VT_NULL && plainSize(copy.vt) == 0) {
      return DISP_E_BADVARTYPE;
    }
  }
  VariantClear(destination);
  *destination = copy;
  return S_OK;
}

HRESULT VariantCopyInd(VARIANT* destination, VARIANT* source) noexcept {
  if (!(source->vt & VT_BYREF)) return VariantCopy(destination, source);
  if (!source->byref) return E_INVALIDARG;
  if (source->vt == (VT_BYREF | VT_VARIANT)) {
    VARIANT* inner = source->pvarVal;
    if (inner->vt == (VT_BYREF | VT_VARIANT)) return E_INVALIDARG;
    return VariantCopyInd(destination, inner);
  }
  VARIANT referred{};
  const auto type = static_cast<VARTYPE>(source->vt & ~VT_BYREF);
  if (type <= VT_NULL) return DISP_E_BADVARTYPE;
  if (type == VT_DECIMAL) {
    std::memcpy(static_cast<void*>(&referred), source->byref, sizeof(DECIMAL));
  } else {
    const std::size_t size = plainSize(type);
    std::memcpy(&referred.llVal, source->byref, size ? size : sizeof(void*));
  }
  referred.vt = type;
  return VariantCopy(destination, &referred);
}

HRESULT VariantChangeType(VARIANT* destination, VARIANT* source, USHORT, VARTYPE type) noexcept {
  VARIANT value{};
  if (const HRESULT hr = VariantCopyInd(&value, source); FAILED(hr)) return hr;
  VARIANT result{};
  const HRESULT hr = convert(result, value, type);
  VariantClear(&value);
  if (FAILED(hr)) return hr == E_NOINTERFACE ? DISP_E_TYPEMISMATCH : hr;
  VariantClear(destination);
  *destination = result;
  return S_OK;
}

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) noexcept {
  const std::size_t element = type == VT_VARIANT ? sizeof(VARIANT) : plainSize(type);
  if (!element || !bounds || dimensions == 0 || dimensions > UINT16_MAX) return nullptr;
  const auto size = dataSize(element, bounds, dimensions);
  if (!size) return nullptr;
  auto* array = static_cast<SAFEARRAY*>(std::calloc(1, headerSize(dimensions)));
  if (!array) return nullptr;
  array->cDims = static_cast<USHORT>(dimensions);
  array->fFeatures = type == VT_VARIANT ? FADF_VARIANT : 0;
  array->cbElements = static_cast<ULONG>(element);
  for (UINT i = 0; i < dimensions; ++i) array->rgsabound[dimensions - 1 - i] = bounds[i];
  array->pvData = std::calloc(1, *size ? *size : 1);
  if (!array->pvData) {
    std::free(array);
    return nullptr;
  }
  return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) noexcept {
  if (!array) return S_OK;
  for (VARIANT& element : variantsOf(array)) VariantClear(&element);
  std::free(array->pvData);
  std::free(array);
  return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* source, SAFEARRAY** copy) noexcept {
  if (!copy) return E_INVALIDARG;
  *copy = nullptr;
  if (!source) return S_OK;
  const auto size = dataSize(source->cbElements, source->rgsabound, source->cDims);
  auto* array = static_cast<SAFEARRAY*>(std::malloc(headerSize(source->cDims)));
  void* data = size ? std::malloc(*size ? *size : 1) : nullptr;
  if (!array || !data) {
    std::free(array);
    std::free(data);
    return E_OUTOFMEMORY;
  }
  std::memcpy(static_cast<void*>(array), source, headerSize(source->cDims));
  array->pvData = data;
  array->cLocks = 0;
  if (!(source->fFeatures & FADF_VARIANT)) {
    std::memcpy(data, source->pvData, *size);
  } else {
    std::memset(data, 0, *size);
    const auto copies = variantsOf(array);
    for (std::size_t i = 0; i < copies.size(); ++i)
      if (const HRESULT hr = VariantCopy(&copies[i], static_cast<VARIANT*>(source->pvData) + i); FAILED(hr)) {
        SafeArrayDestroy(array);
        return hr;
      }
  }
  *copy = array;
  return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) noexcept { return array ? array->cDims : 0; }

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) noexcept {
  if (!array || !bound) return E_INVALIDARG;
  const SAFEARRAYBOUND* found = boundOf(array, dimension);
  if (!found) return DISP_E_BADINDEX;
  *bound = found->lLbound;
  return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) noexcept {
  if (!array || !bound) return E_INVALIDARG;
  const SAFEARRAYBOUND* found = boundOf(array, dimension);
  if (!found) return DISP_E_BADINDEX;
  *bound = static_cast<LONG>(static_cast<LONGLONG>(found->lLbound) + found->cElements - 1);
  return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) noexcept {
  if (!array || !data) return E_INVALIDARG;
  ++array->cLocks;
  *data = array->pvData;
  return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) noexcept {
  if (!array) return E_INVALIDARG;
  --array->cLocks;
  return S_OK;
}
}
