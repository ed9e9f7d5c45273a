#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tests/search/search_world.h"

namespace {

using Choice = ZULTavSearch::VariableChoice;
using Outcome = ZULTavSearch::Outcome;
using Values = std::vector<ZULTaVoAny*>;

/// A model, put together by hand through registered types and operators.
class Model {
 public:
  ZULTaVoAny* Add(const char* type) { return mNetwork.AddObject(NumberModule().FindType(type)); }
  ZULTaVoAny* Integer(long lower, long upper) {
    auto* value = static_cast<ZULTaVoInteger*>(Add("interval int"));
    value->SetLowerBound(lower);
    value->SetUpperBound(upper);
    return value;
  }
  ZULTaVoAny* Real(double lower, double upper) {
    auto* value = static_cast<ZULTaVoReal*>(Add("interval real"));
    value->SetLowerBound(lower);
    value->SetUpperBound(upper);
    return value;
  }
  ZULTaVoAny* Boolean() { return Add("single bool"); }
  template <class T>
  T* Constant(T* value) {
    mNetwork.SetConstant(value);
    return value;
  }

  void Post(const char* name, const Values& operands, ZULTaVoAny* result) {
    std::vector<ZULTaVoObject*> arguments(operands.begin(), operands.end());
    ASSERT_TRUE(Find(name, operands)->Post(mNetwork, arguments.data(), result)) << name;
  }
  /// The value of an operator, as a hidden variable.
  ZULTaVoAny* Apply(const char* name, const Values& operands) {
    ZULTaVoAny* result = mNetwork.AddObject(Find(name, operands)->GetResultType());
    Post(name, operands, result);
    return result;
  }
  ZULTaVoNetwork& Network() { return mNetwork; }

 private:
  const ZULTaVoOperatorDescriptor* Find(const char* name, const Values& operands) {
    std::vector<const ZULTaVoObjectDescriptor*> types;
    for (const ZULTaVoAny* operand : operands) types.push_back(mNetwork.GetType(operand));
    return NumberModule().FindOperator(name, types.data(), static_cast<unsigned int>(types.size()));
  }

  ZULTaVoNetwork mNetwork;
};

template <class Value>
std::string TextOf(const Value& value) {
  std::ostringstream text;
  value.PrintOn(text);
  return text.str();
}

struct Found {
  Outcome outcome = Outcome::kExhausted;
  std::vector<std::string> solutions;
  std::vector<bool> proven;
  ZULTavSearch::Statistics statistics;
  std::string state;  // for a search that goes on
};

ZULTavSearch::Options All() {
  ZULTavSearch::Options options;
  options.limits.solutions = ZULTavSearch::kUnlimited;
  return options;
}

Found Search(Model& model, const Values& declared, const ZULTavSearch::Options& options,
             const std::string& state = {}) {
  ZULTavSearch search(model.Network(), declared, options);
  if (!state.empty()) {
    std::istringstream bytes(state);
    ZULipstream in(bytes);
    EXPECT_TRUE(search.ReadState(in)) << in.Reason();
  }
  Found found;
  found.outcome = search.Run([&](const ZULTavSolution& solution) {
    std::string text;
    for (std::size_t i = 0; i < solution.GetSize(); ++i) text += TextOf(solution.GetValue(i)) + ' ';
    found.solutions.push_back(text);
    found.proven.push_back(solution.IsProven());
    return true;
  });
  found.statistics = search.GetStatistics();
  std::ostringstream bytes;
  ZULopstream out(bytes);
  search.WriteState(out);
  found.state = bytes.str();
  return found;
}

// --- Limits and resumption -------------------------------------------------------------------

/// x < y with x, y in [1, 6]: 15 solutions.
struct Pairs {
  Model model;
  Values xy{model.Integer(1, 6), model.Integer(1, 6)};
  Pairs() { model.Apply("<", xy); }
};

TEST(SearchTest, EndsAtEachLimit) {
  Pairs pairs;
  const Found all = Search(pairs.model, pairs.xy, All());
  ASSERT_EQ(all.solutions.size(), 15u);
  EXPECT_EQ(all.statistics.solutions, 15u);
  EXPECT_EQ(all.statistics.nodes, 29u) << "a binary tree with 15 leaves, none of which fails";
  EXPECT_EQ(all.statistics.fails, 0u);
  EXPECT_GT(all.statistics.peakDepth, 3u);
  EXPECT_GT(all.statistics.propagations, all.statistics.narrowings);
  EXPECT_EQ(TextOf(*pairs.xy[0]), "[1,6]") << "the network is left as it was";

  struct {
    std::uint64_t solutions, nodes;
    double seconds;
    Outcome outcome;
    std::size_t found;
  } const rows[] = {
      {4,  ZULTavSearch::kUnlimited, 1e300, Outcome::kSolutionLimit, 4 },
      {15, ZULTavSearch::kUnlimited, 1e300, Outcome::kExhausted,     15},
      {99, 8,                        1e300, Outcome::kNodeLimit,     2 },
      {99, ZULTavSearch::kUnlimited, 1e-12, Outcome::kTimeLimit,     0 },
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.nodes);
    ZULTavSearch::Options options;
    options.limits.solutions = row.solutions;
    options.limits.nodes = row.nodes;
    options.limits.seconds = row.seconds;
    const Found found = Search(pairs.model, pairs.xy, options);
    EXPECT_EQ(found.outcome, row.outcome);
    EXPECT_EQ(found.solutions.size(), row.found);
  }
}

