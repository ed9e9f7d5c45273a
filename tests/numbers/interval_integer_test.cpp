#include <algorithm>
#include <climits>
#include <cmath>
#include <sstream>

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
using oracle::Members;
using Set = IntegerInterval;

const Set kNil = {5, 3};  // as relations leave it
const Set kAny = {-M, M};

// Against enumeration ---------------------------------------------------------------------------

double Power(double a, double b) {
  if (b < 0 && std::fabs(a) != 1) return NAN;  // no integer
  return std::pow(a, b);
}

double Remainder(double a, double b) { return b == 0 ? NAN : std::fmod(a, b); }

/// r = point(a, b), or r relation(r, a) a; NaN is no value. Where `plain`, values beyond the limits
/// do not exist; elsewhere an infinite side holds them, but not where b is the one exponent M.
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

bool IsFinite(const Set& x) { return x.lower > -M && x.upper < M; }

bool IsPlain(double v) { return std::fabs(v) <= static_cast<double>(M); }

std::vector<double> Candidates(const Set& x, bool plain) {
  auto all = Members(x);
  if (plain) std::erase_if(all, [](double v) { return !IsPlain(v); });
  return all;
}

/// Members of x, those next to the bounds of y among them.
std::vector<double> CandidatesNear(const Set& x, const Set& y) {
  auto all = Candidates(x, true);
  for (long end : {y.lower, y.upper}) {
    for (double v = static_cast<double>(end) - 1; v <= static_cast<double>(end) + 1; ++v) {
      if (Holds(x, v) && IsPlain(v)) all.push_back(v);
    }
  }
  return all;
}

/// Adds the least and the greatest of the values that have the property.
template <class Property>
void AddEnds(Hull& hull, std::vector<double> values, Property has) {
  std::sort(values.begin(), values.end());
  const auto least = std::find_if(values.begin(), values.end(), has);
  if (least == values.end()) return;
  hull.Add(*least);
  hull.Add(*std::find_if(values.rbegin(), values.rend(), has));
}

/// Hull of the values of `narrowed` (r, a or b) that have partners in the other two sets.
Hull Solutions(const Rule& rule, int narrowed, const Set& r, const Set& a, const Set& b) {
  Hull hull;
  if (rule.relation != nullptr) {
    const auto xs = CandidatesNear(a, r);
    for (double v : CandidatesNear(r, a)) {
      for (double x : xs) {
        if (rule.relation(v, x)) hull.Add(narrowed == 0 ? v : x);
      }
    }
    return hull;
  }
  auto xs = Candidates(a, rule.plain);
  const auto ys = Candidates(b, rule.plain || (rule.point == Power && b.IsScalar()));
  const auto solves = [&](double x, double y) { return Holds(r, rule.point(x, y)); };
  if (narrowed == 0) {
    for (double x : xs) {
      for (double y : ys) {
        if (solves(x, y)) hull.Add(rule.point(x, y));
      }
    }
  } else if (narrowed == 1) {
    for (double y : ys) {  // far from the members of a, the operation may reach the ends of r
      for (double end : {static_cast<double>(r.lower), static_cast<double>(r.upper)}) {
        if (std::fabs(end) <= 8 && std::fabs(y) <= 8) continue;
        for (double x : {end - y, end, end / y, std::pow(std::fabs(end), 1 / y)}) {
          for (double near : {std::floor(x), std::ceil(x), -std::floor(x), -std::ceil(x)}) {
            if (Holds(a, near)) xs.push_back(near);
          }
        }
      }
    }
    AddEnds(hull, xs, [&](double x) {
      return std::any_of(ys.begin(), ys.end(), [&](double y) { return solves(x, y); });
    });
  } else {
    AddEnds(hull, ys, [&](double y) {
      return std::any_of(xs.begin(), xs.end(), [&](double x) { return solves(x, y); });
    });
  }
  return hull;
}

/// A single integer with the values of `x`, which is Nil, one value or Any.
Single ToSingle(const Set& x) {
  Single single;
  if (x.IsEmpty()) {
    single.SetNil();
  } else if (x.IsScalar()) {
    single.SetExactValue(x.lower);
  }
  return single;
}

bool FitsSingle(const Set& x) { return x.IsEmpty() || x.IsScalar() || x == kAny; }

