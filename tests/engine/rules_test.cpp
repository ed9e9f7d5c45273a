// The engine and its rules over integers and truth values against brute force.

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <numeric>
#include <random>
#include <set>

#include "framework/engine/Engine.h"
#include "framework/engine/detail/ProgramBuilder.h"
#include "framework/solver/ZULTaVoNetwork.h"

namespace zultav::engine {
namespace {

using Values = std::vector<std::int64_t>;
constexpr std::int64_t kMin = IntegerRange::kMin, kMax = IntegerRange::kMax;

/// How much propagation of a rule alone promises.
enum class Strength {
  kExact,   // it decides where all is fixed
  kBounds,  // each bound is part of a solution within the bounds
  kDomain   // each value is part of a solution
};

/// A program of a few slots with small domains, and what its rules mean.
class World {
 public:
  explicit World(unsigned int seed) : mRandom(seed) {}

  std::int64_t Draw(std::int64_t from, std::int64_t to) {
    return std::uniform_int_distribution<std::int64_t>(from, to)(mRandom);
  }
  Slot AddInteger(std::int64_t lower, std::int64_t upper, bool keepsValues) {
    const Slot x = mBuilder.AddSlot({}, IntegerRange(lower, upper));
    if (keepsValues) mBuilder.KeepValues(x);
    mRanges.emplace_back(lower, upper);
    return x;
  }
  std::vector<Slot> AddIntegers(std::int64_t count, bool keepsValues) {
    std::vector<Slot> slots;
    for (std::int64_t i = 0; i < count; ++i) {
      const std::int64_t lower = Draw(-3, 3);
      slots.push_back(AddInteger(lower, lower + Draw(0, 4), keepsValues));
    }
    return slots;
  }
  std::vector<Slot> AddBooleans(std::int64_t count) {
    std::vector<Slot> slots;
    for (std::int64_t i = 0; i < count; ++i) slots.push_back(AddInteger(0, 1, false));
    return slots;
  }
  void Mean(std::function<bool(const Values&)> holds) { mMeaning.push_back(std::move(holds)); }

  ProgramBuilder& Build() { return mBuilder; }
  const Program& Finish() {
    mBuilder.Finish();
    return mProgram;
  }
  std::size_t CountSlots() const { return mRanges.size(); }

  /// Calls for every assignment within what the engine leaves (or just within its bounds) that
  /// fulfils all rules.
  void ForEachSolution(const Engine& engine, bool boundsOnly,
                       const std::function<void(const Values&)>& use) const {
    Values values(mRanges.size());
    const std::function<void(Slot)> enumerate = [&](Slot x) {
      if (x == mRanges.size()) {
        const auto holds = [&](const auto& meaning) { return meaning(values); };
        if (std::all_of(mMeaning.begin(), mMeaning.end(), holds)) use(values);
        return;
      }
      for (values[x] = engine.GetLower(x); values[x] <= engine.GetUpper(x); ++values[x])
        if (boundsOnly || engine.Contains(x, values[x])) enumerate(x + 1);
    };
    enumerate(0);
  }
  std::set<Values> FindSolutions(const Engine& engine) const {
    std::set<Values> solutions;
    ForEachSolution(engine, false, [&](const Values& values) { solutions.insert(values); });
    return solutions;
  }

