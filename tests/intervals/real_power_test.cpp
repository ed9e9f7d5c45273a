#include <gtest/gtest.h>

#include <cfenv>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealPower.h"
#include "tests/intervals/mpfr_oracle.h"

namespace {

constexpr double kMax = 1e19;

class RealPowerTest : public testing::Test {
 protected:
  ~RealPowerTest() override {
    SubdefReal::sMaxValue = kMax;
    SDClearError();
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
  }
};

TEST_F(RealPowerTest, IsTheTightestEnclosureAtPoints) {
  for (const double max : {kMax, 0x1p1023}) {
    SubdefReal::sMaxValue = max;
    HardDoubles doubles(6);
    for (int i = 0; i < 10000; ++i) {
      const double x = std::fabs(doubles.Draw(max / 2));
      const double y = doubles.Draw(max / 2);
      if (x == 0) continue;
      ASSERT_EQ(pow(SubdefReal(x, x), y), Tightest([=](mpfr_ptr z, mpfr_rnd_t direction) {
                  mpfr_pow(z, Mpfr(x), Mpfr(y), direction);
                }))
          << std::hexfloat << x << ' ' << y;
      const long n = static_cast<long>(doubles.Below(40)) + 1;
      const SubdefReal root = Tightest([=](mpfr_ptr z, mpfr_rnd_t direction) {
        mpfr_rootn_ui(z, Mpfr(x), static_cast<unsigned long>(n), direction);
      });
      const SubdefReal both = n % 2 ? root : SubdefReal(root.mf_Union(root.mf_Neg()));
      ASSERT_EQ(base(SubdefReal(x, x), SubdefReal(), SubIntBase(n)), both)
          << std::hexfloat << x << ' ' << n;
      ASSERT_EQ(base(SubdefReal(x, x), static_cast<double>(n)), both);
    }
  }
}

TEST_F(RealPowerTest, IsTightOnSets) {
  const SubdefReal line;
  const SubdefReal positive(0, kMax);
  const double nextToOne = 1 + 0x1p-52;
  struct Row {
    SubdefReal found, expected;
  };
  // clang-format off
  const Row rows[] = {
      {pow({3, 3}, 2.0), {9, 9}},
      {pow({-2, 3}, 2.0), {0, 9}},
      {pow({-2, 3}, 3.0), {-8, 27}},
      {pow({-2, 3}, 0.0), {1, 1}},
      {pow({-2, 4}, -1.0), line},
      {pow({-2, 4}, -2.0), {0.0625, kMax}},
      {pow({0, 4}, -2.0), {0.0625, kMax}},
      {pow({-4, -2}, -3.0), {-0.125, -0.015625}},
      {pow({0, 0}, 0.0), {1, 1}},
      {pow({0, 0}, SubdefReal(-1, 2)), {0, 1}},
      {pow({-4, 4}, 0.5), {0, 2}},
      {pow({4, 9}, 1.5), {8, 27}},
      {pow({0.25, 4}, SubdefReal(-1, 2)), {0.0625, 16}},
      {pow({-3, -2}, SubdefReal(1.5, 3.5)), {-27, 9}},
      {pow({1, 2}, positive), {1, kMax}},
      {pow({0.5, 1}, positive), {0, 1}},
      {pow({1, 1}, line), {1, 1}},
      {pow({1, kMax}, -1.0), {0, 1}},
      {pow({10, 10}, 30.0), {kMax, kMax}},
      {pow({2, 2}, SubdefReal(1e-300, 1e-300)), {1, nextToOne}},
      {pow({-3, 3}, SubdefReal(-5, 5), SubdefInt(2, 3)), {-5, 5}},
      {pow({-2, -2}, SubdefReal(-5, 5), SubdefInt(2, 3)), {4, 4}},
      {pow({2, 2}, line, SubdefInt(1, 1000000000)), {2, kMax}},
      {pow({-2, -2}, line, SubdefInt(1, 1000000000)), line},
      {pow({3, 3}, 9.0, SubdefInt(0, 5)), {9, 9}},
      {base({9, 9}, 2.0), {-3, 3}},
      {base({-8, 27}, 3.0), {-2, 3}},
      {base({2, 4}, -0.5), {0.0625, 0.25}},
      {base({1, 2}, 0.0), line},
      {base({4, 4}, SubdefReal(0, 2)), {-2, kMax}},
      {base({4, 4}, SubdefReal(0.5, 0.5)), {16, 16}},
      {base({0, 0}, 2.0), {0, 0}},
      {base({9, 9}, positive, SubdefInt(2, 2)), {3, 3}},
      {base({9, 9}, SubdefReal(-5, -1), SubdefInt(2, 2)), {-3, -3}},
      {base({8, 16}, SubdefReal(0, 100), SubdefInt(3, 4)), {1.681792830507429, 2.5198420997897464}},
      {base({0.25, 0.25}, line, SubdefInt(-2, -1)), {-2, 4}},
      {base({-8, -8}, line, SubdefInt(1, SubdefInt::sMaxValue)), {-8, -1}},
  };
  // clang-format on
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows << std::hexfloat << ": "
                                    << row.found.lower << ' ' << row.found.upper);
    EXPECT_EQ(row.found, row.expected);
  }
  EXPECT_FALSE(SDCheckError());
}