constexpr int kFlagLeftUp = -1;

/// One narrowing operation: its answer and what it left of the narrowed argument.
struct Outcome {
  int answer;
  Set set;
  friend bool operator==(const Outcome&, const Outcome&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Outcome& x) {
    return out << x.set << ", answer " << x.answer;
  }
};

/// What a single integer would have become where an interval became `typed`.
Outcome OnSingle(const Set& before, const Outcome& typed) {
  if (before.IsEmpty())
    return {
        0, {M, -M}
    };
  if (typed.set.IsEmpty())
    return {
        1, {M, -M}
    };
  if (before.IsScalar() || !typed.set.IsScalar()) return {0, before};
  return {1, typed.set};
}

/// An operation that narrows argument `narrowed` of r, a, b.
template <class Call>
struct Operation {
  const Rule& rule;
  int narrowed;
  Claim claim;
  Call call;

  /// A stale error flag must neither be heeded nor be left behind.
  template <class A, class B>
  Outcome Run(const Set& r, A&& a, B&& b) const {
    Interval z{SubdefInt(r)};
    const ZULTaVoInteger* all[] = {&z, &a, &b};
    if (!z.IsNil() && !a.IsNil() && !b.IsNil()) SDRaiseError();
    const int answer = call(z, a, b);
    if (SDCheckError()) return {kFlagLeftUp, {}};
    return {
        answer, {all[narrowed]->GetLowerBound(), all[narrowed]->GetUpperBound()}
    };
  }

  testing::AssertionResult Check(const Set& r, const Set& a, const Set& b) const {
    const Set before = narrowed == 0 ? r : narrowed == 1 ? a : b;
    const Interval x{SubdefInt(a)}, y{SubdefInt(b)};
    const Outcome typed = Run(r, Interval(x), Interval(y));
    const auto failed = [&](const char* what, const Outcome& got) {
      return testing::AssertionFailure() << what << " of " << rule.name << " narrows "
                                         << "rab"[narrowed] << ", with r " << r << ", a " << a
                                         << ", b " << b << ": " << got << "; ";
    };

    const Set hull = Solutions(rule, narrowed, r, a, b);
    const bool sound = typed.set.IsEmpty() ? hull.IsEmpty() : typed.set.mf_Union(hull) == typed.set;
    if (!sound && (claim != Claim::kSoundForOneDivisor || b.IsScalar() || b.Contains(0)))
      return failed("typed", typed) << "solutions " << hull;
    const bool finite = IsFinite(r) && IsFinite(a) && IsFinite(b);
    const bool exact = claim == Claim::kHull || (claim == Claim::kHullIfFinite && finite);
    if (exact && !(typed.set == hull)) {
      // A gap among the solutions is seen where it meets the end of the narrowed set, or not.
      Set wide = Solutions(rule, narrowed, narrowed == 0 ? kAny : r, narrowed == 1 ? kAny : a,
                           narrowed == 2 ? kAny : b);
      wide.Intersect(before);
      const bool within = typed.set.IsEmpty() || wide.mf_Union(typed.set) == wide;
      if (!within || (wide.IsEmpty() && !typed.set.IsEmpty()))
        return failed("typed", typed) << "hull of solutions " << wide;
    }
    if (typed.answer != !(typed.set == before)) return failed("typed", typed) << "wrong answer";

    Interval u = x, v = y;
    const Outcome slot = Run(r, static_cast<ZULTaVoInteger&>(u), static_cast<ZULTaVoInteger&>(v));
    if (slot != typed) return failed("slot", slot) << "typed " << typed;
    const Outcome single = OnSingle(before, typed);
    const bool singleA = FitsSingle(a), singleB = FitsSingle(b) && rule.binary;
    if (singleA) {
      const Outcome mixed = Run(r, ToSingle(a), Interval(y));
      if (mixed != (narrowed == 1 ? single : typed)) return failed("single a", mixed) << typed;
    }
    if (singleB) {
      const Outcome mixed = Run(r, Interval(x), ToSingle(b));
      if (mixed != (narrowed == 2 ? single : typed)) return failed("single b", mixed) << typed;
    }
    if (singleA && singleB) {
      const Outcome mixed = Run(r, ToSingle(a), ToSingle(b));
      if (mixed != (narrowed == 0 ? typed : single)) return failed("singles", mixed) << typed;
    }
    return testing::AssertionSuccess();
  }
};

