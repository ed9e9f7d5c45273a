#include "framework/engine/ExactCheck.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

#include "framework/engine/detail/BigInteger.h"

namespace zultav::engine {

namespace {

using Verdict = ExactCheck::Verdict;

// The longest numbers that are looked at, in bits.
constexpr std::uint64_t kLongest = 1 << 14;
constexpr std::uint64_t kLongestDivisor = 1 << 8;  // of both numbers of which one is sought
// Results come after their operands, so that few passes are needed; what is not computed by then
// is not known.
constexpr int kPasses = 100;
// Sums of products that rules add up in any case.
constexpr double kVast = 0x1p125;

/// A value, or why there is none.
struct Result {
  Verdict verdict = Verdict::kHolds;
  BigInteger value;
};
Result None(Verdict verdict) { return {verdict, {}}; }

Result Power(const BigInteger& base, const BigInteger& exponent) {
  if (exponent.GetSign() == 0 || base == 1) return {Verdict::kHolds, 1};
  if (base == -1) return {Verdict::kHolds, exponent.IsOdd() ? -1 : 1};
  if (exponent.GetSign() < 0) return None(Verdict::kFails);  // a fraction, or a division by 0
  if (base.GetSign() == 0) return {Verdict::kHolds, 0};
  Result power = {Verdict::kHolds, 1};
  for (BigInteger i; i < exponent; i = i + 1) {
    if (power.value.GetBits() > kLongest) return None(Verdict::kUnknown);
    power.value = power.value * base;
  }
  return power;
}

Result Evaluate(Function function, const BigInteger& x, const BigInteger& y) {
  const auto give = [](BigInteger value) { return Result{Verdict::kHolds, std::move(value)}; };
  switch (function) {
    case Function::kIdentity:
    case Function::kRound:
    case Function::kFloor:
    case Function::kCeil:
      return give(x);
    case Function::kSum:
      return give(x + y);
    case Function::kDifference:
      return give(x - y);
    case Function::kProduct:
      return give(x * y);
    case Function::kSquare:
      return give(x * x);
    case Function::kNegative:
      return give(-x);
    case Function::kPower:
      return Power(x, y);
    case Function::kMinimum:
      return give(std::min(x, y));
    case Function::kMaximum:
      return give(std::max(x, y));
    case Function::kAbsolute:
      return give(x.GetSign() < 0 ? -x : x);
    case Function::kSign:
      return give(x.GetSign());
    case Function::kGcd: {
      if (std::min(x.GetBits(), y.GetBits()) > kLongestDivisor) return None(Verdict::kUnknown);
      BigInteger divisor = x, rest = y, quotient, remainder;
      while (rest.GetSign() != 0) {
        BigInteger::Divide(divisor, rest, quotient, remainder);
        divisor = std::exchange(rest, remainder);
      }
      return give(divisor.GetSign() < 0 ? -divisor : divisor);
    }
    case Function::kQuotient:
    case Function::kDiv:
    case Function::kRemainder: {
      if (y.GetSign() == 0) return None(Verdict::kFails);
      BigInteger quotient, remainder;
      BigInteger::Divide(x, y, quotient, remainder);
      if (function == Function::kDiv) return give(quotient);
      if (function == Function::kRemainder) return give(remainder);
      return remainder.GetSign() == 0 ? give(quotient) : None(Verdict::kFails);
    }
    default:
      return None(Verdict::kUnknown);
  }
}

bool Holds(Relation relation, const BigInteger& x, const BigInteger& y) {
  switch (relation) {
    case Relation::kEqual:
      return x == y;
    case Relation::kUnequal:
      return x != y;
    case Relation::kLess:
      return x < y;
    default:
      return x <= y;
  }
}

}  // namespace

/// The numbers of one solution. What is not known is computed from what is; what is, compared.
class ExactCheck::Evaluation {
 public:
  Evaluation(const Program& program, const Engine& engine)
      : mProgram(program), mValues(program.GetNumberOfSlots()) {
    // A constant at an end of the scale is a number, which no range says.
    for (Slot x = 0; x < mValues.size(); ++x)
      if (IsInteger(x) && program.GetSlot(x).isConstant)
        mValues[x] = BigInteger(program.GetInitialIntegers(x).lower);
      else if (IsInteger(x) && engine.IsFixedInteger(x))
        mValues[x] = BigInteger(engine.GetLower(x));
  }

