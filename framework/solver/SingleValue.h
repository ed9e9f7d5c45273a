#ifndef ZULTAV_SOLVER_SINGLE_VALUE_H
#define ZULTAV_SOLVER_SINGLE_VALUE_H

#include "framework/solver/Export.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

// Whether a domain holds exactly one value: equal bounds, or a decided boolean.

namespace zultav {

inline bool IsSingleValue(const ZULTaVoInteger& x) {
  return x.GetLowerBound() == x.GetUpperBound();
}
inline bool IsSingleValue(const ZULTaVoReal& x) { return x.GetLowerBound() == x.GetUpperBound(); }
inline bool IsSingleValue(const ZULTaVoBoolean& x) { return x.IsTrue() || x.IsFalse(); }
ZULTAV_TYPES_API bool IsSingleValue(const ZULTaVoAny& x);

/// The cardinality of Any in a domain that holds one value or none: it cannot be split.
constexpr long kSingleAny = -1;

}  // namespace zultav

#endif
