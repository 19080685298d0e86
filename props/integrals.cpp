#include "props/integrals.h"

#include <algorithm>
#include <array>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "props/curve.h"
#include "props/form_functions.h"
#include "props/masked_exceptions.h"
#include "props/terms.h"

namespace qs {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A part of the interval: the integral and that of the magnitude, and a generous estimate of the former's error.
struct Panel {
  double from, to;
  double integral, magnitude, error;
};

Panel panelOf(FunctionOfT function, double from, double to) {
  using Rule = boost::math::quadrature::gauss_kronrod<
      double, 31,
      boost::math::policies::policy<boost::math::policies::domain_error<boost::math::policies::ignore_error>>>;
  const double middle = from + (to - from) / 2.0, half = (to - from) / 2.0;
  double error = 0.0, magnitude = 0.0;
  const double sum = Rule::integrate([&](double x) { return function(std::clamp(middle + half * x, from, to)); }, -1.0,
                                     1.0, 0, 0.0, &error, &magnitude);
  return {from, to, half * sum, half * magnitude, half * error};
}

constexpr std::size_t kMostPanels = 201;

// The estimate, the difference of two rules, is far above the error.
constexpr double kTolerance = 5e-13;

// From the lower to the higher temperature. Halves the panel with the largest error until their sum is small.
std::optional<double> quadratureUp(FunctionOfT function, double from, double to) {
  std::array<Panel, kMostPanels> panels;
  panels[0] = panelOf(function, from, to);
  for (std::size_t count = 1;; ++count) {
    double integral = 0.0, magnitude = 0.0, error = 0.0;
    Panel* worst = panels.data();
    for (Panel& panel : std::span(panels).first(count)) {
      integral += panel.integral;
      magnitude += panel.magnitude;
      error += panel.error;
      if (panel.error > worst->error) worst = &panel;
    }
    if (!std::isfinite(error) || !std::isfinite(magnitude)) return std::nullopt;
    if (error <= kTolerance * magnitude) return integral;
    const double middle = worst->from + (worst->to - worst->from) / 2.0;
    if (count == kMostPanels || middle <= worst->from || middle >= worst->to) return std::nullopt;
    const Panel whole = *worst;
    Panel& left = *worst;
    Panel& right = panels[count];
    left = panelOf(function, whole.from, middle);
    right = panelOf(function, middle, whole.to);
    // Where the two rules agree by chance, as they may beside a kink, what halving has changed is the better estimate.
    const double change = std::fabs(left.integral + right.integral - whole.integral),
                 estimated = left.error + right.error;
    if (estimated < change) {
      const double factor = estimated > 0.0 ? change / estimated : 0.0;
      left.error *= factor;
      right.error *= factor;
    }
  }
}

std::optional<double> negated(std::optional<double> x) { return x ? std::optional(-*x) : x; }

// A sum of differences of two ends, and the magnitude that its error is in proportion to.
struct Difference {
  double value = 0.0, magnitude = 0.0;

  void add(double factor, double atFrom, double atTo) {
    value += factor * (atTo - atFrom);
    magnitude += std::fabs(factor) * (std::fabs(atFrom) + std::fabs(atTo));
  }
  void addExact(double difference) {
    value += difference;
    magnitude += 2.0 * std::fabs(difference);
  }
};

constexpr double kRoundingOfMagnitude = 2e-15;

// What a function is at both ends.
struct Ends {
  double from, to;
};

bool isSmallWhole(double exponent) {
  const double magnitude = std::fabs(exponent);
  return magnitude <= 20.0 && magnitude == static_cast<int>(magnitude);
}

// Multiplied out where the exponent is whole.
Ends powersOf(Ends T, double exponent) {
  if (!isSmallWhole(exponent)) return {form::pow(T.from, exponent), form::pow(T.to, exponent)};
  Ends result{1.0, 1.0};
  for (int rest = std::abs(static_cast<int>(exponent)); rest != 0; rest >>= 1, T = {T.from * T.from, T.to * T.to})
    if (rest & 1) result = {result.from * T.from, result.to * T.to};
  return exponent < 0.0 ? Ends{1.0 / result.from, 1.0 / result.to} : result;
}

// The difference of two powers of a whole exponent but 0, without cancellation:
// b^n - a^n = (b - a) (b^(n-1) + b^(n-2) a + ... + a^(n-1)).
double differenceOfPowers(Ends T, int exponent) {
  double sum = 1.0, power = T.from;
  for (int n = 1; n < std::abs(exponent); ++n, power *= T.from) sum = sum * T.to + power;
  const double difference = (T.to - T.from) * sum;
  return exponent > 0 ? difference : -difference / powersOf({power, T.to}, -exponent).to / power;
}

// Of a term that has no whole power of T but 0 as its integral.
void addOther(const form::Term& term, double n, Ends T, Difference& sum) {
  Ends log{0.0, 0.0};
  if (n == 0.0 || term.withLog) log = {form::log(T.from), form::log(T.to)};
  if (n != 0.0) {
    const Ends power = powersOf(T, n);
    if (term.withLog)
      sum.add(term.factor / n, power.from * (log.from - 1.0 / n), power.to * (log.to - 1.0 / n));
    else
      sum.add(term.factor / n, power.from, power.to);
  } else if (term.withLog) {
    sum.add(0.5 * term.factor, log.from * log.from, log.to * log.to);
  } else {
    sum.add(term.factor, log.from, log.to);
  }
}

QS_INLINE void addIntegral(const form::Term& term, Integrand integrand, Ends T, Difference& sum) {
  const double n = integrand == Integrand::Y ? term.power + 1.0 : term.power;
  if (n != 0.0 && !term.withLog && isSmallWhole(n))
    sum.addExact(term.factor / n * differenceOfPowers(T, static_cast<int>(n)));
  else
    addOther(term, n, T, sum);
}

// An equation of which X is a power of the temperature, and Y a linear function of the form's value.
struct ClosedForm {
  const double* coefficients;
  int whole;
  form::ShiftedPower x, y;
};

template <class Form>
auto termsOf(const ClosedForm& closed) {
  return [&]<std::size_t... i>(std::index_sequence<i...>) {
    return Form::value(form::Power{closed.x.factor, closed.x.power}, closed.coefficients[i]..., closed.whole);
  }
  (std::make_index_sequence<Form::kCoefficients>());
}

template <class Form>
Difference differenceOf(const ClosedForm& closed, Integrand integrand, double from, double to) {
  Difference sum;
  for (const form::Term& term : form::sumOf(termsOf<Form>(closed)).terms)
    addIntegral({closed.y.factor * term.factor, term.power, term.withLog}, integrand, {from, to}, sum);
  if (closed.y.offset != 0.0) addIntegral({closed.y.offset, 0.0, false}, integrand, {from, to}, sum);
  return sum;
}

// No sum of powers, but with integrals of its own.
template <>
Difference differenceOf<form::DIPPR107>(const ClosedForm& closed, Integrand integrand, double from, double to) {
  const double slope = closed.y.factor, scale = closed.x.factor;
  const double A = closed.y.offset + slope * closed.coefficients[0], B = slope * closed.coefficients[1],
               D = slope * closed.coefficients[3];
  const double C = std::fabs(closed.coefficients[2] / scale), E = std::fabs(closed.coefficients[4] / scale);
  Difference sum;
  // What is so large that rounding shows in an exponential.
  if (closed.x.power != 1.0 || !(std::max(C, E) < 200.0 * std::min(from, to))) return sum;
  const double cFrom = C / from, cTo = C / to, eFrom = E / from, eTo = E / to;
  if (integrand == Integrand::Y) {
    // C coth(C/T) and -E tanh(E/T), whose differences are quotients.
    const double inverses = (to - from) / from / to;
    sum.addExact(A * (to - from));
    sum.addExact(B * C * form::sinh(C * inverses) / form::sinh(cFrom) / form::sinh(cTo));
    sum.addExact(D * E * form::sinh(E * inverses) / form::cosh(eFrom) / form::cosh(eTo));
  } else {
    // c coth c - ln sinh c and ln cosh e - e tanh e, of c = C/T and e = E/T, so that large numbers do not cancel.
    const auto ofC = [](double c) {
      const double s = form::sinh(c), exponential = form::exp(-c);
      return c * exponential / s - form::log(2.0 * exponential * s);
    };
    const auto ofE = [](double e) {
      const double q = form::exp(-2.0 * e);
      return form::log(1.0 + q) + 2.0 * e * q / (1.0 + q);
    };
    sum.add(A, form::log(from), form::log(to));
    sum.add(B, ofC(cFrom), ofC(cTo));
    sum.add(D, ofE(eFrom), ofE(eTo));
    sum.magnitude += std::fabs(B) + std::fabs(D);  // 1 is rounded where the exponentials vanish
  }
  return sum;
}

// By number of the form; null where there is no closed form.
template <class Form>
constexpr auto closedFormOf() -> Difference (*)(const ClosedForm&, Integrand, double, double) {
  using Terms = decltype(termsOf<Form>(std::declval<ClosedForm>()));
  if constexpr (std::same_as<Terms, form::Unknown> && !std::same_as<Form, form::DIPPR107>)
    return nullptr;
  else
    return &differenceOf<Form>;
}
constexpr auto kClosedForms = std::to_array({
#define QS_FORM(number, name, coefficients, exponent, scale, formula, ...) closedFormOf<form::name>(),
#include "props/forms.def"
});

std::optional<double> closedIntegral(const Equation& equation, Integrand integrand, double from, double to, double P) {
  if (equation.form.shape == PropCurveVoid || equation.lacksConstants() || !(0.0 < from && 0.0 < to) ||
      std::ranges::any_of(equation.coefficients, [](double coefficient) { return isEmpty(coefficient); }))
    return std::nullopt;
  const auto differenceOfForm = kClosedForms[static_cast<std::size_t>(equation.form.shape)];
  if (!differenceOfForm) return std::nullopt;
  const form::ShiftedPower itself{0.0, 1.0, 1.0};
  ClosedForm closed{equation.coefficients.data(), equation.whole, itself, itself};
  if (equation.way != Equation::Way::Plain &&
      (!transformForward(equation.x(), P, &closed.x) || !transformBack(equation.y(), P, &closed.y)))
    return std::nullopt;
  if (closed.x.offset != 0.0 || closed.y.power != 1.0) return std::nullopt;
  const Difference difference = differenceOfForm(closed, integrand, from, to);
  if (!(kRoundingOfMagnitude * difference.magnitude < kTolerance * std::fabs(difference.value))) return std::nullopt;
  return difference.value;
}

}  // namespace

