#include "framework/calculator/detail/DataReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zultav::detail {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kDigits = "0123456789";

}  // namespace

/// The next character that is no blank; a zero byte at the end.
char DataReader::Next() {
  mPosition = static_cast<std::uint32_t>(
      std::min(mText.find_first_not_of(kBlanks, mPosition), mText.size()));
  return mPosition < mText.size() ? mText[mPosition] : '\0';
}

bool DataReader::Accept(char sign) {
  if (Next() != sign) return false;
  ++mPosition;
  return true;
}

void DataReader::Expect(char sign, const char* where) {
  if (!Accept(sign)) Fail(Here(), std::string("expected '") + sign + "' " + where);
}

std::vector<DataMember> DataReader::Read() {
  std::vector<DataMember> members;
  Expect('{', "and names with values, as in {\"n\": 8}");
  if (!Accept('}')) {
    do {
      if (Next() != '"') Fail(Here(), "expected a name between quotation marks");
      const std::uint32_t begin = mPosition;
      std::string name = ReadString();
      const Span span = From(begin);
      Expect(':', "after the name");
      members.push_back({std::move(name), span, ReadValue(0)});
    } while (Accept(','));
    Expect('}', "or ',' after the value");
  }
  if (Next() != '\0' || mPosition < mText.size()) Fail(Here(), "expected the end of the data");
  return members;
}

Value DataReader::ReadValue(std::size_t depth) {
  const char first = Next();
  if (first == '[') return ReadArray(depth);
  if (first == '-' || kDigits.find(first) != std::string_view::npos) return ReadNumber();
  if (first != '"') return ReadWord();
  const std::uint32_t begin = mPosition;
  Value value;
  value.kind = Value::Kind::kText;
  value.content = std::make_shared<const std::string>(ReadString());
  value.span = From(begin);
  return value;
}

Value DataReader::ReadArray(std::size_t depth) {
  if (depth >= mLimits.nesting)
    Fail(Here(), "arrays within arrays are deeper than the limit of " +
                     std::to_string(mLimits.nesting) + " levels");
  const std::uint32_t begin = mPosition++;
  List list;
  if (!Accept(']')) {
    do {
      if (list.items.size() >= mLimits.arraySize)
        Fail(Here(),
             "an array of more values than the limit of " + std::to_string(mLimits.arraySize));
      list.items.push_back(ReadValue(depth + 1));
    } while (Accept(','));
    Expect(']', "or ',' after the value");
  }
  return Value::OfList(std::move(list), From(begin));
}

Value DataReader::ReadNumber() {
  const std::uint32_t begin = mPosition;
  const auto takeDigits = [&] {
    const std::uint32_t first = mPosition;
    while (mPosition < mText.size() && kDigits.find(mText[mPosition]) != std::string_view::npos)
      ++mPosition;
    if (mPosition == first) Fail(Here(), "expected a digit");
  };
  const auto takeOneOf = [&](std::string_view signs) {
    const bool found =
        mPosition < mText.size() && signs.find(mText[mPosition]) != std::string_view::npos;
    mPosition += found ? 1 : 0;
    return found;
  };
  const bool isNegative = takeOneOf("-");
  bool isDecimal = false;
  takeDigits();
  if (takeOneOf(".")) {
    isDecimal = true;
    takeDigits();
  }
  if (takeOneOf("eE")) {
    isDecimal = true;
    takeOneOf("+-");
    takeDigits();
  }
  const Span span = From(begin);
  const std::string_view text = mText.substr(begin, span.length);
  if (text.size() > mLimits.numberLength)
    Fail({begin, 1}, "a number of " + std::to_string(text.size()) +
                         " bytes is longer than the limit of " +
                         std::to_string(mLimits.numberLength));
  if (!isDecimal) {
    const auto integer = Constant::FromDigits(text);
    if (!integer) Fail(span, "this integer is beyond the limit of 64 bits");
    return Value::Of(*integer, span);
  }
  const Constant number = Constant::FromDecimal(text.substr(isNegative ? 1 : 0));
  if (!std::isfinite(number.upper)) Fail(span, "this number is too large");
  return Value::Of(isNegative ? *FoldConstants(Op::kSubtract, number, nullptr) : number, span);
}

Value DataReader::ReadWord() {
  const std::string_view rest = mText.substr(mPosition);
  for (const bool truth : {true, false}) {
    const std::string_view word = truth ? "true" : "false";
    if (rest.substr(0, word.size()) != word) continue;
    const Span span = {mPosition, static_cast<std::uint32_t>(word.size())};
    mPosition += span.length;
    return Value::Of(Constant::Boolean(truth), span);
  }
  Fail(Here(), "expected a number, true, false, a name between quotation marks, or an array");
}

/// What escapes stand for outside ASCII can be no part of a name, and is kept as it is written.
std::string DataReader::ReadString() {
  const std::uint32_t begin = mPosition++;
  std::string text;
  while (true) {
    const char c = mPosition < mText.size() ? mText[mPosition++] : '\n';
    if (static_cast<unsigned char>(c) < 0x20)
      Fail({begin, 1}, "this text has no end in its line; expected '\"'");
    if (c == '"') return text;
    text += c;
    if (c == '\\' && mPosition < mText.size()) text += mText[mPosition++];
    if (text.size() > mLimits.nameLength)
      Fail({begin, 1},
           "a name is longer than the limit of " + std::to_string(mLimits.nameLength) + " bytes");
  }
}

}  // namespace zultav::detail
