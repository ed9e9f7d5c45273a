#include <algorithm>
#include <cmath>
#include <numeric>
#include <type_traits>

#include "framework/engine/detail/Rules.h"

namespace zultav::engine {

namespace {

// Where there are no 128 bits, sums that leave 63 narrow nothing.
#ifdef __SIZEOF_INT128__
__extension__ using Wide = __int128;
#else
using Wide = std::int64_t;
#endif
constexpr Wide kLimit = Wide{1} << (8 * sizeof(Wide) - 2);

/// Leaves room for another number of 64 bits.
constexpr bool IsOrdinary(Wide sum) { return -kLimit < sum && sum < kLimit; }

constexpr int kPassesBeforeDivisors = 8;
constexpr int kPassesBeforePause = 64;

/// c1 x1 + … + cn xn, added up in 64 bits where they are known to hold all sums, else with more and
/// with care.
template <bool kIsWide>
class Terms {
 public:
  using Sum = std::conditional_t<kIsWide, Wide, std::int64_t>;

  Terms(Engine& engine, const Rule& rule)
      : mEngine(engine),
        mSlots(engine.GetProgram().GetArguments(rule).data()),
        mNumbers(engine.GetProgram().GetNumbers(rule)),
        mCount(rule.count - (rule.isReified ? 1 : 0)) {}

  std::uint32_t GetCount() const { return mCount; }
  Slot GetSlot(std::uint32_t i) const { return mSlots[i]; }
  std::int64_t GetCoefficient(std::uint32_t i) const { return mNumbers[i + 1]; }
  Slot GetTruth() const { return mSlots[mCount]; }
  Sum GetRight() const { return mNumbers[0]; }

  void AddUp();
  bool IsAtLeast(Sum bound) const { return mLower.endless == 0 && mLower.sum >= bound; }
  bool IsAtMost(Sum bound) const { return mUpper.endless == 0 && mUpper.sum <= bound; }
  bool MayBe(Sum value) const { return !IsAtLeast(value + 1) && !IsAtMost(value - 1); }

  bool KeepAtMost(Sum bound) { return KeepOnSide<true>(bound); }
  bool KeepAtLeast(Sum bound) { return KeepOnSide<false>(bound); }
  bool KeepEqual(Sum value);
  bool KeepUnequal(Sum value);

 private:
  /// One bound of the sum, without the terms that are endless there.
  struct Bound {
    Sum sum = 0;
    std::uint32_t endless = 0;

    void Add(Sum term, bool isEndless) {
      if constexpr (kIsWide) {
        if (isEndless) {
          ++endless;
        } else if (__builtin_add_overflow(sum, term, &sum) || !IsOrdinary(sum)) {
          endless = 0x80000000;  // and no single term is to blame
          sum = 0;
        }
      } else {
        sum += term;
      }
    }
    /// Whether all but this term are bounded; then their bound.
    bool GetRest(Sum term, bool isEndless, Sum& rest) const {
      rest = sum;
      if constexpr (kIsWide) {
        if (isEndless) return endless == 1;
        return endless == 0 && !__builtin_sub_overflow(sum, term, &rest) && IsOrdinary(rest);
      }
      rest -= term;
      return true;
    }
  };
  /// A term's bounds.
  struct Reach {
    Sum lower, upper;
    bool isEndlessBelow = false, isEndlessAbove = false;
  };

