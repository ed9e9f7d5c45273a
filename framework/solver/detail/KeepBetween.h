#ifndef ZULTAV_SOLVER_DETAIL_KEEP_BETWEEN_H
#define ZULTAV_SOLVER_DETAIL_KEEP_BETWEEN_H

#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

namespace zultav::detail {

/// Keeps of x what lies from `lower` to `upper`, in that order; answers whether that changes it.
/// A domain that holds one value or Any keeps Any while several values are possible.
bool KeepBetween(ZULTaVoInteger& x, long lower, long upper);
bool KeepBetween(ZULTaVoReal& x, double lower, double upper);

}  // namespace zultav::detail

#endif
