#include <gtest/gtest.h>
#include <mpfr.h>

#include <array>
#include <cmath>
#include <random>

#include "framework/intervals/ZULTavIntervals.h"
#include "framework/solver/ZULTavAbstractTypes.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "tests/number_module.h"
#include "tests/numbers/print_interval.h"

namespace {

using IR = ZULTavIntervalReal;

TEST(RealFunctionsTest, EdgesOfIntervalFunctions) {
  IR angle(0, 10), far(2e14, 2e14), wave, slope, root(-3, 1), whole(0.2, 0.8);
  EXPECT_EQ(IR(0, 1).CalcInverseCosValue(angle), 1);
  EXPECT_EQ(angle.GetLowerBound(), 0);
  EXPECT_NEAR(angle.GetUpperBound(), 7.853981633974483, 2e-15);
  EXPECT_EQ(wave.CalcSinValue(far), 1);
  EXPECT_EQ(wave.GetSubdef(), RealInterval(-1, 1));
  EXPECT_EQ(IR(1, 1).CalcInverseSinValue(far), 0);
  EXPECT_EQ(slope.CalcTanValue(IR(1, 2)), 0);
  EXPECT_EQ(root.CalcSqrtValue(IR(-4, -1)), 1);
  EXPECT_TRUE(root.IsNil());
  EXPECT_EQ(whole.CalcFloorValue(IR(0, 9)), 1);
  EXPECT_TRUE(whole.IsNil());
}

TEST(RealFunctionsTest, EdgesOfIntervalPower) {
  const auto power = [](RealInterval base, auto exponent) {
    IR z;
    z.CalcPowerValue(static_cast<const ZULTaVoNumber&>(IR(base)), exponent);
    return RealInterval(z.GetSubdef());
  };
  EXPECT_EQ(power({-2, 3}, ZULTavSingleInteger(2)), RealInterval(0, 9));
  EXPECT_EQ(power({-2, -1}, ZULTavIntervalInteger(2, 3)), RealInterval(-8, 4));
  const RealInterval sliverSquared = power({-1e-15, -1e-16}, ZULTavSingleInteger(2));
  EXPECT_TRUE(sliverSquared.Contains(1e-32) && sliverSquared.Contains(1e-30)) << sliverSquared;
  EXPECT_EQ(power({2, 3}, ZULTavIntervalInteger(5, 3)), RealInterval(1e19, -1e19));
  EXPECT_EQ(power({4, 9}, ZULTavSingleReal(0.5)), RealInterval(2, 3));
  IR sliver(-1e-15, -1e-16);
  EXPECT_EQ(IR(0, 1).CalcFirstInversePowerValue(sliver, ZULTavSingleInteger(2)), 0);
  IR half(0, 1), none(0.2, 0.3);
  const IR four(4, 4), sixteen(16, 16);
  EXPECT_EQ(four.CalcSecondInversePowerValue(sixteen, half), 1);
  EXPECT_TRUE(half.GetSubdef().Contains(0.5));
  EXPECT_NEAR(half.GetWidth(), 0, 1e-15);
  EXPECT_EQ(four.CalcSecondInversePowerValue(sixteen, none), 1);
  EXPECT_TRUE(none.IsNil());
  ZULTavIntervalInteger whole(0, 1), three(-9, 9);
  EXPECT_EQ(four.CalcSecondInversePowerValue(sixteen, whole), 1);
  EXPECT_TRUE(whole.IsNil());
  EXPECT_EQ(IR(-8, -8).CalcSecondInversePowerValue(IR(-2, -2), three), 1);
  EXPECT_EQ(three.GetSubdef(), IntegerInterval(3, 3));
  IR tiny(0.2, 0.8);  // 0^y is 0 for any of them
  EXPECT_EQ(IR(0, 0).CalcSecondInversePowerValue(IR(0, 0), tiny), 0);
}

/// Posts z = x op y, propagates, and tells whether the point is still there.
bool KeepsPoint(const char* name, const std::array<const ZULTaVoAny*, 3>& domains, double x,
                double y, const RealInterval& z) {
  ZULTaVoNetwork network;
  std::array<ZULTaVoAny*, 3> values{};
  for (std::size_t i = 0; i < 3; ++i) {
    values[i] = network.AddObject(domains[i]->GetDescriptor());
    values[i]->Assign(*domains[i]);
  }
  const ZULTaVoObjectDescriptor* const types[] = {domains[0]->GetDescriptor(),
                                                  domains[1]->GetDescriptor()};
  ZULTaVoObject* const operands[] = {values[0], values[1]};
  const auto* found = NumberModule().FindOperator(name, types, 2);
  if (found == nullptr || found->Post(network, operands, values[2]) == 0) return false;
  const auto status = network.Propagate();
  const auto holds = [&](std::size_t i, double low, double high) {
    IR set;
    set.Assign(*values[i]);
    return set.GetLowerBound() <= high && low <= set.GetUpperBound();
  };
  return status == ZULTaVoNetwork::Status::kConsistent && holds(0, x, x) && holds(1, y, y) &&
         holds(2, z.lower, z.upper);
}

// Operations on intervals cut x into a negative part and the rest, and overlook the numbers
// between. A constraint must not, whatever else its domains hold.
TEST(RealFunctionsTest, ConstraintsKeepPowersAndRemaindersOfTinyNegatives) {
  mpfr_t low, high;
  mpfr_inits2(300, low, high, static_cast<mpfr_ptr>(nullptr));
  for (const double x :
       {-1e-15, -1e-14, -9.999e-15, std::nextafter(-1e-14, 0.0), -3e-300, -5e-324}) {
    const IR bases[] = {IR(x, x), IR(-1, 1), IR(-1, x / 2), IR(2 * x, -x), IR()};
    const auto check = [&](const char* name, const ZULTaVoAny& second, double y,
                           const RealInterval& point) {
      if (point.upper < -1e19 || point.lower > 1e19) return;
      const double wide = std::fabs(point.lower) / 3;
      for (const IR& z : {IR(), IR(point), IR(point.lower - wide, point.upper + wide)}) {
        for (const IR& base : bases) {
          EXPECT_TRUE(KeepsPoint(name, {&base, &second, &z}, x, y, point))
              << name << " of " << x << " in " << base.GetSubdef() << " and " << y << " ("
              << second.CastableID() << ") with z in " << z.GetSubdef();
        }
      }
    };
    for (const int n : {-3, -2, -1, 1, 2, 3}) {
      const ZULTavIntervalInteger up(n, n + 1), down(n - 1, n), whole(n, n), any(-5, 5);
      const ZULTavSingleInteger single(n), unknown;
      const IR real(n, n), wide(n - 0.5, n + 0.5);
      const ZULTavSingleReal singleReal(static_cast<double>(n));
      mpfr_set_d(low, x, MPFR_RNDN);
      mpfr_pow_si(high, low, n, MPFR_RNDU);
      mpfr_pow_si(low, low, n, MPFR_RNDD);
      for (const ZULTaVoAny* exponent : std::initializer_list<const ZULTaVoAny*>{
               &up, &down, &whole, &any, &single, &unknown, &real, &wide, &singleReal})
        check("^", *exponent, n, {mpfr_get_d(low, MPFR_RNDD), mpfr_get_d(high, MPFR_RNDU)});
    }
    const ZULTavIntervalInteger divisors(1, 3);
    const ZULTavSingleReal single(-2.0);
    const IR real(0.5, 2);
    check("mod", divisors, 2, {x, x});
    check("mod", single, -2, {x, x});
    check("mod", real, 2, {x, x});
  }
  mpfr_clears(low, high, static_cast<mpfr_ptr>(nullptr));
}

// Single reals -----------------------------------------------------------------------------------

using SR = ZULTavSingleReal;
constexpr double kAny = 1e21, kNil = -1e21;

/// r = f(a, b) as double arithmetic has it, and what the operations do to a lone unknown.
struct SingleFunction {
  const char* name;
  double (*value)(double a, double b);
  int (*forward)(SR& r, const SR& a, const SR& b);
  int (*inverse)(const SR& r, SR& a, const SR& b);
  bool solvesForA;  // a unique a follows from r and b
};
#define SINGLE(name, formula, forward, inverse, solves)                                    \
  SingleFunction {                                                                         \
    name, [](double a, [[maybe_unused]] double b) -> double { return formula; },           \
        [](SR& r, const SR& a, [[maybe_unused]] const SR& b) { return r.forward; },        \
        [](const SR& r, SR& a, [[maybe_unused]] const SR& b) { return r.inverse; }, solves \
  }

const SingleFunction kSingleFunctions[] = {
    SINGLE("sum", a + b, CalcSumValue(a, b), CalcFirstInverseSumValue(a, b), true),
    SINGLE("product", a* b, CalcProdValue(a, b), CalcFirstInverseProdValue(a, b), true),
    SINGLE("minimum", std::min(a, b), CalcMinValue(a, b), CalcFirstInverseMinValue(a, b), false),
    SINGLE("maximum", std::max(a, b), CalcMaxValue(a, b), CalcFirstInverseMaxValue(a, b), false),
    SINGLE("absolute", std::fabs(a), CalcAbsoluteValue(a), CalcInverseAbsoluteValue(a), false),
    SINGLE("negative", -a, CalcNegativeValue(a), CalcInverseNegativeValue(a), true),
    SINGLE("exp", std::exp(a), CalcExpValue(a), CalcInverseExpValue(a), true),
    SINGLE("sqrt", std::sqrt(a), CalcSqrtValue(a), CalcInverseSqrtValue(a), true),
    SINGLE("sin", std::sin(a), CalcSinValue(a), CalcInverseSinValue(a), false),
    SINGLE("cos", std::cos(a), CalcCosValue(a), CalcInverseCosValue(a), false),
    SINGLE("tan", std::tan(a), CalcTanValue(a), CalcInverseTanValue(a), false),
    SINGLE("floor", std::floor(a), CalcFloorValue(a), CalcInverseFloorValue(a), false),
    SINGLE("ceil", std::ceil(a), CalcCeilValue(a), CalcInverseCeilValue(a), false),
    SINGLE("round", std::round(a), CalcRoundValue(a), CalcInverseRoundValue(a), false),
    SINGLE("remainder", std::fmod(a, b), CalcModValue(a, b), CalcFirstInverseModValue(a, b),
           false)};

TEST(RealFunctionsTest, SingleRealsAgreeWithinPrecision) {
  std::mt19937_64 random{7};
  const auto draw = [&] { return std::ldexp(static_cast<double>(random() % 200001) - 1e5, -13); };
  for (const SingleFunction& function : kSingleFunctions) {
    for (int i = 0; i < 3000; ++i) {
      const double a = draw(), b = draw(), value = function.value(a, b);
      if (!(std::fabs(value) < 1e6) || b == 0) continue;
      SCOPED_TRACE(testing::Message() << function.name << " of " << a << ", " << b);
      const SR x(a), y(b);
      SR any, fixed(value), far(value + 1e-4), target(a), unknown;
      SDRaiseError();
      ASSERT_EQ(function.forward(any, x, y), 1);
      ASSERT_NEAR(any.GetValue(), value, 1e-9 * std::max(1.0, std::fabs(value)));
      ASSERT_EQ(function.forward(fixed, x, y), 0);
      ASSERT_EQ(function.forward(far, x, y), 1);
      ASSERT_TRUE(far.IsNil());
      ASSERT_EQ(function.inverse(fixed, target, y), 0);
      const int solved = function.inverse(fixed, unknown, y);
      ASSERT_EQ(solved, !unknown.IsAny());
      ASSERT_NEAR(function.solvesForA ? unknown.GetValue() : a, a, 1e-6);
      SDClearError();

      SR nil(kNil), touched(a);
      ASSERT_EQ(function.forward(nil, x, y), 0);
      ASSERT_EQ(function.forward(fixed, SR(), y), 0);
      ASSERT_EQ(function.inverse(SR(), touched, y), 0);
      ASSERT_EQ(function.inverse(nil, touched, y), 1);
      ASSERT_TRUE(touched.IsNil());
      ASSERT_EQ(function.forward(fixed, nil, y), 1);
      ASSERT_EQ(SDCheckError(), 0);
    }
  }
}

/// Rows of what a single real was, operands a and b, and what it is afterwards.
template <class Call>
void CheckEdges(Call call, const std::vector<double>& rows) {
  for (std::size_t i = 0; i < rows.size(); i += 4) {
    SR target(rows[i]), a(rows[i + 1]), b(rows[i + 2]);
    EXPECT_EQ(call(target, a, b), rows[i] != rows[i + 3]);
    EXPECT_EQ(target.GetValue(), rows[i + 3]) << rows[i] << ", " << rows[i + 1];
    EXPECT_EQ(SDCheckError(), 0);
  }
}
#define EDGE(operation) \
  [](SR& target, [[maybe_unused]] SR& a, [[maybe_unused]] SR& b) { return operation; }

TEST(RealFunctionsTest, EdgesOfSingleReals) {
  // Beyond the largest number nothing is known.
  CheckEdges(EDGE(target.CalcSumValue(a, b)), {kAny, 0.1, 0.2, 0.30000000000000004, 3.0000001, 1, 2,
                                               3.0000001, kAny, 9e18, 9e18, kAny});
  CheckEdges(EDGE(target.CalcExpValue(a)), {kAny, 50, 0, kAny, kAny, -800, 0, 0});
  CheckEdges(EDGE(target.CalcProdValue(a, b)),
             {kAny, 0, kAny, kAny, kAny, 1e-200, 1e-200, 0, kAny, -3e-160, 1e-160, -3e-320});
  CheckEdges(EDGE(a.CalcFirstInverseProdValue(target, b)), {kAny, -3e-310, 1e18, 0});
  CheckEdges(EDGE(a.CalcFirstInverseProdValue(target, b)), {kAny, 0, 0, kAny, kAny, 1, 0, kNil});
  CheckEdges(EDGE(a.CalcFirstInverseMinValue(target, b)), {kAny, 3, 5, 3, kAny, 3, 3, kAny});
  CheckEdges(EDGE(target.CalcSqrtValue(a)), {kAny, -4, 0, kNil});
  CheckEdges(EDGE(a.CalcInverseSqrtValue(target)), {kAny, 3, 0, 9, kAny, -3, 0, kNil});
  CheckEdges(EDGE(a.CalcInverseExpValue(target)), {kAny, 0, 0, kNil});
  CheckEdges(EDGE(target.CalcSinValue(a)), {kAny, 2e14, 0, kAny, 1.1, 2e14, 0, kNil});
  CheckEdges(EDGE(target.CalcTanValue(a)), {7, 2e14, 0, 7});
  CheckEdges(EDGE(a.CalcInverseTanValue(target)), {2e14, 0.5, 0, 2e14});
  // No margin around [-1, 1].
  CheckEdges(EDGE(a.CalcInverseSinValue(target)),
             {kAny, 1.0000005, 0, kNil, kAny, 0.5, 0, kAny, 0.5, 0.5, 0, kNil});
  CheckEdges(EDGE(target.CalcModValue(a, b)),
             {kAny, -7, 2, -1, kAny, 7, -2, 1, 5, 7, 0, 5, kAny, 1e12, 1e-3, kAny});
  // The values of these have bounds, whatever x is; slots ask nothing of an unknown operand.
  CheckEdges(EDGE(target.CalcExpValue(a)), {-5, kAny, 0, kNil, 5, kAny, 0, 5, kAny, kAny, 0, kAny});
  CheckEdges(EDGE(target.CalcSqrtValue(a)), {-5, kAny, 0, kNil, 5e9, kAny, 0, 5e9});
  CheckEdges(EDGE(target.CalcAbsoluteValue(a)), {-5, kAny, 0, kNil, 5, kAny, 0, 5});
  CheckEdges(EDGE(target.CalcSinValue(a)),
             {5, kAny, 0, kNil, 0.5, kAny, 0, 0.5, kNil, kAny, 0, kNil});
  CheckEdges(EDGE(target.CalcCosValue(a)), {-5, kAny, 0, kNil, 1, kAny, 0, 1});
  CheckEdges(EDGE(target.CalcTanValue(a)), {5, kAny, 0, 5});
  CheckEdges(EDGE(target.CalcFloorValue(a)), {0.5, kAny, 0, 0.5});
  CheckEdges(EDGE(static_cast<ZULTaVoReal&>(target).CalcSinValue(a)), {5, kAny, 0, 5});
  // A remainder as large as the divisor passes.
  CheckEdges(EDGE(a.CalcSecondInverseModValue(b, target)),
             {5, 1, 7, kNil, 3, 1, 7, 3, 3, 3.5, 7.5, kNil, 3, 3, 6, 3});
  CheckEdges(EDGE(target.CalcPowerValue(a, b)),
             {kAny, 2, 3, 8, 8.0000001, 2, 3, kNil, kAny, -2, 0.5, kNil, kAny, 10, 30, kAny});
  CheckEdges(EDGE(a.CalcFirstInversePowerValue(target, b)),
             {kAny, 8, 3, 2, kAny, 9, 2, kAny, -3, 9, 2, -3});
  CheckEdges(EDGE(a.CalcSecondInversePowerValue(b, target)),
             {kAny, 8, 2, 3, 0.5, 4, 16, 0.5, kAny, 5, -2, kNil, 2,    8, 2, kNil,
              3,    8, 2, 3, 2.5, 8, 2,  2.5, 0.5,  5, -2, kNil, kAny, 5, 2, kAny});
  EXPECT_EQ(SR::my_round(2.5), 3);
  EXPECT_EQ(SR::my_round(-2.5), -3);
  EXPECT_EQ(SR::my_round(-2.4), -2);
  EXPECT_EQ(SR::my_round(0.49999999999999994), 0);
}

// In double arithmetic, an operation at a time: 13.0 mod 0.1 is 0.
TEST(RealFunctionsTest, RemaindersOfSingleRealsAreRoundedTwice) {
  mpfr_t multiple;
  mpfr_init2(multiple, 53);
  for (int i = -300; i <= 300; ++i) {
    for (int j = 1; j <= 99; ++j) {
      const double a = i / 10.0, b = j / 10.0;
      mpfr_set_d(multiple, b, MPFR_RNDN);
      mpfr_mul_si(multiple, multiple, static_cast<long>(a / b), MPFR_RNDN);
      mpfr_d_sub(multiple, a, multiple, MPFR_RNDN);
      SR r;
      ASSERT_EQ(r.CalcModValue(SR(a), SR(b)), 1);
      ASSERT_EQ(r.GetValue(), mpfr_get_d(multiple, MPFR_RNDN)) << a << " mod " << b;
    }
  }
  mpfr_clear(multiple);
}

TEST(RealFunctionsTest, AnAngleIsFoundInAnyWindow) {
  double low = 0, high = 0;
  ZULTaVoReal::GetTrigLimits(low, high);
  for (int i = 1; i < 200; ++i) {  // through half-turns and back, some ends move by a rounding
    const double end = i * 0.007;
    ZULTaVoReal::SetTrigLimits(-end, 1.5 - end);
    SR angle;
    EXPECT_EQ(SR(std::sin(0.7 - end)).CalcInverseSinValue(angle), 1) << end;
    EXPECT_NEAR(angle.GetLowerBound(), 0.7 - end, 1e-15);
  }
  ZULTaVoReal::SetTrigLimits(low, high);
}

TEST(RealFunctionsTest, SingleRealsWithIntegers) {
  using SI = ZULTavSingleInteger;
  using II = ZULTavIntervalInteger;
  SR r(5.0);
  SI x;
  ZULTaVoNumber& slot = x;
  EXPECT_EQ(r.CalcFirstInverseSumValue(slot, SR(2.0)), 1);
  EXPECT_EQ(x.GetValue(), 3);
  SR power;
  EXPECT_EQ(power.CalcPowerValue(SI(-2), SI(3)), 1);
  EXPECT_EQ(power.GetValue(), -8);
  EXPECT_EQ(power.CalcPowerValue(SR(-2.0), SI(3)), 0);
  SI sign;
  EXPECT_EQ(SR(-0.5).CalcSignumValue(sign), 1);
  EXPECT_EQ(sign.GetValue(), -1);
  SR negative(2.0), zero, kept(2.0);
  EXPECT_EQ(negative.CalcInverseSignumValue(II(-1, 0)), 1);
  EXPECT_TRUE(negative.IsNil());
  EXPECT_EQ(zero.CalcInverseSignumValue(II(0, 0)), 1);
  EXPECT_EQ(zero.GetValue(), 0);
  EXPECT_EQ(kept.CalcInverseSignumValue(SI()), 0);
  EXPECT_EQ(kept.CalcInverseSignumValue(SI(1)), 0);
}

}  // namespace
