#ifndef ZULTAV_ENGINE_REALS_PROVER_H
#define ZULTAV_ENGINE_REALS_PROVER_H

#include <span>
#include <vector>

#include "framework/engine/reals/Linearization.h"
#include "framework/engine/reals/Newton.h"
#include "framework/engine/reals/RealRelations.h"

namespace zultav::engine {

/// Applies the Krawczyk operator to a small box around an approximate solution, tests every other
/// statement on it, and looks for a larger box in which regular slopes leave room for no second
/// solution.
class Prover {
 public:
  Prover(Linearization& linear, RealRelations& relations);

  /// @param isClosed  whether equal values of the unknowns mean the same equations for other
  ///                  states of the engine, too
  Newton::Finding Prove(bool isClosed);

  /// One range for each unknown: the box that the finding speaks of, and the region, empty where
  /// there is none.
  std::span<const RealRange> GetCertified() const { return mFound; }
  std::span<const RealRange> GetRegion() const { return mFoundRegion; }

 private:
  void SetMiddle(double place);
  bool FindPoint();
  double StepToPoint();
  bool Krawczyk();
  bool Inflate(double factor);
  bool HoldsOnCertified();
  bool FindRegion();
  bool IsUniqueIn(double reach);
  bool IsApart() const;
  void LeavePoints();

  Linearization& mLinear;
  RealRelations& mRelations;
  bool mIsClosed = false;
  std::vector<double> mWeights;
  std::vector<RealRange> mOriginal, mCertified;
  std::vector<RealRange> mRegion;  // holds both, and no solution that mCertified does not hold
  std::vector<double> mRadii;      // of the box to be certified, by row of the inverse
  std::vector<RealRange> mFound, mFoundRegion;
};

}  // namespace zultav::engine

#endif
