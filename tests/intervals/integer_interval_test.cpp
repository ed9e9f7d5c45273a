#include <random>

#include "tests/intervals/integer_oracle.h"

namespace {

using oracle::Holds;
using oracle::Hull;
using oracle::M;
using oracle::Members;
using Set = const IntegerInterval&;
using Point = double (*)(double, double);

// Where `flagged`, and nowhere else, an empty result raises the flag.
template <class Interval>
void ExpectHulls(Interval interval, Hull (*oracle)(Set, Set, Point), Point point, bool flagged) {
  for (Set x : oracle::Intervals(7, true)) {
    for (Set y : oracle::Intervals(7, true)) {
      const Hull hull = oracle(x, y, point);
      ASSERT_EQ(interval(x, y), hull) << x << ' ' << y;
      ASSERT_EQ(SDCheckError() != 0, flagged && hull.IsEmpty()) << x << ' ' << y;
      SDClearError();
    }
  }
}

Hull Results(Set x, Set y, Point point) {
  Hull hull;
  for (double a : Members(x)) {
    for (double b : Members(y)) hull.Add(point(a, b));
  }
  return hull;
}

// The x for which the point operation with a member of y can lie in z.
Hull Solutions(Set z, Set y, Point point) {
  const auto operands = Members(y);
  auto candidates = Members(IntegerInterval::Whole());
  for (double b : operands) {
    for (double bound : {static_cast<double>(z.lower), static_cast<double>(z.upper)}) {
      candidates.insert(candidates.end(), {std::floor(bound / b), std::ceil(bound / b)});
    }
  }
  Hull hull;
  for (double x : candidates) {
    const auto solves = [&](double b) { return Holds(z, point(x, b)); };
    if (std::any_of(operands.begin(), operands.end(), solves)) hull.Add(x);
  }
  return hull;
}

// The unary operations are added to y, so that all have two operands.
TEST(IntegerIntervalTest, ForwardOperationsAreHulls) {
  SDErrorScope scope;
  ExpectHulls([](Set x, Set y) { return y.IsScalar() ? x.AddNumToInt(y.lower) : x.AddIntToInt(y); },
              Results, [](double a, double b) { return a + b; }, false);
  ExpectHulls([](Set x, Set y) { return x.subNumFromInt(0).SubIntFromInt(y); }, Results,
              [](double a, double b) { return a - b; }, false);
  ExpectHulls([](Set x, Set y) { return x.mf_Neg().AddIntToInt(y); }, Results,
              [](double a, double b) { return b - a; }, false);
  ExpectHulls([](Set x, Set y) { return x.mf_Abs().AddIntToInt(y); }, Results,
              [](double a, double b) { return std::fabs(a) + b; }, false);
  ExpectHulls([](Set x, Set y) { return x.MultIntByInt(y); }, Results,
              [](double a, double b) { return a * b; }, false);
  ExpectHulls([](Set x, Set y) { return x.mf_Min(y); }, Results,
              [](double a, double b) { return std::min(a, b); }, false);
  ExpectHulls([](Set x, Set y) { return x.mf_Max(y); }, Results,
              [](double a, double b) { return std::max(a, b); }, false);
  const auto quotients = [](Set x, Set y, Point point) {  // 0/0 may be anything
    return Holds(x, 0) && Holds(y, 0) ? Results({-M, M}, {1, 1}, point) : Results(x, y, point);
  };
  ExpectHulls([](Set x, Set y) { return x.DivIntByInt(y, 1); }, +quotients,
              [](double a, double b) { return b == 0 ? NAN : std::trunc(a / b); }, true);
}

TEST(IntegerIntervalTest, InverseOperationsAreHullsOfTheirSolutions) {
  SDErrorScope scope;
  ExpectHulls([](Set z, Set y) { return z.DivIntByInt(y, 0); }, Solutions,
              [](double x, double b) { return x * b; }, true);
  ExpectHulls([](Set z, Set y) { return InverseMin(z, y); }, Solutions,
              [](double x, double b) { return std::min(x, b); }, false);
  ExpectHulls([](Set z, Set y) { return InverseMax(z, y); }, Solutions,
              [](double x, double b) { return std::max(x, b); }, false);
  ExpectHulls([](Set z, Set y) { return InverseAbs(z, y); }, Solutions,
              [](double x, double b) { return x == b ? std::fabs(x) : NAN; }, false);
}

// Beyond small numbers a quotient is never lost, and the hull is exact as far as promised.
TEST(IntegerIntervalTest, QuotientsOfRandomIntervalsEncloseAndAreExactUpTo1024) {
  SDErrorScope scope;
  std::mt19937 random(20240611);
  const auto draw = [&](long low, long high) {
    return std::uniform_int_distribution<long>(low, high)(random);
  };
  for (int round = 0; round < 20000; ++round) {
    const long size = round % 2 == 0 ? 1024 : M - 1;
    const long x = draw(-size, size), d = draw(1, 1200);
    const IntegerInterval dividend(x, std::min(size, x + draw(0, draw(0, 40))));
    const IntegerInterval divisor(d, d + draw(0, draw(0, 800)));
    Hull hull;
    for (double b = static_cast<double>(d); Holds(divisor, b); ++b) {
      const double low = std::ceil(static_cast<double>(dividend.lower) / b);
      const double high = std::floor(static_cast<double>(dividend.upper) / b);
      if (low <= high) hull.Add(low), hull.Add(high);
    }
    const IntegerInterval result = dividend.DivIntByInt(divisor, 0);
    ASSERT_EQ(size == 1024 ? hull : result.mf_Union(hull), result) << dividend << ' ' << divisor;
  }
}

}  // namespace
