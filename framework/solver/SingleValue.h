#ifndef ZULTAV_SOLVER_SINGLE_VALUE_H
#define ZULTAV_SOLVER_SINGLE_VALUE_H

#include "framework/solver/Export.h"

class ZULTaVoAny;

/// Whether the domain holds exactly one value: equal bounds, or a decided boolean.
ZULTAV_TYPES_API bool IsSingleValue(const ZULTaVoAny& x);

#endif
