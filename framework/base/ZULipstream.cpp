#include "framework/base/ZULipstream.h"

#include <algorithm>
#include <array>
#include <bit>
#include <istream>
#include <new>

#include "framework/base/ZULStreamableClass.h"
#include "framework/base/detail/StreamFormat.h"

using namespace zultav::detail;

static_assert(sizeof(int) == 4 && sizeof(double) == 8, "the format's numbers are the platform's");

/// One level of nested objects. When the outermost ends, it is known who owns what was made.
class ZULipstream::Level {
 public:
  explicit Level(ZULipstream& in) noexcept : mStream(in) {
    if (++mStream.mDepth > kMaxDepth) mStream.Fail("objects are nested too deep");
  }
  ~Level() {
    if (--mStream.mDepth == 0) mStream.Settle();
  }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;

 private:
  ZULipstream& mStream;
};

ZULipstream::ZULipstream(std::istream& in) noexcept : mIn(in) {
  std::array<char, kMagic.size()> magic{};
  if (ReadBytes(magic.data(), magic.size()) && magic != kMagic) Fail("not an object stream");
  const auto version = ReadFixed<std::uint16_t>();
  if (Good() && version != kFormatVersion) Fail("object stream of an unknown version");
}

ZULipstream& ZULipstream::operator>>(int& value) noexcept {
  value = static_cast<int>(ReadFixed<std::uint32_t>());
  return *this;
}

ZULipstream& ZULipstream::operator>>(long& value) noexcept {
  const auto number = static_cast<std::int64_t>(ReadFixed<std::uint64_t>());
  const bool isInRange =
      number >= std::numeric_limits<long>::min() && number <= std::numeric_limits<long>::max();
  if (!isInRange) Fail("number is beyond this platform's long");
  value = isInRange ? static_cast<long>(number) : 0;
  return *this;
}

ZULipstream& ZULipstream::operator>>(double& value) noexcept {
  value = std::bit_cast<double>(ReadFixed<std::uint64_t>());
  return *this;
}

bool ZULipstream::ReadUnsigned(std::uint64_t& value, std::uint64_t limit) noexcept {
  value = 0;
  std::uint64_t sum = 0;
  for (int shift = 0;; shift += 7) {
    char byte = 0;
    if (!ReadBytes(&byte, 1)) return false;
    const std::uint64_t group = static_cast<unsigned char>(byte) & 0x7F;
    const bool isLast = static_cast<unsigned char>(byte) < 0x80;
    sum |= group << shift;
    // One number has one spelling: no zero groups in front, no bits beyond the 64th.
    const bool isMalformed =
        shift == kLastGroupShift ? group != 1 || !isLast : isLast && group == 0 && shift > 0;
    if (isMalformed) {
      Fail("malformed number");
      return false;
    }
    if (isLast) break;
  }
  if (sum > limit) {
    Fail("number is above its limit");
    return false;
  }
  value = sum;
  return true;
}

bool ZULipstream::ReadString(std::string& text, std::size_t limit) noexcept {
  constexpr std::size_t kChunk = 4096;  // memory grows only as bytes really come
  text.clear();
  std::uint64_t length = 0;
  if (ReadUnsigned(length) && length > limit) Fail("text is longer than its limit");
  Guarded([&] {
    while (text.size() < length) {
      const std::size_t old = text.size();
      const std::size_t more = std::min(kChunk, static_cast<std::size_t>(length) - old);
      text.resize(old + more);
      if (!ReadBytes(text.data() + old, more)) return;
    }
  });
  if (!Good()) text.clear();
  return Good();
}

bool ZULipstream::ReadObject(ZULStreamable& object) noexcept {
  const Level level(*this);
  Guarded([&] {
    const Class its = ReadClass(ReadTag());
    if (!Good()) return;
    if (its.mRecord->Name() != std::string_view(object.CastableID()))
      return Fail("object is of another class");
    const std::size_t number = mObjects.size();
    mObjects.push_back({&object, false});
    ReadRecord(object, its.mVersion);
    mObjects[number].mObject = nullptr;  // how long it lives, its owner alone knows
  });
  return Good();
}

ZULStreamable* ZULipstream::ReadObjectPointer(Fits fits) noexcept {
  return ReadPointer(fits, false);
}

ZULStreamable* ZULipstream::ReadOwnedPointer(Fits fits) noexcept { return ReadPointer(fits, true); }

void ZULipstream::Fail(const char* why) noexcept {
  if (Good()) mReason = why != nullptr && *why != 0 ? why : "failed";
}

bool ZULipstream::ReadBytes(char* bytes, std::size_t size) noexcept {
  if (!Good()) return false;
  try {
    if (mIn.read(bytes, static_cast<std::streamsize>(size))) return true;
    Fail(mIn.bad() ? "input error" : "stream ends too early");
  } catch (...) {
    Fail(mIn.bad() ? "input error" : "stream ends too early");
  }
  return false;
}

