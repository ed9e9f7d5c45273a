#ifndef ZULTAV_ENGINE_PROGRAM_H
#define ZULTAV_ENGINE_PROGRAM_H

#include <bit>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "framework/engine/Export.h"
#include "framework/engine/Function.h"
#include "framework/intervals/IntegerRange.h"
#include "framework/intervals/RealRange.h"

class ZULTaVoAny;
class ZULTaVoNetwork;

namespace zultav::engine {

class RealSystem;

/// A value of a program: a variable, a constant, or the result of a function.
using Slot = std::uint32_t;
inline constexpr std::uint32_t kNone = 0xffffffff;

enum class Kind : std::uint8_t {
  kInteger,  ///< a truth value is an integer of [0, 1]
  kReal,
  kOpaque  ///< of a type that only its module knows: its object in the network holds the value
};

/// What is known of a slot before any propagation.
struct SlotInfo {
  Kind kind = Kind::kInteger;
  bool isBoolean = false;
  /// A number that the model names: of a real one, any number of its bounds and no other.
  bool isConstant = false;
  /// Of a type that holds one value or Any: the search does not split it.
  bool isSingle = false;
  /// Whether a rule speaks of it; nothing narrows others.
  bool isUsed = false;
  /// Of an integer: whether a rule takes single values from it.
  bool isHoled = false;
  /// Whether the search has to find a value for it: declared, or hidden and no function of others.
  bool isSearched = false;
  std::uint32_t object = kNone;  ///< of the network, where there is one
  std::uint32_t holes = kNone;   ///< the first word of its set of values, where one is kept
  std::uint32_t holeWords = 0;   ///< how many; bit i stands for the initial lower bound plus i
};

/// result = function(first, second); of a unary function both operands are the same slot.
struct Formula {
  Function function;
  Slot result, first, second;
};

enum class Relation : std::uint8_t { kEqual, kUnequal, kLess, kLessOrEqual };

/// `left relation right` holds exactly where `truth` is 1 (kNone: it holds).
struct Comparison {
  Relation relation;
  Slot left, right;
  Slot truth;
};

/// A boolean slot, or its negation.
struct Literal {
  Slot slot;
  bool negated;
};

/// What a rule does. Its slots stand in Program::GetArguments, its numbers in GetNumbers from
/// `data` on.
enum class Code : std::uint8_t {
  kFunction,      ///< (z, x, y): z = function(x, y) over integers; data: the Function
  kLinear,        ///< (x1 … xn[, t]): c1 x1 + … + cn xn relation c0; numbers c0, c1 … cn;
                  ///< reified: exactly where t holds. Relation and reified in the rule. kLess is
                  ///< not used
  kUnequal,       ///< (x, y): x <> y + c0; numbers c0
  kClause,        ///< literals, one of which holds; numbers: 1 where a literal is negated. Watched
                  ///< by the engine, not by GetWatches
  kAllDifferent,  ///< (x1 … xn): pairwise different integers; data: 0 looks at fixed values, 1 at
                  ///< bounds
  kCount,         ///< (z, p1 … pn): z is the number of truths among p1 … pn
  kPrimality,     ///< (p, x): p is whether x is a prime
  kStatement,     ///< an equation or condition over reals; data: its number in the system of reals;
                  ///< arguments: the slots whose change calls for it
  kRelation,      ///< the propagator of a module's relation; numbers: its number in the network,
                  ///< the words of its state, and of each argument when it is called (Call)
  kFilter         ///< the filter of a constraint; data: its number in the network
};

/// The queues of the rules: what costs less runs sooner.
enum Cost : std::uint8_t {
  kCostOfUnit,  ///< what looks at two slots or literals
  kCostOfPair,
  kCostOfFunction,
  kCostOfSum,  ///< what looks at all of its slots once
  kCostOfStatement,
  kCostOfBounds,
  kCostOfPrimality,
  kCostOfFilter
};
inline constexpr int kCosts = kCostOfFilter + 1;

/// A constraint over any number of slots that is no formula and no comparison.
struct Group {
  Code code;                 ///< kAllDifferent, kCount, kPrimality, kRelation or kFilter
  std::uint32_t constraint;  ///< its number in the network
  std::vector<Slot> slots;   ///< as of the rule of this code
};

struct Rule {
  Code code;
  Relation relation = Relation::kEqual;  ///< of kLinear
  bool isReified = false;                ///< of kLinear
  bool isHalf = false;                   ///< reified, and nothing follows where t does not hold
  bool isNegated = false;                ///< reified, and t counts as its opposite
  bool isIdempotent = false;             ///< one run reaches the rule's own fixpoint
  std::uint8_t cost = 0;                 ///< of a run; cheaper rules run sooner
  std::uint32_t first = 0, count = 0;    ///< its arguments
  std::uint32_t data = 0;
};

/// What may happen to a slot; a sum of these.
enum Event : std::uint8_t {
  kLowerRaised = 1,
  kUpperLowered = 2,
  kFixed = 4,
  kHoleMade = 8,
  kBoundMoved = kLowerRaised | kUpperLowered | kFixed,
  kAnyChange = 15
};

/// Who is told of a slot's changes.
struct Watch {
  std::uint32_t rule;
  std::uint8_t events;
};

/// A network compiled. Immutable, so that any number of engines may share it.
///
/// Declared values range over what their domains hold; hidden ones, the results of operators, over
/// all mathematical values: what their types cannot hold does not limit them.
class ZULTAV_ENGINE_API Program {
 public:
  /// @param declared  values that make up a solution; all others are hidden
  /// @param observed  hidden values that are told with a solution; the search need not find them
  /// Keeps pointers to the network's constraints and objects, which must outlive it, and knows
  /// nothing of later additions. Throws std::bad_alloc when memory ran out.
  Program(const ZULTaVoNetwork& network, std::span<ZULTaVoAny* const> declared,
          std::span<ZULTaVoAny* const> observed = {});

