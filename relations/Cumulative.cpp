#include <algorithm>

#include "relations/Relations.h"
#include "relations/detail/Tasks.h"
#include "relations/detail/TimeTable.h"

namespace zultav::relations {

namespace {

/// Tasks that share a resource: at each time, those under way need at most its capacity together. A
/// task is under way from its start on for its duration; none is negative, no need, and not the
/// capacity.
///
/// Arguments: all starts, all durations, all needs, the capacity. Narrows bounds by the time table
/// and by edge finding, both to the fixpoint, with the least durations and needs and the greatest
/// capacity; greatest durations and needs and the least capacity by the time table.
class Cumulative final : public ZULTaVoPropagator {
 public:
  explicit Cumulative(std::uint32_t count);
  Wake GetWake(std::uint32_t) const override { return Wake::kOnBounds; }
  Cost GetCost() const override { return Cost::kMore; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  /// What edge finding knows of a task.
  struct Edge {
    std::int64_t energy;     // of all that begin no sooner and end in time
    std::int64_t byDensest;  // earliest starts, should it end last
    std::int64_t byTightest;
  };

  std::uint32_t StartOf(std::uint32_t task) const { return task; }
  std::uint32_t DurationOf(std::uint32_t task) const { return mCount + task; }
  std::uint32_t NeedOf(std::uint32_t task) const { return 2 * mCount + task; }
  std::uint32_t Capacity() const { return 3 * mCount; }
  bool CanNeed(const ZULTaVoDomains& domains, std::uint32_t task) const {
    return domains.GetUpper(NeedOf(task)) > 0 && domains.GetUpper(DurationOf(task)) > 0;
  }

  bool NarrowEach(ZULTaVoDomains& domains) const;
  bool HasRoomForAll(const ZULTaVoDomains& domains) const;
  bool IsFixed(const ZULTaVoDomains& domains) const;
  bool Holds(const ZULTaVoDomains& domains) const;
  void Gather(const ZULTaVoDomains& domains);
  bool Narrow();
  bool FindEdges(bool& changed);
  bool PrepareEdges();
  bool GatherEnergy(std::int64_t time);
  void ApplyEdges(std::int64_t time);
  std::int64_t GetEnergy(const Task& task) const {
    return task.need * std::min(task.duration, mSpan);
  }
  bool Commit(ZULTaVoDomains& domains, bool& again) const;
  bool NarrowAmounts(ZULTaVoDomains& domains, const Task& task) const;

  std::uint32_t mCount;
  std::int64_t mCapacity = 0;
  Tasks mTasks;  // those that need something, by their earliest starts
  TimeTable mTable;
  // Of edge finding.
  std::vector<Edge> mEdges;
  std::vector<std::int64_t> mEnds;  // latest ones, ascending
  std::int64_t mSpan = 0;           // of all times that are known
};

Cumulative::Cumulative(std::uint32_t count) : mCount(count), mTable(count), mEdges(count) {
  mTasks.reserve(count);
  mEnds.reserve(count);
}

ZULTaVoPropagator::Outcome Cumulative::Propagate(ZULTaVoDomains& domains) {
  if (!NarrowEach(domains)) return Outcome::kFailed;
  if (HasRoomForAll(domains)) return Outcome::kEntailed;
  if (IsFixed(domains)) return Holds(domains) ? Outcome::kEntailed : Outcome::kFailed;
  Gather(domains);
  bool again = false;
  if (!Narrow() || !Commit(domains, again)) return Outcome::kFailed;
  return again ? Outcome::kAgain : Outcome::kFixpoint;
}

/// No amount is negative, and what surely takes time needs no more than there is.
bool Cumulative::NarrowEach(ZULTaVoDomains& domains) const {
  for (std::uint32_t x = DurationOf(0); x <= Capacity(); ++x)
    if (!domains.SetLower(x, 0)) return false;
  for (std::uint32_t i = 0; i < mCount; ++i)
    if (domains.GetLower(DurationOf(i)) > 0 &&
        !(domains.SetUpper(NeedOf(i), domains.GetUpper(Capacity())) &&
          domains.SetLower(Capacity(), domains.GetLower(NeedOf(i)))))
      return false;
  return true;
}

/// Whether all tasks at once need no more than the least capacity.
bool Cumulative::HasRoomForAll(const ZULTaVoDomains& domains) const {
  std::int64_t needs = 0;
  for (std::uint32_t i = 0; i < mCount; ++i)
    if (CanNeed(domains, i)) needs = AddUp(needs, domains.GetUpper(NeedOf(i)));
  return needs != ZULTaVoDomains::kNoUpper && needs <= domains.GetLower(Capacity());
}

bool Cumulative::IsFixed(const ZULTaVoDomains& domains) const {
  if (!domains.IsFixed(Capacity())) return false;
  for (std::uint32_t i = 0; i < mCount; ++i)
    if (CanNeed(domains, i) && !(domains.IsFixed(StartOf(i)) && domains.IsFixed(DurationOf(i)) &&
                                 domains.IsFixed(NeedOf(i))))
      return false;
  return true;
}

/// Of fixed tasks, whatever their numbers: the most is needed when one of them begins.
bool Cumulative::Holds(const ZULTaVoDomains& domains) const {
  for (std::uint32_t i = 0; i < mCount; ++i) {
    if (!CanNeed(domains, i)) continue;
    const std::int64_t time = domains.GetLower(StartOf(i));
    std::int64_t needs = 0;
    for (std::uint32_t j = 0; j < mCount; ++j)
      if (CanNeed(domains, j) && domains.GetLower(StartOf(j)) <= time &&
          GetGreatestEnd(domains, StartOf(j), DurationOf(j)) > time)
        needs = AddUp(needs, domains.GetLower(NeedOf(j)));
    if (needs > domains.GetLower(Capacity())) return false;
  }
  return true;
}

void Cumulative::Gather(const ZULTaVoDomains& domains) {
  mTasks.clear();
  const std::int64_t share = Task::kFar / mCount;
  for (std::uint32_t i = 0; i < mCount; ++i) {
    if (domains.GetLower(DurationOf(i)) <= 0 || domains.GetLower(NeedOf(i)) <= 0) continue;
    mTasks.emplace_back(domains, StartOf(i), DurationOf(i), share, i);
    mTasks.back().need = Task::Cut(domains.GetLower(NeedOf(i)), share);
  }
  SortByBegin(mTasks);
  mCapacity = std::min(domains.GetUpper(Capacity()), Task::kFar);
}

bool Cumulative::Narrow() {
  for (bool changed = true; changed;) {
    changed = false;
    if (!mTable.Narrow(mTasks, mCapacity, changed)) return false;
    changed = false;
    for (int side = 0; side < 2; ++side) {
      if (!FindEdges(changed)) return false;
      Mirror(mTasks);
    }
  }
  return true;
}

// --- Edge finding -------------------------------------------------------------------------------

/// Raises earliest starts by the algorithm of R. Kameugne, L. Fotso, J. Scott and Y. Ngo-Kateu, "A
/// quadratic edge-finding filtering algorithm for cumulative resource constraints" (CP 2011).
/// Energy is need by duration.
bool Cumulative::FindEdges(bool& changed) {
  if (!PrepareEdges()) return true;
  for (const std::int64_t time : mEnds) {
    if (!GatherEnergy(time)) return false;
    ApplyEdges(time);
  }
  for (Task& task : mTasks) {
    changed = changed || task.later > task.begin;
    task.begin = task.later;
    if (!task.Fits()) return false;
  }
  SortByBegin(mTasks);
  return true;
}

/// False where nothing can be found, or where energies might overflow.
bool Cumulative::PrepareEdges() {
  std::int64_t first = Task::kNever, last = -Task::kNever;
  mEnds.clear();
  for (std::size_t i = 0; i < mTasks.size(); ++i) {
    Task& task = mTasks[i];
    task.later = task.begin;
    mEdges[i] = {0, -Task::kNever, -Task::kNever};
    if (task.begin < -Task::kBelieved) continue;
    first = std::min(first, task.begin);
    if (task.end > Task::kBelieved) continue;
    last = std::max(last, task.end);
    mEnds.push_back(task.end);
  }
  std::sort(mEnds.begin(), mEnds.end());
  mEnds.erase(std::unique(mEnds.begin(), mEnds.end()), mEnds.end());
  if (mEnds.empty()) return false;
  mSpan = last - first + 1;
  std::int64_t most = 0;
  return !__builtin_mul_overflow(mSpan, mCapacity, &most) && most < Task::kFar;
}

/// Of each task the energy of those that begin no sooner and end in time, and the earliest start
/// that the densest of their stretches would leave it. False where there is too much of it. What is
/// concluded is true of any stretch: rounding may at most prefer one that is nearly as dense.
bool Cumulative::GatherEnergy(std::int64_t time) {
  const auto product = [](std::int64_t a, std::int64_t b) {
    return static_cast<double>(a) * static_cast<double>(b);
  };
  std::int64_t energy = 0, densest = 0, length = 1;  // of the densest stretch
  for (std::size_t i = mTasks.size(); i-- > 0;) {
    const Task& task = mTasks[i];
    Edge& edge = mEdges[i];
    edge.energy = energy;
    if (task.begin < -Task::kBelieved) continue;
    if (task.end <= time) {
      edge.energy = energy += GetEnergy(task);
      const std::int64_t stretch = time - task.begin;
      if (energy > mCapacity * stretch) return false;
      if (product(energy, length) > product(densest, stretch)) {
        densest = energy;
        length = stretch;
      }
    } else {
      const std::int64_t rest = densest - (mCapacity - task.need) * length;
      if (rest > 0)
        edge.byDensest =
            std::max(edge.byDensest, time - length + (rest + task.need - 1) / task.need);
    }
  }
  return true;
}

/// Whatever could not end in time together with all that must ends last, and begins when they leave
/// room for it.
void Cumulative::ApplyEdges(std::int64_t time) {
  constexpr std::int64_t kNone = Task::kNever;
  std::int64_t slack = kNone, tightest = time;  // of the stretch that leaves least room
  for (std::size_t i = 0; i < mTasks.size(); ++i) {
    Task& task = mTasks[i];
    Edge& edge = mEdges[i];
    if (task.begin < -Task::kBelieved || task.begin >= time) continue;
    const std::int64_t room = mCapacity * (time - task.begin) - edge.energy;
    if (room < slack) {
      slack = room;
      tightest = task.begin;
    }
    if (task.end <= time) continue;
    const std::int64_t rest = task.need * (time - tightest) - slack;
    if (rest > 0)
      edge.byTightest = std::max(edge.byTightest, tightest + (rest + task.need - 1) / task.need);
    if (task.GetEarliestEnd() >= time || slack < GetEnergy(task))
      task.later = std::max({task.later, edge.byDensest, edge.byTightest});
  }
}

// --- What was concluded -------------------------------------------------------------------------

bool Cumulative::Commit(ZULTaVoDomains& domains, bool& again) const {
  if (!domains.SetLower(Capacity(), mTable.GetPeak())) return false;
  for (const Task& task : mTasks)
    if (!task.Commit(domains, StartOf(task.index), again) || !NarrowAmounts(domains, task))
      return false;
  return true;
}

/// In its compulsory part a task needs no more than others leave, and it ends where they leave less
/// than it needs.
bool Cumulative::NarrowAmounts(ZULTaVoDomains& domains, const Task& task) const {
  const std::uint32_t need = NeedOf(task.index), duration = DurationOf(task.index);
  const std::int64_t from = task.GetLatestStart(), to = task.GetEarliestEnd();
  if (!domains.IsFixed(need) && from < to &&
      !domains.SetUpper(need, mCapacity - (mTable.FindPeak(from, to) - task.need)))
    return false;
  if (domains.IsFixed(duration) || task.begin < -Task::kBelieved) return true;
  const std::int64_t end = mTable.FindAbove(std::max(from, to), mCapacity - task.need);
  return end == Task::kNever || domains.SetUpper(duration, end - task.begin);
}

}  // namespace

Definition DescribeCumulative() {
  return {
      .name = "cumulative",
      .meaning = "at each time the tasks under way need at most the capacity together",
      .parameters = {{.name = "starts", .size = "n"},
                     {.name = "durations", .size = "n"},
                     {.name = "needs", .size = "n"},
                     {.name = "capacity"}},
      .make = [](Arguments arguments) -> std::unique_ptr<ZULTaVoPropagator> {
        return std::make_unique<Cumulative>(arguments[0].columns);
                     }
  };
}

}  // namespace zultav::relations
