#include <gtest/gtest.h>

#include "tests/solve/zultav_program.h"

namespace {

using nlohmann::json;

struct ValueCase {
  std::string declaration;
  /// The value with --propagate-only, and as text.
  json value;
  std::string text;
};

TEST(OutputTest, EachKindOfValueHasItsForm) {
  const ValueCase rows[] = {
      {"x : int = [3, 7];",                 {{"lo", 3}, {"hi", 7}},             "x = [3,7]"     },
      {"x : int = [-3, -3];",               -3,                                 "x = [-3,-3]"   },
      {"x : int; x >= -3;",                 {{"lo", -3}, {"hi", nullptr}},      "x = [-3, Max]" },
      {"x : int;",                          {{"lo", nullptr}, {"hi", nullptr}}, "x = Any"       },
      {"x : single int;",                   "Any",                              "x = Any"       },
      {"x : single int = 12;",              12,                                 "x = 12"        },
      {"x : bool;",                         "Any",                              "x = Any"       },
      {"x : bool; ~x;",                     false,                              "x = False"     },
      {"x : real = [0.5, 2];",              {{"lo", 0.5}, {"hi", 2.0}},         "x = [0.5,2.0]" },
      {"x : real = [0, 5]; x = 2.5;",       2.5,                                "x = 2.5"       },
      {"x : real; x >= 1;",                 {{"lo", 1.0}, {"hi", nullptr}},     "x = [1.0, Max]"},
      {"x : single real;",                  "Any",                              "x = Any"       },
      {"x[0..2] : int = [0, 4]; x[1] = 2;",
       {{{"lo", 0}, {"hi", 4}}, 2, {{"lo", 0}, {"hi", 4}}},
       "x[0] = [0,4]\nx[1] = [2,2]\nx[2] = [0,4]"                                               },
  };
  for (const auto& [declaration, value, text] : rows) {
    SCOPED_TRACE(declaration);
    const json document = Zultav("solve - --propagate-only --format json", declaration).Json();
    EXPECT_EQ(document["domains"], (json{
                                       {"x", value}
    }));
    EXPECT_FALSE(document.contains("solutions"));
    EXPECT_EQ(Zultav("solve - --propagate-only", declaration).out, text + "\n----------\n");
  }
}

TEST(OutputTest, PropagationSaysWhatItFoundOut) {
  struct {
    const char *model, *status, *text;
  } const rows[] = {
      {"x : int = [0, 9]; x < 5;", "UNKNOWN",       "x = [0,4]\n----------\n"  },
      {"x : int = [0, 9]; x < 1;", "SATISFIED",     "x = [0,0]\n----------\n"  },
      {"x : int = [0, 9]; x < 0;", "UNSATISFIABLE", "=====UNSATISFIABLE=====\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.model);
    const Result result = Zultav("solve - --propagate-only --format json", row.model);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.Json()["status"], row.status);
    EXPECT_EQ(Zultav("solve - --propagate-only", row.model).out, row.text);
  }
}

TEST(OutputTest, RealsReadBackExactlyWhenAskedFor) {
  const std::string model = "x : real = [0, 3]; x * x = 2;";
  const json document = Zultav("solve - -a --format json", model).Json();
  ASSERT_EQ(document["solutions"].size(), 1u);
  const json& x = document["solutions"][0]["values"]["x"];
  const double lower = x["lo"], upper = x["hi"];
  EXPECT_LE(lower * lower, 2);
  EXPECT_GE(upper * upper, 2);
  EXPECT_LE(upper - lower, 1e-6);

  const Result full = Zultav("solve - -a --digits full", model);
  const std::string line = full.Lines().at(0);
  double readLower = 0, readUpper = 0;
  ASSERT_EQ(std::sscanf(line.c_str(), "x = [%lf,%lf]", &readLower, &readUpper), 2) << line;
  EXPECT_EQ(readLower, lower);
  EXPECT_EQ(readUpper, upper);

  EXPECT_EQ(Zultav("solve - -p 1e-3", "x : real; x = 1 / 3;").Lines().at(0), "x = [0.3333,0.3333]");
}

TEST(OutputTest, BoxesAreAsNarrowAsAskedFor) {
  for (const auto& [eps, count] : {
           std::pair{"0.25",  4u},
           {"1",     1u},
           {"0,0.5", 1u}
  }) {
    SCOPED_TRACE(eps);
    const json document =
        Zultav(std::string("solve - -a --format json --eps ") + eps, "x : real = [1, 2];").Json();
    EXPECT_EQ(document["solutions"].size(), count);
    for (const json& solution : document["solutions"])
      EXPECT_EQ(solution["proven"], true) << "x is free";
  }
}

TEST(OutputTest, StatisticsAreCounted) {
  const json statistics =
      Zultav("solve - -a --format json", "x, y : int = [0, 3]; x < y;").Json()["statistics"];
  EXPECT_EQ(statistics["solutions"], 6);
  EXPECT_EQ(statistics["nodes"], 11);
  EXPECT_EQ(statistics["fails"], 0);
  for (const char* name : {"narrowings", "propagations", "peak_depth", "seconds"})
    EXPECT_GT(statistics[name], 0) << name;
  const Result text = Zultav("solve - -a -s", "x, y : int = [0, 3]; x < y;");
  EXPECT_NE(text.out.find("==========\n// solutions    6\n// nodes        11\n"), std::string::npos)
      << text.out;
}

TEST(OutputTest, CheckSaysWhatAModelHolds) {
  const std::string model = "let n = 3; q[1..n] : int = [1, n]; b : bool; q[1] < q[2];";
  const Result text = Zultav("check -", model);
  EXPECT_EQ(text.status, 0);
  EXPECT_NE(text.out.find("4 variables, 1 statements"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("  q[1..3] : interval int\n  b : single bool\n"), std::string::npos);
  const json document = Zultav("check - --format json", model).Json();
  EXPECT_EQ(document["variables"][0],
            (json{
                {"name",  "q"           },
                {"type",  "interval int"},
                {"first", 1             },
                {"size",  3             }
  }));
  EXPECT_EQ(document["errors"], json::array());
}

TEST(OutputTest, TheCatalogueIsListedInOrder) {
  const json operators = Zultav("operators --format json").Json()["operators"];
  ASSERT_EQ(operators.size(), 495u);
  EXPECT_EQ(operators.front(), (json{
                                   {"name",       "+"                                       },
                                   {"kind",       "Binary"                                  },
                                   {"types",      {"single int", "single int", "single int"}},
                                   {"constraint", "ZULTaVoAdditionConstraint"               }
  }));
  EXPECT_EQ(operators.back()["name"], "mod");
  EXPECT_EQ(Zultav("operators").Lines().size(), 495u);

  const json types = Zultav("types --format json").Json()["types"];
  ASSERT_EQ(types.size(), 7u);
  EXPECT_EQ(types[0], (json{
                          {"name", "single bool"   },
                          {"base", "ZULTaVoBoolean"}
  }));
  EXPECT_EQ(types[6], (json{
                          {"name", "interval angle"},
                          {"base", "interval real" }
  }));
  EXPECT_EQ(Zultav("types").Lines().size(), 7u);
}

TEST(OutputTest, TheSameRunGivesTheSameBytes) {
  const std::string command = "solve " + Example("queens8") + " -a";
  EXPECT_EQ(Zultav(command).out, Zultav(command).out);
}

}  // namespace
