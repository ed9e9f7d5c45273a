#ifndef ZULTAV_SOLVER_ZULTAVO_BASE_H
#define ZULTAV_SOLVER_ZULTAVO_BASE_H

#include <cstddef>
#include <new>

#include "framework/solver/Export.h"

/// Allocation of solver objects and descriptors. A failed allocation answers null instead of
/// throwing, and every creation function passes that on.
class ZULTAV_TYPES_API ZULTaVoBase {
 public:
  static void* operator new(std::size_t size) noexcept;
  static void operator delete(void* memory) noexcept;
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void*, void*) noexcept {}

  /// What to allocate with, to be freed by std::free; null restores std::malloc. For embedders
  /// that count or limit memory: networks take theirs from here, too.
  using Allocator = void* (*)(std::size_t size);
  static void SetAllocator(Allocator allocate);
};

#endif
