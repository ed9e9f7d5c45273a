// From Cartesian to polar coordinates and back: the distance and the angle of a point (x, y).

#include <algorithm>
#include <cmath>

#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/PointFunctions.h"
#include "framework/intervals/detail/RealLine.h"
#include "framework/intervals/detail/RoundingDecisions.h"

using namespace zultav::detail;

using elementary::RoundOutward;
using elementary::ScaledApproximation;
using zultav::RealRange;

namespace {

constexpr RealRange kZero(0, 0), kNonNegative(0, HUGE_VAL);
constexpr RealRange kHalfPi(0x1.921fb54442d18p+0, 0x1.921fb54442d19p+0);
constexpr RealRange kPi(0x1.921fb54442d18p+1, 0x1.921fb54442d19p+1);

// --- Distances -------------------------------------------------------------------------------

/// Up to this ratio to the other one, a leg counts for less than the distance of the hypotenuse
/// from its neighbours.
constexpr double kTinyLeg = 0x1p-27;

/// sqrt(square) 2^exponent, the root in [2^-27, 4), when side(d) decides about the root.
template <class Side>
RealRange RoundRoot(DoubleDouble square, int exponent, Side side) {
  const DoubleDouble root = Sqrt(square);
  const int shift = std::ilogb(root.hi);
  const DoubleDouble y{std::ldexp(root.hi, -shift), std::ldexp(root.lo, -shift)};
  return RoundOutward(
      ScaledApproximation{
          {y, 0x1p-98 * y.hi},
          exponent + shift
  },
      [=](double d) { return d == HUGE_VAL ? -1 : side(std::ldexp(d, -exponent)); });
}

/// The root of x^2 + y^2 for x, y >= 0.
RealRange HypotAt(double x, double y) {
  if (x < y) std::swap(x, y);
  if (y == 0 || x == HUGE_VAL) return {x, x};
  if (y < kTinyLeg * x) return elementary::AboveMagnitude(x);
  const int exponent = std::ilogb(x);
  x = std::ldexp(x, -exponent);
  y = std::ldexp(y, -exponent);
  return RoundRoot(TwoProduct(x, x) + TwoProduct(y, y), exponent,
                   [=](double d) { return decide::Hypot(x, y, d); });
}

/// The root of z^2 - y^2 for z >= y >= 0.
RealRange LegAt(double z, double y) {
  if (y == 0 || z == HUGE_VAL) return {z, z};
  if (y == z) return kZero;
  if (y < kTinyLeg * z) return elementary::BelowMagnitude(z);
  const int exponent = std::ilogb(z);
  z = std::ldexp(z, -exponent);
  y = std::ldexp(y, -exponent);
  return RoundRoot(TwoSum(z, -y) * TwoSum(z, y), exponent,
                   [=](double d) { return -decide::Hypot(d, y, z); });
}

// --- Angles ----------------------------------------------------------------------------------

/// From this ratio on of y to |x|, or down from its inverse, the arc tangent is nearer to the
/// quotient, or to the axis, than these are to any double.
constexpr int kSteep = 56;

/// The arc tangent of y / x > 0 that is so small.
RealRange SmallAngle(double y, double x) {
  const rounding::Rounded quotient = rounding::Quotient(y, x);
  return quotient.error > 0 ? RealRange(quotient.nearest, rounding::NextUp(quotient.nearest))
                            : RealRange(rounding::NextDown(quotient.nearest), quotient.nearest);
}

/// The angle of (x, y) for y >= 0, not both 0 and not both infinite.
RealRange AngleAt(double y, double x) {
  if (y == 0 || std::fabs(x) == HUGE_VAL) return x > 0 ? kZero : kPi;
  if (x == 0 || y == HUGE_VAL) return kHalfPi;
  const int exponent = std::ilogb(x), steepness = std::ilogb(y) - exponent;
  if (steepness > kSteep) return kHalfPi;
  if (steepness < -kSteep) return x > 0 ? SmallAngle(y, x) : kPi;
  const int scale = -std::max(exponent, exponent + steepness);
  y = std::ldexp(y, scale);
  x = std::ldexp(x, scale);
  const auto arc = elementary::AtanOfQuotient({y, 0}, {std::fabs(x), 0});
  return RoundOutward(x > 0 ? arc : elementary::AddHalfTurns(1, -arc),
                      [=](double d) { return decide::Atan2(y, x, d); });
}

/// The angles of all points with y >= 0. They grow with -x, and with y where x > 0, else with -y.
RealRange AnglesAbove(const RealRange& y, const RealRange& x) {
  if (y.IsEmpty() || x.IsEmpty() || (y.upper == 0 && x == kZero)) return RealRange::Empty();
  if (y.upper == 0) return Hull(x.upper > 0 ? kZero : kPi, x.lower < 0 ? kPi : kZero);
  return {AngleAt(x.upper > 0 ? y.lower : y.upper, x.upper).lower,
          AngleAt(x.lower < 0 ? y.lower : y.upper, x.lower).upper};
}

struct Box {
  RealRange y, x;
};
constexpr Box kNoBox = {RealRange::Empty(), RealRange::Empty()};

/// The part of a box with x, y >= 0 without the origin where y / x lies within `slopes`.
Box BetweenSlopes(const Box& box, const RealRange& slopes) {
  const RealRange y = box.x * slopes, x = box.y / slopes;
  Box part = {Intersection(box.y, {y.lower, slopes.upper == HUGE_VAL ? HUGE_VAL : y.upper}),
              slopes.upper == 0
                  ? box.x
                  : Intersection(box.x, {x.lower, slopes.lower == 0 ? HUGE_VAL : x.upper})};
  const bool isOrigin = part.x == kZero && part.y == kZero;
  return part.x.IsEmpty() || part.y.IsEmpty() || isOrigin ? kNoBox : part;
}

double SlopeDown(double angle) { return Tan(RealRange::Point(angle)).lower; }
double SlopeUp(double angle) { return Tan(RealRange::Point(angle)).upper; }

/// The part of a quadrant with angles in z. Bounds of z between the doubles around pi/2 and pi
/// stand for these. The tangent needs no reduction, by which small angles to an axis would lose
/// their precision.
Box RightOf(const RealRange& z, const Box& box) {
  if (z.IsEmpty() || z.lower > kHalfPi.lower || z.upper < 0) return kNoBox;
  return BetweenSlopes(box, {z.lower <= 0 ? 0 : SlopeDown(z.lower),
                             z.upper > kHalfPi.lower ? HUGE_VAL : SlopeUp(z.upper)});
}
Box LeftOf(const RealRange& z, const Box& box) {
  if (z.IsEmpty() || z.lower > kPi.lower || z.upper < kHalfPi.upper) return kNoBox;
  const Box part =
      BetweenSlopes({box.y, -box.x}, {z.upper > kPi.lower ? 0 : -SlopeUp(z.upper),
                                      z.lower < kHalfPi.upper ? HUGE_VAL : -SlopeDown(z.lower)});
  return {part.y, -part.x};
}

/// The hull of the part of the half plane y >= 0 with angles in z. Without the axis to the left,
/// whose angle is pi, where all angles are negative.
Box AboveWith(const RealRange& z, const RealRange& y, const RealRange& x, bool hasLeftAxis) {
  const RealRange above = Intersection(y, kNonNegative);
  const Box right = RightOf(z, {above, Intersection(x, kNonNegative)});
  const bool isLeft = hasLeftAxis || above.upper > 0;
  const Box left = isLeft ? LeftOf(z, {above, Intersection(x, {-HUGE_VAL, 0})}) : kNoBox;
  return {Hull(right.y, left.y), Hull(right.x, left.x)};
}

Box WithAngles(const RealRange& z, const RealRange& y, const RealRange& x) {
  const Box above = AboveWith(z, y, x, true), below = AboveWith(-z, -y, x, false);
  return {Hull(above.y, -below.y), Hull(above.x, below.x)};
}

}  // namespace

