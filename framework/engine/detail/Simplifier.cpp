#include "framework/engine/detail/Simplifier.h"

#include <algorithm>
#include <bit>
#include <unordered_map>
#include <utility>

namespace zultav::engine {

namespace {

// A pass that changes something may let the next one change more; a model of any size is as simple
// as it gets within a few.
constexpr int kPasses = 50;
constexpr std::int64_t kGreatestPower = 1000;

class Simplifier {
 public:
  explicit Simplifier(Draft& draft) : mDraft(draft) {}

  void Run() {
    for (int pass = 0; pass < kPasses && !mDraft.infeasible; ++pass) {
      mChanged = false;
      ShareConstants();
      DecideComparisons();
      DecideTruths();
      if (!mChanged) ShareFormulas();
      if (!mChanged) break;
    }
    mDraft.Resolve();
    DropUnused();
  }

 private:
  SlotInfo& InfoOf(Slot x) { return mDraft.slots[mDraft.Find(x)]; }
  bool IsBoolean(Slot x) { return InfoOf(x).isBoolean; }
  bool IsTrue(Slot x) { return mDraft.integers(x).lower > 0; }
  bool IsFalse(Slot x) { return mDraft.integers(x).upper <= 0; }

  void Decide(Slot truth, bool value) {
    if (value ? IsTrue(truth) : IsFalse(truth)) return;
    mDraft.Narrow(truth, IntegerRange::Only(value));
    mChanged = true;
  }

  void Unite(Slot x, Slot y, bool& united) {
    if (mDraft.Find(x) == mDraft.Find(y)) {
      united = true;
      return;
    }
    united = mDraft.Unite(x, y);
    mChanged = mChanged || united;
  }

  struct Constant {
    bool isBoolean;
    std::int64_t value;
    Slot slot;
    auto operator<=>(const Constant&) const = default;
  };

  /// Of every known number there is one slot.
  void ShareConstants() {
    mConstants.clear();
    for (Slot slot = 0; slot < mDraft.slots.size(); ++slot) {
      SlotInfo& info = mDraft.slots[slot];
      if (mDraft.parents[slot] != slot || info.kind != Kind::kInteger || !mDraft.IsFixed(slot))
        continue;
      info.isConstant = true;
      mConstants.push_back({info.isBoolean, mDraft.integers(slot).lower, slot});
    }
    std::sort(mConstants.begin(), mConstants.end());
    const auto same = [this](const Constant& kept, const Constant& other) {
      return kept.isBoolean == other.isBoolean && kept.value == other.value &&
             mDraft.Unite(kept.slot, other.slot);
    };
    mConstants.erase(std::unique(mConstants.begin(), mConstants.end(), same), mConstants.end());
  }

  Slot FindConstant(std::int64_t value) {
    const auto place =
        std::lower_bound(mConstants.begin(), mConstants.end(), Constant{false, value, 0});
    if (place != mConstants.end() && !place->isBoolean && place->value == value) return place->slot;
    return mConstants.insert(place, {false, value, mDraft.AddConstant(value)})->slot;
  }

  static Comparison Negated(const Comparison& comparison) {
    switch (comparison.relation) {
      case Relation::kEqual:
        return {Relation::kUnequal, comparison.left, comparison.right, kNone};
      case Relation::kUnequal:
        return {Relation::kEqual, comparison.left, comparison.right, kNone};
      case Relation::kLess:
        return {Relation::kLessOrEqual, comparison.right, comparison.left, kNone};
      case Relation::kLessOrEqual:
        break;
    }
    return {Relation::kLess, comparison.right, comparison.left, kNone};
  }

  void DecideComparisons() {
    std::erase_if(mDraft.comparisons, [this](Comparison& comparison) {
      if (comparison.truth != kNone) {
        if (IsFalse(comparison.truth))
          comparison = Negated(comparison);
        else if (IsTrue(comparison.truth))
          comparison.truth = kNone;
      }
      return IsDone(comparison) || (IsBoolean(comparison.left) && IsBoolean(comparison.right) &&
                                    comparison.truth == kNone && IsDecided(comparison));
    });
  }

