#include "numbers/io/detail/ValueReader.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <locale>
#include <string>
#include <string_view>

#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "numbers/io/detail/DecimalPoint.h"

using namespace zultav::detail;

namespace {

/// Set, and left so, by whoever reads a real; without effect on the reading.
constexpr auto kInputFlag = static_cast<std::ios::fmtflags>(0x80);

void Fail(std::istream& in) { in.clear((in.rdstate() & std::ios::badbit) | std::ios::failbit); }

// Words ----------------------------------------------------------------------------------------

/// Takes `count` characters, fewer where the line or the input ends. Does not look beyond them, so
/// that a word may be the last thing in the input.
std::string TakeLetters(std::istream& in, std::size_t count) {
  std::string letters;
  while (letters.size() < count) {
    const auto next = in.peek();
    if (next == std::istream::traits_type::eof() || next == '\n') break;
    letters += static_cast<char>(in.get());
  }
  return letters;
}

long WordValue(int word, long) {
  switch (word) {
    case kMinWord:
    case kIntMinWord:
      return ZULTavSingleInteger::sNC_INT_MIN;
    case kMaxWord:
    case kIntMaxWord:
      return ZULTavSingleInteger::sNC_INT_MAX;
    case kAnyWord:
      return ZULTavSingleInteger::sNC_INT_ANY;
    default:
      return ZULTavSingleInteger::sNC_INT_NIL;
  }
}

double WordValue(int word, double) {
  switch (word) {
    case kMinWord:
      return ZULTavSingleReal::sNC_REAL_MIN;
    case kMaxWord:
      return ZULTavSingleReal::sNC_REAL_MAX;
    case kIntMinWord:
    case kIntMaxWord:
      return static_cast<double>(WordValue(word, 0L));
    case kAnyWord:
      return ZULTavSingleReal::sNC_REAL_ANY;
    default:
      return ZULTavSingleReal::sNC_REAL_NIL;
  }
}

// Numbers --------------------------------------------------------------------------------------

/// The stream's own extraction, with '.' as the decimal point and no grouping of digits.
template <class T>
bool ExtractClassic(std::istream& in, T& value) {
  const std::locale own = in.getloc();
  const bool isClassic = own == std::locale::classic();
  if (!isClassic) in.imbue(std::locale::classic());
  in >> value;
  if (!isClassic) in.imbue(own);
  if (in.fail()) value = T{};
  return !in.fail();
}

/// By the C library, whose locale has another decimal point: the two change places in a copy of
/// the text, where the locale's own becomes the end of the number. False unless a finite decimal
/// number was found.
bool ExtractLocalized(std::istream& in, double& value) {
  constexpr std::size_t kLongest = 48;
  char text[kLongest + 1] = {};
  const std::istream::pos_type start = in.tellg();
  in.get(text, sizeof(text));
  char* const point = std::strchr(text, '.');
  char* const comma = std::strchr(text, GetDot());
  if (point != nullptr) *point = GetDot();
  if (comma != nullptr) *comma = ' ';

  char* end = nullptr;
  value = std::strtod(text, &end);
  if (*end != '\0' && !in.fail()) in.clear();
  in.seekg(start + static_cast<std::streamoff>(end - text));
  const std::string_view number(text, static_cast<std::size_t>(end - text));
  return !in.fail() && !number.empty() && std::isfinite(value) &&
         number.find_first_of("xX") == std::string_view::npos;
}

bool Extract(std::istream& in, double& value) {
  return GetDot() == '.' ? ExtractClassic(in, value) : ExtractLocalized(in, value);
}

bool Extract(std::istream& in, long& value) {
  return ExtractClassic(in, value) && value <= ZULTavSingleInteger::sNC_INT_ANY &&
         value >= ZULTavSingleInteger::sNC_INT_NIL;
}

/// The value of what CheckNumString found, which is read first if it is a number.
template <class T>
T ReadValue(std::istream& in, int code) {
  T value{};
  switch (code) {
    case kNumberText:
      if (Extract(in, value)) return value;
      break;
    case kUnknownText:
    case kOpeningBracket:
    case kOpeningBrace:
      break;
    default:
      return WordValue(code, value);
  }
  Fail(in);
  return WordValue(kNilWord, value);
}

// Intervals ------------------------------------------------------------------------------------

void TakeMark(std::istream& in, char mark) {
  in >> std::ws;
  if (in.get() != mark) Fail(in);
}

/// A number or a word for one; Any and Nil are none.
template <class T>
T ReadBound(std::istream& in) {
  const int code = CheckNumString(in);
  return ReadValue<T>(in, code == kAnyWord || code == kNilWord ? kUnknownText : code);
}

template <class T>
struct Bounds {
  T lower, upper;
};

/// An interval in brackets, or a number or word, which is one point, the full range or nothing.
/// Nothing as well, with the stream's fail state set, for any other text. A number beyond the
/// limits is the limit, which stands for all that lies beyond.
template <class T>
Bounds<T> ReadBounds(std::istream& in) {
  const T min = WordValue(kMinWord, T{});
  const T max = WordValue(kMaxWord, T{});
  const int code = CheckNumString(in);
  if (code != kOpeningBracket) {
    const T value = ReadValue<T>(in, code);
    if (value == WordValue(kAnyWord, T{})) return {min, max};
    if (value == WordValue(kNilWord, T{})) return {max, min};
    return {std::clamp(value, min, max), std::clamp(value, min, max)};
  }
  const T lower = std::clamp(ReadBound<T>(in), min, max);
  TakeMark(in, ',');
  const T upper = std::clamp(ReadBound<T>(in), min, max);
  TakeMark(in, ']');
  if (in.fail() || lower > upper) return {max, min};
  return {lower, upper};
}

}  // namespace

