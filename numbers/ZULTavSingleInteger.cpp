#include "numbers/ZULTavSingleInteger.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "framework/intervals/IntervalControl.h"
#include "framework/intervals/SubdefInt.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/detail/SingleDispatch.h"
#include "numbers/detail/SlotBodies.h"

using namespace zultav::detail;

template class zultav::detail::IntegerSlots<ZULTavSingleInteger, zultav::detail::SingleDispatch>;
template class ZULTaVoFrame<ZULTavSingleInteger, IntegerSlots<ZULTavSingleInteger, SingleDispatch>>;

ZULStreamableClass rZULTavSingleInteger_Descriptor = ZULTavSingleInteger::MakeDescriptorRecord();
ZULStreamableClass rZULTavSingleInteger = ZULTavSingleInteger::MakeRecord();

long ZULTavSingleInteger::sNC_INT_MAX = 0;
long ZULTavSingleInteger::sNC_INT_MIN = 0;
long ZULTavSingleInteger::sNC_INT_ANY = 0;
long ZULTavSingleInteger::sNC_INT_NIL = 0;

namespace {

using SI = ZULTavSingleInteger;

int Store(SI& target, long value) { return Settle(target, value, target.GetValue() == value); }

/// Stores what checked arithmetic computes: a raised error flag, which is lowered, is a
/// contradiction.
template <class Compute>
int StoreChecked(SI& target, Compute compute) {
  const SDErrorScope scope;
  const long value = compute();
  return SDCheckError() ? Contradict(target) : Store(target, value);
}

/// The narrowing of an argument by r = Op(…): nothing is known from an unconstrained other
/// argument, nothing is left beside an empty one.
template <class Narrow>
int WithOperand(SI& target, const SI& other, Narrow narrow) {
  if (other.IsAny()) return 0;
  return other.IsNil() ? Contradict(target) : narrow();
}

/// As a set for the interval library; Any is the full range.
SubdefInt Lift(const SI& x) {
  return x.IsAny() ? SubdefInt() : SubdefInt(x.GetValue(), x.GetValue());
}

/// Narrows `target`, as a set, to what `compute` answers for that set; hands the one value that
/// remains to `store`. No value or several are a contradiction.
template <class Compute, class End>
int StoreSingle(SI& target, Compute compute, End store) {
  const SDErrorScope scope;
  SubdefInt set = Lift(target);
  set.SDIntersect(compute(set));
  return SDCheckError() || !set.IsScalar() ? Contradict(target) : store(set.lower);
}

/// Remainders are computed under the flag as it stands: an error still pending is their error.
template <class Ending>
int UnlessPending(SI& target, Ending ending) {
  if (!SDCheckError()) return ending();
  SDClearError();
  return Contradict(target);
}

}  // namespace

ZULTavSingleInteger::ZULTavSingleInteger(const void* value) {
  SetAny();
  if (value != nullptr) mValue = *static_cast<const long*>(value);
  CheckValue();
}

void ZULTavSingleInteger::Write(ZULopstream& out) const { out << GetValue(); }

void ZULTavSingleInteger::Read(ZULipstream& in) {
  long value = 0;
  in >> value;
  Put(value);
}

// Sets -----------------------------------------------------------------------------------------

int ZULTavSingleInteger::Assign(const ZULTaVoAny& other) {
  const long before = mValue;
  const auto* own = ZULTaVoCast<SI>(&other);
  mValue = own != nullptr ? long{own->mValue} : sNC_INT_NIL;
  return mValue != before;
}

int ZULTavSingleInteger::IsIntersected(const ZULTaVoAny& other) const {
  if (IsNil() || other.IsNil()) return 0;
  if (IsAny() || other.IsAny()) return 1;
  if (const auto* own = ZULTaVoCast<SI>(&other)) return mValue == own->mValue;
  if (const auto* truth = ZULTaVoCast<ZULTavSingleBoolean>(&other)) {
    return mValue == long{truth->IsTrue()};
  }
  return other.IsIntersected(*this);
}

int ZULTavSingleInteger::Intersect(const ZULTaVoAny& other) {
  if (const auto* own = ZULTaVoCast<SI>(&other)) return Intersect(*own);
  return IsNil() ? 0 : Contradict(*this);
}

int ZULTavSingleInteger::Intersect(const ZULTavSingleInteger& y) {
  if (IsNil() || y.IsAny()) return 0;
  return y.IsNil() ? Contradict(*this) : Store(*this, y.mValue);
}

int ZULTavSingleInteger::Intersect(const ZULTavSingleBoolean& y) {
  if (y.IsNil()) return Contradict(*this);
  if (IsNil() || y.IsAny()) return 0;
  return Store(*this, y.IsTrue());
}

int ZULTavSingleInteger::Unite(const ZULTaVoAny& other) {
  if (IsAny() || other.IsNil()) return 0;
  const auto* own = ZULTaVoCast<SI>(&other);
  if (own != nullptr && !own->IsAny()) return InsertExactValue(own->mValue);
  SetAny();
  return 1;
}

long ZULTavSingleInteger::GetCardinality() const { return IsNil() ? 0 : IsAny() ? -1 : 1; }

