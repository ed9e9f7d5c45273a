// Arithmetic and elementary functions of single reals.

#include <algorithm>
#include <cmath>
#include <numbers>

#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "numbers/detail/SingleRealNarrowing.h"
#include "numbers/detail/TrigWindow.h"

using namespace zultav::detail;

namespace {

double Sign(double value) { return value < 0 ? -1 : value > 0 ? 1 : 0; }

/// True when r cannot be the truncated remainder of a by m. |r| = |m| passes.
bool CheckModValue(double a, double m, double r) {
  if (a < 0) return r > 0 || r < -std::fabs(m) || r < a;
  return r < 0 || r > std::fabs(m) || r > a;
}

/// Calls `narrow` with a / b truncated toward zero, unless b is 0 or no integer can hold it.
template <class Narrow>
int WithQuotient(double a, double b, Narrow narrow) {
  if (b == 0) return 0;
  const double quotient = a / b;
  const bool fits = quotient >= static_cast<double>(ZULTavSingleInteger::sNC_INT_MIN) &&
                    quotient <= static_cast<double>(ZULTavSingleInteger::sNC_INT_MAX);
  return fits ? narrow(std::trunc(quotient)) : 0;
}

/// Intersects with one number, margin p.
int NarrowToNumber(ZULTavSingleReal& target, double value) {
  SDClearError();
  return target.Intersect(Candidate(target, SubdefReal(value, value)));
}

/// Intersects with the function value of one number.
int NarrowToImage(ZULTavSingleReal& target, SubdefReal (*function)(const SubdefReal&),
                  const ZULTavSingleReal& x) {
  return NarrowToResult(target, function, x);
}

/// The same, also for an x that is Any: the values of a function that does not take them all.
int NarrowToRange(ZULTavSingleReal& target, SubdefReal (*function)(const SubdefReal&),
                  const ZULTavSingleReal& x) {
  if (target.IsNil() || !x.IsAny()) return NarrowToImage(target, function, x);
  SDClearError();
  return target.Intersect(function(SubdefReal()));
}

/// Too big an angle for the trigonometric functions.
bool TooBig(double angle) { return !(std::fabs(angle) <= 1e14); }

/// The solver's trigonometric limits in radians, where they lie inside its window: beyond that the
/// interval library narrows nothing.
SubdefReal GetMaxTrigLimit() {
  double low = 0;
  double high = 0;
  ZULTaVoReal::GetTrigLimits(low, high);
  const SubdefReal window = GetTrigWindow();
  return {std::max(low, window.lower), std::min(high, window.upper)};
}

/// Inverse of a periodic function: `angle` is intersected with those angles, found by `inverse`,
/// whose function value is `value`. A fixed angle has the margin p.
int NarrowAngle(ZULTavSingleReal& angle, SubdefReal value, const SubdefReal& range,
                SubdefReal (*inverse)(const SubdefReal&, const SubdefReal&, const SubdefReal&)) {
  SDClearError();
  value.SDIntersect(range);
  if (SDCheckError()) return angle.Intersect(value);
  const double at = angle.GetValue();
  const double margin = ZULTaVoReal::GetPrecision();
  return angle.Intersect(Candidate(
      angle,
      inverse(value, angle.IsAny() ? GetMaxTrigLimit() : SubdefReal(at - margin, at + margin),
              GetTrigWindow())));
}

}  // namespace

// Sign and arithmetic -----------------------------------------------------------------------

int ZULTavSingleReal::CalcAbsoluteValue(const ZULTavSingleReal& y) {
  if (y.IsAny() && !IsNil()) return CheckRelation(*this, !Differ(mValue, std::max(mValue, 0.0)));
  return WithValues(
      *this, [&](double value) { return SettleReal(*this, std::fabs(value)); }, y);
}

int ZULTavSingleReal::CalcInverseAbsoluteValue(ZULTavSingleReal& y) const {
  return WithValues(
      y,
      [&](double value) {
        return CheckRelation(y,
                             value >= 0 && !(Differ(value, y.mValue) && Differ(value, -y.mValue)));
      },
      *this);
}

int ZULTavSingleReal::CalcNegativeValue(const ZULTavSingleReal& y) {
  return WithValues(
      *this, [&](double value) { return SettleReal(*this, 0 - value); }, y);
}

int ZULTavSingleReal::CalcInverseNegativeValue(ZULTavSingleReal& y) const {
  return y.CalcNegativeValue(*this);
}

int ZULTavSingleReal::CalcSignumValue(ZULTaVoInteger& sign) const {
  auto* integer = ZULTaVoCast<ZULTavSingleInteger>(&sign);
  if (integer == nullptr) return 0;
  ZULTavSingleReal own = *this;
  if (!IsNil() && !IsAny()) own.SetExactValue(Sign(mValue));
  return own.IntersectInverse(*integer);
}

