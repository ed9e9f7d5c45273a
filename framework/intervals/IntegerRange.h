#ifndef ZULTAV_INTERVALS_INTEGER_RANGE_H
#define ZULTAV_INTERVALS_INTEGER_RANGE_H

#include <algorithm>
#include <cstdint>
#include <limits>

#include "framework/intervals/Export.h"

namespace zultav {

/// A closed range of mathematical integers; empty when lower > upper. A lower bound of kMin and an
/// upper bound of kMax are no bounds: that side is endless. A bound that does not fit is pushed to
/// the nearest statement that is true: a lower bound of kMax says ">= kMax", so that [kMax, kMax]
/// is endless, and an upper bound of kMin says "<= kMin".
///
/// All functions answer sets that hold every true result; where nothing else is said, they are
/// hulls of it as long as finite bounds are within ±(2^63 - 2). Empty operands have empty results.
/// Nothing allocates or throws, and all work is bounded.
class ZULTAV_INTERVALS_API IntegerRange {
 public:
  static constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  static constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

  /// All integers.
  constexpr IntegerRange() = default;
  constexpr IntegerRange(std::int64_t low, std::int64_t high) : lower(low), upper(high) {}
  static constexpr IntegerRange Empty() { return {kMax, kMin}; }
  static constexpr IntegerRange Only(std::int64_t value) { return {value, value}; }

  constexpr bool IsEmpty() const { return lower > upper; }
  /// Whether it holds one known value.
  constexpr bool IsScalar() const { return lower == upper && IsBounded(); }
  constexpr bool IsBounded() const { return lower != kMin && upper != kMax; }
  constexpr bool Contains(std::int64_t value) const { return lower <= value && value <= upper; }
  friend constexpr bool operator==(const IntegerRange&, const IntegerRange&) = default;

  /// Intersection in place. Answers whether a bound changed.
  constexpr bool Intersect(const IntegerRange& other) {
    const IntegerRange before = *this;
    lower = std::max(lower, other.lower);
    upper = std::min(upper, other.upper);
    return *this != before;
  }

  std::int64_t lower = kMin;
  std::int64_t upper = kMax;
};

constexpr IntegerRange Intersection(IntegerRange x, const IntegerRange& y) {
  x.Intersect(y);
  return x;
}

/// Hull of the union; an empty operand is ignored.
constexpr IntegerRange Hull(const IntegerRange& x, const IntegerRange& y) {
  if (x.IsEmpty()) return y;
  if (y.IsEmpty()) return x;
  return {std::min(x.lower, y.lower), std::max(x.upper, y.upper)};
}

namespace detail::integer_range {

/// The bound on the other side of zero; what does not fit is pushed to the end.
constexpr std::int64_t Mirrored(std::int64_t bound) {
  return bound == IntegerRange::kMin ? IntegerRange::kMax : -bound;
}

constexpr std::int64_t Sum(std::int64_t x, std::int64_t y) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(x, y, &sum)) [[likely]]
    return sum;
  return x < 0 ? IntegerRange::kMin : IntegerRange::kMax;
}

constexpr std::int64_t Product(std::int64_t x, std::int64_t y) {
  std::int64_t product = 0;
  if (!__builtin_mul_overflow(x, y, &product)) [[likely]]
    return product;
  return (x < 0) != (y < 0) ? IntegerRange::kMin : IntegerRange::kMax;
}

}  // namespace detail::integer_range

constexpr IntegerRange operator-(const IntegerRange& x) {
  using namespace detail::integer_range;
  return {x.upper == IntegerRange::kMax ? IntegerRange::kMin : Mirrored(x.upper),
          Mirrored(x.lower)};
}

constexpr IntegerRange operator+(const IntegerRange& x, const IntegerRange& y) {
  using R = IntegerRange;
  using namespace detail::integer_range;
  if (x.IsEmpty() || y.IsEmpty()) return R::Empty();
  const bool down = x.lower == R::kMin || y.lower == R::kMin;
  const bool up = x.upper == R::kMax || y.upper == R::kMax;
  return {down ? R::kMin : Sum(x.lower, y.lower), up ? R::kMax : Sum(x.upper, y.upper)};
}

constexpr IntegerRange operator-(const IntegerRange& x, const IntegerRange& y) { return x + -y; }

constexpr IntegerRange operator*(const IntegerRange& x, const IntegerRange& y) {
  using namespace detail::integer_range;
  if (x.IsEmpty() || y.IsEmpty()) return IntegerRange::Empty();
  const std::int64_t ll = Product(x.lower, y.lower), lu = Product(x.lower, y.upper);
  const std::int64_t ul = Product(x.upper, y.lower), uu = Product(x.upper, y.upper);
  const std::int64_t low = std::min(std::min(ll, lu), std::min(ul, uu));
  // An end times a number is at an end again or zero, except for the upper one times -1.
  return {low == -IntegerRange::kMax ? IntegerRange::kMin : low,
          std::max(std::max(ll, lu), std::max(ul, uu))};
}

constexpr IntegerRange Abs(const IntegerRange& x) {
  if (x.lower >= 0 || x.IsEmpty()) return x;
  if (x.upper <= 0) return -x;
  return {0, std::max(detail::integer_range::Mirrored(x.lower), x.upper)};
}

