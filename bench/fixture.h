#ifndef ZULTAV_BENCH_FIXTURE_H
#define ZULTAV_BENCH_FIXTURE_H

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/solver/ZULTavAbstractTypes.h"

namespace bench {

inline ZULTaVoModule* Open(const char* name) {
  static ZULTaVoModuleManager manager;
  ZULTaVoModule* module = manager.OpenModule(name);
  if (module == nullptr) {
    std::cerr << manager.GetReason() << '\n';
    std::exit(1);
  }
  return module;
}
/// The module of numbers, opened once for the whole program.
inline ZULTaVoModule& OpenNumbers() {
  static ZULTaVoModule* module = Open("ZULTavNumbers");
  return *module;
}
/// It and the module of relations.
inline const std::vector<const ZULTaVoModule*>& OpenModules() {
  static const std::vector<const ZULTaVoModule*> modules = {&OpenNumbers(),
                                                            Open("ZULTavRelations")};
  return modules;
}

using Definitions = std::map<std::string, std::string>;

/// Ends the program where the model has errors.
inline std::unique_ptr<ZULTavModel> Read(const std::string& text,
                                         const Definitions& definitions = {},
                                         const std::string& data = {}) {
  ZULTavCalculator::Options options;
  options.definitions = definitions;
  if (!data.empty())
    options.data = {
        {"data", data}
    };
  std::vector<ZULTavDiagnostic> errors;
  auto model = ZULTavCalculator(OpenModules()).Read(text, "bench", options, errors);
  for (const ZULTavDiagnostic& error : errors) error.Print(std::cerr);
  if (model == nullptr) std::exit(1);
  return model;
}

inline std::string TextOf(const std::string& file) {
  std::ostringstream text;
  if (!(text << std::ifstream(file).rdbuf())) {
    std::cerr << "cannot read " << file << '\n';
    std::exit(1);
  }
  return text.str();
}

inline std::vector<ZULTaVoAny*> ValuesOf(const ZULTavModel& model) {
  std::vector<ZULTaVoAny*> values;
  for (const auto& variable : model.Variables())
    values.insert(values.end(), variable.values.begin(), variable.values.end());
  return values;
}

using Clock = std::chrono::steady_clock;
inline double Since(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// Times work of one thread: by the clock, or by the time of the processor where others have taken
/// that away meanwhile.
class Stopwatch {
 public:
  double GetSeconds() const {
    const double passed = Since(mBegin);  // first: the other clock takes longer to read
    return std::min(passed, GetProcessorSeconds() - mProcessor);
  }

 private:
  static double GetProcessorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
  }

  double mProcessor = GetProcessorSeconds();
  Clock::time_point mBegin = Clock::now();
};

/// The first run looks at what it finds and has a time limit, which costs a thread; if it is short,
/// the time is that of the fastest of further runs, which do neither.
/// @param run  called with whether it is the first, answers what has `complete` and `seconds`
template <class Run>
auto Fastest(double limit, Run run) {
  auto first = run(true);
  const double enough = std::max(0.3, 3 * first.seconds);
  if (!first.complete || enough > limit) return first;
  first.seconds = HUGE_VAL;
  for (const Clock::time_point begin = Clock::now(); Since(begin) < enough;)
    first.seconds = std::min(first.seconds, run(false).seconds);
  return first;
}

/// The same of two, by turns of some milliseconds: a machine whose speed changes changes both.
template <class RunA, class RunB>
auto FastestInTurn(double limit, RunA runA, RunB runB) {
  constexpr double kTurn = 0.02;  // seconds
  std::pair fastest{runA(true), runB(true)};
  auto& [a, b] = fastest;
  const double enough = std::max(0.6, 3 * (a.seconds + b.seconds));
  if (!a.complete || !b.complete || enough > limit) return fastest;
  a.seconds = b.seconds = HUGE_VAL;
  const auto improve = [](double& best, auto run) {
    double spent = 0;
    while (spent < kTurn) {
      const double seconds = run(false).seconds;
      best = std::min(best, seconds);
      spent += seconds;
    }
    return spent;
  };
  for (double spent = 0; spent < enough;)
    spent += improve(a.seconds, runA) + improve(b.seconds, runB);
  return fastest;
}

}  // namespace bench

#endif
