#ifndef ZULTAV_ENGINE_REALS_REAL_SYSTEM_H
#define ZULTAV_ENGINE_REALS_REAL_SYSTEM_H

#include <cstdint>
#include <vector>

#include "framework/engine/Export.h"
#include "framework/engine/Program.h"

namespace zultav::engine {

/// The formulas and comparisons of a program that touch reals, as a system of statements.
///
/// Hidden values are functions of others wherever a formula says so: these functions form a list
/// of operations that is evaluated from front to back. What no function gives is an unknown, and
/// every other formula an equation between two terms.
class ZULTAV_ENGINE_API RealSystem {
 public:
  /// A value that statements speak of: an unknown, a constant, an integer, or the result of an
  /// operation.
  struct Term {
    Slot slot = kNone;        ///< whose range holds the value in every solution, where one is kept
    RealRange initial;        ///< before any propagation
    bool isConstant = false;  ///< any number of `initial`, and no other
    bool isInteger = false;
  };
  /// target := function(first, second).
  struct Operation {
    Function function;
    std::uint32_t target, first, second;
    bool isPartial;  ///< not defined for all values of its operands
  };
  /// `left relation right`.
  struct Claim {
    Relation relation;
    std::uint32_t left, right;

    /// What holds where the claim does not.
    Claim GetNegation() const;
  };
  /// A claim, or that a claim holds exactly where a truth slot is 1, and what it depends on.
  struct Statement {
    Claim claim;
    Slot truth;                             ///< kNone: the claim holds
    std::vector<std::uint32_t> operations;  ///< last one first
    std::vector<std::uint32_t> unknowns;    ///< as indices into GetUnknowns
    std::vector<std::uint32_t> leaves;      ///< terms: unknowns, then integers that may vary
    std::vector<std::uint32_t> shared;      ///< terms: results that other statements speak of, too
    bool isTotal = true;                    ///< no operation is partial

    /// Whether an equation may come of it.
    bool IsEquation() const {
      return claim.relation == Relation::kEqual ||
             (claim.relation == Relation::kUnequal && truth != kNone);
    }
  };

  explicit RealSystem(const Program& program);

  const std::vector<Term>& GetTerms() const { return mTerms; }
  /// The terms that are unknowns: declared and observed reals, and hidden ones that no function
  /// gives.
  const std::vector<std::uint32_t>& GetUnknowns() const { return mUnknowns; }
  const std::vector<Operation>& GetOperations() const { return mOperations; }
  const std::vector<Statement>& GetStatements() const { return mStatements; }
  /// The slots whose change calls for a statement.
  std::vector<Slot> GetSlots(const Statement& statement) const;
  /// Whether the differences that unguarded statements demand add up to a contradiction, as in
  /// x < y, y < z, z < x.
  bool IsInfeasible() const { return mInfeasible; }
  /// For each unknown, whether everything is said of it through functions of its magnitude alone.
  std::vector<bool> FindEven() const;

 private:
  friend class RealSystemBuilder;

  std::vector<Term> mTerms;
  std::vector<std::uint32_t> mUnknowns;
  std::vector<Operation> mOperations;
  std::vector<Statement> mStatements;
  bool mInfeasible = false;
};

/// Whether the relation holds for all numbers of x and y.
bool Holds(Relation relation, const RealRange& x, const RealRange& y);

/// Whether a range has lost this share of its width; an unbounded one, an infinite side or this
/// share of a bound.
bool IsMuchNarrower(const RealRange& now, const RealRange& before, double share);

}  // namespace zultav::engine

#endif