  std::size_t GetNumberOfSlots() const { return mSlots.size(); }
  const SlotInfo& GetSlot(Slot slot) const { return mSlots[slot]; }
  /// Of slots that are integers.
  IntegerRange GetInitialIntegers(Slot slot) const {
    return {mInitial[2 * std::size_t{slot}], mInitial[2 * std::size_t{slot} + 1]};
  }
  /// Of slots that are reals.
  RealRange GetInitialReals(Slot slot) const {
    const IntegerRange words = GetInitialIntegers(slot);
    return {std::bit_cast<double>(words.lower), std::bit_cast<double>(words.upper)};
  }
  /// The slot of each declared value. Equal values share one.
  const std::vector<Slot>& GetDeclared() const { return mDeclared; }
  /// The slot of each observed value, which may be that of a declared one.
  const std::vector<Slot>& GetObserved() const { return mObserved; }
  /// The slot of an object of the network, kNone where nothing is left of it.
  Slot GetSlotOfObject(std::uint32_t object) const { return mSlotOfObject[object]; }

  /// The model itself, after equal values were united: what has to be true of a solution.
  const std::vector<Formula>& GetFormulas() const { return mFormulas; }
  const std::vector<Comparison>& GetComparisons() const { return mComparisons; }
  const std::vector<Group>& GetGroups() const { return mGroups; }
  /// Whether there is no solution, as contradicting constants show.
  bool IsInfeasible() const { return mInfeasible; }
  /// Whether rules other than kFilter and kPrimality say all that the constraints say of reals.
  bool IsComplete() const { return mFilters == 0 && !mHasRealRelations; }
  bool HasFilters() const { return mFilters != 0; }
  bool HasRelations() const { return mHasRelations; }
  /// Whether integers are compared with numbers so large that no rule says it.
  bool HasVastNumbers() const { return mHasVastNumbers; }

  const std::vector<Rule>& GetRules() const { return mRules; }
  std::span<const Slot> GetArguments(const Rule& rule) const {
    return {mArguments.data() + rule.first, rule.count};
  }
  const std::int64_t* GetNumbers(const Rule& rule) const { return mNumbers.data() + rule.data; }
  std::span<const Watch> GetWatches(Slot slot) const {
    return {mWatches.data() + mFirstWatch[slot], mWatches.data() + mFirstWatch[slot + 1]};
  }
  /// The first ones of GetWatches: those that do not wait for kFixed alone.
  std::span<const Watch> GetEagerWatches(Slot slot) const {
    return {mWatches.data() + mFirstWatch[slot], mWatches.data() + mFirstPatientWatch[slot]};
  }
  std::size_t GetNumberOfHoleWords() const { return mHoleWords; }
  /// What is said of reals; null where nothing is.
  const RealSystem* GetReals() const { return mReals.get(); }
  const ZULTaVoNetwork& GetNetwork() const { return mNetwork; }

 private:
  friend class Compiler;
  friend class ProgramBuilder;
  explicit Program(const ZULTaVoNetwork& network) : mNetwork(network) {}

  const ZULTaVoNetwork& mNetwork;
  std::vector<SlotInfo> mSlots;
  std::vector<std::int64_t> mInitial;  // two words a slot
  std::vector<Slot> mDeclared, mObserved, mSlotOfObject;
  std::vector<Formula> mFormulas;
  std::vector<Comparison> mComparisons;
  std::vector<Group> mGroups;
  std::shared_ptr<const RealSystem> mReals;
  std::vector<Rule> mRules;
  std::vector<Slot> mArguments;
  std::vector<std::int64_t> mNumbers;
  std::vector<Watch> mWatches;
  std::vector<std::uint32_t> mFirstWatch, mFirstPatientWatch;
  std::size_t mHoleWords = 0, mFilters = 0;
  bool mInfeasible = false, mHasRelations = false, mHasRealRelations = false,
       mHasVastNumbers = false;
};

}  // namespace zultav::engine

#endif