 private:
  std::mt19937 mRandom;
  ZULTaVoNetwork mNetwork;
  Program mProgram = ProgramBuilder::MakeEmpty(mNetwork);
  ProgramBuilder mBuilder{mProgram};
  std::vector<IntegerRange> mRanges;
  std::vector<std::function<bool(const Values&)>> mMeaning;
};

/// Adds a random rule over new slots, or over `given` ones.
using AddRandom = Strength (*)(World&, const std::vector<Slot>& given);

std::vector<Slot> SlotsOf(World& world, const std::vector<Slot>& given, std::int64_t count,
                          bool keepsValues) {
  if (given.empty()) return world.AddIntegers(count, keepsValues);
  std::vector<Slot> slots = given;
  for (std::size_t i = slots.size(); i-- > 1;)
    std::swap(slots[i], slots[static_cast<std::size_t>(world.Draw(0, static_cast<int>(i)))]);
  slots.resize(std::min<std::size_t>(slots.size(), static_cast<std::size_t>(count)));
  return slots;
}

Strength AddRandomLinear(World& world, const std::vector<Slot>& given) {
  const auto relation =
      std::array{Relation::kEqual, Relation::kUnequal,
                 Relation::kLessOrEqual}[static_cast<std::size_t>(world.Draw(0, 2))];
  const bool isReified = world.Draw(0, 1) == 1, isUnit = world.Draw(0, 1) == 1;
  const auto x = SlotsOf(world, given, world.Draw(1, 4), world.Draw(0, 1) == 1);
  const Slot truth = isReified ? world.AddBooleans(1)[0] : kNone;
  Values c;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const std::int64_t magnitude = isUnit ? 1 : world.Draw(1, 5);
    c.push_back(world.Draw(0, 1) == 1 ? magnitude : -magnitude);
  }
  const std::int64_t c0 = world.Draw(-6, 6);
  const bool isHalf = isReified && world.Draw(0, 1) == 1, isNegated = world.Draw(0, 1) == 1;
  if (isHalf)
    world.Build().AddConditional({truth, isNegated}, relation, x, c, c0);
  else
    world.Build().AddLinear(relation, x, c, c0, truth);
  world.Mean([=](const Values& v) {
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < x.size(); ++i) sum += c[i] * v[x[i]];
    const bool holds = relation == Relation::kEqual     ? sum == c0
                       : relation == Relation::kUnequal ? sum != c0
                                                        : sum <= c0;
    if (isHalf) return holds || (v[truth] == 1) == isNegated;
    return truth == kNone ? holds : holds == (v[truth] == 1);
  });
  return isUnit || relation == Relation::kLessOrEqual ? Strength::kBounds : Strength::kExact;
}

Strength AddRandomUnequal(World& world, const std::vector<Slot>& given) {
  const bool keepsValues = world.Draw(0, 1) == 1;
  const auto x = SlotsOf(world, given, 2, keepsValues);
  const std::int64_t c0 = world.Draw(-2, 2);
  world.Build().AddUnequal(x[0], x[1], c0);
  world.Mean([=](const Values& v) { return v[x[0]] != v[x[1]] + c0; });
  return keepsValues ? Strength::kDomain : Strength::kBounds;
}

Strength AddRandomClause(World& world, const std::vector<Slot>&) {
  const auto x = world.AddBooleans(world.Draw(1, 7));
  std::vector<Literal> literals;
  for (const Slot slot : x) literals.push_back({slot, world.Draw(0, 1) == 1});
  world.Build().AddClause(literals);
  world.Mean([=](const Values& v) {
    return std::any_of(literals.begin(), literals.end(), [&](const Literal& literal) {
      return (v[literal.slot] == 1) != literal.negated;
    });
  });
  return Strength::kDomain;
}

Strength AddRandomAllDifferent(World& world, const std::vector<Slot>& given) {
  const auto x = SlotsOf(world, given, world.Draw(2, 6), world.Draw(0, 1) == 1);
  world.Build().AddAllDifferent(x);
  world.Mean([=](const Values& v) {
    std::set<std::int64_t> values;
    return std::all_of(x.begin(), x.end(), [&](Slot s) { return values.insert(v[s]).second; });
  });
  return Strength::kBounds;
}

Strength AddRandomCount(World& world, const std::vector<Slot>& given) {
  const auto truths = world.AddBooleans(world.Draw(1, 5));
  const Slot z = given.empty() ? world.AddIntegers(1, false)[0] : given[0];
  world.Build().AddCount(z, truths);
  world.Mean([=](const Values& v) {
    return v[z] == std::accumulate(truths.begin(), truths.end(), std::int64_t{0},
                                   [&](std::int64_t sum, Slot p) { return sum + v[p]; });
  });
  return Strength::kDomain;
}

