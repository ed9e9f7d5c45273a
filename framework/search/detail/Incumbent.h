#ifndef ZULTAV_SEARCH_DETAIL_INCUMBENT_H
#define ZULTAV_SEARCH_DETAIL_INCUMBENT_H

#include <bit>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "framework/search/ZULTavSearch.h"
#include "framework/search/detail/SearchSpace.h"

namespace zultav::detail {

/// The place of a double in the order of all doubles, and back.
inline std::int64_t OrderOf(double number) {
  const auto bits = std::bit_cast<std::int64_t>(number + 0.0);
  return bits < 0 ? std::numeric_limits<std::int64_t>::min() - bits : bits;
}
inline double NumberAt(std::int64_t order) {
  return std::bit_cast<double>(order < 0 ? std::numeric_limits<std::int64_t>::min() - order
                                         : order);
}

/// The best solution of an optimisation, and what is certain of the optimum.
///
/// The objective of a minimisation, or the negated one of a maximisation, is the cost. Costs are
/// compared as whole numbers: integers by their values, reals by the order of their bits. A node
/// keeps only what costs less than the best solution by more than the gap; what an open half of the
/// path may cost at least is what the node cost at least at which it was split.
class Incumbent {
 public:
  using Optimum = ZULTavFrontier::Optimum;

  /// @param optimum  of the frontier
  Incumbent(const ZULTavSearch::Options& options, const SearchSpace& space, Optimum& optimum);

  /// Whether something is optimised at all. If not, all that follows does nothing.
  bool IsSought() const { return mObjective != nullptr; }
  /// Whether all solutions as good as the best one are looked for.
  bool IsCollecting() const { return mOptimum.isCollecting; }

  /// Leaves at a node what costs little enough. False when nothing is left.
  bool Restrict(Engine& engine);
  /// Leaves at a node that the path is to leave by a decision what was left there before.
  bool RestrictAsBefore(Engine& engine, std::size_t decision) const;
  /// The present node is split, by the decision of this number.
  void NoteSplit(const Engine& engine, std::size_t decision);
  void NoteReplay(const Engine& engine, std::size_t decision);

  /// Whether points in the middle of boxes may show how good solutions are.
  bool WantsPoint() const { return IsSought() && !IsCollecting() && mSpace.HasContinuousValues(); }
  /// A solution certainly lies in the box. Keeps it if it is better than the best one, and answers
  /// whether it is.
  bool Improve(const ZULTavBox& box);
  /// The values of the box are not looked at any more.
  void NoteRest(const ZULTavBox& box);
  /// Whether there was an improvement since the last call.
  bool TakeNews() { return std::exchange(mIsNew, false); }
  bool HasBest() const { return mOptimum.isFound; }
  const ZULTavBox& GetBest() const { return mOptimum.best; }
  /// Whether the best solution has its value of the variable in the half; true where there is none.
  bool Prefers(const Half& half) const;
  /// Whether the box says of declared values what the best one says.
  bool IsBest(const ZULTavBox& box) const;

  /// Works out what is certain of the cost of all solutions.
  void UpdateBound(const Engine& engine, const ZULTavFrontier& frontier);
  /// From now on all solutions as good as the best one are looked for. False where that is not
  /// wanted, or makes no sense.
  bool Collect();

 private:
  bool IsReal() const { return mObserved.kind == ZULTavObserved::Kind::kReal; }
  bool Restrict(Engine& engine, std::int64_t threshold) const;
  std::int64_t GetThreshold() const;
  IntegerRange CostOf(const Range& range) const;
  IntegerRange CostOf(const ZULTavBox& box) const { return CostOf(box.ranges[mPlace]); }
  std::int64_t GetLeastCost(const Engine& engine) const;
  std::int64_t GetOpenBound(const Engine& engine, const ZULTavFrontier::Path& path) const;

  const ZULTavSearch::Objective* mObjective = nullptr;
  const SearchSpace& mSpace;
  Optimum& mOptimum;
  bool mIsAllWanted;
  ObservedSlot mObserved;
  std::size_t mPlace = 0;             // of the objective in a box
  std::vector<std::int64_t> mBounds;  // of each decision: what the node cost at least
  std::int64_t mThreshold = 0;        // of the present node
  bool mIsNew = false;
};

}  // namespace zultav::detail

#endif
