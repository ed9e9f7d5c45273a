#include "framework/engine/detail/NetworkReader.h"

#include <array>
#include <cstdint>
#include <utility>

#include "framework/solver/LocalCopy.h"
#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoRelation.h"
#include "framework/solver/ZULTavAbstractTypes.h"

namespace zultav::engine {

namespace {

constexpr RealRange kPi = {0x1.921fb54442d18p+1, 0x1.921fb54442d19p+1};
constexpr RealRange kE = {0x1.5bf0a8b145769p+1, 0x1.5bf0a8b14576ap+1};
// Sets of values that a module's domain may hold are read value by value up to this width.
constexpr std::uint64_t kWidestSet = 4096;

/// What is the same for all objects of a type.
struct TypeFacts {
  const ZULTaVoObjectDescriptor* type;
  SlotInfo info;
  IntegerRange integers;  // all values of the type
  RealRange reals;
};

struct FunctionOfRule {
  ZULTaVoRule rule;
  Function function;
};
/// Rules that say a0 = function(a1, a2).
constexpr FunctionOfRule kFunctionRules[] = {
    {ZULTaVoRule::kSum,             Function::kSum      },
    {ZULTaVoRule::kProduct,         Function::kProduct  },
    {ZULTaVoRule::kPower,           Function::kPower    },
    {ZULTaVoRule::kRemainder,       Function::kRemainder},
    {ZULTaVoRule::kMinimum,         Function::kMinimum  },
    {ZULTaVoRule::kMaximum,         Function::kMaximum  },
    {ZULTaVoRule::kNegation,        Function::kNegative },
    {ZULTaVoRule::kBooleanNegation, Function::kNegative },
    {ZULTaVoRule::kAbsolute,        Function::kAbsolute },
    {ZULTaVoRule::kExp,             Function::kExp      },
    {ZULTaVoRule::kSqrt,            Function::kSqrt     },
    {ZULTaVoRule::kSine,            Function::kSine     },
    {ZULTaVoRule::kCosine,          Function::kCosine   },
    {ZULTaVoRule::kTangent,         Function::kTangent  },
    {ZULTaVoRule::kRound,           Function::kRound    },
    {ZULTaVoRule::kFloor,           Function::kFloor    },
    {ZULTaVoRule::kCeil,            Function::kCeil     },
    {ZULTaVoRule::kSinh,            Function::kSinh     },
    {ZULTaVoRule::kCosh,            Function::kCosh     },
    {ZULTaVoRule::kTanh,            Function::kTanh     },
    {ZULTaVoRule::kAsinh,           Function::kAsinh    },
    {ZULTaVoRule::kAcosh,           Function::kAcosh    },
    {ZULTaVoRule::kAtanh,           Function::kAtanh    },
    {ZULTaVoRule::kLog2,            Function::kLog2     },
    {ZULTaVoRule::kLog10,           Function::kLog10    },
    {ZULTaVoRule::kExp2,            Function::kExp2     },
    {ZULTaVoRule::kCbrt,            Function::kCbrt     },
    {ZULTaVoRule::kHypot,           Function::kHypot    },
    {ZULTaVoRule::kArcsin,          Function::kAsin     },
    {ZULTaVoRule::kArccos,          Function::kAcos     },
    {ZULTaVoRule::kArctan,          Function::kAtan     },
    {ZULTaVoRule::kAtan2,           Function::kAtan2    },
    {ZULTaVoRule::kDiv,             Function::kDiv      },
    {ZULTaVoRule::kGcd,             Function::kGcd      },
};

struct RelationOfRule {
  ZULTaVoRule rule;
  Relation relation;
  bool isReified;
};
/// Rules that say `a0 relation a1`, with a2 equal to a0 or the truth of it.
constexpr RelationOfRule kRelationRules[] = {
    {ZULTaVoRule::kEqualTernary,       Relation::kEqual,       false},
    {ZULTaVoRule::kUnequalTernary,     Relation::kUnequal,     false},
    {ZULTaVoRule::kLessTernary,        Relation::kLess,        false},
    {ZULTaVoRule::kLessOrEqualTernary, Relation::kLessOrEqual, false},
    {ZULTaVoRule::kBooleanEqual,       Relation::kEqual,       true },
    {ZULTaVoRule::kBooleanUnequal,     Relation::kUnequal,     true },
    {ZULTaVoRule::kBooleanLess,        Relation::kLess,        true },
    {ZULTaVoRule::kBooleanLessOrEqual, Relation::kLessOrEqual, true },
};

/// The row of a rule, or null.
template <const auto& rows>
const auto* FindRule(ZULTaVoRule rule) {
  static constexpr std::size_t kRows = std::size(rows);
  static constexpr auto kRowOf = [] {
    std::array<std::uint8_t, 256> rowOf{};
    rowOf.fill(kRows);
    for (std::uint8_t i = 0; i < kRows; ++i) rowOf[static_cast<std::uint8_t>(rows[i].rule)] = i;
    return rowOf;
  }();
  const std::size_t row = kRowOf[static_cast<std::uint8_t>(rule)];
  return row < kRows ? &rows[row] : nullptr;
}

class NetworkReader {
 public:
  NetworkReader(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared,
                std::span<ZULTaVoAny* const> observed)
      : mNetwork(network) {
    const std::size_t objects = network.GetNumberOfObjects();
    mDraft.slotOfObject.assign(objects, kNone);
    mDraft.slots.reserve(objects);
    mDraft.initial.reserve(2 * objects);
    mDraft.parents.reserve(objects);
    mDraft.formulas.reserve(network.GetNumberOfConstraints());
    mDraft.declared.reserve(declared.size());
    for (ZULTaVoAny* value : declared)
      mDraft.declared.push_back(SlotOf(network.GetIndex(value), true));
    for (ZULTaVoAny* value : observed) mDraft.observed.push_back(SlotOf(network.GetIndex(value)));
  }

