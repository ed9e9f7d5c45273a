// Propagation: order, passivity, limits, constants, the trail, and the fixpoint itself.

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <random>

#include "tests/solver/world.h"

using Status = ZULTaVoNetwork::Status;

/// A constraint whose filter and activation are what the test says.
class ScriptedConstraint final : public ZULTaVoFrame<ScriptedConstraint, ZULTaVoConstraint> {
 public:
  static constexpr char kClassName[] = "ScriptedConstraint";
  static constexpr char kTypeName[] = "Scripted";
  static constexpr unsigned int kArguments = 1;
  static void AddArguments(ZULTaVoConstraintDescriptor& descriptor) {
    descriptor.AddArgument("Value", ZULTaVoAny::sDescriptor, 50);
  }
  explicit ScriptedConstraint(const void* from = nullptr) : ZULTaVoFrame(from) {}
  explicit ScriptedConstraint(ZULStreamableInit init) : ZULTaVoFrame(init) {}
  int Activate(ZULTaVoNetwork* network) override {
    sLast = this;
    return ChangePriority(network, sPriority);
  }
  int Filter(const ZULTaVoObjectEnvironment& environment, int) override {
    sLog.push_back(environment.GetArgument(0));
    return sScript ? sScript(*this, environment) : 0;
  }

  inline static unsigned short sPriority = 50;
  inline static ScriptedConstraint* sLast = nullptr;
  inline static std::vector<ZULTaVoObject*> sLog;
  inline static std::function<int(ScriptedConstraint&, const ZULTaVoObjectEnvironment&)> sScript;
};
template class ZULTaVoFrame<ScriptedConstraint, ZULTaVoConstraint>;

class NetworkTest : public testing::Test {
 protected:
  using Log = std::vector<ZULTaVoObject*>;
  NetworkTest() {
    world.Open("ZULTavAbstractTypes");
    scripted.reset(ScriptedConstraint::MakeDescriptor());
    ScriptedConstraint::sPriority = 50;
    ScriptedConstraint::sLog.clear();
    ScriptedConstraint::sScript = nullptr;
  }
  ScriptedConstraint* AddScripted(ZULTaVoObject* value, unsigned short priority = 50) {
    ScriptedConstraint::sPriority = priority;
    const auto* type = static_cast<const ZULTaVoConstraintDescriptor*>(scripted.get());
    EXPECT_EQ(world.network.AddConstraint(type, &value, 1), 1);
    return ScriptedConstraint::sLast;
  }
  Log Run(Status expected = Status::kConsistent) {
    ScriptedConstraint::sLog.clear();
    EXPECT_EQ(world.network.Propagate(), expected);
    return ScriptedConstraint::sLog;
  }

  std::unique_ptr<ZULTaVoObjectDescriptor> scripted;
  World world;
};

TEST_F(NetworkTest, RunsByPriorityThenInOrderOfScheduling) {
  std::vector<ZULTaVoAny*> x;
  std::vector<ScriptedConstraint*> c;
  for (const int priority : {50, 10, 50, 10, 70}) {
    x.push_back(world.Add("bit int"));
    c.push_back(AddScripted(x.back(), static_cast<unsigned short>(priority)));
  }
  EXPECT_EQ(Run(), (Log{x[1], x[3], x[0], x[2], x[4]}));
  EXPECT_EQ(Run(), Log{});
  for (const int i : {4, 2, 0, 3, 1, 2}) world.network.PropagateValue(x[static_cast<size_t>(i)]);
  EXPECT_EQ(c[4]->ChangePriority(&world.network, 5), 1);  // while they wait
  EXPECT_EQ(c[2]->ChangePriority(&world.network, 60), 1);
  EXPECT_EQ(c[3]->ChangePriority(&world.network, 10), 0);
  EXPECT_EQ(Run(), (Log{x[4], x[3], x[1], x[0], x[2]}));
  world.network.ScheduleAll();
  EXPECT_EQ(Run(), (Log{x[4], x[1], x[3], x[0], x[2]}));
}

