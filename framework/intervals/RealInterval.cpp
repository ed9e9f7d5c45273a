#include "framework/intervals/RealInterval.h"

#include <algorithm>
#include <utility>

#include "framework/intervals/IntervalControl.h"
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

namespace {

RealInterval Mirrored(const RealInterval& x) { return {-x.upper, -x.lower}; }

}  // namespace

double RealInterval::sMaxValue = 1e19;

RealInterval general_arithmetic::Sum(const RealInterval& a, const RealInterval& b) {
  RealInterval sum;
  if (packed::Add(a, b, sum)) [[likely]]
    return sum;
  if (a.IsEmpty() || b.IsEmpty()) return Empty();
  const RealInterval x = Extended(a);
  const RealInterval y = Extended(b);
  return Saturated(AddDown(x.lower, y.lower), AddUp(x.upper, y.upper));
}

RealInterval general_arithmetic::Product(const RealInterval& a, const RealInterval& b) {
  RealInterval product;
  if (packed::Multiply(a, b, product)) [[likely]]
    return product;
  if (a.IsEmpty() || b.IsEmpty()) return Empty();
  RealInterval x = Extended(a);
  RealInterval y = Extended(b);
  const auto hasBothSigns = [](const RealInterval& set) { return set.lower < 0 && set.upper > 0; };
  if (hasBothSigns(x)) {
    std::swap(x, y);
    if (hasBothSigns(x))
      return Saturated(std::min(MultiplyDown(x.lower, y.upper), MultiplyDown(x.upper, y.lower)),
                       std::max(MultiplyUp(x.lower, y.lower), MultiplyUp(x.upper, y.upper)));
  }
  if (x.lower < 0) {
    x = Mirrored(x);
    y = Mirrored(y);
  }
  return Saturated(MultiplyDown(y.lower >= 0 ? x.lower : x.upper, y.lower),
                   MultiplyUp(y.upper <= 0 ? x.lower : x.upper, y.upper));
}

RealInterval general_arithmetic::Quotient(const RealInterval& a, const RealInterval& b) {
  RealInterval quotient;
  if (packed::Divide(a, b, quotient)) [[likely]]
    return quotient;
  const bool isDivisorZero = b.Contains(0) && b.IsScalar();
  if (a.IsEmpty() || b.IsEmpty() || (isDivisorZero && !a.Contains(0))) {
    SDRaiseError();
    return Empty();
  }
  if (b.Contains(0) && (a.Contains(0) || (b.lower < 0 && b.upper > 0))) return Whole();
  RealInterval x = Extended(a);
  RealInterval y = Extended(b);
  if (y.lower < 0) {
    x = Mirrored(x);
    y = Mirrored(y);
  }
  y.lower += 0.0;  // a quotient by zero is infinite with the sign of the dividend
  //   x            lower        upper
  //   x >= 0       xl / yu      xu / yl
  //   x <= 0       xl / yl      xu / yu
  //   0 inside     xl / yl      xu / yl
  return Saturated(DivideDown(x.lower, x.lower >= 0 ? y.upper : y.lower),
                   DivideUp(x.upper, x.upper <= 0 ? y.upper : y.lower));
}

RealInterval general_arithmetic::Square(const RealInterval& x) {
  RealInterval square;
  if (packed::Square(x, square)) [[likely]]
    return square;
  if (x.IsEmpty()) return Empty();
  const RealInterval part =
      Extended({std::max({x.lower, -x.upper, 0.0}), std::max(-x.lower, x.upper)});
  return Saturated(MultiplyDown(part.lower, part.lower), MultiplyUp(part.upper, part.upper));
}

RealInterval general_arithmetic::Sqrt(const RealInterval& x) {
  RealInterval root;
  if (packed::Sqrt(x, root)) [[likely]]
    return root;
  if (x.IsEmpty() || x.upper < 0) return Empty();
  const RealInterval part = Extended({std::max(x.lower, 0.0), x.upper});
  return Saturated(rounding::SqrtDown(part.lower), rounding::SqrtUp(part.upper));
}

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
