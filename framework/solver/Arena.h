#ifndef ZULTAV_SOLVER_ARENA_H
#define ZULTAV_SOLVER_ARENA_H

#include <cstddef>
#include <vector>

#include "framework/solver/Export.h"

namespace zultav {

/// Memory that is handed out piece by piece and given back all at once or back to a mark.
class ZULTAV_TYPES_API Arena {
 public:
  static constexpr std::size_t kAlignment = alignof(std::max_align_t);
  struct Mark {
    std::size_t chunk;
    std::size_t used;
  };

  Arena() = default;
  ~Arena();
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  /// Memory aligned for any type, or null when there is none.
  void* Allocate(std::size_t size) noexcept;
  Mark GetMark() const { return {mCurrent, mUsed}; }
  /// Frees all that was allocated since the mark. Chunks are kept for reuse.
  void Release(Mark mark) {
    mCurrent = mark.chunk;
    mUsed = mark.used;
  }
  /// Whether the address lies in memory that this arena handed out.
  bool Owns(const void* address) const;
  std::size_t GetBytes() const { return mBytes; }

 private:
  struct Chunk {
    char* memory;
    std::size_t size;
  };
  bool Grow(std::size_t size) noexcept;

  std::vector<Chunk> mChunks;           // in the order of allocation
  std::vector<std::size_t> mByAddress;  // indices of chunks, by address
  std::size_t mCurrent = 0;
  std::size_t mUsed = 0;
  std::size_t mBytes = 0;
};

}  // namespace zultav

#endif
