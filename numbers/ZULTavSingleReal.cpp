#include "numbers/ZULTavSingleReal.h"

#include "numbers/ZULTavSingleInteger.h"
#include "numbers/detail/IntervalDispatch.h"
#include "numbers/detail/SingleRealNarrowing.h"
#include "numbers/detail/SlotBodies.h"

using namespace zultav::detail;

template class zultav::detail::RealSlots<ZULTavSingleReal, zultav::detail::IntervalDispatch>;
template class ZULTaVoFrame<ZULTavSingleReal, RealSlots<ZULTavSingleReal, IntervalDispatch>>;

ZULStreamableClass rZULTavSingleReal_Descriptor = ZULTavSingleReal::MakeDescriptorRecord();
ZULStreamableClass rZULTavSingleReal = ZULTavSingleReal::MakeRecord();

double ZULTavSingleReal::sNC_REAL_MAX = 0;
double ZULTavSingleReal::sNC_REAL_MIN = 0;
double ZULTavSingleReal::sNC_REAL_ANY = 0;
double ZULTavSingleReal::sNC_REAL_NIL = 0;

namespace {

constexpr double kStrictMargin = 1e-14;

bool IsLessOrEqual(double x, double y) { return x <= y + ZULTaVoReal::GetPrecision(); }

// The margin alone would vanish beside a large x.
bool IsLess(double x, double y) { return x + kStrictMargin <= y && x < y; }

// Toward zero; what fits no 32-bit integer becomes the largest one.
long Truncated(double value) {
  constexpr double kEnd = 2147483648.0;
  return value > -kEnd - 1 && value < kEnd ? static_cast<long>(value) : 2147483647L;
}

}  // namespace

ZULTavSingleReal::ZULTavSingleReal(const void* value)
    : ZULTavSingleReal(value != nullptr ? *static_cast<const double*>(value) : sNC_REAL_ANY) {}

ZULTavSingleReal::ZULTavSingleReal(double value) {
  ZULTavSingleReal::SetExactValue(value);
  CheckValue();
}

ZULTavSingleReal::ZULTavSingleReal(const ZULTavSingleInteger& integer, int)
    : mValue(integer.IsNil()   ? sNC_REAL_NIL
             : integer.IsAny() ? sNC_REAL_ANY
                               : static_cast<double>(integer.GetValue())) {}

ZULTavSingleReal::~ZULTavSingleReal() = default;

void ZULTavSingleReal::Write(ZULopstream& out) const { out << mValue; }

void ZULTavSingleReal::Read(ZULipstream& in) {
  double value = 0;
  in >> value;
  if (std::isnan(value)) in.Fail("a value is no number");
  SetExactValue(value);
  CheckValue();
}

// Sets --------------------------------------------------------------------------------------

bool ZULTavSingleReal::Convert(const ZULTaVoAny& value) {
  if (const auto* real = ZULTaVoCast<ZULTavSingleReal>(&value)) {
    mValue = real->mValue;
  } else if (const auto* integer = ZULTaVoCast<ZULTavSingleInteger>(&value)) {
    *this = ZULTavSingleReal(*integer, 0);
  } else {
    return false;
  }
  return true;
}

int ZULTavSingleReal::Assign(const ZULTaVoAny& other) {
  const double before = mValue;
  if (!Convert(other)) SetNil();
  return mValue != before;
}

int ZULTavSingleReal::IsIntersected(const ZULTaVoAny& other) const {
  ZULTavSingleReal value;
  value.Assign(other);
  if (IsNil() || value.IsNil()) return 0;
  return IsAny() || value.IsAny() || mValue == value.mValue;
}

int ZULTavSingleReal::Intersect(const ZULTaVoAny& other) {
  if (const auto* real = ZULTaVoCast<ZULTavSingleReal>(&other)) return Intersect(*real);
  if (const auto* integer = ZULTaVoCast<ZULTavSingleInteger>(&other)) return Intersect(*integer);
  return IsNil() ? 0 : Contradict(*this);
}

int ZULTavSingleReal::Intersect(const ZULTavSingleReal& other) {
  return WithValues(
      *this, [&](double value) { return SettleReal(*this, value); }, other);
}