Strength AddRandomPrimality(World& world, const std::vector<Slot>&) {
  const std::int64_t lower = world.Draw(-2, 30);
  const Slot truth = world.AddBooleans(1)[0];
  const Slot x = world.AddInteger(lower, lower + world.Draw(0, 12), world.Draw(0, 1) == 1);
  world.Build().AddPrimality(truth, x);
  world.Mean([=](const Values& v) {
    bool isPrime = v[x] >= 2;
    for (std::int64_t d = 2; d < v[x]; ++d) isPrime = isPrime && v[x] % d != 0;
    return isPrime == (v[truth] == 1);
  });
  return Strength::kBounds;
}

Strength AddRandomFunction(World& world, const std::vector<Slot>& given) {
  struct Meaning {
    Function function;
    bool (*holds)(std::int64_t z, std::int64_t x, std::int64_t y);
  };
  static constexpr Meaning kMeanings[] = {
      {Function::kSum,       [](auto z, auto x, auto y) { return z == x + y; }          },
      {Function::kProduct,   [](auto z, auto x, auto y) { return z == x * y; }          },
      {Function::kRemainder, [](auto z, auto x, auto y) { return y != 0 && z == x % y; }},
      {Function::kMinimum,   [](auto z, auto x, auto y) { return z == std::min(x, y); } },
      {Function::kMaximum,   [](auto z, auto x, auto y) { return z == std::max(x, y); } },
      {Function::kAbsolute,  [](auto z, auto x, auto) { return z == std::abs(x); }      },
      {Function::kSign,      [](auto z, auto x, auto) { return z == (x > 0) - (x < 0); }},
      {Function::kSquare,    [](auto z, auto x, auto) { return z == x * x; }            },
  };
  const auto x = SlotsOf(world, given, 3, false);
  const Meaning meaning = kMeanings[world.Draw(0, std::size(kMeanings) - 1)];
  const Slot y = RowOf(meaning.function).operands == 1 ? x[1] : x[2];
  world.Build().AddFunction(meaning.function, x[0], x[1], y);
  world.Mean([=](const Values& v) { return meaning.holds(v[x[0]], v[x[1]], v[y]); });
  return Strength::kExact;
}

/// Everything that can be seen of an engine's slots.
std::vector<Values> Snapshot(const Engine& engine, std::size_t slots) {
  std::vector<Values> snapshot;
  for (Slot x = 0; x < slots; ++x) {
    Values& values = snapshot.emplace_back();
    for (std::int64_t v = engine.GetLower(x); v <= engine.GetUpper(x); ++v)
      if (engine.Contains(x, v)) values.push_back(v);
  }
  return snapshot;
}

/// Propagates here and at some narrower places, and compares with all solutions.
class Dive {
 public:
  Dive(World& world, Strength strength)
      : mWorld(world), mStrength(strength), mEngine(world.Finish(), nullptr) {}

  void Descend(int levels, bool hasNarrowed) {
    const std::set<Values> solutions =
        hasNarrowed ? mWorld.FindSolutions(mEngine) : std::set<Values>();
    if (!hasNarrowed || mEngine.Propagate() == Engine::Status::kFailed) {
      ASSERT_TRUE(solutions.empty()) << "a solution is lost";
      return;
    }
    for (const Values& solution : solutions)
      for (Slot x = 0; x < solution.size(); ++x) ASSERT_TRUE(mEngine.Contains(x, solution[x]));
    CheckSizes();
    CheckStrength(solutions);
    const std::uint64_t narrowings = mEngine.GetStatistics().narrowings;
    mEngine.ScheduleAll();
    ASSERT_EQ(mEngine.Propagate(), Engine::Status::kFixpoint);
    ASSERT_EQ(mEngine.GetStatistics().narrowings, narrowings) << "that was no fixpoint";
    if (levels == 0) return;
    const auto before = Snapshot(mEngine, mWorld.CountSlots());
    for (int i = 0; i < 3; ++i) {
      mEngine.Push();
      Descend(levels - 1, NarrowSome());
      mEngine.Pop();
      if (testing::Test::HasFatalFailure()) return;
      ASSERT_EQ(Snapshot(mEngine, mWorld.CountSlots()), before);
    }
  }

