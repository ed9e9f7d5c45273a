#include "framework/engine/reals/RealSystem.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <utility>

#include "framework/engine/reals/DifferenceBounds.h"

namespace zultav::engine {

namespace {

constexpr RealRange kZero = {0, 0};
constexpr RealRange kTwo = {2, 2};

}  // namespace

/// Sorts formulas and comparisons into operations and statements.
class RealSystemBuilder {
 public:
  RealSystemBuilder(RealSystem& system, const Program& program)
      : mSystem(system), mProgram(program) {}

  void Build() {
    const std::size_t slots = mProgram.GetNumberOfSlots();
    mTermOf.assign(slots, kNone);
    for (const auto* list : {&mProgram.GetDeclared(), &mProgram.GetObserved()})
      for (const Slot slot : *list)
        if (IsReal(slot)) TermOf(slot);
    // What others narrow is no abbreviation either.
    for (const Group& group : mProgram.GetGroups())
      for (const Slot slot : group.slots)
        if (IsReal(slot)) TermOf(slot);
    const auto named = static_cast<std::uint32_t>(mSystem.mTerms.size());
    for (const Formula& formula : mProgram.GetFormulas()) Read(formula);
    for (const Comparison& comparison : mProgram.GetComparisons()) Read(comparison);
    for (std::uint32_t term = 0; term < mSystem.mTerms.size(); ++term) {
      // A hidden value of which something is known is no mere abbreviation.
      const bool isFree = mSystem.mTerms[term].initial == RealRange();
      if (!IsGiven(term) && term >= named && isFree) continue;
      if (!IsGiven(term)) mSystem.mUnknowns.push_back(term);
      SetKnown(term);
    }
    Eliminate();
    for (const Entry& entry : mEntries)
      if (!entry.used) AddEquation(entry);
    for (const Comparison& comparison : mConditions)
      AddStatement({comparison.relation, TermOf(comparison.left), TermOf(comparison.right)},
                   comparison.truth);
    Trace();
    mSystem.mInfeasible = mDifferences.Contradict();
  }

 private:
  /// result = function(first, second); relations between operands alone are kIdentity.
  struct Entry {
    Function function;
    std::uint32_t result, first, second;
    unsigned int open = 0;  // how many places are not known yet
    bool used = false;

    template <class Visit>
    void ForEach(Visit visit) const {
      visit(result);
      visit(first);
      if (RowOf(function).operands > 1) visit(second);
    }
  };

  bool IsReal(Slot slot) const { return mProgram.GetSlot(slot).kind == Kind::kReal; }
  /// Whether the term is neither an unknown nor computed.
  bool IsGiven(std::uint32_t term) const {
    return mSystem.mTerms[term].isConstant || mSystem.mTerms[term].isInteger;
  }
  bool IsNumber(std::uint32_t term, const RealRange& number) const {
    return mSystem.mTerms[term].isConstant && mSystem.mTerms[term].initial == number;
  }

  std::uint32_t NewTerm(const RealSystem::Term& term) {
    mSystem.mTerms.push_back(term);
    mUses.emplace_back();
    mIsKnown.push_back(false);
    mIsTotal.push_back(true);
    return static_cast<std::uint32_t>(mSystem.mTerms.size() - 1);
  }

  std::uint32_t TermOf(Slot slot) {
    std::uint32_t& term = mTermOf[slot];
    if (term != kNone) return term;
    const SlotInfo& info = mProgram.GetSlot(slot);
    RealSystem::Term made;
    made.slot = slot;
    made.isInteger = info.kind == Kind::kInteger;
    if (made.isInteger) {
      const IntegerRange range = mProgram.GetInitialIntegers(slot);
      made.initial = {LowerAsDouble(range), UpperAsDouble(range)};
      made.isConstant = range.IsScalar();
    } else {
      made.initial = mProgram.GetInitialReals(slot);
      made.isConstant = info.isConstant;
    }
    return term = NewTerm(made);
  }

  void Read(const Formula& formula) {
    const auto& [function, result, first, second] = formula;
    if (!IsReal(result) && !IsReal(first) && !IsReal(second)) return;
    AddEntry(function, TermOf(result), TermOf(first), TermOf(second));
    const RealSystem::Term &x = mSystem.mTerms[TermOf(first)], &y = mSystem.mTerms[TermOf(second)];
    if (function == Function::kSum && y.isConstant)
      mDifferences.AddShift(TermOf(result), TermOf(first), y.initial);
    else if (function == Function::kSum && x.isConstant)
      mDifferences.AddShift(TermOf(result), TermOf(second), x.initial);
  }

  void Read(const Comparison& comparison) {
    const auto& [relation, left, right, truth] = comparison;
    if (!IsReal(left) && !IsReal(right)) return;
    const std::uint32_t x = TermOf(left), y = TermOf(right);
    if (truth == kNone) mDifferences.AddRelation(relation, x, y);
    if (relation == Relation::kEqual && truth == kNone) {
      if (left != right) AddEntry(Function::kIdentity, x, y, y);
    } else {
      mConditions.push_back(comparison);
    }
  }

