#include "framework/intervals/RealPower.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/BothBounds.h"
#include "framework/intervals/detail/ElementaryKernels.h"
#include "framework/intervals/detail/RealLine.h"
#include "framework/intervals/detail/Rounding.h"
#include "framework/intervals/detail/RoundingDecisions.h"

using namespace zultav::detail;

using elementary::Approximation;
using elementary::RoundOutward;
using elementary::ScaledApproximation;
using real_line::Extended;
using real_line::Saturated;
using rounding::Product;
using rounding::Quotient;
using rounding::Rounded;
using zultav::RealRange;

namespace {

// ---- One base, one exponent: the tightest enclosures.

RealRange Bounds(const Rounded& y) { return {y.Down(), y.Up()}; }

/// The enclosure of exp(t) where t, known to a few bits and not 0, is out of the ordinary.
std::optional<RealRange> ExtremeExp(double t) {
  if (std::fabs(t) < 0x1p-56)
    return std::signbit(t) ? RealRange(rounding::NextDown(1), 1)
                           : RealRange(1, rounding::NextUp(1));
  if (t > 711) return RealRange(DBL_MAX, HUGE_VAL);
  if (t < -747) return RealRange(0, 0x1p-1074);
  return std::nullopt;
}

constexpr int kSmallExponent = 64;

/// x^n for 1 <= n <= kSmallExponent, if no partial power leaves [2^-900, 2^900]. Relative error
/// below 2^-96: at most 64 times that of one product, which is below 2^-102.
struct SmallPower {
  DoubleDouble value{1, 0};
  bool isExact = true;

  SmallPower(double x, int n) {
    DoubleDouble factor{x, 0};
    for (;;) {
      if (n % 2 != 0) Set(value, value * factor);
      n /= 2;
      if (n == 0) return;
      Set(factor, factor * factor);
    }
  }

