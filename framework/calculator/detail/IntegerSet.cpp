#include "framework/calculator/detail/IntegerSet.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zultav::detail {

IntegerSet::IntegerSet(std::int64_t low, std::int64_t high) {
  if (low <= high) mRanges.push_back({low, high});
}

IntegerSet::IntegerSet(std::vector<Range> ranges) {
  std::sort(ranges.begin(), ranges.end(),
            [](const Range& a, const Range& b) { return a.low < b.low; });
  for (const Range& range : ranges) {
    if (range.low > range.high) continue;
    // Neighbours are one range, too; the comparison must not overflow.
    const bool joins = !mRanges.empty() &&
                       (range.low <= mRanges.back().high || range.low - 1 == mRanges.back().high);
    if (joins)
      mRanges.back().high = std::max(mRanges.back().high, range.high);
    else
      mRanges.push_back(range);
  }
}

std::uint64_t IntegerSet::GetSize() const {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t size = 0;
  for (const Range& range : mRanges) {
    const std::uint64_t steps =
        static_cast<std::uint64_t>(range.high) - static_cast<std::uint64_t>(range.low);
    if (steps >= kMost - size) return kMost;
    size += steps + 1;
  }
  return size;
}

bool IntegerSet::Contains(std::int64_t value) const {
  const auto after =
      std::upper_bound(mRanges.begin(), mRanges.end(), value,
                       [](std::int64_t number, const Range& range) { return number < range.low; });
  return after != mRanges.begin() && value <= std::prev(after)->high;
}

IntegerSet IntegerSet::Union(const IntegerSet& other) const {
  std::vector<Range> ranges = mRanges;
  ranges.insert(ranges.end(), other.mRanges.begin(), other.mRanges.end());
  return IntegerSet(std::move(ranges));
}

IntegerSet IntegerSet::Intersection(const IntegerSet& other) const {
  std::vector<Range> ranges;
  for (auto a = mRanges.begin(), b = other.mRanges.begin();
       a != mRanges.end() && b != other.mRanges.end(); a->high < b->high ? ++a : ++b)
    ranges.push_back({std::max(a->low, b->low), std::min(a->high, b->high)});
  return IntegerSet(std::move(ranges));
}

}  // namespace zultav::detail