  Reach GetReach(std::uint32_t i) const {
    const std::int64_t low = mEngine.GetLower(mSlots[i]), high = mEngine.GetUpper(mSlots[i]);
    const Sum c = mNumbers[i + 1];
    if constexpr (!kIsWide) return c > 0 ? Reach{c * low, c * high} : Reach{c * high, c * low};
    Reach reach = {0, 0, low == IntegerRange::kMin, high == IntegerRange::kMax};
    reach.isEndlessBelow |= __builtin_mul_overflow(c, Sum{low}, &reach.lower);
    reach.isEndlessAbove |= __builtin_mul_overflow(c, Sum{high}, &reach.upper);
    if (c > 0) return reach;
    return {reach.upper, reach.lower, reach.isEndlessAbove, reach.isEndlessBelow};
  }
  /// Of a positive divisor.
  static Sum FloorQuotient(Sum dividend, Sum divisor) {
    if (divisor == 1) return dividend;
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
  }
  static std::int64_t Clamp(Sum value) {
    if constexpr (kIsWide) {
      if (value > IntegerRange::kMax) return IntegerRange::kMax;
      if (value < IntegerRange::kMin) return IntegerRange::kMin;
    }
    return static_cast<std::int64_t>(value);
  }
  /// Narrows term i to at most (at least) the bound.
  bool CutAbove(std::uint32_t i, Sum bound) {
    const Sum c = mNumbers[i + 1];
    return c > 0 ? mEngine.SetUpper(mSlots[i], Clamp(FloorQuotient(bound, c)))
                 : mEngine.SetLower(mSlots[i], Clamp(-FloorQuotient(bound, -c)));
  }
  bool CutBelow(std::uint32_t i, Sum bound) {
    const Sum c = mNumbers[i + 1];
    return c > 0 ? mEngine.SetLower(mSlots[i], Clamp(-FloorQuotient(-bound, c)))
                 : mEngine.SetUpper(mSlots[i], Clamp(FloorQuotient(-bound, -c)));
  }
  /// False where that overflows.
  bool SubtractFixed(std::uint32_t i, Sum& rest) const {
    Sum term = 0;
    return !__builtin_mul_overflow(Sum{mNumbers[i + 1]}, Sum{mEngine.GetLower(mSlots[i])}, &term) &&
           !__builtin_sub_overflow(rest, term, &rest);
  }
  template <bool kAbove>
  bool KeepOnSide(Sum bound);
  template <bool kAbove>
  bool Cut(std::uint32_t i, const Reach& reach, Sum bound, bool& changed);
  bool PassEqual(Sum value, bool& changed);
  bool MayDivide(Sum value) const;
  bool MayLeaveMultiple(Sum value, std::uint64_t divisor) const;
  std::uint64_t GetMagnitude(std::uint32_t i) const {
    const std::int64_t c = mNumbers[i + 1];
    return c < 0 ? -static_cast<std::uint64_t>(c) : static_cast<std::uint64_t>(c);
  }

