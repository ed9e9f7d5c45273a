#include "framework/search/SearchTimer.h"

#include <chrono>
#include <system_error>

namespace {
// Beyond it there is no limit: the clock's range is not to be exceeded.
constexpr double kForever = 1e9;
}  // namespace

SearchTimer::SearchTimer(double seconds, std::atomic<bool>& timeUp, std::atomic<bool>& interrupt) {
  if (!(seconds < kForever)) return;
  const auto end = std::chrono::steady_clock::now() +
                   std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                       std::chrono::duration<double>(seconds));
  try {
    mThread = std::jthread([this, end, &timeUp, &interrupt](const std::stop_token& stop) {
      std::unique_lock lock(mMutex);
      mWake.wait_until(lock, stop, end, [] { return false; });
      if (stop.stop_requested()) return;
      timeUp = true;
      interrupt = true;
    });
  } catch (const std::system_error&) {
    // No thread to be had: the search looks at the clock between nodes anyway.
  }
}