void ZULTavSingleInteger::Bisect(ZULTaVoObject&, ValueSelection) { SetNil(); }

void ZULTavSingleInteger::CheckValue() {
  if (SDCheckError()) {
    SDClearError();
    SetNil();
  }
  Put(mValue);
}

// Exact values ---------------------------------------------------------------------------------

int ZULTavSingleInteger::InsertExactValue(long value) {
  if (IsAny() || mValue == value) return 0;
  if (IsNil()) {
    Put(value);
  } else {
    SetAny();
  }
  return 1;
}

int ZULTavSingleInteger::RemoveExactValue(long value) {
  return IsAny() || IsNil() || mValue != value ? 0 : Contradict(*this);
}

long ZULTavSingleInteger::GetLowerBound() const {
  return IsNil() ? sNC_INT_MAX : IsAny() ? sNC_INT_MIN : GetValue();
}

long ZULTavSingleInteger::GetUpperBound() const {
  return IsNil() ? sNC_INT_MIN : IsAny() ? sNC_INT_MAX : GetValue();
}

long ZULTavSingleInteger::GetNextExactValue(long value) const {
  constexpr long kLast = std::numeric_limits<long>::max();
  if (IsNil()) return value;
  if ((IsAny() && value <= sNC_INT_MAX) || value == mValue) return std::min(value, kLast - 1) + 1;
  return std::max<long>(value, mValue);
}

long ZULTavSingleInteger::GetPrevExactValue(long value) const {
  constexpr long kFirst = std::numeric_limits<long>::min();
  if (IsNil()) return value;
  if ((IsAny() && value >= sNC_INT_MIN) || value == mValue) return std::max(value, kFirst + 1) - 1;
  return std::min<long>(value, mValue);
}

// Constants and relations ----------------------------------------------------------------------

int ZULTavSingleInteger::CalcMinValue() { return Intersect(SI(sNC_INT_MIN)); }
int ZULTavSingleInteger::CalcMaxValue() { return Intersect(SI(sNC_INT_MAX)); }
int ZULTavSingleInteger::CalcZeroValue() { return Intersect(SI(0)); }
int ZULTavSingleInteger::CalcOneValue() { return Intersect(SI(1)); }

int ZULTavSingleInteger::CalcEqualValue(const SI& y) { return Intersect(y); }
int ZULTavSingleInteger::CalcInverseEqualValue(SI& y) const { return y.Intersect(*this); }

int ZULTavSingleInteger::CalcLessValue(const SI& y) {
  return CheckRelation(*this, mValue < y.mValue);
}
int ZULTavSingleInteger::CalcInverseLessValue(SI& y) const {
  return CheckRelation(y, mValue < y.mValue);
}
int ZULTavSingleInteger::CalcLessOrEqualValue(const SI& y) {
  return CheckRelation(*this, mValue <= y.mValue);
}
int ZULTavSingleInteger::CalcInverseLessOrEqualValue(SI& y) const {
  return CheckRelation(y, mValue <= y.mValue);
}

// The other way round: x >= y is y <= x, x > y is y < x.
int ZULTavSingleInteger::CalcNotLessValue(const SI& y) {
  return y.CalcInverseLessOrEqualValue(*this);
}
int ZULTavSingleInteger::CalcInverseNotLessValue(SI& y) const {
  return y.CalcLessOrEqualValue(*this);
}
int ZULTavSingleInteger::CalcNotLessAndUnequalValue(const SI& y) {
  return y.CalcInverseLessValue(*this);
}
int ZULTavSingleInteger::CalcInverseNotLessAndUnequalValue(SI& y) const {
  return y.CalcLessValue(*this);
}

// Minimum, maximum, successor ------------------------------------------------------------------

int ZULTavSingleInteger::CalcMinValue(const SI& a, const SI& b) {
  return a.IsAny() || b.IsAny() ? 0 : Store(*this, std::min<long>(a.mValue, b.mValue));
}
int ZULTavSingleInteger::CalcMaxValue(const SI& a, const SI& b) {
  return a.IsAny() || b.IsAny() ? 0 : Store(*this, std::max<long>(a.mValue, b.mValue));
}

// When b alone makes the result, `a` may lie anywhere on the far side of it.
int ZULTavSingleInteger::CalcFirstInverseMinValue(SI& a, const SI& b) const {
  return WithOperand(a, b, [&] { return b.mValue == mValue ? 0 : Store(a, mValue); });
}
int ZULTavSingleInteger::CalcFirstInverseMaxValue(SI& a, const SI& b) const {
  return WithOperand(a, b, [&] { return b.mValue == mValue ? 0 : Store(a, mValue); });
}

int ZULTavSingleInteger::CalcNextValue(const SI& y) {
  if (y.IsAny()) return 0;
  return StoreChecked(*this, [&] { return SubIntBase::base_plus(y.mValue, 1); });
}
int ZULTavSingleInteger::CalcInverseNextValue(SI& y) const {
  if (IsAny()) return 0;
  return StoreChecked(y, [&] { return SubIntBase::base_minus(mValue, 1); });
}

// Arithmetic -----------------------------------------------------------------------------------

