#ifndef ZULTAV_CALCULATOR_DETAIL_INTEGER_SET_H
#define ZULTAV_CALCULATOR_DETAIL_INTEGER_SET_H

#include <cstdint>
#include <vector>

#include "framework/solver/ZULTaVoMembership.h"

namespace zultav::detail {

/// A set of integers, as ranges in ascending order with gaps between them.
class IntegerSet {
 public:
  using Range = ZULTaVoMembership::Range;

  IntegerSet() = default;
  /// Of the integers from low to high; empty where low is above high.
  IntegerSet(std::int64_t low, std::int64_t high);
  /// Of everything in any of the ranges, which may overlap.
  explicit IntegerSet(std::vector<Range> ranges);

  bool IsEmpty() const { return mRanges.empty(); }
  /// How many integers, at most 2^64 - 1.
  std::uint64_t GetSize() const;
  bool Contains(std::int64_t value) const;
  const std::vector<Range>& GetRanges() const { return mRanges; }
  IntegerSet Union(const IntegerSet& other) const;
  IntegerSet Intersection(const IntegerSet& other) const;

 private:
  std::vector<Range> mRanges;
};

}  // namespace zultav::detail

#endif
