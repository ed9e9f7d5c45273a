#include "framework/engine/detail/LinearRows.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace zultav::engine {

namespace {

/// False, and nothing is changed, where the sum is too large.
bool AddTo(std::int64_t& sum, std::int64_t value) {
  std::int64_t result = 0;
  if (__builtin_add_overflow(sum, value, &result)) return false;
  sum = result;
  return true;
}

bool MultiplyBy(std::int64_t& product, std::int64_t value) {
  return !__builtin_mul_overflow(product, value, &product);
}

}  // namespace

LinearRows::LinearRows(Draft& draft, Flags& isTaken)
    : mDraft(draft), mFirstOfSlot(draft.slots.size(), kNone) {
  isTaken.clear();
  const std::size_t most = draft.formulas.size() + draft.comparisons.size();
  isTaken.reserve(most);
  mRows.reserve(most);
  mMerged.reserve(most);
  mTerms.reserve(2 * most);
  const auto read = [&](const auto& said, auto reader) {
    const std::size_t before = mTerms.size();
    Row row;
    if (!(this->*reader)(said, row)) return mTerms.resize(before), false;
    const auto index = static_cast<std::uint32_t>(mRows.size());
    mRows.push_back(row);
    mMerged.push_back(index);
    Link(before, index);
    return true;
  };
  for (const Formula& formula : draft.formulas)
    isTaken.push_back(read(formula, &LinearRows::ReadFormula));
  for (const Comparison& comparison : draft.comparisons)
    isTaken.push_back(read(comparison, &LinearRows::ReadComparison));
  for (const Group& group : draft.groups)
    if (group.code == Code::kCount) read(group, &LinearRows::ReadCount);
}

/// Adds factor times the slot to the left side; false where a number gets too large.
bool LinearRows::Add(Row& row, Slot slot, std::int64_t factor) {
  const IntegerRange range = mDraft.integers(slot);
  if (!range.IsScalar()) {
    AddTerm(slot, factor);
    return true;
  }
  std::int64_t product = range.lower;
  return factor != IntegerRange::kMin && MultiplyBy(product, -factor) &&
         AddTo(row.constant, product);
}

/// Puts the terms from one on, which are new, behind the others of the row.
void LinearRows::Link(std::size_t from, std::uint32_t index) {
  if (from == mTerms.size()) return;
  Row& row = mRows[index];
  (row.first == kNone ? row.first : mTerms[row.last].next) = static_cast<std::uint32_t>(from);
  for (std::size_t i = from; i < mTerms.size(); ++i) {
    Term& term = mTerms[i];
    term.row = index;
    term.next = static_cast<std::uint32_t>(i + 1);
    term.nextOfSlot = std::exchange(mFirstOfSlot[term.slot], static_cast<std::uint32_t>(i));
  }
  row.last = static_cast<std::uint32_t>(mTerms.size() - 1);
  mTerms.back().next = kNone;
  row.count += static_cast<std::uint32_t>(mTerms.size() - from);
}

bool LinearRows::ReadFormula(const Formula& formula, Row& row) {
  const auto isInteger = [this](Slot x) { return mDraft.slots[x].kind == Kind::kInteger; };
  if (!isInteger(formula.result) || !isInteger(formula.first) || !isInteger(formula.second))
    return false;
  if (mDraft.slots[formula.result].isBoolean) return false;
  switch (formula.function) {
    case Function::kSum:
      return Add(row, formula.result, -1) && Add(row, formula.first, 1) &&
             Add(row, formula.second, 1);
    case Function::kNegative:
      return Add(row, formula.result, 1) && Add(row, formula.first, 1);
    case Function::kProduct:
      for (const auto& [factor, operand] :
           {std::pair(formula.first, formula.second), std::pair(formula.second, formula.first)}) {
        if (!mDraft.IsFixed(factor)) continue;
        const std::int64_t value = mDraft.integers(factor).lower;
        return Add(row, formula.result, -1) && (value == 0 || Add(row, operand, value));
      }
      return false;
    default:
      return false;
  }
}

bool LinearRows::ReadComparison(const Comparison& comparison, Row& row) {
  const SlotInfo& left = mDraft.slots[comparison.left];
  const SlotInfo& right = mDraft.slots[comparison.right];
  if (left.kind != Kind::kInteger || right.kind != Kind::kInteger) return false;
  if (left.isBoolean && right.isBoolean) return false;
  row.relation = comparison.relation;
  row.truth = comparison.truth;
  if (row.relation == Relation::kLess) {
    row.relation = Relation::kLessOrEqual;
    row.constant = -1;
  }
  return Add(row, comparison.left, 1) && Add(row, comparison.right, -1);
}

