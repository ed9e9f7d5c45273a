#include <algorithm>
#include <bit>
#include <numeric>
#include <utility>

#include "relations/Relations.h"

namespace zultav::relations {

namespace {

/// Pairwise different integers, domain consistent by the algorithm of J.-C. Régin, "A filtering
/// algorithm for constraints of difference in CSPs" (AAAI 1994): each value that no matching of
/// variables to different values uses is removed.
///
/// A variable of at least as many values as there are variables can always have another one: it is
/// in no set of variables that use up their values, and takes no part in the matching.
class AllDifferentValues final : public ZULTaVoPropagator {
 public:
  explicit AllDifferentValues(std::uint32_t count);
  Wake GetWake(std::uint32_t) const override { return Wake::kOnValues; }
  Cost GetCost() const override { return Cost::kMore; }
  std::uint32_t GetStateSize() const override { return 1; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  static constexpr std::uint32_t kNone = 0xffffffff;

  using Bits = std::vector<std::uint64_t>;

  static bool IsIn(const Bits& set, std::uint32_t bit) {
    return (set[bit / 64] >> bit % 64 & 1) != 0;
  }
  static void Insert(Bits& set, std::uint32_t bit) {
    set[bit / 64] |= std::uint64_t{1} << bit % 64;
  }
  static void Erase(Bits& set, std::uint32_t bit) {
    set[bit / 64] &= ~(std::uint64_t{1} << bit % 64);
  }

  /// Which variable is matched to a value: an array where the values lie close together, else a
  /// hash table.
  class Owners {
   public:
    explicit Owners(std::uint32_t count)
        : mShift(62u - static_cast<unsigned int>(std::bit_width(count))),
          mEntries(std::size_t{4} << std::bit_width(count)) {}
    /// For values of [least, greatest].
    void Clear(std::int64_t least, std::int64_t greatest) {
      const std::uint64_t width = Distance(least, greatest);
      mLeast = least;
      mIsArray = width < mEntries.size();
      std::fill_n(mEntries.begin(), mIsArray ? width + 1 : mEntries.size(), Entry{0, kNone});
    }
    /// Of a value, or kNone.
    std::uint32_t Find(std::int64_t value) const { return mEntries[PlaceOf(value)].owner; }
    void Set(std::int64_t value, std::uint32_t owner) { mEntries[PlaceOf(value)] = {value, owner}; }

   private:
    struct Entry {
      std::int64_t value;
      std::uint32_t owner;
    };
    static std::uint64_t Distance(std::int64_t from, std::int64_t to) {
      return static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from);
    }
    std::size_t PlaceOf(std::int64_t value) const {
      if (mIsArray) return static_cast<std::size_t>(Distance(mLeast, value));
      auto at = static_cast<std::size_t>(static_cast<std::uint64_t>(value) * 0x9e3779b97f4a7c15u >>
                                         mShift);
      while (mEntries[at].owner != kNone && mEntries[at].value != value)
        at = (at + 1) & (mEntries.size() - 1);
      return at;
    }

    unsigned int mShift;
    std::vector<Entry> mEntries;
    std::int64_t mLeast = 0;
    bool mIsArray = false;
  };
  /// Sets of variables, one for each: rows of a square of bits.
  class Square {
   public:
    explicit Square(std::uint32_t count) : mWidth((count + 63) / 64), mWords(mWidth * count) {}
    void Clear() { std::fill(mWords.begin(), mWords.end(), 0); }
    void Insert(std::uint32_t row, std::uint32_t bit) {
      mWords[row * mWidth + bit / 64] |= std::uint64_t{1} << bit % 64;
    }
    /// A bit of the row that is in a set, and no more in the set; kNone if there is none.
    std::uint32_t Take(std::uint32_t row, Bits& from) const {
      for (std::size_t i = 0; i < mWidth; ++i)
        if (const std::uint64_t both = mWords[row * mWidth + i] & from[i]; both != 0) {
          from[i] &= ~(both & -both);
          return static_cast<std::uint32_t>(64 * i) +
                 static_cast<std::uint32_t>(std::countr_zero(both));
        }
      return kNone;
    }

   private:
    std::size_t mWidth;
    std::vector<std::uint64_t> mWords;
  };

