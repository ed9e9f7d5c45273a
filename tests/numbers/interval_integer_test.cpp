#include <algorithm>
#include <climits>

#include "numbers/InitModule.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "tests/intervals/integer_oracle.h"
#include "tests/numbers/other_integer.h"

namespace {

using Interval = ZULTavIntervalInteger;
using Single = ZULTavSingleInteger;
using oracle::M;
using Set = IntegerInterval;

const Set kNil = {M, -M}, kRawNil = {5, 3}, kAny = {-M, M};

class IntervalIntegerTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { InitNumbers(); }
};

/// What an operation answered and left of the narrowed argument.
struct Outcome {
  long answer;
  Set set;
  friend bool operator==(const Outcome&, const Outcome&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Outcome& x) {
    return out << x.set << ", answer " << x.answer;
  }
};

// States and sets -------------------------------------------------------------------------------

#define EXPECT_STEP(before, step, answer, after)                                 \
  do {                                                                           \
    Interval x{SubdefInt(before)};                                               \
    const long got = step;                                                       \
    EXPECT_EQ((Outcome{got, x.GetSubdef()}), (Outcome{answer, after})) << #step; \
  } while (false)

TEST_F(IntervalIntegerTest, Steps) {
  EXPECT_STEP(Set(-3, 4), x.CalcZeroValue(), 1, Set(0, 0));
  EXPECT_STEP(Set(2, 4), x.CalcOneValue(), 1, kNil);
  EXPECT_STEP(kAny, x.CalcMinValue(), 1, Set(-M, -M));
  EXPECT_STEP(Set(M, M), x.CalcMaxValue(), 0, Set(M, M));
  EXPECT_STEP(kAny, x.CalcNextValue(Interval(M, M)), 1, kNil);
  EXPECT_STEP(kAny, Interval(-M, -M).CalcInverseNextValue(x), 1, kNil);
  EXPECT_STEP(kAny, x.CalcSumValue(Interval(1, M - 1), Interval(1, M - 1)), 1, Set(2, M));
  EXPECT_STEP(kAny, x.CalcPowerValue(Interval(10, 10), Interval(10, 10)), 1, Set(M, M));
  EXPECT_STEP(kAny, x.CalcLessValue(Interval()), 1, Set(-M, M - 1));
  EXPECT_STEP(Set(5, 9), x.CalcLessOrEqualValue(Interval(1, 3)), 1, Set(5, 3));
  EXPECT_STEP(kAny, x.CalcModValue(Interval(95, 97), Interval(10, 50)), 1, Set(45, 48));
  EXPECT_STEP(kAny, x.CalcModValue(Interval(-5, 5), Interval(0, 0)), 1, kNil);
  EXPECT_STEP(Set(2, 9), Interval(1, 1).CalcFirstInverseModValue(x, Interval(3, 3)), 1, Set(4, 7));
  EXPECT_STEP(kAny, Interval(5, 5).CalcFirstInverseModValue(x, Interval(3, 3)), 1, kNil);
  EXPECT_STEP(Set(2, 9), Interval(1, 1).CalcSecondInverseModValue(Interval(7, 7), x), 1, Set(2, 6));
  EXPECT_STEP(Set(-3, 4), x.InsertExactValue(9), 1, Set(-3, 9));
  EXPECT_STEP(Set(-3, 4), x.InsertExactValue(0), 0, Set(-3, 4));
  EXPECT_STEP(kRawNil, x.InsertExactValue(7), 1, Set(7, 7));
  EXPECT_STEP(Set(-3, 4), x.RemoveExactValue(4), 1, Set(-3, 3));
  EXPECT_STEP(Set(-3, 4), x.RemoveExactValue(-3), 1, Set(-2, 4));
  EXPECT_STEP(Set(-3, 4), x.RemoveExactValue(0), 0, Set(-3, 4));
  EXPECT_STEP(Set(4, 4), x.RemoveExactValue(4), 1, kNil);
  EXPECT_STEP(kAny, x.RemoveExactValue(M), 0, kAny);
  EXPECT_STEP(Set(-3, 4), (SDRaiseError(), x.CheckValue(), 0), 0, kNil);
  EXPECT_STEP(Set(-3, M + 1), (x.CheckValue(), 0), 0, Set(-3, M));
  const long kFar = LONG_MAX > M + 1 ? M : LONG_MAX;  // where M + 1 is not just beyond
  EXPECT_STEP(Set(1, 2), (x.SetExactValue(LONG_MAX), 0), 0, Set(kFar, kFar));
  // Just beyond the limits, bounds are stored as they are: empty ranges need them.
  EXPECT_STEP(Set(1, 2), (x.SetUpperBound(-M - 1), 0), 0, Set(1, -M - 1));
  // The answer tells of the upper bound only.
  EXPECT_STEP(Set(5, 9), x.Unite(Interval(1, 9)), 0, Set(1, 9));
  EXPECT_STEP(Set(5, 9), x.Unite(Interval(6, 12)), 1, Set(5, 12));
  EXPECT_STEP(Set(5, 9), x.Unite(Interval(5, 3)), 0, Set(5, 9));
  EXPECT_STEP(Set(5, 9), x.Unite(Single(12)), 1, Set(5, 12));
  EXPECT_STEP(kRawNil, x.Unite(Interval(1, 2)), 1, Set(1, 2));
  EXPECT_STEP(Set(3, 7), x.GetCardinality(), 5, Set(3, 7));
  EXPECT_STEP(kAny, x.GetCardinality(), -2, kAny);
  EXPECT_STEP(kRawNil, x.GetCardinality(), 0, kRawNil);
  EXPECT_STEP(Set(3, 7), x.GetNextExactValue(1), 3, Set(3, 7));
  EXPECT_STEP(Set(3, 7), x.GetNextExactValue(7), 8, Set(3, 7));
  EXPECT_STEP(Set(3, 7), x.GetNextExactValue(9), 9, Set(3, 7));
  EXPECT_STEP(Set(3, 7), x.GetPrevExactValue(9), 7, Set(3, 7));
  EXPECT_STEP(Set(3, 7), x.GetPrevExactValue(3), 2, Set(3, 7));
  EXPECT_STEP(kRawNil, x.GetPrevExactValue(4), 4, kRawNil);
  EXPECT_EQ(SDCheckError(), 0);
}

