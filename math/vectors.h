// Vectors of doubles as arguments of the elementary functions: two, four or eight lanes, as the instruction set has
// them for which the including file is compiled. Only files that are compiled for one instruction set include this.
#pragma once

#include <immintrin.h>

#include "math/functions.h"

namespace qs::math {

#if defined(__AVX512F__)
inline constexpr int kRegisterLanes = 8;
#elif defined(__AVX2__)
inline constexpr int kRegisterLanes = 4;
#else
inline constexpr int kRegisterLanes = 2;
#endif

typedef double Register __attribute__((vector_size(8 * kRegisterLanes)));
typedef std::uint64_t RegisterBits __attribute__((vector_size(8 * kRegisterLanes)));

QS_INLINE Register broadcast(double x) { return Register{} + x; }
QS_INLINE Register loadRegister(const double* from) {
  Register x;
  __builtin_memcpy(&x, from, sizeof x);
  return x;
}
QS_INLINE void storeRegister(double* to, Register x) { __builtin_memcpy(to, &x, sizeof x); }

// Two registers: while the operations on one wait for each other, there are those on the other to do.
template <class R>
struct Pair {
  R first, second;
};
using Vector = Pair<Register>;
using VectorBits = Pair<RegisterBits>;
inline constexpr int kLanes = 2 * kRegisterLanes;

QS_INLINE Vector load(const double* from) { return {loadRegister(from), loadRegister(from + kRegisterLanes)}; }
QS_INLINE void store(double* to, Vector x) {
  storeRegister(to, x.first);
  storeRegister(to + kRegisterLanes, x.second);
}

#define QS_ARITHMETIC(op)                                                                                 \
  QS_INLINE Vector operator op(Vector x, Vector y) { return {x.first op y.first, x.second op y.second}; } \
  QS_INLINE Vector operator op(Vector x, double y) { return {x.first op y, x.second op y}; }              \
  QS_INLINE Vector operator op(double x, Vector y) { return {x op y.first, x op y.second}; }
QS_ARITHMETIC(+)
QS_ARITHMETIC(-)
QS_ARITHMETIC(*)
QS_ARITHMETIC(/)
#undef QS_ARITHMETIC
QS_INLINE Vector operator-(Vector x) { return {-x.first, -x.second}; }

#define QS_BITWISE(op)                                                                                                \
  QS_INLINE VectorBits operator op(VectorBits x, VectorBits y) { return {x.first op y.first, x.second op y.second}; } \
  QS_INLINE VectorBits operator op(VectorBits x, std::uint64_t y) { return {x.first op y, x.second op y}; }
QS_BITWISE(+)
QS_BITWISE(-)
QS_BITWISE(&)
QS_BITWISE(|)
QS_BITWISE(^)
QS_BITWISE(<<)
QS_BITWISE(>>)
#undef QS_BITWISE

QS_INLINE Register zeroWhereLess(Register x, Register a, Register b) {
  const auto less = a < b;
  return __builtin_bit_cast(Register, __builtin_bit_cast(RegisterBits, x) & ~__builtin_bit_cast(RegisterBits, less));
}
QS_INLINE Vector zeroWhereLess(Vector x, Vector a, Vector b) {
  return {zeroWhereLess(x.first, a.first, b.first), zeroWhereLess(x.second, a.second, b.second)};
}

QS_INLINE Register orZero(Register x) {
  const RegisterBits magnitude = __builtin_bit_cast(RegisterBits, x) & ~kSignBit;
  return zeroWhereLess(x, __builtin_bit_cast(Register, magnitude), broadcast(kLeastSquared));
}
QS_INLINE Vector orZero(Vector x) { return {orZero(x.first), orZero(x.second)}; }

QS_INLINE Vector atMost(Vector x, double limit) {
  const Register most = broadcast(limit);
  return {x.first > most ? most : x.first, x.second > most ? most : x.second};
}

// For each instruction set: the square root; zero for no when asked whether a lane is outside [low, high), not below or
// equal to a value, or whether all are within [low, high]; the entries of the tables for the low bits of each lane's
// index.
namespace of_register {

#if defined(__AVX512F__)

QS_INLINE Register sqrt(Register x) { return _mm512_maskz_sqrt_pd(0xff, x); }

QS_INLINE int outside(Register x, double low, double high) {
  const __mmask8 in = _mm512_cmp_pd_mask(x, broadcast(low), _CMP_GE_OQ);
  return _mm512_mask_cmp_pd_mask(in, x, broadcast(high), _CMP_LT_OQ) != 0xff;
}

QS_INLINE int within(Register x, double low, double high) {
  const __mmask8 in = _mm512_cmp_pd_mask(x, broadcast(low), _CMP_GE_OQ);
  return _mm512_mask_cmp_pd_mask(in, x, broadcast(high), _CMP_LE_OQ) == 0xff;
}
QS_INLINE int notBelow(Register x, double limit) { return _mm512_cmp_pd_mask(x, broadcast(limit), _CMP_NLT_UQ); }
QS_INLINE int hasLane(Register x, double value) { return _mm512_cmp_pd_mask(x, broadcast(value), _CMP_EQ_OQ) != 0; }

QS_INLINE Register exponentOf(RegisterBits bits) {
  return _mm512_maskz_getexp_pd(0xff, __builtin_bit_cast(Register, bits));
}

// A table's numbers column by column, so that registers can hold a column as a whole.
template <class Entry, int rows>
struct Column {
  template <class Number>
  constexpr Column(Number Entry::*number, const Entry (&table)[rows]) {
    for (int i = 0; i < rows; ++i) values[i] = __builtin_bit_cast(double, table[i].*number);
  }
  alignas(64) double values[rows]{};
};
inline constexpr Column kExpBits(&ExpEntry::bits, kExpTable);
inline constexpr Column kExpTails(&ExpEntry::tail, kExpTable);
inline constexpr Column kLogInverses(&LogEntry::inverseLess1, kLogTable);
inline constexpr Column kLogHighs(&LogEntry::high, kLogTable);
inline constexpr Column kLogLows(&LogEntry::low, kLogTable);

// Of 16 numbers, by the low four bits of the index.
QS_INLINE Register ofSixteen(const double* column, RegisterBits index) {
  return _mm512_permutex2var_pd(_mm512_load_pd(column), __builtin_bit_cast(__m512i, index), _mm512_load_pd(column + 8));
}
QS_INLINE Register of(const Column<ExpEntry, 16>& column, RegisterBits index) {
  return ofSixteen(column.values, index);
}
QS_INLINE Register of(const Column<LogEntry, 32>& column, RegisterBits index) {
  const __mmask8 second = _mm512_test_epi64_mask(__builtin_bit_cast(__m512i, index), _mm512_set1_epi64(16));
  return _mm512_mask_blend_pd(second, ofSixteen(column.values, index), ofSixteen(column.values + 16, index));
}

QS_INLINE void expEntry(RegisterBits k, RegisterBits& bits, Register& tail) {
  bits = __builtin_bit_cast(RegisterBits, of(kExpBits, k));
  tail = of(kExpTails, k);
}
QS_INLINE void logEntry(RegisterBits n, Register& inverseLess1, Register& high, Register& low) {
  inverseLess1 = of(kLogInverses, n);
  high = of(kLogHighs, n);
  low = of(kLogLows, n);
}

#else

QS_INLINE Register exponentOf(RegisterBits bits) {
  return __builtin_bit_cast(Register, (bits >> 52) | bitsOf(0x1p52)) - (0x1p52 + 1023.0);
}

// Two numbers of an entry, from an offset in bytes.
QS_INLINE __m128d pairAt(const void* table, std::uint64_t offset) {
  return _mm_loadu_pd(reinterpret_cast<const double*>(static_cast<const char*>(table) + offset));
}

#if defined(__AVX2__)
QS_INLINE Register sqrt(Register x) { return _mm256_sqrt_pd(x); }
QS_INLINE int outside(Register x, double low, double high) {
  const __m256d atLeast = _mm256_cmp_pd(x, broadcast(low), _CMP_GE_OQ);
  const __m256d below = _mm256_cmp_pd(x, broadcast(high), _CMP_LT_OQ);
  return _mm256_movemask_pd(_mm256_and_pd(atLeast, below)) != 0xf;
}
QS_INLINE int within(Register x, double low, double high) {
  const __m256d atLeast = _mm256_cmp_pd(x, broadcast(low), _CMP_GE_OQ);
  const __m256d atMost = _mm256_cmp_pd(x, broadcast(high), _CMP_LE_OQ);
  return _mm256_movemask_pd(_mm256_and_pd(atLeast, atMost)) == 0xf;
}
QS_INLINE int notBelow(Register x, double limit) {
  return _mm256_movemask_pd(_mm256_cmp_pd(x, broadcast(limit), _CMP_NLT_UQ));
}
QS_INLINE int hasLane(Register x, double value) {
  return _mm256_movemask_pd(_mm256_cmp_pd(x, broadcast(value), _CMP_EQ_OQ)) != 0;
}
QS_INLINE void pairsAt(const void* table, RegisterBits offsets, Register& first, Register& second) {
  const __m256d even =
      _mm256_insertf128_pd(_mm256_castpd128_pd256(pairAt(table, offsets[0])), pairAt(table, offsets[2]), 1);
  const __m256d odd =
      _mm256_insertf128_pd(_mm256_castpd128_pd256(pairAt(table, offsets[1])), pairAt(table, offsets[3]), 1);
  first = _mm256_unpacklo_pd(even, odd);
  second = _mm256_unpackhi_pd(even, odd);
}
#else
QS_INLINE Register sqrt(Register x) { return _mm_sqrt_pd(x); }
QS_INLINE int outside(Register x, double low, double high) {
  return _mm_movemask_pd(_mm_and_pd(_mm_cmpge_pd(x, broadcast(low)), _mm_cmplt_pd(x, broadcast(high)))) != 0x3;
}
QS_INLINE int within(Register x, double low, double high) {
  return _mm_movemask_pd(_mm_and_pd(_mm_cmpge_pd(x, broadcast(low)), _mm_cmple_pd(x, broadcast(high)))) == 0x3;
}
QS_INLINE int notBelow(Register x, double limit) { return _mm_movemask_pd(_mm_cmpnlt_pd(x, broadcast(limit))); }
QS_INLINE int hasLane(Register x, double value) { return _mm_movemask_pd(_mm_cmpeq_pd(x, broadcast(value))) != 0; }
QS_INLINE void pairsAt(const void* table, RegisterBits offsets, Register& first, Register& second) {
  // Not as lanes: gcc takes the second with an instruction that waits for the last use of its target.
  const __m128i bits = __builtin_bit_cast(__m128i, offsets);
  const __m128d even = pairAt(table, static_cast<unsigned>(_mm_extract_epi16(bits, 0)));
  const __m128d odd = pairAt(table, static_cast<unsigned>(_mm_extract_epi16(bits, 4)));
  first = _mm_unpacklo_pd(even, odd);
  second = _mm_unpackhi_pd(even, odd);
}
#endif

QS_INLINE void expEntry(RegisterBits k, RegisterBits& bits, Register& tail) {
  Register first;
  pairsAt(kExpTable, (k % 16) * sizeof(ExpEntry), first, tail);
  bits = __builtin_bit_cast(RegisterBits, first);
}
QS_INLINE void logEntry(RegisterBits n, Register& inverseLess1, Register& high, Register& low) {
  const RegisterBits offsets = (n % 32) * sizeof(LogEntry);
  Register c;
  pairsAt(kLogTable, offsets, inverseLess1, high);
  pairsAt(&kLogTable[0].low, offsets, low, c);
}

#endif

QS_INLINE Register cubeRootOf(RegisterBits power) {
  Register root;
  for (int i = 0; i < kRegisterLanes; ++i) root[i] = kCubeRootOf[power[i]];
  return root;
}

}  // namespace of_register

template <>
struct Lanes<Vector> {
  using Bits = VectorBits;

