#include "solve/SearchCommand.h"

#include <iostream>
#include <sstream>
#include <utility>

#include "solve/LoadedModel.h"
#include "solve/Progress.h"
#include "solve/Report.h"
#include "solve/StopOnSignal.h"
#include "solve/ValueText.h"

namespace {

using Outcome = ZULTavSearch::Outcome;

Outcome Propagate(ZULTavSearch& search, const ZULTavModel& model, Report& report, Ending& ending) {
  ZULTavSearch::Verdict verdict = ZULTavSearch::Verdict::kOpen;
  const Outcome outcome = search.Propagate(verdict);
  const auto values = ValuesOf(model);
  const bool contradiction = verdict == ZULTavSearch::Verdict::kContradiction;
  report.Domains(contradiction ? nullptr : &model,
                 [&](std::size_t i) -> const ZULTaVoAny& { return *values[i]; });
  if (contradiction) ending.status = Ending::Status::kUnsatisfiable;
  if (verdict == ZULTavSearch::Verdict::kSolved) ending.status = Ending::Status::kSatisfied;
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

std::vector<ZULTaVoAny*> ObservedOf(const ZULTavModel& model) {
  if (model.GetObjective() == nullptr) return {};
  return {model.GetObjective()};
}

const ZULTavObserved* ObjectiveOf(const ZULTavSolution& solution) {
  return solution.GetObserved().empty() ? nullptr : &solution.GetObserved().front();
}

/// Makes a search for the best solution of one whose model has an objective.
void Aim(Options& options, const ZULTavModel& model) {
  if (model.GetObjective() == nullptr || options.propagateOnly) return;
  options.search.objective = options.objective;
  options.search.objective->isMaximized = model.IsMaximized();
  const bool isAllWanted = options.search.limits.solutions == ZULTavSearch::kUnlimited;
  if (options.solutionsGiven) options.search.allOptima = isAllWanted;
}

/// @param any  whether a solution was found
void ConcludeOptimum(const ZULTavSearch& search, bool isExhausted, bool any, Ending& ending) {
  using Status = Ending::Status;
  ending.bounds = search.GetObjectiveBounds();
  if (search.IsUnbounded())
    ending.status = Status::kUnbounded;
  else if (isExhausted && search.IsOptimumCertain())
    ending.status = Status::kOptimal;
  else if (any)
    ending.status = Status::kSatisfied;
  else if (isExhausted)
    ending.status = Status::kUnsatisfiable;
}

/// One run of the search, new or resumed.
class Run {
 public:
  /// @param checkpoint  null for a run that is not saved
  Run(const Options& options, ZULTavModel& model, Checkpoint* checkpoint, Report& report)
      : mOptions(options),
        mModel(model),
        mCheckpoint(checkpoint),
        mReport(report),
        mSearch(model.Network(), ValuesOf(model), Searching(), ObservedOf(model)) {}

  int Execute() {
    std::string reason;
    if (mCheckpoint != nullptr && !mCheckpoint->RestoreSearch(mSearch, reason)) {
      mReport.Errors(
          {Failure("the checkpoint cannot be used: " + reason, mOptions.checkpointFile)});
      return kUsage;
    }
    const StopOnSignal stopping(mSearch);
    Ending ending;
    const Outcome outcome =
        mOptions.propagateOnly ? Propagate(mSearch, mModel, mReport, ending) : Search(ending);
    mProgress.Erase();
    ending.statistics = Total();
    const int status = Conclude(outcome, mReport, ending);
    // A search that failed has no state to go on from; what was saved before stays.
    if (mCheckpoint != nullptr && status != kInternal && Save(outcome == Outcome::kExhausted) &&
        outcome != Outcome::kExhausted)
      ending.checkpoint = mOptions.checkpointFile;
    mReport.End(ending);
    return status;
  }

 private:
  ZULTavSearch::Options Searching() {
    ZULTavSearch::Options searching = mOptions.search;
    searching.events.progress = [this](const ZULTavSearch::Statistics&) {
      mReport.FlushNowAndThen();
      mProgress.Show(Total(), mModel.GetObjective() != nullptr ? BoundsText() : std::string());
    };
    if (mCheckpoint == nullptr) return searching;
    searching.resumable = true;
    searching.events.savePeriod = mOptions.savePeriod;
    searching.events.save = [this] { Save(false); };
    return searching;
  }

  std::string BoundsText() const {
    std::ostringstream text;
    text << "  objective ";
    PrintObserved(text, mSearch.GetObjectiveBounds(), mOptions.digits);
    return text.str();
  }

  ZULTavSearch::Statistics Total() const {
    return mCheckpoint != nullptr ? mCheckpoint->Total(mSearch.GetStatistics())
                                  : mSearch.GetStatistics();
  }

  Outcome Search(Ending& ending) {
    const Outcome outcome = mSearch.Run([this](const ZULTavSolution& solution) {
      mProgress.Erase();
      mReport.Solution(
          mModel, [&](std::size_t i) -> const ZULTaVoAny& { return solution.GetValue(i); },
          solution.IsProven(), ObjectiveOf(solution));
      mReport.FlushNowAndThen();
      if (mCheckpoint != nullptr) mCheckpoint->Add(solution);
      return static_cast<bool>(std::cout);
    });
    const bool any = Total().solutions != 0;
    ending.searched = true;
    if (mModel.GetObjective() != nullptr) {
      ConcludeOptimum(mSearch, outcome == Outcome::kExhausted, any, ending);
    } else if (outcome == Outcome::kExhausted) {
      ending.status = any ? Ending::Status::kAllSolutions : Ending::Status::kUnsatisfiable;
    } else if (any) {
      ending.status = Ending::Status::kSatisfied;
    }
    return outcome;
  }

  /// A run is worth more than its checkpoint: it goes on where that cannot be written.
  bool Save(bool finished) {
    // What the checkpoint calls printed is printed.
    if (!std::cout.flush()) return false;
    std::string reason;
    if (mCheckpoint->Save(mSearch, finished, reason)) return true;
    mProgress.Erase();
    if (reason != std::exchange(mSaveFailure, reason))
      std::cerr << "zultav: cannot save checkpoint '" << mOptions.checkpointFile << "': " << reason
                << '\n';
    return false;
  }

  const Options& mOptions;
  ZULTavModel& mModel;
  Checkpoint* mCheckpoint;
  Report& mReport;
  Progress mProgress;
  ZULTavSearch mSearch;
  std::string mSaveFailure;
};

int Refuse(const Options& options, Report& report, const std::vector<ZULTavDiagnostic>& errors,
           int status) {
  report.Errors(errors);
  if (options.format == Format::kJson) report.End({});
  return status;
}

int Solve(const Options& given) {
  Options options = given;
  const auto report = MakeReport(options);
  LoadedModel model;
  std::vector<ZULTavDiagnostic> errors;
  const int status = model.Load(options, errors);
  report->Warnings(model.GetWarnings());
  if (status != kAnswered) return Refuse(options, *report, errors, status);
  Aim(options, model.Get());
  if (options.search.objective && !options.solutionsGiven)
    options.search.limits.solutions = ZULTavSearch::kUnlimited;
  std::unique_ptr<Checkpoint> checkpoint;
  if (!options.checkpointFile.empty()) {
    std::string reason;
    checkpoint = Checkpoint::Begin(options, model.Get(), reason);
    if (checkpoint == nullptr) return Refuse(options, *report, {Failure(reason)}, kUsage);
  }
  return Run(options, model.Get(), checkpoint.get(), *report).Execute();
}

/// `use` gets the options that the checkpoint was made with, the model and the report.
template <class Use>
int WithCheckpoint(Options options, Journal::Access access, Use use) {
  const auto report = MakeReport(options);
  std::string reason;
  std::vector<ZULTavDiagnostic> errors;
  const auto checkpoint = Checkpoint::Open(options.checkpointFile, access, reason);
  if (checkpoint == nullptr) return Refuse(options, *report, {Failure(reason)}, kUsage);
  if (checkpoint->IsTorn())
    std::cerr << "zultav: the end of checkpoint '" << options.checkpointFile
              << "' is not whole; the state before it counts\n";
  checkpoint->Restore(options);
  LoadedModel model;
  if (const int status = model.Load(options, *checkpoint, errors); status != kAnswered)
    return Refuse(options, *report, errors, status);
  Aim(options, model.Get());
  return use(std::as_const(options), model.Get(), *checkpoint, *report);
}

int Resume(const Options& given) {
  return WithCheckpoint(
      given, Journal::Access::kWrite,
      [](const Options& options, ZULTavModel& model, Checkpoint& checkpoint, Report& report) {
        return Run(options, model, &checkpoint, report).Execute();
      });
}

int Show(const Options& given) {
  return WithCheckpoint(
      given, Journal::Access::kRead,
      [](const Options& options, ZULTavModel& model, Checkpoint& checkpoint, Report& report) {
        ZULTavSearch search(model.Network(), ValuesOf(model), options.search, ObservedOf(model));
        std::string reason;
        const auto print = [&](const ZULTavSolution& solution) {
          report.Solution(
              model, [&](std::size_t i) -> const ZULTaVoAny& { return solution.GetValue(i); },
              solution.IsProven(), ObjectiveOf(solution));
        };
        if (!checkpoint.ForEachFound(search, reason, print) ||
            !checkpoint.RestoreSearch(search, reason)) {
          report.Errors(
              {Failure("the checkpoint cannot be used: " + reason, options.checkpointFile)});
          return static_cast<int>(kUsage);
        }
        Ending ending;
        ending.searched = true;
        ending.limited = !checkpoint.IsFinished();
        ending.statistics = checkpoint.GetBefore();
        if (model.GetObjective() != nullptr)
          ConcludeOptimum(search, !ending.limited, ending.statistics.solutions != 0, ending);
        else if (ending.statistics.solutions != 0)
          ending.status =
              ending.limited ? Ending::Status::kSatisfied : Ending::Status::kAllSolutions;
        else if (!ending.limited)
          ending.status = Ending::Status::kUnsatisfiable;
        ending.model = options.modelFile;
        ending.openDecisions = search.GetFrontier().path.size();
        report.End(ending);
        return static_cast<int>(kAnswered);
      });
}

}  // namespace

int RunSearchCommand(const Options& options) {
  if (options.command == Command::kResume) return Resume(options);
  return options.command == Command::kShow ? Show(options) : Solve(options);
}
