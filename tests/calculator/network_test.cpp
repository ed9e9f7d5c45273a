#include <gtest/gtest.h>

#include <sstream>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "tests/calculator/calculator_world.h"

namespace {

TEST(NetworkTest, NoVariableOrConstraintIsAddedWithoutNeed) {
  const struct {
    std::string source;
    std::size_t objects, constraints;
  } kRows[] = {
      {"x, y : int; x < y; x = y; x <> y; x >= y;",           2, 4},
      {"x : int; x > 3; x > 3; x <= 3; x = 3; 3 < x;",        2, 5}, // the constant is shared
      {"x, y : int; x = y + 1; y * 2 = x;",                   4, 2}, // no equality of its own
      {"x, y : int; x + y = 10;",                             3, 1},
      {"x, y, z : int; z = x*y + x*y;",                       4, 2}, // x*y exists once
      {"x, y, z : int; z = x*y; z = x*y;",                    3, 1},
      {"x, y : int; x*y = 1; x*y = 2;",                       4, 2},
      {"x, y, z : int; x + y = y * z;",                       4, 2},
      {"x : int; x = x + 1;",                                 3, 2}, // nothing stands in here
      {"x, y : int; x << y; x == y; y >> x;",                 3, 3}, // one object is True
      {"x, y : int; p : bool; p == (x << y); p -> (x << y);", 5, 3},
      {"p, q : bool; p = (q || ~p); p;",                      4, 3},
      {"a : angle; x, y : real; a = x + y; a > x;",           3, 2},
      {"s : single int; x : int; s = x; x = s; x < s;",       2, 3},
      {"s : single int; x : int; x > s;",                     3, 1}, // a wider result
      {"s : single int; x : int; s = x + 1;",                 4, 2}, // of another type
      {"x : int; r : real; r = x / 2.0;",                     4, 2},
      {"x : int; 2 < 3; x = 2 + 3;",                          2, 1},
      {"u[1..5] : int; b : single real;",                     6, 0},
      {"x, y : real; y = -sin(x)^2 + sin(x);",                6, 4},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    const Reading reading = ReadModel(row.source);
    ASSERT_EQ(reading.ErrorText(), "");
    EXPECT_EQ(reading.model->Network().GetNumberOfObjects(), row.objects);
    EXPECT_EQ(reading.model->Network().GetNumberOfConstraints(), row.constraints);
  }
}

TEST(NetworkTest, ChainTakesOneConstraintForEachLink) {
  for (const std::string& source :
       {std::string("x[1..n] : int = [1, Max]; x[1] = 1; for i in 1..n-1 : x[i+1] = x[i] + 1;"),
        std::string(
            "x[1..n] : int = [1, Max]; x[1] = 1; forall(i in 1..n-1) x[i] + 1 = x[i+1];")}) {
    const Reading reading = ReadModel(source, Definitions{
                                                  {"n", "20000"}
    });
    ASSERT_EQ(reading.ErrorText(), "");
    ZULTaVoNetwork& network = reading.model->Network();
    EXPECT_EQ(network.GetNumberOfObjects(), 20001U);
    EXPECT_EQ(network.GetNumberOfConstraints(), 20000U);
    EXPECT_EQ(network.Propagate(), ZULTaVoNetwork::Status::kConsistent);
    EXPECT_EQ(reading.ValueText("x", 19999), "[20000,20000]");
    EXPECT_LE(network.GetStatistics().filters, 40000U);
  }
}

TEST(NetworkTest, ExpressionsTellWhatTheyAreMadeOf) {
  const Reading reading = ReadModel("x, y : real; q[2..4] : real;\nx^2 + q[3] = 5;\nx*y < 1.5;");
  ASSERT_EQ(reading.ErrorText(), "");
  const ZULTavModel& model = *reading.model;
  ASSERT_EQ(model.Statements().size(), 2U);
  const auto& equation = model.Statements()[0];
  EXPECT_EQ(equation.kind, ZULTavModel::Statement::Kind::kEqual);
  EXPECT_EQ(equation.line, 2U);
  EXPECT_EQ(model.Statements()[1].kind, ZULTavModel::Statement::Kind::kLess);
  EXPECT_EQ(model.Statements()[1].line, 3U);
  const auto& sum = model.Expressions()[equation.left];
  ASSERT_NE(sum.op, nullptr);
  EXPECT_STREQ(sum.op->GetName(), "+");
  const auto& element = model.Expressions()[sum.operands[1]];
  ASSERT_TRUE(element.IsVariable());
  EXPECT_EQ(model.Variables()[element.operands[0]].name, "q");
  EXPECT_EQ(element.operands[1], 1U);
  EXPECT_EQ(element.object, &reading.Value("q", 1));
  EXPECT_TRUE(model.Expressions()[equation.right].IsConstant());
  for (std::uint32_t i = 0; i < model.Expressions().size(); ++i) {
    const auto& node = model.Expressions()[i];
    for (const std::uint32_t operand : node.operands)
      EXPECT_TRUE(node.op == nullptr || operand == ZULTavModel::kNone || operand < i);
  }
}

TEST(NetworkTest, WhatIsKnownBesideTheValuesGoesThroughStreams) {
  const Reading reading = ReadModel(
      "x : real; q[1..5] : int; p : bool; x / 3 = 0.1 * Pi - 9007199254740993; alldifferent(q);"
      "sum(p, q[1] == 7) = 1; PrimeNumber(q[2]);");
  ASSERT_EQ(reading.ErrorText(), "");
  std::stringstream bytes;
  ZULopstream out(bytes);
  reading.model->Write(out);
  ASSERT_TRUE(out.Good()) << out.Reason();
  ZULipstream in(bytes);
  const ZULTaVoModule* const modules[] = {&NumberModule(), NumberModule().GetLoadedModules()[0]};
  const auto again = ZULTavModel::Read(in, modules);
  ASSERT_NE(again, nullptr) << in.Reason();
  const ZULTaVoNetwork &before = reading.model->Network(), &after = again->Network();
  ASSERT_EQ(after.GetNumberOfObjects(), before.GetNumberOfObjects());
  ASSERT_EQ(after.GetNumberOfConstraints(), before.GetNumberOfConstraints());
  for (std::size_t i = 0; i < before.GetNumberOfObjects(); ++i) {
    const auto *number = before.GetConstant(before.GetObject(i)),
               *read = after.GetConstant(after.GetObject(i));
    ASSERT_EQ(read != nullptr, number != nullptr);
    EXPECT_TRUE(number == nullptr || *read == *number);
  }
  for (std::size_t i = 0; i < before.GetNumberOfConstraints(); ++i) {
    EXPECT_EQ(after.GetRule(i), before.GetRule(i));
    EXPECT_EQ(after.GetArguments(i).size(), before.GetArguments(i).size());
  }
}

TEST(NetworkTest, AnEmptyInitialValueIsAContradiction) {
  EXPECT_FALSE(IsConsistent("x : int = Nil;"));
  EXPECT_FALSE(IsConsistent("p : bool = Nil;"));
  EXPECT_TRUE(IsConsistent("q[1..0] : int = Nil;"));
}

TEST(NetworkTest, VariablesKeepOrderTypesAndInitialValues) {
  const struct {
    std::string declaration, type, value;
  } kRows[] = {
      {"v : int;",                           "interval int",      "Any"           },
      {"v : interval   int = [0, 10];",      "interval int",      "[0,10]"        },
      {"v : int = 5;",                       "interval int",      "[5,5]"         },
      {"v : int = [ Min , n*n - 1 ];",       "interval int",      "[ Min,8]"      },
      {"v : int = -n;",                      "interval int",      "[-3,-3]"       },
      {"v : int = [n, max(n, 7) // two\n];", "interval int",      ""              },
      {"v : int = [n, max(n, 7)];",          "interval int",      "[3,7]"         },
      {"v : int = Nil;",                     "interval int",      "Nil"           },
      {"v : single int = Max;",              "single int",        " Max"          },
      {"v : single int = n;",                "single int",        "3"             },
      {"v : real = [0.5, 1e3] /* c */ ;",    "interval real",     "[0.5,1000.0]"  },
      {"v : real = [n / 2, 10 / 3];",        "interval real",     "[1.5,3.333333]"},
      {"v : positive;",                      "interval positive", "[0.0, Max]"    },
      {"v : angle;",                         "interval angle",    "[0.0,6.283185]"},
      {"v : bool = True;",                   "single bool",       "True"          },
      {"v : bool = n > 2 && true;",          "single bool",       "True"          },
      {"v : single real = -2.5e-1;",         "single real",       "-0.25"         },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.declaration);
    const Reading reading = ReadModel("let n = 3;" + row.declaration);
    if (row.value.empty()) {
      EXPECT_NE(reading.ErrorText(), "");
      continue;
    }
    ASSERT_EQ(reading.ErrorText(), "");
    EXPECT_EQ(reading.model->Variables()[0].typeName, row.type);
    EXPECT_EQ(reading.ValueText("v"), row.value);
  }
  const Reading reading = ReadModel("b, q[-2..0], a : int = [1, 2]; z[5..4] : real;");
  const auto& variables = reading.model->Variables();
  ASSERT_EQ(variables.size(), 4U);
  EXPECT_EQ(variables[0].name + variables[1].name + variables[2].name, "bqa");
  EXPECT_EQ(variables[1].NameOf(0), "q[-2]");
  EXPECT_EQ(variables[1].values.size(), 3U);
  EXPECT_EQ(reading.ValueText("q", 2), "[1,2]");
  EXPECT_EQ(variables[3].values.size(), 0U);
}

}  // namespace
