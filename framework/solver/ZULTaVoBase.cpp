#include "framework/solver/ZULTaVoBase.h"

#include <cstdlib>

namespace {
ZULTaVoBase::Allocator sAllocate = nullptr;
}

void* ZULTaVoBase::operator new(std::size_t size) noexcept {
  return sAllocate != nullptr ? sAllocate(size) : std::malloc(size);
}

void ZULTaVoBase::operator delete(void* memory) noexcept { std::free(memory); }

void ZULTaVoBase::SetAllocator(Allocator allocate) { sAllocate = allocate; }
