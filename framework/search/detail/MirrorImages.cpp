#include "framework/search/detail/MirrorImages.h"

#include <cmath>

namespace zultav::detail {

MirrorImages::MirrorImages(const Engine& engine, const SearchSpace& space,
                           const std::vector<std::uint32_t>& candidates, const WidthLimit& limit)
    : mLimit(limit) {
  for (const std::uint32_t index : candidates) {
    if (space[index].kind != Kind::kReal || !space.IsOpen(engine, index, limit)) continue;
    const RealRange x = engine.GetReals(space[index].slot);
    if (x.lower < 0 && x.lower == -x.upper) mMirrored.push_back(index);
  }
}

void MirrorImages::Restrict(Engine& engine, const SearchSpace& space) const {
  for (const std::uint32_t index : mMirrored)
    engine.NarrowAndTell(space[index].slot, RealRange(-HUGE_VAL, 0));
}

void MirrorImages::JoinAtZero(ZULTavBox& box) const {
  for (const std::uint32_t index : mMirrored) {
    const RealRange x = box.ranges[index].GetReals();
    const double magnitude = x.GetMagnitude();
    const RealRange both(-magnitude, magnitude);
    const bool reaches = x.lower <= 0 && x.upper >= 0 && mLimit.Holds(both);
    if (reaches || (x.lower < 0 && x.upper > 0)) box.ranges[index] = both;
  }
}

std::span<const std::uint32_t> MirrorImages::Next(ZULTavBox& image) const {
  for (std::size_t i = mMirrored.size(); i-- > 0;) {
    Range& range = image.ranges[mMirrored[i]];
    const RealRange x = range.GetReals();
    if (-x.lower == x.upper) continue;  // its own image
    range = -x;
    if (-x.lower > x.upper) return std::span(mMirrored).subspan(i);
  }
  return {};
}

}  // namespace zultav::detail
