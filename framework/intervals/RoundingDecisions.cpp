#include "framework/intervals/RoundingDecisions.h"

#include <algorithm>
#include <cmath>

#include "framework/intervals/ElementaryKernels.h"
#include "framework/intervals/FixedPoint.h"

namespace decide {
namespace {

/// Errors of the functions of FixedPoint, and of a sum of products with factors below 1, are less.
constexpr int kPrecision = -180;

/// log(x): with l = log(x) to about 66 bits and d = x exp(-l) - 1, l + log(1 + d).
FixedPoint LogOf(double x) {
  int exponent;
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

int PrecisionFor(double factor) { return kPrecision + std::max(0, std::ilogb(factor) + 1); }

}  // namespace

int Exp(double x, double d) {
  const double k = std::nearbyint(x / 0x1.62e42fefa39efp-1);
  const FixedPoint whole = LogOfTwo() * static_cast<std::uint32_t>(std::fabs(k));
  const FixedPoint r = k < 0 ? FixedPoint(x) + whole : FixedPoint(x) - whole;
  const double scaled = std::ldexp(d, -static_cast<int>(k));
  if (scaled > 4) return -1;  // exp(r) < 2
  return (ExpOfFraction(r) - FixedPoint(scaled)).Sign(kPrecision);
}

int Log(double x, double d) { return -Exp(d, x); }

int Sin(double x, std::int64_t quarters, double d) {
  Quadrants angle = DivideByHalfPi(x);
  angle.quadrant += quarters;
  return (angle.Sin() - FixedPoint(d)).Sign(kPrecision);
}

int Tan(double x, double d) {
  if (std::fabs(d) >= 0x1p63) return 0;
  const Quadrants angle = DivideByHalfPi(x);
  const FixedPoint cosine = angle.Cos();
  const int difference = (angle.Sin() - FixedPoint(d) * cosine).Sign(PrecisionFor(d));
  return cosine.IsNegative() ? -difference : difference;
}

int Atan(double x, double d) {
  const Quadrants angle = DivideByHalfPi(d);
  return (FixedPoint(x) * angle.Cos() - angle.Sin()).Sign(PrecisionFor(x));
}

int Power(double x, double y, double d) {
  return (FixedPoint(y) * LogOf(x) - LogOf(d)).Sign(PrecisionFor(y));
}

}  // namespace decide

elementary::Angle elementary::ReduceHuge(double x) {
  const Quadrants angle = DivideByHalfPi(x);
  const FixedPoint place = angle.fraction * std::uint32_t{256};
  // Below 2^-62 from the next multiple nothing is; the nearest one keeps the relative precision.
  const auto near = static_cast<std::int64_t>(place.Whole() + (place.Fraction() * 2u).Whole());
  const FixedPoint rest = place - FixedPoint(static_cast<double>(near));
  const DoubleDouble r = (TimesHalfPi(rest) / 256).ToDoubleDouble();
  return {angle.quadrant, ((angle.quadrant & 3) << 8) + near, r, 0x1p-67};
}
