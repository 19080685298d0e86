#include "props/integrals.h"

#include <algorithm>
#include <array>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <cmath>
#include <limits>
#include <span>

#include "props/curve.h"
#include "props/masked_exceptions.h"

namespace qs {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// False for NaN too.
bool isFinite(double x) { return x - x == 0.0; }

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
    if (!isFinite(error) || !isFinite(magnitude)) return std::nullopt;
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

}  // namespace

std::optional<double> quadrature(FunctionOfT function, double from, double to) {
  const MaskedExceptions masked;
  if (!isFinite(function(from)) || !isFinite(function(to))) return std::nullopt;
  if (from == to) return 0.0;
  const auto up = quadratureUp(function, std::min(from, to), std::max(from, to));
  return up && to < from ? -*up : up;
}

std::optional<double> integral(const CQSAbstractProp& equation, Integrand integrand, double from, double to, double P) {
  const auto function = [&](double T) {
    LONG dependencies = 0;
    double y = kEmptyValue;
    if (equation.GetValue(T, P, eNoExtrapolation, &dependencies, &y) != S_OK || isEmpty(y)) return kNaN;
    return integrand == Integrand::Y ? y : y / T;
  };
  // VELDB5 bends at its limits.
  const Equation* data = equation.equation();
  double sum = 0.0, start = from;
  const auto goTo = [&](double T) {
    const auto part = quadrature(function, start, T);
    if (part) sum += *part;
    start = T;
    return part.has_value();
  };
  const auto isBetween = [&](double T) { return (start < T && T < to) || (to < T && T < start); };
  if (data && data->form.shape == PropCurveVELDB5) {
    const auto [first, last] = from < to ? std::pair(data->tMin, data->tMax) : std::pair(data->tMax, data->tMin);
    if (isBetween(first) && !goTo(first)) return std::nullopt;
    if (isBetween(last) && !goTo(last)) return std::nullopt;
  }
  if (!goTo(to)) return std::nullopt;
  return sum;
}

}  // namespace qs
