#include "solve/Progress.h"

#include <unistd.h>

#include <cstdio>

namespace {
constexpr double kLong = 2;  // seconds without progress that a user takes for granted
}  // namespace

Progress::Progress() : mTerminal(isatty(STDERR_FILENO) != 0) {}

void Progress::Show(const ZULTavSearch::Statistics& statistics, const std::string& more) {
  if (!mTerminal || statistics.seconds < kLong) return;
  std::fprintf(stderr, "\r\033[K%.0f s  %llu solutions  %llu nodes  %llu fails  depth %llu%s",
               statistics.seconds, static_cast<unsigned long long>(statistics.solutions),
               static_cast<unsigned long long>(statistics.nodes),
               static_cast<unsigned long long>(statistics.fails),
               static_cast<unsigned long long>(statistics.peakDepth), more.c_str());
  mShown = true;
}

void Progress::Erase() {
  if (mShown) std::fputs("\r\033[K", stderr);
  mShown = false;
}
