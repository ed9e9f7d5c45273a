#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "framework/intervals/ZULTavIntervals.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "tests/numbers/other_integer.h"
#include "tests/numbers/print_interval.h"

namespace {

using IR = ZULTavIntervalReal;
using II = ZULTavIntervalInteger;
using SI = ZULTavSingleInteger;
using SR = ZULTavSingleReal;
using Set = RealInterval;

constexpr double kMax = 1e19;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
const Set kAny = {-kMax, kMax};
const Set kNil = {kMax, -kMax};

IR Interval(const Set& set) {
  IR interval;
  interval.SetSubdef(set);
  return interval;
}

/// An operation on `before` with the operand `x`, and what it leaves.
struct Row {
  int (*call)(IR& target, const IR& x);
  Set before, x, after;
};
#define TARGET(operation) [](IR& target, const IR& x) { return target.operation(x); }
#define INVERSE(operation) [](IR& target, const IR& r) { return r.operation(target); }

TEST(IntervalRealTest, RelationsHaveTheirTolerances) {
  constexpr auto kLessOrEqual = TARGET(CalcLessOrEqualValue);
  constexpr auto kInverseLessOrEqual = INVERSE(CalcInverseLessOrEqualValue);
  constexpr auto kLess = TARGET(CalcLessValue);
  constexpr auto kInverseLess = INVERSE(CalcInverseLessValue);
  constexpr double kStep = 0.1 * 1e-6;
  const Row rows[] = {
      {kLessOrEqual,                       {0, 5},         {1, 3},                   {0, 3}            },
      {kLessOrEqual,                       {0, 3.0000005}, {1, 3},                   {0, 3.0000005}    },
      {kLessOrEqual,                       {5, 6},         {1, 2},                   {5, 2}            }, // crossed bounds are Nil
      {kInverseLessOrEqual,                {0, 5},         {1, 3},                   {1, 5}            },
      {kInverseLessOrEqual,                {0.9999995, 5}, {1, 3},                   {0.9999995, 5}    },
      {kLess,                              {1, 1},         {1, 1 + 1e-14},           kNil              },
      {kLess,                              {1, 1},         {1 + 8e-15, 1 + 1.6e-14}, kNil              },
      {kLess,                              {0, 5},         {1, 3},                   {0, 3 - kStep}    },
      {kLess,                              {0, 2},         {1, 3},                   {0, 2}            },
      {kLess,                              {3, 5},         {1, 3},                   kNil              },
      {kLess,                              kAny,           {1, 1},                   {-kMax, 1 - kStep}},
      {kLess,                              kAny,           kAny,                     kAny              },
      {kLess,                              kNil,           {1, 2},                   kNil              },
      {kLess,                              {0, 1},         {5, 3},                   kNil              },
      {kInverseLess,                       {0, 5},         {1, 3},                   {1 + kStep, 5}    },
      {kInverseLess,                       {1, 1},         {1, 1},                   kNil              },
      {kInverseLess,                       {2, 5},         {1, 3},                   {2, 5}            },
      {TARGET(CalcNotLessAndUnequalValue), {0, 9},         {4, 4},                   {4 + kStep, 9}    },
      {TARGET(CalcNextValue),              {0, 1},         {5, 3},                   kNil              },
      {TARGET(CalcNextValue),              kNil,           {5, 3},                   kNil              }
  };
  for (const auto& [call, before, x, after] : rows) {
    SCOPED_TRACE(testing::Message() << before << ", " << x);
    IR target = Interval(before);
    EXPECT_EQ(call(target, Interval(x)), !(after == before));
    EXPECT_EQ(target.GetSubdef(), after);
  }
}

TEST(IntervalRealTest, ConstantsAndNilOperands) {
  const std::pair<int (IR::*)(), Set> rows[] = {
      {&IR::CalcPiValue,   {3.141592653489793, 3.141592653689793}},
      {&IR::CalcEValue,    {2.718281828359045, 2.718281828559045}},
      {&IR::CalcZeroValue, {0, 0}                                },
      {&IR::CalcOneValue,  {1, 1}                                }
  };
  for (const auto& [operation, set] : rows) {
    IR near = Interval({0, 10}), far = Interval({20, 30}), nil = Interval(kNil);
    EXPECT_EQ((near.*operation)(), 1);
    EXPECT_EQ(near.GetSubdef(), set);
    EXPECT_EQ((far.*operation)(), 1);
    EXPECT_TRUE(far.IsNil());
    EXPECT_EQ((nil.*operation)(), 0);
  }
  IR any;
  EXPECT_EQ(any.CalcMaxValue(), 1);
  EXPECT_EQ(any.GetSubdef(), Set(kMax, kMax));
}

TEST(IntervalRealTest, SignsAreClosed) {
  struct SignRow {
    Set x, signs;
    Set after;
  };
  for (const SignRow& row : {
           SignRow{{-2, 5}, {-1, 0}, {-2, 0}},
           SignRow{{-2, 5}, {0, 0},  {0, 0} },
           SignRow{{-2, 5}, {1, 9},  {0, 5} },
           SignRow{{-2, 5}, {2, 9},  kNil   },
           SignRow{{-2, 5}, {1, 0},  kNil   }
  }) {
    SCOPED_TRACE(testing::Message() << row.x << ", " << row.signs);
    IR x = Interval(row.x);
    const II signs(static_cast<long>(row.signs.lower), static_cast<long>(row.signs.upper));
    EXPECT_EQ(x.CalcInverseSignumValue(signs), 1);
    EXPECT_EQ(x.GetSubdef(), row.after);
  }
  II signs;
  EXPECT_EQ(Interval({-0.5, 0}).CalcSignumValue(signs), 1);
  EXPECT_EQ(signs.GetSubdef(), IntegerInterval(-1, 0));
  SI sign;
  EXPECT_EQ(Interval({2, 5}).CalcSignumValue(sign), 1);
  EXPECT_EQ(sign.GetValue(), 1);
  EXPECT_EQ(Interval(kNil).CalcSignumValue(sign), 1);
  EXPECT_TRUE(sign.IsNil());
}

TEST(IntervalRealTest, ConvertsAndWritesBack) {
  struct WriteRow {
    Set from;
    double single, integer;  // what a single value that was Any holds then
    Set integers;            // [-5, 5] narrowed
  };
  constexpr double kUnknown = 1e21, kNone = -1e21;
  for (const WriteRow& row : {
           WriteRow{{2, 2},                       2,            2,        {2, 2}  },
           WriteRow{{2.5, 2.5},                   2.5,          kNone,    {1, 0}  },
           WriteRow{{1.5, 4.2},                   kUnknown,     kUnknown, {2, 4}  },
           WriteRow{{2.9999999, 2.9999999},       2.9999999,    kNone,    {1, 0}  },
           WriteRow{{-4, -4},                     -4,           -4,       {-4, -4}},
           WriteRow{{2147483646.5, 2147483646.5}, 2147483646.5, kUnknown, {1, 0}  },
           WriteRow{{3e9, 3e9},                   3e9,          kUnknown, {1, 0}  },
           WriteRow{kNil,                         kNone,        kNone,    {1, 0}  }
  }) {
    SCOPED_TRACE(testing::Message() << row.from);
    const IR from = Interval(row.from);
    SR real;
    SI integer;
    II integers(-5, 5);
    OtherInteger other(-5, 5);
    for (ZULTaVoAny* target :
         {static_cast<ZULTaVoAny*>(&real), static_cast<ZULTaVoAny*>(&integer),
          static_cast<ZULTaVoAny*>(&integers), static_cast<ZULTaVoAny*>(&other)}) {
      const int answer = from.CalcInverseEqualValue(*target);
      EXPECT_EQ(answer, target == &integers || target == &other || !target->IsAny());
    }
    EXPECT_EQ(real.GetValue(), row.single);
    EXPECT_EQ(SR(integer, 0).GetValue(), row.integer);
    EXPECT_EQ(integers.IsNil(), row.integers.IsEmpty());
    EXPECT_EQ(other.IsNil(), integers.IsNil());
    if (!row.integers.IsEmpty()) {
      EXPECT_EQ(Set(IR(integers, 0).GetSubdef()), row.integers);
      EXPECT_EQ(other.lower, integers.GetLowerBound());
      EXPECT_EQ(other.upper, integers.GetUpperBound());
    }
  }
  const std::pair<Set, std::pair<SR, SI>> singles[] = {
      {kAny,   {}                          },
      {{4, 4}, {SR(4.0), SI(4)}            },
      {kNil,   {SR(-1e21), SI(-2147483647)}}
  };
  for (const auto& [set, values] : singles) {
    EXPECT_EQ(IR(values.first, 0).GetSubdef(), set);
    EXPECT_EQ(IR(values.second, 0).GetSubdef(), set);
  }
  OtherInteger wide(LONG_MIN, LONG_MAX);  // an infinite side says nothing about it
  EXPECT_EQ(Interval({-kMax, 5}).CalcInverseEqualValue(wide), 1);
  EXPECT_EQ(wide.lower, LONG_MIN);
  EXPECT_EQ(wide.upper, 5);
  const ZULTavSingleBoolean truth;
  IR x = Interval({1, 2});
  EXPECT_EQ(x.CalcEqualValue(truth), 0);
  EXPECT_EQ(x.IsIntersected(truth), 0);
  EXPECT_EQ(x.Intersect(truth), 1);
  EXPECT_TRUE(x.IsNil());
  EXPECT_EQ(x.Unite(truth), 1);
  EXPECT_TRUE(x.IsAny());
}

TEST(IntervalRealTest, ChangesOfOneValue) {
  struct ValueRow {
    Set before;
    double value;
    Set inserted, removed;
  };
  for (const ValueRow& row : {
           ValueRow{{1, 2}, 3,     {1, 3},     {1, 2}              },
           ValueRow{{1, 2}, -3e19, {-kMax, 2}, {1, 2}              },
           ValueRow{{1, 2}, 1,     {1, 2},     {1 + 2e-6, 2}       },
           ValueRow{{1, 2}, 2,     {1, 2},     {1, 2 - 2e-6}       },
           ValueRow{{1, 1}, 1,     {1, 1},     {1 + 2e-6, 1 - 2e-6}},
           ValueRow{{5, 3}, 7,     {7, 7},     {5, 3}              },
           ValueRow{kAny,   kMax,  kAny,       kAny                },
           ValueRow{{1, 2}, kNan,  {1, 2},     {1, 2}              }
  }) {
    SCOPED_TRACE(testing::Message() << row.before << ", " << row.value);
    IR x = Interval(row.before), y = x;
    EXPECT_EQ(x.InsertExactValue(row.value), !(row.inserted == row.before));
    EXPECT_EQ(x.GetSubdef(), row.inserted);
    EXPECT_EQ(y.RemoveExactValue(row.value), !(row.removed == row.before));
    EXPECT_EQ(y.GetSubdef(), row.removed);
  }
  for (const auto store : {&IR::SetExactValue, &IR::SetLowerBound, &IR::SetUpperBound}) {
    IR x = Interval({1, 2});
    (x.*store)(kNan);
    EXPECT_TRUE(x.IsNil());
    (x.*store)(3e19);
    EXPECT_EQ(store == &IR::SetLowerBound ? x.GetLowerBound() : x.GetUpperBound(), kMax);
  }
  EXPECT_TRUE(IR(kNan, 1).IsNil());
  EXPECT_EQ(IR(-HUGE_VAL, 3).GetSubdef(), Set(-kMax, 3));
  EXPECT_TRUE(IR(2e19, 3e19).IsNil());
  EXPECT_EQ(IR(-3e19, 2e19).GetSubdef(), kAny);
  EXPECT_TRUE(IR(1, 0).IsNil());
  IR hull = Interval({1, 2});
  EXPECT_EQ(hull.Unite(Interval({4, 5})), 1);
  EXPECT_EQ(hull.Unite(Interval({5, 3})), 0);
  EXPECT_EQ(hull.Unite(SI(9)), 1);
  EXPECT_EQ(hull.GetSubdef(), Set(1, 9));
  EXPECT_TRUE(hull.IsIntersected(SR(9.0)));
  EXPECT_FALSE(hull.IsIntersected(SR(9.1)));
}

TEST(IntervalRealTest, CardinalityAndBisection) {
  ASSERT_EQ(ZULTaVoReal::SetPrecision(0.25), 1);
  const std::pair<Set, long> cardinalities[] = {
      {{0, 1},       5 },
      {{2, 2},       1 },
      {{5, 3},       0 },
      {kAny,         -2},
      {{0, 2e9},     -2},
      {{0, 0.1},     1 },
      {{kMax, kMax}, 1 }
  };
  for (const auto& [set, count] : cardinalities)
    EXPECT_EQ(Interval(set).GetCardinality(), count) << set;
  struct BisectRow {
    Set before;
    int selection;
    Set part, rest;
  };
  for (const BisectRow& row : {
           BisectRow{{0, 4}, 0, {0, 2},     {2, 4}   },
           BisectRow{{0, 4}, 1, {2, 4},     {0, 2}   },
           BisectRow{{0, 4}, 2, {0, 0},     {0.25, 4}},
           BisectRow{{0, 4}, 3, {4, 4},     {0, 3.75}},
           BisectRow{kAny,   0, {-kMax, 0}, {0, kMax}},
           BisectRow{{5, 3}, 2, kNil,       kNil     }
  }) {
    SCOPED_TRACE(testing::Message() << row.before << " by " << row.selection);
    IR rest = Interval(row.before), part;
    rest.Bisect(part, static_cast<ZULTaVoAny::ValueSelection>(row.selection));
    EXPECT_EQ(part.GetSubdef(), row.part);
    EXPECT_EQ(rest.GetSubdef(), row.rest);
  }
  IR x = Interval({0, 4});
  SR single(1.0);
  x.Bisect(single, ZULTaVoAny::kLowerHalf);
  EXPECT_TRUE(x.IsNil());
  EXPECT_EQ(single.GetValue(), 1);
  ZULTaVoReal::SetPrecision(1e-6);
}

}  // namespace
