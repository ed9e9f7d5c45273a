#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <random>

#include "framework/solver/ZULTaVoInteger.h"
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

/// Draws statements over x, y, z, each with its truth as C++ computes it.
class RandomModel {
 public:
  explicit RandomModel(unsigned int seed) : mRandom(seed) {
    for (unsigned int i = Draw(3) + 1; i > 0; --i) Add(Draw(2) == 0 ? Comparison(0) : Truth(2));
    if (Draw(2) == 0) Add(Comparison(0));  // often the same subexpressions once more
  }
  const Row& Get() const { return mRow; }

 private:
  using Function = std::function<int(int, int, int)>;
  struct Expression {
    std::string text;
    Function value;
  };
  template <class Operation>
  static Expression Join(const Expression& a, const std::string& op, const Expression& b,
                         Operation operation) {
    return {"(" + a.text + " " + op + " " + b.text + ")",
            [f = a.value, g = b.value, operation](int x, int y, int z) {
              return static_cast<int>(operation(f(x, y, z), g(x, y, z)));
            }};
  }

  unsigned int Draw(unsigned int below) { return static_cast<unsigned int>(mRandom() % below); }

  void Add(const Expression& statement) {
    mRow.source += statement.text + "; ";
    mRow.holds = [before = mRow.holds, f = statement.value](int x, int y, int z) {
      return (!before || before(x, y, z)) && f(x, y, z) != 0;
    };
  }

  Expression Number(int depth) {
    if (depth == 0 || Draw(4) == 0) {
      const int constant = static_cast<int>(Draw(5)) - 1;
      switch (Draw(4)) {
        case 0:
          return {"x", [](int x, int, int) { return x; }};
        case 1:
          return {"y", [](int, int y, int) { return y; }};
        case 2:
          return {"z", [](int, int, int z) { return z; }};
        default:
          return {std::to_string(constant), [constant](int, int, int) { return constant; }};
      }
    }
    const Expression a = Number(depth - 1);
    const Expression b = Number(depth - 1);
    const Expression three = {"3", [](int, int, int) { return 3; }};
    switch (Draw(7)) {
      case 0:
        return Join(a, "-", b, std::minus<int>());
      case 1:
        return Join(a, "*", b, std::multiplies<int>());
      case 2:
        return Join(a, "/\\", b, [](int u, int v) { return std::min(u, v); });
      case 3:
        return Join(a, "\\/", b, [](int u, int v) { return std::max(u, v); });
      case 4:
        return Join(a, "mod", three, std::modulus<int>());
      case 5:
        return {"abs(" + a.text + ")",
                [f = a.value](int x, int y, int z) { return std::abs(f(x, y, z)); }};
      default:
        return Join(a, "+", b, std::plus<int>());
    }
  }

  /// A comparison, stated or with a truth value.
  Expression Comparison(std::size_t form) {
    const Expression a = Number(2);
    const Expression b = Number(2);
    const unsigned int relation = Draw(6);
    constexpr const char* kSigns[][6] = {
        {"=",  "<>",   "<",  "<=",  ">",  ">=" },
        {"==", "<<>>", "<<", "<==", ">>", ">=="}
    };
    return Join(a, kSigns[form][relation], b, [relation](int u, int v) {
      const bool truths[] = {u == v, u != v, u<v, u <= v, u> v, u >= v};
      return truths[relation];
    });
  }

  Expression Truth(int depth) {
    if (depth == 0 || Draw(3) == 0) return Comparison(1);
    const Expression a = Truth(depth - 1);
    const Expression b = Truth(depth - 1);
    switch (Draw(5)) {
      case 0:
        return Join(a, "&&", b, std::logical_and<int>());
      case 1:
        return Join(a, "->", b, [](int u, int v) { return u == 0 || v != 0; });
      case 2:
        return Join(a, "==", b, std::equal_to<int>());
      case 3:
        return {"~" + a.text,
                [f = a.value](int x, int y, int z) { return f(x, y, z) == 0 ? 1 : 0; }};
      default:
        return Join(a, "||", b, std::logical_or<int>());
    }
  }

  std::mt19937 mRandom;
  Row mRow;
};

TEST(SemanticsTest, RandomModelsHoldWhereTheyShouldAndLoseNoSolution) {
  for (unsigned int seed = 0; seed < 500; ++seed) {
    const RandomModel model(seed);
    const Row& row = model.Get();
    ASSERT_EQ(FirstDifference("int", -1, 2, row), "");
    const Reading reading = ReadModel("x, y, z : int = [-1, 2]; " + row.source);
    const auto status = reading.model->Network().Propagate();
    const auto holds = [&](const char* name, int value) {
      return dynamic_cast<ZULTaVoInteger&>(reading.Value(name)).GetLowerBound() <= value &&
             dynamic_cast<ZULTaVoInteger&>(reading.Value(name)).GetUpperBound() >= value;
    };
    for (int x = -1; x <= 2; ++x)
      for (int y = -1; y <= 2; ++y)
        for (int z = -1; z <= 2; ++z)
          ASSERT_TRUE(!row.holds(x, y, z) || (status == ZULTaVoNetwork::Status::kConsistent &&
                                              holds("x", x) && holds("y", y) && holds("z", z)))
              << row.source << x << ", " << y << ", " << z;
  }
}

TEST(SemanticsTest, EmptyInitialValueIsAContradiction) {
  EXPECT_FALSE(IsConsistent("x : int = Nil;"));
  EXPECT_FALSE(IsConsistent("q[1..3] : real = [2, 1];"));
  EXPECT_FALSE(IsConsistent("p : bool = Nil;"));
  EXPECT_TRUE(IsConsistent("q[1..0] : int = Nil;"));
}

}  // namespace