  QS_INLINE static bool outside(Vector x, double low, double high) {
    return (of_register::outside(x.first, low, high) | of_register::outside(x.second, low, high)) != 0;
  }
  QS_INLINE static bool magnitudeOutside(Vector x, double low, double high) {
    return outside(__builtin_bit_cast(Vector, __builtin_bit_cast(Bits, x) & ~kSignBit), low, high);
  }

  // Exceptions are masked while vectors are computed, so products may underflow.
  QS_INLINE static bool outsideExp(Vector x) {
    const Vector magnitude = __builtin_bit_cast(Vector, __builtin_bit_cast(Bits, x) & ~kSignBit);
    return (of_register::notBelow(magnitude.first, kExpMost) | of_register::notBelow(magnitude.second, kExpMost)) != 0;
  }

  QS_INLINE static void expEntry(Bits k, Bits& bits, Vector& tail) {
    of_register::expEntry(k.first, bits.first, tail.first);
    of_register::expEntry(k.second, bits.second, tail.second);
  }
  QS_INLINE static void logEntry(Bits n, Vector& inverseLess1, Vector& high, Vector& low) {
    of_register::logEntry(n.first, inverseLess1.first, high.first, low.first);
    of_register::logEntry(n.second, inverseLess1.second, high.second, low.second);
  }
  QS_INLINE static Vector exponentOf(Bits bits) {
    return {of_register::exponentOf(bits.first), of_register::exponentOf(bits.second)};
  }
  QS_INLINE static Vector cubeRootOf(Bits power) {
    return {of_register::cubeRootOf(power.first), of_register::cubeRootOf(power.second)};
  }

