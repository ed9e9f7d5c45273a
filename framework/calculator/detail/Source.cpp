#include "framework/calculator/detail/Source.h"

#include <algorithm>

namespace zultav::detail {

namespace {

constexpr std::uint32_t kShownBytes = 160;  // of a very long line
constexpr std::uint32_t kShownBefore = 60;

bool ContinuesCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xc0) == 0x80; }

}  // namespace

std::uint32_t Source::GetLine(std::uint32_t position) const {
  if (mLineStarts.empty()) {
    mLineStarts.push_back(0);
    for (std::size_t at = mText.find('\n'); at != std::string_view::npos;
         at = mText.find('\n', at + 1))
      mLineStarts.push_back(static_cast<std::uint32_t>(at + 1));
  }
  const auto after = std::upper_bound(mLineStarts.begin(), mLineStarts.end(), position);
  return static_cast<std::uint32_t>(after - mLineStarts.begin());
}

std::string Source::NameLine(std::uint32_t line, const Source* from) const {
  return "line " + std::to_string(line) + (this == from ? "" : " of '" + mName + "'");
}

ZULTavDiagnostic Source::Describe(const ModelError& error) const {
  ZULTavDiagnostic result;
  result.message = error.message;
  result.notes = error.notes;
  result.file = mName;
  const std::uint32_t line = GetLine(error.span.position);
  const std::uint32_t start = mLineStarts[line - 1];
  const auto end = static_cast<std::uint32_t>(std::min(mText.find('\n', start), mText.size()));
  const std::string_view before = mText.substr(start, error.span.position - start);
  result.line = static_cast<int>(line);
  result.column = 1 + static_cast<int>(std::count_if(before.begin(), before.end(), [](char byte) {
                    return !ContinuesCharacter(byte);
                  }));

  std::uint32_t first = start;
  std::uint32_t last = end;
  if (end - start > kShownBytes) {
    first = std::max(start, error.span.position - std::min(error.span.position, kShownBefore));
    while (first < error.span.position && ContinuesCharacter(mText[first])) ++first;
    last = std::min(end, first + kShownBytes);
    while (last < end && ContinuesCharacter(mText[last])) ++last;
  }
  result.sourceLine = mText.substr(first, last - first);
  while (!result.sourceLine.empty() && result.sourceLine.back() == '\r')
    result.sourceLine.pop_back();
  result.caret = static_cast<int>(error.span.position - first);
  result.length = static_cast<int>(
      std::max(1u, std::min(error.span.End(), last) - std::min(error.span.position, last)));
  return result;
}

void ErrorList::Add(const Source& source, const ModelError& error) {
  if (IsFull()) return;
  mErrors.push_back((error.source != nullptr ? *error.source : source).Describe(error));
  if (++mCount == mLimit)
    mErrors.back().notes.push_back("reading stops here: the limit on errors is " +
                                   std::to_string(mLimit));
}

}  // namespace zultav::detail
