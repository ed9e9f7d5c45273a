#include <cstddef>
#include <cstdlib>
#include <new>

// The memory of the whole test program. In a source of its own: inlined beside their callers, the
// operators make gcc see mismatched pairs of new and free.
long gAllocationsUntilFailure = -1;  // none fails while negative
bool gAllFailThen = false;           // the one allocation, or all from it on

void* operator new(std::size_t size) {
  bool fails = gAllocationsUntilFailure == 0;
  if (gAllocationsUntilFailure > 0 || (fails && !gAllFailThen)) --gAllocationsUntilFailure;
  void* const place = fails ? nullptr : std::malloc(size != 0 ? size : 1);
  if (place == nullptr) throw std::bad_alloc();
  return place;
}
void operator delete(void* place) noexcept { std::free(place); }
void operator delete(void* place, std::size_t) noexcept { std::free(place); }
