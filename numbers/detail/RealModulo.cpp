#include "numbers/detail/RealModulo.h"

#include <algorithm>
#include <cmath>

#include "framework/intervals/SubdefInt.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/detail/IntervalDispatch.h"
#include "numbers/detail/Narrowing.h"

namespace zultav::detail {

namespace {

/// Where the negative numbers end and the divisors that count as zero begin.
constexpr double kZeroWidth = 1e-14;

bool GetPart(const SubdefReal& set, double low, double high, SubdefReal& part) {
  part = set;
  part.Intersect(RealInterval(low, high));
  return !part.IsEmpty();
}

/// Floor of x / m for x >= 0, m > 0, decided by the exact remainder. Right up to 2^53.
double FloorOfQuotient(double x, double m) {
  const double whole = std::floor(x / m);
  return std::fma(-whole, m, x) < 0 ? whole - 1 : whole;
}

/// The sets that both inverses work with: quotients (x - r) / m brought to whole numbers, and
/// multiples x - r, r being narrowed by what x and m allow. Empty when there is no solution.
struct Division {
  Division(const SubdefReal& x, const SubdefReal& m, SubdefReal r) {
    CheckModValue(x, m, r);
    remainders = r;
    multiples = x.SubIntFromInt(r);
    quotients = multiples.DivIntByInt(m);
    quotients.SDIntersect(SubdefInt(quotients));
  }

  SubdefReal remainders;
  SubdefReal multiples;
  SubdefReal quotients;
};

}  // namespace

bool GetMinusPart(const SubdefReal& set, SubdefReal& part) {
  return GetPart(set, -SubdefReal::sMaxValue, -kZeroWidth, part);
}

bool GetZeroPart(const SubdefReal& set, SubdefReal& part) { return GetPart(set, 0, 0, part); }

bool GetPlusPart(const SubdefReal& set, SubdefReal& part) {
  return GetPart(set, 0, SubdefReal::sMaxValue, part);
}

void Insert(const SubdefReal& set, double value, SubdefReal& result) {
  result = set.mf_Union({value, value});
}

int CheckModValue(const SubdefReal& x, const SubdefReal& m, SubdefReal& r) {
  const double magnitude = std::max(std::fabs(m.lower), std::fabs(m.upper));
  return r.SDIntersect(SubdefReal(x.lower < 0 ? std::max(x.lower, -magnitude) : 0,
                                  x.upper > 0 ? std::min(x.upper, magnitude) : 0));
}

void CalcPositiveModValue(const SubdefReal& x, const SubdefReal& m, SubdefReal& r) {
  const SubdefReal range(0, std::min(x.upper, m.upper));
  const double quotient = FloorOfQuotient(x.lower, m.upper);
  const bool isOne = x.upper < SubdefReal::sMaxValue &&
                     quotient < static_cast<double>(SubdefInt::sMaxValue) &&
                     quotient == FloorOfQuotient(x.upper, m.lower);
  if (!isOne) {
    Insert(SubdefReal(0, 0), range.upper, r);
    return;
  }
  r = x.SubIntFromInt(m.MultIntByInt({quotient, quotient}));
  r.Intersect(range);
}

int CalcAllModValue(const SubdefReal& x, const SubdefReal& m, SubdefReal& r) {
  if (m.lower <= -kZeroWidth && m.upper >= kZeroWidth) return 0;
  const RealInterval divisor = m.upper < kZeroWidth ? m.mf_Neg() : RealInterval(m);
  if (!(divisor.lower > 0)) return 0;
  return r.SDIntersect(HullOfParts(x, [&](const SubdefReal& part) -> SubdefReal {
    SubdefReal remainders;
    if (part.upper < 0) {
      CalcPositiveModValue(part.mf_Neg(), divisor, remainders);
      return remainders.mf_Neg();
    }
    CalcPositiveModValue(part, divisor, remainders);
    return remainders;
  }));
}

}  // namespace zultav::detail

using namespace zultav::detail;

int ZULTavIntervalReal::CalcModValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b) {
  return Narrow(
      mSet,
      [](SubdefReal r, const SubdefReal& x, const SubdefReal& m) {
        CheckModValue(x, m, r);
        if (!SDCheckError()) CalcAllModValue(x, m, r);
        return r;
      },
      mSet, a.mSet, b.mSet);
}

int ZULTavIntervalReal::CalcFirstInverseModValue(ZULTavIntervalReal& a,
                                                 const ZULTavIntervalReal& b) const {
  return Narrow(
      a.mSet,
      [](const SubdefReal& x, const SubdefReal& m, const SubdefReal& r) {
        const Division division(x, m, r);
        return division.quotients.MultIntByInt(m).AddIntToInt(division.remainders);
      },
      a.mSet, b.mSet, mSet);
}

int ZULTavIntervalReal::CalcSecondInverseModValue(const ZULTavIntervalReal& a,
                                                  ZULTavIntervalReal& b) const {
  return Narrow(
      b.mSet,
      [](const SubdefReal& x, const SubdefReal& m, const SubdefReal& r) -> RealInterval {
        const Division division(x, m, r);
        // The quotient 0 allows any divisor beyond the dividend.
        if (division.quotients.Contains(0)) return m;
        return division.multiples.DivIntByInt(division.quotients);
      },
      a.mSet, b.mSet, mSet);
}
