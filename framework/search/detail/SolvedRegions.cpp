#include "framework/search/detail/SolvedRegions.h"

#include <algorithm>
#include <utility>

namespace zultav::detail {

void SolvedRegions::Add(ZULTavSolution region) {
  if (mRegions.size() == kCapacity) mRegions.pop_front();
  mRegions.push_back(std::move(region));
}

template <class ValueAt>
bool SolvedRegions::HoldAll(ValueAt valueAt) const {
  return std::any_of(mRegions.begin(), mRegions.end(), [&](const ZULTavSolution& region) {
    std::size_t i = 0;
    while (i < mDeclared.size() && mDeclared[i].IsWithin(valueAt(i), region.GetValue(i))) ++i;
    return i == mDeclared.size();
  });
}

bool SolvedRegions::Hold(const ZULTavSolution& box) const {
  return HoldAll([&](std::size_t i) -> const ZULTaVoAny& { return box.GetValue(i); });
}

bool SolvedRegions::HoldPresentValues() const {
  return HoldAll([&](std::size_t i) -> const ZULTaVoAny& { return *mDeclared[i].GetValue(); });
}

}  // namespace zultav::detail
