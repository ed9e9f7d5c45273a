#include "framework/intervals/Primality.h"

#include <array>
#include <bit>

namespace zultav {

namespace {

using Word = std::uint64_t;

/// The upper half of the product, without integers of 128 bits.
Word MultiplyHigh(Word x, Word y) {
  constexpr Word low = 0xffffffff;
  const Word crossed = (x >> 32) * (y & low) + ((x & low) * (y & low) >> 32);
  const Word other = (x & low) * (y >> 32) + (crossed & low);
  return (x >> 32) * (y >> 32) + (crossed >> 32) + (other >> 32);
}

/// Numbers modulo an odd n, each kept as its product with 2^64 (Montgomery 1985), so that products
/// need no division.
class Residues {
 public:
  explicit Residues(Word n) : mModulus(n), mOne((Word{0} - n) % n) {
    // Each of Newton's steps doubles the number of bits that are right, 3 at first.
    for (int i = 0; i < 5; ++i) mInverse *= 2 - n * mInverse;
  }

  Word One() const { return mOne; }
  Word MinusOne() const { return mModulus - mOne; }
  Word Multiply(Word x, Word y) const {
    const Word high = MultiplyHigh(x, y);
    const Word excess = MultiplyHigh(x * y * mInverse, mModulus);
    return high - excess + (high < excess ? mModulus : 0);
  }
  /// The power of a small base.
  Word Power(unsigned base, Word exponent) const {
    Word factor = 0, power = mOne;
    for (; base > 0; --base) factor = factor < MinusOne() ? factor + mOne : factor - MinusOne();
    for (; exponent > 0; exponent >>= 1) {
      if (exponent & 1) power = Multiply(power, factor);
      factor = Multiply(factor, factor);
    }
    return power;
  }

 private:
  Word mModulus;
  Word mOne;
  Word mInverse = mModulus;
};

constexpr std::array<unsigned, 12> kBases = {2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37};

// No composite number below this one is a strong pseudoprime to the first five bases (Jaeschke,
// "On strong pseudoprimes to several bases", Math. Comp. 61, 1993), and none below 2^64 to all
// twelve (Sorenson and Webster, "Strong pseudoprimes to twelve prime bases", Math. Comp. 86, 2017).
constexpr Word kFiveBasesSuffice = 2152302898747;

/// The test of Miller and Rabin for n > 2, odd.
bool IsStrongProbablePrime(const Residues& residues, Word n, unsigned base) {
  const int twos = std::countr_zero(n - 1);
  Word power = residues.Power(base, (n - 1) >> twos);
  if (power == residues.One() || power == residues.MinusOne()) return true;
  for (int i = 1; i < twos; ++i) {
    power = residues.Multiply(power, power);
    if (power == residues.MinusOne()) return true;
  }
  return false;
}

constexpr std::int64_t kMax = IntegerRange::kMax;

}  // namespace

bool IsPrime(std::uint64_t n) {
  if (n < 2) return false;
  for (unsigned prime : kBases)
    if (n % prime == 0) return n == prime;
  if (n < Word{kBases.back()} * kBases.back()) return true;
  const Residues residues(n);
  const std::size_t bases = n < kFiveBasesSuffice ? 5 : kBases.size();
  return std::all_of(kBases.begin(), kBases.begin() + bases,
                     [&](unsigned base) { return IsStrongProbablePrime(residues, n, base); });
}

std::uint64_t NextPrime(std::uint64_t n) {
  if (n <= 2) return 2;
  for (n |= 1; n != 1 && !IsPrime(n); n += 2) continue;  // beyond 2^64 follows 1
  return n == 1 ? 0 : n;
}

std::uint64_t PreviousPrime(std::uint64_t n) {
  if (n <= 2) return n == 2 ? 2 : 0;
  for (n -= n % 2 == 0; !IsPrime(n); n -= 2) continue;
  return n;
}

IntegerRange PrimesWithin(const IntegerRange& x) {
  if (x.upper < 2 || x.IsEmpty()) return IntegerRange::Empty();
  IntegerRange primes = x;
  const Word next = NextPrime(static_cast<Word>(std::max<std::int64_t>(x.lower, 2)));
  primes.lower = static_cast<std::int64_t>(std::min(next, static_cast<Word>(kMax)));
  if (x.upper != kMax) {
    primes.upper = static_cast<std::int64_t>(PreviousPrime(static_cast<Word>(x.upper)));
  }
  return primes;
}

// Of two neighbours from 3 on, one is even.
IntegerRange NonPrimesWithin(const IntegerRange& x) {
  const auto isPrime = [](std::int64_t v) {
    return v > 1 && IsPrime(static_cast<std::uint64_t>(v));
  };
  IntegerRange others = x;
  if (x.IsEmpty()) return x;
  while (others.lower != kMax && isPrime(others.lower)) ++others.lower;
  while (others.upper != kMax && isPrime(others.upper)) --others.upper;
  return others;
}

}  // namespace zultav
