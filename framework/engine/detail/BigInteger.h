#ifndef ZULTAV_ENGINE_DETAIL_BIG_INTEGER_H
#define ZULTAV_ENGINE_DETAIL_BIG_INTEGER_H

#include <compare>
#include <cstdint>
#include <vector>

#include "framework/engine/Export.h"

namespace zultav::engine {

/// An integer of any size. Throws std::bad_alloc when memory ran out.
class ZULTAV_ENGINE_API BigInteger {
 public:
  BigInteger(std::int64_t value = 0);

  int GetSign() const { return mMagnitude.empty() ? 0 : mNegative ? -1 : 1; }
  /// An upper bound on the bits of its magnitude, less than 32 above the truth.
  std::uint64_t GetBits() const { return 32 * std::uint64_t{mMagnitude.size()}; }
  bool IsOdd() const { return !mMagnitude.empty() && (mMagnitude[0] & 1) != 0; }

  BigInteger operator-() const;
  ZULTAV_ENGINE_API friend BigInteger operator+(const BigInteger& x, const BigInteger& y);
  friend BigInteger operator-(const BigInteger& x, const BigInteger& y) { return x + -y; }
  ZULTAV_ENGINE_API friend BigInteger operator*(const BigInteger& x, const BigInteger& y);
  /// x = quotient * y + remainder, the quotient truncated. y is not 0.
  static void Divide(const BigInteger& x, const BigInteger& y, BigInteger& quotient,
                     BigInteger& remainder);
  friend bool operator==(const BigInteger&, const BigInteger&) = default;
  ZULTAV_ENGINE_API friend std::strong_ordering operator<=>(const BigInteger& x,
                                                            const BigInteger& y);

 private:
  using Magnitude = std::vector<std::uint32_t>;  // least significant first, the last one not 0

  BigInteger(Magnitude magnitude, bool negative);
  static std::strong_ordering Compare(const Magnitude& x, const Magnitude& y);
  static void AddTo(Magnitude& x, const Magnitude& y);
  static void SubtractFrom(Magnitude& x, const Magnitude& y);

  Magnitude mMagnitude;
  bool mNegative = false;  // never of 0
};

}  // namespace zultav::engine

#endif
