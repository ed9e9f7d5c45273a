#include "framework/solver/ZULTaVoBase.h"

#include <atomic>
#include <cstdlib>

namespace {
std::atomic<ZULTaVoBase::Allocator> sAllocate = nullptr;
}

void* ZULTaVoBase::operator new(std::size_t size) noexcept {
  const Allocator allocate = sAllocate.load(std::memory_order_relaxed);
  return allocate != nullptr ? allocate(size) : std::malloc(size);
}

void ZULTaVoBase::operator delete(void* memory) noexcept { std::free(memory); }

void ZULTaVoBase::SetAllocator(Allocator allocate) { sAllocate = allocate; }
