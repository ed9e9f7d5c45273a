#ifndef ZULTAV_SEARCH_DETAIL_SOLVED_REGIONS_H
#define ZULTAV_SEARCH_DETAIL_SOLVED_REGIONS_H

#include <algorithm>
#include <list>
#include <utility>

#include "framework/search/detail/SearchSpace.h"

namespace zultav::detail {

/// Boxes around solutions that were found: they are known to hold no other ones, so the search need
/// not look there again. They belong to the frontier, and are dropped when no open half reaches
/// them any more.
class SolvedRegions {
 public:
  /// Regions kept at most: each node is compared with all of them.
  static constexpr std::size_t kCapacity = 512;

  SolvedRegions(std::list<ZULTavBox>& regions, const SearchSpace& space)
      : mRegions(regions), mSpace(space) {}

  void Add(ZULTavBox region) {
    if (mRegions.size() == kCapacity) mRegions.pop_front();
    mRegions.push_back(std::move(region));
  }
  /// Whether one of them holds all of the box.
  bool Hold(const ZULTavBox& box) const {
    return HoldAll([&](std::uint32_t i) { return box.ranges[i]; });
  }
  /// Whether one of them holds the present values of the variables.
  bool HoldPresentValues(const Engine& engine) const {
    return HoldAll([&](std::uint32_t i) { return mSpace.GetRange(engine, i); });
  }
  template <class Predicate>
  void DropUnless(Predicate reached) {
    std::erase_if(mRegions, [&](const ZULTavBox& region) { return !reached(region); });
  }

 private:
  template <class RangeAt>
  bool HoldAll(RangeAt rangeAt) const {
    return std::any_of(mRegions.begin(), mRegions.end(), [&](const ZULTavBox& region) {
      std::uint32_t i = 0;
      while (i < mSpace.GetNumberOfDeclared() && mSpace.IsWithin(i, rangeAt(i), region.ranges[i]))
        ++i;
      return i == mSpace.GetNumberOfDeclared();
    });
  }

  std::list<ZULTavBox>& mRegions;
  const SearchSpace& mSpace;
};

}  // namespace zultav::detail

#endif
