#include "framework/engine/detail/SearchedSlots.h"

#include <algorithm>

namespace zultav::engine {

namespace {

/// Follows what is known from slot to slot, through whatever determines one slot by the others.
class KnownSlots {
 public:
  explicit KnownSlots(const Program& program) : mKnown(program.GetNumberOfSlots(), false) {
    for (const Formula& formula : program.GetFormulas()) {
      const Slot slots[] = {formula.result, formula.first, formula.second};
      const bool isLinear =
          formula.function == Function::kSum || formula.function == Function::kNegative;
      // A unary function has the same operand twice.
      const auto own = std::span(slots).first(RowOf(formula.function).operands == 1 ? 2 : 3);
      Add(own, isLinear ? own.size() : 1);
    }
    for (const Comparison& comparison : program.GetComparisons()) {
      const Slot slots[] = {comparison.truth, comparison.left, comparison.right};
      if (comparison.truth != kNone)
        Add(slots, 1);
      else
        Add(std::span(slots).subspan(1), comparison.relation == engine::Relation::kEqual ? 2 : 0);
    }
    for (const Group& group : program.GetGroups())
      Add(group.slots, group.code == Code::kCount || group.code == Code::kPrimality ? 1 : 0);
    CollectUses();
  }

  void SetKnown(Slot x) {
    if (mKnown[x]) return;
    mKnown[x] = true;
    mPending.push_back(x);
  }
  void Follow() {
    while (!mPending.empty()) {
      const Slot x = mPending.back();
      mPending.pop_back();
      for (std::uint32_t use = mFirstUse[x]; use < mFirstUse[x + 1]; ++use) Tell(mUses[use]);
    }
  }
  bool IsKnown(Slot x) const { return mKnown[x]; }
  /// Slots that gave way to others are not.
  bool IsUsed(Slot x) const { return mFirstUse[x] != mFirstUse[x + 1]; }

 private:
  /// Slots of which each of the first ones is a function of all others.
  struct Relation {
    std::uint32_t first, count, determined, open;
  };

  /// A slot that stands twice counts once, but is not determined by itself.
  void Add(std::span<const Slot> slots, std::size_t determined) {
    const auto first = static_cast<std::uint32_t>(mSlots.size());
    for (std::size_t i = 0; i < slots.size(); ++i) {
      const auto seen = std::find(mSlots.begin() + first, mSlots.end(), slots[i]);
      if (seen == mSlots.end())
        mSlots.push_back(slots[i]);
      else if (static_cast<std::size_t>(seen - mSlots.begin()) - first < determined)
        determined = 0;
    }
    const auto count = static_cast<std::uint32_t>(mSlots.size()) - first;
    mRelations.push_back({first, count, static_cast<std::uint32_t>(determined), count});
  }

  void CollectUses() {
    mFirstUse.assign(mKnown.size() + 1, 0);
    for (const Slot x : mSlots) ++mFirstUse[x + 1];
    for (std::size_t x = 1; x < mFirstUse.size(); ++x) mFirstUse[x] += mFirstUse[x - 1];
    mUses.resize(mSlots.size());
    std::vector<std::uint32_t> next = mFirstUse;
    for (std::uint32_t i = 0; i < mRelations.size(); ++i)
      for (std::uint32_t j = 0; j < mRelations[i].count; ++j)
        mUses[next[mSlots[mRelations[i].first + j]]++] = i;
  }

  void Tell(std::uint32_t index) {
    Relation& relation = mRelations[index];
    if (--relation.open != 1) return;
    for (std::uint32_t i = 0; i < std::min(relation.determined, relation.count); ++i)
      if (const Slot x = mSlots[relation.first + i]; !mKnown[x]) SetKnown(x);
  }

  std::vector<bool> mKnown;
  std::vector<Slot> mPending;
  std::vector<Relation> mRelations;
  std::vector<Slot> mSlots;
  std::vector<std::uint32_t> mFirstUse, mUses;
};

}  // namespace

std::vector<bool> FindSearchedSlots(const Program& program) {
  std::vector<bool> isSearched(program.GetNumberOfSlots(), false);
  KnownSlots known(program);
  for (const Slot x : program.GetDeclared()) {
    isSearched[x] = true;
    known.SetKnown(x);
  }
  for (Slot x = 0; x < isSearched.size(); ++x)
    if (program.GetSlot(x).isConstant ||
        (program.GetSlot(x).kind == Kind::kInteger && program.GetInitialIntegers(x).IsScalar()))
      known.SetKnown(x);
  known.Follow();
  const auto setOthers = [&](Kind kind) {
    for (Slot x = 0; x < isSearched.size(); ++x) {
      if (known.IsKnown(x) || !known.IsUsed(x) || program.GetSlot(x).kind != kind) continue;
      isSearched[x] = kind == Kind::kInteger;
      known.SetKnown(x);
      known.Follow();
    }
  };
  // Hidden reals are found by narrowing alone; they may determine integers.
  setOthers(Kind::kReal);
  setOthers(Kind::kInteger);
  return isSearched;
}

}  // namespace zultav::engine
