#include "tests/intervals/integer_oracle.h"

namespace {

using oracle::Hull;
using oracle::M;
using oracle::Members;
using Set = const IntegerInterval&;

const SubdefInt kWhole(-M, M);

// The integer b^e.
double Power(double b, double e) {
  return e < 0 && std::fabs(b) != 1 ? std::nan("") : std::pow(b, e);
}

TEST(IntegerPowerTest, IsTheHullOfAllPowersAndFlagsEmptyAndSaturated) {
  SDErrorScope scope;
  for (Set x : oracle::Intervals(7, true)) {
    for (Set n : oracle::Intervals(7, true)) {
      const std::vector<double> number(1, static_cast<double>(n.lower));
      Hull hull;
      bool clamped = false;
      for (double b : Members(x)) {
        for (double e : n.IsScalar() ? number : Members(n)) {  // a number also at ±M
          hull.Add(Power(b, e));
          clamped = clamped || std::fabs(Power(b, e)) > static_cast<double>(M);
        }
      }
      SDClearError();
      ASSERT_EQ(pow(SubdefInt(x), SubdefInt(n)), hull) << x << ' ' << n;
      if (x.lower <= -M || x.upper >= M || n.upper >= M) continue;
      ASSERT_EQ(SDCheckError() != 0, hull.IsEmpty() || clamped) << x << ' ' << n;
    }
  }
}

TEST(IntegerPowerTest, AFiniteEndSaturatesAnInfiniteOneDoesNot) {
  SDErrorScope scope;
  const std::tuple<SubdefInt, SubdefInt, SubdefInt, int> rows[] = {
      {kWhole,         {3, 3},     kWhole,            0},
      {{2, 3},         {2, M},     {4, M},            0},
      {{M, M},         {1, 1},     {M, M},            0},
      {{M, M},         {2, 2},     {M, M},            1},
      {{2, 2},         {M, M},     {M, M},            1},
      {{2, 2},         {M - 1, M}, {M, M},            1},
      {{46340, 46341}, {2, 2},     {2147395600, M},   1},
      {{-1291, -1290}, {3, 3},     {-M, -2146689000}, 1},
  };
  for (const auto& [x, n, power, error] : rows) {
    SDClearError();
    EXPECT_EQ(pow(x, n), power);
    EXPECT_EQ(SDCheckError(), error) << x << ' ' << n;
  }
}

TEST(IntegerPowerTest, BaseAndExponentAreHullsOfTheSolutions) {
  SDErrorScope scope;
  auto results = oracle::Intervals(2, false);
  for (long low : {-27, -8, 3, 16}) {
    for (long high : {-8, 16, 30}) results.emplace_back(low, high);
  }
  for (Set x : oracle::Intervals(3, false)) {
    for (Set n : oracle::Intervals(3, false)) {
      for (Set z : results) {
        Hull bases, exponents;
        for (double b : Members(x)) {
          for (double e : Members(n)) {
            if (oracle::Holds(z, Power(b, e))) bases.Add(b), exponents.Add(e);
          }
        }
        SDClearError();
        ASSERT_EQ(base(z, x, n), bases) << z << ' ' << x << ' ' << n;
        ASSERT_EQ(SDCheckError() != 0, bases.IsEmpty());
        SDClearError();
        ASSERT_EQ(exponent(z, x, n), exponents) << z << ' ' << x << ' ' << n;
        ASSERT_EQ(SDCheckError() != 0, exponents.IsEmpty());
      }
    }
  }
}

// Every perfect power below the limit has its root, its neighbours have none.
TEST(IntegerPowerTest, RootsAreExact) {
  SDErrorScope scope;
  for (int e = 2; e <= 30; ++e) {
    for (long r = 2; std::pow(static_cast<double>(r), e) < static_cast<double>(M); ++r) {
      const long z = static_cast<long>(std::pow(static_cast<double>(r), e));
      ASSERT_EQ(base({-z, z + 1}, kWhole, e), SubdefInt(-r, r)) << z << ' ' << e;
      ASSERT_TRUE(base({z - 1, z - 1}, kWhole, e).IsEmpty()) << z << ' ' << e;
      ASSERT_EQ(base({z, z}, {0, M}, e), SubdefInt(r, r)) << z << ' ' << e;
      ASSERT_EQ(base({z + 1, M}, {1, M}, e), SubdefInt(r + 1, M)) << z << ' ' << e;
      ASSERT_TRUE(exponent({z, z}, r, kWhole).Contains(e)) << z << ' ' << e;
    }
  }
  EXPECT_EQ(exponent({1 << 20, 1 << 30}, 2, kWhole), SubdefInt(20, 30));
  EXPECT_EQ(exponent({-M, -2}, -2, {40, 60}), SubdefInt(41, 59));
}

}  // namespace
