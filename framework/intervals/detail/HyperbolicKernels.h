#ifndef ZULTAV_INTERVALS_DETAIL_HYPERBOLIC_KERNELS_H
#define ZULTAV_INTERVALS_DETAIL_HYPERBOLIC_KERNELS_H

#include <cmath>

#include "framework/intervals/detail/ElementaryKernels.h"

// Hyperbolic functions and their inverses in double-double arithmetic, for magnitudes: all but the
// even hyperbolic cosine are odd. Each has a proven bound on its error.
namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace elementary {

/// (e^x + sign e^-x) / 2 for 0 < x < 800, a number above 2^-6. The exponentials err by 2^-67 of
/// themselves, their sum by 2^-102 of the result.
inline ScaledApproximation HalfSumOfExponentials(double x, double sign) {
  const ScaledApproximation rising = Exp(x), falling = Exp(-x);
  const double scale = std::ldexp(sign, static_cast<int>(falling.exponent - rising.exponent));
  const DoubleDouble& small = falling.y.value;
  const DoubleDouble sum = rising.y.value + DoubleDouble{small.hi * scale, small.lo * scale};
  const double error = rising.y.error + falling.y.error * std::fabs(scale);
  return {
      {sum, MulAdd(0x1p-100, sum.hi, error)},
      rising.exponent - 1
  };
}

inline ScaledApproximation Cosh(double x) { return HalfSumOfExponentials(x, 1); }

/// x >= 2^-27. Below 2^-5 the series, where terms of x^3 and more, below 2^-12.5 x together, err by
/// 4 u of themselves, and what is left out is below 2^-75 x; from there on the exponentials differ
/// by 2^-5 or more of themselves. Relative error below 2^-62.
inline ScaledApproximation Sinh(double x) {
  if (x >= 0x1p-5) return HalfSumOfExponentials(x, -1);
  const double square = x * x;
  const double factor =
      MulAdd(square, MulAdd(square, MulAdd(square, 1.0 / 362880, 1.0 / 5040), 1.0 / 120), 1.0 / 6);
  return {
      {FastTwoSum(x, x * square * factor), 0x1p-63 * x},
      0
  };
}

/// 2^-27 <= x < 100. Relative error below 2^-61.
inline Approximation Tanh(double x) {
  const ScaledApproximation sine = Sinh(x), cosine = Cosh(x);
  const Approximation quotient = Divide(sine.y, cosine.y);
  const double scale = std::ldexp(1, static_cast<int>(sine.exponent - cosine.exponent));
  return {
      {quotient.value.hi * scale, quotient.value.lo * scale},
      quotient.error * scale
  };
}

/// log(x) for x in [2^-100, 2^1000] of relative error below 2^-97, |log(x)| >= 2^-27, to which the
/// first term of log(1 + lo / hi) and that error contribute less than 2^-69. Relative error below
/// 2^-66.
inline Approximation LogOfSum(DoubleDouble x) {
  const DoubleDouble y = LogOfNormal(x.hi).value + DoubleDouble{x.lo / x.hi, 0};
  return {y, 0x1p-66 * std::fabs(y.hi)};
}

/// log(x + sqrt(x^2 + sign)) for x >= 2^-27; where sign is -1, for x > 1. For x >= 2^100 log(2 x)
/// differs by less than 2^-200. Relative error below 2^-66.
inline Approximation LogOfSumWithRoot(double x, double sign) {
  if (x >= 0x1p100) {
    const DoubleDouble y = Log(x).value + kLogTwo;
    return {y, 0x1p-66 * y.hi};
  }
  // (x - 1) (x + 1) is exact where a difference of squares is not.
  const DoubleDouble square =
      sign < 0 ? TwoSum(x, -1.0) * TwoSum(x, 1.0) : TwoProduct(x, x) + DoubleDouble{1, 0};
  return LogOfSum(DoubleDouble{x, 0} + Sqrt(square));
}

inline Approximation Asinh(double x) { return LogOfSumWithRoot(x, 1); }
inline Approximation Acosh(double x) { return LogOfSumWithRoot(x, -1); }

/// 2^-27 <= x < 1. Relative error below 2^-66.
inline Approximation Atanh(double x) {
  const Approximation twice = LogOfSum(TwoSum(1.0, x) / TwoSum(1.0, -x));
  return {
      {twice.value.hi / 2, twice.value.lo / 2},
      twice.error / 2
  };
}

}  // namespace elementary
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
