#include "framework/search/detail/PendingBoxes.h"

#include <iterator>
#include <utility>

namespace zultav::detail {

namespace {

bool IsMergeable(const SearchVariable& variable) { return variable.kind == Kind::kReal; }

}  // namespace

PendingBoxes::PendingBoxes(std::list<ZULTavBox>& boxes, const SearchSpace& space,
                           const WidthLimit& limit)
    : mBoxes(boxes),
      mSpace(space),
      mLimit(limit),
      mMerges(std::any_of(space.GetDeclared().begin(), space.GetDeclared().end(), IsMergeable)) {}

void PendingBoxes::Add(ZULTavBox box) {
  mBoxes.push_back(std::move(box));
  // What was united may fit beside other boxes than its parts did, so the search starts anew.
  const auto last = std::prev(mBoxes.end());
  for (auto other = mBoxes.begin(); mMerges && other != last;) {
    if (!AreSideBySide(*other, *last)) {
      ++other;
      continue;
    }
    Unite(*last, *other);
    mBoxes.erase(other);
    other = mBoxes.begin();
  }
}

bool PendingBoxes::AreSideBySide(const ZULTavBox& a, const ZULTavBox& b) const {
  bool differ = false;
  for (std::uint32_t i = 0; i < mSpace.GetNumberOfDeclared(); ++i) {
    if (!IsMergeable(mSpace[i])) {
      if (!mSpace.IsWithin(i, a.ranges[i], b.ranges[i])) return false;
      continue;
    }
    const RealRange x = a.ranges[i].GetReals(), y = b.ranges[i].GetReals();
    if (x == y) continue;
    if (std::exchange(differ, true) || !mSpace.Meet(i, x, y) || !mLimit.Holds(Hull(x, y)))
      return false;
  }
  return true;
}

void PendingBoxes::Unite(ZULTavBox& box, const ZULTavBox& other) const {
  for (std::uint32_t i = 0; i < mSpace.GetNumberOfDeclared(); ++i)
    if (IsMergeable(mSpace[i]))
      box.ranges[i] = Hull(box.ranges[i].GetReals(), other.ranges[i].GetReals());
  for (std::size_t i = 0; i < mSpace.GetObserved().size(); ++i) {
    const std::size_t at = mSpace.GetNumberOfDeclared() + i;
    if (mSpace.GetObserved()[i].kind == ZULTavObserved::Kind::kReal)
      box.ranges[at] = Hull(box.ranges[at].GetReals(), other.ranges[at].GetReals());
    else
      box.ranges[at] = Hull(box.ranges[at].GetIntegers(), other.ranges[at].GetIntegers());
  }
  box.isProven = box.isProven || other.isProven;
}

}  // namespace zultav::detail