 private:
  void Set(DoubleDouble& x, DoubleDouble product) {
    x = product;
    isExact = isExact && x.lo == 0;
  }
};

/// x^n for 0 < x < inf, 3 <= |n| <= kSmallExponent, whatever its size.
ScaledApproximation ScaledSmallPower(double x, int n) {
  int exponent = 0;
  const double mantissa = 2 * std::frexp(x, &exponent);
  DoubleDouble power = SmallPower(mantissa, std::abs(n)).value;
  if (n < 0) power = DoubleDouble{1, 0} / power;
  const int shift = std::ilogb(power.hi);
  const DoubleDouble y{std::ldexp(power.hi, -shift), std::ldexp(power.lo, -shift)};
  return {
      {y, 0x1p-94 * y.hi},
      std::int64_t{n}
      * (exponent - 1) + shift
  };
}

/// Rounds x^n, 3 <= n <= kSmallExponent; false where it is extreme or its rounding stays open.
bool RoundSmallPower(double x, int n, Rounded& y) {
  y = {x, 0};
  if (x == 0) return true;
  const SmallPower power(x, n);
  y = {power.value.hi, power.value.lo};
  const double magnitude = std::fabs(y.nearest);
  return magnitude > 0x1p-900 && magnitude < 0x1p900 &&
         (power.isExact || std::fabs(y.error) > 0x1p-94 * magnitude);
}

/// x^y for x >= 0, infinities included as limits.
RealRange PowerAt(double x, double y) {
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
  if (std::fabs(y) <= kSmallExponent && y == std::floor(y))
    return RoundOutward(ScaledSmallPower(x, static_cast<int>(y)), sign);
  return RoundOutward(elementary::ExpOfProduct(log * DoubleDouble{y, 0}), sign);
}

/// z^(1/y) for z >= 0, infinities included as limits; y = ±0 stands for the limit from that side.
RealRange RootAt(double z, double y) {
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
  return RoundOutward(elementary::ExpOfProduct(log / DoubleDouble{y, 0}), [=](double d) {
    const int side = decide::Power(d, y, z);
    return y > 0 ? -side : side;
  });
}

constexpr DoubleDouble kLogTen{0x1.26bb1bbb55516p+1, -0x1.f48ad494ea3e9p-53};

/// The logarithm of x >= 0 to the base of which `logOfBase` is the natural one, infinities included
/// as limits.
RealRange LogarithmAt(double x, double base, DoubleDouble logOfBase) {
  if (x == 0 || x == 1 || x == HUGE_VAL)
    return RealRange::Point(x == 0 ? -HUGE_VAL : x == 1 ? 0 : x);
  const DoubleDouble y = elementary::Log(x).value / logOfBase;
  return RoundOutward(Approximation{y, 0x1p-66 * std::fabs(y.hi)},
                      [=](double d) { return -decide::Power(base, d, x); });
}

/// Of what of x is positive.
RealRange Logarithm(const RealRange& x, double base, DoubleDouble logOfBase) {
  if (x.IsEmpty() || x.upper <= 0) return RealRange::Empty();
  return Saturated<RealRange>(LogarithmAt(std::max(x.lower, 0.0), base, logOfBase).lower,
                              LogarithmAt(x.upper, base, logOfBase).upper);
}

// ---- Sets. A power is the exponential of exponent times logarithm, so that over a box of
// non-negative bases and exponents it takes its extremes at the corners.

/// A function of base and exponent: At, and for one exponent a power with Exponent.
struct Powers {
  static RealRange At(double x, double y) { return PowerAt(x, y); }
  static DoubleDouble Exponent(double y) { return {y, 0}; }
};
struct Roots {
  static RealRange At(double z, double y) { return RootAt(z, y); }
  static DoubleDouble Exponent(double y) { return DoubleDouble{1, 0} / DoubleDouble{y, 0}; }
};

/// The hull of F(x, y) for the bounds of x.
template <class F>
RealRange HullOfBounds(const RealRange& x, double y) {
  // Where one bound is a limit, twice at the other one.
  const RealRange inner(x.lower > 0 ? x.lower : x.upper, x.upper < HUGE_VAL ? x.upper : x.lower);
  elementary::AtBounds values;
  if (inner.IsEmpty() || !elementary::PowerAtBounds(inner, F::Exponent(y), values))
    return x.IsScalar() ? F::At(x.lower, y) : Hull(F::At(x.lower, y), F::At(x.upper, y));
  RealRange hull = Hull(values.first, values.last);
  if (x.lower == 0) hull = Hull(hull, F::At(0, y));
  if (x.upper == HUGE_VAL) hull = Hull(hull, F::At(HUGE_VAL, y));
  return hull;
}

template <class F>
RealRange HullOfCorners(const RealRange& x, const RealRange& y) {
  RealRange hull = HullOfBounds<F>(x, y.lower);
  if (!y.IsScalar()) hull = Hull(hull, HullOfBounds<F>(x, y.upper));
  return Saturated<RealRange>(hull.lower, hull.upper);
}

constexpr RealRange kNonNegative(0, HUGE_VAL);

/// The exponents of a set, all of them or those of one parity.
struct Exponents {
  RealRange all;       ///< empty when there are none
  RealRange negative;  ///< the negative ones; 0 as upper bound is not included
  RealRange positive;  ///< the positive ones; 0 as lower bound is not included

