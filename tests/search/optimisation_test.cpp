#include <algorithm>
#include <functional>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "tests/search/search_world.h"

namespace {

using Outcome = ZULTavSearch::Outcome;

struct Optimised {
  Outcome outcome = Outcome::kExhausted;
  std::vector<double> objectives;  // upper ends, or lower ones of a maximisation
  std::uint64_t nodes = 0;
  ZULTavObserved bounds;
  std::vector<ZULTavObserved> allBounds;  // after each piece
  bool isCertain = false;
};

/// Optimises the left side of the last statement, in pieces of so many nodes, one more each.
Optimised Optimise(const std::string& text, ZULTavSearch::Options options, bool maximize,
                   std::uint64_t nodes = ZULTavSearch::kUnlimited) {
  TextModel model(text);
  options.objective.emplace();
  options.objective->isMaximized = maximize;
  options.limits.nodes = nodes;
  options.resumable = nodes != ZULTavSearch::kUnlimited;
  const auto& statement = model.model->Statements().back();
  Optimised found;
  std::string state;
  do {
    ZULTavSearch search(model.model->Network(), model.declared, options,
                        {model.model->Expressions()[statement.left].object});
    if (!state.empty()) {
      std::istringstream bytes(state);
      ZULipstream in(bytes);
      EXPECT_TRUE(search.ReadState(in)) << in.Reason();
    }
    found.outcome = search.Run([&](const ZULTavSolution& solution) {
      const ZULTavObserved& objective = solution.GetObserved().front();
      if (objective.kind == ZULTavObserved::Kind::kReal)
        found.objectives.push_back(maximize ? objective.reals.lower : objective.reals.upper);
      else
        found.objectives.push_back(static_cast<double>(objective.integers.lower));
      EXPECT_TRUE(solution.IsProven()) << text;
      return true;
    });
    found.bounds = search.GetObjectiveBounds();
    found.isCertain = search.IsOptimumCertain();
    std::ostringstream bytes;
    ZULopstream out(bytes);
    search.WriteState(out);
    state = bytes.str();
    found.nodes += search.GetStatistics().nodes;
    ++options.limits.nodes;
    found.allBounds.push_back(found.bounds);
  } while (found.outcome == Outcome::kNodeLimit);
  return found;
}

ZULTavSearch::Options Unlimited() {
  ZULTavSearch::Options options;
  options.limits.solutions = ZULTavSearch::kUnlimited;
  return options;
}

TEST(OptimisationTest, EnclosesOptimaOfReals) {
  const struct {
    const char* text;
    bool maximize;
    double optimum;
  } rows[] = {
      {"x : real = [-10, 10]; (x - 3)^2 + 1 >= -1;",                           false, 1                 },
      {"x : real = [-10, 10]; x >= -100;",                                     false, -10               },
      {"x, y : real = [0, 10]; x*y = 4; x + y < 100;",                         false, 4                 },
      {"x, y : real = [-2, 2]; x^2 + y^2 <= 1; x + y < 100;",                  true,  1.4142135623730951},
      {"x : real = [0, 6]; sin(x) + x/10 < 9;",                                false, -0.5337652812     },
      {"x : int = [-5, 5]; y : real = [-9, 9]; y = x/2.0 - 0.25; y^2 < 1000;", false, 0.0625            },
  };
  for (const auto& row : rows) {
    ZULTavSearch::Options options = Unlimited();
    options.limits.seconds = 20;
    const Optimised found = Optimise(row.text, options, row.maximize);
    EXPECT_EQ(found.outcome, Outcome::kExhausted) << row.text;
    EXPECT_TRUE(found.isCertain) << row.text;
    EXPECT_EQ(found.objectives, Optimise(row.text, options, row.maximize, 1).objectives)
        << row.text;
    const auto [lower, upper] = found.bounds.reals;
    EXPECT_LE(lower, row.optimum + 1e-8) << row.text;
    EXPECT_GE(upper, row.optimum - 1e-8) << row.text;
    EXPECT_LE(upper - lower, 1.1e-6 * std::max(1.0, std::abs(row.optimum))) << row.text;
  }
}

/// A random model of three integers, its objective at the end, and what is true of it.
struct RandomProblem {
  std::string text;
  std::optional<long> optimum;
  std::size_t optima = 0;
};

RandomProblem MakeProblem(std::uint64_t seed, bool maximize) {
  const struct {
    const char* text;
    long (*value)(long, long, long);
  } kObjectives[] = {
      {"x*y - 3*z",                                 [](long x, long y, long z) { return x * y - 3 * z; }                               },
      {"abs(x - y) + z^2",                          [](long x, long y, long z) { return std::abs(x - y) + z * z; }                     },
      {"max(x, 2*y) * z",                           [](long x, long y, long z) { return std::max(x, 2 * y) * z; }                      },
      {"1000000*x*x - 2000000*y*z",
       [](long x,                                              long y, long z) { return 1000000 * x * x - 2000000 * y * z; }           },
      {"int(x << y) + int(y << z) + int(x*z == 4)",
       [](long x,                                              long y, long z) { return long{x < y} + long{y < z} + long{x * z == 4}; }},
  };
  std::mt19937_64 random(seed);
  const auto draw = [&random](long low, long high) {
    return low + static_cast<long>(random() % static_cast<std::uint64_t>(high - low + 1));
  };
  const long a = draw(-3, 3), b = draw(-3, 3), c = draw(-3, 3), d = draw(-6, 20), m = draw(2, 4);
  const auto& objective = kObjectives[seed % std::size(kObjectives)];
  RandomProblem problem;
  std::ostringstream text;
  text << "x, y, z : int = [-4, 5]; " << a << "*x + " << b << "*y + " << c << "*z >= " << d
       << "; (x + y*z) mod " << m << " <> 1; " << objective.text << " < 100000000;";
  problem.text = text.str();
  for (long x = -4; x <= 5; ++x)
    for (long y = -4; y <= 5; ++y)
      for (long z = -4; z <= 5; ++z) {
        if (a * x + b * y + c * z < d || (x + y * z) % m == 1) continue;
        const long value = objective.value(x, y, z);
        const bool isBetter =
            !problem.optimum || (maximize ? value > *problem.optimum : value < *problem.optimum);
        if (isBetter) problem.optima = 0;
        if (isBetter) problem.optimum = value;
        problem.optima += value == *problem.optimum ? 1 : 0;
      }
  return problem;
}

TEST(OptimisationTest, FindsWhatBruteForceFindsAlsoInPieces) {
  TrySeeds(300, [](std::uint64_t seed) -> std::string {
    const bool maximize = seed / 5 % 2 != 0;
    const RandomProblem problem = MakeProblem(seed, maximize);
    ZULTavSearch::Options options = Unlimited();
    options.choice = static_cast<ZULTavSearch::VariableChoice>(seed % 6);
    options.selection = static_cast<ZULTaVoAny::ValueSelection>(seed / 3 % 4);
    options.restartAfter = seed / 7 % 3;
    options.allOptima = true;
    const Optimised whole = Optimise(problem.text, options, maximize);
    const Optimised pieces = Optimise(problem.text, options, maximize, 1);
    const auto& found = whole.objectives;
    if (found != pieces.objectives || whole.isCertain != pieces.isCertain ||
        !(whole.bounds.integers == pieces.bounds.integers))
      return "pieces differ\n" + problem.text;
    if (!problem.optimum)
      return found.empty() && !whole.isCertain ? "" : "is none\n" + problem.text;
    const auto optimum = static_cast<double>(*problem.optimum);
    if (whole.outcome != Outcome::kExhausted || !whole.isCertain ||
        !(whole.bounds.integers == zultav::IntegerRange::Only(*problem.optimum)))
      return "bounds\n" + problem.text;
    for (const ZULTavObserved& bounds : pieces.allBounds)
      if (!bounds.integers.Contains(*problem.optimum)) return "bounds on the way\n" + problem.text;
    const auto first = std::find(found.begin(), found.end(), optimum);
    const bool isSorted = maximize ? std::is_sorted(found.begin(), found.end())
                                   : std::is_sorted(found.begin(), found.end(), std::greater<>());
    if (!isSorted || static_cast<std::size_t>(found.end() - first) != problem.optima)
      return "optima\n" + problem.text;
    return {};
  });
}

}  // namespace
