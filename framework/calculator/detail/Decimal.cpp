#include "framework/calculator/detail/Decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <compare>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace zultav::detail {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr long kHugeExponent = 1'000'000'000;  // beyond any that matters, far from overflow

/// 0.DIGITS times ten to the exponent; no digits for zero. The first and the last digit are not 0.
struct Digits {
  std::string digits;
  long exponent = 0;

  auto operator<=>(const Digits& other) const {
    if (digits.empty() || other.digits.empty()) return !digits.empty() <=> !other.digits.empty();
    if (exponent != other.exponent) return exponent <=> other.exponent;
    return digits <=> other.digits;
  }
};

Digits Normalise(std::string_view text) {
  Digits result;
  const std::size_t e = std::min(text.find_first_of("eE"), text.size());
  long exponent = 0;
  if (e < text.size()) {
    std::string_view number = text.substr(e + 1);
    const bool negative = number[0] == '-';
    if (negative || number[0] == '+') number.remove_prefix(1);
    if (std::from_chars(number.data(), number.data() + number.size(), exponent).ec != std::errc())
      exponent = kHugeExponent;
    exponent = std::min(exponent, kHugeExponent) * (negative ? -1 : 1);
  }
  for (std::size_t i = 0, fraction = 0; i < e; ++i) {
    if (text[i] == '.') {
      fraction = 1;
      continue;
    }
    if (fraction == 0) ++exponent;
    result.digits += text[i];
  }
  const std::size_t leading = std::min(result.digits.find_first_not_of('0'), result.digits.size());
  result.digits.erase(0, leading);
  result.digits.erase(result.digits.find_last_not_of('0') + 1);
  result.exponent = exponent - static_cast<long>(leading);
  return result;
}

/// The exact decimal expansion of a finite double that is not negative.
Digits Expand(double value) {
  // Digits enough for the longest expansion, that of the subnormal numbers next to 2^-1022.
  std::array<char, 800> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                 std::chars_format::scientific, 766);
  return Normalise({buffer.data(), static_cast<std::size_t>(end.ptr - buffer.data())});
}

/// How the digits compare with the double next to them, where both become integers of 128 bits, as
/// those of most decimals do; nothing for others.
std::optional<std::strong_ordering> CompareShort(const Digits& exact, double value) {
  __extension__ using Wide = unsigned __int128;
  constexpr long kMostDigits = 18;
  constexpr long kMostDecimals = 22;
  constexpr int kMantissa = std::numeric_limits<double>::digits;
  const auto count = static_cast<long>(exact.digits.size());
  long decimals = count - exact.exponent;
  if (count == 0 || count > kMostDigits || exact.exponent > kMostDigits || decimals > kMostDecimals)
    return {};
  Wide digits = 0;
  for (const char digit : exact.digits) digits = digits * 10 + static_cast<unsigned>(digit - '0');
  for (; decimals < 0; ++decimals) digits *= 10;
  int exponent = 0;
  const double fraction = std::frexp(value, &exponent);
  exponent -= kMantissa;
  Wide mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, kMantissa));
  for (; decimals > 0; --decimals) mantissa *= 10;
  // Beside each other both are below 2^53 10^22.
  exponent < 0 ? digits <<= -exponent : mantissa <<= exponent;
  return digits <=> mantissa;
}

}  // namespace

Decimal ReadDecimal(std::string_view text) {
  const Digits exact = Normalise(text);
  double nearest = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), nearest);
  if (error == std::errc::result_out_of_range) {
    const bool huge = exact.exponent > 0;
    constexpr double kMax = std::numeric_limits<double>::max();
    return huge ? Decimal{kInfinity, kMax, kInfinity}
                : Decimal{0, 0, std::numeric_limits<double>::denorm_min()};
  }
  if (std::isinf(nearest)) return {nearest, std::numeric_limits<double>::max(), nearest};
  const auto quick = CompareShort(exact, nearest);
  const auto order = quick ? *quick : exact <=> Expand(nearest);
  return {nearest, order < 0 ? std::nextafter(nearest, -kInfinity) : nearest,
          order > 0 ? std::nextafter(nearest, kInfinity) : nearest};
}

}  // namespace zultav::detail
