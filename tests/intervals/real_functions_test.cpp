#include <gtest/gtest.h>

#include <cfenv>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealFunctions.h"
#include "tests/intervals/mpfr_oracle.h"

namespace {

constexpr double kMax = 1e19;

using Function = SubdefReal(const SubdefReal&);
using MpfrFunction = int(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);

struct FunctionCase {
  const char* name;
  Function* function;
  MpfrFunction* oracle;
  double least;  ///< the domain
  double greatest;
  bool monotone;
};
void PrintTo(const FunctionCase& row, std::ostream* out) { *out << row.name; }

class RealFunctionTest : public testing::TestWithParam<FunctionCase> {
 protected:
  ~RealFunctionTest() override { SubdefReal::sMaxValue = kMax; }

  static SubdefReal TightestAt(double x) {
    return Tightest(
        [x](mpfr_ptr y, mpfr_rnd_t direction) { GetParam().oracle(y, Mpfr(x), direction); });
  }
  bool InDomain(double x) const { return x >= GetParam().least && x <= GetParam().greatest; }
};

TEST_P(RealFunctionTest, IsTheTightestEnclosureAtPoints) {
  const FunctionCase& row = GetParam();
  for (const double max : {kMax, 0x1p1023}) {  // with a large limit the results overflow, too
    SubdefReal::sMaxValue = max;
    HardDoubles doubles(2);
    for (int i = 0; i < 10000; ++i) {
      const double x = doubles.Draw(max * 0x1.fp-1);
      if (!InDomain(x)) continue;
      ASSERT_EQ(row.function({x, x}), TightestAt(x)) << std::hexfloat << x;
    }
  }
  EXPECT_FALSE(SDCheckError());
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

TEST_P(RealFunctionTest, EnclosesThePointsOfAnInterval) {
  const FunctionCase& row = GetParam();
  HardDoubles doubles(3);
  for (int i = 0; i < 3000; ++i) {
    const SubdefReal x = doubles.DrawInterval(kMax / 2);
    if (!InDomain(x.lower) || !InDomain(x.upper)) continue;
    const SubdefReal y = row.function(x);
    SubdefReal hull = TightestAt(x.lower).mf_Union(TightestAt(x.upper));
    if (row.monotone) {
      ASSERT_EQ(y, hull) << std::hexfloat << x.lower << ' ' << x.upper;
    }
    for (int k = 0; k < 4; ++k) {
      const double middle = x.lower + (x.upper - x.lower) * std::fabs(doubles.Fraction());
      hull = hull.mf_Union(TightestAt(std::clamp(middle, x.lower, x.upper)));
    }
    ASSERT_TRUE(y.lower <= hull.lower && hull.upper <= y.upper)
        << std::hexfloat << x.lower << ' ' << x.upper;
  }
  EXPECT_FALSE(SDCheckError());
}

INSTANTIATE_TEST_SUITE_P(All, RealFunctionTest,
                         testing::Values(FunctionCase{"Exp", exp, mpfr_exp, -1e300, 1e300, true},
                                         FunctionCase{"Log", log, mpfr_log, 0x1p-1074, 1e308, true},
                                         FunctionCase{"Sqrt", sqrt, mpfr_sqrt, 0, 1e308, true},
                                         FunctionCase{"Sqr", sqr, mpfr_sqr, -1e150, 1e150, false},
                                         FunctionCase{"Sin", sin, mpfr_sin, -kMax, kMax, false},
                                         FunctionCase{"Cos", cos, mpfr_cos, -kMax, kMax, false},
                                         FunctionCase{"Tan", tan, mpfr_tan, -1e14, 1e14, false},
                                         FunctionCase{"Atan", atan, mpfr_atan, -1e308, 1e308,
                                                      true}),
                         [](const auto& row) { return row.param.name; });

TEST(RealFunctionsTest, CountExtremesAndPolesBetweenTheBounds) {
  // The extremes of sine and cosine and the poles of tangent within [a, b], counted with MPFR.
  const auto holds = [](double a, double b, double offset, double period) {
    const auto count = [&](double x) {  // floor((x / (pi/2) - offset) / period)
      Mpfr y;
      mpfr_const_pi(y, MPFR_RNDN);
      mpfr_d_div(y, x, y, MPFR_RNDN);
      mpfr_mul_ui(y, y, 2, MPFR_RNDN);
      mpfr_sub_d(y, y, offset, MPFR_RNDN);
      mpfr_div_d(y, y, period, MPFR_RNDN);
      mpfr_floor(y, y);
      return mpfr_get_sj(y, MPFR_RNDN);
    };
    return count(a) != count(b);
  };
  HardDoubles doubles(4);
  for (int i = 0; i < 20000; ++i) {
    const double a = doubles.Draw(i % 2 ? 9e13 : 9e18);
    const double b = i % 3 ? a + 7 * std::fabs(doubles.Fraction()) : std::nextafter(a, kMax);
    if (a == 0 || b == 0) continue;
    SCOPED_TRACE(testing::Message() << std::hexfloat << a << ' ' << b);
    const SubdefReal x(a, b);
    const SubdefReal ends = sin(SubdefReal(a, a)).mf_Union(sin(SubdefReal(b, b)));
    ASSERT_EQ(sin(x).upper, holds(a, b, 1, 4) ? 1 : ends.upper);
    ASSERT_EQ(sin(x).lower, holds(a, b, 3, 4) ? -1 : ends.lower);
    const SubdefReal cosEnds = cos(SubdefReal(a, a)).mf_Union(cos(SubdefReal(b, b)));
    ASSERT_EQ(cos(x).upper, holds(a, b, 0, 4) ? 1 : cosEnds.upper);
    ASSERT_EQ(cos(x).lower, holds(a, b, 2, 4) ? -1 : cosEnds.lower);
    const bool whole = b > 1e14 || a < -1e14 || holds(a, b, 1, 2);
    ASSERT_EQ(tan(x) == SubdefReal(), whole);
  }
}

TEST(RealFunctionsTest, TreatsLimitsAndSpecialValues) {
  const SubdefReal line;
  const SubdefReal empty(kMax, -kMax);
  const double belowOne = 1 - 0x1p-53;
  struct Row {
    Function* function;
    SubdefReal x, y;
    bool flag;
  };
  const Row rows[] = {
      {exp,  {0, 0},            {1, 1},                                    false},
      {exp,  line,              {0, kMax},                                 false},
      {exp,  {50, 60},          {kMax, kMax},                              false},
      {exp,  {-1e18, -1e3},     {0, 0x1p-1074},                            false},
      {exp,  {-1e-300, 1e-300}, {belowOne, 1 + 0x1p-52},                   false},
      {log,  {1, 1},            {0, 0},                                    false},
      {log,  {-3, 1},           {-kMax, 0},                                false},
      {log,  {1, kMax},         {0, kMax},                                 false},
      {log,  {-3, 0},           empty,                                     true },
      {log,  empty,             empty,                                     true },
      {sqrt, {-4, 9},           {0, 3},                                    false},
      {sqrt, {4, kMax},         {2, kMax},                                 false},
      {sqrt, {-4, -1},          empty,                                     false},
      {sqr,  {-3, 2},           {0, 9},                                    false},
      {sqr,  {-kMax, -5},       {25, kMax},                                false},
      {sin,  {0, 0},            {0, 0},                                    false},
      {sin,  line,              {-1, 1},                                   false},
      {sin,  {0, kMax},         {-1, 1},                                   false},
      {cos,  {0, 0},            {1, 1},                                    false},
      {cos,  {-1e-9, 1e-9},     {belowOne, 1},                             false},
      {tan,  {0, 0},            {0, 0},                                    false},
      {tan,  {1.5, 1.6},        line,                                      false},
      {tan,  {0, 2e14},         line,                                      false},
      {atan, {0, 0},            {0, 0},                                    false},
      {atan, line,              {-1.5707963267948968, 1.5707963267948968}, false},
      {exp,  {2, 1},            empty,                                     false},
      {sin,  {2, 1},            empty,                                     false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << &row - rows);
    EXPECT_EQ(row.function(row.x), row.y);
    EXPECT_EQ(SDCheckError() != 0, row.flag);
    SDClearError();
  }
}

}  // namespace
