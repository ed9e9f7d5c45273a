#ifndef ZULTAV_SOLVE_REPORT_H
#define ZULTAV_SOLVE_REPORT_H

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "framework/calculator/ZULTavCalculator.h"
#include "solve/Options.h"
#include "solve/ShownLines.h"

/// How a run ended.
struct Ending {
  enum class Status { kAllSolutions, kOptimal, kSatisfied, kUnsatisfiable, kUnbounded, kUnknown };
  Status status = Status::kUnknown;
  bool searched = false;  ///< solutions were looked for
  bool limited = false;   ///< a limit came before the end
  ZULTavSearch::Statistics statistics;
  std::optional<ZULTavObserved> bounds;  ///< of the optimum, where one was looked for
  std::string checkpoint;                ///< file with which the run can go on, if any
  // Of a checkpoint that is shown:
  std::string model;  ///< the file it was made from
  std::size_t openDecisions = 0;
};

/// Writes the outcome of `zultav solve` to standard output while it comes about.
class Report {
 public:
  virtual ~Report() = default;
  virtual void Errors(const std::vector<ZULTavDiagnostic>& errors) = 0;
  virtual void Warnings(const std::vector<ZULTavDiagnostic>& warnings) = 0;
  /// @param objective  null where nothing is optimised
  virtual void Solution(const ZULTavModel& model, const ValueAt& values, bool proven,
                        const ZULTavObserved* objective) = 0;
  /// In place of solutions: what the variables may still be. Without a model: there is nothing.
  virtual void Domains(const ZULTavModel* model, const ValueAt& values) = 0;
  virtual void End(const Ending& ending) = 0;

  /// Passes on what was written, if some time went by since the last time.
  void FlushNowAndThen();

 private:
  std::chrono::steady_clock::time_point mFlushed;
};

std::unique_ptr<Report> MakeReport(const Options& options);

/// {"message": …, "file": …, "line": …, "column": …} for each error, with its notes if any.
nlohmann::ordered_json JsonOf(const std::vector<ZULTavDiagnostic>& errors);
/// To standard error, with their number below.
void PrintErrors(const std::vector<ZULTavDiagnostic>& errors);
/// To standard error.
void PrintWarnings(const std::vector<ZULTavDiagnostic>& warnings);

#endif
