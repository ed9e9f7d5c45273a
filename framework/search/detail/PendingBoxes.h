#ifndef ZULTAV_SEARCH_DETAIL_PENDING_BOXES_H
#define ZULTAV_SEARCH_DETAIL_PENDING_BOXES_H

#include <algorithm>
#include <list>

#include "framework/search/detail/SearchSpace.h"

namespace zultav::detail {

/// Solutions that wait to be reported, since a box found later may touch them and join them.
///
/// Bisection shares the middle between both halves, so one real solution can turn up in several
/// boxes. Two that lie side by side become one where that is still narrow enough; it is no larger
/// than both, for other boxes may lie beside them. The boxes belong to the frontier, which stays
/// whole when memory runs out.
class PendingBoxes {
 public:
  /// Solutions kept waiting at most: merging compares each new one with all of them.
  static constexpr std::size_t kCapacity = 512;

  PendingBoxes(std::list<ZULTavBox>& boxes, const SearchSpace& space, const WidthLimit& limit);

  void Add(ZULTavBox box);
  std::size_t GetSize() const { return mBoxes.size(); }
  ZULTavBox& GetFirst() { return mBoxes.front(); }
  void RemoveFirst() { mBoxes.pop_front(); }
  /// Brings the first box for which `final` holds, or the oldest where too many wait, before the
  /// others; false when there is none.
  template <class Predicate>
  bool BringForward(Predicate final);

 private:
  bool AreSideBySide(const ZULTavBox& a, const ZULTavBox& b) const;
  void Unite(ZULTavBox& box, const ZULTavBox& other) const;

  std::list<ZULTavBox>& mBoxes;  // in the order in which they came
  const SearchSpace& mSpace;
  WidthLimit mLimit;
  bool mMerges;
};

template <class Predicate>
bool PendingBoxes::BringForward(Predicate final) {
  const auto found = mMerges && mBoxes.size() <= kCapacity
                         ? std::find_if(mBoxes.begin(), mBoxes.end(), final)
                         : mBoxes.begin();
  if (found == mBoxes.end()) return false;
  mBoxes.splice(mBoxes.begin(), mBoxes, found);
  return true;
}

}  // namespace zultav::detail

#endif
