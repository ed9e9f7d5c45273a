#include "framework/search/detail/RealSystem.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <unordered_map>
#include <utility>

#include "framework/intervals/SubdefReal.h"
#include "framework/solver/FrameworkConstraints.h"
#include "framework/solver/LocalCopy.h"
#include "framework/solver/SingleValue.h"

namespace zultav::detail {

namespace {

using Function = RealSystem::Function;
using Relation = RealSystem::Relation;
using Guard = RealSystem::Guard;

constexpr RealInterval kPi = {0x1.921fb54442d18p+1, 0x1.921fb54442d19p+1};
constexpr RealInterval kE = {0x1.5bf0a8b145769p+1, 0x1.5bf0a8b14576ap+1};

/// Constraints `a0 = function(a1, a2)`.
struct FunctionRow {
  const ZULTaVoObjectDescriptor* const* constraint;
  Function function;
};
const FunctionRow kFunctions[] = {
    {&ZULTaVoAdditionConstraint::sDescriptor,       Function::kSum      },
    {&ZULTaVoMultiplicationConstraint::sDescriptor, Function::kProduct  },
    {&ZULTaVoPowerConstraint::sDescriptor,          Function::kPower    },
    {&ZULTaVoRemainderConstraint::sDescriptor,      Function::kRemainder},
    {&ZULTaVoMinimumConstraint::sDescriptor,        Function::kMinimum  },
    {&ZULTaVoMaximumConstraint::sDescriptor,        Function::kMaximum  },
    {&ZULTaVoEqualConstraint::sDescriptor,          Function::kIdentity },
    {&ZULTaVoNumberNegationConstraint::sDescriptor, Function::kNegative },
    {&ZULTaVoAbsoluteConstraint::sDescriptor,       Function::kAbsolute },
    {&ZULTaVoExponentConstraint::sDescriptor,       Function::kExp      },
    {&ZULTaVoSqrtConstraint::sDescriptor,           Function::kSqrt     },
    {&ZULTaVoSineConstraint::sDescriptor,           Function::kSine     },
    {&ZULTaVoCosineConstraint::sDescriptor,         Function::kCosine   },
    {&ZULTaVoTangentConstraint::sDescriptor,        Function::kTangent  },
    {&ZULTaVoRoundConstraint::sDescriptor,          Function::kRound    },
    {&ZULTaVoFloorConstraint::sDescriptor,          Function::kFloor    },
    {&ZULTaVoCeilConstraint::sDescriptor,           Function::kCeil     },
};

/// Constraints `a0 relation a1`, whose value a2 is equal to a0.
struct RelationRow {
  const ZULTaVoObjectDescriptor* const* constraint;
  Relation relation;
};
const RelationRow kRelations[] = {
    {&ZULTaVoEqualTernaryConstraint::sDescriptor,       Relation::kEqual      },
    {&ZULTaVoUnequalTernaryConstraint::sDescriptor,     Relation::kUnequal    },
    {&ZULTaVoLessTernaryConstraint::sDescriptor,        Relation::kLess       },
    {&ZULTaVoLessOrEqualTernaryConstraint::sDescriptor, Relation::kLessOrEqual},
};

/// Constraints by which a2 is the truth of `a0 relation a1`; the negation may exchange the sides.
struct TruthRow {
  const ZULTaVoObjectDescriptor* const* constraint;
  Relation relation, negation;
  bool exchanged;
};
const TruthRow kTruths[] = {
    {&ZULTaVoBooleanEqualConstraint::sDescriptor,       Relation::kEqual,       Relation::kUnequal,     false},
    {&ZULTaVoBooleanUnequalConstraint::sDescriptor,     Relation::kUnequal,     Relation::kEqual,       false},
    {&ZULTaVoBooleanLessConstraint::sDescriptor,        Relation::kLess,        Relation::kLessOrEqual, true },
    {&ZULTaVoBooleanLessOrEqualConstraint::sDescriptor, Relation::kLessOrEqual, Relation::kLess,
     true                                                                                                    },
};

template <class Row, std::size_t N>
const Row* Find(const Row (&rows)[N], const ZULTaVoObjectDescriptor* constraint) {
  const Row* row = std::find_if(std::begin(rows), std::end(rows), [constraint](const Row& each) {
    return *each.constraint == constraint;
  });
  return row != std::end(rows) ? row : nullptr;
}

bool IsUnary(Function function) {
  switch (function) {
    case Function::kSum:
    case Function::kDifference:
    case Function::kProduct:
    case Function::kQuotient:
    case Function::kPower:
    case Function::kRemainder:
    case Function::kMinimum:
    case Function::kMaximum:
      return false;
    default:
      return true;
  }
}

/// The function that gives an operand from the result and from the other operand, if any.
bool InvertFunction(Function function, Function& inverse) {
  switch (function) {
    case Function::kSum:
      inverse = Function::kDifference;
      return true;
    case Function::kProduct:
      inverse = Function::kQuotient;
      return true;
    case Function::kNegative:
    case Function::kIdentity:
      inverse = function;
      return true;
    case Function::kExp:
      inverse = Function::kLog;
      return true;
    case Function::kSqrt:
      inverse = Function::kSquare;
      return true;
    default:
      return false;
  }
}

bool IsDiscrete(const ZULTaVoObject* object) {
  return object->IsDerivedFrom(ZULTaVoInteger::sIdent) ||
         object->IsDerivedFrom(ZULTaVoBoolean::sIdent);
}

/// A number that a model names, such as a decimal fraction that no double holds.
bool IsLiteral(const RealInterval& domain) {
  constexpr double kWidth = 1e-15;  // relative
  const double magnitude = std::max(std::fabs(domain.lower), std::fabs(domain.upper));
  return domain.upper - domain.lower <= kWidth * magnitude;
}

/// The result of an operator may be anything at first.
bool IsBounded(const RealInterval& domain) {
  return domain.lower > -SubdefReal::sMaxValue && domain.upper < SubdefReal::sMaxValue;
}

}  // namespace

/// Sorts the constraints into functions, equations and conditions.
class RealSystemBuilder {
 public:
  RealSystemBuilder(RealSystem& system, const ZULTaVoNetwork& network,
                    std::span<ZULTaVoAny* const> declared)
      : mSystem(system), mNetwork(network) {
    const std::size_t objects = network.GetNumberOfObjects();
    const std::size_t constraints = network.GetNumberOfConstraints();
    mSystem.mSlots.reserve(objects + constraints);
    mSystem.mOperations.reserve(constraints);
    mSlotOf.reserve(objects);
    mUses.reserve(objects + constraints);
    mFormulas.reserve(constraints);
    for (ZULTaVoAny* value : declared)
      if (ZULTaVoCast<ZULTaVoReal>(value) != nullptr) SlotOf(value);
    mDeclared = static_cast<std::uint32_t>(mSystem.mSlots.size());
  }

