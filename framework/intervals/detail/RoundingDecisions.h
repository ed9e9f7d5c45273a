#ifndef ZULTAV_INTERVALS_DETAIL_ROUNDING_DECISIONS_H
#define ZULTAV_INTERVALS_DETAIL_ROUNDING_DECISIONS_H

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/ElementaryKernels.h"
#include "framework/intervals/detail/Level.h"
#include "framework/intervals/detail/Rounding.h"

namespace zultav::detail {
inline namespace ZULTAV_LEVEL {

/// Signs of differences in fixed-point arithmetic of 256 fractional bits. They settle the rounding
/// of a function value that an approximation leaves on either side of a double d. The answer is
/// kUnknown or its negation where the precision of about 2^-180 does not suffice.
namespace decide {

constexpr int kUnknown = 2;

/// exp(x) - d for d > 0.
int Exp(double x, double d);
/// log(x) - d for x > 0.
int Log(double x, double d);
/// Sine and tangent of x plus `quarters` quarter turns, minus d. 2^-30 < |x| <= kMaxAngle.
int Sin(double x, std::int64_t quarters, double d);
int Tan(double x, double d);
/// atan(x) - d for |x| < 2^60 and |d| < pi/2.
int Atan(double x, double d);
/// Hyperbolic functions of x minus d. 2^-30 < x < 800, d > 0.
int Sinh(double x, double d);
int Cosh(double x, double d);
int Tanh(double x, double d);
/// The angle of (x, y) minus d: y > 0, y / |x| in [2^-60, 2^60] and both below 2, 0 < d <= pi.
int Atan2(double y, double x, double d);
/// The root of x^2 + y^2 minus d: all in [2^-60, 4). Known for certain.
int Hypot(double x, double y, double d);
/// x^y - d for x, d > 0, x not 1, and 2^-60 < |y log(x)|; 0 exactly for an exact power.
int Power(double x, double y, double d);

}  // namespace decide

namespace elementary {

/// The same as below where the approximation leaves the side of d open.
template <class Sign>
[[gnu::noinline, gnu::cold]] RealRange RoundUndecided(double d, double step, Sign sign) {
  const int side = sign(d);
  const bool unknown = std::abs(side) == decide::kUnknown;
  return {side < 0 || unknown ? d - step : d, side > 0 || unknown ? d + step : d};
}

/// The tightest enclosure of the number that y approximates, which is no subnormal, with an error
/// below 2^-55 of it; `sign(d)` decides the sign of the number minus d. Where it is unknown, the
/// enclosure holds both neighbours of d.
template <class Sign>
ZULTAV_HOT RealRange RoundOutward(const Approximation& y, Sign sign) {
  const double d = y.value.hi;
  const double step = std::fabs(d) * 0x1.0000000000001p-53;  // d ± step rounds to the neighbour
  if (std::fabs(y.value.lo) <= y.error) [[unlikely]]
    return RoundUndecided(d, step, sign);
  const double outward = std::copysign(step, y.value.lo);  // no branch: it would be a guess
  return {d + std::min(outward, 0.0), d + std::max(outward, 0.0)};
}

/// The same for y * 2^exponent where that may overflow or be subnormal.
template <class Sign>
[[gnu::noinline]] RealRange RoundExtremeOutward(const ScaledApproximation& scaled, Sign sign) {
  const Approximation& y = scaled.y;
  if (scaled.exponent > 1100) return {DBL_MAX, HUGE_VAL};
  const int exponent = static_cast<int>(std::max<std::int64_t>(scaled.exponent, -1100));
  if (exponent > 0) {
    const RealRange bounds =
        RoundOutward(y, [&](double d) { return sign(std::ldexp(d, exponent)); });
    return {std::min(std::ldexp(bounds.lower, exponent), DBL_MAX),
            std::ldexp(bounds.upper, exponent)};
  }
  // In units of 2^-1074; `side` is rounded once, by less than 2^-53.
  const double value = std::ldexp(y.value.hi, exponent + 1074);
  const double whole = std::nearbyint(value);
  double side = (value - whole) + std::ldexp(y.value.lo, exponent + 1074);
  if (std::fabs(side) <= std::ldexp(y.error, exponent + 1074) + 0x1p-52) {
    side = whole > 0 ? sign(whole * 0x1p-1074) : 1;
    if (std::fabs(side) == decide::kUnknown)
      return {(whole - 1) * 0x1p-1074, (whole + 1) * 0x1p-1074};
  }
  return {(side < 0 ? whole - 1 : whole) * 0x1p-1074, (side > 0 ? whole + 1 : whole) * 0x1p-1074};
}

/// The same for y * 2^exponent.
template <class Sign>
ZULTAV_HOT RealRange RoundOutward(const ScaledApproximation& scaled, Sign sign) {
  if (scaled.exponent < -1021 || scaled.exponent >= 1022) [[unlikely]]
    return RoundExtremeOutward(scaled, sign);
  const double scale = std::bit_cast<double>((scaled.exponent + 1023) << 52);
  const RealRange bounds = RoundOutward(scaled.y, [=](double d) { return sign(d * scale); });
  return {bounds.lower * scale, bounds.upper * scale};
}

}  // namespace elementary

}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
