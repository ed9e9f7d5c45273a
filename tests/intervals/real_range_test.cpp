// RealRange over all doubles, against MPFR: one table for all functions and their projections.

#include <gtest/gtest.h>

#include <cfenv>
#include <functional>
#include <vector>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealRange.h"
#include "tests/intervals/mpfr_oracle.h"

using namespace zultav;

namespace {

using Oracle = int(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
template <int (*F)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t)>
int Unary(mpfr_ptr y, mpfr_srcptr x, mpfr_srcptr, mpfr_rnd_t direction) {
  return F(y, x, direction);
}
template <long N>
int ToThe(mpfr_ptr y, mpfr_srcptr x, mpfr_srcptr, mpfr_rnd_t direction) {
  return mpfr_pow_si(y, x, N, direction);
}
int PowerOfMagnitude(mpfr_ptr z, mpfr_srcptr x, mpfr_srcptr y, mpfr_rnd_t direction) {
  mpfr_abs(z, x, MPFR_RNDN);
  return mpfr_pow(z, z, y, direction);
}
/// The origin has no angle.
int Angle(mpfr_ptr z, mpfr_srcptr y, mpfr_srcptr x, mpfr_rnd_t direction) {
  if (mpfr_zero_p(x) == 0 || mpfr_zero_p(y) == 0) return mpfr_atan2(z, y, x, direction);
  mpfr_set_nan(z);
  return 0;
}

/// Where the extremes of a function over a box are: at its corners and zeros, or anywhere.
enum class Extremes { kCorners, kAnywhere };
constexpr auto kCorners = Extremes::kCorners, kAnywhere = Extremes::kAnywhere;

using R = RealRange;
using Function = std::function<R(const R& x, const R& y)>;
using Projection = std::function<R(const R& z, const R& x, const R& y)>;
#define OF(formula) [](const R& x, const R& y) { return (void)y, formula; }
#define BACK(formula) [](const R& z, const R& x, const R& y) { return (void)x, (void)y, formula; }

struct Row {
  const char* name;
  Function function;
  Oracle* oracle;
  Extremes extremes;
  Projection toX = nullptr, toY = nullptr;
  int slack = 1;  ///< units in the last place between projections and solutions; -1 any number
};

const R kWindow(-1e19, 1e19);
constexpr double kFarthestAngle = 1e14;

// clang-format off
const Row kRows[] = {
    {"Sum", OF(x + y), mpfr_add, kCorners, BACK(Intersection(z - y, x)),
     BACK(Intersection(z - x, y))},
    {"Difference", OF(x - y), mpfr_sub, kCorners, BACK(Intersection(z + y, x)),
     BACK(Intersection(x - z, y))},
    {"Product", OF(x * y), mpfr_mul, kCorners, BACK(Quotients(x, z, y)), BACK(Quotients(y, z, x))},
    {"Quotient", OF(x / y), mpfr_div, kCorners, BACK(Intersection(z * y, x)),
     BACK(Quotients(y, x, z))},
    {"Negative", OF(-x), Unary<mpfr_neg>, kCorners, BACK(Intersection(-z, x))},
    {"Abs", OF(Abs(x)), Unary<mpfr_abs>, kCorners, BACK(InverseAbs(z, x))},
    {"Min", OF(Min(x, y)), mpfr_min, kCorners, BACK(Intersection(InverseMin(z, y), x)),
     BACK(Intersection(InverseMin(z, x), y))},
    {"Max", OF(Max(x, y)), mpfr_max, kCorners, BACK(Intersection(InverseMax(z, y), x)),
     BACK(Intersection(InverseMax(z, x), y))},
    {"Square", OF(Square(x)), Unary<mpfr_sqr>, kCorners, BACK(InverseSquare(z, x))},
    {"Sqrt", OF(Sqrt(x)), Unary<mpfr_sqrt>, kCorners, BACK(InverseSqrt(z, x))},
    {"Exp", OF(Exp(x)), Unary<mpfr_exp>, kCorners, BACK(Intersection(Log(z), x))},
    {"Log", OF(Log(x)), Unary<mpfr_log>, kCorners, BACK(Intersection(Exp(z), x))},
    {"Sin", OF(Sin(x)), Unary<mpfr_sin>, kAnywhere, BACK(InverseSin(z, x, kWindow))},
    {"Cos", OF(Cos(x)), Unary<mpfr_cos>, kAnywhere, BACK(InverseCos(z, x, kWindow))},
    {"Tan", OF(Tan(x)), Unary<mpfr_tan>, kAnywhere, BACK(InverseTan(z, x, kWindow))},
    {"Atan", OF(Atan(x)), Unary<mpfr_atan>, kCorners},
    {"PrincipalAtan", OF(Atan(x)), Unary<mpfr_atan>, kCorners, BACK(InverseAtan(z, x))},
    {"Asin", OF(Asin(x)), Unary<mpfr_asin>, kCorners, BACK(InverseAsin(z, x))},
    {"Acos", OF(Acos(x)), Unary<mpfr_acos>, kCorners, BACK(InverseAcos(z, x))},
    {"Atan2", OF(Atan2(x, y)), Angle, kAnywhere, BACK(InverseAtan2(z, x, y)),
     BACK(InverseAtan2Abscissa(z, x, y)), 6},
    {"Hypot", OF(Hypot(x, y)), mpfr_hypot, kCorners, BACK(InverseHypot(z, x, y)),
     BACK(InverseHypot(z, y, x))},
    {"Sinh", OF(Sinh(x)), Unary<mpfr_sinh>, kCorners, BACK(Intersection(Asinh(z), x))},
    {"Cosh", OF(Cosh(x)), Unary<mpfr_cosh>, kCorners, BACK(InverseAbs(Acosh(z), x))},
    {"Tanh", OF(Tanh(x)), Unary<mpfr_tanh>, kCorners, BACK(Intersection(Atanh(z), x))},
    {"Asinh", OF(Asinh(x)), Unary<mpfr_asinh>, kCorners, BACK(Intersection(Sinh(z), x))},
    {"Acosh", OF(Acosh(x)), Unary<mpfr_acosh>, kCorners,
     BACK(Intersection(Cosh(Intersection(z, {0, HUGE_VAL})), x))},
    {"Atanh", OF(Atanh(x)), Unary<mpfr_atanh>, kCorners, BACK(Intersection(Tanh(z), x))},
    {"Log2", OF(Log2(x)), Unary<mpfr_log2>, kCorners, BACK(Intersection(Exp2(z), x))},
    {"Log10", OF(Log10(x)), Unary<mpfr_log10>, kCorners, BACK(Intersection(Exp10(z), x))},
    {"Exp2", OF(Exp2(x)), Unary<mpfr_exp2>, kCorners, BACK(Intersection(Log2(z), x))},
    {"Exp10", OF(Exp10(x)), Unary<mpfr_exp10>, kCorners, BACK(Intersection(Log10(z), x))},
    {"Cbrt", OF(Cbrt(x)), Unary<mpfr_cbrt>, kCorners, BACK(Intersection(Power(z, 3), x))},
    {"Floor", OF(Floor(x)), Unary<mpfr_rint_floor>, kCorners, BACK(InverseFloor(z, x))},
    {"Ceil", OF(Ceil(x)), Unary<mpfr_rint_ceil>, kCorners, BACK(InverseCeil(z, x))},
    {"Round", OF(Round(x)), Unary<mpfr_rint_round>, kCorners, BACK(InverseRound(z, x))},
    {"Cube", OF(Power(x, 3)), ToThe<3>, kCorners, BACK(InversePower(z, x, 3))},
    {"FourthPower", OF(Power(x, 4)), ToThe<4>, kCorners, BACK(InversePower(z, x, 4))},
    {"SeventhPower", OF(Power(x, 7)), ToThe<7>, kCorners, BACK(InversePower(z, x, 7))},
    {"Inverse", OF(Power(x, -1)), ToThe<-1>, kCorners, BACK(InversePower(z, x, -1))},
    {"InverseSquare", OF(Power(x, -2)), ToThe<-2>, kCorners, BACK(InversePower(z, x, -2))},
    {"Power", OF(Power(x, y)), mpfr_pow, kAnywhere, BACK(InversePower(z, x, y)),
     BACK(InverseExponent(z, x, y)), -1},
    {"PowerOfMagnitude", OF(Power(Abs(x), y)), PowerOfMagnitude, kCorners,
     BACK(InverseAbs(InversePower(z, Abs(x), y), x)), BACK(InverseExponent(z, Abs(x), y)), 6},
    {"Remainder", OF(Remainder(x, y)), mpfr_fmod, kAnywhere, BACK(InverseRemainder(z, x, y)),
     BACK(InverseRemainderDivisor(z, x, y)), -1},
};
// clang-format on

class RealRangeTest : public testing::TestWithParam<Row> {
 protected:
  /// Ranges of all kinds: of any bits, around 1, of a few units in the last place, of small whole
  /// numbers, touching zero, unbounded, points; seldom empty.
  R Draw() {
    const bool isTame = mDoubles.Below(2) != 0;
    const auto bound = [&] {
      const double x = mDoubles.Draw(DBL_MAX);
      return isTame && std::fabs(x) > 1e5 ? std::remainder(x, 8) : x;
    };
    R x(bound(), bound());
    if (x.IsEmpty() && mDoubles.Below(16) != 0) std::swap(x.lower, x.upper);
    switch (mDoubles.Below(12)) {
      case 0:
        return {-HUGE_VAL, x.upper};
      case 1:
        return {x.lower, HUGE_VAL};
      case 2:
        return {0, std::fabs(x.upper)};
      case 3:
        return {-std::fabs(x.lower), -0.0};
      case 4:
      case 5:
      case 6:
        return R::Point(x.lower);
      case 7:
        return {x.lower, std::min(std::nextafter(x.lower, HUGE_VAL), DBL_MAX)};
      default:
        return x;
    }
  }

