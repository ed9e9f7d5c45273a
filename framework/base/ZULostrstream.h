#pragma once

#include <array>
#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>

#include "framework/base/Export.h"

/// Text output into memory, with the classic locale whatever the global one is.
///
/// Short texts stay in a buffer of the object itself. When memory is out, the stream goes bad (as a
/// file on a full disk does) and keeps the text written so far.
class ZULTAV_BASE_API ZULostrstream : public std::ostream {
 public:
  ZULostrstream();
  ~ZULostrstream() override;

  /// The text so far, NUL-terminated; valid until the next write.
  const char* Str() { return mBuffer.Terminate(); }
  /// Bytes written so far, without the terminator.
  std::size_t Length() const { return mBuffer.Length(); }

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer() { Use(mInline.data(), mInline.size(), 0); }
    const char* Terminate();
    std::size_t Length() const { return static_cast<std::size_t>(pptr() - pbase()); }

   protected:
    int_type overflow(int_type next) override;

   private:
    void Use(char* begin, std::size_t size, std::size_t length);

    std::array<char, 256> mInline;
    std::string mHeap;
  };

  Buffer mBuffer;
};
