#ifndef ZULTAV_INTERVALS_DETAIL_POINT_FUNCTIONS_H
#define ZULTAV_INTERVALS_DETAIL_POINT_FUNCTIONS_H

#include <cfloat>
#include <cmath>
#include <cstdint>

#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/ElementaryKernels.h"
#include "framework/intervals/detail/Level.h"
#include "framework/intervals/detail/Rounding.h"
#include "framework/intervals/detail/RoundingDecisions.h"

// The tightest enclosures of function values at one point, infinities included as limits.
namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace elementary {

/// Below this magnitude x - sin(x), tan(x) - x and x - atan(x) are less than the distance of x
/// from its neighbours.
constexpr double kTiny = 0x1p-27;

/// Enclosures of a function that lies between x and the neighbour of x toward zero, or away.
inline RealRange BelowMagnitude(double x) {
  return x > 0 ? RealRange(rounding::NextDown(x), x)
               : RealRange(x, x < 0 ? rounding::NextUp(x) : x);
}
inline RealRange AboveMagnitude(double x) {
  return x > 0 ? RealRange(x, rounding::NextUp(x))
               : RealRange(x < 0 ? rounding::NextDown(x) : x, x);
}

[[gnu::noinline, gnu::cold]] inline RealRange ExtremeExp(double x) {
  if (x > 710) return {x < HUGE_VAL ? DBL_MAX : x, HUGE_VAL};
  if (x < -746) return {0, x > -HUGE_VAL ? 0x1p-1074 : 0};
  return {x < 0 ? rounding::NextDown(1) : 1, x > 0 ? rounding::NextUp(1) : 1};
}
ZULTAV_HOT RealRange ExpAt(double x) {
  if (std::fabs(x) < 0x1p-54 || x > 710 || x < -746) [[unlikely]]
    return ExtremeExp(x);
  return RoundOutward(Exp(x), [x](double d) { return decide::Exp(x, d); });
}

[[gnu::noinline, gnu::cold]] inline RealRange ExtremeLog(double x) {
  const double limit = x == 1 ? 0 : x == 0 ? -HUGE_VAL : HUGE_VAL;
  return {limit, limit};
}
ZULTAV_HOT RealRange LogAt(double x) {
  if (x == 1 || x == 0 || x == HUGE_VAL) [[unlikely]]
    return ExtremeLog(x);
  return RoundOutward(Log(x), [x](double d) { return decide::Log(x, d); });
}

ZULTAV_HOT RealRange AtanAt(double x) {
  if (std::fabs(x) < kTiny) return BelowMagnitude(x);
  if (std::fabs(x) >= 0x1p55) {  // nearer to pi/2 than the double below it
    constexpr RealRange kAroundHalfPi(0x1.921fb54442d18p+0, 0x1.921fb54442d19p+0);
    return x > 0 ? kAroundHalfPi : -kAroundHalfPi;
  }
  return RoundOutward(Atan(x), [x](double d) { return decide::Atan(x, d); });
}

/// Sine of x plus `quarters` quarter turns, 0 or 1; `angle` is x reduced.
ZULTAV_HOT RealRange SinAt(double x, const Angle& angle, std::int64_t quarters) {
  if (std::fabs(x) < kTiny) {
    if (quarters == 0) return BelowMagnitude(x);
    return {x == 0 ? 1 : rounding::NextDown(1), 1};
  }
  return RoundOutward(Sin(angle, quarters), [=](double d) { return decide::Sin(x, quarters, d); });
}

ZULTAV_HOT RealRange TanAt(double x, const Angle& angle) {
  if (std::fabs(x) < kTiny) return AboveMagnitude(x);
  return RoundOutward(Tan(angle), [x](double d) { return decide::Tan(x, d); });
}

}  // namespace elementary
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