  /// Of a comparison of truth values that holds and is no equation: whether what is known of one
  /// decides the other.
  bool IsDecided(const Comparison& comparison) {
    const Slot left = comparison.left, right = comparison.right;
    switch (comparison.relation) {
      case Relation::kEqual:
        return false;
      case Relation::kUnequal:
        if (IsTrue(left) || IsFalse(left)) return Decide(right, IsFalse(left)), true;
        if (IsTrue(right) || IsFalse(right)) return Decide(left, IsFalse(right)), true;
        return false;
      case Relation::kLess:
        Decide(left, false);
        Decide(right, true);
        return true;
      case Relation::kLessOrEqual:
        break;
    }
    if (IsTrue(left)) Decide(right, true);
    if (IsFalse(right)) Decide(left, false);
    return IsFalse(left) || IsTrue(right);
  }

  /// Whether nothing of the comparison is left to say.
  bool IsDone(const Comparison& comparison) {
    const bool isSame = mDraft.Find(comparison.left) == mDraft.Find(comparison.right);
    const bool holdsForSame =
        comparison.relation == Relation::kEqual || comparison.relation == Relation::kLessOrEqual;
    if (isSame && InfoOf(comparison.left).kind != Kind::kOpaque) {
      if (comparison.truth != kNone)
        Decide(comparison.truth, holdsForSame);
      else if (!holdsForSame)
        mDraft.infeasible = true;
      return true;
    }
    if (comparison.truth != kNone || comparison.relation != Relation::kEqual) return false;
    bool united = false;
    Unite(comparison.left, comparison.right, united);
    return united;
  }

  /// From results to operands, so that one pass decides the operands of conjunctions in
  /// conjunctions.
  void DecideTruths() {
    for (auto formula = mDraft.formulas.rbegin(); formula != mDraft.formulas.rend(); ++formula)
      if (formula->result != kNone && IsBoolean(formula->result) && IsBoolean(formula->first))
        DecideGate(*formula);
    std::erase_if(mDraft.formulas, [](const Formula& formula) { return formula.result == kNone; });
  }

  void DecideGate(Formula& formula) {
    if (formula.function == Function::kNegative)
      DecideNegation(formula);
    else if (formula.function == Function::kMinimum || formula.function == Function::kMaximum)
      DecideConnective(formula, formula.function == Function::kMinimum);
  }

  void DecideNegation(Formula& formula) {
    for (const auto& [from, to] :
         {std::pair(formula.result, formula.first), std::pair(formula.first, formula.result)}) {
      if (!IsTrue(from) && !IsFalse(from)) continue;
      Decide(to, IsFalse(from));
      formula.result = kNone;
      return;
    }
  }

  /// Of a conjunction (or, with truth and falsehood exchanged, a disjunction).
  void DecideConnective(Formula& formula, bool isConjunction) {
    const auto isHigh = [&](Slot x) { return isConjunction ? IsTrue(x) : IsFalse(x); };
    const auto isLow = [&](Slot x) { return isConjunction ? IsFalse(x) : IsTrue(x); };
    const Slot first = formula.first, second = formula.second, result = formula.result;
    bool isDone = true;
    if (isHigh(result)) {
      Decide(first, isConjunction);
      Decide(second, isConjunction);
    } else if (isLow(first) || isLow(second)) {
      Decide(result, !isConjunction);
    } else if (isHigh(first) || mDraft.Find(first) == mDraft.Find(second)) {
      Unite(result, second, isDone);
    } else if (isHigh(second)) {
      Unite(result, first, isDone);
    } else {
      isDone = false;
    }
    if (isDone) formula.result = kNone;
  }

  // --- Unused results -------------------------------------------------------------------------

  /// From results to operands. A function that is not defined everywhere says something even where
  /// nobody asks for its result.
  void DropUnused() {
    std::vector<std::uint32_t> uses(mDraft.slots.size(), 0);
    const auto use = [&](Slot slot) {
      if (slot != kNone) ++uses[slot];
    };
    std::for_each(mDraft.declared.begin(), mDraft.declared.end(), use);
    std::for_each(mDraft.observed.begin(), mDraft.observed.end(), use);
    for (const Group& group : mDraft.groups)
      std::for_each(group.slots.begin(), group.slots.end(), use);
    for (const Draft::Hole& hole : mDraft.holes) use(hole.slot);
    for (const Comparison& comparison : mDraft.comparisons) {
      use(comparison.left);
      use(comparison.right);
      use(comparison.truth);
    }
    for (const Formula& formula : mDraft.formulas) {
      use(formula.result);
      use(formula.first);
      use(formula.second);
    }
    for (auto formula = mDraft.formulas.rbegin(); formula != mDraft.formulas.rend(); ++formula) {
      const bool isUnused =
          uses[formula->result] == 1 && IsUnlimited(formula->result) && IsTotal(*formula);
      if (!isUnused) continue;
      --uses[formula->first];
      --uses[formula->second];
      formula->result = kNone;
    }
    std::erase_if(mDraft.formulas, [](const Formula& formula) { return formula.result == kNone; });
  }

