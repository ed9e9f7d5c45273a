#ifndef ZULTAV_INTERVALS_DETAIL_ELEMENTARY_TABLES_H
#define ZULTAV_INTERVALS_DETAIL_ELEMENTARY_TABLES_H

#include "framework/intervals/detail/DoubleDouble.h"
#include "framework/intervals/detail/Level.h"

// Values of the elementary functions, each the correctly rounded sum of two doubles.
namespace zultav::detail {
inline namespace ZULTAV_LEVEL {
namespace elementary {

/// 2^(i/128).
extern const DoubleDouble kExpTable[128];

/// Cells of z in [0.6875, 1.375), 2^-9 wide below 1 and 2^-8 above: a number near 1/z and minus
/// its logarithm. The two cells that touch 1 have 1 and 0.
template <class Number>
struct LogRowOf {
  Number inverse;
  DoubleDoubleOf<Number> log;
};
using LogRow = LogRowOf<double>;
extern const LogRow kLogTable[256];

inline LogRow Lookup(const LogRow* table, std::int64_t place) { return table[place]; }
#ifdef __FMA__
inline LogRowOf<DoublePair> Lookup(const LogRow* table, IntegerPair place) {
  const LogRow &first = table[place[0]], &second = table[place[1]];
  return {
      _mm_set_pd(second.inverse, first.inverse),
      {_mm_set_pd(second.log.hi, first.log.hi), _mm_set_pd(second.log.lo, first.log.lo)}
  };
}
#endif

/// sin(i pi/512).
extern const DoubleDouble kSinTable[257];

/// Arc tangents of the centres of the cells, 32 to each power of two, from 2^-8 to 2^8.
extern const DoubleDouble kAtanTable[512];

}  // namespace elementary
}  // namespace ZULTAV_LEVEL
}  // namespace zultav::detail

#endif
