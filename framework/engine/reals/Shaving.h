#ifndef ZULTAV_ENGINE_REALS_SHAVING_H
#define ZULTAV_ENGINE_REALS_SHAVING_H

#include <cstdint>
#include <vector>

#include "framework/engine/Engine.h"
#include "framework/engine/reals/RealSystem.h"

namespace zultav::engine {

/// Supposes an unknown to lie in a slice at either end of its range and in the rest; what all these
/// parts have lost, the engine's box loses (constructive interval disjunction).
///
/// Nothing here allocates after construction but the engine's trail.
class Shaving {
 public:
  Shaving(Engine& engine, const RealSystem& system);

  /// Shaves one unknown after the other, the widest first, within a limit on the effort that is
  /// linear in the size of the system. False when there is no solution.
  bool Shave();

 private:
  Slot SlotOf(std::uint32_t unknown) const {
    return mSystem.GetTerms()[mSystem.GetUnknowns()[unknown]].slot;
  }
  RealRange GetValue(std::uint32_t unknown) const { return mEngine.GetReals(SlotOf(unknown)); }
  std::uint32_t FindWidest() const;
  bool ShaveUnknown(std::uint32_t unknown);
  bool Suppose(std::uint32_t unknown, const RealRange& part);
  bool MayGain() const;
  void JoinPart();

  Engine& mEngine;
  const RealSystem& mSystem;
  std::vector<std::uint32_t> mUnknownOf;  // of each slot, or kNone
  std::vector<std::uint32_t> mJoined;     // unknowns that the first part narrowed
  std::vector<RealRange> mHull;           // of the parts, for unknowns that all narrowed
  std::vector<std::uint32_t> mParts;      // how many parts narrowed the unknown
  std::uint32_t mPart = 0;
  std::uint64_t mRuns = 0;  // that a shaving may take
};

}  // namespace zultav::engine

#endif
