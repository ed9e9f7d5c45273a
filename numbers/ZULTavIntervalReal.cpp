#include "numbers/ZULTavIntervalReal.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "numbers/detail/IntervalDispatch.h"
#include "numbers/detail/Narrowing.h"
#include "numbers/detail/SlotBodies.h"

using namespace zultav::detail;

template class zultav::detail::RealSlots<ZULTavIntervalReal, zultav::detail::IntervalDispatch>;
template class ZULTaVoFrame<ZULTavIntervalReal, RealSlots<ZULTavIntervalReal, IntervalDispatch>>;

ZULStreamableClass rZULTavIntervalReal_Descriptor = ZULTavIntervalReal::MakeDescriptorRecord();
ZULStreamableClass rZULTavIntervalReal = ZULTavIntervalReal::MakeRecord();

namespace {

double Bound(double value) {
  return std::clamp(value, -SubdefReal::sMaxValue, SubdefReal::sMaxValue);
}

long Sign(double value) { return (value > 0) - (value < 0); }

SubdefReal Point(double value) { return {value, value}; }

/// Picks the overload on real sets.
using BinaryFunction = SubdefReal (*)(const SubdefReal&, const SubdefReal&);
BinaryFunction Binary(BinaryFunction function) { return function; }

}  // namespace

ZULTavIntervalReal::ZULTavIntervalReal(double lower, double upper) : mSet(lower, upper) {
  if (std::isnan(lower) || std::isnan(upper)) ZULTavIntervalReal::SetNil();
  CheckValue();
}

ZULTavIntervalReal::ZULTavIntervalReal(const ZULTavSingleReal& from, int) : mSet(from.GetSubdef()) {
  NarrowTo(mSet, SubdefReal());
}

ZULTavIntervalReal::ZULTavIntervalReal(const ZULTavSingleInteger& from, int)
    : ZULTavIntervalReal(ZULTavSingleReal(from, 0), 0) {}

ZULTavIntervalReal::ZULTavIntervalReal(const ZULTavIntervalInteger& from, int)
    : ZULTavIntervalReal(static_cast<double>(from.GetLowerBound()),
                         static_cast<double>(from.GetUpperBound())) {}

ZULTavIntervalReal& ZULTavIntervalReal::operator=(const ZULTavSingleReal& from) {
  return *this = ZULTavIntervalReal(from, 0);
}

ZULTavIntervalReal& ZULTavIntervalReal::operator=(const ZULTavSingleInteger& from) {
  return *this = ZULTavIntervalReal(from, 0);
}

ZULTavIntervalReal& ZULTavIntervalReal::operator=(const ZULTavIntervalInteger& from) {
  return *this = ZULTavIntervalReal(from, 0);
}

ZULTavIntervalReal::~ZULTavIntervalReal() = default;

void ZULTavIntervalReal::Write(ZULopstream& out) const { out << mSet.lower << mSet.upper; }

void ZULTavIntervalReal::Read(ZULipstream& in) {
  SubdefReal set;
  in >> set.lower >> set.upper;
  if (std::isnan(set.lower) || std::isnan(set.upper)) in.Fail("a bound is no number");
  SetSubdef(set);
}

// Sets --------------------------------------------------------------------------------------

bool ZULTavIntervalReal::Convert(const ZULTaVoAny& value) {
  if (const auto* real = ZULTaVoCast<ZULTaVoReal>(&value)) {
    SetSubdef({real->GetLowerBound(), real->GetUpperBound()});
  } else if (const auto* single = ZULTaVoCast<ZULTavSingleInteger>(&value)) {
    *this = *single;
  } else if (const auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value)) {
    SetSubdef({static_cast<double>(integer->GetLowerBound()),
               static_cast<double>(integer->GetUpperBound())});
  } else {
    return false;
  }
  return true;
}

int ZULTavIntervalReal::Assign(const ZULTaVoAny& other) {
  const SubdefReal before = mSet;
  if (!Convert(other)) SetNil();
  return !(mSet == before);
}

void ZULTavIntervalReal::SetNil() { StoreEmpty(mSet); }

void ZULTavIntervalReal::SetAny() { mSet = SubdefReal(); }

int ZULTavIntervalReal::IsAny() const {
  return mSet.lower <= -SubdefReal::sMaxValue && mSet.upper >= SubdefReal::sMaxValue;
}

int ZULTavIntervalReal::IsIntersected(const ZULTaVoAny& other) const {
  ZULTavIntervalReal common;
  common.Assign(other);
  if (IsNil() || common.IsNil()) return 0;
  common.mSet.Intersect(mSet);
  return !common.IsNil();
}

int ZULTavIntervalReal::Intersect(const ZULTaVoAny& other) {
  ZULTavIntervalReal set;
  set.Assign(other);
  return Intersect(set);
}

