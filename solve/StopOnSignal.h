#ifndef ZULTAV_SOLVE_STOP_ON_SIGNAL_H
#define ZULTAV_SOLVE_STOP_ON_SIGNAL_H

#include <atomic>
#include <csignal>
#include <ctime>

#include "framework/search/ZULTavSearch.h"

/// While it lives, SIGINT and SIGTERM end the search in good order; one that comes a second or
/// two later ends the program. Sooner ones are the same wish: `timeout`, for one, signals a
/// program and its process group.
class StopOnSignal {
 public:
  explicit StopOnSignal(ZULTavSearch& search) {
    sSearch = &search;
    sFirst = 0;
    struct sigaction action = {};
    action.sa_handler = &Handle;
    action.sa_flags = SA_RESTART;  // what is being written goes on
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
  static void Handle(int signal) {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    if (sFirst == 0) {
      sFirst = now.tv_sec;
      if (ZULTavSearch* running = sSearch.load()) running->Stop();
    } else if (now.tv_sec - sFirst > 1) {
      std::signal(signal, SIG_DFL);
      std::raise(signal);
    }
  }

  static inline std::atomic<ZULTavSearch*> sSearch{nullptr};
  static inline std::atomic<std::time_t> sFirst{0};  // seconds; 0: no signal has come
  static_assert(std::atomic<ZULTavSearch*>::is_always_lock_free);
  static_assert(std::atomic<std::time_t>::is_always_lock_free);
  struct sigaction mOldInterrupt, mOldTerminate;
};

#endif
