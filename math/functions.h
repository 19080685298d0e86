// Elementary functions over one double or a vector of doubles, of IEEE additions, multiplications, divisions and
// integer operations alone: each lane gets the same bits whatever its neighbours, the instruction set or the system.
// Nothing may be fused (-ffp-contract=off). docs/numbers.md describes the accuracy; tables.h has the numbers, derive.py
// their derivation.
//
// A function tests once whether its arguments are in the range of the fast code; where one is not, each lane goes
// through functions.cpp. The fast code raises no floating-point exception but inexact.
//
// Everything here is always inlined: the code of one instruction set must not become the copy that all share.
#pragma once

#include <cstdint>

#include "math/tables.h"

#define QS_INLINE [[gnu::always_inline]] inline

namespace qs::math {

constexpr std::uint64_t bitsOf(double x) { return __builtin_bit_cast(std::uint64_t, x); }
inline constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;

// The magnitudes of the arguments of exp for which the fast code is right. Up to the second, which gives 2^-953, no
// product underflows; below the first the result is 1 + x.
inline constexpr double kExpLeast = 0x1p-54;
inline constexpr double kExpMost = 660.0;

// What the functions need to know of a type of argument: Lanes<double> here, vectors in vectors.h.
template <class V>
struct Lanes;

template <>
struct Lanes<double> {
  using Bits = std::uint64_t;

  // Whether |x| or x itself, a positive number, is outside [low, high), which may be NaN.
  QS_INLINE static bool magnitudeOutside(double x, double low, double high) {
    return (bitsOf(x) & ~kSignBit) - bitsOf(low) >= bitsOf(high) - bitsOf(low);
  }
  QS_INLINE static bool outside(double x, double low, double high) {
    return bitsOf(x) - bitsOf(low) >= bitsOf(high) - bitsOf(low);
  }

  // For exp: below the range products would underflow.
  QS_INLINE static bool outsideExp(double x) { return magnitudeOutside(x, kExpLeast, kExpMost); }

  QS_INLINE static void expEntry(Bits k, Bits& bits, double& tail) {
    const ExpEntry& entry = kExpTable[k % 16];
    bits = entry.bits;
    tail = entry.tail;
  }
  QS_INLINE static void logEntry(Bits n, double& inverseLess1, double& high, double& low) {
    const LogEntry& entry = kLogTable[n % 32];
    inverseLess1 = entry.inverseLess1;
    high = entry.high;
    low = entry.low;
  }
  // Of the number with these bits.
  QS_INLINE static double exponentOf(Bits bits) {
    return __builtin_bit_cast(double, (bits >> 52) | bitsOf(0x1p52)) - (0x1p52 + 1023.0);
  }
  QS_INLINE static double cubeRootOf(Bits power) { return kCubeRootOf[power]; }  // of 2^power, from 0 to 2

