// The functions at random points of random boxes, by the propagators that embedders' networks run.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <string>

#include "framework/intervals/RealRange.h"
#include "framework/solver/ZULTaVoLocalDomains.h"
#include "framework/solver/ZULTaVoRelation.h"
#include "relations/Relations.h"
#include "tests/search/search_world.h"

namespace zultav::relations {
namespace {

using Number = long double;
using Outcome = ZULTaVoPropagator::Outcome;

/// In the order of DescribeFunctions; NaN where there is no value.
struct Truth {
  const char* name;
  Number (*value)(Number x, Number y);
};
const Truth kTruths[] = {
    {"sinh",   [](Number x, Number) { return std::sinh(x); }                                    },
    {"cosh",   [](Number x, Number) { return std::cosh(x); }                                    },
    {"tanh",   [](Number x, Number) { return std::tanh(x); }                                    },
    {"asinh",  [](Number x, Number) { return std::asinh(x); }                                   },
    {"acosh",  [](Number x, Number) { return std::acosh(x); }                                   },
    {"atanh",  [](Number x, Number) { return std::atanh(x); }                                   },
    {"log2",   [](Number x, Number) { return x > 0 ? std::log2(x) : NAN; }                      },
    {"log10",  [](Number x, Number) { return x > 0 ? std::log10(x) : NAN; }                     },
    {"exp2",   [](Number x, Number) { return std::exp2(x); }                                    },
    {"cbrt",   [](Number x, Number) { return std::cbrt(x); }                                    },
    {"arcsin", [](Number x, Number) { return std::asin(x); }                                    },
    {"arccos", [](Number x, Number) { return std::acos(x); }                                    },
    {"arctan", [](Number x, Number) { return std::atan(x); }                                    },
    {"atan2",  [](Number y, Number x) { return x == 0 && y == 0 ? NAN : std::atan2(y + 0, x); } },
    {"hypot",  [](Number x, Number y) { return std::hypot(x, y); }                              },
    {"div",    [](Number x, Number y) { return y == 0 ? NAN : std::trunc(x / y); }              },
    {"gcd",    [](Number x, Number y) { return Number(std::gcd(std::lrint(x), std::lrint(y))); }},
    {"pow",
     [](Number x,           Number n) {
       const Number power = x == 0 && n < 0 ? NAN : std::pow(x, n);
       return power == std::rint(power) ? power : NAN;
     }                                                                         },
};

class Values {
 public:
  Values(std::uint32_t count, bool isReal) : mDomains(count, 0), mIsReal(isReal) {}

  ZULTaVoLocalDomains& GetDomains() { return mDomains; }
  void Set(std::uint32_t i, double lower, double upper) {
    if (mIsReal)
      mDomains.SetReals(i, lower, upper);
    else
      mDomains.SetIntegers(i, std::lrint(lower), std::lrint(upper));
  }
  bool Contains(std::uint32_t i, Number value) const {
    if (!mIsReal) return mDomains.Contains(i, std::lrint(value));
    const Number slack = 1e-17L * std::fabs(value);
    return static_cast<Number>(mDomains.GetRealLower(i)) <= value + slack &&
           value - slack <= static_cast<Number>(mDomains.GetRealUpper(i));
  }

