#include "framework/calculator/Suggestion.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

// Distances are counted in halves, so that a wrong letter case costs less than a wrong letter.
constexpr std::size_t kEdit = 2;
constexpr std::size_t kCase = 1;
constexpr std::size_t kLongest = 40;  // longer names are hardly mistyped, and costly to compare

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::size_t Replace(char a, char b) { return a == b ? 0 : Lower(a) == Lower(b) ? kCase : kEdit; }

std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before;
  std::vector<std::size_t> above(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) above[j] = j * kEdit;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i * kEdit;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] = std::min(
          {above[j] + kEdit, row[j - 1] + kEdit, above[j - 1] + Replace(a[i - 1], b[j - 1])});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], before[j - 2] + kEdit);
    }
    before = above;
    std::swap(above, row);
  }
  return above.back();
}

}  // namespace

Suggestion::Suggestion(std::string_view unknown)
    : mUnknown(unknown), mLeast((unknown.size() + 2) / 3 * kEdit + 1) {}

void Suggestion::Offer(std::string_view candidate) {
  const std::size_t shorter = std::min(mUnknown.size(), candidate.size());
  const std::size_t longer = std::max(mUnknown.size(), candidate.size());
  if (longer > kLongest || (longer - shorter) * kEdit >= mLeast || candidate == mUnknown) return;
  const std::size_t distance = Distance(mUnknown, candidate);
  if (distance >= mLeast) return;
  mLeast = distance;
  mBest = candidate;
}