int ZULTavSingleReal::CalcInverseSignumValue(const ZULTaVoInteger& sign) {
  if (IsNil()) return 0;
  if (sign.IsNil()) return Contradict(*this);
  if (!IsAny()) {
    const ZULTavSingleInteger own(static_cast<long>(Sign(mValue)));
    return CheckRelation(*this, sign.IsIntersected(own));
  }
  return sign.GetLowerBound() == 0 && sign.GetUpperBound() == 0 ? CalcZeroValue() : 0;
}

int ZULTavSingleReal::CalcSumValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b) {
  return NarrowToResult(*this, &SubdefReal::AddIntToInt, a, b);
}

int ZULTavSingleReal::CalcFirstInverseSumValue(ZULTavSingleReal& a,
                                               const ZULTavSingleReal& b) const {
  return NarrowToResult(a, &SubdefReal::SubIntFromInt, *this, b);
}

int ZULTavSingleReal::CalcProdValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b) {
  return NarrowToResult(*this, &SubdefReal::MultIntByInt, a, b);
}

int ZULTavSingleReal::CalcFirstInverseProdValue(ZULTavSingleReal& a,
                                                const ZULTavSingleReal& b) const {
  return NarrowToResult(a, &SubdefReal::DivIntByInt, *this, b);
}

int ZULTavSingleReal::CalcModValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b) {
  return WithValues(
      *this,
      [&](double x, double m) {
        return WithQuotient(x, m, [&](double n) { return NarrowToNumber(*this, x - n * m); });
      },
      a, b);
}

int ZULTavSingleReal::CalcFirstInverseModValue(ZULTavSingleReal& a,
                                               const ZULTavSingleReal& b) const {
  return WithValues(
      a,
      [&](double r, double m) {
        if (a.IsAny() || m == 0) return 0;
        if (CheckModValue(a.mValue, m, r)) return Contradict(a);
        return WithQuotient(a.mValue - r, m,
                            [&](double n) { return NarrowToNumber(a, n * m + r); });
      },
      *this, b);
}

int ZULTavSingleReal::CalcSecondInverseModValue(const ZULTavSingleReal& a,
                                                ZULTavSingleReal& b) const {
  return WithValues(
      b,
      [&](double r, double x) {
        if (b.IsAny() || b.mValue == 0) return 0;
        if (CheckModValue(x, b.mValue, r)) return Contradict(b);
        return WithQuotient(x - r, b.mValue,
                            [&](double n) { return n == 0 ? 0 : NarrowToNumber(b, (x - r) / n); });
      },
      *this, a);
}

// Power -------------------------------------------------------------------------------------

int ZULTavSingleReal::CalcPowerValue(const ZULTaVoNumber& a, const ZULTaVoNumber& b) {
  if (const auto* exponent = ZULTaVoCast<ZULTavSingleInteger>(&b)) {
    ZULTavSingleReal x;
    return x.Convert(a) ? CalcPowerValue(x, *exponent) : 0;
  }
  return ZULTaVoFrame::CalcPowerValue(a, b);
}

int ZULTavSingleReal::CalcPowerValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b) {
  return NarrowExactly(
      *this, [](const SubdefReal& x, const SubdefReal& y) { return pow(x, y); }, a, b);
}

int ZULTavSingleReal::CalcPowerValue(const ZULTavSingleReal& a, const ZULTavSingleInteger& b) {
  return NarrowExactly(
      *this, [&](const SubdefReal& x, auto) { return pow(x, SubIntBase(b.GetValue())); }, a,
      ZULTavSingleReal(b, 0));
}

int ZULTavSingleReal::CalcFirstInversePowerValue(ZULTavSingleReal& a,
                                                 const ZULTavSingleReal& b) const {
  return NarrowExactly(
      a, [](const SubdefReal& z, const SubdefReal& y) { return base(z, y); }, *this, b);
}

int ZULTavSingleReal::CalcFirstInversePowerValue(ZULTavSingleReal& a,
                                                 const ZULTavSingleInteger& b) const {
  return CalcFirstInversePowerValue(a, ZULTavSingleReal(b, 0));
}

int ZULTavSingleReal::CalcSecondInversePowerValue(const ZULTavSingleReal& a,
                                                  ZULTavSingleReal& b) const {
  return WithValues(
      b,
      [&](double r, double x) {
        const SDErrorScope errors;
        const SubdefInt whole =
            exponent(SubdefReal(r, r), SubdefReal(x, x), SubdefInt(b.GetSubdef()));
        // A base that is not negative may have an exponent between the whole ones.
        const bool isWhole = !b.IsAny() && b.mValue == std::floor(b.mValue);
        if (whole.IsEmpty()) return x < 0 || isWhole ? Contradict(b) : 0;
        SubdefReal candidates;
        candidates.SDIntersect(whole);
        SDClearError();
        return b.Intersect(candidates);
      },
      *this, a);
}