 private:
  ZULTaVoLocalDomains mDomains;
  bool mIsReal;
};

TEST(FunctionsTest, NarrowWithoutLosingASolution) {
  const std::vector<Definition> all = DescribeFunctions();
  ASSERT_EQ(all.size(), std::size(kTruths));
  std::mt19937_64 random(5);
  const auto draw = [&] { return (static_cast<double>(random() % 121) - 60) / 8; };
  for (std::size_t row = 0; row < all.size(); ++row) {
    ASSERT_STREQ(all[row].name, kTruths[row].name);
    const bool isReal = all[row].result->element == Element::kReal;
    const auto count = static_cast<std::uint32_t>(all[row].parameters.size());
    const auto propagator = all[row].make({});
    int tried = 0;
    for (int i = 0; i < 2000; ++i) {
      double at[2], other[2];
      for (double* numbers : {at, other})
        for (int k = 0; k < 2; ++k) numbers[k] = isReal ? draw() : std::rint(draw());
      const Number value = kTruths[row].value(at[0], at[count - 1]);
      if (!std::isfinite(value)) continue;
      ++tried;
      SCOPED_TRACE(std::string(all[row].name) + " of " + std::to_string(at[0]) + ", " +
                   std::to_string(at[1]));
      Values values(count + 1, isReal);
      const auto nearest = static_cast<double>(value);
      values.Set(0, isReal ? std::nextafter(nearest, -HUGE_VAL) : nearest,
                 isReal ? std::nextafter(nearest, HUGE_VAL) : nearest + (random() % 2 != 0));
      for (std::uint32_t k = 0; k < count; ++k)
        values.Set(k + 1, std::min(at[k], other[k]), std::max(at[k], other[k]));
      ASSERT_NE(propagator->Propagate(values.GetDomains()), Outcome::kFailed);
      ASSERT_TRUE(values.Contains(0, value));
      for (std::uint32_t k = 0; k < count; ++k) ASSERT_TRUE(values.Contains(k + 1, at[k])) << k;
      // Known operands have one value, and no other.
      for (std::uint32_t k = 0; k < count; ++k) values.Set(k + 1, at[k], at[k]);
      values.Set(0, nearest - 1e6, nearest + 1e6);
      ASSERT_NE(propagator->Propagate(values.GetDomains()), Outcome::kFailed);
      ASSERT_TRUE(values.Contains(0, value));
      ASSERT_FALSE(values.Contains(0, value * (1 + 1e-14L) + (isReal ? 1e-300L : 1)));
      values.Set(0, nearest + 1, nearest + 2);
      ASSERT_EQ(propagator->Propagate(values.GetDomains()), Outcome::kFailed);
    }
    EXPECT_GT(tried, 100) << all[row].name;
  }
}

/// The solutions of z = relation(x, y) among the values that `text` declares.
class Search {
 public:
  Search(const std::string& text, Definition definition, std::vector<double> points = {})
      : mModel(text), mDescriptor(std::move(definition)) {
    const Definition& type = mDescriptor.GetDefinition();
    const auto values = static_cast<std::uint32_t>(mModel.declared.size());
    const bool isReal = type.result->element == Element::kReal;
    std::vector<ZULTaVoRelation::Part> parts(values, {.isReal = isReal});
    if (!points.empty())
      parts.push_back({.rows = static_cast<std::uint32_t>(points.size() / 4),
                       .columns = 2,
                       .isKnown = true,
                       .isReal = true,
                       .reals = std::make_shared<const std::vector<double>>(std::move(points))});
    const ZULTaVoRelation relation(&mDescriptor, std::move(parts), false);
    EXPECT_EQ(relation.Check(), "");
    EXPECT_EQ(
        mModel.model->Network().AddRelation(
            relation,
            std::vector<ZULTaVoObject*>(mModel.declared.begin(), mModel.declared.end()).data(),
            values),
        1);
  }

  /// The middles of the values, each solution proven.
  std::vector<std::vector<double>> Run() {
    ZULTavSearch::Options options;
    options.limits.solutions = ZULTavSearch::kUnlimited;
    std::vector<std::vector<double>> found;
    ZULTavSearch search(mModel.model->Network(), mModel.declared, options);
    const auto outcome = search.Run([&](const ZULTavSolution& solution) {
      EXPECT_TRUE(solution.IsProven());
      found.emplace_back();
      for (std::size_t i = 0; i < solution.GetSize(); ++i) {
        const ZULTaVoAny& value = solution.GetValue(i);
        const auto* real = ZULTaVoCast<ZULTaVoReal>(&value);
        found.back().push_back(real == nullptr
                                   ? ValueOf(value)
                                   : std::midpoint(real->GetLowerBound(), real->GetUpperBound()));
      }
      return true;
    });
    EXPECT_EQ(outcome, ZULTavSearch::Outcome::kExhausted);
    return found;
  }

