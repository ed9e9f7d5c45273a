#include <algorithm>
#include <functional>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using Outcome = ZULTaVoPropagator::Outcome;

/// result = how many of a list have a value of a set; arguments: result, list.
///
/// Domain consistent on the list where sets of values are kept, bounds consistent on the result.
/// What is decided is not looked at again.
class Among final : public ZULTaVoPropagator {
 public:
  Among(std::size_t size, std::span<const std::int64_t> values);
  Wake GetWake(std::uint32_t argument) const override {
    return argument == 0 ? Wake::kOnBounds : Wake::kOnValues;
  }
  std::uint32_t GetStateSize() const override { return kStateSize; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  enum State : std::uint32_t { kDecided, kCounted, kStateSize };
  /// Neighbouring values of the set.
  struct Run {
    std::int64_t lower, upper;
  };

  enum class Place : std::uint8_t { kOpen, kInside, kOutside };

  Place PlaceOf(const ZULTaVoDomains& domains, std::uint32_t x) const;
  bool HasInside(const ZULTaVoDomains& domains, std::uint32_t x) const;
  bool HasOutside(const ZULTaVoDomains& domains, std::uint32_t x) const;
  bool KeepInside(ZULTaVoDomains& domains, std::uint32_t x) const;
  bool KeepOutside(ZULTaVoDomains& domains, std::uint32_t x) const;

  std::vector<Run> mRuns;             // ascending, with gaps between them
  std::vector<std::uint32_t> mOrder;  // the list, what is decided in front
};

/// result = how many of a list are equal to a value; arguments: result, list, value.
///
/// Removes each value that too many or too few of the list can have, and where the value is fixed
/// it is domain consistent on the list; bounds consistent on the result.
class Count final : public ZULTaVoPropagator {
 public:
  explicit Count(std::size_t size) : mSize(static_cast<std::uint32_t>(size)) {}
  Wake GetWake(std::uint32_t argument) const override {
    return argument == 0 ? Wake::kOnBounds : Wake::kOnValues;
  }
  Cost GetCost() const override { return Cost::kQuadratic; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  /// Of the list.
  struct Numbers {
    std::int64_t certain = 0, possible = 0;
  };

  Numbers CountOf(const ZULTaVoDomains& domains, std::int64_t value) const;
  bool NarrowValue(ZULTaVoDomains& domains) const;
  bool NarrowList(ZULTaVoDomains& domains, std::int64_t value) const;

  std::uint32_t mSize;
};

/// result = how many different values a list has; arguments: result, list.
///
/// The result is at least the number of ranges that lie apart from each other, and at most that of
/// the values which different members can take from their ranges at a time: bounds consistent.
/// Where it is the number of values that are already taken, the others take one of these; where it
/// is the size of the list, what one has taken the others lose.
class NumberOfValues final : public ZULTaVoPropagator {
 public:
  explicit NumberOfValues(std::size_t size);
  Wake GetWake(std::uint32_t argument) const override {
    return argument == 0 ? Wake::kOnBounds : Wake::kOnValues;
  }
  Cost GetCost() const override { return Cost::kMore; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  std::int64_t CountApart(const ZULTaVoDomains& domains);
  std::int64_t CountTogether(const ZULTaVoDomains& domains);
  void FindTaken(const ZULTaVoDomains& domains);
  bool IsTaken(std::int64_t value) const;
  bool LeaveTaken(ZULTaVoDomains& domains, std::uint32_t x) const;
  bool TakeFromTaken(ZULTaVoDomains& domains, std::uint32_t x) const;

  std::uint32_t mSize;
  std::vector<std::uint32_t> mOrder;
  std::vector<std::int64_t> mTaken;  // by what is fixed, ascending
  std::vector<std::int64_t> mEnds;   // a heap
};

constexpr std::uint32_t kResult = 0;
constexpr std::uint64_t kFewValues = 4096;  // that are worth to be looked at one by one

bool IsSetKept(const ZULTaVoDomains& domains, std::uint32_t x) {
  std::int64_t base = 0;
  return domains.GetBits(x, base) != nullptr;
}

// --- Values of a set ----------------------------------------------------------------------------

Among::Among(std::size_t size, std::span<const std::int64_t> values) : mOrder(size) {
  std::vector<std::int64_t> sorted(values.begin(), values.end());
  std::sort(sorted.begin(), sorted.end());
  for (const std::int64_t value : sorted)
    if (!mRuns.empty() && (value == mRuns.back().upper || value - 1 == mRuns.back().upper))
      mRuns.back().upper = value;
    else
      mRuns.push_back({value, value});
  std::iota(mOrder.begin(), mOrder.end(), 1u);
}

Outcome Among::Propagate(ZULTaVoDomains& domains) {
  const auto size = static_cast<std::int64_t>(mOrder.size());
  // The order outlives what is taken back: what stood in front has stayed there ever since.
  std::int64_t decided = domains.GetState(kDecided), counted = domains.GetState(kCounted);
  const auto decide = [&] {
    for (std::int64_t i = decided; i < size; ++i) {
      std::uint32_t& x = mOrder[static_cast<std::size_t>(i)];
      const Place place = PlaceOf(domains, x);
      if (place == Place::kOpen) continue;
      counted += place == Place::kInside ? 1 : 0;
      std::swap(x, mOrder[static_cast<std::size_t>(decided++)]);
    }
  };
  decide();
  if (!domains.SetLower(kResult, counted) || !domains.SetUpper(kResult, counted + size - decided))
    return Outcome::kFailed;
  if (decided < size) {
    const bool isNone = domains.GetUpper(kResult) == counted;
    const bool isAll = domains.GetLower(kResult) == counted + size - decided;
    if (isNone || isAll) {
      for (std::int64_t i = decided; i < size; ++i) {
        const std::uint32_t x = mOrder[static_cast<std::size_t>(i)];
        if (!(isNone ? KeepOutside(domains, x) : KeepInside(domains, x))) return Outcome::kFailed;
      }
      decide();
    }
  }
  domains.SetState(kDecided, decided);
  domains.SetState(kCounted, counted);
  return decided == size && domains.IsFixed(kResult) ? Outcome::kEntailed : Outcome::kFixpoint;
}

inline Among::Place Among::PlaceOf(const ZULTaVoDomains& domains, std::uint32_t x) const {
  const std::int64_t lower = domains.GetLower(x), upper = domains.GetUpper(x);
  if (mRuns.empty() || upper < mRuns.front().lower || lower > mRuns.back().upper)
    return Place::kOutside;
  if (mRuns.size() > 1)
    return !HasOutside(domains, x) ? Place::kInside
           : HasInside(domains, x) ? Place::kOpen
                                   : Place::kOutside;
  const auto& [least, greatest] = mRuns.front();
  if (lower >= least && upper <= greatest) return Place::kInside;
  return lower >= least || upper <= greatest || HasInside(domains, x) ? Place::kOpen
                                                                      : Place::kOutside;
}

bool Among::HasInside(const ZULTaVoDomains& domains, std::uint32_t x) const {
  const std::int64_t lower = domains.GetLower(x), upper = domains.GetUpper(x);
  for (auto run = std::ranges::lower_bound(mRuns, lower, {}, &Run::upper);
       run != mRuns.end() && run->lower <= upper; ++run) {
    const std::int64_t least = std::max(run->lower, lower);
    if (domains.Contains(x, least) || domains.GetNext(x, least) <= std::min(run->upper, upper))
      return true;
  }
  return false;
}

bool Among::HasOutside(const ZULTaVoDomains& domains, std::uint32_t x) const {
  const std::int64_t upper = domains.GetUpper(x);
  std::int64_t value = domains.GetLower(x);
  for (auto run = std::ranges::lower_bound(mRuns, value, {}, &Run::upper);
       run != mRuns.end() && run->lower <= value; ++run) {
    if (run->upper >= upper) return false;
    if (run->upper >= value) value = domains.GetNext(x, run->upper);
  }
  return true;
}

bool Among::KeepInside(ZULTaVoDomains& domains, std::uint32_t x) const {
  auto first = std::ranges::lower_bound(mRuns, domains.GetLower(x), {}, &Run::upper);
  for (; first != mRuns.end() && !domains.Contains(x, first->upper); ++first)
    if (!domains.SetLower(x, first->lower))
      return false;
    else if (domains.GetLower(x) <= first->upper)
      break;
  if (first == mRuns.end() || !domains.SetLower(x, first->lower)) return false;
  auto last = std::ranges::upper_bound(mRuns, domains.GetUpper(x), {}, &Run::lower);
  for (; last != mRuns.begin(); --last) {
    if (!domains.SetUpper(x, std::prev(last)->upper)) return false;
    if (domains.GetUpper(x) >= std::prev(last)->lower) break;
  }
  if (!IsSetKept(domains, x)) return true;
  for (auto run = first; run + 1 < last; ++run)
    for (std::int64_t value = domains.GetNext(x, run->upper); value < run[1].lower;
         value = domains.GetNext(x, value))
      if (!domains.Remove(x, value)) return false;
  return true;
}

bool Among::KeepOutside(ZULTaVoDomains& domains, std::uint32_t x) const {
  const bool isSetKept = IsSetKept(domains, x);
  for (const Run& run : mRuns) {
    if (run.upper < domains.GetLower(x)) continue;
    if (run.lower <= domains.GetLower(x)) {
      if (!domains.SetLower(x, run.upper + 1)) return false;
    } else if (isSetKept) {
      for (std::int64_t value = domains.GetNext(x, run.lower - 1);
           value <= std::min(run.upper, domains.GetUpper(x)); value = domains.GetNext(x, value))
        if (!domains.Remove(x, value)) return false;
    }
  }
  for (auto run = mRuns.rbegin(); run != mRuns.rend() && run->upper >= domains.GetLower(x); ++run)
    if (run->lower <= domains.GetUpper(x) && run->upper >= domains.GetUpper(x) &&
        !domains.SetUpper(x, run->lower - 1))
      return false;
  return true;
}

// --- A value that is an argument ----------------------------------------------------------------

Outcome Count::Propagate(ZULTaVoDomains& domains) {
  if (!NarrowValue(domains)) return Outcome::kFailed;
  if (!domains.IsFixed(mSize + 1)) return Outcome::kFixpoint;
  const std::int64_t value = domains.GetLower(mSize + 1);
  if (!NarrowList(domains, value)) return Outcome::kFailed;
  // An argument that stands in two places may have become something else meanwhile.
  const Numbers numbers = CountOf(domains, value);
  const bool isDecided = numbers.certain == numbers.possible &&
                         domains.Contains(mSize + 1, value) && domains.IsFixed(kResult) &&
                         domains.GetLower(kResult) == numbers.certain;
  return isDecided ? Outcome::kEntailed : Outcome::kFixpoint;
}

Count::Numbers Count::CountOf(const ZULTaVoDomains& domains, std::int64_t value) const {
  Numbers numbers;
  for (std::uint32_t x = 1; x <= mSize; ++x)
    if (domains.Contains(x, value)) {
      ++numbers.possible;
      numbers.certain += domains.IsFixed(x) ? 1 : 0;
    }
  return numbers;
}

/// The result is within what the values that are left allow, and these are those that allow it.
bool Count::NarrowValue(ZULTaVoDomains& domains) const {
  const std::uint32_t value = mSize + 1;
  if (domains.GetSize(value) > kFewValues)
    return domains.SetLower(kResult, 0) && domains.SetUpper(kResult, mSize);
  const auto isPossible = [&](const Numbers& numbers) {
    return numbers.certain <= domains.GetUpper(kResult) &&
           numbers.possible >= domains.GetLower(kResult);
  };
  Numbers all{mSize, 0};  // the least that is certain, the most that is possible
  const std::int64_t last = domains.GetUpper(value);
  for (std::int64_t i = domains.GetLower(value); i <= last; i = domains.GetNext(value, i)) {
    const Numbers numbers = CountOf(domains, i);
    if (isPossible(numbers)) {
      all.certain = std::min(all.certain, numbers.certain);
      all.possible = std::max(all.possible, numbers.possible);
    } else if (!domains.Remove(value, i)) {
      return false;
    }
  }
  while (!isPossible(CountOf(domains, domains.GetUpper(value))))  // where no set of values is kept
    if (!domains.Remove(value, domains.GetUpper(value))) return false;
  return domains.SetLower(kResult, all.certain) && domains.SetUpper(kResult, all.possible);
}

bool Count::NarrowList(ZULTaVoDomains& domains, std::int64_t value) const {
  const Numbers numbers = CountOf(domains, value);
  const bool isNone = domains.GetUpper(kResult) == numbers.certain;
  const bool isAll = domains.GetLower(kResult) == numbers.possible;
  if (!isNone && !isAll) return true;
  for (std::uint32_t x = 1; x <= mSize; ++x) {
    if (domains.IsFixed(x) || !domains.Contains(x, value)) continue;
    if (!(isAll ? domains.Fix(x, value) : domains.Remove(x, value))) return false;
  }
  return true;
}

// --- Different values ---------------------------------------------------------------------------

NumberOfValues::NumberOfValues(std::size_t size)
    : mSize(static_cast<std::uint32_t>(size)), mOrder(size) {
  std::iota(mOrder.begin(), mOrder.end(), 1u);
  mTaken.reserve(size);
  mEnds.reserve(size);
}

Outcome NumberOfValues::Propagate(ZULTaVoDomains& domains) {
  if (!domains.SetLower(kResult, CountApart(domains)) ||
      !domains.SetUpper(kResult, CountTogether(domains)))
    return Outcome::kFailed;
  FindTaken(domains);
  const bool isFull = domains.GetUpper(kResult) == static_cast<std::int64_t>(mTaken.size());
  const bool areDifferent = domains.GetLower(kResult) == static_cast<std::int64_t>(mSize);
  if (!isFull && !areDifferent) return Outcome::kFixpoint;
  bool isMoved = false, isDecided = isFull;
  for (std::uint32_t x = 1; x <= mSize; ++x) {
    if (domains.IsFixed(x)) continue;
    const std::int64_t lower = domains.GetLower(x), upper = domains.GetUpper(x);
    if (!(isFull ? TakeFromTaken(domains, x) : LeaveTaken(domains, x))) return Outcome::kFailed;
    isMoved = isMoved || lower != domains.GetLower(x) || upper != domains.GetUpper(x);
    isDecided = isDecided && (domains.IsFixed(x) || IsSetKept(domains, x));
  }
  if (isDecided && domains.IsFixed(kResult)) return Outcome::kEntailed;
  return isMoved ? Outcome::kAgain : Outcome::kFixpoint;
}

/// The most ranges without a common value: those that end first.
std::int64_t NumberOfValues::CountApart(const ZULTaVoDomains& domains) {
  std::ranges::sort(mOrder, {}, [&](std::uint32_t x) { return domains.GetUpper(x); });
  std::int64_t count = 0, end = ZULTaVoDomains::kNoLower;
  for (const std::uint32_t x : mOrder)
    if (count == 0 || domains.GetLower(x) > end) {
      end = domains.GetUpper(x);
      ++count;
    }
  return count;
}

/// The most values that different members can have: each value goes to the range around it that
/// ends first.
std::int64_t NumberOfValues::CountTogether(const ZULTaVoDomains& domains) {
  std::ranges::sort(mOrder, {}, [&](std::uint32_t x) { return domains.GetLower(x); });
  mEnds.clear();
  std::int64_t count = 0, value = ZULTaVoDomains::kNoLower;
  for (std::size_t next = 0; next < mOrder.size() || !mEnds.empty();) {
    if (mEnds.empty()) value = std::max(value, domains.GetLower(mOrder[next]));
    for (; next < mOrder.size() && domains.GetLower(mOrder[next]) <= value; ++next) {
      mEnds.push_back(domains.GetUpper(mOrder[next]));
      std::ranges::push_heap(mEnds, std::greater());
    }
    std::ranges::pop_heap(mEnds, std::greater());
    const std::int64_t end = mEnds.back();
    mEnds.pop_back();
    if (end < value) continue;
    if (value == ZULTaVoDomains::kNoUpper) return mSize;  // stands for more than one
    ++count;
    ++value;
  }
  return count;
}

void NumberOfValues::FindTaken(const ZULTaVoDomains& domains) {
  mTaken.clear();
  for (const std::uint32_t x : mOrder)  // by their lower bounds
    if (domains.IsFixed(x) && (mTaken.empty() || mTaken.back() != domains.GetLower(x)))
      mTaken.push_back(domains.GetLower(x));
}

bool NumberOfValues::IsTaken(std::int64_t value) const {
  return std::ranges::binary_search(mTaken, value);
}

bool NumberOfValues::LeaveTaken(ZULTaVoDomains& domains, std::uint32_t x) const {
  return std::ranges::all_of(mTaken, [&](std::int64_t value) { return domains.Remove(x, value); });
}

bool NumberOfValues::TakeFromTaken(ZULTaVoDomains& domains, std::uint32_t x) const {
  if (mTaken.empty() || !domains.SetLower(x, mTaken.front()) || !domains.SetUpper(x, mTaken.back()))
    return false;
  while (!IsTaken(domains.GetLower(x))) {
    const auto next = std::ranges::upper_bound(mTaken, domains.GetLower(x));
    if (next == mTaken.end() || !domains.SetLower(x, *next)) return false;
  }
  while (!IsTaken(domains.GetUpper(x))) {
    const auto next = std::ranges::lower_bound(mTaken, domains.GetUpper(x));
    if (next == mTaken.begin() || !domains.SetUpper(x, *std::prev(next))) return false;
  }
  if (!IsSetKept(domains, x)) return true;
  for (std::int64_t value = domains.GetLower(x); value < domains.GetUpper(x);
       value = domains.GetNext(x, value))
    if (!IsTaken(value) && !domains.Remove(x, value)) return false;
  return true;
}

std::unique_ptr<ZULTaVoPropagator> MakeAmong(Arguments arguments) {
  return std::make_unique<Among>(arguments[1].GetSize(), arguments[2].integers);
}

std::unique_ptr<ZULTaVoPropagator> MakeCount(Arguments arguments) {
  if (arguments[2].isKnown) return MakeAmong(arguments);
  return std::make_unique<Count>(arguments[1].GetSize());
}

std::unique_ptr<ZULTaVoPropagator> MakeNumberOfValues(Arguments arguments) {
  return std::make_unique<NumberOfValues>(arguments[1].GetSize());
}

}  // namespace

Definition DescribeAmong() {
  return {
      .name = "among",
      .meaning = "how many of the list have a value of the set",
      .parameters = {{.name = "list", .size = "n"},
                     {.name = "set", .size = "m", .given = Given::kKnown}},
      .result = Parameter{.name = "number"                            },
      .make = &MakeAmong
  };
}

Definition DescribeCount() {
  return {
      .name = "count",
      .meaning = "how many of the list are equal to the value",
      .parameters = {{.name = "list", .size = "n"}, {.name = "value", .given = Given::kEither}},
      .result = Parameter{.name = "number"                            },
      .make = &MakeCount
  };
}

Definition DescribeNumberOfValues() {
  return {.name = "nvalues",
          .meaning = "how many different values the list has",
          .parameters = {{.name = "list", .size = "n"}},
          .result = Parameter{.name = "number"},
          .make = &MakeNumberOfValues};
}

}  // namespace zultav::relations