  /// Real numbers.
  explicit Exponents(const RealRange& y)
      : all(y),
        negative(Intersection(all, {-HUGE_VAL, -0.0})),
        positive(Intersection(all, kNonNegative)) {
    if (negative.upper == 0) negative.upper = -0.0;  // the sign tells the side of the limit
    positive.lower += 0.0;
    if (negative.lower == 0) negative = RealRange::Empty();
    if (positive.upper == 0) positive = RealRange::Empty();
  }
  /// Integers n with n mod step = residue, from first to last. Doubles from 2^53 on are even, and
  /// bound whatever is between them.
  Exponents(double first, double last, double step, double residue) {
    const auto rounded = [=](double n, double (*round)(double)) {
      return std::fabs(n) < 0x1p53 ? round((n - residue) / step) * step + residue : n;
    };
    const auto up = [=](double n) { return rounded(n, std::ceil); };
    const auto down = [=](double n) { return rounded(n, std::floor); };
    const bool isEven = first == last && std::fabs(first) >= 0x1p53;
    all = isEven && residue != 0 ? RealRange::Empty() : RealRange(up(first), down(last));
    negative = {all.lower, std::min(all.upper, down(-0.5))};
    positive = {std::max(all.lower, up(0.5)), all.upper};
  }
};

/// Integer exponents, infinite sides as infinities. Empty when lower > upper.
RealRange IntegersOf(const SubdefInt& n) {
  const long max = SubdefInt::sMaxValue;
  return {n.lower <= -max ? -HUGE_VAL : static_cast<double>(n.lower),
          n.upper >= max ? HUGE_VAL : static_cast<double>(n.upper)};
}

RealRange IntegersOf(const RealRange& y) { return {std::ceil(y.lower), std::floor(y.upper)}; }

Exponents AllOf(const RealRange& integers) {
  return Exponents(integers.lower, integers.upper, 1, 0);
}
Exponents Even(const RealRange& integers) {
  return Exponents(integers.lower, integers.upper, 2, 0);
}
Exponents Odd(const RealRange& integers) { return Exponents(integers.lower, integers.upper, 2, 1); }

/// { m^y : m in magnitude, y in exponents }; `magnitude` is not negative.
RealRange PowerOf(const RealRange& magnitude, const Exponents& exponents) {
  RealRange y = exponents.all;
  if (magnitude.upper == 0) y = Intersection(y, kNonNegative);
  if (magnitude.IsEmpty() || y.IsEmpty()) return RealRange::Empty();
  return HullOfCorners<Powers>(magnitude, y);
}

/// { m >= 0 : m^y in z for a y of exponents }.
RealRange BaseOf(const RealRange& z, const Exponents& exponents) {
  const RealRange part = Intersection(z, kNonNegative);
  if (part.IsEmpty() || exponents.all.IsEmpty()) return RealRange::Empty();
  if (exponents.all.Contains(0) && part.Contains(1)) return kNonNegative;
  RealRange result = RealRange::Empty();
  if (!exponents.positive.IsEmpty()) {
    result = part.upper == 0 ? part : HullOfCorners<Roots>(part, exponents.positive);
  }
  if (!exponents.negative.IsEmpty() && part.upper > 0)
    result = Hull(result, HullOfCorners<Roots>(part, exponents.negative));
  return result;
}

/// The magnitudes of the negative numbers of x, closed at 0.
RealRange NegativeMagnitudes(const RealRange& x) {
  if (x.IsEmpty() || x.lower >= 0) return RealRange::Empty();
  return {-std::min(x.upper, 0.0), -x.lower};
}

// The images and preimages under the powers with a set of exponents, in up to three pieces: from
// bases that are not negative, and from negative ones with even and with odd integer exponents.
// Each piece is cut with the known set before the hull is taken.

RealRange Image(const RealRange& x, const RealRange& within, const Exponents& all,
                const RealRange& integers) {
  const RealRange positive = Intersection(PowerOf(Intersection(x, kNonNegative), all), within);
  const RealRange magnitudes = NegativeMagnitudes(x);
  if (magnitudes.IsEmpty() || integers.IsEmpty()) return positive;
  const RealRange even = PowerOf(magnitudes, Even(integers));
  const RealRange odd = -PowerOf(magnitudes, Odd(integers));
  return Hull(positive, Hull(Intersection(even, within), Intersection(odd, within)));
}

RealRange Preimage(const RealRange& z, const RealRange& within, const Exponents& all,
                   const RealRange& integers) {
  const RealRange positive = Intersection(BaseOf(z, all), within);
  if (integers.IsEmpty() || within.lower >= 0) return positive;
  const RealRange even = -BaseOf(z, Even(integers));
  const RealRange odd = -BaseOf(-z, Odd(integers));
  return Hull(positive, Hull(Intersection(even, within), Intersection(odd, within)));
}

// Integer exponents alone, among which 2 is by far the most frequent.

RealRange Image(const RealRange& x, const RealRange& within, const RealRange& integers) {
  if (integers.IsScalar() && integers.lower > 1 && integers.lower <= kSmallExponent)
    return Intersection(zultav::Power(x, static_cast<std::int64_t>(integers.lower)), within);
  return Image(x, within, AllOf(integers), integers);
}

RealRange Preimage(const RealRange& z, const RealRange& within, const RealRange& integers) {
  if (integers == RealRange(2, 2)) return InverseSquare(z, within);
  const Exponents all = AllOf(integers);
  if (integers.IsScalar() && std::floor(integers.lower / 2) * 2 == integers.lower)
    return InverseAbs(BaseOf(z, all), within);
  return Preimage(z, within, all, integers);
}

/// Above this number of exponents only the hull over all of them is computed.
constexpr double kMostExponents = 64;

/// The union of f(exponents) over single exponents, as long as they are few.
template <class Function>
RealRange ForEachExponent(const RealRange& integers, Function f) {
  if (integers.upper - integers.lower >= kMostExponents) return f(integers);
  RealRange result = RealRange::Empty();
  for (double n = integers.lower; n <= integers.upper; ++n)
    result = Hull(result, f(RealRange(n, n)));
  return result;
}

/// The y with x^y in z, both positive.
RealRange Logarithms(const RealRange& z, const RealRange& x) {
  return Quotients(RealRange(), Log(z), Log(x));
}

/// The hull of the exponents y, integer ones for negative bases, with x^y in z; `first` is the
/// least that counts as positive.
RealRange ExponentsOf(const RealRange& z, const RealRange& x, double first) {
  const RealRange bases = Intersection(x, kNonNegative);
  const RealRange magnitudes = NegativeMagnitudes(x);
  const RealRange powers = Intersection(z, kNonNegative);
  RealRange result = Hull(Logarithms(powers, bases), Logarithms(powers, magnitudes));
  result = Hull(result, Logarithms(Intersection(-z, kNonNegative), magnitudes));
  if (z.Contains(1)) result = Hull(result, {0, 0});
  if (z.Contains(0) && x.Contains(0)) result = Hull(result, {first, HUGE_VAL});
  return result;
}

/// As the domains store it, with the flag up if it is empty.
SubdefReal Answer(const RealRange& result) {
  if (result.IsEmpty()) SDRaiseError();
  return Saturated(result);
}

}  // namespace

