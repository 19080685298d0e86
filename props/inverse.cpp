#include "props/inverse.h"

#include <algorithm>
#include <array>
#include <bit>
#include <boost/math/tools/toms748_solve.hpp>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

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

// Where a line has no difference that has those of two points at two temperatures.
double between(double atFirst, double atLast, const Point& first, const Point& last) {
  return atFirst + (atLast - atFirst) * (first.difference / (first.difference - last.difference));
}

// Where the cubic through four points of the inverse function has no difference; anything where two points have the
// same.
double interpolated(const std::array<Point, 4>& points) {
  const auto& [a, b, c, d] = points;
  const double ab = between(a.T, b.T, a, b), bc = between(b.T, c.T, b, c), cd = between(c.T, d.T, c, d);
  return between(between(ab, bc, a, c), between(bc, cd, b, d), a, d);
}

// Two temperatures where the curve differs from the value in opposite directions.
struct Bracket {
  const CQSAbstractProp& equation;
  double value;
  double P;
  Point low, high;
  bool hasNumbers = true;

  bool holds(double T) const { return low.T < T && T < high.T; }

  // At a temperature inside, to which an end then moves; both where there is no difference. Zero ends a search.
  double differenceAt(double T) {
    if (!holds(T)) return 0.0;
    double y = kEmptyValue;
    LONG dependencies = 0;
    equation.GetValue(T, P, eNoExtrapolation, &dependencies, &y);
    const double difference = differenceOf(y, value);
    hasNumbers = !std::isnan(difference);
    if (!hasNumbers) return 0.0;
    if (difference == 0.0)
      low = high = {T, difference};
    else
      ((difference < 0.0) == (low.difference < 0.0) ? low : high) = {T, difference};
    return difference;
  }
};

// Where the curve is smooth, two cubic steps and a linear one lead next to the solution, and one or two more beyond it.
void approach(Bracket& bracket, std::array<Point, 4> points) {
  Point last = bracket.low, previous = last;
  for (int step = 0; step < 4 && bracket.hasNumbers; ++step) {
    const double T = step < 2 ? interpolated(points) : between(last.T, previous.T, last, previous);
    if (!bracket.holds(T) || std::fabs(T - last.T) <= 0x1p-52 * T) break;
    previous = std::exchange(last, {T, bracket.differenceAt(T)});
    const auto isNearer = [&](const Point& a, const Point& b) { return std::fabs(a.T - T) < std::fabs(b.T - T); };
    if (step == 0) *std::max_element(points.begin(), points.end(), isNearer) = last;
  }
  double nearest = last.T;
  for (int places = 2; places <= 8 && bracket.hasNumbers; places *= 2) {
    const bool isBelow = nearest == bracket.low.T;
    nearest = isBelow ? moved(bracket.low.T, places) : moved(bracket.high.T, -places);
    if (!bracket.holds(nearest)) break;
    bracket.differenceAt(nearest);
    if (isBelow != (nearest == bracket.low.T)) break;
  }
}

// The solution between a point of the scan and the next one.
[[gnu::noinline]] std::optional<double> refined(const CQSAbstractProp& equation, double value, double P,
                                                const Scan& scan, std::size_t place) {
  const Point first = scan.at(place, value), last = scan.at(place + 1, value);
  if (std::isnan(first.difference) || std::isnan(last.difference)) return std::nullopt;
  Bracket bracket{equation, value, P, first, last};
  const std::size_t start = std::min(std::max(place, std::size_t{1}) - 1, kPoints - 4);
  approach(bracket,
           {scan.at(start, value), scan.at(start + 1, value), scan.at(start + 2, value), scan.at(start + 3, value)});

  using Ignored = boost::math::policies::domain_error<boost::math::policies::ignore_error>;
  const auto difference = [&](double T) { return bracket.differenceAt(T); };
  const auto isClose = [](double low, double high) { return high - low <= 0x1p-50 * low; };
  std::uintmax_t evaluations = 100;
  if (bracket.hasNumbers && !isClose(bracket.low.T, bracket.high.T))
    boost::math::tools::toms748_solve(difference, bracket.low.T, bracket.high.T, bracket.low.difference,
                                      bracket.high.difference, isClose, evaluations,
                                      boost::math::policies::policy<Ignored>());
  while (bracket.hasNumbers) {
    const double middle = bracket.low.T + (bracket.high.T - bracket.low.T) / 2.0;
    if (!bracket.holds(middle)) break;
    bracket.differenceAt(middle);
  }
  if (!bracket.hasNumbers) return std::nullopt;

  // At a pole the curve grows on both sides.
  const auto change = [](const Point& from, const Point& to) {
    return std::fabs(to.difference) - std::fabs(from.difference);
  };
  const double below = change(first, bracket.low), above = change(last, bracket.high);
  if (below >= 0.0 && above >= 0.0 && below + above > 0.0) return std::nullopt;
  return std::fabs(bracket.low.difference) < std::fabs(bracket.high.difference) ? bracket.low.T : bracket.high.T;
}

}  // namespace

Solution temperatureAt(const CQSAbstractProp& equation, double value, double P, const BlockFunctions& functions) {
  Solution solution;
  const Equation* data = equation.equation();
  if (!data) return solution;
  const double tMin = data->tMin, tMax = data->tMax;
  if (!(0.0 < tMin && tMin <= tMax) || !std::isfinite(tMax) || !std::isfinite(value) || isEmpty(value)) return solution;

  const MaskedExceptions masked;
  Scan scan;
  auto& [temperatures, values] = scan;
  const std::size_t count = tMin < tMax ? kPoints : 1;
  const double step = (tMax - tMin) / static_cast<double>(kPoints - 1);
  for (std::size_t i = 0; i < count; ++i) temperatures[i] = tMin + step * static_cast<int>(i);
  temperatures[count - 1] = tMax;
  evaluate(equation, std::span(temperatures).first(count), P, values.data(), functions);

  const auto found = [&](double T) {
    if (solution.crossings++ == 0) solution.temperature = T;
  };
  bool wasBelow = values[0] < value;
  for (std::size_t i = 0; i < count && solution.crossings < 2; ++i) {
    const bool isBelow = values[i] < value;
    if (values[i] == value) {
      if (i == 0 || temperatures[i - 1] < temperatures[i]) found(temperatures[i]);
    } else if (isBelow != wasBelow && values[i - 1] != value) {
      if (const auto T = refined(equation, value, P, scan, i - 1)) found(*T);
    }
    wasBelow = isBelow;
    // Most points are where their neighbours are.
    const auto skip = [&](auto isThere) {
      while (i + 1 < count && isThere(scan.values[i + 1])) ++i;
    };
    if (isBelow)
      skip([value](double y) { return y < value; });
    else
      skip([value](double y) { return y > value; });
  }
  return solution;
}

}  // namespace qs
