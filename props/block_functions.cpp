// Compiled once for each instruction set, under the name QS_INSTRUCTION_SET. What is not always inlined has internal
// linkage: the linker must not make the code of one instruction set the copy that all share.
#include "props/block_functions.h"

#include <utility>

#include "math/vectors.h"
// After the vectors, whose functions they take over.
#include "props/form_functions.h"
#include "props/series.h"

namespace qs {
namespace form {
namespace {

using math::hasLane, math::kLanes, math::load, math::store, math::Vector, math::within;
static_assert(kBlockStep % kLanes == 0);

// What a block is read and written as: values alone, or with derivatives.
struct Values {
  double* values;

  Vector at(std::size_t i) const { return load(values + i); }
  void put(std::size_t i, Vector x) const { store(values + i, x); }

  Vector variableAt(std::size_t i) const { return at(i); }
};
struct WithSlopes {
  double* values;
  double* slopes;

  using Number = Series<Vector, 1>;
  Number at(std::size_t i) const { return {load(values + i), load(slopes + i), {}}; }
  void put(std::size_t i, Number x) const {
    store(values + i, x.value);
    store(slopes + i, x.first);
  }

  // By which a form is differentiated.
  Number variableAt(std::size_t i) const { return {load(values + i), Vector{} + 1.0, {}}; }
};

// A form with the same coefficients for all, or with a block of each. The usual exponent has a loop of its own. Each
// vector reads the coefficients again: registers that kept them would be wanting elsewhere.
template <class Form, class Coefficients = std::make_index_sequence<Form::kCoefficients>>
struct Evaluation;

template <class Form, std::size_t... i>
struct Evaluation<Form, std::index_sequence<i...>> {
  template <class Numbers>
  QS_INLINE static void replace(Numbers numbers, std::size_t count, const double* coefficients, int whole) {
    if (Form::kHasExponent && whole == 2) {
      for (std::size_t at = 0; at < count; at += kLanes)
        numbers.put(at, Form::value(numbers.variableAt(at), coefficients[i]..., 2));
    } else {
      for (std::size_t at = 0; at < count; at += kLanes)
        numbers.put(at, Form::value(numbers.variableAt(at), coefficients[i]..., whole));
    }
  }
  static void of(double* x, std::size_t count, const double* coefficients, int whole) {
    replace(Values{x}, count, coefficients, whole);
  }
  static void withSlopes(double* x, double* slopes, std::size_t count, const double* coefficients, int whole) {
    replace(WithSlopes{x, slopes}, count, coefficients, whole);
  }
  static void ofMany(double* x, std::size_t count, const double* coefficients, std::size_t stride, int whole) {
    const auto valueAt = [=](std::size_t at, int exponent) {
      return Form::value(load(x + at), load(coefficients + i * stride + at)..., exponent);
    };
    if (Form::kHasExponent && whole == 2)
      for (std::size_t at = 0; at < count; at += kLanes) store(x + at, valueAt(at, 2));
    else
      for (std::size_t at = 0; at < count; at += kLanes) store(x + at, valueAt(at, whole));
  }
};

template <class Numbers>
void raise(Numbers numbers, std::size_t count, double exponent) {
  const int whole = wholeOf(exponent);
  for (std::size_t at = 0; at < count; at += kLanes) numbers.put(at, pow(numbers.at(at), exponent, whole));
}

bool hasEmptyValue(const double* values, std::size_t count) {
  bool found = false;
  for (std::size_t at = 0; at < count; at += kLanes) found |= hasLane(load(values + at), kEmptyValue);
  return found;
}

// Replaces each number of the block, by the name `letter`, by the value of an expression.
#define QS_REPLACE(letter, expression)                 \
  for (std::size_t at = 0; at < count; at += kLanes) { \
    const auto letter = numbers.at(at);                \
    numbers.put(at, expression);                       \
  }

template <class Numbers>
bool transformForward(Numbers numbers, std::size_t count, [[maybe_unused]] double P, const Transformation& t) {
  const double n = t.norm, a = t.a, b = t.b;
  if (t.shape != COMx) switch (t.shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) \
  case shape:                                \
    QS_REPLACE(x, of_x) break;
#include "props/transformations.def"
      default:
        return false;
    }
  if (hasEmptyValue(numbers.values, count)) return false;
  if (t.power != 1.0) raise(numbers, count, t.power);
  return true;
}

template <class Numbers>
bool transformBack(Numbers numbers, std::size_t count, [[maybe_unused]] double P, const Transformation& t) {
  const double n = t.norm, a = t.a, b = t.b;
  if (t.power != 1.0) raise(numbers, count, 1.0 / t.power);
  if (t.shape != COMx) switch (t.shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) \
  case shape:                                \
    QS_REPLACE(y, of_y) break;
#include "props/transformations.def"
      default:
        return false;
    }
  return !hasEmptyValue(numbers.values, count);
}

bool forward(double* x, std::size_t count, double P, const Transformation& t) {
  return transformForward(Values{x}, count, P, t);
}
bool back(double* y, std::size_t count, double P, const Transformation& t) {
  return transformBack(Values{y}, count, P, t);
}
bool forwardWithSlopes(double* x, double* slopes, std::size_t count, double P, const Transformation& t) {
  return transformForward(WithSlopes{x, slopes}, count, P, t);
}
bool backWithSlopes(double* y, double* slopes, std::size_t count, double P, const Transformation& t) {
  return transformBack(WithSlopes{y, slopes}, count, P, t);
}

bool allWithin(const double* values, std::size_t count, double low, double high) {
  std::size_t at = 0;
  for (; at + kLanes <= count; at += kLanes)
    if (!within(load(values + at), low, high)) return false;
  for (; at < count; ++at)
    if (!(low <= values[at] && values[at] <= high)) return false;
  return true;
}

bool copyWithin(const double* values, std::size_t count, double low, double high, double* to) {
  bool all = true;
  std::size_t at = 0;
  for (; at + kLanes <= count; at += kLanes) {
    const Vector numbers = load(values + at);
    store(to + at, numbers);
    all &= within(numbers, low, high);
  }
  for (; at < count; ++at) {
    to[at] = values[at];
    all &= low <= values[at] && values[at] <= high;
  }
  return all;
}

}  // namespace
}  // namespace form

extern const BlockFunctions QS_INSTRUCTION_SET;
const BlockFunctions QS_INSTRUCTION_SET = {
    QS_INSTRUCTION_SET_NAME,
    math::kLanes,
    {
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) &form::Evaluation<form::name>::of,
#include "props/forms.def"
    },
    {
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) &form::Evaluation<form::name>::ofMany,
#include "props/forms.def"
    },
    {
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) &form::Evaluation<form::name>::withSlopes,
#include "props/forms.def"
    },
    form::forward,
    form::back,
    form::forwardWithSlopes,
    form::backWithSlopes,
    form::allWithin,
    form::copyWithin,
};

}  // namespace qs