  void Build() {
    for (std::size_t i = 0; i < mNetwork.GetNumberOfConstraints(); ++i) Read(i);
    for (std::uint32_t slot = 0; slot < mSystem.mSlots.size(); ++slot) {
      RealSystem::Slot& each = mSystem.mSlots[slot];
      if (each.real != nullptr && slot >= mDeclared && IsBounded(each.initial))
        each.constant = true;
      const bool known = each.real == nullptr || each.constant;
      if (known || slot < mDeclared) SetKnown(slot);
      if (!known && slot < mDeclared) mSystem.mUnknowns.push_back(slot);
    }
    Eliminate();
    for (const Formula& formula : mFormulas)
      if (!formula.used) AddEquation(formula);
    auto& discrete = mSystem.mDiscrete;
    std::sort(discrete.begin(), discrete.end(), std::less<>());
    discrete.erase(std::unique(discrete.begin(), discrete.end()), discrete.end());
    Trace trace(mSystem);
    for (RealSystem::Statement& equation : mSystem.mEquations) trace.Complete(equation);
    for (RealSystem::Statement& condition : mSystem.mConditions) trace.Complete(condition);
  }

 private:
  /// result = function(first, second); relations between operands alone are kIdentity.
  struct Formula {
    Function function;
    std::uint32_t result, first, second;
    Guard guard;
    unsigned int open = 0;  // how many places are not known yet
    bool used = false;

