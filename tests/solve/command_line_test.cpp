#include <gtest/gtest.h>

#include <fstream>

#include "tests/solve/zultav_program.h"

namespace {

using nlohmann::json;

// Bounds propagation refutes it only after a very long search.
constexpr char kPigeons[] =
    "hole[1..14] : int = [1, 13];\n"
    "for i in 1..14, j in i+1..14 : hole[i] <> hole[j];\n";
constexpr char kDigits[] = "x : int = [0, 9];\n";

struct UsageCase {
  std::string arguments, message;
};

TEST(CommandLineTest, MisuseIsAnsweredWithAReason) {
  const UsageCase rows[] = {
      {"",                                      "subcommand is required"                      },
      {"sovle model.zul",                       "unknown command 'sovle'"                     },
      {"solve",                                 "MODEL is required"                           },
      {"solve no_such_file.zul",                "cannot read 'no_such_file.zul': No such file"},
      {"solve /",                               "cannot read '/': Is a directory"             },
      {"solve - --frobnicate",                  "--frobnicate"                                },
      {"solve - -n 0",                          "'0' is not a whole number from 1"            },
      {"solve - -n -1",                         "'-1' is not a whole number from 1"           },
      {"solve - -n 99999999999999999999",       "not a whole number"                          },
      {"solve - --max-nodes many",              "'many' is not"                               },
      {"solve - -a -n 2",                       "excludes"                                    },
      {"solve - -a --propagate-only",           "excludes"                                    },
      {"solve - -t 0",                          "'0' is not a positive number"                },
      {"solve - -t nan",                        "'nan' is not a positive number"              },
      {"solve - -p -1",                         "'-1' is not a positive number"               },
      {"solve - -p 1e-6x",                      "'1e-6x' is not"                              },
      {"solve - --eps 1,-1",                    "'1,-1' is not of the form ABS or ABS,REL"    },
      {"solve - --trig-limits 3,2",             "LOW,HIGH"                                    },
      {"solve - --ratio 1",                     "'1' is not a number from 0"                  },
      {"solve - --select last",
       "'last' is not one of adaptive, by-kind, first, largest, smallest, round-robin"        },
      {"solve - --split half",                  "one of lower, upper, least, greatest"        },
      {"solve - --format xml",                  "one of text, json"                           },
      {"solve - --include no_such_folder",      "cannot include from 'no_such_folder': No"    },
      {"solve - --include ''",                  "the name is empty"                           },
      {"solve - --data -",                      "cannot both come from standard input"        },
      {"solve - -D x",                          "'x' is not of the form NAME=VALUE"           },
      {"solve - -D =1",                         "NAME=VALUE"                                  },
      {"types --module no_such_module",         "no_such_module"                              },
      {"solve - --module ../lib/ZULTavNumbers", "cannot open module"                          },
  };
  for (const auto& [arguments, message] : rows) {
    SCOPED_TRACE(arguments);
    const Result result = Zultav(arguments, kDigits);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.rfind("zultav: ", 0), 0u);
    EXPECT_NE(result.err.find(message), std::string::npos) << result.err;
  }
}

