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

// The curve at evenly spread temperatures.
struct Scan {
  std::array<double, kPoints> temperatures, values;

  Point at(std::size_t i, double value) const { return {temperatures[i], differenceOf(values[i], value)}; }
};

// The number so many places above a positive one.
double moved(double x, int places) { return std::bit_cast<double>(std::bit_cast<std::int64_t>(x) + places); }

// Where the cubic through four points of the inverse function has no difference; anything where two points have the
// same.
double interpolated(const std::array<Point, 4>& points) {
  const auto& [a, b, c, d] = points;
  const auto between = [](double atFirst, double atLast, const Point& first, const Point& last) {
    return atFirst + (atLast - atFirst) * (first.difference / (first.difference - last.difference));
  };
  const double ab = between(a.T, b.T, a, b), bc = between(b.T, c.T, b, c), cd = between(c.T, d.T, c, d);
  return between(between(ab, bc, a, c), between(bc, cd, b, d), a, d);
}

// The solution between a point of the scan and the next one, whose differences have opposite signs.
[[gnu::noinline]] std::optional<double> refined(const CQSAbstractProp& equation, double value, double P,
                                                const Scan& scan, std::size_t place) {
  const Point first = scan.at(place, value), last = scan.at(place + 1, value);
  if (std::isnan(first.difference) || std::isnan(last.difference)) return std::nullopt;
  Point low = first, high = last;
  bool hasNumbers = true;
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
  // Where the curve is smooth, two or three steps lead next to the solution, and some more beyond it.
  std::array<Point, 4> points;
  const std::size_t start = std::min(std::max(place, std::size_t{1}) - 1, kPoints - points.size());
  for (std::size_t i = 0; i < points.size(); ++i) points[i] = scan.at(start + i, value);
  double nearest = low.T;
  for (int step = 0; step < 4; ++step) {
    const double T = interpolated(points);
    if (!(low.T < T && T < high.T) || std::fabs(T - nearest) <= 0x1p-52 * T) break;
    const auto isNearer = [&](const Point& a, const Point& b) { return std::fabs(a.T - T) < std::fabs(b.T - T); };
    *std::max_element(points.begin(), points.end(), isNearer) = {T, difference(T)};
    nearest = T;
  }
  for (int step = 2; step <= 8; step *= 2) {
    const bool isBelow = nearest == low.T;
    const double T = isBelow ? moved(low.T, step) : moved(high.T, -step);
    if (!(low.T < T && T < high.T)) break;
    difference(T);
    if (T == (isBelow ? high.T : low.T)) break;
    nearest = T;
  }
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
  if (!(0.0 < tMin && tMin <= tMax) || !std::isfinite(tMax) || !std::isfinite(value) || isEmpty(value)) return solution;

  Scan scan;
  auto& [temperatures, values] = scan;
  const std::size_t count = tMin < tMax ? kPoints : 1;
  const double step = (tMax - tMin) / static_cast<double>(kPoints - 1);
  for (std::size_t i = 0; i < count; ++i) temperatures[i] = tMin + step * static_cast<int>(i);
  temperatures[count - 1] = tMax;
  evaluate(equation, std::span(temperatures).first(count), P, values.data(), functions);

  const MaskedExceptions masked;
  const auto found = [&](double T) {
    if (solution.crossings++ == 0) solution.temperature = T;
  };
  bool wasBelow = values[0] < value;
  for (std::size_t i = 0; i < count && solution.crossings < 2; ++i) {
    const bool isBelow = values[i] < value;
    if (values[i] == value) {
      found(temperatures[i]);
    } else if (isBelow != wasBelow && values[i - 1] != value) {
      if (const auto T = refined(equation, value, P, scan, i - 1)) found(*T);
    }
    wasBelow = isBelow;
  }
  return solution;
}

}  // namespace qs
