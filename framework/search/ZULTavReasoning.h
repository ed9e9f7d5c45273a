#ifndef ZULTAV_SEARCH_ZULTAV_REASONING_H
#define ZULTAV_SEARCH_ZULTAV_REASONING_H

#include <cstdint>
#include <vector>

#include "framework/search/Export.h"

class ZULTaVoNetwork;
class ZULTavSolution;

/// Narrows the boxes of a search beyond what propagation finds: an interval Newton step, for
/// example.
class ZULTAV_UTILITIES_API ZULTavContractor {
 public:
  ZULTavContractor() = default;
  virtual ~ZULTavContractor();
  ZULTavContractor(const ZULTavContractor&) = delete;
  ZULTavContractor& operator=(const ZULTavContractor&) = delete;

  /// Narrows values without losing a solution: SaveValue before and PropagateValue after each
  /// change. May throw std::bad_alloc, which ends the search. Called before each propagation;
  /// answers 1 when there should be another call after it, else 0.
  /// @param again  whether there was a call for this node before: it need not be repeated where
  ///               little has changed. What other nodes were like must not matter, so that an
  ///               interrupted search can be continued.
  virtual int Contract(ZULTaVoNetwork& network, bool again) = 0;
};

/// Knows which solutions boxes of reals hold, where propagation alone cannot tell.
class ZULTAV_UTILITIES_API ZULTavProver {
 public:
  ZULTavProver() = default;
  virtual ~ZULTavProver();
  ZULTavProver(const ZULTavProver&) = delete;
  ZULTavProver& operator=(const ZULTavProver&) = delete;

  enum class Finding {
    kNothing,      ///< there may be solutions within the present values
    kNoSolution,   ///< there are none
    kSolution,     ///< `box` certainly holds one
    kOnlySolution  ///< so it does, and the present values and `region` hold none that it does not
  };

  /// Looks for solutions within or very near the present values, which propagation no longer
  /// narrows; leaves them as they are.
  /// @param[in,out] box, region  copies of the declared values, whose reals are set where the
  ///                             finding speaks of them
  virtual Finding Prove(const ZULTaVoNetwork& network, ZULTavSolution& box,
                        ZULTavSolution& region) = 0;
};

/// Finds out which solutions follow from others.
class ZULTAV_UTILITIES_API ZULTavSymmetries {
 public:
  ZULTavSymmetries() = default;
  virtual ~ZULTavSymmetries();
  ZULTavSymmetries(const ZULTavSymmetries&) = delete;
  ZULTavSymmetries& operator=(const ZULTavSymmetries&) = delete;

  /// The declared values, by number, whose signs do not matter: wherever one is in a solution, so
  /// is its opposite, if its domain allows.
  virtual std::vector<std::uint32_t> FindSignless() const = 0;
};

/// What helps a search beside propagation. Nothing is owned, and each may be null.
struct ZULTavReasoning {
  ZULTavContractor* contractor = nullptr;
  ZULTavProver* prover = nullptr;
  const ZULTavSymmetries* symmetries = nullptr;
};

#endif
