#ifndef ZULTAV_INTERVALS_DETAIL_REAL_LINE_H
#define ZULTAV_INTERVALS_DETAIL_REAL_LINE_H

#include <algorithm>
#include <cmath>

#include "framework/intervals/SubdefReal.h"
#include "framework/intervals/detail/Level.h"

// The real line between the limits: what an interval function does before and after its formula.
namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace real_line {

inline RealInterval Empty() { return {SubdefReal::sMaxValue, -SubdefReal::sMaxValue}; }

inline RealInterval Whole() { return {-SubdefReal::sMaxValue, SubdefReal::sMaxValue}; }

/// x with its infinite sides as IEEE infinities. A lower bound above the limit (an upper bound
/// below it) becomes the limit itself.
inline RealInterval Extended(const RealInterval& x) {
  const double max = SubdefReal::sMaxValue;
  return {x.lower <= -max ? -HUGE_VAL : std::min(x.lower, max),
          x.upper >= max ? HUGE_VAL : std::max(x.upper, -max)};
}

/// Bounds brought between the limits; also turns -0 into 0.
inline RealInterval Saturated(double low, double high) {
  const double max = SubdefReal::sMaxValue;
  const auto bring = [max](double x) { return std::min(std::max(x, -max), max) + 0.0; };
  return {bring(low), bring(high)};
}

}  // namespace real_line
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
