#ifndef ZULTAV_SEARCH_DETAIL_SEARCH_TIMER_H
#define ZULTAV_SEARCH_DETAIL_SEARCH_TIMER_H

#include <atomic>
#include <chrono>
#include <memory>

namespace zultav::detail {

/// Raises the interrupt flag when the time is up, unless it is destroyed before; takes it back when
/// it is destroyed after.
class SearchTimer {
 public:
  SearchTimer(double seconds, std::atomic<bool>& interrupt);
  ~SearchTimer();
  SearchTimer(const SearchTimer&) = delete;
  SearchTimer& operator=(const SearchTimer&) = delete;

  bool IsUp() const { return mUp.load(std::memory_order_relaxed); }

 private:
  struct Alarm;

  std::atomic<bool>& mInterrupt;
  std::atomic<bool> mUp{false};
  std::unique_ptr<Alarm> mAlarm;  // null where there is no limit
};

/// Tells when something is due that is done now and then.
class Period {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Period(double seconds);
  bool IsDue(Clock::time_point now) const { return now >= mNext; }
  /// It was done.
  void Restart() { mNext = Clock::now() + mLength; }

 private:
  Clock::duration mLength;
  Clock::time_point mNext;
};

}  // namespace zultav::detail

#endif
