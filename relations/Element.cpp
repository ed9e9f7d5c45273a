#include <algorithm>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using Outcome = ZULTaVoPropagator::Outcome;

/// result = list[index] of a list of constant integers; arguments: result, index.
///
/// Domain consistent where sets of values are kept, else at bounds. Its memory is linear in the
/// list; all runs on the way to one solution together take time linear in it, and besides what the
/// holes of the result cost, each one no more than what it removes.
class ElementOfConstants final : public ZULTaVoPropagator {
 public:
  /// @param list   not empty; outlives this
  /// @param first  the index of its first value
  ElementOfConstants(std::span<const std::int64_t> list, std::int64_t first);
  Wake GetWake(std::uint32_t /*argument*/) const override { return Wake::kOnValues; }
  std::uint32_t GetStateSize() const override { return kStateSize; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  enum Number : std::uint32_t { kResult, kIndex };
  enum State : std::uint32_t { kBelow, kAbove, kIndexSize, kResultSize, kStateSize };

  std::int64_t ValueAt(std::size_t rank) const { return mList[mOrder[rank]]; }
  std::int64_t IndexAt(std::size_t rank) const { return mFirst + mOrder[rank]; }
  bool IsLeft(const ZULTaVoDomains& domains, std::size_t rank) const {
    return domains.Contains(kIndex, IndexAt(rank)) && domains.Contains(kResult, ValueAt(rank));
  }
  bool TrimIndex(ZULTaVoDomains& domains) const;
  bool TrimResult(ZULTaVoDomains& domains);
  bool FilterInside(ZULTaVoDomains& domains);

  std::span<const std::int64_t> mList;
  std::int64_t mFirst;
  std::vector<std::uint32_t> mOrder;   // places in the list, by value
  std::vector<std::uint32_t> mGroups;  // ranks at which another value begins, and the end
};

/// result = list[index] of a list of variables, integers or reals; arguments: result, index, list.
///
/// Removes each index whose variable has no common range with the result; bounds consistent
/// otherwise.
class ElementOfVariables final : public ZULTaVoPropagator {
 public:
  /// @param first  the index of the first variable
  ElementOfVariables(bool isReal, std::size_t size, std::int64_t first)
      : mIsReal(isReal), mSize(size), mFirst(first) {}
  Wake GetWake(std::uint32_t argument) const override {
    return argument == 1 ? Wake::kOnValues : Wake::kOnBounds;
  }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  bool mIsReal;
  std::size_t mSize;
  std::int64_t mFirst;
};

/// result = list[index] of a list of constant reals; arguments: result, index. Two doubles enclose
/// each constant.
class ElementOfRealConstants final : public ZULTaVoPropagator {
 public:
  ElementOfRealConstants(std::span<const double> list, std::int64_t first)
      : mList(list), mFirst(first) {}
  Wake GetWake(std::uint32_t argument) const override {
    return argument == 1 ? Wake::kOnValues : Wake::kOnBounds;
  }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  std::span<const double> mList;
  std::int64_t mFirst;
};

bool IsWithinList(ZULTaVoDomains& domains, std::uint32_t index, std::int64_t first,
                  std::size_t size) {
  return domains.SetLower(index, first) &&
         domains.SetUpper(index, first + static_cast<std::int64_t>(size) - 1);
}

// --- Constants ----------------------------------------------------------------------------------

ElementOfConstants::ElementOfConstants(std::span<const std::int64_t> list, std::int64_t first)
    : mList(list), mFirst(first), mOrder(mList.size()) {
  std::iota(mOrder.begin(), mOrder.end(), 0u);
  std::stable_sort(mOrder.begin(), mOrder.end(), [this](std::uint32_t left, std::uint32_t right) {
    return mList[left] < mList[right];
  });
  for (std::uint32_t rank = 0; rank < mOrder.size(); ++rank)
    if (rank == 0 || ValueAt(rank) != ValueAt(rank - 1)) mGroups.push_back(rank);
  mGroups.push_back(static_cast<std::uint32_t>(mOrder.size()));
}

Outcome ElementOfConstants::Propagate(ZULTaVoDomains& domains) {
  if (!IsWithinList(domains, kIndex, mFirst, mList.size()) || !TrimIndex(domains) ||
      !TrimResult(domains) || !FilterInside(domains))
    return Outcome::kFailed;
  // Where both are one, what the index came to may not be its value.
  return domains.IsFixed(kIndex) && !domains.AreSame(kIndex, kResult) ? Outcome::kEntailed
                                                                      : Outcome::kFixpoint;
}

/// For where no set of values is kept of the index.
bool ElementOfConstants::TrimIndex(ZULTaVoDomains& domains) const {
  const auto valueAt = [&](std::int64_t index) {
    return mList[static_cast<std::size_t>(index - mFirst)];
  };
  while (!domains.Contains(kResult, valueAt(domains.GetLower(kIndex))))
    if (!domains.Remove(kIndex, domains.GetLower(kIndex))) return false;
  while (!domains.Contains(kResult, valueAt(domains.GetUpper(kIndex))))
    if (!domains.Remove(kIndex, domains.GetUpper(kIndex))) return false;
  return true;
}

/// Skips the least and the greatest values that are no more, of which the number is remembered.
bool ElementOfConstants::TrimResult(ZULTaVoDomains& domains) {
  auto below = static_cast<std::size_t>(domains.GetState(kBelow));
  auto end = mOrder.size() - static_cast<std::size_t>(domains.GetState(kAbove));
  for (; below < end && !IsLeft(domains, below); ++below)
    if (!domains.Remove(kIndex, IndexAt(below))) return false;
  for (; below < end && !IsLeft(domains, end - 1); --end)
    if (!domains.Remove(kIndex, IndexAt(end - 1))) return false;
  if (below == end) return false;
  domains.SetState(kBelow, static_cast<std::int64_t>(below));
  domains.SetState(kAbove, static_cast<std::int64_t>(mOrder.size() - end));
  return domains.SetLower(kResult, ValueAt(below)) && domains.SetUpper(kResult, ValueAt(end - 1));
}

/// Values between the bounds: an index goes with its value, a value with its last index.
bool ElementOfConstants::FilterInside(ZULTaVoDomains& domains) {
  const auto sizeOf = [&](Number x) { return static_cast<std::int64_t>(domains.GetSize(x)); };
  std::int64_t base = 0;
  if (domains.GetBits(kResult, base) == nullptr ||
      (domains.GetState(kIndexSize) == sizeOf(kIndex) &&
       domains.GetState(kResultSize) == sizeOf(kResult)))
    return true;
  const auto below = static_cast<std::uint32_t>(domains.GetState(kBelow));
  const std::int64_t greatest = domains.GetUpper(kResult);
  std::int64_t before = ValueAt(below);  // the value of the last group
  for (auto group = std::upper_bound(mGroups.begin(), mGroups.end(), below) - 1;
       *group < mOrder.size() && ValueAt(*group) <= greatest; ++group) {
    const std::int64_t value = ValueAt(*group);
    bool isSupported = false;
    if (domains.Contains(kResult, value)) {
      for (std::uint32_t rank = *group; rank != group[1] && !isSupported; ++rank)
        isSupported = domains.Contains(kIndex, IndexAt(rank));
    } else {
      for (std::uint32_t rank = *group; rank != group[1]; ++rank)
        if (!domains.Remove(kIndex, IndexAt(rank))) return false;
    }
    if (!isSupported) continue;
    for (std::int64_t gone = domains.GetNext(kResult, before); gone < value;
         gone = domains.GetNext(kResult, gone))
      if (!domains.Remove(kResult, gone)) return false;
    before = value;
  }
  domains.SetState(kIndexSize, sizeOf(kIndex));
  domains.SetState(kResultSize, sizeOf(kResult));
  return true;
}

// --- Variables and real constants ---------------------------------------------------------------

struct Integers {
  using Number = std::int64_t;
  static constexpr Number kLeast = ZULTaVoDomains::kNoLower, kGreatest = ZULTaVoDomains::kNoUpper;
  static Number Lower(const ZULTaVoDomains& domains, std::uint32_t x) {
    return domains.GetLower(x);
  }
  static Number Upper(const ZULTaVoDomains& domains, std::uint32_t x) {
    return domains.GetUpper(x);
  }
  static bool Narrow(ZULTaVoDomains& domains, std::uint32_t x, Number lower, Number upper) {
    return domains.SetLower(x, lower) && domains.SetUpper(x, upper);
  }
};

struct Reals {
  using Number = double;
  static constexpr Number kLeast = -std::numeric_limits<double>::infinity(), kGreatest = -kLeast;
  static Number Lower(const ZULTaVoDomains& domains, std::uint32_t x) {
    return domains.GetRealLower(x);
  }
  static Number Upper(const ZULTaVoDomains& domains, std::uint32_t x) {
    return domains.GetRealUpper(x);
  }
  static bool Narrow(ZULTaVoDomains& domains, std::uint32_t x, Number lower, Number upper) {
    return domains.Intersect(x, lower, upper);
  }
};

/// The list as arguments from 2 on.
template <class Kind>
struct Variables {
  auto Lower(const ZULTaVoDomains& domains, std::size_t i) const {
    return Kind::Lower(domains, static_cast<std::uint32_t>(i + 2));
  }
  auto Upper(const ZULTaVoDomains& domains, std::size_t i) const {
    return Kind::Upper(domains, static_cast<std::uint32_t>(i + 2));
  }
  bool Narrow(ZULTaVoDomains& domains, std::size_t i, typename Kind::Number lower,
              typename Kind::Number upper) const {
    return Kind::Narrow(domains, static_cast<std::uint32_t>(i + 2), lower, upper);
  }
};

struct Constants {
  std::span<const double> list;
  double Lower(const ZULTaVoDomains& /*domains*/, std::size_t i) const { return list[2 * i]; }
  double Upper(const ZULTaVoDomains& /*domains*/, std::size_t i) const { return list[2 * i + 1]; }
  bool Narrow(ZULTaVoDomains& /*domains*/, std::size_t /*i*/, double /*lower*/,
              double /*upper*/) const {
    return true;
  }
};

/// result = list[index] by the bounds of both.
template <class Kind, class List>
Outcome Select(ZULTaVoDomains& domains, const List& list, std::size_t size, std::int64_t first) {
  using Number = typename Kind::Number;
  constexpr std::uint32_t kResult = 0, kIndex = 1;
  if (!IsWithinList(domains, kIndex, first, size)) return Outcome::kFailed;
  const Number least = Kind::Lower(domains, kResult), greatest = Kind::Upper(domains, kResult);
  Number lower = Kind::kGreatest, upper = Kind::kLeast;
  const std::int64_t last = domains.GetUpper(kIndex);
  for (std::int64_t index = domains.GetLower(kIndex); index <= last;
       index = domains.GetNext(kIndex, index)) {
    const auto i = static_cast<std::size_t>(index - first);
    if (list.Lower(domains, i) > greatest || list.Upper(domains, i) < least) {
      if (!domains.Remove(kIndex, index)) return Outcome::kFailed;
    } else {
      lower = std::min(lower, list.Lower(domains, i));
      upper = std::max(upper, list.Upper(domains, i));
    }
  }
  // Without a set of values, the last indices may have gone before those in front of them.
  const auto isApart = [&](std::int64_t index) {
    const auto i = static_cast<std::size_t>(index - first);
    return list.Lower(domains, i) > greatest || list.Upper(domains, i) < least;
  };
  while (isApart(domains.GetUpper(kIndex)))
    if (!domains.Remove(kIndex, domains.GetUpper(kIndex))) return Outcome::kFailed;
  if (!Kind::Narrow(domains, kResult, lower, upper)) return Outcome::kFailed;
  const auto isAsSaid = [&] {
    return Kind::Lower(domains, kResult) == std::max(lower, least) &&
           Kind::Upper(domains, kResult) == std::min(upper, greatest);
  };
  if (!domains.IsFixed(kIndex)) return isAsSaid() ? Outcome::kFixpoint : Outcome::kAgain;
  const auto i = static_cast<std::size_t>(domains.GetLower(kIndex) - first);
  if (!list.Narrow(domains, i, Kind::Lower(domains, kResult), Kind::Upper(domains, kResult)))
    return Outcome::kFailed;
  lower = list.Lower(domains, i);
  upper = list.Upper(domains, i);
  if (lower > Kind::Lower(domains, kResult) || upper < Kind::Upper(domains, kResult))
    return Outcome::kAgain;
  return lower == upper && lower != Kind::kLeast && lower != Kind::kGreatest ? Outcome::kEntailed
                                                                             : Outcome::kFixpoint;
}

Outcome ElementOfVariables::Propagate(ZULTaVoDomains& domains) {
  return mIsReal ? Select<Reals>(domains, Variables<Reals>(), mSize, mFirst)
                 : Select<Integers>(domains, Variables<Integers>(), mSize, mFirst);
}
Outcome ElementOfRealConstants::Propagate(ZULTaVoDomains& domains) {
  return Select<Reals>(domains, Constants{mList}, mList.size() / 2, mFirst);
}

std::unique_ptr<ZULTaVoPropagator> MakeElement(Arguments arguments) {
  const ZULTaVoRelationArgument& list = arguments[2];
  if (!list.isKnown)
    return std::make_unique<ElementOfVariables>(list.isReal, list.GetSize(), list.firstIndex);
  if (list.isReal) return std::make_unique<ElementOfRealConstants>(list.reals, list.firstIndex);
  return std::make_unique<ElementOfConstants>(list.integers, list.firstIndex);
}

}  // namespace

Definition DescribeElement() {
  return {
      .name = "element",
      .meaning = "the member of the list that has the index",
      .parameters =
          {{.name = "index"},
                       {.name = "list", .element = Element::kNumber, .size = "n", .given = Given::kEither}},
      .result = Parameter{.name = "member",                            .element = Element::kNumber},
      .make = &MakeElement,
      .check = [](Arguments arguments) { return RefuseEmpty(arguments[2]);                                                      }
  };
}

}  // namespace zultav::relations
