#pragma once

#include <cstddef>

// The memory of a whole test program, which links counted_memory.cpp.

extern long gAllocations;
extern std::size_t gLargestAllocation;  // since it was last set to 0
extern long gAllocationsUntilFailure;   // none fails while negative
extern bool gAllFailThen;               // the one allocation, or all from it on
