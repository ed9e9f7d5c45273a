#ifndef ZULTAV_SEARCH_DETAIL_SOLVED_REGIONS_H
#define ZULTAV_SEARCH_DETAIL_SOLVED_REGIONS_H

#include <deque>
#include <span>

#include "framework/search/ZULTavSolution.h"
#include "framework/search/detail/SearchVariable.h"

namespace zultav::detail {

/// Boxes around solutions that were found: they are known to hold no other ones, so the search need
/// not look there again. They belong to the frontier, and are dropped when no open half reaches
/// them any more.
class SolvedRegions {
 public:
  /// Regions kept at most: each node is compared with all of them.
  static constexpr std::size_t kCapacity = 512;

  SolvedRegions(std::deque<ZULTavSolution>& regions, std::span<const SearchVariable> declared)
      : mRegions(regions), mDeclared(declared) {}

  void Add(ZULTavSolution region);
  /// Whether one of them holds all of the box.
  bool Hold(const ZULTavSolution& box) const;
  /// Whether one of them holds the present values of the variables.
  bool HoldPresentValues() const;
  template <class Predicate>
  void DropUnless(Predicate reached) {
    std::erase_if(mRegions, [&](const ZULTavSolution& region) { return !reached(region); });
  }

 private:
  template <class ValueAt>
  bool HoldAll(ValueAt valueAt) const;

  std::deque<ZULTavSolution>& mRegions;
  std::span<const SearchVariable> mDeclared;
};

}  // namespace zultav::detail

#endif