    template <class Visit>
    void ForEach(Visit visit) const {
      visit(result);
      visit(first);
      if (!IsUnary(function)) visit(second);
    }
  };

  /// Finds what statements depend on.
  class Trace {
   public:
    explicit Trace(const RealSystem& system)
        : mSystem(system),
          mSeen(system.mSlots.size(), RealSystem::kNone),
          mOperationOf(system.mSlots.size(), RealSystem::kNone),
          mUnknownOf(system.mSlots.size(), RealSystem::kNone) {
      for (std::uint32_t i = 0; i < system.mOperations.size(); ++i)
        mOperationOf[system.mOperations[i].target] = i;
      for (std::uint32_t i = 0; i < system.mUnknowns.size(); ++i)
        mUnknownOf[system.mUnknowns[i]] = i;
    }

    void Complete(RealSystem::Statement& statement) {
      ++mRound;
      mOpen = {statement.left, statement.right};
      while (!mOpen.empty()) {
        const std::uint32_t slot = mOpen.back();
        mOpen.pop_back();
        if (std::exchange(mSeen[slot], mRound) == mRound) continue;
        if (mUnknownOf[slot] != RealSystem::kNone) statement.unknowns.push_back(mUnknownOf[slot]);
        const std::uint32_t operation = mOperationOf[slot];
        if (operation == RealSystem::kNone) continue;
        statement.operations.push_back(operation);
        mOpen.push_back(mSystem.mOperations[operation].first);
        mOpen.push_back(mSystem.mOperations[operation].second);
      }
      std::sort(statement.operations.rbegin(), statement.operations.rend());
      std::sort(statement.unknowns.begin(), statement.unknowns.end());
    }

   private:
    const RealSystem& mSystem;
    std::vector<std::uint32_t> mSeen, mOperationOf, mUnknownOf, mOpen;
    std::uint32_t mRound = 0;
  };

  std::uint32_t NewSlot(ZULTaVoAny* object) {
    RealSystem::Slot slot;
    slot.object = object;
    slot.real = object != nullptr ? ZULTaVoCast<ZULTaVoReal>(object) : nullptr;
    slot.integer = object != nullptr ? ZULTaVoCast<const ZULTaVoInteger>(object) : nullptr;
    slot.initial = slot.GetDomain();
    slot.constant = slot.real != nullptr && IsLiteral(slot.initial);
    mSystem.mSlots.push_back(slot);
    mUses.emplace_back();
    mKnown.push_back(false);
    return static_cast<std::uint32_t>(mSystem.mSlots.size() - 1);
  }

  std::uint32_t SlotOf(ZULTaVoObject* object) {
    const auto [place, isNew] = mSlotOf.try_emplace(object, 0);
    if (isNew) place->second = NewSlot(static_cast<ZULTaVoAny*>(object));
    return place->second;
  }

  void Read(std::size_t index) {
    const auto arguments = mNetwork.GetArguments(index);
    bool discrete = true, numbers = true;
    for (const ZULTaVoObject* argument : arguments) {
      if (IsDiscrete(argument)) {
        mSystem.mDiscrete.push_back(static_cast<const ZULTaVoAny*>(argument));
      } else {
        discrete = false;
        numbers = numbers && argument->IsDerivedFrom(ZULTaVoReal::sIdent) &&
                  !IsSingleType(static_cast<const ZULTaVoAny&>(*argument));
      }
    }
    if (discrete) return;  // decided by propagation once its arguments are single values
    if (!numbers || !ReadReals(mNetwork.GetConstraint(index).GetDescriptor(), arguments))
      mSystem.mComplete = false;
  }