int ZULTavIntervalReal::Intersect(const ZULTavIntervalReal& other) {
  return NarrowTo(mSet, other.mSet);
}

int ZULTavIntervalReal::IntersectInverse(ZULTaVoAny& value) const {
  if (auto* integers = ZULTaVoCast<ZULTavIntervalInteger>(&value))
    return IntersectInverse(*integers);
  if (auto* real = ZULTaVoCast<ZULTavSingleReal>(&value)) return IntersectInverse(*real);
  if (auto* integer = ZULTaVoCast<ZULTavSingleInteger>(&value)) return IntersectInverse(*integer);
  if (value.IsNil()) return 0;
  // An infinite side says nothing about what a value of another module holds beyond it.
  if (auto* real = ZULTaVoCast<ZULTaVoReal>(&value)) {
    const double max = SubdefReal::sMaxValue;
    return NarrowBounds(*real, IsNil(), mSet.lower <= -max ? -HUGE_VAL : mSet.lower,
                        mSet.upper >= max ? HUGE_VAL : mSet.upper);
  }
  if (auto* integer = ZULTaVoCast<ZULTaVoInteger>(&value)) {
    const SubdefInt whole(mSet);
    const long max = SubdefInt::sMaxValue;
    return NarrowBounds(*integer, whole.IsEmpty(),
                        whole.lower <= -max ? LONG_MIN : long{whole.lower},
                        whole.upper >= max ? LONG_MAX : long{whole.upper});
  }
  return 0;
}

int ZULTavIntervalReal::IntersectInverse(ZULTavSingleReal& value) const {
  if (value.IsNil()) return 0;
  if (value.IsAny() && !IsNil()) {
    if (!mSet.IsScalar()) return 0;
    value.SetExactValue(mSet.lower);
    return 1;
  }
  if (mSet.Contains(value.GetValue())) return 0;
  value.SetNil();
  return 1;
}

int ZULTavIntervalReal::IntersectInverse(ZULTavSingleInteger& value) const {
  if (value.IsNil()) return 0;
  if (value.IsAny() && !IsNil()) {
    if (!mSet.IsScalar()) return 0;
    const double number = mSet.lower;
    if (std::fabs(number) > static_cast<double>(ZULTavSingleInteger::sNC_INT_MAX)) return 0;
    if (number == std::floor(number)) {
      value.SetExactValue(static_cast<long>(number));
    } else {
      value.SetNil();
    }
    return 1;
  }
  if (mSet.Contains(static_cast<double>(value.GetValue()))) return 0;
  value.SetNil();
  return 1;
}

int ZULTavIntervalReal::IntersectInverse(ZULTavIntervalInteger& value) const {
  return Narrow(
      value.GetSubdef(), [](const SubdefReal& set) { return SubdefInt(set); }, mSet);
}

int ZULTavIntervalReal::Unite(const ZULTaVoAny& other) {
  if (other.IsNil()) return 0;
  ZULTavIntervalReal set;
  set.Convert(other);  // a foreign value may be anything
  return Unite(set);
}

int ZULTavIntervalReal::Unite(const ZULTavIntervalReal& other) {
  const SubdefReal before = mSet;
  mSet = mSet.mf_Union(other.mSet);
  return !(mSet == before);
}

long ZULTavIntervalReal::GetCardinality() const {
  constexpr double kMaxCount = 4294967294.0;
  if (IsNil()) return 0;
  if (IsAny()) return -2;
  if (mSet.IsScalar()) return 1;
  const double precision = GetPrecision();
  const double reach = precision * kMaxCount;
  if (mSet.lower + reach <= mSet.upper && mSet.lower < ZULTavSingleReal::sNC_REAL_MAX - reach)
    return -2;
  const double count = (mSet.upper - mSet.lower) / precision + 1;
  const bool fits = count < static_cast<double>(std::numeric_limits<long>::max());
  return fits ? static_cast<long>(count) : -2;
}

void ZULTavIntervalReal::Bisect(ZULTaVoObject& other, ValueSelection selection) {
  auto* part = ZULTaVoCast<ZULTavIntervalReal>(&other);
  if (part == nullptr || IsNil()) {
    if (part != nullptr) part->SetNil();
    SetNil();
    return;
  }
  const auto [low, high] = static_cast<const RealInterval&>(mSet);
  const double middle = (low + high) * 0.5;
  switch (static_cast<int>(selection)) {
    case kLowerHalf:
      part->mSet = {low, middle};
      mSet = {middle, high};
      break;
    case kUpperHalf:
      part->mSet = {middle, high};
      mSet = {low, middle};
      break;
    case kLeastValue:
      part->mSet = Point(low);
      mSet = {low + GetPrecision(), high};
      break;
    case kGreatestValue:
      part->mSet = Point(high);
      mSet = {low, high - GetPrecision()};
      break;
    default:
      SetNil();
  }
}

