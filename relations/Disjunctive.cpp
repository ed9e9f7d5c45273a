#include <numeric>

#include "relations/Relations.h"
#include "relations/detail/Tasks.h"

namespace zultav::relations {

namespace {

constexpr std::int64_t kNothing = -2 * Task::kNever;  // the end of no task at all

/// The end of a set of tasks, done as soon as can be, after one more that begins no sooner.
std::int64_t Append(std::int64_t end, const Task& task) {
  return std::max(end, task.begin) + task.duration;
}

/// Tasks on a machine that does one at a time: of each two, one ends before the other begins. A
/// task of duration 0 takes no time and may be anywhere, as may a task that is not present; no
/// duration is negative.
///
/// Arguments: all starts, all durations, and where tasks are optional for each the truth that it is
/// present. Narrows bounds by overload checking, detectable precedences, not-first and not-last,
/// and edge finding, all to the fixpoint. A task whose presence is open narrows no other one, and
/// turns absent when it fits nowhere.
class Disjunctive final : public ZULTaVoPropagator {
 public:
  Disjunctive(std::uint32_t count, bool hasOptional);
  Wake GetWake(std::uint32_t argument) const override {
    return argument < 2 * mCount ? Wake::kOnBounds : Wake::kOnFixed;
  }
  Cost GetCost() const override { return Cost::kQuadratic; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  std::uint32_t StartOf(std::uint32_t task) const { return task; }
  std::uint32_t DurationOf(std::uint32_t task) const { return mCount + task; }
  std::uint32_t PresenceOf(std::uint32_t task) const { return 2 * mCount + task; }
  bool IsPresent(const ZULTaVoDomains& domains, std::uint32_t task) const {
    return !mHasOptional || domains.IsTrue(PresenceOf(task));
  }
  bool CanTakeTime(const ZULTaVoDomains& domains, std::uint32_t task) const {
    return !(mHasOptional && domains.IsFalse(PresenceOf(task))) &&
           domains.GetUpper(DurationOf(task)) > 0;
  }

  bool IsInOrder(const ZULTaVoDomains& domains) const;
  bool IsFixed(const ZULTaVoDomains& domains) const;
  void Gather(const ZULTaVoDomains& domains);
  bool Tighten(ZULTaVoDomains& domains, bool& changed);
  void FindPrecedences();
  bool FindEdges();
  bool Commit(ZULTaVoDomains& domains, bool& again) const;
  bool NarrowDuration(ZULTaVoDomains& domains, const Task& task) const;

  std::uint32_t mCount;
  bool mHasOptional;
  std::vector<std::uint32_t> mOrder;  // all tasks by their earliest starts
  Tasks mTasks;                       // those that take time, by their earliest starts
  std::vector<std::int64_t> mEnds;    // when those in front can be done
};

Disjunctive::Disjunctive(std::uint32_t count, bool hasOptional)
    : mCount(count), mHasOptional(hasOptional), mOrder(count), mEnds(count) {
  std::iota(mOrder.begin(), mOrder.end(), 0u);
  mTasks.reserve(count);
}

ZULTaVoPropagator::Outcome Disjunctive::Propagate(ZULTaVoDomains& domains) {
  for (std::uint32_t i = 0; i < mCount; ++i)
    if (!domains.SetLower(DurationOf(i), 0)) return Outcome::kFailed;
  SortByInsertion(mOrder, [&](std::uint32_t a, std::uint32_t b) {
    const std::int64_t first = domains.GetLower(StartOf(a)), second = domains.GetLower(StartOf(b));
    return first < second || (first == second && a < b);
  });
  if (IsInOrder(domains)) return Outcome::kEntailed;
  if (IsFixed(domains)) return Outcome::kFailed;
  Gather(domains);
  bool changed = true, again = false;
  while (changed) {
    changed = false;
    if (!Tighten(domains, changed)) return Outcome::kFailed;
    Mirror(mTasks);
    if (!Tighten(domains, changed)) return Outcome::kFailed;
    Mirror(mTasks);
  }
  if (!Commit(domains, again)) return Outcome::kFailed;
  return again ? Outcome::kAgain : Outcome::kFixpoint;
}

/// Whether each task is surely done when the next one begins.
bool Disjunctive::IsInOrder(const ZULTaVoDomains& domains) const {
  const std::uint32_t* last = nullptr;
  for (const std::uint32_t& i : mOrder) {
    if (!CanTakeTime(domains, i)) continue;
    if (last != nullptr && !IsBefore(domains, StartOf(*last), DurationOf(*last), StartOf(i)))
      return false;
    last = &i;
  }
  return true;
}

bool Disjunctive::IsFixed(const ZULTaVoDomains& domains) const {
  for (std::uint32_t i = 0; i < mCount; ++i)
    if (CanTakeTime(domains, i) &&
        !(IsPresent(domains, i) && domains.IsFixed(StartOf(i)) && domains.IsFixed(DurationOf(i))))
      return false;
  return true;
}

void Disjunctive::Gather(const ZULTaVoDomains& domains) {
  mTasks.clear();
  const std::int64_t share = Task::kFar / mCount;
  for (const std::uint32_t i : mOrder) {
    if (!CanTakeTime(domains, i) || domains.GetLower(DurationOf(i)) <= 0) continue;
    mTasks.emplace_back(domains, StartOf(i), DurationOf(i), share, i);
    mTasks.back().isPresent = IsPresent(domains, i);
  }
}

/// Concludes what it can from the windows as they are; false when there is no schedule.
bool Disjunctive::Tighten(ZULTaVoDomains& domains, bool& changed) {
  FindPrecedences();
  if (!FindEdges()) return false;
  bool hasLeft = false;
  for (Task& task : mTasks) {
    changed = changed || task.later > task.begin || task.sooner < task.end;
    task.begin = task.later;
    task.end = task.sooner;
    if (task.Fits()) continue;
    if (task.isPresent) return false;
    domains.SetUpper(PresenceOf(task.index), 0);
    hasLeft = true;
  }
  if (hasLeft) std::erase_if(mTasks, [](const Task& task) { return !task.Fits(); });
  SortByBegin(mTasks);
  return true;
}

/// Detectable precedences: what cannot begin after a task has ended goes before it. Not last: where
/// others, done before it, are too late for the latest start of a task, it ends before one of them
/// begins.
void Disjunctive::FindPrecedences() {
  for (Task& task : mTasks) {
    std::int64_t before = kNothing, others = kNothing, latest = kNothing;
    for (const Task& other : mTasks) {
      if (&other == &task || !other.isPresent) continue;
      const std::int64_t start = other.GetLatestStart();
      if (start < task.GetEarliestEnd()) before = Append(before, other);
      if (start < task.end) {
        others = Append(others, other);
        latest = std::max(latest, start);
      }
    }
    task.later = std::max(task.begin, before);
    task.sooner = others > task.GetLatestStart() ? std::min(task.end, latest) : task.end;
  }
}

/// Edge finding: of all tasks that end within a time, which must be possible, and one more that
/// would be too much for it, that one comes last.
bool Disjunctive::FindEdges() {
  for (const Task& last : mTasks) {
    if (!last.isPresent) continue;
    const std::int64_t time = last.end;
    const auto isWithin = [&](const Task& task) { return task.isPresent && task.end <= time; };
    std::int64_t end = kNothing;
    for (std::size_t i = 0; i < mTasks.size(); ++i) {
      mEnds[i] = end;
      if (isWithin(mTasks[i])) end = Append(end, mTasks[i]);
    }
    if (end > time) return false;
    std::int64_t behind = kNothing, sum = 0;  // of those that begin later
    for (std::size_t i = mTasks.size(); i-- > 0;) {
      Task& task = mTasks[i];
      const std::int64_t with =
          std::max(behind, std::max(mEnds[i], task.begin) + task.duration + sum);
      if (isWithin(task)) {
        behind = std::max(behind, task.begin + task.duration + sum);
        sum += task.duration;
      } else if (with > time) {
        // What must end in time, too, is not possible.
        task.later = task.end <= time ? task.end : std::max(task.later, end);
      }
    }
  }
  return true;
}

bool Disjunctive::Commit(ZULTaVoDomains& domains, bool& again) const {
  for (const Task& task : mTasks) {
    if (!task.isPresent) continue;
    if (!task.Commit(domains, StartOf(task.index), again)) return false;
    if (!NarrowDuration(domains, task)) return false;
  }
  return true;
}

/// A task that must go before another one ends before its latest start.
bool Disjunctive::NarrowDuration(ZULTaVoDomains& domains, const Task& task) const {
  if (domains.IsFixed(DurationOf(task.index)) || task.begin < -Task::kBelieved) return true;
  for (const Task& other : mTasks)
    if (&other != &task && other.isPresent && other.GetEarliestEnd() > task.GetLatestStart() &&
        other.GetLatestStart() < Task::kBelieved &&
        !domains.SetUpper(DurationOf(task.index), other.GetLatestStart() - task.begin))
      return false;
  return true;
}

std::unique_ptr<ZULTaVoPropagator> Make(Arguments arguments) {
  return std::make_unique<Disjunctive>(arguments[0].columns, arguments.size() == 3);
}

}  // namespace

Definition DescribeDisjunctive() {
  return {
      .name = "disjunctive",
      .meaning = "of each two tasks one ends before the other begins",
      .parameters = {{.name = "starts", .size = "n"}, {.name = "durations", .size = "n"}},
      .make = &Make
  };
}

Definition DescribeDisjunctiveOptional() {
  return {
      .name = "disjunctive",
      .meaning = "of each two tasks that are present one ends before the other begins",
      .parameters = {{.name = "starts", .size = "n"},
                     {.name = "durations", .size = "n"},
                     {.name = "present", .element = Element::kTruth, .size = "n"}},
      .make = &Make
  };
}

}  // namespace zultav::relations
