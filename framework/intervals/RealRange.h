#ifndef ZULTAV_INTERVALS_REAL_RANGE_H
#define ZULTAV_INTERVALS_REAL_RANGE_H

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>

#include "framework/intervals/Export.h"
#include "framework/intervals/detail/PackedArithmetic.h"

namespace zultav {

/// A closed range of reals between any two doubles; empty when lower > upper. An infinite side is
/// an infinity; a lower bound is never +inf in a range that is not empty, an upper one never -inf.
/// NaN never enters.
///
/// Every function answers the tightest enclosure of the true results unless it says otherwise (an
/// overflow lies between DBL_MAX and infinity); an empty range for an empty argument and where it
/// is defined nowhere. The error flag is left alone.
class ZULTAV_INTERVALS_API RealRange {
 public:
  /// All reals.
  constexpr RealRange() = default;
  constexpr RealRange(double low, double high) : lower(low), upper(high) {}
  static constexpr RealRange Empty() { return {sMaxValue, -sMaxValue}; }
  static constexpr RealRange Point(double value) { return {value, value}; }

  constexpr bool IsEmpty() const { return !(lower <= upper); }
  constexpr bool IsScalar() const { return lower == upper; }
  /// Whether both sides are finite; an empty range is not bounded.
  constexpr bool IsBounded() const {
    return -DBL_MAX <= lower && lower <= upper && upper <= DBL_MAX;
  }
  constexpr bool Contains(double value) const { return lower <= value && value <= upper; }
  friend constexpr bool operator==(const RealRange&, const RealRange&) = default;

  /// Intersection in place. Answers whether a bound changed.
  constexpr bool Intersect(const RealRange& other) {
    const RealRange before = *this;
    if (other.lower > lower) lower = other.lower;
    if (other.upper < upper) upper = other.upper;
    return !(*this == before);
  }

  /// A finite number of the range: the middle of a bounded one, 0 of all reals, else one as far
  /// beyond the finite bound as that is from 0, but no less than 1. Not for an empty range.
  double GetMiddle() const;
  /// The greatest magnitude. Not for an empty range.
  double GetMagnitude() const { return std::max(-lower, upper); }

  double lower = -sMaxValue;
  double upper = sMaxValue;

