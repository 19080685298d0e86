// The elementary functions over the whole range. Results that are no normal numbers are put together from their bits,
// so that no exception but inexact is raised and the flushing of subnormal numbers makes no difference.
#include "math/functions.h"

#include <bit>
#include <cmath>
#include <limits>

namespace qs::math {
namespace {

using namespace kernel;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::uint64_t kFractionBits = (std::uint64_t{1} << 52) - 1;

std::uint64_t magnitudeOf(double x) { return toBits(x) & ~kSignBit; }
bool isNegative(double x) { return (toBits(x) & kSignBit) != 0; }
bool isNaN(double x) { return magnitudeOf(x) > bitsOf(kInfinity); }
bool isInfinite(double x) { return magnitudeOf(x) == bitsOf(kInfinity); }
bool isZero(double x) { return magnitudeOf(x) == 0; }
bool isSubnormal(double x) { return magnitudeOf(x) - 1 < kFractionBits; }

// x with the quiet bit set, without an operation that a signalling NaN would trap.
double quiet(double x) { return fromBits<double>(toBits(x) | (std::uint64_t{1} << 51)); }

// A positive subnormal number times 2^(shift), which makes it normal.
double normalised(double x, int& shift) {
  shift = std::countl_zero(toBits(x)) - 11;
  return fromBits<double>(((toBits(x) << shift) & kFractionBits) | (std::uint64_t{1} << 52));
}

// 2^(k/16) e^r for any k: rounded once, to infinity above and to a subnormal number or zero below.
double exp2TimesAnywhere(std::int64_t k, double r) {
  const std::int64_t power = k >> 4;
  const ExpEntry& entry = kExpTable[k & 15];
  const double s = fromBits<double>(entry.bits + (static_cast<std::uint64_t>(k & 15) << 48));
  const double more = s * expOfRest(r, entry.tail);
  const double y = s + more;
  const std::int64_t exponent = static_cast<std::int64_t>(toBits(y) >> 52) + power;  // biased
  if (exponent > 2046) return kInfinity;
  if (exponent > 0) return fromBits<double>(toBits(y) + (static_cast<std::uint64_t>(power) << 52));
  if (exponent < -54) return 0.0;
  // Added to 1, what is 2^1022 times the result loses the bits that a subnormal number has no room for.
  const double scale = fromBits<double>(static_cast<std::uint64_t>(power + 1022 + 1023) << 52);
  const double high = y * scale;
  const double low = ((s - y) + more) * scale;
  const double sum = 1.0 + high;
  return fromBits<double>(toBits(sum + (((1.0 - sum) + high) + low)) - bitsOf(1.0));
}

std::int64_t wholeOf(std::uint64_t shifted) { return static_cast<std::int64_t>(shifted - bitsOf(kToWhole)); }

// e^x / 2^halvings for finite |x| up to 800.
double expScaled(double x, int halvings) {
  const ExpParts<double> parts = reduceExp(x);
  return exp2TimesAnywhere(wholeOf(parts.k) - 16 * halvings, parts.r);
}

// ln of a positive number, subnormal or not.
Sum<double> logOfPositive(double x) {
  if (!isSubnormal(x)) return logLong(x);
  int shift = 0;
  const Sum<double> log = logLong(normalised(x, shift));
  const double high = -shift * kLn2High;
  const double sum = log.high + high;
  return {sum, ((log.high - sum) + high) + (log.low - shift * kLn2Low)};
}

// What log and log10 share: nothing for positive finite numbers.
bool logOfSpecial(double x, double& result) {
  if (isNaN(x))
    result = quiet(x);
  else if (isZero(x))
    result = -kInfinity;
  else if (isNegative(x))
    result = kNaN;
  else if (isInfinite(x))
    result = x;
  else
    return false;
  return true;
}

enum class Parity { NotWhole, Even, Odd };
Parity parityOf(double y) {
  const auto exponent = static_cast<int>(magnitudeOf(y) >> 52) - 1023;
  if (exponent < 0) return isZero(y) ? Parity::Even : Parity::NotWhole;
  if (exponent > 52) return Parity::Even;
  const std::uint64_t one = std::uint64_t{1} << (52 - exponent);
  if (toBits(y) & (one - 1)) return Parity::NotWhole;
  return exponent == 0 || toBits(y) & one ? Parity::Odd : Parity::Even;
}

// |x|^y for finite x that is not zero and finite y.
double powOfMagnitude(double magnitude, double y) {
  constexpr double kFarTooLarge = 0x1p70;  // as an exponent, for any base but 1
  const Sum<double> log = logOfPositive(magnitude);
  if (isZero(log.high)) return 1.0;
  const bool grows = isNegative(log.high) == isNegative(y);
  if (magnitudeOf(y) > bitsOf(kFarTooLarge)) return grows ? kInfinity : 0.0;
  if (magnitudeOf(y) < bitsOf(0x1p-70)) return 1.0;
  const Sum<double> exponent = product(y, log);
  if (magnitudeOf(exponent.high) > bitsOf(800.0)) return grows ? kInfinity : 0.0;
  const ExpParts<double> parts = reduceExp(exponent);
  return exp2TimesAnywhere(wholeOf(parts.k), parts.r);
}

}  // namespace

double expAnywhere(double x) {
  if (isNaN(x)) return quiet(x);
  if (magnitudeOf(x) < bitsOf(kExpLeast)) return 1.0 + x;
  if (magnitudeOf(x) > bitsOf(800.0)) return isNegative(x) ? 0.0 : kInfinity;
  return expScaled(x, 0);
}

double logAnywhere(double x) {
  double special;
  if (logOfSpecial(x, special)) return special;
  if (!isSubnormal(x)) return logNormal(x);
  const Sum<double> log = logOfPositive(x);
  return log.high + log.low;
}

double log10Anywhere(double x) {
  double special;
  if (logOfSpecial(x, special)) return special;
  if (!isSubnormal(x)) return log10(x);
  return log10Of(logOfPositive(x));
}

double powAnywhere(double x, double y) {
  if (isZero(y) || toBits(x) == bitsOf(1.0)) return 1.0;
  if (isNaN(x)) return quiet(x);
  if (isNaN(y)) return quiet(y);
  const Parity parity = isInfinite(y) ? Parity::Even : parityOf(y);
  const bool negative = isNegative(x) && parity == Parity::Odd;
  double magnitude;
  if (isInfinite(y)) {
    if (magnitudeOf(x) == bitsOf(1.0)) return 1.0;
    magnitude = (magnitudeOf(x) > bitsOf(1.0)) == !isNegative(y) ? kInfinity : 0.0;
  } else if (isZero(x) || isInfinite(x)) {
    magnitude = isInfinite(x) == !isNegative(y) ? kInfinity : 0.0;
  } else if (isNegative(x) && parity == Parity::NotWhole) {
    return kNaN;
  } else {
    magnitude = powOfMagnitude(fromBits<double>(magnitudeOf(x)), y);
  }
  return negative ? -magnitude : magnitude;
}

double powOneThirdAnywhere(double x) { return isNegative(x) ? powAnywhere(x, 1.0 / 3.0) : cbrtAnywhere(x); }

double sinhAnywhere(double x) {
  if (isNaN(x)) return quiet(x);
  const std::uint64_t magnitude = magnitudeOf(x);
  if (magnitude < bitsOf(kHyperbolicLeast)) return x;
  if (magnitude < bitsOf(kHyperbolicMost)) return sinh(x);
  const double result = magnitude > bitsOf(800.0) ? kInfinity : expScaled(fromBits<double>(magnitude), 1);
  return isNegative(x) ? -result : result;
}

double coshAnywhere(double x) {
  if (isNaN(x)) return quiet(x);
  const std::uint64_t magnitude = magnitudeOf(x);
  if (magnitude < bitsOf(kHyperbolicLeast)) return 1.0;
  if (magnitude < bitsOf(kHyperbolicMost)) return cosh(x);
  return magnitude > bitsOf(800.0) ? kInfinity : expScaled(fromBits<double>(magnitude), 1);
}

double cbrtAnywhere(double x) {
  if (isNaN(x)) return quiet(x);
  if (isZero(x) || isInfinite(x)) return x;
  if (!isSubnormal(x)) return cbrt(x);
  int shift = 0;
  double root = normalised(fromBits<double>(magnitudeOf(x)), shift);
  // A multiple of three, so that the root's exponent is a whole number.
  const int more = (3 - shift % 3) % 3;
  root = cbrt(fromBits<double>(toBits(root) + (static_cast<std::uint64_t>(more) << 52)));
  root = fromBits<double>(toBits(root) - (static_cast<std::uint64_t>((shift + more) / 3) << 52));
  return isNegative(x) ? -root : root;
}

double sinAnywhere(double x) { return std::sin(x); }
double cosAnywhere(double x) { return std::cos(x); }
double tanAnywhere(double x) { return std::tan(x); }
double asinAnywhere(double x) { return std::asin(x); }
double acosAnywhere(double x) { return std::acos(x); }
double atanAnywhere(double x) { return std::atan(x); }

}  // namespace qs::math
