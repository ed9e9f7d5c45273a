#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/search/search_world.h"

namespace {

using Outcome = ZULTavSearch::Outcome;

std::string TextOf(const ZULTaVoAny& value) {
  std::ostringstream text;
  value.PrintOn(text);
  return text.str();
}

struct Found {
  Outcome outcome = Outcome::kExhausted;
  std::vector<std::string> solutions;
  std::vector<bool> proven;
  ZULTavSearch::Statistics statistics;
};

ZULTavSearch::Options All() {
  ZULTavSearch::Options options;
  options.limits.solutions = ZULTavSearch::kUnlimited;
  return options;
}

/// Searches for the first variables of the model; the others are hidden.
Found Search(TextModel& model, const ZULTavSearch::Options& options, std::size_t variables) {
  const std::vector<ZULTaVoAny*> declared(
      model.declared.begin(), model.declared.begin() + static_cast<std::ptrdiff_t>(variables));
  ZULTavSearch search(model.model->Network(), declared, options);
  Found found;
  found.outcome = search.Run([&](const ZULTavSolution& solution) {
    std::string text;
    for (std::size_t i = 0; i < solution.GetSize(); ++i) text += TextOf(solution.GetValue(i)) + ' ';
    found.solutions.push_back(text);
    found.proven.push_back(solution.IsProven());
    return true;
  });
  found.statistics = search.GetStatistics();
  return found;
}
Found Search(const std::string& text, const ZULTavSearch::Options& options,
             std::size_t variables = 1) {
  TextModel model(text);
  return Search(model, options, variables);
}

TEST(SearchTest, TimeEndsALongPropagation) {
  // The bounds move by one at a time through two thousand million values.
  TextModel model("x, y : int = [0, 2000000000]; x < y; y < x;");
  model.model->Network().SetFilterLimit(std::uint64_t{1} << 62);
  ZULTavSearch::Options options = All();
  options.limits.seconds = 0.05;
  const Found found = Search(model, options, 2);
  EXPECT_EQ(found.outcome, Outcome::kTimeLimit);
  EXPECT_LT(found.statistics.seconds, 5);
}

std::string TextOf(const ZULTavObserved& observed) {
  std::ostringstream text;
  if (observed.kind == ZULTavObserved::Kind::kReal)
    text << observed.reals.lower << ' ' << observed.reals.upper;
  else
    text << (observed.kind == ZULTavObserved::Kind::kTruth ? "truth " : "")
         << observed.integers.lower << ' ' << observed.integers.upper;
  return text.str();
}

TEST(SearchTest, ObservedValuesAreToldWithEachSolutionWhateverTheirTypesHold) {
  // The left side of the last statement is observed: neither its type's limits nor its being told
  // may change what is found.
  const struct {
    const char* text;
    std::vector<std::string> expected;
  } rows[] = {
      {"x : int in {3000000, 7}; x*x + 1 <> 5;",      {"50 50", "9000000000001 9000000000001"}},
      {"x : int = [1, 2]; y : int = 0; x*x <> y;",    {"1 1", "4 4"}                          },
      {"p, q : bool; q = false; (p || q) <> q;",      {"truth 1 1"}                           },
      {"x : int = [2, 3]; 5*x > 0.5;",                {"10 10", "15 15"}                      },
      {"x : int = [1, 2]; x/2.0 > 0;",                {"0.5 0.5", "1 1"}                      },
      {"x : real = [-9, 9]; x^2 = 4; 3*x < 100;",     {"-6 -6", "6 6"}                        },
      {"x : real = [-9, 9]; x^2 = 4; 1 - x^2 < 100;", {"-3 -3", "-3 -3"}                      },
      {"x : single real = 2; 3*x < 100;",             {"6 6"}                                 },
  };
  for (const auto& row : rows) {
    TextModel model(row.text);
    const auto& statement = model.model->Statements().back();
    ZULTavSearch search(model.model->Network(), model.declared, All(),
                        {model.model->Expressions()[statement.left].object});
    std::vector<std::string> found;
    search.Run([&](const ZULTavSolution& solution) {
      found.push_back(TextOf(solution.GetObserved().front()));
      return true;
    });
    EXPECT_EQ(found, row.expected) << row.text;
  }
}

constexpr char kPairs[] = "x, y : int = [1, 6]; x < y;";

TEST(SearchTest, StopsWhenAskedToAndLeavesTheNetworkAsItWas) {
  TextModel pairs(kPairs);
  ZULTavSearch search(pairs.model->Network(), pairs.declared, All());
  int seen = 0;
  EXPECT_EQ(search.Run([&](const ZULTavSolution&) { return ++seen < 3; }), Outcome::kStopped);
  EXPECT_EQ(seen, 3);
  search.Stop();
  EXPECT_EQ(search.Run([](const ZULTavSolution&) { return true; }), Outcome::kStopped);
  EXPECT_EQ(TextOf(*pairs.declared[0]), "[1,6]");
}

TEST(SearchTest, APropagationThatIsCutShortLosesNothing) {
  TextModel pairs(kPairs);
  pairs.model->Network().SetFilterLimit(1);
  EXPECT_EQ(Search(pairs, All(), 2).solutions.size(), 15u);
}

TEST(SearchTest, WhatFiltersNarrowIsTakenBack) {
  TextModel read("x : real = [0, 1]; y : real; y = next(x);");
  ASSERT_NE(read.model, nullptr) << read.error;
  ZULTavSearch search(read.model->Network(), read.declared, All());
  search.Run([](const ZULTavSolution&) { return true; });
  EXPECT_TRUE(read.declared[1]->IsAny());
}

TEST(SearchTest, ASingleTypeThatNothingDecidesIsReportedAny) {
  const Found found = Search("x : single int; y : int = [1, 2];", All(), 2);
  EXPECT_EQ(found.solutions, (std::vector<std::string>{"Any [1,1] ", "Any [2,2] "}));
  EXPECT_EQ(found.proven, (std::vector<bool>{false, false}));
}

TEST(SearchTest, HiddenVariablesAreCheckedButNotReported) {
  for (const char total : {'6', '7'}) {
    SCOPED_TRACE(total);
    // Bounds alone do not see that 7 is no sum of three squares, and 6 is one in several ways.
    const std::string text =
        std::string("x : int = [1, 2]; a, b, c : int = [0, 9]; a^2 + b^2 + c^2 = ") + total + ';';
    const Found found = Search(text, All());
    EXPECT_EQ(found.solutions.size(), total == '6' ? 2u : 0u);
    EXPECT_EQ(std::count(found.proven.begin(), found.proven.end(), false), 0);

    ZULTavSearch::Options shallow = All();
    shallow.hiddenNodes = 0;
    EXPECT_EQ(Search(text, shallow).proven, (std::vector<bool>{false, false}));
  }
}

TEST(SearchTest, HiddenSplitsDoNotCutTheReportedBox) {
  ZULTavSearch::Options options = All();
  options.absoluteWidth = 1;
  EXPECT_EQ(Search("x : real = [0, 1]; b : bool; b == (x << 0.5);", options).solutions,
            std::vector<std::string>{"[0.0,1.0] "});
}

TEST(SearchTest, BoxesThatTouchBecomeOneWhereTheLimitAllows) {
  struct {
    const char* model;
    double width;
    std::vector<std::string> boxes;
  } const rows[] = {
      {"x : real = [-1, 1]; x = 0 - x;", 1e-6, {"0.0 "}                                                    }, // where the halves meet
      {"x : real = [0, 1];",             0.25, {"[0.0,0.25] ", "[0.25,0.5] ", "[0.5,0.75] ", "[0.75,1.0] "}},
      {"x : real = [0, 3];",             1,    {"[0.0,0.75] ", "[0.75,1.5] ", "[1.5,2.25] ", "[2.25,3.0] "}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.model);
    ZULTavSearch::Options options = All();
    options.absoluteWidth = row.width;
    options.selection = ZULTaVoAny::kLeastValue;  // would skip values of a real
    EXPECT_EQ(Search(row.model, options).solutions, row.boxes);
  }
}

}  // namespace