// Constants and elementary functions --------------------------------------------------------

int ZULTavSingleReal::CalcPiValue() { return NarrowToConstant(*this, std::numbers::pi); }
int ZULTavSingleReal::CalcEValue() { return NarrowToConstant(*this, std::numbers::e); }

int ZULTavSingleReal::CalcExpValue(const ZULTavSingleReal& x) {
  return NarrowToRange(*this, exp, x);
}

int ZULTavSingleReal::CalcInverseExpValue(ZULTavSingleReal& x) const {
  return NarrowToImage(x, log, *this);
}

int ZULTavSingleReal::CalcSqrtValue(const ZULTavSingleReal& x) {
  if (x.IsAny()) return NarrowToRange(*this, sqrt, x);
  return WithValues(
      *this,
      [&](double value) {
        return value < 0 ? Contradict(*this) : NarrowToNumber(*this, std::sqrt(value));
      },
      x);
}

int ZULTavSingleReal::CalcInverseSqrtValue(ZULTavSingleReal& x) const {
  return WithValues(
      x, [&](double value) { return value < 0 ? Contradict(x) : NarrowToNumber(x, value * value); },
      *this);
}

int ZULTavSingleReal::CalcSinValue(const ZULTavSingleReal& x) {
  return NarrowToRange(
      *this,
      [](const SubdefReal& value) { return TooBig(value.lower) ? SubdefReal(-1, 1) : sin(value); },
      x);
}

int ZULTavSingleReal::CalcInverseSinValue(ZULTavSingleReal& x) const {
  return WithValues(
      x,
      [&](double value) {
        return NarrowAngle(x, {value, value}, {-1, 1}, asin);
      },
      *this);
}

int ZULTavSingleReal::CalcCosValue(const ZULTavSingleReal& x) {
  return NarrowToRange(
      *this,
      [](const SubdefReal& value) { return TooBig(value.lower) ? SubdefReal(-1, 1) : cos(value); },
      x);
}

int ZULTavSingleReal::CalcInverseCosValue(ZULTavSingleReal& x) const {
  return WithValues(
      x,
      [&](double value) {
        return NarrowAngle(x, {value, value}, {-1, 1}, acos);
      },
      *this);
}

int ZULTavSingleReal::CalcTanValue(const ZULTavSingleReal& x) {
  return NarrowToResult(
      *this,
      [](const SubdefReal& value) { return TooBig(value.lower) ? SubdefReal() : tan(value); }, x);
}

int ZULTavSingleReal::CalcInverseTanValue(ZULTavSingleReal& x) const {
  return WithValues(
      x,
      [&](double value) {
        if (!x.IsAny() && TooBig(x.mValue)) return 0;
        return NarrowAngle(x, {value, value}, SubdefReal(), atan);
      },
      *this);
}

int ZULTavSingleReal::CalcFloorValue(const ZULTavSingleReal& x) {
  return WithValues(
      *this, [&](double value) { return NarrowToNumber(*this, std::floor(value)); }, x);
}

int ZULTavSingleReal::CalcInverseFloorValue(ZULTavSingleReal& x) const {
  return WithValues(
      x, [&](double r) { return CheckRelation(x, !Differ(r, std::floor(x.mValue))); }, *this);
}

int ZULTavSingleReal::CalcCeilValue(const ZULTavSingleReal& x) {
  return WithValues(
      *this, [&](double value) { return NarrowToNumber(*this, std::ceil(value)); }, x);
}

int ZULTavSingleReal::CalcInverseCeilValue(ZULTavSingleReal& x) const {
  return WithValues(
      x, [&](double r) { return CheckRelation(x, !Differ(r, std::ceil(x.mValue))); }, *this);
}

int ZULTavSingleReal::CalcRoundValue(const ZULTavSingleReal& x) {
  return WithValues(
      *this, [&](double value) { return NarrowToNumber(*this, my_round(value)); }, x);
}

int ZULTavSingleReal::CalcInverseRoundValue(ZULTavSingleReal& x) const {
  return WithValues(
      x, [&](double r) { return CheckRelation(x, !Differ(r, my_round(x.mValue))); }, *this);
}

double ZULTavSingleReal::my_round(double value) {
  double whole = 0;
  const double fraction = std::modf(value, &whole);
  return fraction >= 0.5 ? whole + 1 : fraction <= -0.5 ? whole - 1 : whole;
}
