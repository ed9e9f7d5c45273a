#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cfenv>
#include <cmath>
#include <cstdlib>
#include <random>
#include <sstream>

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
      {"x : int = [3, 7];",                 {{"lo", 3}, {"hi", 7}},                 "x = [3,7]"      },
      {"x : int = [-3, -3];",               -3,                                     "x = [-3,-3]"    },
      {"x : int; x >= -3;",                 {{"lo", -3}, {"hi", nullptr}},          "x = [-3, Max]"  },
      {"x : int;",                          {{"lo", nullptr}, {"hi", nullptr}},     "x = Any"        },
      {"x : single int;",                   "Any",                                  "x = Any"        },
      {"x : single int = 12;",              12,                                     "x = 12"         },
      {"x : bool;",                         "Any",                                  "x = Any"        },
      {"x : bool; ~x;",                     false,                                  "x = False"      },
      {"x : real = [0.5, 2];",              {{"lo", 0.5}, {"hi", 2.0}},             "x = [0.5,2.0]"  },
      {"x : real = [0, 5]; x = 2.5;",       2.5,                                    "x = 2.5"        },
      {"x : real; x >= 1;",                 {{"lo", 1.0}, {"hi", nullptr}},         "x = [1.0, Max]" },
      {"x : positive;",                     {{"lo", 0}, {"hi", nullptr}},           "x = [0.0, Max]" },
      {"x : real; x >= 1e19;",              {{"lo", 1e19}, {"hi", nullptr}},        "x = [1e19, Max]"},
      {"x : int; x <= -2147483646;",        {{"lo", nullptr}, {"hi", -2147483646}}, "x = [ Min, Min]"},
      {"x : single real = 0.1;",            0.1,                                    "x = 0.1"        },
      {"x : single real;",                  "Any",                                  "x = Any"        },
      {"x[0..2] : int = [0, 4]; x[1] = 2;",
       {{{"lo", 0}, {"hi", 4}}, 2, {{"lo", 0}, {"hi", 4}}},
       "x[0] = [0,4]\nx[1] = [2,2]\nx[2] = [0,4]"                                                    },
      {"x[0..1, 2..3] : bool; x[1, 2];",
       {{"Any", "Any"}, {true, "Any"}},
       "x[0,2] = Any\nx[0,3] = Any\nx[1,2] = True\nx[1,3] = Any"                                     },
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

TEST(OutputTest, WhatAModelShowsStandsInThePlaceOfItsValues) {
  const struct {
    std::string show, line;  // of the only solution
  } rows[] = {
      {"show \"x is \", x, \"!\", 3, True, 2 > 3;",                                                "x is 7!3TrueFalse"    },
      {"show m, \" \", m[.., 2], \" \", {3, 1..2}, \" \", [x, n];",                                "1 2 3 4 2 4 1 2 3 7 2"},
      {"show x + 1, \" \", -x, \" \", x * big * big, \" \", big ^ 4;",
       "8 -7 70000000000 [9.2233720368547747e18, Max]"                                                                    },
      {"show x > 3, \" \", p, ~p, \" \", if p then x else m[2, 1];",                               "True TrueFalse 7"     },
      {"show r, \" \", 2 * r, \" \", c, \" \", L;",
       "[0.25,0.5] [0.5,1.0] [1.414213,1.414214] "
       "[1.73205,1.732051] 2"                                                                                             },
      {"show half(x), \" \", half(8), \" \", (real) x / 2, \" \", x / 2;",                         "3.5 4.0 3.5 Nil"      },
      {"show min(x, big), \" \", sum(m), \" \", count(i in 1..n) (m[i, 1] = 1), \" \", x in {7};",
       "7 10 1 True"                                                                                                      },
      {"show 1.0 / (x - 7), \" \", x, \" \", free, \" \", free + 1;",                              "Nil 7 [1,3] [2,4]"    },
      {"show : int = 5; show = 5; show show, \"\", show;",                                         "55"                   },
      {"if n > 2 then show \"no\"; show \"yes\";",                                                 "yes"                  },
      {"if n > 1 then show \"yes\"; else show \"no\";",                                            "yes"                  },
      {"show \"\";",                                                                               ""                     },
  };
  const std::string base =
      "let n = 2; let c = sqrt(2); let L = [sqrt(3), 2]; let half(a) = a / 2.0; x : int; x = 7; "
      "m[1..n, 1..n] : int; for i in 1..n, j in 1..n : m[i, j] = 2 * i + j - 2; "
      "big : int = 100000; p : bool; p; r : real = [0.25, 0.5]; free : int = [1, 3];\n";
  for (const auto& [show, line] : rows) {
    SCOPED_TRACE(show);
    const std::string model = base + show + "\n";
    const Result text = Zultav("solve - --propagate-only", model);
    EXPECT_EQ(text.out.substr(0, text.out.find("-----")), line + "\n") << text.err;
    const json shown = Zultav("solve - --propagate-only --format json", model).Json()["shown"];
    EXPECT_EQ(shown, json::array({line}));
  }
  // Each solution, in one run and in one that goes on.
  const std::string model =
      "x : int = [1, 30]; r : real = [1, 1]; for i in 1..2 : show i, \" \", i * x; show r;";
  const std::string run = testing::TempDir() + "zultav_shown.zck";
  const std::string saved = " --checkpoint " + run;
  const Result first = Zultav("solve - -a --max-nodes 20 --force" + saved, model);
  const Result rest = Zultav("resume " + run);
  std::string expected;
  for (int x = 1; x <= 30; ++x)
    expected += "1 " + std::to_string(x) + "\n2 " + std::to_string(2 * x) + "\n1.0\n----------\n";
  EXPECT_EQ(Zultav("solve - -a", model).out, expected + "==========\n");
  EXPECT_EQ(first.out.substr(0, first.out.find("=====")) + rest.out, expected + "==========\n");
  EXPECT_EQ(Zultav("show " + run).out.substr(0, expected.size()), expected);
  EXPECT_EQ(Zultav("solve - --format module", "r : real = 0.1; show r;").Lines()[0], "[0.1,0.1]");
  EXPECT_EQ(Zultav("solve - -n 2 --format json", model).Json()["solutions"][1]["shown"],
            json::array({"1 2", "2 4", "1.0"}));
  std::remove(run.c_str());
}