 private:
  bool NarrowSome() {
    for (std::int64_t i = mWorld.Draw(1, 2); i > 0; --i) {
      const auto x = static_cast<Slot>(mWorld.Draw(0, static_cast<int>(mWorld.CountSlots()) - 1));
      const std::int64_t value = mWorld.Draw(mEngine.GetLower(x), mEngine.GetUpper(x));
      const std::int64_t how = mWorld.Draw(0, 3);
      if (how == 0 && !mEngine.SetLower(x, value)) return false;
      if (how == 1 && !mEngine.SetUpper(x, value)) return false;
      if (how == 2 && !mEngine.Fix(x, mEngine.GetPrevious(x, value + 1))) return false;
      if (how == 3 && !mEngine.Remove(x, value)) return false;
    }
    return true;
  }
  void CheckSizes() {
    for (Slot x = 0; x < mWorld.CountSlots(); ++x) {
      std::uint64_t size = 1;
      for (std::int64_t v = mEngine.GetLower(x); v < mEngine.GetUpper(x); ++size) {
        const std::int64_t next = mEngine.GetNext(x, v);
        ASSERT_TRUE(mEngine.Contains(x, next));
        ASSERT_EQ(mEngine.GetPrevious(x, next), v);
        v = next;
      }
      ASSERT_EQ(mEngine.GetSize(x), size);
    }
  }
  void CheckStrength(const std::set<Values>& solutions) {
    bool isFixed = true;
    for (Slot x = 0; x < mWorld.CountSlots(); ++x) isFixed = isFixed && mEngine.IsFixed(x);
    ASSERT_TRUE(!isFixed || !solutions.empty()) << "no solution is taken for one";
    if (mStrength == Strength::kExact) return;
    std::vector<std::set<std::int64_t>> supported(mWorld.CountSlots());
    mWorld.ForEachSolution(mEngine, mStrength == Strength::kBounds, [&](const Values& values) {
      for (Slot x = 0; x < values.size(); ++x) supported[x].insert(values[x]);
    });
    for (Slot x = 0; x < supported.size(); ++x)
      for (std::int64_t v = mEngine.GetLower(x); v <= mEngine.GetUpper(x); ++v) {
        const bool isBound = v == mEngine.GetLower(x) || v == mEngine.GetUpper(x);
        const bool isAsked = isBound || (mStrength == Strength::kDomain && mEngine.Contains(x, v));
        ASSERT_TRUE(!isAsked || supported[x].count(v) == 1) << "slot " << x << " value " << v;
      }
  }

  World& mWorld;
  Strength mStrength;
  Engine mEngine;
};

constexpr AddRandom kRules[] = {AddRandomLinear,       AddRandomUnequal, AddRandomClause,
                                AddRandomAllDifferent, AddRandomCount,   AddRandomPrimality,
                                AddRandomFunction};

TEST(EngineTest, RulesAloneAreSoundAndAsStrongAsPromised) {
  for (unsigned int kind = 0; kind < std::size(kRules); ++kind)
    for (unsigned int seed = 0; seed < 600; ++seed) {
      SCOPED_TRACE("rule " + std::to_string(kind) + ", seed " + std::to_string(seed));
      World world(1000 * kind + seed);
      const Strength strength = kRules[kind](world, {});
      Dive(world, strength).Descend(3, true);
      if (HasFatalFailure()) return;
    }
}

