#ifndef ZULTAV_NUMBERS_DETAIL_TRIG_WINDOW_H
#define ZULTAV_NUMBERS_DETAIL_TRIG_WINDOW_H

#include <numbers>

#include "framework/intervals/SubdefReal.h"
#include "framework/solver/ZULTaVoReal.h"

namespace zultav::detail {

/// The solver's trigonometric window in radians, with the rounding of the library's own, which is
/// set in half-turns.
inline SubdefReal GetTrigWindow() {
  double low = 0;
  double high = 0;
  ZULTaVoReal::GetTrigLimits(low, high);
  return {low * std::numbers::inv_pi * std::numbers::pi,
          high * std::numbers::inv_pi * std::numbers::pi};
}

}  // namespace zultav::detail

#endif
