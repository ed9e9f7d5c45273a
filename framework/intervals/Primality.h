#ifndef ZULTAV_INTERVALS_PRIMALITY_H
#define ZULTAV_INTERVALS_PRIMALITY_H

#include <cstdint>

#include "framework/intervals/Export.h"
#include "framework/intervals/IntegerRange.h"

namespace zultav {

// Primes of 64 bits, decided without error and in bounded time: no gap between neighbours below
// 2^64 is longer than 1550.

ZULTAV_INTERVALS_API bool IsPrime(std::uint64_t n);
/// The least prime >= n; 0 where none is below 2^64.
ZULTAV_INTERVALS_API std::uint64_t NextPrime(std::uint64_t n);
/// The largest prime <= n; 0 where n < 2.
ZULTAV_INTERVALS_API std::uint64_t PreviousPrime(std::uint64_t n);

/// The hull of the primes in x. A bound beyond the primes of 63 bits stays.
ZULTAV_INTERVALS_API IntegerRange PrimesWithin(const IntegerRange& x);
/// The hull of the other integers in x.
ZULTAV_INTERVALS_API IntegerRange NonPrimesWithin(const IntegerRange& x);

}  // namespace zultav

#endif
