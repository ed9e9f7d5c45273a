#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>
#include <unordered_map>

#include "framework/base/Export.h"

class ZULStreamable;
class ZULStreamableClass;

/// Writes numbers, texts and graphs of objects to a byte stream (format: docs/streams.md).
///
/// The bytes are the same on every platform. No exception leaves this class: after the first
/// failure nothing more is written, and `Good` and `Reason` tell. An object written through a
/// pointer is known by its address from then on, so it must stay where it is until the last write.
class ZULTAV_BASE_API ZULopstream {
 public:
  /// Writes the head of the stream. `out` should be open in binary mode; it is not flushed here.
  explicit ZULopstream(std::ostream& out) noexcept;
  ZULopstream(const ZULopstream&) = delete;
  ZULopstream& operator=(const ZULopstream&) = delete;

  ZULopstream& operator<<(int value) noexcept;
  ZULopstream& operator<<(long value) noexcept;    ///< 64 bits, whatever the width of `long`
  ZULopstream& operator<<(double value) noexcept;  ///< exact bits

  /// A count, index or other non-negative number; small ones take fewer bytes (1 to 10).
  void WriteUnsigned(std::uint64_t value) noexcept;
  /// Any bytes, preceded by their number.
  void WriteString(std::string_view text) noexcept;

  /// Writes an object that the reader will read in place. Always writes the record in full, but a
  /// pointer to the object written by its own parts leads back to it (or to the object written
  /// through a pointer before, if it was).
  void WriteObject(const ZULStreamable& object) noexcept;
  /// Writes an object the first time, a reference to it later. Null is allowed.
  void WriteObjectPointer(const ZULStreamable* object) noexcept;

  /// False after the first failure. What the stream below still buffers may fail when it is
  /// flushed.
  bool Good() const noexcept { return *mReason == 0; }
  /// Why it failed; empty if it did not.
  const char* Reason() const noexcept { return mReason; }
  /// Ends the writing. The first reason stays.
  /// @param why  not copied: a literal. Null or empty is taken as "failed".
  void Fail(const char* why) noexcept;

 private:
  void WriteBytes(const char* bytes, std::size_t size) noexcept;
  template <class Unsigned>
  void WriteFixed(Unsigned value) noexcept;
  void WriteFramed(const ZULStreamable& object);
  void WriteClass(const char* name);
  template <class Action>
  void Guarded(Action action) noexcept;

  std::ostream& mOut;
  const char* mReason = "";
  int mDepth = 0;
  std::uint64_t mObjectCount = 0;
  std::unordered_map<const ZULStreamable*, std::uint64_t> mObjects;
  std::unordered_map<const ZULStreamableClass*, std::uint64_t> mClasses;
};
