#include "numbers/ZULTavIntervalInteger.h"

#include <algorithm>

#include "framework/solver/ZULTaVoBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/detail/IntegerModulo.h"
#include "numbers/detail/IntervalDispatch.h"
#include "numbers/detail/Narrowing.h"
#include "numbers/detail/SlotBodies.h"

using namespace zultav::detail;

template class zultav::detail::IntegerSlots<ZULTavIntervalInteger,
                                            zultav::detail::IntervalDispatch>;
template class ZULTaVoFrame<ZULTavIntervalInteger,
                            IntegerSlots<ZULTavIntervalInteger, IntervalDispatch>>;

ZULStreamableClass rZULTavIntervalInteger_Descriptor =
    ZULTavIntervalInteger::MakeDescriptorRecord();
ZULStreamableClass rZULTavIntervalInteger = ZULTavIntervalInteger::MakeRecord();

namespace {

using Interval = ZULTavIntervalInteger;
using Single = ZULTavSingleInteger;

SubIntBase Bound(long value) {
  const long limit = SubdefInt::sMaxValue;
  if (value == limit + 1 || value == -limit - 1) return value;
  return std::clamp(value, -limit, limit);
}

long SignOf(long value) { return (value > 0) - (value < 0); }

/// Hull of part(p) over the non-empty parts p of one sign that `set` has.
template <class Part>
SubdefInt HullOfParts(const SubdefInt& set, Part part) {
  SubdefInt hull = SubdefInt::Empty();
  SubdefInt piece;
  if (GetMinusPart(set, piece)) hull = hull.mf_Union(part(piece));
  if (GetZeroPart(set, piece)) hull = hull.mf_Union(part(piece));
  if (GetPlusPart(set, piece)) hull = hull.mf_Union(part(piece));
  return hull;
}

/// Remainders of r that the signs and magnitudes of a and b allow, and the quotients q of
/// a = q*b + r; both empty when there are none.
struct Division {
  Division(const SubdefInt& a, const SubdefInt& b, const SubdefInt& r)
      : remainder(r), quotient(SubdefInt::Empty()) {
    if (CheckModValue(a, b, remainder)) return;
    quotient = a.SubIntFromInt(remainder).DivIntByInt(b, 0);
  }

  SubdefInt remainder;
  SubdefInt quotient;
};

}  // namespace

ZULTavIntervalInteger::ZULTavIntervalInteger(long lower, long upper)
    : mSet(Bound(lower), Bound(upper)) {}

ZULTavIntervalInteger::ZULTavIntervalInteger(const ZULTavSingleInteger& value, int)
    : ZULTavIntervalInteger(value.GetLowerBound(), value.GetUpperBound()) {}

void ZULTavIntervalInteger::Write(ZULopstream& out) const {
  out << GetLowerBound() << GetUpperBound();
}

void ZULTavIntervalInteger::Read(ZULipstream& in) {
  long lower = 0, upper = 0;
  in >> lower >> upper;
  SetLowerBound(lower);
  SetUpperBound(upper);
}

void ZULTavIntervalInteger::CheckValue() {
  if (SDCheckError()) SetNil();
  SDClearError();
  NarrowTo(mSet, IntegerInterval::Whole());
}

// States and set operations --------------------------------------------------------------------

int ZULTavIntervalInteger::Assign(const ZULTaVoAny& other) {
  if (const auto* interval = ZULTaVoCast<ZULTavIntervalInteger>(&other)) {
    mSet = interval->mSet;
  } else if (const auto* truth = ZULTaVoCast<ZULTaVoBoolean>(&other)) {
    mSet = truth->IsTrue()    ? SubdefInt(1, 1)
           : truth->IsFalse() ? SubdefInt(0, 0)
           : truth->IsAny()   ? SubdefInt(0, 1)
                              : SubdefInt(IntegerInterval::Empty());
  } else if (!Convert(other)) {
    SetNil();
  }
  return 1;
}

bool ZULTavIntervalInteger::Convert(const ZULTaVoAny& value) {
  const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value);
  if (integer == nullptr) return false;
  mSet = SubdefInt(Bound(integer->GetLowerBound()), Bound(integer->GetUpperBound()));
  return true;
}