  /// Whether the type holds one value only. Such values are compared with a tolerance, which makes
  /// solutions of what has none in true reals.
  bool IsSingleType(const ZULTaVoAny& value) {
    const auto [place, isNew] = mSingles.try_emplace(value.GetDescriptor(), true);
    if (!isNew) return place->second;
    zultav::LocalCopy any(value);
    if (!any) return true;
    any->SetAny();
    return place->second = any->GetCardinality() == zultav::kSingleAny;
  }

  bool ReadReals(const ZULTaVoObjectDescriptor* type, std::span<ZULTaVoObject* const> arguments) {
    if (type == ZULTaVoPiValueConstraint::sDescriptor) return Name(arguments[0], kPi);
    if (type == ZULTaVoEValueConstraint::sDescriptor) return Name(arguments[0], kE);
    if (const FunctionRow* row = Find(kFunctions, type)) {
      AddFormula(row->function, arguments[0], arguments[1],
                 arguments.size() > 2 ? arguments[2] : arguments[1], {});
      return true;
    }
    if (const RelationRow* row = Find(kRelations, type)) {
      Relate(row->relation, arguments[0], arguments[1], {});
      if (arguments[2] != arguments[0]) Relate(Relation::kEqual, arguments[0], arguments[2], {});
      return true;
    }
    if (const TruthRow* row = Find(kTruths, type)) {
      const auto* truth = ZULTaVoCast<const ZULTaVoBoolean>(arguments[2]);
      Relate(row->relation, arguments[0], arguments[1], {truth, true});
      Relate(row->negation, arguments[row->exchanged ? 1 : 0], arguments[row->exchanged ? 0 : 1],
             {truth, false});
      return truth != nullptr;
    }
    if (type == ZULTaVoSignumConstraint::sDescriptor) {
      Relate(Relation::kSignIs, arguments[0], arguments[1], {});
      return true;
    }
    return false;
  }

  bool Name(ZULTaVoObject* object, const RealInterval& constant) {
    RealSystem::Slot& slot = mSystem.mSlots[SlotOf(object)];
    if (slot.initial.lower > constant.lower || slot.initial.upper < constant.upper) return false;
    slot.initial = constant;
    slot.constant = true;
    return true;
  }

  void Relate(Relation relation, ZULTaVoObject* left, ZULTaVoObject* right, const Guard& guard) {
    if (relation == Relation::kEqual) {
      if (left == right) return;
      AddFormula(Function::kIdentity, left, right, right, guard);
    } else {
      mSystem.mConditions.push_back({relation, SlotOf(left), SlotOf(right), guard, {}, {}});
    }
  }

  void AddFormula(Function function, ZULTaVoObject* result, ZULTaVoObject* first,
                  ZULTaVoObject* second, const Guard& guard) {
    Formula formula{function, SlotOf(result), SlotOf(first), SlotOf(second), guard};
    const auto index = static_cast<std::uint32_t>(mFormulas.size());
    formula.ForEach([&](std::uint32_t slot) {
      mUses[slot].push_back(index);
      ++formula.open;
    });
    mFormulas.push_back(formula);
  }

  void SetKnown(std::uint32_t slot) {
    mKnown[slot] = true;
    for (const std::uint32_t index : mUses[slot]) {
      Formula& formula = mFormulas[index];
      // Two open places may be the same value twice, which gives no function.
      if (--formula.open == 1) mReady.push_back(index);
    }
  }

  /// Finds functions for the values that are not known; makes unknowns of the others.
  void Eliminate() {
    std::uint32_t next = 0;
    for (;;) {
      while (!mReady.empty()) {
        const std::uint32_t index = mReady.front();
        mReady.pop_front();
        if (mFormulas[index].open == 1 && !mFormulas[index].used) Define(mFormulas[index]);
      }
      while (next < mKnown.size() && mKnown[next]) ++next;
      if (next == mKnown.size()) return;
      mSystem.mUnknowns.push_back(next);
      SetKnown(next);
    }
  }

