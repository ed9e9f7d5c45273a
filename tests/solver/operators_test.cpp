// What the operator factories post, and what each framework constraint narrows, on the values of
// the number module.

#include <algorithm>
#include <set>
#include <sstream>

#include "tests/solver/world.h"

using Texts = std::vector<const char*>;
using Shown = std::vector<std::string>;
using Status = ZULTaVoNetwork::Status;

namespace {

Shown ShowAll(const std::vector<ZULTaVoAny*>& values) {
  Shown texts;
  for (const ZULTaVoAny* value : values) texts.push_back(Show(*value));
  return texts;
}

constexpr const char* SB = "single bool";
constexpr const char* SI = "single int";
constexpr const char* II = "interval int";
constexpr const char* SR = "single real";
constexpr const char* IR = "interval real";

struct OperatorRow {
  const char* name;
  const char* shape;
  Texts types;   // operands, then the result
  Texts before;  // empty: contradiction
  Texts after;
};

struct ConstraintRow {
  const char* name;
  const char* type;  // of all arguments
  Texts before, after;
};

}  // namespace

TEST(OperatorTest, EachFactoryPostsItsConstraintInEveryDirection) {
  const OperatorRow rows[] = {
      {"+",      "Binary",           {II, SR, IR}, {"1,2", "2.5", "Any"}, {"1,2", "2.5", "3.5,4.5"}         },
      {"+",      "Binary",           {II, SR, IR}, {"0,9", "2.5", "4,6"}, {"2,3", "2.5", "4.5,5.5"}         },
      {"<",      "SymBinary",        {SI, IR, IR}, {"3", "0,10", "Any"},  {"3", "3.0000001,10", "3"}        },
      {"-",      "FirstInverse",     {II, SR, IR}, {"5,9", "2.5", "Any"}, {"5,9", "2.5", "2.5,6.5"}         },
      {"-",      "FirstInverse",     {II, SR, IR}, {"5,9", "2.5", "3"},   {}                                },
      {">>",     "SecondInverse",    {II, SI, SB}, {"0,9", "4", "1"},     {"5,9", "4", "1"}                 },
      {"<==",    "SecondInverseSym", {SI, IR, SB}, {"3", "4,5", "Any"},   {"3", "4,5", "1"}                 },
      {"->",     "SecondInverseSym", {SB, SB, SB}, {"1", "Any", "1"},     {"1", "1", "1"}                   },
      {"(real)", "Unary",            {SI, IR},     {"7", "Any"},          {"7", "7"}                        },
      {"asin",   "InverseUnary",     {II, IR},     {"0,1", "0,1"},        {"0", "0"}                        },
      {"sign",   "InverseUnary",     {IR, II},     {"2,5", "Any"},        {"2,5", "1"}                      },
      {"(int)",  "InverseUnary",     {SR, SI},     {"3", "Any"},          {"3", "3"}                        },
      {"(int)",  "InverseUnary",     {SR, SI},     {"2.5", "Any"},        {}                                },
      {"(int)",  "InverseUnary",     {IR, II},     {"2.5,7.2", "Any"},    {"3,7", "3,7"}                    },
      {"sqrt",   "BufferedUnary",    {SI, SR},     {"9", "Any"},          {"9", "3"}                        },
      {"sqrt",   "BufferedUnary",    {SI, SR},     {"Any", "3"},          {"9", "3"}                        },
      {"sqrt",   "BufferedUnary",    {II, IR},     {"2,10", "Any"},       {"2,10", "1.414213562,3.16227766"}},
      {"Pi",     "Constant",         {IR},         {"Any"},               {"3.141592653,3.141592654"}       },
      {"==",     "SecondInverse",    {IR, IR, SB}, {"0,1", "2,3", "Any"}, {"0,1", "2,3", "0"}               },
      {"==",     "SecondInverse",    {SR, IR, SB}, {"2", "2", "Any"},     {"2", "2", "1"}                   },
      {"==",     "SecondInverse",    {IR, IR, SB}, {"0,2", "2,3", "Any"}, {"0,2", "2,3", "Any"}             },
      {"<<",     "SecondInverseSym", {IR, SR, SB}, {"0,1", "2", "Any"},   {"0,1", "2", "1"}                 },
      {"<<",     "SecondInverseSym", {IR, SR, SB}, {"2,3", "2", "Any"},   {"2,3", "2", "0"}                 },
      {"<<",     "SecondInverseSym", {IR, IR, SB}, {"0,2", "1,3", "Any"}, {"0,2", "1,3", "Any"}             },
  };
  for (const OperatorRow& row : rows) {
    SCOPED_TRACE(std::string(row.name) + " " + row.before[0]);
    World world;
    std::vector<ZULTaVoAny*> values;
    std::vector<ZULTaVoObject*> objects;
    std::vector<const ZULTaVoObjectDescriptor*> types;
    for (std::size_t i = 0; i < row.types.size(); ++i) {
      objects.push_back(values.emplace_back(world.Add(row.types[i], row.before[i])));
      types.push_back(world.Type(row.types[i]));
    }
    const auto count = static_cast<unsigned>(types.size() - 1);
    const ZULTaVoOperatorDescriptor* found = nullptr;
    for (const auto* candidate : world.Open("ZULTavNumbers").FindOperators(row.name)) {
      bool fits = candidate->GetNumberOfArguments() == count;
      for (unsigned i = 0; i < count; ++i) fits = fits && candidate->GetOperandType(i) == types[i];
      if (fits && candidate->GetResultType() == types.back()) found = candidate;
    }
    ASSERT_NE(found, nullptr);
    EXPECT_STREQ(found->GetShapeName(), row.shape);
    ZULTaVoObject* const truth = world.Add(types.back() == world.Type(SB) ? SI : SB);
    EXPECT_EQ(found->Post(world.network, objects.data(), truth), 0) << "of another type";
    EXPECT_EQ(found->Post(world.network, objects.data(), nullptr), 0);
    ASSERT_EQ(found->Post(world.network, objects.data(), objects.back()), 1);
    const bool consistent = world.network.Propagate() == Status::kConsistent;
    EXPECT_EQ(consistent ? ShowAll(values) : Shown(), Shown(row.after.begin(), row.after.end()));
  }
}

