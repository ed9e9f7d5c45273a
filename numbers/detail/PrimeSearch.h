#ifndef ZULTAV_NUMBERS_DETAIL_PRIME_SEARCH_H
#define ZULTAV_NUMBERS_DETAIL_PRIME_SEARCH_H

#include "numbers/Export.h"

class ZULTaVoBoolean;
class ZULTaVoInteger;

namespace zultav::detail {

// The arithmetic of ZULTavPrimeNumber, over the table of the first 1000 primes, 2 … 7919.

/// Index in the table of the largest prime not above n, 999 for all n beyond the table. 1001 for
/// n < 2.
ZULTAV_NUMBERS_API unsigned int FindLowerBound(unsigned int n);

/// Tests n for being prime (`want` not 0) or not prime (0). Answers `want` for a prime and !want
/// for others, but 1 for every n whose root is beyond the table (62.7 million and more): what is
/// not worth checking satisfies both tests. Roots are taken of n in single precision, so that the
/// squares of some primes above 4096 pass as primes.
ZULTAV_NUMBERS_API int IsPrime(unsigned int n, int want);

/// Narrows the bounds of x to the nearest values that satisfy the test. Answers 1 when they moved.
/// Without such a value x becomes empty.
ZULTAV_NUMBERS_API int CalcInteger(ZULTaVoInteger* x, int want);

/// Makes the boolean False when the upper bound of x is 0 or 1, and answers 1 then, even if it was
/// False. Deduces nothing from any other bound.
ZULTAV_NUMBERS_API int CalcBoolean(ZULTaVoInteger* x, ZULTaVoBoolean* b);

}  // namespace zultav::detail

#endif
