#include "framework/intervals/IntegerRange.h"

#include <array>
#include <cmath>

#include "framework/intervals/detail/Rounding.h"

namespace zultav {

namespace {

using detail::integer_range::Mirrored;
using Unsigned = std::uint64_t;

constexpr std::int64_t kMin = IntegerRange::kMin, kMax = IntegerRange::kMax;
constexpr IntegerRange kPositive = {1, kMax};
constexpr IntegerRange kNatural = {0, kMax};
constexpr IntegerRange kNegative = {kMin, -1};

/// The hull over both signs of x of a function known for `positive` ones; `mirrored` answers for
/// negative ones what the mirror image of the result is for the mirror image of x.
template <class Function>
IntegerRange ByMirror(const IntegerRange& x, const IntegerRange& positive, Function function) {
  const IntegerRange above = Intersection(x, positive);
  const IntegerRange below = Intersection(x, kNegative);
  IntegerRange hull = IntegerRange::Empty();
  if (!above.IsEmpty()) hull = function(above, false);
  if (!below.IsEmpty()) hull = Hull(hull, -function(-below, true));
  return hull;
}

IntegerRange MirroredIf(bool mirror, const IntegerRange& x) { return mirror ? -x : x; }

// Quotients -----------------------------------------------------------------------------------

std::int64_t CeilDiv(std::int64_t x, std::int64_t positive) {
  return x / positive + (x % positive > 0);
}

// All of z, x and y are positive. From the rounded quotient of the bounds each end moves inward
// while it has no factor in y; such a step jumps to the next x that a further factor admits. As
// long as x is not empty, y.upper is large enough for x.upper and y.lower small enough for x.lower,
// so that factors are missed on one side only.
IntegerRange PositiveQuotients(IntegerRange x, const IntegerRange& z, IntegerRange y) {
  x.lower = std::max(x.lower, CeilDiv(z.lower, y.upper));
  if (z.upper == kMax) return x;
  x.upper = std::min(x.upper, z.upper / y.lower);
  y.upper = std::min(y.upper, z.upper);
  for (int step = 0; !x.IsEmpty() && step < kMaxQuotientSteps; ++step) {
    const std::int64_t factor = z.upper / x.upper;
    if (CeilDiv(z.lower, x.upper) <= std::min(factor, y.upper)) break;
    if (factor >= y.upper) return IntegerRange::Empty();
    x.upper = z.upper / (factor + 1);
  }
  for (int step = 0; !x.IsEmpty() && step < kMaxQuotientSteps; ++step) {
    const std::int64_t factor = CeilDiv(z.lower, x.lower);
    if (std::max(factor, y.lower) <= z.upper / x.lower) break;
    if (factor <= y.lower) return IntegerRange::Empty();
    x.lower = CeilDiv(z.lower, factor - 1);
  }
  return x;
}

// As above for any z and x: where z holds zero, both ends are made by the smallest factor.
IntegerRange QuotientsByPositive(const IntegerRange& x, const IntegerRange& z,
                                 const IntegerRange& y) {
  if (z.Contains(0)) {
    const std::int64_t low = z.lower == kMin ? kMin : z.lower / y.lower;
    const std::int64_t high = z.upper == kMax ? kMax : z.upper / y.lower;
    return Intersection(x, {low, high});
  }
  const bool mirror = z.upper < 0;
  const IntegerRange positive = Intersection(MirroredIf(mirror, x), kPositive);
  if (positive.IsEmpty()) return positive;
  return MirroredIf(mirror, PositiveQuotients(positive, MirroredIf(mirror, z), y));
}

// Powers --------------------------------------------------------------------------------------

// From here on every power of a base beyond ±1 is beyond 64 bits, so that only the sign of the base
// and the parity of the exponent tell powers apart, as they do for exponents below zero, where the
// base must be 1 or -1.
constexpr std::int64_t kLargeExponent = 64;

bool IsOdd(std::int64_t exponent) { return exponent % 2 != 0; }

/// The magnitude of a bound.
Unsigned Magnitude(std::int64_t bound) {
  return bound < 0 ? Unsigned{0} - static_cast<Unsigned>(bound) : static_cast<Unsigned>(bound);
}

/// m^e for e >= 1; the largest number instead of any power that does not fit.
Unsigned PowerOf(Unsigned m, std::int64_t e) {
  constexpr Unsigned huge = std::numeric_limits<Unsigned>::max();
  Unsigned power = 1;
  if (m <= 1) return m;
  for (; e > 0; --e) {
    if (__builtin_mul_overflow(power, m, &power)) return huge;
  }
  return power;
}

/// The largest m with m^e <= v, v <= 2^63, e >= 1. Its estimate in floating point is only a place
/// to start; the integers decide.
Unsigned FloorRoot(Unsigned v, std::int64_t e) {
  if (e == 1 || v <= 1) return v;
  if (e >= kLargeExponent) return 1;
  const auto value = static_cast<double>(v);
  const double estimate = e == 2 ? std::sqrt(value) : std::pow(value, 1.0 / static_cast<double>(e));
  auto root = static_cast<Unsigned>(estimate);
  while (PowerOf(root, e) > v) --root;
  while (PowerOf(root + 1, e) <= v) ++root;
  return root;
}

/// The smallest m with m^e >= v.
Unsigned CeilRoot(Unsigned v, std::int64_t e) { return v == 0 ? 0 : FloorRoot(v - 1, e) + 1; }

/// The bound of a magnitude, pushed to the end where it does not fit.
std::int64_t BoundOf(Unsigned magnitude, bool negative) {
  if (magnitude > static_cast<Unsigned>(kMax)) return negative ? kMin : kMax;
  const auto bound = static_cast<std::int64_t>(magnitude);
  return negative ? -bound : bound;
}

/// Hull of the integers among x^e. Endless sides do not fit anyhow.
IntegerRange Powers(const IntegerRange& x, std::int64_t e) {
  if (e == 0) return {1, 1};
  if (e == 1) return x;
  if (e < 0) {
    const bool one = x.Contains(1), minusOne = x.Contains(-1);
    if (!one && !minusOne) return IntegerRange::Empty();
    if (!IsOdd(e)) return {1, 1};
    return {minusOne ? -1 : 1, one ? 1 : -1};
  }
  const auto bound = [&](std::int64_t b) { return BoundOf(PowerOf(Magnitude(b), e), b < 0); };
  const IntegerRange m = IsOdd(e) ? x : Abs(x);
  return {bound(m.lower), bound(m.upper)};
}

/// Hull of the b in x with b^e in z.
IntegerRange Bases(const IntegerRange& z, const IntegerRange& x, std::int64_t e) {
  if (e == 0) return z.Contains(1) ? x : IntegerRange::Empty();
  if (e == 1) return Intersection(x, z);
  if (e < 0) {
    const bool one = x.Contains(1) && z.Contains(1);
    const bool minusOne = x.Contains(-1) && z.Contains(IsOdd(e) ? -1 : 1);
    if (!one && !minusOne) return IntegerRange::Empty();
    return {minusOne ? -1 : 1, one ? 1 : -1};
  }
  // Toward zero or away from it: the root that is no smaller, or no larger, than the bound's own.
  const auto root = [&](std::int64_t v, bool up) {
    const bool away = up == (v > 0);
    return BoundOf(away ? CeilRoot(Magnitude(v), e) : FloorRoot(Magnitude(v), e), v < 0);
  };
  const IntegerRange powers = IsOdd(e) ? z : Intersection(z, kNatural);
  if (powers.IsEmpty()) return powers;
  const IntegerRange roots = {powers.lower == kMin ? kMin : root(powers.lower, true),
                              powers.upper == kMax ? kMax : root(powers.upper, false)};
  return IsOdd(e) ? Intersection(x, roots) : AbsArguments(roots, x);
}

/// A stretch of exponents.
struct Exponents {
  std::int64_t first, last;
  bool IsEmpty() const { return first > last; }
  /// The end of a stretch in which every exponent that matters has one that behaves alike.
  std::int64_t Representatives() const {
    return first < 0 || first >= kLargeExponent ? std::min(last, first + 1) : last;
  }
};

/// The exponents of n below zero, the small and the large ones. An endless side makes room for both
/// parities.
std::array<Exponents, 3> Split(const IntegerRange& n) {
  const std::int64_t below = std::min<std::int64_t>(n.upper, -1);
  const std::int64_t above = std::max(n.lower, kLargeExponent);
  return {
      {{n.lower, n.lower == kMin ? std::max(below, kMin + 1) : below},
       {std::max<std::int64_t>(n.lower, 0), std::min(n.upper, kLargeExponent - 1)},
       {n.upper == kMax ? std::min(above, kMax - 2) : above, n.upper}}
  };
}

/// Calls use(exponent) for one exponent of each kind in n until it answers false.
template <class Use>
void ForEachKind(const IntegerRange& n, Use use) {
  for (const Exponents& part : Split(n)) {
    if (part.IsEmpty()) continue;
    for (std::int64_t e = part.first; e <= part.Representatives(); ++e) {
      if (!use(e)) return;
    }
  }
}

// Remainders ----------------------------------------------------------------------------------

/// The magnitudes of the divisors in y; only they count.
IntegerRange Divisors(const IntegerRange& y) { return Intersection(Abs(y), kPositive); }

/// As a bound of quotients by divisors that may be endlessly large.
IntegerRange Quotients(const IntegerRange& x, const IntegerRange& d) {
  return {d.upper == kMax ? 0 : x.lower / d.upper, x.upper == kMax ? kMax : x.upper / d.lower};
}

// x >= 0. All quotients alike, the remainders are a shifted range; else one of them wraps around.
IntegerRange NaturalRemainders(const IntegerRange& x, const IntegerRange& d) {
  const IntegerRange q = Quotients(x, d);
  if (q.lower == 0 && q.upper == 0) return x;
  if (q.IsScalar()) return {x.lower - q.lower * d.upper, x.upper - q.lower * d.lower};
  return {0, std::min(x.upper, d.upper == kMax ? kMax : d.upper - 1)};
}

// x >= 0, one divisor: bounds move to the next dividend whose remainder is in r.
IntegerRange DividendsOf(IntegerRange r, IntegerRange x, std::int64_t d) {
  using detail::integer_range::Sum;
  r.Intersect({0, d - 1});
  if (r.IsEmpty()) return r;
  const std::int64_t above = x.lower % d, multiple = x.lower - above;
  if (above < r.lower) x.lower = Sum(multiple, r.lower);
  if (above > r.upper) x.lower = Sum(Sum(multiple, d), r.lower);
  if (x.upper == kMax) return x;
  const std::int64_t below = x.upper % d;
  if (below > r.upper) x.upper -= below - r.upper;
  if (below < r.lower) x.upper -= below + (d - r.upper);
  return x;
}

// x >= 0. A dividend is its own remainder or beyond the sum of the remainder and the divisor.
IntegerRange NaturalDividends(IntegerRange r, const IntegerRange& x, const IntegerRange& d) {
  if (d.IsScalar()) return DividendsOf(r, x, d.lower);
  r.Intersect({0, d.upper == kMax ? kMax : d.upper - 1});
  if (r.IsEmpty()) return r;
  const std::int64_t least =
      r.lower == kMax ? kMax : detail::integer_range::Sum(r.lower, std::max(d.lower, r.lower + 1));
  return Hull(Intersection(x, r), Intersection(x, {least, kMax}));
}

}  // namespace

IntegerRange AbsArguments(const IntegerRange& z, const IntegerRange& x) {
  const IntegerRange magnitudes = Intersection(z, kNatural);
  return Hull(Intersection(x, magnitudes), Intersection(x, -magnitudes));
}

IntegerRange MinArguments(const IntegerRange& z, const IntegerRange& x, const IntegerRange& y) {
  const IntegerRange common = Intersection(y, z);
  if (y.IsEmpty()) return y;
  const IntegerRange own = Intersection(Intersection(x, z), {kMin, y.upper});
  if (common.IsEmpty()) return own;
  return Hull(own, Intersection(x, {common.lower, kMax}));
}

IntegerRange MaxArguments(const IntegerRange& z, const IntegerRange& x, const IntegerRange& y) {
  return Intersection(x, -MinArguments(-z, -x, -y));
}

IntegerRange SignArguments(const IntegerRange& z, const IntegerRange& x) {
  const IntegerRange sign = Intersection(z, {-1, 1});
  if (sign.IsEmpty()) return sign;
  return Intersection(x, {sign.lower < 0 ? kMin : sign.lower, sign.upper > 0 ? kMax : sign.upper});
}

IntegerRange ExactQuotients(const IntegerRange& x, const IntegerRange& z, const IntegerRange& y) {
  if (x.IsEmpty() || z.IsEmpty()) return IntegerRange::Empty();
  if (z.Contains(0) && y.Contains(0)) return x;
  const auto quotients = [&](const IntegerRange& divisors, bool mirror) {
    return QuotientsByPositive(MirroredIf(mirror, x), z, divisors);
  };
  return Intersection(x, ByMirror(y, kPositive, quotients));
}

IntegerRange Power(const IntegerRange& x, const IntegerRange& n) {
  if (x.IsEmpty()) return x;
  if (n.IsScalar()) return Powers(x, n.lower);
  IntegerRange hull = IntegerRange::Empty();
  // From zero on, magnitudes grow with the exponent (but 0^0 = 1), apart for even and for odd ones:
  // two exponents at each end hold the extremes.
  const std::int64_t low = std::clamp<std::int64_t>(n.lower, 0, kLargeExponent) + 1;
  const std::int64_t high = std::clamp<std::int64_t>(n.upper, 0, kLargeExponent) - 1;
  ForEachKind(n, [&](std::int64_t e) {
    if (e <= low || e >= high) hull = Hull(hull, Powers(x, e));
    return true;
  });
  return hull;
}

IntegerRange PowerBases(const IntegerRange& z, const IntegerRange& x, const IntegerRange& n) {
  if (z.IsEmpty() || x.IsEmpty()) return IntegerRange::Empty();
  if (n.IsScalar()) return Bases(z, x, n.lower);
  IntegerRange hull = IntegerRange::Empty();
  ForEachKind(n, [&](std::int64_t e) {
    hull = Hull(hull, Bases(z, x, e));
    return hull != x;
  });
  return hull;
}

IntegerRange PowerExponents(const IntegerRange& z, const IntegerRange& x, const IntegerRange& n) {
  if (z.IsEmpty() || x.IsEmpty()) return IntegerRange::Empty();
  const auto fits = [&](std::int64_t e) { return !Bases(z, x, e).IsEmpty(); };
  IntegerRange hull = IntegerRange::Empty();
  for (const Exponents& part : Split(n)) {
    if (part.IsEmpty()) continue;
    auto [low, high] = part;
    while (low <= part.Representatives() && !fits(low)) ++low;
    if (low > part.Representatives()) continue;
    while (!fits(high)) --high;
    // On an endless side there are exponents of either parity.
    hull = Hull(hull, {part.first == kMin ? kMin : low, part.last == kMax ? kMax : high});
  }
  return Intersection(n, hull);
}

IntegerRange Remainder(const IntegerRange& x, const IntegerRange& y) {
  const IntegerRange divisors = Divisors(y);
  if (divisors.IsEmpty()) return IntegerRange::Empty();
  return ByMirror(x, kNatural, [&](const IntegerRange& dividends, bool) {
    return NaturalRemainders(dividends, divisors);
  });
}

IntegerRange RemainderDividends(const IntegerRange& r, const IntegerRange& x,
                                const IntegerRange& y) {
  const IntegerRange divisors = Divisors(y);
  if (divisors.IsEmpty()) return IntegerRange::Empty();
  const auto dividends = [&](const IntegerRange& natural, bool mirror) {
    return NaturalDividends(MirroredIf(mirror, r), natural, divisors);
  };
  return Intersection(x, ByMirror(x, kNatural, dividends));
}

IntegerRange RemainderDivisors(const IntegerRange& r, const IntegerRange& x,
                               const IntegerRange& y) {
  const IntegerRange remainders = Intersection(r, Remainder(x, y));
  if (RemainderDividends(remainders, x, y).IsEmpty()) return IntegerRange::Empty();
  // A divisor is larger than its remainder, and it divides the rest.
  const std::int64_t least = detail::integer_range::Sum(Abs(remainders).lower, 1);
  const IntegerRange divisors =
      Hull(Intersection(y, {least, kMax}), Intersection(y, {kMin, -least}));
  return ExactQuotients(divisors, x - remainders, IntegerRange());
}

IntegerRange IntegersWithin(double lower, double upper) {
  if (!(lower <= upper)) return IntegerRange::Empty();
  const auto bound = [](double integer) {
    if (integer >= 0x1p63) return kMax;
    return integer < -0x1p63 ? kMin : static_cast<std::int64_t>(integer);
  };
  return {bound(std::ceil(lower)), bound(std::floor(upper))};
}

double LowerAsDouble(const IntegerRange& x) {
  return x.lower == kMin ? -HUGE_VAL : detail::rounding::Nearest(x.lower).Down();
}

double UpperAsDouble(const IntegerRange& x) {
  return x.upper == kMax ? HUGE_VAL : detail::rounding::Nearest(x.upper).Up();
}

}  // namespace zultav