bool LinearRows::ReadCount(const Group& group, Row& row) {
  bool isAdded = Add(row, group.slots[0], -1);
  for (std::size_t i = 1; i < group.slots.size(); ++i)
    isAdded = isAdded && Add(row, group.slots[i], 1);
  return isAdded;
}

// --- Elimination ------------------------------------------------------------------------------

/// Whether nothing is said of the slot beside what rows and formulas do.
bool LinearRows::CanGiveWay(Slot slot) const {
  const SlotInfo& info = mDraft.slots[slot];
  return mDraft.parents[slot] == slot && info.kind == Kind::kInteger && !info.isBoolean &&
         mDraft.initial[2 * std::size_t{slot}] == IntegerRange::kMin &&
         mDraft.initial[2 * std::size_t{slot} + 1] == IntegerRange::kMax;
}

std::uint32_t LinearRows::FindRow(std::uint32_t row) {
  while (mMerged[row] != row) row = mMerged[row] = mMerged[mMerged[row]];
  return row;
}

/// Where the slot stands in living rows, in their order.
void LinearRows::FindPlaces(Slot slot) {
  mFound.clear();
  for (std::uint32_t at = mFirstOfSlot[slot]; at != kNone; at = mTerms[at].nextOfSlot)
    if (const std::uint32_t row = FindRow(mTerms[at].row); mRows[row].isAlive)
      mFound.push_back({row, at});
  std::sort(mFound.begin(), mFound.end());
  mPlaces.clear();
  for (std::uint32_t i = 0; i < mFound.size(); ++i) {
    const auto [row, term] = mFound[i];
    if (mPlaces.empty() || mPlaces.back().row != row) mPlaces.push_back({row, i, i, 0});
    Place& place = mPlaces.back();
    place.end = i + 1;
    if (place.factor == IntegerRange::kMin || !AddTo(place.factor, mTerms[term].factor))
      place.factor = IntegerRange::kMin;
  }
}

void LinearRows::Eliminate(const Flags& isNeeded) {
  for (Slot slot = 0; slot < mFirstOfSlot.size(); ++slot)
    if (mFirstOfSlot[slot] != kNone && CanGiveWay(slot)) EliminateSlot(slot, isNeeded[slot]);
  // Large models shall not hold what they no longer need.
  mFirstOfSlot = mMerged = std::vector<std::uint32_t>();
  for (Row& row : mRows)
    if (row.isAlive) Normalize(row);
  std::erase_if(mRows, [](const Row& row) { return !row.isAlive; });
}

void LinearRows::EliminateSlot(Slot slot, bool isNeeded) {
  FindPlaces(slot);
  const Place* definition = nullptr;
  bool isMoved = false;
  for (const Place& place : mPlaces) {
    const Row& row = mRows[place.row];
    if (row.relation != Relation::kEqual || row.truth != kNone) continue;
    if (place.factor != 1 && place.factor != -1) continue;
    isMoved = row.count == 2;
    definition = &place;
    if (isMoved) break;
  }
  if (definition == nullptr) return;
  if (!isMoved && (isNeeded || mPlaces.size() != 2)) {
    // A value that only its definition speaks of needs no rule.
    if (!isNeeded && mPlaces.size() == 1) mRows[definition->row].isAlive = false;
    return;
  }
  bool isGone = !isNeeded;
  for (const Place& place : mPlaces)
    if (&place != definition)
      isGone = Substitute(*definition, place, isMoved || isNeeded) && isGone;
  if (isGone && isMoved) mRows[definition->row].isAlive = false;
}

/// Puts the definition in the place of the slot; the row is the target's afterwards. False, and
/// nothing is changed, where a number would get too large.
bool LinearRows::Substitute(const Place& definition, const Place& target, bool keepsDefinition) {
  if (target.factor == 0) return true;
  if (target.factor == IntegerRange::kMin) return false;
  // target + scale * definition has no more of the slot.
  const std::int64_t scale = definition.factor == 1 ? -target.factor : target.factor;
  const Row& from = mRows[definition.row];
  std::int64_t constant = from.constant;
  if (!MultiplyBy(constant, scale) || !AddTo(constant, mRows[target.row].constant)) return false;
  bool overflows = false;
  if (scale != 1)
    ForEachTerm(from, [&](Slot, std::int64_t factor) {
      overflows = overflows || !MultiplyBy(factor, scale);
    });
  if (overflows) return false;
  Remove(target);
  mRows[target.row].constant = constant;
  if (keepsDefinition)
    CopyTerms(definition, target.row, scale);
  else
    MoveTerms(definition, target.row, scale);
  return true;
}

