#ifndef ZULTAV_ENGINE_DETAIL_SEARCHED_SLOTS_H
#define ZULTAV_ENGINE_DETAIL_SEARCHED_SLOTS_H

#include <vector>

#include "framework/engine/Program.h"

namespace zultav::engine {

/// Of each slot, whether a search has to find a value for it: the declared ones, and hidden
/// integers that are no functions of declared ones and of each other.
std::vector<bool> FindSearchedSlots(const Program& program);

}  // namespace zultav::engine

#endif