void ZULTavIntervalReal::CheckValue() {
  if (SDCheckError()) SetNil();
  SDClearError();
  NarrowTo(mSet, SubdefReal());
}

// Values and bounds -------------------------------------------------------------------------

void ZULTavIntervalReal::SetSubdef(const SubdefReal& set) {
  if (std::isnan(set.lower) || std::isnan(set.upper)) {
    SetNil();
  } else {
    mSet = {Bound(set.lower), Bound(set.upper)};
  }
}

void ZULTavIntervalReal::SetExactValue(double value) { SetSubdef(Point(value)); }

void ZULTavIntervalReal::SetLowerBound(double value) { SetSubdef({value, mSet.upper}); }

void ZULTavIntervalReal::SetUpperBound(double value) { SetSubdef({mSet.lower, value}); }

int ZULTavIntervalReal::InsertExactValue(double value) {
  ZULTavIntervalReal point;
  point.SetExactValue(value);
  return Unite(point);
}

int ZULTavIntervalReal::RemoveExactValue(double value) {
  if (IsNil() || IsAny()) return 0;
  const SubdefReal before = mSet;
  const double step = 2 * GetPrecision();
  if (value == before.lower) mSet.lower += step;
  if (value == before.upper) mSet.upper -= step;
  return !(mSet == before);
}

// Constants and relations -------------------------------------------------------------------

int ZULTavIntervalReal::CalcMinValue() { return NarrowTo(mSet, Point(-SubdefReal::sMaxValue)); }
int ZULTavIntervalReal::CalcMaxValue() { return NarrowTo(mSet, Point(SubdefReal::sMaxValue)); }
int ZULTavIntervalReal::CalcZeroValue() { return NarrowTo(mSet, Point(0)); }
int ZULTavIntervalReal::CalcOneValue() { return NarrowTo(mSet, Point(1)); }

int ZULTavIntervalReal::CalcPiValue() {
  return NarrowTo(mSet, SubdefReal(3.141592653489793, 3.141592653689793));
}

int ZULTavIntervalReal::CalcEValue() {
  return NarrowTo(mSet, SubdefReal(2.718281828359045, 2.718281828559045));
}

int ZULTavIntervalReal::CalcEqualValue(const ZULTavIntervalReal& y) { return Intersect(y); }

int ZULTavIntervalReal::CalcInverseEqualValue(ZULTavIntervalReal& y) const {
  return y.Intersect(*this);
}

int ZULTavIntervalReal::CalcLessOrEqualValue(const ZULTavIntervalReal& y) {
  return NarrowBound(mSet, y.mSet, [](SubdefReal& set, const SubdefReal& other) {
    if (set.upper - GetCompPrecision() <= other.upper) return 0;
    set.upper = other.upper;
    return 1;
  });
}

int ZULTavIntervalReal::CalcInverseLessOrEqualValue(ZULTavIntervalReal& y) const {
  return NarrowBound(y.mSet, mSet, [](SubdefReal& set, const SubdefReal& other) {
    if (other.lower - GetCompPrecision() <= set.lower) return 0;
    set.lower = other.lower;
    return 1;
  });
}

namespace {

constexpr double kStrictStep = 0.1;  // of the precision

/// x < y is impossible for sets that are single values but for rounding, and touch.
bool AreOneValue(const SubdefReal& x, double xEps, const SubdefReal& y, double yEps) {
  return std::fabs(y.lower - x.upper) < yEps && y.upper - y.lower < yEps &&
         x.upper - x.lower < xEps;
}

}  // namespace

int ZULTavIntervalReal::CalcLessValue(const ZULTavIntervalReal& y) {
  return NarrowBound(mSet, y.mSet, [](SubdefReal& set, const SubdefReal& other) {
    const double setEps = GetRelEps(set.lower);
    const double otherEps = GetRelEps(other.upper);
    if (other.upper - 1.5 * otherEps < set.lower || AreOneValue(set, setEps, other, otherEps))
      return StoreEmpty(set);
    if (other.upper > set.upper) return 0;
    const double before = set.upper;
    set.upper = other.upper - kStrictStep * GetPrecision();
    return set.upper != before ? 1 : 0;
  });
}

int ZULTavIntervalReal::CalcInverseLessValue(ZULTavIntervalReal& y) const {
  return NarrowBound(y.mSet, mSet, [](SubdefReal& set, const SubdefReal& other) {
    const double otherEps = GetRelEps(other.lower);
    const double setEps = GetRelEps(set.lower);
    if (set.upper < other.lower + 1.5 * otherEps || AreOneValue(other, otherEps, set, setEps))
      return StoreEmpty(set);
    if (set.lower > other.lower) return 0;
    const double before = set.lower;
    set.lower = other.lower + kStrictStep * GetPrecision();
    return set.lower != before ? 1 : 0;
  });
}

