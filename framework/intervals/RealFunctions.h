#ifndef ZULTAV_INTERVALS_REAL_FUNCTIONS_H
#define ZULTAV_INTERVALS_REAL_FUNCTIONS_H

#include "framework/intervals/SubdefReal.h"

// Elementary functions on real intervals. Every result is the tightest enclosure, exact where the
// result is exact and monotone with the argument: where double-double arithmetic leaves a rounding
// open, fixed-point arithmetic settles it. Where even that should not suffice, for a value within
// about 2^-180 of a double, a bound is one unit in the last place wider. An empty argument gives
// an empty result.

ZULTAV_INTERVALS_API SubdefReal exp(const SubdefReal& x);
/// Natural logarithm of the positive part of x; empty (flag up) when there is none.
ZULTAV_INTERVALS_API SubdefReal log(const SubdefReal& x);
/// Non-negative root of the non-negative part of x, tightest; empty when there is none.
ZULTAV_HOT SubdefReal sqrt(const SubdefReal& x) {
  SubdefReal root(0, 0);
  if (zultav::detail::packed::Sqrt(x, root)) [[likely]]
    return root;
  return zultav::detail::general_arithmetic::Sqrt(x);
}
/// Square, tightest.
ZULTAV_HOT SubdefReal sqr(const SubdefReal& x) {
  SubdefReal square(0, 0);
  if (zultav::detail::packed::Square(x, square)) [[likely]]
    return square;
  return zultav::detail::general_arithmetic::Square(x);
}
/// Radians. [-1, 1] for an unbounded or very wide x.
ZULTAV_INTERVALS_API SubdefReal sin(const SubdefReal& x);
ZULTAV_INTERVALS_API SubdefReal cos(const SubdefReal& x);
/// Whole line when a pole lies inside x or a bound is beyond 1e14.
ZULTAV_INTERVALS_API SubdefReal tan(const SubdefReal& x);
/// Arc tangent, principal branch.
ZULTAV_INTERVALS_API SubdefReal atan(const SubdefReal& x);

/// Hull of the part of x whose sine (cosine, tangent) lies in z; what of x lies outside the
/// trigonometric window (radians; else that of the process) is kept as it is. Empty: flag up.
ZULTAV_INTERVALS_API SubdefReal asin(const SubdefReal& z, const SubdefReal& x,
                                     const SubdefReal& window);
ZULTAV_INTERVALS_API SubdefReal acos(const SubdefReal& z, const SubdefReal& x,
                                     const SubdefReal& window);
ZULTAV_INTERVALS_API SubdefReal atan(const SubdefReal& z, const SubdefReal& x,
                                     const SubdefReal& window);
ZULTAV_INTERVALS_API SubdefReal asin(const SubdefReal& z, const SubdefReal& x);
ZULTAV_INTERVALS_API SubdefReal acos(const SubdefReal& z, const SubdefReal& x);
ZULTAV_INTERVALS_API SubdefReal atan(const SubdefReal& z, const SubdefReal& x);

#endif
