#include "solve/ValueText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <ostream>
#include <string_view>

#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTavAbstractTypes.h"

namespace {

template <class T>
struct Bounds {
  T lower, upper;
};

template <class Number>
auto BoundsOf(const Number& value) {
  return Bounds<decltype(value.GetLowerBound())>{value.GetLowerBound(), value.GetUpperBound()};
}

/// What the type of a number can hold: a bound that lies there is an infinite side.
template <class Number>
struct Range {
  explicit Range(const Number& value) {
    const ZULTaVoObjectDescriptor* type = value.GetDescriptor();
    const std::size_t units = type->GetObjectSize() / sizeof(std::max_align_t) + 1;
    const auto memory = std::make_unique<std::max_align_t[]>(units);
    auto* any = static_cast<Number*>(static_cast<ZULTaVoAny*>(type->InitObject(memory.get())));
    any->SetAny();
    limits = BoundsOf<Number>(*any);
    isOfSingles = any->GetCardinality() == zultav::kSingleAny;
    type->DestroyObject(any);
  }
  template <class T>
  bool IsInfiniteBelow(T lower) const {
    return lower <= limits.lower;
  }
  template <class T>
  bool IsInfiniteAbove(T upper) const {
    return upper >= limits.upper;
  }

  decltype(BoundsOf(std::declval<const Number&>())) limits;
  bool isOfSingles;
};

template <class T>
std::string Shortest(T number) {
  char text[64];
  // Adding zero takes the sign off a zero.
  return {text, std::to_chars(text, text + sizeof text, number + T{}).ptr};
}

/// A number that its reader takes for a real.
std::string AsReal(const std::string& text) {
  return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

// --- Decimals ---------------------------------------------------------------------------------

enum class Rounding { kDown, kUp, kNearest };

/// D.DDD times ten to the exponent, without the point; at least one digit.
struct Decimal {
  std::string digits;
  int exponent = 0;
};

/// The number, not negative, to the nearest of so many digits.
Decimal Nearest(double number, int digits) {
  char text[800];
  const char* end =
      std::to_chars(text, text + sizeof text, number, std::chars_format::scientific, digits - 1)
          .ptr;
  const char* exponent = std::find(static_cast<const char*>(text), end, 'e') + 1;
  Decimal result;
  std::copy_if(static_cast<const char*>(text), exponent - 1, std::back_inserter(result.digits),
               [](char c) { return c != '.'; });
  if (*exponent == '+') ++exponent;
  std::from_chars(exponent, end, result.exponent);
  return result;
}

/// Cuts a number down to so many digits, and goes on to the next such number where asked for and
/// where something was cut off.
void Cut(Decimal& number, std::size_t count, bool upward) {
  const bool exact = number.digits.find_first_not_of('0', count) == std::string::npos;
  number.digits.resize(count);
  if (exact || !upward) return;
  const std::size_t last = number.digits.find_last_not_of('9');
  if (last == std::string::npos) {
    number.digits.assign(count, '0').front() = '1';
    ++number.exponent;
  } else {
    ++number.digits[last];
    std::fill(number.digits.begin() + static_cast<std::ptrdiff_t>(last) + 1, number.digits.end(),
              '0');
  }
}

/// Without zeros at the end; with an exponent where the number would become long.
std::string Layout(const Decimal& number) {
  constexpr int kLeast = -5, kGreatest = 15;
  const int exponent = number.exponent;
  std::string digits = number.digits.substr(0, number.digits.find_last_not_of('0') + 1);
  if (exponent < kLeast || exponent >= kGreatest) {
    if (digits.size() > 1) digits.insert(1, ".");
    return digits + 'e' + std::to_string(exponent);
  }
  if (exponent < 0)
    return "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
  const auto whole = static_cast<std::size_t>(exponent) + 1;
  if (digits.size() <= whole) return digits + std::string(whole - digits.size(), '0') + ".0";
  return digits.insert(whole, ".");
}

/// With as many digits as the precision has decimal places and one more, counted from the decimal
/// point on or, of a lesser number, from its first digit; never more than tell all doubles apart.
std::string DecimalText(double number, double precision, Rounding rounding) {
  constexpr int kExact = 767;  // digits of the longest expansion of a double
  constexpr int kMost = std::numeric_limits<double>::max_digits10;
  constexpr double kTiny = 1e-9;  // so that 1e-6 has six places, whatever its double
  if (number == 0) return "0.0";
  const double magnitude = std::fabs(number);
  Decimal decimal = Nearest(magnitude, kExact);
  const double places = std::ceil(-std::log10(precision) - kTiny);
  const int count =
      static_cast<int>(std::clamp(places, 0.0, double{kMost})) + 1 + std::max(decimal.exponent, 0);
  if (rounding == Rounding::kNearest) {
    decimal = Nearest(magnitude, std::min(count, kMost));
  } else {
    Cut(decimal, static_cast<std::size_t>(std::min(count, kMost)),
        (rounding == Rounding::kUp) == (number > 0));
  }
  return (number < 0 ? "-" : "") + Layout(decimal);
}

// --- Values -----------------------------------------------------------------------------------

void PrintBounds(std::ostream& out, const std::string& low, const std::string& high) {
  if (low == high)
    out << low;
  else
    out << '[' << low << ',' << high << ']';
}

/// What a bound of a real looks like when it is rounded in a direction.
std::string BoundText(double bound, Digits digits, Rounding rounding) {
  return digits == Digits::kFull ? AsReal(Shortest(bound))
                                 : DecimalText(bound, ZULTaVoReal::GetPrecision(), rounding);
}

/// Prints a real that is neither Any nor Nil; `text` is what a bound looks like when it is rounded
/// in a direction.
template <class Text>
void PrintReal(std::ostream& out, const ZULTaVoReal& real, Text text) {
  const Range<ZULTaVoReal> range(real);
  const auto [lower, upper] = BoundsOf(real);
  const bool fromMin = range.IsInfiniteBelow(lower), toMax = range.IsInfiniteAbove(upper);
  if (range.isOfSingles) {
    out << (fromMin ? " Min" : toMax ? " Max" : text(lower, Rounding::kNearest));
    return;
  }
  PrintBounds(out, fromMin ? " Min" : text(lower, Rounding::kDown),
              toMax ? " Max" : text(upper, Rounding::kUp));
}

template <class Number>
std::string JsonNumber(const Number& value) {
  const Range<Number> range(value);
  const auto [lower, upper] = BoundsOf(value);
  const bool fromMin = range.IsInfiniteBelow(lower), toMax = range.IsInfiniteAbove(upper);
  if (lower == upper && !fromMin && !toMax) return Shortest(lower);
  return "{\"lo\": " + (fromMin ? "null" : Shortest(lower)) +
         ", \"hi\": " + (toMax ? "null" : Shortest(upper)) + "}";
}

}  // namespace

void PrintValue(std::ostream& out, const ZULTaVoAny& value, Digits digits) {
  const auto* real = ZULTaVoCast<const ZULTaVoReal>(&value);
  if (real == nullptr || value.IsNil() || value.IsAny()) {
    value.PrintOn(out);
  } else {
    PrintReal(out, *real, [digits](double bound, Rounding rounding) {
      return BoundText(bound, digits, rounding);
    });
  }
}

bool PrintInteger(std::ostream& out, const ZULTaVoAny& value, bool isInteger) {
  if (value.IsNil() || value.IsAny()) return false;
  if (const auto* integer = ZULTaVoCast<const ZULTaVoInteger>(&value)) {
    const auto [lower, upper] = BoundsOf(*integer);
    if (lower == upper) out << Shortest(lower);
    return lower == upper;
  }
  const auto* real = isInteger ? ZULTaVoCast<const ZULTaVoReal>(&value) : nullptr;
  if (real == nullptr) return false;
  constexpr double kTold = 0x1p53;
  const Range<ZULTaVoReal> range(*real);
  const auto [lower, upper] = BoundsOf(*real);
  const bool fromMin = range.IsInfiniteBelow(lower), toMax = range.IsInfiniteAbove(upper);
  if ((!fromMin && std::fabs(lower) > kTold) || (!toMax && std::fabs(upper) > kTold)) return false;
  const auto text = [](double bound) { return Shortest(static_cast<std::int64_t>(bound)); };
  if (lower == upper)
    out << text(lower);
  else
    out << '[' << (fromMin ? " Min" : text(std::ceil(lower))) << ','
        << (toMax ? " Max" : text(std::floor(upper))) << ']';
  return true;
}

std::string JsonValue(const ZULTaVoAny& value) {
  if (value.IsNil()) return "\"Nil\"";
  if (const auto* boolean = ZULTaVoCast<const ZULTaVoBoolean>(&value))
    return boolean->IsTrue() ? "true" : boolean->IsFalse() ? "false" : "\"Any\"";
  if (value.IsAny() && value.GetCardinality() == zultav::kSingleAny) return "\"Any\"";
  if (const auto* integer = ZULTaVoCast<const ZULTaVoInteger>(&value)) return JsonNumber(*integer);
  if (const auto* real = ZULTaVoCast<const ZULTaVoReal>(&value)) return JsonNumber(*real);
  return "\"Any\"";
}

// --- Values without a type --------------------------------------------------------------------

namespace {

/// Calls use(lower, upper, whether there is a lower, an upper bound).
template <class Use>
auto WithBounds(const ZULTavObserved& value, Use use) {
  if (value.kind == ZULTavObserved::Kind::kReal) {
    const auto [lower, upper] = value.reals;
    return use(lower, upper, std::isfinite(lower), std::isfinite(upper));
  }
  const auto [lower, upper] = value.integers;
  return use(lower, upper, lower != zultav::IntegerRange::kMin,
             upper != zultav::IntegerRange::kMax);
}

}  // namespace

void PrintObserved(std::ostream& out, const ZULTavObserved& value, Digits digits) {
  const auto text = [digits]<class T>(T bound, Rounding rounding) {
    if constexpr (std::is_same_v<T, double>)
      return BoundText(bound, digits, rounding);
    else
      return std::to_string(bound);
  };
  WithBounds(value, [&](auto lower, auto upper, bool hasLower, bool hasUpper) {
    PrintBounds(out, hasLower ? text(lower, Rounding::kDown) : " Min",
                hasUpper ? text(upper, Rounding::kUp) : " Max");
  });
}

std::string JsonObserved(const ZULTavObserved& value) {
  return WithBounds(value, [&](auto lower, auto upper, bool hasLower, bool hasUpper) {
    return hasLower && hasUpper && lower == upper ? Shortest(lower) : JsonBounds(value);
  });
}

std::string JsonBounds(const ZULTavObserved& value) {
  return WithBounds(value, [](auto lower, auto upper, bool hasLower, bool hasUpper) {
    return "{\"lo\": " + (hasLower ? Shortest(lower) : "null") +
           ", \"hi\": " + (hasUpper ? Shortest(upper) : "null") + "}";
  });
}
