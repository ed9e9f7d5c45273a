#ifndef ZULTAV_SEARCH_DETAIL_REAL_SYSTEM_H
#define ZULTAV_SEARCH_DETAIL_REAL_SYSTEM_H

#include <cstdint>
#include <span>
#include <vector>

#include "framework/intervals/RealInterval.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoReal.h"

namespace zultav::detail {

/// The constraints of a network over reals as a system of equations and conditions.
///
/// Hidden values are functions of others wherever a constraint says so: these functions form a
/// list that is evaluated from front to back. What no function gives is an unknown, and every
/// other constraint an equation between two values or a condition on them. The system keeps
/// pointers into the network, so it must not outlive it, and knows nothing of later additions.
class RealSystem {
 public:
  enum class Function : std::uint8_t {
    kIdentity,
    kSum,
    kDifference,
    kProduct,
    kQuotient,
    kNegative,
    kPower,
    kRemainder,  ///< truncated
    kMinimum,
    kMaximum,
    kAbsolute,
    kExp,
    kLog,
    kSquare,
    kSqrt,
    kSine,
    kCosine,
    kTangent,
    kRound,
    kFloor,
    kCeil
  };
  enum class Relation : std::uint8_t { kEqual, kUnequal, kLess, kLessOrEqual, kSignIs };
  static constexpr std::uint32_t kNone = 0xffffffff;

  /// A real or an integer of the network, or the value of a function without an object.
  struct Slot {
    ZULTaVoAny* object = nullptr;             ///< whose domain holds the value in every solution
    ZULTaVoReal* real = nullptr;              ///< the object, where it is a real
    const ZULTaVoInteger* integer = nullptr;  ///< the object, where it is an integer
    RealInterval initial;                     ///< before any propagation
    bool constant = false;                    ///< any number of `initial`, and no other

    /// The present domain of the object.
    RealInterval GetDomain() const;
  };
  /// target := function(first, second).
  struct Operation {
    Function function;
    std::uint32_t target, first, second;
  };
  /// Whether a boolean, if there is one, has the wanted value.
  struct Guard {
    const ZULTaVoBoolean* truth = nullptr;
    bool wanted = true;

    bool Holds() const { return truth == nullptr || (wanted ? truth->IsTrue() : truth->IsFalse()); }
  };
  /// `left relation right`, with the operations and the unknowns that it depends on.
  struct Statement {
    Relation relation;
    std::uint32_t left, right;
    Guard guard;
    std::vector<std::uint32_t> operations;  ///< last one first
    std::vector<std::uint32_t> unknowns;    ///< as indices into GetUnknowns
  };

  /// To be made before the first propagation.
  /// @param declared  values that stay unknowns, whatever functions there are for them
  RealSystem(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared);

  const std::vector<Slot>& GetSlots() const { return mSlots; }
  /// The slots of the unknowns.
  const std::vector<std::uint32_t>& GetUnknowns() const { return mUnknowns; }
  const std::vector<Operation>& GetOperations() const { return mOperations; }
  /// Statements that two values are equal; all others are conditions.
  const std::vector<Statement>& GetEquations() const { return mEquations; }
  const std::vector<Statement>& GetConditions() const { return mConditions; }
  /// Integers and booleans that constraints depend on.
  const std::vector<const ZULTaVoAny*>& GetDiscrete() const { return mDiscrete; }
  /// Whether equations and conditions say all that the constraints on reals say.
  bool IsComplete() const { return mComplete; }
  /// For each unknown, whether everything is said of it through functions of its magnitude alone.
  std::vector<bool> FindEven() const;

 private:
  friend class RealSystemBuilder;

  std::vector<Slot> mSlots;
  std::vector<std::uint32_t> mUnknowns;
  std::vector<Operation> mOperations;
  std::vector<Statement> mEquations, mConditions;
  std::vector<const ZULTaVoAny*> mDiscrete;
  bool mComplete = true;
};

}  // namespace zultav::detail

#endif
