#include "framework/intervals/RealRange.h"

#include <algorithm>
#include <cmath>

namespace zultav {

namespace {

constexpr RealRange kNonNegative(0, HUGE_VAL);

/// An increasing rounding to whole numbers.
template <double (*At)(double)>
RealRange RoundedTo(const RealRange& x) {
  return x.IsEmpty() ? x : RealRange(At(x.lower) + 0.0, At(x.upper) + 0.0);
}

double AtFloor(double x) { return std::floor(x); }
double AtCeil(double x) { return std::ceil(x); }
double AtRound(double x) { return std::round(x); }

/// The part of x that may be rounded to a whole number of z, when what is rounded to n lies between
/// n + low and n + high.
RealRange InverseRounding(const RealRange& z, const RealRange& x, double low, double high) {
  const RealRange whole(std::ceil(z.lower), std::floor(z.upper));
  return Intersection(whole + RealRange(low, high), x);
}

// Remainders have the sign of the dividend, whatever that of the divisor. So all formulas are for
// dividends x >= 0, remainders z >= 0 and magnitudes y >= 0 of divisors.

/// The whole number q with q y <= x < (q + 1) y; rounded beyond 2^50.
double WholeQuotient(double x, double y) { return std::nearbyint((x - std::fmod(x, y)) / y); }
constexpr double kGreatestWhole = 0x1p50;

RealRange PositiveRemainder(const RealRange& x, const RealRange& y) {
  if (x.IsEmpty() || y.IsEmpty() || y.upper == 0) return RealRange::Empty();
  if (x.upper < y.lower) return x;
  if (x.IsBounded() && y.lower > 0) {
    const double first = WholeQuotient(x.lower, y.upper);
    const bool isOne = first < kGreatestWhole && first == WholeQuotient(x.upper, y.lower);
    if (isOne || (x.IsScalar() && y.IsScalar()))
      return {std::fmod(x.lower, y.upper), std::fmod(x.upper, y.lower)};
  }
  return {0, std::min(x.upper, y.upper)};
}

RealRange PositiveDividend(const RealRange& z, const RealRange& x, const RealRange& y) {
  if (z.IsEmpty() || y.IsEmpty() || z.lower >= y.upper) return RealRange::Empty();
  RealRange part = Intersection(x, {z.lower, HUGE_VAL});
  if (!part.IsBounded() || y.lower == 0) return part;
  const double first = WholeQuotient(part.lower, y.upper);
  const double last = WholeQuotient(part.upper, y.lower);
  if (last >= kGreatestWhole) return part;
  const RealRange remainders = Intersection(z, {0, y.upper});
  const auto withQuotient = [&](double q) {
    return Intersection(RealRange::Point(q) * y + remainders, part);
  };
  RealRange low = withQuotient(first);
  if (low.IsEmpty()) low = withQuotient(first + 1);
  if (low.IsEmpty()) return low;
  RealRange high = withQuotient(last);
  if (high.IsEmpty() && last > 0) high = withQuotient(last - 1);
  return {low.lower, high.IsEmpty() ? part.upper : high.upper};
}

RealRange PositiveDivisor(const RealRange& z, const RealRange& x, const RealRange& y) {
  if (z.IsEmpty() || x.IsEmpty() || y.IsEmpty()) return RealRange::Empty();
  const RealRange possible = Intersection(y, {z.lower, HUGE_VAL});
  const RealRange same = Intersection(z, x);  // with the quotient 0, the divisor is greater
  const RealRange multiple = Intersection(x - z, kNonNegative);
  return Hull(same.IsEmpty() ? same : Intersection(possible, {same.lower, HUGE_VAL}),
              Quotients(possible, multiple, Intersection(Floor(x / possible), {1, HUGE_VAL})));
}

RealRange NonNegative(const RealRange& x) { return Intersection(x, kNonNegative); }

}  // namespace

double RealRange::GetMiddle() const {
  if (IsBounded()) return std::clamp(0.5 * lower + 0.5 * upper, lower, upper);
  const auto beyond = [](double bound) {
    return std::min(bound + std::max(1.0, std::fabs(bound)), DBL_MAX);
  };
  if (lower >= -DBL_MAX) return beyond(lower);
  return upper <= DBL_MAX ? -beyond(-upper) : 0;
}

RealRange Floor(const RealRange& x) { return RoundedTo<AtFloor>(x); }
RealRange Ceil(const RealRange& x) { return RoundedTo<AtCeil>(x); }
RealRange Round(const RealRange& x) { return RoundedTo<AtRound>(x); }

RealRange InverseFloor(const RealRange& z, const RealRange& x) {
  return InverseRounding(z, x, 0, 1);
}
RealRange InverseCeil(const RealRange& z, const RealRange& x) {
  return InverseRounding(z, x, -1, 0);
}
RealRange InverseRound(const RealRange& z, const RealRange& x) {
  return InverseRounding(z, x, -0.5, 0.5);
}

RealRange InverseAbs(const RealRange& z, const RealRange& x) {
  const RealRange positive = Intersection(z, kNonNegative);
  return Hull(Intersection(-positive, x), Intersection(positive, x));
}

RealRange InverseMin(const RealRange& z, const RealRange& y) {
  if (z.IsEmpty() || y.IsEmpty() || y.upper < z.lower) return RealRange::Empty();
  if (y.lower > z.upper) return z;
  return {z.lower, HUGE_VAL};
}

RealRange InverseMax(const RealRange& z, const RealRange& y) { return -InverseMin(-z, -y); }

bool TruncatedQuotient(const RealRange& x, const RealRange& y, double& whole) {
  if (y.Contains(0)) return false;
  const RealRange quotient = x / y;
  whole = std::trunc(quotient.lower);
  // Truncation is continuous inside of (-1, 1) and between other neighbours.
  return quotient.IsBounded() && whole == std::trunc(quotient.upper) &&
         (whole == 0 || (quotient.lower != whole && quotient.upper != whole));
}

RealRange Remainder(const RealRange& x, const RealRange& y) {
  const RealRange magnitude = Abs(y);
  return Hull(-PositiveRemainder(NonNegative(-x), magnitude),
              PositiveRemainder(NonNegative(x), magnitude));
}

RealRange InverseRemainder(const RealRange& z, const RealRange& x, const RealRange& y) {
  const RealRange magnitude = Abs(y);
  return Hull(-PositiveDividend(NonNegative(-z), NonNegative(-x), magnitude),
              PositiveDividend(NonNegative(z), NonNegative(x), magnitude));
}

RealRange InverseRemainderDivisor(const RealRange& z, const RealRange& x, const RealRange& y) {
  const RealRange magnitude = Abs(y);
  const RealRange result = Hull(PositiveDivisor(NonNegative(-z), NonNegative(-x), magnitude),
                                PositiveDivisor(NonNegative(z), NonNegative(x), magnitude));
  return InverseAbs(result, y);
}

}  // namespace zultav
