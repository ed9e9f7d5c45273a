// The inverses of the periodic functions. Sine, cosine and tangent are monotone on pieces of half a
// turn, each of which takes every value once; piece m of cosine is [(m-1) pi, m pi], piece m of the
// others [(m-1/2) pi, (m+1/2) pi]. The first solution from a point on is on the point's own piece
// or where the next piece begins to reach the given values.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealFunctions.h"
#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/PointFunctions.h"
#include "framework/intervals/detail/RealLine.h"

using namespace zultav::detail;

using elementary::AddHalfTurns;
using elementary::Angle;
using elementary::Approximation;
using elementary::AtanOfQuotient;
using elementary::kMaxAngle;
using elementary::Reduce;
using real_line::Extended;
using real_line::Saturated;
using zultav::RealRange;

namespace {

/// sqrt(1 - z^2), relative error below 2^-100.
DoubleDouble Complement(double z) { return Sqrt(TwoSum(1.0, -z) * TwoSum(1.0, z)); }

struct Sine {
  static constexpr double kLargest = 1;
  static constexpr bool kIsOdd = true;
  static bool IsIncreasing(std::int64_t piece) { return piece % 2 == 0; }
  static std::int64_t Piece(const Angle& angle) { return (angle.quadrant + 1) >> 1; }
  static RealRange At(double x, const Angle& angle) { return SinAt(x, angle, 0); }
  static int Compare(double x, double z) { return decide::Sin(x, 0, z); }
  static bool IsTiny(double z) { return std::fabs(z) < elementary::kTiny; }
  static RealRange PrincipalOfTiny(double z) { return elementary::AboveMagnitude(z); }

  static Approximation Root(double z, std::int64_t piece) {
    const Approximation arc = AtanOfQuotient({std::fabs(z), 0}, Complement(z));
    return AddHalfTurns(piece, IsIncreasing(piece) == (z >= 0) ? arc : -arc);
  }
};

/// Cosine as the sine of an angle a quarter turn ahead.
struct Cosine {
  static constexpr double kLargest = 1;
  static constexpr bool kIsOdd = false;
  static bool IsIncreasing(std::int64_t piece) { return piece % 2 == 0; }
  static std::int64_t Piece(const Angle& angle) { return (angle.quadrant + 2) >> 1; }
  static RealRange At(double x, const Angle& angle) { return SinAt(x, angle, 1); }
  static int Compare(double x, double z) { return decide::Sin(x, 1, z); }
  static bool IsTiny(double z) { return z == 1; }
  static RealRange PrincipalOfTiny(double) { return {0, 0}; }

  static Approximation Root(double z, std::int64_t piece) {
    Approximation arc = AtanOfQuotient(Complement(z), {std::fabs(z), 0});
    if (z < 0) arc = AddHalfTurns(1, -arc);
    return IsIncreasing(piece) ? AddHalfTurns(piece, -arc) : AddHalfTurns(piece - 1, arc);
  }
};

struct Tangent {
  static constexpr double kLargest = HUGE_VAL;
  static constexpr bool kIsOdd = true;
  static bool IsIncreasing(std::int64_t) { return true; }
  static std::int64_t Piece(const Angle& angle) { return (angle.quadrant + 1) >> 1; }
  static RealRange At(double x, const Angle& angle) { return TanAt(x, angle); }
  static int Compare(double x, double z) { return decide::Tan(x, z); }
  static bool IsTiny(double z) { return std::fabs(z) < elementary::kTiny; }
  static RealRange PrincipalOfTiny(double z) { return elementary::BelowMagnitude(z); }

