#include <algorithm>
#include <climits>
#include <cmath>

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
using oracle::Holds;
using oracle::Hull;
using oracle::M;
using Set = IntegerInterval;

const Set kNil = {M, -M}, kRawNil = {5, 3}, kAny = {-M, M};

class IntervalIntegerTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { InitNumbers(); }
};

// Against enumeration ---------------------------------------------------------------------------

/// r = point(a, b), NaN being no value, or a relation of r and a. Where `plain`, values beyond the
/// limits do not exist; elsewhere an infinite side holds them.
struct Rule {
  const char* name;
  double (*point)(double a, double b);
  bool (*relation)(double r, double a) = nullptr;
  bool binary = true;
  bool plain = false;
};

/// What is claimed of a result: the hull of the solutions that the other two sets leave, cut to
/// the narrowed set; that where no set has an infinite side; that no solution is lost; that none is
/// lost by a divisor that is one value or may be zero.
enum class Claim { kHull, kHullIfFinite, kSound, kSoundForOneDivisor };

double Power(double a, double b) {
  return b < 0 && std::fabs(a) != 1 ? NAN : std::pow(a, b);  // integers only
}

std::vector<double> Candidates(const Set& x, bool plain, const Set& near = {0, 0}) {
  auto all = oracle::Members(x);
  for (long end : {near.lower, near.upper}) {
    for (double d : {-1.0, 0.0, 1.0}) all.push_back(static_cast<double>(end) + d);
  }
  std::erase_if(all, [&](double v) {
    return !Holds(x, v) || (plain && std::fabs(v) > static_cast<double>(M));
  });
  return all;
}

template <class Property>
Hull HullOf(std::vector<double> values, Property has) {
  std::sort(values.begin(), values.end());
  Hull hull;
  const auto least = std::find_if(values.begin(), values.end(), has);
  if (least == values.end()) return hull;
  hull.Add(*least);
  hull.Add(*std::find_if(values.rbegin(), values.rend(), has));
  return hull;
}

/// Hull of the values of `narrowed` (r, a or b) that have partners in the other two sets.
Set Solutions(const Rule& rule, int narrowed, const Set& r, const Set& a, const Set& b) {
  auto xs = Candidates(a, rule.plain, r);
  const auto any = [](const std::vector<double>& values, auto has) {
    return std::any_of(values.begin(), values.end(), has);
  };
  if (rule.relation != nullptr) {
    const auto rs = Candidates(r, rule.plain, a);
    const auto related = rule.relation;
    if (narrowed == 1)
      return HullOf(xs, [&](double x) { return any(rs, [&](double v) { return related(v, x); }); });
    return HullOf(rs, [&](double v) { return any(xs, [&](double x) { return related(v, x); }); });
  }
  // One exponent at the limit is that number; elsewhere the side is infinite.
  const auto ys = Candidates(b, rule.plain || (rule.point == Power && b.IsScalar()));
  const auto solves = [&](double x, double y) { return Holds(r, rule.point(x, y)); };
  if (narrowed == 2)
    return HullOf(ys, [&](double y) { return any(xs, [&](double x) { return solves(x, y); }); });
  Hull hull;
  for (double y : ys) {
    for (double x : xs) {
      if (narrowed == 0 && solves(x, y)) hull.Add(rule.point(x, y));
    }
  }
  if (narrowed == 0) return hull;
  for (double y : ys) {  // far from the members of a, the operation may reach the ends of r
    for (double end : {static_cast<double>(r.lower), static_cast<double>(r.upper)}) {
      if (std::fabs(end) <= 8 && std::fabs(y) <= 8) continue;
      for (double x : {end - y, end / y, std::pow(std::fabs(end), 1 / y)}) {
        for (double near : {std::floor(x), std::ceil(x), -std::floor(x), -std::ceil(x)}) {
          if (Holds(a, near)) xs.push_back(near);
        }
      }
    }
  }
  return HullOf(xs, [&](double x) { return any(ys, [&](double y) { return solves(x, y); }); });
}

constexpr int kFlagLeftUp = -1;

/// What an operation answered and left of the narrowed argument.
struct Outcome {
  long answer;
  Set set;
  friend bool operator==(const Outcome&, const Outcome&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Outcome& x) {
    return out << x.set << ", answer " << x.answer;
  }
};

/// One operation on r, a, b in every mix of argument classes that reaches an overload of its own.
template <class A, class B>
using Call = int (*)(Interval& r, A& a, B& b);
struct Calls {
  Call<Interval, Interval> typed;
  Call<ZULTaVoInteger, ZULTaVoInteger> slot;
  Call<Single, Interval> singleA;
  Call<Interval, Single> singleB;
  Call<Single, Single> singles;
};
#define LAMBDA(operation) [](auto& r, auto& a, [[maybe_unused]] auto& b) { return r.operation; }
#define CALLS(operation)                                                                          \
  Calls {                                                                                         \
    LAMBDA(operation), LAMBDA(operation), LAMBDA(operation), LAMBDA(operation), LAMBDA(operation) \
  }

