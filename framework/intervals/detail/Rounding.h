#ifndef ZULTAV_INTERVALS_DETAIL_ROUNDING_H
#define ZULTAV_INTERVALS_DETAIL_ROUNDING_H

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>

#include "framework/intervals/detail/DoubleDouble.h"
#include "framework/intervals/detail/Level.h"

#ifdef __AVX512F__
#include <immintrin.h>
#endif

// Directed rounding of single operations. The rounding mode of the processor is never read or
// written.
//
// An error-free transformation in round-to-nearest arithmetic yields, beside the rounded result, a
// number with the sign of the rounding error; the result moves to its neighbour exactly when the
// error lies on the outer side. Instructions that carry a rounding mode of their own give the same
// bits, but for the sign of a zero and for finite operands that overflow inward: ±DBL_MAX instead
// of infinity. Both end when a bound is brought between the limits of the line.
//
// Infinite operands are allowed where the operation itself is defined.
namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace rounding {

static_assert(FLT_EVAL_METHOD == 0, "error-free transformations need plain double arithmetic");

/// What to add to the bits of x for its neighbour above, if `move`; else 0. There is no branch in
/// it, for a rounding error is anyone's guess.
inline std::int64_t StepUp(std::int64_t bits, bool move) {
  return -std::int64_t{move} & (1 | bits >> 63);
}

/// The neighbour of a finite x in the direction named.
inline double NextUp(double x) {
  const auto bits = std::bit_cast<std::int64_t>(x + 0.0);
  return std::bit_cast<double>(bits + StepUp(bits, true));
}
inline double NextDown(double x) { return -NextUp(-x); }

/// A result rounded to nearest and a number with the sign of (exact - nearest). A zero to which a
/// tiny number was rounded has kept its sign.
struct Rounded {
  double nearest;
  double error;

  double Up() const {
    const auto bits = std::bit_cast<std::int64_t>(nearest);
    return std::bit_cast<double>(bits + StepUp(bits, error > 0));
  }
  double Down() const {
    const auto bits = std::bit_cast<std::int64_t>(nearest);
    return std::bit_cast<double>(bits - StepUp(bits, error < 0));
  }
};

/// The double nearest to n.
inline Rounded Nearest(std::int64_t n) {
  const DoubleDouble sum = FromInteger(n);
  return {sum.hi, sum.lo};
}

/// An infinite sum has the error NaN, which rounds nowhere.
inline Rounded Sum(double x, double y) {
  const DoubleDouble sum = TwoSum(x, y);
  return {sum.hi, sum.lo};
}

/// 0 times infinity is 0, the convention of interval arithmetic.
inline Rounded Product(double x, double y) {
  const double product = x * y;
  if (std::fabs(product) >= 0x1p-969) [[likely]]
    return {product, std::fma(x, y, -product)};
  if (x == 0 || y == 0) return {0, 0};
  // The error itself may underflow. Scaled up, all terms are multiples of 2^-948.
  const bool xIsSmaller = std::fabs(x) < std::fabs(y);
  const double smaller = (xIsSmaller ? x : y) * 0x1p600;
  const double larger = xIsSmaller ? y : x;
  const double scale = std::fabs(larger) < 1 ? 0x1p600 : 1;
  return {product, std::fma(smaller, larger * scale, -(product * 0x1p600 * scale))};
}

/// y is not 0 unless x is neither, and not both are infinite.
inline Rounded Quotient(double x, double y) {
  const double quotient = x / y;
  const double scale = std::fabs(x) < 0x1p-900 ? 0x1p600 : 1;  // keeps the remainder normal
  const double remainder = std::fma(-(quotient * scale), y, x * scale);
  return {quotient, y < 0 ? -remainder : remainder};
}

/// x >= 0.
inline Rounded Root(double x) {
  const double root = std::sqrt(x);
  const double scale = x < 0x1p-900 ? 0x1p300 : 1;
  return {root, std::fma(-(root * scale), root * scale, x * scale * scale)};
}

#ifdef __AVX512F__

#define ZULTAV_DIRECTED(name, mode)                                                             \
  inline double Add##name(double x, double y) {                                                 \
    return _mm_cvtsd_f64(_mm_add_round_sd(_mm_set_sd(x), _mm_set_sd(y), mode));                 \
  }                                                                                             \
  inline double Multiply##name(double x, double y) {                                            \
    const double product = _mm_cvtsd_f64(_mm_mul_round_sd(_mm_set_sd(x), _mm_set_sd(y), mode)); \
    return product == product ? product : 0;                                                    \
  }                                                                                             \
  inline double Divide##name(double x, double y) {                                              \
    return _mm_cvtsd_f64(_mm_div_round_sd(_mm_set_sd(x), _mm_set_sd(y), mode));                 \
  }                                                                                             \
  inline double Sqrt##name(double x) {                                                          \
    return _mm_cvtsd_f64(_mm_sqrt_round_sd(_mm_set_sd(x), _mm_set_sd(x), mode));                \
  }
ZULTAV_DIRECTED(Down, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)
ZULTAV_DIRECTED(Up, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC)
#undef ZULTAV_DIRECTED

#else

inline double AddDown(double x, double y) { return Sum(x, y).Down(); }
inline double AddUp(double x, double y) { return Sum(x, y).Up(); }
inline double MultiplyDown(double x, double y) { return Product(x, y).Down(); }
inline double MultiplyUp(double x, double y) { return Product(x, y).Up(); }
inline double DivideDown(double x, double y) { return Quotient(x, y).Down(); }
inline double DivideUp(double x, double y) { return Quotient(x, y).Up(); }
inline double SqrtDown(double x) { return Root(x).Down(); }
inline double SqrtUp(double x) { return Root(x).Up(); }

#endif

}  // namespace rounding
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