int ZULTavIntervalReal::CalcNotLessAndUnequalValue(const ZULTavIntervalReal& y) {
  return y.CalcInverseLessValue(*this);
}

int ZULTavIntervalReal::CalcInverseNotLessAndUnequalValue(ZULTavIntervalReal& y) const {
  return y.CalcLessValue(*this);
}

int ZULTavIntervalReal::CalcNotLessValue(const ZULTavIntervalReal& y) {
  return y.CalcInverseLessOrEqualValue(*this);
}

int ZULTavIntervalReal::CalcInverseNotLessValue(ZULTavIntervalReal& y) const {
  return y.CalcLessOrEqualValue(*this);
}

// Order, sign, arithmetic -------------------------------------------------------------------

int ZULTavIntervalReal::CalcMinValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b) {
  return Narrow(mSet, &SubdefReal::mf_Min, a.mSet, b.mSet);
}

int ZULTavIntervalReal::CalcFirstInverseMinValue(ZULTavIntervalReal& a,
                                                 const ZULTavIntervalReal& b) const {
  return Narrow(a.mSet, Binary(InverseMin), mSet, b.mSet);
}

int ZULTavIntervalReal::CalcMaxValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b) {
  return Narrow(mSet, &SubdefReal::mf_Max, a.mSet, b.mSet);
}

int ZULTavIntervalReal::CalcFirstInverseMaxValue(ZULTavIntervalReal& a,
                                                 const ZULTavIntervalReal& b) const {
  return Narrow(a.mSet, Binary(InverseMax), mSet, b.mSet);
}

int ZULTavIntervalReal::CalcNextValue(const ZULTavIntervalReal& y) {
  return Narrow(mSet, &SubdefReal::AddIntToInt, y.mSet, Point(GetPrecision()));
}

int ZULTavIntervalReal::CalcInverseNextValue(ZULTavIntervalReal& y) const {
  return Narrow(y.mSet, &SubdefReal::SubIntFromInt, mSet, Point(GetPrecision()));
}

int ZULTavIntervalReal::CalcAbsoluteValue(const ZULTavIntervalReal& y) {
  return Narrow(mSet, &SubdefReal::mf_Abs, y.mSet);
}

int ZULTavIntervalReal::CalcInverseAbsoluteValue(ZULTavIntervalReal& y) const {
  return Narrow(y.mSet, Binary(InverseAbs), mSet, y.mSet);
}

int ZULTavIntervalReal::CalcNegativeValue(const ZULTavIntervalReal& y) {
  return Narrow(mSet, &SubdefReal::mf_Neg, y.mSet);
}

int ZULTavIntervalReal::CalcInverseNegativeValue(ZULTavIntervalReal& y) const {
  return y.CalcNegativeValue(*this);
}

int ZULTavIntervalReal::CalcSignumValue(ZULTaVoInteger& sign) const {
  if (sign.IsNil()) return 0;
  ZULTavIntervalInteger signs(Sign(mSet.lower), Sign(mSet.upper));
  if (IsNil()) signs.SetNil();
  return signs.CalcInverseEqualValue(sign);
}

int ZULTavIntervalReal::CalcInverseSignumValue(const ZULTaVoInteger& sign) {
  const long low = std::max(sign.GetLowerBound(), -1L);
  const long high = std::min(sign.GetUpperBound(), 1L);
  const double max = SubdefReal::sMaxValue;
  return low > high ? NarrowTo(mSet, SubdefReal(max, -max))
                    : NarrowTo(mSet, SubdefReal(low < 0 ? -max : 0, high > 0 ? max : 0));
}

int ZULTavIntervalReal::CalcSumValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b) {
  return Narrow(mSet, &SubdefReal::AddIntToInt, a.mSet, b.mSet);
}

int ZULTavIntervalReal::CalcFirstInverseSumValue(ZULTavIntervalReal& a,
                                                 const ZULTavIntervalReal& b) const {
  return Narrow(a.mSet, &SubdefReal::SubIntFromInt, mSet, b.mSet);
}

int ZULTavIntervalReal::CalcProdValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b) {
  return Narrow(mSet, &SubdefReal::MultIntByInt, a.mSet, b.mSet);
}

int ZULTavIntervalReal::CalcFirstInverseProdValue(ZULTavIntervalReal& a,
                                                  const ZULTavIntervalReal& b) const {
  return Narrow(a.mSet, &SubdefReal::DivIntByInt, mSet, b.mSet);
}