  Draft Read() {
    for (std::size_t i = 0; i < mNetwork.GetNumberOfObjects(); ++i)
      if (mNetwork.GetObject(i)->IsNil()) mDraft.infeasible = true;
    for (std::size_t i = 0; i < mNetwork.GetNumberOfConstraints(); ++i)
      ReadConstraint(static_cast<std::uint32_t>(i));
    return std::move(mDraft);
  }

 private:
  /// Valid until it is called for another value.
  const TypeFacts& FactsOf(const ZULTaVoAny& value) {
    const ZULTaVoObjectDescriptor* type = value.GetDescriptor();
    for (const TypeFacts& known : mFacts)
      if (known.type == type) return known;
    TypeFacts& facts = mFacts.emplace_back();
    facts.type = type;
    const LocalCopy any(value);
    if (!any) throw std::bad_alloc();
    any->SetAny();
    facts.info.isSingle = any->GetCardinality() == kSingleAny;
    facts.info.kind = Kind::kOpaque;
    if (const auto* integer = ZULTaVoCast<const ZULTaVoInteger>(&*any)) {
      facts.info.kind = Kind::kInteger;
      facts.integers = {integer->GetLowerBound(), integer->GetUpperBound()};
    } else if (ZULTaVoCast<const ZULTaVoBoolean>(&*any) != nullptr) {
      facts.info.kind = Kind::kInteger;
      facts.info.isBoolean = true;
      facts.integers = {0, 1};
    } else if (const auto* real = ZULTaVoCast<const ZULTaVoReal>(&*any)) {
      // Values of a type that holds one real are compared with a tolerance: only the module knows.
      if (!facts.info.isSingle) facts.info.kind = Kind::kReal;
      facts.reals = {real->GetLowerBound(), real->GetUpperBound()};
    }
    return facts;
  }

  Slot SlotOf(std::size_t index, bool isDeclared = false) {
    Slot& slot = mDraft.slotOfObject.at(index);
    if (slot == kNone) slot = AddSlot(index, isDeclared);
    return slot;
  }

  Slot AddSlot(std::size_t index, bool isDeclared) {
    const ZULTaVoAny& value = *mNetwork.GetObject(index);
    const TypeFacts& facts = FactsOf(value);
    SlotInfo info = facts.info;
    info.object = static_cast<std::uint32_t>(index);
    const ZULTaVoConstant* number = mNetwork.GetConstantAt(index);
    info.isConstant = number != nullptr && info.kind != Kind::kOpaque;
    switch (info.kind) {
      case Kind::kInteger:
        if (info.isConstant) return mDraft.AddSlot(info, IntegerRange::Only(number->integer));
        return AddIntegers(value, info, facts.integers, isDeclared);
      case Kind::kReal: {
        const RealRange range = info.isConstant ? RangeOf(*number) : RealsOf(value, facts.reals);
        info.isConstant = info.isConstant || (!isDeclared && range.IsScalar());
        return mDraft.AddSlot(info, range);
      }
      case Kind::kOpaque:
        break;
    }
    return mDraft.AddSlot(info, IntegerRange());
  }

