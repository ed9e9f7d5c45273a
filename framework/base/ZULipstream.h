#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "framework/base/Export.h"
#include "framework/base/ZULStreamable.h"

class ZULStreamableClass;

/// Reads what a ZULopstream wrote (format: docs/streams.md), and refuses anything else.
///
/// Whatever the bytes are, a read ends with its value or with a reason: it never crashes, never
/// allocates out of proportion to the bytes that are really there, and no exception leaves it. The
/// first failure is final: every further read fails at once, numbers come as 0, texts as empty,
/// pointers as null.
///
/// Objects read through pointers keep their number for the life of the stream: do not destroy one
/// while more is to be read.
class ZULTAV_BASE_API ZULipstream {
 public:
  /// Tells whether an object is of the class that the reader wants.
  using Fits = bool (*)(const ZULStreamable&);

  /// Reads the head of the stream. `in` should be open in binary mode.
  explicit ZULipstream(std::istream& in) noexcept;
  ZULipstream(const ZULipstream&) = delete;
  ZULipstream& operator=(const ZULipstream&) = delete;

  ZULipstream& operator>>(int& value) noexcept;
  /// Fails on a number beyond the range of this platform's `long`.
  ZULipstream& operator>>(long& value) noexcept;
  /// Any bits, NaN and infinities included: what a class does not want, it refuses with Fail.
  ZULipstream& operator>>(double& value) noexcept;

  /// Fails, with value 0, on a number above `limit`.
  bool ReadUnsigned(std::uint64_t& value,
                    std::uint64_t limit = std::numeric_limits<std::uint64_t>::max()) noexcept;
  /// Fails, with an empty text, on one longer than `limit` bytes.
  bool ReadString(std::string& text, std::size_t limit) noexcept;

  /// Reads an object written by WriteObject into `object`; fails when the stream holds one of
  /// another class. After a failure `object` may only be destroyed or read or assigned anew.
  bool ReadObject(ZULStreamable& object) noexcept;

  /// Reads a pointer written by WriteObjectPointer; null when null was written or on failure.
  ///
  /// Pointers to one object come back as one address. The object, and all it refers to, belong to
  /// the caller once the outermost read has ended well. When the outermost read fails, every object
  /// made on the way is destroyed, those that ReadOwnedPointer handed over by their owners.
  /// @param fits  when given, an object that it does not accept is a failure.
  ZULStreamable* ReadObjectPointer(Fits fits = nullptr) noexcept;

  /// As ReadObjectPointer, but the object belongs to the caller at once and to nobody else: fails
  /// when the stream refers to an object that was read before.
  ZULStreamable* ReadOwnedPointer(Fits fits = nullptr) noexcept;

  /// Version of the record that is being read; 0 outside an object's `Read`.
  int RecordVersion() const noexcept { return mRecordVersion; }

  /// False after the first failure.
  bool Good() const noexcept { return *mReason == 0; }
  /// Why it failed; empty if it did not.
  const char* Reason() const noexcept { return mReason; }
  /// Makes the stream fail. The first reason stays.
  /// @param why  not copied: a literal. Null or empty is taken as "failed".
  void Fail(const char* why) noexcept;

 private:
  struct Class {
    const ZULStreamableClass* mRecord = nullptr;
    int mVersion = 0;
  };
  struct Entry {
    ZULStreamable* mObject;  // null once an object read in place is complete
    bool mIsOurs;            // made here and handed to nobody yet
  };
  class Level;

  bool ReadBytes(char* bytes, std::size_t size) noexcept;
  template <class Unsigned>
  Unsigned ReadFixed() noexcept;
  std::uint64_t ReadTag() noexcept;
  Class ReadClass(std::uint64_t tag);
  Class DefineClass();
  ZULStreamable* ReadPointer(Fits fits, bool isOwned) noexcept;
  ZULStreamable* ReadReference(Fits fits, bool isOwned);
  ZULStreamable* ReadNew(std::uint64_t tag, Fits fits, bool isOwned);
  void ReadRecord(ZULStreamable& object, int version);
  void Settle() noexcept;
  template <class Action>
  void Guarded(Action action) noexcept;

  std::istream& mIn;
  const char* mReason = "";
  int mDepth = 0;
  int mRecordVersion = 0;
  std::vector<Class> mClasses;
  std::vector<Entry> mObjects;  // by number
  std::size_t mSettled = 0;     // objects below this number belong to the callers
};

namespace zultav::detail {
template <class C>
bool IsA(const ZULStreamable& object) {
  return dynamic_cast<const C*>(&object) != nullptr;
}
}  // namespace zultav::detail

/// Reads a pointer to a C or to a class derived from it (see ZULipstream::ReadObjectPointer). Null
/// is a pointer as well; on failure `target` is null and the answer false.
template <class C>
bool ReadPointerAs(ZULipstream& in, C*& target) noexcept {
  target = dynamic_cast<C*>(in.ReadObjectPointer(&zultav::detail::IsA<C>));
  return in.Good();
}

/// Reads an object that `target` shall own (see ZULipstream::ReadOwnedPointer). Null is allowed; on
/// failure `target` is empty and the answer false.
template <class C>
bool ReadOwnedAs(ZULipstream& in, std::unique_ptr<C>& target) noexcept {
  target.reset(dynamic_cast<C*>(in.ReadOwnedPointer(&zultav::detail::IsA<C>)));
  return in.Good();
}
