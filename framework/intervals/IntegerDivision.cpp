// Truncated quotients and greatest common divisors of integers, and their projections.

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "framework/intervals/IntegerRange.h"

namespace zultav {

namespace {

using detail::integer_range::Product;
using detail::integer_range::Sum;

constexpr std::int64_t kMax = IntegerRange::kMax;
constexpr IntegerRange kNatural = {0, kMax};
constexpr IntegerRange kPositive = {1, kMax};

IntegerRange MirroredIf(bool mirror, const IntegerRange& x) { return mirror ? -x : x; }

/// Calls use(n, d, mirrorX, mirrorY) for the magnitudes of dividends and divisors of equal signs:
/// quotients are mirrored where one of the two is.
template <class Use>
void ForEachSign(const IntegerRange& x, const IntegerRange& y, Use use) {
  for (const bool mirrorX : {false, true}) {
    const IntegerRange n = Intersection(MirroredIf(mirrorX, x), mirrorX ? kPositive : kNatural);
    for (const bool mirrorY : {false, true}) {
      const IntegerRange d = Intersection(MirroredIf(mirrorY, y), kPositive);
      if (!n.IsEmpty() && !d.IsEmpty()) use(n, d, mirrorX, mirrorY);
    }
  }
}

/// Quotients of a dividend from 0 on by a positive divisor; an endless bound stays one.
std::int64_t QuotientBelow(std::int64_t n, std::int64_t d) { return d == kMax ? 0 : n / d; }
std::int64_t QuotientAbove(std::int64_t n, std::int64_t d) { return n == kMax ? kMax : n / d; }

/// The greatest dividend from 0 on with the quotient q by d.
std::int64_t GreatestDividend(std::int64_t q, std::int64_t d) {
  const std::int64_t next = q == kMax || d == kMax ? kMax : Product(q + 1, d);
  return next == kMax ? kMax : next - 1;
}

/// The magnitudes m > 0 of `within` with gcd(m, y) in g; for one y known, as far as the candidates
/// are few.
IntegerRange PositiveGcdArguments(const IntegerRange& g, IntegerRange within,
                                  const IntegerRange& y) {
  within.Intersect({std::max<std::int64_t>(g.lower, 1), kMax});
  const std::int64_t step = g.IsScalar() ? g.lower : 1;  // all are multiples of it
  if (!within.IsEmpty() && step > 1) {
    const std::int64_t beyond = within.lower % step;
    if (beyond != 0) within.lower = Sum(within.lower - beyond, step);
    if (within.upper != kMax) within.upper -= within.upper % step;
  }
  if (!y.IsScalar()) return within;
  const auto fits = [&](std::int64_t m) { return m == kMax || g.Contains(std::gcd(m, y.lower)); };
  for (int i = 0; i < kMaxQuotientSteps && !within.IsEmpty() && !fits(within.lower); ++i)
    within.lower = Sum(within.lower, step);
  for (int i = 0; i < kMaxQuotientSteps && !within.IsEmpty() && !fits(within.upper); ++i)
    within.upper -= step;
  return within;
}

}  // namespace

IntegerRange Div(const IntegerRange& x, const IntegerRange& y) {
  IntegerRange hull = IntegerRange::Empty();
  ForEachSign(x, y, [&](const IntegerRange& n, const IntegerRange& d, bool mirrorX, bool mirrorY) {
    const IntegerRange quotients(QuotientBelow(n.lower, d.upper), QuotientAbove(n.upper, d.lower));
    hull = Hull(hull, MirroredIf(mirrorX != mirrorY, quotients));
  });
  return hull;
}

IntegerRange DivDividends(const IntegerRange& q, const IntegerRange& x, const IntegerRange& y) {
  IntegerRange hull = IntegerRange::Empty();
  ForEachSign(x, y, [&](const IntegerRange& n, const IntegerRange& d, bool mirrorX, bool mirrorY) {
    const IntegerRange natural = Intersection(MirroredIf(mirrorX != mirrorY, q), kNatural);
    if (natural.IsEmpty()) return;
    const IntegerRange dividends(Product(natural.lower, d.lower),
                                 GreatestDividend(natural.upper, d.upper));
    hull = Hull(hull, MirroredIf(mirrorX, Intersection(n, dividends)));
  });
  return hull;
}

IntegerRange DivDivisors(const IntegerRange& q, const IntegerRange& x, const IntegerRange& y) {
  IntegerRange hull = IntegerRange::Empty();
  ForEachSign(x, y, [&](const IntegerRange& n, const IntegerRange& d, bool mirrorX, bool mirrorY) {
    const IntegerRange natural = Intersection(MirroredIf(mirrorX != mirrorY, q), kNatural);
    if (natural.IsEmpty()) return;
    const std::int64_t below = natural.upper == kMax ? 0 : n.lower / (natural.upper + 1);
    const IntegerRange divisors(Sum(below, 1),
                                natural.lower == 0 ? kMax : QuotientAbove(n.upper, natural.lower));
    hull = Hull(hull, MirroredIf(mirrorY, Intersection(d, divisors)));
  });
  return hull;
}

IntegerRange Gcd(const IntegerRange& x, const IntegerRange& y) {
  const IntegerRange m = Abs(x), n = Abs(y);
  if (m.IsEmpty() || n.IsEmpty()) return IntegerRange::Empty();
  if (m == IntegerRange(0, 0)) return n;
  if (n == IntegerRange(0, 0)) return m;
  if (m.IsScalar() && n.IsScalar()) return IntegerRange::Only(std::gcd(m.lower, n.lower));
  // What is not 0 has no divisor that is greater.
  if (m.lower > 0 && n.lower > 0) return {1, std::min(m.upper, n.upper)};
  if (m.lower > 0) return {1, m.upper};
  if (n.lower > 0) return {1, n.upper};
  return {0, std::max(m.upper, n.upper)};
}

IntegerRange GcdArguments(const IntegerRange& g, const IntegerRange& x, const IntegerRange& y) {
  const IntegerRange divisors = Intersection(g, kNatural), others = Abs(y);
  if (divisors.IsEmpty() || others.IsEmpty()) return IntegerRange::Empty();
  if (others == IntegerRange(0, 0)) return AbsArguments(divisors, x);
  IntegerRange hull = IntegerRange::Empty();
  if (x.Contains(0) && !Intersection(divisors, others).IsEmpty()) hull = {0, 0};
  for (const bool mirror : {false, true}) {
    const IntegerRange within = Intersection(MirroredIf(mirror, x), kPositive);
    if (within.IsEmpty() || divisors.upper == 0) continue;
    hull = Hull(hull, MirroredIf(mirror, PositiveGcdArguments(divisors, within, others)));
  }
  return Intersection(x, hull);
}

}  // namespace zultav