TEST_F(NetworkTest, MorePrioritiesThanQueuesStillRunEverythingOnce) {
  std::vector<ZULTaVoObject*> values;
  for (unsigned short i = 0; i < 300; ++i)
    AddScripted(values.emplace_back(world.Add("bit int")), static_cast<unsigned short>(i * 7));
  const Log log = Run();
  EXPECT_EQ(log.size(), values.size());
  EXPECT_TRUE(std::equal(log.begin(), log.begin() + 250, values.begin()));
}

TEST_F(NetworkTest, PassivationLastsForTheRun) {
  ZULTaVoAny* x = world.Add("bit int");
  AddScripted(x);
  ZULTaVoAny* y = world.Add("bit int");
  ASSERT_TRUE(world.Post("Equal", {y, x}));
  ScriptedConstraint::sScript = [&](ScriptedConstraint& self, const ZULTaVoObjectEnvironment& env) {
    static_cast<ZULTaVoInteger*>(x)->SetUpperBound(20);
    env.GetNetwork()->PropagateValue(x);
    self.Passivate();
    return 0;
  };
  EXPECT_EQ(Run(), Log{x}) << "neither its own change nor that of others wakes it";
  EXPECT_EQ(Run(), Log{});
  world.network.PropagateValue(x);
  EXPECT_EQ(Run(), Log{x});
  world.network.ScheduleAll();
  EXPECT_EQ(Run(), Log{x});
  world.Change(y, "3,9");
  EXPECT_EQ(Run(), Log{x}) << "a change that arrives through other constraints counts, too";
}

TEST_F(NetworkTest, OneFilterRunsOnValuesSetWithoutAWord) {
  ZULTaVoAny* x = world.Add("interval int", "0,9");
  ZULTaVoAny* y = world.Add("interval int", "3");
  ASSERT_TRUE(world.Post("UnequalTernary", {x, y, x}));
  Run();
  for (const auto& [text, status, after] : {
           std::tuple{"3,5", Status::kConsistent,    "4,5"},
           std::tuple{"2,3", Status::kConsistent,    "2"  },
           std::tuple{"3",   Status::kContradiction, "Nil"},
           std::tuple{"5,9", Status::kConsistent,    "5,9"},
           std::tuple{"2,3", Status::kConsistent,    "2"  },
  }) {
    ASSERT_TRUE(world.network.PushState());
    ASSERT_TRUE(world.network.SaveValue(x));
    SetTo(*x, text);
    EXPECT_EQ(world.network.FilterOnce(0), status);
    EXPECT_EQ(Show(*x), after) << text;
    world.network.PopState();
    EXPECT_EQ(Show(*x), "0,9");
  }
  AddScripted(x);
  ScriptedConstraint::sScript = [](ScriptedConstraint& self, auto&&...) {
    self.Passivate();
    return 0;
  };
  for (int i = 0; i < 2; ++i) EXPECT_EQ(world.network.FilterOnce(1), Status::kConsistent);
  EXPECT_EQ(ScriptedConstraint::sLog, (Log{x, x})) << "passivity does not outlast the call";
}

TEST_F(NetworkTest, StatusesOfARunAndWhatFollows) {
  ZULTaVoAny* x = world.Add("bit int");
  AddScripted(x);
  int answer = 4;
  ScriptedConstraint::sScript = [&](auto&&...) { return answer; };
  EXPECT_EQ(Run(Status::kBadArguments), Log{x});
  answer = 1;
  world.network.ScheduleAll();
  EXPECT_EQ(Run(Status::kContradiction), Log{x});
  EXPECT_EQ(Run(Status::kContradiction), Log{x}) << "a contradiction is not forgotten";
  answer = 0;
  ASSERT_TRUE(world.network.PushState());
  world.network.PopState();
  EXPECT_EQ(Run(), Log{x}) << "the level was opened before the fixpoint was reached";
  EXPECT_EQ(world.network.GetStatistics().runs, 4U);
  EXPECT_EQ(world.network.GetStatistics().filters, 4U);
}

