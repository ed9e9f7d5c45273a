#include "framework/intervals/SubdefReal.h"

#include <algorithm>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/detail/RealLine.h"

using namespace zultav::detail;

using real_line::Empty;
using real_line::Saturated;

SubdefReal::SubdefReal() : RealInterval(-sMaxValue, sMaxValue) {}

int SubdefReal::SDIntersect(const SubdefReal& other) {
  const int changed = Intersect(other);
  if (IsEmpty()) SDRaiseError();
  return changed;
}

int SubdefReal::SDIntersect(const SubdefInt& other) {
  const long low = other.lower;
  const long high = other.upper;
  return SDIntersect(
      SubdefReal(low <= -SubdefInt::sMaxValue ? -sMaxValue : static_cast<double>(low),
                 high >= SubdefInt::sMaxValue ? sMaxValue : static_cast<double>(high)));
}

SubdefReal InverseAbs(const SubdefReal& z, const SubdefReal& x) {
  RealInterval positive(std::max(z.lower, 0.0), z.upper);
  RealInterval negative(-positive.upper, -positive.lower);
  positive.Intersect(x);
  negative.Intersect(x);
  return negative.mf_Union(positive);
}

SubdefReal InverseMin(const SubdefReal& z, const SubdefReal& y) {
  if (z.IsEmpty() || y.IsEmpty() || y.upper < z.lower) return Empty();
  if (y.lower > z.upper) return z;
  return Saturated(z.lower, SubdefReal::sMaxValue);
}

SubdefReal InverseMax(const SubdefReal& z, const SubdefReal& y) {
  if (z.IsEmpty() || y.IsEmpty() || y.lower > z.upper) return Empty();
  if (y.upper < z.lower) return z;
  return Saturated(-SubdefReal::sMaxValue, z.upper);
}
