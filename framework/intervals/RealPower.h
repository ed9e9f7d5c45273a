#ifndef ZULTAV_INTERVALS_REAL_POWER_H
#define ZULTAV_INTERVALS_REAL_POWER_H

#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/SubdefReal.h"

// The power family on real sets: x base, y real exponent, n integer exponents, z result.
// Every empty result raises the error flag. The powers and roots at the corners of the sets are
// rounded to the tightest enclosure, as in RealFunctions.h; over more than 64 exponents with a
// known result the hull is taken over all even ones and all odd ones together.

/// Hull of (x ∩ [0, ∞))^y and of (x ∩ (-∞, 0))^k for the integers k of y. 0^y is 0 for y > 0, 1
/// for y = 0, nothing for y < 0.
ZULTAV_INTERVALS_API SubdefReal pow(const SubdefReal& x, const SubdefReal& y);
ZULTAV_INTERVALS_API SubdefReal pow(const SubdefReal& x, double y);
ZULTAV_INTERVALS_API SubdefReal pow(const SubdefReal& x, const SubIntBase& n);
/// The part of z that is x^k for a k of n.
ZULTAV_INTERVALS_API SubdefReal pow(const SubdefReal& x, const SubdefReal& z, const SubdefInt& n);
ZULTAV_INTERVALS_API SubdefReal pow(const SubdefReal& x, double z, const SubdefInt& n);

/// Hull of the x with x^y in z, both signs of x included where y allows them.
ZULTAV_INTERVALS_API SubdefReal base(const SubdefReal& z, const SubdefReal& y);
ZULTAV_INTERVALS_API SubdefReal base(const SubdefReal& z, double y);
/// The part of x with x^k in z for a k of n.
ZULTAV_INTERVALS_API SubdefReal base(const SubdefReal& z, const SubdefReal& x, const SubdefInt& n);
ZULTAV_INTERVALS_API SubdefReal base(const SubdefReal& z, const SubdefReal& x, const SubIntBase& n);

/// The part of n with x^k in z.
ZULTAV_INTERVALS_API SubdefInt exponent(const SubdefReal& z, const SubdefReal& x,
                                        const SubdefInt& n);
ZULTAV_INTERVALS_API SubdefInt exponent(const SubdefReal& z, double x, const SubdefInt& n);

#endif
