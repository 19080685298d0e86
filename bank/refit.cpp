#include "bank/refit.h"

#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <utility>
#include <vector>

#include "math/functions.h"
#include "platform/number_text.h"
#include "props/evaluator.h"
#include "props/new_property.h"

namespace qs::bank {
namespace {

using database::Correlation;

constexpr int kFitted = 60;     // temperatures, denser towards the ends
constexpr int kCompared = 241;  // equidistant
constexpr int kDigits = 12;

// A form that is linear in its unknowns, as it stands or after the logarithm of both sides.
struct Target {
  tagEquationShapeEnum form;
  bool logarithmic;
  int unknowns;
  // The factor of an unknown at a temperature; `scale` is a temperature that keeps factors near 1.
  double (*factor)(int unknown, double T, double scale);
  // The form's coefficients from the unknowns.
  std::vector<double> (*coefficients)(std::span<const double> unknowns, double scale);
};

double power(double x, int exponent) {
  double product = 1.0;
  for (; exponent > 0; --exponent) product *= x;
  return product;
}

double monomial(int unknown, double T, double scale) { return power(T / scale, unknown); }
std::vector<double> polynomial(std::span<const double> unknowns, double scale) {
  std::vector<double> coefficients(unknowns.begin(), unknowns.end());
  for (std::size_t i = 0; i < coefficients.size(); ++i) coefficients[i] /= power(scale, static_cast<int>(i));
  return coefficients;
}

// ln Y = A + B/X + C lnX + D X^E, with a given E.
template <int exponent>
double dippr101Factor(int unknown, double T, double scale) {
  switch (unknown) {
    case 0:
      return 1.0;
    case 1:
      return scale / T;
    case 2:
      return math::log(T / scale);
    default:
      return power(T / scale, exponent);
  }
}
template <int exponent>
std::vector<double> dippr101(std::span<const double> unknowns, double scale) {
  return {unknowns[0] - unknowns[2] * math::log(scale), unknowns[1] * scale, unknowns[2],
          unknowns[3] / power(scale, exponent), double{exponent}};
}

// ln Y = ln A + ln(1 - Xr) (B + C Xr + D Xr^2 + E Xr^3); the scale is the critical temperature.
double dippr106Factor(int unknown, double T, double scale) {
  return unknown == 0 ? 1.0 : math::log(1.0 - T / scale) * power(T / scale, unknown - 1);
}
std::vector<double> dippr106(std::span<const double> unknowns, double scale) {
  return {math::exp(unknowns[0]), unknowns[1], unknowns[2], unknowns[3], unknowns[4], scale};
}

constexpr Target kQuartic = {PropCurveVELDB1, false, 5, monomial, polynomial};
constexpr Target kQuintic = {PropCurveVELDB3, false, 6, monomial, polynomial};
constexpr Target kExponentials[] = {
    {PropCurveDIPPR101, true, 4, dippr101Factor<1>, dippr101<1>},
    {PropCurveDIPPR101, true, 4, dippr101Factor<2>, dippr101<2>},
    {PropCurveDIPPR101, true, 4, dippr101Factor<6>, dippr101<6>},
};
constexpr Target kToCritical = {PropCurveDIPPR106, true, 5, dippr106Factor, dippr106};

struct Sample {
  double T, value;
};

// False where the curve is not positive; it may be zero at the end of the range.
bool isUsable(const std::vector<Sample>& samples) {
  return std::ranges::all_of(samples, [&](const Sample& sample) {
    return std::isfinite(sample.value) && (sample.value > 0.0 || (sample.value == 0.0 && &sample == &samples.back()));
  });
}

template <class Place>
std::vector<Sample> samplesOf(const Curve& curve, int count, Place place) {
  std::vector<Sample> samples;
  for (int i = 0; i < count; ++i) {
    const double T = std::clamp(curve.tmin + (curve.tmax - curve.tmin) * place(i), curve.tmin, curve.tmax);
    samples.push_back({T, curve.value(T)});
  }
  return samples;
}

double deviationOf(const Correlation& correlation, const std::vector<Sample>& samples) {
  const PropertyPtr property = newEquation({}, {correlation.form, correlation.tmin, correlation.tmax, correlation.pmin,
                                                correlation.pmax, correlation.coefficients});
  std::vector<double> values;
  for (const Sample& sample : samples) values.push_back(sample.T);
  constexpr double kAnyPressure = 101.325;
  evaluate(*property, values, kAnyPressure, values.data());
  double largest = 0.0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (samples[i].value == 0.0 && values[i] == 0.0) continue;
    const double deviation = std::fabs(values[i] / samples[i].value - 1.0);
    if (!(deviation <= largest)) largest = deviation;  // also where it is not a number
  }
  return largest;
}

Refit fitTo(const Target& target, double scale, const Curve& curve, const std::vector<Sample>& fitted,
            const std::vector<Sample>& compared) {
  const auto rows = static_cast<Eigen::Index>(fitted.size());
  Eigen::MatrixXd factors(rows, target.unknowns);
  Eigen::VectorXd wanted(rows);
  for (Eigen::Index row = 0; row < rows; ++row) {
    const auto& [T, value] = fitted[static_cast<std::size_t>(row)];
    const double weight = target.logarithmic ? 1.0 : 1.0 / value;
    for (int i = 0; i < target.unknowns; ++i) factors(row, i) = weight * target.factor(i, T, scale);
    wanted(row) = target.logarithmic ? math::log(value) : 1.0;
  }
  const Eigen::VectorXd unknowns = factors.colPivHouseholderQr().solve(wanted);

  Refit refit;
  refit.correlation.form = target.form;
  refit.correlation.coefficients =
      target.coefficients({unknowns.data(), static_cast<std::size_t>(unknowns.size())}, scale);
  for (double& coefficient : refit.correlation.coefficients) coefficient = roundedToDigits(coefficient, kDigits);
  refit.correlation.tmin = curve.tmin;
  refit.correlation.tmax = curve.tmax;
  refit.deviation = deviationOf(refit.correlation, compared);
  return refit;
}

// Tries forms and keeps the best.
class Search {
 public:
  explicit Search(const Curve& curve)
      : curve_(curve),
        // Chebyshev's places, which leave out the ends.
        fitted_(samplesOf(curve, kFitted,
                          [](int i) { return 0.5 - 0.5 * std::cos(std::numbers::pi * (i + 0.5) / kFitted); })),
        compared_(samplesOf(curve, kCompared, [](int i) { return static_cast<double>(i) / (kCompared - 1); })),
        isUsable_(isUsable(fitted_) && isUsable(compared_) && curve.tmin < curve.tmax) {}

  void tryTarget(const Target& target, double scale) {
    if (!isUsable_) return;
    Refit refit = fitTo(target, scale, curve_, fitted_, compared_);
    if (std::isfinite(refit.deviation) && (!best_ || refit.deviation < best_->deviation)) best_ = std::move(refit);
  }
  std::optional<Refit> take() { return std::move(best_); }

 private:
  const Curve& curve_;
  const std::vector<Sample> fitted_, compared_;
  const bool isUsable_;
  std::optional<Refit> best_;
};

}  // namespace

std::optional<Refit> refit(const Curve& curve) {
  Search search(curve);
  search.tryTarget(kQuintic, curve.tmax);
  if (curve.isExponential)
    for (const Target& target : kExponentials) search.tryTarget(target, curve.tmax);
  if (curve.criticalTemperature && curve.tmax <= *curve.criticalTemperature)
    search.tryTarget(kToCritical, *curve.criticalTemperature);
  return search.take();
}

std::optional<Refit> refitQuartic(const Curve& curve) {
  Search search(curve);
  search.tryTarget(kQuartic, curve.tmax);
  return search.take();
}

}  // namespace qs::bank
