#include "framework/calculator/ZULTavDiagnostic.h"

#include <algorithm>
#include <ostream>

namespace {

/// The line as a terminal can show it: no control characters but tabs.
std::string Printable(std::string_view text) {
  std::string result(text);
  for (char& byte : result)
    if ((static_cast<unsigned char>(byte) < 0x20 && byte != '\t') || byte == 0x7f) byte = '?';
  return result;
}

std::size_t CountCharacters(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](unsigned char byte) { return (byte & 0xc0) != 0x80; }));
}

}  // namespace

void ZULTavDiagnostic::Print(std::ostream& out) const {
  out << file;
  if (line > 0) out << ':' << line << ':' << column;
  out << (isWarning ? ": warning: " : ": error: ") << Printable(message) << '\n';
  if (line > 0) {
    const std::string_view shown = sourceLine;
    const std::size_t start = std::min(shown.size(), static_cast<std::size_t>(caret));
    out << "  " << Printable(shown) << "\n  ";
    for (char byte : shown.substr(0, start))
      if ((static_cast<unsigned char>(byte) & 0xc0) != 0x80) out << (byte == '\t' ? '\t' : ' ');
    const std::size_t covered =
        CountCharacters(shown.substr(start, static_cast<std::size_t>(length)));
    out << '^' << std::string(std::max<std::size_t>(covered, 1) - 1, '~') << '\n';
  }
  for (const std::string& note : notes) out << "  note: " << Printable(note) << '\n';
}