RealRange zultav::Power(const RealRange& x, const RealRange& y) {
  if (x.IsEmpty() || y.IsEmpty()) return RealRange::Empty();
  const RealRange integers = IntegersOf(y);
  return y.IsScalar() && y == integers ? Image(x, RealRange(), integers)
                                       : Image(x, RealRange(), Exponents(y), integers);
}

RealRange zultav::Power(const RealRange& x, std::int64_t n) {
  if (n == 1) return x;
  if (n == 2) return Square(x);
  const RealRange bases = n % 2 == 0 ? Abs(x) : x;
  Rounded low{}, high{};
  const bool isSmall = n > 2 && n <= kSmallExponent && !x.IsEmpty();
  if (isSmall && RoundSmallPower(bases.lower, static_cast<int>(n), low) &&
      RoundSmallPower(bases.upper, static_cast<int>(n), high))
    return {low.Down(), high.Up()};
  const RealRange y = Bounds(rounding::Nearest(n));
  return x.IsEmpty() ? x : Image(x, RealRange(), AllOf(y), y);
}

RealRange zultav::Log2(const RealRange& x) { return Logarithm(x, 2, elementary::kLogTwo); }
RealRange zultav::Log10(const RealRange& x) { return Logarithm(x, 10, kLogTen); }
RealRange zultav::Exp2(const RealRange& x) { return Power(RealRange::Point(2), x); }
RealRange zultav::Exp10(const RealRange& x) { return Power(RealRange::Point(10), x); }
RealRange zultav::Cbrt(const RealRange& x) { return InversePower(x, RealRange(), 3); }

