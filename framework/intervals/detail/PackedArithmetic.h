#ifndef ZULTAV_INTERVALS_DETAIL_PACKED_ARITHMETIC_H
#define ZULTAV_INTERVALS_DETAIL_PACKED_ARITHMETIC_H

#if defined(__FMA__) && defined(__AVX2__)
#include <immintrin.h>
#endif

#include <cfloat>
#include <type_traits>

#include "framework/intervals/detail/Level.h"

// Arithmetic on ordinary intervals with both bounds in one register, for code that is built for
// processors with fused multiply-add. A Set is RealInterval or RealRange. Ordinary: operands and
// result are not empty, all their bounds lie between the limits ±Set::sMaxValue of the line, and no
// rounding error is so small that it underflows. Each function answers false where that is not so,
// and the general arithmetic has to do it.
//
// A register holds (-lower, upper), so that outward is upward for both bounds. The roundings are
// those of Rounding.h, without a branch.
namespace zultav {
class RealRange;
}

namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace packed {

#if defined(__FMA__) && defined(__AVX2__)

using Pair = __m128d;
using Pairs = __m256d;

/// (lower, upper).
template <class Set>
inline Pair Load(const Set& x) {
  return _mm_loadu_pd(&x.lower);
}
/// From (lower, upper) to (-lower, upper), or back.
inline Pair Turned(Pair x) { return _mm_xor_pd(x, _mm_set_pd(0.0, -0.0)); }
inline Pair Swapped(Pair x) { return _mm_permute_pd(x, 1); }

/// Whether lower <= upper in both.
inline bool AreOrdered(Pair x, Pair y) {
  return _mm_movemask_pd(_mm_cmple_pd(_mm_unpacklo_pd(x, y), _mm_unpackhi_pd(x, y))) == 3;
}

/// Turns a result back, and -0 into 0: (0 - first, 0 + second).
template <class Set>
inline void Put(Pair result, Set& z) {
  _mm_storeu_pd(&z.lower, _mm_addsub_pd(_mm_setzero_pd(), result));
}

/// Puts the result, a turned one, into z, if it and the operands are ordinary.
template <class Set>
inline bool Store(Pair x, Pair y, Pair result, Set& z) {
  const Pair lower = _mm_unpacklo_pd(x, y), upper = _mm_unpackhi_pd(x, y);
  const Pair greatest = _mm_max_pd(_mm_max_pd(Turned(x), Turned(y)), result);
  const Pair limit = _mm_set1_pd(Set::sMaxValue);
#ifdef __AVX512VL__
  if (_mm_cmp_pd_mask(lower, upper, _CMP_NLE_UQ) | _mm_cmp_pd_mask(greatest, limit, _CMP_NLT_UQ))
    return false;
#else
  const Pair ordinary = _mm_and_pd(_mm_cmple_pd(lower, upper), _mm_cmplt_pd(greatest, limit));
  if (_mm_movemask_pd(ordinary) != 3) return false;
#endif
  Put(result, z);
  return true;
}

/// The neighbour above where the error is positive, else the number itself.
inline Pair StepUp(Pair nearest, Pair error) {
  const __m128i bits = _mm_castpd_si128(nearest);
  const __m128i negative = _mm_cmpgt_epi64(_mm_setzero_si128(), bits);
  const __m128i step = _mm_or_si128(negative, _mm_set1_epi64x(1));
  const __m128i moves = _mm_castpd_si128(_mm_cmpgt_pd(error, _mm_setzero_pd()));
  return _mm_castsi128_pd(_mm_add_epi64(bits, _mm_and_si128(step, moves)));
}

/// Whether products and quotients of these numbers have errors that do not underflow.
inline bool AreExact(Pair numbers) {
  const Pair magnitudes = _mm_andnot_pd(_mm_set1_pd(-0.0), numbers);
  const Pair normal = _mm_and_pd(_mm_cmpge_pd(magnitudes, _mm_set1_pd(0x1p-480)),
                                 _mm_cmple_pd(magnitudes, _mm_set1_pd(0x1p480)));
  const Pair zero = _mm_cmpeq_pd(numbers, _mm_setzero_pd());
  return _mm_movemask_pd(_mm_or_pd(normal, zero)) == 3;
}

#ifdef __AVX512F__

constexpr bool kRoundsUpward = true;

// A rounding mode in an instruction goes with registers of eight numbers only. (The plain forms of
// these intrinsics and casts mean the same, but gcc 12 warns of what they leave undefined.)
constexpr int kUpward = _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC;
constexpr __mmask8 kAll = 0xff;
inline __m512d Widened(Pair x) { return _mm512_castpd128_pd512(x); }
inline __m512d Widened(Pairs x) { return _mm512_castpd256_pd512(x); }
inline Pair FirstPair(__m512d x) { return __builtin_shufflevector(x, x, 0, 1); }
inline Pairs FirstPairs(__m512d x) { return __builtin_shufflevector(x, x, 0, 1, 2, 3); }

inline Pair AddUp(Pair x, Pair y) {
  return FirstPair(_mm512_maskz_add_round_pd(kAll, Widened(x), Widened(y), kUpward));
}
inline Pairs MultiplyUp(Pairs x, Pairs y) {
  return FirstPairs(_mm512_maskz_mul_round_pd(kAll, Widened(x), Widened(y), kUpward));
}
inline Pair DivideUp(Pair x, Pair y) {
  return FirstPair(_mm512_maskz_div_round_pd(kAll, Widened(x), Widened(y), kUpward));
}

#else

constexpr bool kRoundsUpward = false;

inline Pair AddUp(Pair x, Pair y) {
  const Pair sum = _mm_add_pd(x, y);
  const Pair second = _mm_sub_pd(sum, x);
  const Pair error = _mm_add_pd(_mm_sub_pd(x, _mm_sub_pd(sum, second)), _mm_sub_pd(y, second));
  return StepUp(sum, error);
}
inline Pairs MultiplyUp(Pairs x, Pairs y) {
  const Pairs product = _mm256_mul_pd(x, y);
  const Pairs error = _mm256_fmsub_pd(x, y, product);
  const __m256i bits = _mm256_castpd_si256(product);
  const __m256i negative = _mm256_cmpgt_epi64(_mm256_setzero_si256(), bits);
  const __m256i step = _mm256_or_si256(negative, _mm256_set1_epi64x(1));
  const Pairs moves = _mm256_cmp_pd(error, _mm256_setzero_pd(), _CMP_GT_OQ);
  return _mm256_castsi256_pd(
      _mm256_add_epi64(bits, _mm256_and_si256(step, _mm256_castpd_si256(moves))));
}
/// y > 0.
inline Pair DivideUp(Pair x, Pair y) {
  const Pair quotient = _mm_div_pd(x, y);
  return StepUp(quotient, _mm_fnmadd_pd(quotient, y, x));
}

#endif

template <class Set>
inline bool AddPair(const Set& x, Pair y, Set& z) {
  const Pair sum = AddUp(Turned(Load(x)), Turned(y));
  if constexpr (!std::is_same_v<Set, RealRange>) return Store(Load(x), y, sum, z);
  // Infinite sides of ranges stay infinite by themselves; only what overflows inward does not.
  if (!AreOrdered(Load(x), y)) return false;
  Put(_mm_max_pd(sum, _mm_set1_pd(-DBL_MAX)), z);
  return true;
}
template <class Set>
inline bool Add(const Set& x, const Set& y, Set& z) {
  return AddPair(x, Load(y), z);
}
template <class Set>
inline bool Subtract(const Set& x, const Set& y, Set& z) {
  return AddPair(x, _mm_xor_pd(Swapped(Load(y)), _mm_set1_pd(-0.0)), z);
}
template <class Set>
inline bool Add(const Set& x, double y, Set& z) {
  return AddPair(x, _mm_set1_pd(y), z);
}

/// The greatest of all four products of bounds, negated and as they are.
template <class Set>
inline bool Multiply(const Set& x, const Set& y, Set& z) {
  const Pair a = Load(x), b = Load(y);
  if (!kRoundsUpward && !(AreExact(a) && AreExact(b))) return false;
  const Pairs doubled = _mm256_permute_pd(_mm256_set_m128d(a, a), 0xc);
  const Pairs turned = _mm256_xor_pd(doubled, _mm256_set_pd(0.0, -0.0, 0.0, -0.0));
  const Pairs products = _mm256_max_pd(MultiplyUp(turned, _mm256_set1_pd(y.lower)),
                                       MultiplyUp(turned, _mm256_set1_pd(y.upper)));
  const Pair greatest =
      _mm_max_pd(_mm256_castpd256_pd128(products), _mm256_extractf128_pd(products, 1));
  return Store(a, b, greatest, z);
}

/// For divisors of one sign.
template <class Set>
inline bool Divide(const Set& x, const Set& y, Set& z) {
  Pair dividend = Turned(Load(x)), divisor = Load(y);
  if (y.upper < 0) {
    dividend = Swapped(dividend);
    divisor = Swapped(_mm_sub_pd(_mm_setzero_pd(), divisor));
  } else if (!(y.lower > 0)) {
    return false;
  }
  if (!kRoundsUpward && !(AreExact(dividend) && AreExact(divisor))) return false;
  // A positive quotient is greatest with the least divisor, a negative one with the greatest.
  const Pair chosen =
      _mm_blendv_pd(_mm_unpacklo_pd(divisor, divisor), _mm_unpackhi_pd(divisor, divisor), dividend);
  return Store(Load(x), Load(y), DivideUp(dividend, chosen), z);
}

template <class Set>
inline bool Square(const Set& x, Set& z) {
  const Pair turned = Turned(Load(x));
  const Pair greatest = _mm_max_pd(turned, Swapped(turned));
  const Pair least = _mm_sub_pd(_mm_setzero_pd(), _mm_min_pd(turned, Swapped(turned)));
  const Pair magnitudes = _mm_move_sd(greatest, _mm_max_pd(least, _mm_setzero_pd()));
  if (!kRoundsUpward && !AreExact(magnitudes)) return false;
  const Pairs product =
      MultiplyUp(_mm256_castpd128_pd256(Turned(magnitudes)), _mm256_castpd128_pd256(magnitudes));
  return Store(Load(x), Load(x), _mm256_castpd256_pd128(product), z);
}

/// For x >= 0.
template <class Set>
inline bool Sqrt(const Set& x, Set& z) {
  const Pair square = Load(x);
  if (!(x.lower >= 0) || !AreExact(square)) return false;
  const Pair root = _mm_sqrt_pd(square);
  const Pair error = _mm_fnmadd_pd(root, root, square);
  return Store(square, square, StepUp(Turned(root), Turned(error)), z);
}

#else

template <class Set>
inline bool Add(const Set&, const Set&, Set&) {
  return false;
}
template <class Set>
inline bool Add(const Set&, double, Set&) {
  return false;
}
template <class Set>
inline bool Subtract(const Set&, const Set&, Set&) {
  return false;
}
template <class Set>
inline bool Multiply(const Set&, const Set&, Set&) {
  return false;
}
template <class Set>
inline bool Divide(const Set&, const Set&, Set&) {
  return false;
}
template <class Set>
inline bool Square(const Set&, Set&) {
  return false;
}
template <class Set>
inline bool Sqrt(const Set&, Set&) {
  return false;
}

#endif

}  // namespace packed
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
