#ifndef ZULTAV_CALCULATOR_DETAIL_SOURCE_H
#define ZULTAV_CALCULATOR_DETAIL_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/calculator/ZULTavDiagnostic.h"

namespace zultav::detail {

/// A piece of a source text, in bytes.
struct Span {
  std::uint32_t position = 0;
  std::uint32_t length = 0;

  std::uint32_t End() const { return position + length; }
};

/// Thrown while a statement is read and built; the reader reports it and goes on behind it.
struct ModelError {
  Span span;
  std::string message;
  std::vector<std::string> notes;
  const class Source* source = nullptr;  // where the span is; null: in the text that is read
};

[[noreturn]] inline void Fail(Span span, std::string message, std::vector<std::string> notes = {}) {
  throw ModelError{span, std::move(message), std::move(notes)};
}

/// A text with a name, which finds lines and columns.
class Source {
 public:
  /// @param order  of the texts that make up a model, in which they are read
  Source(std::string_view name, std::string_view text, std::uint32_t order = 0)
      : mName(name), mText(text), mOrder(order) {}

  const std::string& GetName() const { return mName; }
  std::uint32_t GetOrder() const { return mOrder; }
  std::string_view GetText() const { return mText; }
  std::string_view GetText(Span span) const { return mText.substr(span.position, span.length); }
  /// Line of a position, from 1.
  std::uint32_t GetLine(std::uint32_t position) const;
  /// "line 3" in messages about the text `from`, which name the text where it is another one.
  std::string NameLine(std::uint32_t line, const Source* from) const;
  ZULTavDiagnostic Describe(const ModelError& error) const;

 private:
  std::string mName;
  std::string_view mText;
  std::uint32_t mOrder;
  mutable std::vector<std::uint32_t> mLineStarts;  // filled when a line is first asked for
};

/// Collects errors up to a limit.
class ErrorList {
 public:
  ErrorList(std::vector<ZULTavDiagnostic>& errors, std::size_t limit)
      : mErrors(errors), mLimit(limit) {}

  void Add(const Source& source, const ModelError& error);
  bool IsEmpty() const { return mCount == 0; }
  /// Whether the limit is reached. Says so, once, among the errors.
  bool IsFull() const { return mCount >= mLimit; }

 private:
  std::vector<ZULTavDiagnostic>& mErrors;
  std::size_t mLimit;
  std::size_t mCount = 0;
};

}  // namespace zultav::detail

#endif
