#include "framework/engine/detail/BigInteger.h"

#include <algorithm>
#include <utility>

namespace zultav::engine {

namespace {

constexpr int kLimbBits = 32;

std::uint32_t Low(std::uint64_t x) { return static_cast<std::uint32_t>(x); }

}  // namespace

BigInteger::BigInteger(std::int64_t value) : mNegative(value < 0) {
  auto rest = static_cast<std::uint64_t>(value);
  if (mNegative) rest = 0 - rest;
  for (; rest != 0; rest >>= kLimbBits) mMagnitude.push_back(Low(rest));
}

BigInteger::BigInteger(Magnitude magnitude, bool negative) : mMagnitude(std::move(magnitude)) {
  while (!mMagnitude.empty() && mMagnitude.back() == 0) mMagnitude.pop_back();
  mNegative = negative && !mMagnitude.empty();
}

BigInteger BigInteger::operator-() const { return {mMagnitude, !mNegative}; }

std::strong_ordering BigInteger::Compare(const Magnitude& x, const Magnitude& y) {
  if (x.size() != y.size()) return x.size() <=> y.size();
  return std::lexicographical_compare_three_way(x.rbegin(), x.rend(), y.rbegin(), y.rend());
}

std::strong_ordering operator<=>(const BigInteger& x, const BigInteger& y) {
  if (x.mNegative != y.mNegative) return x.GetSign() <=> y.GetSign();
  return x.mNegative ? BigInteger::Compare(y.mMagnitude, x.mMagnitude)
                     : BigInteger::Compare(x.mMagnitude, y.mMagnitude);
}

void BigInteger::AddTo(Magnitude& x, const Magnitude& y) {
  x.resize(std::max(x.size(), y.size()) + 1);
  std::uint64_t carry = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    carry += std::uint64_t{x[i]} + (i < y.size() ? y[i] : 0);
    x[i] = Low(carry);
    carry >>= kLimbBits;
  }
}

/// y is no larger.
void BigInteger::SubtractFrom(Magnitude& x, const Magnitude& y) {
  std::uint64_t borrow = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const std::uint64_t taken = borrow + (i < y.size() ? y[i] : 0);
    borrow = x[i] < taken ? 1 : 0;
    x[i] = Low(x[i] - taken);
  }
}

BigInteger operator+(const BigInteger& x, const BigInteger& y) {
  const bool larger = BigInteger::Compare(x.mMagnitude, y.mMagnitude) >= 0;
  const BigInteger &most = larger ? x : y, &least = larger ? y : x;
  BigInteger::Magnitude sum = most.mMagnitude;
  if (x.mNegative == y.mNegative)
    BigInteger::AddTo(sum, least.mMagnitude);
  else
    BigInteger::SubtractFrom(sum, least.mMagnitude);
  return {std::move(sum), most.mNegative};
}

BigInteger operator*(const BigInteger& x, const BigInteger& y) {
  BigInteger::Magnitude product(x.mMagnitude.size() + y.mMagnitude.size(), 0);
  for (std::size_t i = 0; i < x.mMagnitude.size(); ++i) {
    std::uint64_t carry = 0;
    for (std::size_t j = 0; j < y.mMagnitude.size(); ++j) {
      carry += std::uint64_t{x.mMagnitude[i]} * y.mMagnitude[j] + product[i + j];
      product[i + j] = Low(carry);
      carry >>= kLimbBits;
    }
    product[i + y.mMagnitude.size()] = Low(carry);
  }
  return {std::move(product), x.mNegative != y.mNegative};
}

/// Bit by bit: numbers are short, and divisions are rare.
void BigInteger::Divide(const BigInteger& x, const BigInteger& y, BigInteger& quotient,
                        BigInteger& remainder) {
  Magnitude bits(x.mMagnitude.size(), 0);
  BigInteger rest;
  const BigInteger divisor(y.mMagnitude, false);
  for (std::size_t i = x.mMagnitude.size(); i-- > 0;)
    for (int bit = kLimbBits; bit-- > 0;) {
      rest = rest + rest + BigInteger(x.mMagnitude[i] >> bit & 1);
      if (rest < divisor) continue;
      rest = rest - divisor;
      bits[i] |= std::uint32_t{1} << bit;
    }
  quotient = BigInteger(std::move(bits), x.mNegative != y.mNegative);
  remainder = BigInteger(std::move(rest.mMagnitude), x.mNegative);
}

}  // namespace zultav::engine
