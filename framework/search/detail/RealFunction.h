#ifndef ZULTAV_SEARCH_DETAIL_REAL_FUNCTION_H
#define ZULTAV_SEARCH_DETAIL_REAL_FUNCTION_H

#include "framework/intervals/SubdefReal.h"
#include "framework/search/detail/RealSystem.h"

namespace zultav::detail {

// The functions of RealSystem on intervals. Unary ones ignore y. Every result encloses all true
// values; the error flag may be up afterwards.

/// All function(x, y). Empty when the function is defined nowhere.
SubdefReal Evaluate(RealSystem::Function function, const SubdefReal& x, const SubdefReal& y);

/// Narrows x and y to what may have function(x, y) in z. False when nothing has.
bool Project(RealSystem::Function function, const SubdefReal& z, SubdefReal& x, SubdefReal& y);

/// Whether Project may narrow arguments even where z holds all values of the function.
bool IsPartial(RealSystem::Function function);

/// Whether the function is defined and continuous for all arguments. Poles show themselves by
/// values that are not finite.
bool IsContinuous(RealSystem::Function function, const SubdefReal& x, const SubdefReal& y);
/// Whether x^y is.
bool IsPowerContinuous(const SubdefReal& x, const SubdefReal& y);

/// The one whole number to which all quotients are truncated; false when there are several.
bool TruncatedQuotient(const SubdefReal& x, const SubdefReal& y, double& whole);

/// The hull of the t in x with t * y in z for some y, as part of x.
RealInterval QuotientsWithin(const RealInterval& x, const RealInterval& z, const RealInterval& y);

inline bool IsFinite(const RealInterval& x) {
  return x.lower > -SubdefReal::sMaxValue && x.upper < SubdefReal::sMaxValue && !x.IsEmpty();
}

/// Whether an interval has lost this share of its width; an unbounded one, an infinite side or this
/// share of a bound.
bool IsMuchNarrower(const RealInterval& now, const RealInterval& before, double share);

}  // namespace zultav::detail

#endif
