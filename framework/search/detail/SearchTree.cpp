#include "framework/search/detail/SearchTree.h"

#include <algorithm>

namespace zultav::detail {

using Second = ZULTavFrontier::Decision::Second;

bool SearchTree::Branch(const Half& half) {
  mPath.push_back({half});
  return Descend();
}

bool SearchTree::Replay() {
  const bool wasSecond = mPath[GetDepth()].second == Second::kEntered;
  const bool isOpen = Descend();
  return wasSecond ? TakeSecond() : isOpen;
}

/// Enters the first half of the decision ahead.
bool SearchTree::Descend() {
  const Half& half = mPath[GetDepth()].first;
  Range rest = mSpace.GetRange(mEngine, half.variable);
  (half.isUpper ? rest.upper : rest.lower) = mSpace.OppositeOf(half).bound;
  mEngine.Push();
  try {
    mOpen.push_back(rest);
  } catch (...) {
    mEngine.Pop();
    throw;
  }
  return mSpace.Enter(mEngine, half);
}

/// Enters the second half of the last decision, whose first half is open.
bool SearchTree::TakeSecond() {
  Decision& decision = mPath[GetDepth() - 1];
  mEngine.Pop();
  decision.second = Second::kEntered;
  return mSpace.Enter(mEngine, mSpace.OppositeOf(decision.first));
}

bool SearchTree::Backtrack() {
  while (GetDepth() != 0) {
    if (GetLast()->second == Second::kOpen && TakeSecond()) return true;
    mOpen.pop_back();
    mPath.pop_back();
  }
  return false;
}

void SearchTree::Leave() {
  if (GetLast()->second == Second::kOpen) mEngine.Pop();
  mOpen.pop_back();
  mPath.pop_back();
}

void SearchTree::LeaveHidden() {
  while (InHidden()) Leave();
}

void SearchTree::LeaveAll() {
  while (GetDepth() != 0) Leave();
}

bool SearchTree::KeepsToPath(const ZULTavBox& solution, const ZULTavBox& reached) const {
  return std::all_of(mPath.begin(), mPath.end(), [&](const Decision& decision) {
    const std::uint32_t variable = decision.first.variable;
    return mSpace[variable].IsDiscrete() ||
           mSpace.IsWithin(variable, solution.ranges[variable], reached.ranges[variable]);
  });
}

bool SearchTree::ReachesOpenHalf(const ZULTavBox& box) const {
  for (std::size_t i = 0; i < mOpen.size(); ++i) {
    const std::uint32_t variable = mPath[i].first.variable;
    if (mPath[i].second != Second::kOpen || mSpace.IsHidden(variable)) continue;
    if (mSpace.IsDerived(variable) || mSpace.Meet(variable, mOpen[i], box.ranges[variable]))
      return true;
  }
  return false;
}

}  // namespace zultav::detail
