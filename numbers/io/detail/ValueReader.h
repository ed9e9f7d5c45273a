#ifndef ZULTAV_NUMBERS_IO_DETAIL_VALUE_READER_H
#define ZULTAV_NUMBERS_IO_DETAIL_VALUE_READER_H

#include <iosfwd>

#include "numbers/Export.h"

namespace zultav::detail {

/// What CheckNumString and CheckBoolString find.
enum ValueCode {
  kUnknownText = -1,
  kNumberText = 0,
  kOpeningBracket = 1,
  kMinWord = 2,
  kMaxWord = 3,
  kTrueWord = 2,
  kFalseWord = 3,
  kAnyWord = 4,
  kNilWord = 5,
  kIntMinWord = 6,
  kIntMaxWord = 7,
  kOpeningBrace = 8
};

/// Skips white space and classifies the text of a number, an interval or a word for one. Words and
/// brackets are taken, also those that turn out to be unknown; a number is not.
ZULTAV_NUMBERS_API int CheckNumString(std::istream& in);
/// The same for the text of a boolean.
ZULTAV_NUMBERS_API int CheckBoolString(std::istream& in);

/// One number or word. Anything else sets the stream's fail state and answers Nil.
ZULTAV_NUMBERS_API double GetSRValue(std::istream& in);
/// Integers beyond the encodings of Any and Nil are unreadable.
ZULTAV_NUMBERS_API long GetSIValue(std::istream& in);

}  // namespace zultav::detail

#endif
