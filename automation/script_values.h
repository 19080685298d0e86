// Converts what scripts pass: numbers of any type or as text, by value or by reference, and arrays of them in place of
// array objects. Functions that fail throw CQSCOMError: DISP_E_OVERFLOW for a number that is too large,
// DISP_E_TYPEMISMATCH for a value that does not convert, or the result of the host's array class.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "com/com_ptr.h"

namespace qs {

// A caller's variant, or the variant that it refers to.
const VARIANT& behind(const VARIANT& given);

// The bytes of a number, a boolean, a text, an object or a variant; 0 for other types.
std::size_t valueSize(VARTYPE type);

// As VariantChangeType reads it.
double numberFrom(const VARIANT& value);

// A position, from 0; nothing for a number that is none. Throws as numberFrom.
std::optional<LONG> positionFrom(const VARIANT& value);

// The interface of the object in a variant; null for no object, VT_EMPTY or VT_NULL. Where the interface is that of an
// array or a matrix, a safe array of one or two dimensions becomes a new object of the host's class. So does a script's
// own array, which is an object with `length` and members named by number. Where any object will do (IDispatch), such
// arrays become arrays of reals.
void interfaceFrom(const VARIANT& value, REFIID iid, void** out);

template <class I>
ComPtr<I> interfaceFrom(const VARIANT& value) {
  ComPtr<I> result;
  interfaceFrom(value, __uuidof(I), result.outAny());
  return result;
}

// What a script passes where it may pass one number or many.
struct OneOrMany {
  std::vector<double> numbers;
  bool isArray = false;
};

// A number, a safe array of one dimension with any lower bound, a host's array, or a script's own array.
OneOrMany numbersFrom(const VARIANT& value);

// Numbers as scripts take them: one as itself, many as an array of variants from 0, which is the only kind that all
// script languages index; with `rows` above 0 as an array of two dimensions, from numbers row by row. The caller owns
// the variant.
VARIANT variantOf(std::span<const double> numbers, bool isArray, std::size_t rows = 0);
VARIANT variantOf(std::span<const LONG> numbers, bool isArray, std::size_t rows = 0);

}  // namespace qs