 private:
  TextModel mModel;
  ZULTaVoRelationDescriptor mDescriptor;
};

TEST(FunctionsTest, AreSolvedAndProvenBySearches) {
  const std::vector<Definition> all = DescribeFunctions();
  for (std::size_t row = 0; row < all.size(); ++row) {
    SCOPED_TRACE(all[row].name);
    const auto truth = kTruths[row].value;
    const bool isBinary = all[row].parameters.size() == 2;
    if (all[row].result->element == Element::kInteger) {
      const auto found = Search("z, x, y : int = [-9, 9];", all[row]).Run();
      std::size_t expected = 0;
      for (int x = -9; x <= 9; ++x)
        for (int y = -9; y <= 9; ++y) expected += std::fabs(truth(x, y)) <= 9;
      EXPECT_EQ(found.size(), expected);
      for (const auto& solution : found) EXPECT_EQ(solution[0], truth(solution[1], solution[2]));
      continue;
    }
    for (const double z : {-0.7, 0.6, 1.3}) {
      const std::string given = " : real = [-9.01, 9]; z = " + std::to_string(z) + ";";
      const auto found =
          Search(isBinary ? "z, x, y" + given + " y = 0.5;" : "z, x" + given, all[row]).Run();
      std::size_t expected = 0;
      Number before = NAN;
      for (double x = -9.01; x < 9; x += 0.001) {
        const Number difference = truth(x, 0.5) - z;
        expected += before * difference < 0;
        before = difference;
      }
      EXPECT_EQ(found.size(), expected) << z;
      for (const auto& solution : found)
        EXPECT_NEAR(static_cast<double>(truth(solution[1], 0.5)), z, 1e-5);
    }
  }
}

TEST(PiecewiseTest, IsExactAtBreakpointsAndHasNoValueElsewhere) {
  const double numbers[] = {-3, -3, 1, 1, -1, -1, 2, 2, 2, 2, 2, 2, 5, 5, -4, -4};
  Argument points;
  points.rows = 4;
  points.columns = 2;
  points.reals = numbers;
  const std::vector<Argument> arguments = {{}, {}, points};
  const Definition piecewise = DescribePiecewise();
  EXPECT_EQ(piecewise.check(arguments), "");
  const auto propagator = piecewise.make(arguments);
  struct Case {
    RealRange y, x, yLeft, xLeft;  // what is left; empty where there is no solution
  };
  const RealRange all, none = RealRange::Empty();
  const Case kCases[] = {
      {all,        all,        {-4, 2},    {-3, 5}    },
      {all,        {-1, -1},   {2, 2},     {-1, -1}   },
      {all,        {5, 9},     {-4, -4},   {5, 5}     },
      {all,        {-2, 0},    {1.5, 2},   {-2, 0}    },
      {{1.5, 1.5}, all,        {1.5, 1.5}, {-2, 2.25} },
      {{-1, 1},    all,        {-1, 1},    {-3, 3.5}  },
      {{-9, -1},   {-3, 4.75}, {-3.5, -1}, {3.5, 4.75}},
      {all,        {5.5, 9},   none,       none       },
      {{2.5, 3},   all,        none,       none       },
  };
  for (const auto& [y, x, yLeft, xLeft] : kCases) {
    SCOPED_TRACE(testing::Message()
                 << y.lower << ' ' << y.upper << ' ' << x.lower << ' ' << x.upper);
    ZULTaVoLocalDomains values(2, 0);
    values.SetReals(0, y.lower, y.upper);
    values.SetReals(1, x.lower, x.upper);
    const Outcome outcome = propagator->Propagate(values);
    ASSERT_EQ(outcome == Outcome::kFailed, yLeft.IsEmpty());
    if (yLeft.IsEmpty()) continue;
    EXPECT_EQ(RealRange(values.GetRealLower(0), values.GetRealUpper(0)), yLeft);
    EXPECT_EQ(RealRange(values.GetRealLower(1), values.GetRealUpper(1)), xLeft);
  }
  const std::vector<double> pairs(std::begin(numbers), std::end(numbers));
  auto found = Search("y, x : real; y = 1.5;", piecewise, pairs).Run();
  std::ranges::sort(found);
  ASSERT_EQ(found.size(), 2u);
  EXPECT_NEAR(found[0][1], -2, 1e-6);
  EXPECT_NEAR(found[1][1], 2.25, 1e-6);
  EXPECT_EQ(Search("y, x : real; y = 2.5;", piecewise, pairs).Run().size(), 0u);
}

}  // namespace
}  // namespace zultav::relations
