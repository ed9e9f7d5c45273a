#ifndef ZULTAV_SEARCH_ZULTAV_PROOF_H
#define ZULTAV_SEARCH_ZULTAV_PROOF_H

#include "framework/search/Export.h"

class ZULTaVoNetwork;

/// What the search asks about boxes of reals, where propagation alone cannot tell that a solution
/// exists: an interval Newton test, for example. Both functions find the network at a fixpoint.
class ZULTAV_UTILITIES_API ZULTavProof {
 public:
  ZULTavProof() = default;
  virtual ~ZULTavProof();
  ZULTavProof(const ZULTavProof&) = delete;
  ZULTavProof& operator=(const ZULTavProof&) = delete;

  /// Narrows values without losing a solution: SaveValue before and PropagateValue after each
  /// change. Answers 1 when a change is worth another propagation, else 0.
  virtual int Contract(ZULTaVoNetwork& network) = 0;
  /// Whether a solution certainly lies within the present values. Leaves them as they are.
  virtual bool Proves(const ZULTaVoNetwork& network) = 0;
};

#endif
