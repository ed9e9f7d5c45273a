#include "framework/engine/reals/StatementRunner.h"

#include <algorithm>

#include "framework/engine/Engine.h"
#include "framework/engine/reals/Evaluate.h"

namespace zultav::engine {

namespace {

/// Whether the claim is all that the statement says: no operand has to be where a function is
/// defined, and no result where other statements have found it.
bool MayRetire(const RealSystem::Statement& statement) {
  return statement.isTotal && statement.shared.empty();
}

}  // namespace

StatementRunner::StatementRunner(const RealSystem& system) : mSystem(system) {
  const auto& terms = system.GetTerms();
  mValues.resize(terms.size());
  mForward.resize(terms.size());
  mGiven.resize(terms.size());
  mSharedSlots.resize(terms.size(), kNone);
  for (std::size_t i = 0; i < terms.size(); ++i) {
    mGiven[i] = terms[i].isConstant;
    if (mGiven[i]) mValues[i] = terms[i].initial;
  }
  for (const RealSystem::Statement& statement : system.GetStatements())
    for (const std::uint32_t term : statement.shared) mSharedSlots[term] = terms[term].slot;
}

bool StatementRunner::Run(Engine& engine, std::uint32_t index) {
  const RealSystem::Statement& statement = mSystem.GetStatements()[index];
  return EvaluateForward(engine, statement) && Decide(engine, statement) &&
         ProjectBack(statement) && Store(engine, statement);
}

bool StatementRunner::EvaluateForward(const Engine& engine,
                                      const RealSystem::Statement& statement) {
  const auto& terms = mSystem.GetTerms();
  const auto& operations = mSystem.GetOperations();
  for (const std::uint32_t leaf : statement.leaves)
    mValues[leaf] = engine.GetReals(terms[leaf].slot);
  for (auto i = statement.operations.rbegin(); i != statement.operations.rend(); ++i) {
    const auto& [function, target, first, second, isPartial] = operations[*i];
    const RealRange value = Evaluate(function, mValues[first], mValues[second]);
    mForward[target] = value;
    mValues[target] = value;
    // What other statements have found out about the result.
    if (const Slot slot = mSharedSlots[target]; slot != kNone)
      mValues[target].Intersect(engine.GetReals(slot));
    if (mValues[target].IsEmpty()) return false;
  }
  return true;
}

/// Takes the claim, or its negation, as the truth slot says; or finds out which of them holds.
bool StatementRunner::Decide(Engine& engine, const RealSystem::Statement& statement) {
  const RealSystem::Claim& claim = statement.claim;
  const bool isGuarded = statement.truth != kNone;
  const bool isFalse = isGuarded && engine.IsFalse(statement.truth);
  if (!isGuarded || isFalse || engine.IsTrue(statement.truth)) {
    const RealSystem::Claim& active = isFalse ? claim.GetNegation() : claim;
    if (MayRetire(statement) && Holds(active.relation, mValues[active.left], mValues[active.right]))
      engine.Retire();
    return Relate(active);
  }
  const RealSystem::Claim negation = claim.GetNegation();
  const bool holds = Holds(claim.relation, mValues[claim.left], mValues[claim.right]);
  if (!holds && !Holds(negation.relation, mValues[negation.left], mValues[negation.right]))
    return true;
  if (MayRetire(statement)) engine.Retire();
  return engine.Fix(statement.truth, holds ? 1 : 0);
}

/// The value of the term; a copy where it is not for us to narrow.
RealRange& StatementRunner::Operand(std::uint32_t term, RealRange& copy) {
  if (!mGiven[term]) return mValues[term];
  copy = mValues[term];
  return copy;
}

bool StatementRunner::Relate(const RealSystem::Claim& claim) {
  RealRange copies[2];
  RealRange &left = Operand(claim.left, copies[0]), &right = Operand(claim.right, copies[1]);
  switch (claim.relation) {
    case Relation::kEqual:
      left.Intersect(right);
      right = left;
      return !left.IsEmpty();
    case Relation::kUnequal:
      return claim.left != claim.right && !(left.IsScalar() && left == right);
    case Relation::kLess:
      if (claim.left == claim.right || !(left.lower < right.upper)) return false;
      break;
    case Relation::kLessOrEqual:
      break;
  }
  left.upper = std::min(left.upper, right.upper);
  right.lower = std::max(right.lower, left.lower);
  return !left.IsEmpty() && !right.IsEmpty();
}

bool StatementRunner::ProjectBack(const RealSystem::Statement& statement) {
  const auto& operations = mSystem.GetOperations();
  RealRange copies[2];
  for (const std::uint32_t index : statement.operations) {
    const auto& [function, target, first, second, isPartial] = operations[index];
    if (mValues[target] == mForward[target] && !isPartial) continue;
    if (!RowOf(function).project(mValues[target], Operand(first, copies[0]),
                                 Operand(second, copies[1])))
      return false;
  }
  return true;
}

bool StatementRunner::Store(Engine& engine, const RealSystem::Statement& statement) {
  const auto& terms = mSystem.GetTerms();
  for (const auto* narrowed : {&statement.leaves, &statement.shared})
    for (const std::uint32_t term : *narrowed)
      if (!engine.Narrow(terms[term].slot, mValues[term])) return false;
  return true;
}

}  // namespace zultav::engine
