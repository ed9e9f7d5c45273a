#ifndef ZULTAV_SEARCH_DETAIL_SEARCH_TREE_H
#define ZULTAV_SEARCH_DETAIL_SEARCH_TREE_H

#include <cstdint>
#include <vector>

#include "framework/search/detail/SearchSpace.h"

namespace zultav::detail {

/// The path from the root of the search to the present node, and the halves left open beside it.
///
/// A decision splits one variable: the engine takes one half, the other is open until the first is
/// done. Taking up the second half closes the engine's level, so open halves and levels correspond
/// one to one. The decisions belong to the frontier and outlive the tree, which can go down the
/// same path again.
class SearchTree {
 public:
  using Decision = ZULTavFrontier::Decision;
  using Path = ZULTavFrontier::Path;

  /// @param path  what it holds is ahead, for Replay
  SearchTree(Engine& engine, const SearchSpace& space, Path& path)
      : mEngine(engine), mSpace(space), mPath(path) {}

  /// The decision of the path that lies ahead of the present node; null when it is the last one.
  const Decision* GetAhead() const {
    return GetDepth() < mPath.size() ? &mPath[GetDepth()] : nullptr;
  }
  /// The decision that led to the present node; null at the root.
  const Decision* GetLast() const { return GetDepth() == 0 ? nullptr : &mPath[GetDepth() - 1]; }
  const Path& GetPath() const { return mPath; }

  // Those that enter a half answer false where nothing is left of it. They throw std::bad_alloc
  // when memory ran out; the path stands for what is left even then.
  /// Takes the decision ahead once more.
  bool Replay();
  /// Forgets what lies ahead.
  void EndHere() { mPath.resize(GetDepth()); }
  /// Enters the half, below the end of the path, and leaves the rest of the variable open.
  bool Branch(const Half& half);
  /// Leaves the present node for the next open half. False when there is none.
  bool Backtrack();
  /// Takes back the decisions on hidden variables, or all.
  void LeaveHidden();
  void LeaveAll();

  std::size_t GetDepth() const { return mOpen.size(); }
  /// Whether the present node lies below a decision on a hidden variable.
  bool InHidden() const { return GetDepth() != 0 && mSpace.IsHidden(GetLast()->first.variable); }
  /// Whether a solution that lies in the first box lies in the second one, which the search reached
  /// on the present path: propagation loses none, so that only splits can have cut it off.
  bool KeepsToPath(const ZULTavBox& solution, const ZULTavBox& reached) const;
  /// Whether an open half may hold values that touch those of the box.
  bool ReachesOpenHalf(const ZULTavBox& box) const;

 private:
  bool Descend();
  bool TakeSecond();
  void Leave();

  Engine& mEngine;
  const SearchSpace& mSpace;
  Path& mPath;
  std::vector<Range>
      mOpen;  // of each decision down to the present node: what its second half holds
};

}  // namespace zultav::detail

#endif