TEST(OutputTest, TheBestSolutionIsReportedWithBoundsThatHoldIt) {
  const struct {
    const char *model, *arguments, *status, *last;
    json bounds;
    std::size_t solutions;
    int exit;
  } rows[] = {
      {"x : int = [0, 4]; maximize x;",
       "",                                                               "OPTIMAL_SOLUTION",
       "==========",              {{"lo", 4}, {"hi", 4}},
       5,                                                                                0},
      {"x : int = [0, 4]; maximize x;",
       "-n 2",                                                           "SATISFIED",
       "// bounds = [1,4]",       {{"lo", 1}, {"hi", 4}},
       2,                                                                                0},
      {"x : int = [0, 4]; maximize x;",
       "--gap 2",                                                        "OPTIMAL_SOLUTION",
       "==========",              {{"lo", 3}, {"hi", 4}},
       2,                                                                                0},
      {"x : int = [0, 4]; maximize x;",
       "--objective-limit 3",                                            "OPTIMAL_SOLUTION",
       "==========",              {{"lo", 4}, {"hi", 4}},
       2,                                                                                0},
      {"x : int = [0, 4]; maximize x;",
       "--objective-limit 4.5",                                          "UNSATISFIABLE",
       "=====UNSATISFIABLE=====", {{"lo", nullptr}, {"hi", 4}},
       0,                                                                                0},
      {"x, y : int = [-2, 2]; minimize abs(x + y) - 9000000000000;",
       "-a --split least",                                               "OPTIMAL_SOLUTION",
       "==========",              {{"lo", -9000000000000}, {"hi", -9000000000000}},
       9,                                                                                0},
      {"x : int = [0, 4]; maximize x; show x;",
       "--max-nodes 4",                                                  "SATISFIED",
       "=====UNKNOWN=====",       {{"lo", 0}, {"hi", 4}},
       1,                                                                                4},
      {"x : real; minimize x;",
       "",                                                               "UNBOUNDED",
       "=====UNBOUNDED=====",     {{"lo", nullptr}, {"hi", -1.3407814633844883e158}},
       0,                                                                                0},
      {"x : real = [1, 2]; minimize 3;",
       "",                                                               "OPTIMAL_SOLUTION",
       "==========",              {{"lo", 3}, {"hi", 3}},
       1,                                                                                0},
      {"x : real = [1, 2]; minimize 1 / (x - 3) / 0.0;",             "", "UNSATISFIABLE",
       "=====UNSATISFIABLE=====", nullptr,                                            0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.model) + row.arguments);
    const std::string command = std::string("solve - ") + row.arguments;
    const Result text = Zultav(command, row.model);
    EXPECT_EQ(text.status, row.exit) << text.err;
    EXPECT_EQ(text.Lines().back(), row.last);
    const json document = Zultav(command + " --format json", row.model).Json();
    EXPECT_EQ(document["status"], row.status);
    if (!row.bounds.is_null()) {
      EXPECT_EQ(document["bounds"], row.bounds);
    }
    const json& solutions = document["solutions"];
    if (row.solutions != 0) {
      EXPECT_EQ(solutions.size(), row.solutions);
    }
    for (const json& solution : solutions) EXPECT_TRUE(solution.contains("objective"));
  }
  const json can = Zultav("solve " + Example("can") + " --format json").Json()["bounds"];
  EXPECT_LE(can["lo"], 264.3568110);
  EXPECT_GE(can["hi"], 264.3568109);
  EXPECT_LT(can["hi"].get<double>() - can["lo"].get<double>(), 3e-4);
  // In pieces, what is printed is the same but for the bounds on the way.
  const std::string model =
      "x, y : int = [-9, 9]; r : real = [0, 9]; r^2 = 10 + x*y; minimize r + x;";
  const std::string run = testing::TempDir() + "zultav_best.zck";
  const std::string whole = Zultav("solve - --gap 1e-3", model).out;
  std::string pieces =
      Zultav("solve - --gap 1e-3 --max-nodes 3 --force --checkpoint " + run, model).out;
  const auto cut = [](std::string& text) { text.resize(text.rfind("// bounds")); };
  for (Result rest{4, {}, {}}; rest.status == 4; pieces += rest.out) {
    cut(pieces);
    rest = Zultav("resume --max-nodes 7 " + run);
  }
  EXPECT_EQ(pieces, whole);
  EXPECT_EQ(Zultav("show " + run).out.substr(0, whole.size()), whole);
  std::remove(run.c_str());
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