namespace zultav::detail {

int CheckNumString(std::istream& in) {
  in >> std::ws;
  switch (in.peek()) {
    case '[':
      in.get();
      return kOpeningBracket;
    case '{':
      in.get();
      return kOpeningBrace;
    case 'M':
    case 'A':
    case 'N':
    case 'i':
      break;
    default:
      return kNumberText;
  }
  std::string word = TakeLetters(in, 3);
  const bool isOfIntegers = word == "int";
  if (isOfIntegers) word = TakeLetters(in, 3);
  if (word == "Min") return isOfIntegers ? kIntMinWord : kMinWord;
  if (word == "Max") return isOfIntegers ? kIntMaxWord : kMaxWord;
  if (word == "Any" && !isOfIntegers) return kAnyWord;
  if (word == "Nil" && !isOfIntegers) return kNilWord;
  return kUnknownText;
}

int CheckBoolString(std::istream& in) {
  in >> std::ws;
  switch (in.peek()) {
    case '[':
      in.get();
      return kOpeningBracket;
    case 'T':
    case 'F':
    case 'A':
    case 'N':
      break;
    default:
      return kUnknownText;
  }
  const std::string word = TakeLetters(in, 3);
  if (word == "Tru" && TakeLetters(in, 1) == "e") return kTrueWord;
  if (word == "Fal" && TakeLetters(in, 2) == "se") return kFalseWord;
  if (word == "Any") return kAnyWord;
  if (word == "Nil") return kNilWord;
  return kUnknownText;
}

double GetSRValue(std::istream& in) { return ReadValue<double>(in, CheckNumString(in)); }

long GetSIValue(std::istream& in) { return ReadValue<long>(in, CheckNumString(in)); }

}  // namespace zultav::detail

double ZULTavSingleReal::InputReal(std::istream& in) {
  double value = 0;
  Extract(in, value);
  return value;
}

void ZULTavSingleInteger::InputValue(std::istream& in) { Put(GetSIValue(in)); }

void ZULTavSingleReal::InputValue(std::istream& in) {
  in.setf(kInputFlag);
  mValue = GetSRValue(in);
  CheckValue();
}

void ZULTavSingleBoolean::InputValue(std::istream& in) {
  switch (CheckBoolString(in)) {
    case kTrueWord:
      mSet = SubdefBool::kTrue;
      break;
    case kFalseWord:
      mSet = SubdefBool::kFalse;
      break;
    case kAnyWord:
      mSet = SubdefBool::kAny;
      break;
    case kNilWord:
      mSet = SubdefBool::kNil;
      break;
    default:
      Fail(in);
      mSet = SubdefBool::kNil;
  }
}

void ZULTavIntervalInteger::InputValue(std::istream& in) {
  const Bounds<long> bounds = ReadBounds<long>(in);
  mSet = SubdefInt(bounds.lower, bounds.upper);
  CheckValue();
}

void ZULTavIntervalReal::InputValue(std::istream& in) {
  in.setf(kInputFlag);
  const Bounds<double> bounds = ReadBounds<double>(in);
  mSet = SubdefReal(bounds.lower, bounds.upper);
  CheckValue();
}
