// The arithmetic of RealInterval and of RealRange, each formula once.

#include "framework/intervals/RealInterval.h"

#include <algorithm>
#include <utility>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/RealRange.h"
#include "framework/intervals/detail/RealLine.h"
#include "framework/intervals/detail/Rounding.h"

using namespace zultav::detail;

using real_line::Empty;
using real_line::Extended;
using real_line::Saturated;
using real_line::Whole;
using rounding::AddDown;
using rounding::AddUp;
using rounding::DivideDown;
using rounding::DivideUp;
using rounding::MultiplyDown;
using rounding::MultiplyUp;
using zultav::RealRange;

double RealInterval::sMaxValue = 1e19;

namespace {

RealRange Mirrored(const RealRange& x) { return {-x.upper, -x.lower}; }

template <class Set>
bool HasBothSigns(const Set& x) {
  return x.lower < 0 && x.upper > 0;
}

template <class Set>
Set SumOf(const Set& a, const Set& b) {
  Set sum;
  if (packed::Add(a, b, sum)) [[likely]]
    return sum;
  if (a.IsEmpty() || b.IsEmpty()) return Empty<Set>();
  const RealRange x = Extended(a);
  const RealRange y = Extended(b);
  return Saturated<Set>(AddDown(x.lower, y.lower), AddUp(x.upper, y.upper));
}

template <class Set>
Set ProductOf(const Set& a, const Set& b) {
  Set product;
  if (packed::Multiply(a, b, product)) [[likely]]
    return product;
  if (a.IsEmpty() || b.IsEmpty()) return Empty<Set>();
  RealRange x = Extended(a);
  RealRange y = Extended(b);
  if (HasBothSigns(x)) {
    std::swap(x, y);
    if (HasBothSigns(x))
      return Saturated<Set>(
          std::min(MultiplyDown(x.lower, y.upper), MultiplyDown(x.upper, y.lower)),
          std::max(MultiplyUp(x.lower, y.lower), MultiplyUp(x.upper, y.upper)));
  }
  if (x.lower < 0) {
    x = Mirrored(x);
    y = Mirrored(y);
  }
  return Saturated<Set>(MultiplyDown(y.lower >= 0 ? x.lower : x.upper, y.lower),
                        MultiplyUp(y.upper <= 0 ? x.lower : x.upper, y.upper));
}

/// Quotients by what of b, which has one sign and is not [0, 0], is not 0; neither set is empty.
template <class Set>
Set QuotientByOneSign(const Set& a, const Set& b) {
  RealRange x = Extended(a);
  RealRange y = Extended(b);
  if (y.lower < 0) {
    x = Mirrored(x);
    y = Mirrored(y);
  }
  y.lower += 0.0;  // a quotient by zero is infinite with the sign of the dividend
  //   x            lower        upper
  //   x >= 0       xl / yu      xu / yl
  //   x <= 0       xl / yl      xu / yu
  //   0 inside     xl / yl      xu / yl
  return Saturated<Set>(DivideDown(x.lower, x.lower >= 0 ? y.upper : y.lower),
                        DivideUp(x.upper, x.upper <= 0 ? y.upper : y.lower));
}

template <class Set>
Set SquareOf(const Set& x) {
  Set square;
  if (packed::Square(x, square)) [[likely]]
    return square;
  if (x.IsEmpty()) return Empty<Set>();
  const RealRange part =
      Extended(Set(std::max({x.lower, -x.upper, 0.0}), std::max(-x.lower, x.upper)));
  return Saturated<Set>(MultiplyDown(part.lower, part.lower), MultiplyUp(part.upper, part.upper));
}

template <class Set>
Set SqrtOf(const Set& x) {
  Set root;
  if (packed::Sqrt(x, root)) [[likely]]
    return root;
  if (x.IsEmpty() || x.upper < 0) return Empty<Set>();
  const RealRange part = Extended(Set(std::max(x.lower, 0.0), x.upper));
  return Saturated<Set>(rounding::SqrtDown(part.lower), rounding::SqrtUp(part.upper));
}

template <class Set>
Set AbsOf(const Set& x) {
  if (x.IsEmpty()) return Empty<Set>();
  return Saturated<Set>(std::max({x.lower, -x.upper, 0.0}), std::max(-x.lower, x.upper));
}

template <class Set>
Set MinOf(const Set& x, const Set& y) {
  if (x.IsEmpty() || y.IsEmpty()) return Empty<Set>();
  return Saturated<Set>(std::min(x.lower, y.lower), std::min(x.upper, y.upper));
}

template <class Set>
Set MaxOf(const Set& x, const Set& y) {
  if (x.IsEmpty() || y.IsEmpty()) return Empty<Set>();
  return Saturated<Set>(std::max(x.lower, y.lower), std::max(x.upper, y.upper));
}

}  // namespace

