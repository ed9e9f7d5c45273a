#include "solve/ModelCommand.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "framework/calculator/ZULTavCalculator.h"
#include "framework/search/ZULTavNewton.h"
#include "solve/Modules.h"
#include "solve/Progress.h"
#include "solve/Report.h"

namespace {

/// Reads no more than the reader of models would take anyway.
bool ReadText(std::istream& in, std::size_t limit, std::string& text) {
  constexpr std::size_t kPiece = 1 << 16;
  for (std::size_t size = 0; size <= limit;) {
    text.resize(size + kPiece);
    in.read(text.data() + size, kPiece);
    size += static_cast<std::size_t>(in.gcount());
    text.resize(size);
    if (!in) return in.eof();
  }
  return true;
}

bool ReadModelText(const std::string& name, std::size_t limit, std::string& text,
                   std::string& reason) {
  errno = 0;
  if (name == "-") {
    if (ReadText(std::cin, limit, text)) return true;
    reason = "cannot read standard input";
    return false;
  }
  std::ifstream file(name, std::ios::binary);
  if (file && ReadText(file, limit, text)) return true;
  reason = "cannot read '" + name + "'";
  if (errno != 0) reason += std::string(": ") + std::strerror(errno);
  return false;
}

ZULTavDiagnostic Failure(const std::string& message, const std::string& file = {}) {
  ZULTavDiagnostic failure;
  failure.message = message;
  failure.file = file;
  return failure;
}

/// A model, and what it needs to live.
class LoadedModel {
 public:
  /// Answers an ExitStatus; unless it is kAnswered, `errors` says why.
  int Load(const Options& options, std::vector<ZULTavDiagnostic>& errors) {
    std::string reason, text;
    if (!mModules.Open(options, reason)) {
      errors.push_back(Failure(reason));
      return options.moduleGiven ? kUsage : kInternal;
    }
    ZULTavCalculator::Options reading;
    reading.definitions = options.definitions;
    const std::string name = options.modelFile == "-" ? "<stdin>" : options.modelFile;
    if (!ReadModelText(options.modelFile, reading.limits.sourceBytes, text, reason)) {
      errors.push_back(Failure(reason, name));
      return kUsage;
    }
    mModel = ZULTavCalculator(mModules.All()).Read(text, name, reading, errors);
    if (mModel == nullptr) return kModelError;
    if (options.ratio) mModel->Network().SetNarrowingFraction(*options.ratio);
    return kAnswered;
  }
  ZULTavModel& Get() { return *mModel; }

 private:
  Modules mModules;  // first, so that they outlive the model
  std::unique_ptr<ZULTavModel> mModel;
};

std::vector<ZULTaVoAny*> AllValues(const ZULTavModel& model) {
  std::vector<ZULTaVoAny*> values;
  for (const ZULTavModel::Variable& variable : model.Variables())
    values.insert(values.end(), variable.values.begin(), variable.values.end());
  return values;
}

// --- check -----------------------------------------------------------------------------------

void PrintHolding(const ZULTavModel& model, const std::string& file) {
  std::cout << file << ": " << AllValues(model).size() << " variables, "
            << model.Statements().size() << " statements, "
            << model.Network().GetNumberOfConstraints() << " constraints\n";
  for (const ZULTavModel::Variable& variable : model.Variables()) {
    std::cout << "  " << variable.name;
    if (variable.isArray)
      std::cout << '[' << variable.firstIndex << ".."
                << variable.firstIndex + static_cast<long>(variable.values.size()) - 1 << ']';
    std::cout << " : " << variable.typeName << '\n';
  }
}

nlohmann::ordered_json JsonOf(const ZULTavModel& model) {
  nlohmann::ordered_json variables = nlohmann::ordered_json::array();
  for (const ZULTavModel::Variable& variable : model.Variables()) {
    nlohmann::ordered_json item = {
        {"name", variable.name    },
        {"type", variable.typeName}
    };
    if (variable.isArray) {
      item["first"] = variable.firstIndex;
      item["size"] = variable.values.size();
    }
    variables.push_back(std::move(item));
  }
  return {
      {"variables",   std::move(variables)                    },
      {"statements",  model.Statements().size()               },
      {"constraints", model.Network().GetNumberOfConstraints()}
  };
}

int Check(const Options& options) {
  LoadedModel model;
  std::vector<ZULTavDiagnostic> errors;
  const int status = model.Load(options, errors);
  if (options.format == Format::kJson) {
    auto document = status == kAnswered ? JsonOf(model.Get()) : nlohmann::ordered_json::object();
    document["errors"] = JsonOf(errors);
    std::cout << document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
              << '\n';
  } else if (status == kAnswered) {
    PrintHolding(model.Get(), options.modelFile);
  } else {
    PrintErrors(errors);
  }
  return status;
}

// --- solve -----------------------------------------------------------------------------------

/// While it lives, SIGINT and SIGTERM end the search in good order; a second one ends the program.
class StopOnSignal {
 public:
  explicit StopOnSignal(ZULTavSearch& search) {
    sSearch = &search;
    struct sigaction action = {};
    action.sa_handler = [](int) {
      if (ZULTavSearch* running = sSearch.load()) running->Stop();
    };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, &mOldInterrupt);
    sigaction(SIGTERM, &action, &mOldTerminate);
  }
  ~StopOnSignal() {
    sigaction(SIGINT, &mOldInterrupt, nullptr);
    sigaction(SIGTERM, &mOldTerminate, nullptr);
    sSearch = nullptr;
  }
  StopOnSignal(const StopOnSignal&) = delete;
  StopOnSignal& operator=(const StopOnSignal&) = delete;

