// Compiled once for each instruction set, under the name QS_INSTRUCTION_SET. What is not always inlined has internal
// linkage: the linker must not make the code of one instruction set the copy that all share.
#include "props/block_functions.h"

#include <utility>

#include "math/vectors.h"
// After the vectors, whose functions it takes over.
#include "props/form_functions.h"

namespace qs {
namespace form {
namespace {

using math::hasLane, math::kLanes, math::load, math::store, math::Vector;
static_assert(kBlockStep % kLanes == 0);

// A form with the same coefficients for all, or with a block of each. The usual exponent has a loop of its own. Each
// vector reads the coefficients again: registers that kept them would be wanting elsewhere.
template <class Form, class Coefficients = std::make_index_sequence<Form::kCoefficients>>
struct Evaluation;

template <class Form, std::size_t... i>
struct Evaluation<Form, std::index_sequence<i...>> {
  static void of(double* x, std::size_t count, const double* coefficients, int whole) {
    if (Form::kHasExponent && whole == 2) {
      for (std::size_t at = 0; at < count; at += kLanes)
        store(x + at, Form::value(load(x + at), coefficients[i]..., 2));
    } else {
      for (std::size_t at = 0; at < count; at += kLanes)
        store(x + at, Form::value(load(x + at), coefficients[i]..., whole));
    }
  }
  static void ofMany(double* x, std::size_t count, const Block* coefficients, int whole) {
    for (std::size_t at = 0; at < count; at += kLanes)
      store(x + at, Form::value(load(x + at), load(coefficients[i].values + at)..., whole));
  }
};

void raise(double* x, std::size_t count, double exponent) {
  const int whole = wholeOf(exponent);
  for (std::size_t at = 0; at < count; at += kLanes) store(x + at, pow(load(x + at), exponent, whole));
}

bool hasEmptyValue(const double* values, std::size_t count) {
  bool found = false;
  for (std::size_t at = 0; at < count; at += kLanes) found |= hasLane(load(values + at), kEmptyValue);
  return found;
}

// Replaces each number of the block, by the name `letter`, by the value of an expression.
#define QS_REPLACE(letter, expression)                 \
  for (std::size_t at = 0; at < count; at += kLanes) { \
    const Vector letter = load(values + at);           \
    store(values + at, expression);                    \
  }

bool forward(double* values, std::size_t count, [[maybe_unused]] double P, const Transformation& t) {
  const double n = t.norm, a = t.a, b = t.b;
  if (t.shape != COMx) switch (t.shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) \
  case shape:                                \
    QS_REPLACE(x, of_x) break;
#include "props/transformations.def"
      default:
        return false;
    }
  if (hasEmptyValue(values, count)) return false;
  if (t.power != 1.0) raise(values, count, t.power);
  return true;
}

bool back(double* values, std::size_t count, [[maybe_unused]] double P, const Transformation& t) {
  const double n = t.norm, a = t.a, b = t.b;
  if (t.power != 1.0) raise(values, count, 1.0 / t.power);
  if (t.shape != COMx) switch (t.shape) {
#define QS_TRANSFORMATION(shape, of_x, of_y) \
  case shape:                                \
    QS_REPLACE(y, of_y) break;
#include "props/transformations.def"
      default:
        return false;
    }
  return !hasEmptyValue(values, count);
}

}  // namespace
}  // namespace form

extern const BlockFunctions QS_INSTRUCTION_SET;
const BlockFunctions QS_INSTRUCTION_SET = {
    QS_INSTRUCTION_SET_NAME,
    {
#define QS_FORM(number, name, coefficients, exponent, formula, ...) &form::Evaluation<form::name>::of,
#include "props/forms.def"
    },
    {
#define QS_FORM(number, name, coefficients, exponent, formula, ...) &form::Evaluation<form::name>::ofMany,
#include "props/forms.def"
    },
    form::forward,
    form::back,
};

}  // namespace qs
