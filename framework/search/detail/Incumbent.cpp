#include "framework/search/detail/Incumbent.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace zultav::detail {

namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
// A real objective beyond has no optimum: bounds from here on are infinite in a model.
constexpr double kInfinite = 1e19;
constexpr std::pair<double, double> kGapOfReals = {1e-6, 1e-6};

/// The greatest integer not above the number; an end of the scale where it lies beyond.
std::int64_t FloorOf(double number) {
  const double floor = std::floor(number);
  if (floor >= 0x1p63) return kGreatest;
  return floor < -0x1p63 ? kLeast : static_cast<std::int64_t>(floor);
}

}  // namespace

Incumbent::Incumbent(const ZULTavSearch::Options& options, const SearchSpace& space,
                     Optimum& optimum)
    : mSpace(space), mOptimum(optimum), mIsAllWanted(options.allOptima) {
  if (!options.objective) return;
  mObjective = &*options.objective;
  mObserved = space.GetObserved()[mObjective->observed];
  mPlace = space.GetNumberOfDeclared() + mObjective->observed;
}

IntegerRange Incumbent::CostOf(const Range& range) const {
  if (!IsReal()) return mObjective->isMaximized ? -range.GetIntegers() : range.GetIntegers();
  const RealRange cost = mObjective->isMaximized ? -range.GetReals() : range.GetReals();
  return {OrderOf(cost.lower), OrderOf(cost.upper)};
}

std::int64_t Incumbent::GetLeastCost(const Engine& engine) const {
  return CostOf(IsReal() ? Range(engine.GetReals(mObserved.slot))
                         : Range(engine.GetIntegers(mObserved.slot)))
      .lower;
}

/// The most that a solution may cost that is looked for.
std::int64_t Incumbent::GetThreshold() const {
  std::int64_t threshold = IsReal() ? OrderOf(HUGE_VAL) : kGreatest;
  if (mObjective->limit) {
    const double limit = mObjective->isMaximized ? -*mObjective->limit : *mObjective->limit;
    threshold = IsReal() ? OrderOf(limit) : FloorOf(limit);
  }
  if (!mOptimum.isFound) return threshold;
  const std::int64_t best = CostOf(mOptimum.best).upper;
  const double cost = IsReal() ? NumberAt(best) : static_cast<double>(best);
  const auto gap = mObjective->gap.value_or(IsReal() ? kGapOfReals : std::pair(0.0, 0.0));
  const double tolerance = std::max(gap.first, gap.second * std::fabs(cost));
  if (IsReal() && cost <= -kInfinite) return OrderOf(-HUGE_VAL);
  if (IsReal()) return std::min({threshold, OrderOf(cost - tolerance), best - 1});
  const std::int64_t step = FloorOf(std::min(tolerance, 0x1p62)) + 1;
  return std::min(threshold, best < kLeast + step ? kLeast : best - step);
}

bool Incumbent::Restrict(Engine& engine, std::int64_t threshold) const {
  const Slot slot = mObserved.slot;
  if (IsCollecting()) return engine.Fix(slot, mOptimum.best.ranges[mPlace].lower);
  if (IsReal()) {
    const double most = NumberAt(std::clamp(threshold, OrderOf(-HUGE_VAL), OrderOf(HUGE_VAL)));
    return engine.NarrowAndTell(
        slot, mObjective->isMaximized ? RealRange(-most, HUGE_VAL) : RealRange(-HUGE_VAL, most));
  }
  const IntegerRange range = {kLeast, threshold};
  return engine.Narrow(slot, mObjective->isMaximized ? -range : range);
}

bool Incumbent::Restrict(Engine& engine) {
  if (!IsSought()) return true;
  mThreshold = GetThreshold();
  return Restrict(engine, mThreshold);
}

bool Incumbent::RestrictAsBefore(Engine& engine, std::size_t decision) const {
  return !IsSought() || decision >= mOptimum.thresholds.size() ||
         Restrict(engine, mOptimum.thresholds[decision]);
}

void Incumbent::NoteSplit(const Engine& engine, std::size_t decision) {
  if (!IsSought()) return;
  mOptimum.thresholds.resize(decision);
  mOptimum.thresholds.push_back(mThreshold);
  NoteReplay(engine, decision);
  if (decision == 0 && mOptimum.root == kLeast) mOptimum.root = mBounds[0];
}

void Incumbent::NoteReplay(const Engine& engine, std::size_t decision) {
  if (!IsSought()) return;
  mBounds.resize(decision);
  mBounds.push_back(GetLeastCost(engine));
}

bool Incumbent::Improve(const ZULTavBox& box) {
  if (mOptimum.isFound && CostOf(box).upper >= CostOf(mOptimum.best).upper) return false;
  mOptimum.isFound = mIsNew = true;
  mOptimum.best.ranges = box.ranges;
  mOptimum.best.isProven = true;
  mOptimum.isUnbounded = IsReal() && NumberAt(CostOf(box).upper) <= -kInfinite;
  return true;
}

void Incumbent::NoteRest(const ZULTavBox& box) {
  const std::int64_t least = CostOf(box).lower;
  if (least <= GetThreshold()) mOptimum.unproven = std::min(mOptimum.unproven, least);
}

bool Incumbent::Prefers(const Half& half) const {
  if (!mOptimum.isFound || half.variable >= mSpace.GetNumberOfDeclared() ||
      !mSpace[half.variable].IsDiscrete())
    return true;
  const std::int64_t best = mOptimum.best.ranges[half.variable].lower;
  return half.isUpper ? best >= half.bound : best <= half.bound;
}

bool Incumbent::IsBest(const ZULTavBox& box) const { return mSpace.IsWithin(box, mOptimum.best); }

/// What is open costs at least. The deeper, the more it costs: what is open first decides.
std::int64_t Incumbent::GetOpenBound(const Engine& engine, const ZULTavFrontier::Path& path) const {
  if (path.empty()) return GetLeastCost(engine);
  // A way back leaves bounds of decisions behind that are no more; a replay that was interrupted
  // has not come to all.
  const std::size_t known = std::min(path.size(), mBounds.size());
  if (known == 0) return mOptimum.root;
  std::size_t open = 0;
  while (open + 1 < known && path[open].second != ZULTavFrontier::Decision::Second::kOpen) ++open;
  return mBounds[open];
}

void Incumbent::UpdateBound(const Engine& engine, const ZULTavFrontier& frontier) {
  if (!IsSought() || IsCollecting()) return;
  if (mOptimum.isUnbounded) {
    mOptimum.bound = kLeast;
    return;
  }
  std::int64_t bound = mOptimum.unproven;
  if (!frontier.explored) bound = std::min(bound, GetOpenBound(engine, frontier.path));
  if (const std::int64_t threshold = GetThreshold(); threshold != kGreatest)
    bound = std::min(bound, threshold + 1);
  if (mOptimum.isFound) bound = std::min(bound, CostOf(mOptimum.best).upper);
  mOptimum.bound = std::max(mOptimum.root, bound);
  mOptimum.isCertain = frontier.explored && mOptimum.isFound && mOptimum.unproven > GetThreshold();
}

bool Incumbent::Collect() {
  const bool isWanted = IsSought() && mIsAllWanted && mOptimum.isFound && !IsCollecting() &&
                        !mSpace.HasContinuousValues();
  if (isWanted) mOptimum.isCollecting = true;
  return isWanted;
}

}  // namespace zultav::detail
