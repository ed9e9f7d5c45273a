#ifndef ZULTAV_SEARCH_DETAIL_REAL_CONTRACTOR_H
#define ZULTAV_SEARCH_DETAIL_REAL_CONTRACTOR_H

#include <cstdint>
#include <span>
#include <vector>

#include "framework/intervals/SubdefReal.h"
#include "framework/search/detail/RealSystem.h"

namespace zultav::detail {

/// Narrows boxes of a system by its statements: forward and backward through the functions of one
/// statement after the other (HC4), and by shaving. Shaving supposes an unknown to lie in a slice
/// at either end of its interval and in the rest; what all these parts have lost, the box loses
/// (constructive interval disjunction).
///
/// Nothing here allocates after construction.
class RealContractor {
 public:
  explicit RealContractor(const RealSystem& system);

  /// Whether the domains of the network are others than those in which the last contraction has
  /// ended, or much narrower.
  bool HasChanged() const;
  /// Takes the present domains of the network, and guards as they are.
  void Begin();
  /// One interval for each unknown, in their order.
  RealInterval GetValue(std::size_t unknown) const { return mValues[SlotOf(unknown)]; }
  /// Intersects; the statements about the unknown wait for the next Propagate.
  void Narrow(std::size_t unknown, const RealInterval& value);

  /// Narrows until no interval loses much any more. False when there is no solution.
  bool Propagate();
  /// Shaves one unknown after the other, the widest first, within a limit on the effort that is
  /// linear in the size of the system. False when there is no solution.
  bool Shave();

 private:
  struct Change {
    std::uint32_t unknown;
    RealInterval value;
  };

  std::uint32_t SlotOf(std::size_t unknown) const { return mSystem.GetUnknowns()[unknown]; }
  void Wake(std::uint32_t unknown);
  void ClearQueue();
  bool Revise(std::uint32_t index);
  bool EvaluateForward(const RealSystem::Statement& statement);
  bool Relate(const RealSystem::Statement& statement);
  bool ProjectBack(const RealSystem::Statement& statement);
  void NoteChanges(const RealSystem::Statement& statement);
  SubdefReal& Operand(std::uint32_t slot, SubdefReal& copy);

  std::size_t FindWidest() const;
  bool ShaveUnknown(std::uint32_t unknown);
  bool Suppose(std::uint32_t unknown, const RealInterval& part);
  bool MayGain() const;
  void JoinPart();
  void RestorePart();

  const RealSystem& mSystem;
  std::vector<const RealSystem::Statement*> mStatements;
  std::vector<std::uint32_t> mUses, mFirstUse;          // statements about each unknown
  std::vector<bool> mActive;                            // guards hold
  std::vector<SubdefReal> mDomains, mValues, mForward;  // of slots
  std::vector<bool> mGiven;                             // neither unknown nor computed
  std::vector<RealInterval> mBefore;                    // unknowns of the statement being revised

  std::vector<std::uint32_t> mQueue;  // a ring
  std::size_t mQueueHead = 0, mQueueSize = 0;
  std::vector<bool> mQueued;
  std::size_t mRevisions = 0;

  bool mSupposing = false;
  std::vector<Change> mTrail;  // values before the supposition
  std::vector<bool> mOnTrail;
  std::vector<std::uint32_t> mJoined;  // unknowns that the first part narrowed
  std::vector<RealInterval> mHull;     // of the parts, for unknowns that all narrowed
  std::vector<std::uint32_t> mParts;   // how many parts narrowed the unknown
  std::uint32_t mPart = 0;
};

}  // namespace zultav::detail

#endif
