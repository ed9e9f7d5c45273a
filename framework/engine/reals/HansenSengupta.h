#ifndef ZULTAV_ENGINE_REALS_HANSEN_SENGUPTA_H
#define ZULTAV_ENGINE_REALS_HANSEN_SENGUPTA_H

#include "framework/engine/reals/Linearization.h"

namespace zultav::engine {

/// Steps of the interval Newton method that narrow an engine's box: each equation is solved for
/// each of its unknowns, and so are the equations preconditioned by the inverse of the midpoint
/// matrix. More than kMaxDense unknowns are solved for in windows of so many neighbours, which
/// overlap by half: what is farther away decides little in most large systems, and the cost stays
/// linear.
class HansenSengupta {
 public:
  HansenSengupta(Engine& engine, Linearization& linear) : mEngine(engine), mLinear(linear) {}

  /// Steps and propagation in turn, as long as they are worth it. False when there is no solution.
  bool Narrow();

 private:
  static constexpr std::size_t kMaxDense = 100;
  static constexpr std::size_t kWindow = 48;

  bool NarrowByRows();
  bool NarrowByInverse();
  bool NarrowByWindows();

  Engine& mEngine;
  Linearization& mLinear;
  std::vector<double> mWeights;
};

}  // namespace zultav::engine

#endif
