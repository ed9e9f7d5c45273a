#include <gtest/gtest.h>

#include "tests/numbers/point_solutions.h"

namespace {

using points::Operation;
using IR = ZULTavIntervalReal;

#define ORACLE(call)                                            \
  [](mpfr_ptr r, mpfr_srcptr x, [[maybe_unused]] mpfr_srcptr y, \
     [[maybe_unused]] mpfr_rnd_t rounding) { call; }
#define FUNCTION(name, Name)                                                              \
  Operation {                                                                             \
#name, ORACLE(mpfr_##name(r, x, rounding)),                                           \
        {REAL_CALL(Calc##Name##Value(x)), REAL_CALL(CalcInverse##Name##Value(x)) }, false \
  }
#define ROUNDING(name, Name)                                                              \
  Operation {                                                                             \
#name, ORACLE(mpfr_##name(r, x)),                                                     \
        {REAL_CALL(Calc##Name##Value(x)), REAL_CALL(CalcInverse##Name##Value(x)) }, false \
  }

const Operation kFunctions[] = {FUNCTION(exp, Exp),   FUNCTION(sqrt, Sqrt),  FUNCTION(sin, Sin),
                                FUNCTION(cos, Cos),   FUNCTION(tan, Tan),    ROUNDING(floor, Floor),
                                ROUNDING(ceil, Ceil), ROUNDING(round, Round)};

TEST(RealFunctionsTest, NoFunctionLosesASolution) {
  points::PointSolutions solutions;
  for (const Operation& operation : kFunctions) solutions.Check(operation, 4000);
}

TEST(RealFunctionsTest, PowerLosesNoSolution) {
  points::PointSolutions solutions;
  solutions.Check(
      {
          "pow",
          ORACLE(mpfr_pow(r, x, y, rounding)),
          {NUMBER_CALL(CalcPowerValue(x, y)), NUMBER_CALL(CalcFirstInversePowerValue(x, y)),
                                         NUMBER_CALL(CalcSecondInversePowerValue(x, y))},
          true,
          true,
          true
  },
      20000);
}

TEST(RealFunctionsTest, EdgesOfIntervalFunctions) {
  struct Row {
    const char* name;
    int (IR::*forward)(const IR&);
    int (IR::*inverse)(IR&) const;
    RealInterval z, x, narrowedZ, narrowedX;
  };
  constexpr double kMax = 1e19;
  const RealInterval any(-kMax, kMax), nil(kMax, -kMax);
  const Row rows[] = {
      {"sqrt", &IR::CalcSqrtValue, &IR::CalcInverseSqrtValue, any, {-4, 9}, {0, 3}, {0, 9}},
      {"sqrt", &IR::CalcSqrtValue, &IR::CalcInverseSqrtValue, {2, 3}, any, {2, 3}, {4, 9}},
      {"sqrt", &IR::CalcSqrtValue, &IR::CalcInverseSqrtValue, {-3, 1}, {-4, -1}, nil, nil},
      {"floor", &IR::CalcFloorValue, &IR::CalcInverseFloorValue, {0.5, 2.5}, {0, 10}, {1, 2}, {1, 3}},
      {"floor", &IR::CalcFloorValue, &IR::CalcInverseFloorValue, {0.2, 0.8}, {0, 9}, nil, nil},
      {"ceil", &IR::CalcCeilValue, &IR::CalcInverseCeilValue, {0.5, 2.5}, {-9, 9}, {1, 2}, {0, 2}},
      {"round", &IR::CalcRoundValue, &IR::CalcInverseRoundValue, {1, 1}, any, {1, 1}, {0.5, 1.5}},
      {"round", &IR::CalcRoundValue, &IR::CalcInverseRoundValue, any, {-2.5, 2.5}, {-3, 3}, {-2.5, 2.5}},
      {"sin", &IR::CalcSinValue, &IR::CalcInverseSinValue, any, {2e14, 2e14}, {-1, 1}, {2e14, 2e14}},
      {"tan", &IR::CalcTanValue, &IR::CalcInverseTanValue, any, {1, 2}, any, {1, 2}},
      {"exp", &IR::CalcExpValue, &IR::CalcInverseExpValue, any, {0, kMax}, {1, kMax}, {0, kMax}},
      {"exp", &IR::CalcExpValue, &IR::CalcInverseExpValue, {-2, 0}, {0, 1}, nil, nil}};
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.name << ": " << row.z << ", " << row.x);
    IR z, x, zBefore;
    z.SetSubdef(row.z);
    zBefore.SetSubdef(row.z);
    x.SetSubdef(row.x);
    (z.*row.forward)(x);
    (zBefore.*row.inverse)(x);
    EXPECT_EQ(z.GetSubdef(), row.narrowedZ);
    EXPECT_EQ(x.GetSubdef(), row.narrowedX);
  }
  IR angle(0, 10);
  EXPECT_EQ(IR(0, 1).CalcInverseCosValue(angle), 1);
  EXPECT_EQ(angle.GetLowerBound(), 0);
  EXPECT_NEAR(angle.GetUpperBound(), 7.853981633974483, 2e-15);
}

TEST(RealFunctionsTest, EdgesOfIntervalPower) {
  const auto power = [](RealInterval base, auto exponent) {
    IR z;
    z.CalcPowerValue(static_cast<const ZULTaVoNumber&>(IR(base)), exponent);
    return RealInterval(z.GetSubdef());
  };
  EXPECT_EQ(power({-2, 3}, ZULTavSingleInteger(2)), RealInterval(0, 9));
  EXPECT_EQ(power({-2, -1}, ZULTavIntervalInteger(2, 3)), RealInterval(-8, 4));
  EXPECT_EQ(power({-1e-15, -1e-16}, ZULTavSingleInteger(2)), RealInterval(0, 0));
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
#define SINGLE(name, formula, forward, inverse, solves)                      \
  SingleFunction {                                                           \
    name, [](double a, [[maybe_unused]] double b) -> double { return formula; },         \
        [](SR& r, const SR& a, [[maybe_unused]] const SR& b) { return r.forward; },      \
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
    SINGLE("remainder", std::fmod(a, b), CalcModValue(a, b), CalcFirstInverseModValue(a, b), false)};

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

TEST(RealFunctionsTest, EdgesOfSingleReals) {
  struct Row {
    const char* name;
    double before, a, b;
    int (*call)(SR& target, SR& a, SR& b);
    double after;
  };
#define ROW_CALL(call) [](SR& target, [[maybe_unused]] SR& a, [[maybe_unused]] SR& b) { return call; }
  const auto mod = ROW_CALL(target.CalcModValue(a, b));
  const auto power = ROW_CALL(target.CalcPowerValue(a, b));
  const auto exponent = ROW_CALL(a.CalcSecondInversePowerValue(b, target));  // target: r, a
  const auto divide = ROW_CALL(a.CalcFirstInverseProdValue(target, b));
  const auto divisor = ROW_CALL(a.CalcSecondInverseModValue(b, target));
  const Row rows[] = {
      {"sum", kAny, 0.1, 0.2, ROW_CALL(target.CalcSumValue(a, b)), 0.30000000000000004},
      {"sum within p", 3.0000001, 1, 2, ROW_CALL(target.CalcSumValue(a, b)), 3.0000001},
      {"overflow", kAny, 9e18, 9e18, ROW_CALL(target.CalcSumValue(a, b)), kAny},
      {"overflow", kAny, 50, 0, ROW_CALL(target.CalcExpValue(a)), kAny},
      {"by Any", kAny, 0, kAny, ROW_CALL(target.CalcProdValue(a, b)), kAny},
      {"0 / 0", kAny, 0, 0, divide, kAny},
      {"1 / 0", kAny, 1, 0, divide, kNil},
      {"mod", kAny, -7, 2, mod, -1},
      {"mod", kAny, 7, -2, mod, 1},
      {"mod 0", 5, 7, 0, mod, 5},
      {"mod, huge quotient", kAny, 1e12, 1e-3, mod, kAny},
      {"divisor", 5, 1, 7, divisor, kNil},
      {"divisor", 3, 1, 7, divisor, 3},
      {"divisor, remainder too large", 3, 3.5, 7.5, divisor, kNil},
      {"divisor, remainder as large", 3, 3, 6, divisor, 3},
      {"sqrt", kAny, -4, 0, ROW_CALL(target.CalcSqrtValue(a)), kNil},
      {"inverse sqrt", kAny, 3, 0, ROW_CALL(a.CalcInverseSqrtValue(target)), 9},
      {"inverse sqrt", kAny, -3, 0, ROW_CALL(a.CalcInverseSqrtValue(target)), kNil},
      {"sin beyond the limit", kAny, 2e14, 0, ROW_CALL(target.CalcSinValue(a)), kAny},
      {"sin beyond the limit", 1.1, 2e14, 0, ROW_CALL(target.CalcSinValue(a)), kNil},
      {"tan beyond the limit", 7, 2e14, 0, ROW_CALL(target.CalcTanValue(a)), 7},
      {"inverse sin, no margin", kAny, 1.0000005, 0, ROW_CALL(a.CalcInverseSinValue(target)), kNil},
      {"inverse sin", kAny, 0.5, 0, ROW_CALL(a.CalcInverseSinValue(target)), kAny},
      {"inverse sin", 0.5, 0.5, 0, ROW_CALL(a.CalcInverseSinValue(target)), kNil},
      {"inverse tan", 2e14, 0.5, 0, ROW_CALL(a.CalcInverseTanValue(target)), 2e14},
      {"log of 0", kAny, 0, 0, ROW_CALL(a.CalcInverseExpValue(target)), kNil},
      {"power", kAny, 2, 3, power, 8},
      {"power, no margin", 8.0000001, 2, 3, power, kNil},
      {"power", kAny, -2, 0.5, power, kNil},
      {"power, overflow", kAny, 10, 30, power, kAny},
      {"root", kAny, 8, 3, ROW_CALL(a.CalcFirstInversePowerValue(target, b)), 2},
      {"root of two signs", kAny, 9, 2, ROW_CALL(a.CalcFirstInversePowerValue(target, b)), kAny},
      {"root of two signs", -3, 9, 2, ROW_CALL(a.CalcFirstInversePowerValue(target, b)), -3},
      {"exponent", kAny, 8, 2, exponent, 3},
      {"exponent between integers", 0.5, 4, 16, exponent, 0.5},
      {"exponent of a negative base", kAny, 5, -2, exponent, kNil},
      {"minimum below", kAny, 3, 5, ROW_CALL(a.CalcFirstInverseMinValue(target, b)), 3},
      {"minimum reached", kAny, 3, 3, ROW_CALL(a.CalcFirstInverseMinValue(target, b)), kAny}};
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.name << ": " << row.before << ", " << row.a << ", " << row.b);
    SR target(row.before), a(row.a), b(row.b);
    EXPECT_EQ(row.call(target, a, b), row.after != row.before);
    EXPECT_EQ(target.GetValue(), row.after);
    EXPECT_EQ(SDCheckError(), 0);
  }
  EXPECT_EQ(SR::my_round(2.5), 3);
  EXPECT_EQ(SR::my_round(-2.5), -3);
  EXPECT_EQ(SR::my_round(-2.4), -2);
  EXPECT_EQ(SR::my_round(0.49999999999999994), 0);
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