void ZULTavIntervalInteger::SetNil() { mSet = IntegerInterval::Empty(); }
void ZULTavIntervalInteger::SetAny() { mSet = IntegerInterval::Whole(); }

int ZULTavIntervalInteger::IsIntersected(const ZULTaVoAny& other) const {
  ZULTavIntervalInteger common;
  common.Assign(other);
  common.Intersect(*this);
  return !IsNil() && !common.IsNil();
}

int ZULTavIntervalInteger::Intersect(const ZULTaVoAny& other) {
  const interval_dispatch::Operand<ZULTavIntervalInteger> operand(other);
  return operand.IsForeign() ? StoreEmpty(mSet) : Intersect(*operand);
}

int ZULTavIntervalInteger::Intersect(const ZULTavIntervalInteger& other) {
  return NarrowTo(mSet, other.mSet);
}

int ZULTavIntervalInteger::Intersect(const ZULTavSingleInteger& other) {
  return Intersect(ZULTavIntervalInteger(other, 0));
}

int ZULTavIntervalInteger::IntersectInverse(ZULTavSingleInteger& target) const {
  if (target.IsNil()) return 0;
  if (target.IsAny() && !IsNil()) {
    if (!mSet.IsScalar()) return 0;
    target.SetExactValue(mSet.lower);
    return 1;
  }
  if (mSet.Contains(target.GetLowerBound())) return 0;
  target.SetNil();
  return 1;
}

int ZULTavIntervalInteger::IntersectInverse(ZULTaVoAny& target) const {
  if (auto* interval = ZULTaVoCast<ZULTavIntervalInteger>(&target))
    return interval->Intersect(*this);
  if (auto* single = ZULTaVoCast<ZULTavSingleInteger>(&target)) return IntersectInverse(*single);
  auto* integer = ZULTaVoCast<ZULTaVoInteger>(&target);
  if (integer == nullptr || integer->IsNil()) return 0;
  // An infinite side says nothing about bounds beyond it.
  const long limit = SubdefInt::sMaxValue;
  const long lower = mSet.lower <= -limit ? integer->GetLowerBound() : long{mSet.lower};
  const long upper = mSet.upper >= limit ? integer->GetUpperBound() : long{mSet.upper};
  return NarrowBounds(*integer, IsNil(), lower, upper);
}

int ZULTavIntervalInteger::Unite(const ZULTaVoAny& other) {
  if (const auto* interval = ZULTaVoCast<ZULTavIntervalInteger>(&other)) return Unite(*interval);
  const auto* single = ZULTaVoCast<ZULTavSingleInteger>(&other);
  return single != nullptr ? Unite(ZULTavIntervalInteger(*single, 0)) : StoreEmpty(mSet);
}

int ZULTavIntervalInteger::Unite(const ZULTavIntervalInteger& other) {
  if (other.IsNil()) return 0;
  const bool grows = IsNil() || other.mSet.upper > mSet.upper;
  mSet = mSet.mf_Union(other.mSet);
  return grows;
}

long ZULTavIntervalInteger::GetCardinality() const {
  if (IsNil()) return 0;
  if (IsAny()) return -2;
  return static_cast<long>(std::int64_t{mSet.upper} - mSet.lower + 1);
}

void ZULTavIntervalInteger::Bisect(ZULTaVoObject& other, ValueSelection selection) {
  auto* half = ZULTaVoCast<ZULTavIntervalInteger>(&other);
  if (half == nullptr || IsNil()) {
    if (half != nullptr) half->SetNil();
    SetNil();
    return;
  }
  const long low = mSet.lower, high = mSet.upper;
  const long middle = low < 0 && high > 0 ? (low + high) / 2 - 1 : low + (high - low) / 2;
  switch (static_cast<int>(selection)) {
    case kLowerHalf:
      half->mSet = SubdefInt(low, middle);
      mSet = SubdefInt(middle + 1, high);
      break;
    case kUpperHalf:
      half->mSet = SubdefInt(middle + 1, high);
      mSet = SubdefInt(low, middle);
      break;
    case kLeastValue:
      half->mSet = SubdefInt(low, low);
      mSet = SubdefInt(low + 1, high);
      break;
    case kGreatestValue:
      half->mSet = SubdefInt(high, high);
      mSet = SubdefInt(low, high - 1);
      break;
    default:
      SetNil();
  }
}

