// Vectors of doubles as arguments of the elementary functions: two, four or eight lanes, as the instruction set has
// them for which the including file is compiled. Only files that are compiled for one instruction set include this.
#pragma once

#include <immintrin.h>

#include "math/functions.h"

namespace qs::math {

#if defined(__AVX512F__)
inline constexpr int kLanes = 8;
#elif defined(__AVX2__)
inline constexpr int kLanes = 4;
#else
inline constexpr int kLanes = 2;
#endif

typedef double Vector __attribute__((vector_size(8 * kLanes)));
typedef std::uint64_t VectorBits __attribute__((vector_size(8 * kLanes)));

QS_INLINE Vector broadcast(double x) { return Vector{} + x; }
QS_INLINE Vector load(const double* from) {
  Vector x;
  __builtin_memcpy(&x, from, sizeof x);
  return x;
}
QS_INLINE void store(double* to, Vector x) { __builtin_memcpy(to, &x, sizeof x); }

// For each instruction set: whether a lane is outside [low, high), and the entries of the tables for the low bits of
// each lane's index.
namespace vector {

#if defined(__AVX512F__)

QS_INLINE bool outside(Vector x, double low, double high) {
  const __mmask8 in = _mm512_cmp_pd_mask(x, broadcast(low), _CMP_GE_OQ);
  return _mm512_mask_cmp_pd_mask(in, x, broadcast(high), _CMP_LT_OQ) != 0xff;
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
QS_INLINE Vector ofSixteen(const double* column, VectorBits index) {
  return _mm512_permutex2var_pd(_mm512_load_pd(column), __builtin_bit_cast(__m512i, index), _mm512_load_pd(column + 8));
}
QS_INLINE Vector of(const Column<ExpEntry, 16>& column, VectorBits index) { return ofSixteen(column.values, index); }
QS_INLINE Vector of(const Column<LogEntry, 32>& column, VectorBits index) {
  const __mmask8 second = _mm512_test_epi64_mask(__builtin_bit_cast(__m512i, index), _mm512_set1_epi64(16));
  return _mm512_mask_blend_pd(second, ofSixteen(column.values, index), ofSixteen(column.values + 16, index));
}

QS_INLINE void expEntry(VectorBits k, VectorBits& bits, Vector& tail) {
  bits = __builtin_bit_cast(VectorBits, of(kExpBits, k));
  tail = of(kExpTails, k);
}
QS_INLINE void logEntry(VectorBits n, Vector& inverseLess1, Vector& high, Vector& low) {
  inverseLess1 = of(kLogInverses, n);
  high = of(kLogHighs, n);
  low = of(kLogLows, n);
}

#else

// Two numbers of an entry, from an offset in bytes.
QS_INLINE __m128d pairAt(const void* table, std::uint64_t offset) {
  return _mm_loadu_pd(reinterpret_cast<const double*>(static_cast<const char*>(table) + offset));
}

#if defined(__AVX2__)
QS_INLINE bool outside(Vector x, double low, double high) {
  const __m256d atLeast = _mm256_cmp_pd(x, broadcast(low), _CMP_GE_OQ);
  const __m256d below = _mm256_cmp_pd(x, broadcast(high), _CMP_LT_OQ);
  return _mm256_movemask_pd(_mm256_and_pd(atLeast, below)) != 0xf;
}
QS_INLINE void pairsAt(const void* table, VectorBits offsets, Vector& first, Vector& second) {
  const __m256d even =
      _mm256_insertf128_pd(_mm256_castpd128_pd256(pairAt(table, offsets[0])), pairAt(table, offsets[2]), 1);
  const __m256d odd =
      _mm256_insertf128_pd(_mm256_castpd128_pd256(pairAt(table, offsets[1])), pairAt(table, offsets[3]), 1);
  first = _mm256_unpacklo_pd(even, odd);
  second = _mm256_unpackhi_pd(even, odd);
}
#else
QS_INLINE bool outside(Vector x, double low, double high) {
  return _mm_movemask_pd(_mm_and_pd(_mm_cmpge_pd(x, broadcast(low)), _mm_cmplt_pd(x, broadcast(high)))) != 0x3;
}
QS_INLINE void pairsAt(const void* table, VectorBits offsets, Vector& first, Vector& second) {
  // Not as lanes: gcc takes the second with an instruction that waits for the last use of its target.
  const __m128i bits = __builtin_bit_cast(__m128i, offsets);
  const __m128d even = pairAt(table, static_cast<unsigned>(_mm_extract_epi16(bits, 0)));
  const __m128d odd = pairAt(table, static_cast<unsigned>(_mm_extract_epi16(bits, 4)));
  first = _mm_unpacklo_pd(even, odd);
  second = _mm_unpackhi_pd(even, odd);
}
#endif

QS_INLINE void expEntry(VectorBits k, VectorBits& bits, Vector& tail) {
  Vector first;
  pairsAt(kExpTable, (k % 16) * sizeof(ExpEntry), first, tail);
  bits = __builtin_bit_cast(VectorBits, first);
}
QS_INLINE void logEntry(VectorBits n, Vector& inverseLess1, Vector& high, Vector& low) {
  const VectorBits offsets = (n % 32) * sizeof(LogEntry);
  Vector c;
  pairsAt(kLogTable, offsets, inverseLess1, high);
  pairsAt(&kLogTable[0].low, offsets, low, c);
}

#endif

}  // namespace vector

template <>
struct Lanes<Vector> {
  using Bits = VectorBits;

  QS_INLINE static bool outside(Vector x, double low, double high) { return vector::outside(x, low, high); }
  QS_INLINE static bool magnitudeOutside(Vector x, double low, double high) {
    return outside(__builtin_bit_cast(Vector, __builtin_bit_cast(Bits, x) & ~kSignBit), low, high);
  }

  QS_INLINE static void expEntry(Bits k, Bits& bits, Vector& tail) { vector::expEntry(k, bits, tail); }
  QS_INLINE static void logEntry(Bits n, Vector& inverseLess1, Vector& high, Vector& low) {
    vector::logEntry(n, inverseLess1, high, low);
  }
  QS_INLINE static Vector cubeRootOf(Bits power) {
    Vector root;
    for (int i = 0; i < kLanes; ++i) root[i] = kCubeRootOf[power[i]];
    return root;
  }

  [[gnu::noinline, gnu::cold]] static Vector each(double (*function)(double), Vector x) {
    for (int i = 0; i < kLanes; ++i) x[i] = function(x[i]);
    return x;
  }
  [[gnu::noinline, gnu::cold]] static Vector each(double (*function)(double, double), Vector x, Vector y) {
    for (int i = 0; i < kLanes; ++i) x[i] = function(x[i], y[i]);
    return x;
  }
};

QS_INLINE Vector pow(Vector x, double y) { return pow(x, broadcast(y)); }
QS_INLINE Vector pow(double x, Vector y) { return pow(broadcast(x), y); }

}  // namespace qs::math
