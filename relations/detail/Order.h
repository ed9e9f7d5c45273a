#ifndef ZULTAV_RELATIONS_DETAIL_ORDER_H
#define ZULTAV_RELATIONS_DETAIL_ORDER_H

#include <cstdint>

#include "framework/solver/ZULTaVoPropagator.h"

namespace zultav::relations {

/// Narrows to x <= y, or strictly to x < y; false when nothing is left.
inline bool NarrowToOrder(ZULTaVoDomains& domains, std::uint32_t x, std::uint32_t y,
                          bool strictly) {
  const std::int64_t lower = domains.GetLower(x), upper = domains.GetUpper(y);
  // Where there is no bound there is no next one either; beyond the scale all numbers look alike.
  const bool up =
      strictly && lower != ZULTaVoDomains::kNoLower && lower != ZULTaVoDomains::kNoUpper;
  const bool down =
      strictly && upper != ZULTaVoDomains::kNoLower && upper != ZULTaVoDomains::kNoUpper;
  return domains.SetLower(y, lower + (up ? 1 : 0)) && domains.SetUpper(x, upper - (down ? 1 : 0));
}

/// Whether x < y, or x <= y where it is not strict, holds for all that is left.
inline bool IsInOrder(const ZULTaVoDomains& domains, std::uint32_t x, std::uint32_t y,
                      bool strictly) {
  const std::int64_t upper = domains.GetUpper(x), lower = domains.GetLower(y);
  return upper < lower || (!strictly && upper == lower && upper != ZULTaVoDomains::kNoUpper &&
                           upper != ZULTaVoDomains::kNoLower);
}

}  // namespace zultav::relations

#endif
