#include "framework/intervals/RealPower.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealFunctions.h"
#include "framework/intervals/detail/ElementaryKernels.h"
#include "framework/intervals/detail/RealLine.h"
#include "framework/intervals/detail/Rounding.h"
#include "framework/intervals/detail/RoundingDecisions.h"

using namespace zultav::detail;

using elementary::Approximation;
using elementary::RoundOutward;
using elementary::ScaledApproximation;
using real_line::Empty;
using real_line::Extended;
using real_line::Saturated;
using real_line::Whole;
using rounding::Product;
using rounding::Quotient;
using rounding::Rounded;

namespace {

// ---- One base, one exponent: the tightest enclosures.

RealInterval Bounds(const Rounded& y) { return {y.Down(), y.Up()}; }

/// The enclosure of exp(t) where t, known to a few bits and not 0, is out of the ordinary.
std::optional<RealInterval> ExtremeExp(double t) {
  if (std::fabs(t) < 0x1p-56)
    return std::signbit(t) ? RealInterval(rounding::NextDown(1), 1)
                           : RealInterval(1, rounding::NextUp(1));
  if (t > 711) return RealInterval(DBL_MAX, HUGE_VAL);
  if (t < -747) return RealInterval(0, 0x1p-1074);
  return std::nullopt;
}

/// exp(t) for t of relative error below 2^-66, as that of a logarithm times an exact number.
ScaledApproximation ExpOfProduct(DoubleDouble t) {
  ScaledApproximation result = elementary::Exp(t.hi, t.lo);
  result.y.error = MulAdd(0x1p-66 * std::fabs(t.hi), result.y.value.hi, result.y.error);
  return result;
}

/// x^n for 0 < x < inf, 3 <= |n| <= 64. Relative error below 2^-94: at most 64 times that of one
/// product, which is below 2^-102, and that of a quotient.
ScaledApproximation SmallPower(double x, int n) {
  int exponent = 0;
  DoubleDouble factor{2 * std::frexp(x, &exponent), 0};
  DoubleDouble power{1, 0};
  for (int rest = std::abs(n); rest > 0; rest /= 2) {
    if (rest % 2 == 1) power = power * factor;
    factor = factor * factor;
  }
  if (n < 0) power = DoubleDouble{1, 0} / power;
  const int shift = std::ilogb(power.hi);
  const DoubleDouble y{std::ldexp(power.hi, -shift), std::ldexp(power.lo, -shift)};
  return {
      {y, 0x1p-94 * y.hi},
      std::int64_t{n}
      * (exponent - 1) + shift
  };
}

/// x^y for x >= 0, infinities included as limits.
RealInterval PowerAt(double x, double y) {
  if (y == 0 || x == 1) return {1, 1};
  if (x == 0 || x == HUGE_VAL || std::fabs(y) == HUGE_VAL) {
    const double limit = (x > 1) == (y > 0) ? HUGE_VAL : 0;
    return {limit, limit};
  }
  if (y == 1) return {x, x};
  if (y == 2) return Bounds(Product(x, x));
  if (y == -1) return Bounds(Quotient(1, x));
  const auto sign = [=](double d) { return decide::Power(x, y, d); };
  const DoubleDouble log = elementary::Log(x).value;
  if (const auto extreme = ExtremeExp(log.hi * y)) return *extreme;
  if (std::fabs(y) <= 64 && y == std::floor(y))
    return RoundOutward(SmallPower(x, static_cast<int>(y)), sign);
  return RoundOutward(ExpOfProduct(log * DoubleDouble{y, 0}), sign);
}

/// z^(1/y) for z >= 0, infinities included as limits; y = ±0 stands for the limit from that side.
RealInterval RootAt(double z, double y) {
  if (z == 1 || std::fabs(y) == HUGE_VAL) return {1, 1};
  if (z == 0 || z == HUGE_VAL || y == 0) {
    const double limit = (z > 1) != std::signbit(y) ? HUGE_VAL : 0;
    return {limit, limit};
  }
  if (y == 1) return {z, z};
  if (y == 2) return Bounds(rounding::Root(z));
  if (y == -1) return Bounds(Quotient(1, z));
  const DoubleDouble log = elementary::Log(z).value;
  if (const auto extreme = ExtremeExp(log.hi / y)) return *extreme;
  return RoundOutward(ExpOfProduct(log / DoubleDouble{y, 0}), [=](double d) {
    const int side = decide::Power(d, y, z);
    return y > 0 ? -side : side;
  });
}

// ---- Sets. A power is the exponential of exponent times logarithm, so that over a box of
// non-negative bases and exponents it takes its extremes at the corners.

template <class Function>
RealInterval HullOfCorners(const RealInterval& x, const RealInterval& y, Function at) {
  RealInterval hull = at(x.lower, y.lower);
  const auto unite = [&hull, at](double a, double b) {
    const RealInterval corner = at(a, b);
    hull = {std::min(hull.lower, corner.lower), std::max(hull.upper, corner.upper)};
  };
  if (!x.IsScalar()) unite(x.upper, y.lower);
  if (!y.IsScalar()) unite(x.lower, y.upper);
  if (!x.IsScalar() && !y.IsScalar()) unite(x.upper, y.upper);
  return Saturated(hull.lower, hull.upper);
}

RealInterval Part(RealInterval x, const RealInterval& of) {
  x.Intersect(of);
  return x;
}

constexpr RealInterval kNonNegative(0, HUGE_VAL);

/// The exponents of a set, all of them or those of one parity.
struct Exponents {
  RealInterval all;       ///< empty when there are none
  RealInterval negative;  ///< the negative ones; 0 as upper bound is not included
  RealInterval positive;  ///< the positive ones; 0 as lower bound is not included