  // The function of each lane.
  QS_INLINE static double each(double (*function)(double), double x) { return function(x); }
  QS_INLINE static double each(double (*function)(double, double), double x, double y) { return function(x, y); }
};

// The whole range, one value, for what is outside the range of the fast code (functions.cpp).
[[gnu::const]] double expAnywhere(double x);
[[gnu::const]] double logAnywhere(double x);
[[gnu::const]] double log10Anywhere(double x);
[[gnu::const]] double powAnywhere(double x, double y);
[[gnu::const]] double powOneThirdAnywhere(double x);
[[gnu::const]] double sinhAnywhere(double x);
[[gnu::const]] double coshAnywhere(double x);
[[gnu::const]] double cbrtAnywhere(double x);

namespace kernel {

template <class V>
using Bits = typename Lanes<V>::Bits;

template <class V>
QS_INLINE Bits<V> toBits(V x) {
  return __builtin_bit_cast(Bits<V>, x);
}
template <class V>
QS_INLINE V fromBits(Bits<V> bits) {
  return __builtin_bit_cast(V, bits);
}

inline constexpr std::uint64_t kExponentBits = std::uint64_t{0x7ff} << 52;
inline constexpr double kInfinity = __builtin_inf();
inline constexpr double kLeastNormal = 0x1p-1022;

// Adding it rounds a number to a whole one, whose low bits are then those of the sum.
inline constexpr double kToWhole = 0x1.8p52;

// The first 26 bits: products of two such numbers are exact.
template <class V>
QS_INLINE V leading(V x) {
  return fromBits<V>(toBits(x) & ~((std::uint64_t{1} << 27) - 1));
}

// exp

// x = k ln2/16 + r + rLow with |r| at most a little more than ln2/32; k in the low bits of `k`.
template <class V>
struct ExpParts {
  Bits<V> k;
  V r, rLow;
};
template <class V>
QS_INLINE ExpParts<V> reduceExp(V x) {
  const V shifted = x * kExpStepsPerUnit + kToWhole;
  const V k = shifted - kToWhole;
  const V high = x - k * kExpStepHigh;  // exact
  const V low = k * kExpStepLow;
  const V r = high - low;
  return {toBits(shifted), r, (high - r) - low};
}

// e^r - 1, relative to 2^(k/16) as the table has it.
template <class V>
QS_INLINE V expOfRest(V r, V tail) {
  const V r2 = r * r;
  return r + (tail + r2 * ((kExp[0] + kExp[1] * r) + r2 * ((kExp[2] + kExp[3] * r) + r2 * kExp[4])));
}

// 2^(k/16) e^r, a normal number.
template <class V>
QS_INLINE V exp2Times(Bits<V> k, V r) {
  Bits<V> bits;
  V tail;
  Lanes<V>::expEntry(k, bits, tail);
  const V s = fromBits<V>(bits + (k << 48));
  return s + s * expOfRest(r, tail);
}

// log

// x = 2^k z with z in [0.68, 1.36); c = z rounded to 1/32; d = z - c is exact; ln x = k ln 2 + ln c + ln(1 + r),
// r = d/c = d + d (1/c - 1). To write it so keeps r exact where c is 1.
template <class V>
struct LogParts {
  V c, d, inverseLess1;
  V whole, wholeLow;  // k ln 2 + ln c: the first is exact, a multiple of 2^-42
};
template <class V>
QS_INLINE LogParts<V> reduceLog(V x) {
  constexpr std::uint64_t kOne = bitsOf(1.0);
  const Bits<V> t = toBits(x) + (kOne - bitsOf(0.68));
  const V z = fromBits<V>((t & ~kExponentBits) + bitsOf(0.68));
  const V k = Lanes<V>::exponentOf(t);
  const V shifted = z + kToWhole / 32.0;
  LogParts<V> parts;
  parts.c = shifted - kToWhole / 32.0;
  parts.d = z - parts.c;
  V high, low;
  Lanes<V>::logEntry(toBits(shifted), parts.inverseLess1, high, low);
  parts.whole = k * kLn2High + high;
  parts.wholeLow = k * kLn2Low + low;
  return parts;
}

template <class V>
QS_INLINE V logNormal(V x) {
  const LogParts<V> p = reduceLog(x);
  const V de = p.d * p.inverseLess1;
  const V r = p.d + de;
  const V sum = p.whole + p.d;
  const V lost = (p.whole - sum) + p.d;
  const V r2 = r * r;
  const V cubic = (kLog[0] + kLog[1] * r) + r2 * ((kLog[2] + kLog[3] * r) + r2 * (kLog[4] + kLog[5] * r));
  return sum + ((p.wholeLow + lost) + (de + (r2 * r * cubic - 0.5 * r2)));
}

// The logarithm as high + low, to 2^-65 of itself. r = rh + rl, rh of 26 bits, so rh c and rh^2 are exact and rh^3 is
// rounded once; below 63/64 the rounding of a cube is most of the error.
template <class V>
struct Sum {
  V high, low;
};
template <class V>
QS_INLINE Sum<V> logLong(V x) {
  const LogParts<V> p = reduceLog(x);
  const V r = p.d + p.d * p.inverseLess1;
  const V rh = leading(r);
  const V rest = p.d - rh * p.c;
  const V rl = rest + rest * p.inverseLess1;
  const V sum = p.whole + rh;
  const V rh2 = rh * rh;
  const V half = 0.5 * rh2;
  const V high = sum - half;
  const V lost = ((p.whole - sum) + rh) + ((sum - high) - half);
  const V r2 = r * r;
  const V third = rh2 * rh * kLogLong[0];
  const V quartic = ((kLogLong[1] + kLogLong[2] * r) + r2 * (kLogLong[3] + kLogLong[4] * r)) +
                    r2 * r2 * (kLogLong[5] + kLogLong[6] * r + kLogLong[7] * r2);
  const V low = lost + ((p.wholeLow + (rl - rl * ((rh + 0.5 * rl) - rh * r)) + r2 * r2 * quartic) + third);
  return {high, low};
}

template <class V>
QS_INLINE V log10Of(Sum<V> log) {
  const V hh = leading(log.high);
  const V hl = log.high - hh;
  return hh * kInverseLn10High +
         ((hl * kInverseLn10High + log.high * kInverseLn10Low) + log.low * (kInverseLn10High + kInverseLn10Low));
}

// y ln x as high + low; the high part is a product of 26 bits by 26, so it is exact.
template <class V>
QS_INLINE Sum<V> product(V y, Sum<V> log) {
  const V yh = leading(y);
  const V yl = y - yh;
  const V hh = leading(log.high);
  const V hl = log.high - hh;
  return {yh * hh, ((yh * hl + yl * hh) + yl * hl) + y * log.low};
}

// The parts of e^(high + low).
template <class V>
QS_INLINE ExpParts<V> reduceExp(Sum<V> x) {
  const V shifted = (x.high + x.low) * kExpStepsPerUnit + kToWhole;
  const V k = shifted - kToWhole;
  return {toBits(shifted), (x.high - k * kExpStepHigh) + (x.low - k * kExpStepLow), V{}};
}

// sinh, cosh: with s = 2^(k/16) and t = 1/s, 2 sinh x = (s - t) + (s + t) sinh r + (s - t) (cosh r - 1) and
// 2 cosh x = (s + t) + (s - t) sinh r + (s + t) (cosh r - 1). For k = 0 nothing cancels.

inline constexpr double kHyperbolicLeast = 0x1p-27;
inline constexpr double kHyperbolicMost = 350.0;

template <class V>
struct HyperbolicParts {
  V r, rLow;
  V sum, sumLow, difference, differenceLow;  // s + t and s - t
  V odd, even;                               // sinh r - r, cosh r - 1
};
template <class V>
QS_INLINE HyperbolicParts<V> reduceHyperbolic(V magnitude) {
  const ExpParts<V> e = reduceExp(magnitude);
  Bits<V> bits;
  V sTail, tTail;
  // Halved, so that the functions need not be.
  Lanes<V>::expEntry(e.k, bits, sTail);
  const V s = fromBits<V>(bits + (e.k << 48) - (std::uint64_t{1} << 52));
  const Bits<V> negative = Bits<V>{} - e.k;
  Lanes<V>::expEntry(negative, bits, tTail);
  const V t = fromBits<V>(bits + (negative << 48) - (std::uint64_t{1} << 52));
  HyperbolicParts<V> p;
  p.r = e.r;
  p.rLow = e.rLow;
  const V sLow = s * sTail, tLow = t * tTail;
  p.sum = s + t;
  p.sumLow = ((s - p.sum) + t) + (sLow + tLow);
  p.difference = s - t;
  p.differenceLow = ((s - p.difference) - t) + (sLow - tLow);
  const V r2 = e.r * e.r;
  p.odd = r2 * e.r * (kSinh[0] + r2 * (kSinh[1] + r2 * kSinh[2]));
  p.even = r2 * (kCosh[0] + r2 * (kCosh[1] + r2 * kCosh[2]));
  return p;
}

template <class V>
QS_INLINE V sinhOf(const HyperbolicParts<V>& p, Bits<V> sign) {
  const V sumHigh = leading(p.sum), rHigh = leading(p.r);
  const V main = sumHigh * rHigh;  // exact
  const V rest = (p.sum - sumHigh) * rHigh + (p.sum * (p.r - rHigh) + (p.sum * p.rLow + p.sumLow * p.r));
  const V sum = p.difference + main;
  const V lost = (p.difference - sum) + main;
  const V result = sum + ((lost + (p.differenceLow + rest)) + (p.sum * p.odd + p.difference * p.even));
  return fromBits<V>(toBits(result) ^ sign);
}
template <class V>
QS_INLINE V coshOf(const HyperbolicParts<V>& p) {
  return p.sum + (p.sumLow + (p.difference * (p.r + p.odd) + p.sum * p.even));
}

}  // namespace kernel

template <class V>
QS_INLINE V exp(V x) {
  using namespace kernel;
  if (Lanes<V>::outsideExp(x)) [[unlikely]]
    return Lanes<V>::each(expAnywhere, x);
  const ExpParts<V> parts = reduceExp(x);
  return exp2Times(parts.k, parts.r);
}

template <class V>
QS_INLINE V log(V x) {
  using namespace kernel;
  if (Lanes<V>::outside(x, kLeastNormal, kInfinity)) [[unlikely]]
    return Lanes<V>::each(logAnywhere, x);
  return logNormal(x);
}

template <class V>
QS_INLINE V log10(V x) {
  using namespace kernel;
  if (Lanes<V>::outside(x, kLeastNormal, kInfinity)) [[unlikely]]
    return Lanes<V>::each(log10Anywhere, x);
  return log10Of(logLong(x));
}

template <class V>
QS_INLINE V pow(V x, V y) {
  using namespace kernel;
  if (Lanes<V>::outside(x, kLeastNormal, kInfinity)) [[unlikely]]
    return Lanes<V>::each(powAnywhere, x, y);
  const Sum<V> exponent = product(y, logLong(x));
  if (Lanes<V>::outsideExp(exponent.high)) [[unlikely]]
    return Lanes<V>::each(powAnywhere, x, y);
  const ExpParts<V> parts = reduceExp(exponent);
  return exp2Times(parts.k, parts.r);
}

template <class V>
QS_INLINE V sinh(V x) {
  using namespace kernel;
  if (Lanes<V>::magnitudeOutside(x, kHyperbolicLeast, kHyperbolicMost)) [[unlikely]]
    return Lanes<V>::each(sinhAnywhere, x);
  const Bits<V> sign = toBits(x) & kSignBit;
  return sinhOf(reduceHyperbolic(fromBits<V>(toBits(x) ^ sign)), sign);
}

template <class V>
QS_INLINE V cosh(V x) {
  using namespace kernel;
  if (Lanes<V>::magnitudeOutside(x, kHyperbolicLeast, kHyperbolicMost)) [[unlikely]]
    return Lanes<V>::each(coshAnywhere, x);
  return coshOf(reduceHyperbolic(fromBits<V>(toBits(x) & ~kSignBit)));
}

// Both of one number.
template <class V>
struct SinhAndCosh {
  V sinh, cosh;
};
template <class V>
QS_INLINE SinhAndCosh<V> sinhAndCosh(V x) {
  using namespace kernel;
  if (Lanes<V>::magnitudeOutside(x, kHyperbolicLeast, kHyperbolicMost)) [[unlikely]]
    return {Lanes<V>::each(sinhAnywhere, x), Lanes<V>::each(coshAnywhere, x)};
  const Bits<V> sign = toBits(x) & kSignBit;
  const HyperbolicParts<V> parts = reduceHyperbolic(fromBits<V>(toBits(x) ^ sign));
  return {sinhOf(parts, sign), coshOf(parts)};
}

// |x| = 8^q 2^m z, z in [1, 2): a polynomial gives t to 2^-19, of which 26 bits are kept so that t^2 is exact; one step
// of Halley's iteration for a = 2^m z does the rest.
template <class V>
QS_INLINE V cbrt(V x) {
  using namespace kernel;
  if (Lanes<V>::magnitudeOutside(x, kLeastNormal, kInfinity)) [[unlikely]]
    return Lanes<V>::each(cbrtAnywhere, x);
  const Bits<V> bits = toBits(x);
  const Bits<V> exponent = (bits & kExponentBits) >> 52;  // e + 1023 = 3 (q + 341) + m
  // (exponent + 1/2)/3 to ten fraction bits, however it is rounded, is not near a whole number; its floor is the third.
  constexpr double kToThousandths = kToWhole / 1024.0;
  const V shifted = (fromBits<V>(exponent | bitsOf(0x1p52)) - (0x1p52 - 0.5)) * (1.0 / 3.0) + kToThousandths;
  const Bits<V> third = (toBits(shifted) - bitsOf(kToThousandths)) >> 10;
  const Bits<V> m = exponent - (third << 1) - third;
  const V z = fromBits<V>((bits & ~(kSignBit | kExponentBits)) | bitsOf(1.0));
  const V a = fromBits<V>(toBits(z) + (m << 52));
  const V z2 = z * z;
  const V start = ((kCubeRoot[0] + kCubeRoot[1] * z) + z2 * (kCubeRoot[2] + kCubeRoot[3] * z)) +
                  z2 * z2 * (kCubeRoot[4] + kCubeRoot[5] * z);
  const V t = leading(start * Lanes<V>::cubeRootOf(m));
  const V quotient = a / (t * t);
  const V root = t + t * ((quotient - t) / (t + t + quotient));
  return fromBits<V>((toBits(root) + ((third - 341) << 52)) | (bits & kSignBit));
}

// x, or zero where its square would underflow.
inline constexpr double kLeastSquared = 0x1p-500;
QS_INLINE double orZero(double x) { return (bitsOf(x) & ~kSignBit) < bitsOf(kLeastSquared) ? 0.0 : x; }

QS_INLINE double atMost(double x, double limit) { return x > limit ? limit : x; }

// x, or zero where a is less than b.
QS_INLINE double zeroWhereLess(double x, double a, double b) { return a < b ? 0.0 : x; }

// A correctly rounded operation of every processor.
QS_INLINE double sqrt(double x) { return __builtin_sqrt(x); }

// x^(1/3) as the cube root, which is as exact; NaN for a negative number and 0 for -0, as a power has it.
template <class V>
QS_INLINE V powOneThird(V x) {
  using namespace kernel;
  if (Lanes<V>::outside(x, kLeastNormal, kInfinity)) [[unlikely]]
    return Lanes<V>::each(powOneThirdAnywhere, x);
  return cbrt(x);
}

// The C library's: their last bits differ from system to system.
#define QS_LIBRARY_FUNCTION(name)             \
  double name##Anywhere(double x);            \
  template <class V>                          \
  QS_INLINE V name(V x) {                     \
    return Lanes<V>::each(name##Anywhere, x); \
  }
QS_LIBRARY_FUNCTION(sin)
QS_LIBRARY_FUNCTION(cos)
QS_LIBRARY_FUNCTION(tan)
QS_LIBRARY_FUNCTION(asin)
QS_LIBRARY_FUNCTION(acos)
QS_LIBRARY_FUNCTION(atan)
#undef QS_LIBRARY_FUNCTION

}  // namespace qs::math
