#include "numbers/ZULTavSingleBoolean.h"

#include <array>

#include "framework/intervals/IntervalControl.h"
#include "framework/solver/ZULTaVoNumber.h"
#include "numbers/detail/SingleDispatch.h"
#include "numbers/detail/SlotBodies.h"

using namespace zultav::detail;

template class zultav::detail::BooleanSlots<ZULTavSingleBoolean, zultav::detail::SingleDispatch>;
template class ZULTaVoFrame<ZULTavSingleBoolean, BooleanSlots<ZULTavSingleBoolean, SingleDispatch>>;

ZULStreamableClass rZULTavSingleBoolean_Descriptor = ZULTavSingleBoolean::MakeDescriptorRecord();
ZULStreamableClass rZULTavSingleBoolean = ZULTavSingleBoolean::MakeRecord();

namespace {

using SB = ZULTavSingleBoolean;

/// What a relation leaves of one side, given the code of the other: False, True, Any, Nil.
using Partner = std::array<SubdefBool, 4>;
constexpr SubdefBool kF = SubdefBool::kFalse, kT = SubdefBool::kTrue, kA = SubdefBool::kAny,
                     kN = SubdefBool::kNil;
//                                 other is  F   T   A   N
constexpr Partner kBelowOrEqualTo /*     */ {kF, kA, kA, kN};
constexpr Partner kAboveOrEqualTo /*     */ {kA, kT, kA, kN};
constexpr Partner kBelow /*              */ {kN, kF, kF, kN};
constexpr Partner kAbove /*              */ {kT, kN, kT, kN};

SubdefBool PartnerOf(const SB& other, const Partner& left) {
  const auto code = static_cast<unsigned>(other.GetSet().code);
  return code < left.size() ? left[code] : kA;
}

/// What r = min(a, b) leaves of a: it must be True, or make the minimum False where b does not.
SubdefBool InverseAnd(const SubdefBool& r, const SubdefBool& b) {
  if (r == kN || b == kN) return kN;
  if (r == kT) return b == kF ? kN : kT;
  return r == kF && b == kT ? kF : kA;
}

}  // namespace

ZULTavSingleBoolean::ZULTavSingleBoolean(const void* code) {
  if (code != nullptr) mSet = SubdefBool(*static_cast<const int*>(code));
  CheckValue();
}

void ZULTavSingleBoolean::Write(ZULopstream& out) const { out << int{mSet.code}; }

void ZULTavSingleBoolean::Read(ZULipstream& in) {
  int code = 0;
  in >> code;
  if (code < SubdefBool::kFalse || code > SubdefBool::kNil) in.Fail("a truth value is none");
  mSet = in.Good() ? SubdefBool(code) : SubdefBool(SubdefBool::kNil);
}

// Sets -----------------------------------------------------------------------------------------

int ZULTavSingleBoolean::Narrow(const SubdefBool& allowed) {
  if (IsNil()) return 0;
  const SDErrorScope scope;
  return mSet.SDIntersect(allowed);
}

int ZULTavSingleBoolean::Assign(const ZULTaVoAny& other) {
  const SubdefBool before = mSet;
  const auto* own = ZULTaVoCast<SB>(&other);
  mSet = own != nullptr ? own->mSet : kN;
  return mSet == before ? 0 : 1;
}

int ZULTavSingleBoolean::IsIntersected(const ZULTaVoAny& other) const {
  if (IsNil() || other.IsNil()) return 0;
  if (IsAny() || other.IsAny()) return 1;
  if (const auto* own = ZULTaVoCast<SB>(&other)) return mSet == own->mSet;
  return ZULTaVoCast<ZULTaVoNumber>(&other) != nullptr ? other.IsIntersected(*this) : 0;
}

int ZULTavSingleBoolean::Intersect(const ZULTaVoAny& other) {
  const auto* own = ZULTaVoCast<SB>(&other);
  return Narrow(own != nullptr ? own->mSet : kN);
}
int ZULTavSingleBoolean::Intersect(const SB& y) { return Narrow(y.mSet); }

int ZULTavSingleBoolean::Unite(const ZULTaVoAny& other) {
  if (IsAny() || other.IsNil()) return 0;
  const auto* own = ZULTaVoCast<SB>(&other);
  if (own != nullptr && !own->IsAny()) return InsertExactValue(own->IsTrue());
  SetAny();
  return 1;
}