  /// Bounds from here on are infinite.
  static constexpr double sMaxValue = HUGE_VAL;
};

/// The arithmetic on any ranges, ordinary or not.
namespace detail::general_arithmetic {
ZULTAV_INTERVALS_API RealRange Sum(const RealRange& x, const RealRange& y);
ZULTAV_INTERVALS_API RealRange Product(const RealRange& x, const RealRange& y);
ZULTAV_INTERVALS_API RealRange Quotient(const RealRange& x, const RealRange& y);
ZULTAV_INTERVALS_API RealRange Square(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Sqrt(const RealRange& x);
}  // namespace detail::general_arithmetic

constexpr RealRange operator-(const RealRange& x) { return {0 - x.upper, 0 - x.lower}; }

ZULTAV_HOT RealRange operator+(const RealRange& x, const RealRange& y) {
  RealRange sum;
  if (detail::packed::Add(x, y, sum)) [[likely]]
    return sum;
  return detail::general_arithmetic::Sum(x, y);
}

ZULTAV_HOT RealRange operator-(const RealRange& x, const RealRange& y) {
  RealRange difference;
  if (detail::packed::Subtract(x, y, difference)) [[likely]]
    return difference;
  return detail::general_arithmetic::Sum(x, -y);
}

/// 0 times infinity is 0.
ZULTAV_HOT RealRange operator*(const RealRange& x, const RealRange& y) {
  RealRange product;
  if (detail::packed::Multiply(x, y, product)) [[likely]]
    return product;
  return detail::general_arithmetic::Product(x, y);
}

/// Quotients by what of y is not 0.
ZULTAV_HOT RealRange operator/(const RealRange& x, const RealRange& y) {
  RealRange quotient;
  if (detail::packed::Divide(x, y, quotient)) [[likely]]
    return quotient;
  return detail::general_arithmetic::Quotient(x, y);
}

ZULTAV_HOT RealRange Square(const RealRange& x) {
  RealRange square;
  if (detail::packed::Square(x, square)) [[likely]]
    return square;
  return detail::general_arithmetic::Square(x);
}

/// Roots of what of x is not negative.
ZULTAV_HOT RealRange Sqrt(const RealRange& x) {
  RealRange root;
  if (detail::packed::Sqrt(x, root)) [[likely]]
    return root;
  return detail::general_arithmetic::Sqrt(x);
}

constexpr RealRange Intersection(RealRange x, const RealRange& y) {
  x.Intersect(y);
  return x;
}
/// Hull of the union; an empty operand is ignored.
constexpr RealRange Hull(const RealRange& x, const RealRange& y) {
  if (y.IsEmpty()) return x;
  if (x.IsEmpty()) return y;
  return {std::min(x.lower, y.lower), std::max(x.upper, y.upper)};
}

ZULTAV_INTERVALS_API RealRange Abs(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Min(const RealRange& x, const RealRange& y);
ZULTAV_INTERVALS_API RealRange Max(const RealRange& x, const RealRange& y);

ZULTAV_INTERVALS_API RealRange Exp(const RealRange& x);
/// Natural logarithm of what of x is positive.
ZULTAV_INTERVALS_API RealRange Log(const RealRange& x);
/// Radians. [-1, 1] beyond 1e19.
ZULTAV_INTERVALS_API RealRange Sin(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Cos(const RealRange& x);
/// All reals when a pole lies inside x or a bound is beyond 1e14.
ZULTAV_INTERVALS_API RealRange Tan(const RealRange& x);
/// Principal branches, of what of x has one.
ZULTAV_INTERVALS_API RealRange Atan(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Asin(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Acos(const RealRange& x);
/// The angles in (-pi, pi] of the points (x, y), y the first argument; the origin has none.
ZULTAV_INTERVALS_API RealRange Atan2(const RealRange& y, const RealRange& x);
/// Distances of the points (x, y) from the origin.
ZULTAV_INTERVALS_API RealRange Hypot(const RealRange& x, const RealRange& y);

ZULTAV_INTERVALS_API RealRange Sinh(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Cosh(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Tanh(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Asinh(const RealRange& x);
/// The one that is not negative, of what of x is at least 1.
ZULTAV_INTERVALS_API RealRange Acosh(const RealRange& x);
/// Of what of x lies between -1 and 1.
ZULTAV_INTERVALS_API RealRange Atanh(const RealRange& x);

/// Logarithms of what of x is positive.
ZULTAV_INTERVALS_API RealRange Log2(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Log10(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Exp2(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Exp10(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Cbrt(const RealRange& x);

/// To whole numbers: below, above, the nearest (halves away from zero).
ZULTAV_INTERVALS_API RealRange Floor(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Ceil(const RealRange& x);
ZULTAV_INTERVALS_API RealRange Round(const RealRange& x);

/// x^n; x^0 is 1, a negative power of 0 undefined.
ZULTAV_INTERVALS_API RealRange Power(const RealRange& x, std::int64_t n);
/// Hull of (x ∩ [0, ∞))^y and of (x ∩ (-∞, 0))^k for the integers k of y. 0^y is 0 for y > 0, 1
/// for y = 0, undefined for y < 0. All even k count together, and all odd ones.
ZULTAV_INTERVALS_API RealRange Power(const RealRange& x, const RealRange& y);

/// x - y q for the whole number q to which x / y is truncated, y not 0. Tightest when that is the
/// same for all of x and y; else what the sign of x and both magnitudes allow.
ZULTAV_INTERVALS_API RealRange Remainder(const RealRange& x, const RealRange& y);
/// The one whole number to which all quotients x / y are truncated, and those of a neighbourhood of
/// x and y; false when there are several.
ZULTAV_INTERVALS_API bool TruncatedQuotient(const RealRange& x, const RealRange& y, double& whole);

// Projections: hulls of the part of one argument, x unless it is said otherwise, for which the
// function can have a value in z.

/// t * s in z for some s of y. With x = [-∞, ∞] and y without 0 this is z / y.
ZULTAV_INTERVALS_API RealRange Quotients(const RealRange& x, const RealRange& z,
                                         const RealRange& y);
ZULTAV_INTERVALS_API RealRange InverseSquare(const RealRange& z, const RealRange& x);
ZULTAV_INTERVALS_API RealRange InverseSqrt(const RealRange& z, const RealRange& x);
ZULTAV_INTERVALS_API RealRange InversePower(const RealRange& z, const RealRange& x, std::int64_t n);
ZULTAV_INTERVALS_API RealRange InversePower(const RealRange& z, const RealRange& x,
                                            const RealRange& y);
/// The part of the exponents y; for negative bases wider than the integers among them, and wider
/// than tightest by a few units in the last place.
ZULTAV_INTERVALS_API RealRange InverseExponent(const RealRange& z, const RealRange& x,
                                               const RealRange& y);
ZULTAV_INTERVALS_API RealRange InverseAbs(const RealRange& z, const RealRange& x);
/// All t with min(t, y), max(t, y) in z.
ZULTAV_INTERVALS_API RealRange InverseMin(const RealRange& z, const RealRange& y);
ZULTAV_INTERVALS_API RealRange InverseMax(const RealRange& z, const RealRange& y);
/// What of x lies outside the window (radians) or beyond 1e19 is kept as it is.
ZULTAV_INTERVALS_API RealRange InverseSin(const RealRange& z, const RealRange& x,
                                          const RealRange& window);
ZULTAV_INTERVALS_API RealRange InverseCos(const RealRange& z, const RealRange& x,
                                          const RealRange& window);
ZULTAV_INTERVALS_API RealRange InverseTan(const RealRange& z, const RealRange& x,
                                          const RealRange& window);
/// Of the principal branches.
ZULTAV_INTERVALS_API RealRange InverseAsin(const RealRange& z, const RealRange& x);
ZULTAV_INTERVALS_API RealRange InverseAcos(const RealRange& z, const RealRange& x);
ZULTAV_INTERVALS_API RealRange InverseAtan(const RealRange& z, const RealRange& x);
/// The part of the ordinates y, of the abscissas x, of points of which some have angles in z; a few
/// units in the last place wider than tightest.
ZULTAV_INTERVALS_API RealRange InverseAtan2(const RealRange& z, const RealRange& y,
                                            const RealRange& x);
ZULTAV_INTERVALS_API RealRange InverseAtan2Abscissa(const RealRange& z, const RealRange& y,
                                                    const RealRange& x);
ZULTAV_INTERVALS_API RealRange InverseHypot(const RealRange& z, const RealRange& x,
                                            const RealRange& y);
/// Closed where the true sets are open at a jump.
ZULTAV_INTERVALS_API RealRange InverseFloor(const RealRange& z, const RealRange& x);
ZULTAV_INTERVALS_API RealRange InverseCeil(const RealRange& z, const RealRange& x);
ZULTAV_INTERVALS_API RealRange InverseRound(const RealRange& z, const RealRange& x);
/// The part of the dividends x, of the divisors y; wider than tightest.
ZULTAV_INTERVALS_API RealRange InverseRemainder(const RealRange& z, const RealRange& x,
                                                const RealRange& y);
ZULTAV_INTERVALS_API RealRange InverseRemainderDivisor(const RealRange& z, const RealRange& x,
                                                       const RealRange& y);

}  // namespace zultav

#endif