  Verdict Run() {
    bool isNew = true;
    for (int pass = 0; isNew && pass < kPasses; ++pass) {
      isNew = false;
      for (const Formula& formula : mProgram.GetFormulas()) isNew = Complete(formula) || isNew;
      for (const Comparison& comparison : mProgram.GetComparisons())
        isNew = Complete(comparison) || isNew;
      for (const Group& group : mProgram.GetGroups()) isNew = Complete(group) || isNew;
    }
    for (const Formula& formula : mProgram.GetFormulas()) Take(Check(formula));
    for (const Comparison& comparison : mProgram.GetComparisons()) Take(Check(comparison));
    for (const Group& group : mProgram.GetGroups()) Take(Check(group));
    return mVerdict;
  }

 private:
  bool IsInteger(Slot x) const { return mProgram.GetSlot(x).kind == Kind::kInteger; }
  bool AreIntegers(std::initializer_list<Slot> slots) const {
    return std::all_of(slots.begin(), slots.end(),
                       [this](Slot x) { return x == kNone || IsInteger(x); });
  }
  bool AreKnown(std::span<const Slot> slots) const {
    return std::all_of(slots.begin(), slots.end(),
                       [this](Slot x) { return mValues[x].has_value(); });
  }
  bool AreKnown(std::initializer_list<Slot> slots) const {
    return AreKnown(std::span(slots.begin(), slots.size()));
  }
  /// Whether it is known and what a range says: an end of the scale stands for all beyond it.
  bool IsOrdinary(Slot x) const {
    return AreKnown({x}) && IntegerRange::kMin < *mValues[x] && *mValues[x] < IntegerRange::kMax;
  }
  void Take(Verdict verdict) {
    if (mVerdict == Verdict::kFails || verdict == Verdict::kHolds) return;
    mVerdict = verdict;
  }
  bool Set(Slot x, BigInteger value) {
    mValues[x] = std::move(value);
    return true;
  }

  Result ValueOf(const Formula& formula) const {
    const BigInteger &x = *mValues[formula.first], &y = *mValues[formula.second];
    if (formula.function == Function::kNegative && mProgram.GetSlot(formula.result).isBoolean)
      return {Verdict::kHolds, 1 - x};
    Result result = Evaluate(formula.function, x, y);
    if (result.value.GetBits() > kLongest) return None(Verdict::kUnknown);
    return result;
  }
  /// Computes the one value of the formula that is not known. Answers whether it did.
  bool Complete(const Formula& formula) {
    const auto [function, z, x, y] = formula;
    if (!AreIntegers({z, x, y})) return false;
    if (!mValues[z].has_value() && AreKnown({x, y})) {
      Result result = ValueOf(formula);
      return result.verdict == Verdict::kHolds && Set(z, std::move(result.value));
    }
    if (function == Function::kNegative && AreKnown({z}) && !AreKnown({x}))
      return Set(x, mProgram.GetSlot(x).isBoolean ? 1 - *mValues[z] : -*mValues[z]);
    if (function == Function::kProduct) return CompleteFactor(z, x, y) || CompleteFactor(z, y, x);
    if (function != Function::kSum || x == y) return false;
    if (AreKnown({z, y}) && !AreKnown({x})) return Set(x, *mValues[z] - *mValues[y]);
    if (AreKnown({z, x}) && !AreKnown({y})) return Set(y, *mValues[z] - *mValues[x]);
    return false;
  }
  /// Where a remainder is left, the formula is found not to hold later.
  bool CompleteFactor(Slot product, Slot known, Slot open) {
    if (!AreKnown({product, known}) || AreKnown({open}) || mValues[known]->GetSign() == 0)
      return false;
    BigInteger quotient, remainder;
    BigInteger::Divide(*mValues[product], *mValues[known], quotient, remainder);
    return Set(open, std::move(quotient));
  }
  bool Complete(const Comparison& comparison) {
    const auto [relation, left, right, truth] = comparison;
    if (!AreIntegers({left, right, truth})) return false;
    if (truth != kNone)
      return !AreKnown({truth}) && AreKnown({left, right}) &&
             Set(truth, Holds(relation, *mValues[left], *mValues[right]) ? 1 : 0);
    if (relation != Relation::kEqual || AreKnown({left}) == AreKnown({right})) return false;
    return AreKnown({left}) ? Set(right, *mValues[left]) : Set(left, *mValues[right]);
  }
  bool Complete(const Group& group) {
    if (group.code != Code::kCount || AreKnown({group.slots[0]})) return false;
    const auto truths = std::span(group.slots).subspan(1);
    return AreKnown(truths) && Set(group.slots[0], CountTruths(truths));
  }
  BigInteger CountTruths(std::span<const Slot> truths) const {
    return std::count_if(truths.begin(), truths.end(), [this](Slot x) { return *mValues[x] == 1; });
  }