  static RealRange RangeOf(const ZULTaVoConstant& number) {
    if (!number.isInteger) return {number.lower, number.upper};
    const IntegerRange integer = IntegerRange::Only(number.integer);
    return {LowerAsDouble(integer), UpperAsDouble(integer)};
  }

  /// Hidden values are not limited by what their type can hold.
  Slot AddIntegers(const ZULTaVoAny& value, const SlotInfo& info, const IntegerRange& all,
                   bool isDeclared) {
    if (info.isBoolean) {
      const auto& truth = static_cast<const ZULTaVoBoolean&>(value);
      return mDraft.AddSlot(info, IntegerRange(truth.IsTrue() != 0, truth.IsFalse() == 0));
    }
    const auto& integer = static_cast<const ZULTaVoInteger&>(value);
    const IntegerRange known = {integer.GetLowerBound(), integer.GetUpperBound()};
    IntegerRange range = known;
    if (!isDeclared && known.lower == all.lower) range.lower = IntegerRange::kMin;
    if (!isDeclared && known.upper == all.upper) range.upper = IntegerRange::kMax;
    const Slot slot = mDraft.AddSlot(info, range);
    if (!known.IsEmpty()) ReadHoles(integer, known, slot);
    return slot;
  }

  /// A module's domain may hold less than all integers between its bounds.
  void ReadHoles(const ZULTaVoInteger& value, const IntegerRange& range, Slot slot) {
    const auto width =
        static_cast<std::uint64_t>(range.upper) - static_cast<std::uint64_t>(range.lower);
    const long count = value.GetCardinality();
    if (count < 0 || static_cast<std::uint64_t>(count) == width + 1 || width > kWidestSet) return;
    const LocalCopy one(value);
    if (!one) throw std::bad_alloc();
    for (std::int64_t v = range.lower; v <= range.upper; ++v) {
      static_cast<ZULTaVoInteger&>(*one).SetExactValue(static_cast<long>(v));
      if (!value.IsIntersected(*one)) mDraft.holes.push_back({slot, v});
    }
  }

  static RealRange RealsOf(const ZULTaVoAny& value, const RealRange& all) {
    const auto& real = static_cast<const ZULTaVoReal&>(value);
    const double lower = real.GetLowerBound(), upper = real.GetUpperBound();
    return {lower <= all.lower ? -HUGE_VAL : lower, upper >= all.upper ? HUGE_VAL : upper};
  }

  void ReadConstraint(std::uint32_t index) {
    mArguments.clear();
    bool isKnown = true;
    const std::size_t count = mNetwork.GetArguments(index).size();
    for (std::size_t i = 0; i < count; ++i) {
      mArguments.push_back(SlotOf(mNetwork.GetIndexOfArgument(index, i)));
      isKnown = isKnown && KindOf(mArguments.back()) != Kind::kOpaque;
    }
    if (isKnown && ReadRule(mNetwork.GetRule(index), index)) return;
    const bool isRelation = mNetwork.GetConstraint(index).GetDescriptor()->GetKind() ==
                            ZULTaVoObjectDescriptor::Kind::kRelation;
    const Code code = isKnown && isRelation ? Code::kRelation : Code::kFilter;
    mDraft.groups.push_back({code, index, mArguments});
  }

  Kind KindOf(Slot slot) const { return mDraft.slots[slot].kind; }
  bool AreIntegers(std::span<const Slot> slots) const {
    for (const Slot slot : slots)
      if (KindOf(slot) != Kind::kInteger) return false;
    return true;
  }