// Exact values and bounds ----------------------------------------------------------------------

void ZULTavIntervalInteger::SetExactValue(long value) {
  mSet = SubdefInt(Bound(value), Bound(value));
}
void ZULTavIntervalInteger::SetLowerBound(long value) { mSet.lower = Bound(value); }
void ZULTavIntervalInteger::SetUpperBound(long value) { mSet.upper = Bound(value); }

int ZULTavIntervalInteger::InsertExactValue(long value) {
  if (IsAny()) return 0;
  const SubdefInt before = mSet;
  mSet = mSet.mf_Union(SubdefInt(Bound(value), Bound(value)));
  return !(mSet == before);
}

int ZULTavIntervalInteger::RemoveExactValue(long value) {
  if (IsNil() || IsAny() || (value != mSet.lower && value != mSet.upper)) return 0;
  if (mSet.IsScalar()) return StoreEmpty(mSet);
  if (value == mSet.lower) {
    mSet.lower = value + 1;
  } else {
    mSet.upper = value - 1;
  }
  return 1;
}

long ZULTavIntervalInteger::GetNextExactValue(long value) const {
  if (IsNil() || value > mSet.upper) return value;
  return value < mSet.lower ? long{mSet.lower} : value + 1;
}

long ZULTavIntervalInteger::GetPrevExactValue(long value) const {
  if (IsNil() || value < mSet.lower) return value;
  return value > mSet.upper ? long{mSet.upper} : value - 1;
}

// Typed operations -----------------------------------------------------------------------------

int ZULTavIntervalInteger::CalcMinValue() {
  return NarrowTo(mSet, SubdefInt(-SubdefInt::sMaxValue, -SubdefInt::sMaxValue));
}

int ZULTavIntervalInteger::CalcMaxValue() {
  return NarrowTo(mSet, SubdefInt(SubdefInt::sMaxValue, SubdefInt::sMaxValue));
}

int ZULTavIntervalInteger::CalcZeroValue() { return NarrowTo(mSet, SubdefInt(0, 0)); }
int ZULTavIntervalInteger::CalcOneValue() { return NarrowTo(mSet, SubdefInt(1, 1)); }

int ZULTavIntervalInteger::CalcLessOrEqualValue(const Interval& y) {
  return NarrowBound(mSet, y.mSet, [](SubdefInt& x, const SubdefInt& bound) {
    if (x.upper <= bound.upper) return 0;
    x.upper = bound.upper;
    return 1;
  });
}

int ZULTavIntervalInteger::CalcInverseLessOrEqualValue(Interval& y) const {
  return NarrowBound(y.mSet, mSet, [](SubdefInt& x, const SubdefInt& bound) {
    if (x.lower >= bound.lower) return 0;
    x.lower = bound.lower;
    return 1;
  });
}

int ZULTavIntervalInteger::CalcLessValue(const Interval& y) {
  return NarrowBound(mSet, y.mSet, [](SubdefInt& x, const SubdefInt& bound) {
    if (x.upper < bound.upper) return 0;
    x.upper = SubIntBase::base_minus(bound.upper, 1);
    return x.upper == bound.upper ? StoreEmpty(x) : 1;  // nothing is less than the least value
  });
}

int ZULTavIntervalInteger::CalcInverseLessValue(Interval& y) const {
  return NarrowBound(y.mSet, mSet, [](SubdefInt& x, const SubdefInt& bound) {
    if (x.lower > bound.lower) return 0;
    x.lower = SubIntBase::base_plus(bound.lower, 1);
    return x.lower == bound.lower ? StoreEmpty(x) : 1;
  });
}

int ZULTavIntervalInteger::CalcNextValue(const Interval& y) {
  return Narrow(
      mSet,
      [](const SubdefInt& set) {
        return set.lower == SubdefInt::sMaxValue ? IntegerInterval::Empty() : set.AddNumToInt(1);
      },
      y.mSet);
}

