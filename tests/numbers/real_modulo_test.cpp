#include <gtest/gtest.h>

#include "framework/intervals/IntervalControl.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/detail/RealModulo.h"
#include "tests/numbers/print_interval.h"

using namespace zultav::detail;

namespace {

using Set = SubdefReal;

constexpr double kMax = 1e19;

TEST(RealModuloTest, Remainders) {
  struct Row {
    Set x, m, result;
  };
  const Row rows[] = {
      {{7, 7.5},         {2, 2},       {1, 1.5}                                  },
      {{-5, -3},         {2, 2},       {-2, 0}                                   },
      {{0, 0},           {3, 4},       {0, 0}                                    },
      {{-7.5, -7},       {2, 2},       {-1.5, -1}                                },
      {{7, 7.5},         {-2, -2},     {1, 1.5}                                  },
      {{-1, 3},          {-2, 2},      {-1, 2}                                   },
      {{5, 9},           {0, 0},       {0, 0}                                    },
      {{5, kMax},        {3, 4},       {0, 4}                                    },
      {{0.3, 0.3},       {0.1, 0.1},   {0.09999999999999998, 0.09999999999999998}},
      {{-1e-15, -1e-16}, {3, 4},       {-1e-15, -1e-16}                          },
      {{1e12, 1e12},     {1e-3, 1e-3}, {0, 1e-3}                                 },
      {{7, 7},           {0, 2},       {0, 2}                                    },
      {{-7, 9},          {4, 5},       {-5, 5}                                   }
  };
  for (const auto& [x, m, result] : rows) {
    ZULTavIntervalReal z;
    z.CalcModValue(ZULTavIntervalReal(x), ZULTavIntervalReal(m));
    EXPECT_EQ(z.GetSubdef(), result) << x << " mod " << m;
  }
}

TEST(RealModuloTest, BoundsOfTheRemainder) {
  Set r(-5, 5);
  EXPECT_EQ(CheckModValue({5, 6}, {-3, 3}, r), 1);
  EXPECT_EQ(r, Set(0, 3));  // |m| itself stays
  EXPECT_EQ(CalcAllModValue({5, 6}, {-3, 3}, r), 0);
  EXPECT_EQ(CheckModValue({-6, -5}, {2, 3}, r), 1);
  EXPECT_EQ(r, Set(0, 0));
  r = Set(1, 5);
  EXPECT_EQ(CheckModValue({-6, -5}, {2, 3}, r), 1);
  EXPECT_TRUE(SDCheckError());
  SDClearError();
}

TEST(RealModuloTest, Inverses) {
  struct Row {
    Set r, x, m;
    Set first, second;
  };
  const Set nil(kMax, -kMax);
  const Row rows[] = {
      {{1, 1},     {5, 8},   {2, 2},     {5, 7}, {2, 2}},
      {{1, 1},     {7, 7},   {2, 9},     {7, 7}, {2, 6}},
      {{0.5, 0.5}, {1, 1.2}, {0.9, 1.1}, nil,    nil   },
      {{3, 3},     {3, 3},   {5, 9},     {3, 3}, {5, 9}},
      {{-1, -1},   {5, 8},   {2, 2},     nil,    nil   }
  };
  for (const auto& [r, x, m, first, second] : rows) {
    SCOPED_TRACE(testing::Message() << r << " = " << x << " mod " << m);
    const ZULTavIntervalReal result(r);
    ZULTavIntervalReal a(x), b(m);
    result.CalcFirstInverseModValue(a, ZULTavIntervalReal(m));
    result.CalcSecondInverseModValue(ZULTavIntervalReal(x), b);
    EXPECT_EQ(a.GetSubdef(), first);
    EXPECT_EQ(b.GetSubdef(), second);
  }
}

}  // namespace
