#include "framework/search/detail/RealEvaluation.h"

#include <cmath>
#include <utility>

#include "framework/intervals/ZULTavIntervals.h"
#include "framework/search/detail/RealFunction.h"

namespace zultav::detail {

namespace {

using Function = RealSystem::Function;

constexpr RealInterval kZero = {0, 0};
constexpr RealInterval kOne = {1, 1};

}  // namespace

RealEvaluation::RealEvaluation(const RealSystem& system) : mSystem(system) {
  const std::size_t count = system.GetSlots().size();
  std::vector<bool> leaf(count, true);
  for (const RealSystem::Operation& operation : system.GetOperations())
    leaf[operation.target] = false;
  for (const std::uint32_t slot : system.GetUnknowns()) leaf[slot] = false;
  for (std::uint32_t slot = 0; slot < count; ++slot)
    if (leaf[slot]) mLeaves.push_back(slot);
  mVaries.resize(count);
  for (const std::uint32_t slot : system.GetUnknowns()) mVaries[slot] = true;
  for (const auto& [function, target, first, second] : system.GetOperations())
    mVaries[target] = mVaries[first] || mVaries[second];
  mValues.resize(count);
  mCenters.resize(count);
  mAdjoints.resize(count, kZero);
  mSlopes.resize(system.GetOperations().size());
}

/// The values of what is neither an unknown nor computed.
RealInterval RealEvaluation::Leaf(const RealSystem::Slot& slot, Mode mode) const {
  if (!slot.constant) return slot.GetDomain();
  RealInterval value = slot.initial;
  if (mode == Mode::kSolutions && slot.object != nullptr) value.Intersect(slot.GetDomain());
  return value;
}

bool RealEvaluation::SetBox(std::span<const RealInterval> box, Mode mode) {
  const auto& slots = mSystem.GetSlots();
  for (const std::uint32_t slot : mLeaves) {
    mValues[slot] = mCenters[slot] = Leaf(slots[slot], mode);
    if (mValues[slot].IsEmpty()) return false;
  }
  for (std::size_t i = 0; i < box.size(); ++i) mValues[mSystem.GetUnknowns()[i]] = box[i];
  for (const auto& [function, target, first, second] : mSystem.GetOperations()) {
    SubdefReal value = Evaluate(function, mValues[first], mValues[second]);
    if (mode == Mode::kSolutions) {
      if (slots[target].object != nullptr) value.Intersect(slots[target].GetDomain());
      if (value.IsEmpty()) return false;
    } else if (!IsFinite(value) || !IsContinuous(function, mValues[first], mValues[second])) {
      return false;
    }
    mValues[target] = value;
  }
  return true;
}

void RealEvaluation::SetPoint(std::span<const double> point) {
  for (std::size_t i = 0; i < point.size(); ++i)
    mCenters[mSystem.GetUnknowns()[i]] = {point[i], point[i]};
  EvaluateCenters();
}

void RealEvaluation::SetCenter(std::span<const RealInterval> center) {
  for (std::size_t i = 0; i < center.size(); ++i) mCenters[mSystem.GetUnknowns()[i]] = center[i];
  EvaluateCenters();
}

void RealEvaluation::EvaluateCenters() {
  for (const auto& [function, target, first, second] : mSystem.GetOperations())
    mCenters[target] = Evaluate(function, mCenters[first], mCenters[second]);
}

void RealEvaluation::CalcSlopes() {
  const auto& operations = mSystem.GetOperations();
  for (std::size_t i = 0; i < operations.size(); ++i) mSlopes[i] = SlopesOf(operations[i]);
}

SubdefReal RealEvaluation::Hull(std::uint32_t slot) const {
  return mValues[slot].mf_Union(mCenters[slot]);
}

/// x^y - x0^y0 = (x^y - x0^y) + (x0^y - x0^y0).
RealEvaluation::Slopes RealEvaluation::PowerSlopes(const RealSystem::Operation& operation) const {
  const SubdefReal x = Hull(operation.first), y = Hull(operation.second);
  if (!IsPowerContinuous(x, y)) return {};
  if (y == SubdefReal(2, 2) && !mVaries[operation.second])
    return {mValues[operation.first].AddIntToInt(mCenters[operation.first]), kZero, true};
  if (y == SubdefReal(kZero) && !mVaries[operation.second]) return {kZero, kZero, true};
  const SubdefReal lower = y.SubIntFromInt(kOne);
  const SubdefReal first = y.MultIntByInt(Evaluate(Function::kPower, x, lower));
  if (!mVaries[operation.second]) return {first, kZero, true};
  if (x.lower <= 0) return {};
  const SubdefReal& base = mCenters[operation.first];
  return {first, pow(base, y).MultIntByInt(log(base)), true};
}

RealEvaluation::Slopes RealEvaluation::SlopesOf(const RealSystem::Operation& operation) const {
  const auto& [function, target, first, second] = operation;
  const SubdefReal &x = mValues[first], &y = mValues[second];
  const SubdefReal &x0 = mCenters[first], &y0 = mCenters[second];
  if (x0.IsEmpty() || y0.IsEmpty() || !IsFinite(mCenters[target])) return {};
  const auto one = [](const SubdefReal& slope) { return Slopes{slope, kZero, true}; };
  switch (function) {
    case Function::kIdentity:
      return one(kOne);
    case Function::kSum:
      return {kOne, kOne, true};
    case Function::kDifference:
      return {kOne, SubdefReal(-1, -1), true};
    case Function::kProduct:
      return {y0, x, true};
    case Function::kQuotient: {
      if (Hull(second).Contains(0)) return {};
      const SubdefReal inverse = kOne.DivIntByInt(y);
      return {inverse, mCenters[target].MultIntByInt(inverse).mf_Neg(), true};
    }
    case Function::kNegative:
      return one({-1, -1});
    case Function::kPower:
      return PowerSlopes(operation);
    case Function::kRemainder: {
      double whole = 0;
      if (!TruncatedQuotient(Hull(first), Hull(second), whole)) return {};
      return {kOne, SubdefReal(-whole, -whole), true};
    }
    case Function::kMinimum:
    case Function::kMaximum: {
      const bool minimum = function == Function::kMinimum;
      const SubdefReal low = Hull(minimum ? first : second), high = Hull(minimum ? second : first);
      if (low.upper <= high.lower) return {kOne, kZero, true};
      if (high.upper <= low.lower) return {kZero, kOne, true};
      return {SubdefReal(0, 1), SubdefReal(0, 1), true};
    }
    case Function::kAbsolute: {
      const SubdefReal hull = Hull(first);
      return one({hull.lower >= 0 ? 1.0 : -1.0, hull.upper <= 0 ? -1.0 : 1.0});
    }
    case Function::kExp:
      return one(exp(Hull(first)));
    case Function::kLog:
      return Hull(first).lower > 0 ? one(kOne.DivIntByInt(Hull(first))) : Slopes{};
    case Function::kSquare:
      return one(x.AddIntToInt(x0));
    case Function::kSqrt: {
      const SubdefReal sum = sqrt(x).AddIntToInt(sqrt(x0));
      return Hull(first).lower >= 0 && sum.lower > 0 ? one(kOne.DivIntByInt(sum)) : Slopes{};
    }
    case Function::kSine:
      return one(cos(Hull(first)));
    case Function::kCosine:
      return one(SubdefReal(sin(Hull(first))).mf_Neg());
    case Function::kTangent: {
      const SubdefReal tangent = tan(Hull(first));
      return IsFinite(tangent) ? one(SubdefReal(kOne.AddIntToInt(sqr(tangent)))) : Slopes{};
    }
    case Function::kRound:
    case Function::kFloor:
    case Function::kCeil:
      return IsContinuous(function, Hull(first), y) ? one(kZero) : Slopes{};
  }
  return {};
}

RealInterval RealEvaluation::GetDefect(const RealSystem::Statement& equation) const {
  return mCenters[equation.left].SubIntFromInt(mCenters[equation.right]);
}

bool RealEvaluation::GetSlopes(const RealSystem::Statement& equation, RealInterval* slopes) {
  if (equation.left == equation.right) return false;
  mAdjoints[equation.left] = kOne;
  mAdjoints[equation.right] = SubdefReal(-1, -1);
  const auto& operations = mSystem.GetOperations();
  bool usable = true;
  for (const std::uint32_t index : equation.operations) {
    const auto& [function, target, first, second] = operations[index];
    const SubdefReal adjoint = std::exchange(mAdjoints[target], kZero);
    const Slopes& slope = mSlopes[index];
    usable = usable && slope.usable;
    if (!usable) continue;  // but clean up
    mAdjoints[first] = mAdjoints[first].AddIntToInt(adjoint.MultIntByInt(slope.first));
    if (!(slope.second == kZero))
      mAdjoints[second] = mAdjoints[second].AddIntToInt(adjoint.MultIntByInt(slope.second));
  }
  for (std::size_t i = 0; i < equation.unknowns.size(); ++i) {
    slopes[i] = mAdjoints[mSystem.GetUnknowns()[equation.unknowns[i]]];
    usable = usable && IsFinite(slopes[i]);
  }
  // Constants have collected slopes, too.
  mAdjoints[equation.left] = mAdjoints[equation.right] = kZero;
  for (const std::uint32_t index : equation.operations)
    mAdjoints[operations[index].first] = mAdjoints[operations[index].second] = kZero;
  return usable;
}

}  // namespace zultav::detail