TEST(SearchTest, TimeEndsALongPropagation) {
  // x < y and y < x move the bounds by one at a time through two thousand million values.
  Model model;
  const Values xy = {model.Integer(0, 2000000000), model.Integer(0, 2000000000)};
  model.Apply("<", xy);
  model.Apply("<", {xy[1], xy[0]});
  model.Network().SetFilterLimit(std::uint64_t{1} << 62);
  ZULTavSearch::Options options = All();
  options.limits.seconds = 0.05;
  const Found found = Search(model, xy, options);
  EXPECT_EQ(found.outcome, Outcome::kTimeLimit);
  EXPECT_LT(found.statistics.seconds, 5);
}

TEST(SearchTest, StopsWhenAskedTo) {
  Pairs pairs;
  ZULTavSearch search(pairs.model.Network(), pairs.xy, All());
  int seen = 0;
  EXPECT_EQ(search.Run([&](const ZULTavSolution&) { return ++seen < 3; }), Outcome::kStopped);
  EXPECT_EQ(seen, 3);
  search.Stop();
  EXPECT_EQ(search.Run([](const ZULTavSolution&) { return true; }), Outcome::kStopped);
}

TEST(SearchTest, GoesOnWhereItEnded) {
  for (const Choice choice : {Choice::kFirst, Choice::kRoundRobin}) {
    ZULTavSearch::Options options = All();
    options.choice = choice;
    Pairs whole;
    const Found expected = Search(whole.model, whole.xy, options);
    std::uint64_t& nodes = options.limits.nodes;
    for (nodes = 1; nodes < expected.statistics.nodes; ++nodes) {
      SCOPED_TRACE(nodes);
      std::vector<std::string> solutions;
      std::string state;
      Outcome outcome = Outcome::kNodeLimit;
      for (int part = 0; part < 40 && outcome == Outcome::kNodeLimit; ++part) {
        Pairs pairs;  // a new network, as after a restart
        const Found found = Search(pairs.model, pairs.xy, options, state);
        solutions.insert(solutions.end(), found.solutions.begin(), found.solutions.end());
        state = found.state;
        outcome = found.outcome;
      }
      EXPECT_EQ(outcome, Outcome::kExhausted);
      EXPECT_EQ(solutions, expected.solutions);
    }
  }
}

TEST(SearchTest, APropagationThatIsCutShortLosesNothing) {
  Pairs pairs;
  pairs.model.Network().SetFilterLimit(1);
  EXPECT_EQ(Search(pairs.model, pairs.xy, All()).solutions.size(), 15u);
}

// --- Values that are not split ---------------------------------------------------------------

TEST(SearchTest, ASingleTypeThatNothingDecidesIsReportedAny) {
  Model model;
  const Found found = Search(model, {model.Add("single int"), model.Integer(1, 2)}, All());
  EXPECT_EQ(found.solutions, (std::vector<std::string>{"Any [1,1] ", "Any [2,2] "}));
  EXPECT_EQ(found.proven, (std::vector<bool>{false, false}));
}

TEST(SearchTest, HiddenVariablesAreCheckedButNotReported) {
  // a = b and a + b = total: bounds alone never refute an odd total.
  for (const long total : {4L, 5L}) {
    SCOPED_TRACE(total);
    Model model;
    ZULTaVoAny* a = model.Integer(0, 9);
    ZULTaVoAny* b = model.Integer(0, 9);
    ZULTaVoAny* c = model.Integer(0, 1);  // several hidden values for each declared one
    ZULTaVoAny* x = model.Integer(1, 2);
    model.Apply("=", {a, b});
    model.Apply("=", {model.Apply("+", {a, b}), model.Constant(model.Integer(total, total))});
    const Found found = Search(model, {x}, All());
    EXPECT_EQ(found.solutions.size(), total == 4 ? 2u : 0u);
    EXPECT_EQ(std::count(found.proven.begin(), found.proven.end(), false), 0);

    ZULTavSearch::Options shallow = All();
    shallow.hiddenNodes = 0;
    const Found unchecked = Search(model, {x}, shallow);
    EXPECT_EQ(unchecked.proven, (std::vector<bool>{false, false}));
    EXPECT_EQ(TextOf(*c), "[0,1]");
  }
}

TEST(SearchTest, HiddenSplitsDoNotCutTheReportedBox) {
  Model model;
  ZULTaVoAny* x = model.Real(0, 1);
  model.Apply("<<", {x, model.Constant(model.Real(0.5, 0.5))});
  ZULTavSearch::Options options = All();
  options.absoluteWidth = 1;
  EXPECT_EQ(Search(model, {x}, options).solutions, std::vector<std::string>{"[0.0,1.0] "});
}

