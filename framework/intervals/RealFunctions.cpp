#include "framework/intervals/RealFunctions.h"

#include <algorithm>
#include <cmath>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/detail/BothBounds.h"
#include "framework/intervals/detail/PointFunctions.h"
#include "framework/intervals/detail/RealLine.h"
#include "framework/intervals/detail/Rounding.h"

using namespace zultav::detail;

using elementary::Angle;
using elementary::AtanAt;
using elementary::AtanAtBounds;
using elementary::AtBounds;
using elementary::ExpAt;
using elementary::ExpAtBounds;
using elementary::kMaxAngle;
using elementary::LogAt;
using elementary::LogAtBounds;
using elementary::Reduce;
using elementary::SinAt;
using elementary::SinAtBounds;
using elementary::TanAt;
using elementary::TanAtBounds;
using real_line::Empty;
using real_line::Extended;
using real_line::Saturated;
using real_line::Whole;

namespace {

/// An increasing function that At encloses at points, and AtBoth mostly at both bounds.
template <bool AtBoth(const RealInterval&, AtBounds&), RealInterval At(double)>
SubdefReal Increasing(const RealInterval& x) {
  if (x.IsEmpty()) return Empty();
  const RealInterval part = Extended(x);
  AtBounds values;
  if (AtBoth(part, values)) [[likely]]
    return Saturated(values.first.lower, values.last.upper);
  return Saturated(At(part.lower).lower, At(part.upper).upper);
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
  AtBounds ends;
  if (!SinAtBounds(part, quarters, ends)) {
    const Angle first = Reduce(part.lower), last = Reduce(part.upper);
    ends = {SinAt(part.lower, first, quarters), SinAt(part.upper, last, quarters), first.quadrant,
            last.quadrant};
  }
  return SubdefReal(
      ends.EnterQuadrant(3 - quarters, 2) ? -1 : std::min(ends.first.lower, ends.last.lower),
      ends.EnterQuadrant(1 - quarters, 2) ? 1 : std::max(ends.first.upper, ends.last.upper));
}

}  // namespace

SubdefReal exp(const SubdefReal& x) { return Increasing<ExpAtBounds, ExpAt>(x); }

SubdefReal log(const SubdefReal& x) {
  if (x.IsEmpty() || x.upper <= 0) {
    SDRaiseError();
    return Empty();
  }
  return Increasing<LogAtBounds, LogAt>({std::max(x.lower, 0.0), x.upper});
}

SubdefReal sin(const SubdefReal& x) { return Wave(x, 0); }

SubdefReal cos(const SubdefReal& x) { return Wave(x, 1); }

SubdefReal tan(const SubdefReal& x) {
  constexpr double kLimit = 1e14;
  if (x.IsEmpty()) return Empty();
  if (!(x.lower >= -kLimit && x.upper <= kLimit)) return Whole();
  AtBounds ends;
  if (!TanAtBounds(x, ends)) {
    const Angle first = Reduce(x.lower), last = Reduce(x.upper);
    ends = {TanAt(x.lower, first), TanAt(x.upper, last), first.quadrant, last.quadrant};
  }
  if (ends.EnterQuadrant(1, 1)) return Whole();
  return Saturated(ends.first.lower, ends.last.upper);
}

SubdefReal atan(const SubdefReal& x) { return Increasing<AtanAtBounds, AtanAt>(x); }
