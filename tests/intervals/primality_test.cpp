#include "framework/intervals/Primality.h"

#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <boost/multiprecision/miller_rabin.hpp>
#include <random>

namespace {

using namespace zultav;

constexpr std::int64_t kMin = IntegerRange::kMin, kMax = IntegerRange::kMax;

TEST(PrimalityTest, AgreesWithASieveAndWithRandomBases) {
  std::vector<bool> composite(200000);
  for (std::size_t n = 2; n < composite.size(); ++n) {
    ASSERT_EQ(IsPrime(n), !composite[n]) << n;
    for (std::size_t m = n; m < composite.size(); m += n) composite[m] = true;
  }
  std::mt19937_64 random(20261123);
  for (int i = 0; i < 4000; ++i) {
    const std::uint64_t n = (random() >> random() % 48) | 1;
    const boost::multiprecision::cpp_int big = n;
    ASSERT_EQ(IsPrime(n), miller_rabin_test(big, 25, random)) << n;
  }
}

TEST(PrimalityTest, HoldsAtTheEndsAndAgainstPseudoprimes) {
  // Strong pseudoprimes to the first 1, 4, 5, 8 and 9 primes, a product of two large primes.
  for (std::uint64_t n : {2047ull, 3215031751ull, 2152302898747ull, 341550071728321ull,
                          3825123056546413051ull, 4294967291ull * 4294967279ull, ~0ull, 0ull, 1ull})
    EXPECT_FALSE(IsPrime(n)) << n;
  for (std::uint64_t n : {2ull, 100000007ull, 9223372036854775783ull, 18446744073709551557ull})
    EXPECT_TRUE(IsPrime(n)) << n;
  EXPECT_EQ(NextPrime(0), 2u);
  EXPECT_EQ(NextPrime(18361375334787046698u), 18361375334787048247u);  // the longest gap
  EXPECT_EQ(PreviousPrime(18361375334787048246u), 18361375334787046697u);
  EXPECT_EQ(NextPrime(18446744073709551558u), 0u);
  EXPECT_EQ(PreviousPrime(1), 0u);
}

TEST(PrimalityTest, NarrowsToPrimesAndToOthers) {
  const std::tuple<IntegerRange, IntegerRange, IntegerRange> rows[] = {
      {{},                     {2, kMax},             {}                    },
      {{-5, 1},                IntegerRange::Empty(), {-5, 1}               },
      {{2, 3},                 {2, 3},                {4, 1}                },
      {{0, 10},                {2, 7},                {0, 10}               },
      {{24, 28},               {29, 23},              {24, 28}              },
      {{5, 13},                {5, 13},               {6, 12}               },
      {{100000000, 100000000}, {100000007, 99999989}, {100000000, 100000000}},
      {{kMax - 23, kMax},      {kMax, kMax},          {kMax - 23, kMax}     },
      {{kMin, kMax - 1},       {2, kMax - 24},        {kMin, kMax - 1}      },
  };
  for (const auto& [x, primes, others] : rows) {
    EXPECT_EQ(PrimesWithin(x), primes) << x.lower << ' ' << x.upper;
    EXPECT_EQ(NonPrimesWithin(x), others) << x.lower << ' ' << x.upper;
  }
}

}  // namespace
