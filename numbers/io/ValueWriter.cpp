// The printed form of values.

#include <algorithm>
#include <cmath>
#include <ostream>
#include <string>

#include "framework/base/ZULostrstream.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "numbers/io/detail/DecimalPoint.h"

using namespace zultav::detail;

namespace {

/// Significant digits of a number below 1 that are meaningful at this precision.
int DigitsOf(double precision) {
  constexpr double kLog10OfE = 0.4342944819032518;
  return std::max(1, static_cast<int>(std::log(1 / precision) * kLog10OfE + 1.0));
}

/// No more digits than are meaningful: from 1 up the digits before the point count too, and from
/// 1/p up the exponent tells the magnitude.
std::string Format(double value, double precision) {
  ZULostrstream text;
  const double magnitude = std::fabs(value);
  int digits = DigitsOf(precision);
  if (magnitude >= 1 / precision && magnitude > 1.0) {
    text.setf(std::ios::scientific, std::ios::floatfield);
  } else if (magnitude > 1.0) {
    digits = static_cast<int>(digits + std::log10(magnitude));
  }
  text.precision(digits);
  text << value;
  return text.Str();
}

/// Without a '+' and without leading zeros.
void ShortenExponent(std::string& text) {
  const std::size_t e = text.find('e');
  if (e == std::string::npos) return;
  std::size_t at = e + 1;
  if (at < text.size() && text[at] == '+') text.erase(at, 1);
  if (at < text.size() && text[at] == '-') ++at;
  text.erase(at, std::min(text.find_first_not_of('0', at), text.size()) - at);
}

void PrintInteger(std::ostream& out, long value) {
  if (value >= ZULTavSingleInteger::sNC_INT_MAX) {
    out << " Max";
  } else if (value <= ZULTavSingleInteger::sNC_INT_MIN) {
    out << " Min";
  } else {
    out << value;
  }
}

/// The words of the two states that every domain has; false when the domain is in neither.
bool PrintState(std::ostream& out, const ZULTaVoAny& domain) {
  const char* word = domain.IsNil() ? "Nil" : domain.IsAny() ? "Any" : nullptr;
  if (word != nullptr) out << word;
  return word != nullptr;
}

}  // namespace

void ZULTavSingleReal::PrintReal(std::ostream& out, double value, double precision) {
  if (value >= sNC_REAL_MAX) {
    out << " Max";
  } else if (value <= sNC_REAL_MIN) {
    out << " Min";
  } else if (value == static_cast<double>(ZULTavSingleInteger::sNC_INT_MAX)) {
    out << "intMax";
  } else if (value == static_cast<double>(ZULTavSingleInteger::sNC_INT_MIN)) {
    out << "intMin";
  } else if (-0.5 * precision <= value && value <= 0.5 * precision) {
    out << "0.0";
  } else {
    std::string text = Format(value, precision);
    if (const std::size_t dot = text.find(GetDot()); dot != std::string::npos) text[dot] = '.';
    ShortenExponent(text);
    if (text == "-0") text = "0";
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    out << text;
  }
}

void ZULTavSingleInteger::PrintOn(std::ostream& out) const {
  if (!PrintState(out, *this)) PrintInteger(out, GetValue());
}

void ZULTavSingleBoolean::PrintOn(std::ostream& out) const {
  switch (mSet.code) {
    case SubdefBool::kFalse:
      out << "False";
      break;
    case SubdefBool::kTrue:
      out << "True";
      break;
    case SubdefBool::kAny:
      out << "Any";
      break;
    case SubdefBool::kNil:
      out << "Nil";
      break;
    default:
      out << "Incorrect value";
  }
}

void ZULTavSingleReal::PrintOn(std::ostream& out) const {
  if (!PrintState(out, *this)) PrintReal(out, mValue, GetPrecision());
}

void ZULTavIntervalInteger::PrintOn(std::ostream& out) const {
  if (PrintState(out, *this)) return;
  out << '[';
  PrintInteger(out, mSet.lower);
  out << ',';
  PrintInteger(out, mSet.upper);
  out << ']';
}

void ZULTavIntervalReal::PrintOn(std::ostream& out) const {
  if (PrintState(out, *this)) return;
  const double precision = GetPrecision();
  if (mSet.IsScalar()) return ZULTavSingleReal::PrintReal(out, mSet.lower, precision);
  out << '[';
  ZULTavSingleReal::PrintReal(out, mSet.lower, precision);
  out << ',';
  ZULTavSingleReal::PrintReal(out, mSet.upper, precision);
  out << ']';
}