/// A stale error flag must neither be heeded nor be left behind.
template <class A, class B, class X, class Y>
Outcome Run(Call<A, B> call, int narrowed, const Set& r, X a, Y b) {
  Interval z{SubdefInt(r)};
  if (!z.IsNil() && !a.IsNil() && !b.IsNil()) SDRaiseError();
  const int answer = call(z, a, b);
  if (SDCheckError()) return {kFlagLeftUp, {}};
  const ZULTaVoInteger* all[] = {&z, &a, &b};
  return {
      answer, {all[narrowed]->GetLowerBound(), all[narrowed]->GetUpperBound()}
  };
}

bool FitsSingle(const Set& x) { return x.IsEmpty() || x.IsScalar() || x == kAny; }

Single ToSingle(const Set& x) {
  Single single;
  if (x.IsEmpty()) {
    single.SetNil();
  } else if (x.IsScalar()) {
    single.SetExactValue(x.lower);
  }
  return single;
}

/// What a single integer becomes where an interval becomes `typed`.
Outcome OnSingle(const Set& before, const Outcome& typed) {
  if (before.IsEmpty()) return {0, kNil};
  if (typed.set.IsEmpty()) return {1, kNil};
  return before.IsScalar() || !typed.set.IsScalar() ? Outcome{0, before} : Outcome{1, typed.set};
}

testing::AssertionResult Check(const Rule& rule, int narrowed, Claim claim, const Calls& calls,
                               const Set& r, const Set& a, const Set& b) {
  const Set before = narrowed == 0 ? r : narrowed == 1 ? a : b;
  const Interval x{SubdefInt(a)}, y{SubdefInt(b)};
  const Outcome typed = Run(calls.typed, narrowed, r, x, y);
  const auto failed = [&](const char* what, const Outcome& got) {
    return testing::AssertionFailure() << what << " of " << rule.name << " narrows "
                                       << "rab"[narrowed] << ", with r " << r << ", a " << a
                                       << ", b " << b << ": " << got << "; ";
  };

  const Set hull = Solutions(rule, narrowed, r, a, b);
  const bool sound = typed.set.IsEmpty() ? hull.IsEmpty() : typed.set.mf_Union(hull) == typed.set;
  if (!sound && (claim != Claim::kSoundForOneDivisor || b.IsScalar() || b.Contains(0)))
    return failed("typed", typed) << "solutions " << hull;
  const bool finite =
      std::min({r.lower, a.lower, b.lower}) > -M && std::max({r.upper, a.upper, b.upper}) < M;
  if (!(typed.set == hull) &&
      (claim == Claim::kHull || (claim == Claim::kHullIfFinite && finite))) {
    // A gap among the solutions is seen where it meets the end of the narrowed set, or not.
    Set wide = Solutions(rule, narrowed, narrowed == 0 ? kAny : r, narrowed == 1 ? kAny : a,
                         narrowed == 2 ? kAny : b);
    wide.Intersect(before);
    if (!typed.set.IsEmpty() && (wide.IsEmpty() || !(wide.mf_Union(typed.set) == wide)))
      return failed("typed", typed) << "hull of solutions " << wide;
  }
  if (typed.answer != !(typed.set == before)) return failed("typed", typed) << "wrong answer";

  const Outcome slot = Run(calls.slot, narrowed, r, x, y);
  if (slot != typed) return failed("slot", slot) << "typed " << typed;
  const auto differs = [&](const Outcome& mixed, bool narrowsSingle) {
    return mixed != (narrowsSingle ? OnSingle(before, typed) : typed);
  };
  const bool singleA = FitsSingle(a), singleB = FitsSingle(b) && rule.binary;
  if (singleA && differs(Run(calls.singleA, narrowed, r, ToSingle(a), y), narrowed == 1))
    return failed("single a", typed);
  if (singleB && differs(Run(calls.singleB, narrowed, r, x, ToSingle(b)), narrowed == 2))
    return failed("single b", typed);
  if (singleA && singleB &&
      differs(Run(calls.singles, narrowed, r, ToSingle(a), ToSingle(b)), narrowed != 0))
    return failed("singles", typed);
  return testing::AssertionSuccess();
}

/// Checks an operation on all operands within a few units of zero and some at the limits, and on
/// variants of the set that it narrows; typed, through its slot, and mixed with single integers.
void Verify(const Rule& rule, int narrowed, Claim claim, const Calls& calls) {
  const auto operands = oracle::Intervals(narrowed == 0 ? 7 : 5, true);
  std::vector<Set> targets = {kAny,        kRawNil,   Set(-2, 5), Set(0, 4),
                              Set(-6, -1), Set(3, 3), Set(-M, 7)};
  if (!rule.binary) targets.insert(targets.end(), operands.begin(), operands.end());
  const std::vector<Set> second = rule.binary ? operands : std::vector<Set>(1);
  for (const Set& r : narrowed == 0 ? targets : operands) {
    for (const Set& a : narrowed == 1 ? targets : operands) {
      for (const Set& b : narrowed == 2 ? targets : second)
        ASSERT_TRUE(Check(rule, narrowed, claim, calls, r, a, b));
    }
  }
}

