#ifndef ZULTAV_SOLVE_OPTIONS_H
#define ZULTAV_SOLVE_OPTIONS_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "framework/search/ZULTavSearch.h"

/// What the program answers to the shell.
enum ExitStatus : int {
  kAnswered = 0,      ///< answered; unsatisfiable is an answer
  kUsage = 2,         ///< the command line or the named file is no good
  kModelError = 3,    ///< the model has errors
  kLimitReached = 4,  ///< time, nodes or a signal ended the search
  kInternal = 5
};

enum class Command { kSolve, kResume, kShow, kCheck, kOperators, kRelations, kTypes };
/// Text as models have it, or with values as their module prints them, or JSON.
enum class Format { kText, kModule, kJson };
/// How text output prints reals: to the precision, or so that they read back.
enum class Digits { kPrecision, kFull };

/// What the command line asks for.
struct Options {
  Command command = Command::kSolve;
  std::string modelFile;  ///< "-" is standard input
  std::map<std::string, std::string> definitions;
  std::vector<std::string> dataFiles;  ///< "-" is standard input
  std::vector<std::string> includeFolders;
  std::vector<std::string> modules = {"ZULTavNumbers", "ZULTavRelations"};
  bool moduleGiven = false;
  Format format = Format::kText;
  Digits digits = Digits::kPrecision;
  bool propagateOnly = false;
  bool statistics = false;
  std::optional<double> precision;
  std::optional<std::pair<double, double>> trigLimits;
  std::optional<double> ratio;
  ZULTavSearch::Options search;
  std::optional<bool> restarts;  ///< without it, unless all solutions are wanted
  bool solutionsGiven = false;
  ZULTavSearch::Objective objective;  ///< how, where the model has one
  std::string checkpointFile;         ///< empty: the run is not saved
  bool force = false;                 ///< an unfinished run in that file is given up
  double savePeriod = 60;             ///< seconds
};

#endif
