#include <gtest/gtest.h>

#include "tests/calculator/calculator_world.h"

namespace {

std::string Repeat(const std::string& text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

TEST(LimitsTest, WhatIsTooLargeIsRefusedByName) {
  ZULTavCalculator::Options options;
  options.limits.sourceBytes = 3000000;
  options.limits.nesting = 50;
  options.limits.nameLength = 20;
  options.limits.numberLength = 30;
  options.limits.arraySize = 100;
  options.limits.variables = 150;
  options.limits.operations = 200;
  options.limits.listItems = 60;
  options.limits.iterations = 1000;
  options.limits.shown = 300;
  options.limits.errors = 5;
  const struct {
    std::string before, repeated;
    int times;
    std::string after, fragment;  // an empty fragment: this much is allowed
  } kRows[] = {
      {"",                                                      " ",                 3000001, "",             "is longer than the limit of 3000000"                     },
      {"x = ",                                                  "(",                 100000,  "1;",           "nesting is deeper than the limit of 50"                  },
      {"x = ",                                                  "-",                 100000,  "1;",           "nesting is deeper than the limit of 50"                  },
      {"x = ",                                                  "x^",                100000,  "1;",           "nesting is deeper than the limit of 50"                  },
      {"p;",                                                    "p -> ",             100000,  "p;",           "nesting is deeper than the limit of 50"                  },
      {"",                                                      "for i in 1..2 : ",  100000,  "x = 1;",       "nesting is deeper than the limit of 50"                  },
      {"x = ",                                                  "sum(i in 1..2) ",   100000,  "1;",           "nesting is deeper than the limit of 50"                  },
      {"",                                                      "for i in 1..2 : {", 100000,  "x = 1;",       "nesting is deeper than the limit of 50"                  },
      {"a[",                                                    "a[",                100000,  "1..2] : int;", "nesting is deeper than the limit of 50"                  },
      {"x = ((((((((((x",                                       ")",                 10,      "+ 1;",         ""                                                        },
      {"",                                                      "a",                 1000000, " : int;",      "a name of 1000000 bytes is longer than the limit of 20"  },
      {"x = 1.",                                                "1",                 1000000, ";",            "a number of 1000002 bytes is longer than the limit of 30"},
      {"a[1..101] : int;",                                      "",                  0,       "",             "1..101 is larger than the limit of 100"                  },
      {"a[-9223372036854775807-1..9223372036854775807] : int;", "",                  0,       "",
       "larger than the limit of 100"                                                                                                                                   },
      {"a, b[1..99] : int; c[1..49] : int;",                    "",                  0,       "",             "more variables than the limit of 150"                    },
      {"for i in 1..201 : x < i;",                              "",                  0,       "",             "more operations than the limit of 200"                   },
      {"x = ",                                                  "x + ",              150,     "1;",           ""                                                        },
      {"for i in 1..32, j in 1..32 where i + j < 0 : x = 1;",   "",                  0,       "",
       "more steps than the limit of 1000"                                                                                                                              },
      {"for i in 1..9223372036854775807 : x = 1;",              "",                  0,       "",             "is longer than the limit of 1000"                        },
      {"x = sum(i in 1..20, j in 1..20) 1;",                    "",                  0,       "",             "more terms than the limit of 200"                        },
      {"alldifferent(i in 1..100) i;",                          "",                  0,       "",             "more steps than the limit of 1000"                       },
      {"let a = [",                                             "1, ",               60,      "1];",          "more items than the limit of 60"                         },
      {"let f(y) = size([y, y, y]); x < sum(i in 1..90) f(i);", "",                  0,       "",             ""                                                        },
      {"x = 0",                                                 " + 1",              1000,    ";",            "more operations than the limit of 200"                   },
      {"for i in 1..61 : show x, i, x, x + 1, x;",              "",                  0,       "",             "shown than the limit of 300"                             },
      {"x = y;",                                                "x = ;",             30,      "",             "the limit on errors is 5"                                },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.before + row.repeated);
    const Reading reading = ReadModel(
        "x : int; p : bool;" + row.before + Repeat(row.repeated, row.times) + row.after, options);
    if (row.fragment.empty()) {
      EXPECT_EQ(reading.ErrorText(), "");
      continue;
    }
    ASSERT_FALSE(reading.errors.empty());
    EXPECT_LE(reading.errors.size(), 5U);
    EXPECT_NE(reading.ErrorText().find(row.fragment), std::string::npos)
        << reading.ErrorText().substr(0, 1000);
  }
}

TEST(LimitsTest, LongChainsNeedNoDeepStack) {
  constexpr int kTerms = 100000;
  const struct {
    std::string before, repeated, after;
  } kRows[] = {
      {"x = ",     "x + ",     "1;" },
      {"",         "p && ",    "p;" },
      {"p -> (",   "p && ",    "p);"},
      {"x = ",     "2 * 1 - ", "1;" },
      {"x = sum(", "x, ",      "x);"},
  };
  for (const auto& row : kRows) {
    const Reading reading = ReadModel("x : int = [1, 2]; p : bool; " + row.before +
                                      Repeat(row.repeated, kTerms) + row.after);
    EXPECT_EQ(reading.ErrorText(), "");
    ASSERT_NE(reading.model, nullptr);
  }
}

TEST(LimitsTest, FunctionsAreNotDeeperThanTheStack) {
  std::string text = "x : int; let f0(a) = a > 0";
  for (int i = 1; i < 100000; ++i)
    text += "; let f" + std::to_string(i) + "(a) = f" + std::to_string(i - 1) + "(a)";
  EXPECT_NE(
      ReadModel(text + "; f99999(x);").ErrorText().find("functions are deeper than the limit"),
      std::string::npos);
}

}  // namespace