TEST(OperatorTest, ResolvesTheExactTypesFirstThenBaseTypesInOrder) {
  World world;
  const auto find = [&](const char* name, Texts operands) {
    std::vector<const ZULTaVoObjectDescriptor*> types;
    for (const char* type : operands) types.push_back(world.Type(type));
    const auto* found = world.Open("ZULTavNumbers")
                            .FindOperator(name, types.data(), static_cast<unsigned>(types.size()));
    std::ostringstream text;
    if (found != nullptr) found->PrintOn(text);
    return text.str();
  };
  EXPECT_EQ(find("+", {SI, II}), "+ (single int, interval int) -> interval int");
  EXPECT_EQ(find("+", {"interval angle", "interval positive"}),
            "+ (interval real, interval real) -> interval real");
  EXPECT_EQ(find("+", {"bit int", "bit int"}),
            "+ (ZULTaVoInteger, ZULTaVoInteger) -> interval int");
  EXPECT_EQ(find("+", {"bit int", SI}), "+ (ZULTaVoInteger, single int) -> interval int");
  EXPECT_EQ(find("-", {II}), "- (interval int) -> interval int");
  EXPECT_EQ(find("+", {SB, SI}), "");
  EXPECT_EQ(find("+", {SI}), "");
  EXPECT_EQ(find("plus", {SI, SI}), "");
}

