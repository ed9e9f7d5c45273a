#include "framework/intervals/IntegerInterval.h"

namespace {

using Wide = std::int64_t;

// An infinite side. Divided by any divisor it is still beyond every limit.
constexpr Wide kInfinite = Wide{1} << 62;

struct Range {
  Wide lower, upper;
  bool IsEmpty() const { return lower > upper; }
};

constexpr Range kNone = {1, 0};

Range Mirror(Range x) { return {-x.upper, -x.lower}; }

Range Hull(Range x, Range y) {
  if (x.IsEmpty()) return y;
  if (y.IsEmpty()) return x;
  return {std::min(x.lower, y.lower), std::max(x.upper, y.upper)};
}

Range Extended(const IntegerInterval& x) {
  const Wide limit = SubdefInt::sMaxValue;
  return {x.lower <= -limit ? -kInfinite : Wide{x.lower},
          x.upper >= limit ? kInfinite : Wide{x.upper}};
}

Wide CeilDiv(Wide x, Wide positive) { return x / positive + (x % positive > 0); }

// Hull of the quotients truncated toward zero, d >= 1. They grow with x, and they shrink toward
// zero as the divisor grows.
Range TruncatedQuotients(Range x, Range d) {
  return {x.lower / (x.lower < 0 ? d.lower : d.upper), x.upper / (x.upper < 0 ? d.upper : d.lower)};
}

// Hull of the q with q*d in x for a divisor of d, x >= 1 and d >= 1. From the rounded quotient of
// the bounds each end moves inward while it has no divisor; such a step jumps to the next q that
// a further divisor admits, so there are less than 2*sqrt(x.upper) of them. As long as q is not
// empty, d.upper is large enough for q.upper and d.lower small enough for q.lower: no step leaves
// d.
Range PositiveExactQuotients(Range x, Range d) {
  constexpr int kSteps = IntegerInterval::kMaxQuotientSteps;
  Range q = {CeilDiv(x.lower, d.upper), x.upper / d.lower};
  Wide divisor = d.lower;
  for (int step = 0; divisor * q.upper < x.lower && !q.IsEmpty() && step < kSteps; ++step) {
    const Wide largest = std::min(d.upper, x.upper / q.upper);
    if (largest * q.upper >= x.lower) break;
    divisor = largest + 1;
    q.upper = x.upper / divisor;
  }
  divisor = d.upper;
  for (int step = 0; divisor * q.lower > x.upper && !q.IsEmpty() && step < kSteps; ++step) {
    const Wide smallest = std::max(d.lower, CeilDiv(x.lower, q.lower));
    if (smallest * q.lower <= x.upper) break;
    divisor = smallest - 1;
    q.lower = CeilDiv(x.lower, divisor);
  }
  return q;
}

// As above for any x; where x contains zero both ends are multiples of the smallest divisor.
Range ExactQuotients(Range x, Range d) {
  if (x.lower > 0) return PositiveExactQuotients(x, d);
  if (x.upper < 0) return Mirror(PositiveExactQuotients(Mirror(x), d));
  return {x.lower / d.lower, x.upper / d.lower};
}

}  // namespace

IntegerInterval IntegerInterval::MultIntByInt(const IntegerInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  // A bound at the limit times any non-zero integer is at or beyond the limit, times zero it is
  // zero: infinite sides need no cases.
  const Wide ll = Wide{lower} * b.lower, lu = Wide{lower} * b.upper;
  const Wide ul = Wide{upper} * b.lower, uu = Wide{upper} * b.upper;
  return Clamped(std::min({ll, lu, ul, uu}), std::max({ll, lu, ul, uu}));
}

IntegerInterval IntegerInterval::DivIntByInt(const IntegerInterval& b,
                                             const SubIntBase& rounding) const {
  if (IsEmpty() || b.IsEmpty()) {
    SDRaiseError();
    return Empty();
  }
  if (Contains(0) && b.Contains(0)) return Whole();
  const Range dividend = Extended(*this), divisor = Extended(b);
  const auto quotients = [&](Range d) {
    return rounding == 0 ? ExactQuotients(dividend, d) : TruncatedQuotients(dividend, d);
  };
  Range hull = kNone;
  if (divisor.upper > 0) {
    hull = quotients({std::max<Wide>(divisor.lower, 1), divisor.upper});
  }
  if (divisor.lower < 0) {
    const Range magnitudes = {std::max<Wide>(-divisor.upper, 1), -divisor.lower};
    hull = Hull(hull, Mirror(quotients(magnitudes)));
  }
  if (hull.IsEmpty()) {
    SDRaiseError();
    return Empty();
  }
  return Clamped(hull.lower, hull.upper);
}

IntegerInterval IntegerInterval::DivIntByNum(const SubIntBase& d,
                                             const SubIntBase& rounding) const {
  return DivIntByInt({d, d}, rounding);
}
