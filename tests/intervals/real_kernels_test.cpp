// The double-double kernels behind the elementary functions, against the error that each claims.
// A claim that is too small would show in the functions' bounds only once in 2^10 points.

#include <gtest/gtest.h>

#include "framework/intervals/detail/HyperbolicKernels.h"
#include "tests/intervals/mpfr_oracle.h"

using namespace zultav::detail;

namespace {

using elementary::Approximation;

struct KernelCase {
  const char* name;
  Approximation (*kernel)(double);
  int (*oracle)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  double least;  ///< magnitudes
  double greatest;
  bool isOfPositive = false;
};
void PrintTo(const KernelCase& row, std::ostream* out) { *out << row.name; }

class KernelTest : public testing::TestWithParam<KernelCase> {};

TEST_P(KernelTest, KeepsWithinItsClaim) {
  const KernelCase& row = GetParam();
  HardDoubles doubles(8);
  double worst = 0;
  for (int points = 0; points < 10000;) {
    const double x = doubles.Draw(row.greatest);
    if (std::fabs(x) < row.least || (row.isOfPositive && (x < 0 || x == 1))) continue;
    ++points;
    const Approximation y = row.kernel(x);
    Mpfr error(x);
    row.oracle(error, error, MPFR_RNDN);
    mpfr_sub_d(error, error, y.value.hi, MPFR_RNDN);
    mpfr_sub_d(error, error, y.value.lo, MPFR_RNDN);
    mpfr_div_d(error, error, y.error, MPFR_RNDN);
    const double share = std::fabs(mpfr_get_d(error, MPFR_RNDA));
    ASSERT_LE(share, 1) << std::hexfloat << x;
    ASSERT_EQ(y.value.hi + y.value.lo, y.value.hi) << std::hexfloat << x;
    ASSERT_LE(y.error, 0x1p-55 * std::fabs(y.value.hi)) << std::hexfloat << x;
    worst = std::max(worst, share);
  }
  EXPECT_GT(worst, 0.01);  // claims far beyond the errors would only cost time
}

/// Unscaled, which the range of arguments allows.
template <class Scaled>
Approximation Unscaled(const Scaled& approximation) {
  const auto& [y, exponent] = approximation;
  const double scale = std::ldexp(1, static_cast<int>(exponent));
  return {
      {y.value.hi * scale, y.value.lo * scale},
      y.error * scale
  };
}

INSTANTIATE_TEST_SUITE_P(
    All, KernelTest,
    testing::Values(
        KernelCase{"Exp", [](double x) { return Unscaled(elementary::Exp(x)); }, mpfr_exp, 0x1p-54,
                   600},
        KernelCase{"Log", [](double x) { return elementary::Log(x); }, mpfr_log, 0x1p-1074, 1e300,
                   true},
        KernelCase{"Sin", [](double x) { return elementary::Sin(elementary::Reduce(x), 0); },
                   mpfr_sin, 0x1p-27, 1e19},
        KernelCase{"Cos", [](double x) { return elementary::Sin(elementary::Reduce(x), 1); },
                   mpfr_cos, 0x1p-27, 1e19},
        KernelCase{"Tan", [](double x) { return elementary::Tan(elementary::Reduce(x)); }, mpfr_tan,
                   0x1p-27, 1e19},
        KernelCase{"Atan", [](double x) { return elementary::Atan(x); }, mpfr_atan, 0x1p-27,
                   0x1p55},
        KernelCase{"Sinh", [](double x) { return Unscaled(elementary::Sinh(x)); }, mpfr_sinh,
                   0x1p-27, 600, true},
        KernelCase{"Cosh", [](double x) { return Unscaled(elementary::Cosh(x)); }, mpfr_cosh,
                   0x1p-27, 600, true},
        KernelCase{"Tanh", [](double x) { return elementary::Tanh(x); }, mpfr_tanh, 0x1p-27, 20,
                   true},
        KernelCase{"Asinh", [](double x) { return elementary::Asinh(x); }, mpfr_asinh, 0x1p-27,
                   1e300, true},
        KernelCase{"Acosh", [](double x) { return elementary::Acosh(x); }, mpfr_acosh, 1, 1e300,
                   true},
        KernelCase{"Atanh", [](double x) { return elementary::Atanh(x); }, mpfr_atanh, 0x1p-27,
                   0x1.fffffffffffffp-1, true}),
    [](const auto& row) { return row.param.name; });

}  // namespace