  void Define(Formula& formula) {
    if (formula.guard.truth != nullptr) return;
    const std::uint32_t result = formula.result;
    if (!mKnown[result])
      return Define(formula, formula.function, result, formula.first, formula.second);
    Function inverse = formula.function;
    if (!InvertFunction(formula.function, inverse)) return;
    if (inverse == Function::kSquare)
      mSystem.mConditions.push_back({Relation::kLessOrEqual, Zero(), result, {}, {}, {}});
    const bool isFirst = !mKnown[formula.first];
    const std::uint32_t other = isFirst ? formula.second : formula.first;
    Define(formula, inverse, isFirst ? formula.first : formula.second, result,
           IsUnary(inverse) ? result : other);
  }

  void Define(Formula& formula, Function function, std::uint32_t target, std::uint32_t first,
              std::uint32_t second) {
    formula.used = true;
    AddOperation(function, target, first, second);
    SetKnown(target);
  }

  void AddOperation(Function function, std::uint32_t target, std::uint32_t first,
                    std::uint32_t second) {
    const bool isSquare = (function == Function::kProduct && first == second) ||
                          (function == Function::kPower && IsTwo(mSystem.mSlots[second]));
    if (isSquare)
      mSystem.mOperations.push_back({Function::kSquare, target, first, first});
    else
      mSystem.mOperations.push_back({function, target, first, second});
  }

  static bool IsTwo(const RealSystem::Slot& slot) { return slot.initial == RealInterval(2, 2); }

  std::uint32_t Zero() {
    if (mZero == RealSystem::kNone) {
      mZero = NewSlot(nullptr);
      mSystem.mSlots[mZero].constant = true;
      mKnown[mZero] = true;
    }
    return mZero;
  }

  /// The value of the function takes a slot of its own, whose domain is that of the result.
  void AddEquation(const Formula& formula) {
    std::uint32_t left = formula.first;
    if (formula.function != Function::kIdentity) {
      left = NewSlot(nullptr);
      RealSystem::Slot& slot = mSystem.mSlots[left];
      slot = mSystem.mSlots[formula.result];
      slot.constant = true;  // the equation says what else there is to say of it
      AddOperation(formula.function, left, formula.first, formula.second);
    }
    mSystem.mEquations.push_back({Relation::kEqual, left, formula.result, formula.guard, {}, {}});
  }

  RealSystem& mSystem;
  const ZULTaVoNetwork& mNetwork;
  std::uint32_t mDeclared = 0;
  std::unordered_map<const ZULTaVoObject*, std::uint32_t> mSlotOf;
  std::unordered_map<const ZULTaVoObjectDescriptor*, bool> mSingles;
  std::vector<Formula> mFormulas;
  std::vector<std::vector<std::uint32_t>> mUses;  // formulas of each slot
  std::vector<bool> mKnown;
  std::deque<std::uint32_t> mReady;
  std::uint32_t mZero = RealSystem::kNone;
};

RealInterval RealSystem::Slot::GetDomain() const {
  if (real != nullptr) return {real->GetLowerBound(), real->GetUpperBound()};
  if (integer != nullptr)
    return {static_cast<double>(integer->GetLowerBound()),
            static_cast<double>(integer->GetUpperBound())};
  return initial;
}

RealSystem::RealSystem(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared) {
  RealSystemBuilder(*this, network, declared).Build();
}

std::vector<bool> RealSystem::FindEven() const {
  std::vector<bool> even(mSlots.size(), mComplete);
  const auto isEven = [](Function function) {
    return function == Function::kSquare || function == Function::kAbsolute ||
           function == Function::kCosine;
  };
  for (const Operation& operation : mOperations) {
    if (isEven(operation.function)) continue;
    even[operation.first] = even[operation.second] = false;
  }
  for (const auto* statements : {&mEquations, &mConditions})
    for (const Statement& statement : *statements)
      even[statement.left] = even[statement.right] = false;
  std::vector<bool> unknowns;
  for (const std::uint32_t slot : mUnknowns) {
    const RealInterval& initial = mSlots[slot].initial;
    unknowns.push_back(even[slot] && mSlots[slot].real != nullptr &&
                       initial.lower == -initial.upper);
  }
  return unknowns;
}

}  // namespace zultav::detail
