#ifndef ZULTAV_INTERVALS_DOUBLE_DOUBLE_H
#define ZULTAV_INTERVALS_DOUBLE_DOUBLE_H

#include <cmath>
#include <cstdint>

/// A number of about 106 bits: the unevaluated sum of two doubles, the second much the smaller.
struct DoubleDouble {
  double hi;
  double lo;
};

inline DoubleDouble operator-(DoubleDouble x) { return {-x.hi, -x.lo}; }

/// x + y = hi + lo exactly (Dekker). Needs |x| >= |y| or x = 0.
inline DoubleDouble FastTwoSum(double x, double y) {
  const double sum = x + y;
  return {sum, y - (sum - x)};
}

/// x + y = hi + lo exactly (Knuth).
inline DoubleDouble TwoSum(double x, double y) {
  const double sum = x + y;
  const double second = sum - x;
  return {sum, (x - (sum - second)) + (y - second)};
}

/// n = hi + lo exactly. By its halves, since a 32-bit x86 may keep the double nearest to n in a
/// register that is wider than a double.
inline DoubleDouble FromInteger(std::int64_t n) {
  return FastTwoSum(0x1p32 * static_cast<std::int32_t>(n >> 32), static_cast<std::uint32_t>(n));
}

#if defined(__FMA__) || defined(__FP_FAST_FMA)

/// x * y = hi + lo exactly, unless the product leaves [2^-969, 2^1023] or a factor exceeds 2^995.
inline DoubleDouble TwoProduct(double x, double y) {
  const double product = x * y;
  return {product, std::fma(x, y, -product)};
}

/// x * y + z, rounded once or twice.
inline double MulAdd(double x, double y, double z) { return std::fma(x, y, z); }

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
inline DoubleDouble operator+(DoubleDouble x, DoubleDouble y) {
  const DoubleDouble high = TwoSum(x.hi, y.hi);
  const DoubleDouble low = TwoSum(x.lo, y.lo);
  const DoubleDouble sum = FastTwoSum(high.hi, high.lo + low.hi);
  return FastTwoSum(sum.hi, sum.lo + low.lo);
}

/// Relative error below 2^-102.
inline DoubleDouble operator*(DoubleDouble x, DoubleDouble y) {
  const DoubleDouble product = TwoProduct(x.hi, y.hi);
  return FastTwoSum(product.hi, product.lo + (x.hi * y.lo + x.lo * y.hi));
}

/// Relative error below 2^-100.
inline DoubleDouble operator/(DoubleDouble x, DoubleDouble y) {
  const double inverse = 1 / y.hi;
  const double quotient = x.hi * inverse;
  const DoubleDouble product = TwoProduct(quotient, y.hi);
  const double rest = ((x.hi - product.hi) - product.lo) + (x.lo - quotient * y.lo);
  return FastTwoSum(quotient, rest * inverse);
}

#endif