  /// Answers whether the rule is one that the engine knows for these arguments.
  bool ReadRule(ZULTaVoRule rule, std::uint32_t index) {
    const auto& a = mArguments;
    if (const auto* row = FindRule<kFunctionRules>(rule)) {
      // A relation may have an argument more, its truth.
      if (a.size() != static_cast<std::size_t>(RowOf(row->function).operands) + 1) return false;
      AddFormula(row->function, a[0], a[1], a.size() > 2 ? a[2] : a[1]);
      return true;
    }
    if (const auto* row = FindRule<kRelationRules>(rule)) {
      mDraft.comparisons.push_back({row->relation, a[0], a[1], row->isReified ? a[2] : kNone});
      if (!row->isReified && a[2] != a[0]) AddEquality(a[0], a[2]);
      return true;
    }
    switch (rule) {
      case ZULTaVoRule::kQuotient:
        if (!AreIntegers(a)) {
          AddFormula(Function::kQuotient, a[1], a[0], a[2]);
          return true;
        }
        // Integers divide without a remainder or not at all.
        AddFormula(Function::kProduct, a[0], a[1], a[2]);
        mDraft.comparisons.push_back({Relation::kUnequal, a[2], mDraft.AddConstant(0), kNone});
        return true;
      case ZULTaVoRule::kEqual:
        AddEquality(a[0], a[1]);
        return true;
      case ZULTaVoRule::kSign:
        AddFormula(Function::kSign, a[1], a[0], a[0]);
        return true;
      case ZULTaVoRule::kNext:
        if (!AreIntegers(a)) return false;
        AddFormula(Function::kSum, a[0], a[1], mDraft.AddConstant(1));
        return true;
      case ZULTaVoRule::kPi:
        return Name(a[0], kPi);
      case ZULTaVoRule::kE:
        return Name(a[0], kE);
      case ZULTaVoRule::kAllDifferent:
        return AddGroup(Code::kAllDifferent, index);
      case ZULTaVoRule::kCount:
        return AddGroup(Code::kCount, index);
      case ZULTaVoRule::kPrimality:
        return AddGroup(Code::kPrimality, index);
      case ZULTaVoRule::kPiecewise:
        if (a.size() != 2 || !AddLines(a[0], a[1], mNetwork.GetConstraint(index))) return false;
        // Formulas see each line by itself; the propagator, which sees them all, runs beside them.
        if (KindOf(a[0]) == Kind::kReal && KindOf(a[1]) == Kind::kReal)
          mDraft.groups.push_back({Code::kRelation, index, a});
        return true;
      default:
        return false;
    }
  }

  void AddFormula(Function function, Slot result, Slot first, Slot second) {
    mDraft.formulas.push_back({function, result, first, second});
  }

  void AddEquality(Slot x, Slot y) {
    mDraft.comparisons.push_back({Relation::kEqual, x, y, kNone});
  }

  bool AddGroup(Code code, std::uint32_t index) {
    if (!AreIntegers(mArguments)) return false;
    mDraft.groups.push_back({code, index, mArguments});
    return true;
  }

  Slot AddReal(const RealRange& range, bool isConstant) {
    SlotInfo info;
    info.kind = Kind::kReal;
    info.isConstant = isConstant;
    return mDraft.AddSlot(info, range);
  }

  bool Name(Slot slot, const RealRange& number) {
    AddEquality(slot, AddReal(number, true));
    return KindOf(slot) == Kind::kReal;
  }

  /// y = y0 + s0 (x - x0) + (s1 - s0) max(x - x1, 0) + … with the slopes s of the lines between the
  /// points (x0, y0), (x1, y1), …, and x between the first and the last.
  bool AddLines(Slot y, Slot x, const ZULTaVoConstraint& constraint) {
    if (constraint.GetDescriptor()->GetKind() != ZULTaVoObjectDescriptor::Kind::kRelation)
      return false;
    const auto points = static_cast<const ZULTaVoRelation&>(constraint).GetParts().back().reals;
    const auto number = [&](std::size_t i) { return RealRange(points[2 * i], points[2 * i + 1]); };
    const auto apply = [&](Function function, Slot first, const RealRange& second) {
      const Slot result = AddReal({}, false);
      AddFormula(function, result, first, AddReal(second, true));
      return result;
    };
    const std::size_t last = points.size() / 4 - 1;
    mDraft.comparisons.push_back({Relation::kLessOrEqual, AddReal(number(0), true), x, kNone});
    mDraft.comparisons.push_back(
        {Relation::kLessOrEqual, x, AddReal(number(2 * last), true), kNone});
    Slot sum = AddReal(number(1), true);
    RealRange before = {0, 0};
    for (std::size_t i = 0; i < last; ++i) {
      const RealRange slope =
          (number(2 * i + 3) - number(2 * i + 1)) / (number(2 * i + 2) - number(2 * i));
      const RealRange change = slope - std::exchange(before, slope);
      if (change == RealRange(0, 0)) continue;
      Slot part = apply(Function::kSum, x, -number(2 * i));
      if (i > 0) part = apply(Function::kMaximum, part, {0, 0});
      const Slot longer = AddReal({}, false);
      AddFormula(Function::kSum, longer, sum, apply(Function::kProduct, part, change));
      sum = longer;
    }
    AddEquality(y, sum);
    return true;
  }

  const ZULTaVoNetwork& mNetwork;
  Draft mDraft;
  std::vector<TypeFacts> mFacts;
  std::vector<Slot> mArguments;
};

}  // namespace

Draft ReadNetwork(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared,
                  std::span<ZULTaVoAny* const> observed) {
  return NetworkReader(network, declared, observed).Read();
}

}  // namespace zultav::engine