int ZULTavIntervalInteger::CalcInverseNextValue(Interval& y) const {
  return Narrow(
      y.mSet,
      [](const SubdefInt& set) {
        return set.upper == -SubdefInt::sMaxValue ? IntegerInterval::Empty() : set.subNumFromInt(1);
      },
      mSet);
}

int ZULTavIntervalInteger::CalcAbsoluteValue(const Interval& y) {
  return Narrow(mSet, &IntegerInterval::mf_Abs, y.mSet);
}

int ZULTavIntervalInteger::CalcInverseAbsoluteValue(Interval& y) const {
  return Narrow(
      y.mSet, [](const SubdefInt& z, const SubdefInt& x) { return InverseAbs(z, x); }, mSet,
      y.mSet);
}

int ZULTavIntervalInteger::CalcNegativeValue(const Interval& y) {
  return Narrow(mSet, &IntegerInterval::mf_Neg, y.mSet);
}

int ZULTavIntervalInteger::CalcInverseNegativeValue(Interval& y) const {
  return Narrow(y.mSet, &IntegerInterval::mf_Neg, mSet);
}

int ZULTavIntervalInteger::CalcSignumValue(ZULTaVoInteger& sign) const {
  if (sign.IsNil()) return 0;
  if (IsNil()) {
    sign.SetNil();
    return 1;
  }
  return ZULTavIntervalInteger(SignOf(mSet.lower), SignOf(mSet.upper)).CalcInverseEqualValue(sign);
}

int ZULTavIntervalInteger::CalcInverseSignumValue(const ZULTaVoInteger& sign) {
  if (IsNil()) return 0;
  if (sign.IsNil()) return StoreEmpty(mSet);
  const auto allows = [&](int value) { return sign.IsIntersected(Single(value)); };
  const bool negative = allows(-1), zero = allows(0), positive = allows(1);
  if (negative && positive && !zero) return RemoveExactValue(0);
  const long limit = SubdefInt::sMaxValue;
  const long lower = negative ? -limit : !zero;
  const long upper = positive ? limit : -!zero;
  return NarrowTo(mSet, SubdefInt(lower, upper));
}

int ZULTavIntervalInteger::CalcMinValue(const Interval& a, const Interval& b) {
  return Narrow(mSet, &IntegerInterval::mf_Min, a.mSet, b.mSet);
}

int ZULTavIntervalInteger::CalcFirstInverseMinValue(Interval& a, const Interval& b) const {
  return Narrow(
      a.mSet, [](const SubdefInt& z, const SubdefInt& y) { return InverseMin(z, y); }, mSet,
      b.mSet);
}

int ZULTavIntervalInteger::CalcMaxValue(const Interval& a, const Interval& b) {
  return Narrow(mSet, &IntegerInterval::mf_Max, a.mSet, b.mSet);
}

int ZULTavIntervalInteger::CalcFirstInverseMaxValue(Interval& a, const Interval& b) const {
  return Narrow(
      a.mSet, [](const SubdefInt& z, const SubdefInt& y) { return InverseMax(z, y); }, mSet,
      b.mSet);
}

int ZULTavIntervalInteger::CalcSumValue(const Interval& a, const Interval& b) {
  return Narrow(mSet, &IntegerInterval::AddIntToInt, a.mSet, b.mSet);
}

int ZULTavIntervalInteger::CalcFirstInverseSumValue(Interval& a, const Interval& b) const {
  return Narrow(a.mSet, &IntegerInterval::SubIntFromInt, mSet, b.mSet);
}

int ZULTavIntervalInteger::CalcProdValue(const Interval& a, const Interval& b) {
  return Narrow(mSet, &IntegerInterval::MultIntByInt, a.mSet, b.mSet);
}

int ZULTavIntervalInteger::CalcFirstInverseProdValue(Interval& a, const Interval& b) const {
  return Narrow(
      a.mSet, [](const SubdefInt& z, const SubdefInt& y) { return z.DivIntByInt(y, 0); }, mSet,
      b.mSet);
}