int ZULTavSingleReal::Intersect(const ZULTavSingleInteger& other) {
  return WithValues(
      *this,
      [&](double value) {
        const double margin = GetPrecision();
        return Settle(*this, value, mValue + margin >= value && value >= mValue - margin);
      },
      ZULTavSingleReal(other, 0));
}

int ZULTavSingleReal::Intersect(const SubdefReal& set) {
  if (SDCheckError() || set.IsEmpty()) {
    SDClearError();
    return Contradict(*this);
  }
  const double max = SubdefReal::sMaxValue;
  if (IsNil() || (set.lower <= -max && set.upper >= max)) return 0;
  if (IsAny() && !set.IsScalar()) return 0;
  const double margin = GetPrecision();
  return Settle(*this, set.lower, set.lower - margin <= mValue && mValue <= set.upper + margin);
}

int ZULTavSingleReal::IntersectInverse(ZULTaVoAny& value) const {
  if (auto* integer = ZULTaVoCast<ZULTavSingleInteger>(&value)) return IntersectInverse(*integer);
  return value.IsDerivedFrom(sIdent) ? value.Intersect(*this) : 0;
}

int ZULTavSingleReal::IntersectInverse(ZULTavSingleInteger& integer) const {
  if (integer.IsNil()) return 0;
  if (IsNil()) return Contradict(integer);
  if (IsAny()) return 0;
  const double margin = GetPrecision();
  const long value = integer.IsAny() ? Truncated(mValue) : integer.GetValue();
  const auto real = static_cast<double>(value);
  const bool agrees = mValue - margin <= real && real <= mValue + margin;
  if (!integer.IsAny()) return CheckRelation(integer, agrees);
  if (!agrees || value < ZULTavSingleInteger::sNC_INT_MIN) return Contradict(integer);
  // One beyond the largest integer is how Any is stored: nothing to learn.
  return value > ZULTavSingleInteger::sNC_INT_MAX ? 0 : Settle(integer, value, true);
}

int ZULTavSingleReal::Unite(const ZULTaVoAny& other) {
  if (other.IsNil()) return 0;
  ZULTavSingleReal value;
  value.Convert(other);  // a foreign value may be anything
  return Unite(value);
}

int ZULTavSingleReal::Unite(const ZULTavSingleReal& other) {
  if (other.IsNil()) return 0;
  if (!other.IsAny()) return InsertExactValue(other.mValue);
  const int changed = !IsAny();
  SetAny();
  return changed;
}

long ZULTavSingleReal::GetCardinality() const { return IsNil() ? 0 : IsAny() ? -1 : 1; }

void ZULTavSingleReal::Bisect(ZULTaVoObject&, ValueSelection) { SetNil(); }

void ZULTavSingleReal::CheckValue() {
  if (SDCheckError()) {
    SetNil();
    SDClearError();
  }
  if (!IsNil() && (mValue > sNC_REAL_MAX || mValue < sNC_REAL_MIN)) SetAny();
}

SubdefReal ZULTavSingleReal::GetSubdef() const {
  if (IsNil()) return {sNC_REAL_MAX, sNC_REAL_MIN};
  return IsAny() ? SubdefReal() : SubdefReal(mValue, mValue);
}

void ZULTavSingleReal::SetExactValue(double value) {
  mValue = std::isnan(value) ? sNC_REAL_NIL : value;
}

int ZULTavSingleReal::InsertExactValue(double value) {
  if (IsAny() || std::isnan(value)) return 0;
  if (IsNil()) {
    mValue = value;
    return 1;
  }
  if (!Differ(mValue, value)) return 0;
  SetAny();
  return 1;
}

int ZULTavSingleReal::RemoveExactValue(double value) {
  return IsAny() || IsNil() || std::isnan(value) || Differ(mValue, value) ? 0 : Contradict(*this);
}

double ZULTavSingleReal::GetLowerBound() const {
  return IsNil() ? sNC_REAL_MAX : IsAny() ? sNC_REAL_MIN : mValue;
}

double ZULTavSingleReal::GetUpperBound() const {
  return IsNil() ? sNC_REAL_MIN : IsAny() ? sNC_REAL_MAX : mValue;
}

// Relations ---------------------------------------------------------------------------------

