// Memory that runs out at any moment of a whole run: it ends in a clear error, or the answer is
// the right one. In a program of its own, since its memory fails.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <sstream>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/search/ZULTavUtilities.h"
#include "framework/solver/ZULTavAbstractTypes.h"
#include "tests/counted_memory.h"

namespace {

/// What objects of the solver get, counted like all other memory.
void* AllocateObject(std::size_t size) {
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

constexpr const char* kModel =
    "a, c : int = [0, 20]; family : bool; r : real = [0, 5]; s : real;"
    "8 * a + 3 * c = 60; family == (c >> a); r^2 + s = 2; s = r;";

constexpr const char* kWrongModel =
    "let n = 2; q[1..n] : int = [1, n]; for i in 1..n where i > 1 : q[i] + 1.5 < sqrt(2);"
    "alldifferent(q); p : bool; p -> exists(i in 1..n) q[i] == i; q[3] = 1;";

std::string Refusal(const ZULipstream& in) {
  EXPECT_STRNE(in.Reason(), "");
  return {};
}

/// The solutions of a run that is cut, written, read and resumed; empty when memory ran out outside
/// of the search. Where it runs out within, the search goes on when there is memory again.
std::string Solve(const ZULTaVoModule& numbers, bool& failed) {
  std::vector<const ZULTaVoModule*> modules = {&numbers};
  for (const ZULTaVoModule* module : numbers.GetLoadedModules()) modules.push_back(module);
  std::vector<ZULTavDiagnostic> errors;
  EXPECT_EQ(ZULTavCalculator(modules).Read(kWrongModel, "model", {}, errors), nullptr);
  errors.clear();
  auto model = ZULTavCalculator(modules).Read(kModel, "model", {}, errors);
  if (model == nullptr) return {};
  std::stringstream file;
  file.exceptions(std::ios::badbit);  // a string stream keeps it to itself that memory ran out
  std::ostringstream found;
  found.exceptions(std::ios::badbit);
  const auto report = [&](const ZULTavSolution& solution) {
    for (std::size_t i = 0; i < solution.GetSize(); ++i) found << solution.GetValue(i) << ' ';
    found << (solution.IsProven() ? "\n" : "possible\n");
    return true;
  };
  for (const bool resumed : {false, true}) {
    if (resumed) {
      ZULipstream in(file);
      model = ZULTavModel::Read(in, modules);
      if (model == nullptr) return Refusal(in);
    } else {
      ZULopstream out(file);
      model->Write(out);
      if (!out.Good()) return {};
    }
    std::vector<ZULTaVoAny*> values;
    for (const auto& variable : model->Variables()) values.push_back(variable.values[0]);
    ZULTavSearch::Options options;
    options.limits.solutions = ZULTavSearch::kUnlimited;
    options.limits.nodes = resumed ? ZULTavSearch::kUnlimited : 3;
    options.resumable = true;
    ZULTavSearch search(model->Network(), values, options);
    if (resumed) {
      ZULipstream in(file);
      if (!search.ReadState(in)) return Refusal(in);
    }
    auto outcome = search.Run(report);
    if (outcome == ZULTavSearch::Outcome::kOutOfMemory) {
      failed = true;
      gAllocationsUntilFailure = -1;
      outcome = search.Run(report);
    }
    if (resumed) {
      EXPECT_EQ(outcome, ZULTavSearch::Outcome::kExhausted);
    } else {
      ZULopstream out(file);
      search.WriteState(out);
      if (!out.Good()) return {};
    }
  }
  return found.str();
}

/// The values of all objects after a step down and after the way back. Where memory runs out there
/// is some again for the next try; counts these failures.
std::string StepDown(ZULTaVoNetwork& network, ZULTaVoInteger& value, int& failures) {
  const auto again = [&](auto action) {
    for (; !action(); ++failures) gAllocationsUntilFailure = -1;
  };
  const auto propagate = [&] {
    return network.Propagate() != ZULTaVoNetwork::Status::kOutOfMemory;
  };
  again([&] { return network.PushState(); });
  again([&] { return network.SaveValue(&value); });
  value.SetUpperBound(2);
  network.PropagateValue(&value);
  again(propagate);
  gAllocationsUntilFailure = -1;
  std::ostringstream values;
  const auto print = [&] {
    for (std::size_t i = 0; i < network.GetNumberOfObjects(); ++i)
      values << *network.GetObject(i) << ' ';
  };
  print();
  network.PopState();
  print();
  return values.str();
}

TEST(FailingMemoryTest, PropagationGoesOnWhereMemoryRanOut) {
  ZULTaVoModuleManager manager;
  const ZULTaVoModule* numbers = manager.OpenModule("ZULTavNumbers");
  ASSERT_NE(numbers, nullptr) << manager.GetReason();
  std::vector<const ZULTaVoModule*> modules = {numbers};
  modules.insert(modules.end(), numbers->GetLoadedModules().begin(),
                 numbers->GetLoadedModules().end());
  ZULTaVoBase::SetAllocator(&AllocateObject);
  std::string expected;
  int failures = 0;
  for (long n = -1; n < 60; ++n) {
    std::vector<ZULTavDiagnostic> errors;
    const auto model = ZULTavCalculator(modules).Read(kModel, "model", {}, errors);
    ASSERT_NE(model, nullptr);
    ASSERT_EQ(model->Network().Propagate(), ZULTaVoNetwork::Status::kConsistent);
    auto& a = static_cast<ZULTaVoInteger&>(*model->Variables()[0].values[0]);
    gAllFailThen = true;
    gAllocationsUntilFailure = n;
    const std::string found = StepDown(model->Network(), a, failures);
    if (n < 0) expected = found;
    ASSERT_EQ(found, expected) << "allocation " << n;
  }
  EXPECT_GT(failures, 3);
  ZULTaVoBase::SetAllocator(nullptr);
}

TEST(FailingMemoryTest, EveryRunEndsInAnErrorOrTheAnswer) {
  ZULTaVoModuleManager manager;
  const ZULTaVoModule* numbers = manager.OpenModule("ZULTavNumbers");
  ASSERT_NE(numbers, nullptr) << manager.GetReason();
  bool failed = false;
  const std::string expected = Solve(*numbers, failed);
  EXPECT_NE(expected.find("[3,3] [12,12] True [1.0,1.0] [1.0,1.0]"), std::string::npos) << expected;
  ZULTaVoBase::SetAllocator(&AllocateObject);
  for (const bool all : {false, true}) {
    int survived = 0;
    for (long n = 0;; ++n) {
      gAllFailThen = all;
      gAllocationsUntilFailure = n;
      failed = false;
      std::string found;
      try {
        found = Solve(*numbers, failed);
      } catch (const std::bad_alloc&) {     // where a constructor says so
      } catch (const std::ios::failure&) {  // the test's own streams
      }
      failed = failed || gAllocationsUntilFailure < (all ? 1 : 0);
      gAllocationsUntilFailure = -1;
      if (!found.empty()) {
        ++survived;
        ASSERT_EQ(found, expected) << "allocation " << n;
      }
      if (!failed) break;
      ASSERT_LT(n, 100000);
    }
    EXPECT_GT(survived, 0);
  }
  ZULTaVoBase::SetAllocator(nullptr);
}

}  // namespace