std::optional<double> quadrature(FunctionOfT function, double from, double to) {
  const MaskedExceptions masked;
  if (!std::isfinite(from) || !std::isfinite(to) || !std::isfinite(function(from)) || !std::isfinite(function(to)))
    return std::nullopt;
  if (from == to) return 0.0;
  return from < to ? quadratureUp(function, from, to) : negated(quadratureUp(function, to, from));
}

std::optional<double> integral(const CQSAbstractProp& equation, Integrand integrand, double from, double to, double P) {
  if (to < from) return negated(integral(equation, integrand, to, from, P));
  const auto function = [&](double T) {
    LONG dependencies = 0;
    double y = kEmptyValue;
    if (equation.GetValue(T, P, eNoExtrapolation, &dependencies, &y) != S_OK || isEmpty(y)) return kNaN;
    return integrand == Integrand::Y ? y : y / T;
  };
  const MaskedExceptions masked;
  const Equation* data = equation.equation();
  if (data)
    if (const auto closed = closedIntegral(*data, integrand, from, to, P)) return closed;
  if (!data || data->form.shape != PropCurveVELDB5) return quadrature(function, from, to);
  // It bends at its limits, those in the interval.
  const auto limit = [&](double T) { return std::clamp(T, from, to); };
  const double atMin = limit(data->tMin), atMax = limit(data->tMax);
  const auto below = quadrature(function, from, atMin);
  const auto inside = quadrature(function, atMin, atMax);
  const auto above = quadrature(function, atMax, to);
  if (!below || !inside || !above) return std::nullopt;
  return *below + *inside + *above;
}

}  // namespace qs