  Verdict Check(const Formula& formula) const {
    const auto [function, z, x, y] = formula;
    if (!AreIntegers({z, x, y})) return Verdict::kHolds;  // not ours to say
    if (!AreKnown({x, y})) return Verdict::kUnknown;
    const Result result = ValueOf(formula);
    if (result.verdict != Verdict::kHolds) return result.verdict;
    if (!AreKnown({z})) return Verdict::kUnknown;
    return *mValues[z] == result.value ? Verdict::kHolds : Verdict::kFails;
  }
  Verdict Check(const Comparison& comparison) const {
    const auto [relation, left, right, truth] = comparison;
    if (!AreIntegers({left, right, truth})) return Verdict::kHolds;
    if (!AreKnown({left, right}) || (truth != kNone && !AreKnown({truth})))
      return Verdict::kUnknown;
    const bool holds = Holds(relation, *mValues[left], *mValues[right]);
    const bool isAsked = truth == kNone || *mValues[truth] == 1;
    return holds == isAsked ? Verdict::kHolds : Verdict::kFails;
  }
  Verdict Check(const Group& group) const {
    if (group.code == Code::kFilter) return Verdict::kHolds;  // by its own word
    if (group.code == Code::kRelation)  // by its own word, of integers of 64 bits
      return std::all_of(group.slots.begin(), group.slots.end(),
                         [this](Slot x) { return !IsInteger(x) || IsOrdinary(x); })
                 ? Verdict::kHolds
                 : Verdict::kUnknown;
    if (!AreKnown(group.slots)) return Verdict::kUnknown;
    if (group.code == Code::kCount)
      return *mValues[group.slots[0]] == CountTruths(std::span(group.slots).subspan(1))
                 ? Verdict::kHolds
                 : Verdict::kFails;
    if (group.code == Code::kPrimality)
      // The rule decides what it has one value for, and that what is negative is no prime.
      return *mValues[group.slots[1]] < IntegerRange::kMax ? Verdict::kHolds : Verdict::kUnknown;
    std::vector<BigInteger> values;
    for (const Slot x : group.slots) values.push_back(*mValues[x]);
    std::sort(values.begin(), values.end());
    return std::adjacent_find(values.begin(), values.end()) == values.end() ? Verdict::kHolds
                                                                            : Verdict::kFails;
  }

  const Program& mProgram;
  std::vector<std::optional<BigInteger>> mValues;
  Verdict mVerdict = Verdict::kHolds;
};

ExactCheck::ExactCheck(const Program& program)
    : mProgram(program), mIsNeeded(program.HasVastNumbers()) {
  std::vector<bool> isSeen(program.GetNumberOfSlots(), false);
  mSlots.reserve(program.GetNumberOfSlots());
  for (const Rule& rule : program.GetRules()) {
    if (rule.code == Code::kStatement || rule.code == Code::kFilter) continue;
    for (const Slot x : program.GetArguments(rule)) {
      if (!isSeen[x] && program.GetSlot(x).kind == Kind::kInteger) mSlots.push_back(x);
      isSeen[x] = true;
    }
    if (rule.code != Code::kLinear) continue;
    const std::int64_t* numbers = program.GetNumbers(rule);
    double sum = std::fabs(static_cast<double>(numbers[0]));
    for (std::uint32_t i = 1; i + (rule.isReified ? 1 : 0) <= rule.count; ++i)
      sum += std::fabs(static_cast<double>(numbers[i])) * 0x1p63;
    mIsNeeded = mIsNeeded || sum > kVast;
  }
}

Verdict ExactCheck::Check(const Engine& engine) const {
  // Everywhere else the rules have decided by the numbers themselves.
  const bool isOpen =
      std::any_of(mSlots.begin(), mSlots.end(), [&](Slot x) { return !engine.IsFixedInteger(x); });
  return mIsNeeded || isOpen ? Evaluation(mProgram, engine).Run() : Verdict::kHolds;
}

}  // namespace zultav::engine
