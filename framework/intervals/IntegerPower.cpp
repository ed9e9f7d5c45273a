#include <array>
#include <cmath>

#include "framework/intervals/SubdefInt.h"

namespace {

using Wide = std::int64_t;

// From here on every power of a base beyond ±1 is beyond the 32-bit range, so that only the sign
// of the base and the parity of the exponent tell powers apart, as they do for exponents below
// zero, where the base must be 1 or -1.
constexpr Wide kLargeExponent = 32;

// Stands for every power beyond the 32-bit range.
constexpr Wide kHuge = Wide{1} << 62;

bool IsOdd(Wide exponent) { return exponent % 2 != 0; }

/// m^e for 0 <= m <= 2^31, e >= 1; kHuge instead of any power above 2^31.
Wide PowerOf(Wide m, Wide e) {
  if (m <= 1) return m;
  if (e >= kLargeExponent) return kHuge;
  Wide power = m;
  for (; e > 1; --e) {
    power *= m;
    if (power > Wide{1} << 31) return kHuge;
  }
  return power;
}

/// The largest m with m^e <= v, v >= 0, e >= 1. Its estimate in floating point is only a place to
/// start; the integers decide.
Wide FloorRoot(Wide v, Wide e) {
  if (e == 1) return v;
  if (e >= kLargeExponent) return std::min<Wide>(v, 1);
  Wide root = std::llround(std::pow(static_cast<double>(v), 1.0 / static_cast<double>(e)));
  while (PowerOf(root, e) > v) --root;
  while (PowerOf(root + 1, e) <= v) ++root;
  return root;
}

/// The smallest m >= 0 with m^e >= v, v >= 0.
Wide CeilRoot(Wide v, Wide e) { return v == 0 ? 0 : FloorRoot(v - 1, e) + 1; }

/// b^e for e >= 1 as a bound. A power that does not fit raises the flag, unless the end is
/// infinite.
long PowerBound(Wide b, Wide e, bool infinite) {
  const Wide limit = SubdefInt::sMaxValue;
  const Wide magnitude = PowerOf(std::abs(b), e);
  if (magnitude > limit && !infinite) SDRaiseError();
  const Wide bound = std::min(magnitude, limit);
  return static_cast<long>(b < 0 && IsOdd(e) ? -bound : bound);
}

/// Hull of the integers among x^e. An `endless` exponent stands for an infinite side.
IntegerInterval Powers(const IntegerInterval& x, Wide e, bool endless) {
  const Wide limit = SubdefInt::sMaxValue;
  if (e == 0) return {1, 1};
  if (e < 0) {
    const bool one = x.Contains(1), minusOne = x.Contains(-1);
    if (!one && !minusOne) return IntegerInterval::Empty();
    if (!IsOdd(e)) return {1, 1};
    return {minusOne ? -1 : 1, one ? 1 : -1};
  }
  if (IsOdd(e)) {
    return {PowerBound(x.lower, e, endless || x.lower <= -limit),
            PowerBound(x.upper, e, endless || x.upper >= limit)};
  }
  const IntegerInterval m = x.mf_Abs();
  return {PowerBound(m.lower, e, endless), PowerBound(m.upper, e, endless || m.upper >= limit)};
}

/// Hull of the b in x with b^e in z.
IntegerInterval Bases(const SubdefInt& z, const SubdefInt& x, Wide e) {
  const Wide limit = SubdefInt::sMaxValue;
  if (e == 0 && z.Contains(1)) return x;
  if (e == 0) return IntegerInterval::Empty();
  if (e < 0) {
    const bool one = x.Contains(1) && z.Contains(1);
    const bool minusOne = x.Contains(-1) && z.Contains(IsOdd(e) ? -1 : 1);
    if (!one && !minusOne) return IntegerInterval::Empty();
    return {minusOne ? -1 : 1, one ? 1 : -1};
  }
  const auto low = [&](Wide v) {  // v is a lower bound of z
    if (v <= -limit) return -limit;
    return v < 0 ? -FloorRoot(-v, e) : CeilRoot(v, e);
  };
  const auto high = [&](Wide v) {
    if (v >= limit) return limit;
    return v < 0 ? -CeilRoot(-v, e) : FloorRoot(v, e);
  };
  if (IsOdd(e)) {
    IntegerInterval roots(static_cast<long>(low(z.lower)), static_cast<long>(high(z.upper)));
    roots.Intersect(x);
    return roots;
  }
  if (z.upper < 0) return IntegerInterval::Empty();
  return InverseAbs(SubdefInt(static_cast<long>(low(std::max<Wide>(z.lower, 0))),
                              static_cast<long>(high(z.upper))),
                    x);
}

struct Exponents {
  Wide first, last;
  /// The end of a stretch in which every exponent that matters has one that behaves alike.
  Wide Representatives() const { return std::min(last, first + kLargeExponent - 1); }
};

/// The exponents of n below zero, the small and the large ones.
std::array<Exponents, 3> Split(const SubdefInt& n) {
  return {
      {{n.lower, std::min<Wide>(n.upper, -1)},
       {std::max<Wide>(n.lower, 0), std::min<Wide>(n.upper, kLargeExponent - 1)},
       {std::max<Wide>(n.lower, kLargeExponent), n.upper}}
  };
}

SubdefInt Answer(const IntegerInterval& hull) {
  if (!hull.IsEmpty()) return hull;
  SDRaiseError();
  return IntegerInterval::Empty();
}

}  // namespace

