// Elementary functions and power of interval reals.

#include <algorithm>
#include <cmath>

#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "numbers/detail/IntervalDispatch.h"
#include "numbers/detail/Narrowing.h"
#include "numbers/detail/RealModulo.h"
#include "numbers/detail/TrigWindow.h"

using namespace zultav::detail;

namespace {

/// Pick the overload on real sets.
using UnaryFunction = SubdefReal (*)(const SubdefReal&);
using BinaryFunction = SubdefReal (*)(const SubdefReal&, const SubdefReal&);
UnaryFunction Unary(UnaryFunction function) { return function; }
BinaryFunction Binary(BinaryFunction function) { return function; }

SubdefReal NonNegative(const SubdefReal& x) { return {std::max(x.lower, 0.0), x.upper}; }

/// Too big an angle for the trigonometric functions.
bool TooBig(const SubdefReal& x) { return !(x.lower >= -1e14 && x.upper <= 1e14); }

SubdefReal Wave(UnaryFunction function, const SubdefReal& x) {
  return TooBig(x) ? SubdefReal(-1, 1) : function(x);
}

SubdefReal WholeNumbers(const SubdefReal& x) { return {std::ceil(x.lower), std::floor(x.upper)}; }

/// Rounding functions narrow to whole numbers of the receiver that the images of the ends enclose.
int NarrowToRounded(SubdefReal& z, double (*rounded)(double), const SubdefReal& x) {
  return Narrow(
      z,
      [&](const SubdefReal& set) {
        SubdefReal image = WholeNumbers(z);
        image.Intersect(RealInterval(rounded(set.lower), rounded(set.upper)));
        return image;
      },
      x);
}

/// What rounds to a whole number of z lies at `below` to `above` from it.
int NarrowToPreimage(SubdefReal& x, const SubdefReal& z, double below, double above) {
  return Narrow(
      x,
      [&](const SubdefReal& set) {
        return WholeNumbers(set).AddIntToInt({below, above});
      },
      z);
}

using PeriodicInverse = SubdefReal (*)(const SubdefReal&, const SubdefReal&, const SubdefReal&);

/// Inverse of a periodic function, within the solver's window.
int NarrowAngle(SubdefReal& angle, PeriodicInverse inverse, const SubdefReal& value) {
  return Narrow(
      angle,
      [inverse](const SubdefReal& z, const SubdefReal& x) {
        return inverse(z, x, GetTrigWindow());
      },
      value, angle);
}

double Floor(double value) { return std::floor(value); }
double Ceil(double value) { return std::ceil(value); }

/// The integers of a domain of integers; false for any other class.
bool GetIntegers(const ZULTaVoAny& value, SubdefInt& integers) {
  ZULTavIntervalReal set;
  if (ZULTaVoCast<ZULTaVoInteger>(&value) == nullptr || !set.Convert(value)) return false;
  integers = SubdefInt(set.GetSubdef());
  return true;
}

SubdefReal ToReals(const SubdefInt& integers) {
  SubdefReal reals;
  reals.SDIntersect(integers);
  return reals;
}

/// The part of the exponents y with x^y in z: all reals for the positive part of x and for zero,
/// the whole numbers for the negative part.
SubdefReal RealExponents(const SubdefReal& z, const SubdefReal& x, const SubdefReal& y) {
  RealInterval hull(1, -1);
  if (x.upper > 0 && z.upper > 0) hull = log(z).DivIntByInt(log(x));
  if (x.Contains(0) && z.Contains(0)) hull = hull.mf_Union({0, SubdefReal::sMaxValue});
  if (x.Contains(0) && z.Contains(1)) hull = hull.mf_Union({0, 0});
  const SubdefInt whole(y);
  if (x.lower < 0 && !whole.IsEmpty())
    hull = hull.mf_Union(ToReals(exponent(z, SubdefReal(x.lower, std::min(x.upper, 0.0)), whole)));
  return hull;
}

}  // namespace