long ZULTavSingleBoolean::GetCardinality() const { return IsNil() ? 0 : IsAny() ? 2 : 1; }

void ZULTavSingleBoolean::Bisect(ZULTaVoObject& other, ValueSelection selection) {
  auto* half = ZULTaVoCast<SB>(&other);
  if (half == nullptr) return SetNil();
  const bool isKnown = selection >= kLowerHalf && selection <= kGreatestValue;
  const bool isTrueHere = selection == kLowerHalf || selection == kLeastValue;
  const bool splits = IsAny() && isKnown;
  mSet = !splits ? kN : isTrueHere ? kT : kF;
  half->mSet = Not(mSet);
}

int ZULTavSingleBoolean::CheckValue() {
  if (mSet.code < SubdefBool::kFalse || mSet.code > SubdefBool::kNil) SetAny();
  return 1;
}

int ZULTavSingleBoolean::InsertExactValue(int value) {
  const SubdefBool inserted = Of(value);
  if (IsAny() || mSet == inserted) return 0;
  mSet = IsNil() ? inserted : kA;
  return 1;
}
int ZULTavSingleBoolean::RemoveExactValue(int value) { return Narrow(Not(Of(value))); }

// Constants and relations ----------------------------------------------------------------------

int ZULTavSingleBoolean::CalcMinValue() { return SetFalse(); }
int ZULTavSingleBoolean::CalcMaxValue() { return SetTrue(); }

int ZULTavSingleBoolean::CalcEqualValue(const SB& y) { return Intersect(y); }
int ZULTavSingleBoolean::CalcInverseEqualValue(SB& y) const { return y.Intersect(*this); }

int ZULTavSingleBoolean::CalcLessOrEqualValue(const SB& y) {
  return Narrow(PartnerOf(y, kBelowOrEqualTo));
}
int ZULTavSingleBoolean::CalcInverseLessOrEqualValue(SB& y) const {
  return y.Narrow(PartnerOf(*this, kAboveOrEqualTo));
}
int ZULTavSingleBoolean::CalcLessValue(const SB& y) { return Narrow(PartnerOf(y, kBelow)); }
int ZULTavSingleBoolean::CalcInverseLessValue(SB& y) const {
  return y.Narrow(PartnerOf(*this, kAbove));
}

// The other way round: x >= y is y <= x, x > y is y < x.
int ZULTavSingleBoolean::CalcNotLessValue(const SB& y) {
  return y.CalcInverseLessOrEqualValue(*this);
}
int ZULTavSingleBoolean::CalcInverseNotLessValue(SB& y) const {
  return y.CalcLessOrEqualValue(*this);
}
int ZULTavSingleBoolean::CalcNotLessAndUnequalValue(const SB& y) {
  return y.CalcInverseLessValue(*this);
}
int ZULTavSingleBoolean::CalcInverseNotLessAndUnequalValue(SB& y) const {
  return y.CalcLessValue(*this);
}

// False has a successor, True a predecessor: being next is being greater.
int ZULTavSingleBoolean::CalcNextValue(const SB& y) { return Narrow(PartnerOf(y, kAbove)); }
int ZULTavSingleBoolean::CalcInverseNextValue(SB& y) const {
  return y.Narrow(PartnerOf(*this, kBelow));
}

// Connectives ----------------------------------------------------------------------------------

int ZULTavSingleBoolean::CalcMinValue(const SB& a, const SB& b) {
  return Narrow(And(a.mSet, b.mSet));
}
int ZULTavSingleBoolean::CalcFirstInverseMinValue(SB& a, const SB& b) const {
  return a.Narrow(InverseAnd(mSet, b.mSet));
}
int ZULTavSingleBoolean::CalcMaxValue(const SB& a, const SB& b) {
  return Narrow(Or(a.mSet, b.mSet));
}
int ZULTavSingleBoolean::CalcFirstInverseMaxValue(SB& a, const SB& b) const {
  return a.Narrow(Not(InverseAnd(Not(mSet), Not(b.mSet))));
}
int ZULTavSingleBoolean::CalcNegativeValue(const SB& y) { return Narrow(Not(y.mSet)); }
int ZULTavSingleBoolean::CalcInverseNegativeValue(SB& y) const {
  return y.CalcNegativeValue(*this);
}
