#include "framework/engine/detail/Compiler.h"

#include <algorithm>
#include <utility>

#include "framework/engine/Engine.h"
#include "framework/engine/detail/NetworkReader.h"
#include "framework/engine/detail/Relations.h"
#include "framework/engine/detail/SearchedSlots.h"
#include "framework/engine/detail/Simplifier.h"
#include "framework/solver/ZULTaVoNetwork.h"

namespace zultav::engine {

namespace {

// The widest integer whose values are kept one by one.
constexpr std::uint64_t kWidestSet = 4096;
// What a propagation before the search may take.
constexpr std::uint64_t kRunsPerRule = 20, kRunsAtLeast = 10000;
// Shorter sums of truth values are not worth a rule of their own.
constexpr std::uint32_t kFewestCounted = 4;

}  // namespace

Compiler::Compiler(Program& program, const ZULTaVoNetwork& network,
                   std::span<ZULTaVoAny* const> declared, std::span<ZULTaVoAny* const> observed)
    : mProgram(program), mBuilder(program), mDraft(ReadNetwork(network, declared, observed)) {}

void Compiler::Compile() {
  Simplify(mDraft);
  Flags isTaken;
  LinearRows linear(mDraft, isTaken);
  if (!linear.GetRows().empty()) linear.Eliminate(FindNeeded(isTaken, nullptr));
  Gates gates(mDraft);
  const auto isTruth = [](const SlotInfo& info) { return info.isBoolean; };
  if (std::any_of(mDraft.slots.begin(), mDraft.slots.end(), isTruth))
    gates.Take(isTaken, FindNeeded(isTaken, &linear));
  Flags isNeeded;
  if (gates.GetClauses().GetSize() != 0) {
    isNeeded = FindNeeded(isTaken, nullptr);
    for (const LinearRows::Row& row : linear.GetRows())
      linear.ForEachTerm(row, [&](Slot x, std::int64_t) { isNeeded[x] = true; });
  }
  const Conditions conditions(mDraft, linear, gates.GetClauses(), isNeeded);

  mProgram.mSlots = std::move(mDraft.slots);
  mProgram.mInitial = std::move(mDraft.initial);
  mProgram.mDeclared = std::move(mDraft.declared);
  mProgram.mObserved = std::move(mDraft.observed);
  mProgram.mSlotOfObject = std::move(mDraft.slotOfObject);
  mProgram.mInfeasible = mDraft.infeasible;
  // What grows step by step holds more than it needs.
  std::size_t arguments = 0;
  for (const LinearRows::Row& row : linear.GetRows())
    arguments += row.count + (row.truth != kNone ? 1 : 0);
  mProgram.mRules.reserve(linear.GetRows().size());
  mProgram.mArguments.reserve(arguments);
  for (std::size_t i = 0; i < linear.GetRows().size(); ++i)
    EmitRow(linear, linear.GetRows()[i], conditions.GetCondition(i));
  linear.Clear();
  for (std::size_t i = 0; i < gates.GetClauses().GetSize(); ++i)
    if (!conditions.IsAbsorbed(i)) mBuilder.AddClause(gates.GetClauses()[i]);
  EmitFormulas(isTaken);
  mProgram.mHasVastNumbers = LeavesComparison(isTaken);
  for (const Group& group : mDraft.groups) EmitGroup(group);
  for (const Draft::Hole& hole : mDraft.holes) {
    const Slot value = mBuilder.AddSlot({.isConstant = true}, IntegerRange::Only(hole.value));
    mBuilder.AddUnequal(hole.slot, value, 0);
  }
  mProgram.mFormulas = std::move(mDraft.formulas);
  mProgram.mComparisons = std::move(mDraft.comparisons);
  mProgram.mGroups = std::move(mDraft.groups);
  mBuilder.AddReals();
  FindSearched();
  if (mProgram.mInfeasible) return mBuilder.Finish();
  FindHoled();
  Presolve();
  KeepValues();
  mBuilder.Finish();
}

/// What is asked for beside the rows; where there are rows, beside what is said of truth values
/// alone.
Flags Compiler::FindNeeded(const Flags& isTaken, const LinearRows* rows) const {
  Flags isNeeded(mDraft.slots.size(), false);
  const auto need = [&](std::initializer_list<Slot> slots) {
    for (const Slot x : slots)
      if (x != kNone) isNeeded[x] = true;
  };
  for (std::size_t i = 0; i < mDraft.formulas.size(); ++i) {
    const auto [function, result, first, second] = mDraft.formulas[i];
    const bool isGate = IsTruth(result) && IsTruth(first) && IsTruth(second);
    if (!isTaken[i] && !(isGate && rows != nullptr)) need({result, first, second});
  }
  for (std::size_t i = 0; i < mDraft.comparisons.size(); ++i) {
    const auto [relation, left, right, truth] = mDraft.comparisons[i];
    const bool isGate = IsTruth(left) && IsTruth(right);
    if (!isTaken[mDraft.formulas.size() + i] && !(isGate && rows != nullptr))
      need({left, right, truth});
  }
  for (const Slot declared : mDraft.declared) need({declared});
  for (const Slot observed : mDraft.observed) need({observed});
  for (const Draft::Hole& hole : mDraft.holes) need({hole.slot});
  for (const Group& group : mDraft.groups)
    if (group.code != Code::kCount)
      for (const Slot slot : group.slots) need({slot});
  if (rows == nullptr) return isNeeded;
  for (const LinearRows::Row& row : rows->GetRows()) {
    rows->ForEachTerm(row, [&](Slot x, std::int64_t) { need({x}); });
    need({row.truth});
  }
  return isNeeded;
}

void Compiler::EmitRow(const LinearRows& linear, const LinearRows::Row& row,
                       const std::optional<Conditions::Condition>& condition) {
  std::vector<Slot>& slots = mRowSlots;
  std::vector<std::int64_t>& factors = mRowFactors;
  slots.clear();
  factors.clear();
  slots.reserve(row.count);
  factors.reserve(row.count);
  linear.ForEachTerm(row, [&](Slot slot, std::int64_t factor) {
    slots.push_back(slot);
    factors.push_back(factor);
  });
  const bool isDifference =
      factors.size() == 2 && factors[0] == -factors[1] && (factors[0] == 1 || factors[0] == -1);
  if (isDifference && row.relation == Relation::kUnequal && row.truth == kNone) {
    const std::size_t first = factors[0] == 1 ? 0 : 1;
    mBuilder.AddUnequal(slots[first], slots[1 - first], row.constant);
    return;
  }
  if (EmitCount(row)) return;
  if (!condition) return mBuilder.AddLinear(row.relation, slots, factors, row.constant, row.truth);
  Relation relation = row.relation;
  std::int64_t constant = row.constant;
  if (condition->isOpposite) {
    if (relation == Relation::kLessOrEqual) {
      for (std::int64_t& factor : factors) factor = -factor;
      constant = -1 - constant;
    } else {
      relation = relation == Relation::kEqual ? Relation::kUnequal : Relation::kEqual;
    }
  }
  mBuilder.AddConditional(condition->literal, relation, slots, factors, constant);
}

/// A sum of truth values that equals a number, known or not, is counted, which takes less time.
bool Compiler::EmitCount(const LinearRows::Row& row) {
  if (row.relation != Relation::kEqual || row.truth != kNone || row.count < kFewestCounted)
    return false;
  std::vector<Slot>& slots = mRowSlots;
  const auto isNumber = [this](Slot x) { return !mProgram.mSlots[x].isBoolean; };
  const auto at = std::find_if(slots.begin(), slots.end(), isNumber) - slots.begin();
  const auto number = static_cast<std::size_t>(at);
  const bool isKnown = number == slots.size();
  const std::int64_t factor = mRowFactors[number == 0 ? 1 : 0];
  for (std::size_t i = 0; i < slots.size(); ++i)
    if (mRowFactors[i] != (i == number ? -factor : factor) || (i != number && isNumber(slots[i])))
      return false;
  if ((factor != 1 && factor != -1) || (!isKnown && row.constant != 0)) return false;
  const Slot count =
      isKnown ? mBuilder.AddSlot({.isConstant = true}, IntegerRange::Only(factor * row.constant))
              : slots[number];
  if (!isKnown) slots.erase(slots.begin() + at);
  mBuilder.AddCount(count, slots);
  return true;
}

void Compiler::EmitGroup(const Group& group) {
  switch (group.code) {
    case Code::kAllDifferent:
      if (!mBuilder.AddAllDifferent(group.slots)) mProgram.mInfeasible = true;
      break;
    case Code::kPrimality:
      mBuilder.AddPrimality(group.slots[0], group.slots[1]);
      break;
    case Code::kRelation:
      mBuilder.AddRelation(group.constraint, group.slots);
      break;
    case Code::kFilter:
      mBuilder.AddFilter(group.constraint, group.slots);
      break;
    default:
      break;  // a count is a row
  }
}

void Compiler::EmitFormulas(const Flags& isTaken) {
  for (std::size_t i = 0; i < mDraft.formulas.size(); ++i) {
    const Formula& formula = mDraft.formulas[i];
    const bool isInteger = mProgram.mSlots[formula.result].kind == Kind::kInteger &&
                           mProgram.mSlots[formula.first].kind == Kind::kInteger &&
                           mProgram.mSlots[formula.second].kind == Kind::kInteger;
    if (!isTaken[i] && isInteger)
      mBuilder.AddFunction(formula.function, formula.result, formula.first, formula.second);
  }
}

/// Whether a comparison of integers is said by no rule.
bool Compiler::LeavesComparison(const Flags& isTaken) const {
  for (std::size_t i = 0; i < mDraft.comparisons.size(); ++i) {
    const auto& [relation, left, right, truth] = mDraft.comparisons[i];
    const bool isOfIntegers = mProgram.mSlots[left].kind == Kind::kInteger &&
                              mProgram.mSlots[right].kind == Kind::kInteger;
    const bool isGate = mProgram.mSlots[left].isBoolean && mProgram.mSlots[right].isBoolean;
    if (isOfIntegers && !isGate && !isTaken[mDraft.formulas.size() + i]) return true;
  }
  return false;
}

void Compiler::FindSearched() {
  for (const Slot slot : mProgram.mArguments) mProgram.mSlots[slot].isUsed = true;
  for (const Slot slot : mProgram.mDeclared) mProgram.mSlots[slot].isSearched = true;
  const auto isHidden = [](const SlotInfo& info) {
    return info.isUsed && info.kind == Kind::kInteger && !info.isSearched && !info.isConstant;
  };
  if (std::none_of(mProgram.mSlots.begin(), mProgram.mSlots.end(), isHidden)) return;
  const std::vector<bool> isSearched = FindSearchedSlots(mProgram);
  for (Slot slot = 0; slot < mProgram.mSlots.size(); ++slot)
    if (isHidden(mProgram.mSlots[slot])) mProgram.mSlots[slot].isSearched = isSearched[slot];
}

/// Marks integers from which single values are taken.
void Compiler::FindHoled() {
  for (const Rule& rule : mProgram.mRules) {
    const std::span<const Slot> slots = mProgram.GetArguments(rule);
    if (rule.code == Code::kUnequal || rule.code == Code::kAllDifferent)
      for (const Slot x : slots) mProgram.mSlots[x].isHoled = true;
    for (std::size_t i = 0; rule.code == Code::kRelation && i < slots.size(); ++i)
      if (Relations::WantsValues(mProgram.GetNumbers(rule)[i + 2]) &&
          mProgram.mSlots[slots[i]].kind == Kind::kInteger)
        mProgram.mSlots[slots[i]].isHoled = true;
  }
}

bool Compiler::IsNarrow(Slot x) const {
  const IntegerRange range = mProgram.GetInitialIntegers(x);
  return range.IsBounded() &&
         static_cast<std::uint64_t>(range.upper) - static_cast<std::uint64_t>(range.lower) <
             kWidestSet;
}

/// Narrows integers by propagation where that is needed to keep sets of their values: results of
/// functions have no bounds of their own.
void Compiler::Presolve() {
  bool areNarrow = true;
  for (Slot x = 0; x < mProgram.mSlots.size(); ++x)
    areNarrow = areNarrow && (!mProgram.mSlots[x].isHoled || IsNarrow(x));
  if (areNarrow) return;
  Program draft = mProgram;
  ProgramBuilder(draft).Finish();
  Engine engine(draft, nullptr);
  engine.SetRunLimit(kRunsPerRule * draft.GetRules().size() + kRunsAtLeast);
  engine.ScheduleAll();
  if (engine.Propagate() == Engine::Status::kFailed) {
    mProgram.mInfeasible = true;
    return;
  }
  for (Slot x = 0; x < mProgram.mSlots.size(); ++x) {
    if (mProgram.mSlots[x].kind != Kind::kInteger || mProgram.mSlots[x].isConstant) continue;
    mProgram.mInitial[2 * std::size_t{x}] = engine.GetLower(x);
    mProgram.mInitial[2 * std::size_t{x} + 1] = engine.GetUpper(x);
  }
}

void Compiler::KeepValues() {
  for (Slot x = 0; x < mProgram.mSlots.size(); ++x)
    if (mProgram.mSlots[x].isHoled && !mProgram.mSlots[x].isConstant && IsNarrow(x))
      mBuilder.KeepValues(x);
}

}  // namespace zultav::engine
