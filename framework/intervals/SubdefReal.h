#ifndef ZULTAV_INTERVALS_SUBDEF_REAL_H
#define ZULTAV_INTERVALS_SUBDEF_REAL_H

#include "framework/intervals/RealInterval.h"
#include "framework/intervals/SubIntBase.h"

class SubdefInt;

/// A real interval that narrows: SDIntersect raises the error flag when nothing remains.
class ZULTAV_INTERVALS_API SubdefReal : public RealInterval {
 public:
  /// The whole line.
  SubdefReal();
  constexpr SubdefReal(double low, double high) : RealInterval(low, high) {}
  constexpr SubdefReal(const RealInterval& set) : RealInterval(set.lower, set.upper) {}

  /// Intersection in place. Answers 1 exactly when a bound changed; raises the error flag when
  /// the result is empty.
  int SDIntersect(const SubdefReal& other);
  /// As above with the hull of an integer set, whose sides at ±SubdefInt::sMaxValue are infinite.
  int SDIntersect(const SubdefInt& other);
};

/// The part of x whose absolute value lies in z.
ZULTAV_INTERVALS_API SubdefReal InverseAbs(const SubdefReal& z, const SubdefReal& x);
/// The x with min(x, y) (max(x, y)) in z.
ZULTAV_INTERVALS_API SubdefReal InverseMin(const SubdefReal& z, const SubdefReal& y);
ZULTAV_INTERVALS_API SubdefReal InverseMax(const SubdefReal& z, const SubdefReal& y);

#endif
