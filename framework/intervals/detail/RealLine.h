#ifndef ZULTAV_INTERVALS_DETAIL_REAL_LINE_H
#define ZULTAV_INTERVALS_DETAIL_REAL_LINE_H

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "framework/intervals/RealInterval.h"
#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/Level.h"

// What a function does before and after its formula, which computes with infinities: RealInterval
// has a line between limits, RealRange all reals. Formulas for both are templates over the Set, or
// compute with ranges altogether.
namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace real_line {

template <class Set>
ZULTAV_HOT Set Empty() {
  return {Set::sMaxValue, -Set::sMaxValue};
}

template <class Set>
ZULTAV_HOT Set Whole() {
  return {-Set::sMaxValue, Set::sMaxValue};
}

/// x with its infinite sides as IEEE infinities. A lower bound above the limit (an upper bound
/// below it) becomes the limit itself.
ZULTAV_HOT RealRange Extended(const RealInterval& x) {
  const double max = RealInterval::sMaxValue;
  return {x.lower <= -max ? -HUGE_VAL : std::min(x.lower, max),
          x.upper >= max ? HUGE_VAL : std::max(x.upper, -max)};
}
ZULTAV_HOT RealRange Extended(const RealRange& x) { return x; }

/// Bounds of true results brought between the limits; also turns -0 into 0.
template <class Set>
ZULTAV_HOT Set Saturated(double low, double high) {
  const double max = Set::sMaxValue;
  const auto bring = [max](double x) { return std::min(std::max(x, -max), max) + 0.0; };
  return {bring(low), bring(high)};
}
/// What has overflowed is beyond DBL_MAX, but no infinity.
template <>
ZULTAV_HOT RealRange Saturated<RealRange>(double low, double high) {
  return {std::min(low, DBL_MAX) + 0.0, std::max(high, -DBL_MAX) + 0.0};
}

/// A range brought between the limits of an interval.
ZULTAV_HOT RealInterval Saturated(const RealRange& x) {
  return Saturated<RealInterval>(x.lower, x.upper);
}

}  // namespace real_line
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
