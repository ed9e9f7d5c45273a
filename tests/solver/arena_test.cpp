#include "framework/solver/Arena.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

TEST(ArenaTest, PiecesAreAlignedDistinctAndOwnedUntilReleased) {
  Arena arena;
  const Arena::Mark begin = arena.GetMark();
  for (int round = 0; round < 2; ++round) {
    std::vector<char*> pieces;
    for (std::size_t size = 1; size < 60000; size += 1 + size / 7) {
      auto* piece = static_cast<char*>(arena.Allocate(size));
      ASSERT_NE(piece, nullptr);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % Arena::kAlignment, 0U);
      std::memset(piece, static_cast<int>(pieces.size()), size);
      pieces.push_back(piece);
    }
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      EXPECT_EQ(*pieces[i], static_cast<char>(i)) << "pieces overlap";
      EXPECT_TRUE(arena.Owns(pieces[i]));
    }
    int outside = 0;
    EXPECT_FALSE(arena.Owns(&outside));
    EXPECT_FALSE(arena.Owns(nullptr));
    const std::size_t bytes = arena.GetBytes();
    arena.Release(begin);
    for (const char* piece : pieces) EXPECT_FALSE(arena.Owns(piece));
    for (std::size_t i = 0; i < 100; ++i) arena.Allocate(16);
    EXPECT_EQ(arena.GetBytes(), bytes) << "memory is reused";
    arena.Release(begin);
  }
}

TEST(ArenaTest, AnImpossibleRequestChangesNothing) {
  Arena arena;
  auto* piece = static_cast<char*>(arena.Allocate(16));
  for (const std::size_t size : {SIZE_MAX, SIZE_MAX - 8, SIZE_MAX / 2, SIZE_MAX / 2 - 4096})
    EXPECT_EQ(arena.Allocate(size), nullptr) << size;
  EXPECT_EQ(arena.Allocate(16), piece + 16);
}
