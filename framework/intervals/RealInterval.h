#ifndef ZULTAV_INTERVALS_REAL_INTERVAL_H
#define ZULTAV_INTERVALS_REAL_INTERVAL_H

#include "framework/intervals/Export.h"

/// A closed interval of reals between two doubles; empty when lower > upper. A bound at or beyond
/// ±sMaxValue is an infinite side. NaN never enters.
///
/// The arithmetic answers the tightest enclosure of the true results (bit for bit), saturated at
/// ±sMaxValue, keeps an infinite side infinite (0 times infinity is 0), answers an empty interval
/// for an empty operand, and leaves the error flag alone (the division excepted).
class ZULTAV_INTERVALS_API RealInterval {
 public:
  constexpr RealInterval() = default;
  constexpr RealInterval(double low, double high) : lower(low), upper(high) {}

  constexpr bool IsEmpty() const { return !(lower <= upper); }
  constexpr bool IsScalar() const { return lower == upper; }
  constexpr bool Contains(double value) const { return lower <= value && value <= upper; }
  friend constexpr bool operator==(const RealInterval& x, const RealInterval& y) {
    return x.lower == y.lower && x.upper == y.upper;
  }

  /// Plain intersection in place; never raises the error flag. Answers 1 when a bound changed.
  int Intersect(const RealInterval& other) {
    const RealInterval before = *this;
    if (other.lower > lower) lower = other.lower;
    if (other.upper < upper) upper = other.upper;
    return !(*this == before);
  }

  RealInterval AddIntToInt(const RealInterval& b) const;
  RealInterval SubIntFromInt(const RealInterval& b) const;
  RealInterval MultIntByInt(const RealInterval& b) const;
  /// Quotients of the receiver by `b`. A divisor containing zero: whole line when the receiver
  /// contains zero too, empty for [0, 0], else the hull of the quotients by the non-zero part. An
  /// empty result raises the flag.
  RealInterval DivIntByInt(const RealInterval& b) const;
  RealInterval AddNumToInt(double d) const;
  RealInterval subNumFromInt(double d) const;

  RealInterval mf_Neg() const;
  RealInterval mf_Abs() const;
  RealInterval mf_Min(const RealInterval& b) const;
  RealInterval mf_Max(const RealInterval& b) const;
  /// Hull of the union; an empty operand is ignored.
  RealInterval mf_Union(const RealInterval& b) const;

  double lower = 0;
  double upper = 0;

  /// Largest finite magnitude.
  static double sMaxValue;
};

/// The arithmetic on any intervals, ordinary or not.
namespace zultav::detail::general_arithmetic {
ZULTAV_INTERVALS_API RealInterval Sum(const RealInterval& x, const RealInterval& y);
ZULTAV_INTERVALS_API RealInterval Product(const RealInterval& x, const RealInterval& y);
ZULTAV_INTERVALS_API RealInterval Quotient(const RealInterval& x, const RealInterval& y);
ZULTAV_INTERVALS_API RealInterval Square(const RealInterval& x);
ZULTAV_INTERVALS_API RealInterval Sqrt(const RealInterval& x);
}  // namespace zultav::detail::general_arithmetic

#include "framework/intervals/detail/PackedArithmetic.h"

// Inline, so that code built for newer processors does ordinary arithmetic without a call. All
// other code calls the library, which the dynamic loader chooses to fit the processor.

ZULTAV_HOT RealInterval RealInterval::AddIntToInt(const RealInterval& b) const {
  RealInterval sum;
  if (zultav::detail::packed::Add(*this, b, sum)) [[likely]]
    return sum;
  return zultav::detail::general_arithmetic::Sum(*this, b);
}

ZULTAV_HOT RealInterval RealInterval::SubIntFromInt(const RealInterval& b) const {
  RealInterval difference;
  if (zultav::detail::packed::Subtract(*this, b, difference)) [[likely]]
    return difference;
  return zultav::detail::general_arithmetic::Sum(*this, {-b.upper, -b.lower});
}

ZULTAV_HOT RealInterval RealInterval::MultIntByInt(const RealInterval& b) const {
  RealInterval product;
  if (zultav::detail::packed::Multiply(*this, b, product)) [[likely]]
    return product;
  return zultav::detail::general_arithmetic::Product(*this, b);
}

ZULTAV_HOT RealInterval RealInterval::DivIntByInt(const RealInterval& b) const {
  RealInterval quotient;
  if (zultav::detail::packed::Divide(*this, b, quotient)) [[likely]]
    return quotient;
  return zultav::detail::general_arithmetic::Quotient(*this, b);
}

ZULTAV_HOT RealInterval RealInterval::AddNumToInt(double d) const {
  RealInterval sum;
  if (zultav::detail::packed::Add(*this, d, sum)) [[likely]]
    return sum;
  return zultav::detail::general_arithmetic::Sum(*this, {d, d});
}

ZULTAV_HOT RealInterval RealInterval::subNumFromInt(double d) const { return AddNumToInt(-d); }

#endif
