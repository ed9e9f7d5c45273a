#include <algorithm>

#include "numbers/detail/IntegerModulo.h"
#include "tests/intervals/integer_oracle.h"

using namespace zultav::detail;

namespace {

using oracle::Hull;
using oracle::M;
using Set = IntegerInterval;

const SubdefInt kAny(-M, M);

/// What a modulo function leaves of `r`, its answer and the error flag, which it lowers.
struct Outcome {
  Set r;
  int answer;
  bool flag;
  friend bool operator==(const Outcome&, const Outcome&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Outcome& x) {
    return out << x.r << ", answer " << x.answer << ", flag " << x.flag;
  }
};

template <class Function>
Outcome Narrowed(Function function, const Set& a, const Set& b, SubdefInt r) {
  SDErrorScope scope;
  const int answer = function(a, b, r);
  return {r, answer, SDCheckError() != 0};
}

Set AllMod(const Set& a, const Set& b, const SubdefInt& r = kAny) {
  return Narrowed(CalcAllModValue, a, b, r).r;
}

TEST(IntegerModuloTest, Examples) {
  const struct {
    Set a, b, r;
    Outcome after;
  } rows[] = {
      {{7, 7},         {3, 3},   kAny,    {{1, 1}, 1, false}        },
      {{-7, -7},       {3, 3},   kAny,    {{-1, -1}, 1, false}      },
      {{-7, -7},       {-3, -3}, kAny,    {{-1, -1}, 1, false}      },
      {{0, 100},       {10, 10}, kAny,    {{0, 9}, 0, false}        },
      {{-5, 5},        {-2, 2},  kAny,    {{-1, 1}, 0, false}       },
      {{10, 12},       {5, 7},   kAny,    {{0, 5}, 1, false}        },
      {{95, 97},       {10, 50}, kAny,    {{45, 48}, 1, false}      },
      {{11, 11},       {7, 8},   kAny,    {{3, 4}, 1, false}        },
      {{-5, 5},        {0, 0},   kAny,    {{1, -1}, 1, true}        },
      {{0, 0},         {0, 0},   kAny,    {{0, 0}, 0, false}        },
      {{0, 0},         {4, 9},   kAny,    {{0, 0}, 0, false}        },
      {{-3, 20},       {4, 4},   {-9, 9}, {{-3, 3}, 0, false}       },
      {{7, 7},         {3, 3},   {2, 9},  {{2, 1}, 1, true}         },
      {{7, 7},         {3, 3},   {5, 9},  {{5, 2}, 1, true}         },
      {{5, 5},         {4, 6},   {-2, 4}, {{5, 4}, 1, true}         }, // though 5 mod 4 = 1
      {{M, M},         {M, M},   kAny,    {{0, 0}, 1, false}        },
      {{1 - M, 1 - M}, {-M, -M}, kAny,    {{1 - M, 1 - M}, 1, false}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Narrowed(CalcAllModValue, row.a, row.b, row.r), row.after)
        << row.a << " mod " << row.b << " in " << row.r;
  }
}

TEST(IntegerModuloTest, Insertion) {
  SubdefInt hull = SubdefInt::Empty();
  const SubdefInt limits(2, 8);
  const struct {
    long value;
    int reached;
    Set after;
  } rows[] = {
      {4, 0, {4, 4}},
      {9, 2, {4, 9}},
      {3, 2, {3, 9}},
      {2, 3, {2, 9}}
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Insert(hull, row.value, limits), row.reached) << row.value;
    EXPECT_EQ(hull, row.after) << row.value;
  }
}

/// Every remainder of a by b, for small sets.
Hull Remainders(const Set& a, const Set& b) {
  Hull hull;
  for (long x = a.lower; x <= a.upper; ++x) {
    for (long y = b.lower; y <= b.upper; ++y) {
      if (y != 0) hull.Add(static_cast<double>(x % y));
    }
  }
  return hull;
}

/// With a divisor that may be zero there are bounds only. Without, the result lies within the hull
/// of the remainders and reaches its ends, though not those on the near side of zero (unless there
/// is one divisor): these the early stop may lose.
testing::AssertionResult KeepsFarthest(const Set& a, const Set& b) {
  const Set all = Remainders(a, b), got = AllMod(a, b);
  bool good = got == Narrowed(CheckModValue, a, b, kAny).r;
  if (!b.Contains(0)) {
    good = all.mf_Union(got) == all && (all.lower >= 0 || got.lower == all.lower) &&
           (all.upper <= 0 || got.upper == all.upper) && (got == all || !b.IsScalar());
  }
  if (good && AllMod(a, b, SubdefInt(got)) == got) return testing::AssertionSuccess();
  return testing::AssertionFailure() << a << " mod " << b << ": " << got << ", remainders " << all;
}

TEST(IntegerModuloTest, KeepsTheRemaindersFarthestFromZero) {
  for (int low = -24; low <= 24; ++low) {
    for (int high = low; high <= 24; ++high) {
      for (int from = -12; from <= 12; ++from) {
        for (int to = from; to <= 12; ++to) ASSERT_TRUE(KeepsFarthest({low, high}, {from, to}));
      }
    }
  }
  for (int low = 0; low <= 120; low += 7) {
    for (int width : {0, 1, 5, 20}) {
      for (int from = 1; from <= 90; ++from) {
        for (int divisors : {0, 1, 2, 9, 60})
          ASSERT_TRUE(KeepsFarthest({low, low + width}, {from, from + divisors}));
      }
    }
  }
}

// The first two would try a billion divisors if those with the same quotient were not skipped.
TEST(IntegerModuloTest, SkipsDivisors) {
  EXPECT_EQ(AllMod({M, M}, {2, M - 1}), Set(0, M / 2 - 1));
  EXPECT_EQ(AllMod({-M, -M}, {1 - M, -2}), Set(1 - M / 2, 0));
  EXPECT_EQ(AllMod({M - 5, M}, {2, M}), Set(0, M - 1));
  EXPECT_TRUE(KeepsFarthest({1000000007, 1000000010}, {30000, 1000000}));
}

TEST(IntegerModuloTest, PositiveModuloHeedsNoFlagAndLeavesNone) {
  for (const Set& r : {Set(-9, 9), Set(4, 8), Set(-2, -1)}) {
    SubdefInt left = r;
    SDRaiseError();
    CalcPositiveModValue({3, 9}, {3, 7}, left);
    EXPECT_EQ(SDCheckError(), 0) << r;
    EXPECT_TRUE(r == Set(-2, -1) ? left == Set(0, -1) : left == Set(std::max(0L, long{r.lower}), 6))
        << r << left;
  }
}

}  // namespace
