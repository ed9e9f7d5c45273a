#include "framework/intervals/detail/RoundingDecisions.h"

#include <algorithm>
#include <cmath>

#include "framework/intervals/detail/ElementaryKernels.h"
#include "framework/intervals/detail/FixedPoint.h"
#include "framework/intervals/detail/Rounding.h"

namespace zultav::detail {
inline namespace ZULTAV_LEVEL {

namespace decide {
namespace {

/// Errors of the functions of FixedPoint, and of a sum of products with factors below 1, are less.
constexpr int kPrecision = -180;

/// log(x): with l = log(x) to about 66 bits and d = x exp(-l) - 1, l + log(1 + d).
FixedPoint LogOf(double x) {
  int exponent = 0;
  double mantissa = std::frexp(x, &exponent);
  if (mantissa < 0x1.6ap-1) {
    mantissa *= 2;
    --exponent;
  }
  const DoubleDouble start = elementary::Log(mantissa).value;
  const FixedPoint l = FixedPoint(start.hi) + FixedPoint(start.lo);
  const FixedPoint d = FixedPoint(mantissa) * ExpOfFraction(-l) - FixedPoint(1);
  const FixedPoint correction = d - d * d / 2 + d * d * d / 3;  // the next term is below 2^-256
  const FixedPoint whole = LogOfTwo() * static_cast<std::uint32_t>(std::abs(exponent));
  return (exponent < 0 ? -whole : whole) + l + correction;
}

/// The sign of a difference in which an error was multiplied by `factor`.
int SignOf(const FixedPoint& difference, double factor = 1) {
  const int sign = difference.Sign(kPrecision + std::max(0, std::ilogb(factor) + 1));
  return sign == 0 ? kUnknown : sign;
}

/// e^x 2^-exponent and e^-x 2^-exponent for x > 0.
struct Exponentials {
  int exponent;
  FixedPoint rising, falling;

  explicit Exponentials(double x)
      : exponent(static_cast<int>(std::lround(x / 0x1.62e42fefa39efp-1))) {
    const FixedPoint r = FixedPoint(x) - LogOfTwo() * static_cast<std::uint32_t>(exponent);
    rising = ExpOfFraction(r);
    falling = ExpOfFraction(-r) * FixedPoint(std::ldexp(1, -2 * exponent));
  }
  /// 2 d in units of 2^exponent, which are of the size of either.
  FixedPoint Twice(double d) const {
    return FixedPoint(std::min(std::ldexp(d, 1 - exponent), 0x1p60));
  }
};

/// Whether x^y is d exactly. An exact power takes square roots of x until y is whole; then only a
/// power of two can have a negative exponent, and otherwise 3^34 has too many bits already.
bool IsExactPower(double x, double y, double d) {
  for (; y != std::floor(y); y *= 2) {
    const rounding::Rounded root = rounding::Root(x);
    if (root.error != 0) return false;
    x = root.nearest;
  }
  int exponent = 0;
  int exponentOfD = 0;
  const double mantissa = 2 * std::frexp(x, &exponent);
  const double mantissaOfD = 2 * std::frexp(d, &exponentOfD);
  const double scale = y * (exponent - 1);
  if (mantissa == 1) return mantissaOfD == 1 && scale == exponentOfD - 1;
  if (y < 0 || y > 33) return false;
  double power = 1;
  for (double i = 0; i < y; ++i) {
    const rounding::Rounded product = rounding::Product(power, mantissa);
    if (product.error != 0) return false;
    power = product.nearest;
  }
  return std::ldexp(mantissaOfD, exponentOfD - 1 - static_cast<int>(scale)) == power;
}

}  // namespace

int Exp(double x, double d) {
  const double k = std::nearbyint(x / 0x1.62e42fefa39efp-1);
  const FixedPoint whole = LogOfTwo() * static_cast<std::uint32_t>(std::fabs(k));
  const FixedPoint r = k < 0 ? FixedPoint(x) + whole : FixedPoint(x) - whole;
  const double scaled = std::ldexp(d, -static_cast<int>(k));
  if (scaled > 4) return -1;  // exp(r) < 2
  return SignOf(ExpOfFraction(r) - FixedPoint(scaled));
}

int Log(double x, double d) { return -Exp(d, x); }

int Sin(double x, std::int64_t quarters, double d) {
  Quadrants angle = DivideByHalfPi(x);
  angle.quadrant += quarters;
  return SignOf(angle.Sin() - FixedPoint(d));
}

int Tan(double x, double d) {
  if (std::fabs(d) >= 0x1p63) return d > 0 ? -1 : 1;  // no double is that near to a pole
  const Quadrants angle = DivideByHalfPi(x);
  const FixedPoint cosine = angle.Cos();
  const int difference = SignOf(angle.Sin() - FixedPoint(d) * cosine, d);
  return cosine.IsNegative() ? -difference : difference;
}

int Atan(double x, double d) {
  const Quadrants angle = DivideByHalfPi(d);
  return SignOf(FixedPoint(x) * angle.Cos() - angle.Sin(), x);
}

int Sinh(double x, double d) {
  const Exponentials e(x);
  return SignOf(e.rising - e.falling - e.Twice(d));
}

int Cosh(double x, double d) {
  const Exponentials e(x);
  return SignOf(e.rising + e.falling - e.Twice(d));
}

int Tanh(double x, double d) {
  const Exponentials e(x);
  return SignOf(e.rising - e.falling - FixedPoint(d) * (e.rising + e.falling));
}

int Atan2(double y, double x, double d) {  // as the sine of the difference
  const Quadrants angle = DivideByHalfPi(d);
  return SignOf(FixedPoint(y) * angle.Cos() - FixedPoint(x) * angle.Sin());
}

int Hypot(double x, double y, double d) {  // no bit of a square is lost
  const auto square = [](double root) { return FixedPoint(root) * FixedPoint(root); };
  return (square(x) + square(y) - square(d)).Sign(-256);
}

int Power(double x, double y, double d) {
  if (d == HUGE_VAL) return -1;
  if (IsExactPower(x, y, d)) return 0;
  if (std::fabs(y) >= 0x1p63) return kUnknown;
  return SignOf(FixedPoint(y) * LogOf(x) - LogOf(d), y);
}

}  // namespace decide

elementary::Angle elementary::ReduceSlowly(double x) {
  const Quadrants angle = DivideByHalfPi(x);
  const FixedPoint place = angle.fraction * std::uint32_t{256};
  const auto index = static_cast<std::int64_t>((place + FixedPoint(0.5)).Whole());
  const FixedPoint rest = place - FixedPoint(static_cast<double>(index));
  const DoubleDouble r = (TimesHalfPi(rest) / 256).ToDoubleDouble();
  return {angle.quadrant, ((angle.quadrant & 3) << 8) + index, r, 0x1p-180, 0x1p-67};
}

}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail
