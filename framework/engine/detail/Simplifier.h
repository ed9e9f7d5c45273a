#ifndef ZULTAV_ENGINE_DETAIL_SIMPLIFIER_H
#define ZULTAV_ENGINE_DETAIL_SIMPLIFIER_H

#include "framework/engine/detail/Draft.h"

namespace zultav::engine {

/// Says the same with less: equal values become one slot, truth values that are known decide which
/// comparisons hold, products of equal factors become powers, and what is computed twice exists
/// once.
void Simplify(Draft& draft);

}  // namespace zultav::engine

#endif
