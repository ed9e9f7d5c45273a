#ifndef ZULTAV_SEARCH_DETAIL_REAL_EVALUATION_H
#define ZULTAV_SEARCH_DETAIL_REAL_EVALUATION_H

#include <span>
#include <vector>

#include "framework/intervals/SubdefReal.h"
#include "framework/search/detail/RealSystem.h"

namespace zultav::detail {

/// Evaluates the functions of a system over a box X and at a point m of it, and the slopes between
/// them: intervals S with f(x) - f(m) in S (x - m). Slopes are composed of those of the single
/// functions, by the chain rule.
///
/// Every set encloses all true values. Nothing here allocates after construction.
class RealEvaluation {
 public:
  enum class Mode {
    /// For the solutions in X only: every value lies in the present domain of its object too.
    kSolutions,
    /// For all of X, initial domains of constants, and functions that are defined and continuous.
    kBox
  };

  explicit RealEvaluation(const RealSystem& system);

  /// Evaluates over the box, one interval for each unknown. kSolutions: false when there is no
  /// solution; kBox: false when a function may have no value, or none that is finite.
  bool SetBox(std::span<const RealInterval> box, Mode mode);
  /// Evaluates at the point, one number for each unknown.
  void SetPoint(std::span<const double> point);
  /// Evaluates over a box in place of the point: slopes then hold for each m in it.
  void SetCenter(std::span<const RealInterval> center);
  /// After SetBox and SetPoint. x may be any point of the box (a solution in it, after
  /// kSolutions).
  void CalcSlopes();

  const SubdefReal& GetValue(std::uint32_t slot) const { return mValues[slot]; }
  /// left - right at the point.
  RealInterval GetDefect(const RealSystem::Statement& equation) const;
  /// Slopes of left - right for equation.unknowns, in their order. False when there are none that
  /// are finite.
  bool GetSlopes(const RealSystem::Statement& equation, RealInterval* slopes);

 private:
  struct Slopes {
    SubdefReal first, second;
    bool usable = false;
  };
  RealInterval Leaf(const RealSystem::Slot& slot, Mode mode) const;
  void EvaluateCenters();
  SubdefReal Hull(std::uint32_t slot) const;
  Slopes SlopesOf(const RealSystem::Operation& operation) const;
  Slopes PowerSlopes(const RealSystem::Operation& operation) const;

  const RealSystem& mSystem;
  std::vector<std::uint32_t> mLeaves;
  std::vector<bool> mVaries;  // whether the value depends on unknowns
  std::vector<SubdefReal> mValues, mCenters, mAdjoints;
  std::vector<Slopes> mSlopes;
};

}  // namespace zultav::detail

#endif