  /// Real numbers.
  explicit Exponents(const RealInterval& y)
      : all(Extended(y)),
        negative(Part(all, {-HUGE_VAL, -0.0})),
        positive(Part(all, kNonNegative)) {
    if (negative.upper == 0) negative.upper = -0.0;  // the sign tells the side of the limit
    positive.lower += 0.0;
    if (negative.lower == 0) negative = Empty();
    if (positive.upper == 0) positive = Empty();
  }
  /// Integers n with n mod step = residue, from first to last.
  Exponents(double first, double last, double step, double residue) {
    const auto up = [=](double n) { return std::ceil((n - residue) / step) * step + residue; };
    const auto down = [=](double n) { return std::floor((n - residue) / step) * step + residue; };
    all = {up(first), down(last)};
    negative = {all.lower, std::min(all.upper, down(-0.5))};
    positive = {std::max(all.lower, up(0.5)), all.upper};
  }
};

/// Integer exponents, infinite sides as infinities. Empty when lower > upper.
RealInterval IntegersOf(const SubdefInt& n) {
  const long max = SubdefInt::sMaxValue;
  return {n.lower <= -max ? -HUGE_VAL : static_cast<double>(n.lower),
          n.upper >= max ? HUGE_VAL : static_cast<double>(n.upper)};
}

RealInterval IntegersOf(const RealInterval& y) {
  const RealInterval all = Extended(y);
  return {std::ceil(all.lower), std::floor(all.upper)};
}

Exponents AllOf(const RealInterval& integers) {
  return Exponents(integers.lower, integers.upper, 1, 0);
}
Exponents Even(const RealInterval& integers) {
  return Exponents(integers.lower, integers.upper, 2, 0);
}
Exponents Odd(const RealInterval& integers) {
  return Exponents(integers.lower, integers.upper, 2, 1);
}

/// { m^y : m in magnitude, y in exponents }; `magnitude` is extended and non-negative.
RealInterval PowerOf(const RealInterval& magnitude, const Exponents& exponents) {
  RealInterval y = exponents.all;
  if (magnitude.upper == 0) y = Part(y, kNonNegative);
  if (magnitude.IsEmpty() || y.IsEmpty()) return Empty();
  return HullOfCorners(magnitude, y, PowerAt);
}

/// { m >= 0 : m^y in z for a y of exponents }.
RealInterval BaseOf(const RealInterval& z, const Exponents& exponents) {
  const RealInterval part = Part(Extended(z), kNonNegative);
  if (part.IsEmpty() || exponents.all.IsEmpty()) return Empty();
  if (exponents.all.Contains(0) && part.Contains(1)) return {0, SubdefReal::sMaxValue};
  RealInterval result = Empty();
  if (!exponents.positive.IsEmpty()) {
    result = part.upper == 0 ? part : HullOfCorners(part, exponents.positive, RootAt);
  }
  if (!exponents.negative.IsEmpty() && part.upper > 0)
    result = result.mf_Union(HullOfCorners(part, exponents.negative, RootAt));
  return result;
}

/// The magnitudes of the negative numbers of x, closed at 0.
RealInterval NegativeMagnitudes(const RealInterval& x) {
  if (x.IsEmpty() || x.lower >= 0) return Empty();
  const RealInterval part = Extended(x);
  return {-std::min(part.upper, 0.0), -part.lower};
}

// The images and preimages under the powers with a set of exponents, in up to three pieces: from
// bases that are not negative, and from negative ones with even and with odd integer exponents.
// Each piece is cut with the known set before the hull is taken.

RealInterval Image(const RealInterval& x, const RealInterval& within, const Exponents& all,
                   const RealInterval& integers) {
  const RealInterval positive = Part(PowerOf(Part(Extended(x), kNonNegative), all), within);
  const RealInterval magnitudes = NegativeMagnitudes(x);
  if (magnitudes.IsEmpty() || integers.IsEmpty()) return positive;
  const RealInterval even = PowerOf(magnitudes, Even(integers));
  const RealInterval odd = PowerOf(magnitudes, Odd(integers)).mf_Neg();
  return positive.mf_Union(Part(even, within)).mf_Union(Part(odd, within));
}

RealInterval Preimage(const RealInterval& z, const RealInterval& within, const Exponents& all,
                      const RealInterval& integers) {
  const RealInterval positive = Part(BaseOf(z, all), within);
  if (integers.IsEmpty() || within.lower >= 0) return positive;
  const RealInterval even = BaseOf(z, Even(integers)).mf_Neg();
  const RealInterval odd = BaseOf(z.mf_Neg(), Odd(integers)).mf_Neg();
  return positive.mf_Union(Part(even, within)).mf_Union(Part(odd, within));
}

// Integer exponents alone, among which 2 is by far the most frequent.

constexpr RealInterval kTwo(2, 2);

RealInterval Image(const SubdefReal& x, const RealInterval& within, const RealInterval& integers) {
  if (integers == kTwo) return Part(sqr(x), within);
  return Image(x, within, AllOf(integers), integers);
}

RealInterval Preimage(const SubdefReal& z, const RealInterval& within,
                      const RealInterval& integers) {
  if (!(integers == kTwo)) return Preimage(z, within, AllOf(integers), integers);
  const RealInterval roots = sqrt(z);
  return Part(roots, within).mf_Union(Part(roots.mf_Neg(), within));
}

/// Above this number of exponents only the hull over all of them is computed.
constexpr double kMostExponents = 64;

/// The union of f(exponents) over single exponents, as long as they are few.
template <class Function>
RealInterval ForEachExponent(const RealInterval& integers, Function f) {
  if (integers.upper - integers.lower >= kMostExponents) return f(integers);
  RealInterval result = Empty();
  for (double n = integers.lower; n <= integers.upper; ++n)
    result = result.mf_Union(f(RealInterval(n, n)));
  return result;
}

/// The y with x^y in z, both positive.
RealInterval Logarithms(const RealInterval& z, const RealInterval& x) {
  if (z.IsEmpty() || x.IsEmpty() || z.upper == 0 || x.upper == 0) return Empty();
  const SubdefReal dividend = log(SubdefReal(z));
  const SubdefReal divisor = log(SubdefReal(x));
  if (divisor == RealInterval(0, 0) && !dividend.Contains(0)) return Empty();
  return dividend.DivIntByInt(divisor);
}

/// The hull of the exponents y, integer ones for negative bases, with x^y in z.
RealInterval ExponentsOf(const RealInterval& z, const RealInterval& x) {
  const RealInterval bases = Part(x, kNonNegative);
  const RealInterval magnitudes = NegativeMagnitudes(x);
  const RealInterval powers = Part(z, kNonNegative);
  RealInterval result = Logarithms(powers, bases)
                            .mf_Union(Logarithms(powers, magnitudes))
                            .mf_Union(Logarithms(Part(z.mf_Neg(), kNonNegative), magnitudes));
  if (z.Contains(1)) result = result.mf_Union({0, 0});
  if (z.Contains(0) && x.Contains(0)) result = result.mf_Union({1, SubdefReal::sMaxValue});
  return Extended(result);
}

SubdefReal FlagIfEmpty(const RealInterval& result) {
  if (!result.IsEmpty()) return result;
  SDRaiseError();
  return Empty();
}

}  // namespace