/// Checks an operation on all operands within a few units of zero and some at the limits, and on
/// variants of the set that it narrows; typed, through its slot, and mixed with single integers.
template <class Call>
void Verify(const Rule& rule, int narrowed, Claim claim, Call call) {
  const auto operands = oracle::Intervals(narrowed == 0 ? 7 : 5, true);
  std::vector<Set> targets = {
      kAny, {-7, 7    },
       {-2, 5    },
       {0,  4    },
       {-6, -1   },
       {3,  3    },
       {-M, -1   },
       {2,  M - 1},
       kNil, {M,  M    }
  };
  if (!rule.binary) targets.insert(targets.end(), operands.begin(), operands.end());
  const std::vector<Set> none = {
      {0, 0}
  };
  const auto& second = rule.binary ? operands : none;
  const Operation<Call> operation{rule, narrowed, claim, call};
  for (const Set& r : narrowed == 0 ? targets : operands) {
    for (const Set& a : narrowed == 1 ? targets : operands) {
      for (const Set& b : narrowed == 2 ? targets : second) ASSERT_TRUE(operation.Check(r, a, b));
    }
  }
}

#define CALL(operation) [](auto& r, auto& a, [[maybe_unused]] auto& b) { return r.operation; }

class IntervalIntegerTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { InitNumbers(); }
};

constexpr Rule kSum = {"r = a + b", [](double a, double b) { return a + b; }};
constexpr Rule kProd = {"r = a * b", [](double a, double b) { return a * b; }};
constexpr Rule kMin = {"r = min(a, b)", [](double a, double b) { return std::min(a, b); }};
constexpr Rule kMax = {"r = max(a, b)", [](double a, double b) { return std::max(a, b); }};
constexpr Rule kMod = {"r = a mod b", Remainder, nullptr, true, true};
constexpr Rule kPower = {"r = a ^ b", Power};

TEST_F(IntervalIntegerTest, Sum) {
  Verify(kSum, 0, Claim::kHull, CALL(CalcSumValue(a, b)));
  Verify(kSum, 1, Claim::kHull, CALL(CalcFirstInverseSumValue(a, b)));
}

TEST_F(IntervalIntegerTest, Product) {
  Verify(kProd, 0, Claim::kHull, CALL(CalcProdValue(a, b)));
  Verify(kProd, 1, Claim::kHull, CALL(CalcFirstInverseProdValue(a, b)));
}

TEST_F(IntervalIntegerTest, MinimumAndMaximum) {
  Verify(kMin, 0, Claim::kHull, CALL(CalcMinValue(a, b)));
  Verify(kMin, 1, Claim::kHull, CALL(CalcFirstInverseMinValue(a, b)));
  Verify(kMax, 0, Claim::kHull, CALL(CalcMaxValue(a, b)));
  Verify(kMax, 1, Claim::kHull, CALL(CalcFirstInverseMaxValue(a, b)));
}

TEST_F(IntervalIntegerTest, Modulo) {
  Verify(kMod, 0, Claim::kSoundForOneDivisor, CALL(CalcModValue(a, b)));
  Verify(kMod, 1, Claim::kSound, CALL(CalcFirstInverseModValue(a, b)));
  Verify(kMod, 2, Claim::kSound, CALL(CalcSecondInverseModValue(a, b)));
}

TEST_F(IntervalIntegerTest, Power) {
  Verify(kPower, 0, Claim::kHull, CALL(CalcPowerValue(a, b)));
  Verify(kPower, 1, Claim::kHull, CALL(CalcFirstInversePowerValue(a, b)));
  Verify(kPower, 2, Claim::kHull, CALL(CalcSecondInversePowerValue(a, b)));
}

