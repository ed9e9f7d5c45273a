#include <gtest/gtest.h>

#include <cfenv>
#include <utility>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealInterval.h"
#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/SubdefReal.h"
#include "tests/intervals/mpfr_oracle.h"

namespace {

constexpr double kMax = 1e19;
constexpr double kTiny = 0x1p-1074;

using Operation = RealInterval (RealInterval::*)(const RealInterval&) const;
using MpfrOperation = int(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);

struct ArithmeticCase {
  const char* name;
  Operation operation;
  MpfrOperation* oracle;
};
void PrintTo(const ArithmeticCase& row, std::ostream* out) { *out << row.name; }

class RealArithmeticTest : public testing::TestWithParam<ArithmeticCase> {};

TEST_P(RealArithmeticTest, IsTheHullOfTheCorners) {
  const auto& [name, operation, oracle] = GetParam();
  const bool quotient = oracle == mpfr_div;
  HardDoubles doubles(1);
  for (int i = 0; i < 60000; ++i) {
    const SubdefReal x = doubles.DrawInterval(kMax / 2);
    const SubdefReal y = doubles.DrawInterval(kMax / 2);
    if (quotient && y.Contains(0)) continue;
    SubdefReal hull(kMax, -kMax);
    for (const double a : {x.lower, x.upper}) {
      for (const double b : {y.lower, y.upper}) {
        const SubdefReal corner = Tightest([&, exact = oracle](mpfr_ptr z, mpfr_rnd_t direction) {
          exact(z, Mpfr(a), Mpfr(b), direction);
        });
        hull = SubdefReal(std::min(hull.lower, corner.lower), std::max(hull.upper, corner.upper));
      }
    }
    ASSERT_EQ((x.*operation)(y), hull)
        << std::hexfloat << x.lower << ' ' << x.upper << ' ' << y.lower << ' ' << y.upper;
  }
  EXPECT_FALSE(SDCheckError());
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, RealArithmeticTest,
    testing::Values(ArithmeticCase{"Sum", &RealInterval::AddIntToInt, mpfr_add},
                    ArithmeticCase{"Difference", &RealInterval::SubIntFromInt, mpfr_sub},
                    ArithmeticCase{"Product", &RealInterval::MultIntByInt, mpfr_mul},
                    ArithmeticCase{"Quotient", &RealInterval::DivIntByInt, mpfr_div}),
    [](const auto& row) { return row.param.name; });

TEST(RealIntervalTest, KeepsInfiniteSides) {
  struct Row {
    Operation operation;
    RealInterval x, y, result;
  };
  const auto plus = &RealInterval::AddIntToInt;
  const auto minus = &RealInterval::SubIntFromInt;
  const auto times = &RealInterval::MultIntByInt;
  const auto by = &RealInterval::DivIntByInt;
  const RealInterval whole(-kMax, kMax);
  const RealInterval empty(kMax, -kMax);
  const Row rows[] = {
      {plus,  {5, kMax},    {-3, -3},       {2, kMax}                 },
      {plus,  {9e18, 9e18}, {9e18, 9e18},   {kMax, kMax}              },
      {plus,  {kMax, kMax}, {-4096, -4096}, {1e19 - 4096, kMax}       },
      {plus,  whole,        {1, 1},         whole                     },
      {plus,  {0.1, 0.1},   {0.2, 0.2},     {0.3, 0.30000000000000004}},
      {plus,  {3, 2},       {1, 1},         empty                     },
      {minus, {-kMax, 1},   {2, 3},         {-kMax, -1}               },
      {minus, {0, kMax},    {0, kMax},      whole                     },
      {times, {0, 0},       whole,          {0, 0}                    },
      {times, {0, kMax},    {1, 2},         {0, kMax}                 },
      {times, {-2, 3},      {-5, 4},        {-15, 12}                 },
      {times, {1, kMax},    {kTiny, 1},     {kTiny, kMax}             },
      {times, {4e9, 4e9},   {-4e9, 4e9},    whole                     },
      {times, {1, 2},       {2, 1},         empty                     },
      {by,    {1, 2},       {3, kMax},      {0, 0.66666666666666674}  },
      {by,    {1, kMax},    {1, kMax},      {0, kMax}                 },
      {by,    {1, 2},       {0, 4},         {0.25, kMax}              },
      {by,    {1, 2},       {-4, -0.0},     {-kMax, -0.25}            },
      {by,    {-2, -1},     {-0.0, 4},      {-kMax, -0.25}            },
      {by,    {1, 2},       {-4, 4},        whole                     },
      {by,    {-1, 2},      {0, 0},         whole                     },
      {by,    {0, 0},       {0, 5},         whole                     },
      {by,    {1, 1},       {kTiny, kTiny}, {kMax, kMax}              },
      {by,    {1, 2},       {3, 2},         empty                     },
      {by,    {2, 1},       {3, 4},         empty                     },
      {by,    {2, 1},       {0, 0},         empty                     },
      {by,    {1, 2},       {0, 0},         empty                     },
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message()
                 << row.x.lower << ' ' << row.x.upper << ' ' << row.y.lower << ' ' << row.y.upper);
    EXPECT_EQ((row.x.*row.operation)(row.y), row.result);
    EXPECT_EQ(SDCheckError(), row.operation == by && row.result == empty);
    SDClearError();
  }
}

