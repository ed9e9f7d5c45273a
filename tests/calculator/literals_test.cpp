#include <gtest/gtest.h>

#include <array>
#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <random>
#include <sstream>

#include "framework/base/ZULopstream.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"
#include "tests/calculator/calculator_world.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The first constant of the model that is a number.
const ZULTaVoNumber& ConstantOf(const Reading& reading) {
  for (const auto& expression : reading.model->Expressions())
    if (const auto* number = ZULTaVoCast<const ZULTaVoNumber>(expression.object))
      if (expression.IsConstant()) return *number;
  ADD_FAILURE() << "no constant";
  std::abort();
}

TEST(LiteralsTest, LiteralTakesTheTypeThatItsNeighbourAsksFor) {
  const double below = std::nextafter(0.1, 0);
  const struct {
    std::string source, type;
    double lower, upper;
  } kRows[] = {
      {"x : single int;    y = x * 3;",   "single int",    3,                                         3                     },
      {"x : int;           y = 3 * x;",   "interval int",  3,                                         3                     },
      {"x : single real;   y = x * 3;",   "single real",   3,                                         3                     },
      {"x : real;          y = x ^ 3;",   "interval int",  3,                                         3                     },
      {"x : single real;   y = x ^ 3;",   "single int",    3,                                         3                     },
      {"x : angle;         y = x - 7;",   "interval real", 7,                                         7                     },
      {"x : positive;      y = x / -4;",  "interval real", -4,                                        -4                    },
      {"x : single int;    y = x * 2.5;", "single real",   2.5,                                       2.5                   },
      {"x : int;           y = x * 2.0;", "interval real", 2,                                         2                     },
      {"x : single real;   y = x * 2.5;", "single real",   2.5,                                       2.5                   },
      {"x : real;          y = 2.5 * x;", "interval real", 2.5,                                       2.5                   },
      {"x : single int;    y = x * 0.1;", "interval real", below,                                     0.1                   },
      {"x : int;           y = 0.1 + x;", "interval real", below,                                     0.1                   },
      {"x : single real;   y = x * 0.1;", "single real",   0.1,                                       0.1                   },
      {"x : real;          y = x * 0.1;", "interval real", below,                                     0.1                   },
      {"x : angle;         x = 0.1;",     "interval real", below,                                     0.1                   },
      {"x : real;          x = 1/3;",     "interval real", 1.0 / 3,                                   std::nextafter(1.0 / 3, 1)},
      {"x : real;          x = -0.1;",                                 "interval real",                   -0.1,             -below            },
      {"x : single real;   x = 1/3;",                                 "single real",                    1.0 / 3,                1.0 / 3},
      {"x : real;          x = sqrt(2);",                                 "interval int",                2,           2                 },
      {"x : real;          x = sin(0.5);",                                 "interval real",               0.5,         0.5},
      {"x : real;          x = 9007199254740993;",                                 "interval real",       0x1p53, 0x1p53 + 2              },
      {"x : int; p : bool; p == (x >> 1.5);",                                 "interval real",            1.5,      1.5},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    const Reading reading = ReadModel("y : real; " + row.source);
    ASSERT_EQ(reading.ErrorText(), "");
    const ZULTaVoNumber& constant = ConstantOf(reading);
    EXPECT_STREQ(constant.GetDescriptor()->GetName(), row.type.c_str());
    const ZULTaVoConstant* number = reading.model->Network().GetConstant(&constant);
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->isInteger ? static_cast<double>(number->integer) : number->lower, row.lower);
    EXPECT_TRUE(number->isInteger || number->upper == row.upper);
    if (const auto* real = ZULTaVoCast<const ZULTaVoReal>(&constant)) {
      // 0.1 as a double lies above one tenth, 1/3 below one third.
      EXPECT_EQ(real->GetLowerBound(), row.lower);
      EXPECT_EQ(real->GetUpperBound(), row.upper);
    } else {
      const auto* integer = ZULTaVoCast<const ZULTaVoInteger>(&constant);
      EXPECT_EQ(static_cast<double>(integer->GetLowerBound()), row.lower);
      EXPECT_EQ(static_cast<double>(integer->GetUpperBound()), row.upper);
    }
  }
}

