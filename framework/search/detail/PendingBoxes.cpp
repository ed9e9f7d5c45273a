#include "framework/search/detail/PendingBoxes.h"

#include <algorithm>
#include <utility>

namespace zultav::detail {

namespace {

struct Bounds {
  double lower, upper;
  friend bool operator==(const Bounds&, const Bounds&) = default;
};

Bounds BoundsOf(const ZULTaVoAny& value) {
  const auto& real = static_cast<const ZULTaVoReal&>(value);
  return {real.GetLowerBound(), real.GetUpperBound()};
}

bool IsMergeable(const SearchVariable& variable) {
  return variable.GetKind() == SearchVariable::Kind::kReal;
}

}  // namespace

PendingBoxes::PendingBoxes(std::deque<ZULTavSolution>& boxes,
                           std::span<const SearchVariable> declared, const WidthLimit& limit)
    : mBoxes(boxes),
      mDeclared(declared),
      mLimit(limit),
      mMerges(std::any_of(declared.begin(), declared.end(), IsMergeable)) {}

void PendingBoxes::Add(ZULTavSolution box) {
  mBoxes.push_back(std::move(box));
  // What was united may fit beside other boxes than its parts did, so the search starts anew.
  for (std::size_t i = 0; mMerges && i + 1 < mBoxes.size();) {
    if (!AreSideBySide(mBoxes[i], mBoxes.back())) {
      ++i;
      continue;
    }
    Unite(mBoxes.back(), mBoxes[i]);
    mBoxes.erase(mBoxes.begin() + static_cast<std::ptrdiff_t>(i));
    i = 0;
  }
}

bool PendingBoxes::AreSideBySide(const ZULTavSolution& a, const ZULTavSolution& b) const {
  bool differ = false;
  for (std::size_t i = 0; i < mDeclared.size(); ++i) {
    if (!IsMergeable(mDeclared[i])) {
      if (!mDeclared[i].IsWithin(a.GetValue(i), b.GetValue(i))) return false;
      continue;
    }
    const Bounds x = BoundsOf(a.GetValue(i)), y = BoundsOf(b.GetValue(i));
    if (x == y) continue;
    if (std::exchange(differ, true) || x.upper < y.lower || y.upper < x.lower ||
        !mLimit.Holds(std::min(x.lower, y.lower), std::max(x.upper, y.upper)))
      return false;
  }
  return true;
}

void PendingBoxes::Unite(ZULTavSolution& box, const ZULTavSolution& other) const {
  for (std::size_t i = 0; i < mDeclared.size(); ++i)
    if (IsMergeable(mDeclared[i])) box.GetValue(i).Unite(other.GetValue(i));
  box.SetProven(box.IsProven() || other.IsProven());
}

}  // namespace zultav::detail