TEST_F(IntervalIntegerTest, SumProductMinimumMaximum) {
  constexpr Rule kSum = {"r = a + b", [](double a, double b) { return a + b; }};
  constexpr Rule kProd = {"r = a * b", [](double a, double b) { return a * b; }};
  constexpr Rule kMin = {"r = min(a, b)", [](double a, double b) { return std::min(a, b); }};
  constexpr Rule kMax = {"r = max(a, b)", [](double a, double b) { return std::max(a, b); }};
  Verify(kSum, 0, Claim::kHull, CALLS(CalcSumValue(a, b)));
  Verify(kSum, 1, Claim::kHull, CALLS(CalcFirstInverseSumValue(a, b)));
  Verify(kProd, 0, Claim::kHull, CALLS(CalcProdValue(a, b)));
  Verify(kProd, 1, Claim::kHull, CALLS(CalcFirstInverseProdValue(a, b)));
  Verify(kMin, 0, Claim::kHull, CALLS(CalcMinValue(a, b)));
  Verify(kMin, 1, Claim::kHull, CALLS(CalcFirstInverseMinValue(a, b)));
  Verify(kMax, 0, Claim::kHull, CALLS(CalcMaxValue(a, b)));
  Verify(kMax, 1, Claim::kHull, CALLS(CalcFirstInverseMaxValue(a, b)));
}

TEST_F(IntervalIntegerTest, ModuloAndPower) {
  constexpr auto kRemainder = [](double a, double b) { return b == 0 ? NAN : std::fmod(a, b); };
  constexpr Rule kMod = {"r = a mod b", kRemainder, nullptr, true, true};
  constexpr Rule kPower = {"r = a ^ b", Power};
  Verify(kMod, 0, Claim::kSoundForOneDivisor, CALLS(CalcModValue(a, b)));
  Verify(kMod, 1, Claim::kSound, CALLS(CalcFirstInverseModValue(a, b)));
  Verify(kMod, 2, Claim::kSound, CALLS(CalcSecondInverseModValue(a, b)));
  Verify(kPower, 0, Claim::kHull, CALLS(CalcPowerValue(a, b)));
  Verify(kPower, 1, Claim::kHull, CALLS(CalcFirstInversePowerValue(a, b)));
  Verify(kPower, 2, Claim::kHull, CALLS(CalcSecondInversePowerValue(a, b)));
}

void VerifyRelation(const char* name, bool (*holds)(double r, double a), Claim claim,
                    const Calls& forward, const Calls& inverse) {
  const Rule rule = {name, nullptr, holds, false, true};
  Verify(rule, 0, claim, forward);
  Verify(rule, 1, claim, inverse);
}
#define VERIFY_RELATION(relation, name, claim)                              \
  VerifyRelation(                                                           \
      #relation, [](double r, double a) { return relation; }, Claim::claim, \
      CALLS(Calc##name##Value(a)), CALLS(CalcInverse##name##Value(a)))

TEST_F(IntervalIntegerTest, UnaryOperationsAndRelations) {
  constexpr Rule kAbs = {"r = |a|", [](double a, double) { return std::fabs(a); }, nullptr, false};
  constexpr Rule kNegative = {"r = -a", [](double a, double) { return -a; }, nullptr, false};
  Verify(kAbs, 0, Claim::kHull, CALLS(CalcAbsoluteValue(a)));
  Verify(kAbs, 1, Claim::kHull, CALLS(CalcInverseAbsoluteValue(a)));
  Verify(kNegative, 0, Claim::kHull, CALLS(CalcNegativeValue(a)));
  Verify(kNegative, 1, Claim::kHull, CALLS(CalcInverseNegativeValue(a)));
  VERIFY_RELATION(r == a, Equal, kHull);
  VERIFY_RELATION(r <= a, LessOrEqual, kHull);
  VERIFY_RELATION(r < a, Less, kHull);
  VERIFY_RELATION(r >= a, NotLess, kHull);
  VERIFY_RELATION(r > a, NotLessAndUnequal, kHull);
  VERIFY_RELATION(r == a + 1, Next, kHullIfFinite);
  constexpr auto kIsSign = [](double r, double a) { return (r > 0) - (r < 0) == a; };
  constexpr Rule kSign = {"sign of r = a", nullptr, kIsSign, false, true};
  Verify(kSign, 0, Claim::kHull, CALLS(CalcInverseSignumValue(a)));
  Verify(kSign, 1, Claim::kHull, CALLS(CalcSignumValue(a)));
}

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
