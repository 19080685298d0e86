// Properties by the numbers that a host has assigned: the standard ones, and further ones added at run time.
#include <algorithm>
#include <type_traits>
#include <vector>

#include "com/host_arrays.h"
#include "com/query.h"
#include "phase/phase.h"

namespace qs {
namespace {

template <class T>
using Getter = HRESULT (STDMETHODCALLTYPE COQSPhase::*)(T*) noexcept;
template <class T>
using Setter = HRESULT (STDMETHODCALLTYPE COQSPhase::*)(T) noexcept;

// Enumerations are passed as 32-bit integers, the flag as a real, arrays as objects.
template <class T>
HRESULT getVariant(COQSPhase& phase, Getter<T> getter, VARIANT* value) {
  T got{};
  const HRESULT hr = (phase.*getter)(&got);
  if (FAILED(hr)) return passOn(hr);
  if constexpr (std::is_pointer_v<T>) {
    value->vt = VT_DISPATCH;
    value->pdispVal = got;
  } else if constexpr (std::is_enum_v<T>) {
    *value = Variant(static_cast<LONG>(got)).release();
  } else {
    *value = Variant(static_cast<double>(got)).release();
  }
  return hr;
}

template <class T>
HRESULT putVariant(COQSPhase& phase, Setter<T> setter, const VARIANT& value) {
  if constexpr (std::is_pointer_v<T>) {
    const Variant object = Variant::converted(value, VT_DISPATCH);
    ComPtr<std::remove_pointer_t<T>> queried;
    if (object.get().pdispVal) queried = required<std::remove_pointer_t<T>>(object.get().pdispVal, "value");
    const HRESULT hr = (phase.*setter)(queried.get());
    return FAILED(hr) ? passOn(hr) : hr;
  } else if constexpr (std::is_enum_v<T>) {
    return (phase.*setter)(static_cast<T>(Variant::converted(value, VT_I4).get().lVal));
  } else {
    const double number = Variant::converted(value, VT_R8).get().dblVal;
    if constexpr (std::is_integral_v<T>)
      return (phase.*setter)(number != 0);
    else
      return (phase.*setter)(number);
  }
}

}  // namespace

StandardProperty COQSPhase::standardProperty(LONG number) const noexcept {
  const auto end = numbers_.begin() + kStandardCount;
  return static_cast<StandardProperty>(std::find(numbers_.begin(), end, number) - numbers_.begin());
}

bool COQSPhase::accepts(LONG number) const noexcept {
  const auto found = further_.find(number);
  return found == further_.end() ? standardProperty(number) == StandardProperty::None : found->second.removed;
}

void COQSPhase::add(LONG number, Variant value) {
  FurtherProperty& property = further_[number];
  property.removed = false;
  ++propertyCount_;
  property.value = std::move(value);
}

HRESULT COQSPhase::GetNumberOfProperties(INT* count) noexcept {
  if (!count) return report(E_POINTER);
  *count = propertyCount_;
  return S_OK;
}

HRESULT COQSPhase::GetPropertyIDs(INT most, IIntegerArrayDisp** numbers) noexcept {
  if (!numbers) return report(E_POINTER);
  *numbers = nullptr;
  return guarded([&] {
    // Removals may have lowered the count below the standard properties.
    const auto size = static_cast<std::size_t>(std::max(0, std::min(most, propertyCount_)));
    std::vector<LONG> values(numbers_.begin(), numbers_.begin() + std::min(size, kStandardCount));
    for (auto next = further_.begin(); next != further_.end() && values.size() < size; ++next)
      values.push_back(next->first);
    *numbers = newIntegerArray(values).release();
    return S_OK;
  });
}

HRESULT COQSPhase::SupportsProperty(LONG number, VARIANT_BOOL* present) noexcept {
  if (!present) return report(E_POINTER);
  const auto found = further_.find(number);
  const bool supported =
      found == further_.end() ? standardProperty(number) != StandardProperty::None : !found->second.removed;
  *present = supported ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

HRESULT COQSPhase::AddProperty(LONG number, VARIANT value) noexcept {
  return guarded([&] {
    if (!accepts(number)) return S_FALSE;
    add(number, Variant::copyOf(value));
    return S_OK;
  });
}

HRESULT COQSPhase::RemoveProperty(LONG number) noexcept {
  const auto found = further_.find(number);
  if (found == further_.end())
    return standardProperty(number) == StandardProperty::None
               ? S_FALSE
               : report(E_FAIL, {"property ", number, " is a standard one, which cannot be removed"});
  found->second.removed = true;
  --propertyCount_;
  return S_OK;
}

HRESULT COQSPhase::PutPropertyValue(LONG number, VARIANT value) noexcept {
  return guarded([&] {
    const StandardProperty standard = standardProperty(number);
    if (standard != StandardProperty::None) return putStandard(standard, value);
    Variant copy = Variant::copyOf(value);
    FurtherProperty& property = further_[number];
    // A property that this call creates is present but not counted.
    if (property.removed) ++propertyCount_;
    property.removed = false;
    property.value = std::move(copy);
    return S_OK;
  });
}

HRESULT COQSPhase::GetPropertyValue(LONG number, VARIANT* value) noexcept {
  if (!value) return report(E_POINTER);
  VariantInit(value);
  return guarded([&] {
    const StandardProperty standard = standardProperty(number);
    if (standard != StandardProperty::None) return getStandard(standard, value);
    const auto found = further_.find(number);
    if (found == further_.end()) return S_FALSE;
    *value = Variant::copyOf(found->second.value.get()).release();
    return found->second.removed ? kRemovedProperty : S_OK;
  });
}

HRESULT COQSPhase::putStandard(StandardProperty property, const VARIANT& value) {
  switch (property) {
#define PHASE_PROPERTY(name)   \
  case StandardProperty::name: \
    return putVariant(*this, &COQSPhase::put_##name, value);
#include "phase/properties.def"
    case StandardProperty::None:
      break;
  }
  return E_FAIL;
}

HRESULT COQSPhase::getStandard(StandardProperty property, VARIANT* value) {
  switch (property) {
#define PHASE_PROPERTY(name)   \
  case StandardProperty::name: \
    return getVariant(*this, &COQSPhase::get_##name, value);
#include "phase/properties.def"
    case StandardProperty::None:
      break;
  }
  return E_FAIL;
}

void COQSPhase::copyFurtherProperties(IUnknown* source) {
  const auto container = required<IEnumeratedPropertyContainer>(source, "phase to copy");
  const auto got = [&](HRESULT result) { check(container.get(), result, {"the properties of the phase to copy"}); };
  INT count = 0;
  got(container->GetNumberOfProperties(&count));
  if (count <= static_cast<INT>(kStandardCount)) return;
  checkCount(count);
  ComPtr<IIntegerArrayDisp> numbers;
  got(container->GetPropertyIDs(count, numbers.out()));
  if (!numbers) fail(E_FAIL, {"the phase to copy gives no numbers of its properties"});
  for (INT i = kStandardCount; i < count; ++i) {
    LONG number = kEmptyInteger;
    checkElement(numbers.get(), numbers->get_IthValue(i, &number), static_cast<std::size_t>(i));
    Variant value;
    const HRESULT hr = container->GetPropertyValue(number, value.address());
    got(hr);
    if (hr == S_OK && accepts(number)) add(number, std::move(value));
  }
}

}  // namespace qs
