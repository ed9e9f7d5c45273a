// The memory of the whole test program, counted. In a source of its own: inlined beside their
// callers, the operators make gcc see mismatched pairs of new and free.

#include <cstdlib>
#include <new>

long gAllocations = 0;

void* operator new(std::size_t size) {
  ++gAllocations;
  void* memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