  bool IsTotal(const Formula& formula) {
    // That a function of reals is whole says something.
    const auto isReal = [this](Slot x) { return InfoOf(x).kind == Kind::kReal; };
    if (!isReal(formula.result) && formula.function != Function::kSign &&
        (isReal(formula.first) || isReal(formula.second)))
      return false;
    if (formula.function == Function::kPower) return ExponentOf(formula.second).lower >= 0;
    return !RowOf(formula.function).isPartial;
  }

  bool IsUnlimited(Slot x) {
    return InfoOf(x).kind == Kind::kReal ? mDraft.reals(x) == RealRange()
                                         : mDraft.integers(x) == IntegerRange();
  }

  // --- Shared results ------------------------------------------------------------------------

  struct Key {
    Function function;
    Slot first, second;
    bool operator==(const Key&) const = default;
  };
  Key KeyOf(const Formula& formula) {
    Key key = {formula.function, mDraft.Find(formula.first), mDraft.Find(formula.second)};
    if (RowOf(key.function).isCommutative && key.second < key.first)
      std::swap(key.first, key.second);
    return key;
  }
  static std::size_t HashOf(const Key& key) {
    std::uint64_t hash = (std::uint64_t{key.first} << 32 | key.second) * 0x9e3779b97f4a7c15u;
    hash = (hash ^ static_cast<std::uint64_t>(key.function)) * 0x9e3779b97f4a7c15u;
    return static_cast<std::size_t>(hash ^ (hash >> 32));
  }

  void ShareFormulas() {
    std::vector<Formula>& formulas = mDraft.formulas;
    // An open hash table of the formulas that stay.
    std::vector<std::uint32_t> table(std::bit_ceil(2 * formulas.size() + 1), kNone);
    const auto find = [&](const Key& key) -> std::uint32_t& {
      const std::size_t mask = table.size() - 1;
      std::size_t place = HashOf(key) & mask;
      while (table[place] != kNone && !(KeyOf(formulas[table[place]]) == key))
        place = (place + 1) & mask;
      return table[place];
    };
    std::uint32_t kept = 0;
    for (Formula formula : formulas) {
      FindPower(formula);
      std::uint32_t& known = find(KeyOf(formula));
      if (known == kNone) {
        known = kept;
        if (formula.function == Function::kPower) NotePower(formula);
      } else {
        bool united = false;
        Unite(formulas[known].result, formula.result, united);
        if (united) continue;
      }
      formulas[kept++] = formula;
    }
    formulas.resize(kept);
  }

  /// base ^ exponent, which may be 1.
  struct Power {
    Slot base;
    std::int64_t exponent;
  };

  Power PowerOf(Slot x) {
    x = mDraft.Find(x);
    const auto known = mPowers.find(x);
    return known != mPowers.end() ? Power{mDraft.Find(known->second.base), known->second.exponent}
                                  : Power{x, 1};
  }

  void NotePower(const Formula& formula) {
    const IntegerRange exponent = ExponentOf(formula.second);
    if (exponent.IsScalar() && exponent.lower > 1)
      mPowers.try_emplace(mDraft.Find(formula.result),
                          Power{mDraft.Find(formula.first), exponent.lower});
  }

  IntegerRange ExponentOf(Slot x) {
    return InfoOf(x).kind == Kind::kInteger ? mDraft.integers(x) : IntegerRange();
  }

  /// A product of powers of one base is a power of it.
  void FindPower(Formula& formula) {
    if (formula.function != Function::kProduct || IsBoolean(formula.first)) return;
    const Power first = PowerOf(formula.first), second = PowerOf(formula.second);
    if (first.base != second.base || InfoOf(first.base).isConstant) return;
    const std::int64_t exponent = first.exponent + second.exponent;
    if (exponent > kGreatestPower) return;
    formula = {Function::kPower, formula.result, first.base, FindConstant(exponent)};
  }

  Draft& mDraft;
  bool mChanged = false;
  std::unordered_map<Slot, Power> mPowers;  // by result
  std::vector<Constant> mConstants;         // in their order
};

}  // namespace

void Simplify(Draft& draft) { Simplifier(draft).Run(); }

}  // namespace zultav::engine
