#include "framework/search/detail/Nogoods.h"

namespace zultav::detail {

namespace {

// Kept at most: each node looks at all of them.
constexpr std::size_t kCapacity = 2000;
// Longer ones say something of hardly any node.
constexpr std::size_t kLongest = 40;

}  // namespace

Nogoods::Nogoods(std::vector<Nogood>& nogoods, const SearchSpace& space)
    : mNogoods(nogoods), mSpace(space), mWatched(nogoods.size()) {}

void Nogoods::Learn(const ZULTavFrontier::Path& path) {
  Nogood nogood;
  for (const ZULTavFrontier::Decision& decision : path) {
    if (nogood.size() == kLongest) break;
    nogood.push_back(decision.first);
    if (decision.second == ZULTavFrontier::Decision::Second::kOpen) continue;
    mNogoods.push_back(nogood);
    nogood.pop_back();
  }
  mWatched.resize(mNogoods.size());
  if (mNogoods.size() <= kCapacity) return;
  const auto excess = static_cast<std::ptrdiff_t>(mNogoods.size() - kCapacity);
  mNogoods.erase(mNogoods.begin(), mNogoods.begin() + excess);
  mWatched.erase(mWatched.begin(), mWatched.begin() + excess);
}

Nogoods::Answer Nogoods::Narrow(Engine& engine) {
  Answer answer = Answer::kNothing;
  for (std::size_t i = 0; i < mNogoods.size(); ++i) {
    const Nogood& nogood = mNogoods[i];
    auto& [first, second] = mWatched[i];
    if (first != second && !mSpace.Holds(engine, nogood[first]) &&
        !mSpace.Holds(engine, nogood[second]))
      continue;
    // Two halves that do not hold, or fewer.
    std::uint32_t found[2], count = 0;
    for (std::uint32_t k = 0; k < nogood.size() && count < 2; ++k)
      if (!mSpace.Holds(engine, nogood[k])) found[count++] = k;
    if (count == 0) return Answer::kFailed;
    first = found[0];
    second = found[count - 1];
    if (count == 2 || mSpace.Fails(engine, nogood[first])) continue;
    if (!mSpace.Enter(engine, mSpace.OppositeOf(nogood[first]))) return Answer::kFailed;
    answer = Answer::kNarrowed;
  }
  return answer;
}

}  // namespace zultav::detail
