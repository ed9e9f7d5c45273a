// The rows of the functions against the C library, at random points of random ranges.

#include "framework/engine/Function.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>
#include <string>

namespace zultav::engine {
namespace {

using Number = long double;

/// In the order of Function.
Number (*const kTrueValues[kFunctions])(Number x, Number y) = {
    [](Number x, Number) { return x; },
    [](Number x, Number y) { return x + y; },
    [](Number x, Number y) { return x - y; },
    [](Number x, Number y) { return x * y; },
    [](Number x, Number y) { return y == 0 ? NAN : x / y; },
    [](Number x, Number) { return -x; },
    [](Number x, Number y) { return x == 0 && y < 0 ? NAN : std::pow(x, y); },
    [](Number x, Number y) { return std::fmod(x, y); },
    [](Number x, Number y) { return std::fmin(x, y); },
    [](Number x, Number y) { return std::fmax(x, y); },
    [](Number x, Number) { return std::fabs(x); },
    [](Number x, Number) { return Number{(x > 0) * 1.0L - (x < 0) * 1.0L}; },
    [](Number x, Number) { return std::exp(x); },
    [](Number x, Number) { return x > 0 ? std::log(x) : NAN; },
    [](Number x, Number) { return x * x; },
    [](Number x, Number) { return std::sqrt(x); },
    [](Number x, Number) { return std::sin(x); },
    [](Number x, Number) { return std::cos(x); },
    [](Number x, Number) { return std::tan(x); },
    [](Number x, Number) { return std::round(x); },
    [](Number x, Number) { return std::floor(x); },
    [](Number x, Number) { return std::ceil(x); },
    [](Number x, Number) { return std::sinh(x); },
    [](Number x, Number) { return std::cosh(x); },
    [](Number x, Number) { return std::tanh(x); },
    [](Number x, Number) { return std::asinh(x); },
    [](Number x, Number) { return std::acosh(x); },
    [](Number x, Number) { return std::atanh(x); },
    [](Number x, Number) { return x > 0 ? std::log2(x) : NAN; },
    [](Number x, Number) { return x > 0 ? std::log10(x) : NAN; },
    [](Number x, Number) { return std::exp2(x); },
    [](Number x, Number) { return std::pow(Number{10}, x); },
    [](Number x, Number) { return std::cbrt(x); },
    [](Number x, Number y) { return std::hypot(x, y); },
    [](Number x, Number) { return std::asin(x); },
    [](Number x, Number) { return std::acos(x); },
    [](Number x, Number) { return std::atan(x); },
    [](Number y, Number x) { return x == 0 && y == 0 ? NAN : std::atan2(y + 0, x); },
    [](Number x, Number y) { return y == 0 ? NAN : std::trunc(x / y); },
    [](Number x, Number y) {
      const bool areWhole =
          x == std::rint(x) && y == std::rint(y) && std::fabs(x) + std::fabs(y) < 9;
      return areWhole ? Number(std::gcd(std::lrint(x), std::lrint(y))) : NAN;
    },
};

class Random {
 public:
  /// Small whole numbers and halves, decimals, and now and then what is far away.
  double Double() {
    const double whole = static_cast<double>(mGenerator() % 13) - 6;
    switch (mGenerator() % 8) {
      case 0:
        return std::ldexp(whole, static_cast<int>(mGenerator() % 400) - 200);
      case 1:
      case 2:
        return whole;
      case 3:
        return whole / 2;
      default:
        return whole * 0.37 + static_cast<double>(mGenerator() % 1000) * 1e-4;
    }
  }
  RealRange Around(double x, double y) {
    RealRange range = {std::fmin(x, y), std::fmax(x, y)};
    if (mGenerator() % 16 == 0) range.upper = HUGE_VAL;
    if (mGenerator() % 16 == 0) range.lower = -HUGE_VAL;
    return mGenerator() % 4 == 0 ? RealRange::Point(x) : range;
  }

 private:
  std::mt19937_64 mGenerator{7};
};

bool Encloses(const RealRange& range, Number value, Number magnitude) {
  const Number slack = 1e-17L * magnitude;
  return range.lower <= value + slack && value - slack <= range.upper;
}

TEST(FunctionTest, LosesNoRealValueArgumentOrSlope) {
  Random random;
  for (int i = 0; i < kFunctions; ++i) {
    const FunctionRow& row = kFunctionRows[i];
    int slopes = 0, values = 0;
    for (int trial = 0; trial < 4000; ++trial) {
      const double px = random.Double(), cx = random.Double();
      const double py = row.operands > 1 ? random.Double() : px;
      const double cy = row.operands > 1 ? random.Double() : cx;
      const RealRange x = random.Around(px, cx), y = random.Around(py, cy);
      const Number value = kTrueValues[i](px, py);
      if (!std::isfinite(value) || std::fabs(value) > 1e300L) continue;
      SCOPED_TRACE(std::string(row.name) + " of " + std::to_string(px) + ", " + std::to_string(py));
      ++values;
      const RealRange z = row.evaluate(x, y);
      ASSERT_TRUE(Encloses(z, value, std::fabs(value)));
      ASSERT_TRUE(!row.isEven || (row.evaluate(-x, y) == z && row.evaluate(x, -y) == z));
      const double nearest = static_cast<double>(value);
      const RealRange near = {std::nextafter(nearest, -HUGE_VAL),
                              std::nextafter(nearest, HUGE_VAL)};
      RealRange fromX = x, fromY = y;
      ASSERT_TRUE(row.project(near, fromX, fromY));
      ASSERT_TRUE(fromX.Contains(px));
      ASSERT_TRUE(row.operands == 1 || fromY.Contains(py));

      const RealRange xc = RealRange::Point(cx), yc = RealRange::Point(cy);
      const RealRange zc = row.evaluate(xc, yc);
      const Number center = kTrueValues[i](cx, cy);
      Slopes slope;
      if (zc.IsEmpty() || !zc.IsBounded() || z.IsEmpty() || !std::isfinite(center) ||
          !row.slopes({x, y, z, xc, yc, zc, y == yc}, slope))
        continue;
      ++slopes;
      RealRange difference = slope.first * (RealRange::Point(px) - xc);
      if (row.operands > 1) difference = difference + slope.second * (RealRange::Point(py) - yc);
      ASSERT_TRUE(Encloses(difference, value - center, std::fabs(value) + std::fabs(center)));
    }
    EXPECT_GT(values, 100) << row.name;
    EXPECT_EQ(slopes > 50, i != static_cast<int>(Function::kGcd)) << row.name;
  }
}

}  // namespace
}  // namespace zultav::engine
