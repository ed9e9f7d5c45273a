#include <algorithm>
#include <bit>
#include <limits>
#include <span>
#include <vector>

#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using Outcome = ZULTaVoPropagator::Outcome;

/// An automaton that starts in one state, takes one transition for each member of the list and
/// ends in an accepting state; arguments: the list.
///
/// Domain consistent where sets of values are kept. A run follows the transitions from the members
/// that have changed as far as they change which states can be passed.
class Regular final : public ZULTaVoPropagator {
 public:
  /// @param transitions  the state after state s at value v, for s and v from 1 on: row s, column
  ///                     v; 0 for none. Outlives this
  Regular(std::size_t size, std::size_t states, std::size_t values,
          std::span<const std::int64_t> transitions, std::int64_t start,
          std::span<const std::int64_t> accepting);
  Wake GetWake(std::uint32_t /*argument*/) const override { return Wake::kOnValues; }
  Cost GetCost() const override { return Cost::kMore; }
  std::uint32_t GetStateSize() const override { return mSizes + mSize; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  using Set = std::vector<std::uint64_t>;

  std::uint32_t WordOf(std::uint32_t layer, std::uint32_t word) const {
    return layer * mWords + word;
  }
  /// The states between two members that are on a way from the start to an accepting state. What is
  /// remembered are those that are not.
  std::uint64_t GetWord(const ZULTaVoDomains& domains, std::uint32_t layer,
                        std::uint32_t word) const {
    return mPossible[WordOf(layer, word)] &
           ~static_cast<std::uint64_t>(domains.GetState(WordOf(layer, word)));
  }
  bool HasState(const ZULTaVoDomains& domains, std::uint32_t layer, std::uint32_t state) const {
    return (GetWord(domains, layer, state / 64) >> (state & 63) & 1) != 0;
  }
  /// The state after a state, from 0 on; -1 for none.
  std::int64_t Follow(std::uint32_t state, std::int64_t value) const {
    return mTransitions[state * mValues + static_cast<std::size_t>(value - 1)] - 1;
  }
  template <class Use>
  void ForEachState(const ZULTaVoDomains& domains, std::uint32_t layer, Use use) const;
  bool GoForward(ZULTaVoDomains& domains, std::uint32_t x);
  bool GoBackward(ZULTaVoDomains& domains, std::uint32_t x);
  bool Keep(ZULTaVoDomains& domains, std::uint32_t layer);
  bool Filter(ZULTaVoDomains& domains, std::uint32_t x);
  bool IsSupported(const ZULTaVoDomains& domains, std::uint32_t x, std::int64_t value);

  std::uint32_t mSize, mWords, mSizes;
  std::size_t mValues;
  std::span<const std::int64_t> mTransitions;
  Set mPossible;  // before any member is known
  Set mKept;      // of one layer
  std::vector<bool> mIsNew, mIsNewLayer;
  std::vector<std::int64_t> mSeen;       // how many values were seen of each member
  std::vector<std::uint32_t> mSupports;  // of each member and value, the state that had it last
};

Regular::Regular(std::size_t size, std::size_t states, std::size_t values,
                 std::span<const std::int64_t> transitions, std::int64_t start,
                 std::span<const std::int64_t> accepting)
    : mSize(static_cast<std::uint32_t>(size)),
      mWords(static_cast<std::uint32_t>((states + 63) / 64)),
      mSizes((mSize + 1) * mWords),
      mValues(values),
      mTransitions(transitions),
      mPossible(std::size_t{mSizes}, ~std::uint64_t{0}),
      mKept(mWords),
      mIsNew(size),
      mIsNewLayer(size + 1),
      mSeen(size),
      mSupports(size * values) {
  const auto restrict = [&](std::uint32_t layer, std::span<const std::int64_t> to) {
    for (std::uint32_t word = 0; word < mWords; ++word) mKept[word] = 0;
    for (const std::int64_t state : to)
      mKept[static_cast<std::size_t>(state - 1) / 64] |= std::uint64_t{1} << ((state - 1) & 63);
    for (std::uint32_t word = 0; word < mWords; ++word)
      mPossible[WordOf(layer, word)] &= mKept[word];
  };
  for (std::uint32_t layer = 0; layer <= mSize; ++layer)
    if (states % 64 != 0)
      mPossible[WordOf(layer, mWords - 1)] = (std::uint64_t{1} << (states % 64)) - 1;
  restrict(0, {&start, 1});
  restrict(mSize, accepting);
}

Outcome Regular::Propagate(ZULTaVoDomains& domains) {
  const auto sizeOf = [&](std::uint32_t x) {
    return static_cast<std::int64_t>(domains.GetSize(x));
  };
  std::uint32_t open = 0;
  bool isSettled = true;
  for (std::uint32_t x = 0; x < mSize; ++x) {
    if (!domains.SetLower(x, 1) || !domains.SetUpper(x, static_cast<std::int64_t>(mValues)))
      return Outcome::kFailed;
    mSeen[x] = sizeOf(x);
    mIsNew[x] = domains.GetState(mSizes + x) != mSeen[x];
    mIsNewLayer[x] = false;
  }
  mIsNewLayer[mSize] = false;
  for (std::uint32_t x = 0; x < mSize; ++x)
    if ((mIsNew[x] || mIsNewLayer[x]) && !GoForward(domains, x)) return Outcome::kFailed;
  for (std::uint32_t x = mSize; x-- > 0;)
    if ((mIsNew[x] || mIsNewLayer[x + 1]) && !GoBackward(domains, x)) return Outcome::kFailed;
  for (std::uint32_t x = 0; x < mSize; ++x) {
    if ((mIsNew[x] || mIsNewLayer[x] || mIsNewLayer[x + 1]) && !Filter(domains, x))
      return Outcome::kFailed;
    domains.SetState(mSizes + x, mSeen[x]);
  }
  for (std::uint32_t x = 0; x < mSize; ++x) {
    // Where a member stands in two places, one of them may have lost what the other has not seen.
    isSettled = isSettled && mSeen[x] == sizeOf(x);
    std::int64_t base = 0;
    if (domains.IsFixed(x)) continue;
    isSettled = isSettled && ++open == 1 && domains.GetBits(x, base) != nullptr;
  }
  return isSettled ? Outcome::kEntailed : Outcome::kFixpoint;
}

template <class Use>
void Regular::ForEachState(const ZULTaVoDomains& domains, std::uint32_t layer, Use use) const {
  for (std::uint32_t word = 0; word < mWords; ++word)
    for (std::uint64_t left = GetWord(domains, layer, word); left != 0; left &= left - 1)
      use(word * 64 + static_cast<std::uint32_t>(std::countr_zero(left)));
}

/// After a member come the states that it leads to from those before it.
bool Regular::GoForward(ZULTaVoDomains& domains, std::uint32_t x) {
  std::ranges::fill(mKept, 0);
  const std::int64_t last = domains.GetUpper(x);
  ForEachState(domains, x, [&](std::uint32_t state) {
    for (std::int64_t value = domains.GetLower(x); value <= last; value = domains.GetNext(x, value))
      if (const std::int64_t next = Follow(state, value); next >= 0)
        mKept[static_cast<std::size_t>(next) / 64] |= std::uint64_t{1} << (next & 63);
  });
  return Keep(domains, x + 1);
}

/// Before a member come the states from which it leads to those after it.
bool Regular::GoBackward(ZULTaVoDomains& domains, std::uint32_t x) {
  std::ranges::fill(mKept, 0);
  const std::int64_t last = domains.GetUpper(x);
  ForEachState(domains, x, [&](std::uint32_t state) {
    for (std::int64_t value = domains.GetLower(x); value <= last;
         value = domains.GetNext(x, value)) {
      const std::int64_t next = Follow(state, value);
      if (next < 0 || !HasState(domains, x + 1, static_cast<std::uint32_t>(next))) continue;
      mKept[state / 64] |= std::uint64_t{1} << (state & 63);
      return;
    }
  });
  return Keep(domains, x);
}

/// Of the states of a layer keeps those of mKept.
bool Regular::Keep(ZULTaVoDomains& domains, std::uint32_t layer) {
  std::uint64_t any = 0;
  for (std::uint32_t word = 0; word < mWords; ++word) {
    const std::uint64_t before = GetWord(domains, layer, word), after = before & mKept[word];
    any |= after;
    if (after == before) continue;
    mIsNewLayer[layer] = true;
    domains.SetState(WordOf(layer, word), static_cast<std::int64_t>(~after));
  }
  return any != 0;
}

bool Regular::Filter(ZULTaVoDomains& domains, std::uint32_t x) {
  const auto remove = [&](std::int64_t value) {
    const bool isLeft = domains.Remove(x, value);
    mSeen[x] -= isLeft && !domains.Contains(x, value) ? 1 : 0;
    return isLeft;
  };
  const std::int64_t last = domains.GetUpper(x);
  for (std::int64_t value = domains.GetLower(x); value <= last; value = domains.GetNext(x, value))
    if (!IsSupported(domains, x, value) && !remove(value)) return false;
  // Where no set of values is kept, the last ones may have gone before those in front of them.
  while (!IsSupported(domains, x, domains.GetUpper(x)))
    if (!remove(domains.GetUpper(x))) return false;
  return true;
}

bool Regular::IsSupported(const ZULTaVoDomains& domains, std::uint32_t x, std::int64_t value) {
  const auto leads = [&](std::uint32_t state) {
    const std::int64_t next = Follow(state, value);
    return next >= 0 && HasState(domains, x + 1, static_cast<std::uint32_t>(next));
  };
  std::uint32_t& support = mSupports[x * mValues + static_cast<std::size_t>(value - 1)];
  if (HasState(domains, x, support) && leads(support)) return true;
  for (std::uint32_t word = 0; word < mWords; ++word)
    for (std::uint64_t left = GetWord(domains, x, word); left != 0; left &= left - 1)
      if (leads(word * 64 + static_cast<std::uint32_t>(std::countr_zero(left)))) {
        support = word * 64 + static_cast<std::uint32_t>(std::countr_zero(left));
        return true;
      }
  return false;
}

std::unique_ptr<ZULTaVoPropagator> MakeRegular(Arguments arguments) {
  return std::make_unique<Regular>(arguments[0].GetSize(), arguments[1].rows, arguments[1].columns,
                                   arguments[1].integers, arguments[2].integers[0],
                                   arguments[3].integers);
}

std::string CheckRegular(Arguments arguments) {
  const std::int64_t states = arguments[1].rows;
  const auto isState = [states](std::int64_t state) { return state >= 1 && state <= states; };
  const std::string range = "1.." + std::to_string(states);
  for (const std::int64_t next : arguments[1].integers)
    if (next != 0 && !isState(next))
      return "'transitions' leads to " + std::to_string(next) + ", which is not one of " + range;
  if (!isState(arguments[2].integers[0])) return "'start' is not one of " + range;
  if (!std::ranges::all_of(arguments[3].integers, isState))
    return "'accepting' is not within " + range;
  // A bit for each state before and after each member, in words that have numbers of 32 bits.
  const std::uint64_t words =
      (std::uint64_t{arguments[0].columns} + 1) * (arguments[1].rows / 64 + 1);
  if (words > std::numeric_limits<std::uint32_t>::max() / 2)
    return "'transitions' has too many states for so long a list";
  return RefuseEmpty(arguments[0]);
}

}  // namespace

Definition DescribeRegular() {
  return {
      .name = "regular",
      .meaning =
          "an automaton accepts the list; transitions[s, v] is the state after s at v, "
          "or 0",
      .parameters = {{.name = "list", .size = "n"},
                     {.name = "transitions", .size = "s v", .given = Given::kKnown},
                     {.name = "start", .given = Given::kKnown},
                     {.name = "accepting", .size = "a", .given = Given::kKnown}},
      .make = &MakeRegular,
      .check = &CheckRegular
  };
}

}  // namespace zultav::relations
