#ifndef ZULTAV_CALCULATOR_ZULTAV_DIAGNOSTIC_H
#define ZULTAV_CALCULATOR_ZULTAV_DIAGNOSTIC_H

#include <iosfwd>
#include <string>
#include <vector>

#include "framework/calculator/Export.h"

/// One error in a model text, or something that is probably not meant: what is wrong, where, and
/// what may help.
struct ZULTAV_CALCULATOR_API ZULTavDiagnostic {
  std::string message;
  std::string file;
  int line = 0;    ///< from 1; 0 when the error has no place in the text
  int column = 0;  ///< from 1, in characters (UTF-8 code points)
  /// The line, or of a very long line the part around the error.
  std::string sourceLine;
  int caret = 0;   ///< where in sourceLine the error begins, in bytes
  int length = 0;  ///< how many bytes of sourceLine it covers
  std::vector<std::string> notes;
  bool isWarning = false;

  /// Writes "file:line:column: error: message", or "warning:", the line with a caret below it, and
  /// the notes.
  void Print(std::ostream& out) const;
};

#endif