/// All but those of the slot itself.
void LinearRows::CopyTerms(const Place& definition, std::uint32_t target, std::int64_t scale) {
  const Slot own = mTerms[mFound[definition.begin].second].slot;
  const std::size_t before = mTerms.size();
  ForEachTerm(mRows[definition.row], [&](Slot slot, std::int64_t factor) {
    if (slot != own) AddTerm(slot, factor * scale);
  });
  Link(before, target);
}

/// In no time where the scale is 1, so that a sum of many terms is built in a time that is linear.
void LinearRows::MoveTerms(const Place& definition, std::uint32_t target, std::int64_t scale) {
  Remove(definition);
  Row &from = mRows[definition.row], &to = mRows[target];
  for (std::uint32_t at = scale == 1 ? kNone : from.first; at != kNone; at = mTerms[at].next)
    mTerms[at].factor *= scale;
  mTerms[to.last].next = from.first;
  to.last = from.last;
  to.count += from.count;
  from.isAlive = false;
  mMerged[definition.row] = target;
}

void LinearRows::Remove(const Place& place) {
  for (std::uint32_t i = place.begin; i < place.end; ++i) mTerms[mFound[i].second].factor = 0;
  mRows[place.row].count -= place.end - place.begin;
}

// --- What is left -----------------------------------------------------------------------------

/// Unites terms of one slot and divides by the common factor.
void LinearRows::Normalize(Row& row) {
  mSorted.clear();
  mSorted.reserve(row.count);
  ForEachTerm(row, [this](Slot slot, std::int64_t factor) { mSorted.emplace_back(slot, factor); });
  std::sort(mSorted.begin(), mSorted.end());
  auto end = mSorted.begin();
  for (const auto& [slot, factor] : mSorted)
    if (end == mSorted.begin() || end[-1].first != slot || !AddTo(end[-1].second, factor))
      *end++ = {slot, factor};
  mSorted.erase(end, mSorted.end());
  std::erase_if(mSorted, [](const auto& term) { return term.second == 0; });
  std::int64_t common = 0;
  for (const auto& [slot, factor] : mSorted)
    if (common != 1) common = std::gcd(common, factor);
  if (common > 1) {
    const bool divides = row.constant % common == 0;
    if (!divides && row.relation != Relation::kLessOrEqual) {
      mSorted.clear();
      row.constant = common = 1;  // 0 = 1, 0 <> 1
    }
    for (auto& term : mSorted) term.second /= common;
    const std::int64_t rest = row.constant % common;
    row.constant = row.constant / common - (rest < 0 ? 1 : 0);
  }
  SetTerms(row);
  if (row.count < 2) return Conclude(row);
  if (row.relation != Relation::kLessOrEqual && mSorted.front().second < 0) Mirror(row);
}

/// Those that are sorted take the places of the row's own, of which there are no fewer.
void LinearRows::SetTerms(Row& row) {
  std::uint32_t* next = &row.first;
  for (const auto& [slot, factor] : mSorted) {
    Term& term = mTerms[row.last = *next];
    term.slot = slot;
    term.factor = factor;
    next = &term.next;
  }
  *next = kNone;
  row.count = static_cast<std::uint32_t>(mSorted.size());
}

/// Both sides with the other sign, where these exist.
void LinearRows::Mirror(Row& row) {
  bool exists = row.constant != IntegerRange::kMin;
  ForEachTerm(row,
              [&](Slot, std::int64_t factor) { exists = exists && factor != IntegerRange::kMin; });
  if (!exists) return;
  row.constant = -row.constant;
  for (std::uint32_t at = row.first; at != kNone; at = mTerms[at].next)
    mTerms[at].factor = -mTerms[at].factor;
}

/// A row of no or one slot says what the slot, or the truth value, is.
void LinearRows::Conclude(Row& row) {
  if (row.count == 0) {
    const bool holds = row.relation == Relation::kEqual     ? row.constant == 0
                       : row.relation == Relation::kUnequal ? row.constant != 0
                                                            : row.constant >= 0;
    if (row.truth != kNone)
      mDraft.Narrow(row.truth, IntegerRange::Only(holds));
    else if (!holds)
      mDraft.infeasible = true;
    row.isAlive = false;
    return;
  }
  const auto [slot, factor] = mSorted[0];
  if (row.truth != kNone || (factor != 1 && factor != -1)) return;
  const std::int64_t bound = factor == 1 ? row.constant : -row.constant;
  if (row.relation == Relation::kEqual)
    mDraft.Narrow(slot, IntegerRange::Only(bound));
  else if (row.relation == Relation::kUnequal)
    mDraft.holes.push_back({slot, bound});
  else
    mDraft.Narrow(slot, factor == 1 ? IntegerRange(IntegerRange::kMin, bound)
                                    : IntegerRange(bound, IntegerRange::kMax));
  row.isAlive = false;
}

}  // namespace zultav::engine
