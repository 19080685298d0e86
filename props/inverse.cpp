#include "props/inverse.h"

#include <algorithm>
#include <array>
#include <bit>
#include <boost/math/tools/toms748_solve.hpp>
#include <cmath>
#include <limits>
#include <optional>

#include "props/curve.h"
#include "props/evaluator.h"
#include "props/masked_exceptions.h"

namespace qs {
namespace {

constexpr std::size_t kPoints = 64;

// Larger differences are cut, so that interpolation does not overflow.
constexpr double kMostDifference = 1e280;

// NaN where there is no number.
double differenceOf(double y, double value) {
  if (isEmpty(y) || !std::isfinite(y)) return std::numeric_limits<double>::quiet_NaN();
  return std::clamp(y - value, -kMostDifference, kMostDifference);
}

struct Point {
  double T, difference;
};

// The solution between two points whose differences have opposite signs.
std::optional<double> refined(const CQSAbstractProp& equation, double value, double P, const Point& first,
                              const Point& last) {
  Point low = first, high = last;
  bool hasNumbers = !std::isnan(first.difference) && !std::isnan(last.difference);
  if (!hasNumbers) return std::nullopt;
  const auto difference = [&](double T) {
    if (!(low.T < T && T < high.T)) return 0.0;  // ends the search
    double y = kEmptyValue;
    LONG dependencies = 0;
    equation.GetValue(T, P, eNoExtrapolation, &dependencies, &y);
    const double result = differenceOf(y, value);
    if (std::isnan(result)) {
      hasNumbers = false;
      return 0.0;
    }
    if (result == 0.0)
      low = high = {T, result};
    else
      ((result < 0.0) == (low.difference < 0.0) ? low : high) = {T, result};
    return result;
  };
  using Policy =
      boost::math::policies::policy<boost::math::policies::domain_error<boost::math::policies::ignore_error>,
                                    boost::math::policies::evaluation_error<boost::math::policies::ignore_error>>;
  std::uintmax_t evaluations = 100;
  const auto isClose = [](double a, double b) { return b - a <= 0x1p-50 * a; };
  boost::math::tools::toms748_solve(difference, low.T, high.T, low.difference, high.difference, isClose, evaluations,
                                    Policy());
  while (hasNumbers) {
    const double middle = low.T + (high.T - low.T) / 2.0;
    if (middle <= low.T || middle >= high.T) break;
    difference(middle);
  }
  const double atLow = std::fabs(low.difference), atHigh = std::fabs(high.difference);
  const bool isPole = atLow > std::fabs(first.difference) && atHigh > std::fabs(last.difference);
  if (!hasNumbers || isPole) return std::nullopt;
  return atLow < atHigh ? low.T : high.T;
}

}  // namespace

Solution temperatureAt(const CQSAbstractProp& equation, double value, double P, const BlockFunctions& functions) {
  Solution solution;
  const Equation* data = equation.equation();
  if (!data) return solution;
  const double tMin = data->tMin, tMax = data->tMax;
  if (!(0.0 < tMin && tMin <= tMax) || !std::isfinite(tMax) || !std::isfinite(value)) return solution;

  std::array<double, kPoints> temperatures, values;
  const std::size_t count = tMin < tMax ? kPoints : 1;
  const double step = (tMax - tMin) / static_cast<double>(kPoints - 1);
  for (std::size_t i = 0; i < count; ++i) temperatures[i] = tMin + step * static_cast<int>(i);
  temperatures[count - 1] = tMax;
  evaluate(equation, std::span(temperatures).first(count), P, values.data(), functions);

  // A bit for each point. One without a number is below or not; its neighbours find out.
  std::uint64_t below = 0, equal = 0;
  for (std::size_t i = count; i-- > 0;) {
    below = below << 1 | (values[i] < value);
    equal = equal << 1 | (values[i] == value);
  }
  const std::uint64_t changes = (below ^ below >> 1) & ((std::uint64_t{1} << (count - 1)) - 1);

  const MaskedExceptions masked;
  const auto found = [&](double T) {
    if (solution.crossings++ == 0) solution.temperature = T;
  };
  for (std::uint64_t places = changes | equal; places != 0 && solution.crossings < 2; places &= places - 1) {
    const auto i = static_cast<std::size_t>(std::countr_zero(places));
    if (equal >> i & 1) {
      if (!isEmpty(value)) found(temperatures[i]);
    } else if (!(equal >> (i + 1) & 1)) {
      const auto T = refined(equation, value, P, {temperatures[i], differenceOf(values[i], value)},
                             {temperatures[i + 1], differenceOf(values[i + 1], value)});
      if (T) found(*T);
    }
  }
  return solution;
}

}  // namespace qs