RealRange zultav::InverseSquare(const RealRange& z, const RealRange& x) {
  return InverseAbs(Sqrt(z), x);
}

RealRange zultav::InverseSqrt(const RealRange& z, const RealRange& x) {
  return Intersection(Square(Intersection(z, kNonNegative)), x);
}

RealRange zultav::InversePower(const RealRange& z, const RealRange& x, const RealRange& y) {
  if (z.IsEmpty() || x.IsEmpty() || y.IsEmpty()) return RealRange::Empty();
  const RealRange integers = IntegersOf(y);
  return y.IsScalar() && y == integers ? Preimage(z, x, integers)
                                       : Preimage(z, x, Exponents(y), integers);
}

RealRange zultav::InversePower(const RealRange& z, const RealRange& x, std::int64_t n) {
  return z.IsEmpty() || x.IsEmpty() ? RealRange::Empty()
                                    : Preimage(z, x, Bounds(rounding::Nearest(n)));
}

RealRange zultav::InverseExponent(const RealRange& z, const RealRange& x, const RealRange& y) {
  if (z.IsEmpty() || x.IsEmpty() || y.IsEmpty()) return RealRange::Empty();
  return Intersection(ExponentsOf(z, x, 0), y);
}

SubdefReal pow(const SubdefReal& x, const SubdefReal& y) {
  return Answer(Power(Extended(x), Extended(y)));
}

SubdefReal pow(const SubdefReal& x, double y) { return pow(x, SubdefReal(y, y)); }

SubdefReal pow(const SubdefReal& x, const SubIntBase& n) {
  const auto exponent = static_cast<double>(n);
  return pow(x, SubdefReal(exponent, exponent));
}

SubdefReal pow(const SubdefReal& x, const SubdefReal& z, const SubdefInt& n) {
  const RealRange bases = Extended(x), within = Extended(z);
  return Answer(ForEachExponent(
      IntegersOf(n), [&](const RealRange& integers) { return Image(bases, within, integers); }));
}

SubdefReal pow(const SubdefReal& x, double z, const SubdefInt& n) {
  return pow(x, SubdefReal(z, z), n);
}

SubdefReal base(const SubdefReal& z, const SubdefReal& y) {
  return Answer(InversePower(Extended(z), RealRange(), Extended(y)));
}

SubdefReal base(const SubdefReal& z, double y) { return base(z, SubdefReal(y, y)); }

SubdefReal base(const SubdefReal& z, const SubdefReal& x, const SubdefInt& n) {
  if (z.IsEmpty() || x.IsEmpty()) return Answer(RealRange::Empty());
  const RealRange powers = Extended(z), within = Extended(x);
  return Answer(ForEachExponent(IntegersOf(n), [&](const RealRange& integers) {
    return Preimage(powers, within, integers);
  }));
}

SubdefReal base(const SubdefReal& z, const SubdefReal& x, const SubIntBase& n) {
  return base(z, x, SubdefInt(n, n));
}

SubdefInt exponent(const SubdefReal& z, const SubdefReal& x, const SubdefInt& n) {
  const RealRange powers = Extended(z), bases = Extended(x);
  const RealRange candidates = Intersection(ExponentsOf(powers, bases, 1), IntegersOf(n));
  double first = std::ceil(candidates.lower);
  double last = std::floor(candidates.upper);
  const auto reaches = [&](double k) { return !Image(bases, powers, {k, k}).IsEmpty(); };
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