TEST(SearchTest, AnEmptyVariableHasNoSolution) {
  Model model;
  const Values x = {model.Integer(1, 2), model.Integer(3, 2)};
  EXPECT_TRUE(Search(model, x, All()).solutions.empty());
  ZULTavSearch::Verdict verdict = ZULTavSearch::Verdict::kOpen;
  EXPECT_EQ(ZULTavSearch(model.Network(), x, {}).Propagate(verdict), Outcome::kExhausted);
  EXPECT_EQ(verdict, ZULTavSearch::Verdict::kContradiction);
}

TEST(SearchTest, PropagationTellsWhatItFoundOut) {
  using Verdict = ZULTavSearch::Verdict;
  struct {
    long constant;
    Verdict verdict;
    const char* x;
  } const rows[] = {
      {3, Verdict::kOpen,          "[1,2]"},
      {2, Verdict::kSolved,        "[1,1]"},
      {1, Verdict::kContradiction, "[1,9]"}
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.constant);
    Model model;
    ZULTaVoAny* x = model.Integer(1, 9);
    model.Apply("<", {x, model.Constant(model.Integer(row.constant, row.constant))});
    Verdict verdict = Verdict::kOpen;
    ZULTavSearch(model.Network(), {x}, {}).Propagate(verdict);
    EXPECT_EQ(verdict, row.verdict);
    EXPECT_EQ(TextOf(*x), row.x);
  }
}

// --- Reals -----------------------------------------------------------------------------------

struct Box {
  double lower, upper;
};

std::vector<Box> Boxes(Model& model, ZULTaVoAny* x, const ZULTavSearch::Options& options) {
  std::vector<Box> boxes;
  ZULTavSearch(model.Network(), {x}, options).Run([&](const ZULTavSolution& solution) {
    const auto& value = static_cast<const ZULTaVoReal&>(solution.GetValue(0));
    boxes.push_back({value.GetLowerBound(), value.GetUpperBound()});
    EXPECT_FALSE(solution.IsProven());
    return true;
  });
  return boxes;
}

TEST(SearchTest, BoxesThatTouchBecomeOneWhereTheLimitAllows) {
  struct {
    double lower, upper, width;
    bool zero;  // x = -x, so that the only solution lies where the halves meet
    std::vector<Box> expected;
  } const rows[] = {
      {-1, 1, 1e-6, true,  {{0, 0}}                                        },
      {0,  1, 0.25, false, {{0, 0.25}, {0.25, 0.5}, {0.5, 0.75}, {0.75, 1}}},
      {0,  3, 1,    false, {{0, 0.75}, {0.75, 1.5}, {1.5, 2.25}, {2.25, 3}}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.width);
    Model model;
    ZULTaVoAny* x = model.Real(row.lower, row.upper);
    if (row.zero) model.Apply("=", {x, model.Apply("-", {model.Constant(model.Real(0, 0)), x})});
    ZULTavSearch::Options options = All();
    options.absoluteWidth = row.width;
    options.selection = ZULTaVoAny::kLeastValue;  // would skip values of a real
    const std::vector<Box> boxes = Boxes(model, x, options);
    ASSERT_EQ(boxes.size(), row.expected.size());
    for (std::size_t i = 0; i < boxes.size(); ++i) {
      EXPECT_NEAR(boxes[i].lower, row.expected[i].lower, row.zero ? 1e-6 : 0);
      EXPECT_NEAR(boxes[i].upper, row.expected[i].upper, row.zero ? 1e-6 : 0);
    }
  }
}

/// Knows that the solution is x = 3.
class KnowingProof final : public ZULTavContractor, public ZULTavProver {
 public:
  explicit KnowingProof(ZULTaVoReal* x) : mX(x) {}
  int Contract(ZULTaVoNetwork& network, bool /*again*/) override {
    if (mX->GetLowerBound() == mX->GetUpperBound()) return 0;
    EXPECT_TRUE(network.SaveValue(mX));
    mX->SetLowerBound(3);
    mX->SetUpperBound(3);
    network.PropagateValue(mX);
    return 1;
  }
  bool Proves(const ZULTaVoNetwork&, ZULTavSolution*) override { return mX->GetLowerBound() == 3; }

 private:
  ZULTaVoReal* mX;
};

TEST(SearchTest, AProofContractsAndProves) {
  Model model;
  auto* x = static_cast<ZULTaVoReal*>(model.Real(0, 10));
  KnowingProof proof(x);
  ZULTavSearch::Options options = All();
  options.reasoning = {&proof, &proof};
  const Found found = Search(model, {x}, options);
  EXPECT_EQ(found.solutions, std::vector<std::string>{"3.0 "});
  EXPECT_EQ(found.proven, std::vector<bool>{true});
  EXPECT_EQ(found.statistics.nodes, 1u);
  EXPECT_EQ(x->GetUpperBound(), 10);
}

}  // namespace