TEST(RealIntervalTest, OrderOperationsAreHulls) {
  using R = SubdefReal;
  const R empty(kMax, -kMax), line;
  const std::pair<RealInterval, RealInterval> rows[] = {
      {RealInterval(1,         5).mf_Min({2, 3}),    {1, 3}   },
      {RealInterval(1,         5).mf_Min({-9, 3}),   {-9, 3}  },
      {RealInterval(1,         5).mf_Max({2, 3}),    {2, 5}   },
      {RealInterval(1,         5).mf_Max({4, kMax}), {4, kMax}},
      {RealInterval(1,         2).mf_Union({4, 5}),  {1, 5}   },
      {RealInterval(1,         2).mf_Union(empty),   {1, 2}   },
      {empty.mf_Union({1, 2}), {1, 2}              },
      {RealInterval(-3,           2).mf_Abs(),               {0, 3}         },
      {RealInterval(-3,          -2).mf_Abs(),               {2, 3}},
      {InverseMin(R{1, 5},               {7, 9}),               {1, 5}         },
      {InverseMin(R{1, 5},               {5, 9}),            {1, kMax}},
      {InverseMax(R{1, 5},              {-9, 0}),               {1, 5}         },
      {InverseMax(R{1, 5},              {-9, 1}),           {-kMax, 5}},
      {InverseAbs(R{1, 2},                 line),              {-2, 2}         },
      {InverseAbs(R{1, 2},          {-1.5, 0.5}),           {-1.5, -1}},
      {InverseAbs(R{-5, 2},              {-9, 1}),              {-2, 1}         },
  };
  for (const auto& [found, expected] : rows) EXPECT_EQ(found, expected) << &found - &rows[0].first;
  for (const RealInterval& none :
       {RealInterval(1, 5).mf_Min(empty), empty.mf_Max({1, 5}), RealInterval(empty).mf_Abs(),
        RealInterval(InverseMin(R{4, 5}, {1, 3})), RealInterval(InverseMax(R{4, 5}, {6, 7})),
        RealInterval(InverseMin(empty, line)), RealInterval(InverseMax(R{4, 5}, empty)),
        RealInterval(InverseAbs(R{-5, -1}, line)), RealInterval(InverseAbs(R{1, 2}, {-0.5, 0.5}))})
    EXPECT_TRUE(none.IsEmpty());
  EXPECT_FALSE(SDCheckError());
}

TEST(SubdefRealTest, NarrowsAndFlagsOnlyEmptyResults) {
  SubdefReal x(0, 10);
  EXPECT_EQ(x.SDIntersect(SubdefReal(-5, 20)), 0);
  EXPECT_EQ(x.SDIntersect(SubdefReal(2, 20)), 1);
  EXPECT_EQ(x, SubdefReal(2, 10));
  EXPECT_EQ(x.SDIntersect(SubdefInt(3, 7)), 1);
  EXPECT_EQ(x, SubdefReal(3, 7));
  EXPECT_FALSE(SDCheckError());
  EXPECT_EQ(x.SDIntersect(SubdefReal(8, 9)), 1);
  EXPECT_TRUE(SDCheckError());
  SDClearError();

  SubdefReal huge(1e15, 2e15);
  EXPECT_EQ(huge.SDIntersect(SubdefInt(5, SubdefInt::sMaxValue)), 0);
  EXPECT_FALSE(SDCheckError());
  RealInterval plain(0, 1);
  EXPECT_EQ(plain.Intersect({2, 3}), 1);
  EXPECT_TRUE(plain.IsEmpty());
  EXPECT_FALSE(SDCheckError());
}

}  // namespace