SubdefReal pow(const SubdefReal& x, const SubdefReal& y) {
  if (x.IsEmpty() || y.IsEmpty()) return FlagIfEmpty(Empty());
  return FlagIfEmpty(Image(x, Whole(), Exponents(y), IntegersOf(y)));
}

SubdefReal pow(const SubdefReal& x, double y) { return pow(x, SubdefReal(y, y)); }

SubdefReal pow(const SubdefReal& x, const SubIntBase& n) {
  const auto exponent = static_cast<double>(n);
  return pow(x, SubdefReal(exponent, exponent));
}

SubdefReal pow(const SubdefReal& x, const SubdefReal& z, const SubdefInt& n) {
  return FlagIfEmpty(ForEachExponent(
      IntegersOf(n), [&](const RealInterval& integers) { return Image(x, z, integers); }));
}

SubdefReal pow(const SubdefReal& x, double z, const SubdefInt& n) {
  return pow(x, SubdefReal(z, z), n);
}

SubdefReal base(const SubdefReal& z, const SubdefReal& y) {
  if (z.IsEmpty() || y.IsEmpty()) return FlagIfEmpty(Empty());
  return FlagIfEmpty(Preimage(z, Whole(), Exponents(y), IntegersOf(y)));
}

SubdefReal base(const SubdefReal& z, double y) { return base(z, SubdefReal(y, y)); }