TEST(CommandLineTest, FilesAreIncludedFromAllowedFoldersOnly) {
  const std::string folder = testing::TempDir() + "zultav_included";
  const std::string file = folder + "/model/model.zul", run = folder + "/model/run.zck";
  const Result made =
      Zultav("--version", {},
             "rm -rf " + folder + "; mkdir -p " + folder + "/model/parts " + folder + "/else; cd " +
                 folder +
                 "; "
                 "echo 'let n = 2; include \"more.zul\";' > model/parts/some.zul; "
                 "echo 'let m = 3;' > model/parts/more.zul; echo 'let k = 4;' > else/other.zul; "
                 "ln -s ../else/other.zul model/link.zul; ln -s parts/more.zul model/inner.zul; "
                 "ln -s ../../else model/parts/away; mkfifo model/fifo;");
  ASSERT_EQ(made.status, 0) << made.err;
  const std::string kLongName(5000, 'a');
  constexpr char kOutside[] = "it is outside of the model's folder";
  const struct {
    std::string name, options, expected;  // a line of a solution, or a part of the error
  } rows[] = {
      {"parts/some.zul",       "",                                     "x = [2,2]"         },
      {"inner.zul",            "-D n=5",                               "x = [5,5]"         },
      {"../model/inner.zul",   "-D n=5",                               "x = [5,5]"         },
      {"../else/other.zul",    "-D n=5",                               kOutside            },
      {"link.zul",             "-D n=5",                               kOutside            },
      {"parts/away/other.zul", "-D n=5",                               kOutside            },
      {"/etc/passwd",          "-D n=5",                               kOutside            },
      {"/dev/null",            "-D n=5 --include /",                   "no regular file"   },
      {"other.zul",            "-D n=5",                               "No such file"      },
      {"other.zul",            "-D n=5 --include " + folder + "/else", "x = [5,5]"         },
      {"link.zul",             "-D n=5 --include / --include .",       "x = [5,5]"         },
      {"parts",                "",                                     "no regular file"   },
      {"fifo",                 "",                                     "no regular file"   },
      {"model.zul",            "",                                     "in a circle"       },
      {"../model/./model.zul", "",                                     "in a circle"       },
      {"",                     "",                                     "no name of a file" },
      {kLongName,              "",                                     "File name too long"},
  };
  for (const auto& [name, options, expected] : rows) {
    SCOPED_TRACE(name + " " + options);
    const std::string model = "include \"" + name + "\"; x : int; x = n;";
    std::ofstream(file) << model;
    const Result result = Zultav("solve " + file + " " + options);
    EXPECT_EQ(result.status, expected[0] == 'x' ? 0 : 3);
    EXPECT_NE((result.out + result.err).find(expected), std::string::npos) << result.err;
    EXPECT_EQ(Zultav("solve - " + options, model, "cd " + folder + "/model;").status,
              result.status);
  }
  // A saved run has all that it needs.
  std::ofstream(file) << "include \"parts/some.zul\"; x : int = [1, n + m];";
  Zultav("solve " + file + " -a --max-nodes 3 --checkpoint " + run);
  const Result resumed = Zultav("resume " + run, {}, "rm -rf " + folder + "/model/parts;");
  EXPECT_NE(resumed.out.find("x = [5,5]\n----------\n==========\n"), std::string::npos);
  const json document = Zultav("check " + file + " --format json").Json();
  EXPECT_EQ(document["errors"][0]["file"], file);
  Zultav("--version", {}, "rm -rf " + folder + ";");
}

TEST(CommandLineTest, FailuresBeforeTheModelAreInTheDocumentToo) {
  const json document = Zultav("solve no_such_file.zul --format json").Json();
  EXPECT_EQ(document["errors"][0]["file"], "no_such_file.zul");
  EXPECT_EQ(document["status"], "UNKNOWN");
}

TEST(CommandLineTest, HelpTeachesAndVersionTells) {
  for (const char* command : {"", "solve", "check", "operators", "types"}) {
    SCOPED_TRACE(command);
    const Result help = Zultav(std::string(command) + " --help");
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("\n  zultav "), std::string::npos) << "examples";
  }
  const Result version = Zultav("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out.rfind("zultav ", 0), 0u);
}

struct LimitCase {
  std::string model, arguments, status;
  std::size_t solutions;
  int exit;
};

TEST(CommandLineTest, EachLimitHasItsEnding) {
  const LimitCase rows[] = {
      {kDigits,             "",                 "SATISFIED",     1,  0},
      {kDigits,             "-n 3",             "SATISFIED",     3,  0},
      {kDigits,             "-n 10",            "ALL_SOLUTIONS", 10, 0},
      {kDigits,             "-n 11",            "ALL_SOLUTIONS", 10, 0},
      {kDigits,             "-a --max-nodes 8", "SATISFIED",     3,  4},
      {kDigits,             "-a --max-nodes 1", "UNKNOWN",       0,  4},
      {kPigeons,            "--max-nodes 1000", "UNKNOWN",       0,  4},
      {kPigeons,            "-t 0.2",           "UNKNOWN",       0,  4},
      {"x : int = [1, 1];", "-n 1",             "ALL_SOLUTIONS", 1,  0},
      {"x : int = Nil;",    "",                 "UNSATISFIABLE", 0,  0},
  };
  for (const auto& [model, arguments, status, solutions, exit] : rows) {
    SCOPED_TRACE(arguments);
    const Result result = Zultav("solve - --format json " + arguments, model);
    EXPECT_EQ(result.status, exit);
    EXPECT_EQ(result.Json()["status"], status);
    EXPECT_EQ(result.Json()["solutions"].size(), solutions);

    const Result text = Zultav("solve - " + arguments, model);
    EXPECT_EQ(text.status, exit);
    const std::string marker = exit == 4                   ? "=====UNKNOWN====="
                               : status == "ALL_SOLUTIONS" ? "=========="
                               : status == "UNSATISFIABLE" ? "=====UNSATISFIABLE====="
                                                           : "----------";
    EXPECT_EQ(text.Lines().back(), marker);
  }
}

