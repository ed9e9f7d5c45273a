#ifndef ZULTAV_NUMBERS_DETAIL_INTEGER_MODULO_H
#define ZULTAV_NUMBERS_DETAIL_INTEGER_MODULO_H

#include "framework/intervals/SubdefInt.h"
#include "numbers/Export.h"

namespace zultav::detail {

// Remainders r = a mod b of truncated division: r has the sign of a, and |r| < |b|. Bounds at
// ±SubdefInt::sMaxValue are plain numbers here.

/// part := the negative (zero, positive) values of `set`. Answers whether there are any.
ZULTAV_NUMBERS_API bool GetMinusPart(const SubdefInt& set, SubdefInt& part);
ZULTAV_NUMBERS_API bool GetZeroPart(const SubdefInt& set, SubdefInt& part);
ZULTAV_NUMBERS_API bool GetPlusPart(const SubdefInt& set, SubdefInt& part);

/// Widens `hull` to hold `value`. Bit 0 of the answer: the hull reaches the lower end of `limits`;
/// bit 1: the upper end. 3 means that widening further changes no intersection with `limits`.
ZULTAV_NUMBERS_API int Insert(SubdefInt& hull, long value, const SubdefInt& limits);

/// Narrows `r` to the remainders of the non-negative values of `a` by those of `b`; [0, -1] when
/// there are none. The error flag is down afterwards.
///
/// A positive divisor gives the upper end exactly when `r` leaves room, but divisors are tried
/// from the largest one only until no smaller one can raise that end: smaller remainders of the
/// divisors left out are lost. A divisor that may be zero gives the bounds of CheckModValue.
ZULTAV_NUMBERS_API void CalcPositiveModValue(const SubdefInt& a, const SubdefInt& b, SubdefInt& r);

/// Narrows `r` by the sign of `a` and the magnitudes of `a` and `b`: cheap and sound, b = 0 having
/// no remainder but 0 mod 0 = 0.
///
/// @pre    The error flag is down.
/// @return the error flag, left up when `r` became empty.
ZULTAV_NUMBERS_API int CheckModValue(const SubdefInt& a, const SubdefInt& b, SubdefInt& r);

/// Narrows `r` to remainders of `a` by `b` for any signs: CheckModValue, then, unless `b` holds
/// zero, CalcPositiveModValue on the parts of `a` of one sign.
///
/// @pre    The error flag is down.
/// @return 1 when CheckModValue emptied `r`, 0 when `b` holds zero, else whether the last
///         intersection changed `r`. The error flag is left up when `r` became empty.
ZULTAV_NUMBERS_API int CalcAllModValue(const SubdefInt& a, const SubdefInt& b, SubdefInt& r);

}  // namespace zultav::detail

#endif
