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
#include "framework/intervals/detail/PointFunctions.h"
#include "framework/intervals/detail/RealLine.h"

using namespace zultav::detail;

using elementary::Angle;
using elementary::Approximation;
using elementary::AtanOfQuotient;
using elementary::kMaxAngle;
using elementary::Reduce;
using real_line::Empty;

namespace {

Approximation operator-(const Approximation& x) { return {-x.value, x.error}; }

/// sqrt(1 - z^2), relative error below 2^-100.
DoubleDouble Complement(double z) {
  const DoubleDouble below = TwoSum(1.0, -z);
  const DoubleDouble above = TwoSum(1.0, z);
  const DoubleDouble square = below * above;
  if (square.hi == 0) return {0, 0};
  const double root = std::sqrt(square.hi);
  const DoubleDouble product = TwoProduct(root, root);
  return FastTwoSum(root, ((square.hi - product.hi) - product.lo + square.lo) / (2 * root));
}

/// m pi + y.
Approximation AddHalfTurns(std::int64_t m, const Approximation& y) {
  constexpr DoubleDouble kPi{0x1.921fb54442d18p+1, 0x1.1a62633145c07p-53};
  const DoubleDouble sum = FromInteger(m) * kPi + y.value;
  return {sum, MulAdd(0x1p-98, std::fabs(sum.hi), y.error)};
}

struct Sine {
  static constexpr double kLargest = 1;
  static constexpr bool kIsOdd = true;
  static bool IsIncreasing(std::int64_t piece) { return piece % 2 == 0; }
  static std::int64_t Piece(const Angle& angle) { return (angle.quadrant + 1) >> 1; }
  static RealInterval At(double x, const Angle& angle) { return SinAt(x, angle, 0); }
  static int Compare(double x, double z) { return decide::Sin(x, 0, z); }
  static bool IsTiny(double z) { return std::fabs(z) < elementary::kTiny; }
  static RealInterval PrincipalOfTiny(double z) { return elementary::AboveMagnitude(z); }

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
  static RealInterval At(double x, const Angle& angle) { return SinAt(x, angle, 1); }
  static int Compare(double x, double z) { return decide::Sin(x, 1, z); }
  static bool IsTiny(double z) { return z == 1; }
  static RealInterval PrincipalOfTiny(double) { return {0, 0}; }

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
  static RealInterval At(double x, const Angle& angle) { return TanAt(x, angle); }
  static int Compare(double x, double z) { return decide::Tan(x, z); }
  static bool IsTiny(double z) { return std::fabs(z) < elementary::kTiny; }
  static RealInterval PrincipalOfTiny(double z) { return elementary::BelowMagnitude(z); }

  static Approximation Root(double z, std::int64_t piece) {
    const double magnitude = std::fabs(z);
    const Approximation arc = magnitude < 0x1p200 ? AtanOfQuotient({magnitude, 0}, {1, 0})
                                                  : Approximation{elementary::kHalfPi, 0x1p-107};
    return AddHalfTurns(piece, z >= 0 ? arc : -arc);
  }
};

/// The solution of F(x) = z on a piece.
template <class F>
RealInterval RootOn(std::int64_t piece, double z) {
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
Solution First(const RealInterval& z, double from) {
  const Angle angle = Reduce(from);
  const RealInterval value = F::At(from, angle);
  std::int64_t piece = F::Piece(angle);
  // F(from) is a bound of `value` or strictly inside, and no double is, unless its rounding was
  // undecided: then it counts as a solution.
  const bool below = value.lower < z.lower;
  const bool above = value.upper > z.upper;
  if (below == above || value.upper > rounding::NextUp(value.lower)) return {kBeforeAll, from};
  if (F::IsIncreasing(piece) != below) ++piece;
  const RealInterval root = RootOn<F>(piece, F::IsIncreasing(piece) ? z.lower : z.upper);
  return {piece, std::max(from, root.lower)};
}

/// The same for the last x <= to.
template <class F>
Solution Last(const RealInterval& z, double to) {
  const Solution mirrored = First<F>(F::kIsOdd ? RealInterval(-z.upper, -z.lower) : z, -to);
  return {F::kIsOdd ? -mirrored.piece : 1 - mirrored.piece, -mirrored.bound};
}

SubdefReal ProcessWindow() { return {GetTrigLow(), GetTrigHigh()}; }

template <class F>
SubdefReal Solve(RealInterval z, const SubdefReal& x, const SubdefReal& window) {
  const double max = SubdefReal::sMaxValue;
  const double low = std::max({window.lower, -kMaxAngle, -max});
  const double high = std::min({window.upper, kMaxAngle, max});
  RealInterval result = Empty();
  if (x.lower < low || x.lower <= -max) result = {x.lower, std::min(x.upper, low)};
  if (x.upper > high || x.upper >= max)
    result = result.mf_Union({std::max(x.lower, high), x.upper});
  RealInterval inside(low, high);
  inside.Intersect(x);
  z = real_line::Extended(z);
  z.Intersect({-F::kLargest, F::kLargest});
  if (!inside.IsEmpty() && !z.IsEmpty()) {
    const Solution first = First<F>(z, inside.lower);
    const Solution last = Last<F>(z, inside.upper);
    if (first.piece <= last.piece) result = result.mf_Union({first.bound, last.bound});
  }
  if (x.IsEmpty() || result.IsEmpty()) {
    SDRaiseError();
    return Empty();
  }
  return result;
}

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