  /// Points of x: its bounds, its units, its zeros with the sign of the side from which x reaches
  /// them, others.
  std::vector<double> PointsOf(const R& x) {
    std::vector<double> points;
    if (x.IsEmpty()) return points;
    const double middle = x.GetMiddle();
    EXPECT_TRUE(x.Contains(middle) && std::isfinite(middle));
    for (const double p : {x.lower, x.upper, middle, std::nextafter(x.lower, middle),
                           std::nextafter(x.upper, middle), mDoubles.Draw(DBL_MAX), -1.0, 1.0})
      if (x.Contains(p) && p != 0) points.push_back(p);
    if (x.Contains(0) && x.lower < 0) points.push_back(-0.0);
    if (x.Contains(0) && (x.lower == 0 || x.upper > 0)) points.push_back(0.0);
    return points;
  }

  /// The doubles next to the true value, NaN where there is none.
  static R ValueAt(double x, double y) {
    const auto rounded = [&](mpfr_rnd_t direction) {
      Mpfr z;
      GetParam().oracle(z, Mpfr(x), Mpfr(y), direction);
      return mpfr_get_d(z, direction) + 0.0;
    };
    return {rounded(MPFR_RNDD), rounded(MPFR_RNDU)};
  }

  /// Whether the function meets z at the very ends of x, a part of `whole`.
  template <class At>
  static void ExpectTight(const R& x, const R& whole, const R& z, At at) {
    R low = R::Point(x.lower), high = R::Point(x.upper);
    for (int i = 0; i < GetParam().slack; ++i) {
      low.upper = std::nextafter(low.upper, HUGE_VAL);
      high.lower = std::nextafter(high.lower, -HUGE_VAL);
    }
    EXPECT_FALSE(x.lower > whole.lower && Intersection(at(low), z).IsEmpty());
    EXPECT_FALSE(x.upper < whole.upper && Intersection(at(high), z).IsEmpty());
  }

