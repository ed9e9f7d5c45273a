#include "framework/engine/detail/AllDifferent.h"

#include <algorithm>
#include <utility>

namespace zultav::engine {

namespace {

// Ranges that reach farther are in no Hall interval that could be found.
constexpr std::int64_t kFar = std::int64_t{1} << 61;
constexpr std::size_t kValuesPerMember = 8;  // up to which a table of values is worth its while

/// Whether fixed slots are kept apart from the others.
bool KeepsOrder(const Rule& rule) { return rule.code == Code::kAllDifferent && rule.data == 0; }

/// Follows the links upward (downward) to where they end.
std::uint32_t FindTop(const std::vector<std::uint32_t>& links, std::uint32_t at) {
  while (links[at] > at) at = links[at];
  return at;
}
std::uint32_t FindBottom(const std::vector<std::uint32_t>& links, std::uint32_t at) {
  while (links[at] < at) at = links[at];
  return at;
}
/// Leads all links on the way from one place to another straight to the end.
void Compress(std::vector<std::uint32_t>& links, std::uint32_t from, std::uint32_t to,
              std::uint32_t end) {
  while (from != to) from = std::exchange(links[from], end);
}

}  // namespace

std::size_t AllDifferent::CountStateWords(const Program& program) {
  std::size_t words = 0;
  for (const Rule& rule : program.GetRules())
    if (KeepsOrder(rule)) words += rule.count;
  return words;
}

AllDifferent::AllDifferent(Engine& engine, std::size_t firstWord) {
  const Program& program = engine.GetProgram();
  std::size_t most = 0;
  mOrders.resize(program.GetRules().size());
  for (std::uint32_t i = 0; i < program.GetRules().size(); ++i) {
    const Rule& rule = program.GetRules()[i];
    if (rule.code != Code::kAllDifferent) continue;
    most = std::max<std::size_t>(most, rule.count);
    if (!KeepsOrder(rule)) continue;
    mOrders[i] = firstWord;
    for (const Slot x : program.GetArguments(rule)) engine.mWords[firstWord++] = x;
  }
  mMembers.reserve(most);
  mByLower.reserve(most);
  mByUpper.reserve(most);
  for (auto* list : {&mBounds, &mCapacities}) list->reserve(2 * most + 2);
  for (auto* list : {&mTrees, &mHalls}) list->reserve(2 * most + 2);
  mRanks.reserve(kValuesPerMember * most + 2);
}

std::size_t AllDifferent::GetMemoryUsed() const {
  return mOrders.capacity() * sizeof(std::size_t) +
         (mByLower.capacity() + mByUpper.capacity() + mTrees.capacity() + mHalls.capacity() +
          mRanks.capacity()) *
             sizeof(std::uint32_t) +
         mMembers.capacity() * sizeof(Member) +
         (mBounds.capacity() + mCapacities.capacity()) * sizeof(std::int64_t);
}

/// Removes the values that are fixed from the slots that are open. A value that no other slot can
/// have any more is done with.
bool AllDifferent::RemoveFixed(Engine& engine, const Rule& rule, std::uint32_t index) {
  const std::size_t first = mOrders[index];
  const auto slotAt = [&engine, first](std::int64_t place) {
    return static_cast<Slot>(engine.mWords[first + static_cast<std::size_t>(place)]);
  };
  const auto count = static_cast<std::int64_t>(rule.count);
  const std::int64_t doneBefore = engine.GetMemory();
  std::int64_t done = doneBefore;
  std::uint64_t narrowings = 0;
  do {
    narrowings = engine.GetStatistics().narrowings;
    for (std::int64_t i = done; i < count; ++i) {
      const Slot fixed = slotAt(i);
      if (!engine.IsFixedInteger(fixed)) continue;
      const std::int64_t value = engine.GetLower(fixed);
      bool isGone = true;
      for (std::int64_t other = done; other < count; ++other) {
        if (other == i) continue;
        const Slot x = slotAt(other);
        if (!engine.Remove(x, value)) return false;
        // Where no set of values is kept, it stays until it is a bound.
        isGone = isGone && !engine.Contains(x, value);
      }
      if (!isGone) continue;
      engine.Set(first + static_cast<std::size_t>(i), slotAt(done));
      engine.Set(first + static_cast<std::size_t>(done++), fixed);
    }
  } while (engine.GetStatistics().narrowings != narrowings);
  if (done != doneBefore) engine.SetMemory(done);
  if (done == count) engine.Retire();
  return true;
}

// --- Bounds -------------------------------------------------------------------------------------

/// Bounds consistency by the algorithm of A. López-Ortiz, C.-G. Quimper, J. Tromp and P. van Beek,
/// "A fast and simple algorithm for bounds consistency of the alldifferent constraint" (IJCAI
/// 2003): sorting, and steps that union-find makes almost linear.
bool AllDifferent::NarrowBounds(Engine& engine, const Rule& rule) {
  // A bound that has skipped a hole may make another Hall interval.
  for (bool skipped = true; skipped;) {
    skipped = false;
    if (!Gather(engine, rule)) return true;
    Rank();
    if (!RaiseLowers(engine, skipped) || !DropUppers(engine, skipped)) return false;
  }
  return true;
}

/// The ranges that can make up Hall intervals together; false where there can be none.
bool AllDifferent::Gather(const Engine& engine, const Rule& rule) {
  mMembers.clear();
  std::int64_t least = kFar, greatest = -kFar, narrowest = kFar;
  for (const Slot x : engine.GetProgram().GetArguments(rule)) {
    const std::int64_t lower = engine.GetLower(x), upper = engine.GetUpper(x);
    if (lower < -kFar || upper > kFar) continue;
    mMembers.push_back({x, lower, upper, 0, 0});
    if (lower == upper) continue;
    least = std::min(least, lower);
    greatest = std::max(greatest, upper);
    narrowest = std::min(narrowest, upper - lower);
  }
  mLeast = least;
  mGreatest = greatest;
  // Values that are fixed beyond those of all others are of no concern to them.
  std::erase_if(mMembers, [&](const Member& member) {
    return member.upper < least || member.lower > greatest;
  });
  return narrowest < static_cast<std::int64_t>(mMembers.size());
}

/// Numbers the different ends of ranges from 1 on, and sorts the ranges by both.
void AllDifferent::Rank() {
  const auto width = static_cast<std::uint64_t>(mGreatest - mLeast) + 2;
  mBounds.assign(1, mLeast - 2);
  if (width <= kValuesPerMember * mMembers.size()) {
    // Few values: a table of them.
    mRanks.assign(static_cast<std::size_t>(width), 0);
    const auto rankOf = [this](std::int64_t bound) -> std::uint32_t& {
      return mRanks[static_cast<std::size_t>(bound - mLeast)];
    };
    for (const Member& range : mMembers) rankOf(range.lower) = rankOf(range.upper + 1) = 1;
    for (std::size_t i = 0; i < mRanks.size(); ++i) {
      if (mRanks[i] == 0) continue;
      mRanks[i] = static_cast<std::uint32_t>(mBounds.size());
      mBounds.push_back(mLeast + static_cast<std::int64_t>(i));
    }
    for (Member& range : mMembers) {
      range.lowerRank = rankOf(range.lower);
      range.upperRank = rankOf(range.upper + 1);
    }
  } else {
    for (const Member& range : mMembers) {
      mBounds.push_back(range.lower);
      mBounds.push_back(range.upper + 1);
    }
    std::sort(mBounds.begin(), mBounds.end());
    mBounds.erase(std::unique(mBounds.begin(), mBounds.end()), mBounds.end());
    const auto rankOf = [this](std::int64_t bound) {
      return static_cast<std::uint32_t>(std::lower_bound(mBounds.begin(), mBounds.end(), bound) -
                                        mBounds.begin());
    };
    for (Member& range : mMembers) {
      range.lowerRank = rankOf(range.lower);
      range.upperRank = rankOf(range.upper + 1);
    }
  }
  mBounds.push_back(mBounds.back() + 2);
  Sort<&Member::lowerRank>(mByLower);
  Sort<&Member::upperRank>(mByUpper);
}

/// Counting sort.
template <std::uint32_t AllDifferent::Member::*rank>
void AllDifferent::Sort(std::vector<std::uint32_t>& order) {
  mRanks.assign(mBounds.size(), 0);
  for (const Member& range : mMembers) ++mRanks[range.*rank];
  std::uint32_t next = 0;
  for (std::uint32_t& place : mRanks) next += std::exchange(place, next);
  order.resize(mMembers.size());
  for (std::uint32_t i = 0; i < mMembers.size(); ++i) order[mRanks[mMembers[i].*rank]++] = i;
}

/// Takes the ranges by their upper ends. A range uses one of the values up to its end; where a
/// stretch of values is used up, what begins within it must begin behind it.
bool AllDifferent::RaiseLowers(Engine& engine, bool& skipped) {
  const auto last = static_cast<std::uint32_t>(mBounds.size() - 1);
  mTrees.resize(mBounds.size());
  mHalls.resize(mBounds.size());
  mCapacities.resize(mBounds.size());
  for (std::uint32_t i = 1; i <= last; ++i) {
    mTrees[i] = mHalls[i] = i - 1;
    mCapacities[i] = mBounds[i] - mBounds[i - 1];
  }
  mTrees[0] = mHalls[0] = 0;
  for (const std::uint32_t member : mByUpper) {
    const Member& range = mMembers[member];
    const std::uint32_t begin = range.lowerRank, end = range.upperRank;
    std::uint32_t top = FindTop(mTrees, begin + 1);
    const std::uint32_t below = mTrees[top];
    if (--mCapacities[top] == 0) {
      mTrees[top] = top + 1;
      top = FindTop(mTrees, top + 1);
      mTrees[top] = below;
    }
    Compress(mTrees, begin + 1, top, top);
    if (mCapacities[top] < mBounds[top] - mBounds[end]) return false;
    if (mHalls[begin] > begin) {
      const std::uint32_t behind = FindTop(mHalls, mHalls[begin]);
      if (!engine.SetLower(range.slot, mBounds[behind])) return false;
      skipped = skipped || engine.GetLower(range.slot) != mBounds[behind];
      Compress(mHalls, begin, behind, behind);
    }
    if (mCapacities[top] == mBounds[top] - mBounds[end]) {
      Compress(mHalls, mHalls[end], below - 1, end);
      mHalls[end] = below - 1;
    }
  }
  return true;
}

/// The mirror image.
bool AllDifferent::DropUppers(Engine& engine, bool& skipped) {
  const auto last = static_cast<std::uint32_t>(mBounds.size() - 1);
  for (std::uint32_t i = 0; i < last; ++i) {
    mTrees[i] = mHalls[i] = i + 1;
    mCapacities[i] = mBounds[i + 1] - mBounds[i];
  }
  mTrees[last] = mHalls[last] = last;
  for (auto at = mByLower.rbegin(); at != mByLower.rend(); ++at) {
    const Member& range = mMembers[*at];
    const std::uint32_t begin = range.upperRank, end = range.lowerRank;
    std::uint32_t top = FindBottom(mTrees, begin - 1);
    const std::uint32_t above = mTrees[top];
    if (--mCapacities[top] == 0) {
      mTrees[top] = top - 1;
      top = FindBottom(mTrees, top - 1);
      mTrees[top] = above;
    }
    Compress(mTrees, begin - 1, top, top);
    if (mCapacities[top] < mBounds[end] - mBounds[top]) return false;
    if (mHalls[begin] < begin) {
      const std::uint32_t behind = FindBottom(mHalls, mHalls[begin]);
      if (!engine.SetUpper(range.slot, mBounds[behind] - 1)) return false;
      skipped = skipped || engine.GetUpper(range.slot) != mBounds[behind] - 1;
      Compress(mHalls, begin, behind, behind);
    }
    if (mCapacities[top] == mBounds[end] - mBounds[top]) {
      Compress(mHalls, mHalls[end], above + 1, end);
      mHalls[end] = above + 1;
    }
  }
  return true;
}

}  // namespace zultav::engine
