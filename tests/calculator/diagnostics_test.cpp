#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "tests/calculator/calculator_world.h"

namespace {

TEST(DiagnosticsTest, EveryFaultIsNamedWhereItStands) {
  const struct {
    std::string source, place;           // "line:column" of the first error
    std::vector<std::string> fragments;  // of the printed error
  } kRows[] = {
  // Text
      {"x = 3 $ 4;",                                "1:7",  {"unexpected character '$'"}                                          },
      {"p | q;",                                    "1:3",  {"unexpected character '|'", "'abs(x)'"}                              },
      {"x =\u00a0y;",                               "1:4",  {"unexpected no-break space (U+00A0)", "remove it"}                   },
      {"x = y\u200b;",                              "1:6",  {"unexpected zero-width space (U+200B)"}                              },
      {"x = \ufeffy;",                              "1:5",  {"unexpected byte order mark (U+FEFF)"}                               },
      {"x \u2265 y;",                               "1:3",  {"'>='"}                                                              },
      {"x = \x01;",                                 "1:5",  {"control character (U+0001)"}                                        },
      {"x = 12ab;",                                 "1:5",  {"'12ab' is neither a number nor a name"}                             },
      {"x = .5;",                                   "1:5",  {"a decimal has digits before and after its point"}                   },
      {"x = 1 /* no end",                           "1:7",  {"this comment has no end"}                                           },
      {"x = 99999999999999999999;",                 "1:5",  {"beyond the limit of 64 bits"}                                       },
 // Grammar
      {"x = 3\ny = 4;",                             "1:6",  {"expected an operator or ';' after the statement\n"}                 },
      {"x = 3",                                     "1:6",  {"';' after the statement before the end"}                            },
      {"x = (y + 2;",                               "1:11", {"expected an operator or ')', found ';'"}                            },
      {"x < y << 3;",                               "1:7",  {"one comparison of this chain is stated", "'a << b <== c'"}          },
      {"x < y <> 3;",                               "1:7",  {"'<>' cannot stand in a chain", "alldifferent(a, b, c)"}             },
      {"p -> (x < y < 3);",                         "1:9",  {"this chain of comparisons is stated"}                               },
      {"let f(i) = i + zz; x = y;",                 "1:16", {"unknown name 'zz'"}                                                 },
      {"let f(i, i) = i;",                          "1:10", {"'i' is a parameter already"}                                        },
      {"let f(i) = f(i - 1);",                      "1:12", {"unknown operator 'f'"}                                              },
      {"let f(i) = i; x = f;",                      "1:19", {"expected '(' and operands after the function 'f'"}                  },
      {"let f(i) = 1 / i; x = f(0);",               "1:14", {"division by zero", "in 'f', used in line"}                          },
      {"let f(i) = i; x = f(1, 2);",                "1:19", {"'f' takes 1 operands, not 2", "in line"}                            },
      {"let sin(i) = i;",                           "1:5",  {"'sin' is an operator"}                                              },
      {"x = size(y);",                              "1:5",  {"'size' takes one list or set"}                                      },
      {"symmetric([x, y], [x]);",                   "1:1",  {"lists of the same length"}                                          },
      {"x in {1, y};",                              "1:10", {"a set holds integers", "'interval int'"}                            },
      {"x in {1 2}; y = zz;",                       "1:9",  {"expected an operator, ',' or '}', found '2'"}                       },
      {"w in {1};",                                 "1:3",  {"'in' asks of an integer"}                                           },
      {"z : real in {1};",                          "1:5",  {"only integers have a set"}                                          },
      {"z : int in 5..4;",                          "1:12", {"no value of the type is in this set"}                               },
      {"p <-> x;",                                  "1:7",  {"'<->' stands between truth values"}                                 },
      {"p xor (x < y);",                            "1:10", {"'xor' stands between truth values"}                                 },
      {"count(i in 1..2) array[i] = 0;",            "1:1",  {"what 'count' counts are truth values"}                              },
      {"x = if p then 1;",                          "1:16", {"expected an operator or 'else', found ';'"}                         },
      {"if x + 1 then y = 1;",                      "1:4",  {"expected a truth value; this is of type 'interval int'"}            },
      {"if p then x;",                              "1:11", {"expected a truth value"}                                            },
      {"let k = 2; assert(k > 3, \"k is small\");", "1:19", {"error: k is small"}                                                 },
      {"assert(x > 3, \"no\");",                    "1:8",  {"'x' is a variable"}                                                 },
      {"show \"x\" y;",                             "1:10", {"expected ',' or ';' after what is shown"}                           },
      {"show x + zz;",                              "1:10", {"unknown name 'zz'"}                                                 },
      {"show (x + y) / 2;",                         "1:1",  {"unknown operator 'show'", "'show \"\", (x + y) / 2;'"}              },
      {"if p then show x;",                         "1:11", {"cannot depend on a condition that solutions decide"}                },
      {"print(x);",                                 "1:1",  {"unknown operator 'print'", "'show \"x is \", x;'"}                  },
      {"show -9223372036854775807..0;",             "1:1",  {"unknown name 'show'"}                                               },
      {"assert(1 > 3, \"no);",                      "1:15", {"this text has no end in its line"}                                  },

      {"x + = y;",                                  "1:5",  {"expected an expression, found '='"}                                 },
      {"a[1, 2] : int;",                            "1:3",  {"is a range or a set, such as 1..9; this is the integer 1"}          },
      {"a[1..2, 3] : int;",                         "1:9",  {"is a range or a set, such as 1..9; this is the integer 3"}          },
      {"a int;",                                    "1:3",  {"';' after the statement, found 'int'"}                              },
      {"a : = 3;",                                  "1:5",  {"expected a type, found '='"}                                        },
      {"a : int == 3;",                             "1:9",  {"'=' and an initial value, or ';', after the type"}                  },
      {"a : int = ;",                               "1:10", {"expected an initial value after '='"}                               },
      {"a : int = 3, 4;",                           "1:12", {"expected ';' after the initial value, found ','"}                   },
      {"a : int\nb : int;",                         "1:8",  {"'=' and an initial value, or ';', after the type\n"}                },
      {"let 3 = n;",                                "1:5",  {"expected the name of a constant, found '3'"}                        },
      {"for i = 1..3 : x = i;",                     "1:7",  {"expected 'in' and a range"}                                         },
      {"for i in 1 : x = i;",                       "1:10", {"is a range or a set, such as 1..9; this is the integer 1"}          },
      {"for i in 1..2 x = i;",                      "1:15", {"expected ',', 'where' or ':' after the range"}                      },
      {"for i in 1..2 : { x = i;",                  "1:25", {"expected '}' before the end of the text"}                           },
      {"for i in 1..2 : a : int;",                  "1:17", {"cannot be declared inside 'for'"}                                   },
      {"sum(i in 1..3, x) = 3;",                    "1:17", {"expected 'in' and a range"}                                         },
      {"sum = 3;",                                  "1:5",  {"expected '(' after 'sum'"}                                          },
 // Names
      {"x = yy;",                                   "1:5",  {"unknown name 'yy'", "did you mean 'y'?"}                            },
      {"x = Array[1];",                             "1:5",  {"unknown array 'Array'", "did you mean 'array'?"}                    },
      {"w = sqr(w);",                               "1:5",  {"unknown operator 'sqr'", "'x ^ 2'"}                                 },
      {"w = log(w);",                               "1:5",  {"unknown operator 'log'", "'ln(x)'"}                                 },
      {"w = pow(w, 2);",                            "1:5",  {"unknown operator 'pow'", "'x ^ y'"}                                 },
      {"x > 1 and y < 2;",                          "1:7",  {"found 'and'", "'&&'"}                                               },
      {"not p;",                                    "1:5",  {"found 'p'", "'~'"}                                                  },
      {"if (p) x = 1;",                             "1:8",  {"expected an operator or 'then', found 'x'", "'if p then"}           },
      {"else x = 2;",                               "1:6",  {"'if p then x = 1; else x = 2;'"}                                    },
      {"z : real = 3,5;",                           "1:13", {"found ','\n"}                                                       },
      {"z : integer = 3;",                          "1:5",  {"unknown type 'integer'", "'x : int;'"}                              },
      {"z : int = 0..9;",                           "1:12", {"a set of integers", "'[0, 10]'"}                                    },
      {"x => y;",                                   "1:4",  {"found '>'", "'>='"}                                                 },
      {"w = w ** 2;",                               "1:8",  {"found '*'", "'x ^ y'"}                                              },
      {"x := 3;",                                   "1:4",  {"found '='", "'x = 3;'"}                                             },
      {"w = 2w;",                                   "1:5",  {"'2w' is neither", "'2 * x'"}                                        },
      {"max : int;",                                "1:5",  {"'max' is a word of the language"}                                   },
      {"x in [2, 4];",                              "1:6",  {"expected a set", "'x in 2..4'"}                                     },
      {"x = y + ä;",                               "1:9",  {"'ä'", "names consist of"}                                          },
      {"x = mod(y, 3);",                            "1:5",  {"found 'mod'", "'x mod y'"}                                          },
      {"int z;",                                    "1:5",  {"'x : int;'"}                                                        },
      {"primenumber(x);",                           "1:1",  {"did you mean 'PrimeNumber'?"}                                       },
      {"p -> alldiferent(x, y);",                   "1:6",  {"did you mean 'alldifferent'?"}                                      },
      {"z : intreval int;",                         "1:5",  {"unknown type", "did you mean 'interval int'?", "'angle'"}           },
      {"z : ZULTaVoInteger;",                       "1:5",  {"unknown type 'ZULTaVoInteger'"}                                     },
      {"x = sqrt;",                                 "1:5",  {"expected '(' and operands after the operator 'sqrt'"}               },
      {"x : int;",                                  "1:1",  {"'x' has a meaning already"}                                         },
      {"for x in 1..2 : y = x;",                    "1:5",  {"'x' has a meaning already"}                                         },
      {"\nlet n = 1;\nlet n = 2;",                  "3:5",  {"it was introduced in line 3"}                                       },
 // Types
      {"x = int(p < q);",                           "1:11", {"no truth value"}                                                    },
      {"let k = int(PrimeNumber(7));",              "1:9",  {"cannot be decided while the model is read"}                         },
      {"x = y + p;",
       "1:7",                                               {"no operator '+' takes 'interval int' and 'single bool'",
        "candidate: + (single int, single int) -> single int", "more of that name",
        "'int(…)' is 1 where it is true"}                                                                          },
      {"p && 1;",                                   "1:6",  {"this is the integer 1"}                                             },
      {"p || 1;",
       "1:3",                                               {"takes 'single bool' and the integer 1",
        "candidate: || (single bool, single bool) -> single bool"}                                                   },
      {"(x < 3) -> p;",                             "1:9",  {"for truth values write '=='"}                                       },
      {"(p = q) -> p;",                             "1:4",  {"no truth value", "write '=='"}                                      },
      {"PrimeNumber(p);",                           "1:1",  {"candidate: PrimeNumber (interval int) -> single bool"}              },
      {"sqrt(x, y) = 1;",                           "1:1",  {"no operator 'sqrt' takes 2 operands", "candidate: sqrt"}            },
      {"x + 1;",                                    "1:1",  {"comparison or a boolean expression; this is of type 'interval int'"}},
      {"3.5;",                                      "1:1",  {"this is the number 3.5"}                                            },
      {"array = 3;",                                "1:1",  {"'array' is an array", "array[1]"}                                   },
      {"array;",                                    "1:1",  {"'array' is an array"}                                               },
 // Values
      {"array[4] = 0;",                             "1:1",  {"index 4 is outside the range 1..3 of 'array'"}                      },
      {"for i in 1..9, j in 2..2 : array[i] = j;",  "1:28", {"index 4", "with i = 4, j = 2"}                                      },
      {"array[x] = 0;",                             "1:7",  {"an index must be an integer that is known"}                         },
      {"array[1.5] = 0;",                           "1:7",  {"an index must be an integer"}                                       },
      {"sum(m[1, 4..5]) = 0;",                      "1:5",  {"index 5 is outside the range 4..4 of 'm'"}                          },
      {"x = m[1, 4, 2];",                           "1:13", {"'m' has 2 indices, not 3"}                                          },
      {"x = m[1];",                                 "1:5",  {"'m' is an array; expected one element, such as m[1,4]"}             },
      {"x = [1, 2];",                               "1:5",  {"this is a list; expected one value"}                                },
      {"x = 1..2;",                                 "1:6",  {"this is a set of integers; expected one value"}                     },
      {"x = array[..];",                            "1:5",  {"this is a list"}                                                    },
      {"x = max([1, *]);",                          "1:9",  {"this is '*'"}                                                       },
      {"let g = [1, [2, y]];",                      "1:17", {"'y' is a variable"}                                                 },
      {"x = [1, 2;",                                "1:10", {"expected an operator, ',' or ']', found ';'"}                       },
      {"x[1] = 0;",                                 "1:1",  {"'x' is no array"}                                                   },
      {"for i in 1..x : y = i;",                    "1:13", {"'x' is a variable"}                                                 },
      {"for i in 1..7/2 : y = i;",                  "1:14", {"the ends of a range are integers"}                                  },
      {"for i in 1..2 where i : y = i;",            "1:21", {"a condition must be true or false"}                                 },
      {"let k = x + 1;",                            "1:9",  {"'x' is a variable"}                                                 },
      {"let k = 2^63;",                             "1:10", {"does not fit into 64 bits"}                                         },
      {"let k = 1 / (2 - 2);",                      "1:11", {"division by zero"}                                                  },
      {"min(i in 1..0) x = 3;",                     "1:1",  {"of no terms are undefined"}                                         },
      {"x = -9223372036854775808^2;",               "1:6",  {"beyond the limit of 64 bits"}                                       },
      {"w = 1e400;",                                "1:5",  {"this constant is too large"}                                        },
      {"z : int = [1 2];",                          "1:14", {}                                                                    },
      {"z : int = [1, 2] 3;",                       "1:18", {}                                                                    },
      {"z : int = 1.5;",                            "1:11", {"'1.5' is a real; the type 'interval int'"}                          },
      {"z : int = [1,\u00a02];",                    "1:14", {"unexpected no-break space"}                                         },
      {"z : real = .5;",                            "1:12", {"a decimal has digits before"}                                       },
      {"z : real = 0x10;",                          "1:12", {"'0x10' is neither a number"}                                        },
      {"z : int = [5, 1];",                         "1:11", {"this interval is empty", "'Nil'"}                                   },
      {"z : real = [Max, 1];",                      "1:12", {"this interval is empty"}                                            },
      {"z : int = [0, 2147483647];",                "1:15", {"beyond the limits of 'interval int'"}                               },
      {"z : single int = -3000000000;",             "1:18", {"beyond the limits of 'single int'"}                                 },
      {"z : real = [0, 2 * 1e19];",                 "1:16", {"beyond the limits of 'interval real'"}                              },
      {"z : real = 1e400;",                         "1:12", {"this constant is too large"}                                        },
      {"let k = 1e400;",                            "1:9",  {"this constant is too large"}                                        },
      {"let k = 2 * sqrt(1 - 2);",                  "1:13", {"this constant has no value"}                                        },
      {"z : int = Many;",                           "1:14", {"no value of the type 'interval int'"}                               },
      {"z : int = [0, 9999999999];",
       "1:15",                                              {"the integer 9999999999 is beyond the limits of 'interval int', -2147483646 to "
        "2147483646"}                                                                                               },
      {"z : single int = [1, 2];",                  "1:19", {"no value of the type 'single int'"}                                 },
      {"z : bool = 1;",                             "1:12", {"no value of the type 'single bool'", "'True' or 'Any'"}             },
      {"z : int = [1, x];",                         "1:15", {"'x' is a variable"}                                                 },
      {"z[1..x] : int;",                            "1:6",  {"'x' is a variable"}                                                 },
      {"z : real = sqrt(2);",                       "1:12", {"must be known while the model is read"}                             },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    const Reading reading = ReadModel(
        "x, y : int; p, q : bool; w : real; array[1..3], m[1..2, 4..4] : int;\n" + row.source);
    ASSERT_FALSE(reading.errors.empty());
    const ZULTavDiagnostic& first = reading.errors[0];
    EXPECT_EQ(std::to_string(first.line - 1) + ":" + std::to_string(first.column), row.place);
    for (const std::string& fragment : row.fragments)
      EXPECT_NE(reading.ErrorText().find(fragment), std::string::npos) << reading.ErrorText();
  }
}

TEST(DiagnosticsTest, WhatIsHardlyMeantIsWarnedOf) {
  const struct {
    std::string source, place, fragment;  // of the only warning, if any
  } kRows[] = {
      {"w = x / 2;",                        "1:7",  "'x / 2.0'"    },
      {"x / 2 = w;",                        "1:3",  "'/' is exact" },
      {"w = 1 + 2 * (x / y);",              "1:16", "'/' is exact" },
      {"w = sqrt(x / y);",                  "1:12", "'/' is exact" },
      {"for i in 1..3 : w = array[i] / 2;", "1:30", "'/' is exact" },
      {"z : angle; z = odd / 2;",           "1:20", "'/' is exact" },
      {"w = even / 2;",                     "",     ""             },
      {"w = x / 1;",                        "",     ""             },
      {"w = x / 2.0;",                      "",     ""             },
      {"w = (real) x / 2;",                 "",     ""             },
      {"w = 7 / 2;",                        "",     ""             },
      {"y = x / 2;",                        "",     ""             },
      {"x == 3;",                           "1:3",  "write '='"    },
      {"2 + 2 = 5;",                        "1:7",  "this is false"},
      {"p == (x == 3);",                    "",     ""             },
      {"x == 3 || y == 3;",                 "",     ""             },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    std::vector<ZULTavDiagnostic> errors, warnings;
    const auto model = ZULTavCalculator({&NumberModule()})
                           .Read(
                               "x, y : int; odd : int = 7; even : int = 6; p : bool; w : real; "
                               "array[1..3] : int;\n" +
                                   row.source,
                               "test", {}, errors, &warnings);
    EXPECT_NE(model, nullptr);
    ASSERT_EQ(warnings.size(), row.place.empty() ? 0U : 1U);
    if (warnings.empty()) continue;
    std::ostringstream out;
    warnings[0].Print(out);
    EXPECT_EQ(std::to_string(warnings[0].line - 1) + ":" + std::to_string(warnings[0].column),
              row.place);
    EXPECT_NE(out.str().find(": warning: "), std::string::npos);
    EXPECT_NE(out.str().find(row.fragment), std::string::npos) << out.str();
  }
}

TEST(DiagnosticsTest, ErrorIsPrintedWithItsLineAndCaret) {
  const Reading reading = ReadModel("x : int;\n\tx = /* ä */ xx + 1;");
  EXPECT_EQ(reading.ErrorText(),
            "test:2:14: error: unknown name 'xx'\n"
            "  \tx = /* ä */ xx + 1;\n"
            "  \t            ^~\n"
            "  note: did you mean 'x'?\n");
  EXPECT_EQ(ReadModel("\ufeffx = ;").errors.at(0).column, 5) << "a leading mark is skipped";
  EXPECT_EQ(reading.errors[0].length, 2);
  // Of a very long line a part is shown.
  const Reading wide = ReadModel("x : int; x = " + std::string(1000000, ' ') + "§" +
                                 std::string(1000000, ' ') + ";");
  ASSERT_EQ(wide.errors.size(), 1U);
  EXPECT_EQ(wide.errors[0].column, 1000014);
  EXPECT_LT(wide.errors[0].sourceLine.size(), 200U);
  EXPECT_EQ(wide.errors[0].sourceLine.substr(static_cast<std::size_t>(wide.errors[0].caret), 2),
            "§");
  std::ostringstream out;
  ZULTavDiagnostic{"no place", "file", 0, 0, "", 0, 0, {}, false}.Print(out);
  EXPECT_EQ(out.str(), "file: error: no place\n");
}

TEST(DiagnosticsTest, ReadingGoesOnBehindAnError) {
  const struct {
    std::string source;
    std::vector<int> lines;  // of all errors
  } kRows[] = {
      {"x = ;\ny = 1;\nx : int;\nx = $;\nx = 1;\nx = z;",                  {1, 2, 4, 6}},
      {"x : nt;\nx = 1;\nx + 2 = 3;\ny : int = x x;\ny = 1;",              {1, 4}      },
      {"for i in 1..2 : { x = ;\n y = i;\n}\n z = 3;\n",                   {1, 4}      },
      {"for i in 1..2 : {\n for j in 1..2 : { ) }\n y = i;\n}\n z = 3;\n", {2, 5}      },
      {"x : int;\nfor i in 1..1000 : x = q;\nx = r;\nx = q;",              {2, 3}      },
      {"x : int = 1\ny : int = [1,\n2]\nz = y;\nw : int = 3 *\n2\nmod 4;", {1, 3, 4}   },
      {"x : int;\nx = 1\nx = z;\ny : int\ny = $;",                         {2, 3, 4, 5}},
      {"}\nx = 1;",                                                        {1, 2}      },
      {"let a = 1 +;\nlet b = a;\nlet c = d;\nlet e = c;",                 {1, 3}      },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    std::vector<int> lines;
    const Reading reading = ReadModel(row.source);
    for (const ZULTavDiagnostic& error : reading.errors) lines.push_back(error.line);
    EXPECT_EQ(lines, row.lines) << reading.ErrorText();
  }
}

TEST(DiagnosticsTest, TenMistakesInAHundredLinesAreReported) {
  const std::string good =
      "let n# = 3, t# = [[4, 7, 1], [1, 9, 2]], SIDES# = {1, 3, 5..9};\n"
      "x#[1..n#, 0..1], y# : int = [1, 9];\n"
      "s# : int in SIDES#;  w# : real = [0, 1.5];  p# : bool;\n"
      "let far#(a, b) = abs(a - b) >= 2;\n"
      "far#(x#[1, 0], y#); symmetric(x#[.., 0], x#[.., 1]);\n"
      "for i in 1..n#, j in 0..1 where i > j : x#[i, j] <= y# + t#[1, i];\n"
      "count(i in 1..n#) (x#[i, 0] == 3) <= 2; p# <-> (y# >> 3) xor ~p#;\n"
      "if p# then { y# = 3; x#[1, 1] < y# <= 9; } else alldifferent(x#[.., 1]);\n"
      "show \"y is \", y#, \" of \", x#[1, ..]; assert(n# > 2, \"n is small\");\n";
  const struct {
    std::string line;
    int column, length;
    std::string fragment;
  } kMistakes[] = {
      {"y# = y# +;",                           10, 1, "expected an expression"           },
      {"x#[4, 0] = 2;",                        1,  8, "index 4 is outside the range 1..3"},
      {"show \"the total is \" y#;",           22, 2, "after what is shown"              },
      {"z# : int in [1, 5];",                  13, 6, "is a range or a set"              },
      {"  x#[1, ..] <= 3;",                    3,  9, "expected one value"               },
      {"include \"none\";",                    9,  6, "can be included"                  },
      {"let g#(a) = a * aa;",                  17, 2, "unknown name 'aa'"                },
      {"if p# then y# else y# = 2;",           12, 2, "expected a truth value"           },
      {"assert(n# > 3, \"n# is too small\");", 8,  4, "n# is too small"                  },
      {"x#[p#, 0] = w# mod 2.5;",              4,  2, "an index must be an integer"      },
  };
  const auto numbered = [](std::string text, int number) {
    for (std::size_t at = 0; (at = text.find('#')) != std::string::npos;)
      text.replace(at, 1, std::to_string(number));
    return text;
  };
  std::string source;
  for (int i = 0; i < 10; ++i) source += numbered(good + kMistakes[i].line + "\n", i);
  const Reading reading = ReadModel(source);
  ASSERT_EQ(reading.errors.size(), 10U) << reading.ErrorText();
  for (int i = 0; i < 10; ++i) {
    const ZULTavDiagnostic& error = reading.errors[static_cast<std::size_t>(i)];
    SCOPED_TRACE(reading.ErrorText());
    EXPECT_EQ(error.line, 10 * (i + 1));
    EXPECT_EQ(error.column, kMistakes[i].column);
    EXPECT_EQ(error.length, kMistakes[i].length);
    EXPECT_EQ(error.sourceLine, numbered(kMistakes[i].line, i));
    EXPECT_NE(error.message.find(numbered(kMistakes[i].fragment, i)), std::string::npos);
  }
}

/// Texts without folders; "alias" is another name of "once", and "locked" cannot be read.
struct TextsByName final : ZULTavIncludes {
  bool Find(const std::string& name, const std::string&, std::string& found,
            std::string& reason) override {
    found = name;
    reason = "nothing is called so";
    return name != "none";
  }
  std::string IdentityOf(const std::string& found) override {
    return found == "alias" ? "once" : found;
  }
  bool Read(const std::string& found, std::size_t, std::string& text, std::string&) override {
    text = texts[found];
    return found != "locked";
  }

