// Enumerators of what objects have at positions.
#pragma once

#include <utility>

#include "automation/coclass.h"
#include "com/variant.h"

namespace qs {

// `Source` holds the object and has
//   LONG count()         the number of positions, now
//   Variant at(LONG)     what is at a position; empty where nothing is, which is skipped
// Both may throw CQSCOMError. Nothing is copied: what is put, moved or taken away meanwhile shows.
template <class Source>
class Enumerator final : public ComObject<Enumerator<Source>, Plain<IEnumVARIANT>> {
 public:
  static ComPtr<IEnumVARIANT> create(Source source, LONG position) {
    auto made = Enumerator::template make<IEnumVARIANT>();
    auto& enumerator = static_cast<Enumerator&>(*made.get());
    enumerator.source_ = std::move(source);
    enumerator.position_ = position;
    return made;
  }

  STDMETHODIMP Next(ULONG count, VARIANT* elements, ULONG* fetched) noexcept override {
    if (fetched) *fetched = 0;
    if (!elements || (!fetched && count != 1)) return report(E_POINTER);
    ULONG written = 0;
    const HRESULT result = guarded([&] {
      while (written < count) {
        Variant element = next();
        if (isNothing(element)) return S_FALSE;
        elements[written++] = element.release();
      }
      return S_OK;
    });
    if (FAILED(result))
      while (written > 0) VariantClear(&elements[--written]);
    if (fetched) *fetched = written;
    return result;
  }
  STDMETHODIMP Skip(ULONG count) noexcept override {
    return guarded([&] {
      for (; count > 0; --count)
        if (isNothing(next())) return S_FALSE;
      return S_OK;
    });
  }
  STDMETHODIMP Reset() noexcept override {
    position_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumVARIANT** copy) noexcept override {
    if (!copy) return report(E_POINTER);
    *copy = nullptr;
    return guarded([&] {
      *copy = create(source_, position_).release();
      return S_OK;
    });
  }

 private:
  static bool isNothing(const Variant& element) { return element.get().vt == VT_EMPTY; }

  // Empty at the end.
  Variant next() {
    while (position_ < source_.count()) {
      Variant element = source_.at(position_++);
      if (!isNothing(element)) return element;
    }
    return {};
  }

  Source source_;
  LONG position_ = 0;
};

// What `_NewEnum` returns.
template <class Source>
HRESULT newEnumerator(Source source, IUnknown** out, const char* member = __builtin_FUNCTION()) noexcept {
  if (!out) return report(E_POINTER, {}, member);
  *out = nullptr;
  const auto make = [&] {
    *out = Enumerator<Source>::create(std::move(source), 0).release();
    return S_OK;
  };
  return guarded(make, member);
}

// The objects of a list.
struct ItemsOf {
  ComPtr<IItems> list;

  LONG count() {
    LONG count = 0;
    check(list->get_Count(&count));
    return count;
  }
  Variant at(LONG position) {
    ComPtr<IDispatch> item;
    check(list->get_Item(Variant(position).get(), item.out()));
    return item ? Variant(std::move(item)) : Variant();
  }
};

}  // namespace qs
