#include "framework/intervals/RealInterval.h"

#include <algorithm>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealLine.h"
#include "framework/intervals/Rounding.h"

using real_line::Empty;
using real_line::Extended;
using real_line::Saturated;
using real_line::Whole;
using rounding::Product;
using rounding::Quotient;
using rounding::Sum;

int RealInterval::Intersect(const RealInterval& other) {
  const RealInterval before = *this;
  lower = std::max(lower, other.lower);
  upper = std::min(upper, other.upper);
  return !(*this == before);
}

RealInterval RealInterval::AddIntToInt(const RealInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  const RealInterval x = Extended(*this);
  const RealInterval y = Extended(b);
  return Saturated(Sum(x.lower, y.lower).Down(), Sum(x.upper, y.upper).Up());
}

RealInterval RealInterval::SubIntFromInt(const RealInterval& b) const {
  return AddIntToInt({-b.upper, -b.lower});
}

RealInterval RealInterval::MultIntByInt(const RealInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  const RealInterval x = Extended(*this);
  const RealInterval y = Extended(b);
  const rounding::Rounded corners[] = {Product(x.lower, y.lower), Product(x.lower, y.upper),
                                       Product(x.upper, y.lower), Product(x.upper, y.upper)};
  double low = corners[0].Down();
  double high = corners[0].Up();
  for (const rounding::Rounded& corner : corners) {
    low = std::min(low, corner.Down());
    high = std::max(high, corner.Up());
  }
  return Saturated(low, high);
}

RealInterval RealInterval::DivIntByInt(const RealInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  if (b.Contains(0)) {
    if (Contains(0)) return Whole();
    if (b.IsScalar()) {
      SDRaiseError();
      return Empty();
    }
    if (b.lower < 0 && b.upper > 0) return Whole();
  }
  RealInterval x = Extended(*this);
  RealInterval y = Extended(b);
  if (y.lower < 0) {
    x = {-x.upper, -x.lower};
    y = {-y.upper, -y.lower};
  }
  y.lower += 0.0;  // a quotient by zero is infinite with the sign of the dividend
  //   x            lower        upper
  //   x >= 0       xl / yu      xu / yl
  //   x <= 0       xl / yl      xu / yu
  //   0 inside     xl / yl      xu / yl
  return Saturated(Quotient(x.lower, x.lower >= 0 ? y.upper : y.lower).Down(),
                   Quotient(x.upper, x.upper <= 0 ? y.upper : y.lower).Up());
}

RealInterval RealInterval::AddNumToInt(double d) const { return AddIntToInt({d, d}); }

RealInterval RealInterval::subNumFromInt(double d) const { return SubIntFromInt({d, d}); }

RealInterval RealInterval::mf_Neg() const {
  return IsEmpty() ? Empty() : Saturated(-upper, -lower);
}

RealInterval RealInterval::mf_Abs() const {
  if (IsEmpty()) return Empty();
  return Saturated(std::max({lower, -upper, 0.0}), std::max(-lower, upper));
}

RealInterval RealInterval::mf_Min(const RealInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  return Saturated(std::min(lower, b.lower), std::min(upper, b.upper));
}

RealInterval RealInterval::mf_Max(const RealInterval& b) const {
  if (IsEmpty() || b.IsEmpty()) return Empty();
  return Saturated(std::max(lower, b.lower), std::max(upper, b.upper));
}

RealInterval RealInterval::mf_Union(const RealInterval& b) const {
  if (b.IsEmpty()) return *this;
  if (IsEmpty()) return b;
  return Saturated(std::min(lower, b.lower), std::max(upper, b.upper));
}
