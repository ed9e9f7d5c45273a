#include "framework/search/detail/SearchTimer.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

namespace zultav::detail {

namespace {

// Beyond it there is no limit: the clock's range is not to be exceeded.
constexpr double kForever = 1e9;

std::chrono::steady_clock::duration DurationOf(double seconds) {
  return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
      std::chrono::duration<double>(std::min(seconds, kForever)));
}

}  // namespace

struct SearchTimer::Alarm {
  std::mutex mutex;
  std::condition_variable_any wake;
  std::jthread thread;
};

SearchTimer::SearchTimer(double seconds, std::atomic<bool>& interrupt) : mInterrupt(interrupt) {
  if (!(seconds < kForever)) return;
  const auto end = std::chrono::steady_clock::now() + DurationOf(seconds);
  mAlarm = std::make_unique<Alarm>();
  Alarm& alarm = *mAlarm;
  try {
    alarm.thread = std::jthread([this, &alarm, end](const std::stop_token& stop) {
      std::unique_lock lock(alarm.mutex);
      alarm.wake.wait_until(lock, stop, end, [] { return false; });
      if (stop.stop_requested()) return;
      mUp = true;
      mInterrupt = true;
    });
  } catch (const std::system_error&) {
    // No thread to be had: the search looks at the clock between nodes anyway.
  }
}

SearchTimer::~SearchTimer() {
  mAlarm.reset();
  if (IsUp()) mInterrupt = false;
}

Period::Period(double seconds) : mLength(DurationOf(seconds)), mNext(Clock::now() + mLength) {}

}  // namespace zultav::detail
