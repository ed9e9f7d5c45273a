#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <vector>

#include "framework/intervals/IntervalControl.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"

namespace {

using SR = ZULTavSingleReal;
using SI = ZULTavSingleInteger;

constexpr double kAny = 1e21, kNil = -1e21, kMax = 1e19;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

SR Real(double value) {
  SR real;
  real.SetExactValue(value);
  return real;
}
SI Integer(double value) {
  SI integer;
  if (value == kNil) integer.SetNil();
  if (std::fabs(value) < kAny) integer.SetExactValue(static_cast<long>(value));
  return integer;
}
double ValueOf(const SR& x) { return x.GetValue(); }
double ValueOf(const SI& x) { return SR(x, 0).GetValue(); }

/// Runs `call(target)`, checks what holds of every operation, and answers what is left.
template <class Target, class Call>
double Left(Target target, Call call) {
  const double before = ValueOf(target);
  const int answer = call(target);
  EXPECT_EQ(answer, ValueOf(target) != before);
  EXPECT_EQ(SDCheckError(), 0);
  EXPECT_EQ(std::fegetround(), FE_TONEAREST);
  return ValueOf(target);
}

/// Rows of target, operand, and the target afterwards.
using Rows = std::vector<double>;

template <class MakeTarget, class MakeOperand, class Call>
void CheckRows(const Rows& rows, MakeTarget makeTarget, MakeOperand makeOperand, Call call) {
  for (std::size_t i = 0; i < rows.size(); i += 3) {
    const double* row = &rows[i];
    const auto operand = makeOperand(row[1]);
    EXPECT_EQ(Left(makeTarget(row[0]), [&](auto& target) { return call(target, operand); }), row[2])
        << row[0] << ", " << row[1];
  }
}

template <class Typed, class Slot>
void CheckBoth(const Rows& rows, Typed typed, Slot slot) {
  CheckRows(rows, Real, Real, typed);
  CheckRows(rows, Real, Real, slot);
}

#define FORWARD(operation, Abstract)                           \
  [](SR& target, const SR& x) { return target.operation(x); }, \
      [](ZULTaVoReal& target, const Abstract& x) { return target.operation(x); }
#define INVERSE(operation, Abstract)                           \
  [](SR& target, const SR& r) { return r.operation(target); }, \
      [](Abstract& target, const ZULTaVoReal& r) { return r.operation(target); }

TEST(SingleRealTest, StatesFollowTheStoredNumber) {
  for (double stored : {2e19, -2e19, HUGE_VAL, 1e22}) EXPECT_TRUE(SR(&stored).IsAny()) << stored;
  EXPECT_TRUE(SR(&kNan).IsNil());
  EXPECT_EQ(SR(kMax).GetValue(), kMax);
  for (double value : {kNil, kAny, 2.5}) {
    const SR x = Real(value);
    const bool nil = value == kNil, any = value == kAny;
    EXPECT_EQ(x.IsNil(), nil);
    EXPECT_EQ(x.IsAny(), any);
    EXPECT_EQ(x.GetCardinality(), nil ? 0 : any ? -1 : 1);
    EXPECT_EQ(x.GetLowerBound(), nil ? kMax : any ? -kMax : value);
    EXPECT_EQ(x.GetUpperBound(), nil ? -kMax : any ? kMax : value);
    EXPECT_EQ(x.GetNextExactValue(7), value);
  }
  SDRaiseError();
  SR x(1.0), other(4.0);
  EXPECT_TRUE(x.IsNil());
  EXPECT_FALSE(SDCheckError());
  other.Bisect(x, ZULTaVoAny::kLowerHalf);
  EXPECT_TRUE(other.IsNil());
}

TEST(SingleRealTest, IntersectsWithItsOwnMargins) {
  const Rows reals = {1.0,  1.0000015, 1.0,  1.0, 1.0000025, kNil, 1.0,  0.9999985,
                      1.0,  kAny,      4.5,  4.5, 4.5,       kAny, 4.5,  4.5,
                      kNil, kNil,      kNil, 4.5, kNil,      kAny, kNil, kNil};
  CheckBoth(reals, FORWARD(Intersect, ZULTaVoAny));
  CheckBoth(reals, FORWARD(CalcEqualValue, ZULTaVoAny));
  CheckBoth(reals, INVERSE(CalcInverseEqualValue, ZULTaVoAny));
  const Rows integers = {3.0,  3, 3.0, 3.0000005, 3,    3.0000005, 3.0000015, 3,    kNil,
                         kAny, 3, 3,   3,         kAny, 3,         3,         kNil, kNil};
  CheckRows(integers, Real, Integer, [](SR& r, const SI& i) { return r.Intersect(i); });
  CheckRows(integers, Real, Integer, [](SR& r, const ZULTaVoAny& i) { return r.Intersect(i); });
  CheckRows(integers, Real, Integer, [](SR& r, const SI& i) { return r.CalcEqualValue(i); });
}

TEST(SingleRealTest, IntersectsWithSets) {
  const std::pair<SubdefReal, Rows> rows[] = {
      {{2, 3},        {1, 0, kNil, 1.9999995, 0, 1.9999995, kAny, 0, kAny, kNil, 0, kNil}},
      {{2, 2},        {kAny, 0, 2}                                                       },
      {{-kMax, kMax}, {5, 0, 5, kAny, 0, kAny}                                           },
      {{1, 0},        {5, 0, kNil, kAny, 0, kNil}                                        }
  };
  for (const auto& [set, values] : rows) {
    CheckRows(values, Real, Real, [&s = set](SR& r, const SR&) { return r.Intersect(s); });
  }
  SR nil(kNil), pending(1.0);
  EXPECT_EQ(nil.Intersect(SubdefReal(1, 0)), 1);
  SDRaiseError();
  EXPECT_EQ(pending.Intersect(SubdefReal(0, 2)), 1);
  EXPECT_TRUE(pending.IsNil());
  EXPECT_FALSE(SDCheckError());
}

TEST(SingleRealTest, NarrowsIntegersByTruncation) {
  constexpr double kLimit = 2147483646;
  // clang-format off
  const Rows rows = {
      kAny, -2.5, kNil, kAny, 7.0, 7, kAny, 2.9999999, kNil, kAny, 3.0000001, 3,
      5, 5, 5, 6, 5, kNil, 5, kAny, 5, 5, kNil, kNil, kNil, 5, kNil,
      kAny, 3e9, kNil, kAny, -3e9, kNil,
      kAny, kLimit, kLimit, kAny, kLimit + 1, kAny, kAny, -kLimit - 2, kNil};
  // clang-format on
  CheckRows(rows, Integer, Real, [](SI& i, const SR& r) { return r.IntersectInverse(i); });
  CheckRows(rows, Integer, Real, [](SI& i, const SR& r) { return r.CalcInverseEqualValue(i); });
  CheckRows(rows, Integer, Real,
            [](ZULTaVoAny& i, const ZULTaVoAny& r) { return r.CalcInverseEqualValue(i); });
}

TEST(SingleRealTest, ForeignClassesNarrowNothing) {
  const ZULTavIntervalReal interval(1, 2);
  ZULTavIntervalInteger integers(0, 3);
  SR x(1.0);
  EXPECT_EQ(x.CalcEqualValue(interval), 0);
  EXPECT_EQ(x.CalcLessOrEqualValue(ZULTavSingleBoolean()), 0);
  EXPECT_EQ(x.CalcSumValue(interval, x), 0);
  EXPECT_EQ(x.CalcFirstInverseSumValue(integers, x), 0);
  EXPECT_EQ(x.CalcSignumValue(integers), 0);
  EXPECT_EQ(x.IsIntersected(interval), 0);
  EXPECT_EQ(x.GetValue(), 1);
  EXPECT_EQ(x.Unite(interval), 1);
  EXPECT_TRUE(x.IsAny());
  EXPECT_EQ(x.Intersect(interval), 1);
  EXPECT_TRUE(x.IsNil());
  x.SetAny();
  x.Assign(interval);
  EXPECT_TRUE(x.IsNil());
}

TEST(SingleRealTest, UnitesInsertsAndRemoves) {
  const Rows unions = {kNil, 5, 5, 4, 5, kAny, 4, 4.0000015, 4, kAny, 5, kAny, 4, kNan, 4};
  CheckBoth(unions, FORWARD(Unite, ZULTaVoAny));
  CheckRows(unions, Real, std::identity(), [](SR& r, double v) { return r.InsertExactValue(v); });
  CheckRows({kNil, 5, kNil, 4, 5, 4, 4, 4.0000015, kNil, kAny, 5, kAny, 4, kNan, 4}, Real,
            std::identity(), [](SR& r, double v) { return r.RemoveExactValue(v); });
  CheckRows({4, 4, 4, 4, kNil, 4, 4, kAny, kAny}, Real, Integer,
            [](SR& r, const SI& i) { return r.Unite(i); });
  EXPECT_FALSE(SR(1.0).IsIntersected(SR(1 + 1e-12)));
  EXPECT_TRUE(SR(1.0).IsIntersected(SI(1)));
  EXPECT_TRUE(SR().IsIntersected(SI(1)));
  EXPECT_FALSE(SR(kNil).IsIntersected(SR()));
}

TEST(SingleRealTest, Relations) {
  const Rows states = {kAny, 5, kAny, 5, kAny, 5, kNil, 5, kNil, 5, kNil, kNil};
  const Rows notGreater = {1.0000005, 1, 1.0000005, 1.0000015, 1, kNil, 0, 1, 0};
  const Rows less = {1, 1, kNil, 1, 1 + 2e-14, 1, 1000, 1000, kNil, 2, 1, kNil};
  const Rows notLess = {0.9999995, 1, 0.9999995, 0.9999985, 1, kNil};
  const Rows greater = {1, 1, kNil, 1000.5, 1000, 1000.5};
  for (const Rows& rows : {notGreater, states}) {
    CheckBoth(rows, FORWARD(CalcLessOrEqualValue, ZULTaVoAny));
    CheckBoth(rows, INVERSE(CalcInverseNotLessValue, ZULTaVoScalar));
  }
  for (const Rows& rows : {less, states}) {
    CheckBoth(rows, FORWARD(CalcLessValue, ZULTaVoScalar));
    CheckBoth(rows, INVERSE(CalcInverseNotLessAndUnequalValue, ZULTaVoAny));
  }
  for (const Rows& rows : {notLess, states}) {
    CheckBoth(rows, FORWARD(CalcNotLessValue, ZULTaVoScalar));
    CheckBoth(rows, INVERSE(CalcInverseLessOrEqualValue, ZULTaVoAny));
  }
  for (const Rows& rows : {greater, states}) {
    CheckBoth(rows, FORWARD(CalcNotLessAndUnequalValue, ZULTaVoAny));
    CheckBoth(rows, INVERSE(CalcInverseLessValue, ZULTaVoScalar));
  }
  CheckRows({4, 4, kNil, 5, 4, 5, kAny, 4, kAny}, Integer, Real,
            [](ZULTaVoScalar& i, const SR& r) { return r.CalcInverseLessValue(i); });
}

TEST(SingleRealTest, NextMovesByTwicePrecision) {
  CheckBoth({kAny, 1, 1 + 2e-6, 1.000003, 1, 1.000003, 1.000005, 1, kNil},
            FORWARD(CalcNextValue, ZULTaVoScalar));
  CheckBoth({kAny, 1, 1 - 2e-6, 1, 1.000005, kNil}, INVERSE(CalcInverseNextValue, ZULTaVoScalar));
}

TEST(SingleRealTest, Constants) {
  const std::pair<int (SR::*)(), double> rows[] = {
      {&SR::CalcMinValue,  -kMax           },
      {&SR::CalcMaxValue,  kMax            },
      {&SR::CalcZeroValue, 0               },
      {&SR::CalcOneValue,  1               },
      {&SR::CalcPiValue,   std::numbers::pi},
      {&SR::CalcEValue,    M_E             }
  };
  for (const auto& [operation, value] : rows) {
    CheckRows({kAny, 0, value, kNil, 0, kNil, value, 0, value, 3.14159, 0, kNil}, Real, Real,
              [&op = operation](SR& r, const SR&) { return (r.*op)(); });
  }
}

}  // namespace