/// What a printed real says of its bounds; a missing one is infinite.
struct PrintedReal {
  std::string lower, upper;

  explicit PrintedReal(const std::string& text) : lower(text), upper(text) {
    const std::size_t comma = text.find(',');
    if (comma != std::string::npos) {
      lower = text.substr(1, comma - 1);
      upper = text.substr(comma + 1, text.size() - comma - 2);
    }
    if (lower == " Min" || text == "Any") lower.clear();
    if (upper == " Max" || text == "Any") upper.clear();
  }
};

/// The C library's own conversion, which obeys the rounding mode: decimals are compared exactly.
double Read(const std::string& decimal, int mode) {
  std::fesetround(mode);
  const volatile double number = std::strtod(decimal.c_str(), nullptr);
  std::fesetround(FE_TONEAREST);
  return number;
}

/// Whether the decimals lie on the outer side of the bounds, and no further than `place` (of a
/// number below 1: of its share) or what doubles can tell.
void ExpectEnclosure(const PrintedReal& text, const json& value, double place) {
  const bool point = value.is_number();
  const json lower = point ? value : value["lo"], upper = point ? value : value["hi"];
  EXPECT_EQ(text.lower.empty(), lower.is_null());
  EXPECT_EQ(text.upper.empty(), upper.is_null());
  EXPECT_TRUE(point || text.lower != text.upper) << text.lower;
  const auto step = [place](double x) {
    return 1.000001 * std::max(place * std::min(1.0, std::abs(x)), std::abs(x) * 1e-16);
  };
  if (lower.is_number()) {
    const double bound = lower;
    EXPECT_LE(Read(text.lower, FE_UPWARD), bound) << text.lower;
    EXPECT_GE(Read(text.lower, FE_TONEAREST), bound - step(bound)) << text.lower;
  }
  if (upper.is_number()) {
    const double bound = upper;
    EXPECT_GE(Read(text.upper, FE_DOWNWARD), bound) << text.upper;
    EXPECT_LE(Read(text.upper, FE_TONEAREST), bound + step(bound)) << text.upper;
  }
}

