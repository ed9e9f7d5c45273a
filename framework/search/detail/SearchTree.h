#ifndef ZULTAV_SEARCH_DETAIL_SEARCH_TREE_H
#define ZULTAV_SEARCH_DETAIL_SEARCH_TREE_H

#include <cstdint>
#include <span>
#include <vector>

#include "framework/search/ZULTavSearch.h"
#include "framework/search/detail/SearchVariable.h"

namespace zultav::detail {

/// The path from the root of the search to the present node, and the halves left open beside it.
///
/// A decision splits one variable: the network takes one half, the other is kept here until the
/// first is done. Taking up the second half closes the network's level, so open halves and levels
/// correspond one to one. The decisions belong to the frontier and outlive the tree, which can go
/// down the same path again.
class SearchTree {
 public:
  using Decision = ZULTavFrontier::Decision;
  using Path = ZULTavFrontier::Path;
  static constexpr std::uint32_t kNone = UINT32_MAX;

  /// Variables are numbered: the declared ones first, then the hidden integers and booleans.
  /// @param path  what it holds is ahead, for Replay
  SearchTree(ZULTaVoNetwork& network, const std::vector<ZULTaVoAny*>& declared, Path& path);
  /// Leaves the path as it is, and the network's levels open.
  ~SearchTree();
  SearchTree(const SearchTree&) = delete;
  SearchTree& operator=(const SearchTree&) = delete;

  std::span<const SearchVariable> GetVariables() const { return mVariables; }
  std::span<const SearchVariable> GetDeclared() const {
    return std::span(mVariables).first(mDeclared);
  }
  /// Whether the network holds values, hidden or not, that are neither integer nor boolean.
  bool HasContinuousValues() const { return mContinuous; }
  bool IsHidden(std::uint32_t variable) const { return variable >= mDeclared; }

  /// The declared variable to split next, or kNone.
  std::uint32_t ChooseDeclared(ZULTavSearch::VariableChoice choice, const WidthLimit& limit) const;
  /// The first undecided hidden integer or boolean, or kNone.
  std::uint32_t ChooseHidden(const WidthLimit& limit) const;

  /// The decision of the path that lies ahead of the present node; null when it is the last one.
  const Decision* GetAhead() const {
    return GetDepth() < mPath.size() ? &mPath[GetDepth()] : nullptr;
  }
  /// Takes the decision ahead once more.
  void Replay();
  /// Forgets what lies ahead.
  void EndHere() { mPath.resize(GetDepth()); }

  // These throw std::bad_alloc when memory ran out; the path stands for what is left even then.
  /// Splits the variable and enters the first half, below the end of the path.
  void Branch(std::uint32_t index, ZULTaVoAny::ValueSelection selection);
  /// Leaves the present node for the next open half. False when there is none.
  bool Backtrack();
  /// Takes back the decisions on hidden variables.
  void LeaveHidden();

  std::size_t GetDepth() const { return mHalves.size(); }
  /// Whether the present node lies below a decision on a hidden variable.
  bool InHidden() const { return GetDepth() != 0 && IsHidden(Last().variable); }
  /// Whether a solution that lies in the first box lies in the second one, which the search reached
  /// on the present path: propagation loses none, so that only splits can have cut it off.
  bool KeepsToPath(const ZULTavSolution& solution, const ZULTavSolution& reached) const;
  /// Whether an open half may hold values that touch those of the solution.
  bool ReachesOpenHalf(const ZULTavSolution& solution) const;

 private:
  /// What a decision on the way to the present node has split off.
  struct Half {
    ZULTaVoAny* value;  // null once it was entered
    zultav::Arena::Mark mark;
  };
  Decision& Last() { return mPath[GetDepth() - 1]; }
  const Decision& Last() const { return mPath[GetDepth() - 1]; }
  std::uint32_t FirstOpen(std::size_t from, std::size_t to, const WidthLimit& limit) const;
  std::uint32_t ChooseByKind(const WidthLimit& limit) const;
  void Descend();
  bool TakeSecond();
  void Close();

  ZULTaVoNetwork& mNetwork;
  std::vector<SearchVariable> mVariables;
  std::size_t mDeclared;
  bool mContinuous = false;
  Path& mPath;
  std::vector<Half> mHalves;  // one for each decision of the path down to the present node
  zultav::Arena mArena;
};

}  // namespace zultav::detail

#endif
