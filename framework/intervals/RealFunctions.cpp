#include "framework/intervals/RealFunctions.h"

#include <algorithm>
#include <cmath>

#include "framework/intervals/ElementaryKernels.h"
#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealLine.h"
#include "framework/intervals/Rounding.h"
#include "framework/intervals/RoundingDecisions.h"

using elementary::Angle;
using elementary::kMaxAngle;
using elementary::Reduce;
using elementary::RoundOutward;
using real_line::Empty;
using real_line::Extended;
using real_line::Saturated;
using real_line::Whole;
using rounding::NextDown;
using rounding::NextUp;

namespace {

/// Below this magnitude x - sin(x), tan(x) - x and x - atan(x) are less than the distance of x
/// from its neighbours.
constexpr double kTiny = 0x1p-27;

/// Enclosures of a function that lies between x and the neighbour of x toward zero, or away.
RealInterval BelowMagnitude(double x) {
  return x > 0 ? RealInterval(NextDown(x), x) : RealInterval(x, x < 0 ? NextUp(x) : x);
}
RealInterval AboveMagnitude(double x) {
  return x > 0 ? RealInterval(x, NextUp(x)) : RealInterval(x < 0 ? NextDown(x) : x, x);
}

// The tightest enclosures of function values at one point.

RealInterval ExpAt(double x) {
  if (std::fabs(x) < 0x1p-54) return {x < 0 ? NextDown(1) : 1, x > 0 ? NextUp(1) : 1};
  if (x > 710) return {x < HUGE_VAL ? DBL_MAX : x, HUGE_VAL};
  if (x < -746) return {0, x > -HUGE_VAL ? 0x1p-1074 : 0};
  return RoundOutward(elementary::Exp(x), [x](double d) { return decide::Exp(x, d); });
}

RealInterval LogAt(double x) {
  if (x == 1) return {0, 0};
  if (x == 0) return {-HUGE_VAL, -HUGE_VAL};
  if (x == HUGE_VAL) return {x, x};
  return RoundOutward(elementary::Log(x), [x](double d) { return decide::Log(x, d); });
}

RealInterval AtanAt(double x) {
  if (std::fabs(x) < kTiny) return BelowMagnitude(x);
  if (std::fabs(x) >= 0x1p55) {  // nearer to pi/2 than the double below it
    constexpr RealInterval kHalfPi(0x1.921fb54442d18p+0, 0x1.921fb54442d19p+0);
    return x > 0 ? kHalfPi : kHalfPi.mf_Neg();
  }
  return RoundOutward(elementary::Atan(x), [x](double d) { return decide::Atan(x, d); });
}

/// Sine of x plus `quarters` quarter turns, 0 or 1; `angle` is x reduced.
RealInterval SinAt(double x, const Angle& angle, std::int64_t quarters) {
  if (std::fabs(x) < kTiny) {
    if (quarters == 0) return BelowMagnitude(x);
    return {x == 0 ? 1 : NextDown(1), 1};
  }
  return RoundOutward(elementary::Sin(angle, quarters),
                      [=](double d) { return decide::Sin(x, quarters, d); });
}

RealInterval TanAt(double x, const Angle& angle) {
  if (std::fabs(x) < kTiny) return AboveMagnitude(x);
  return RoundOutward(elementary::Tan(angle), [x](double d) { return decide::Tan(x, d); });
}

template <class Function>
SubdefReal Increasing(const RealInterval& x, Function at) {
  const RealInterval low = at(x.lower);
  return Saturated(low.lower, x.IsScalar() ? low.upper : at(x.upper).upper);
}

/// Whether a number congruent to `residue` modulo 2^bits is in (after, to].
bool HasResidue(std::int64_t after, std::int64_t to, std::int64_t residue, int bits) {
  return (after - residue) >> bits != (to - residue) >> bits;
}

/// Sine of x moved on by `quarters` quarter turns. Its maxima are where quadrants 1, 5, ... begin,
/// its minima where 3, 7, ... do.
SubdefReal Wave(const RealInterval& x, std::int64_t quarters) {
  constexpr double kMoreThanTurn = 6.2831853071795866;
  if (x.IsEmpty()) return Empty();
  const RealInterval part = Extended(x);
  if (!(part.lower >= -kMaxAngle && part.upper <= kMaxAngle) ||
      part.upper - part.lower > kMoreThanTurn)
    return SubdefReal(-1, 1);
  const Angle first = Reduce(part.lower);
  RealInterval wave = SinAt(part.lower, first, quarters);
  if (part.IsScalar()) return wave;
  const Angle last = Reduce(part.upper);
  const RealInterval end = SinAt(part.upper, last, quarters);
  const auto turns = [&](std::int64_t residue) {
    return HasResidue(first.quadrant + quarters, last.quadrant + quarters, residue, 2);
  };
  return SubdefReal(turns(3) ? -1 : std::min(wave.lower, end.lower),
                    turns(1) ? 1 : std::max(wave.upper, end.upper));
}

}  // namespace

SubdefReal exp(const SubdefReal& x) {
  return x.IsEmpty() ? Empty() : Increasing(Extended(x), ExpAt);
}

SubdefReal log(const SubdefReal& x) {
  if (x.IsEmpty() || x.upper <= 0) {
    SDRaiseError();
    return Empty();
  }
  return Increasing(Extended({std::max(x.lower, 0.0), x.upper}), LogAt);
}

SubdefReal sqrt(const SubdefReal& x) {
  if (x.IsEmpty() || x.upper < 0) return Empty();
  const RealInterval part = Extended({std::max(x.lower, 0.0), x.upper});
  return Saturated(rounding::Root(part.lower).Down(), rounding::Root(part.upper).Up());
}

SubdefReal sqr(const SubdefReal& x) {
  if (x.IsEmpty()) return Empty();
  const RealInterval part = Extended(x.mf_Abs());
  return Saturated(rounding::Product(part.lower, part.lower).Down(),
                   rounding::Product(part.upper, part.upper).Up());
}

SubdefReal sin(const SubdefReal& x) { return Wave(x, 0); }

SubdefReal cos(const SubdefReal& x) { return Wave(x, 1); }

SubdefReal tan(const SubdefReal& x) {
  constexpr double kLimit = 1e14;
  if (x.IsEmpty()) return Empty();
  if (!(x.lower >= -kLimit && x.upper <= kLimit)) return Whole();
  const Angle first = Reduce(x.lower);
  const RealInterval low = TanAt(x.lower, first);
  if (x.IsScalar()) return Saturated(low.lower, low.upper);
  const Angle last = Reduce(x.upper);
  if (HasResidue(first.quadrant, last.quadrant, 1, 1)) return Whole();
  return Saturated(low.lower, TanAt(x.upper, last).upper);
}

SubdefReal atan(const SubdefReal& x) {
  return x.IsEmpty() ? Empty() : Increasing(Extended(x), AtanAt);
}