  static Approximation Root(double z, std::int64_t piece) {
    const double magnitude = std::fabs(z);
    const Approximation arc = magnitude < 0x1p200 ? AtanOfQuotient({magnitude, 0}, {1, 0})
                                                  : Approximation{elementary::kHalfPi, 0x1p-107};
    return AddHalfTurns(piece, z >= 0 ? arc : -arc);
  }
};

/// The solution of F(x) = z on a piece.
template <class F>
RealRange RootOn(std::int64_t piece, double z) {
  const Approximation root = F::Root(z, piece);
  if (F::IsTiny(z) && std::fabs(root.value.hi) < 1) return F::PrincipalOfTiny(z);
  return RoundOutward(root, [piece, z](double x) {
    const std::int64_t other = F::Piece(Reduce(x));
    if (other != piece) return other < piece ? 1 : -1;
    const int side = F::Compare(x, z);
    return F::IsIncreasing(piece) ? -side : side;
  });
}

/// The piece of the first x >= from with F(x) in z, and a lower bound for this x. Where it is
/// `from` itself, a piece before all others: zero belongs to two pieces of cosine.
struct Solution {
  std::int64_t piece;
  double bound;
};
constexpr std::int64_t kBeforeAll = std::numeric_limits<std::int64_t>::min() / 2;

template <class F>
Solution First(const RealRange& z, double from) {
  const Angle angle = Reduce(from);
  const RealRange value = F::At(from, angle);
  std::int64_t piece = F::Piece(angle);
  // F(from) is a bound of `value` or strictly inside, and no double is, unless its rounding was
  // undecided: then it counts as a solution.
  const bool below = value.lower < z.lower;
  const bool above = value.upper > z.upper;
  if (below == above || value.upper > rounding::NextUp(value.lower)) return {kBeforeAll, from};
  if (F::IsIncreasing(piece) != below) ++piece;
  const RealRange root = RootOn<F>(piece, F::IsIncreasing(piece) ? z.lower : z.upper);
  return {piece, std::max(from, root.lower)};
}

/// The same for the last x <= to.
template <class F>
Solution Last(const RealRange& z, double to) {
  const Solution mirrored = First<F>(F::kIsOdd ? RealRange(-z.upper, -z.lower) : z, -to);
  return {F::kIsOdd ? -mirrored.piece : 1 - mirrored.piece, 0 - mirrored.bound};
}

template <class F>
RealRange Solve(const RealRange& z, const RealRange& x, const RealRange& window) {
  if (x.IsEmpty()) return RealRange::Empty();
  RealRange inside = zultav::Intersection(window, {-kMaxAngle, kMaxAngle});
  RealRange result = RealRange::Empty();
  if (x.lower < inside.lower) result = {x.lower, std::min(x.upper, inside.lower)};
  if (x.upper > inside.upper) result = Hull(result, {std::max(x.lower, inside.upper), x.upper});
  inside.Intersect(x);
  const RealRange values = Intersection(z, {-F::kLargest, F::kLargest});
  if (!inside.IsEmpty() && !values.IsEmpty()) {
    const Solution first = First<F>(values, inside.lower);
    const Solution last = Last<F>(values, inside.upper);
    if (first.piece <= last.piece) result = Hull(result, {first.bound, last.bound});
  }
  return result;
}

template <class F>
SubdefReal Solve(const SubdefReal& z, const SubdefReal& x, const SubdefReal& window) {
  const double max = SubdefReal::sMaxValue;
  const RealRange result = Solve<F>(
      Extended(z), Extended(x), zultav::Intersection({window.lower, window.upper}, {-max, max}));
  if (result.IsEmpty()) SDRaiseError();
  return Saturated(result);
}

/// The double above a quarter turn.
constexpr double kHalfPi = 0x1.921fb54442d19p+0;

SubdefReal ProcessWindow() { return {GetTrigLow(), GetTrigHigh()}; }

}  // namespace

SubdefReal asin(const SubdefReal& z, const SubdefReal& x, const SubdefReal& window) {
  return Solve<Sine>(z, x, window);
}
SubdefReal acos(const SubdefReal& z, const SubdefReal& x, const SubdefReal& window) {
  return Solve<Cosine>(z, x, window);
}
SubdefReal atan(const SubdefReal& z, const SubdefReal& x, const SubdefReal& window) {
  return Solve<Tangent>(z, x, window);
}

SubdefReal asin(const SubdefReal& z, const SubdefReal& x) { return asin(z, x, ProcessWindow()); }
SubdefReal acos(const SubdefReal& z, const SubdefReal& x) { return acos(z, x, ProcessWindow()); }
SubdefReal atan(const SubdefReal& z, const SubdefReal& x) { return atan(z, x, ProcessWindow()); }

// The principal branches: piece 0 of sine, piece 1 of cosine.

RealRange zultav::Asin(const RealRange& x) {
  const RealRange part = Intersection(x, {-1, 1});
  if (part.IsEmpty()) return RealRange::Empty();
  return Saturated<RealRange>(RootOn<Sine>(0, part.lower).lower, RootOn<Sine>(0, part.upper).upper);
}

RealRange zultav::Acos(const RealRange& x) {
  const RealRange part = Intersection(x, {-1, 1});
  if (part.IsEmpty()) return RealRange::Empty();
  return Saturated<RealRange>(RootOn<Cosine>(1, part.upper).lower,
                              RootOn<Cosine>(1, part.lower).upper);
}

RealRange zultav::InverseAsin(const RealRange& z, const RealRange& x) {
  return Intersection(Sin(Intersection(z, {-kHalfPi, kHalfPi})), x);
}

RealRange zultav::InverseAcos(const RealRange& z, const RealRange& x) {
  return Intersection(Cos(Intersection(z, {0, 2 * kHalfPi})), x);
}

RealRange zultav::InverseAtan(const RealRange& z, const RealRange& x) {
  if (z.IsEmpty() || z.lower >= kHalfPi || z.upper <= -kHalfPi) return RealRange::Empty();
  const double least = z.lower <= -kHalfPi ? -HUGE_VAL : Tan(RealRange::Point(z.lower)).lower;
  const double greatest = z.upper >= kHalfPi ? HUGE_VAL : Tan(RealRange::Point(z.upper)).upper;
  return Intersection({least, greatest}, x);
}

RealRange zultav::InverseSin(const RealRange& z, const RealRange& x, const RealRange& window) {
  return Solve<Sine>(z, x, window);
}
RealRange zultav::InverseCos(const RealRange& z, const RealRange& x, const RealRange& window) {
  return Solve<Cosine>(z, x, window);
}
RealRange zultav::InverseTan(const RealRange& z, const RealRange& x, const RealRange& window) {
  return Solve<Tangent>(z, x, window);
}
