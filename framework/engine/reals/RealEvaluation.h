#ifndef ZULTAV_ENGINE_REALS_REAL_EVALUATION_H
#define ZULTAV_ENGINE_REALS_REAL_EVALUATION_H

#include <span>
#include <vector>

#include "framework/engine/Engine.h"
#include "framework/engine/reals/RealSystem.h"

namespace zultav::engine {

/// Evaluates the functions of a system over a box X and at a point m of it, and the slopes between
/// them: intervals S with f(x) - f(m) in S (x - m). Slopes are composed of those of the single
/// functions, by the chain rule.
///
/// Every set encloses all true values. Nothing here allocates after construction.
class RealEvaluation {
 public:
  enum class Mode {
    /// For the solutions in X only: results lie in what the engine has found out about them, too.
    kSolutions,
    /// For all of X, and functions that are defined and continuous.
    kBox,
    /// For all of X, and functions that have values, whatever these are.
    kDefined
  };

  RealEvaluation(const Engine& engine, const RealSystem& system);

  /// Evaluates over the box, one interval for each unknown. kSolutions: false when there is no
  /// solution; kBox: false when a function may have no value, or none that is finite; kDefined:
  /// when it may have no value.
  bool SetBox(std::span<const RealRange> box, Mode mode);
  /// Evaluates at the point, one number for each unknown.
  void SetPoint(std::span<const double> point);
  /// Evaluates over a box in place of the point: slopes then hold for each m in it.
  void SetCenter(std::span<const RealRange> center);
  /// After SetBox and SetPoint. x may be any point of the box (a solution in it, after
  /// kSolutions).
  void CalcSlopes();

  const RealRange& GetValue(std::uint32_t term) const { return mValues[term]; }
  /// left - right at the point.
  RealRange GetDefect(const RealSystem::Claim& equation) const;
  /// Slopes of left - right for equation.unknowns, in their order. False when there are none that
  /// are finite.
  bool GetSlopes(const RealSystem::Statement& equation, RealRange* slopes);

 private:
  void EvaluateCenters();

  const Engine& mEngine;
  const RealSystem& mSystem;
  std::vector<std::uint32_t> mIntegers;  // terms
  std::vector<Slot> mSharedSlots;        // of terms; kNone where none is kept
  std::vector<RealRange> mValues, mCenters, mAdjoints;
  std::vector<Slopes> mSlopes;  // of operations
  std::vector<bool> mUsable;
};

}  // namespace zultav::engine

#endif