TEST_F(IntervalIntegerTest, BisectSplitsByFormula) {
  const auto bisect = [](Set set, int selection) {
    Interval x{SubdefInt(set)}, other(100, 200);
    x.Bisect(other, static_cast<ZULTaVoAny::ValueSelection>(selection));
    return std::pair<Set, Set>(other.GetSubdef(), x.GetSubdef());
  };
  const struct {
    Set set;
    int selection;
    Set other, rest;
  } rows[] = {
      {{-5, 5},  0, {-5, -1},   {0, 5}  },
      {{-1, 10}, 0, {-1, 3},    {4, 10} },
      {{2, 9},   0, {2, 5},     {6, 9}  },
      {{-9, -2}, 1, {-5, -2},   {-9, -6}},
      {{2, 9},   2, {2, 2},     {3, 9}  },
      {{2, 9},   3, {9, 9},     {2, 8}  },
      {{4, 4},   0, {4, 4},     {5, 4}  },
      {kRawNil,  2, kNil,       kNil    },
      {{2, 9},   4, {100, 200}, kNil    },
  };
  for (const auto& row : rows)
    EXPECT_EQ(bisect(row.set, row.selection), std::pair(row.other, row.rest)) << row.set;
  // Whatever the formula, both halves are proper and make up the whole.
  for (const Set& set : oracle::Intervals(30, true)) {
    for (int selection = 0; selection < 4 && set.lower < set.upper; ++selection) {
      auto [low, high] = bisect(set, selection);
      if (low.lower > high.lower) std::swap(low, high);
      ASSERT_TRUE(low.lower == set.lower && !low.IsEmpty() && low.upper + 1 == high.lower &&
                  !high.IsEmpty() && high.upper == set.upper)
          << set << " by " << selection << ": " << low << high;
    }
  }
}

