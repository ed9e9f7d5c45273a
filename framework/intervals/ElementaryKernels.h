#ifndef ZULTAV_INTERVALS_ELEMENTARY_KERNELS_H
#define ZULTAV_INTERVALS_ELEMENTARY_KERNELS_H

#include <bit>
#include <cmath>
#include <cstdint>

#include "framework/intervals/DoubleDouble.h"
#include "framework/intervals/ElementaryTables.h"
#include "framework/intervals/FixedPoint.h"

// Elementary functions of one double in double-double arithmetic, each with a proven bound on its
// error. In the proofs u = 2^-53 bounds the relative error of one operation rounded to nearest.
// Every bound holds whether or not MulAdd is fused.
namespace elementary {

// The processor works on both bounds of an interval at once only where both are computed in line.
#define ZULTAV_HOT [[gnu::always_inline]] inline

/// A function value lies within `error` of hi + lo. Normalised: hi is hi + lo rounded to nearest.
struct Approximation {
  DoubleDouble value;
  double error;
};

/// y * 2^exponent, y.value.hi in [0.99, 2).
struct ScaledApproximation {
  Approximation y;
  std::int64_t exponent;
};

/// The integer nearest to x, |x| < 2^51.
inline double Nearest(double x) {
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
ZULTAV_HOT ScaledApproximation Exp(double x, double xLow = 0) {
  const double k = Nearest(x * 0x1.71547652b82fep+7);
  const double r = x - k * 0x1.62e42fefc0000p-8;
  const double rLow = xLow - k * -0x1.c610ca86c3899p-44;
  const double s = r + rLow;
  const double square = s * s;
  const double even = MulAdd(s, 1.0 / 6, 1.0 / 2);
  const double odd = MulAdd(square, 1.0 / 720, MulAdd(s, 1.0 / 120, 1.0 / 24));
  const DoubleDouble q = FastTwoSum(r, MulAdd(square, MulAdd(square, odd, even), rLow));
  const auto index = static_cast<std::int64_t>(k);
  const DoubleDouble power = kExpTable[index & 127];
  const DoubleDouble product = TwoProduct(power.hi, q.hi);
  const DoubleDouble sum = FastTwoSum(power.hi, product.hi);
  const double low =
      sum.lo + (product.lo + MulAdd(power.hi, q.lo, MulAdd(power.lo, q.hi, power.lo)));
  const DoubleDouble y = FastTwoSum(sum.hi, low);
  return {
      {y, 0x1p-67 * y.hi},
      index >> 7
  };
}

/// log(x) for finite x > 0. Relative error below 1.5 * 2^-67.
///
/// log(x) = e log(2) - log(c) + log(1 + r), r = z c - 1 exact in two doubles. Next to x = 1, where
/// c = 1 and e = 0, |r| <= 2^-8, and r - r^2/2 is exact; the rest is r^3 (1/3 - r/4 + ...) with an
/// error of 5.5 u + 3 u in sums, relative to the result 8.5 u r^2/3 < 2^-67.4. Farther away the
/// result is at least 2^-9 and |r| < 2^-8.9, which leaves 2^-69. e * high part of log(2) is exact.
ZULTAV_HOT Approximation Log(double x) {
  constexpr std::uint64_t kFirst = std::uint64_t{0x3FE6} << 48;
  const bool subnormal = x < 0x1p-1022;
  const auto bits = std::bit_cast<std::uint64_t>(subnormal ? x * 0x1p54 : x);
  const std::uint64_t place = bits - kFirst;
  const std::int64_t exponent = static_cast<std::int64_t>(place) >> 52;
  const double z = std::bit_cast<double>(bits - (static_cast<std::uint64_t>(exponent) << 52));
  const LogRow& row = kLogTable[place >> 44 & 255];
  const auto e = static_cast<double>(exponent - (subnormal ? 54 : 0));

  const DoubleDouble zc = TwoProduct(z, row.inverse);
  const DoubleDouble r = FastTwoSum(zc.hi - 1, zc.lo);
  const DoubleDouble square = TwoProduct(r.hi, r.hi);
  const DoubleDouble head = FastTwoSum(r.hi, -0.5 * square.hi);
  const double s = square.hi;
  const double low4 = MulAdd(s, MulAdd(r.hi, -1.0 / 6, 1.0 / 5), MulAdd(r.hi, -1.0 / 4, 1.0 / 3));
  const double high3 = MulAdd(s, 1.0 / 9, MulAdd(r.hi, -1.0 / 8, 1.0 / 7));
  const double tail = r.hi * s * MulAdd(s * s, high3, low4);

  const DoubleDouble base = FastTwoSum(e * 0x1.62e42fefa3800p-1, row.log.hi);
  const DoubleDouble sum = FastTwoSum(base.hi, head.hi);
  const double constants = base.lo + MulAdd(e, 0x1.ef35793c76730p-45, row.log.lo);
  const double corrections = head.lo + (r.lo - MulAdd(r.hi, r.lo, 0.5 * square.lo));
  const DoubleDouble y = FastTwoSum(sum.hi, sum.lo + (constants + (corrections + tail)));
  return {y, 0x1.8p-67 * std::fabs(y.hi)};
}

/// x = index pi/512 + r, up to whole turns.
struct Angle {
  std::int64_t quadrant;  ///< floor(x / (pi/2)), turns included
  std::int64_t index;     ///< within a turn, 0 to 1024
  DoubleDouble r;
  double error;      ///< of r, below 2^-60 |r|
  double precision;  ///< relative error of the terms of a sine that is built on r
};

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
ZULTAV_HOT Angle Reduce(double x) {
  constexpr double kInverse = 0x1.45f306dc9c883p+7;  // 512/pi
  constexpr DoubleDouble kStep{0x1.921fb54442d18p-8, 0x1.1a62633145c07p-62};
  const double magnitude = std::fabs(x);
  if (magnitude < 0x1p25) {
    const double k = Nearest(x * kInverse);
    const DoubleDouble first = TwoProduct(k, kStep.hi);
    const DoubleDouble r = FastTwoSum(x - first.hi, -MulAdd(k, kStep.lo, first.lo));
    const double error = 0x1p-112 * std::fabs(k);
    if (std::fabs(r.hi) < 0x1p60 * error) [[unlikely]]
      return ReduceSlowly(x);
    const auto index = static_cast<std::int64_t>(k);
    return {(index - (r.hi < 0)) >> 8, index & 1023, r, error, 0x1p-67};
  }
  if (magnitude > 1e14) return ReduceSlowly(x);
  const DoubleDouble quotient = TwoProduct(x, kInverse / 2);
  const double shift = std::copysign(0x1p52, x);
  const double whole = (quotient.hi + shift) - shift;
  const double rest = MulAdd(x, -0x1.6b01ec5417056p-48, quotient.lo);
  const double k = whole + Nearest((quotient.hi - whole) + rest);
  const DoubleDouble first = TwoProduct(k, 2 * kStep.hi);
  const DoubleDouble second = TwoProduct(k, 2 * kStep.lo);
  const DoubleDouble a = FastTwoSum(x - first.hi, -first.lo);
  const DoubleDouble b = TwoSum(a.hi, -second.hi);
  const double low = (a.lo + b.lo) - (second.lo + k * -0x1.f1976b7ed8fbcp-117);
  const DoubleDouble r = FastTwoSum(b.hi, low);
  if (std::fabs(r.hi) < 0x1p-47) [[unlikely]]
    return ReduceSlowly(x);
  const auto index = static_cast<std::int64_t>(k);
  return {(index - (r.hi < 0)) >> 7, 2 * index & 1023, r, 0x1p-107, 0x1p-65};
}

/// The sine of an angle moved on by `quarters` quarter turns.
///
/// sin(a + r) = sin a + cos a r + sin a (cos r - 1) + cos a (sin r - r), a from the table. The
/// errors are, relative to sin a, 7 u r^2/2, and, relative to r cos a, 8 u r^2/6: for
/// |r| <= pi/1024 below 2^-67.8 and 2^-69, for pi/512 below 2^-65.8 and 2^-67.
ZULTAV_HOT Approximation Sin(const Angle& angle, std::int64_t quarters) {
  const std::int64_t index = angle.index + 256 * quarters;
  const std::int64_t place = index & 255;
  const bool cofunction = index & 256;
  DoubleDouble sine = kSinTable[cofunction ? 256 - place : place];
  DoubleDouble cosine = kSinTable[cofunction ? place : 256 - place];
  if (index & 512) sine = -sine;
  if ((index + 256) & 512) cosine = -cosine;

  const DoubleDouble r = angle.r;
  const double square = r.hi * r.hi;
  const double sinTail =
      MulAdd(r.hi * square, MulAdd(square, MulAdd(square, -1.0 / 5040, 1.0 / 120), -1.0 / 6), r.lo);
  const double cosTail =
      MulAdd(square, MulAdd(square, MulAdd(square, -1.0 / 720, 1.0 / 24), -0.5), -(r.hi * r.lo));
  const DoubleDouble product = TwoProduct(cosine.hi, r.hi);
  const DoubleDouble sum = FastTwoSum(sine.hi, product.hi);
  const double low = MulAdd(sine.hi, cosTail, MulAdd(cosine.hi, sinTail, cosine.lo * r.hi));
  const DoubleDouble y = FastTwoSum(sum.hi, sum.lo + (product.lo + (sine.lo + low)));
  const double size = std::fabs(sine.hi) + std::fabs(product.hi);
  return {y, MulAdd(angle.precision, size, angle.error)};
}

/// The quotient of two approximations, the second of relative error below 2^-10.
ZULTAV_HOT Approximation Divide(const Approximation& x, const Approximation& y) {
  const DoubleDouble q = x.value / y.value;
  const double size = std::fabs(q.hi);
  const double error = (x.error + size * y.error) / std::fabs(y.value.hi);
  return {q, MulAdd(0x1p-99, size, 1.01 * error)};
}

ZULTAV_HOT Approximation Tan(const Angle& angle) { return Divide(Sin(angle, 0), Sin(angle, 1)); }

/// base + atan(t), |t| <= 2^-7, base = 0 (then |t| <= 2^-8) or base >= 2^6 |t|. Relative error
/// below 2^-67, that of t not counted: 5 u in t^3 (1/3 - t^2/5 + ...) and 2 u in sums of its size,
/// relative to the result below 7 u 2^-17.6 = 2^-67.8.
ZULTAV_HOT Approximation AddArcTangent(DoubleDouble base, DoubleDouble t) {
  const double square = t.hi * t.hi;
  const double tail = MulAdd(
      t.hi * square,
      MulAdd(square, MulAdd(square, MulAdd(square, 1.0 / 9, -1.0 / 7), 1.0 / 5), -1.0 / 3), t.lo);
  const DoubleDouble sum = FastTwoSum(base.hi, t.hi);
  const DoubleDouble y = FastTwoSum(sum.hi, sum.lo + (base.lo + tail));
  return {y, 0x1p-67 * std::fabs(y.hi)};
}

constexpr DoubleDouble kHalfPi{0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};

/// The centre of the cell of kAtanTable that holds x in [2^-8, 2^8), and its arc tangent.
struct AtanCell {
  double centre;
  DoubleDouble angle;

  explicit AtanCell(double x) {
    const std::uint64_t cell = std::bit_cast<std::uint64_t>(x) >> 47;
    centre = std::bit_cast<double>((cell << 47) + (std::uint64_t{1} << 46));
    angle = kAtanTable[cell - (std::uint64_t{1015} << 5)];
  }
};

/// atan(x) for 2^-300 < |x| < 2^300. Relative error below 2^-66.9.
/// atan(x) = atan(c) + atan((x - c) / (1 + c x)), c the centre of the cell of x.
ZULTAV_HOT Approximation Atan(double x) {
  const double magnitude = std::fabs(x);
  Approximation y;
  if (magnitude < 0x1p-8) {
    y = AddArcTangent({0, 0}, {magnitude, 0});
  } else if (magnitude >= 0x1p8) {
    y = AddArcTangent(kHalfPi, DoubleDouble{-1, 0} / DoubleDouble{magnitude, 0});
  } else {
    const AtanCell cell(magnitude);
    const double n = magnitude - cell.centre;
    const double inverse = 1 / MulAdd(cell.centre, magnitude, 1);
    const double quotient = n * inverse;
    // The quotient's rest, from the exact denominator; all but the last terms cancel.
    const DoubleDouble product = TwoProduct(cell.centre, magnitude);
    const DoubleDouble d = TwoSum(1, product.hi);
    const DoubleDouble qd = TwoProduct(quotient, d.hi);
    const double rest = ((n - qd.hi) - qd.lo) - quotient * (d.lo + product.lo);
    y = AddArcTangent(cell.angle, {quotient, rest * inverse});
  }
  return {
      {std::copysign(y.value.hi, x), x < 0 ? -y.value.lo : y.value.lo},
      y.error
  };
}

/// atan(n / d) in [0, pi/2] for n, d >= 0, not both 0, of relative error below 2^-90.
inline Approximation AtanOfQuotient(DoubleDouble n, DoubleDouble d) {
  const double ratio = n.hi / d.hi;
  if (ratio < 0x1p-8) return AddArcTangent({0, 0}, n / d);
  if (!(ratio < 0x1p8)) return AddArcTangent(kHalfPi, -d / n);
  const AtanCell cell(ratio);
  const DoubleDouble centre{cell.centre, 0};
  return AddArcTangent(cell.angle, (n + -(centre * d)) / (d + centre * n));
}

}  // namespace elementary

#endif