int ZULTavSingleReal::CalcMinValue() { return NarrowToConstant(*this, sNC_REAL_MIN); }
int ZULTavSingleReal::CalcMaxValue() { return NarrowToConstant(*this, sNC_REAL_MAX); }
int ZULTavSingleReal::CalcZeroValue() { return NarrowToConstant(*this, 0); }
int ZULTavSingleReal::CalcOneValue() { return NarrowToConstant(*this, 1); }

// With an integer of the margin p, not through a conversion.
int ZULTavSingleReal::CalcEqualValue(const ZULTaVoAny& y) {
  return ZULTavSingleReal().Convert(y) ? Intersect(y) : 0;
}

int ZULTavSingleReal::CalcEqualValue(const ZULTavSingleReal& y) { return Intersect(y); }

int ZULTavSingleReal::CalcInverseEqualValue(ZULTaVoAny& y) const { return IntersectInverse(y); }

int ZULTavSingleReal::CalcInverseEqualValue(ZULTavSingleReal& y) const {
  return y.Intersect(*this);
}

int ZULTavSingleReal::CalcInverseEqualValue(ZULTavSingleInteger& y) const {
  return IntersectInverse(y);
}

int ZULTavSingleReal::CalcLessOrEqualValue(const ZULTavSingleReal& y) {
  return WithValues(
      *this, [&](double value) { return CheckRelation(*this, IsLessOrEqual(mValue, value)); }, y);
}

int ZULTavSingleReal::CalcInverseLessOrEqualValue(ZULTavSingleReal& y) const {
  return WithValues(
      y, [&](double value) { return CheckRelation(y, IsLessOrEqual(value, y.mValue)); }, *this);
}

int ZULTavSingleReal::CalcLessValue(const ZULTavSingleReal& y) {
  return WithValues(
      *this, [&](double value) { return CheckRelation(*this, IsLess(mValue, value)); }, y);
}

int ZULTavSingleReal::CalcInverseLessValue(ZULTavSingleReal& y) const {
  return WithValues(
      y, [&](double value) { return CheckRelation(y, IsLess(value, y.mValue)); }, *this);
}

int ZULTavSingleReal::CalcNotLessAndUnequalValue(const ZULTavSingleReal& y) {
  return y.CalcInverseLessValue(*this);
}

int ZULTavSingleReal::CalcInverseNotLessAndUnequalValue(ZULTavSingleReal& y) const {
  return y.CalcLessValue(*this);
}

int ZULTavSingleReal::CalcNotLessValue(const ZULTavSingleReal& y) {
  return y.CalcInverseLessOrEqualValue(*this);
}

int ZULTavSingleReal::CalcInverseNotLessValue(ZULTavSingleReal& y) const {
  return y.CalcLessOrEqualValue(*this);
}

// Order -------------------------------------------------------------------------------------

int ZULTavSingleReal::CalcMinValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b) {
  return WithValues(
      *this, [&](double x, double y) { return SettleReal(*this, std::min(x, y)); }, a, b);
}

// A result that agrees with b says of a only that it is not less, which is no value.
int ZULTavSingleReal::CalcFirstInverseMinValue(ZULTavSingleReal& a,
                                               const ZULTavSingleReal& b) const {
  return WithValues(
      a, [&](double r, double y) { return Differ(r, y) ? SettleReal(a, r) : 0; }, *this, b);
}

int ZULTavSingleReal::CalcMaxValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b) {
  return WithValues(
      *this, [&](double x, double y) { return SettleReal(*this, std::max(x, y)); }, a, b);
}

int ZULTavSingleReal::CalcFirstInverseMaxValue(ZULTavSingleReal& a,
                                               const ZULTavSingleReal& b) const {
  return CalcFirstInverseMinValue(a, b);
}

int ZULTavSingleReal::CalcNextValue(const ZULTavSingleReal& y) {
  return WithValues(
      *this,
      [&](double value) {
        const double step = 2 * GetPrecision();
        return IsAny() && value > sNC_REAL_MAX - step ? 0 : SettleReal(*this, value + step);
      },
      y);
}

// Unlike the forward operation it does not look whether the neighbour is in range.
int ZULTavSingleReal::CalcInverseNextValue(ZULTavSingleReal& y) const {
  return WithValues(
      y,
      [&](double value) {
        const double step = 2 * GetPrecision();
        return Settle(y, value - step, !Differ(value, y.mValue + step));
      },
      *this);
}
