#ifndef ZULTAV_NUMBERS_DETAIL_REAL_MODULO_H
#define ZULTAV_NUMBERS_DETAIL_REAL_MODULO_H

#include "framework/intervals/SubdefReal.h"
#include "numbers/Export.h"

namespace zultav::detail {

// Remainders r = x mod m of truncated division, as std::fmod has them: r has the sign of x, and
// |r| < |m|. Every result is an outward rounded enclosure.

/// part := set ∩ [-sMaxValue, -1e-14], [0, 0], [0, sMaxValue]. Answers whether it holds anything.
/// Negative numbers nearer to zero belong to no part.
ZULTAV_NUMBERS_API bool GetMinusPart(const SubdefReal& set, SubdefReal& part);
ZULTAV_NUMBERS_API bool GetZeroPart(const SubdefReal& set, SubdefReal& part);
ZULTAV_NUMBERS_API bool GetPlusPart(const SubdefReal& set, SubdefReal& part);

/// Hull of `compute(part)`, a set, over the parts of `set`, in that order. A set that is not empty
/// but has no part is itself the part. (Where others remain, constraints see to the numbers that
/// are in no part.)
template <class Compute>
auto HullOfParts(const SubdefReal& set, Compute compute) {
  using PartOf = bool (*)(const SubdefReal&, SubdefReal&);
  constexpr PartOf kParts[] = {GetMinusPart, GetPlusPart, GetZeroPart};
  SubdefReal part;
  decltype(compute(part)) hull(1, -1);
  bool isNothing = true;
  for (const PartOf getPart : kParts) {
    if (!getPart(set, part)) continue;
    isNothing = false;
    hull = hull.mf_Union(compute(part));
  }
  return isNothing && !set.IsEmpty() ? compute(set) : hull;
}

/// result := hull of `set` and `value`.
ZULTAV_NUMBERS_API void Insert(const SubdefReal& set, double value, SubdefReal& result);

/// Narrows `r` by the sign of `x` and the magnitudes of `x` and `m`; the bound |m| itself stays.
/// Answers 1 when `r` changed, and leaves the error flag up when it became empty.
ZULTAV_NUMBERS_API int CheckModValue(const SubdefReal& x, const SubdefReal& m, SubdefReal& r);

/// r := enclosure of the remainders of x >= 0 by m > 0. Exact quotients decide: when they are all
/// the same q, it is x - q*m, else [0, min(x.upper, m.upper)].
ZULTAV_NUMBERS_API void CalcPositiveModValue(const SubdefReal& x, const SubdefReal& m,
                                             SubdefReal& r);

/// Narrows `r` to the remainders of `x` by `m` for any signs. A divisor that may be zero tells
/// nothing beyond CheckModValue: 0. Otherwise as CheckModValue answers.
ZULTAV_NUMBERS_API int CalcAllModValue(const SubdefReal& x, const SubdefReal& m, SubdefReal& r);

}  // namespace zultav::detail

#endif