// Arguments of other classes --------------------------------------------------------------------

TEST_F(IntervalIntegerTest, TakesTheValuesOfOtherClasses) {
  const ZULTavSingleBoolean no(SubdefBool::kFalse), yes(SubdefBool::kTrue), either;
  const Single five(5), anySingle;
  Single nilSingle;
  nilSingle.SetNil();
  const OtherInteger other(5, 9);
  const ZULTavSingleReal real(5.0);
  const struct {
    const ZULTaVoAny& from;
    Set assigned, united, intersected;  // the latter two with [1, 5]
  } rows[] = {
      {five,      {5, 5}, {1, 5}, {5, 5}},
      {anySingle, kAny,   kAny,   {1, 5}},
      {nilSingle, kNil,   {1, 5}, kNil  },
      {other,     {5, 9}, kNil,   {5, 5}},
      {real,      kNil,   kNil,   kNil  },
      {no,        {0, 0}, kNil,   kNil  },
      {yes,       {1, 1}, kNil,   kNil  },
      {either,    {0, 1}, kNil,   kNil  },
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.from.CastableID() << " as " << row.assigned);
    Interval x, y(1, 5), z(1, 5);
    EXPECT_EQ(z.IsIntersected(row.from), !row.assigned.IsEmpty() && row.assigned.upper >= 1);
    x.Assign(row.from);
    y.Unite(row.from);
    EXPECT_EQ(z.Intersect(row.from), !(row.intersected == Set(1, 5)));
    EXPECT_EQ(x.GetSubdef(), row.assigned);
    EXPECT_EQ(y.GetSubdef(), row.united);
    EXPECT_EQ(z.GetSubdef(), row.intersected);
  }
}

TEST_F(IntervalIntegerTest, ForeignArgumentsNarrowNothing) {
  ZULTavSingleReal real(5.0), nil;
  nil.SetNil();
  ZULTavSingleBoolean truth(SubdefBool::kTrue);
  Interval x(2, 4);
  const Interval y(7, 8);
  for (int answer :
       {x.CalcEqualValue(real), x.CalcInverseEqualValue(truth), x.CalcNotLessValue(truth),
        x.CalcLessOrEqualValue(nil), x.CalcAbsoluteValue(real), x.CalcSumValue(y, nil),
        x.CalcFirstInverseProdValue(real, y), x.CalcSecondInverseModValue(y, real)})
    EXPECT_EQ(answer, 0);
  EXPECT_EQ(x.GetSubdef(), Set(2, 4));
  EXPECT_TRUE(real.GetLowerBound() == 5.0 && truth.IsTrue());
}

TEST_F(IntervalIntegerTest, NarrowsIntegersOfOtherModulesByTheBoundsThatMove) {
  const Interval r(3, 8);
  OtherInteger wide(LONG_MIN, LONG_MAX), kept(1, 4), cut(7, 9);
  EXPECT_EQ(r.CalcFirstInverseMinValue(wide, Interval(0, 20)), 1);  // to [3, infinite)
  EXPECT_TRUE(wide.lower == 3 && wide.upper == LONG_MAX && wide.writes == 1);
  EXPECT_EQ(r.CalcFirstInverseSumValue(kept, Interval(2, 2)), 0);
  EXPECT_EQ(kept.writes, 0);
  EXPECT_EQ(r.CalcInverseEqualValue(cut), 1);
  EXPECT_TRUE(cut.lower == 7 && cut.upper == 8 && cut.writes == 1);
  EXPECT_EQ(Interval(1, 2).CalcInverseEqualValue(cut), 1);
  EXPECT_TRUE(cut.IsNil());
  EXPECT_EQ(Interval(1, 2).CalcInverseEqualValue(cut), 0);
}

}  // namespace
