#ifndef ZULTAV_INTERVALS_DETAIL_DOUBLE_DOUBLE_H
#define ZULTAV_INTERVALS_DETAIL_DOUBLE_DOUBLE_H

#include <cmath>
#include <concepts>
#include <cstdint>
#include <type_traits>

#include "framework/intervals/detail/DoublePair.h"
#include "framework/intervals/detail/Level.h"

namespace zultav::detail {
inline namespace ZULTAV_LEVEL {

/// A number of about 106 bits: the unevaluated sum of two doubles, the second much the smaller.
/// Or two such numbers, where Number is DoublePair; then gcc 12 copies the whole through memory,
/// and slowly, so that structures that hold one are made from hi and lo.
template <class Number>
struct DoubleDoubleOf {
  Number hi;
  Number lo;
};
using DoubleDouble = DoubleDoubleOf<double>;

/// What can be computed with exactly; integers cannot.
template <class Number>
concept Real = requires {
  typename IntegerOf<Number>;
};

template <Real Number>
ZULTAV_HOT DoubleDoubleOf<Number> operator-(DoubleDoubleOf<Number> x) {
  return {-x.hi, -x.lo};
}

/// x + y = hi + lo exactly (Dekker). Needs |x| >= |y| or x = 0.
template <Real Number>
ZULTAV_HOT DoubleDoubleOf<Number> FastTwoSum(Number x, std::type_identity_t<Number> y) {
  const Number sum = x + y;
  return {sum, y - (sum - x)};
}

/// x + y = hi + lo exactly (Knuth).
template <Real Number>
ZULTAV_HOT DoubleDoubleOf<Number> TwoSum(Number x, std::type_identity_t<Number> y) {
  const Number sum = x + y;
  const Number second = sum - x;
  return {sum, (x - (sum - second)) + (y - second)};
}

/// n = hi + lo exactly. By its halves, since a 32-bit x86 may keep the double nearest to n in a
/// register that is wider than a double.
inline DoubleDouble FromInteger(std::int64_t n) {
  return FastTwoSum(0x1p32 * static_cast<std::int32_t>(n >> 32), static_cast<std::uint32_t>(n));
}

#if defined(__FMA__) || defined(__FP_FAST_FMA)

/// x * y + z, rounded once or twice.
inline double MulAdd(double x, double y, double z) { return std::fma(x, y, z); }

/// x * y = hi + lo exactly, unless the product leaves [2^-969, 2^1023] or a factor exceeds 2^995.
template <Real Number>
ZULTAV_HOT DoubleDoubleOf<Number> TwoProduct(Number x, std::type_identity_t<Number> y) {
  const Number product = x * y;
  return {product, MulAdd(x, y, -product)};
}

#else

inline DoubleDouble TwoProduct(double x, double y) {  // Veltkamp's splitting, Dekker's product
  const double xBig = x * 0x1.0000002p27;
  const double xHigh = xBig - (xBig - x);
  const double xLow = x - xHigh;
  const double yBig = y * 0x1.0000002p27;
  const double yHigh = yBig - (yBig - y);
  const double yLow = y - yHigh;
  const double product = x * y;
  return {product, xLow * yLow - (((product - xHigh * yHigh) - xLow * yHigh) - xHigh * yLow)};
}

inline double MulAdd(double x, double y, double z) { return x * y + z; }

#endif

/// Relative error below 2^-102.
template <Real Number>
ZULTAV_HOT DoubleDoubleOf<Number> operator+(DoubleDoubleOf<Number> x, DoubleDoubleOf<Number> y) {
  const DoubleDoubleOf<Number> high = TwoSum(x.hi, y.hi);
  const DoubleDoubleOf<Number> low = TwoSum(x.lo, y.lo);
  const DoubleDoubleOf<Number> sum = FastTwoSum(high.hi, high.lo + low.hi);
  return FastTwoSum(sum.hi, sum.lo + low.lo);
}

/// Relative error below 2^-102.
template <Real Number>
ZULTAV_HOT DoubleDoubleOf<Number> operator*(DoubleDoubleOf<Number> x, DoubleDoubleOf<Number> y) {
  const DoubleDoubleOf<Number> product = TwoProduct(x.hi, y.hi);
  return FastTwoSum(product.hi, product.lo + (x.hi * y.lo + x.lo * y.hi));
}

/// Relative error below 2^-100.
template <Real Number>
ZULTAV_HOT DoubleDoubleOf<Number> operator/(DoubleDoubleOf<Number> x, DoubleDoubleOf<Number> y) {
  const Number inverse = 1 / y.hi;
  const Number quotient = x.hi * inverse;
  const DoubleDoubleOf<Number> product = TwoProduct(quotient, y.hi);
  const Number rest = ((x.hi - product.hi) - product.lo) + (x.lo - quotient * y.lo);
  return FastTwoSum(quotient, rest * inverse);
}

/// The root of x >= 0. Relative error below 2^-100.
inline DoubleDouble Sqrt(DoubleDouble x) {
  if (x.hi == 0) return {0, 0};
  const double root = std::sqrt(x.hi);
  const DoubleDouble square = TwoProduct(root, root);
  return FastTwoSum(root, ((x.hi - square.hi) - square.lo + x.lo) / (2 * root));
}

inline DoubleDouble FlipSign(DoubleDouble x, std::int64_t bits) {
  return {FlipSign(x.hi, bits), FlipSign(x.lo, bits)};
}
inline DoubleDouble Lookup(const DoubleDouble* table, std::int64_t place) { return table[place]; }

#ifdef __FMA__

inline DoubleDoubleOf<DoublePair> FlipSign(DoubleDoubleOf<DoublePair> x, IntegerPair bits) {
  return {FlipSign(x.hi, bits), FlipSign(x.lo, bits)};
}
inline DoubleDoubleOf<DoublePair> Lookup(const DoubleDouble* table, IntegerPair place) {
  const __m128d first = _mm_loadu_pd(&table[place[0]].hi);
  const __m128d second = _mm_loadu_pd(&table[place[1]].hi);
  return {_mm_unpacklo_pd(first, second), _mm_unpackhi_pd(first, second)};
}

#endif

}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