  [[gnu::noinline, gnu::cold]] static Vector each(double (*function)(double), Vector x) {
    double lanes[kLanes];
    store(lanes, x);
    for (double& lane : lanes) lane = function(lane);
    return load(lanes);
  }
  [[gnu::noinline, gnu::cold]] static Vector each(double (*function)(double, double), Vector x, Vector y) {
    double lanes[kLanes], others[kLanes];
    store(lanes, x);
    store(others, y);
    for (int i = 0; i < kLanes; ++i) lanes[i] = function(lanes[i], others[i]);
    return load(lanes);
  }
};

QS_INLINE Vector sqrt(Vector x) { return {of_register::sqrt(x.first), of_register::sqrt(x.second)}; }

QS_INLINE bool hasLane(Vector x, double value) {
  return (of_register::hasLane(x.first, value) | of_register::hasLane(x.second, value)) != 0;
}
QS_INLINE bool within(Vector x, double low, double high) {
  return (of_register::within(x.first, low, high) & of_register::within(x.second, low, high)) != 0;
}

QS_INLINE Vector pow(Vector x, double y) { return pow(x, Vector{broadcast(y), broadcast(y)}); }
QS_INLINE Vector pow(double x, Vector y) { return pow(Vector{broadcast(x), broadcast(x)}, y); }

}  // namespace qs::math
