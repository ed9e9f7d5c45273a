#ifndef ZULTAV_ENGINE_REALS_LINEAR_HULL_H
#define ZULTAV_ENGINE_REALS_LINEAR_HULL_H

#include <cstddef>
#include <vector>

#include "framework/engine/reals/Linearization.h"
#include "framework/engine/reals/Simplex.h"

namespace zultav::engine {

/// Narrows an engine's box to the hull of a polytope: seen from a corner of the box, the slopes of
/// an equation enclose it between two linear inequalities. Linear programming finds the weighted
/// sums of equations that bound an unknown most tightly; interval arithmetic solves these sums, so
/// that rounding errors of the weights cost tightness alone.
///
/// Where boxes are wide this sees what the inverse of one matrix does not: equations that are
/// linear among others that are far from it.
class LinearHull {
 public:
  LinearHull(Engine& engine, Linearization& linear) : mEngine(engine), mLinear(linear) {}

  /// From two opposite corners. False when there is no solution.
  bool Narrow() { return NarrowFrom(false) && NarrowFrom(true); }

 private:
  /// More unknowns would take more time than splits.
  static constexpr std::size_t kMaxColumns = 40;
  /// The equation behind an inequality, and by what it was multiplied.
  struct Source {
    std::size_t row;
    double factor;
  };

  /// A bound of the unknown of a column.
  struct Target {
    std::size_t column;
    bool isUpper;
  };

  bool NarrowFrom(bool isUpper);
  void MoveToCorner(bool isUpper);
  void AddInequalities();
  void AddInequality(std::size_t index, bool isUpper);
  bool NarrowToHull();
  Target TakeNearest();
  bool NarrowBySum();

  Engine& mEngine;
  Linearization& mLinear;
  Simplex mSimplex;
  std::vector<Source> mSources;
  std::vector<Target> mTargets;  // that are left
  std::vector<double> mCoefficients;
  std::vector<std::size_t> mRows;
  std::vector<double> mWeights;  // of mRows
};

}  // namespace zultav::engine

#endif
