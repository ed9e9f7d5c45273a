#ifndef ZULTAV_INTERVALS_DETAIL_DOUBLE_PAIR_H
#define ZULTAV_INTERVALS_DETAIL_DOUBLE_PAIR_H

#include <bit>
#include <cmath>
#include <cstdint>

#ifdef __FMA__
#include <immintrin.h>
#endif

#include "framework/intervals/detail/Level.h"

namespace zultav::detail {
inline namespace ZULTAV_LEVEL {

// What the elementary functions compute with: a double or, on processors with fused multiply-add,
// two at once. These operations let one text serve both.

inline double Fabs(double x) { return std::fabs(x); }
inline bool IsAnyLess(double x, double y) { return x < y; }
/// -1 for x < 0, else 0.
inline std::int64_t MinusIfNegative(double x) { return -std::int64_t{x < 0}; }
inline std::int64_t Bits(double x) { return std::bit_cast<std::int64_t>(x); }
inline void FromBits(std::int64_t bits, double& x) { x = std::bit_cast<double>(bits); }
inline void ToNumber(std::int64_t n, double& x) { x = static_cast<double>(n); }
inline std::int64_t ToInteger(double x) { return static_cast<std::int64_t>(x); }
/// x with the sign changed where the highest of `bits` is set.
inline double FlipSign(double x, std::int64_t bits) {
  return std::bit_cast<double>(Bits(x) ^ (bits & INT64_MIN));
}

/// Integers that belong to numbers.
template <class Number>
struct IntegerFor;
template <>
struct IntegerFor<double> {
  using Type = std::int64_t;
};
template <class Number>
using IntegerOf = typename IntegerFor<Number>::Type;

#ifdef __FMA__

struct DoublePair {
  __m128d numbers;

  DoublePair() = default;
  DoublePair(__m128d both) : numbers(both) {}
  DoublePair(double each) : numbers(_mm_set1_pd(each)) {}

  double First() const { return _mm_cvtsd_f64(numbers); }
  double Second() const { return _mm_cvtsd_f64(_mm_unpackhi_pd(numbers, numbers)); }

  friend DoublePair operator+(DoublePair x, DoublePair y) {
    return _mm_add_pd(x.numbers, y.numbers);
  }
  friend DoublePair operator-(DoublePair x, DoublePair y) {
    return _mm_sub_pd(x.numbers, y.numbers);
  }
  friend DoublePair operator*(DoublePair x, DoublePair y) {
    return _mm_mul_pd(x.numbers, y.numbers);
  }
  friend DoublePair operator/(DoublePair x, DoublePair y) {
    return _mm_div_pd(x.numbers, y.numbers);
  }
  friend DoublePair operator-(DoublePair x) { return _mm_xor_pd(x.numbers, _mm_set1_pd(-0.0)); }
};

/// Supports the operators of the language, also with one integer for both.
using IntegerPair = long long __attribute__((vector_size(16)));
template <>
struct IntegerFor<DoublePair> {
  using Type = IntegerPair;
};

inline DoublePair MulAdd(DoublePair x, DoublePair y, DoublePair z) {
  return _mm_fmadd_pd(x.numbers, y.numbers, z.numbers);
}
inline DoublePair Fabs(DoublePair x) { return _mm_andnot_pd(_mm_set1_pd(-0.0), x.numbers); }
inline bool IsAnyLess(DoublePair x, DoublePair y) {
  return _mm_movemask_pd(_mm_cmplt_pd(x.numbers, y.numbers)) != 0;
}
inline IntegerPair MinusIfNegative(DoublePair x) {
  return reinterpret_cast<IntegerPair>(_mm_cmplt_pd(x.numbers, _mm_setzero_pd()));
}
inline IntegerPair Bits(DoublePair x) { return reinterpret_cast<IntegerPair>(x.numbers); }
inline void FromBits(IntegerPair bits, DoublePair& x) { x = reinterpret_cast<__m128d>(bits); }
inline void ToNumber(IntegerPair n, DoublePair& x) {
  x = _mm_set_pd(static_cast<double>(n[1]), static_cast<double>(n[0]));
}
inline IntegerPair ToInteger(DoublePair x) {
  return IntegerPair{static_cast<std::int64_t>(x.First()), static_cast<std::int64_t>(x.Second())};
}
inline DoublePair FlipSign(DoublePair x, IntegerPair bits) {
  const __m128d signs = _mm_and_pd(reinterpret_cast<__m128d>(bits), _mm_set1_pd(-0.0));
  return _mm_xor_pd(x.numbers, signs);
}

#endif

}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
