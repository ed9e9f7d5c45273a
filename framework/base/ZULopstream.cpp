#include "framework/base/ZULopstream.h"

#include <array>
#include <bit>
#include <new>
#include <ostream>

#include "framework/base/ZULStreamable.h"
#include "framework/base/ZULStreamableClass.h"
#include "framework/base/detail/StreamFormat.h"

using namespace zultav::detail;

static_assert(sizeof(int) == 4 && sizeof(double) == 8, "the format's numbers are the platform's");

ZULopstream::ZULopstream(std::ostream& out) noexcept : mOut(out) {
  WriteBytes(kMagic.data(), kMagic.size());
  WriteFixed(kFormatVersion);
}

ZULopstream& ZULopstream::operator<<(int value) noexcept {
  WriteFixed(static_cast<std::uint32_t>(value));
  return *this;
}

ZULopstream& ZULopstream::operator<<(long value) noexcept {
  WriteFixed(static_cast<std::uint64_t>(std::int64_t{value}));
  return *this;
}

ZULopstream& ZULopstream::operator<<(double value) noexcept {
  WriteFixed(std::bit_cast<std::uint64_t>(value));
  return *this;
}

void ZULopstream::WriteUnsigned(std::uint64_t value) noexcept {
  std::array<char, 10> bytes;
  std::size_t size = 0;
  for (; value >= 0x80; value >>= 7) bytes[size++] = static_cast<char>(value | 0x80);
  bytes[size++] = static_cast<char>(value);
  WriteBytes(bytes.data(), size);
}

void ZULopstream::WriteString(std::string_view text) noexcept {
  WriteUnsigned(text.size());
  WriteBytes(text.data(), text.size());
}

void ZULopstream::WriteObject(const ZULStreamable& object) noexcept {
  Guarded([&] {
    const bool isNew = mObjects.emplace(&object, mObjectCount).second;
    WriteFramed(object);
    // Its place may soon hold another object, which must not be taken for this one.
    if (isNew) mObjects.erase(&object);
  });
}

void ZULopstream::WriteObjectPointer(const ZULStreamable* object) noexcept {
  if (object == nullptr) return WriteUnsigned(kNull);
  Guarded([&] {
    const auto [known, isNew] = mObjects.emplace(object, mObjectCount);
    if (isNew) return WriteFramed(*object);
    WriteUnsigned(kReference);
    WriteUnsigned(known->second);
  });
}

void ZULopstream::Fail(const char* why) noexcept {
  if (Good()) mReason = why != nullptr && *why != 0 ? why : "failed";
}

void ZULopstream::WriteBytes(const char* bytes, std::size_t size) noexcept {
  if (!Good()) return;
  try {
    if (!mOut.write(bytes, static_cast<std::streamsize>(size))) Fail("output error");
  } catch (...) {
    Fail("output error");
  }
}

template <class Unsigned>
void ZULopstream::WriteFixed(Unsigned value) noexcept {
  std::array<char, sizeof(Unsigned)> bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(value >> (8 * i));
  WriteBytes(bytes.data(), bytes.size());
}

void ZULopstream::WriteFramed(const ZULStreamable& object) {
  if (mDepth == kMaxDepth) return Fail("objects are nested too deep");
  ++mDepth;
  WriteClass(object.CastableID());
  ++mObjectCount;
  if (Good()) object.Write(*this);
  --mDepth;
}

void ZULopstream::WriteClass(const char* name) {
  const ZULStreamableClass* const its = name != nullptr ? ZULStreamableClass::Find(name) : nullptr;
  if (its == nullptr) return Fail("class is not registered");
  const auto [known, isNew] = mClasses.emplace(its, mClasses.size());
  if (!isNew) return WriteUnsigned(kFirstClass + known->second);
  const std::string_view text = its->Name();
  if (text.size() > kMaxNameLength) return Fail("class name is too long");
  WriteUnsigned(kNewClass);
  WriteString(text);
  WriteUnsigned(static_cast<std::uint64_t>(its->Version()));
}

template <class Action>
void ZULopstream::Guarded(Action action) noexcept {
  if (!Good()) return;
  try {
    action();
  } catch (const std::bad_alloc&) {
    Fail("out of memory");
  } catch (...) {
    Fail("an object threw while it was written");
  }
}
