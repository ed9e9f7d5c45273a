#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/search/search_world.h"

namespace {

struct Box {
  std::vector<double> lower, upper;
  bool proven = false;

  bool Contains(const std::vector<double>& point, double slack = 0) const {
    for (std::size_t i = 0; i < point.size(); ++i)
      if (point[i] < lower[i] - slack || point[i] > upper[i] + slack) return false;
    return true;
  }
  /// Whether they have inner points in common.
  bool Overlaps(const Box& other) const {
    for (std::size_t i = 0; i < lower.size(); ++i)
      if (!(lower[i] < other.upper[i] && other.lower[i] < upper[i]) &&
          !(lower[i] == other.lower[i] && upper[i] == other.upper[i]))
        return false;
    return true;
  }
};

/// The boxes of a model in text over reals.
std::vector<Box> Solve(const std::string& text, double width = 1e-6, std::uint64_t limit = 300,
                       std::uint64_t nodes = 20000) {
  TextModel read(text);
  if (read.model == nullptr) {
    ADD_FAILURE() << read.error << " in " << text;
    return {};
  }
  ZULTavSearch::Options options;
  options.limits.solutions = limit;
  options.limits.nodes = nodes;
  options.absoluteWidth = width;
  ZULTavSearch search(read.model->Network(), read.declared, options);
  std::vector<Box> boxes;
  search.Run([&](const ZULTavSolution& solution) {
    Box box;
    for (std::size_t i = 0; i < solution.GetSize(); ++i)
      if (const auto* real = ZULTaVoCast<const ZULTaVoReal>(&solution.GetValue(i))) {
        box.lower.push_back(real->GetLowerBound());
        box.upper.push_back(real->GetUpperBound());
      }
    box.proven = solution.IsProven();
    boxes.push_back(box);
    return true;
  });
  return boxes;
}

struct ProofCase {
  std::string model;
  std::vector<std::vector<double>> solutions;
};

void PrintTo(const ProofCase& row, std::ostream* out) { *out << row.model; }

class ProvenTest : public testing::TestWithParam<ProofCase> {};

TEST_P(ProvenTest, FindsAndProvesEachSolution) {
  const auto& [model, solutions] = GetParam();
  SCOPED_TRACE(model);
  const std::vector<Box> boxes = Solve(model);
  EXPECT_EQ(boxes.size(), solutions.size());
  for (const Box& box : boxes) EXPECT_TRUE(box.proven);
  for (const std::vector<double>& solution : solutions) {
    // The solutions below are rounded.
    const auto holds = [&](const Box& box) { return box.Contains(solution, 1e-15); };
    EXPECT_EQ(std::count_if(boxes.begin(), boxes.end(), holds), 1) << solution[0];
  }
}

const double kRoot2 = std::sqrt(2.0);

INSTANTIATE_TEST_SUITE_P(
    Systems, ProvenTest,
    testing::Values(
        ProofCase{
            "x : real = [-9, 9]; x^2 = 2;", {{-kRoot2}, {kRoot2}}
},
        // Exact bounds, solutions on a bound, and solutions where boxes are split.
        ProofCase{"x : real = [0, 2]; x^2 = 4;", {{2}}},
        ProofCase{"x, y : real = [-8, 8]; x^3 = x; y^2 + x = 2;",
                  {{-1, -std::sqrt(3.0)},
                   {-1, std::sqrt(3.0)},
                   {0, -kRoot2},
                   {0, kRoot2},
                   {1, -1},
                   {1, 1}}},
        ProofCase{"x, y : real = [-4, 4]; x + y = 0; x = 3 * y + sin(x);", {{0, 0}}},
        ProofCase{"x, y : real = [-9, 9]; 3 * x + y = 0; x * (y + 1) = 0;",
                  {{1.0 / 3, -1}, {0, 0}}},
        // However a factor jumps, beside one that is 0.
        ProofCase{"x, y : real = [0, 9]; y = 0 * floor(x) + 1; x * y = 3;", {{3, 1}}},
        // Differences that cannot add up, at any distance.
        ProofCase{"x, y, z : real; x < y; y < z; z < x;", {}},
        ProofCase{"x, y, z : real; x + 0.1 <= y; y = z + 0.2; z <= x - 0.3;", {}},
        // Signs that do not matter, and one that does.
        ProofCase{"x : real = [-9, 9]; cos(x) = 0.5;",
                  {{-7.3303828583761843},
                   {-5.2359877559829888},
                   {-1.0471975511965977},
                   {1.0471975511965977},
                   {5.2359877559829888},
                   {7.3303828583761843}}},
        ProofCase{"x, y : real = [-9, 9]; x * x + abs(y) = 5; x^2 = 4; x * y > 0;",
                  {{-2, -1}, {2, 1}}},
        ProofCase{"x : real = [-9, 8]; x^2 = 70;", {{-std::sqrt(70.0)}}},
        // Numbers that no double holds.
        ProofCase{"x : real = [-9, 9]; 0.1 * x = 0.3;", {{3}}},
        ProofCase{"x : real = [0, 9]; x * x = 2 * Pi();", {{2.5066282746310002}}},
        // Conditions.
        ProofCase{"x : real = [-9, 9]; x^2 = 2; x^3 < 2.83; x >= 1;", {{kRoot2}}},
        ProofCase{"x : real = [-9, 9]; b : bool; x^2 = 2; b == (x >> 0); ~b;", {{-kRoot2}}},
        ProofCase{"x : real = [-9, 9]; sign(x) = -1; x^2 = 2; x <> 1;", {{-kRoot2}}},
        // Each function.
        ProofCase{"x : real = [0.5, 9]; x^1.5 = 3;", {{std::cbrt(9.0)}}},
        ProofCase{"x : real = [0, 9]; 2^x = 3;", {{1.5849625007211562}}},
        ProofCase{"x : real = [-9, 9]; x^-2 = 3;", {{-1 / std::sqrt(3.0)}, {1 / std::sqrt(3.0)}}},
        ProofCase{"x : real = [-9, 9]; exp(x) + x = 3;", {{0.79205996843067700}}},
        ProofCase{"x : real = [0.1, 9]; ln(x) + x = 3;", {{2.2079400315693230}}},
        ProofCase{"x : real = [0, 9]; sqrt(x) + x = 3;", {{1.6972243622680054}}},
        ProofCase{"x : real = [0, 1]; cos(x) = x;", {{0.73908513321516064}}},
        ProofCase{"x : real = [2, 4.6]; tan(x) = x;", {{4.4934094579090642}}},
        ProofCase{"x : real = [-9, 0]; abs(x) * x = -2;", {{-kRoot2}}},
        ProofCase{"x : real = [1, 9]; 1 / x = x - 1;", {{1.6180339887498949}}},
        ProofCase{"x : real = [0, 9]; (x /\\ 5) * (x \\/ 1) = 2;", {{kRoot2}}},
        ProofCase{"x : real = [0, 9]; floor(x) * x = 5; ceil(x) = 3; round(x) = 3;", {{2.5}}},
        ProofCase{"x : real = [2.1, 3.9]; x * (x mod 2) = 3;", {{3}}}));

// Concentrations in a chain of countercurrent reactors.
const char* const kReactors =
    "x1, x2, x3, x4, x5, x6, x7, x8 : real = [-1e8, 1e8];"
    "x1 - (1 - x1) * x3 - 0.414214 * (1 + 4 * x2) = 0;"
    "(-(1 - x1)) * x4 - 0.414214 * (1 + 4 * x2) = 0;"
    "0.414214 * x1 - (1 - x1) * x5 - x3 * (1 + 4 * x2) = 0;"
    "x1 * x2 + (1 - x1) * x6 - x4 * (1 + 4 * x3) = 0;"
    "x1 * x3 + (1 - x1) * x7 - x5 * (1 + 4 * x4) = 0;"
    "x1 * x4 + (1 - x1) * x8 - x6 * (1 + 4 * x5) = 0;"
    "x1 * x5 + x7 * (1 + 4 * x6) = 0;"
    "x1 * x6 - (1 - x1) - x8 * (1 + 4 * x7) = 0;";

struct Roots {
  std::string model;
  double width;
  std::vector<std::vector<double>> regular, singular;  // or others that a box holds
};

TEST(NewtonTest, ARegularSolutionIsProvenOnceAndNoBoxesOverlap) {
  const Roots rows[] = {
  // So ill-conditioned that contraction leaves a chain of boxes around the one at 1.01.
      Roots{kReactors,
            1e-6,                                                                  {{-3.035906146737906},
             {3.9301814511276802},
             {13.52928063438093},
             {0.4910522778016635},
             {4.92012575046199},
             {1.0129837918426454},
             {7.349898638823618}},
            {}                                                                                                                                      },
 // Where boxes are split.
      Roots{"x, y : real = [-8, 8]; x^3 = x; y^3 = y * x;",
            1e-6,                                                                  {{-1, 0}, {0, 0}, {1, -1}, {1, 0}, {1, 1}},
            {}                                                                                                                                      },
 // Close together, wider than a box and narrower.
      Roots{
            "x : real = [-9, 9]; (x - 1) * (x - 1.0009765625) = 0;",         1e-6, {{1}, {1.0009765625}},                      {}                   },
      Roots{
            "x : real = [-9, 9]; (x - 1) * (x - 1.0009765625) = 0;",         1e-2, {},                                         {{1}, {1.0009765625}}},
 // Tangents.
      Roots{"x, y : real = [-3, 3]; x^2 + y^2 = 2; x + y = 2;",              1e-6, {},                                         {{1, 1}}             },
      Roots{"x : real = [0.1, 5]; (x^2 - 2)^2 * (x^3 - 3) = 0;",
            1e-6,                                                                  {{std::cbrt(3.0)}},
            {{kRoot2}}                                                                                                                              },
 // Conditions that cut one of two, and discrete values that tell solutions apart.
      Roots{"x, y : real = [-5, 5]; x^2 + y^2 = 25; x + y = 7; x < y;",      1e-6, {{3, 4}},                                   {}                   },
      Roots{"x : real = [-9, 9]; n : int = [1, 4]; x * abs(x) = n; n <> 2;",
            1e-6,                                                                  {{1}, {std::sqrt(3.0)}, {2}},
            {}                                                                                                                                      },
      Roots{"x : real = [-9, 9]; x^2 = 2; (x << 1.4) || (x >> 1.3);",
            1e-6,                                                                  {{-kRoot2}, {kRoot2}},
            {}                                                                                                                                      },
 // Pavings: of contracted boxes that touch, beside split planes, and of a mirrored half.
      Roots{"x, y, z : real = [-1, 2]; z = x * y;",                          0.4,  {},                                         {{0, 0, 0}}          },
      Roots{"x, y : real = [-2, 2]; abs(x) + abs(y) = 1;",                   0.2,  {},                                         {{1, 0}, {0, -1}}    },
      Roots{"x, y : real = [-2, 2.5]; x^2 + y <= 1; x * y >= 0.3;",          0.2,  {},                                         {{-1, -0.3}}         },
  };
  for (const auto& [model, width, regular, singular] : rows) {
    SCOPED_TRACE(model);
    const std::vector<Box> boxes = Solve(model, width);
    const auto count = [&](const std::vector<double>& point, bool provenOnly) {
      return std::count_if(boxes.begin(), boxes.end(), [&](const Box& box) {
        return (box.proven || !provenOnly) && box.Contains(point, 1e-15);
      });
    };
    for (const auto& point : regular) EXPECT_EQ(count(point, true), 1) << point[0];
    for (const auto& point : singular) EXPECT_GE(count(point, false), 1) << point[0];
    for (std::size_t i = 0; i < boxes.size(); ++i)
      for (std::size_t k = 0; k < i; ++k)
        EXPECT_FALSE(boxes[i].Overlaps(boxes[k])) << boxes[i].lower[0] << ' ' << boxes[k].lower[0];
    const auto proven =
        std::count_if(boxes.begin(), boxes.end(), [](const Box& box) { return box.proven; });
    if (!regular.empty()) {
      EXPECT_EQ(proven, static_cast<long>(regular.size()));
    }
  }
}

TEST(NewtonTest, ABoxAtTheEndOfTheLineComesLast) {
  for (const char* model : {"x : real; x^3 = x + 6;", "x, y : real; y = x^3; y = 3 * x + 1;",
                            "x : real; exp(x) = x + 2;", "x : real; x * exp(x) = 2;",
                            "x, y : real; (exp(x) + exp(-x)) / 2 = y; y = 3 - x;",
                            "x : real; sin(x) = 0.5;", "x : real; x = 4 * atan(1);"}) {
    SCOPED_TRACE(model);
    const std::vector<Box> boxes = Solve(model, 1e-6, 1);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_TRUE(boxes[0].proven);
  }
}

TEST(NewtonTest, ImagesComeInOrderAndAreOneAtZero) {
  const std::vector<Box> boxes = Solve("x, y, z : real = [-9, 9]; x^2 = 1; y^2 = 0; z^2 = 4;");
  const double expected[][2] = {
      {-1, -2},
      {-1, 2 },
      {1,  -2},
      {1,  2 }
  };
  ASSERT_EQ(boxes.size(), std::size(expected));
  for (std::size_t i = 0; i < boxes.size(); ++i)
    EXPECT_TRUE(boxes[i].Contains({expected[i][0], 0, expected[i][1]}, 0)) << i;
}

TEST(NewtonTest, WhatIsNoSolutionIsNeverProven) {
  const std::string rows[] = {
      // Tangents: a solution that the slightest change takes away.
      "x, y : real = [-3, 3]; x^2 + y^2 = 2; x + y = 2;",
      "x : real = [-3, 4]; x^2 - 2 * x * sqrt(2) + 2 = 0;",
      // As narrow as the boxes are, nothing tells that there is none.
      "x, y : real = [-3, 3]; x^2 + y^2 = 2; x + y = 2.00000000001;",
      "x : real = [-3, 4]; x * x - 2 * x + 1.0000000001 = 0;",
      // Within the tolerance of comparisons, but wrong.
      "x : real = [0, 9]; x^2 = 2; x^3 <= 2.8284271;",
      "x : real = [-9, 9]; x^2 = 2; x^3 + x^2 >= 4.8284272;",
      // One equation too many, whether it follows from the others or not.
      "x : real = [1, 9]; x^2 = 2; x^4 - 1e-15 * x = 4;",
      // Known to the precision only.
      "x : real = [1, 9]; y : single real; x^2 = 2; next(x) = y;",
      // Of integers, with hidden numbers that no double and no 64 bits hold.
      "i : int = [-1, 0]; 18446744073709552000.0 + i >= 18446744073709552000.0;",
      "i : int = [-3, -2]; strictly_increasing([i, (i^32)^32, (7 * i)^16]);",
  };
  for (const std::string& model : rows) {
    SCOPED_TRACE(model);
    for (const double width : {1e-2, 1e-5, 1e-9})
      for (const Box& box : Solve(model, width)) EXPECT_FALSE(box.proven);
  }
}

TEST(NewtonTest, KeepsWhatTheToleranceOfSingleRealsAccepts) {
  EXPECT_EQ(
      Solve("x : single real; y : real = [0, 3]; x = 1.0000001; 10 * x = 10; y^2 = 2;").size(), 1u);
}

TEST(NewtonTest, KeepsNegativesNextToZero) {
  for (const char* statements :
       {"y = x^3; y <= -1e-46; y >= -1e-44;", "y = x^(-1); y <= -1e15; y >= -1e17;",
        "y = x^2; x <= -1e-16; x >= -1e-15;", "y = x mod 2; y <= -1e-16; y >= -1e-15;"})
    EXPECT_FALSE(Solve(std::string("x : real = [-1, 1]; y : real; ") + statements).empty())
        << statements;
}

// --- Random systems ---------------------------------------------------------------------------

/// Quadratic equations in kCount unknowns, with coefficients that doubles hold.
constexpr std::size_t kCount = 3;
struct Quadratic {
  std::array<std::array<int, kCount>, kCount> square;
  std::array<int, kCount> linear;
  double right;