  void AddEntry(Function function, std::uint32_t result, std::uint32_t first,
                std::uint32_t second) {
    Entry entry{function, result, first, second};
    const auto index = static_cast<std::uint32_t>(mEntries.size());
    entry.ForEach([&](std::uint32_t term) {
      mUses[term].push_back(index);
      ++entry.open;
    });
    mEntries.push_back(entry);
  }

  void SetKnown(std::uint32_t term) {
    mIsKnown[term] = true;
    for (const std::uint32_t index : mUses[term]) {
      // Two open places may be the same value twice, which gives no function.
      if (--mEntries[index].open == 1) mReady.push_back(index);
    }
  }

  /// Finds functions for the values that are not known; makes unknowns of the others.
  void Eliminate() {
    std::uint32_t next = 0;
    for (;;) {
      while (!mReady.empty()) {
        const std::uint32_t index = mReady.front();
        mReady.pop_front();
        if (mEntries[index].open == 1 && !mEntries[index].used) Define(mEntries[index]);
      }
      while (next < mIsKnown.size() && mIsKnown[next]) ++next;
      if (next == mIsKnown.size()) return;
      mSystem.mUnknowns.push_back(next);
      SetKnown(next);
    }
  }

  /// Takes an entry as the function that gives its one value that is not known.
  void Define(Entry& entry) {
    const auto& [function, result, first, second, open, used] = entry;
    const FunctionRow& row = RowOf(function);
    if (!mIsKnown[result]) return Define(entry, function, result, first, second);
    if (!row.hasInverse) return;
    const std::uint32_t given = mIsKnown[first] ? first : second;
    // A product that is 0 says nothing of one factor where the other one may be 0.
    if (row.operands > 1 &&
        !RowOf(row.inverse)
             .isContinuous(mSystem.mTerms[result].initial, mSystem.mTerms[given].initial))
      return;
    if (function == Function::kSqrt)
      AddStatement({Relation::kLessOrEqual, Constant(kZero), result}, kNone);
    const bool isFirst = !mIsKnown[first];
    const std::uint32_t other = isFirst ? second : first;
    Define(entry, row.inverse, isFirst ? first : second, result, row.operands > 1 ? other : result);
  }

  void Define(Entry& entry, Function function, std::uint32_t target, std::uint32_t first,
              std::uint32_t second) {
    entry.used = true;
    AddOperation(function, target, first, second);
    SetKnown(target);
  }

  void AddOperation(Function function, std::uint32_t target, std::uint32_t first,
                    std::uint32_t second) {
    const bool isSquare = (function == Function::kProduct && first == second) ||
                          (function == Function::kPower && IsNumber(second, kTwo));
    const bool isZero = function == Function::kProduct && mIsTotal[first] && mIsTotal[second] &&
                        (IsNumber(first, kZero) || IsNumber(second, kZero));
    const RealRange &x = mSystem.mTerms[first].initial, &y = mSystem.mTerms[second].initial;
    const bool isPartial = RowOf(function).isPartial && !RowOf(function).isContinuous(x, y);
    mIsTotal[target] = mIsTotal[first] && mIsTotal[second] && !isPartial;
    auto& operations = mSystem.mOperations;
    if (isZero) {
      // Whatever the other factor is, and however it jumps.
      const std::uint32_t zero = IsNumber(first, kZero) ? first : second;
      operations.push_back({Function::kIdentity, target, zero, zero, false});
    } else if (isSquare) {
      operations.push_back({Function::kSquare, target, first, first, false});
    } else {
      operations.push_back({function, target, first, second, isPartial});
    }
  }

  std::uint32_t Constant(const RealRange& number) {
    RealSystem::Term term;
    term.initial = number;
    term.isConstant = true;
    const std::uint32_t made = NewTerm(term);
    mIsKnown[made] = true;
    return made;
  }

  /// The value of the function takes a term of its own.
  void AddEquation(const Entry& entry) {
    std::uint32_t left = entry.first;
    if (entry.function != Function::kIdentity) {
      left = NewTerm({});
      AddOperation(entry.function, left, entry.first, entry.second);
    }
    AddStatement({Relation::kEqual, left, entry.result}, kNone);
  }

  void AddStatement(const RealSystem::Claim& claim, Slot truth) {
    mSystem.mStatements.push_back({claim, truth, {}, {}, {}, {}, true});
  }

