#include "framework/intervals/SubdefInt.h"

#include <cmath>

#include "framework/intervals/SubdefReal.h"

long SubdefInt::sMaxValue = 2147483646;

namespace {

// Clamped before it is converted: most doubles fit no integer type.
long ToBound(double whole) {
  const auto limit = static_cast<double>(SubdefInt::sMaxValue);
  return static_cast<long>(std::clamp(whole, -limit, limit));
}

}  // namespace

SubdefInt::SubdefInt() : IntegerInterval(Whole()) {}

SubdefInt::SubdefInt(const SubdefReal& set) : IntegerInterval(Empty()) {
  const double low = std::ceil(set.lower);
  const double high = std::floor(set.upper);
  // Tested before clamping, which could make two bounds beyond the limit meet; false for NaN.
  if (low <= high) {
    lower = ToBound(low);
    upper = ToBound(high);
  }
}

int SubdefInt::SDIntersect(const SubdefReal& other) { return SDIntersect(SubdefInt(other)); }

SubdefInt InverseAbs(const SubdefInt& z, const SubdefInt& x) {
  if (z.IsEmpty() || z.upper < 0) return SubdefInt::Empty();
  IntegerInterval right(std::max<long>(z.lower, 0), z.upper);
  IntegerInterval left = right.mf_Neg();
  right.Intersect(x);
  left.Intersect(x);
  const IntegerInterval hull = left.mf_Union(right);
  return hull.IsEmpty() ? SubdefInt::Empty() : hull;
}

SubdefInt InverseMin(const SubdefInt& z, const SubdefInt& y) {
  if (z.IsEmpty() || y.IsEmpty() || y.upper < z.lower) return SubdefInt::Empty();
  if (y.lower > z.upper) return z;
  return {z.lower, SubdefInt::sMaxValue};
}

SubdefInt InverseMax(const SubdefInt& z, const SubdefInt& y) {
  return InverseMin(z.mf_Neg(), y.mf_Neg()).mf_Neg();
}
