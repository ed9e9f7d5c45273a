#include "framework/intervals/SubdefReal.h"

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/SubdefInt.h"
#include "framework/intervals/detail/RealLine.h"

using namespace zultav::detail;

using real_line::Extended;
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
  return Saturated(zultav::InverseAbs(Extended(z), Extended(x)));
}

SubdefReal InverseMin(const SubdefReal& z, const SubdefReal& y) {
  return Saturated(zultav::InverseMin(Extended(z), Extended(y)));
}

SubdefReal InverseMax(const SubdefReal& z, const SubdefReal& y) {
  return Saturated(zultav::InverseMax(Extended(z), Extended(y)));
}
