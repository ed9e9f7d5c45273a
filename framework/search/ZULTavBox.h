#ifndef ZULTAV_SEARCH_ZULTAV_BOX_H
#define ZULTAV_SEARCH_ZULTAV_BOX_H

#include <bit>
#include <cstdint>
#include <vector>

#include "framework/intervals/IntegerRange.h"
#include "framework/intervals/RealRange.h"
#include "framework/search/Export.h"
#include "framework/search/ZULTavSolution.h"

/// A part of the space of a search: for each declared value what it may be, in plain numbers.
struct ZULTAV_UTILITIES_API ZULTavBox {
  /// The bounds of an integer, or, as bits, of a real; nothing of a value whose type only its
  /// module knows.
  struct Range {
    Range() = default;
    Range(const zultav::IntegerRange& integers) : lower(integers.lower), upper(integers.upper) {}
    Range(const zultav::RealRange& reals)
        : lower(std::bit_cast<std::int64_t>(reals.lower)),
          upper(std::bit_cast<std::int64_t>(reals.upper)) {}
    zultav::IntegerRange GetIntegers() const { return {lower, upper}; }
    zultav::RealRange GetReals() const {
      return {std::bit_cast<double>(lower), std::bit_cast<double>(upper)};
    }

    std::int64_t lower = 0, upper = 0;
  };

  std::vector<Range> ranges;
  /// Copies of those values whose types only their module knows.
  ZULTavSolution opaque;
  /// Whether a solution of the model certainly lies within it.
  bool isProven = false;
};

#endif
