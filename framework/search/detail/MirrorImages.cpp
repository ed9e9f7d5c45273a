#include "framework/search/detail/MirrorImages.h"

#include <algorithm>

#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoReal.h"

namespace zultav::detail {

namespace {

ZULTaVoReal& RealOf(ZULTavSolution& box, std::uint32_t index) {
  return static_cast<ZULTaVoReal&>(box.GetValue(index));
}

}  // namespace

MirrorImages::MirrorImages(ZULTaVoNetwork& network, std::span<const SearchVariable> declared,
                           const std::vector<std::uint32_t>& candidates, const WidthLimit& limit)
    : mLimit(limit) {
  for (const std::uint32_t index : candidates) {
    if (declared[index].GetKind() != SearchVariable::Kind::kReal) continue;
    if (!declared[index].IsOpen(limit)) continue;
    auto& value = static_cast<ZULTaVoReal&>(*declared[index].GetValue());
    const double lower = value.GetLowerBound(), upper = value.GetUpperBound();
    if (!(lower < 0 && lower == -upper)) continue;
    SaveOrThrow(network, value);
    value.SetUpperBound(0);
    mMirrored.push_back(index);
    network.PropagateValue(&value);
  }
}

void MirrorImages::JoinAtZero(ZULTavSolution& box) const {
  for (const std::uint32_t index : mMirrored) {
    ZULTaVoReal& value = RealOf(box, index);
    const double lower = value.GetLowerBound(), upper = value.GetUpperBound();
    const double magnitude = std::max(-lower, upper);
    const bool reaches = lower <= 0 && upper >= 0 && mLimit.Holds(-magnitude, magnitude);
    if (reaches || (lower < 0 && upper > 0)) box.SetBounds(index, -magnitude, magnitude);
  }
}

bool MirrorImages::Next(ZULTavSolution& image) const {
  for (auto index = mMirrored.rbegin(); index != mMirrored.rend(); ++index) {
    ZULTaVoReal& value = RealOf(image, *index);
    const double lower = value.GetLowerBound(), upper = value.GetUpperBound();
    if (-lower == upper) continue;  // its own image
    image.SetBounds(*index, -upper, -lower);
    if (-lower > upper) return true;
  }
  return false;
}

}  // namespace zultav::detail