TEST_F(IntervalIntegerTest, UnaryOperations) {
  constexpr Rule kAbs = {"r = |a|", [](double a, double) { return std::fabs(a); }, nullptr, false};
  constexpr Rule kNegative = {"r = -a", [](double a, double) { return -a; }, nullptr, false};
  constexpr Rule kNext = {"r = a + 1", nullptr, [](double r, double a) { return r == a + 1; },
                          false, true};
  Verify(kAbs, 0, Claim::kHull, CALL(CalcAbsoluteValue(a)));
  Verify(kAbs, 1, Claim::kHull, CALL(CalcInverseAbsoluteValue(a)));
  Verify(kNegative, 0, Claim::kHull, CALL(CalcNegativeValue(a)));
  Verify(kNegative, 1, Claim::kHull, CALL(CalcInverseNegativeValue(a)));
  Verify(kNext, 0, Claim::kHullIfFinite, CALL(CalcNextValue(a)));
  Verify(kNext, 1, Claim::kHullIfFinite, CALL(CalcInverseNextValue(a)));
  constexpr Rule kSign = {"sign of r = a", nullptr,
                          [](double r, double a) { return (r > 0) - (r < 0) == a; }, false, true};
  Verify(kSign, 0, Claim::kHull, CALL(CalcInverseSignumValue(a)));
  Verify(kSign, 1, Claim::kHull, CALL(CalcSignumValue(a)));
}

TEST_F(IntervalIntegerTest, Relations) {
  constexpr auto kRule = [](const char* name, bool (*relation)(double, double)) {
    return Rule{name, nullptr, relation, false, true};
  };
  const Rule equal = kRule("r = a", [](double r, double a) { return r == a; });
  const Rule lessOrEqual = kRule("r <= a", [](double r, double a) { return r <= a; });
  const Rule less = kRule("r < a", [](double r, double a) { return r < a; });
  const Rule notLess = kRule("r >= a", [](double r, double a) { return r >= a; });
  const Rule greater = kRule("r > a", [](double r, double a) { return r > a; });
  Verify(equal, 0, Claim::kHull, CALL(CalcEqualValue(a)));
  Verify(equal, 1, Claim::kHull, CALL(CalcInverseEqualValue(a)));
  Verify(lessOrEqual, 0, Claim::kHull, CALL(CalcLessOrEqualValue(a)));
  Verify(lessOrEqual, 1, Claim::kHull, CALL(CalcInverseLessOrEqualValue(a)));
  Verify(less, 0, Claim::kHull, CALL(CalcLessValue(a)));
  Verify(less, 1, Claim::kHull, CALL(CalcInverseLessValue(a)));
  Verify(notLess, 0, Claim::kHull, CALL(CalcNotLessValue(a)));
  Verify(notLess, 1, Claim::kHull, CALL(CalcInverseNotLessValue(a)));
  Verify(greater, 0, Claim::kHull, CALL(CalcNotLessAndUnequalValue(a)));
  Verify(greater, 1, Claim::kHull, CALL(CalcInverseNotLessAndUnequalValue(a)));
}

// States and sets -------------------------------------------------------------------------------

/// Runs `change` on [lower, upper] and answers what it said and left.
template <class Change>
Outcome After(const Set& set, Change change) {
  Interval x{SubdefInt(set)};
  const int answer = change(x);
  return {answer, x.GetSubdef()};
}