RealRange zultav::Hypot(const RealRange& x, const RealRange& y) {
  if (x.IsEmpty() || y.IsEmpty()) return RealRange::Empty();
  const RealRange first = Abs(x), second = Abs(y);
  return real_line::Saturated<RealRange>(HypotAt(first.lower, second.lower).lower,
                                         HypotAt(first.upper, second.upper).upper);
}

RealRange zultav::InverseHypot(const RealRange& z, const RealRange& x, const RealRange& y) {
  const RealRange whole = Intersection(z, kNonNegative), other = Abs(y);
  if (whole.IsEmpty() || other.IsEmpty() || whole.upper < other.lower) return RealRange::Empty();
  const double least = whole.lower > other.upper ? LegAt(whole.lower, other.upper).lower : 0;
  return InverseAbs({least, LegAt(whole.upper, other.lower).upper}, x);
}

RealRange zultav::Atan2(const RealRange& y, const RealRange& x) {
  const RealRange above = AnglesAbove(Intersection(y, kNonNegative), x);
  return y.lower < 0 ? Hull(above, -AnglesAbove(Intersection(-y, kNonNegative), x)) : above;
}

RealRange zultav::InverseAtan2(const RealRange& z, const RealRange& y, const RealRange& x) {
  return WithAngles(z, y, x).y;
}

RealRange zultav::InverseAtan2Abscissa(const RealRange& z, const RealRange& y, const RealRange& x) {
  return WithAngles(z, y, x).x;
}
