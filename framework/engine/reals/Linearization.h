#ifndef ZULTAV_ENGINE_REALS_LINEARIZATION_H
#define ZULTAV_ENGINE_REALS_LINEARIZATION_H

#include <cstddef>
#include <span>
#include <vector>

#include "framework/engine/Engine.h"
#include "framework/engine/reals/PivotedInverse.h"
#include "framework/engine/reals/RealEvaluation.h"
#include "framework/engine/reals/RealSystem.h"

namespace zultav::engine {

/// The equations that hold in the present state of an engine, by their slopes between a box of the
/// unknowns and a point of it.
class Linearization {
 public:
  static constexpr std::size_t kNoColumn = static_cast<std::size_t>(-1);
  /// An equation with its slopes from entries[first] on, one for each of its unknowns.
  struct Row {
    const RealSystem::Statement* equation;
    RealRange defect;
    std::size_t first;
  };
  /// What is not solved for: nothing, unknowns that are single points, narrow ones.
  enum class Left { kNothing, kPoints, kNarrow };

  Linearization(const Engine& engine, const RealSystem& system);

  /// Takes the box that the engine holds, and its middle as the point.
  void ReadBox();
  RealRange GetPresent(std::size_t unknown) const {
    return engine.GetReals(system.GetTerms()[system.GetUnknowns()[unknown]].slot);
  }
  /// Whether the statement is an equation in the present state.
  bool IsActive(const RealSystem::Statement& statement) const;
  /// Takes the claim that the statement makes in the present state; false where it makes none.
  bool GetClaim(const RealSystem::Statement& statement, RealSystem::Claim& claim) const;

  void SelectColumns(Left left);
  /// Evaluates box and point, and takes the equations whose slopes are known. False when there is
  /// no solution (kSolutions), or a function may have no finite value (kBox).
  bool SelectRows(RealEvaluation::Mode mode);
  /// The same for slopes from another box in place of the point.
  bool SelectRows(RealEvaluation::Mode mode, std::span<const RealRange> center);
  /// Inverts the matrix of the middles of the slopes; see PivotedInverse.
  void Invert(std::span<const double> columnWeights);
  /// One row of a preconditioned system: the sum of the equations with weights, one for each of
  /// these rows.
  void Combine(std::span<const std::size_t> of, std::span<const double> rowWeights);
  /// Solves it for the unknown of the column. False when that has no value left.
  bool SolveCombined(std::size_t column);

  const Engine& engine;
  const RealSystem& system;
  RealEvaluation evaluation;
  std::vector<RealRange> box;         // of the unknowns
  std::vector<double> middle;         // a point of it
  std::vector<std::size_t> columns;   // the unknown of each
  std::vector<std::size_t> columnOf;  // of each unknown, or kNoColumn
  std::vector<Row> rows;
  std::vector<RealRange> entries;
  PivotedInverse inverse;
  std::vector<RealRange> combined;           // a preconditioned row, by column
  std::vector<std::size_t> combinedColumns;  // of which it speaks, each once
  RealRange combinedDefect;

 private:
  void TakeRows();
  bool AbsorbOthers(const RealSystem::Statement& equation, RealRange& defect);

  std::vector<RealRange> mSlopes;
  SparseMatrix mMatrix;
  std::vector<unsigned char> mIsCombined;  // by column
};

/// The middle of a bounded range, else some finite number of it.
double Middle(const RealRange& x);

/// The hull of the t in x - middle with slope * t + rest = 0, as part of x.
RealRange Solve(const RealRange& x, double middle, const RealRange& slope, const RealRange& rest);

}  // namespace zultav::engine

#endif
