#ifndef ZULTAV_SOLVE_STOP_ON_SIGNAL_H
#define ZULTAV_SOLVE_STOP_ON_SIGNAL_H

#include <atomic>
#include <csignal>

#include "framework/search/ZULTavSearch.h"

/// While it lives, SIGINT and SIGTERM end the search in good order; a second one ends the program.
class StopOnSignal {
 public:
  explicit StopOnSignal(ZULTavSearch& search) {
    sSearch = &search;
    struct sigaction action = {};
    action.sa_handler = [](int) {
      if (ZULTavSearch* running = sSearch.load()) running->Stop();
    };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
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
  static inline std::atomic<ZULTavSearch*> sSearch{nullptr};
  static_assert(std::atomic<ZULTavSearch*>::is_always_lock_free);
  struct sigaction mOldInterrupt, mOldTerminate;
};

#endif
