#include <climits>
#include <cmath>
#include <numbers>
#include <utility>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/SubdefReal.h"
#include "tests/intervals/integer_oracle.h"

namespace {

TEST(IntervalControlTest, LimitsTakeEffectInTheArithmetic) {
  SDErrorScope scope;
  InitIntervals(100, 1e6, -1, 2, 1e-3);
  EXPECT_EQ(SubdefInt(), SubdefInt(-100, 100));
  EXPECT_EQ(SubdefReal(), SubdefReal(-1e6, 1e6));
  EXPECT_EQ(GetTrigLow(), -std::numbers::pi);
  EXPECT_EQ(GetTrigHigh(), 2 * std::numbers::pi);
  EXPECT_EQ(GetCompPrecision(), 1e-3);
  EXPECT_EQ(GetRelEps(0.5), 1e-14);
  EXPECT_EQ(GetRelEps(-8), 8e-14);
  EXPECT_EQ(IntegerInterval(90, 100).SubIntFromInt({5, 5}), IntegerInterval(85, 100));
  EXPECT_EQ(pow(SubdefInt(2, 2), SubdefInt(6, 7)), SubdefInt(64, 100));
  EXPECT_EQ(SubIntBase::base_mult(20, 20), 100);
  EXPECT_EQ(SDCheckError(), 1);
  { SDErrorScope inner; }
  EXPECT_EQ(SDCheckError(), 0);
  // What is no limit changes nothing.
  const double nan = std::nan(""), inf = HUGE_VAL;
  for (const double bad : {nan, inf, -inf, 0.0, -1e6}) InitIntervals(0, bad, nan, 1, bad);
  InitIntervals(-7, nan, -inf, 1, nan);
  InitIntervals(std::in_range<std::int32_t>(LONG_MAX) ? 0 : LONG_MAX, nan, -1, inf, nan);
  EXPECT_EQ(SubdefInt(), SubdefInt(-100, 100));
  EXPECT_EQ(SubdefReal(), SubdefReal(-1e6, 1e6));
  EXPECT_EQ(GetTrigLow(), -std::numbers::pi);
  EXPECT_EQ(GetTrigHigh(), 2 * std::numbers::pi);
  EXPECT_EQ(GetCompPrecision(), 1e-3);
  InitIntervals(2147483647, 1e19, -1e14 / std::numbers::pi, 1e14 / std::numbers::pi, 1e-6);
  EXPECT_EQ(SubdefInt::sMaxValue, 2147483647);
  InitIntervals(2147483646, 1e19, -1e14 / std::numbers::pi, 1e14 / std::numbers::pi, 1e-6);
}

}  // namespace
