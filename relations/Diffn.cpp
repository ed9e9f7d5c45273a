#include <array>

#include "relations/Relations.h"
#include "relations/detail/Tasks.h"
#include "relations/detail/TimeTable.h"

namespace zultav::relations {

namespace {

/// Rectangles of which no two overlap. One with a side of 0 covers nothing and may be anywhere; no
/// side is negative.
///
/// Arguments: all left edges, all lower edges, all widths, all heights. Narrows bounds pair by
/// pair, where one of the four ways for two to lie side by side is left, and by a time table along
/// each axis, with the extent along the other one for capacity; both to the fixpoint.
class Diffn final : public ZULTaVoPropagator {
 public:
  explicit Diffn(std::uint32_t count);
  Wake GetWake(std::uint32_t) const override { return Wake::kOnBounds; }
  Cost GetCost() const override { return Cost::kMore; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  static constexpr std::uint32_t kAxes = 2;

  std::uint32_t EdgeOf(std::uint32_t axis, std::uint32_t box) const { return axis * mCount + box; }
  std::uint32_t SideOf(std::uint32_t axis, std::uint32_t box) const {
    return (kAxes + axis) * mCount + box;
  }

  bool IsFlat(const ZULTaVoDomains& domains, std::uint32_t box) const;
  bool IsFixed(const ZULTaVoDomains& domains) const;
  bool AreApart(const ZULTaVoDomains& domains, std::uint32_t first, std::uint32_t second) const;
  bool AreAllApart(const ZULTaVoDomains& domains) const;
  void Gather(const ZULTaVoDomains& domains);
  bool Narrow();
  bool NarrowPairs(bool& changed);
  bool NarrowStrips(bool& changed);
  bool Commit(ZULTaVoDomains& domains, bool& again) const;
  bool NarrowSides(ZULTaVoDomains& domains, std::size_t first, std::size_t second) const;

  std::uint32_t mCount;
  std::array<Tasks, kAxes> mAxes;  // the boxes that surely cover something, in the same order
  Tasks mStrips;
  TimeTable mTable;
};

/// Whether one of the two may come first along an axis.
bool CanPrecede(const Task& first, const Task& second) {
  return first.GetEarliestEnd() <= second.GetLatestStart();
}

/// Two that overlap along the other axis do not along this one.
bool Separate(Task& a, Task& b, bool& changed) {
  const bool aFirst = CanPrecede(a, b), bFirst = CanPrecede(b, a);
  if (aFirst && bFirst) return true;
  Task &first = aFirst ? a : b, &second = aFirst ? b : a;
  const std::int64_t begin = first.GetEarliestEnd(), end = second.GetLatestStart();
  changed = changed || begin > second.begin || end < first.end;
  second.begin = std::max(second.begin, begin);
  first.end = std::min(first.end, end);
  return aFirst || bFirst;
}

Diffn::Diffn(std::uint32_t count) : mCount(count), mTable(count) {
  for (Tasks& axis : mAxes) axis.reserve(count);
  mStrips.reserve(count);
}

ZULTaVoPropagator::Outcome Diffn::Propagate(ZULTaVoDomains& domains) {
  for (std::uint32_t side = SideOf(0, 0); side < SideOf(kAxes, 0); ++side)
    if (!domains.SetLower(side, 0)) return Outcome::kFailed;
  if (AreAllApart(domains)) return Outcome::kEntailed;
  if (IsFixed(domains)) return Outcome::kFailed;
  Gather(domains);
  bool again = false;
  if (!Narrow() || !Commit(domains, again)) return Outcome::kFailed;
  return again ? Outcome::kAgain : Outcome::kFixpoint;
}

bool Diffn::IsFlat(const ZULTaVoDomains& domains, std::uint32_t box) const {
  return domains.GetUpper(SideOf(0, box)) == 0 || domains.GetUpper(SideOf(1, box)) == 0;
}

bool Diffn::IsFixed(const ZULTaVoDomains& domains) const {
  for (std::uint32_t box = 0; box < mCount; ++box) {
    if (IsFlat(domains, box)) continue;
    for (std::uint32_t axis = 0; axis < kAxes; ++axis)
      if (!domains.IsFixed(EdgeOf(axis, box)) || !domains.IsFixed(SideOf(axis, box))) return false;
  }
  return true;
}

bool Diffn::AreApart(const ZULTaVoDomains& domains, std::uint32_t first,
                     std::uint32_t second) const {
  for (std::uint32_t axis = 0; axis < kAxes; ++axis) {
    const std::uint32_t a = EdgeOf(axis, first), b = EdgeOf(axis, second);
    if (IsBefore(domains, a, SideOf(axis, first), b) ||
        IsBefore(domains, b, SideOf(axis, second), a))
      return true;
  }
  return IsFlat(domains, first) || IsFlat(domains, second);
}

bool Diffn::AreAllApart(const ZULTaVoDomains& domains) const {
  for (std::uint32_t first = 0; first < mCount; ++first)
    for (std::uint32_t second = 0; second < first; ++second)
      if (!AreApart(domains, first, second)) return false;
  return true;
}

void Diffn::Gather(const ZULTaVoDomains& domains) {
  const std::int64_t share = Task::kFar / mCount;
  for (Tasks& axis : mAxes) axis.clear();
  for (std::uint32_t box = 0; box < mCount; ++box) {
    if (domains.GetLower(SideOf(0, box)) == 0 || domains.GetLower(SideOf(1, box)) == 0) continue;
    for (std::uint32_t axis = 0; axis < kAxes; ++axis)
      mAxes[axis].emplace_back(domains, EdgeOf(axis, box), SideOf(axis, box), share, box);
  }
}

bool Diffn::Narrow() {
  for (bool changed = true; changed;) {
    changed = false;
    if (!NarrowPairs(changed)) return false;
    if (!changed && !NarrowStrips(changed)) return false;
  }
  return true;
}

bool Diffn::NarrowPairs(bool& changed) {
  auto& [x, y] = mAxes;
  for (std::size_t i = 0; i < x.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) {
      const bool besides = CanPrecede(x[i], x[j]) || CanPrecede(x[j], x[i]);
      const bool above = CanPrecede(y[i], y[j]) || CanPrecede(y[j], y[i]);
      if (besides && above) continue;
      Tasks& axis = besides ? x : y;
      if (!Separate(axis[i], axis[j], changed)) return false;
    }
  return true;
}

/// What stands at a place of one axis must fit into the extent of all along the other one.
bool Diffn::NarrowStrips(bool& changed) {
  for (std::size_t axis = 0; axis < kAxes; ++axis) {
    Tasks &along = mAxes[axis], &across = mAxes[1 - axis];
    std::int64_t least = Task::kNever, greatest = -Task::kNever;
    for (const Task& side : across) {
      least = std::min(least, side.begin);
      greatest = std::max(greatest, side.end);
    }
    if (along.empty() || least < -Task::kBelieved || greatest > Task::kBelieved) continue;
    mStrips = along;
    for (std::size_t i = 0; i < mStrips.size(); ++i) {
      mStrips[i].need = across[i].duration;
      mStrips[i].index = static_cast<std::uint32_t>(i);
    }
    if (!mTable.Narrow(mStrips, greatest - least, changed)) return false;
    for (const Task& strip : mStrips) {
      along[strip.index].begin = strip.begin;
      along[strip.index].end = strip.end;
    }
  }
  return true;
}

bool Diffn::Commit(ZULTaVoDomains& domains, bool& again) const {
  for (std::uint32_t axis = 0; axis < kAxes; ++axis)
    for (const Task& task : mAxes[axis])
      if (!task.Fits() || !task.Commit(domains, EdgeOf(axis, task.index), again)) return false;
  for (std::size_t i = 0; i < mAxes[0].size(); ++i)
    for (std::size_t j = 0; j < mAxes[0].size(); ++j)
      if (i != j && !NarrowSides(domains, i, j)) return false;
  return true;
}

/// A side ends where another box must follow it.
bool Diffn::NarrowSides(ZULTaVoDomains& domains, std::size_t first, std::size_t second) const {
  for (std::uint32_t axis = 0; axis < kAxes; ++axis) {
    const Task &a = mAxes[axis][first], &b = mAxes[axis][second];
    const Task &p = mAxes[1 - axis][first], &q = mAxes[1 - axis][second];
    const std::uint32_t side = SideOf(axis, a.index);
    if (domains.IsFixed(side) || CanPrecede(b, a) || CanPrecede(p, q) || CanPrecede(q, p)) continue;
    if (a.begin > -Task::kBelieved && b.GetLatestStart() < Task::kBelieved &&
        !domains.SetUpper(side, b.GetLatestStart() - a.begin))
      return false;
  }
  return true;
}

}  // namespace

Definition DescribeDiffn() {
  return {
      .name = "diffn",
      .meaning = "no two rectangles overlap",
      .parameters = {{.name = "x", .size = "n"},
                     {.name = "y", .size = "n"},
                     {.name = "width", .size = "n"},
                     {.name = "height", .size = "n"}},
      .make = [](Arguments arguments) -> std::unique_ptr<ZULTaVoPropagator> {
        return std::make_unique<Diffn>(arguments[0].columns);
                     }
  };
}

}  // namespace zultav::relations
