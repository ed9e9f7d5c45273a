#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "tests/calculator/calculator_world.h"

// Brute force is the oracle: with every variable fixed, propagation finds a model consistent if
// and only if the predicate holds, written in C++ by hand.

namespace {

using Predicate = std::function<bool(int, int, int)>;

struct Row {
  std::string source;
  Predicate holds;
};

int Power(int base, int exponent) {
  int result = 1;
  for (; exponent > 0; --exponent) result *= base;
  return result;
}

bool IsPrime(int n) {
  for (int d = 2; d < n; ++d)
    if (n % d == 0) return false;
  return n > 1;
}

/// Where the model and the predicate disagree first; empty when they agree everywhere.
std::string FirstDifference(const std::string& type, int least, int greatest, const Row& row) {
  const auto value = [&type](int v) {
    return type == "bool" ? std::string(v != 0 ? "True" : "False") : std::to_string(v);
  };
  const std::string text =
      "x : " + type + " = cx; y : " + type + " = cy; z : " + type + " = cz; " + row.source;
  for (int x = least; x <= greatest; ++x)
    for (int y = least; y <= greatest; ++y)
      for (int z = least; z <= greatest; ++z)
        if (IsConsistent(text,
                         {
                             {"cx", value(x)},
                             {"cy", value(y)},
                             {"cz", value(z)}
        }) !=
            row.holds(x, y, z))
          return text + " at " + value(x) + ", " + value(y) + ", " + value(z);
  return {};
}

void Check(const std::string& type, int least, int greatest, const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(FirstDifference(type, least, greatest, row), "");
}

const std::vector<Row>& NumberRows() {
  static const std::vector<Row> rows = {
      {"x + y = z;",                                             [](int x, int y, int z) { return x + y == z; }                          },
      {"x - y * z = -2;",                                        [](int x, int y, int z) { return x - y * z == -2; }                     },
      {"x < y; y <= z;",                                         [](int x, int y, int z) { return x < y && y <= z; }                     },
      {"x > y && y >= z;",                                       [](int x, int y, int z) { return x > y && y >= z; }                     },
      {"x <> y; 2 > z;",                                         [](int x, int y, int z) { return x != y && z < 2; }                     },
      {"x^2 = y + z;",                                           [](int x, int y, int z) { return x * x == y + z; }                      },
      {"-x^2 + 4 = y \\/ z;",                                    [](int x, int y, int z) { return 4 - x * x == std::max(y, z); }         },
      {"x = y /\\ z;",                                           [](int x, int y, int z) { return x == std::min(y, z); }                 },
      {"abs(x) = sign(y) + z;",
       [](int x,                                                           int y, int z) { return std::abs(x) == (y > 0) - (y < 0) + z; }},
      {"x mod 2 = y; z = next(x);",                              [](int x, int y, int z) { return x % 2 == y && z == x + 1; }            },
      {"(x == y) || (y >> z);",                                  [](int x, int y, int z) { return x == y || y > z; }                     },
      {"(x <== y) -> ~(y <<>> z);",                              [](int x, int y, int z) { return x > y || y == z; }                     },
      {"(x << y) == (y >== z);",                                 [](int x, int y, int z) { return (x < y) == (y >= z); }                 },
      {"(x < y) + 1 = z;",                                       [](int x, int y, int z) { return x < y && x + 1 == z; }                 },
      {"(x > y) + 1 = z;",                                       [](int x, int y, int z) { return x > y && y + 1 == z; }                 },
      {"sum(x, y, z) = 1; x = x;",                               [](int x, int y, int z) { return x + y + z == 1; }                      },
      {"alldifferent(x, y, z);",                                 [](int x, int y, int z) { return x != y && y != z && x != z; }          },
      {"exists(i in 1..2) (x * i == y); product(y, z, 1) <= 2;",
       [](int x,                                                           int y, int z) { return (x == y || 2 * x == y) && y * z <= 2; }},
      {"x = x + 1 - y;",                                         [](int,   int y, int) { return y == 1; }                                },
      {"min(x, y) < max(y, z);",
       [](int x,                                                           int y, int z) { return std::min(x, y) < std::max(y, z); }     },
      {"x + y = 2; x + y = z;",                                  [](int x, int y, int z) { return x + y == 2 && z == 2; }                },
      {"(x + y = 2) = z;",                                       [](int x, int y, int z) { return x + y == 2 && z == 2; }                },
      {"x = y; 1 > 2;",                                          [](int,   int,   int) { return false; }                                 },
  };
  return rows;
}

TEST(SemanticsTest, IntervalIntegers) {
  Check("int", -2, 3, NumberRows());
  Check("int", 0, 7,
        {
            {"PrimeNumber(x); y = z;",      [](int x, int y, int z) { return IsPrime(x) && y == z; }  },
            {"PrimeNumber(x) == (y == z);",
             [](int x,                                int y, int z) { return IsPrime(x) == (y == z); }},
            {"x^y = z;",                    [](int x, int y, int z) { return Power(x, y) == z; }      },
            {"x / 2 = y; z >= 0;",          [](int x, int y, int) { return x == 2 * y; }              },
            {"x * 0.5 = y; z < 7.5;",       [](int x, int y, int) { return x == 2 * y; }              },
            {"x / 3.0 <= y + 0.25; z = z;", [](int x, int y, int) { return 4 * x <= 12 * y + 3; }     },
  });
}

TEST(SemanticsTest, SingleIntegers) { Check("single int", -2, 3, NumberRows()); }

TEST(SemanticsTest, IntervalReals) {
  std::vector<Row> rows = NumberRows();
  // A successor of reals is another thing, and tolerance makes strictness something else.
  std::erase_if(rows, [](const Row& row) {
    return row.source.find("next") != std::string::npos ||
           row.source.find("sign") != std::string::npos;
  });
  Check("real", -2, 3, rows);
}

TEST(SemanticsTest, Booleans) {
  Check("bool", 0, 1,
        {
            {"x && y -> z;",                    [](int x, int y, int z) { return !(x && y) || z; } },
            {"x -> y -> z;",                    [](int x, int y, int z) { return !x || !y || z; }  },
            {"~x || y && z;",                   [](int x, int y, int z) { return !x || (y && z); } },
            {"x == y; z;",                      [](int x, int y, int z) { return x == y && z; }    },
            {"x <<>> (y == z);",                [](int x, int y, int z) { return x != (y == z); }  },
            {"x = (y || z);",                   [](int x, int y, int z) { return x == (y || z); }  },
            {"(y && z) = x;",                   [](int x, int y, int z) { return x == (y && z); }  },
            {"x < y; y >= z;",                  [](int x, int y, int z) { return x < y && y >= z; }},
            {"x <> True; False = y \\/ z;",     [](int x, int y, int z) { return !x && !y && !z; } },
            {"exists(x, y, z);",                [](int x, int y, int z) { return x || y || z; }    },
            {"x; x -> ~y; ~z;",                 [](int x, int y, int z) { return x && !y && !z; }  },
            {"forall(i in 1..2) (x || ~z);",    [](int x, int,   int z) { return x || !z; }        },
            {"x; False;",                       [](int,   int,   int) { return false; }            },
            {"let t = 1 = 1; t == x; y \\/ z;", [](int x, int y, int z) { return x && (y || z); }  },
  });
}

TEST(SemanticsTest, EmptyInitialValueIsAContradiction) {
  EXPECT_FALSE(IsConsistent("x : int = Nil;"));
  EXPECT_FALSE(IsConsistent("q[1..3] : real = [2, 1];"));
  EXPECT_FALSE(IsConsistent("p : bool = Nil;"));
  EXPECT_TRUE(IsConsistent("q[1..0] : int = Nil;"));
}

}  // namespace
