#ifndef ZULTAV_ENGINE_DETAIL_RULES_H
#define ZULTAV_ENGINE_DETAIL_RULES_H

#include "framework/engine/Engine.h"

namespace zultav::engine {

// One run of a rule each: narrows what may be by what the rule says, and answers false when nothing
// is left. Where all slots have one value, the answer is exact.

bool RunFunction(Engine& engine, const Rule& rule);
/// Sums beyond 128 bits narrow nothing. `isSmall` promises that 64 bits hold all of them.
bool RunLinear(Engine& engine, const Rule& rule, bool isSmall);
bool HasSmallSums(const Engine& engine, const Rule& rule);
bool RunUnequal(Engine& engine, const Rule& rule);
bool RunCount(Engine& engine, const Rule& rule);
bool RunPrimality(Engine& engine, const Rule& rule);

}  // namespace zultav::engine

#endif
