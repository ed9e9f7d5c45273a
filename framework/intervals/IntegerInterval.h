#ifndef ZULTAV_INTERVALS_INTEGER_INTERVAL_H
#define ZULTAV_INTERVALS_INTEGER_INTERVAL_H

#include "framework/intervals/Export.h"
#include "framework/intervals/SubIntBase.h"

/// A closed interval of integers; empty when lower > upper. A bound at or beyond
/// ±SubdefInt::sMaxValue is an infinite side.
///
/// The arithmetic answers the hull of the true results, computed in 64 bits and saturated at
/// ±sMaxValue, keeps an infinite side infinite, answers an empty interval for an empty operand,
/// and leaves the error flag alone (the divisions excepted).
class ZULTAV_INTERVALS_API IntegerInterval {
 public:
  constexpr IntegerInterval() = default;
  constexpr IntegerInterval(SubIntBase low, SubIntBase high) : lower(low), upper(high) {}

  /// The empty set as it is stored, [sMaxValue, -sMaxValue], and the set of all integers.
  static IntegerInterval Empty();
  static IntegerInterval Whole();

  constexpr bool IsEmpty() const { return lower > upper; }
  constexpr bool IsScalar() const { return lower == upper; }
  constexpr bool Contains(long value) const { return lower <= value && value <= upper; }
  friend constexpr bool operator==(const IntegerInterval& x, const IntegerInterval& y) {
    return x.lower == y.lower && x.upper == y.upper;
  }

  /// Plain intersection in place; never raises the error flag. Answers 1 when a bound changed.
  int Intersect(const IntegerInterval& other);

  IntegerInterval AddIntToInt(const IntegerInterval& b) const;
  IntegerInterval SubIntFromInt(const IntegerInterval& b) const;
  IntegerInterval MultIntByInt(const IntegerInterval& b) const;
  /// Quotients of the receiver by `b`. `rounding` 0: the integers q with q*d in the receiver for
  /// some d in b (the inverse of the product); otherwise the quotients truncated toward zero.
  /// A divisor containing zero: whole line when the receiver contains zero too, empty (flag up)
  /// for [0, 0], else the hull of the quotients by the non-zero part.
  ///
  /// Truncated quotients are the exact hull. So are those of `rounding` 0, unless an end needs
  /// more than kMaxQuotientSteps candidates to be tried, which takes a finite bound of the
  /// receiver beyond 1024 in magnitude; then the end may be too wide, never too narrow. No
  /// quotient: empty, flag up.
  IntegerInterval DivIntByInt(const IntegerInterval& b, const SubIntBase& rounding) const;
  IntegerInterval DivIntByNum(const SubIntBase& d, const SubIntBase& rounding) const;
  /// The receiver shifted by +d, by -d.
  IntegerInterval AddNumToInt(long d) const;
  IntegerInterval subNumFromInt(long d) const;

  static constexpr int kMaxQuotientSteps = 64;

  IntegerInterval mf_Neg() const;
  IntegerInterval mf_Abs() const;
  IntegerInterval mf_Min(const IntegerInterval& b) const;
  IntegerInterval mf_Max(const IntegerInterval& b) const;
  /// Hull of the union; an empty operand is ignored.
  IntegerInterval mf_Union(const IntegerInterval& b) const;

  SubIntBase lower = 0;
  SubIntBase upper = 0;

 private:
  static IntegerInterval Clamped(std::int64_t low, std::int64_t high);
};

// Its hot members are inline and need the limit that SubdefInt holds.
#include "framework/intervals/SubdefInt.h"

#endif