  std::map<std::string, std::string> texts;
};

TEST(DiagnosticsTest, FaultsOfIncludedTextsStandInThem) {
  TextsByName texts;
  texts.texts = {
      {"once",    "\ufefflet n = 3;"                                         },
      {"faulty",  "\nlet n = 4; x = ;\nlet f(i) =\n 1 / i; let i = 1;\nz = 1"},
      {"warned",  "\n w : real; w = n / x;"                                  },
      {"circle",  "include \"circle2\";"                                     },
      {"circle2", "n = 2; include \"circle\";"                               },
      {"back",    "include \"test\";"                                        },
  };
  texts.texts["long"] = std::string(1000, ' ');
  const struct {
    std::string source, places;  // of errors and, after them, of warnings
    std::string fragment;        // of what is printed
  } kRows[] = {
      {"include \"once\"; include \"alias\"; y : int = [n, n + 1];", "",                                   ""                                               },
      {"include \"none\"; include \"locked\";",                      "test:1:9 test:1:25 ",                "called so"                                      },
      {"for i in 1..2 : include \"once\";",                          "test:1:17 ",                         "inside of another"                              },
      {"include once;",                                              "test:1:9 ",                          "'include \"file.zul\";'"                        },
      {"let n = 1;\ninclude \"faulty\";\nx = 1;",                    "faulty:2:5 faulty:2:16 faulty:5:6 ",
       "in line 1 of 'test'"                                                                                                                                },
      {"include \"faulty\";\nx = f(0);",                             "faulty:2:16 faulty:5:6 faulty:4:4 ",
       "in line 2 of 'test'"                                                                                                                                },
      {"include \"faulty\";\nlet i = 2;",                            "faulty:2:16 faulty:5:6 test:2:5 ",
       "in line 4 of 'faulty'"                                                                                                                              },
      {"include \"once\"; include \"warned\"; w = (n + 1) / x;",     "test:1:47 warned:2:18 ",
       "make an operand real"                                                                                                                               },
      {"include \"circle\";",                                        "circle2:1:1 circle2:1:16 ",
       "'circle' includes 'circle2', which includes 'circle'\n"                                                                                             },
      {"include \"back\";",                                          "back:1:9 ",                          "'test' includes 'back', which includes 'test'\n"},
      {"include \"long\";",                                          "test:1:9 ",                          "the limit of 500 bytes"                         },
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.source);
    ZULTavCalculator::Options options;
    options.includes = &texts;
    options.limits.sourceBytes = 500;
    std::vector<ZULTavDiagnostic> errors, warnings;
    const auto model = ZULTavCalculator({&NumberModule()})
                           .Read("x : int; " + row.source, "test", options, errors, &warnings);
    EXPECT_EQ(model != nullptr, errors.empty());
    errors.insert(errors.end(), warnings.begin(), warnings.end());
    std::string places;
    std::ostringstream out;
    for (const ZULTavDiagnostic& error : errors) {
      const int shift = error.file == "test" && error.line == 1 ? 9 : 0;
      places += error.file + ":" + std::to_string(error.line) + ":" +
                std::to_string(error.column - shift) + " ";
      error.Print(out);
    }
    EXPECT_EQ(places, row.places);
    EXPECT_NE(out.str().find(row.fragment), std::string::npos) << out.str();
  }
  EXPECT_EQ(ReadModel("include \"once\";").errors.at(0).message,
            "no other texts can be included here");
}

TEST(DiagnosticsTest, ModuleWithoutTypesIsAnErrorNotACrash) {
  const ZULTaVoModule empty("empty");
  const ZULTavCalculator calculator({&empty, nullptr});
  for (const auto& [source, fragment] : std::vector<std::pair<std::string, std::string>>{
           {"x : int;",       "unknown type 'int'"           },
           {"1 < 0;",         "has a type for the integer 1" },
           {"sqrt(2.5) = 1;", "unknown operator 'sqrt'"      },
           {"1.5 = 2.5;",     "has a type for the number 1.5"},
           {"False;",         "has a type for False"         }
  }) {
    std::vector<ZULTavDiagnostic> errors;
    EXPECT_EQ(calculator.Read(source, "test", {}, errors), nullptr);
    ASSERT_EQ(errors.size(), 1U) << source;
    EXPECT_NE(errors[0].message.find(fragment), std::string::npos) << errors[0].message;
  }
}

}  // namespace