int ZULTavSingleInteger::CalcNegativeValue(const SI& y) {
  return y.IsAny() ? 0 : Store(*this, -y.mValue);
}
int ZULTavSingleInteger::CalcInverseNegativeValue(SI& y) const {
  return IsAny() ? 0 : Store(y, -mValue);
}

int ZULTavSingleInteger::CalcAbsoluteValue(const SI& y) {
  return y.IsAny() ? 0 : Store(*this, std::abs(y.GetValue()));
}
int ZULTavSingleInteger::CalcInverseAbsoluteValue(SI& y) const {
  return CheckRelation(y, mValue >= 0 && std::abs(y.GetValue()) == mValue);
}

int ZULTavSingleInteger::CalcSumValue(const SI& a, const SI& b) {
  if (a.IsAny() || b.IsAny()) return 0;
  return StoreChecked(*this, [&] { return SubIntBase::base_plus(a.mValue, b.mValue); });
}
int ZULTavSingleInteger::CalcFirstInverseSumValue(SI& a, const SI& b) const {
  return WithOperand(a, b, [&] {
    return StoreChecked(a, [&] { return SubIntBase::base_minus(mValue, b.mValue); });
  });
}

int ZULTavSingleInteger::CalcProdValue(const SI& a, const SI& b) {
  if (a.IsAny() || b.IsAny()) return 0;
  return StoreChecked(*this, [&] { return SubIntBase::base_mult(a.mValue, b.mValue); });
}
int ZULTavSingleInteger::CalcFirstInverseProdValue(SI& a, const SI& b) const {
  return WithOperand(a, b, [&] {
    if (b.mValue == 0) return 0;
    const SDErrorScope scope;
    const long quotient = SubIntBase::base_div(mValue, b.mValue);
    return SDCheckError() ? Contradict(a) : Settle(a, quotient, quotient == mValue);
  });
}

int ZULTavSingleInteger::CalcModValue(const SI& a, const SI& b) {
  if (a.IsAny() || b.IsAny() || b.mValue == 0) return 0;
  return UnlessPending(*this, [&] { return Store(*this, a.mValue % b.mValue); });
}
int ZULTavSingleInteger::CalcFirstInverseModValue(SI& a, const SI& b) const {
  if (b.IsNil()) return Contradict(a);
  if (a.IsAny() || b.IsAny() || b.mValue == 0) return 0;
  return UnlessPending(a, [&] { return a.mValue % b.mValue == mValue ? 0 : Contradict(a); });
}
int ZULTavSingleInteger::CalcSecondInverseModValue(const SI& a, SI& b) const {
  if (a.IsNil()) return Contradict(b);
  if (a.IsAny() || b.mValue == 0) return 0;
  return UnlessPending(b, [&] { return a.mValue % b.mValue == mValue ? 0 : Contradict(b); });
}

int ZULTavSingleInteger::CalcPowerValue(const SI& a, const SI& b) {
  if (a.IsAny() || b.IsAny()) return 0;
  return StoreSingle(
      *this, [&](const SubdefInt&) { return pow(Lift(a), Lift(b)); },
      [&](long value) { return Store(*this, value); });
}
int ZULTavSingleInteger::CalcFirstInversePowerValue(SI& a, const SI& b) const {
  return WithOperand(a, b, [&] {
    return StoreSingle(
        a, [&](const SubdefInt& bases) { return base(Lift(*this), bases, b.mValue); },
        [&](long value) { return Settle(a, value, value == mValue); });
  });
}
int ZULTavSingleInteger::CalcSecondInversePowerValue(const SI& a, SI& b) const {
  return WithOperand(b, a, [&] {
    return StoreSingle(
        b, [&](const SubdefInt& exponents) { return exponent(Lift(*this), a.mValue, exponents); },
        [&](long value) { return Store(b, value); });
  });
}

// Sign -----------------------------------------------------------------------------------------

int ZULTavSingleInteger::CalcSignumValue(ZULTaVoInteger& sign) const {
  if (sign.IsNil()) return 0;
  if (IsNil()) return Contradict(sign);
  if (IsAny()) return 0;
  return SI((mValue > 0) - (mValue < 0)).CalcInverseEqualValue(sign);
}

int ZULTavSingleInteger::CalcInverseSignumValue(const ZULTaVoInteger& sign) {
  if (IsNil()) return 0;
  if (sign.IsNil()) return Contradict(*this);
  if (sign.IsAny()) return 0;
  const SI zero(0);
  const int possible = (sign.IsIntersected(SI(-1)) ? 1 : 0) | (sign.IsIntersected(zero) ? 2 : 0) |
                       (sign.IsIntersected(SI(1)) ? 4 : 0);
  switch (possible) {
    case 0:
      return Contradict(*this);
    case 1:
      return CalcLessValue(zero);
    case 2:
      return Intersect(zero);
    case 3:
      return CalcLessOrEqualValue(zero);
    case 4:
      return CalcNotLessAndUnequalValue(zero);
    case 5:
      return CalcUnequalValue(zero);
    case 6:
      return CalcNotLessValue(zero);
    default:
      return 0;
  }
}