/// All solutions by halving domains; in between, propagation is interrupted at times.
void Search(Engine& engine, const World& world, std::set<Values>& found) {
  Engine::Status status = Engine::Status::kLimit;
  while (status == Engine::Status::kLimit) status = engine.Propagate();
  if (status == Engine::Status::kFailed) return;
  ASSERT_EQ(status, Engine::Status::kFixpoint);
  Slot x = 0;
  while (x < world.CountSlots() && engine.IsFixed(x)) ++x;
  if (x == world.CountSlots()) {
    Values values;
    for (x = 0; x < world.CountSlots(); ++x) values.push_back(engine.GetLower(x));
    ASSERT_TRUE(found.insert(values).second);
    return;
  }
  const std::int64_t middle = engine.GetLower(x);
  for (const bool above : {false, true}) {
    engine.Push();
    if (above ? engine.SetLower(x, middle + 1) : engine.SetUpper(x, middle))
      Search(engine, world, found);
    engine.Pop();
  }
}

TEST(EngineTest, RulesTogetherFindAllSolutionsAndNoOthers) {
  for (unsigned int seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    World world(seed);
    const auto given = world.AddIntegers(4, world.Draw(0, 1) == 1);
    for (int i = 0; i < 3; ++i) kRules[world.Draw(0, std::size(kRules) - 1)](world, given);
    if (world.CountSlots() > 11) continue;  // too many for brute force
    Engine engine(world.Finish(), nullptr);
    engine.SetRunLimit(seed % 3 == 0 ? 2 : 0);
    const std::set<Values> solutions = world.FindSolutions(engine);
    std::set<Values> found;
    Search(engine, world, found);
    ASSERT_EQ(found, solutions);
  }
}

// --- Beyond small numbers -----------------------------------------------------------------------

TEST(EngineTest, LinearRulesNarrowBesideEndsAndOverflow) {
  struct Case {
    const char* what;
    Relation relation;
    std::vector<IntegerRange> x;
    Values c;
    std::int64_t c0;
    std::vector<IntegerRange> left;  // empty: none
  };
  constexpr std::int64_t kBig = std::int64_t{1} << 62;
  const IntegerRange all;
  const Case kCases[] = {
      {"the endless one is narrowed by the others",
       Relation::kEqual,
       {all, {1, 3}},
       {1, -2},
       1,                                                                                     {{3, 7}, {1, 3}}                    },
      {"two endless ones are not",
       Relation::kEqual,
       {all, all, {0, 0}},
       {1, 1, 1},
       0,                                                                                     {all, all, {0, 0}}                  },
      {"one side is endless",
       Relation::kLessOrEqual,
       {{5, kMax}, {kMin, 9}},
       {1, -1},
       0,                                                                                     {{5, 9}, {5, 9}}                    },
      {"x + 1 = x",                                 Relation::kEqual, {all, all}, {3, -3}, 1, {all, all}                          },
      {"no value lies beyond 64 bits",
       Relation::kLessOrEqual,
       {{kMax, kMax}, {0, 1}},
       {1, 1},
       kBig,                                                                                  {}                                  },
      {"products of 2^124",
       Relation::kEqual,
       {{kBig - 1, kBig + 1}, {kBig, kBig}},
       {kBig, -kBig},
       0,                                                                                     {{kBig, kBig}, {kBig, kBig}}        },
      {"products that differ by one",
       Relation::kEqual,
       {{kBig, kBig}, {kBig, kBig}, {0, 1}},
       {kBig, -kBig, 1},
       1,                                                                                     {{kBig, kBig}, {kBig, kBig}, {1, 1}}},
      {"a common divisor forbids it at once",
       Relation::kEqual,
       {{0, 1000000000}, {0, 1000000000}, {0, 0}},
       {2, -2, 1},
       1,                                                                                     {}                                  },
      {"an unequal pair of large products",
       Relation::kUnequal,
       {{kBig, kBig}, {kBig - 1, kBig}},
       {kBig, -kBig},
       0,                                                                                     {{kBig, kBig}, {kBig - 1, kBig - 1}}},
  };
  for (const Case& row : kCases) {
    ZULTaVoNetwork network;
    Program program = ProgramBuilder::MakeEmpty(network);
    ProgramBuilder builder(program);
    std::vector<Slot> slots;
    for (const IntegerRange& range : row.x) slots.push_back(builder.AddSlot({}, range));
    builder.AddLinear(row.relation, slots, row.c, row.c0);
    builder.Finish();
    Engine engine(program, nullptr);
    EXPECT_EQ(engine.Propagate() == Engine::Status::kFailed, row.left.empty()) << row.what;
    for (std::size_t i = 0; i < row.left.size(); ++i)
      EXPECT_EQ(engine.GetIntegers(slots[i]), row.left[i]) << row.what << ", x" << i + 1;
  }
}