TEST_F(NetworkTest, AFilterThatThrowsLosesNothing) {
  ZULTaVoAny* x = world.Add("interval int", "0,100");
  ZULTaVoAny* y = world.Add("interval int", "0,100");
  ASSERT_TRUE(world.Post("Equal", {y, x}));
  ASSERT_EQ(world.network.Propagate(), Status::kConsistent);
  ASSERT_TRUE(world.network.PushState());
  AddScripted(x);
  const std::function<void()> failures[] = {[] { throw std::bad_alloc(); }, [] { throw 1; }, [] {}};
  const auto* failure = failures;
  ScriptedConstraint::sScript = [&](ScriptedConstraint& self, const ZULTaVoObjectEnvironment&) {
    static_cast<ZULTaVoInteger*>(x)->SetUpperBound(20);  // and no word to the network
    self.Passivate();
    (*failure)();
    return 0;
  };
  Run(Status::kOutOfMemory);
  ++failure;
  EXPECT_EQ(Run(Status::kBadArguments), Log{x});
  EXPECT_EQ(Show(*y), "0,20");
  EXPECT_EQ(Run(Status::kBadArguments), Log{x});
  ++failure;
  EXPECT_EQ(Run(), Log{x});
  world.network.PopState();
  EXPECT_EQ(Show(*x) + " " + Show(*y), "0,100 0,100");
}

TEST_F(NetworkTest, EachNetworkGoesByItsOwnPrecisionAndWindow) {
  struct Side {
    double precision, trigLow, trigHigh;
    const char *below, *angle;
  };
  const Side sides[] = {
      {0.25, -10, 10,  "0,0.975", "0.5235987756,100"},
      {0.5,  50,  60,  "0,0.95",  "0,100"           },
      {0.25, -10, 0.1, "0,0.975", "0.1,100"         }
  };
  struct Made {
    World world;
    ZULTaVoAny *below, *angle;
  };
  std::vector<std::unique_ptr<Made>> made;
  for (const Side& side : sides) {
    ZULTaVoRealSettings settings;
    ASSERT_TRUE(settings.SetPrecision(side.precision) && !settings.SetPrecision(0));
    ASSERT_TRUE(settings.SetTrigLimits(side.trigLow, side.trigHigh));
    const ZULTaVoRealScope scope(&settings);
    World& network = made.emplace_back(std::make_unique<Made>())->world;
    ZULTaVoAny* one = network.Add("interval real", "0,1");
    ZULTaVoAny* sine = network.Add("interval real", "0.5,0.6");
    made.back()->below = network.Add("interval real", "0,1");
    made.back()->angle = network.Add("interval real", "0,100");
    ASSERT_TRUE(network.Post("LessTernary", {made.back()->below, one, made.back()->below}));
    ASSERT_TRUE(network.Post("Sine", {sine, made.back()->angle}));
  }
  for (std::size_t i = 0; i < made.size(); ++i) {
    EXPECT_EQ(made[i]->world.network.Propagate(), Status::kConsistent);
    EXPECT_EQ(Show(*made[i]->below), sides[i].below);
    EXPECT_EQ(Show(*made[i]->angle), sides[i].angle);
  }
  EXPECT_EQ(ZULTaVoReal::GetPrecision(), 1e-6);
  EXPECT_EQ(world.network.GetRealSettings(), nullptr);
}

TEST_F(NetworkTest, LimitAndInterruptKeepWhatWasNarrowedAndCanGoOn) {
  ZULTaVoAny* x = world.Add("interval int", "0,1000");
  ZULTaVoAny* y = world.Add("interval int", "0,1000");
  ASSERT_TRUE(world.Post("LessTernary", {x, y, x}) && world.Post("LessTernary", {y, x, y}));
  world.network.SetFilterLimit(100);
  EXPECT_EQ(world.network.Propagate(), Status::kLimit);
  EXPECT_EQ(world.network.GetStatistics().filters, 100U);
  const std::string narrowed = Show(*x);
  EXPECT_NE(narrowed, "0,1000");
  EXPECT_NE(narrowed, "Nil");
  std::atomic<bool> stop = true;
  world.network.SetInterrupt(&stop);
  world.network.SetFilterLimit(0);
  EXPECT_EQ(world.network.Propagate(), Status::kInterrupted);
  EXPECT_LE(world.network.GetStatistics().filters, 400U);
  stop = false;
  EXPECT_EQ(world.network.Propagate(), Status::kContradiction);
}

