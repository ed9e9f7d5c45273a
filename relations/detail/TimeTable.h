#ifndef ZULTAV_RELATIONS_DETAIL_TIME_TABLE_H
#define ZULTAV_RELATIONS_DETAIL_TIME_TABLE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "relations/detail/Tasks.h"

namespace zultav::relations {

/// How much of a resource is surely in use at each time: the needs of all tasks in their compulsory
/// parts, from the latest start to the earliest end.
class TimeTable {
 public:
  explicit TimeTable(std::size_t count);

  void Build(const Tasks& tasks);
  std::int64_t GetPeak() const { return mPeak; }
  /// The first time not before `from` at which more is in use than `limit`; kNever if there is
  /// none.
  std::int64_t FindAbove(std::int64_t from, std::int64_t limit) const;
  /// The most that is in use within a stretch of time.
  std::int64_t FindPeak(std::int64_t from, std::int64_t to) const;
  /// Builds and narrows windows, from both sides to the fixpoint; false when there is no schedule.
  /// Of tasks that are not present there must be none.
  bool Narrow(Tasks& tasks, std::int64_t capacity, bool& changed);

 private:
  struct Step {
    std::int64_t time, use;  // from then on
  };

  std::size_t FindStep(std::int64_t time) const;
  bool RaiseBegins(Tasks& tasks, std::int64_t capacity, bool& changed) const;

  std::vector<Step> mSteps;  // the last one uses nothing
  std::int64_t mPeak = 0;
};

}  // namespace zultav::relations

#endif
