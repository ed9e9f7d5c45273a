#include "framework/base/ZULStreamableClass.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <type_traits>

#include "framework/base/Fnv1a.h"

namespace {

// Buckets of intrusive lists, and their lock. Constant-initialised and trivially destroyed, so
// records of any library can come before and go after everything else; linking a record needs no
// memory.
constinit std::array<ZULStreamableClass*, 256> gBuckets{};
constinit std::mutex gLock;
static_assert(std::is_trivially_destructible_v<std::mutex>);

ZULStreamableClass*& BucketOf(std::string_view name) noexcept {
  return gBuckets[zultav::Fnv1a(name) % gBuckets.size()];
}

}  // namespace

ZULStreamableClass::ZULStreamableClass(const char* name, Builder build, int version) noexcept
    : mName(name != nullptr ? name : ""), mBuild(build), mVersion(std::max(version, 0)) {
  const std::lock_guard lock(gLock);
  ZULStreamableClass** link = &BucketOf(mName);
  while (*link != nullptr) link = &(*link)->mNext;  // to the end: the oldest is found first
  *link = this;
}

ZULStreamableClass::~ZULStreamableClass() {
  const std::lock_guard lock(gLock);
  ZULStreamableClass** link = &BucketOf(mName);
  while (*link != this) link = &(*link)->mNext;
  *link = mNext;
}

const ZULStreamableClass* ZULStreamableClass::Find(std::string_view name) noexcept {
  if (name.empty()) return nullptr;
  const std::lock_guard lock(gLock);
  const ZULStreamableClass* record = BucketOf(name);
  while (record != nullptr && name != record->mName) record = record->mNext;
  return record;
}

ZULStreamable* ZULStreamableClass::Build(ZULStreamable* existing) const noexcept {
  try {
    return mBuild != nullptr ? mBuild(existing) : nullptr;
  } catch (...) {
    return nullptr;
  }
}
