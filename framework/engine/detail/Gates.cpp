#include "framework/engine/detail/Gates.h"

#include <algorithm>
#include <utility>

namespace zultav::engine {

namespace {

Literal Not(Literal literal) { return {literal.slot, !literal.negated}; }
bool AreSame(Literal x, Literal y) { return x.slot == y.slot && x.negated == y.negated; }

}  // namespace

void Gates::Take(Flags& isTaken, const Flags& isNeeded) {
  mGateOf.assign(mDraft.slots.size(), kNone);
  mLiterals.reserve(mDraft.slots.size());
  for (Slot slot = 0; slot < mDraft.slots.size(); ++slot) mLiterals.push_back({slot, false});
  ReadNegations(isTaken, isNeeded);
  ReadFormulas(isTaken);
  ReadComparisons(isTaken);
  // What gave way after a clause was read.
  for (Literal& literal : mClauses.GetLiterals())
    literal = LiteralOf(literal.slot, literal.negated);
  if (!mGates.empty()) Flatten(isNeeded);
  const ClauseList clauses = std::exchange(mClauses, ClauseList());
  mClauses.ReserveFor(clauses);
  for (std::size_t i = 0; i < clauses.GetSize(); ++i) AddClause(clauses[i]);
  for (Gate& gate : mGates)
    if (gate.isAlive) Emit(gate);
  mLiterals = std::vector<Literal>();
  mGateOf = std::vector<std::uint32_t>();
  mGates = std::vector<Gate>();
  mClause = std::vector<Literal>();
}

Literal Gates::LiteralOf(Slot x, bool negated) const {
  Literal literal = {x, negated};
  while (mLiterals[literal.slot].slot != literal.slot) {
    const Literal& other = mLiterals[literal.slot];
    literal = {other.slot, other.negated != literal.negated};
  }
  return literal;
}

void Gates::ReadNegations(Flags& isTaken, const Flags& isNeeded) {
  for (std::size_t i = 0; i < mDraft.formulas.size(); ++i) {
    const Formula& formula = mDraft.formulas[i];
    if (isTaken[i] || formula.function != Function::kNegative || !IsTruth(formula.result)) continue;
    isTaken[i] = true;
    const Literal operand = LiteralOf(formula.first, true);
    // Results come after their operands, so that no cycle of negations can arise.
    const bool givesWay = !isNeeded[formula.result] && !mDraft.IsFixed(formula.result) &&
                          formula.result > operand.slot &&
                          mLiterals[formula.result].slot == formula.result;
    if (givesWay) {
      mLiterals[formula.result] = operand;
    } else {
      mClauses.Add({LiteralOf(formula.result), Not(operand)});
      mClauses.Add({LiteralOf(formula.result, true), operand});
    }
  }
}

void Gates::ReadFormulas(Flags& isTaken) {
  for (std::size_t i = 0; i < mDraft.formulas.size(); ++i) {
    const Formula& formula = mDraft.formulas[i];
    const bool isConnective =
        formula.function == Function::kMinimum || formula.function == Function::kMaximum;
    if (isTaken[i] || !isConnective || !IsTruth(formula.result) || !IsTruth(formula.first) ||
        !IsTruth(formula.second))
      continue;
    isTaken[i] = true;
    // A conjunction is false where one of its operands is.
    const bool negated = formula.function == Function::kMinimum;
    AddGate(LiteralOf(formula.result, negated), LiteralOf(formula.first, negated),
            LiteralOf(formula.second, negated));
  }
}

void Gates::ReadComparisons(Flags& isTaken) {
  for (std::size_t i = 0; i < mDraft.comparisons.size(); ++i) {
    const Comparison& comparison = mDraft.comparisons[i];
    if (isTaken[mDraft.formulas.size() + i] || !IsTruth(comparison.left) ||
        !IsTruth(comparison.right))
      continue;
    isTaken[mDraft.formulas.size() + i] = true;
    const Literal left = LiteralOf(comparison.left), right = LiteralOf(comparison.right);
    const bool isReified = comparison.truth != kNone;
    const Literal truth = isReified ? LiteralOf(comparison.truth) : Literal{kNone, false};
    switch (comparison.relation) {
      case Relation::kEqual:
        AddEquivalence(isReified ? &truth : nullptr, left, right);
        break;
      case Relation::kUnequal:
        AddEquivalence(isReified ? &truth : nullptr, left, Not(right));
        break;
      case Relation::kLess:
        if (isReified) {
          AddGate(Not(truth), left, Not(right));
        } else {
          mClauses.Add({Not(left)});
          mClauses.Add({right});
        }
        break;
      case Relation::kLessOrEqual:
        if (isReified)
          AddGate(truth, Not(left), right);
        else
          mClauses.Add({Not(left), right});
        break;
    }
  }
}

/// truth (null: it holds) says whether first and second are the same.
void Gates::AddEquivalence(const Literal* truth, Literal first, Literal second) {
  if (truth == nullptr) {
    mClauses.Add({Not(first), second});
    mClauses.Add({first, Not(second)});
    return;
  }
  mClauses.Add({Not(first), second, Not(*truth)});
  mClauses.Add({first, Not(second), Not(*truth)});
  mClauses.Add({first, second, *truth});
  mClauses.Add({Not(first), Not(second), *truth});
}

void Gates::AddGate(Literal output, Literal first, Literal second) {
  mGates.push_back({
      output, {first, second}
  });
}

/// Literals that are outputs of gates which serve nothing else are replaced by the inputs of these.
void Gates::Flatten(const Flags& isNeeded) {
  std::vector<std::uint32_t> uses(mDraft.slots.size(), 0), outputs(mDraft.slots.size(), 0);
  for (const Literal& literal : mClauses.GetLiterals()) ++uses[literal.slot];
  for (std::uint32_t i = 0; i < mGates.size(); ++i) {
    mGateOf[mGates[i].output.slot] = i;
    ++outputs[mGates[i].output.slot];
    for (const Literal& input : mGates[i].inputs) ++uses[input.slot];
  }
  const auto flatten = [&](std::span<const Literal> literals, std::size_t before) {
    std::vector<Literal> flat;
    for (const Literal& literal : literals) {
      const std::uint32_t gate = mGateOf[literal.slot];
      const bool givesWay = gate < before && !isNeeded[literal.slot] &&
                            !mDraft.IsFixed(literal.slot) && uses[literal.slot] == 1 &&
                            outputs[literal.slot] == 1 && AreSame(mGates[gate].output, literal);
      if (!givesWay) {
        flat.push_back(literal);
        continue;
      }
      mGates[gate].isAlive = false;
      std::vector<Literal>& moved = mGates[gate].inputs;
      if (moved.size() > flat.size()) std::swap(moved, flat);
      flat.insert(flat.end(), moved.begin(), moved.end());
    }
    return flat;
  };
  // Only of gates that come before, so that none becomes part of itself.
  for (std::size_t i = 0; i < mGates.size(); ++i) mGates[i].inputs = flatten(mGates[i].inputs, i);
  const ClauseList clauses = std::exchange(mClauses, ClauseList());
  mClauses.ReserveFor(clauses);
  for (std::size_t i = 0; i < clauses.GetSize(); ++i)
    mClauses.Add(flatten(clauses[i], mGates.size()));
}

void Gates::Emit(Gate& gate) {
  for (const Literal& input : gate.inputs) {
    const Literal implied[] = {gate.output, Not(input)};
    AddClause(implied);
  }
  gate.inputs.push_back(Not(gate.output));
  AddClause(gate.inputs);
}

/// Without literals that are known to be false, and not at all where one is known to hold.
void Gates::AddClause(std::span<const Literal> clause) {
  std::vector<Literal>& literals = mClause;
  literals.assign(clause.begin(), clause.end());
  const auto holds = [this](const Literal& literal) {
    const IntegerRange range = mDraft.integers(literal.slot);
    return literal.negated ? range.upper <= 0 : range.lower > 0;
  };
  std::sort(literals.begin(), literals.end(), [](const Literal& x, const Literal& y) {
    return std::pair(x.slot, x.negated) < std::pair(y.slot, y.negated);
  });
  literals.erase(std::unique(literals.begin(), literals.end(), AreSame), literals.end());
  std::erase_if(literals, [&](const Literal& literal) { return holds(Not(literal)); });
  for (std::size_t i = 0; i < literals.size(); ++i)
    if (holds(literals[i]) || (i > 0 && literals[i].slot == literals[i - 1].slot)) return;
  if (literals.empty()) mDraft.infeasible = true;
  if (literals.size() == 1)
    mDraft.Narrow(literals[0].slot, IntegerRange::Only(literals[0].negated ? 0 : 1));
  else if (!literals.empty())
    mClauses.Add(literals);
}

}  // namespace zultav::engine
