#include "numbers/detail/IntegerModulo.h"

#include <algorithm>

#include "framework/intervals/IntervalControl.h"

namespace zultav::detail {

namespace {

constexpr int kReachesLower = 1;
constexpr int kReachesUpper = 2;

bool CutPart(const SubdefInt& set, const SubdefInt& range, SubdefInt& part) {
  part = range;
  part.Intersect(set);
  return !part.IsEmpty();
}

/// Widens `hull` by the remainders of [a.lower, a.upper] by divisors of [b.lower, b.upper], from
/// the largest divisor down, until it reaches both ends of `limits` or no divisor that is left
/// has a remainder above it.
void InsertRemainders(const SubdefInt& a, const SubdefInt& b, const SubdefInt& limits,
                      SubdefInt& hull) {
  const long last = b.lower;
  int reached = 0;
  for (long divisor = b.upper;;) {
    const long lowQuotient = SubIntBase::base_div(a.lower, divisor);
    const long highQuotient = SubIntBase::base_div(a.upper, divisor);
    if (lowQuotient == highQuotient) {
      reached |= Insert(hull, a.lower - lowQuotient * divisor, limits);
      reached |= Insert(hull, a.upper - lowQuotient * divisor, limits);
    } else {
      reached |= Insert(hull, 0, limits);
      if (SubIntBase::base_mult(divisor, highQuotient) > a.lower)
        reached |= Insert(hull, divisor - 1, limits) | kReachesUpper;
    }
    if (reached == (kReachesLower | kReachesUpper)) return;
    const bool wasLast = divisor == last;
    // While the quotient stays the same, remainders grow as the divisor shrinks: the next divisor
    // of interest is the smallest one with this quotient.
    const long skip = SubIntBase::base_plus(
        SubIntBase::base_div(a.upper, SubIntBase::base_plus(lowQuotient, 1)), 2);
    divisor = std::min(divisor, skip);
    if (divisor - 1 <= hull.upper || wasLast) return;
    divisor = std::max(divisor - 1, last);
  }
}

}  // namespace

bool GetMinusPart(const SubdefInt& set, SubdefInt& part) {
  return CutPart(set, {-SubdefInt::sMaxValue, -1}, part);
}

bool GetZeroPart(const SubdefInt& set, SubdefInt& part) { return CutPart(set, {0, 0}, part); }

bool GetPlusPart(const SubdefInt& set, SubdefInt& part) {
  return CutPart(set, {1, SubdefInt::sMaxValue}, part);
}

int Insert(SubdefInt& hull, long value, const SubdefInt& limits) {
  if (value < hull.lower) hull.lower = value;
  if (hull.upper < value) hull.upper = value;
  return (hull.lower <= limits.lower ? kReachesLower : 0) |
         (hull.upper >= limits.upper ? kReachesUpper : 0);
}

void CalcPositiveModValue(const SubdefInt& a, const SubdefInt& b, SubdefInt& r) {
  const SDErrorScope errors;
  const SubdefInt dividend(std::max(long{a.lower}, 0L), a.upper);
  const SubdefInt divisor(std::max(long{b.lower}, 0L), b.upper);
  SubdefInt limits(0, dividend.upper < divisor.upper ? long{dividend.upper}
                                                     : SubIntBase::base_minus(divisor.upper, 1));
  limits.Intersect(r);
  if (dividend.IsEmpty() || divisor.IsEmpty() || limits.IsEmpty()) {
    r = SubdefInt(0, -1);
    return;
  }
  if (divisor.lower <= 0) {
    r.Intersect(limits);
    return;
  }
  SubdefInt hull = dividend.lower == 0 ? SubdefInt(0, 0) : SubdefInt::Empty();
  const long width = dividend.upper - dividend.lower;
  if (width >= divisor.lower) {
    // As many consecutive dividends leave every remainder of that divisor.
    hull = SubdefInt(0, width);
    hull.Intersect(limits);
  }
  if (width < divisor.upper) InsertRemainders(dividend, divisor, limits, hull);
  r.Intersect(limits);
  r.Intersect(hull);
}

int CheckModValue(const SubdefInt& a, const SubdefInt& b, SubdefInt& r) {
  long magnitude = b.upper;
  if (b.lower < 0) magnitude = b.upper <= 0 ? -b.lower : std::max(-b.lower, long{b.upper});
  const long lower = a.lower < 0 ? std::max(long{a.lower}, 1 - magnitude) : 0;
  const long upper = a.upper > 0 ? std::min(long{a.upper}, magnitude - 1) : 0;
  r.SDIntersect(SubdefInt(lower, upper));
  return SDCheckError();
}

int CalcAllModValue(const SubdefInt& a, const SubdefInt& b, SubdefInt& r) {
  if (CheckModValue(a, b, r)) return 1;
  if (b.Contains(0)) return 0;
  const SubdefInt divisor = b.lower > 0 ? b : SubdefInt(b.mf_Neg());
  SubdefInt hull = SubdefInt::Empty();
  SubdefInt part;
  if (GetMinusPart(a, part)) {
    SubdefInt mirrored = r.mf_Neg();
    CalcPositiveModValue(part.mf_Neg(), divisor, mirrored);
    hull = hull.mf_Union(mirrored.mf_Neg());
  }
  if (GetZeroPart(a, part)) hull = hull.mf_Union(SubdefInt(0, 0));
  if (GetPlusPart(a, part)) {
    SubdefInt positive = r;
    CalcPositiveModValue(part, divisor, positive);
    hull = hull.mf_Union(positive);
  }
  return r.SDIntersect(hull);
}

}  // namespace zultav::detail