TEST_F(NetworkTest, WhatOnlyConfirmsASingleValueComesToAnEnd) {
  for (const char* type : {"bit int", "interval int", "interval real"}) {
    SCOPED_TRACE(type);
    World fresh;
    ZULTaVoObject* x = fresh.Add(type, "1");
    const auto* confirms = static_cast<const ZULTaVoConstraintDescriptor*>(scripted.get());
    for (int i = 0; i < 2; ++i) ASSERT_EQ(fresh.network.AddConstraint(confirms, &x, 1), 1);
    ScriptedConstraint::sScript = [](auto&&, const ZULTaVoObjectEnvironment& environment) {
      environment.GetNetwork()->PropagateValue(environment.GetArgument(0));
      return 0;
    };
    EXPECT_EQ(fresh.network.Propagate(), Status::kConsistent);
    EXPECT_LE(fresh.network.GetStatistics().filters, 4U);
  }
}

TEST_F(NetworkTest, SlowConvergenceOfRealsEnds) {
  const std::pair<const char*, const char*> rows[] = {
      {"0.999999", "-1e9,1e9"}, // x = 0.999999 x shrinks for ever
      {"0.999999", "Any"     },
      {"0.5",      "-1e9,1e9"},
      {"1.000001", "1,1e9"   },
  };
  for (const auto& [factor, from] : rows) {
    SCOPED_TRACE(factor);
    World fresh;
    ZULTaVoAny* x = fresh.Add("interval real", from);
    ASSERT_TRUE(fresh.Post("Multiplication", {x, fresh.Add("interval real", factor), x}));
    EXPECT_EQ(fresh.network.Propagate(), Status::kConsistent);
    EXPECT_LT(fresh.network.GetStatistics().filters, 200000U);
    EXPECT_FALSE(x->IsNil());
  }
  World fresh;
  ZULTaVoAny* x = fresh.Add("interval real", "0,1e6");
  ZULTaVoAny* y = fresh.Add("interval real", "0,1e6");
  ASSERT_TRUE(fresh.Post("LessTernary", {x, y, x}) && fresh.Post("LessTernary", {y, x, y}));
  EXPECT_EQ(fresh.network.Propagate(), Status::kConsistent) << "steps of a tenth of p are dropped";
  EXPECT_LT(fresh.network.GetStatistics().filters, 100U);
  fresh.network.SetNarrowingFraction(0);
  fresh.network.SetFilterLimit(1000);
  fresh.network.ScheduleAll();
  EXPECT_EQ(fresh.network.Propagate(), Status::kLimit);
  fresh.network.SetNarrowingFraction(-1);
  fresh.network.SetNarrowingFraction(1);  // neither is a share
  fresh.network.ScheduleAll();
  EXPECT_EQ(fresh.network.Propagate(), Status::kLimit);
}

/// A search that goes on from a stored path has not visited what lies beside it.
TEST_F(NetworkTest, WhatWasUndoneDoesNotDecideWhatIsPassedOn) {
  for (const bool detour : {false, true}) {
    SCOPED_TRACE(detour);
    ZULTaVoAny* x = world.Add("interval real", "0,100");
    ZULTaVoAny* trigger = world.Add("interval int", "0,100");
    AddScripted(x);
    AddScripted(trigger);
    ScriptedConstraint::sScript = [&](auto&, const ZULTaVoObjectEnvironment& environment) {
      auto* real = ZULTaVoCast<ZULTaVoReal>(x);
      if (environment.GetArgument(0) != trigger) return 0;
      real->SetUpperBound(real->GetUpperBound() - 0.6);
      world.network.PropagateValue(x);
      return 0;
    };
    Run();
    world.network.PropagateValue(trigger);
    EXPECT_EQ(Run(), Log{trigger}) << "0.6 of about 100 are not passed on";
    if (detour) {
      ASSERT_TRUE(world.network.PushState());
      world.Change(x, "0,50");
      EXPECT_EQ(Run(), Log{x});
      world.network.PopState();
    }
    world.network.PropagateValue(trigger);
    EXPECT_EQ(Run(), (Log{trigger, x})) << "but 1.2 are";
  }
}