 private:
  static inline std::atomic<ZULTavSearch*> sSearch{nullptr};
  static_assert(std::atomic<ZULTavSearch*>::is_always_lock_free);
  struct sigaction mOldInterrupt, mOldTerminate;
};

using Outcome = ZULTavSearch::Outcome;

Outcome Propagate(ZULTavSearch& search, const ZULTavModel& model, Report& report, Ending& ending) {
  ZULTavSearch::Verdict verdict = ZULTavSearch::Verdict::kOpen;
  const Outcome outcome = search.Propagate(verdict);
  const auto values = AllValues(model);
  const bool contradiction = verdict == ZULTavSearch::Verdict::kContradiction;
  report.Domains(contradiction ? nullptr : &model,
                 [&](std::size_t i) -> const ZULTaVoAny& { return *values[i]; });
  if (contradiction) ending.status = Ending::Status::kUnsatisfiable;
  if (verdict == ZULTavSearch::Verdict::kSolved) ending.status = Ending::Status::kSatisfied;
  return outcome;
}

Outcome Search(ZULTavSearch& search, const ZULTavModel& model, Report& report, Progress& progress,
               Ending& ending) {
  const Outcome outcome = search.Run([&](const ZULTavSolution& solution) {
    progress.Erase();
    report.Solution(
        model, [&](std::size_t i) -> const ZULTaVoAny& { return solution.GetValue(i); },
        solution.IsProven());
    report.FlushNowAndThen();
    return static_cast<bool>(std::cout);
  });
  const bool any = search.GetStatistics().solutions != 0;
  ending.searched = true;
  if (outcome == Outcome::kExhausted) {
    ending.status = any ? Ending::Status::kAllSolutions : Ending::Status::kUnsatisfiable;
  } else if (any) {
    ending.status = Ending::Status::kSatisfied;
  }
  return outcome;
}

int Conclude(Outcome outcome, Report& report, Ending& ending) {
  switch (outcome) {
    case Outcome::kExhausted:
    case Outcome::kSolutionLimit:
      return kAnswered;
    case Outcome::kNodeLimit:
    case Outcome::kTimeLimit:
    case Outcome::kPropagationLimit:
    case Outcome::kStopped:
      ending.limited = true;
      return kLimitReached;
    case Outcome::kOutOfMemory:
      report.Errors({Failure("out of memory")});
      break;
    case Outcome::kBadModel:
      report.Errors({Failure("internal error: a constraint cannot work on its arguments")});
      break;
  }
  ending.limited = true;
  return kInternal;
}

int Solve(const Options& options) {
  const auto report = MakeReport(options);
  LoadedModel model;
  std::vector<ZULTavDiagnostic> errors;
  Ending ending;
  if (const int status = model.Load(options, errors); status != kAnswered) {
    report->Errors(errors);
    if (options.format == Format::kJson) report->End(ending);
    return status;
  }

  Progress progress;
  ZULTavSearch::Options searching = options.search;
  searching.progress = [&](const ZULTavSearch::Statistics& statistics) {
    report->FlushNowAndThen();
    progress.Show(statistics);
  };
  ZULTavNewton newton(model.Get().Network(), AllValues(model.Get()));
  searching.proof = &newton;
  ZULTavSearch search(model.Get().Network(), AllValues(model.Get()), searching);
  const StopOnSignal stopping(search);
  const Outcome outcome = options.propagateOnly
                              ? Propagate(search, model.Get(), *report, ending)
                              : Search(search, model.Get(), *report, progress, ending);
  progress.Erase();
  ending.statistics = search.GetStatistics();
  const int status = Conclude(outcome, *report, ending);
  report->End(ending);
  return status;
}

}  // namespace

int RunModelCommand(const Options& options) {
  return options.command == Command::kCheck ? Check(options) : Solve(options);
}
