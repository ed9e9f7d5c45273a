#ifndef ZULTAV_SEARCH_PENDING_BOXES_H
#define ZULTAV_SEARCH_PENDING_BOXES_H

#include <deque>
#include <span>

#include "framework/search/SearchVariable.h"
#include "framework/search/ZULTavSolution.h"

/// Solutions that wait to be reported, since a box found later may touch them and join them.
///
/// Bisection shares the middle between both halves, so one real solution can turn up in several
/// boxes. Two that touch become their hull where that is still narrow enough.
class PendingBoxes {
 public:
  /// Solutions kept waiting at most: merging compares each new one with all of them.
  static constexpr std::size_t kCapacity = 512;

  PendingBoxes(std::span<const SearchVariable> declared, const WidthLimit& limit);

  void Add(ZULTavSolution box);
  std::size_t GetSize() const { return mBoxes.size(); }
  /// In the order in which they came.
  std::deque<ZULTavSolution>& GetBoxes() { return mBoxes; }
  ZULTavSolution TakeFirst();
  /// Takes out the first box for which `final` holds, or the oldest where too many wait; false
  /// when there is none.
  template <class Predicate>
  bool TakeIf(Predicate final, ZULTavSolution& taken);

 private:
  bool Touch(const ZULTavSolution& a, const ZULTavSolution& b) const;
  void Unite(ZULTavSolution& box, const ZULTavSolution& other) const;

  std::span<const SearchVariable> mDeclared;
  WidthLimit mLimit;
  bool mMerges;
  std::deque<ZULTavSolution> mBoxes;
};

template <class Predicate>
bool PendingBoxes::TakeIf(Predicate final, ZULTavSolution& taken) {
  for (auto box = mBoxes.begin(); box != mBoxes.end(); ++box) {
    if (mMerges && mBoxes.size() <= kCapacity && !final(*box)) continue;
    taken = std::move(*box);
    mBoxes.erase(box);
    return true;
  }
  return false;
}

#endif
