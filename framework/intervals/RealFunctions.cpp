#include "framework/intervals/RealFunctions.h"

#include <algorithm>
#include <cmath>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/PointFunctions.h"
#include "framework/intervals/RealLine.h"
#include "framework/intervals/Rounding.h"

using elementary::Angle;
using elementary::AtanAt;
using elementary::ExpAt;
using elementary::kMaxAngle;
using elementary::LogAt;
using elementary::Reduce;
using elementary::SinAt;
using elementary::TanAt;
using real_line::Empty;
using real_line::Extended;
using real_line::Saturated;
using real_line::Whole;

namespace {

/// An increasing function that At encloses at points.
template <RealInterval At(double)>
SubdefReal Increasing(const RealInterval& x) {
  if (x.IsEmpty()) return Empty();
  const RealInterval part = Extended(x);
  return Saturated(At(part.lower).lower, At(part.upper).upper);
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

SubdefReal exp(const SubdefReal& x) { return Increasing<ExpAt>(x); }

SubdefReal log(const SubdefReal& x) {
  if (x.IsEmpty() || x.upper <= 0) {
    SDRaiseError();
    return Empty();
  }
  return Increasing<LogAt>({std::max(x.lower, 0.0), x.upper});
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

SubdefReal atan(const SubdefReal& x) { return Increasing<AtanAt>(x); }