  HardDoubles mDoubles{9};
};

TEST_P(RealRangeTest, EnclosesTightlyAndLosesNoSolution) {
  const Row& row = GetParam();
  for (int i = 0; i < 1000 && !HasFailure(); ++i) {
    const R x = Draw(), y = Draw();
    const R found = row.function(x, y);
    R hull = R::Empty(), z = R::Empty();
    double a = 0, b = 0;  // a solution of z = f(a, b)
    for (const double p : PointsOf(x)) {
      for (const double q : PointsOf(y)) {
        const R value = ValueAt(p, q);
        const bool isPole = std::isinf(value.lower) && value.IsScalar() && p == 0 &&
                            std::isinf(ValueAt(p, std::clamp(q, -1.0, 1.0)).lower);
        if (isPole && x.IsScalar()) continue;  // there are no values next to it
        hull = Hull(hull, value);
        if (value.IsEmpty() || (value.IsScalar() && std::isinf(value.lower))) continue;
        if (std::isinf(p) || std::isinf(q)) continue;
        ASSERT_TRUE(found.lower <= value.lower && value.upper <= found.upper)
            << std::hexfloat << x.lower << ' ' << x.upper << ' ' << y.lower << ' ' << y.upper
            << ": " << found.lower << ' ' << found.upper << " at " << p << ' ' << q;
        if (!z.IsEmpty() && mDoubles.Below(4) != 0) continue;
        a = p;
        b = q;
        z = value;
      }
    }
    SCOPED_TRACE(testing::Message()
                 << std::hexfloat << '[' << x.lower << ", " << x.upper << "] [" << y.lower << ", "
                 << y.upper << "] -> [" << found.lower << ", " << found.upper << ']');
    if (x.IsEmpty()) {
      EXPECT_TRUE(found.IsEmpty());
    }
    const bool isTight = row.extremes == kCorners ||
                         (x.IsScalar() && y.IsScalar() && x.GetMagnitude() <= kFarthestAngle);
    if (!z.IsEmpty() && isTight) {
      EXPECT_EQ(found, hull);
    }
    if (!row.toX || z.IsEmpty()) continue;
    if (mDoubles.Below(2)) z = Hull(z, Draw());
    const R left = row.toX(z, x, y);
    const R right = row.toY ? row.toY(z, x, y) : y;
    SCOPED_TRACE(testing::Message()
                 << std::hexfloat << "z = [" << z.lower << ", " << z.upper << "], solution " << a
                 << ' ' << b << " in [" << left.lower << ", " << left.upper << "] [" << right.lower
                 << ", " << right.upper << ']');
    EXPECT_TRUE(left.Contains(a) && right.Contains(b));
    EXPECT_TRUE(Intersection(left, x) == left && Intersection(right, y) == right);
    if (row.slack < 0) continue;
    ExpectTight(left, x, z, [&](const R& part) { return row.function(part, y); });
    ExpectTight(right, y, z, [&](const R& part) { return row.function(x, part); });
  }
  EXPECT_FALSE(SDCheckError());
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

INSTANTIATE_TEST_SUITE_P(All, RealRangeTest, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

}  // namespace
