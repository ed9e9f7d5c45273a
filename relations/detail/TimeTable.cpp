#include "relations/detail/TimeTable.h"

#include <algorithm>

namespace zultav::relations {

TimeTable::TimeTable(std::size_t count) { mSteps.reserve(2 * count); }

void TimeTable::Build(const Tasks& tasks) {
  mSteps.clear();
  for (const Task& task : tasks) {
    if (task.GetLatestStart() >= task.GetEarliestEnd()) continue;
    mSteps.push_back({task.GetLatestStart(), task.need});
    mSteps.push_back({task.GetEarliestEnd(), -task.need});
  }
  std::sort(mSteps.begin(), mSteps.end(),
            [](const Step& a, const Step& b) { return a.time < b.time; });
  mPeak = 0;
  std::size_t last = 0;
  std::int64_t use = 0;
  for (std::size_t i = 0; i < mSteps.size(); ++i) {
    use += mSteps[i].use;
    if (mSteps[i].time != mSteps[last].time) ++last;
    mSteps[last] = {mSteps[i].time, use};
    if (i + 1 == mSteps.size() || mSteps[i + 1].time != mSteps[i].time)
      mPeak = std::max(mPeak, use);
  }
  if (!mSteps.empty()) mSteps.resize(last + 1);
}

/// The step that a time lies in or, before all of them, the first one.
std::size_t TimeTable::FindStep(std::int64_t time) const {
  const auto next =
      std::upper_bound(mSteps.begin(), mSteps.end(), time,
                       [](std::int64_t at, const Step& step) { return at < step.time; });
  return next == mSteps.begin() ? 0 : static_cast<std::size_t>(next - mSteps.begin()) - 1;
}

std::int64_t TimeTable::FindAbove(std::int64_t from, std::int64_t limit) const {
  for (std::size_t i = FindStep(from); i < mSteps.size(); ++i)
    if (mSteps[i].use > limit) return std::max(from, mSteps[i].time);
  return Task::kNever;
}

std::int64_t TimeTable::FindPeak(std::int64_t from, std::int64_t to) const {
  std::int64_t peak = 0;
  for (std::size_t i = FindStep(from); i < mSteps.size() && mSteps[i].time < to; ++i)
    peak = std::max(peak, mSteps[i].use);
  return peak;
}

bool TimeTable::Narrow(Tasks& tasks, std::int64_t capacity, bool& changed) {
  for (int unchanged = 0; unchanged < 2;) {
    for (int side = 0; side < 2; ++side) {
      Build(tasks);
      if (mPeak > capacity) return false;
      bool narrowed = false;
      if (!RaiseBegins(tasks, capacity, narrowed)) return false;
      unchanged = narrowed ? 0 : unchanged + 1;
      changed = changed || narrowed;
      Mirror(tasks);
    }
  }
  Build(tasks);
  return true;
}

/// Each task begins behind the steps that leave no room for it. What it shares with a step after
/// its latest start is its own compulsory part.
bool TimeTable::RaiseBegins(Tasks& tasks, std::int64_t capacity, bool& changed) const {
  for (Task& task : tasks) {
    const std::int64_t room = capacity - task.need;
    if (mPeak <= room) continue;
    std::int64_t begin = task.begin;
    for (std::size_t i = FindStep(begin); i + 1 < mSteps.size(); ++i) {
      if (mSteps[i].time >= std::min(begin + task.duration, task.GetLatestStart())) break;
      if (mSteps[i].use > room) begin = std::max(begin, mSteps[i + 1].time);
    }
    if (begin == task.begin) continue;
    task.begin = begin;
    changed = true;
    if (!task.Fits()) return false;
  }
  return true;
}

}  // namespace zultav::relations
