#pragma once

#include "framework/base/Export.h"

class ZULipstream;
class ZULopstream;

/// Tag of the streaming constructors: builds an object whose fields `Read` will fill.
struct ZULStreamableInit {
  explicit ZULStreamableInit() = default;
};

/// Root of everything that object streams can carry. Holds no data.
///
/// The order of the virtual operations is part of the binary contract.
class ZULTAV_BASE_API ZULStreamable {
 public:
  virtual ~ZULStreamable();

  /// Name under which the class is registered (see ZULStreamableClass) and written to streams.
  /// Never null; the characters live as long as the class's library.
  virtual const char* CastableID() const = 0;

  /// Writes the fields, in the order in which `Read` reads them. The stream frames the record.
  virtual void Write(ZULopstream& out) const = 0;

  /// Reads what `Write` wrote. On a failed stream every number comes as 0 and every pointer as
  /// null; a loop over a count that was read must therefore stop as soon as `in.Good()` is false.
  ///
  /// Pointers read on the way may lead to objects that are not complete yet, so they may be stored
  /// but not followed before the outermost read has ended, nor by the destructor of the reader. An
  /// object that owns its parts reads them with ReadOwnedAs.
  virtual void Read(ZULipstream& in) = 0;

 protected:
  ZULStreamable() = default;
  explicit ZULStreamable(ZULStreamableInit) {}
  ZULStreamable(const ZULStreamable&) = default;
  ZULStreamable& operator=(const ZULStreamable&) = default;
};
