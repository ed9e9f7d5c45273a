#ifndef ZULTAV_SOLVE_PROGRESS_H
#define ZULTAV_SOLVE_PROGRESS_H

#include <string>

#include "framework/search/ZULTavSearch.h"

/// A line on standard error that says how a long search is getting on; nothing unless standard
/// error is a terminal.
class Progress {
 public:
  Progress();
  ~Progress() { Erase(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// @param more  stands at the end of the line
  void Show(const ZULTavSearch::Statistics& statistics, const std::string& more);
  /// Takes the line away, before something else is printed.
  void Erase();

 private:
  bool mTerminal;
  bool mShown = false;
};

#endif
