#ifndef ZULTAV_SEARCH_SEARCH_TREE_H
#define ZULTAV_SEARCH_SEARCH_TREE_H

#include <cstdint>
#include <span>
#include <vector>

#include "framework/search/SearchVariable.h"
#include "framework/search/ZULTavSearch.h"

/// The path from the root of the search to the present node, and the halves left open beside it.
///
/// A decision splits one variable: the network takes one half, the other is kept here until the
/// first is done. Taking up the second half closes the network's level, so open halves and levels
/// correspond one to one.
class SearchTree {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  /// Variables are numbered: the declared ones first, then the hidden integers and booleans.
  SearchTree(ZULTaVoNetwork& network, const std::vector<ZULTaVoAny*>& declared);
  ~SearchTree() { Clear(); }
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

  /// Splits the variable and enters the first half. False when memory ran out.
  bool Branch(std::uint32_t index, ZULTaVoAny::ValueSelection selection);
  /// Enters the second half of the last decision, whose first half is open. False when that half
  /// is empty.
  bool TakeSecond();
  /// Leaves the present node for the next open half. False when there is none.
  bool Backtrack();
  /// Takes back the decisions on hidden variables.
  void LeaveHidden();
  void Clear();

  std::size_t GetDepth() const { return mPath.size(); }
  /// Whether the present node lies below a decision on a hidden variable.
  bool InHidden() const { return !mPath.empty() && IsHidden(mPath.back().decision.variable); }
  std::vector<ZULTavSearch::Decision> GetPath() const;
  /// Whether an open half may hold values that touch those of the solution.
  bool ReachesOpenHalf(const ZULTavSolution& solution) const;

 private:
  struct Step {
    ZULTavSearch::Decision decision;
    ZULTaVoAny* kept;  // the second half; null once it was entered
    Arena::Mark mark;
  };
  std::uint32_t FirstOpen(std::size_t from, std::size_t to, const WidthLimit& limit) const;
  std::uint32_t ChooseByKind(const WidthLimit& limit) const;
  void Close(Step& step);
  void RemoveLast();

  ZULTaVoNetwork& mNetwork;
  std::vector<SearchVariable> mVariables;
  std::size_t mDeclared;
  bool mContinuous = false;
  std::vector<Step> mPath;
  Arena mArena;
};

#endif