TEST_F(IntervalIntegerTest, LimitsAndConstants) {
  using Act = int (*)(Interval&);
  const struct {
    const char* what;
    Set before;
    Act act;
    Outcome after;
  } rows[] = {
      {"zero",                                {-3, 4}, [](Interval& x) { return x.CalcZeroValue(); },                                                {1, {0, 0}}  },
      {"one",                                 {2, 4},  [](Interval& x) { return x.CalcOneValue(); },                                                 {1, {M, -M}} },
      {"least",                               kAny,    [](Interval& x) { return x.CalcMinValue(); },                                                 {1, {-M, -M}}},
      {"greatest",                            {M, M},  [](Interval& x) { return x.CalcMaxValue(); },                                                 {0, {M, M}}  },
      {"next of greatest",
       kAny,                                           [](Interval& x) { return x.CalcNextValue(Interval(M, M)); },
       {1, {M, -M}}                                                                                                                                               },
      {"previous of least",
       kAny,                                           [](Interval& x) { return Interval(-M, -M).CalcInverseNextValue(x); },
       {1, {M, -M}}                                                                                                                                               },
      {"sum saturates",
       kAny,                                           [](Interval& x) { return x.CalcSumValue(Interval(1, 2000000000), Interval(1, 2000000000)); },
       {1, {2, M}}                                                                                                                                                },
      {"power saturates",
       kAny,                                           [](Interval& x) { return x.CalcPowerValue(Interval(10, 10), Interval(10, 10)); },
       {1, {M, M}}                                                                                                                                                },
      {"infinite side stays",
       kAny,                                           [](Interval& x) { return Interval(5, M).CalcFirstInverseSumValue(x, Interval(3, 3)); },
       {1, {2, M}}                                                                                                                                                },
      {"less than anything",
       kAny,                                           [](Interval& x) { return x.CalcLessValue(Interval()); },
       {1, {-M, M - 1}}                                                                                                                                           },
      {"relation leaves bounds as they come",
       {5, 9},
       [](Interval& x) { return x.CalcLessOrEqualValue(Interval(1, 3)); },
       {1, {5, 3}}                                                                                                                                                },
      {"early stop of modulo",
       kAny,                                           [](Interval& x) { return x.CalcModValue(Interval(95, 97), Interval(10, 50)); },
       {1, {45, 48}}                                                                                                                                              },
      {"remainder by zero",
       kAny,                                           [](Interval& x) { return x.CalcModValue(Interval(-5, 5), Interval(0, 0)); },
       {1, {M, -M}}                                                                                                                                               },
      {"remainder of zero by zero",
       kAny,                                           [](Interval& x) { return x.CalcModValue(Interval(0, 0), Interval(0, 0)); },
       {1, {0, 0}}                                                                                                                                                },
      {"dividend from quotients",
       {2, 9},
       [](Interval& x) { return Interval(1, 1).CalcFirstInverseModValue(x, Interval(3, 3)); },
       {1, {4, 7}}                                                                                                                                                },
      {"remainder beyond the divisor",
       kAny,                                           [](Interval& x) { return Interval(5, 5).CalcFirstInverseModValue(x, Interval(3, 3)); },
       {1, {M, -M}}                                                                                                                                               },
      {"divisor from quotients",
       {2, 9},
       [](Interval& x) { return Interval(1, 1).CalcSecondInverseModValue(Interval(7, 7), x); },
       {1, {2, 6}}                                                                                                                                                },
      {"insert above",                        {-3, 4}, [](Interval& x) { return x.InsertExactValue(9); },                                            {1, {-3, 9}} },
      {"insert within",                       {-3, 4}, [](Interval& x) { return x.InsertExactValue(0); },                                            {0, {-3, 4}} },
      {"insert into Nil",                     kNil,    [](Interval& x) { return x.InsertExactValue(7); },                                            {1, {7, 7}}  },
      {"remove upper end",
       {-3, 4},
       [](Interval& x) { return x.RemoveExactValue(4); },
       {1, {-3, 3}}                                                                                                                                               },
      {"remove within",                       {-3, 4}, [](Interval& x) { return x.RemoveExactValue(0); },                                            {0, {-3, 4}} },
      {"remove the last value",
       {4, 4},
       [](Interval& x) { return x.RemoveExactValue(4); },
       {1, {M, -M}}                                                                                                                                               },
      {"remove from Any",                     kAny,    [](Interval& x) { return x.RemoveExactValue(M); },                                            {0, kAny}    },
      {"check an overflow",
       {-3, 4},
       [](Interval& x) { return SDRaiseError(), x.CheckValue(), 0; },
       {0, {M, -M}}                                                                                                                                               },
      {"check a bound beyond",
       {-3, M + 1},
       [](Interval& x) { return x.CheckValue(), 0; },
       {0, {-3, M}}                                                                                                                                               },
  };
  for (const auto& row : rows) EXPECT_EQ(After(row.before, row.act), row.after) << row.what;
  EXPECT_EQ(SDCheckError(), 0);
}