// Those of integers and booleans are compared with brute force as operators.
TEST(FrameworkConstraintTest, NarrowsInEveryDirection) {
  const ConstraintRow rows[] = {
      {"Power",          II, {"Any", "2,3", "2"},       {"4,9", "2,3", "2"}                   },
      {"Power",          II, {"9", "0,9", "2"},         {"9", "3", "2"}                       },
      {"Power",          II, {"8", "2", "Any"},         {"8", "2", "3"}                       },
      {"Remainder",      II, {"Any", "17", "5"},        {"2", "17", "5"}                      },
      {"Remainder",      II, {"2", "15,19", "5"},       {"2", "17", "5"}                      },
      {"Remainder",      II, {"1", "7", "2,9"},         {"1", "7", "2,6"}                     },
      {"Exponent",       IR, {"Any", "0,1"},            {"1,2.718281828", "0,1"}              },
      {"Exponent",       IR, {"1,2", "-9,9"},           {"1,2", "0,0.6931471806"}             },
      {"Sqrt",           IR, {"Any", "4,9"},            {"2,3", "4,9"}                        },
      {"Sqrt",           IR, {"2,3", "0,99"},           {"2,3", "4,9"}                        },
      {"Sine",           IR, {"Any", "0,1"},            {"0,0.8414709848", "0,1"}             },
      {"Sine",           IR, {"0.5,2", "0,1"},          {"0.5,0.8414709848", "0.5235987756,1"}},
      {"Cosine",         IR, {"Any", "0,1"},            {"0.5403023059,1", "0,1"}             },
      {"Cosine",         IR, {"-1,0", "0,3"},           {"-0.9899924966,0", "1.570796327,3"}  },
      {"Tangent",        IR, {"Any", "0,1"},            {"0,1.557407725", "0,1"}              },
      {"Tangent",        IR, {"1,9", "0,1"},            {"1,1.557407725", "0.7853981634,1"}   },
      {"Round",          IR, {"Any", "1.4,2.6"},        {"1,3", "1.4,2.6"}                    },
      {"Floor",          IR, {"Any", "1.5,2.5"},        {"1,2", "1.5,2.5"}                    },
      {"Ceil",           IR, {"Any", "1.5,2.5"},        {"2,3", "1.5,2.5"}                    },
      {"PiValue",        IR, {"3,4"},                   {"3.141592653,3.141592654"}           },
      {"EValue",         IR, {"2,3"},                   {"2.718281828,2.718281829"}           },
 // what a domain's own inverse would contradict, and must not
      {"Multiplication", SI, {"6", "3", "2"},           {"6", "3", "2"}                       },
      {"Power",          SI, {"9", "Any", "2"},         {"9", "Any", "2"}                     },
      {"Power",          SI, {"9", "3", "2"},           {"9", "3", "2"}                       },
      {"Remainder",      SI, {"1", "7", "Any"},         {"1", "7", "Any"}                     },
      {"Remainder",      SR, {"0.1", "0.3", "0.2"},     {"0.1", "0.3", "0.2"}                 },
      {"Remainder",      II, {"Any", "95,97", "10,50"}, {"0,48", "95,97", "10,50"}            },
      {"Remainder",      II, {"-2,4", "5", "4,6"},      {"0,1", "5", "4,5"}                   },
  };
  for (const ConstraintRow& row : rows) {
    SCOPED_TRACE(std::string(row.name) + " " + row.before[0] + " " + row.before.back());
    World world;
    std::vector<ZULTaVoAny*> values;
    for (const char* text : row.before) values.push_back(world.Add(row.type, text));
    ASSERT_TRUE(world.Post(row.name, {values.begin(), values.end()}));
    EXPECT_EQ(world.network.Propagate(), Status::kConsistent);
    EXPECT_EQ(ShowAll(values), Shown(row.after.begin(), row.after.end()));
  }
}

TEST(OperatorTest, ConstraintsCarryTheirRules) {
  struct Row {
    const char* op;
    Texts types;  // operands, then the result
    ZULTaVoRule rule;
  } const rows[] = {
      {"-",           {II, II, II}, ZULTaVoRule::kSum        },
      {"*",           {IR, IR, IR}, ZULTaVoRule::kProduct    },
      {"/",           {II, II, II}, ZULTaVoRule::kProduct    },
      {"/",           {SI, SR, SR}, ZULTaVoRule::kQuotient   },
      {"/",           {II, IR, IR}, ZULTaVoRule::kQuotient   },
      {"<",           {II, II, II}, ZULTaVoRule::kLessTernary},
      {"ln",          {IR, IR},     ZULTaVoRule::kExp        },
      {"PrimeNumber", {II, SB},     ZULTaVoRule::kPrimality  },
  };
  World world;
  for (const Row& row : rows) {
    std::vector<const ZULTaVoObjectDescriptor*> types;
    std::vector<ZULTaVoObject*> objects;
    for (const char* type : row.types) {
      types.push_back(world.Type(type));
      objects.push_back(world.Add(type));
    }
    const auto* found =
        world.Open("ZULTavNumbers")
            .FindOperator(row.op, types.data(), static_cast<unsigned>(types.size() - 1));
    ASSERT_TRUE(found != nullptr && found->Post(world.network, objects.data(), objects.back()));
    EXPECT_EQ(world.network.GetRule(world.network.GetNumberOfConstraints() - 1), row.rule)
        << row.op;
  }
}

