#include "framework/intervals/detail/FixedPoint.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace zultav::detail {
inline namespace ZULTAV_LEVEL {

namespace {

using Limb = FixedPoint::Limb;
using Limbs = FixedPoint::Limbs;
using Wide = FixedPoint::Wide;
using Words = std::array<std::uint32_t, 10>;

constexpr FixedPoint kOne(Words{0, 0, 0, 0, 0, 0, 0, 0, 1, 0});
constexpr FixedPoint kHalfPi(Words{0x76273644, 0x04177d4c, 0x14cf98e8, 0x52049c11, 0x01b839a2,
                                   0x898cc517, 0x42d18469, 0x921fb544, 1, 0});
constexpr FixedPoint kTwoOverPi(Words{0xdebbc561, 0xfe5163ab, 0x3c439041, 0xdb629599, 0xf534ddc0,
                                      0xfc2757d1, 0x4e441529, 0xa2f9836e, 0, 0});
constexpr FixedPoint kLogOfTwo(Words{0x8baafa2b, 0x8a0d175b, 0x7298b62d, 0x40f34326, 0x03f2f6af,
                                     0xc9e3b398, 0xd1cf79ab, 0xb17217f7, 0, 0});

constexpr Limb Low(Wide x) { return static_cast<Limb>(x); }

bool IsLess(const Limbs& x, const Limbs& y) {
  return std::lexicographical_compare(x.rbegin(), x.rend(), y.rbegin(), y.rend());
}

Limbs Add(const Limbs& x, const Limbs& y) {
  Limbs sum;
  Wide carry = 0;
  for (std::size_t i = 0; i < sum.size(); ++i) {
    carry += Wide{x[i]} + y[i];
    sum[i] = Low(carry);
    carry >>= FixedPoint::kLimbBits;
  }
  return sum;
}

/// x - y for x >= y.
Limbs Subtract(const Limbs& x, const Limbs& y) {
  Limbs difference;
  Wide borrow = 0;
  for (std::size_t i = 0; i < difference.size(); ++i) {
    const Wide d = Wide{x[i]} - y[i] - borrow;
    difference[i] = Low(d);
    borrow = d >> (2 * FixedPoint::kLimbBits - 1);
  }
  return difference;
}

/// The Taylor series in x^2 whose terms grow by -x^2 / (n (n+1)), n = first, first + 2, ...
FixedPoint AlternatingSeries(const FixedPoint& x, std::uint32_t first) {
  const FixedPoint square = x * x;
  FixedPoint sum = kOne;
  for (std::uint32_t n = first + 54; n + 1 > first; n -= 2)
    sum = kOne - square * sum / (n * (n + 1));
  return sum;
}

/// sin(x pi/2) for 0 <= x <= 1.
FixedPoint SinOfQuadrant(const FixedPoint& x) {
  const FixedPoint rest = kOne - x;
  if ((x - rest).IsNegative()) {
    const FixedPoint angle = TimesHalfPi(x);
    return angle * AlternatingSeries(angle, 2);
  }
  return AlternatingSeries(TimesHalfPi(rest), 1);
}

}  // namespace

FixedPoint::FixedPoint(double x) : mNegative(x < 0) {
  Words words;
  double rest = std::fabs(x) * 0x1p-64;
  for (auto word = words.rbegin(); word != words.rend(); ++word) {
    rest *= 0x1p32;
    *word = static_cast<std::uint32_t>(rest);
    rest -= *word;
  }
  mMagnitude = FixedPoint(words).mMagnitude;
}

FixedPoint FixedPoint::operator+(const FixedPoint& y) const {
  if (mNegative == y.mNegative) return FixedPoint(Add(mMagnitude, y.mMagnitude), mNegative);
  if (IsLess(mMagnitude, y.mMagnitude))
    return FixedPoint(Subtract(y.mMagnitude, mMagnitude), y.mNegative);
  return FixedPoint(Subtract(mMagnitude, y.mMagnitude), mNegative);
}

FixedPoint FixedPoint::operator*(const FixedPoint& y) const {
  constexpr std::size_t kSize = std::tuple_size_v<Limbs>;
  std::array<Limb, 2 * kSize> product{};
  for (std::size_t i = 0; i < kSize; ++i) {
    Wide carry = 0;
    for (std::size_t j = 0; j < kSize; ++j) {
      carry += Wide{mMagnitude[i]} * y.mMagnitude[j] + product[i + j];
      product[i + j] = Low(carry);
      carry >>= kLimbBits;
    }
    product[i + kSize] = Low(carry);
  }
  FixedPoint result;
  std::copy_n(product.begin() + kFractionLimbs, kSize, result.mMagnitude.begin());
  result.mNegative = mNegative != y.mNegative;
  return result;
}

FixedPoint FixedPoint::operator*(std::uint32_t y) const {
  FixedPoint result = *this;
  Wide carry = 0;
  for (Limb& limb : result.mMagnitude) {
    carry += Wide{limb} * y;
    limb = Low(carry);
    carry >>= kLimbBits;
  }
  return result;
}

FixedPoint FixedPoint::operator/(std::uint32_t y) const {
  FixedPoint result = *this;
  std::uint64_t rest = 0;  // half a limb at a time, which needs no division of a wide number
  for (auto limb = result.mMagnitude.rbegin(); limb != result.mMagnitude.rend(); ++limb) {
    Limb quotient = 0;
    for (int shift = kLimbBits - 32; shift >= 0; shift -= 32) {
      rest = rest << 32 | static_cast<std::uint32_t>(*limb >> shift);
      quotient |= Low(Wide{rest / y} << shift);
      rest %= y;
    }
    *limb = quotient;
  }
  return result;
}

FixedPoint FixedPoint::Fraction() const {
  FixedPoint result = *this;
  std::fill(result.mMagnitude.begin() + kFractionLimbs, result.mMagnitude.end(), 0);
  return result;
}

int FixedPoint::Sign(int exponent) const {
  const double value = ToDoubleDouble().hi;
  if (std::fabs(value) < std::ldexp(1, exponent)) return 0;
  return value < 0 ? -1 : 1;
}

DoubleDouble FixedPoint::ToDoubleDouble() const {
  DoubleDouble sum{0, 0};
  double unit = 0x1p32;
  for (auto limb = mMagnitude.rbegin(); limb != mMagnitude.rend(); ++limb) {
    for (int shift = kLimbBits - 32; shift >= 0; shift -= 32) {
      const DoubleDouble head =
          FastTwoSum(sum.hi, static_cast<std::uint32_t>(*limb >> shift) * unit);
      sum = FastTwoSum(head.hi, head.lo + sum.lo);
      unit *= 0x1p-32;
    }
  }
  return mNegative ? -sum : sum;
}

FixedPoint ExpOfFraction(const FixedPoint& x) {
  FixedPoint sum = kOne;
  for (std::uint32_t n = 48; n > 0; --n) sum = kOne + x * sum / n;
  return sum;
}

FixedPoint LogOfTwo() { return kLogOfTwo; }

FixedPoint Quadrants::Sin() const {
  const FixedPoint magnitude = SinOfQuadrant(quadrant & 1 ? kOne - fraction : fraction);
  return quadrant & 2 ? -magnitude : magnitude;
}

Quadrants DivideByHalfPi(double x) {
  const FixedPoint quotient = FixedPoint(std::fabs(x)) * kTwoOverPi;
  const auto whole = static_cast<std::int64_t>(quotient.Whole());
  if (x >= 0) return {whole, quotient.Fraction()};
  return {-whole - 1, kOne - quotient.Fraction()};
}

FixedPoint TimesHalfPi(const FixedPoint& x) { return x * kHalfPi; }

}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail
