// The array classes that a host brings: vectors of integers and reals and a matrix of reals, all indexed from 0.
//
// Results: E_BOUNDS for a position outside, E_INVALIDARG for a negative size or a null source, E_POINTER for a null
// out-parameter, E_OUTOFMEMORY; nothing is written or changed then. Elements that nobody wrote hold the empty value
// -32767.
#pragma once

#include <cstdint>
#include <type_traits>
#include <vector>

#include "automation/coclass.h"
#include "automation/enumerator.h"
#include "com/host_arrays.h"
#include "com/not_set.h"

namespace qs::hostkit {

// The elements of a vector and what its interfaces do with them.
template <class T>
class Elements {
 public:
  static constexpr T kEmpty = kEmptyInteger;

  HRESULT size(LONG* out, const char* member = __builtin_FUNCTION()) const noexcept {
    if (!out) return report(E_POINTER, {}, member);
    *out = static_cast<LONG>(values_.size());
    return S_OK;
  }
  HRESULT resize(LONG size, const char* member = __builtin_FUNCTION()) noexcept {
    const auto give = [&] {
      if (size < 0) return because(E_INVALIDARG, {"the size is ", size});
      values_.resize(static_cast<std::size_t>(size), kEmpty);
      return S_OK;
    };
    return guarded(give, member);
  }
  HRESULT get(LONG index, T* out, const char* member = __builtin_FUNCTION()) const noexcept {
    if (!out) return report(E_POINTER, {}, member);
    if (!holds(index)) return outside(index, member);
    *out = values_[static_cast<std::size_t>(index)];
    return S_OK;
  }
  HRESULT put(LONG index, T value, const char* member = __builtin_FUNCTION()) noexcept {
    if (!holds(index)) return outside(index, member);
    values_[static_cast<std::size_t>(index)] = value;
    return S_OK;
  }
  // Copies size and elements of an array with get_Size and get_IthValue. Changes nothing when a call on it fails.
  template <class Source>
  HRESULT copy(Source* source) noexcept {
    const auto take = [&] {
      if (!source) return because(E_INVALIDARG, {"the array to copy is null"});
      LONG size = 0;
      checkSize(source, source->get_Size(&size));
      if (size < 0) return because(E_INVALIDARG, {"the array to copy has the size ", size});
      // Memory is taken for what was read, since a host may state any size.
      std::vector<T> values;
      for (LONG i = 0; i < size; ++i) {
        T value{};
        checkElement(source, source->get_IthValue(i, &value), static_cast<std::size_t>(i));
        values.push_back(value);
      }
      values_.swap(values);
      return S_OK;
    };
    return guarded(take, "Copy");
  }

 private:
  [[gnu::cold]] HRESULT outside(LONG index, const char* member) const noexcept {
    return report(E_BOUNDS, {"position ", index, " is outside an array of ", values_.size()}, member);
  }
  bool holds(LONG index) const { return index >= 0 && static_cast<std::size_t>(index) < values_.size(); }

  std::vector<T> values_;
};

// The elements of an array, for an enumerator.
template <class Array>
struct ElementsOf {
  ComPtr<Array> array;

  LONG count() {
    LONG size = 0;
    check(array->get_Size(&size));
    return size;
  }
  Variant at(LONG position) {
    std::conditional_t<std::is_same_v<Array, IRealArrayDisp>, double, LONG> value{};
    check(array->get_IthValue(position, &value));
    return Variant(value);
  }
};

// Those of a matrix, row by row.
template <>
struct ElementsOf<IRealMatrixDisp> {
  ComPtr<IRealMatrixDisp> array;

  LONG count();
  Variant at(LONG position);
};

class IntegerArray final : public Coclass<IntegerArray, IIntegerArrayDisp, IElements> {
 public:
  STDMETHODIMP get_IthValue(LONG index, LONG* value) noexcept override { return elements_.get(index, value); }
  STDMETHODIMP put_IthValue(LONG index, LONG value) noexcept override { return elements_.put(index, value); }
  STDMETHODIMP get_Size(LONG* size) noexcept override { return elements_.size(size); }
  STDMETHODIMP put_Size(LONG size) noexcept override { return elements_.resize(size); }
  STDMETHODIMP Copy(IIntegerArrayDisp* source) noexcept override { return elements_.copy(source); }
  STDMETHODIMP get_Count(LONG* count) noexcept override { return elements_.size(count); }
  STDMETHODIMP get__NewEnum(IUnknown** enumerator) noexcept override {
    return newEnumerator(ElementsOf<IIntegerArrayDisp>{ComPtr<IIntegerArrayDisp>(this)}, enumerator);
  }

 private:
  Elements<LONG> elements_;
};

class RealArray final : public Coclass<RealArray, IRealArrayDisp, IElements, IRealVector> {
 public:
  STDMETHODIMP get_IthValue(LONG index, double* value) noexcept override { return elements_.get(index, value); }
  STDMETHODIMP put_IthValue(LONG index, double value) noexcept override { return elements_.put(index, value); }
  STDMETHODIMP get_Size(LONG* size) noexcept override { return elements_.size(size); }
  STDMETHODIMP put_Size(LONG size) noexcept override { return elements_.resize(size); }
  STDMETHODIMP Copy(IRealArrayDisp* source) noexcept override { return elements_.copy(source); }
  STDMETHODIMP get_Count(LONG* count) noexcept override { return elements_.size(count); }
  STDMETHODIMP get__NewEnum(IUnknown** enumerator) noexcept override {
    return newEnumerator(ElementsOf<IRealArrayDisp>{ComPtr<IRealArrayDisp>(this)}, enumerator);
  }

  STDMETHODIMP GetSize(LONG* size) noexcept override { return elements_.size(size); }
  STDMETHODIMP SetSize(LONG size) noexcept override { return elements_.resize(size); }
  STDMETHODIMP GetElement(LONG index, double* value) noexcept override { return elements_.get(index, value); }
  STDMETHODIMP SetElement(LONG index, double value) noexcept override { return elements_.put(index, value); }

 private:
  Elements<double> elements_;
};

class RealMatrix final : public Coclass<RealMatrix, IRealMatrixDisp, IElements> {
 public:
  STDMETHODIMP get_Value(LONG row, LONG column, double* value) noexcept override;
  STDMETHODIMP put_Value(LONG row, LONG column, double value) noexcept override;
  STDMETHODIMP get_Rows(LONG* rows) noexcept override;
  STDMETHODIMP get_Columns(LONG* columns) noexcept override;
  // Elements whose row and column both remain keep their values.
  STDMETHODIMP SetSize(LONG rows, LONG columns) noexcept override;
  STDMETHODIMP Copy(IRealMatrixDisp* source) noexcept override;
  // E_BOUNDS for more elements than a LONG counts.
  STDMETHODIMP get_Count(LONG* count) noexcept override;
  STDMETHODIMP get__NewEnum(IUnknown** enumerator) noexcept override;

 private:
  // In 64 bits on every target, for any sizes.
  static std::uint64_t area(LONG rows, LONG columns) {
    return static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns);
  }
  double* element(LONG row, LONG column);
  HRESULT outside(LONG row, LONG column, const char* member = __builtin_FUNCTION()) const noexcept;

  LONG rows_ = 0;
  LONG columns_ = 0;
  std::vector<double> values_;  // row by row
};

}  // namespace qs::hostkit
