#include "framework/intervals/RealFunctions.h"

#include <algorithm>

#include "framework/intervals/RealLine.h"
#include "framework/intervals/Rounding.h"

using real_line::Empty;
using real_line::Extended;
using real_line::Saturated;

SubdefReal sqrt(const SubdefReal& x) {
  if (x.IsEmpty() || x.upper < 0) return Empty();
  const RealInterval part = Extended({std::max(x.lower, 0.0), x.upper});
  return Saturated(rounding::Root(part.lower).Down(), rounding::Root(part.upper).Up());
}

SubdefReal sqr(const SubdefReal& x) {
  if (x.IsEmpty()) return Empty();
  const RealInterval part = Extended(x.mf_Abs());
  return Saturated(rounding::Product(part.lower, part.lower).Down(),
                   rounding::Product(part.upper, part.upper).Up());
}
