#include "framework/intervals/RealFunctions.h"

#include <algorithm>
#include <cmath>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealRange.h"
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
using zultav::RealRange;

namespace {

/// An increasing function that At encloses at points, and AtBoth mostly at both bounds.
template <bool AtBoth(const RealRange&, AtBounds&), RealRange At(double), class Set>
Set Increasing(const Set& x) {
  if (x.IsEmpty()) return Empty<Set>();
  const RealRange part = Extended(x);
  AtBounds values;
  if (AtBoth(part, values)) [[likely]]
    return Saturated<Set>(values.first.lower, values.last.upper);
  return Saturated<Set>(At(part.lower).lower, At(part.upper).upper);
}

/// For what of x is positive, which is something.
template <class Set>
Set Logarithm(const Set& x) {
  return Increasing<LogAtBounds, LogAt>(Set(std::max(x.lower, 0.0), x.upper));
}

/// Sine of x moved on by `quarters` quarter turns. Its maxima are where quadrants 1, 5, ... begin,
/// its minima where 3, 7, ... do.
template <class Set>
Set Wave(const Set& x, std::int64_t quarters) {
  constexpr double kMoreThanTurn = 6.2831853071795866;
  if (x.IsEmpty()) return Empty<Set>();
  const RealRange part = Extended(x);
  if (!(part.lower >= -kMaxAngle && part.upper <= kMaxAngle) ||
      part.upper - part.lower > kMoreThanTurn)
    return Set(-1, 1);
  AtBounds ends;
  if (!SinAtBounds(part, quarters, ends)) {
    const Angle first = Reduce(part.lower), last = Reduce(part.upper);
    ends = {SinAt(part.lower, first, quarters), SinAt(part.upper, last, quarters), first.quadrant,
            last.quadrant};
  }
  return Set(ends.EnterQuadrant(3 - quarters, 2) ? -1 : std::min(ends.first.lower, ends.last.lower),
             ends.EnterQuadrant(1 - quarters, 2) ? 1 : std::max(ends.first.upper, ends.last.upper));
}

template <class Set>
Set Tangent(const Set& x) {
  constexpr double kLimit = 1e14;
  if (x.IsEmpty()) return Empty<Set>();
  if (!(x.lower >= -kLimit && x.upper <= kLimit)) return Whole<Set>();
  const RealRange part(x.lower, x.upper);
  AtBounds ends;
  if (!TanAtBounds(part, ends)) {
    const Angle first = Reduce(part.lower), last = Reduce(part.upper);
    ends = {TanAt(part.lower, first), TanAt(part.upper, last), first.quadrant, last.quadrant};
  }
  if (ends.EnterQuadrant(1, 1)) return Whole<Set>();
  return Saturated<Set>(ends.first.lower, ends.last.upper);
}

}  // namespace

SubdefReal exp(const SubdefReal& x) { return Increasing<ExpAtBounds, ExpAt>(x); }
SubdefReal sin(const SubdefReal& x) { return Wave<RealInterval>(x, 0); }
SubdefReal cos(const SubdefReal& x) { return Wave<RealInterval>(x, 1); }
SubdefReal tan(const SubdefReal& x) { return Tangent(x); }
SubdefReal atan(const SubdefReal& x) { return Increasing<AtanAtBounds, AtanAt>(x); }

SubdefReal log(const SubdefReal& x) {
  if (x.IsEmpty() || x.upper <= 0) {
    SDRaiseError();
    return Empty<SubdefReal>();
  }
  return Logarithm(x);
}

RealRange zultav::Exp(const RealRange& x) { return Increasing<ExpAtBounds, ExpAt>(x); }
RealRange zultav::Sin(const RealRange& x) { return Wave(x, 0); }
RealRange zultav::Cos(const RealRange& x) { return Wave(x, 1); }
RealRange zultav::Tan(const RealRange& x) { return Tangent(x); }
RealRange zultav::Atan(const RealRange& x) { return Increasing<AtanAtBounds, AtanAt>(x); }

RealRange zultav::Log(const RealRange& x) {
  return x.IsEmpty() || x.upper <= 0 ? RealRange::Empty() : Logarithm(x);
}
