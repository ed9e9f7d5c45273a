#ifndef ZULTAV_RELATIONS_DETAIL_TASKS_H
#define ZULTAV_RELATIONS_DETAIL_TASKS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/solver/ZULTaVoPropagator.h"

namespace zultav::relations {

/// A task as scheduling reasons about it: of its least duration and need, between its earliest
/// start and its latest end.
///
/// Beyond kFar nothing is told apart: what may start below it may start at -kNever, what may start
/// above it at kNever, and all durations together are cut to kFar. That only ever widens windows
/// and shortens tasks, so that no solution is lost, and no sum overflows. Conclusions beyond
/// kBelieved come from kNever and say nothing.
struct Task {
  static constexpr std::int64_t kFar = std::int64_t{1} << 59;
  static constexpr std::int64_t kBelieved = std::int64_t{1} << 60;
  static constexpr std::int64_t kNever = std::int64_t{1} << 61;

  std::int64_t begin, end;  // earliest start, latest end
  std::int64_t duration, need;
  std::uint32_t index;
  bool isPresent;              // for certain
  std::int64_t later, sooner;  // what begin and end are about to become

  Task() = default;
  /// @param share  of kFar, for durations and needs
  Task(const ZULTaVoDomains& domains, std::uint32_t start, std::uint32_t length, std::int64_t share,
       std::uint32_t number)
      : duration(Cut(domains.GetLower(length), share)), need(1), index(number), isPresent(true) {
    const std::int64_t lower = domains.GetLower(start), upper = domains.GetUpper(start);
    begin = lower < -kFar ? -kNever : std::min(lower, kFar);
    end = (upper > kFar ? kNever : std::max(upper, -kFar)) + duration;
  }
  static std::int64_t Cut(std::int64_t least, std::int64_t share) {
    return std::clamp(least, std::int64_t{0}, share);
  }

  std::int64_t GetEarliestEnd() const { return begin + duration; }
  std::int64_t GetLatestStart() const { return end - duration; }
  bool Fits() const { return begin + duration <= end; }

  /// Narrows the start. False when nothing is left; `again` where a hole took it farther.
  bool Commit(ZULTaVoDomains& domains, std::uint32_t start, bool& again) const {
    const std::int64_t latest = GetLatestStart();
    if (begin > -kBelieved && begin > domains.GetLower(start)) {
      if (!domains.SetLower(start, begin)) return false;
      again = again || domains.GetLower(start) != begin;
    }
    if (latest < kBelieved && latest < domains.GetUpper(start)) {
      if (!domains.SetUpper(start, latest)) return false;
      again = again || domains.GetUpper(start) != latest;
    }
    return true;
  }
};

using Tasks = std::vector<Task>;

/// For lists that are nearly in order.
template <class List, class Less>
void SortByInsertion(List& list, const Less& less) {
  for (std::size_t i = 1; i < list.size(); ++i) {
    if (!less(list[i], list[i - 1])) continue;
    const auto moved = list[i];
    std::size_t to = i;
    do list[to] = list[to - 1];
    while (--to > 0 && less(moved, list[to - 1]));
    list[to] = moved;
  }
}
inline void SortByBegin(Tasks& tasks) {
  SortByInsertion(tasks, [](const Task& a, const Task& b) { return a.begin < b.begin; });
}

/// Time turned round: what is concluded about starts is then true of ends.
inline void Mirror(Tasks& tasks) {
  std::reverse(tasks.begin(), tasks.end());
  for (Task& task : tasks) {
    const std::int64_t begin = task.begin;
    task.begin = -task.end;
    task.end = -begin;
  }
  SortByBegin(tasks);
}

/// Of a bound and an amount, exact; without bound where either has none, or beyond 64 bits.
inline std::int64_t AddUp(std::int64_t upper, std::int64_t most) {
  std::int64_t sum = 0;
  const bool isBounded = upper != ZULTaVoDomains::kNoUpper && most != ZULTaVoDomains::kNoUpper;
  return isBounded && !__builtin_add_overflow(upper, most, &sum) ? sum : ZULTaVoDomains::kNoUpper;
}

/// The latest end that a task of any of its durations may have.
inline std::int64_t GetGreatestEnd(const ZULTaVoDomains& domains, std::uint32_t start,
                                   std::uint32_t length) {
  return AddUp(domains.GetUpper(start), domains.GetUpper(length));
}

/// Whether one surely ends before the other begins.
inline bool IsBefore(const ZULTaVoDomains& domains, std::uint32_t start, std::uint32_t length,
                     std::uint32_t next) {
  const std::int64_t earliest = domains.GetLower(next);
  const std::int64_t end = GetGreatestEnd(domains, start, length);
  return earliest != ZULTaVoDomains::kNoLower && end != ZULTaVoDomains::kNoUpper && end <= earliest;
}

}  // namespace zultav::relations

#endif