TEST_F(NetworkTest, ADisequalityIsCalledWheneverItCanRemoveAValue) {
  for (const bool reversed : {false, true}) {
    ZULTaVoAny* x = world.Add("interval int", "5");
    ZULTaVoAny* y = world.Add("interval int", "3,9");
    ZULTaVoAny* low = world.Add("interval int", "0,9");
    ASSERT_TRUE(reversed ? world.Post("UnequalTernary", {y, x, y})
                         : world.Post("UnequalTernary", {x, y, x}));
    ASSERT_TRUE(world.Post("LessOrEqualTernary", {low, y, low}));
    Run();
    world.Change(low, "5,9");
    Run();
    EXPECT_EQ(Show(*y), "6,9") << "x was single before";
    world.Change(y, "Nil");
    Run(Status::kContradiction);
    SetTo(*y, "6,9");
    Run();
  }
}

TEST_F(NetworkTest, ADisequalityHoldsBetweenValuesOfAnyTwoTypes) {
  const char* kTypes[] = {"bit int", "interval int", "single int", "single real", "interval real"};
  for (const char* left : kTypes) {
    for (const char* right : kTypes) {
      SCOPED_TRACE(std::string(left) + " <> " + right);
      const auto start = [](const char* type) {
        return std::string_view(type).starts_with("single") ? "Any" : "3,9";
      };
      ZULTaVoAny* x = world.Add(left, start(left));
      ZULTaVoAny* y = world.Add(right, start(right));
      ASSERT_TRUE(world.Post("UnequalTernary", {x, y, x}));
      Run();
      for (const char* other : {"6", "5"}) {
        ASSERT_TRUE(world.network.PushState());
        for (const auto& [value, text] : {
                 std::pair{x, "5"  },
                 {y, other}
        }) {
          world.Change(value, text);
        }
        Run(*other == '5' ? Status::kContradiction : Status::kConsistent);
        world.network.PopState();
      }
    }
  }
}

TEST_F(NetworkTest, ConstantsAreKnownToConstraintsAndComeBackAfterAFailure) {
  ZULTaVoAny* early = world.Add("bit int", "5");
  ZULTaVoAny* late = world.Add("single int", "7");
  world.network.SetConstant(early);
  int constants = 0;
  ScriptedConstraint::sScript = [&](ScriptedConstraint&, const ZULTaVoObjectEnvironment& env) {
    constants += env.IsArgumentConstant(env.GetArgument(0));
    EXPECT_EQ(env.IsArgumentConstant(nullptr), 0);
    EXPECT_EQ(env.IsArgumentConstant(world.network.GetObject(2)), 0);
    EXPECT_EQ(env.GetArgument(1), nullptr);
    return 0;
  };
  AddScripted(early);
  AddScripted(late);
  world.network.SetConstant(late);
  world.network.SetConstant(ScriptedConstraint::sLast);
  Run();
  EXPECT_EQ(constants, 2);
  EXPECT_TRUE(world.network.IsConstant(early) && world.network.IsConstant(late));

  EXPECT_EQ(world.network.GetConstant(late), nullptr);
  for (const auto number : {ZULTaVoConstant::Integer(INT64_MIN), ZULTaVoConstant::Real(0, 1e300)}) {
    ASSERT_TRUE(world.network.SetConstant(late, number));
    EXPECT_EQ(*world.network.GetConstant(late), number);
  }

  ZULTaVoAny* x = world.Add("bit int", "0,9");
  EXPECT_FALSE(world.network.IsConstant(x));
  ASSERT_TRUE(world.Post("LessTernary", {early, x, early}));  // 5 < x, the constant as receiver
  Run();
  ASSERT_TRUE(world.network.PushState());
  world.Change(x, "3");
  Run(Status::kContradiction);
  world.network.PopState();
  EXPECT_EQ(Show(*early), "5");
  EXPECT_EQ(Show(*x), "6,9");
  Run();
}

