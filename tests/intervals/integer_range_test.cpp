#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <random>

#include "framework/intervals/IntegerRange.h"

namespace {

using namespace zultav;
using Range = const IntegerRange&;
using Big = boost::multiprecision::cpp_int;

constexpr std::int64_t kMin = IntegerRange::kMin, kMax = IntegerRange::kMax;

bool Holds(Range x, const Big& v) {
  return !x.IsEmpty() && (x.lower == kMin || x.lower <= v) && (x.upper == kMax || v <= x.upper);
}

bool IsSmall(Range x) { return x.lower > -kMax && x.upper < kMax && Big(x.upper) - x.lower < 17; }

/// All members of a small range; of another those around its bounds and zero, and of an endless
/// side members far beyond 64 bits, even and odd.
std::vector<Big> Members(Range x) {
  std::vector<Big> all;
  if (IsSmall(x)) {  // ++v would lose a borrow between limbs of 32 bits
    for (Big v = x.lower; v <= x.upper; v += 1) all.push_back(v);
    return all;
  }
  for (const Big& near : {-(Big(1) << 70), Big(x.lower), Big(0), Big(x.upper), Big(1) << 70})
    for (Big v = near - 2; v <= near + 2; v += 1)
      if (Holds(x, v)) all.push_back(v);
  return all;
}

/// The nearest bound; -kMax may have been pushed to the end, too.
std::int64_t Pushed(const Big& v) {
  return v >= kMax ? kMax : v <= -kMax ? kMin : static_cast<std::int64_t>(v);
}

IntegerRange With(const Big& v, Range hull) { return Hull({Pushed(v), Pushed(v)}, hull); }

// An operation on integers: its results, its projections, and whether they are hulls.
struct Operation {
  const char* name;
  bool (*result)(const Big& x, const Big& y, Big& z);  ///< false where there is none
  IntegerRange (*results)(Range x, Range y);
  IntegerRange (*first)(Range z, Range x, Range y);
  IntegerRange (*second)(Range z, Range x, Range y);
  bool (*isHull)(Range x, Range y);
};

bool Always(Range, Range) { return true; }

class IntegerRangeTest : public testing::TestWithParam<Operation> {
 protected:
  std::int64_t Bound() {
    const auto small = static_cast<std::int64_t>(mRandom() % 17) - 8;
    const std::uint64_t power = std::uint64_t{1} << (mRandom() % 63);
    if (mRandom() % 3 != 0) return small;
    if (mRandom() % 2 != 0) return mRandom() % 2 != 0 ? kMin : kMax;
    const auto value = static_cast<std::int64_t>(mRandom() % 2 != 0 ? power : mRandom() % power);
    return (mRandom() % 2 != 0 ? value : -(value + 1)) / 16 * 16 + small / 4;
  }
  IntegerRange Next() {
    const std::int64_t low = Bound(), high = mRandom() % 4 == 0 ? low : Bound();
    return mRandom() % 50 == 0 ? IntegerRange(low, high)
                               : IntegerRange(std::min(low, high), std::max(low, high));
  }
  std::mt19937_64 mRandom{20261123};
};

std::string Text(Range x) {
  return '[' + std::to_string(x.lower) + ", " + std::to_string(x.upper) + "] ";
}

TEST_P(IntegerRangeTest, LosesNothingAndGivesHulls) {
  const Operation& op = GetParam();
  for (int i = 0; i < 20000; ++i) {
    const IntegerRange x = Next(), z = Next();
    const IntegerRange y = op.second != nullptr ? Next() : IntegerRange::Only(0);
    IntegerRange results = IntegerRange::Empty(), first = results, second = results;
    Big result;
    for (const Big& a : Members(x)) {
      for (const Big& b : Members(y)) {
        if (!op.result(a, b, result)) continue;
        results = With(result, results);
        if (!Holds(z, result)) continue;
        first = With(a, first);
        second = With(b, second);
      }
    }
    const auto check = [&](Range found, Range members, bool isHull) {
      const IntegerRange bounds = found.IsEmpty()
                                      ? IntegerRange::Empty()
                                      : IntegerRange(Pushed(found.lower), Pushed(found.upper));
      EXPECT_EQ(Text(bounds), Text(isHull ? members : Hull(members, bounds)))
          << op.name << ' ' << Text(x) << Text(y) << Text(z);
    };
    const bool isHull = op.isHull(x, y), isComplete = isHull && IsSmall(x) && IsSmall(y);
    check(op.results(x, y), results, isHull);
    check(op.first(z, x, y), first, isComplete);
    if (op.second != nullptr) check(op.second(z, x, y), second, isComplete);
    ASSERT_FALSE(HasFailure()) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Operations, IntegerRangeTest,
    testing::Values(
        Operation{"Sum", [](const Big& x, const Big& y, Big& z) { return z = x + y, true; },
                  [](Range x, Range y) { return x + y; },
                  [](Range z, Range x, Range y) { return Intersection(x, z - y); },
                  [](Range z, Range x, Range y) { return Intersection(y, z - x); }, Always},
        Operation{"Product", [](const Big& x, const Big& y, Big& z) { return z = x * y, true; },
                  [](Range x, Range y) { return x * y; },
                  [](Range z, Range x, Range y) { return ExactQuotients(x, z, y); },
                  [](Range z, Range x, Range y) { return ExactQuotients(y, z, x); }, Always},
        Operation{"Power",
                  [](const Big& x, const Big& y, Big& z) {
                    // A large power is as far beyond 64 bits as a larger one of the same parity.
                    const Big e = y < 0 || y > 64 ? Big(64 + (y % 2 != 0)) : y;
                    return z = pow(x, static_cast<unsigned>(e)), y >= 0 || abs(x) == 1;
                  },
                  Power, PowerBases, PowerExponents, Always},
        Operation{"Remainder",
                  [](const Big& x, const Big& y, Big& z) { return y != 0 && (z = x % y, true); },
                  Remainder, RemainderDividends, RemainderDivisors,
                  [](Range x, Range y) { return IsSmall(x) && y.IsScalar(); }},
        Operation{"Div",
                  [](const Big& x, const Big& y, Big& z) { return y != 0 && (z = x / y, true); },
                  Div, DivDividends, DivDivisors,
                  [](Range x, Range y) { return IsSmall(x) && y.IsScalar(); }},
        Operation{"Gcd", [](const Big& x, const Big& y, Big& z) { return z = gcd(x, y), true; },
                  Gcd, GcdArguments,
                  [](Range z, Range x, Range y) { return GcdArguments(z, y, x); },
                  [](Range x, Range y) { return x.IsScalar() && y.IsScalar(); }},
        Operation{"Minimum",
                  [](const Big& x, const Big& y, Big& z) { return z = std::min(x, y), true; }, Min,
                  MinArguments, [](Range z, Range x, Range y) { return MinArguments(z, y, x); },
                  Always},
        Operation{"Maximum",
                  [](const Big& x, const Big& y, Big& z) { return z = std::max(x, y), true; }, Max,
                  MaxArguments, [](Range z, Range x, Range y) { return MaxArguments(z, y, x); },
                  Always},
        Operation{"Absolute", [](const Big& x, const Big&, Big& z) { return z = abs(x), true; },
                  [](Range x, Range) { return Abs(x); },
                  [](Range z, Range x, Range) { return AbsArguments(z, x); }, nullptr, Always},
        Operation{"Sign", [](const Big& x, const Big&, Big& z) { return z = x.sign(), true; },
                  [](Range x, Range) { return Sign(x); },
                  [](Range z, Range x, Range) { return SignArguments(z, x); }, nullptr, Always}),
    [](const auto& row) { return std::string(row.param.name); });

// Every perfect power has its roots, its neighbours have none.
TEST(IntegerRangeRootTest, IsExact) {
  std::mt19937_64 random(7);
  const IntegerRange all, positive(1, kMax);
  for (std::int64_t e = 2; e < 63; ++e) {
    const auto largest = static_cast<std::int64_t>(std::pow(0x1p63 - 1024, 1.0 / double(e)));
    for (int i = 0; i < 200; ++i) {
      const auto r = 2 + static_cast<std::int64_t>(random() % std::uint64_t(largest - 1)) % largest;
      const Big power = pow(Big(r), static_cast<unsigned>(e));
      if (power >= kMax) continue;
      const auto z = static_cast<std::int64_t>(power);
      const IntegerRange n = IntegerRange::Only(e);
      ASSERT_EQ(PowerBases({-z, z + 1}, all, n), IntegerRange(-r, r)) << z << ' ' << e;
      ASSERT_EQ(PowerBases({z, z}, positive, n), IntegerRange(r, r)) << z << ' ' << e;
      ASSERT_EQ(PowerBases({z + 1, kMax}, positive, n), IntegerRange(r + 1, kMax)) << z << ' ' << e;
      ASSERT_TRUE(PowerBases({z - 1, z - 1}, all, n).IsEmpty()) << z << ' ' << e;
    }
  }
}

TEST(IntegerRangeConversionTest, TurnsIntoRealsOutwardAndBackInward) {
  const double infinity = HUGE_VAL;
  const std::tuple<double, double, IntegerRange> inward[] = {
      {-infinity,      infinity,      {}                        },
      {-2.5,           3.5,           {-2, 3}                   },
      {0.2,            0.8,           {1, 0}                    },
      {0x1p63,         0x1p70,        {kMax, kMax}              },
      {-0x1p70,        -0x1p64,       {kMin, kMin}              },
      {-0x1p63 + 1024, 0x1p63 - 1024, {kMin + 1024, kMax - 1023}},
      {0,              NAN,           IntegerRange::Empty()     },
  };
  for (const auto& [lower, upper, integers] : inward)
    EXPECT_EQ(IntegersWithin(lower, upper), integers) << lower << ' ' << upper;
  const std::tuple<IntegerRange, double, double> outward[] = {
      {{},                                   -infinity,     infinity  },
      {{-3, 3},                              -3,            3         },
      {{kMax, kMax},                         0x1p63 - 1024, infinity  },
      {{kMin, kMin},                         -infinity,     -0x1p63   },
      {{-kMax, kMax - 1},                    -0x1p63,       0x1p63    },
      {{(1LL << 53) + 1, (1LL << 53) + 1},   0x1p53,        0x1p53 + 2},
      {{-(1LL << 53) - 1, -(1LL << 53) - 1}, -0x1p53 - 2,   -0x1p53   },
  };
  for (const auto& [integers, lower, upper] : outward) {
    EXPECT_EQ(LowerAsDouble(integers), lower) << integers.lower;
    EXPECT_EQ(UpperAsDouble(integers), upper) << integers.upper;
  }
}

}  // namespace