/// The value in the network is the end of the type.
TEST(LiteralsTest, EveryModuleNamesTypesAndTakesLiterals) {
  ZULTaVoModuleManager manager;
  manager.AddSearchDirectory(TEST_MODULES);
  const ZULTaVoModule* bits = manager.OpenModule("BitModule");
  ASSERT_NE(bits, nullptr) << manager.GetReason();
  const ZULTaVoModule* numbers = &NumberModule();
  const std::string foreign = "x : bits; x + 3 = 7;";
  const struct {
    std::vector<const ZULTaVoModule*> modules;
    std::string source, values;  // of the variables, propagated; or a part of the error
  } kRows[] = {
      {{bits},          foreign,                                  "4  "                    },
      {{bits},          foreign + " y : bit;",                    "did you mean 'bits'?"   },
      {{bits},          foreign + " x + 1.5 = x;",                "type for the number 1.5"},
      {{bits},          foreign + " x in {1, 4};",                "4  "                    },
      {{numbers, bits}, foreign + " k : int = 9; k - 3 = 6;",     "4  [9,9] "              },
 // The domain of the type that comes first is too small for the sum.
      {{bits, numbers},
       foreign + " n : int; p[1..40] : bool = True; n = sum(p);",
       "4  [40,40] True "                                                                  },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    std::vector<ZULTavDiagnostic> errors;
    const auto model = ZULTavCalculator(row.modules).Read(row.source, "test", {}, errors);
    std::ostringstream out;
    for (const ZULTavDiagnostic& error : errors) error.Print(out);
    if (model != nullptr) {
      EXPECT_EQ(model->Network().Propagate(), ZULTaVoNetwork::Status::kConsistent);
      for (const auto& variable : model->Variables()) {
        variable.values[0]->PrintOn(out);
        out << ' ';
      }
      EXPECT_EQ(out.str(), row.values);
    } else {
      EXPECT_NE(out.str().find(row.values), std::string::npos) << out.str();
    }
  }
}

TEST(LiteralsTest, NumbersBeyondTheModuleAreHandedOver) {
  constexpr std::int64_t kGreatest = INT64_MAX, kLeast = INT64_MIN;
  const auto whole = ZULTaVoConstant::Integer;
  const auto exact = [](double value) { return ZULTaVoConstant::Real(value, value); };
  const struct {
    std::string source, value;
    ZULTaVoConstant number;
  } kRows[] = {
      {"x = 3000000000;",               "[ Max, Max]", whole(3000000000)   },
      {"x < 9223372036854775807;",      "[ Max, Max]", whole(kGreatest)    },
      {"x > -9223372036854775808;",     "[ Min, Min]", whole(kLeast)       },
      {"s = -9223372036854775807 - 1;", " Min",        whole(kLeast)       },
      {"let k = 2^40; x = k;",          "[ Max, Max]", whole(0x10000000000)},
      {"y = 1e22;",                     " Max",        exact(1e22)         },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    const Reading reading = ReadModel("x : int; s : single int; y : real; " + row.source);
    ASSERT_EQ(reading.ErrorText(), "");
    const ZULTaVoNumber& constant = ConstantOf(reading);
    std::ostringstream value;
    constant.PrintOn(value);
    EXPECT_EQ(value.str(), row.value);
    EXPECT_EQ(*reading.model->Network().GetConstant(&constant), row.number);
  }
  // Nor does the module compute what it has no numbers for.
  for (const char* let :
       {"exp(100)", "sqrt(1e30)", "3.986e14*(86164/(2*Pi))^2", "ln(exp(99) * 2)"}) {
    const Reading reading = ReadModel(std::string("let k = ") + let + "; y : real; y = k;");
    ASSERT_EQ(reading.ErrorText(), "") << let;
    EXPECT_TRUE(reading.model->Expressions()[reading.model->Statements()[0].right].object->IsAny());
  }
  EXPECT_EQ(ReadModel("y : real; y = 9007199254740993 - y; y < 9007199254740994;")
                .model->Network()
                .GetNumberOfObjects(),
            4U)
      << "integers between the same doubles are two constants";
}

