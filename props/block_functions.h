// Forms and transformations over blocks of numbers, for each instruction set: the same bits as for one number.
#pragma once

#include <cstddef>
#include <span>

#include "props/forms.h"
#include "props/transform.h"

namespace qs {

inline constexpr std::size_t kBlockLength = 256;
inline constexpr std::size_t kBlockStep = 16;  // lanes of the widest vector

struct alignas(64) Block {
  double values[kBlockLength];

  // Repeats the first value up to the next step. Returns the number of values then.
  std::size_t pad(std::size_t count) {
    const std::size_t padded = (count + kBlockStep - 1) / kBlockStep * kBlockStep;
    for (std::size_t i = count; i < padded; ++i) values[i] = values[0];
    return padded;
  }
};

// Functions that replace the first numbers of a block by their results; counts are multiples of `lanes`. A slope has
// the bits of the first of derivativesOf, or is NaN where that may be a number.
struct BlockFunctions {
  const char* instructionSet;
  std::size_t lanes;  // of a vector; kBlockStep is a multiple

  // By number of the form: the transformed temperature is replaced by the form's value. `whole` is form::wholeOf the
  // form's exponent. Either with the same coefficients for all, or with a column of each coefficient, `stride`
  // numbers after the one before.
  using Form = void (*)(double* x, std::size_t n, const double* coefficients, int whole);
  using FormOfMany = void (*)(double* x, std::size_t n, const double* coefficients, std::size_t stride, int whole);
  Form forms[kFormCount];
  FormOfMany formsOfMany[kFormCount];

  // The same with the derivatives by x, for which there is room.
  using FormWithSlopes = void (*)(double* x, double* slopes, std::size_t n, const double* coefficients, int whole);
  FormWithSlopes formsWithSlopes[kFormCount];

  // As transformForward and transformBack, for a transformation that lacks no constants. False for a shape that is no
  // transformation, and when a number becomes the empty value; the block then holds nothing of use.
  bool (*forward)(double* x, std::size_t n, double P, const Transformation& transformation);
  bool (*back)(double* y, std::size_t n, double P, const Transformation& transformation);

  // The same for numbers with their derivatives by the temperature.
  bool (*forwardWithSlopes)(double* x, double* slopes, std::size_t n, double P, const Transformation& transformation);
  bool (*backWithSlopes)(double* y, double* slopes, std::size_t n, double P, const Transformation& transformation);

  // Whether each of n numbers, of which there may be any count at any address, is in [low, high]; NaN is not. The
  // second also copies them.
  bool (*allWithin)(const double* values, std::size_t n, double low, double high);
  bool (*copyWithin)(const double* values, std::size_t n, double low, double high, double* to);
};

// Those that processor and operating system support, from the narrowest to the widest.
std::span<const BlockFunctions* const> supportedBlockFunctions();

}  // namespace qs
