#ifndef ZULTAV_ENGINE_REALS_NEWTON_H
#define ZULTAV_ENGINE_REALS_NEWTON_H

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "framework/engine/Engine.h"

namespace zultav::engine {

/// The interval Newton method for the equations over reals of a program, on the box that an engine
/// holds.
///
/// Programs without equations over reals cost nothing. Large systems are narrowed in windows of
/// unknowns that were declared near each other, at a cost that grows linearly. Nothing here
/// allocates after construction but where the box is proven.
class ZULTAV_ENGINE_API Newton {
 public:
  /// Throws std::bad_alloc when memory ran out.
  explicit Newton(Engine& engine);
  ~Newton();
  Newton(const Newton&) = delete;
  Newton& operator=(const Newton&) = delete;

  bool HasEquations() const;

  /// Makes steps before a fixpoint was reached: where propagation would converge slowly, they may
  /// converge fast. False when no solution is left.
  bool Approach();

  enum class Answer {
    kNothing,   ///< there is nothing worth another propagation
    kNarrowed,  ///< much was narrowed: propagate, and call again
    kFailed     ///< no solution is left
  };
  /// Makes Hansen-Sengupta steps with slopes, preconditioned by the inverse of the midpoint matrix,
  /// narrows to the hull of the linear enclosures of the equations, and shaves. To be called at a
  /// fixpoint of the engine. Not repeated, nor are the steps of Approach, where little has changed.
  Answer Contract();
  /// Another node comes next. What was contracted before must not matter to it, so that an
  /// interrupted search can be continued.
  void Forget();

  enum class Finding {
    kNothing,      ///< there may be solutions within the present values
    kNoSolution,   ///< there are none
    kSolution,     ///< `box` certainly holds one
    kOnlySolution  ///< so it does, and the present values and `region` hold none that it does not
  };
  /// Looks for solutions within or very near the present values, which propagation no longer
  /// narrows; leaves them as they are. A proof holds for the model over the true reals, without any
  /// tolerance; decimal fractions and Pi are true numbers, too.
  /// @param[in,out] box, region  one range for each declared, then each observed value of the
  ///                             program, holding the present values; those of reals are set where
  ///                             the finding speaks of them
  Finding Prove(std::span<RealRange> box, std::span<RealRange> region);

  /// Whether all that is said of reals certainly holds for the present values of integers, where
  /// these decide everything.
  bool HoldsForIntegers();

  /// The declared values, by number, whose signs do not matter: wherever one is in a solution, so
  /// is its opposite, if its domain allows.
  std::vector<std::uint32_t> FindSignless() const;

  /// Whether every statement about unknowns that are no single points has an intermediate result
  /// beyond all doubles: then parts of the box can hardly be told from each other. False while
  /// integers are undecided that matter to reals.
  bool IsBeyondDoubles();

  /// Over the equations that speak of a variable.
  enum class Smears { kLargest, kSum };
  /// How much splitting each declared real promises: the largest, or the sum, over the equations,
  /// of the magnitude of the slope times the width (the smear of the variable), relative to the sum
  /// of all smears of the equation. 0 for what no equation speaks of. Valid after Contract.
  void CalcSmears(Smears which, std::span<double> smears);

 private:
  class Work;
  std::unique_ptr<Work> mWork;
};

}  // namespace zultav::engine

#endif