TEST_F(NetworkTest, ObjectsAndConstraintsThatDoNotFitAreRefused) {
  ZULTaVoNetwork& network = world.network;
  const auto* any = world.Open("ZULTavAbstractTypes").FindType("ZULTaVoAny");
  const auto* sum = world.Open("ZULTavAbstractTypes").FindConstraint("ZULTaVoAdditionConstraint");
  EXPECT_EQ(network.AddObject(any), nullptr) << "an abstract type has no objects";
  EXPECT_EQ(network.AddObject(sum), nullptr) << "a constraint is no value";
  EXPECT_EQ(network.AddObject(nullptr), nullptr);
  EXPECT_EQ(network.AddObject(world.Type("bit int"), nullptr), nullptr);
  EXPECT_EQ(network.GetNumberOfObjects(), 0U);

  ZULTaVoAny* x = world.Add("bit int", "0,9");
  ZULTaVoAny* copy = network.AddObject(world.Type("bit int"), x);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(Show(*copy), "0,9");
  AddScripted(x);
  ZULTaVoObject* constraint = ScriptedConstraint::sLast;
  World other;
  ZULTaVoAny* foreign = other.Add("bit int");
  ZULTaVoAny* truth = world.Add("single bool");
  for (ZULTaVoObject* bad : Log{foreign, constraint, truth, nullptr})
    EXPECT_FALSE(world.Post("Addition", {x, copy, bad}));
  EXPECT_FALSE(world.Post("Addition", {x, copy}));
  EXPECT_FALSE(world.Post("Missing", {x, copy}));
  EXPECT_EQ(network.GetNumberOfConstraints(), 1U);
  Run();
  for (ZULTaVoObject* strange : Log{foreign, constraint, nullptr}) {
    network.PropagateValue(strange);
    EXPECT_TRUE(network.SaveValue(strange));
    network.SetConstant(strange);
    EXPECT_FALSE(network.SetConstant(strange, ZULTaVoConstant::Integer(1)));
    EXPECT_EQ(network.GetType(strange), nullptr);
  }
  EXPECT_EQ(Run(), Log{});
  EXPECT_EQ(network.GetObject(3), nullptr);
  network.PopState();
  EXPECT_EQ(network.GetDepth(), 0U);
}

// --- Random networks ----------------------------------------------------------------------------

