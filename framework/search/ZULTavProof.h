#ifndef ZULTAV_SEARCH_ZULTAV_PROOF_H
#define ZULTAV_SEARCH_ZULTAV_PROOF_H

#include <cstdint>
#include <vector>

#include "framework/search/Export.h"

class ZULTaVoNetwork;
class ZULTavSolution;

/// What the search asks about boxes of reals, where propagation alone cannot tell that a solution
/// exists: an interval Newton test, for example.
class ZULTAV_UTILITIES_API ZULTavProof {
 public:
  ZULTavProof() = default;
  virtual ~ZULTavProof();
  ZULTavProof(const ZULTavProof&) = delete;
  ZULTavProof& operator=(const ZULTavProof&) = delete;

  /// Narrows values without losing a solution: SaveValue before and PropagateValue after each
  /// change. Called before each propagation; answers 1 when there should be another call after it,
  /// else 0.
  /// @param again  whether there was a call for this node before: it need not be repeated where
  ///               little has changed. What other nodes were like must not matter, so that an
  ///               interrupted search can be continued.
  virtual int Contract(ZULTaVoNetwork& network, bool again) = 0;
  /// Whether a solution certainly lies within the present values, which propagation no longer
  /// narrows; leaves them as they are.
  /// @param box  null, or copies of the declared values, which may then be widened a little so
  ///             that they hold a solution that lies at or just beyond a bound
  virtual bool Proves(const ZULTaVoNetwork& network, ZULTavSolution* box) = 0;
  /// The declared values, by number, whose signs do not matter: wherever one is in a solution, so
  /// is its opposite, if its domain allows.
  virtual std::vector<std::uint32_t> FindSignless() const { return {}; }
};

#endif
