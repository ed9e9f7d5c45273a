#ifndef ZULTAV_ENGINE_DETAIL_ALL_DIFFERENT_H
#define ZULTAV_ENGINE_DETAIL_ALL_DIFFERENT_H

#include <cstdint>
#include <span>
#include <vector>

#include "framework/engine/Engine.h"

namespace zultav::engine {

/// Pairwise different integers: each value that is fixed is removed from the others, and where as
/// many slots lie within an interval as it has values (a Hall interval), the others leave it.
class AllDifferent {
 public:
  /// @param firstWord  of the engine: one for each slot of each rule
  AllDifferent(Engine& engine, std::size_t firstWord);
  static std::size_t CountStateWords(const Program& program);
  bool Run(Engine& engine, const Rule& rule, std::uint32_t index) {
    return rule.data == 0 ? RemoveFixed(engine, rule, index) : NarrowBounds(engine, rule);
  }
  std::size_t GetMemoryUsed() const;

 private:
  /// A slot's range, and the ranks of its ends among the bounds of all ranges.
  struct Member {
    Slot slot;
    std::int64_t lower, upper;
    std::uint32_t lowerRank, upperRank;
  };

  bool RemoveFixed(Engine& engine, const Rule& rule, std::uint32_t index);
  bool NarrowBounds(Engine& engine, const Rule& rule);
  bool Gather(const Engine& engine, const Rule& rule);
  void Rank();
  template <std::uint32_t Member::*rank>
  void Sort(std::vector<std::uint32_t>& order);
  bool RaiseLowers(Engine& engine, bool& skipped);
  bool DropUppers(Engine& engine, bool& skipped);

  // Of each rule: where the engine's words begin that are its slots, those first that were fixed
  // and removed from the others.
  std::vector<std::size_t> mOrders;
  // Work space, for the rule with most slots.
  std::vector<Member> mMembers;
  std::vector<std::uint32_t> mByLower, mByUpper;
  std::vector<std::int64_t> mBounds, mCapacities;
  std::vector<std::uint32_t> mTrees, mHalls, mRanks;
  std::int64_t mLeast = 0, mGreatest = 0;  // values of all ranges
};

}  // namespace zultav::engine

#endif
