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

/// Equal values of an integer, a boolean, or another type.
bool AreEqual(SearchVariable::Kind kind, const ZULTaVoAny& a, const ZULTaVoAny& b) {
  if (kind == SearchVariable::Kind::kInteger) {
    const auto& x = static_cast<const ZULTaVoInteger&>(a);
    const auto& y = static_cast<const ZULTaVoInteger&>(b);
    return x.GetLowerBound() == y.GetLowerBound() && x.GetUpperBound() == y.GetUpperBound();
  }
  return a.GetCardinality() == 1 && b.GetCardinality() == 1 && a.IsIntersected(b);
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
  // A hull may touch boxes that its parts did not touch, so the search starts anew after a merge.
  for (std::size_t i = 0; mMerges && i + 1 < mBoxes.size();) {
    if (!Touch(mBoxes[i], mBoxes.back())) {
      ++i;
      continue;
    }
    Unite(mBoxes.back(), mBoxes[i]);
    mBoxes.erase(mBoxes.begin() + static_cast<std::ptrdiff_t>(i));
    i = 0;
  }
}

bool PendingBoxes::Touch(const ZULTavSolution& a, const ZULTavSolution& b) const {
  for (std::size_t i = 0; i < mDeclared.size(); ++i) {
    if (!IsMergeable(mDeclared[i])) {
      if (!AreEqual(mDeclared[i].GetKind(), a.GetValue(i), b.GetValue(i))) return false;
      continue;
    }
    const Bounds x = BoundsOf(a.GetValue(i)), y = BoundsOf(b.GetValue(i));
    if (x == y) continue;
    if (x.upper < y.lower || y.upper < x.lower ||
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
