#ifndef ZULTAV_INTERVALS_DETAIL_FIXED_POINT_H
#define ZULTAV_INTERVALS_DETAIL_FIXED_POINT_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "framework/intervals/detail/DoubleDouble.h"
#include "framework/intervals/detail/Level.h"

namespace zultav::detail {
inline namespace ZULTAV_LEVEL {

/// A real number of magnitude below 2^64, truncated to a multiple of 2^-256.
///
/// Slow and precise: it settles the few roundings that double-double arithmetic leaves open.
class FixedPoint {
 public:
#ifdef __SIZEOF_INT128__
  using Limb = std::uint64_t;
  __extension__ using Wide = unsigned __int128;
#else
  using Limb = std::uint32_t;
  using Wide = std::uint64_t;
#endif
  static constexpr int kLimbBits = static_cast<int>(8 * sizeof(Limb));
  static constexpr std::size_t kFractionLimbs = 256 / kLimbBits;
  using Limbs = std::array<Limb, 320 / kLimbBits>;  // least significant first

  constexpr FixedPoint() = default;
  constexpr FixedPoint(const Limbs& magnitude, bool negative)
      : mMagnitude(magnitude), mNegative(negative) {}
  /// 32 bits each, least significant first.
  constexpr explicit FixedPoint(const std::array<std::uint32_t, 10>& words) {
    for (std::size_t i = 0; i < words.size(); ++i)
      mMagnitude[i * 32 / kLimbBits] |= Limb{words[i]} << (i * 32 % kLimbBits);
  }
  /// |x| < 2^64; bits below 2^-256 are dropped.
  explicit FixedPoint(double x);

  FixedPoint operator-() const { return FixedPoint(mMagnitude, !mNegative); }
  FixedPoint operator+(const FixedPoint& y) const;
  FixedPoint operator-(const FixedPoint& y) const { return *this + -y; }
  /// Truncated; the magnitude of the product must be below 2^64.
  FixedPoint operator*(const FixedPoint& y) const;
  FixedPoint operator*(std::uint32_t y) const;
  FixedPoint operator/(std::uint32_t y) const;

  /// The magnitude's whole part, and the number with only its fraction left.
  std::uint64_t Whole() const {
    std::uint64_t whole = 0;
    for (std::size_t i = mMagnitude.size(); i-- > kFractionLimbs;)
      whole = static_cast<std::uint64_t>(Wide{whole} << kLimbBits | mMagnitude[i]);
    return whole;
  }
  FixedPoint Fraction() const;
  bool IsNegative() const { return mNegative; }
  /// -1, 0 or 1; 0 also for a magnitude below 2^exponent.
  int Sign(int exponent) const;
  /// To about 100 bits.
  DoubleDouble ToDoubleDouble() const;

 private:
  Limbs mMagnitude{};
  bool mNegative = false;
};

// Each of the functions below errs by less than 2^-185.

/// exp(x) for |x| <= 0.35.
FixedPoint ExpOfFraction(const FixedPoint& x);
/// log(2).
FixedPoint LogOfTwo();

/// x = (quadrant + fraction) * pi/2 with 0 <= fraction < 1.
struct Quadrants {
  std::int64_t quadrant;
  FixedPoint fraction;

  FixedPoint Sin() const;
  FixedPoint Cos() const { return Quadrants{quadrant + 1, fraction}.Sin(); }
};
/// |x| < 1.4e19.
Quadrants DivideByHalfPi(double x);
/// x * pi/2.
FixedPoint TimesHalfPi(const FixedPoint& x);

}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