int ZULTavIntervalInteger::CalcModValue(const Interval& a, const Interval& b) {
  return Narrow(
      mSet,
      [](SubdefInt r, const SubdefInt& x, const SubdefInt& y) {
        CalcAllModValue(x, y, r);
        return r;
      },
      mSet, a.mSet, b.mSet);
}

int ZULTavIntervalInteger::CalcFirstInverseModValue(Interval& a, const Interval& b) const {
  return Narrow(
      a.mSet,
      [](const SubdefInt& x, const SubdefInt& y, const SubdefInt& r) {
        const Division division(x, y, r);
        return division.quotient.MultIntByInt(y).AddIntToInt(division.remainder);
      },
      a.mSet, b.mSet, mSet);
}

int ZULTavIntervalInteger::CalcSecondInverseModValue(const Interval& a, Interval& b) const {
  return Narrow(
      b.mSet,
      [](const SubdefInt& x, const SubdefInt& y, const SubdefInt& r) -> IntegerInterval {
        const Division division(x, y, r);
        if (division.quotient.Contains(0)) return y;  // any divisor beyond the dividend will do
        return x.SubIntFromInt(division.remainder).DivIntByInt(division.quotient, 0);
      },
      a.mSet, b.mSet, mSet);
}

int ZULTavIntervalInteger::CalcPowerValue(const Interval& a, const Interval& b) {
  return Narrow(
      mSet,
      [](const SubdefInt& x, const SubdefInt& n) {
        return HullOfParts(x, [&](const SubdefInt& part) { return pow(part, n); });
      },
      a.mSet, b.mSet);
}

int ZULTavIntervalInteger::CalcFirstInversePowerValue(Interval& a, const Interval& b) const {
  return Narrow(
      a.mSet,
      [](const SubdefInt& z, const SubdefInt& x, const SubdefInt& n) {
        return HullOfParts(x, [&](const SubdefInt& part) { return base(z, part, n); });
      },
      mSet, a.mSet, b.mSet);
}

int ZULTavIntervalInteger::CalcSecondInversePowerValue(const Interval& a, Interval& b) const {
  return Narrow(
      b.mSet,
      [](const SubdefInt& z, const SubdefInt& x, const SubdefInt& n) {
        return HullOfParts(x, [&](const SubdefInt& part) { return exponent(z, part, n); });
      },
      mSet, a.mSet, b.mSet);
}

// Overloads for a mix of classes ----------------------------------------------------------------

using Mixed = IntervalDispatch<Interval>;

#define MIXED(T, SHAPE, NAME, ABSTRACT) MIXED_##SHAPE(T, NAME)
#define MIXED_Unary(T, NAME)                                       \
  int T::CalcInverse##NAME##Value(Single& y) const {               \
    return Mixed::Inverse(*this, &T::CalcInverse##NAME##Value, y); \
  }
#define MIXED_Symmetric(T, NAME)                                             \
  int T::CalcFirstInverse##NAME##Value(Single& a, const Interval& b) const { \
    return Mixed::Inverse(*this, &T::CalcFirstInverse##NAME##Value, a, b);   \
  }
#define MIXED_Binary(T, NAME)                                                     \
  int T::CalcSecondInverse##NAME##Value(const Interval& a, Single& b) const {     \
    return Mixed::SecondInverse(*this, &T::CalcSecondInverse##NAME##Value, a, b); \
  }                                                                               \
  MIXED_Symmetric(T, NAME)
ZULTAV_SCALAR_OPERATIONS(MIXED, ZULTavIntervalInteger)
ZULTAV_ARITHMETIC_OPERATIONS(MIXED, ZULTavIntervalInteger)
#undef MIXED
#undef MIXED_Unary
#undef MIXED_Symmetric
#undef MIXED_Binary

int ZULTavIntervalInteger::CalcPowerValue(const Single& a, const Interval& b) {
  return Mixed::Forward(*this, &Interval::CalcPowerValue, a, b);
}

int ZULTavIntervalInteger::CalcFirstInversePowerValue(Interval& a, const Single& b) const {
  return Mixed::Inverse(*this, &Interval::CalcFirstInversePowerValue, a, b);
}
