#ifndef ZULTAV_INTERVALS_SUB_INT_BASE_H
#define ZULTAV_INTERVALS_SUB_INT_BASE_H

#include <cstdint>
#include <limits>

#include "framework/intervals/Export.h"

/// One integer bound: 32 bits of storage behind an interface of `long`.
///
/// A value outside the 32-bit range saturates when it is stored, so that it is still seen as out
/// of range. The arithmetic is checked against SubdefInt::sMaxValue.
class ZULTAV_INTERVALS_API SubIntBase {
 public:
  constexpr SubIntBase() = default;
  constexpr SubIntBase(int value) : mValue(value) {}
  constexpr SubIntBase(long value) : mValue(Saturate(value)) {}
  constexpr SubIntBase& operator=(long value) { return mValue = Saturate(value), *this; }
  constexpr SubIntBase& operator=(int value) { return mValue = value, *this; }
  /// Truncates toward zero and saturates; NaN becomes 2147483647.
  constexpr SubIntBase& operator=(double value) {
    constexpr double kEnd = 2147483648.0;
    if (value > -kEnd && value < kEnd) {
      mValue = static_cast<std::int32_t>(value);
    } else {
      mValue = value <= -kEnd ? std::numeric_limits<std::int32_t>::min()
                              : std::numeric_limits<std::int32_t>::max();
    }
    return *this;
  }
  constexpr operator long() const { return mValue; }

  /// Sum, difference, product and truncated quotient, clamped to [-sMaxValue, sMaxValue]; a
  /// clamped result and a division by zero (which answers 0) raise the error flag. Operands
  /// beyond 32 bits count as the nearest 32-bit number.
  static long base_plus(long x, long y);
  static long base_minus(long x, long y);
  static long base_mult(long x, long y);
  static long base_div(long x, long y);

 private:
  static constexpr std::int32_t Saturate(long value) {
    if (value > std::numeric_limits<std::int32_t>::max())
      return std::numeric_limits<std::int32_t>::max();
    if (value < std::numeric_limits<std::int32_t>::min())
      return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
  }

  std::int32_t mValue = 0;
};

#endif
