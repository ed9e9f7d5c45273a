#include <gtest/gtest.h>

#include <cfenv>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealFunctions.h"
#include "tests/intervals/mpfr_oracle.h"

namespace {

constexpr double kMax = 1e19;

using Inverse = SubdefReal(const SubdefReal&, const SubdefReal&);
using MpfrFunction = int(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

struct InverseCase {
  const char* name;
  Inverse* inverse;
  MpfrFunction* principal;
  double largest;  ///< of the function's values
  int turn;        ///< half-turns to a period
  bool reflected;  ///< whether -a (for cosine) or pi - a (for sine) is a solution beside a
};
void PrintTo(const InverseCase& row, std::ostream* out) { *out << row.name; }

class RealInverseTest : public testing::TestWithParam<InverseCase> {
 protected:
  RealInverseTest() { SetTrigLimits(-1e19, 1e19); }
  ~RealInverseTest() override { InitIntervals(2147483646, kMax, -3.2e13, 3.2e13, 1e-6); }

  /// k half-turns plus or minus the principal value of z, rounded at 400 bits.
  static Mpfr Root(double z, std::int64_t k, bool minus, mpfr_rnd_t direction) {
    const mpfr_rnd_t opposite = direction == MPFR_RNDD ? MPFR_RNDU : MPFR_RNDD;
    Mpfr root;
    Mpfr arc, halfTurns;
    mpfr_set_sj(halfTurns, k, MPFR_RNDN);
    mpfr_const_pi(root, MPFR_RNDN);
    mpfr_mul(root, root, halfTurns, direction);
    GetParam().principal(arc, Mpfr(z), minus ? opposite : direction);
    (minus ? mpfr_sub : mpfr_add)(root, root, arc, direction);
    return root;
  }

  static std::int64_t HalfTurns(double x) {
    Mpfr y;
    mpfr_const_pi(y, MPFR_RNDN);
    mpfr_d_div(y, x, y, MPFR_RNDN);
    return mpfr_get_sj(y, MPFR_RNDN);
  }

  /// The hull of the arcs of solutions within x, one period after the other.
  static SubdefReal Walk(const SubdefReal& z, const SubdefReal& x) {
    const InverseCase& row = GetParam();
    const SubdefReal values(std::max(z.lower, -row.largest), std::min(z.upper, row.largest));
    SubdefReal hull(kMax, -kMax);
    if (values.IsEmpty()) return hull;
    for (std::int64_t k = HalfTurns(x.lower) - 2; k <= HalfTurns(x.upper) + 2; ++k) {
      for (const bool minus : {false, true}) {
        if (minus && !row.reflected) continue;
        // sine: 2 k pi + a and (2 k + 1) pi - a; cosine: 2 k pi + a and 2 k pi - a
        const bool odd = minus && row.principal == mpfr_asin;
        if ((k % row.turn != 0) != odd) continue;
        const Mpfr ends[] = {
            Root(values.lower, k, minus, MPFR_RNDD), Root(values.upper, k, minus, MPFR_RNDD),
            Root(values.lower, k, minus, MPFR_RNDU), Root(values.upper, k, minus, MPFR_RNDU)};
        const Mpfr& low = mpfr_less_p(ends[0], ends[1]) ? ends[0] : ends[1];
        const Mpfr& high = mpfr_greater_p(ends[2], ends[3]) ? ends[2] : ends[3];
        if (mpfr_cmp_d(low, x.upper) > 0 || mpfr_cmp_d(high, x.lower) < 0) continue;
        hull = hull.mf_Union({std::max(mpfr_get_d(low, MPFR_RNDD), x.lower),
                              std::min(mpfr_get_d(high, MPFR_RNDU), x.upper)});
      }
    }
    return hull;
  }
};

TEST_P(RealInverseTest, IsTheHullOfTheArcsThatMeetTheArgument) {
  const InverseCase& row = GetParam();
  HardDoubles doubles(5);
  for (int i = 0; i < 3000; ++i) {
    const double max = i % 4 ? 100 : 9e18;
    const double start = doubles.Draw(max);
    SubdefReal x(start, start + std::ldexp(1.5, static_cast<int>(doubles.Below(14)) - 10));
    if (i % 5 == 0) x.upper = x.lower;
    const double reach = row.largest == 1 ? 1.1 : kMax / 2;
    SubdefReal z = doubles.DrawInterval(reach);
    if (i % 3 == 0) z.upper = z.lower;
    const SubdefReal walked = Walk(z, x);
    const SubdefReal found = row.inverse(z, x);
    SCOPED_TRACE(testing::Message()
                 << std::hexfloat << z.lower << ' ' << z.upper << ' ' << x.lower << ' ' << x.upper);
    ASSERT_EQ(SDCheckError() != 0, found.IsEmpty());
    SDClearError();
    if (walked.IsEmpty()) {
      ASSERT_TRUE(found.IsEmpty());
    } else {
      ASSERT_EQ(found, walked);
    }
  }
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

TEST_P(RealInverseTest, LeavesWhatLiesOutsideTheWindow) {
  const InverseCase& row = GetParam();
  const SubdefReal none(5, 6);  // not a value of sine or cosine
  const SubdefReal zero(0, 0);
  const SubdefReal line;
  SetTrigLimits(-1, 1);
  const double pi = GetTrigHigh();
  const double atZero = row.principal == mpfr_acos ? 1 : 0;
  EXPECT_EQ(row.inverse({atZero, atZero}, zero), zero);
  EXPECT_EQ(row.inverse(zero, {10, 11}), SubdefReal(10, 11));
  EXPECT_EQ(row.inverse(zero, {-11, -10}), SubdefReal(-11, -10));
  EXPECT_EQ(row.inverse(zero, line), line);
  EXPECT_EQ(row.inverse(zero, {0.1, kMax}).upper, kMax);
  if (row.largest == 1) {
    EXPECT_EQ(row.inverse(none, {-11, 2}), SubdefReal(-11, -pi));
    EXPECT_EQ(row.inverse(none, {-2, 11}), SubdefReal(pi, 11));
    EXPECT_EQ(row.inverse(none, line), line);
    EXPECT_FALSE(SDCheckError());
    EXPECT_TRUE(row.inverse(none, {-2, 2}).IsEmpty());
    EXPECT_TRUE(SDCheckError());
    SDClearError();
  }
  EXPECT_TRUE(row.inverse(zero, {2, 1}).IsEmpty());
  EXPECT_TRUE(SDCheckError());
  SDClearError();
}

INSTANTIATE_TEST_SUITE_P(All, RealInverseTest,
                         testing::Values(InverseCase{"Sine", asin, mpfr_asin, 1, 2, true},
                                         InverseCase{"Cosine", acos, mpfr_acos, 1, 2, true},
                                         InverseCase{"Tangent", atan, mpfr_atan, HUGE_VAL, 1,
                                                     false}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