// Elementary functions ----------------------------------------------------------------------

int ZULTavIntervalReal::CalcExpValue(const ZULTavIntervalReal& x) {
  return Narrow(mSet, Unary(exp), x.mSet);
}

int ZULTavIntervalReal::CalcInverseExpValue(ZULTavIntervalReal& x) const {
  return Narrow(x.mSet, Unary(log), mSet);
}

int ZULTavIntervalReal::CalcSqrtValue(const ZULTavIntervalReal& x) {
  return Narrow(mSet, Unary(sqrt), x.mSet);
}

int ZULTavIntervalReal::CalcInverseSqrtValue(ZULTavIntervalReal& x) const {
  return Narrow(
      x.mSet, [](const SubdefReal& z) { return sqr(NonNegative(z)); }, mSet);
}

int ZULTavIntervalReal::CalcSinValue(const ZULTavIntervalReal& x) {
  return Narrow(
      mSet, [](const SubdefReal& set) { return Wave(sin, set); }, x.mSet);
}

int ZULTavIntervalReal::CalcInverseSinValue(ZULTavIntervalReal& x) const {
  return NarrowAngle(x.mSet, asin, mSet);
}

int ZULTavIntervalReal::CalcCosValue(const ZULTavIntervalReal& x) {
  return Narrow(
      mSet, [](const SubdefReal& set) { return Wave(cos, set); }, x.mSet);
}

int ZULTavIntervalReal::CalcInverseCosValue(ZULTavIntervalReal& x) const {
  return NarrowAngle(x.mSet, acos, mSet);
}

int ZULTavIntervalReal::CalcTanValue(const ZULTavIntervalReal& x) {
  return Narrow(mSet, Unary(tan), x.mSet);
}

int ZULTavIntervalReal::CalcInverseTanValue(ZULTavIntervalReal& x) const {
  return NarrowAngle(x.mSet, atan, mSet);
}

int ZULTavIntervalReal::CalcFloorValue(const ZULTavIntervalReal& x) {
  return NarrowToRounded(mSet, Floor, x.mSet);
}

int ZULTavIntervalReal::CalcInverseFloorValue(ZULTavIntervalReal& x) const {
  return NarrowToPreimage(x.mSet, mSet, 0, 1);
}

int ZULTavIntervalReal::CalcCeilValue(const ZULTavIntervalReal& x) {
  return NarrowToRounded(mSet, Ceil, x.mSet);
}

int ZULTavIntervalReal::CalcInverseCeilValue(ZULTavIntervalReal& x) const {
  return NarrowToPreimage(x.mSet, mSet, -1, 0);
}

int ZULTavIntervalReal::CalcRoundValue(const ZULTavIntervalReal& x) {
  return NarrowToRounded(mSet, ZULTavSingleReal::my_round, x.mSet);
}

int ZULTavIntervalReal::CalcInverseRoundValue(ZULTavIntervalReal& x) const {
  return NarrowToPreimage(x.mSet, mSet, -0.5, 0.5);
}

// Power over integer exponents --------------------------------------------------------------

int ZULTavIntervalReal::CalcPowerValue(const ZULTavIntervalReal& a, const SubdefInt& b) {
  return Narrow(
      mSet,
      [](const SubdefReal& x, const SubdefInt& n) {
        return HullOfParts(x, [&](const SubdefReal& part) { return pow(part, SubdefReal(), n); });
      },
      a.mSet, b);
}

int ZULTavIntervalReal::CalcPowerValue(const ZULTavSingleReal& a, const SubdefInt& b) {
  return CalcPowerValue(ZULTavIntervalReal(a, 0), b);
}

int ZULTavIntervalReal::CalcPowerValue(const ZULTaVoNumber& a, const SubdefInt& b) {
  const interval_dispatch::Operand<ZULTavIntervalReal> x(a);
  return x.IsForeign() ? 0 : CalcPowerValue(*x, b);
}