TEST(EngineTest, TenDifferentValuesOfNineFailAtOnce) {
  World world(0);
  std::vector<Slot> x;
  for (int i = 0; i < 10; ++i) x.push_back(world.AddInteger(1, 9, true));
  world.Build().AddAllDifferent(x);
  EXPECT_EQ(Engine(world.Finish(), nullptr).Propagate(), Engine::Status::kFailed);
}

TEST(EngineTest, RealsTellOfWhatIsWorthIt) {
  struct Case {
    RealRange told, now;
    bool isTold;
  };
  constexpr double kInf = HUGE_VAL;
  const Case kCases[] = {
      {{0, 100},      {0, 99.5},      false},
      {{0, 100},      {0, 98},        true },
      {{0, 100},      {0.5, 99.4},    true },
      {{0, 1e-9},     {0, 0.9e-9},    true },
      {{3, 3.001},    {3, 3},         true },
      {{-kInf, kInf}, {-kInf, 1e300}, true },
      {{5, kInf},     {5.01, kInf},   false},
      {{5, kInf},     {5.1, kInf},    true },
      {{1, 1e300},    {1, 1e290},     true },
      {{1, 1e300},    {1, 0.9e300},   false},
      {{1, 1e300},    {100, 1e300},   true },
  };
  for (const Case& row : kCases) {
    SCOPED_TRACE(testing::Message() << row.now.lower << ", " << row.now.upper);
    ZULTaVoNetwork network;
    Program program = ProgramBuilder::MakeEmpty(network);
    ProgramBuilder builder(program);
    const Slot x = builder.AddSlot({Kind::kReal}, row.told);
    builder.Finish();
    Engine engine(program, nullptr);
    // What was undone decides nothing: the second time is like the first.
    for (int i = 0; i < 2; ++i) {
      engine.Push();
      const std::uint64_t before = engine.GetStatistics().narrowings;
      ASSERT_TRUE(engine.Narrow(x, row.now));
      EXPECT_EQ(engine.GetReals(x), row.now);
      EXPECT_EQ(engine.GetStatistics().narrowings - before, row.isTold ? 1U : 0U);
      ASSERT_TRUE(engine.NarrowAndTell(x, row.now));
      EXPECT_EQ(engine.GetStatistics().narrowings - before, 1U);
      engine.Pop();
      EXPECT_EQ(engine.GetReals(x), row.told);
    }
  }
}

TEST(EngineTest, IntegersAndRealsMeetOutwardAndInward) {
  ZULTaVoNetwork network;
  Program program = ProgramBuilder::MakeEmpty(network);
  ProgramBuilder builder(program);
  const Slot x = builder.AddSlot({}, IntegerRange());
  builder.Finish();
  Engine engine(program, nullptr);
  EXPECT_EQ(engine.GetReals(x), RealRange());
  ASSERT_TRUE(engine.Narrow(x, RealRange(-1e300, 1e300)));
  EXPECT_EQ(engine.GetIntegers(x), IntegerRange());
  constexpr std::int64_t kOdd = (std::int64_t{1} << 53) + 1;
  ASSERT_TRUE(engine.Narrow(x, RealRange(2.5, 0x1p53)));
  EXPECT_EQ(engine.GetIntegers(x), IntegerRange(3, kOdd - 1));
  EXPECT_FALSE(engine.Narrow(x, RealRange(4.25, 4.75)));
}

}  // namespace
}  // namespace zultav::engine
