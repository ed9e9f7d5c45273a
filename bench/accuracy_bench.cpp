// Compares the library with MPFR on as many points as asked for and prints what docs/accuracy.md
// records: accuracy_bench [POINTS PER OPERATION [SEED]]. Fails when a bound is wrong or more than
// one unit in the last place beyond the tightest.

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "framework/intervals/ZULTavIntervals.h"
#include "tests/intervals/mpfr_oracle.h"
#include "tests/oracle/operators.h"

namespace {

constexpr double kMax = 1e19;
constexpr double kHalfPi = 1.5707963267948968;  // rounded up
constexpr double kPi = 3.1415926535897936;

using Rounded = int (*)(mpfr_ptr z, mpfr_srcptr x, mpfr_srcptr y, mpfr_rnd_t direction);

struct Operation {
  const char* name;
  double reach;   ///< magnitude of the first argument
  bool positive;  ///< whether it must be positive
  double secondReach;
  SubdefReal (*interval)(const SubdefReal& x, const SubdefReal& y);
  Rounded oracle;
};

#define UNARY(function) [](const SubdefReal& x, const SubdefReal&) { return function(x); }
#define BINARY(method) \
  [](const SubdefReal& x, const SubdefReal& y) { return SubdefReal(x.method(y)); }
/// The principal branch.
#define INVERSE(function, low, high) \
  [](const SubdefReal& x, const SubdefReal&) { return function(x, SubdefReal(low, high)); }
/// A function of RealRange, brought between the limits.
#define RANGE(formula)                                                                     \
  [](const SubdefReal& first, const SubdefReal& second) {                                  \
    const zultav::RealRange x(first.lower, first.upper);                                   \
    const zultav::RealRange y(second.lower, second.upper);                                 \
    const zultav::RealRange z = ((void)y, zultav::formula);                                \
    return SubdefReal(std::clamp(z.lower, -kMax, kMax), std::clamp(z.upper, -kMax, kMax)); \
  }
#define MPFR(function) \
  [](mpfr_ptr z, mpfr_srcptr x, mpfr_srcptr, mpfr_rnd_t d) { return mpfr_##function(z, x, d); }

// clang-format off
const Operation kOperations[] = {
    {"sum",         kMax / 2, false, kMax / 2, BINARY(AddIntToInt), oracle::Get("+").rounded},
    {"difference",  kMax / 2, false, kMax / 2, BINARY(SubIntFromInt), oracle::Get("-").rounded},
    {"product",     kMax / 2, false, kMax / 2, BINARY(MultIntByInt), oracle::Get("*").rounded},
    {"quotient",    kMax / 2, false, kMax / 2, BINARY(DivIntByInt), oracle::Get("/").rounded},
    {"sqrt",        kMax,     true,  0, UNARY(sqrt), oracle::Get("sqrt", 1).rounded},
    {"sqr",         kMax,     false, 0, UNARY(sqr),
     [](mpfr_ptr z, mpfr_srcptr x, mpfr_srcptr, mpfr_rnd_t d) { return mpfr_sqr(z, x, d); }},
    {"exp",         kMax,     false, 0, UNARY(exp), oracle::Get("exp", 1).rounded},
    {"log",         kMax,     true,  0, UNARY(log), oracle::Get("ln", 1).rounded},
    {"sin",         kMax,     false, 0, UNARY(sin), oracle::Get("sin", 1).rounded},
    {"cos",         kMax,     false, 0, UNARY(cos), oracle::Get("cos", 1).rounded},
    {"tan",         1e14,     false, 0, UNARY(tan), oracle::Get("tan", 1).rounded},
    {"atan",        kMax,     false, 0, UNARY(atan), oracle::Get("atan", 1).rounded},
    {"asin(z, x)",  1,        false, 0, INVERSE(asin, -kHalfPi, kHalfPi), oracle::Get("asin", 1).rounded},
    {"acos(z, x)",  1,        false, 0, INVERSE(acos, 0, kPi), oracle::Get("acos", 1).rounded},
    {"atan(z, x)",  1e15,     false, 0, INVERSE(atan, -kHalfPi, kHalfPi), oracle::Get("atan", 1).rounded},
    {"pow(x, y)",   kMax / 2, true,  kMax / 2,
     [](const SubdefReal& x, const SubdefReal& y) { return pow(x, y); }, oracle::Get("^").rounded},
    {"base(z, 3)",  kMax / 2, false, 0,
     [](const SubdefReal& z, const SubdefReal&) { return base(z, 3.0); },
     [](mpfr_ptr z, mpfr_srcptr x, mpfr_srcptr, mpfr_rnd_t d) { return mpfr_cbrt(z, x, d); }},
    {"Asin",        1,        false, 0, RANGE(Asin(x)), MPFR(asin)},
    {"Acos",        1,        false, 0, RANGE(Acos(x)), MPFR(acos)},
    {"Atan2",       kMax / 2, false, kMax / 2, RANGE(Atan2(x, y)), mpfr_atan2},
    {"Hypot",       kMax / 2, false, kMax / 2, RANGE(Hypot(x, y)), mpfr_hypot},
    {"Sinh",        45,       false, 0, RANGE(Sinh(x)), MPFR(sinh)},
    {"Cosh",        45,       false, 0, RANGE(Cosh(x)), MPFR(cosh)},
    {"Tanh",        45,       false, 0, RANGE(Tanh(x)), MPFR(tanh)},
    {"Asinh",       kMax,     false, 0, RANGE(Asinh(x)), MPFR(asinh)},
    {"Acosh",       kMax,     true,  0, RANGE(Acosh(x)), MPFR(acosh)},
    {"Atanh",       0x1.fffffffffffffp-1, false, 0, RANGE(Atanh(x)), MPFR(atanh)},
    {"Log2",        kMax,     true,  0, RANGE(Log2(x)), MPFR(log2)},
    {"Log10",       kMax,     true,  0, RANGE(Log10(x)), MPFR(log10)},
    {"Exp2",        64,       false, 0, RANGE(Exp2(x)), MPFR(exp2)},
    {"Exp10",       19,       false, 0, RANGE(Exp10(x)), MPFR(exp10)},
    {"Cbrt",        kMax,     false, 0, RANGE(Cbrt(x)), MPFR(cbrt)},
};
// clang-format on

/// How many doubles high is above low.
double DoublesBetween(double low, double high) {
  const auto place = [](double x) {
    const auto bits = std::bit_cast<std::int64_t>(x + 0.0);
    return static_cast<double>(bits >= 0 ? bits : std::numeric_limits<std::int64_t>::min() - bits);
  };
  return place(high) - place(low);
}

struct Tally {
  std::int64_t points = 0, wrong = 0, wider = 0;
  double widest = 0;

  void Count(const SubdefReal& found, const SubdefReal& tightest) {
    ++points;
    for (const double excess : {DoublesBetween(found.lower, tightest.lower),
                                DoublesBetween(tightest.upper, found.upper)}) {
      wrong += !(excess >= 0);
      wider += excess > 0;
      widest = std::max(widest, excess);
    }
  }
};

Tally Run(const Operation& operation, std::int64_t points, std::uint64_t seed) {
  HardDoubles doubles(seed);
  Tally tally;
  mpfr_t a, b, c;
  for (mpfr_ptr number : {a, b}) mpfr_init2(number, 53);
  mpfr_init2(c, 64);
  while (tally.points < points) {
    double x = doubles.Draw(operation.reach);
    const double y = operation.secondReach > 0 ? doubles.Draw(operation.secondReach) : 0;
    if (operation.positive) x = std::fabs(x);
    if (x == 0 || std::fabs(x) >= kMax || (operation.secondReach > 0 && y == 0)) continue;
    mpfr_set_d(a, x, MPFR_RNDN);
    mpfr_set_d(b, y, MPFR_RNDN);
    const int inexact = operation.oracle(c, a, b, MPFR_RNDD);
    if (mpfr_nan_p(c)) continue;
    const double low = mpfr_get_d(c, MPFR_RNDD);
    double high = mpfr_get_d(c, MPFR_RNDU);
    if (inexact != 0 && mpfr_cmp_d(c, high) == 0) high = std::nextafter(high, HUGE_VAL);
    tally.Count(operation.interval(SubdefReal(x, x), SubdefReal(y, y)),
                SubdefReal(std::clamp(low, -kMax, kMax), std::clamp(high, -kMax, kMax)));
  }
  for (mpfr_ptr number : {a, b, c}) mpfr_clear(number);
  return tally;
}

}  // namespace

int main(int argc, char** argv) {
  const std::int64_t points = argc > 1 ? std::atoll(argv[1]) : 1000000;
  const std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
  SetTrigLimits(-3e18, 3e18);
  bool failed = false;
  std::printf("%-12s %12s %8s %8s %10s\n", "operation", "points", "wrong", "wider", "widest/ulp");
  for (const Operation& operation : kOperations) {
    const Tally tally = Run(operation, points, seed);
    std::printf("%-12s %12" PRId64 " %8" PRId64 " %8" PRId64 " %10g\n", operation.name,
                tally.points, tally.wrong, tally.wider, tally.widest);
    std::fflush(stdout);
    failed |= tally.wrong > 0 || tally.widest > 1;
  }
  return failed;
}