TEST(CommandLineTest, ASignalEndsTheSearchInGoodOrder) {
  for (const char* signal : {"INT", "TERM"}) {
    const Result result = Zultav("solve - --format json", kPigeons,
                                 "timeout --preserve-status -s " + std::string(signal) + " 0.5");
    EXPECT_EQ(result.status, 4) << result.err;
    EXPECT_EQ(result.Json()["status"], "UNKNOWN");
    EXPECT_GT(result.Json()["statistics"]["nodes"], 0);
  }
}

TEST(CommandLineTest, OutputThatCannotBeWrittenIsAnError) {
  const std::pair<std::string, const char*> rows[] = {
      {"> /dev/full; echo status $? >&2; }",   "No space left on device"},
      {">&-; echo status $? >&2; }",           "Bad file descriptor"    },
      {"; echo status $? >&2; } | sleep 0; }", "Broken pipe"            },
  };
  for (const auto& [output, reason] : rows) {
    const bool piped = output.find('|') != std::string::npos;
    const Result result =
        Zultav("solve -a -D n=10 " + Example("queens8") + output, "", piped ? "{ {" : "{");
    EXPECT_EQ(result.err,
              std::string("zultav: cannot write to standard output: ") + reason + "\nstatus 5\n");
  }
}

TEST(CommandLineTest, ModulesAreFoundThroughTheEnvironment) {
  const Result result = Zultav("types", "", "ZULTAV_MODULE_PATH=/nonexistent::/tmp");
  EXPECT_EQ(result.status, 0) << "other places are searched after it";
  const Result missing = Zultav("types --module Strange", "", "ZULTAV_MODULE_PATH=/my/modules");
  EXPECT_NE(missing.err.find("searched: /my/modules, /"), std::string::npos) << missing.err;
}

TEST(CommandLineTest, HugeInputIsAnsweredOrRefusedByName) {
  const struct {
    std::string before, repeated;
    int times;
    std::string after;
    int status;
    const char* fragment;
  } rows[] = {
      {"",           "x >= 1;\n", 1000000,  "",                   0, "x = [1,1]"                },
      {"x = 0",      " + 1 - 1",  1250000,  ";",                  0, "x = [0,0]"                },
      {"x = ",       "(",         100000,   "1;",                 3, "the limit of 1000"        },
      {"x = 1",      "0",         10000000, ";",                  3, "the limit of 1000"        },
      {"q[1..",      "10",        4,        "] : int;",           3, "the limit of 2000000"     },
      {"",           "n",         1000000,  " : int;",            3, "the limit of 255"         },
      {"z ^ 1",      "0",         6,        " = 0.5;",            0, "z = [0.9999993,"          },
      {"x ^ 1",      "0",         6,        " > 3;",              0, "x = [2,2]"                },
      {"x = 3 ^ 1",  "0",         6,        ";",                  3, "does not fit into 64 bits"},
      {"z <= 1e-1",  "0",         6,        ";",                  0, "z = [0.0,"                },
      {"/* ",        "a",         10000000, "",                   3, "comment"                  },
      {"for i in 1", "..9",       1,        "9999999999: x = 1;", 3, "the limit of"             },
  };
  for (const auto& row : rows) {
    std::string text = "x : int = [0, 9]; z : real = [0, 2];" + row.before;
    for (int i = 0; i < row.times; ++i) text += row.repeated;
    const Result result = Zultav("solve -", text + row.after);
    EXPECT_EQ(result.status, row.status) << row.before << result.err.substr(0, 300);
    EXPECT_NE((result.out + result.err).find(row.fragment), std::string::npos)
        << row.before << result.out.substr(0, 300) << result.err.substr(0, 300);
    EXPECT_LT(result.err.size(), 2000U);
  }
}

}  // namespace
