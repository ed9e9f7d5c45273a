#pragma once

#include <cstddef>
#include <string_view>

#include "framework/base/Export.h"

class ZULStreamable;

/// Registration record of a streamable class: ties the name in the stream to a way to build the
/// object. Meant as a static of the class; while it lives, its class can be found by name.
///
/// Records may be built and destroyed in any order, during static initialisation too: entering one
/// neither allocates nor throws. Threads may do so, and read and write objects, at the same time,
/// as long as no library is unloaded whose objects are being read or written.
class ZULTAV_BASE_API ZULStreamableClass {
 public:
  /// Given null, a builder makes a new object (null if memory is out); given an object, it returns
  /// that object unchanged.
  using Builder = ZULStreamable* (*)(ZULStreamable* existing);

  /// Enters the class.
  /// @param name     not copied, so it must live as long as the record; a record whose name is
  ///                 null or empty is never found.
  /// @param build    null is taken as a builder that always answers null.
  /// @param version  of the class's record; a stream holding a later one is refused. From 0 up;
  /// less
  ///                 counts as 0.
  ///
  /// Of several records with one name the oldest that still lives is the one found.
  ZULStreamableClass(const char* name, Builder build, int version) noexcept;
  ~ZULStreamableClass();
  ZULStreamableClass(const ZULStreamableClass&) = delete;
  ZULStreamableClass& operator=(const ZULStreamableClass&) = delete;

  /// The record with that name, or null.
  static const ZULStreamableClass* Find(std::string_view name) noexcept;

  const char* Name() const noexcept { return mName; }
  int Version() const noexcept { return mVersion; }

  /// Asks the builder; null if it answers null or throws.
  ZULStreamable* Build(ZULStreamable* existing) const noexcept;

 private:
  const char* mName;
  Builder mBuild;
  int mVersion;
  ZULStreamableClass* mNext = nullptr;
};
