// In a source of its own: inlined beside their callers, the operators make gcc see mismatched pairs
// of new and free.

#include "tests/counted_memory.h"

#include <algorithm>
#include <cstdlib>
#include <new>

long gAllocations = 0;
std::size_t gLargestAllocation = 0;
long gAllocationsUntilFailure = -1;
bool gAllFailThen = false;

void* operator new(std::size_t size) {
  ++gAllocations;
  gLargestAllocation = std::max(gLargestAllocation, size);
  const bool fails = gAllocationsUntilFailure == 0;
  if (gAllocationsUntilFailure > 0 || (fails && !gAllFailThen)) --gAllocationsUntilFailure;
  void* const place = fails ? nullptr : std::malloc(size != 0 ? size : 1);
  if (place == nullptr) throw std::bad_alloc();
  return place;
}
void operator delete(void* place) noexcept { std::free(place); }
void operator delete(void* place, std::size_t) noexcept { std::free(place); }
