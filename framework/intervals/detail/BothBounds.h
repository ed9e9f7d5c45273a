#ifndef ZULTAV_INTERVALS_DETAIL_BOTH_BOUNDS_H
#define ZULTAV_INTERVALS_DETAIL_BOTH_BOUNDS_H

#include <cfloat>
#include <cstdint>

#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/ElementaryKernels.h"
#include "framework/intervals/detail/Level.h"
#include "framework/intervals/detail/PointFunctions.h"

// Elementary functions at both bounds of an interval at once, on processors with fused
// multiply-add. Each answers false where a bound is out of the ordinary or an approximation leaves
// a rounding open; PointFunctions.h has the ones for all cases.
namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace elementary {

/// The tightest enclosures of the values at both bounds, and the quadrants of angles.
struct AtBounds {
  RealRange first, last;
  std::int64_t firstQuadrant = 0, lastQuadrant = 0;

  /// Whether a quadrant that is congruent to `residue` modulo 2^bits begins between the bounds.
  bool EnterQuadrant(std::int64_t residue, int bits) const {
    return (firstQuadrant - residue) >> bits != (lastQuadrant - residue) >> bits;
  }
};

#ifdef __FMA__

inline DoublePair BoundsOf(const RealRange& x) { return _mm_set_pd(x.upper, x.lower); }

inline bool IsAllLess(DoublePair x, DoublePair y) {
  return _mm_movemask_pd(_mm_cmplt_pd(x.numbers, y.numbers)) == 3;
}

/// The enclosures of the numbers that y approximates, times powers of two that make them neither
/// subnormal nor infinite.
ZULTAV_HOT bool RoundOutward(const ApproximationOf<DoublePair>& y, AtBounds& values,
                             DoublePair scale = 1) {
  if (!IsAllLess(y.error, Fabs(y.value.lo))) [[unlikely]]
    return false;
  const DoublePair step = Fabs(y.value.hi) * 0x1.0000000000001p-53;
  const __m128d outward = FlipSign(step, Bits(y.value.lo)).numbers;
  const DoublePair lower = (y.value.hi + _mm_min_pd(outward, _mm_setzero_pd())) * scale;
  const DoublePair upper = (y.value.hi + _mm_max_pd(outward, _mm_setzero_pd())) * scale;
  values.first = {lower.First(), upper.First()};
  values.last = {lower.Second(), upper.Second()};
  return true;
}

ZULTAV_HOT bool ExpAtBounds(const RealRange& x, AtBounds& values) {
  const DoublePair bounds = BoundsOf(x);
  if (!IsAllLess(Fabs(bounds), 700) || IsAnyLess(Fabs(bounds), 0x1p-54)) [[unlikely]]
    return false;
  const auto exp = Exp(bounds);
  DoublePair scale;
  FromBits((exp.exponent + 1023) << 52, scale);
  return RoundOutward(exp.y, values, scale);
}

ZULTAV_HOT bool LogAtBounds(const RealRange& x, AtBounds& values) {
  if (!(x.lower >= DBL_MIN && x.upper <= DBL_MAX) || x.lower == 1 || x.upper == 1) [[unlikely]]
    return false;
  return RoundOutward(LogOfNormal(BoundsOf(x)), values);
}

/// x^y for y of relative error below 2^-99.
ZULTAV_HOT bool PowerAtBounds(const RealRange& x, DoubleDouble y, AtBounds& values) {
  if (!(x.lower >= DBL_MIN && x.upper <= DBL_MAX)) return false;
  const auto log = LogOfNormal(BoundsOf(x));
  const auto t = log.value * DoubleDoubleOf<DoublePair>{y.hi, y.lo};
  if (!IsAllLess(Fabs(t.hi), 700) || IsAnyLess(Fabs(t.hi), 0x1p-54)) return false;
  const auto power = ExpOfProduct(t);
  DoublePair scale;
  FromBits((power.exponent + 1023) << 52, scale);
  return RoundOutward(power.y, values, scale);
}

ZULTAV_HOT bool AtanAtBounds(const RealRange& x, AtBounds& values) {
  const DoublePair bounds = BoundsOf(x);
  const DoublePair magnitudes = Fabs(bounds);
  if (IsAnyLess(magnitudes, kAtanFirst) || !IsAllLess(magnitudes, kAtanLast)) return false;
  return RoundOutward(WithSignOf(bounds, AtanInCells(magnitudes)), values);
}

ZULTAV_HOT bool ReduceBounds(const RealRange& x, AngleOf<DoublePair>& angles, AtBounds& values) {
  const DoublePair bounds = BoundsOf(x);
  const DoublePair magnitudes = Fabs(bounds);
  if (IsAnyLess(magnitudes, kTiny)) return false;
  if (IsAllLess(magnitudes, kNear)) {
    if (!ReduceNear(bounds, angles)) return false;
  } else {
    if (IsAnyLess(magnitudes, kNear) || IsAnyLess(kFar, magnitudes)) return false;
    if (!ReduceFar(bounds, angles)) return false;
  }
  values.firstQuadrant = angles.quadrant[0];
  values.lastQuadrant = angles.quadrant[1];
  return true;
}

ZULTAV_HOT bool SinAtBounds(const RealRange& x, std::int64_t quarters, AtBounds& values) {
  AngleOf<DoublePair> angles;
  return ReduceBounds(x, angles, values) && RoundOutward(Sin(angles, quarters), values);
}

/// Without the values where a pole lies between the bounds.
ZULTAV_HOT bool TanAtBounds(const RealRange& x, AtBounds& values) {
  AngleOf<DoublePair> angles;
  if (!ReduceBounds(x, angles, values)) return false;
  return values.EnterQuadrant(1, 1) || RoundOutward(Tan(angles), values);
}

#else

inline bool ExpAtBounds(const RealRange&, AtBounds&) { return false; }
inline bool LogAtBounds(const RealRange&, AtBounds&) { return false; }
inline bool PowerAtBounds(const RealRange&, DoubleDouble, AtBounds&) { return false; }
inline bool AtanAtBounds(const RealRange&, AtBounds&) { return false; }
inline bool SinAtBounds(const RealRange&, std::int64_t, AtBounds&) { return false; }
inline bool TanAtBounds(const RealRange&, AtBounds&) { return false; }

#endif

}  // namespace elementary
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
