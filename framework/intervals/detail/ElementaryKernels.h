#ifndef ZULTAV_INTERVALS_DETAIL_ELEMENTARY_KERNELS_H
#define ZULTAV_INTERVALS_DETAIL_ELEMENTARY_KERNELS_H

#include <bit>
#include <cmath>
#include <cstdint>

#include "framework/intervals/detail/DoubleDouble.h"
#include "framework/intervals/detail/ElementaryTables.h"
#include "framework/intervals/detail/FixedPoint.h"
#include "framework/intervals/detail/Level.h"

// Elementary functions of a double in double-double arithmetic, each with a proven bound on its
// error; or of two doubles at once, where Number is DoublePair. In the proofs u = 2^-53 bounds the
// relative error of one operation rounded to nearest. Every bound holds whether or not MulAdd is
// fused.
namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace elementary {

/// A function value lies within `error` of hi + lo. Normalised: hi is hi + lo rounded to nearest.
template <class Number>
struct ApproximationOf {
  DoubleDoubleOf<Number> value;
  Number error;
};
using Approximation = ApproximationOf<double>;

/// y * 2^exponent, y.value.hi in [0.99, 2).
template <class Number>
struct ScaledApproximationOf {
  ApproximationOf<Number> y;
  IntegerOf<Number> exponent;
};
using ScaledApproximation = ScaledApproximationOf<double>;

/// The integer nearest to x, |x| < 2^51.
template <Real Number>
Number Nearest(Number x) {
  constexpr double kShift = 0x1.8p52;
  return (x + kShift) - kShift;
}

/// exp(x + xLow) for |x| < 800, |xLow| <= u |x|. Relative error below 2^-67, what xLow leaves out
/// of the argument not counted.
///
/// exp(x) = 2^(k/128) exp(r), |r| <= log(2)/256 < 2^-8.52. The high part of log(2)/128 has 34
/// bits, so that its product with k and the difference from x are exact; r errs by less than
/// 2^-77, and where |r| is below its low part, so does their sum. Errors of exp(r) - 1 - r = s^2
/// (1/2 + s/6 + ...), s = r rounded: 5.1 u s^2/2 < 2^-68.7; of adding the low part 2^-71; of ending
/// the series 2^-72: together below 2^-68.3.
template <Real Number>
ZULTAV_HOT ScaledApproximationOf<Number> Exp(Number x, std::type_identity_t<Number> xLow = 0.0) {
  const Number k = Nearest(x * 0x1.71547652b82fep+7);
  const Number r = x - k * 0x1.62e42fefc0000p-8;
  const Number rLow = xLow - k * -0x1.c610ca86c3899p-44;
  const Number s = r + rLow;
  const Number square = s * s;
  const Number even = MulAdd(s, 1.0 / 6, 1.0 / 2);
  const Number odd = MulAdd(square, 1.0 / 720, MulAdd(s, 1.0 / 120, 1.0 / 24));
  const auto q = FastTwoSum(r, MulAdd(square, MulAdd(square, odd, even), rLow));
  const auto index = ToInteger(k);
  const auto power = Lookup(kExpTable, index & 127);
  const auto product = TwoProduct(power.hi, q.hi);
  const auto sum = FastTwoSum(power.hi, product.hi);
  const Number low =
      sum.lo + (product.lo + MulAdd(power.hi, q.lo, MulAdd(power.lo, q.hi, power.lo)));
  const auto y = FastTwoSum(sum.hi, low);
  return {
      {{y.hi, y.lo}, 0x1p-67 * y.hi},
      index >> 7
  };
}

/// exp(t) for t of relative error below 2^-66, as that of a logarithm times an exact number.
template <Real Number>
ZULTAV_HOT ScaledApproximationOf<Number> ExpOfProduct(DoubleDoubleOf<Number> t) {
  const auto exp = Exp(t.hi, t.lo);
  const Number& size = exp.y.value.hi;
  return {
      {{size, exp.y.value.lo}, MulAdd(0x1p-66 * Fabs(t.hi), size, exp.y.error)},
      exp.exponent
  };
}

/// log(x) for finite x > 0, which is no subnormal. Relative error below 1.5 * 2^-67.
///
/// log(x) = e log(2) - log(c) + log(1 + r), r = z c - 1 exact in two doubles. Next to x = 1, where
/// c = 1 and e = 0, |r| <= 2^-8, and r - r^2/2 is exact; the rest is r^3 (1/3 - r/4 + ...) with an
/// error of 5.5 u + 3 u in sums, relative to the result 8.5 u r^2/3 < 2^-67.4. Farther away the
/// result is at least 2^-9 and |r| < 2^-8.9, which leaves 2^-69. e * high part of log(2) is exact.
template <Real Number>
ZULTAV_HOT ApproximationOf<Number> LogOfNormal(Number x, double shift = 0) {
  constexpr std::int64_t kFirst = std::int64_t{0x3FE6} << 48;
  const auto place = Bits(x) - kFirst;
  const auto exponent = place >> 52;
  Number z, e;
  FromBits(Bits(x) - (exponent << 52), z);
  ToNumber(exponent, e);
  e = e - shift;
  const auto [inverse, rowLog] = Lookup(kLogTable, place >> 44 & 255);

  const auto zc = TwoProduct(z, inverse);
  const auto r = FastTwoSum(zc.hi - 1, zc.lo);
  const auto square = TwoProduct(r.hi, r.hi);
  const auto head = FastTwoSum(r.hi, -0.5 * square.hi);
  const Number s = square.hi;
  const Number low4 = MulAdd(s, MulAdd(r.hi, -1.0 / 6, 1.0 / 5), MulAdd(r.hi, -1.0 / 4, 1.0 / 3));
  const Number high3 = MulAdd(s, 1.0 / 9, MulAdd(r.hi, -1.0 / 8, 1.0 / 7));
  const Number tail = r.hi * s * MulAdd(s * s, high3, low4);

  const auto base = FastTwoSum(e * 0x1.62e42fefa3800p-1, rowLog.hi);
  const auto sum = FastTwoSum(base.hi, head.hi);
  const Number constants = base.lo + MulAdd(e, 0x1.ef35793c76730p-45, rowLog.lo);
  const Number corrections = head.lo + (r.lo - MulAdd(r.hi, r.lo, 0.5 * square.lo));
  const auto y = FastTwoSum(sum.hi, sum.lo + (constants + (corrections + tail)));
  return {y, 0x1.8p-67 * Fabs(y.hi)};
}

constexpr DoubleDouble kLogTwo{0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

/// log(x) for any finite x > 0.
ZULTAV_HOT Approximation Log(double x) {
  const bool subnormal = x < 0x1p-1022;
  return LogOfNormal(subnormal ? x * 0x1p54 : x, subnormal ? 54 : 0);
}

/// x = index pi/512 + r, up to whole turns.
template <class Number>
struct AngleOf {
  IntegerOf<Number> quadrant;  ///< floor(x / (pi/2)), turns included
  IntegerOf<Number> index;     ///< within a turn, 0 to 1024
  DoubleDoubleOf<Number> r;
  Number error;      ///< of r, below 2^-60 |r|
  double precision;  ///< relative error of the terms of a sine that is built on r
};
using Angle = AngleOf<double>;

/// The largest argument whose quadrants are counted.
constexpr double kMaxAngle = 1e19;

/// In fixed point, beyond 1e14 and for the few numbers that come very near to a multiple.
Angle ReduceSlowly(double x);

/// |x| <= kMaxAngle. As r is known to 2^-60 of itself, its sign is certain, and with it the
/// quadrant. No double but 0 is within 2^-62 of a multiple of pi/2.
///
/// Up to 2^25, x - k pi/512 with pi/512 = a + b: x - (high part of k a) is exact, what is dropped
/// or rounded is below 2^-112 k, and |r| <= pi/1024. Farther on the step is pi/256, so that k stays
/// below 2^53, in three doubles. The quotient is rounded in two steps; the products with the first
/// two and all sums but the last are exact, which leaves 2^-107.
inline constexpr double kStepsInOne = 0x1.45f306dc9c883p+7;  // 512/pi
inline constexpr DoubleDouble kStep{0x1.921fb54442d18p-8, 0x1.1a62633145c07p-62};
inline constexpr double kNear = 0x1p25, kFar = 1e14;

/// For |x| < kNear. False where r, or one of both, is too small.
template <Real Number>
ZULTAV_HOT bool ReduceNear(Number x, AngleOf<Number>& angle) {
  const Number k = Nearest(x * kStepsInOne);
  const auto first = TwoProduct(k, kStep.hi);
  const auto r = FastTwoSum(x - first.hi, -MulAdd(k, kStep.lo, first.lo));
  const Number error = 0x1p-112 * Fabs(k);
  const auto index = ToInteger(k);
  angle = {
      (index + MinusIfNegative(r.hi)) >> 8, index & 1023, {r.hi, r.lo},
              error, 0x1p-67
  };
  return !IsAnyLess(Fabs(r.hi), 0x1p60 * error);
}

/// For kNear <= |x| <= kFar. False where r, or one of both, is too small.
template <Real Number>
ZULTAV_HOT bool ReduceFar(Number x, AngleOf<Number>& angle) {
  const auto quotient = TwoProduct(x, kStepsInOne / 2);
  const Number shift = FlipSign(Number(0x1p52), Bits(x));
  const Number whole = (quotient.hi + shift) - shift;
  const Number rest = MulAdd(x, -0x1.6b01ec5417056p-48, quotient.lo);
  const Number k = whole + Nearest((quotient.hi - whole) + rest);
  const auto first = TwoProduct(k, 2 * kStep.hi);
  const auto second = TwoProduct(k, 2 * kStep.lo);
  const auto a = FastTwoSum(x - first.hi, -first.lo);
  const auto b = TwoSum(a.hi, -second.hi);
  const Number low = (a.lo + b.lo) - (second.lo + k * -0x1.f1976b7ed8fbcp-117);
  const auto r = FastTwoSum(b.hi, low);
  const auto index = ToInteger(k);
  angle = {
      (index + MinusIfNegative(r.hi)) >> 7, 2 * index & 1023, {r.hi, r.lo},
                0x1p-107, 0x1p-65
  };
  return !IsAnyLess(Fabs(r.hi), 0x1p-47);
}

ZULTAV_HOT Angle Reduce(double x) {
  Angle angle;
  const double magnitude = std::fabs(x);
  if (magnitude < kNear ? ReduceNear(x, angle) : magnitude <= kFar && ReduceFar(x, angle))
    return angle;
  return ReduceSlowly(x);
}

/// The sine of an angle moved on by `quarters` quarter turns.
///
/// sin(a + r) = sin a + cos a r + sin a (cos r - 1) + cos a (sin r - r), a from the table. The
/// errors are, relative to sin a, 7 u r^2/2, and, relative to r cos a, 8 u r^2/6: for
/// |r| <= pi/1024 below 2^-67.8 and 2^-69, for pi/512 below 2^-65.8 and 2^-67.
template <Real Number>
ZULTAV_HOT ApproximationOf<Number> Sin(const AngleOf<Number>& angle, std::int64_t quarters) {
  const auto index = angle.index + 256 * quarters;
  const auto place = index & 255;
  const auto cofunction = (index & 256) != 0;
  const auto toSign = 54;  // from the bit of half a turn
  const auto sine = FlipSign(Lookup(kSinTable, cofunction ? 256 - place : place), index << toSign);
  const auto cosine =
      FlipSign(Lookup(kSinTable, cofunction ? place : 256 - place), (index + 256) << toSign);

  const DoubleDoubleOf<Number> r = {angle.r.hi, angle.r.lo};
  const Number square = r.hi * r.hi;
  const Number sinTail =
      MulAdd(r.hi * square, MulAdd(square, MulAdd(square, -1.0 / 5040, 1.0 / 120), -1.0 / 6), r.lo);
  const Number cosTail =
      MulAdd(square, MulAdd(square, MulAdd(square, -1.0 / 720, 1.0 / 24), -0.5), -(r.hi * r.lo));
  const auto product = TwoProduct(cosine.hi, r.hi);
  const auto sum = FastTwoSum(sine.hi, product.hi);
  const Number low = MulAdd(sine.hi, cosTail, MulAdd(cosine.hi, sinTail, cosine.lo * r.hi));
  const auto y = FastTwoSum(sum.hi, sum.lo + (product.lo + (sine.lo + low)));
  const Number size = Fabs(sine.hi) + Fabs(product.hi);
  return {y, MulAdd(angle.precision, size, angle.error)};
}

/// The quotient of two approximations, the second of relative error below 2^-10.
template <Real Number>
ZULTAV_HOT ApproximationOf<Number> Divide(const ApproximationOf<Number>& x,
                                          const ApproximationOf<Number>& y) {
  const auto q = x.value / y.value;
  const Number size = Fabs(q.hi);
  const Number error = (x.error + size * y.error) * Fabs(1 / y.value.hi);
  return {q, MulAdd(0x1p-99, size, 1.01 * error)};
}

template <Real Number>
ZULTAV_HOT ApproximationOf<Number> Tan(const AngleOf<Number>& angle) {
  return Divide(Sin(angle, 0), Sin(angle, 1));
}

/// base + atan(t), |t| <= 2^-7, base = 0 (then |t| <= 2^-8) or base >= 2^6 |t|. Relative error
/// below 2^-67, that of t not counted: 5 u in t^3 (1/3 - t^2/5 + ...) and 2 u in sums of its size,
/// relative to the result below 7 u 2^-17.6 = 2^-67.8.
template <Real Number>
ZULTAV_HOT ApproximationOf<Number> AddArcTangent(DoubleDoubleOf<Number> base,
                                                 DoubleDoubleOf<Number> t) {
  const Number square = t.hi * t.hi;
  const Number tail = MulAdd(
      t.hi * square,
      MulAdd(square, MulAdd(square, MulAdd(square, 1.0 / 9, -1.0 / 7), 1.0 / 5), -1.0 / 3), t.lo);
  const auto sum = FastTwoSum(base.hi, t.hi);
  const auto y = FastTwoSum(sum.hi, sum.lo + (base.lo + tail));
  return {y, 0x1p-67 * Fabs(y.hi)};
}

constexpr DoubleDouble kHalfPi{0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};

/// The centre of the cell of kAtanTable that holds x in [2^-8, 2^8), and its arc tangent.
template <Real Number>
struct AtanCell {
  Number centre;
  DoubleDoubleOf<Number> angle;

  explicit AtanCell(Number x) {
    const auto cell = Bits(x) >> 47;
    FromBits((cell << 47) + (std::int64_t{1} << 46), centre);
    angle = Lookup(kAtanTable, cell - (std::int64_t{1015} << 5));
  }
};

inline constexpr double kAtanFirst = 0x1p-8, kAtanLast = 0x1p8;  // of the cells

/// atan(x) for x in [kAtanFirst, kAtanLast). Relative error below 2^-66.9.
/// atan(x) = atan(c) + atan((x - c) / (1 + c x)), c the centre of the cell of x.
template <Real Number>
ZULTAV_HOT ApproximationOf<Number> AtanInCells(Number x) {
  const AtanCell<Number> cell(x);
  const Number n = x - cell.centre;
  const Number inverse = 1 / MulAdd(cell.centre, x, 1);
  const Number quotient = n * inverse;
  // The quotient's rest, from the exact denominator; all but the last terms cancel.
  const auto product = TwoProduct(cell.centre, x);
  const auto d = TwoSum(Number(1), product.hi);
  const auto qd = TwoProduct(quotient, d.hi);
  const Number rest = ((n - qd.hi) - qd.lo) - quotient * (d.lo + product.lo);
  return AddArcTangent(cell.angle, {quotient, rest * inverse});
}

/// The same for a magnitude of x, with the sign of x.
template <Real Number>
ZULTAV_HOT ApproximationOf<Number> WithSignOf(Number x, const ApproximationOf<Number>& y) {
  return {FlipSign(y.value, Bits(x)), y.error};
}

/// atan(x) for 2^-300 < |x| < 2^300. Relative error below 2^-66.9.
ZULTAV_HOT Approximation Atan(double x) {
  const double magnitude = std::fabs(x);
  if (magnitude < kAtanFirst)
    return WithSignOf(x, AddArcTangent(DoubleDouble{0, 0}, {magnitude, 0}));
  if (magnitude < kAtanLast) return WithSignOf(x, AtanInCells(magnitude));
  return WithSignOf(x, AddArcTangent(kHalfPi, DoubleDouble{-1, 0} / DoubleDouble{magnitude, 0}));
}

/// atan(n / d) in [0, pi/2] for n, d >= 0, not both 0, of relative error below 2^-90.
inline Approximation AtanOfQuotient(DoubleDouble n, DoubleDouble d) {
  const double ratio = n.hi / d.hi;
  if (ratio < kAtanFirst) return AddArcTangent(DoubleDouble{0, 0}, n / d);
  if (!(ratio < kAtanLast)) return AddArcTangent(kHalfPi, -d / n);
  const AtanCell<double> cell(ratio);
  const DoubleDouble centre{cell.centre, 0};
  return AddArcTangent(cell.angle, (n + -(centre * d)) / (d + centre * n));
}

inline Approximation operator-(const Approximation& x) { return {-x.value, x.error}; }

/// m pi + y.
inline Approximation AddHalfTurns(std::int64_t m, const Approximation& y) {
  constexpr DoubleDouble kPi{0x1.921fb54442d18p+1, 0x1.1a62633145c07p-53};
  const DoubleDouble sum = FromInteger(m) * kPi + y.value;
  return {sum, MulAdd(0x1p-98, std::fabs(sum.hi), y.error)};
}

}  // namespace elementary
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
