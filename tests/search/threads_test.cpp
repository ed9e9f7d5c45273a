// Threads that open modules, read and write models and search, each for itself, at the same time.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "framework/base/ZULipstream.h"
#include "framework/base/ZULopstream.h"
#include "framework/calculator/ZULTavCalculator.h"
#include "framework/search/ZULTavUtilities.h"
#include "framework/solver/ZULTavAbstractTypes.h"

namespace {

struct Case {
  const char* text;
  double precision;
  int solutions;
};

constexpr Case kCases[] = {
    {"a, b, c : int = [1, 1000000]; a * b * c = 30; a <= b; b <= c;", 1e-6, 5},
    {"x, y : real = [-3, 3]; x^2 + y^2 = 4; y = x;",                  1e-6, 2},
    {"x, y : real = [-3, 3]; x^2 + y^2 = 4; y = x;",                  1e-2, 2},
    {"x : real = [0, 10]; sin(x) = 0.5;",                             1e-9, 4},
    {"x : real = [0, 10]; sin(x) = 0.5;",                             1e-3, 4},
    {"p, q : int = [2, 60]; b : bool; b == (p << q); p * q = 77;",    1e-6, 2},
};

/// The printed solutions, a line each, of the model as it comes back from a stream.
std::string Solve(const Case& wanted, int& solutions) {
  ZULTaVoRealSettings settings;
  EXPECT_EQ(settings.SetPrecision(wanted.precision), 1);
  const ZULTaVoRealScope scope(&settings);
  ZULTaVoModuleManager manager;
  manager.AddSearchDirectory(ZULTAV_TEST_MODULES);
  const ZULTaVoModule* numbers = manager.OpenModule("ZULTavNumbers");
  if (numbers == nullptr) return manager.GetReason();
  std::vector<const ZULTaVoModule*> modules = {numbers};
  for (const ZULTaVoModule* module : numbers->GetLoadedModules()) modules.push_back(module);
  std::vector<ZULTavDiagnostic> errors;
  auto model = ZULTavCalculator(modules).Read(wanted.text, "model", {}, errors);
  if (model == nullptr) return errors.empty() ? "out of memory" : errors[0].message;
  std::stringstream file;
  ZULopstream out(file);
  model->Write(out);
  ZULipstream in(file);
  model = ZULTavModel::Read(in, modules);
  if (model == nullptr) return in.Reason();

  std::vector<ZULTaVoAny*> values;
  for (const auto& variable : model->Variables()) values.push_back(variable.values[0]);
  ZULTavSearch::Options options;
  options.limits.solutions = ZULTavSearch::kUnlimited;
  std::ostringstream found;
  ZULTavSearch(model->Network(), values, options).Run([&](const ZULTavSolution& solution) {
    ++solutions;
    for (std::size_t i = 0; i < solution.GetSize(); ++i) found << solution.GetValue(i) << ' ';
    found << (solution.IsProven() ? "\n" : "possible\n");
    return true;
  });
  return found.str();
}

TEST(ThreadsTest, EachSearchFindsWhatItFindsAlone) {
  std::vector<std::string> expected;
  for (const Case& one : kCases) {
    int solutions = 0;
    expected.push_back(Solve(one, solutions));
    EXPECT_EQ(solutions, one.solutions) << one.text << '\n' << expected.back();
    EXPECT_EQ(expected.back().find("possible"), std::string::npos) << expected.back();
  }
  EXPECT_NE(expected[1], expected[2]) << "precision shows in the digits";
  EXPECT_NE(expected[3], expected[4]);

  constexpr std::size_t kThreads = 3;
  constexpr std::size_t kRounds = 24;
  std::vector<int> wrong(kThreads);
  {
    std::vector<std::jthread> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread)
      threads.emplace_back([&, thread] {
        for (std::size_t round = 0; round < kRounds; ++round) {
          const std::size_t i = (thread + round) % std::size(kCases);
          int solutions = 0;
          wrong[thread] += Solve(kCases[i], solutions) != expected[i];
        }
      });
    // The settings of the process are nobody's here.
    for (int i = 0; i < 1000; ++i) {
      ZULTaVoReal::SetPrecision(i % 2 == 0 ? 0.5 : 1e-6);
      ZULTaVoReal::SetTrigLimits(i % 2 == 0 ? 3 : -1e14, i % 2 == 0 ? 4 : 1e14);
      std::this_thread::yield();
    }
  }
  EXPECT_EQ(wrong, std::vector<int>(kThreads)) << "of " << kRounds << " in each thread";
}

}  // namespace
