#include "framework/base/ZULostrstream.h"

#include <limits>
#include <locale>
#include <utility>

ZULostrstream::ZULostrstream() : std::ostream(nullptr) {
  rdbuf(&mBuffer);
  imbue(std::locale::classic());
}

ZULostrstream::~ZULostrstream() = default;

const char* ZULostrstream::Buffer::Terminate() {
  *pptr() = '\0';
  return pbase();
}

/// The last byte is kept back for the terminator.
void ZULostrstream::Buffer::Use(char* begin, std::size_t size, std::size_t length) {
  setp(begin, begin + size - 1);
  pbump(static_cast<int>(length));
}

ZULostrstream::Buffer::int_type ZULostrstream::Buffer::overflow(int_type next) {
  if (traits_type::eq_int_type(next, traits_type::eof())) return traits_type::not_eof(next);
  const std::size_t length = Length();
  // A stream buffer moves its position by int.
  if (length > std::numeric_limits<int>::max() / 4) return traits_type::eof();
  try {
    std::string larger(pbase(), length);
    larger.resize(4 * length);
    mHeap.swap(larger);
  } catch (...) {
    return traits_type::eof();
  }
  Use(mHeap.data(), mHeap.size(), length);
  return sputc(traits_type::to_char_type(next));
}
