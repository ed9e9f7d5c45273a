#include "framework/engine/detail/SearchedSlots.h"

#include <algorithm>

namespace zultav::engine {

namespace {

/// Follows what is known from slot to slot, through whatever determines one slot by the others.
class KnownSlots {
 public:
  explicit KnownSlots(const Program& program)
      : mProgram(program), mKnown(program.GetNumberOfSlots(), false) {
    for (const Formula& formula : program.GetFormulas()) {
      const Slot slots[] = {formula.result, formula.first, formula.second};
      // A unary function has the same operand twice.
      Add(std::span(slots).first(RowOf(formula.function).operands == 1 ? 2 : 3),
          FindDetermined(formula));
    }
    for (const Comparison& comparison : program.GetComparisons()) {
      const Slot slots[] = {comparison.left, comparison.right, comparison.truth};
      const bool isEquation = comparison.relation == engine::Relation::kEqual;
      if (comparison.truth != kNone)
        Add(slots, kThird);
      else
        Add(std::span(slots).first(2), isEquation ? kFirst | kSecond : kNobody);
    }
    for (const Group& group : program.GetGroups())
      Add(group.slots,
          group.code == Code::kCount || group.code == Code::kPrimality ? kFirst : kNobody);
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
  /// Which slots of a relation are functions of all others; a sum of these.
  enum Determined : unsigned int { kNobody = 0, kFirst = 1, kSecond = 2, kThird = 4 };

  struct Relation {
    std::uint32_t first, count, open;
    unsigned int determined;
  };

  unsigned int FindDetermined(const Formula& formula) const {
    switch (formula.function) {
      case Function::kSum:
        return kFirst | kSecond | kThird;
      case Function::kNegative:
        return kFirst | kSecond;
      case Function::kProduct:
        return kFirst | (IsNonzero(formula.second) ? kSecond : kNobody) |
               (IsNonzero(formula.first) ? kThird : kNobody);
      default:
        return kFirst;
    }
  }
  bool IsNonzero(Slot x) const {
    return mProgram.GetSlot(x).kind == Kind::kInteger &&
           !mProgram.GetInitialIntegers(x).Contains(0);
  }

  /// A slot that stands twice counts once, but is not determined by itself.
  void Add(std::span<const Slot> slots, unsigned int determined) {
    const auto first = static_cast<std::uint32_t>(mSlots.size());
    unsigned int left = kNobody;
    for (std::size_t i = 0; i < slots.size(); ++i) {
      const unsigned int own = i < 3 && (determined & 1U << i) != 0 ? 1 : 0;
      const auto seen = std::find(mSlots.begin() + first, mSlots.end(), slots[i]);
      const auto place = static_cast<std::size_t>(seen - mSlots.begin()) - first;
      if (seen == mSlots.end()) {
        mSlots.push_back(slots[i]);
        left |= own << std::min<std::size_t>(place, 3);
      } else if (place < 3) {
        left &= ~(1U << place);
      }
    }
    const auto count = static_cast<std::uint32_t>(mSlots.size()) - first;
    mRelations.push_back({first, count, count, left});
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
    for (std::uint32_t i = 0; i < std::min<std::uint32_t>(relation.count, 3); ++i)
      if ((relation.determined & 1U << i) != 0) SetKnown(mSlots[relation.first + i]);
  }

  const Program& mProgram;
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