  template <class T>
  T At(const std::array<T, kCount>& x) const {
    T sum = -static_cast<T>(right);
    for (std::size_t i = 0; i < kCount; ++i) {
      sum += static_cast<T>(linear[i]) * x[i];
      for (std::size_t j = i; j < kCount; ++j) sum += static_cast<T>(square[i][j]) * x[i] * x[j];
    }
    return sum;
  }
  std::string Text() const {
    std::string text;
    for (std::size_t i = 0; i < kCount; ++i) {
      const auto name = [](std::size_t index) { return "x" + std::to_string(index); };
      text += std::to_string(linear[i]) + " * " + name(i) + " + ";
      for (std::size_t j = i; j < kCount; ++j)
        text += std::to_string(square[i][j]) + " * " + name(i) + " * " + name(j) + " + ";
    }
    std::ostringstream exact;
    exact << std::setprecision(17) << text << "0 = " << right << ";\n";
    return exact.str();
  }
};
using System = std::array<Quadratic, kCount>;
using Reals = std::array<long double, kCount>;

/// Newton's method in long double with differences; false when it does not converge.
bool Polish(const System& system, Reals& x) {
  for (int step = 0; step < 50; ++step) {
    std::array<std::array<long double, kCount + 1>, kCount> m{};
    for (std::size_t i = 0; i < kCount; ++i) {
      m[i][kCount] = -system[i].At(x);
      for (std::size_t j = 0; j < kCount; ++j) {
        Reals above = x, below = x;
        above[j] += 0.5L;
        below[j] -= 0.5L;
        m[i][j] = system[i].At(above) - system[i].At(below);  // exact for a quadratic
      }
    }
    for (std::size_t k = 0; k < kCount; ++k) {
      std::size_t pivot = k;
      for (std::size_t i = k; i < kCount; ++i)
        if (std::fabs(m[i][k]) > std::fabs(m[pivot][k])) pivot = i;
      std::swap(m[k], m[pivot]);
      if (m[k][k] == 0) return false;
      for (std::size_t i = 0; i < kCount; ++i)
        for (std::size_t j = kCount + 1; i != k && j-- > k;) m[i][j] -= m[i][k] / m[k][k] * m[k][j];
    }
    long double longest = 0;
    for (std::size_t k = 0; k < kCount; ++k) {
      x[k] += m[k][kCount] / m[k][k];
      longest = std::max(longest, std::fabs(m[k][kCount] / m[k][k]));
    }
    if (longest < 1e-17L) return true;
  }
  return false;
}

TEST(NewtonTest, KeepsConstructedSolutionsAndProvesNothingElse) {
  std::mt19937 random(7);
  std::uniform_int_distribution<int> coefficient(-3, 3), place(-256, 256);
  int provenBoxes = 0, found = 0;
  for (int round = 0; round < 150; ++round) {
    std::array<double, kCount> solution;
    for (double& x : solution) x = place(random) / 128.0;
    System system;
    std::string model = "x0, x1, x2 : real = [-4, 4];\n";
    for (Quadratic& equation : system) {
      for (auto& row : equation.square)
        for (int& factor : row) factor = random() % 2 == 0 ? coefficient(random) : 0;
      for (int& factor : equation.linear) factor = coefficient(random);
      equation.right = 0;
      equation.right = equation.At(solution);  // exact
      model += equation.Text();
    }
    SCOPED_TRACE(model);
    const std::vector<Box> boxes = Solve(model);
    if (boxes.size() >= 300) continue;  // a continuum
    ++found;
    const std::vector<double> point(solution.begin(), solution.end());
    EXPECT_TRUE(std::any_of(boxes.begin(), boxes.end(),
                            [&](const Box& box) { return box.Contains(point); }));
    for (const Box& box : boxes) {
      if (!box.proven) continue;
      ++provenBoxes;
      Reals root;
      for (std::size_t i = 0; i < kCount; ++i)
        root[i] = (static_cast<long double>(box.lower[i]) + box.upper[i]) / 2;
      ASSERT_TRUE(Polish(system, root));
      for (std::size_t i = 0; i < kCount; ++i) {
        EXPECT_LE(box.lower[i] - 1e-16L, root[i]);
        EXPECT_GE(box.upper[i] + 1e-16L, root[i]);
      }
    }
  }
  EXPECT_GT(found, 120);
  EXPECT_GT(provenBoxes, found);
}

// From 708 on x * exp(x) is beyond all doubles: there is nothing left to find out, however narrow.
TEST(NewtonTest, EndsWhereDoublesEnd) {
  const std::vector<Box> boxes =
      Solve("x : positive; x * exp(x) / (exp(x) - 1) = 5;", 1e-6, 300, 200);
  ASSERT_FALSE(boxes.empty());
  EXPECT_GE(boxes.back().upper[0], 1e19);  // nothing is left open
  EXPECT_EQ(std::count_if(boxes.begin(), boxes.end(), [](const Box& box) { return box.proven; }),
            1);
}

// One equation of a high degree among linear ones: what these say of a wide box is in their sums.
TEST(NewtonTest, SumsLinearEquationsInWideBoxes) {
  const std::vector<Box> boxes = Solve(
      "x[0..9] : real = [-1e8, 1e8];\nfor i in 0..8 : { x[i] + sum(j in 0..9) x[j] = 11; }\n"
      "product(j in 0..9) x[j] = 1;",
      1e-6, 300, 200);
  EXPECT_EQ(boxes.size(), 2U);
  EXPECT_TRUE(std::all_of(boxes.begin(), boxes.end(), [](const Box& box) { return box.proven; }));
}

// Systems that are narrowed in windows: products with near and far neighbours, and a solution whose
// right sides are exact.
TEST(LargeSystemTest, KeepsTheSolution) {
  std::mt19937 random(20);
  int proven = 0;
  for (int round = 0; round < 30; ++round) {
    const std::size_t count = 101 + random() % 150;
    std::vector<double> solution(count);
    for (double& x : solution) x = static_cast<double>(random() % 64) / 64 - 0.5;
    const double reach = round % 3 == 0 ? 0.5 : 0.05;
    std::ostringstream model;
    model.precision(17);
    model << "x[0.." << count - 1 << "] : real = [-1, 1];\n";
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t l = (i + 1 + random() % 3) % count;
      const std::size_t r = random() % 20 == 0 ? random() % count : (i + count - 1) % count;
      const double right = 3 * solution[i] + solution[i] * solution[i] - solution[l] * solution[r];
      model << "x[" << i << "] >= " << solution[i] - reach << "; x[" << i
            << "] <= " << solution[i] + reach << ";\n3 * x[" << i << "] + x[" << i << "]^2 - x["
            << l << "] * x[" << r << "] = " << right << ";\n";
    }
    const std::vector<Box> boxes = Solve(model.str());
    ASSERT_TRUE(std::any_of(boxes.begin(), boxes.end(),
                            [&](const Box& box) { return box.Contains(solution); }))
        << "round " << round;
    proven += boxes.size() == 1 && boxes[0].proven;
  }
  EXPECT_GT(proven, 20);
}

}  // namespace
