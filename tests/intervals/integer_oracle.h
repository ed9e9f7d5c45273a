#ifndef ZULTAV_TESTS_INTERVALS_INTEGER_ORACLE_H
#define ZULTAV_TESTS_INTERVALS_INTEGER_ORACLE_H

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "framework/intervals/SubdefInt.h"

inline std::ostream& operator<<(std::ostream& out, const IntegerInterval& x) {
  return out << '[' << x.lower << ", " << x.upper << ']';
}

/// Integer sets by enumeration, in doubles: exact up to 2^53, and what is rounded or infinite is
/// far beyond the limit, where only the sign counts. NaN is no value.
namespace oracle {

inline const long M = SubdefInt::sMaxValue;

inline bool Holds(const IntegerInterval& x, double v) {
  const bool above = x.lower <= -M || static_cast<double>(x.lower) <= v;
  const bool below = x.upper >= M || v <= static_cast<double>(x.upper);
  return above && below && !x.IsEmpty() && !std::isnan(v);
}

/// All members of a small set; of a wide one those around zero and around its bounds; and of
/// an infinite side members beyond the limit, even, odd and enormous.
inline std::vector<double> Members(const IntegerInterval& x) {
  std::vector<double> all = {-1e30, -0x1p33 - 1, -0x1p33, 0x1p33, 0x1p33 + 1, 1e30};
  std::erase_if(all, [&](double v) { return !Holds(x, v); });
  const double low = static_cast<double>(x.lower), high = static_cast<double>(x.upper);
  for (double v = low; v <= high; ++v) {
    if (v == low + 8) v = std::max(v, std::min(-40.0, high - 8));
    if (v >= 40 && v > low + 8) v = std::max(v, high - 8);
    all.push_back(v);
  }
  return all;
}

/// The hull of what was added, clamped to the limits.
struct Hull : IntegerInterval {
  Hull() : IntegerInterval(Empty()) {}
  void Add(double v) {
    const double limit = static_cast<double>(M);
    const long bound = std::isnan(v) ? 0 : static_cast<long>(std::clamp(v, -limit, limit));
    if (!std::isnan(v)) static_cast<IntegerInterval&>(*this) = mf_Union({bound, bound});
  }
};

/// Every interval within [-size, size], an empty one, and some with infinite sides; `limits`
/// adds some with finite bounds at the limits.
inline std::vector<IntegerInterval> Intervals(int size, bool limits) {
  std::vector<IntegerInterval> all = {
      {M,  -M},
      {-M, -2},
      {-M, 3 },
      {-2, M },
      {5,  M },
      {-M, M }
  };
  for (int low = -size; low <= size; ++low) {
    for (int high = low; high <= size; ++high) all.emplace_back(low, high);
  }
  for (long low : {-M, 1 - M, -3L, M - 1, M}) {
    for (long high : {-M, 1 - M, M - 1, M}) {
      if (limits && low <= high) all.emplace_back(low, high);
    }
  }
  return all;
}

}  // namespace oracle

#endif
