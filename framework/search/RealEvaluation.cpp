#include "framework/search/RealEvaluation.h"

#include <cmath>
#include <utility>

#include "framework/intervals/ZULTavIntervals.h"
#include "framework/solver/ZULTaVoInteger.h"

namespace {

using Function = RealSystem::Function;

constexpr RealInterval kZero = {0, 0};
constexpr RealInterval kOne = {1, 1};

bool IsFinite(const RealInterval& x) {
  return x.lower > -SubdefReal::sMaxValue && x.upper < SubdefReal::sMaxValue && !x.IsEmpty();
}

bool IsWhole(double value) { return value == std::floor(value); }

/// All that the rounding of a number in x may give.
template <double (*Round)(double)>
RealInterval Rounded(const RealInterval& x) {
  return x.IsEmpty() ? x : RealInterval(Round(x.lower), Round(x.upper));
}

double RoundDown(double x) { return std::floor(x); }
double RoundUp(double x) { return std::ceil(x); }
/// Halves away from zero.
double RoundNearest(double x) { return std::round(x); }

SubdefReal Quotient(const SubdefReal& x, const SubdefReal& y) { return x.DivIntByInt(y); }

/// The one whole number to which all quotients are truncated; false when there are several.
bool TruncatedQuotient(const SubdefReal& x, const SubdefReal& y, double& whole) {
  if (y.Contains(0)) return false;
  const SubdefReal quotient = Quotient(x, y);
  whole = std::trunc(quotient.lower);
  // Truncation is continuous inside of (-1, 1) and between other neighbours.
  return IsFinite(quotient) && whole == std::trunc(quotient.upper) &&
         (whole == 0 || (quotient.lower != whole && quotient.upper != whole));
}

SubdefReal Remainder(const SubdefReal& x, const SubdefReal& y) {
  double whole = 0;
  if (TruncatedQuotient(x, y, whole)) return x.SubIntFromInt(y.MultIntByInt({whole, whole}));
  const SubdefReal magnitude = y.mf_Abs();
  SubdefReal result = {x.lower < 0 ? -magnitude.upper : 0, x.upper > 0 ? magnitude.upper : 0};
  result.Intersect({std::fmin(x.lower, 0), std::fmax(x.upper, 0)});
  return result;
}

SubdefReal Evaluate(Function function, const SubdefReal& x, const SubdefReal& y) {
  switch (function) {
    case Function::kIdentity:
      return x;
    case Function::kSum:
      return x.AddIntToInt(y);
    case Function::kDifference:
      return x.SubIntFromInt(y);
    case Function::kProduct:
      return x.MultIntByInt(y);
    case Function::kQuotient:
      return Quotient(x, y);
    case Function::kNegative:
      return x.mf_Neg();
    case Function::kPower:
      return y.IsScalar() ? pow(x, y.lower) : pow(x, y);
    case Function::kRemainder:
      return Remainder(x, y);
    case Function::kMinimum:
      return x.mf_Min(y);
    case Function::kMaximum:
      return x.mf_Max(y);
    case Function::kAbsolute:
      return x.mf_Abs();
    case Function::kExp:
      return exp(x);
    case Function::kLog:
      return log(x);
    case Function::kSquare:
      return sqr(x);
    case Function::kSqrt:
      return sqrt(x);
    case Function::kSine:
      return sin(x);
    case Function::kCosine:
      return cos(x);
    case Function::kTangent:
      return tan(x);
    case Function::kRound:
      return Rounded<RoundNearest>(x);
    case Function::kFloor:
      return Rounded<RoundDown>(x);
    case Function::kCeil:
      return Rounded<RoundUp>(x);
  }
  return {};
}

/// Whether x^y is defined and continuous for all of x and y.
bool IsPowerContinuous(const SubdefReal& x, const SubdefReal& y) {
  if (!y.IsScalar() || !IsWhole(y.lower)) return x.lower > 0;
  return y.lower >= 0 || !x.Contains(0);
}

/// Whether rounding is one and the same for all of x and its neighbourhood.
bool IsRoundingContinuous(Function function, const SubdefReal& x) {
  // A bound at a jump lies on one side of it, but its neighbourhood does not.
  const double shift = function == Function::kRound ? 0.5 : 0;
  const RealInterval moved = x.AddNumToInt(shift);
  return std::floor(moved.lower) == std::floor(moved.upper) && !IsWhole(moved.lower) &&
         !IsWhole(moved.upper);
}

/// Whether the function is defined and continuous for all arguments. Poles show themselves by
/// values that are not finite.
bool IsContinuous(Function function, const SubdefReal& x, const SubdefReal& y) {
  double whole = 0;
  switch (function) {
    case Function::kQuotient:
      return !y.Contains(0);
    case Function::kPower:
      return IsPowerContinuous(x, y);
    case Function::kRemainder:
      return TruncatedQuotient(x, y, whole);
    case Function::kLog:
      return x.lower > 0;
    case Function::kSqrt:
      return x.lower >= 0;
    case Function::kRound:
    case Function::kFloor:
    case Function::kCeil:
      return x.IsScalar() || IsRoundingContinuous(function, x);
    default:
      return true;
  }
}

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

RealInterval RealEvaluation::Domain(const RealSystem::Slot& slot) const {
  if (const auto* integer =
          slot.object != nullptr ? ZULTaVoCast<const ZULTaVoInteger>(slot.object) : nullptr)
    return {static_cast<double>(integer->GetLowerBound()),
            static_cast<double>(integer->GetUpperBound())};
  if (const auto* real =
          slot.object != nullptr ? ZULTaVoCast<const ZULTaVoReal>(slot.object) : nullptr)
    return {real->GetLowerBound(), real->GetUpperBound()};
  return slot.initial;
}

/// The values of what is neither an unknown nor computed.
RealInterval RealEvaluation::Leaf(const RealSystem::Slot& slot, Mode mode) const {
  if (!slot.constant) return Domain(slot);
  RealInterval value = slot.initial;
  if (mode == Mode::kSolutions && slot.object != nullptr) value.Intersect(Domain(slot));
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
      if (slots[target].object != nullptr) value.Intersect(Domain(slots[target]));
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
      const SubdefReal inverse = Quotient(kOne, y);
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
      return Hull(first).lower > 0 ? one(Quotient(kOne, Hull(first))) : Slopes{};
    case Function::kSquare:
      return one(x.AddIntToInt(x0));
    case Function::kSqrt: {
      const SubdefReal sum = sqrt(x).AddIntToInt(sqrt(x0));
      return Hull(first).lower >= 0 && sum.lower > 0 ? one(Quotient(kOne, sum)) : Slopes{};
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

RealInterval RealEvaluation::GetDefect(const RealSystem::Equation& equation) const {
  return mCenters[equation.left].SubIntFromInt(mCenters[equation.right]);
}

bool RealEvaluation::GetSlopes(const RealSystem::Equation& equation, RealInterval* slopes) {
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
