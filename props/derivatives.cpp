#include "props/derivatives.h"

#include <utility>

#include "props/masked_exceptions.h"
#include "props/series.h"

namespace qs {
namespace form {
namespace {

using Number = Series<double, 2>;

template <class Form, class Coefficients = std::make_index_sequence<Form::kCoefficients>>
struct Evaluation;

template <class Form, std::size_t... i>
struct Evaluation<Form, std::index_sequence<i...>> {
  // By x itself.
  static Number of(double x, const double* coefficients, int whole) {
    return Form::value(Number{x, 1.0, 0.0}, coefficients[i]..., whole);
  }
};

constexpr Number (*kForms[kFormCount])(double x, const double* coefficients, int whole) = {
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) &Evaluation<name>::of,
#include "props/forms.def"
};

}  // namespace
}  // namespace form

bool derivativesOf(const Equation& equation, double T, double P, Derivatives& result) {
  const MaskedExceptions masked;
  form::Number y{T, 1.0, 0.0};
  if (equation.extrapolatesAt(T)) {
    double bound = T > equation.tMax ? equation.tMax : equation.tMin;
    if (!transformForward(equation.x(), P, &bound)) return false;
    y = form::extrapolatedVELDB5(y, bound, equation.coefficients, equation.whole);
  } else {
    if (equation.form.shape == PropCurveVoid || !transformForward(equation.x(), P, &y)) return false;
    const form::Number ofX = form::kForms[equation.form.shape](y.value, equation.coefficients.data(), equation.whole);
    y = form::composed(y, ofX.value, ofX.first, ofX.second);
  }
  if (!transformBack(equation.y(), P, &y)) return false;
  const bool isNumber = y.value == y.value;
  result = {y.value, isNumber ? y.first : y.value, isNumber ? y.second : y.value};
  return true;
}

}  // namespace qs