TEST(FrameworkConstraintTest, TakesListsOfAnyLength) {
  const struct {
    const char* name;
    Texts types;  // of the result, then of all operands
    Texts before, after;
  } rows[] = {
      {"AllDifferent", {II, II}, {"1,3", "2", "1,2", "2,9"}, {"3", "2", "1", "4,9"}  },
      {"AllDifferent", {II, II}, {"7", "1,9", "7"},          {}                      },
      {"AllDifferent", {SI, SI}, {"Any", "4", "5"},          {"Any", "4", "5"}       },
      {"AllDifferent", {SB, SB}, {"Any", "1"},               {"0", "1"}              },
      {"Count",        {II, SB}, {"Any", "1", "Any", "0"},   {"1,2", "1", "Any", "0"}},
      {"Count",        {II, SB}, {"3,9", "1", "Any", "Any"}, {"3", "1", "1", "1"}    },
      {"Count",        {SI, SB}, {"1", "Any", "1", "Any"},   {"1", "0", "1", "0"}    },
      {"Count",        {SI, SB}, {"Any", "Any", "1", "1"},   {"Any", "Any", "1", "1"}},
      {"Count",        {SI, SB}, {"Any", "0", "1", "1"},     {"2", "0", "1", "1"}    },
      {"Count",        {II, SB}, {"3,9", "1", "0", "Any"},   {}                      },
  };
  for (const auto& row : rows) {
    World world;
    std::vector<ZULTaVoAny*> values;
    for (const char* text : row.before)
      values.push_back(world.Add(row.types[values.empty() ? 0 : 1], text));
    SCOPED_TRACE(row.name);
    ASSERT_TRUE(world.Post(row.name, {values.begin(), values.end()}));
    const bool consistent = world.network.Propagate() == Status::kConsistent;
    EXPECT_EQ(consistent ? ShowAll(values) : Shown(), Shown(row.after.begin(), row.after.end()));
  }
  World world;
  constexpr long kMany = 200;
  std::vector<ZULTaVoObject*> many;
  for (long i = kMany; i > 0; --i)
    many.push_back(world.Add(II, ("1," + std::to_string(i)).c_str()));
  ASSERT_TRUE(world.Post("AllDifferent", many));
  EXPECT_FALSE(world.Post("AllDifferent", {many[0]})) << "too few";
  many[1] = world.Add(SB);
  EXPECT_FALSE(world.Post("AllDifferent", {many[1], many[0], nullptr}));
  EXPECT_FALSE(world.Post("Count", many)) << "an operand is no truth value";
  EXPECT_EQ(world.network.Propagate(), Status::kConsistent);
  EXPECT_EQ(Show(*static_cast<ZULTaVoAny*>(many[0])), std::to_string(kMany));

  const ZULTaVoObjectEnvironment environment(&world.network, many.data(), kMany, 1U);
  world.network.SetConstant(many[kMany - 1]);
  const std::pair<std::size_t, int> places[] = {
      {0,         1},
      {1,         0},
      {40,        0},
      {kMany - 1, 1},
  };
  for (const auto& [place, expected] : places)
    EXPECT_EQ(environment.IsArgumentConstant(many[place]), expected) << place;
}

TEST(FrameworkConstraintTest, RefusesMissingForeignAndNilArguments) {
  World world;
  std::set<ZULTaVoRule> rules = {ZULTaVoRule::kNone};
  ZULTaVoAny* nil[] = {world.Add(II, "Nil"), world.Add(IR, "Nil"), world.Add(SB, "Nil")};
  auto descriptors = world.Open("ZULTavAbstractTypes").GetDescriptors();
  descriptors.push_back(world.Open("ZULTavNumbers").FindConstraint("PrimeNumber"));
  for (const auto* descriptor : descriptors) {
    if (descriptor->GetKind() != ZULTaVoObjectDescriptor::Kind::kConstraint) continue;
    SCOPED_TRACE(descriptor->GetName());
    const auto& type = static_cast<const ZULTaVoConstraintDescriptor&>(*descriptor);
    std::vector<std::max_align_t> memory(type.GetObjectSize());
    EXPECT_TRUE(rules.insert(type.GetRule()).second) << "a rule of its own";
    auto* constraint = static_cast<ZULTaVoConstraint*>(type.InitObject(memory.data()));
    const auto filter = [&](std::vector<ZULTaVoObject*> arguments) {
      const auto count = static_cast<unsigned>(arguments.size());
      return constraint->Filter(ZULTaVoObjectEnvironment(nullptr, arguments.data(), count), 0);
    };
    std::vector<ZULTaVoObject*> fitting;
    for (unsigned i = 0; i < type.GetNumberOfArguments(); ++i)
      for (ZULTaVoAny* value : nil)
        if (type.GetArgument(i).type->IsMatched(world.network.GetType(value))) {
          fitting.push_back(value);
          break;
        }
    ASSERT_EQ(fitting.size(), type.GetNumberOfArguments());
    EXPECT_EQ(filter(fitting), kFilterContradiction);
    for (std::size_t i = 0; i < fitting.size(); ++i) {
      for (ZULTaVoObject* bad :
           {static_cast<ZULTaVoObject*>(nullptr), static_cast<ZULTaVoObject*>(constraint)}) {
        auto arguments = fitting;
        arguments[i] = bad;
        EXPECT_EQ(filter(arguments), kFilterBadArguments);
      }
    }
    EXPECT_EQ(filter({}), kFilterBadArguments);
    type.DestroyObject(constraint);
  }
}
