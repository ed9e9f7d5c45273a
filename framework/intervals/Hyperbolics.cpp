// Hyperbolic functions and their inverses: at points, then over ranges.

#include <cmath>

#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/HyperbolicKernels.h"
#include "framework/intervals/detail/PointFunctions.h"
#include "framework/intervals/detail/RealLine.h"
#include "framework/intervals/detail/RoundingDecisions.h"

using namespace zultav::detail;

using elementary::AboveMagnitude;
using elementary::BelowMagnitude;
using elementary::kTiny;
using elementary::RoundOutward;
using zultav::RealRange;

namespace {

/// From here on exponentials overflow.
constexpr double kLargest = 711;
/// From here on the hyperbolic tangent is nearer to 1 than the double below it.
constexpr double kSaturated = 20;

RealRange Overflow(double x) { return {x == HUGE_VAL ? x : DBL_MAX, HUGE_VAL}; }

/// An odd function, tiny arguments apart: Magnitude encloses it for x > 0.
template <RealRange Magnitude(double), RealRange Tiny(double)>
RealRange Odd(double x) {
  if (std::fabs(x) < kTiny) return Tiny(x);
  return x < 0 ? -Magnitude(-x) : Magnitude(x);
}

RealRange SinhOfMagnitude(double x) {
  if (x > kLargest) return Overflow(x);
  return RoundOutward(elementary::Sinh(x), [x](double d) { return decide::Sinh(x, d); });
}
RealRange CoshOfMagnitude(double x) {
  if (x < kTiny) return {1, x > 0 ? rounding::NextUp(1) : 1};
  if (x > kLargest) return Overflow(x);
  return RoundOutward(elementary::Cosh(x), [x](double d) { return decide::Cosh(x, d); });
}
RealRange TanhOfMagnitude(double x) {
  if (x > kSaturated) return {x == HUGE_VAL ? 1 : rounding::NextDown(1), 1};
  return RoundOutward(elementary::Tanh(x), [x](double d) { return decide::Tanh(x, d); });
}
RealRange AsinhOfMagnitude(double x) {
  if (x == HUGE_VAL) return {x, x};
  return RoundOutward(elementary::Asinh(x), [x](double d) { return -decide::Sinh(d, x); });
}
RealRange AcoshAt(double x) {
  if (x == 1 || x == HUGE_VAL) return RealRange::Point(x == 1 ? 0 : x);
  return RoundOutward(elementary::Acosh(x), [x](double d) { return -decide::Cosh(d, x); });
}
RealRange AtanhOfMagnitude(double x) {
  if (x == 1) return {HUGE_VAL, HUGE_VAL};
  return RoundOutward(elementary::Atanh(x), [x](double d) { return -decide::Tanh(d, x); });
}

RealRange SinhAt(double x) { return Odd<SinhOfMagnitude, AboveMagnitude>(x); }
RealRange TanhAt(double x) { return Odd<TanhOfMagnitude, BelowMagnitude>(x); }
RealRange AsinhAt(double x) { return Odd<AsinhOfMagnitude, BelowMagnitude>(x); }
RealRange AtanhAt(double x) { return Odd<AtanhOfMagnitude, AboveMagnitude>(x); }

template <RealRange At(double)>
RealRange Increasing(const RealRange& x) {
  if (x.IsEmpty()) return RealRange::Empty();
  return real_line::Saturated<RealRange>(At(x.lower).lower, At(x.upper).upper);
}

}  // namespace

RealRange zultav::Sinh(const RealRange& x) { return Increasing<SinhAt>(x); }
RealRange zultav::Cosh(const RealRange& x) { return Increasing<CoshOfMagnitude>(Abs(x)); }
RealRange zultav::Tanh(const RealRange& x) { return Increasing<TanhAt>(x); }

RealRange zultav::Asinh(const RealRange& x) { return Increasing<AsinhAt>(x); }
RealRange zultav::Acosh(const RealRange& x) {
  return Increasing<AcoshAt>(Intersection(x, {1, HUGE_VAL}));
}
RealRange zultav::Atanh(const RealRange& x) {
  const RealRange part = Intersection(x, {-1, 1});
  // Both ends are poles, without a value.
  if (part.IsScalar() && std::fabs(part.lower) == 1) return RealRange::Empty();
  return Increasing<AtanhAt>(part);
}
