#include "framework/engine/detail/LinearRows.h"

#include <algorithm>
#include <numeric>

namespace zultav::engine {

namespace {

bool AddTo(std::int64_t& sum, std::int64_t value) {
  return !__builtin_add_overflow(sum, value, &sum);
}

bool MultiplyBy(std::int64_t& product, std::int64_t value) {
  return !__builtin_mul_overflow(product, value, &product);
}

}  // namespace

LinearRows::LinearRows(Draft& draft, std::vector<bool>& isTaken)
    : mDraft(draft), mFirstUse(draft.slots.size(), kNone) {
  isTaken.clear();
  const std::size_t most = draft.formulas.size() + draft.comparisons.size();
  isTaken.reserve(most);
  mRows.reserve(most);
  mMerged.reserve(most);
  const auto read = [&](const auto& said, auto reader) {
    Row row;
    isTaken.push_back((this->*reader)(said, row));
    if (isTaken.back()) Append(std::move(row));
  };
  for (const Formula& formula : draft.formulas) read(formula, &LinearRows::ReadFormula);
  for (const Comparison& comparison : draft.comparisons)
    read(comparison, &LinearRows::ReadComparison);
  for (const Group& group : draft.groups) {
    if (group.code != Code::kCount) continue;
    Row row;
    bool isAdded = Add(row, group.slots[0], -1);
    for (std::size_t i = 1; i < group.slots.size(); ++i)
      isAdded = isAdded && Add(row, group.slots[i], 1);
    Append(std::move(row));
  }
}

/// Adds factor times the slot to the left side; false where a number gets too large.
bool LinearRows::Add(Row& row, Slot slot, std::int64_t factor) {
  if (!mDraft.IsFixed(slot)) {
    row.terms.push_back({slot, factor});
    return true;
  }
  std::int64_t product = mDraft.integers(slot).lower;
  return factor != IntegerRange::kMin && MultiplyBy(product, -factor) &&
         AddTo(row.constant, product);
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

void LinearRows::Append(Row&& row) {
  const auto index = static_cast<std::uint32_t>(mRows.size());
  for (const Term& term : row.terms) {
    mUses.push_back({index, mFirstUse[term.slot]});
    mFirstUse[term.slot] = static_cast<std::uint32_t>(mUses.size() - 1);
  }
  mRows.push_back(std::move(row));
  mMerged.push_back(index);
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

/// The living rows in which the slot may stand, in their order.
void LinearRows::CollectRows(Slot slot) {
  mFound.clear();
  std::size_t uses = 0;
  for (std::uint32_t use = mFirstUse[slot]; use != kNone; use = mUses[use].next, ++uses)
    if (const std::uint32_t row = FindRow(mUses[use].row); mRows[row].isAlive)
      mFound.push_back(row);
  std::sort(mFound.begin(), mFound.end());
  mFound.erase(std::unique(mFound.begin(), mFound.end()), mFound.end());
  mIsOnce = uses == mFound.size();
}

void LinearRows::Eliminate(const std::vector<bool>& isNeeded) {
  for (Slot slot = 0; slot < mFirstUse.size(); ++slot)
    if (mFirstUse[slot] != kNone && CanGiveWay(slot)) EliminateSlot(slot, isNeeded[slot]);
  // Large models shall not hold what they no longer need.
  mUses = std::vector<Use>();
  mFirstUse = mMerged = std::vector<std::uint32_t>();
  for (Row& row : mRows)
    if (row.isAlive) Normalize(row);
  std::erase_if(mRows, [](const Row& row) { return !row.isAlive; });
}

void LinearRows::EliminateSlot(Slot slot, bool isNeeded) {
  CollectRows(slot);
  std::uint32_t definition = kNone;
  bool isMoved = false;
  for (const std::uint32_t index : mFound) {
    const Row& row = mRows[index];
    if (row.relation != Relation::kEqual || row.truth != kNone) continue;
    const std::int64_t factor = FactorOf(row, slot);
    if (factor != 1 && factor != -1) continue;
    isMoved = row.terms.size() == 2;
    definition = index;
    if (isMoved) break;
  }
  if (definition == kNone) return;
  if (!isMoved && (isNeeded || mFound.size() != 2)) {
    // A value that only its definition speaks of needs no rule.
    if (!isNeeded && mFound.size() == 1) mRows[definition].isAlive = false;
    return;
  }
  bool isGone = !isNeeded;
  for (const std::uint32_t row : std::vector<std::uint32_t>(mFound))
    if (row != definition)
      isGone = Substitute(slot, definition, row, isMoved || isNeeded) && isGone;
  if (isGone && isMoved) mRows[definition].isAlive = false;
}

/// From the back, where the terms that came last are.
std::int64_t LinearRows::FactorOf(const Row& row, Slot slot) const {
  std::int64_t sum = 0;
  for (auto term = row.terms.rbegin(); term != row.terms.rend(); ++term) {
    if (term->slot != slot) continue;
    if (mIsOnce) return term->factor;
    if (!AddTo(sum, term->factor)) return IntegerRange::kMin;
  }
  return sum;
}

/// Puts the definition in the place of the slot; the row is the target's afterwards. False, and
/// nothing is changed, where a number would get too large.
bool LinearRows::Substitute(Slot slot, std::uint32_t definition, std::uint32_t target,
                            bool keepsDefinition) {
  Row& from = mRows[definition];
  Row& to = mRows[target];
  const std::int64_t own = FactorOf(from, slot), other = FactorOf(to, slot);
  if (other == 0) return true;
  // to + scale * from has no more of the slot.
  if (other == IntegerRange::kMin) return false;
  const std::int64_t scale = own == 1 ? -other : other;
  std::int64_t constant = from.constant;
  if (!MultiplyBy(constant, scale) || !AddTo(constant, to.constant)) return false;
  const auto overflows = [scale](const Term& term) {
    std::int64_t factor = term.factor;
    return !MultiplyBy(factor, scale);
  };
  if (scale != 1 && std::any_of(from.terms.begin(), from.terms.end(), overflows)) return false;
  std::vector<Term> added = keepsDefinition ? from.terms : std::move(from.terms);
  if (scale != 1)
    for (Term& term : added) term.factor *= scale;
  const auto isSlot = [slot](const Term& term) { return term.slot == slot; };
  const auto remove = [&](std::vector<Term>& terms) {
    if (!mIsOnce) {
      std::erase_if(terms, isSlot);
    } else {
      terms.erase(std::next(std::find_if(terms.rbegin(), terms.rend(), isSlot)).base());
    }
  };
  remove(added);
  remove(to.terms);
  // The longer one stays where it is: a sum of many terms is built in a time that is linear.
  if (added.size() > to.terms.size()) std::swap(added, to.terms);
  to.terms.insert(to.terms.end(), added.begin(), added.end());
  to.constant = constant;
  if (!keepsDefinition) {
    from.isAlive = false;
    mMerged[definition] = target;
    return true;
  }
  for (const Term& term : from.terms) {
    if (term.slot == slot) continue;
    mUses.push_back({target, mFirstUse[term.slot]});
    mFirstUse[term.slot] = static_cast<std::uint32_t>(mUses.size() - 1);
  }
  return true;
}

// --- What is left -----------------------------------------------------------------------------

/// Unites terms of one slot and divides by the common factor.
void LinearRows::Normalize(Row& row) {
  std::stable_sort(row.terms.begin(), row.terms.end(),
                   [](const Term& x, const Term& y) { return x.slot < y.slot; });
  std::vector<Term> terms;
  for (const Term& term : row.terms)
    if (terms.empty() || terms.back().slot != term.slot || !AddTo(terms.back().factor, term.factor))
      terms.push_back(term);
  std::erase_if(terms, [](const Term& term) { return term.factor == 0; });
  std::int64_t common = 0;
  for (const Term& term : terms) common = std::gcd(common, term.factor);
  row.terms = std::move(terms);
  if (common > 1) {
    const bool divides = row.constant % common == 0;
    if (!divides && row.relation != Relation::kLessOrEqual) {
      row.terms.clear();
      row.constant = 1;  // 0 = 1, 0 <> 1
      return Conclude(row);
    }
    for (Term& term : row.terms) term.factor /= common;
    const std::int64_t rest = row.constant % common;
    row.constant = row.constant / common - (rest < 0 ? 1 : 0);
  }
  if (row.terms.size() < 2) return Conclude(row);
  if (row.relation != Relation::kLessOrEqual && row.terms[0].factor < 0) Mirror(row);
}

/// Both sides with the other sign, where these exist.
void LinearRows::Mirror(Row& row) {
  const auto isLeast = [](const Term& term) { return term.factor == IntegerRange::kMin; };
  if (row.constant == IntegerRange::kMin ||
      std::any_of(row.terms.begin(), row.terms.end(), isLeast))
    return;
  row.constant = -row.constant;
  for (Term& term : row.terms) term.factor = -term.factor;
}

/// A row of no or one slot says what the slot, or the truth value, is.
void LinearRows::Conclude(Row& row) {
  if (row.terms.empty()) {
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
  const auto [slot, factor] = row.terms[0];
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
