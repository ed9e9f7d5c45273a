#ifndef ZULTAV_SEARCH_SEARCH_TIMER_H
#define ZULTAV_SEARCH_SEARCH_TIMER_H

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

/// Raises two flags when the time is up, unless it is destroyed before.
class SearchTimer {
 public:
  SearchTimer(double seconds, std::atomic<bool>& timeUp, std::atomic<bool>& interrupt);

 private:
  std::mutex mMutex;
  std::condition_variable_any mWake;
  std::jthread mThread;  // last: joined before what it uses is destroyed
};

#endif