TEST_F(IntervalIntegerTest, UniteAnswersForTheUpperBoundOnly) {
  const struct {
    Set set, other;
    Outcome after;
  } rows[] = {
      {{5, 9}, {1, 9},  {0, {1, 9}} },
      {{5, 9}, {6, 12}, {1, {5, 12}}},
      {{5, 9}, kNil,    {0, {5, 9}} },
      {kNil,   {7, 8},  {1, {7, 8}} },
      {kNil,   {1, 2},  {1, {1, 2}} },
      {kNil,   kNil,    {0, kNil}   },
      {kAny,   {7, 8},  {0, kAny}   },
  };
  for (const auto& [set, other, after] : rows) {
    const Interval y{SubdefInt(other)};
    EXPECT_EQ(After(set, [&](Interval& x) { return x.Unite(y); }), after) << set << other;
    EXPECT_EQ(After(set, [&](ZULTaVoAny& x) { return x.Unite(y); }), after) << set << other;
  }
  EXPECT_EQ(After({5, 9}, [](Interval& x) { return x.Unite(Single(12)); }).set, Set(5, 12));
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
      {kAny,     0, {-M, -1},   {0, M}  },
      {kNil,     2, {M, -M},    {M, -M} },
      {{2, 9},   4, {100, 200}, {M, -M} },
  };
  for (const auto& row : rows) {
    EXPECT_EQ(bisect(row.set, row.selection), std::pair(row.other, row.rest))
        << row.set << " by " << row.selection;
  }
  // Whatever the formula, both halves are proper and make up the whole.
  for (const Set& set : oracle::Intervals(30, true)) {
    if (set.IsEmpty() || set.IsScalar()) continue;
    for (int selection = 0; selection < 4; ++selection) {
      auto [low, high] = bisect(set, selection);
      if (low.lower > high.lower) std::swap(low, high);
      ASSERT_TRUE(low.lower == set.lower && high.upper == set.upper &&
                  low.upper + 1 == high.lower && !low.IsEmpty() && !high.IsEmpty())
          << set << " by " << selection << ": " << low << high;
    }
  }
  Single single(3);
  EXPECT_TRUE(After({2, 9}, [&](Interval& x) {
                return x.Bisect(single, ZULTaVoAny::kLowerHalf), 0;
              }).set.IsEmpty());
}

TEST_F(IntervalIntegerTest, CountsAndStepsThroughItsValues) {
  const struct {
    Set set;
    long cardinality, at, next, prev;
  } rows[] = {
      {kAny,    -2,    0, 1, -1},
      {{3, 7},  5,     3, 4, 2 },
      {{3, 7},  5,     1, 3, 1 },
      {{3, 7},  5,     9, 9, 7 },
      {{3, 7},  5,     7, 8, 6 },
      {kNil,    0,     4, 4, 4 },
      {{-M, 0}, M + 1, 0, 1, -1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.set << " at " << row.at);
    const Interval x{SubdefInt(row.set)};
    EXPECT_EQ(x.GetCardinality(), row.cardinality);
    EXPECT_EQ(x.GetNextExactValue(row.at), row.next);
    EXPECT_EQ(x.GetPrevExactValue(row.at), row.prev);
  }
  EXPECT_EQ(Interval(1 - M, M).GetCardinality(), static_cast<long>(4294967292LL));
}

TEST_F(IntervalIntegerTest, StoresSaturateButAcceptTheBoundsOfEmptyRanges) {
  Interval x(LONG_MIN, LONG_MAX);
  EXPECT_TRUE(x.IsAny());
  x.SetUpperBound(-M - 1);
  EXPECT_EQ(x.GetUpperBound(), -M - 1);
  x.SetExactValue(LONG_MAX);
  EXPECT_EQ(x.GetSubdef(), Set(M, M));
}

// Arguments of other classes --------------------------------------------------------------------

