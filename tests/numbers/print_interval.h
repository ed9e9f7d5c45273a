#pragma once

#include <ostream>

#include "framework/intervals/RealInterval.h"

inline std::ostream& operator<<(std::ostream& out, const RealInterval& set) {
  return out << std::hexfloat << '[' << set.lower << ", " << set.upper << ']';
}