SubdefReal base(const SubdefReal& z, const SubdefReal& x, const SubdefInt& n) {
  if (z.IsEmpty() || x.IsEmpty()) return FlagIfEmpty(Empty());
  return FlagIfEmpty(ForEachExponent(
      IntegersOf(n), [&](const RealInterval& integers) { return Preimage(z, x, integers); }));
}

SubdefReal base(const SubdefReal& z, const SubdefReal& x, const SubIntBase& n) {
  return base(z, x, SubdefInt(n, n));
}

SubdefInt exponent(const SubdefReal& z, const SubdefReal& x, const SubdefInt& n) {
  const RealInterval candidates = Part(ExponentsOf(z, x), IntegersOf(n));
  double first = std::ceil(candidates.lower);
  double last = std::floor(candidates.upper);
  const auto reaches = [&](double k) { return !Image(x, z, RealInterval(k, k)).IsEmpty(); };
  for (double steps = 0; steps < kMostExponents && first <= last && !reaches(first); ++steps)
    ++first;
  for (double steps = 0; steps < kMostExponents && first <= last && !reaches(last); ++steps) --last;
  if (z.IsEmpty() || x.IsEmpty() || first > last) {
    SDRaiseError();
    return SubdefInt(SubdefInt::sMaxValue, -SubdefInt::sMaxValue);
  }
  const auto max = static_cast<double>(SubdefInt::sMaxValue);
  return SubdefInt(static_cast<long>(std::clamp(first, -max, max)),
                   static_cast<long>(std::clamp(last, -max, max)));
}

SubdefInt exponent(const SubdefReal& z, double x, const SubdefInt& n) {
  return exponent(z, SubdefReal(x, x), n);
}