TEST(OutputTest, PrintedRealsEncloseWhatTheyStandFor) {
  std::vector<std::string> values = {
      "[0, 4e-13]",  "[-4e-13, -1e-300]", "[5e-324, 1.5e-323]", "[-0.0, 0]",
      "0.1",         "[9.9999999, 10]",   "[-1e19, 9.99e18]",   "[9.9999999999999e18, Max]",
      "[1e19, Max]", "[-1e-7, 1e-7]",     "[1.41, 1.415]",      "[999999.9999999, 1e15]",
      "2.5",         "[Min, -1e15]",      "[0.00001, 0.0001]",  "[123456789012.3456, 1e16]"};
  std::mt19937_64 random(5);
  for (int i = 0; i < 300; ++i) {
    const auto draw = [&] {
      const double size = std::ldexp(static_cast<double>(random() >> 11), -53);
      return std::ldexp(i % 2 == 0 ? size : -size, static_cast<int>(random() % 120) - 60);
    };
    std::array<double, 2> bounds = {draw(), draw()};
    if (i % 3 == 0) bounds[1] = bounds[0] * (1 + 1e-15);
    std::sort(bounds.begin(), bounds.end());
    std::ostringstream text;
    text.precision(17);
    text << '[' << bounds[0] << ',' << bounds[1] << ']';
    values.push_back(text.str());
  }
  std::string model;
  for (std::size_t i = 0; i < values.size(); ++i)
    model += "x" + std::to_string(i) + " : real = " + values[i] + ";\n";
  const struct {
    const char* options;
    double place;
  } kRows[] = {
      {"",              1e-6 },
      {"-p 10",         1    },
      {"-p 1",          1    },
      {"-p 3e-3",       1e-3 },
      {"-p 1e-12",      1e-12},
      {"-p 1e-30",      1e-16},
      {"--digits full", 1e-16},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.options);
    const std::string command = std::string("solve - --propagate-only ") + row.options;
    const json domains = Zultav(command + " --format json", model).Json()["domains"];
    ASSERT_EQ(domains.size(), values.size());
    const auto lines = Zultav(command, model).Lines();
    std::string printed;
    for (std::size_t i = 0; i < values.size(); ++i) {
      const std::string name = "x" + std::to_string(i);
      SCOPED_TRACE(lines.at(i));
      ASSERT_EQ(lines[i].substr(0, name.size() + 3), name + " = ");
      const std::string text = lines[i].substr(name.size() + 3);
      const json& value = domains[name];
      if (std::string(row.options) == "--digits full") {
        const PrintedReal real(text);
        const json lower = value.is_number() ? value : value["lo"];
        const json upper = value.is_number() ? value : value["hi"];
        EXPECT_TRUE(lower.is_null() || Read(real.lower, FE_TONEAREST) == lower);
        EXPECT_TRUE(upper.is_null() || Read(real.upper, FE_TONEAREST) == upper);
      } else {
        ExpectEnclosure(PrintedReal(text), value, row.place);
      }
      printed.append(name).append(" : real = ").append(text).append(";\n");
    }
    // As the value of a model, what was printed holds what there was.
    const json again = Zultav("solve - --propagate-only --format json", printed).Json()["domains"];
    const auto within = [](const json& inner, const json& outer, const char* side, int sign) {
      const json a = inner.is_number() ? inner : inner[side];
      const json b = outer.is_number() ? outer : outer[side];
      return b.is_null() || (!a.is_null() && sign * a.get<double>() <= sign * b.get<double>());
    };
    for (const auto& [name, value] : domains.items()) {
      EXPECT_TRUE(within(value, again[name], "hi", 1)) << name << again[name];
      EXPECT_TRUE(within(value, again[name], "lo", -1)) << name << again[name];
    }
  }
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

TEST(OutputTest, WarningsChangeNothingElse) {
  const std::string model = "x : int = [6, 7]; half : real; half = x / 2;";
  for (const std::string command : {"solve - -a", "check -"}) {
    SCOPED_TRACE(command);
    const Result text = Zultav(command, model);
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.err.find("<stdin>:1:41: warning: "), 0U) << text.err;
    EXPECT_EQ(text.out.find("warning"), std::string::npos);
    const Result structured = Zultav(command + " --format json", model);
    EXPECT_EQ(structured.err, "");
    EXPECT_EQ(structured.Json()["errors"], json::array());
    EXPECT_EQ(structured.Json()["warnings"].at(0)["column"], 41);
  }
  EXPECT_EQ(Zultav("solve - -a", model).out.find("x = [6,6]\nhalf = 3.0\n"), 0U);
}

TEST(OutputTest, TheCatalogueIsListedInOrder) {
  const json operators = Zultav("operators --format json").Json()["operators"];
  ASSERT_EQ(operators.size(), 495u + 18u);
  EXPECT_EQ(operators.front(), (json{
                                   {"name",       "+"                                       },
                                   {"kind",       "Binary"                                  },
                                   {"types",      {"single int", "single int", "single int"}},
                                   {"constraint", "ZULTaVoAdditionConstraint"               }
  }));
  EXPECT_EQ(operators[494]["name"], "mod");
  EXPECT_EQ(operators.back()["name"], "pow");
  const std::string twice = " --module ZULTavNumbers --module ZULTavNumbers";
  EXPECT_EQ(Zultav("operators" + twice).Lines().size(), 495u);

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
