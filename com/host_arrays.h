// Array objects of a host: read, filled, and made from values by the host's own classes.
#pragma once

#include <algorithm>
#include <span>
#include <vector>

#include "com/com_ptr.h"
#include "com/component.h"
#include "com/error.h"
#include "interfaces/interfaces.h"

namespace qs {

// The most elements that are read from a host's list or array, or made for a number that a host states.
inline constexpr LONG kMostElements = 1 << 24;

// Checks a number of elements that a host states. Throws CQSCOMError: E_FAIL for a negative one, E_OUTOFMEMORY for one
// above the most.
inline void checkCount(LONG count) {
  if (count < 0) fail(E_FAIL, {"a number of elements is ", count});
  if (count > kMostElements) fail(E_OUTOFMEMORY, {count, " elements are more than the ", kMostElements, " allowed"});
}

// Throws for a failed call on an array that a host gave.
template <class Array>
void checkElement(Array* array, HRESULT result, std::size_t position) {
  if (FAILED(result)) [[unlikely]]
    fail(array, result, {"element ", position, " of an array"});
}
template <class Array>
void checkSize(Array* array, HRESULT result) {
  check(array, result, {"the size of an array"});
}

// The elements of an array. Memory is taken for what was read, since a host may state any size. Throws CQSCOMError with
// the result of a failed call, or as checkCount.
template <class T, class Array>
std::vector<T> elementsOf(Array* array, LONG size) {
  checkCount(size);
  std::vector<T> elements;
  for (LONG i = 0; i < size; ++i) {
    T element{};
    checkElement(array, array->get_IthValue(i, &element), static_cast<std::size_t>(i));
    elements.push_back(element);
  }
  return elements;
}
template <class T, class Array>
std::vector<T> elementsOf(Array* array) {
  LONG size = 0;
  checkSize(array, array->get_Size(&size));
  return elementsOf<T>(array, size);
}
// No more than `most` of them.
template <class T, class Array>
std::vector<T> firstElementsOf(Array* array, LONG most) {
  LONG size = 0;
  checkSize(array, array->get_Size(&size));
  return elementsOf<T>(array, std::min(size, most));
}

// Gives an array its size and elements: those of `values`, or `value` for all. Throws CQSCOMError with the result of a
// failed call.
template <class Array, class T>
void setElements(Array* array, std::span<const T> values) {
  checkSize(array, array->put_Size(static_cast<LONG>(values.size())));
  for (std::size_t i = 0; i < values.size(); ++i)
    checkElement(array, array->put_IthValue(static_cast<LONG>(i), values[i]), i);
}
template <class Array, class T>
void setElements(Array* array, LONG size, T value) {
  checkSize(array, array->put_Size(size));
  for (LONG i = 0; i < size; ++i) checkElement(array, array->put_IthValue(i, value), static_cast<std::size_t>(i));
}

// A new array with the values given. Throws CQSCOMError with the result of the class object or the call that failed, as
// REGDB_E_CLASSNOTREG where the host brings no such class; E_FAIL where a call succeeds without an object.
ComPtr<IIntegerArrayDisp> newIntegerArray(std::span<const LONG> values);
ComPtr<IRealArrayDisp> newRealArray(std::span<const double> values);
// The same for a matrix, from its elements column by column.
ComPtr<IRealMatrixDisp> newRealMatrix(LONG rows, LONG columns, std::span<const double> values);

}  // namespace qs