TEST_F(IntervalIntegerTest, TakesTheValuesOfOtherClasses) {
  Single anySingle, nilSingle;
  nilSingle.SetNil();
  const ZULTavSingleBoolean truths[] = {
      ZULTavSingleBoolean(SubdefBool::Code{0}), ZULTavSingleBoolean(SubdefBool::Code{1}),
      ZULTavSingleBoolean(SubdefBool::Code{2}), ZULTavSingleBoolean(SubdefBool::Code{3})};
  const Single five(5);
  const Interval interval(4, 6);
  const OtherInteger other(5, 9);
  const ZULTavSingleReal real(5.0);
  const struct {
    const ZULTaVoAny& from;
    Set assigned, united, intersected;  // the latter two with [2, 5]
  } rows[] = {
      {interval,  {4, 6},  {2, 6},  {4, 5} },
      {five,      {5, 5},  {2, 5},  {5, 5} },
      {anySingle, kAny,    kAny,    {2, 5} },
      {nilSingle, {M, -M}, {2, 5},  {M, -M}},
      {other,     {5, 9},  {M, -M}, {5, 5} },
      {real,      {M, -M}, {M, -M}, {M, -M}},
      {truths[0], {0, 0},  {M, -M}, {M, -M}},
      {truths[1], {1, 1},  {M, -M}, {M, -M}},
      {truths[2], {0, 1},  {M, -M}, {M, -M}},
      {truths[3], {M, -M}, {M, -M}, {M, -M}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.from.CastableID());
    Interval x, y(2, 5), z(2, 5);
    x.Assign(row.from);
    y.Unite(row.from);
    const int changed = z.Intersect(row.from);
    EXPECT_EQ(x.GetSubdef(), row.assigned);
    EXPECT_EQ(y.GetSubdef(), row.united);
    EXPECT_EQ(z.GetSubdef(), row.intersected);
    EXPECT_EQ(changed, !(z.GetSubdef() == Set(2, 5)));
    EXPECT_EQ(Interval(2, 5).IsIntersected(row.from),
              !row.assigned.IsEmpty() && row.assigned.lower <= 5 && row.assigned.upper >= 2);
  }
}

TEST_F(IntervalIntegerTest, ForeignArgumentsNarrowNothing) {
  ZULTavSingleReal real(5.0);
  ZULTavSingleBoolean truth(SubdefBool::Code{1});
  ZULTavSingleReal nil;
  nil.SetNil();
  Interval x(2, 4);
  const int answers[] = {x.CalcEqualValue(real),
                         x.CalcEqualValue(truth),
                         x.CalcInverseEqualValue(real),
                         x.CalcInverseLessValue(truth),
                         x.CalcLessOrEqualValue(nil),
                         x.CalcNotLessValue(truth),
                         x.CalcAbsoluteValue(real),
                         x.CalcSumValue(Interval(7, 8), real),
                         x.CalcSumValue(nil, Interval(M, -M)),
                         x.CalcFirstInverseProdValue(real, Interval(1, 1)),
                         x.CalcSecondInverseModValue(Interval(7, 7), real)};
  for (int answer : answers) EXPECT_EQ(answer, 0);
  EXPECT_EQ(x.GetSubdef(), Set(2, 4));
  EXPECT_EQ(real.GetLowerBound(), 5.0);
  EXPECT_TRUE(truth.IsTrue());
}

TEST_F(IntervalIntegerTest, NarrowsIntegersOfOtherModulesByTheBoundsThatMove) {
  const Interval r(3, 8);
  OtherInteger wide(LONG_MIN, LONG_MAX), tight(1, 4), far(7, 9);
  EXPECT_EQ(r.CalcFirstInverseMinValue(wide, Interval(0, 20)), 1);  // [3, infinite)
  EXPECT_TRUE(wide.lower == 3 && wide.upper == LONG_MAX && wide.writes == 1);
  EXPECT_EQ(r.CalcFirstInverseSumValue(tight, Interval(2, 2)), 0);
  EXPECT_EQ(tight.writes, 0);
  EXPECT_EQ(r.CalcInverseEqualValue(far), 1);
  EXPECT_TRUE(far.lower == 7 && far.upper == 8 && far.writes == 1);
  EXPECT_EQ(r.CalcInverseNotLessValue(far), 0);
  EXPECT_EQ(Interval(1, 2).CalcInverseEqualValue(far), 1);
  EXPECT_TRUE(far.IsNil());
  EXPECT_EQ(Interval(1, 2).CalcInverseEqualValue(far), 0);
  Interval x(0, 9);
  EXPECT_EQ(x.CalcProdValue(OtherInteger(1, 3), Interval(2, 2)), 1);
  EXPECT_EQ(x.GetSubdef(), Set(2, 6));
}

TEST_F(IntervalIntegerTest, StreamsKeepTheBounds) {
  for (const Set& set : {Set(-3, 7), kAny, Set(M, -M), kNil}) {
    std::stringstream bytes;
    ZULopstream out(bytes);
    Interval(SubdefInt(set)).Write(out);
    ZULipstream in(bytes);
    Interval x;
    x.Read(in);
    EXPECT_EQ(x.GetSubdef(), set);
  }
}

}  // namespace
