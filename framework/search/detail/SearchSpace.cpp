#include "framework/search/detail/SearchSpace.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <numeric>

#include "framework/base/ZULipstream.h"
#include "framework/solver/SingleValue.h"

namespace zultav::detail {

namespace {

// Solutions further out than this are looked for last, unless the search is told where to begin:
// doubles are so far apart there that few of them can be told from their neighbours, or proven.
constexpr double kFar = 1e8;

/// Where a range that does not go below 0 is split: far out by its orders of magnitude, of which
/// doubles have so many that halving the width would never come to the near ones.
double SplitPositive(double lower, double upper) {
  if (upper <= kFar || upper <= 4 * lower) return lower + (upper - lower) * 0.5;
  if (lower < 1) return 1;
  if (lower < kFar) return kFar;
  return std::sqrt(lower) * std::sqrt(std::min(upper, DBL_MAX));
}

double SplitPoint(const RealRange& x) {
  if (x.GetMagnitude() <= kFar) return (x.lower + x.upper) * 0.5;
  if (x.lower < 0 && x.upper > 0) return 0;
  return x.lower >= 0 ? SplitPositive(x.lower, x.upper) : -SplitPositive(-x.upper, -x.lower);
}

/// The same of integers without bounds.
std::int64_t SplitPoint(const IntegerRange& x) {
  if (x.lower != IntegerRange::kMin && x.upper != IntegerRange::kMax)
    return x.lower +
           static_cast<std::int64_t>(
               (static_cast<std::uint64_t>(x.upper) - static_cast<std::uint64_t>(x.lower)) / 2);
  constexpr std::int64_t kLargest = IntegerRange::kMax / 4;
  if (x.lower != IntegerRange::kMin)
    return x.lower < 0 ? 0 : x.lower < kLargest ? 2 * x.lower + 1 : std::midpoint(x.lower, x.upper);
  if (x.upper != IntegerRange::kMax)
    return x.upper > 0           ? 0
           : x.upper > -kLargest ? 2 * x.upper - 2
                                 : std::midpoint(x.upper, x.lower);
  return 0;
}

bool IsUpperFirst(const RealRange& x, ZULTaVoAny::ValueSelection selection) {
  const bool down = std::isinf(x.lower), up = std::isinf(x.upper);
  const bool isFar = selection == ZULTaVoAny::kLowerHalf && x.GetMagnitude() > kFar;
  if ((isFar && -x.lower != x.upper) || down != up) return -x.lower > x.upper;
  return selection == ZULTaVoAny::kUpperHalf || selection == ZULTaVoAny::kGreatestValue;
}

/// Gives the object a range; what its type cannot hold becomes a bound of the type, or Any.
template <class Object, class Number>
void PutRange(Object& object, Number lower, Number upper) {
  if (lower == upper) {
    object.SetExactValue(lower);
    return;
  }
  object.SetAny();
  if (object.GetCardinality() == kSingleAny) return;
  if (lower > object.GetLowerBound()) object.SetLowerBound(lower);
  if (upper < object.GetUpperBound()) object.SetUpperBound(upper);
}

long ToLong(std::int64_t value) {
  return static_cast<long>(std::clamp<std::int64_t>(value, std::numeric_limits<long>::min(),
                                                    std::numeric_limits<long>::max()));
}

/// The object is of the variable's kind.
void Put(ZULTaVoAny& object, const SearchVariable& variable, const Range& range) {
  if (variable.kind == Kind::kReal) {
    const RealRange reals = range.GetReals();
    PutRange(static_cast<ZULTaVoReal&>(object), reals.lower, reals.upper);
  } else if (!variable.isBoolean) {
    PutRange(static_cast<ZULTaVoInteger&>(object), ToLong(range.lower), ToLong(range.upper));
  } else if (range.lower == range.upper) {
    static_cast<ZULTaVoBoolean&>(object).SetExactValue(range.lower != 0);
  } else {
    object.SetAny();
  }
}

}  // namespace

bool WidthLimit::Holds(const RealRange& range) const {
  if (!range.IsBounded()) return false;
  const double width = range.upper - range.lower;
  return width <= absolute || width <= relative * range.GetMagnitude();
}

SearchSpace::SearchSpace(const ZULTaVoNetwork& network, const Program& program,
                         std::span<ZULTaVoAny* const> declared)
    : mNetwork(network), mObjects(declared.begin(), declared.end()) {
  std::vector<bool> known(program.GetNumberOfSlots());
  mVariables.reserve(mObjects.size());
  for (std::size_t i = 0; i < mObjects.size(); ++i) {
    const Slot slot = program.GetDeclared()[i];
    const engine::SlotInfo& info = program.GetSlot(slot);
    mVariables.push_back({slot, info.kind, info.isBoolean, info.isSingle});
    if (info.kind == Kind::kOpaque) mOpaque.push_back(mObjects[i]);
    known[slot] = true;
  }
  for (Slot slot = 0; slot < program.GetNumberOfSlots(); ++slot) {
    const engine::SlotInfo& info = program.GetSlot(slot);
    if (info.isConstant || !(info.isUsed || known[slot])) continue;
    if (info.kind != Kind::kInteger) mContinuous = true;
    // What no rule looks at any more may be anything, or follows from the others.
    const bool isLookedAt = info.isBoolean || !program.GetWatches(slot).empty();
    if (known[slot] || info.kind != Kind::kInteger || !info.isSearched || !isLookedAt) continue;
    mVariables.push_back({slot, info.kind, info.isBoolean, false});
    known[slot] = true;
  }
  mHiddenEnd = static_cast<std::uint32_t>(mVariables.size());
  AddObserved(program);
  // A half of a truth value may cut a box of reals in two, which nothing would join again, and need
  // not follow from the declared values where there are others.
  if (!mContinuous && mHiddenEnd == mObjects.size()) AddTruths(program, known);
}

void SearchSpace::AddObserved(const Program& program) {
  using ObservedKind = ZULTavObserved::Kind;
  for (const Slot slot : program.GetObserved()) {
    const engine::SlotInfo& info = program.GetSlot(slot);
    const ObservedKind kind = info.kind != Kind::kInteger ? ObservedKind::kReal
                              : info.isBoolean            ? ObservedKind::kTruth
                                                          : ObservedKind::kInteger;
    mObserved.push_back({slot, kind, info.kind == Kind::kOpaque});
  }
}

/// Those that say exactly whether something holds: each solution has one value for them.
void SearchSpace::AddTruths(const Program& program, std::vector<bool>& known) {
  for (const engine::Rule& rule : program.GetRules()) {
    if (rule.code != engine::Code::kLinear || !rule.isReified || rule.isHalf) continue;
    const Slot truth = program.GetArguments(rule).back();
    if (known[truth]) continue;
    known[truth] = true;
    mVariables.push_back({truth, Kind::kInteger, true, false});
  }
}

// --- Splitting --------------------------------------------------------------------------------

bool SearchSpace::IsOpen(const Engine& engine, std::uint32_t index, const WidthLimit& limit) const {
  const SearchVariable& variable = mVariables[index];
  if (variable.isSingle || variable.kind == Kind::kOpaque) return false;
  if (variable.kind == Kind::kInteger)
    return engine.GetLower(variable.slot) < engine.GetUpper(variable.slot);
  const RealRange x = engine.GetReals(variable.slot);
  if (x.IsScalar() || limit.Holds(x)) return false;
  const double middle = SplitPoint(x);
  return x.lower < middle && middle < x.upper;
}

Half SearchSpace::Split(const Engine& engine, std::uint32_t variable,
                        ZULTaVoAny::ValueSelection selection) const {
  const Slot slot = mVariables[variable].slot;
  if (mVariables[variable].kind == Kind::kReal) {
    const RealRange x = engine.GetReals(slot);
    return {variable, IsUpperFirst(x, selection), std::bit_cast<std::int64_t>(SplitPoint(x))};
  }
  const IntegerRange x = engine.GetIntegers(slot);
  switch (selection) {
    case ZULTaVoAny::kLeastValue:
      if (x.lower != IntegerRange::kMin) return {variable, false, x.lower};
      break;
    case ZULTaVoAny::kGreatestValue:
      if (x.upper != IntegerRange::kMax) return {variable, true, x.upper};
      break;
    case ZULTaVoAny::kUpperHalf:
      return {variable, true, SplitPoint(x) + 1};
    case ZULTaVoAny::kLowerHalf:
      break;
  }
  return {variable, false, SplitPoint(x)};
}

Half SearchSpace::OppositeOf(const Half& half) const {
  const std::int64_t step = mVariables[half.variable].IsDiscrete() ? 1 : 0;
  return {half.variable, !half.isUpper, half.isUpper ? half.bound - step : half.bound + step};
}

bool SearchSpace::Enter(Engine& engine, const Half& half) const {
  const auto& [slot, kind, isBoolean, isSingle] = mVariables[half.variable];
  if (kind == Kind::kInteger)
    return engine.NarrowAndTell(slot, half.isUpper ? IntegerRange(half.bound, IntegerRange::kMax)
                                                   : IntegerRange(IntegerRange::kMin, half.bound));
  const auto bound = std::bit_cast<double>(half.bound);
  return engine.NarrowAndTell(
      slot, half.isUpper ? RealRange(bound, HUGE_VAL) : RealRange(-HUGE_VAL, bound));
}

bool SearchSpace::Holds(const Engine& engine, const Half& half) const {
  const Slot slot = mVariables[half.variable].slot;
  return half.isUpper ? engine.GetLower(slot) >= half.bound : engine.GetUpper(slot) <= half.bound;
}

bool SearchSpace::Fails(const Engine& engine, const Half& half) const {
  const Slot slot = mVariables[half.variable].slot;
  return half.isUpper ? engine.GetUpper(slot) < half.bound : engine.GetLower(slot) > half.bound;
}

double SearchSpace::GetWidth(const Engine& engine, std::uint32_t variable) const {
  const RealRange x = engine.GetReals(mVariables[variable].slot);
  return x.upper - x.lower;
}

// --- Values -----------------------------------------------------------------------------------

Range SearchSpace::GetRange(const Engine& engine, std::uint32_t index) const {
  const SearchVariable& variable = mVariables[index];
  if (variable.kind == Kind::kInteger) return engine.GetIntegers(variable.slot);
  if (variable.kind == Kind::kReal) return engine.GetReals(variable.slot);
  return {};
}

Range SearchSpace::GetObservedRange(const Engine& engine, const ObservedSlot& observed) {
  if (!observed.isOpaque)
    return observed.kind == ZULTavObserved::Kind::kReal ? Range(engine.GetReals(observed.slot))
                                                        : Range(engine.GetIntegers(observed.slot));
  const auto* real = ZULTaVoCast<const ZULTaVoReal>(&engine.GetObject(observed.slot));
  return real != nullptr && !real->IsAny() && !real->IsNil()
             ? RealRange(real->GetLowerBound(), real->GetUpperBound())
             : RealRange();
}

ZULTavBox SearchSpace::Capture(const Engine& engine) const {
  ZULTavBox box;
  box.ranges.reserve(mObjects.size() + mObserved.size());
  for (std::uint32_t i = 0; i < mObjects.size(); ++i) box.ranges.push_back(GetRange(engine, i));
  for (const ObservedSlot& observed : mObserved)
    box.ranges.push_back(GetObservedRange(engine, observed));
  if (!mOpaque.empty()) box.opaque = ZULTavSolution(mNetwork, mOpaque);
  return box;
}

void SearchSpace::Fill(const ZULTavBox& box, ZULTavSolution& solution) const {
  for (std::size_t i = 0, opaque = 0; i < mObjects.size(); ++i) {
    ZULTaVoAny& value = solution.GetValue(i);
    if (mVariables[i].kind == Kind::kOpaque)
      value.Assign(box.opaque.GetValue(opaque++));
    else
      Put(value, mVariables[i], box.ranges[i]);
  }
  for (std::size_t i = 0; i < mObserved.size(); ++i) {
    const Range& range = box.ranges[mObjects.size() + i];
    ZULTavObserved& observed = solution.GetObserved()[i];
    observed.kind = mObserved[i].kind;
    if (observed.kind == ZULTavObserved::Kind::kReal)
      observed.reals = range.GetReals();
    else
      observed.integers = range.GetIntegers();
  }
  solution.SetProven(box.isProven);
}

void SearchSpace::Fill(const ZULTavBox& box, std::span<const std::uint32_t> variables,
                       ZULTavSolution& solution) const {
  for (const std::uint32_t i : variables) Put(solution.GetValue(i), mVariables[i], box.ranges[i]);
}

bool SearchSpace::Read(ZULipstream& in, ZULTavBox& box) const {
  std::uint64_t proven = 0;
  in.ReadUnsigned(proven, 1);
  box.isProven = proven != 0;
  box.ranges.clear();
  const auto readRange = [&](bool isReal) {
    std::uint64_t lower = 0, upper = 0;
    in.ReadUnsigned(lower);
    in.ReadUnsigned(upper);
    Range range;
    range.lower = static_cast<std::int64_t>(lower);
    range.upper = static_cast<std::int64_t>(upper);
    if (isReal ? range.GetReals().IsEmpty() : range.GetIntegers().IsEmpty())
      in.Fail("a box is empty");
    box.ranges.push_back(range);
  };
  for (const SearchVariable& variable : GetDeclared()) readRange(variable.kind == Kind::kReal);
  for (const ObservedSlot& observed : mObserved)
    readRange(observed.kind == ZULTavObserved::Kind::kReal);
  if (mOpaque.empty()) return in.Good();
  box.opaque = ZULTavSolution(mNetwork, mOpaque);
  return box.opaque.Read(in);
}

bool SearchSpace::Read(ZULipstream& in, Half& half) const {
  std::uint64_t variable = 0, isUpper = 0, bits = 0;
  in.ReadUnsigned(variable);
  in.ReadUnsigned(isUpper, 1);
  in.ReadUnsigned(bits);
  if (variable >= mVariables.size()) in.Fail("it splits a variable that there is not");
  if (!in.Good()) return false;
  half = {static_cast<std::uint32_t>(variable), isUpper != 0, static_cast<std::int64_t>(bits)};
  const Kind kind = mVariables[half.variable].kind;
  const bool isBound = kind == Kind::kReal
                           ? std::isfinite(std::bit_cast<double>(half.bound))
                           : half.bound != IntegerRange::kMin && half.bound != IntegerRange::kMax;
  if (kind == Kind::kOpaque || !isBound) in.Fail("a variable cannot be split like that");
  return in.Good();
}

bool SearchSpace::IsWithin(std::uint32_t variable, const Range& inner, const Range& outer) const {
  switch (mVariables[variable].kind) {
    case Kind::kReal: {
      const RealRange x = inner.GetReals(), y = outer.GetReals();
      return y.lower <= x.lower && x.upper <= y.upper;
    }
    case Kind::kInteger:
      return inner.lower == outer.lower && inner.upper == outer.upper;
    case Kind::kOpaque:
      break;
  }
  return false;
}

bool SearchSpace::IsWithin(const ZULTavBox& inner, const ZULTavBox& outer) const {
  for (std::uint32_t i = 0; i < mObjects.size(); ++i)
    if (!IsWithin(i, inner.ranges[i], outer.ranges[i])) return false;
  return true;
}

bool SearchSpace::Meet(std::uint32_t variable, const Range& a, const Range& b) const {
  if (mVariables[variable].kind != Kind::kReal) return a.lower <= b.upper && b.lower <= a.upper;
  const RealRange x = a.GetReals(), y = b.GetReals();
  return x.lower <= y.upper && y.lower <= x.upper;
}

}  // namespace zultav::detail
