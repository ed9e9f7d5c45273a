#ifndef ZULTAV_CALCULATOR_DETAIL_DECIMAL_H
#define ZULTAV_CALCULATOR_DETAIL_DECIMAL_H

#include <string_view>

namespace zultav::detail {

/// What doubles can say about a decimal number.
struct Decimal {
  double nearest;  ///< the double nearest to it
  /// The tightest doubles that enclose it: the number itself twice when a double holds it, else
  /// its two neighbours. Infinite beyond the range of double.
  double lower;
  double upper;
};

/// Reads digits with an optional fraction and exponent, without a sign. Decided exactly: the
/// decimal expansion of the nearest double is compared with the text digit by digit.
Decimal ReadDecimal(std::string_view text);

}  // namespace zultav::detail

#endif