TEST(LiteralsTest, DataGiveConstantsTheirValues) {
  const std::string deep(2000, '[');
  const struct {
    std::string data, source, outcome;  // the first statement, or a part of what is printed
  } kRows[] = {
      {R"({"n": 3, "c": [[1, 2], [4, -5.5e0]], "b": true})",
       "let n : int, c[1..2, 0..1] : real, b : bool; y : real; y = c[2, 1] * n; b;",                            "y = -16.5; "                                             },
      {R"({"way": ["up", "down"]})",                         "let up = 7, down = 2 * up, way; x = way[2] + x;",
       "x = (14 + x); "                                                                                                                                                   },
      {R"({"n": 3})",                                        "let n = 8; x = n;",                               "x = 3; "                                                 },
      {R"({"d": 0.1})",                                      "let d; y : real; y = d;",                         "y = [0.1,0.1"                                            },
      {R"({"k": [[1], [2, 3]]})",                            "let k; for i in 1..2 : x > sum(k[i]);",           "x > 1; x > 5; "                                          },
      {"{}",                                                 "let n; x = n;",                                   "test:1:21: error: 'n' has no value"                      },
      {R"({"cost": 1})",                                     "let cots;",                                       "the data have 'cost'"                                    },
      {R"({"n": 3.5})",                                      "let n : int;",                                    "data:1:7: error: 'n' is of the type 'int'; this is the"  },
      {"{\"c\":\n [[1, 2], [3]]}",                           "let c[1..2, 1..2];",
       "data:2:11: error: 'c' needs a list of 2 items here; this one has 1"                                                                                               },
      {R"({"c": [1, [2]]})",                                 "let c[1..2];",                                    "data:1:11: error: 'c' needs one value here"              },
      {R"({"c": 5})",                                        "let c[1..2];",                                    "this is the integer 5\n"                                 },
      {R"({"c": [1, "gren"]})",                              "let green = 2;\nlet c;",
       "data:1:11: error: the model has no constant 'gren' before this one"                                                                                               },
      {R"({"n": 1})",                                        "let n : integer;",                                "test:1:25: error: a constant has no type 'integer'"      },
      {R"({"n": 1, "n": 2})",                                "let n;",                                          "data:1:10: error: 'n' has a value already"               },
      {"\n{\"extra\":\n2}",                                  "let n;",
       "data:2:2: error: 'extra' has a value already\n  {\"extra\":\n   ^~~~~~~\n  note: data give "
       "it one in line 1 of 'more'"                                                                                                                                       },
      {R"({"n": 1,})",                                       "let n;",                                          "data:1:9: error: expected a name between quotation marks"},
      {R"({"n": null})",                                     "let n;",                                          "data:1:7: error: expected a number, true, false"         },
      {R"({"n": [1 2]})",                                    "let n;",                                          "data:1:10: error: expected ']' or ','"                   },
      {R"({"n": 1} 2)",                                      "let n;",                                          "data:1:10: error: expected the end of the data"          },
      {R"({"n": -})",                                        "let n;",                                          "expected a digit"                                        },
      {R"({"n": 99999999999999999999})",                     "let n;",                                          "beyond the limit of 64 bits"                             },
      {R"({"n": -1e999})",                                   "let n;",                                          "this number is too large"                                },
      {"\ufeff{\"n\": 3}",                                   "let n; x = n;",                                   "x = 3; "                                                 },
      {R"([3])",                                             "let n; x = n; y = n;",                            "^\ntest:1:31: error: unknown name 'y'"                   },
      {R"({"n)",                                             "let n;",                                          "this text has no end"                                    },
      {"{\"n\": " + deep,                                    "let n;",                                          "deeper than the limit of 1000 levels"                    },
      {"",                                                   "let n;",                                          "expected '{' and names with values"                      },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.data.substr(0, 50) + row.source);
    ZULTavCalculator::Options options;
    options.data = {
        {"more", R"({"extra": 1})"},
        {"data", row.data         }
    };
    const Reading reading = ReadModel("x : single int; " + row.source, options);
    const std::string outcome = reading.model ? reading.StatementText() : reading.ErrorText();
    EXPECT_NE(outcome.find(row.outcome), std::string::npos) << outcome;
  }
}