  bool RemoveFixed(ZULTaVoDomains& domains);
  void FindOpen(std::uint32_t done);
  void GatherNarrow(const ZULTaVoDomains& domains);
  bool Match(const ZULTaVoDomains& domains);
  bool Augment(const ZULTaVoDomains& domains, std::uint32_t start);
  void Link(const ZULTaVoDomains& domains);
  bool FindHallSet();
  bool FindComponents(const ZULTaVoDomains& domains);
  bool Prune(ZULTaVoDomains& domains, bool& again);

  // The variables, first those that are fixed and of no concern to others any more.
  std::vector<std::uint32_t> mOrder;
  std::uint32_t mDone = 0;
  std::vector<char> mIsDone;
  std::vector<std::uint32_t> mOpen;  // those that were not when a run began, as in the list
  // Those in the matching: places of the lists below.
  std::vector<std::uint32_t> mNarrow, mWide;
  std::vector<std::int64_t> mValues;  // matched to
  std::vector<std::int64_t> mLast;    // of each variable, the value matched to when it last was
  std::int64_t mLeast = 0, mGreatest = 0;  // of their values
  Owners mOwners;
  std::vector<std::uint32_t> mUnmatched, mParents, mQueue, mFinished, mComponents;
  Square mTakenBy;  // of each variable, which others could take its value
  Bits mUnseen, mUnordered;
};

/// Calls use(value) for each value that is left until it answers true; whether it did.
template <class Use>
bool FindValue(const ZULTaVoDomains& domains, std::uint32_t x, Use use) {
  const std::int64_t lower = domains.GetLower(x), upper = domains.GetUpper(x);
  std::int64_t base = 0;
  const std::uint64_t* const bits = domains.GetBits(x, base);
  if (bits == nullptr) {
    for (std::int64_t value = lower;; value = domains.GetNext(x, value)) {
      if (use(value)) return true;
      if (value >= upper) return false;
    }
  }
  const auto placeOf = [base](std::int64_t value) {
    return static_cast<std::uint64_t>(value) - static_cast<std::uint64_t>(base);
  };
  const std::uint64_t first = placeOf(lower), last = placeOf(upper);
  for (std::uint64_t word = first / 64; word <= last / 64; ++word) {
    std::uint64_t left = bits[word];
    if (word == first / 64) left &= ~std::uint64_t{0} << first % 64;
    if (word == last / 64) left &= ~std::uint64_t{0} >> (63 - last % 64);
    for (; left != 0; left &= left - 1) {
      const std::uint64_t place = 64 * word + static_cast<std::uint64_t>(std::countr_zero(left));
      if (use(static_cast<std::int64_t>(static_cast<std::uint64_t>(base) + place))) return true;
    }
  }
  return false;
}

AllDifferentValues::AllDifferentValues(std::uint32_t count)
    : mOrder(count),
      mIsDone(count),
      mValues(count),
      mLast(count),
      mOwners(count),
      mParents(count),
      mComponents(count),
      mTakenBy(count),
      mUnseen((count + 63) / 64),
      mUnordered(mUnseen.size()) {
  std::iota(mOrder.begin(), mOrder.end(), 0u);
  for (auto* list : {&mOpen, &mNarrow, &mWide, &mUnmatched, &mQueue, &mFinished})
    list->reserve(count);
}

ZULTaVoPropagator::Outcome AllDifferentValues::Propagate(ZULTaVoDomains& domains) {
  const std::int64_t done = domains.GetState(0);
  if (!RemoveFixed(domains)) return Outcome::kFailed;
  if (mOrder.size() - mDone <= 1) return Outcome::kEntailed;
  // What fixed values remove may fix more, by other relations, too, before all of it is matched.
  if (done != mDone) return Outcome::kAgain;
  GatherNarrow(domains);
  if (!Match(domains)) return Outcome::kFailed;
  Link(domains);
  if (!FindHallSet()) return Outcome::kFixpoint;
  if (!FindComponents(domains)) return Outcome::kFixpoint;
  bool again = false;
  if (!Prune(domains, again)) return Outcome::kFailed;
  return again ? Outcome::kAgain : Outcome::kFixpoint;
}

/// Removes the values that are fixed from the other variables. What is narrowed first does not
/// depend on what a search has seen before: it goes by the list.
bool AllDifferentValues::RemoveFixed(ZULTaVoDomains& domains) {
  FindOpen(static_cast<std::uint32_t>(domains.GetState(0)));
  for (bool found = true; found;) {
    found = false;
    for (const std::uint32_t x : mOpen) {
      if (mIsDone[x] || !domains.IsFixed(x)) continue;
      const std::int64_t value = domains.GetLower(x);
      bool isGone = true;
      for (const std::uint32_t other : mOpen) {
        if (other == x) continue;
        if (!domains.Remove(other, value)) return false;
        isGone = isGone && !domains.Contains(other, value);
      }
      mIsDone[x] = isGone;
      found = found || isGone;
    }
  }
  // The order outlives what is taken back: what stood in front has stayed there ever since.
  for (std::uint32_t i = mDone; i < mOrder.size(); ++i)
    if (mIsDone[mOrder[i]]) std::swap(mOrder[i], mOrder[mDone++]);
  domains.SetState(0, mDone);
  return true;
}

void AllDifferentValues::FindOpen(std::uint32_t done) {
  mDone = done;
  mOpen.assign(mOrder.begin() + mDone, mOrder.end());
  if (!std::ranges::is_sorted(mOpen)) std::ranges::sort(mOpen);
  for (const std::uint32_t x : mOpen) mIsDone[x] = false;
}

void AllDifferentValues::GatherNarrow(const ZULTaVoDomains& domains) {
  mNarrow.clear();
  mWide.clear();
  mLeast = ZULTaVoDomains::kNoUpper;
  mGreatest = ZULTaVoDomains::kNoLower;
  const std::uint64_t open = mOrder.size() - mDone;
  for (const std::uint32_t x : mOpen) {
    if (mIsDone[x]) continue;
    const std::int64_t lower = domains.GetLower(x), upper = domains.GetUpper(x);
    const bool isBounded = lower != ZULTaVoDomains::kNoLower && upper != ZULTaVoDomains::kNoUpper;
    // Counting takes longer than to look at the bounds.
    const bool isShort =
        static_cast<std::uint64_t>(upper) - static_cast<std::uint64_t>(lower) < open - 1;
    if (!isBounded || (!isShort && domains.GetSize(x) >= open)) {
      mWide.push_back(x);
      continue;
    }
    mNarrow.push_back(x);
    mLeast = std::min(mLeast, lower);
    mGreatest = std::max(mGreatest, upper);
  }
}

/// Matches all to different values, to those of last time where they can.
bool AllDifferentValues::Match(const ZULTaVoDomains& domains) {
  mOwners.Clear(mLeast, mGreatest);
  mUnmatched.clear();
  for (std::uint32_t i = 0; i < mNarrow.size(); ++i) {
    mValues[i] = mLast[mNarrow[i]];
    if (domains.Contains(mNarrow[i], mValues[i]) && mOwners.Find(mValues[i]) == kNone)
      mOwners.Set(mValues[i], i);
    else
      mUnmatched.push_back(i);
  }
  for (const std::uint32_t i : mUnmatched)
    if (!Augment(domains, i)) return false;
  for (std::uint32_t i = 0; i < mNarrow.size(); ++i) mLast[mNarrow[i]] = mValues[i];
  return true;
}

/// Finds a value for one more, for which others may have to take other ones.
bool AllDifferentValues::Augment(const ZULTaVoDomains& domains, std::uint32_t start) {
  std::fill(mParents.begin(), mParents.end(), kNone);
  mQueue.assign(1, start);
  mParents[start] = start;
  for (std::size_t next = 0; next < mQueue.size(); ++next) {
    std::uint32_t i = mQueue[next];
    std::int64_t free = 0;
    const bool found = FindValue(domains, mNarrow[i], [&](std::int64_t value) {
      const std::uint32_t owner = mOwners.Find(value);
      if (owner == kNone) {
        free = value;
        return true;
      }
      if (mParents[owner] == kNone) {
        mParents[owner] = i;
        mQueue.push_back(owner);
      }
      return false;
    });
    if (!found) continue;
    for (;; i = mParents[i]) {
      mOwners.Set(free, i);
      std::swap(free, mValues[i]);
      if (i == start) return true;
    }
  }
  return false;
}

/// Finds out who could take whose value; those that could take one that is left over are queued.
void AllDifferentValues::Link(const ZULTaVoDomains& domains) {
  mTakenBy.Clear();
  mQueue.clear();
  for (std::uint32_t i = 0; i < mNarrow.size(); ++i) {
    bool hasFree = false;
    FindValue(domains, mNarrow[i], [&](std::int64_t value) {
      const std::uint32_t owner = mOwners.Find(value);
      if (owner == kNone) return hasFree = true;
      mTakenBy.Insert(owner, i);
      return false;
    });
    if (hasFree) mQueue.push_back(i);
  }
}

/// Whether there are variables that use up their values: those that cannot, by any chain of
/// takings, come to a value that is left over. They are the unseen ones.
bool AllDifferentValues::FindHallSet() {
  std::fill(mUnseen.begin(), mUnseen.end(), 0);
  for (std::uint32_t i = 0; i < mNarrow.size(); ++i) Insert(mUnseen, i);
  for (const std::uint32_t i : mQueue) Erase(mUnseen, i);
  for (std::size_t next = 0; next < mQueue.size(); ++next)
    for (std::uint32_t i = 0; (i = mTakenBy.Take(mQueue[next], mUnseen)) != kNone;)
      mQueue.push_back(i);
  return mQueue.size() < mNarrow.size();
}

/// Strongly connected components of the unseen, by two searches in depth: within one, values can be
/// exchanged. Answers whether there is anything outside of one of them.
bool AllDifferentValues::FindComponents(const ZULTaVoDomains& domains) {
  std::fill(mComponents.begin(), mComponents.end(), kNone);
  std::copy(mUnseen.begin(), mUnseen.end(), mUnordered.begin());
  mFinished.clear();
  for (std::uint32_t start = 0; start < mNarrow.size(); ++start) {
    if (!IsIn(mUnordered, start)) continue;
    Erase(mUnordered, start);
    mQueue.assign(1, start);
    while (!mQueue.empty()) {
      const std::uint32_t next = mTakenBy.Take(mQueue.back(), mUnordered);
      if (next != kNone) {
        mQueue.push_back(next);
      } else {
        mFinished.push_back(mQueue.back());
        mQueue.pop_back();
      }
    }
  }
  for (std::size_t last = mFinished.size(); last-- > 0;) {
    const std::uint32_t root = mFinished[last];
    if (!IsIn(mUnseen, root)) continue;
    Erase(mUnseen, root);
    mQueue.assign(1, root);
    for (std::size_t next = 0; next < mQueue.size(); ++next) {
      mComponents[mQueue[next]] = root;
      FindValue(domains, mNarrow[mQueue[next]], [&](std::int64_t value) {
        const std::uint32_t owner = mOwners.Find(value);
        if (!IsIn(mUnseen, owner)) return false;
        Erase(mUnseen, owner);
        mQueue.push_back(owner);
        return false;
      });
    }
    if (mQueue.size() == mNarrow.size() && mWide.empty()) return false;
  }
  return true;
}

/// Removes the values of those in components from all outside of them.
bool AllDifferentValues::Prune(ZULTaVoDomains& domains, bool& again) {
  const auto remove = [&](std::uint32_t x, std::int64_t value) {
    const std::int64_t lower = domains.GetLower(x), upper = domains.GetUpper(x);
    if (!domains.Remove(x, value)) return false;
    // Where no set of values is kept, a bound that has moved may be followed by another one.
    std::int64_t base = 0;
    again = again || ((domains.GetLower(x) != lower || domains.GetUpper(x) != upper) &&
                      domains.GetBits(x, base) == nullptr);
    return true;
  };
  for (std::uint32_t i = 0; i < mNarrow.size(); ++i)
    if (FindValue(domains, mNarrow[i], [&](std::int64_t value) {
          const std::uint32_t owner = mOwners.Find(value);
          return owner != kNone && mComponents[owner] != kNone &&
                 mComponents[owner] != mComponents[i] && !remove(mNarrow[i], value);
        }))
      return false;
  if (mWide.empty()) return true;
  std::ranges::sort(mFinished, {}, [this](std::uint32_t i) { return mValues[i]; });
  return std::ranges::all_of(mWide, [&](std::uint32_t x) {
    return std::ranges::all_of(mFinished, [&](std::uint32_t i) { return remove(x, mValues[i]); });
  });
}

}  // namespace

Definition DescribeAllDifferentValues() {
  return {.name = "alldifferent_values",
          .meaning = "all values are different; each value that is left is in a solution",
          .parameters = {{.name = "list", .size = "n"}},
          .make = [](Arguments arguments) -> std::unique_ptr<ZULTaVoPropagator> {
            return std::make_unique<AllDifferentValues>(arguments[0].columns);
          }};
}

}  // namespace zultav::relations