namespace {

struct Model {
  std::vector<ZULTaVoAny*> values;
  std::vector<std::vector<ZULTaVoObject*>> constraints;
  std::vector<const ZULTaVoConstraintDescriptor*> kinds;
};

/// Integers of both modules and constraints between those of one type.
Model BuildRandom(World& world, unsigned seed, int size) {
  constexpr const char* kKinds[] = {"Addition",    "Multiplication", "Minimum",   "Maximum",
                                    "Absolute",    "NumberNegation", "Remainder", "Next",
                                    "LessTernary", "UnequalTernary", "Equal"};
  std::mt19937 random(seed);
  const auto draw = [&](std::size_t n) { return random() % n; };
  Model model;
  for (int i = 0; i < size; ++i)
    model.values.push_back(
        world.Add(i % 2 == 0 ? "bit int" : "interval int", i % 3 == 0 ? "-9,12" : "-20,20"));
  for (int i = 0; i < size; ++i) {
    const std::size_t parity = draw(2);
    const auto pick = [&] { return model.values[2 * draw(model.values.size() / 2) + parity]; };
    const char* kind = kKinds[draw(std::size(kKinds))];
    const std::string name = std::string("ZULTaVo") + kind + "Constraint";
    const auto* type = world.Open("ZULTavAbstractTypes").FindConstraint(name);
    std::vector<ZULTaVoObject*> arguments;
    while (arguments.size() < type->GetNumberOfArguments()) arguments.push_back(pick());
    if (name.ends_with("TernaryConstraint") && draw(2) == 0) arguments[2] = arguments[0];
    EXPECT_TRUE(world.Post(kind, arguments));
    model.constraints.push_back(arguments);
    model.kinds.push_back(type);
  }
  return model;
}

std::string ShowAll(const Model& model) {
  std::string all;
  for (const ZULTaVoAny* value : model.values)
    all += Show(*value) + " #" + std::to_string(value->GetCardinality()) + "; ";
  return all;
}

/// Every filter in turn until a whole round changes nothing; false on a contradiction.
bool RunNaively(const Model& model) {
  for (std::string before, after = ShowAll(model); before != after; after = ShowAll(model)) {
    before = after;
    for (std::size_t i = 0; i < model.kinds.size(); ++i) {
      std::vector<std::max_align_t> memory(model.kinds[i]->GetObjectSize());
      auto* constraint = static_cast<ZULTaVoConstraint*>(model.kinds[i]->InitObject(memory.data()));
      const ZULTaVoObjectEnvironment environment(
          nullptr, model.constraints[i].data(), static_cast<unsigned>(model.constraints[i].size()));
      const int status = constraint->Filter(environment, 0);
      model.kinds[i]->DestroyObject(constraint);
      if (status != 0) return false;
    }
  }
  return true;
}

}  // namespace

TEST(NetworkFixpointTest, EqualsThatOfNaiveIterationAndDoesNotDependOnAddresses) {
  int consistent = 0;
  for (unsigned seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE(seed);
    World queued, naive;
    const Model a = BuildRandom(queued, seed, 12);
    const std::string initial = ShowAll(a);
    const bool holds = queued.network.Propagate() == Status::kConsistent;
    const std::string narrowed = ShowAll(a);
    const auto statistics = queued.network.GetStatistics();

    const std::vector<char> displacement(seed * 1000);
    const Model b = BuildRandom(naive, seed, 12);
    ASSERT_EQ(ShowAll(b), initial);
    ASSERT_EQ(RunNaively(b), holds);
    consistent += holds;
    ASSERT_TRUE(!holds || ShowAll(b) == narrowed);

    World again;
    const Model c = BuildRandom(again, seed, 12);
    again.network.Propagate();
    ASSERT_EQ(ShowAll(c), narrowed);
    ASSERT_EQ(again.network.GetStatistics().filters, statistics.filters);
    ASSERT_EQ(again.network.GetStatistics().narrowings, statistics.narrowings);
  }
  EXPECT_GT(consistent, 30);
}

TEST(NetworkTrailTest, NestedLevelsComeBackBitForBit) {
  for (unsigned seed = 0; seed < 40; ++seed) {
    SCOPED_TRACE(seed);
    World world;
    Model model = BuildRandom(world, seed, 20);
    for (const char* type : {"interval real", "single real", "single bool", "interval positive"})
      model.values.push_back(world.Add(type));
    const auto bytes = [&] {
      std::string all;
      for (const ZULTaVoAny* value : model.values)
        all.append(reinterpret_cast<const char*>(value),
                   world.network.GetType(value)->GetObjectSize());
      return all;
    };
    std::mt19937 random(seed);
    std::vector<std::string> levels;
    for (int step = 0; step < 400; ++step) {
      const bool open = world.network.Propagate() == Status::kConsistent && levels.size() < 12;
      if (levels.empty() && !open) break;
      if (open && random() % 3 != 0) {
        levels.push_back(bytes());
        ASSERT_TRUE(world.network.PushState());
        ZULTaVoAny* value = model.values[random() % model.values.size()];
        world.Change(value, std::to_string(random() % 8));
      } else if (!levels.empty()) {
        world.network.PopState();
        ASSERT_EQ(world.network.GetDepth(), levels.size() - 1);
        ASSERT_TRUE(bytes() == levels.back());
        levels.pop_back();
      }
    }
  }
}
