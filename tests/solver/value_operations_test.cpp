// The operations that domains inherit, on every mix of domain kinds: checked against the values
// that the domains hold.

#include <cmath>

#include "tests/solver/world.h"

namespace {

struct Sample {
  ZULTaVoAny* value;
  std::vector<double> members;  // of a real interval: its ends and points between
};

using Decide = int (*)(const ZULTaVoScalar&, const ZULTaVoScalar&, ZULTaVoBoolean&);
struct Relation {
  const char* name;
  Decide decide;
  bool (*holds)(double, double);
};

const Relation kRelations[] = {
    {"equal",         [](auto& x, auto& y, auto& t) { return x.CalcIsEqual(y, t); },
     [](double a, double b) { return a == b; }},
    {"less or equal", [](auto& x, auto& y, auto& t) { return x.CalcIsLessOrEqual(y, t); },
     [](double a, double b) { return a <= b; }},
    {"less",          [](auto& x, auto& y, auto& t) { return x.CalcIsLess(y, t); },
     [](double a, double b) { return a < b; } },
};

std::vector<Sample> MakeSamples(World& world) {
  std::vector<Sample> samples;
  const auto add = [&](const char* type, int low, int high, double step) {
    Sample sample{world.Add(type, std::to_string(low) + "," + std::to_string(high)), {}};
    for (double v = low; v <= high; v += step) sample.members.push_back(v);
    samples.push_back(sample);
  };
  for (int low = -2; low <= 2; ++low) {
    add("single int", low, low, 1);
    add("single real", low, low, 1);
    for (int high = low; high <= 3; ++high) {
      for (const char* type : {"interval int", "bit int"}) add(type, low, high, 1);
      add("interval real", low, high, 0.5);
    }
  }
  samples.push_back({
      world.Add("single int"), {-1e6, -2, -1, 0, 1, 2, 1e6}
  });
  samples.push_back({
      world.Add("single real"), {-1e6, -1, 0, 0.5, 1, 1e6}
  });
  samples.push_back({world.Add("single bool", "0"), {0}});
  samples.push_back({world.Add("single bool", "1"), {1}});
  samples.push_back({
      world.Add("single bool"), {0, 1}
  });
  for (const char* type :
       {"single int", "interval int", "single real", "interval real", "bit int", "single bool"})
    samples.push_back({world.Add(type, "Nil"), {}});
  return samples;
}

bool Comparable(const Sample& x, const Sample& y) {
  return x.value->IsDerivedFrom(ZULTaVoBoolean::sIdent) ==
         y.value->IsDerivedFrom(ZULTaVoBoolean::sIdent);
}

}  // namespace

TEST(ValueOperationsTest, DecisionsAreTrueOfAllMembersAndMadeForSingleValues) {
  World world;
  const std::vector<Sample> samples = MakeSamples(world);
  auto& truth = static_cast<ZULTaVoBoolean&>(*world.Add("single bool"));
  int decided = 0;
  for (const Sample& x : samples) {
    for (const Sample& y : samples) {
      for (const Relation& relation : kRelations) {
        SCOPED_TRACE(std::string(relation.name) + ": " + world.network.GetType(x.value)->GetName() +
                     " " + Show(*x.value) + ", " + world.network.GetType(y.value)->GetName() + " " +
                     Show(*y.value));
        const std::string before = Show(*x.value) + Show(*y.value);
        const auto decide = [&] {
          return relation.decide(static_cast<const ZULTaVoScalar&>(*x.value),
                                 static_cast<const ZULTaVoScalar&>(*y.value), truth);
        };
        truth.SetNil();
        ASSERT_EQ(decide(), 0) << "a Nil truth stays";
        truth.SetAny();
        const int answer = decide();
        ASSERT_EQ(answer, !truth.IsAny());
        ASSERT_EQ(Show(*x.value) + Show(*y.value), before) << "operands are read only";
        const bool empty = x.members.empty() || y.members.empty();
        ASSERT_EQ(truth.IsNil(), empty);
        if (empty) continue;
        bool possible = false, deniable = false;
        for (const double a : x.members)
          for (const double b : y.members) (relation.holds(a, b) ? possible : deniable) = true;
        if (!Comparable(x, y)) {
          ASSERT_EQ(answer, 0);
        } else {
          ASSERT_FALSE(truth.IsTrue() && deniable);
          ASSERT_FALSE(truth.IsFalse() && possible);
          ASSERT_TRUE(answer || x.members.size() != 1 || y.members.size() != 1);
          decided += answer;
        }
      }
    }
  }
  EXPECT_GT(decided, 2000);
}

TEST(ValueOperationsTest, Widths) {
  struct Row {
    const char *type, *text;
    double width, relative;  // at scale 2
  } rows[] = {
      {"interval int",  "1,3",  2, 2.0 / 3},
      {"interval int",  "5",    0, 0      },
      {"interval int",  "Nil",  0, 0      },
      {"interval real", "-8,0", 8, 1      },
      {"interval real", "0,1",  1, 0.5    },
      {"single real",   "7",    0, 0      },
      {"single bool",   "Any",  1, 0.5    },
      {"single bool",   "1",    0, 0      },
      {"single bool",   "Nil",  0, 0      },
  };
  World world;
  for (const Row& row : rows) {
    const ZULTaVoAny* value = world.Add(row.type, row.text);
    EXPECT_EQ(value->GetWidth(), row.width) << row.type << ' ' << row.text;
    EXPECT_EQ(value->GetRelativeWidth(2), row.relative) << row.type << ' ' << row.text;
  }
}