/// A random value, written the same in data and in models: a list, ragged and maybe empty, or a
/// number or truth value, which a statement uses.
std::string RandomDatum(std::mt19937_64& random, const std::string& place, std::string& uses,
                        int depth) {
  constexpr const char* kNumbers[] = {"-0",
                                      "-0.0",
                                      "2147483648",
                                      "-9223372036854775808",
                                      "9223372036854775807",
                                      "1.7976931348623157e308",
                                      "-4.9e-324",
                                      "1e-400",
                                      "0.1"};
  const auto pick = [&](std::size_t count) { return static_cast<std::size_t>(random() % count); };
  if (depth < 4 && pick(3) > 0) {
    std::string text;
    for (std::size_t i = 1, size = pick(4); i <= size; ++i)
      text += (i > 1 ? ", " : "") +
              RandomDatum(random, place + (depth == 0 ? "" : ", ") + std::to_string(i), uses,
                          depth + 1);
    return "[" + text + "]";
  }
  const std::string element = depth == 0 ? "k" : "k[" + place + "]";
  if (pick(9) == 0) {
    uses += " p == " + element + ";";
    return "true";
  }
  uses += " x <> " + element + ";";
  const std::size_t which = pick(2 * std::size(kNumbers));
  if (which < std::size(kNumbers)) return kNumbers[which];
  std::string number = (pick(2) == 0 ? "-" : "") + std::to_string(random() >> pick(64) >> 1);
  if (pick(2) == 0) number += "." + std::to_string(random() >> pick(64));
  if (pick(3) == 0) number += "e" + std::to_string(static_cast<int>(pick(500)) - 250);
  return number;
}

TEST(LiteralsTest, DataMeanWhatModelsWouldSay) {
  std::mt19937_64 random(20);
  for (int i = 0; i < 300; ++i) {
    std::string uses;
    const std::string datum = RandomDatum(random, "", uses, 0);
    std::string bytes[2];
    for (const bool isData : {false, true}) {
      ZULTavCalculator::Options options;
      if (isData)
        options.data = {
            {"data", "{\"k\": " + datum + "}"}
        };
      const Reading reading = ReadModel(
          "x : real; p : bool; let k" + (isData ? "" : " = " + datum) + ";" + uses, options);
      ASSERT_EQ(reading.ErrorText(), "") << datum << uses;
      std::ostringstream stream;
      ZULopstream out(stream);
      reading.model->Write(out);
      bytes[isData] = stream.str();
    }
    EXPECT_EQ(bytes[0], bytes[1]) << datum << uses;
  }
}

/// What an operation gives in both directed rounding modes.
template <class Operation>
std::pair<double, double> Directed(Operation operation) {
  const int mode = std::fegetround();
  std::fesetround(FE_DOWNWARD);
  const volatile double lower = operation();
  std::fesetround(FE_UPWARD);
  const volatile double upper = operation();
  std::fesetround(mode);
  return {lower, upper};
}

std::pair<double, double> BoundsOf(const std::string& expression) {
  const Reading reading = ReadModel("x, y : real; x = y * (" + expression + ");");
  EXPECT_EQ(reading.ErrorText(), "");
  if (reading.model == nullptr) return {kInfinity, -kInfinity};
  const auto& constant = dynamic_cast<const ZULTaVoReal&>(ConstantOf(reading));
  return {constant.GetLowerBound(), constant.GetUpperBound()};
}

std::string Text(double value, int digits = -1) {
  std::array<char, 1200> buffer;
  char* end = buffer.data() + buffer.size();
  end = digits < 0
            ? std::to_chars(buffer.data(), end, value, std::chars_format::scientific).ptr
            : std::to_chars(buffer.data(), end, value, std::chars_format::scientific, digits).ptr;
  const std::string text(buffer.data(), end);
  return text.find('.') == std::string::npos ? text.substr(0, 1) + ".0" + text.substr(1) : text;
}

/// The C library's own conversion, which obeys the rounding mode, is the oracle.
TEST(LiteralsTest, DecimalsAreEnclosedByTheirNeighbours) {
  std::vector<std::string> decimals = {"0.1",
                                       "0.5",
                                       "1e19",
                                       "123456789.000000001",
                                       "4.9e-324",
                                       "1e-400",
                                       "0.0",
                                       "0.000",
                                       "2.2250738585072011e-308",
                                       "9007199254740993.0",
                                       "9007199254740992.999999999999999999999",
                                       "1.00000000000000011102230246251565404236316680908203125",
                                       "1.00000000000000011102230246251565404236316680908203124",
                                       "1.00000000000000011102230246251565404236316680908203126",
                                       "100e-2",
                                       "0.00001e5"};
  std::mt19937_64 random(7);
  for (int i = 0; i < 3000; ++i) {
    const double value = std::ldexp(static_cast<double>(random() >> 11),
                                    static_cast<int>(random() % (i % 2 == 0 ? 20 : 1080)) - 1110);
    if (value < 1e19) decimals.push_back(Text(value, static_cast<int>(random() % 25)));
    if (value < 1e19 && i % 10 == 0) decimals.push_back(Text(value, 766));  // the number itself
  }
  for (const std::string& decimal : decimals) {
    SCOPED_TRACE(decimal);
    const auto expected = Directed([&] { return std::strtod(decimal.c_str(), nullptr); });
    EXPECT_EQ(BoundsOf(decimal), expected);
    const Reading reading =
        ReadModel("x : real = " + decimal + "; y : real = [-" + decimal + ", " + decimal + "];");
    const auto& x = dynamic_cast<const ZULTaVoReal&>(reading.Value("x"));
    const auto& y = dynamic_cast<const ZULTaVoReal&>(reading.Value("y"));
    EXPECT_EQ(std::pair(x.GetLowerBound(), x.GetUpperBound()), expected);
    EXPECT_EQ(std::pair(-y.GetLowerBound(), y.GetUpperBound()),
              std::pair(expected.second, expected.second));
  }
}

