#include "framework/engine/reals/RealEvaluation.h"

#include <utility>

#include "framework/engine/reals/Evaluate.h"

namespace zultav::engine {

namespace {

constexpr RealRange kZero = {0, 0};
constexpr RealRange kOne = {1, 1};

/// Whether a partial function that has a value for some x and y has one for all of them.
bool IsDefined(Function function, const RealRange& x, const RealRange& y) {
  return (x.IsScalar() && y.IsScalar()) || RowOf(function).isContinuous(x, y);
}

}  // namespace

RealEvaluation::RealEvaluation(const Engine& engine, const RealSystem& system)
    : mEngine(engine), mSystem(system) {
  const auto& terms = system.GetTerms();
  mValues.resize(terms.size());
  mCenters.resize(terms.size());
  mAdjoints.resize(terms.size(), kZero);
  mSharedSlots.resize(terms.size(), kNone);
  for (std::uint32_t i = 0; i < terms.size(); ++i) {
    if (terms[i].isConstant)
      mValues[i] = mCenters[i] = terms[i].initial;
    else if (terms[i].isInteger)
      mIntegers.push_back(i);
  }
  for (const RealSystem::Statement& statement : system.GetStatements())
    for (const std::uint32_t term : statement.shared) mSharedSlots[term] = terms[term].slot;
  mSlopes.resize(system.GetOperations().size());
  mUsable.resize(system.GetOperations().size());
}

bool RealEvaluation::SetBox(std::span<const RealRange> box, Mode mode) {
  for (const std::uint32_t term : mIntegers)
    mValues[term] = mCenters[term] = mEngine.GetReals(mSystem.GetTerms()[term].slot);
  for (std::size_t i = 0; i < box.size(); ++i) mValues[mSystem.GetUnknowns()[i]] = box[i];
  for (const auto& [function, target, first, second, isPartial] : mSystem.GetOperations()) {
    RealRange value = Evaluate(function, mValues[first], mValues[second]);
    if (mode == Mode::kSolutions) {
      if (const Slot slot = mSharedSlots[target]; slot != kNone)
        value.Intersect(mEngine.GetReals(slot));
      if (value.IsEmpty()) return false;
    } else if (mode == Mode::kDefined) {
      if (value.IsEmpty() || (isPartial && !IsDefined(function, mValues[first], mValues[second])))
        return false;
    } else if (!value.IsBounded() ||
               !RowOf(function).isContinuous(mValues[first], mValues[second])) {
      return false;
    }
    mValues[target] = value;
  }
  return true;
}

void RealEvaluation::SetPoint(std::span<const double> point) {
  for (std::size_t i = 0; i < point.size(); ++i)
    mCenters[mSystem.GetUnknowns()[i]] = RealRange::Point(point[i]);
  EvaluateCenters();
}

void RealEvaluation::SetCenter(std::span<const RealRange> center) {
  for (std::size_t i = 0; i < center.size(); ++i) mCenters[mSystem.GetUnknowns()[i]] = center[i];
  EvaluateCenters();
}

void RealEvaluation::EvaluateCenters() {
  for (const auto& [function, target, first, second, isPartial] : mSystem.GetOperations())
    mCenters[target] = Evaluate(function, mCenters[first], mCenters[second]);
}

void RealEvaluation::CalcSlopes() {
  const auto& operations = mSystem.GetOperations();
  for (std::size_t i = 0; i < operations.size(); ++i) {
    const auto& [function, target, first, second, isPartial] = operations[i];
    const SlopeArguments at = {mValues[first],
                               mValues[second],
                               mValues[target],
                               mCenters[first],
                               mCenters[second],
                               mCenters[target],
                               mSystem.GetTerms()[second].isConstant};
    mUsable[i] = !at.xc.IsEmpty() && !at.yc.IsEmpty() && at.zc.IsBounded() &&
                 RowOf(function).slopes(at, mSlopes[i]);
  }
}

RealRange RealEvaluation::GetDefect(const RealSystem::Claim& equation) const {
  return mCenters[equation.left] - mCenters[equation.right];
}

bool RealEvaluation::GetSlopes(const RealSystem::Statement& equation, RealRange* slopes) {
  const auto& [relation, left, right] = equation.claim;
  if (left == right) return false;
  mAdjoints[left] = kOne;
  mAdjoints[right] = -kOne;
  const auto& operations = mSystem.GetOperations();
  bool usable = true;
  for (const std::uint32_t index : equation.operations) {
    const auto& [function, target, first, second, isPartial] = operations[index];
    const RealRange adjoint = std::exchange(mAdjoints[target], kZero);
    const Slopes& slope = mSlopes[index];
    usable = usable && mUsable[index];
    if (!usable) continue;  // but clean up
    mAdjoints[first] = mAdjoints[first] + adjoint * slope.first;
    if (!(slope.second == kZero)) mAdjoints[second] = mAdjoints[second] + adjoint * slope.second;
  }
  for (std::size_t i = 0; i < equation.unknowns.size(); ++i) {
    slopes[i] = mAdjoints[mSystem.GetUnknowns()[equation.unknowns[i]]];
    usable = usable && slopes[i].IsBounded();
  }
  // Constants have collected slopes, too.
  mAdjoints[left] = mAdjoints[right] = kZero;
  for (const std::uint32_t index : equation.operations)
    mAdjoints[operations[index].first] = mAdjoints[operations[index].second] = kZero;
  return usable;
}

}  // namespace zultav::engine
