#include <climits>

#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/SubdefReal.h"
#include "tests/intervals/integer_oracle.h"

namespace {

using oracle::M;

TEST(SubdefIntTest, NarrowingAnswersChangesExactlyAndRaisesTheFlagWhenEmpty) {
  SDErrorScope scope;
  const std::tuple<SubdefInt, SubdefInt, int, int> rows[] = {
      {{0, M},   {0, 9},  0, 0},
      {{-5, 8},  {0, 8},  1, 0},
      {{10, 12}, {10, 9}, 1, 1}
  };
  for (const auto& [other, result, changed, error] : rows) {
    SubdefInt set(0, 9);
    EXPECT_EQ(set.SDIntersect(other), changed);
    EXPECT_EQ(set, result);
    EXPECT_EQ(SDCheckError(), error);
    SDClearError();
  }
}

TEST(SubdefIntTest, HoldsTheIntegersInsideARealInterval) {
  SDErrorScope scope;
  const std::pair<SubdefReal, SubdefInt> rows[] = {
      {{-2.5, 3.5},           {-2, 3}},
      {{2, 2},                {2, 2} },
      {{0.1, 0.9},            {M, -M}},
      {{5e12, 4e12},          {M, -M}},
      {{NAN, 4},              {M, -M}},
      {{1e12, 1e13},          {M, M} },
      {{-1e19, 7.9},          {-M, 7}},
      {{-INFINITY, INFINITY}, {-M, M}},
  };
  for (const auto& [reals, integers] : rows) {
    EXPECT_EQ(SubdefInt(reals), integers) << reals.lower;
    EXPECT_EQ(SDCheckError(), 0) << reals.lower;
    SubdefInt narrowed;
    EXPECT_EQ(narrowed.SDIntersect(reals), integers == SubdefInt(-M, M) ? 0 : 1) << reals.lower;
    EXPECT_EQ(SDCheckError() != 0, integers.IsEmpty()) << reals.lower;
    SDClearError();
  }
}

TEST(SubIntBaseTest, CheckedArithmeticClampsAndRaisesTheFlag) {
  SDErrorScope scope;
  using B = SubIntBase;
  const std::tuple<long (*)(long, long), long, long, long, int> rows[] = {
      {B::base_plus,  M,        -1,       M - 1,       0},
      {B::base_plus,  LONG_MAX, LONG_MAX, M,           1},
      {B::base_minus, -M,       1,        -M,          1},
      {B::base_minus, LONG_MIN, LONG_MAX, -M,          1},
      {B::base_mult,  46340,    -46340,   -2147395600, 0},
      {B::base_mult,  LONG_MIN, LONG_MIN, M,           1},
      {B::base_div,   -7,       2,        -3,          0},
      {B::base_div,   7,        0,        0,           1},
      {B::base_div,   LONG_MIN, -1,       M,           1},
  };
  for (const auto& [operation, x, y, result, error] : rows) {
    EXPECT_EQ(operation(x, y), result) << x << ' ' << y;
    EXPECT_EQ(SDCheckError(), error) << x << ' ' << y;
    SDClearError();
  }
}

TEST(SubIntBaseTest, StoresSaturateAndTruncate) {
  const std::pair<double, double> rows[] = {
      {2.9,          2         },
      {-2.9,         -2        },
      {0x1p31 - 0.5, 0x1p31 - 1},
      {-1e300,       -0x1p31   },
      {NAN,          0x1p31 - 1}
  };
  SubIntBase bound;
  for (const auto& [value, stored] : rows) {
    EXPECT_EQ(static_cast<double>(bound = value), stored) << value;
  }
  EXPECT_EQ(bound = LONG_MAX, 2147483647L);
  EXPECT_EQ(bound = LONG_MIN, -2147483647L - 1);
}

}  // namespace