  Engine& mEngine;
  const Slot* mSlots;
  const std::int64_t* mNumbers;
  std::uint32_t mCount;
  Bound mLower, mUpper;
};

template <bool kIsWide>
void Terms<kIsWide>::AddUp() {
  mLower = mUpper = {};
  for (std::uint32_t i = 0; i < mCount; ++i) {
    const Reach reach = GetReach(i);
    mLower.Add(reach.lower, reach.isEndlessBelow);
    mUpper.Add(reach.upper, reach.isEndlessAbove);
  }
}

/// Bounds on one side leave the bound of the sum on the other as it is: one pass is enough.
template <bool kIsWide>
template <bool kAbove>
bool Terms<kIsWide>::KeepOnSide(Sum bound) {
  AddUp();
  if (kAbove ? IsAtLeast(bound + 1) : IsAtMost(bound - 1)) return false;
  if (kAbove ? IsAtMost(bound) : IsAtLeast(bound)) {
    mEngine.Retire();
    return true;
  }
  bool changed = false;
  for (std::uint32_t i = 0; i < mCount; ++i)
    if (!Cut<kAbove>(i, GetReach(i), bound, changed)) return false;
  return true;
}

/// Narrows term i from above (below) to what the others leave of the bound of the sum.
template <bool kIsWide>
template <bool kAbove>
inline bool Terms<kIsWide>::Cut(std::uint32_t i, const Reach& reach, Sum bound, bool& changed) {
  Sum rest = 0;
  const bool isKnown = kAbove ? mLower.GetRest(reach.lower, reach.isEndlessBelow, rest)
                              : mUpper.GetRest(reach.upper, reach.isEndlessAbove, rest);
  if (!isKnown) return true;
  const Sum own = bound - rest;
  if (kAbove ? !reach.isEndlessAbove && reach.upper <= own
             : !reach.isEndlessBelow && reach.lower >= own)
    return true;
  changed = true;
  return kAbove ? CutAbove(i, own) : CutBelow(i, own);
}

template <bool kIsWide>
bool Terms<kIsWide>::KeepEqual(Sum value) {
  AddUp();
  bool changed = true;
  for (int passes = 0; changed; ++passes) {
    if (!MayBe(value)) return false;
    if (IsAtLeast(value) && IsAtMost(value)) {
      mEngine.Retire();
      return true;
    }
    // Where no solution is near because of a common divisor, bounds would creep all their way.
    if (passes == kPassesBeforeDivisors && !MayDivide(value)) return false;
    if (passes == kPassesBeforePause) {
      mEngine.RunAgain();
      return true;
    }
    changed = false;
    if (!PassEqual(value, changed)) return false;
  }
  return true;
}

/// Narrows one term after the other, and keeps the bounds of the sum as they become.
template <bool kIsWide>
bool Terms<kIsWide>::PassEqual(Sum value, bool& changed) {
  for (std::uint32_t i = 0; i < mCount; ++i) {
    const Reach reach = GetReach(i);
    if (reach.lower == reach.upper) continue;
    const IntegerRange before = mEngine.GetIntegers(mSlots[i]);
    bool narrows = false;
    if (!Cut<true>(i, reach, value, narrows) || !Cut<false>(i, reach, value, narrows)) return false;
    // A bound that is beyond 64 bits cuts nothing off an endless side.
    if (!narrows || mEngine.GetIntegers(mSlots[i]) == before) continue;
    changed = true;
    if (kIsWide && (mLower.endless | mUpper.endless) != 0) {
      AddUp();
      continue;
    }
    const Reach now = GetReach(i);
    mLower.sum += now.lower - reach.lower;
    mUpper.sum += now.upper - reach.upper;
  }
  return true;
}

/// Whether multiples of the common divisor of all coefficients that are still open, and those of
/// the greatest of them, can make up what the other terms leave of the value.
template <bool kIsWide>
bool Terms<kIsWide>::MayDivide(Sum value) const {
  std::uint64_t common = 0, greatest = 0;
  for (std::uint32_t i = 0; i < mCount; ++i) {
    if (mEngine.IsFixedInteger(mSlots[i])) continue;
    common = std::gcd(common, GetMagnitude(i));
    greatest = std::max(greatest, GetMagnitude(i));
  }
  return MayLeaveMultiple(value, common) && MayLeaveMultiple(value, greatest);
}

template <bool kIsWide>
bool Terms<kIsWide>::MayLeaveMultiple(Sum value, std::uint64_t divisor) const {
  if (divisor < 2 || divisor > IntegerRange::kMax) return true;
  Sum least = value, greatest = value;
  for (std::uint32_t i = 0; i < mCount; ++i) {
    if (!mEngine.IsFixedInteger(mSlots[i]) && GetMagnitude(i) % divisor == 0) continue;
    const Reach reach = GetReach(i);
    if (reach.isEndlessBelow || reach.isEndlessAbove ||
        __builtin_sub_overflow(least, reach.upper, &least) ||
        __builtin_sub_overflow(greatest, reach.lower, &greatest))
      return true;
  }
  const auto step = static_cast<Sum>(divisor);
  Sum multiple = FloorQuotient(greatest, step);
  return __builtin_mul_overflow(multiple, step, &multiple) || multiple >= least;
}

/// Waits until all but one term are fixed.
template <bool kIsWide>
bool Terms<kIsWide>::KeepUnequal(Sum value) {
  std::uint32_t open = mCount;
  for (std::uint32_t i = 0; i < mCount; ++i) {
    const Slot x = mSlots[i];
    if (!mEngine.IsFixedInteger(x)) {
      if (open != mCount && mSlots[open] != x) return true;
      open = i;
    }
  }
  Sum rest = value, coefficient = 0;
  for (std::uint32_t i = 0; i < mCount; ++i) {
    const Sum c = mNumbers[i + 1];
    if (open != mCount && mSlots[i] == mSlots[open])
      coefficient += c;
    else if (!SubtractFixed(i, rest))
      return true;
  }
  if (coefficient == 0) {
    if (rest != 0) mEngine.Retire();
    return rest != 0;
  }
  const Sum forbidden = rest / coefficient;
  if (rest % coefficient == 0 && forbidden == Clamp(forbidden)) {
    const auto hole = static_cast<std::int64_t>(forbidden);
    if (!mEngine.Remove(mSlots[open], hole)) return false;
    if (mEngine.Contains(mSlots[open], hole)) return true;
  }
  mEngine.Retire();
  return true;
}

/// What is known of the relation while its truth is open: 1, 0, or -1.
template <bool kIsWide>
int Decide(Engine& engine, Terms<kIsWide>& terms, bool isEquation) {
  const auto c0 = terms.GetRight();
  terms.AddUp();
  if (!isEquation) return terms.IsAtMost(c0) ? 1 : terms.IsAtLeast(c0 + 1) ? 0 : -1;
  if (!terms.MayBe(c0)) return 0;
  if (terms.IsAtLeast(c0) && terms.IsAtMost(c0)) return 1;
  if (terms.GetCount() != 1) return -1;
  const std::int64_t c = terms.GetCoefficient(0);
  const auto value = static_cast<std::int64_t>(c0 / c);
  if (c0 % c == 0 && value != c0 / c) return -1;
  return c0 % c == 0 && engine.Contains(terms.GetSlot(0), value) ? -1 : 0;
}

template <bool kIsWide>
bool Run(Engine& engine, const Rule& rule) {
  Terms<kIsWide> terms(engine, rule);
  const auto c0 = terms.GetRight();
  if (kIsWide && !IsOrdinary(c0)) return true;
  const bool isEquation = rule.relation != Relation::kLessOrEqual;
  bool holds = rule.relation != Relation::kUnequal;  // the relation = or <= that is looked at
  if (rule.isReified) {
    const Slot truth = terms.GetTruth();
    if (!engine.IsFixedInteger(truth)) {
      const int decided = Decide(engine, terms, isEquation);
      if (decided < 0) return true;
      engine.Retire();
      const bool isTrue = (decided == 1) == holds;
      return (isTrue && rule.isHalf) || engine.Fix(truth, isTrue != rule.isNegated ? 1 : 0);
    }
    const bool isTrue = engine.IsTrue(truth) != rule.isNegated;
    if (!isTrue && rule.isHalf) {
      engine.Retire();
      return true;
    }
    holds = isTrue == holds;
  }
  if (isEquation) return holds ? terms.KeepEqual(c0) : terms.KeepUnequal(c0);
  return holds ? terms.KeepAtMost(c0) : terms.KeepAtLeast(c0 + 1);
}

}  // namespace

bool RunLinear(Engine& engine, const Rule& rule, bool isSmall) {
  return isSmall ? Run<false>(engine, rule) : Run<true>(engine, rule);
}

bool HasSmallSums(const Engine& engine, const Rule& rule) {
  // As doubles: their errors are far below what is left.
  constexpr double kSmall = 0x1p61;
  const Program& program = engine.GetProgram();
  const std::int64_t* numbers = program.GetNumbers(rule);
  double sum = std::fabs(static_cast<double>(numbers[0]));
  for (const Slot x : program.GetArguments(rule).first(rule.count - (rule.isReified ? 1U : 0U))) {
    const IntegerRange range = engine.GetIntegers(x);
    const auto c = static_cast<double>(*++numbers);
    sum += std::fabs(c) * std::max(std::fabs(static_cast<double>(range.lower)),
                                   std::fabs(static_cast<double>(range.upper)));
  }
  return sum < kSmall;
}

}  // namespace zultav::engine