constexpr IntegerRange Min(const IntegerRange& x, const IntegerRange& y) {
  if (x.IsEmpty() || y.IsEmpty()) return IntegerRange::Empty();
  return {std::min(x.lower, y.lower), std::min(x.upper, y.upper)};
}

constexpr IntegerRange Max(const IntegerRange& x, const IntegerRange& y) {
  if (x.IsEmpty() || y.IsEmpty()) return IntegerRange::Empty();
  return {std::max(x.lower, y.lower), std::max(x.upper, y.upper)};
}

/// -1, 0 or 1.
constexpr IntegerRange Sign(const IntegerRange& x) {
  if (x.IsEmpty()) return x;
  return {(x.lower > 0) - (x.lower < 0), (x.upper > 0) - (x.upper < 0)};
}

// Projections: the part of an operand that has a result in z --------------------------------

/// The part of x with |x| in z.
ZULTAV_INTERVALS_API IntegerRange AbsArguments(const IntegerRange& z, const IntegerRange& x);
/// The part of x with min(x, y) (max(x, y)) in z for a y of y.
ZULTAV_INTERVALS_API IntegerRange MinArguments(const IntegerRange& z, const IntegerRange& x,
                                               const IntegerRange& y);
ZULTAV_INTERVALS_API IntegerRange MaxArguments(const IntegerRange& z, const IntegerRange& x,
                                               const IntegerRange& y);
/// The part of x whose sign is in z.
ZULTAV_INTERVALS_API IntegerRange SignArguments(const IntegerRange& z, const IntegerRange& x);

/// The part of x with x*y in z for a y of y. An end that more than kMaxQuotientSteps candidates
/// leave open may be too wide; where z holds 0, or y is one value, none is.
ZULTAV_INTERVALS_API IntegerRange ExactQuotients(const IntegerRange& x, const IntegerRange& z,
                                                 const IntegerRange& y);
inline constexpr int kMaxQuotientSteps = 64;

// Powers: 0^0 is 1, and a negative exponent counts only where the power is an integer (base ±1).

/// The powers x^n.
ZULTAV_INTERVALS_API IntegerRange Power(const IntegerRange& x, const IntegerRange& n);
/// The part of x with x^n in z for an n of n: exact roots.
ZULTAV_INTERVALS_API IntegerRange PowerBases(const IntegerRange& z, const IntegerRange& x,
                                             const IntegerRange& n);
/// The part of n with x^n in z for an x of x.
ZULTAV_INTERVALS_API IntegerRange PowerExponents(const IntegerRange& z, const IntegerRange& x,
                                                 const IntegerRange& n);

// Remainders of truncated quotients: they have the sign of the dividend; by 0 there is none. They
// are hulls where the divisor is one value, elsewhere they may be too wide.

/// The remainders of x by y.
ZULTAV_INTERVALS_API IntegerRange Remainder(const IntegerRange& x, const IntegerRange& y);
/// The part of x with a remainder by y in r: for one divisor each bound moves to the next dividend.
ZULTAV_INTERVALS_API IntegerRange RemainderDividends(const IntegerRange& r, const IntegerRange& x,
                                                     const IntegerRange& y);
/// The part of y by which x has a remainder in r.
ZULTAV_INTERVALS_API IntegerRange RemainderDivisors(const IntegerRange& r, const IntegerRange& x,
                                                    const IntegerRange& y);

// Truncated quotients; by 0 there is none. The projections are hulls where the divisor is one
// value, elsewhere they may be too wide.

/// The quotients of x by y.
ZULTAV_INTERVALS_API IntegerRange Div(const IntegerRange& x, const IntegerRange& y);
/// The part of x with a quotient by y in q.
ZULTAV_INTERVALS_API IntegerRange DivDividends(const IntegerRange& q, const IntegerRange& x,
                                               const IntegerRange& y);
/// The part of y by which x has a quotient in q.
ZULTAV_INTERVALS_API IntegerRange DivDivisors(const IntegerRange& q, const IntegerRange& x,
                                              const IntegerRange& y);

// Greatest common divisors: not negative; of 0 and y it is |y|. They are hulls where both operands
// are one value, elsewhere they may be too wide.

/// The greatest common divisors of x and y.
ZULTAV_INTERVALS_API IntegerRange Gcd(const IntegerRange& x, const IntegerRange& y);
/// The part of x that has one with y in g.
ZULTAV_INTERVALS_API IntegerRange GcdArguments(const IntegerRange& g, const IntegerRange& x,
                                               const IntegerRange& y);

// Between integers and reals ------------------------------------------------------------------

/// The integers from `lower` to `upper`, which may be infinite.
ZULTAV_INTERVALS_API IntegerRange IntegersWithin(double lower, double upper);
/// The bounds of x rounded outward; an endless side is infinite.
ZULTAV_INTERVALS_API double LowerAsDouble(const IntegerRange& x);
ZULTAV_INTERVALS_API double UpperAsDouble(const IntegerRange& x);

}  // namespace zultav

#endif