RealInterval general_arithmetic::Sum(const RealInterval& x, const RealInterval& y) {
  return SumOf(x, y);
}
RealInterval general_arithmetic::Product(const RealInterval& x, const RealInterval& y) {
  return ProductOf(x, y);
}
RealInterval general_arithmetic::Square(const RealInterval& x) { return SquareOf(x); }
RealInterval general_arithmetic::Sqrt(const RealInterval& x) { return SqrtOf(x); }

RealInterval general_arithmetic::Quotient(const RealInterval& x, const RealInterval& y) {
  RealInterval quotient;
  if (packed::Divide(x, y, quotient)) [[likely]]
    return quotient;
  const bool isDivisorZero = y.Contains(0) && y.IsScalar();
  if (x.IsEmpty() || y.IsEmpty() || (isDivisorZero && !x.Contains(0))) {
    SDRaiseError();
    return Empty<RealInterval>();
  }
  if (y.Contains(0) && (x.Contains(0) || HasBothSigns(y))) return Whole<RealInterval>();
  return QuotientByOneSign(x, y);
}

RealInterval RealInterval::mf_Neg() const {
  return IsEmpty() ? Empty<RealInterval>() : Saturated<RealInterval>(-upper, -lower);
}
RealInterval RealInterval::mf_Abs() const { return AbsOf(*this); }
RealInterval RealInterval::mf_Min(const RealInterval& b) const { return MinOf(*this, b); }
RealInterval RealInterval::mf_Max(const RealInterval& b) const { return MaxOf(*this, b); }

RealInterval RealInterval::mf_Union(const RealInterval& b) const {
  if (b.IsEmpty()) return *this;
  if (IsEmpty()) return b;
  return Saturated<RealInterval>(std::min(lower, b.lower), std::max(upper, b.upper));
}

RealRange general_arithmetic::Sum(const RealRange& x, const RealRange& y) { return SumOf(x, y); }
RealRange general_arithmetic::Product(const RealRange& x, const RealRange& y) {
  return ProductOf(x, y);
}
RealRange general_arithmetic::Square(const RealRange& x) { return SquareOf(x); }
RealRange general_arithmetic::Sqrt(const RealRange& x) { return SqrtOf(x); }

RealRange general_arithmetic::Quotient(const RealRange& x, const RealRange& y) {
  RealRange quotient;
  if (packed::Divide(x, y, quotient)) [[likely]]
    return quotient;
  constexpr RealRange kZero(0, 0);
  if (x.IsEmpty() || y.IsEmpty() || y == kZero) return RealRange::Empty();
  if (HasBothSigns(y)) return x == kZero ? kZero : RealRange();
  return QuotientByOneSign(x, y);
}

RealRange zultav::Abs(const RealRange& x) { return AbsOf(x); }
RealRange zultav::Min(const RealRange& x, const RealRange& y) { return MinOf(x, y); }
RealRange zultav::Max(const RealRange& x, const RealRange& y) { return MaxOf(x, y); }

RealRange zultav::Quotients(const RealRange& x, const RealRange& z, const RealRange& y) {
  if (x.IsEmpty() || y.IsEmpty() || z.IsEmpty()) return RealRange::Empty();
  if (z.Contains(0) && y.Contains(0)) return x;
  if (!HasBothSigns(y)) return Intersection(z / y, x);
  return Hull(Intersection(QuotientByOneSign(z, {y.lower, 0}), x),
              Intersection(QuotientByOneSign(z, {0, y.upper}), x));
}
