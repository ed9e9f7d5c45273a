#ifndef ZULTAV_INTERVALS_SUBDEF_INT_H
#define ZULTAV_INTERVALS_SUBDEF_INT_H

#include <algorithm>
#include <cstdint>

#include "framework/intervals/IntegerInterval.h"
#include "framework/intervals/IntervalControl.h"

class SubdefReal;

/// An integer interval that narrows: SDIntersect raises the error flag when nothing remains.
class ZULTAV_INTERVALS_API SubdefInt : public IntegerInterval {
 public:
  /// The full range.
  SubdefInt();
  constexpr SubdefInt(SubIntBase low, SubIntBase high) : IntegerInterval(low, high) {}
  constexpr SubdefInt(const IntegerInterval& set) : IntegerInterval(set) {}
  /// The integers inside a real interval, clamped to ±sMaxValue (a side beyond is infinite).
  /// Empty, without raising the flag, when there are none.
  explicit SubdefInt(const SubdefReal& set);

  /// Intersection in place. Answers 1 exactly when a bound changed; raises the error flag when
  /// the result is empty.
  int SDIntersect(const SubdefInt& other);
  int SDIntersect(const SubdefReal& other);

  /// Largest integer magnitude; a bound at or beyond it is an infinite side.
  static long sMaxValue;
};

/// The part of x whose absolute value lies in z.
ZULTAV_INTERVALS_API SubdefInt InverseAbs(const SubdefInt& z, const SubdefInt& x);
/// The x with min(x, y) (max(x, y)) in z.
ZULTAV_INTERVALS_API SubdefInt InverseMin(const SubdefInt& z, const SubdefInt& y);
ZULTAV_INTERVALS_API SubdefInt InverseMax(const SubdefInt& z, const SubdefInt& y);

// Powers. 0^0 is 1; a negative exponent counts only where the power is an integer (base ±1).
// Results are exact hulls, found in bounded time (no loop over a range of n). A single exponent is
// a number even at ±sMaxValue, elsewhere such a bound is an infinite side. An empty result, and an
// operand that is empty, raise the error flag.

/// Hull of { b^e integer : b in x, e in n }. Raises the flag, too, when the power of a finite end
/// had to be clamped.
ZULTAV_INTERVALS_API SubdefInt pow(const SubdefInt& x, const SubdefInt& n);
ZULTAV_INTERVALS_API SubdefInt pow(const SubdefInt& x, const SubIntBase& n);
/// Hull of the part of x whose power by an exponent of n lies in z.
ZULTAV_INTERVALS_API SubdefInt base(const SubdefInt& z, const SubdefInt& x, const SubdefInt& n);
ZULTAV_INTERVALS_API SubdefInt base(const SubdefInt& z, const SubdefInt& x, const SubIntBase& n);
/// Hull of the part of n that takes a base of x into z.
ZULTAV_INTERVALS_API SubdefInt exponent(const SubdefInt& z, const SubdefInt& x, const SubdefInt& n);
ZULTAV_INTERVALS_API SubdefInt exponent(const SubdefInt& z, const SubIntBase& x,
                                        const SubdefInt& n);

// Hot members of IntegerInterval -------------------------------------------------------------

inline IntegerInterval IntegerInterval::Empty() {
  return {SubdefInt::sMaxValue, -SubdefInt::sMaxValue};
}

inline IntegerInterval IntegerInterval::Whole() {
  return {-SubdefInt::sMaxValue, SubdefInt::sMaxValue};
}

/// The interval [low, high], low <= high, with its bounds clamped to ±sMaxValue.
inline IntegerInterval IntegerInterval::Clamped(std::int64_t low, std::int64_t high) {
  const std::int64_t limit = SubdefInt::sMaxValue;
  return {static_cast<long>(std::clamp(low, -limit, limit)),
          static_cast<long>(std::clamp(high, -limit, limit))};
}

inline int IntegerInterval::Intersect(const IntegerInterval& other) {
  const bool raise = lower < other.lower;
  const bool cut = other.upper < upper;
  if (raise) lower = other.lower;
  if (cut) upper = other.upper;
  return raise || cut;
}

inline IntegerInterval IntegerInterval::AddIntToInt(const IntegerInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  const std::int64_t limit = SubdefInt::sMaxValue;
  const bool openBelow = lower <= -limit || b.lower <= -limit;
  const bool openAbove = upper >= limit || b.upper >= limit;
  return Clamped(openBelow ? -limit : std::int64_t{lower} + b.lower,
                 openAbove ? limit : std::int64_t{upper} + b.upper);
}

inline IntegerInterval IntegerInterval::SubIntFromInt(const IntegerInterval& b) const {
  return AddIntToInt(b.mf_Neg());
}

inline IntegerInterval IntegerInterval::AddNumToInt(long d) const { return AddIntToInt({d, d}); }

inline IntegerInterval IntegerInterval::subNumFromInt(long d) const {
  return SubIntFromInt({d, d});
}

inline IntegerInterval IntegerInterval::mf_Neg() const {
  return IsEmpty() ? Empty() : Clamped(-std::int64_t{upper}, -std::int64_t{lower});
}

inline IntegerInterval IntegerInterval::mf_Abs() const {
  if (IsEmpty()) return Empty();
  const std::int64_t low = lower, high = upper;
  return Clamped(std::max({low, -high, std::int64_t{0}}), std::max(-low, high));
}

inline IntegerInterval IntegerInterval::mf_Min(const IntegerInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  return Clamped(std::min<long>(lower, b.lower), std::min<long>(upper, b.upper));
}

inline IntegerInterval IntegerInterval::mf_Max(const IntegerInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  return Clamped(std::max<long>(lower, b.lower), std::max<long>(upper, b.upper));
}

inline IntegerInterval IntegerInterval::mf_Union(const IntegerInterval& b) const {
  if (IsEmpty()) return b;
  if (b.IsEmpty()) return *this;
  return {std::min<long>(lower, b.lower), std::max<long>(upper, b.upper)};
}

inline int SubdefInt::SDIntersect(const SubdefInt& other) {
  const int changed = Intersect(other);
  if (IsEmpty()) SDRaiseError();
  return changed;
}

#endif