SubdefInt pow(const SubdefInt& x, const SubIntBase& n) {
  return Answer(x.IsEmpty() ? IntegerInterval::Empty() : Powers(x, n, false));
}

SubdefInt pow(const SubdefInt& x, const SubdefInt& n) {
  if (n.IsScalar()) return pow(x, n.lower);
  IntegerInterval hull = IntegerInterval::Empty();
  if (x.IsEmpty()) return Answer(hull);
  const Exponents below = {n.lower, std::min<Wide>(n.upper, -1)};
  const Exponents above = {std::max<Wide>(n.lower, 0), n.upper};
  // From zero on, magnitudes grow with the exponent (but 0^0 = 1), apart for even and for odd
  // ones; below zero parity is all that counts. Two exponents at each end hold the extremes.
  for (const auto& [first, last] : {below, above}) {
    for (Wide e : {first, first + 1, last - 1, last}) {
      if (e < first || e > last) continue;
      const bool endless = last >= SubdefInt::sMaxValue && e > first && e >= last - 1;
      hull = hull.mf_Union(Powers(x, e, endless));
    }
  }
  return Answer(hull);
}

SubdefInt base(const SubdefInt& z, const SubdefInt& x, const SubIntBase& n) {
  return Answer(z.IsEmpty() || x.IsEmpty() ? IntegerInterval::Empty() : Bases(z, x, n));
}

SubdefInt base(const SubdefInt& z, const SubdefInt& x, const SubdefInt& n) {
  IntegerInterval hull = IntegerInterval::Empty();
  if (z.IsEmpty() || x.IsEmpty()) return Answer(hull);
  for (const Exponents& part : Split(n)) {
    for (Wide e = part.first; e <= part.Representatives() && !(hull == x); ++e) {
      hull = hull.mf_Union(Bases(z, x, e));
    }
  }
  return Answer(hull);
}

SubdefInt exponent(const SubdefInt& z, const SubdefInt& x, const SubdefInt& n) {
  const Wide limit = SubdefInt::sMaxValue;
  IntegerInterval hull = IntegerInterval::Empty();
  if (z.IsEmpty() || x.IsEmpty()) return Answer(hull);
  const auto fits = [&](Wide e) { return !Bases(z, x, e).IsEmpty(); };
  for (const Exponents& part : Split(n)) {
    auto [low, high] = part;
    while (low <= part.Representatives() && !fits(low)) ++low;
    if (low > part.Representatives()) continue;
    while (!fits(high)) --high;
    // Beyond an infinite side there are exponents of either parity.
    if (part.first <= -limit) low = -limit;
    if (part.last >= limit) high = limit;
    hull = hull.mf_Union({static_cast<long>(low), static_cast<long>(high)});
  }
  return Answer(hull);
}

SubdefInt exponent(const SubdefInt& z, const SubIntBase& x, const SubdefInt& n) {
  return exponent(z, SubdefInt(x, x), n);
}