  /// Finds what statements depend on. Results of operations that several statements speak of keep
  /// their slots, so that what one statement finds out helps the others.
  void Trace() {
    const std::size_t terms = mSystem.mTerms.size();
    std::vector<std::uint32_t> seen(terms, kNone), operationOf(terms, kNone),
        unknownOf(terms, kNone), uses(terms, 0), open;
    for (std::uint32_t i = 0; i < mSystem.mOperations.size(); ++i)
      operationOf[mSystem.mOperations[i].target] = i;
    for (std::uint32_t i = 0; i < mSystem.mUnknowns.size(); ++i)
      unknownOf[mSystem.mUnknowns[i]] = i;
    std::uint32_t round = 0;
    for (RealSystem::Statement& statement : mSystem.mStatements) {
      open = {statement.claim.left, statement.claim.right};
      while (!open.empty()) {
        const std::uint32_t term = open.back();
        open.pop_back();
        if (std::exchange(seen[term], round) == round) continue;
        if (unknownOf[term] != kNone) statement.unknowns.push_back(unknownOf[term]);
        if (mSystem.mTerms[term].isInteger && !mSystem.mTerms[term].isConstant)
          statement.leaves.push_back(term);
        const std::uint32_t operation = operationOf[term];
        if (operation == kNone) continue;
        ++uses[term];
        const auto& [function, target, first, second, isPartial] = mSystem.mOperations[operation];
        statement.operations.push_back(operation);
        statement.isTotal = statement.isTotal && !isPartial;
        open.push_back(first);
        open.push_back(second);
      }
      std::sort(statement.operations.rbegin(), statement.operations.rend());
      std::sort(statement.unknowns.begin(), statement.unknowns.end());
      std::vector<std::uint32_t> integers = std::move(statement.leaves);
      statement.leaves.clear();
      for (const std::uint32_t unknown : statement.unknowns)
        statement.leaves.push_back(mSystem.mUnknowns[unknown]);
      statement.leaves.insert(statement.leaves.end(), integers.begin(), integers.end());
      ++round;
    }
    for (RealSystem::Statement& statement : mSystem.mStatements)
      for (const std::uint32_t operation : statement.operations) {
        const std::uint32_t target = mSystem.mOperations[operation].target;
        if (uses[target] > 1 && mSystem.mTerms[target].slot != kNone)
          statement.shared.push_back(target);
      }
  }

  RealSystem& mSystem;
  const Program& mProgram;
  std::vector<std::uint32_t> mTermOf;  // of each slot
  std::vector<Entry> mEntries;
  std::vector<Comparison> mConditions;
  std::vector<std::vector<std::uint32_t>> mUses;  // entries of each term
  std::vector<bool> mIsKnown, mIsTotal;
  std::deque<std::uint32_t> mReady;
  DifferenceBounds mDifferences;
};

RealSystem::RealSystem(const Program& program) { RealSystemBuilder(*this, program).Build(); }

std::vector<Slot> RealSystem::GetSlots(const Statement& statement) const {
  std::vector<Slot> slots;
  for (const auto* terms : {&statement.leaves, &statement.shared})
    for (const std::uint32_t term : *terms) slots.push_back(mTerms[term].slot);
  if (statement.truth != kNone) slots.push_back(statement.truth);
  return slots;
}

std::vector<bool> RealSystem::FindEven() const {
  std::vector<bool> even(mTerms.size(), true);
  for (const auto& [function, target, first, second, isPartial] : mOperations) {
    if (RowOf(function).isEven) continue;
    const RealRange& exponent = mTerms[second].initial;
    const bool isEvenPower = function == Function::kPower && mTerms[second].isConstant &&
                             exponent.IsScalar() && std::fmod(exponent.lower, 2) == 0;
    even[first] = even[first] && isEvenPower;
    even[second] = false;
  }
  for (const Statement& statement : mStatements)
    even[statement.claim.left] = even[statement.claim.right] = false;
  std::vector<bool> unknowns;
  for (const std::uint32_t term : mUnknowns)
    unknowns.push_back(even[term] && mTerms[term].initial.lower == -mTerms[term].initial.upper);
  return unknowns;
}

RealSystem::Claim RealSystem::Claim::GetNegation() const {
  switch (relation) {
    case Relation::kEqual:
      return {Relation::kUnequal, left, right};
    case Relation::kUnequal:
      return {Relation::kEqual, left, right};
    case Relation::kLess:
      return {Relation::kLessOrEqual, right, left};
    case Relation::kLessOrEqual:
      return {Relation::kLess, right, left};
  }
  return *this;
}

bool Holds(Relation relation, const RealRange& x, const RealRange& y) {
  switch (relation) {
    case Relation::kEqual:
      return x.IsScalar() && x == y;
    case Relation::kUnequal:
      return x.upper < y.lower || y.upper < x.lower;
    case Relation::kLess:
      return x.upper < y.lower;
    case Relation::kLessOrEqual:
      return x.upper <= y.lower;
  }
  return false;
}

bool IsMuchNarrower(const RealRange& now, const RealRange& before, double share) {
  if (now == before) return false;
  if (before.IsBounded())
    return now.upper - now.lower <= (1 - share) * (before.upper - before.lower);
  const auto moved = [share](double bound, double old) {
    return bound != old && (std::isinf(old) || std::fabs(bound - old) >= share * std::fabs(old));
  };
  return moved(now.lower, before.lower) || moved(now.upper, before.upper);
}

}  // namespace zultav::engine