TEST_F(RealPowerTest, FindsExponentsInBoundedTime) {
  const SubdefInt any;
  const long max = SubdefInt::sMaxValue;
  struct Row {
    SubdefReal z, x;
    SubdefInt n, expected;
  };
  const Row rows[] = {
      {{8, 8},        {2, 2},   any,      {3, 3}  },
      {{5, 40},       {2, 2},   {0, 10},  {3, 5}  },
      {{0.1, 0.3},    {2, 2},   any,      {-3, -2}},
      {{-8, -8},      {-2, -2}, any,      {3, 3}  },
      {{-1000, 1000}, {-2, -2}, {0, 100}, {0, 9}  },
      {{9, 9},        {-3, 3},  {1, 50},  {2, 50} },
      {{1, 1},        {5, 6},   any,      {0, 0}  },
      {{0, 0},        {0, 2},   {-5, 5},  {1, 5}  },
      {{1, 1},        {-1, -1}, {-7, 8},  {-6, 8} },
      {{2, kMax},     {2, 2},   any,      {1, max}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    EXPECT_EQ(exponent(row.z, row.x, row.n), row.expected);
  }
  EXPECT_FALSE(SDCheckError());
}

TEST_F(RealPowerTest, FlagsEmptyResults) {
  const SubdefReal one(1, 1);
  const SubdefReal empty(kMax, -kMax);
  const auto flagged = [](bool isEmpty) {
    const bool flag = SDCheckError();
    SDClearError();
    return isEmpty && flag;
  };
  EXPECT_TRUE(flagged(pow(SubdefReal(-2, -1), 0.5).IsEmpty()));
  EXPECT_TRUE(flagged(pow(SubdefReal(0, 0), -1.0).IsEmpty()));
  EXPECT_TRUE(flagged(pow(empty, 1.0).IsEmpty()));
  EXPECT_TRUE(flagged(pow(one, empty).IsEmpty()));
  EXPECT_TRUE(flagged(pow(SubdefReal(2, 3), SubdefReal(5, 6), SubdefInt(3, 9)).IsEmpty()));
  EXPECT_TRUE(flagged(pow(one, one, SubdefInt(3, 2)).IsEmpty()));
  EXPECT_TRUE(flagged(base(SubdefReal(-4, -1), 2.0).IsEmpty()));
  EXPECT_TRUE(flagged(base(SubdefReal(2, 3), 0.0).IsEmpty()));
  EXPECT_TRUE(flagged(base(one, SubdefReal(2, 3), SubdefInt(2, 3)).IsEmpty()));
  EXPECT_TRUE(flagged(exponent(SubdefReal(5, 6), 2.0, SubdefInt(0, 9)).IsEmpty()));
  EXPECT_TRUE(flagged(exponent(SubdefReal(2, 3), one, SubdefInt()).IsEmpty()));
  EXPECT_TRUE(flagged(exponent(empty, one, SubdefInt()).IsEmpty()));
}

}  // namespace