int ZULTavIntervalReal::CalcFirstInversePowerValue(ZULTavIntervalReal& a,
                                                   const SubdefInt& b) const {
  return Narrow(
      a.mSet,
      [](const SubdefReal& x, const SubdefReal& z, const SubdefInt& n) {
        return HullOfParts(x, [&](const SubdefReal& part) { return base(z, part, n); });
      },
      a.mSet, mSet, b);
}

int ZULTavIntervalReal::CalcFirstInversePowerValue(ZULTavIntervalReal& a,
                                                   const ZULTavSingleInteger& b) const {
  return CalcFirstInversePowerValue(a, SubdefInt(ZULTavIntervalReal(b, 0).mSet));
}

int ZULTavIntervalReal::CalcSecondInversePowerValue(const ZULTavIntervalReal& a,
                                                    SubdefInt& b) const {
  return Narrow(
      b,
      [](const SubdefReal& x, const SubdefReal& z, const SubdefInt& n) {
        return HullOfParts(x, [&](const SubdefReal& part) { return exponent(z, part, n); });
      },
      a.mSet, mSet, b);
}

// Power over real exponents -----------------------------------------------------------------

int ZULTavIntervalReal::CalcPowerValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b) {
  return Narrow(mSet, Binary(pow), a.mSet, b.mSet);
}

int ZULTavIntervalReal::CalcPowerValue(const ZULTavIntervalReal& a, const ZULTavSingleReal& b) {
  return CalcPowerValue(a, ZULTavIntervalReal(b, 0));
}

int ZULTavIntervalReal::CalcFirstInversePowerValue(ZULTavIntervalReal& a,
                                                   const ZULTavIntervalReal& b) const {
  return Narrow(a.mSet, Binary(base), mSet, b.mSet);
}

int ZULTavIntervalReal::CalcFirstInversePowerValue(ZULTavIntervalReal& a,
                                                   const ZULTavSingleReal& b) const {
  return CalcFirstInversePowerValue(a, ZULTavIntervalReal(b, 0));
}

int ZULTavIntervalReal::CalcSecondInversePowerValue(const ZULTavIntervalReal& a,
                                                    ZULTavIntervalReal& b) const {
  return Narrow(b.mSet, RealExponents, mSet, a.mSet, b.mSet);
}

// Slots of power: the class of the exponent decides ------------------------------------------

int ZULTavIntervalReal::CalcPowerValue(const ZULTaVoNumber& a, const ZULTaVoNumber& b) {
  SubdefInt exponents;
  return GetIntegers(b, exponents) ? CalcPowerValue(a, exponents)
                                   : ZULTaVoFrame::CalcPowerValue(a, b);
}

int ZULTavIntervalReal::CalcFirstInversePowerValue(ZULTaVoNumber& a, const ZULTaVoNumber& b) const {
  SubdefInt exponents;
  if (!GetIntegers(b, exponents)) return ZULTaVoFrame::CalcFirstInversePowerValue(a, b);
  return interval_dispatch::Inverse(
      *this, a, [&](ZULTavIntervalReal& x) { return CalcFirstInversePowerValue(x, exponents); });
}

int ZULTavIntervalReal::CalcSecondInversePowerValue(const ZULTaVoNumber& a,
                                                    ZULTaVoNumber& b) const {
  SubdefInt exponents;
  if (!GetIntegers(b, exponents)) return ZULTaVoFrame::CalcSecondInversePowerValue(a, b);
  const interval_dispatch::Operand<ZULTavIntervalReal> x(a);
  if (x.IsForeign() || !CalcSecondInversePowerValue(*x, exponents)) return 0;
  ZULTavIntervalReal narrowed;
  narrowed.SetSubdef(exponents.IsEmpty() ? SubdefReal(1, -1) : ToReals(exponents));
  return narrowed.IntersectInverse(b);
}