TEST(LiteralsTest, AnInitialValueIsTheNumberThatAStatementGives) {
  EXPECT_TRUE(IsConsistent("x : real = 1.7; y : real = 4.5; z : real = 7.65; z = x * y;"));
  EXPECT_EQ(ReadModel("x : single real = 0.1;").ValueText("x"), "0.1");
}

TEST(LiteralsTest, FoldedRealsAreTheTightestEnclosure) {
  std::mt19937_64 random(11);
  for (int i = 0; i < 2000; ++i) {
    const auto draw = [&] {
      const int bits = i % 3 == 0 ? 50 : 11;  // few bits: results are often exact
      const double value =
          std::ldexp(static_cast<double>(random() >> bits), static_cast<int>(random() % 30) - 55);
      return value + 0.0;
    };
    const volatile double a = draw();
    const volatile double b = draw() + 1;
    for (const char op : {'+', '-', '*', '/'}) {
      const std::string text = Text(a, 150) + " " + op + " " + Text(b, 150);
      SCOPED_TRACE(text);
      const auto expected = Directed([&] {
        return op == '+' ? a + b : op == '-' ? a - b : op == '*' ? a * b : a / b;
      });
      EXPECT_EQ(BoundsOf(text), expected);
    }
  }
  EXPECT_EQ(BoundsOf("(0.1 - 0.3) * 3.0").first < -0.6, true);
  EXPECT_EQ(BoundsOf("(0.1 - 0.3) * 3.0").second > -0.6, true);
}

TEST(LiteralsTest, DefinitionsReplaceAndSupplyConstants) {
  const struct {
    std::string source;
    Definitions definitions;
    std::string outcome;  // the first statement, or a part of the error
  } kRows[] = {
      {"let n = 8; x : int; x = n;",         {{"n", "12"}},                       "x = [12,12]; "                       },
      {"x : int = [1, n]; x < n + m;",       {{"n", "3"}, {"m", "-2 * (4 - 1)"}}, "x < [-3,-3]; "                       },
      {"let k = n, n = 8; x : int; x = k;",  {{"n", "5"}},                        "x = [5,5]; "                         },
      {"x : real; x = g;",                   {{"g", "9.75"}},                     "x = 9.75; "                          },
      {"let t = false; p : bool; p == t;",   {{"t", "true"}},                     "(p == True); "                       },
      {"let count = 8; x : int; x = count;", {{"cuont", "9"}},                    "did you mean 'count'?"               },
      {"x : int; x = 1;",                    {{"n", "8"}},                        "the model does not use 'n'"          },
      {"let n = 8;",                         {{"n", "8 9"}},                      "definition of 'n':1:3: error"        },
      {"let n = 8;",                         {{"n", ""}},                         "expected an expression"              },
      {"let n = 8;",                         {{"n", "sqrt(-1)"}},                 "'n':1:1: error: this constant has no"},
      {"x : real = n;",                      {{"n", "1e30"}},                     "beyond the limits"                   },
      {"let n = 8;",                         {{"n", "[1, 2"}},                    "expected an operator, ','"           },
      {"let n = 8; let n = 9;",              {{"n", "1"}},                        "has a meaning already"               },
      {"n : int;",                           {{"n", "8"}},                        "defined from outside"                },
      {"x : int; x = for;",                  {{"for", "8"}},                      "cannot be the name"                  },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    const Reading reading = ReadModel(row.source, row.definitions);
    const std::string outcome = reading.model ? reading.StatementText() : reading.ErrorText();
    EXPECT_NE(outcome.find(row.outcome), std::string::npos) << outcome;
  }
}

}  // namespace
