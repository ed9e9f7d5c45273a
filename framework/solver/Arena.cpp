#include "framework/solver/Arena.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <new>

#include "framework/solver/ZULTaVoBase.h"

namespace zultav {

namespace {
constexpr std::size_t kFirstChunk = std::size_t{16} << 10;
constexpr std::size_t kLargestChunk = std::size_t{4} << 20;
}  // namespace

Arena::~Arena() {
  for (const Chunk& chunk : mChunks) ZULTaVoBase::operator delete(chunk.memory);
}

void* Arena::Allocate(std::size_t size) noexcept {
  if (size > SIZE_MAX / 4) return nullptr;
  size = (size + kAlignment - 1) / kAlignment * kAlignment;
  const Mark before = GetMark();
  while (mCurrent < mChunks.size() && mChunks[mCurrent].size - mUsed < size) {
    ++mCurrent;
    mUsed = 0;
  }
  if (mCurrent == mChunks.size() && !Grow(size)) {
    Release(before);
    return nullptr;
  }
  void* memory = mChunks[mCurrent].memory + mUsed;
  mUsed += size;
  return memory;
}

bool Arena::Grow(std::size_t size) noexcept {
  const std::size_t usual =
      mChunks.empty() ? kFirstChunk : std::min(2 * mChunks.back().size, kLargestChunk);
  const std::size_t wanted = std::max(size, usual);
  auto* memory = static_cast<char*>(ZULTaVoBase::operator new(wanted));
  if (memory == nullptr) return false;
  try {
    mChunks.reserve(mChunks.size() + 1);
    mByAddress.reserve(mByAddress.size() + 1);
  } catch (const std::bad_alloc&) {
    ZULTaVoBase::operator delete(memory);
    return false;
  }
  const auto later = std::upper_bound(
      mByAddress.begin(), mByAddress.end(), memory, [this](const char* address, std::size_t chunk) {
        return std::less<const char*>()(address, mChunks[chunk].memory);
      });
  mByAddress.insert(later, mChunks.size());
  mChunks.push_back({memory, wanted});
  mBytes += wanted;
  mUsed = 0;
  return true;
}

bool Arena::Owns(const void* address) const {
  const auto* byte = static_cast<const char*>(address);
  const auto after = std::upper_bound(
      mByAddress.begin(), mByAddress.end(), byte, [this](const char* wanted, std::size_t chunk) {
        return std::less<const char*>()(wanted, mChunks[chunk].memory);
      });
  if (after == mByAddress.begin()) return false;
  const std::size_t index = *(after - 1);
  const Chunk& chunk = mChunks[index];
  const std::size_t used =
      index < mCurrent ? chunk.size : (index == mCurrent ? mUsed : std::size_t{0});
  return std::less<const char*>()(byte, chunk.memory + used);
}

}  // namespace zultav