template <class Unsigned>
Unsigned ZULipstream::ReadFixed() noexcept {
  std::array<char, sizeof(Unsigned)> bytes;
  if (!ReadBytes(bytes.data(), bytes.size())) return 0;
  Unsigned value = 0;
  for (std::size_t i = bytes.size(); i-- > 0;)
    value = static_cast<Unsigned>(value << 8 | static_cast<unsigned char>(bytes[i]));
  return value;
}

std::uint64_t ZULipstream::ReadTag() noexcept {
  std::uint64_t tag = 0;
  if (ReadUnsigned(tag) && tag >= kFirstClass && tag - kFirstClass >= mClasses.size())
    Fail("tag names no class");
  return tag;
}

/// The class that the tag announces; without meaning once the stream has failed.
ZULipstream::Class ZULipstream::ReadClass(std::uint64_t tag) {
  if (!Good()) return {};
  if (tag >= kFirstClass) return mClasses[static_cast<std::size_t>(tag - kFirstClass)];
  if (tag == kNewClass) return DefineClass();
  Fail("pointer where an object should be");
  return {};
}

ZULipstream::Class ZULipstream::DefineClass() {
  std::string name;
  std::uint64_t version = 0;
  ReadString(name, kMaxNameLength);
  ReadUnsigned(version);
  if (!Good()) return {};
  const ZULStreamableClass* const record = ZULStreamableClass::Find(name);
  if (record == nullptr) {
    Fail("class is not registered");
  } else if (version > static_cast<std::uint64_t>(record->Version())) {
    Fail("class is of a later version");
  } else if (std::any_of(mClasses.begin(), mClasses.end(),
                         [&](const Class& c) { return c.mRecord == record; })) {
    Fail("class is introduced twice");
  }
  if (!Good()) return {};
  mClasses.push_back({record, static_cast<int>(version)});
  return mClasses.back();
}

ZULStreamable* ZULipstream::ReadPointer(Fits fits, bool isOwned) noexcept {
  const Level level(*this);
  ZULStreamable* object = nullptr;
  Guarded([&] {
    const std::uint64_t tag = ReadTag();
    if (!Good() || tag == kNull) return;
    object = tag == kReference ? ReadReference(fits, isOwned) : ReadNew(tag, fits, isOwned);
  });
  return Good() ? object : nullptr;
}

ZULStreamable* ZULipstream::ReadReference(Fits fits, bool isOwned) {
  std::uint64_t number = 0;
  if (!ReadUnsigned(number)) return nullptr;
  ZULStreamable* object = nullptr;
  if (number >= mObjects.size()) {
    Fail("reference to an object that has not come yet");
  } else if (object = mObjects[static_cast<std::size_t>(number)].mObject; object == nullptr) {
    Fail("reference to an object that was read in place");
  } else if (isOwned) {
    Fail("object would have two owners");
  } else if (fits != nullptr && !fits(*object)) {
    Fail("object is of another class");
  }
  return object;
}

ZULStreamable* ZULipstream::ReadNew(std::uint64_t tag, Fits fits, bool isOwned) {
  const Class its = ReadClass(tag);
  if (!Good()) return nullptr;
  const std::size_t number = mObjects.size();
  mObjects.push_back({nullptr, true});  // room first, so that the object is never ours unrecorded
  ZULStreamable* const object = its.mRecord->Build(nullptr);
  mObjects[number].mObject = object;
  if (object == nullptr) {
    Fail("no memory for an object");
  } else if (fits != nullptr && !fits(*object)) {
    Fail("object is of another class");
  } else {
    ReadRecord(*object, its.mVersion);
  }
  if (Good() && isOwned) mObjects[number].mIsOurs = false;
  return object;
}

void ZULipstream::ReadRecord(ZULStreamable& object, int version) {
  const int outer = mRecordVersion;
  mRecordVersion = version;
  object.Read(*this);
  mRecordVersion = outer;
}

/// Ends an outermost read: what was made is the caller's, or nobody's.
void ZULipstream::Settle() noexcept {
  if (Good()) {
    mSettled = mObjects.size();
    return;
  }
  while (mObjects.size() > mSettled) {
    const Entry entry = mObjects.back();
    mObjects.pop_back();
    if (entry.mIsOurs) delete entry.mObject;
  }
}

template <class Action>
void ZULipstream::Guarded(Action action) noexcept {
  if (!Good()) return;
  try {
    action();
  } catch (const std::bad_alloc&) {
    Fail("out of memory");
  } catch (...) {
    Fail("an object threw while it was read");
  }
}
