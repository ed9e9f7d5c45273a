// The order of virtual functions is a binary contract between solvers and modules.

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstddef>

#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoConstraint.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"
#include "numbers/ZULTavIntervalInteger.h"
#include "numbers/ZULTavIntervalReal.h"
#include "numbers/ZULTavSingleBoolean.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"

namespace {

using Any = ZULTaVoAny;
using Scalar = ZULTaVoScalar;
using Number = ZULTaVoNumber;
using Integer = ZULTaVoInteger;
using Real = ZULTaVoReal;
using Boolean = ZULTaVoBoolean;

/// In the Itanium C++ ABI a pointer to a virtual member holds 1 + the byte offset of its slot.
template <class Member>
std::ptrdiff_t SlotOf(Member member) {
  return std::bit_cast<std::array<std::ptrdiff_t, 2>>(member)[0] / std::ptrdiff_t{sizeof(void*)};
}

/// The members are to follow one another from slot `first` on.
template <class... Members>
void ExpectSlots(std::ptrdiff_t first, Members... members) {
  std::ptrdiff_t expected = first;
  for (std::ptrdiff_t slot : {SlotOf(members)...}) {
    EXPECT_EQ(slot, expected) << "the member " << expected - first << " after the first";
    ++expected;
  }
}

// The members that have overloads, by their arguments.
template <class C>
int (C::*NoArgument(int (C::*member)()))() {
  return member;
}
template <class C, class T>
int (C::*Pair(int (C::*member)(const T&, const T&)))(const T&, const T&) {
  return member;
}

TEST(SlotOrderTest, Objects) {
  ExpectSlots(2, &ZULStreamable::CastableID, &ZULStreamable::Write, &ZULStreamable::Read);
  ExpectSlots(5, &ZULTaVoObject::IsDerivedFrom, &ZULTaVoObject::GetDescriptor,
              &ZULTaVoObject::Activate, &ZULTaVoObject::ActivateByArgument, &ZULTaVoObject::Filter,
              &ZULTaVoObject::PrintOn, &ZULTaVoObject::InputValue);
}

TEST(SlotOrderTest, Domains) {
  ExpectSlots(12, &Any::Assign, &Any::SetNil, &Any::SetAny, &Any::IsNil, &Any::IsAny,
              &Any::IsIntersected, &Any::Intersect, &Any::Unite, &Any::GetCardinality,
              &Any::GetWidth, &Any::GetRelativeWidth, &Any::Bisect, &Any::CalcMinValue,
              &Any::CalcMaxValue, &Any::CalcEqualValue, &Any::CalcInverseEqualValue,
              &Any::CalcUnequalValue, &Any::CalcInverseUnequalValue, &Any::CalcIsEqual,
              &Any::CalcLessOrEqualValue, &Any::CalcInverseLessOrEqualValue,
              &Any::CalcNotLessAndUnequalValue, &Any::CalcInverseNotLessAndUnequalValue,
              &Any::CalcIsLessOrEqual);
  ExpectSlots(24, NoArgument<Any>(&Scalar::CalcMinValue), NoArgument<Any>(&Scalar::CalcMaxValue));
  ExpectSlots(36, Pair<Scalar, Scalar>(&Scalar::CalcMinValue), &Scalar::CalcFirstInverseMinValue,
              Pair<Scalar, Scalar>(&Scalar::CalcMaxValue), &Scalar::CalcFirstInverseMaxValue,
              &Scalar::CalcLessValue, &Scalar::CalcInverseLessValue, &Scalar::CalcNotLessValue,
              &Scalar::CalcInverseNotLessValue, &Scalar::CalcIsLess, &Scalar::CalcNextValue,
              &Scalar::CalcInverseNextValue);
}

TEST(SlotOrderTest, Booleans) {
  ExpectSlots(47, &Boolean::SetExactValue, &Boolean::InsertExactValue, &Boolean::RemoveExactValue,
              &Boolean::IsTrue, &Boolean::IsFalse, &Boolean::SetFalse, &Boolean::SetTrue,
              &Boolean::CalcNegativeValue, &Boolean::CalcInverseNegativeValue);
}

TEST(SlotOrderTest, Numbers) {
  ExpectSlots(
      47, &Number::CalcZeroValue, &Number::CalcOneValue, &Number::CalcAbsoluteValue,
      &Number::CalcInverseAbsoluteValue, &Number::CalcNegativeValue,
      &Number::CalcInverseNegativeValue, &Number::CalcSignumValue, &Number::CalcInverseSignumValue,
      &Number::CalcSumValue, &Number::CalcFirstInverseSumValue, &Number::CalcProdValue,
      &Number::CalcFirstInverseProdValue, &Number::CalcModValue, &Number::CalcFirstInverseModValue,
      &Number::CalcSecondInverseModValue, &Number::CalcPowerValue,
      &Number::CalcFirstInversePowerValue, &Number::CalcSecondInversePowerValue);
  ExpectSlots(65, &Integer::SetExactValue, &Integer::SetLowerBound, &Integer::SetUpperBound,
              &Integer::InsertExactValue, &Integer::RemoveExactValue, &Integer::GetLowerBound,
              &Integer::GetUpperBound, &Integer::GetNextExactValue, &Integer::GetPrevExactValue);
  ExpectSlots(65, &Real::SetExactValue, &Real::SetLowerBound, &Real::SetUpperBound,
              &Real::InsertExactValue, &Real::RemoveExactValue, &Real::GetLowerBound,
              &Real::GetUpperBound, &Real::CalcPiValue, &Real::CalcEValue, &Real::CalcExpValue,
              &Real::CalcInverseExpValue, &Real::CalcSqrtValue, &Real::CalcInverseSqrtValue,
              &Real::CalcSinValue, &Real::CalcInverseSinValue, &Real::CalcCosValue,
              &Real::CalcInverseCosValue, &Real::CalcTanValue, &Real::CalcInverseTanValue,
              &Real::CalcFloorValue, &Real::CalcInverseFloorValue, &Real::CalcCeilValue,
              &Real::CalcInverseCeilValue, &Real::CalcRoundValue, &Real::CalcInverseRoundValue,
              &Real::GetNextExactValue, &Real::GetPrevExactValue);
}

/// The number of slots: a virtual member declared last of all takes the next one.
template <class Base>
struct Extended : Base {
  virtual void Last();
};

TEST(SlotOrderTest, NothingFollows) {
  EXPECT_EQ(SlotOf(&Extended<ZULTaVoConstraint>::Last), 12);
  EXPECT_EQ(SlotOf(&Extended<Any>::Last), 36);
  EXPECT_EQ(SlotOf(&Extended<Boolean>::Last), 56);
  EXPECT_EQ(SlotOf(&Extended<Number>::Last), 65);
  EXPECT_EQ(SlotOf(&Extended<Integer>::Last), 74);
  EXPECT_EQ(SlotOf(&Extended<Real>::Last), 92);
}

// What all domains have in common overrides slots and adds none, and no data.
template <class Common, class Base>
void ExpectNothingAdded() {
  EXPECT_EQ(SlotOf(&Extended<Common>::Last), SlotOf(&Extended<Base>::Last));
  EXPECT_EQ(sizeof(Common), sizeof(Base));
}

TEST(SlotOrderTest, DomainsAddNothing) {
  using namespace zultav::detail;
  ExpectNothingAdded<BooleanSlots<ZULTavSingleBoolean, SingleDispatch>, Boolean>();
  ExpectNothingAdded<IntegerSlots<ZULTavSingleInteger, SingleDispatch>, Integer>();
  ExpectNothingAdded<IntegerSlots<ZULTavIntervalInteger, IntervalDispatch>, Integer>();
  ExpectNothingAdded<RealSlots<ZULTavSingleReal, IntervalDispatch>, Real>();
  ExpectNothingAdded<RealSlots<ZULTavIntervalReal, IntervalDispatch>, Real>();
  EXPECT_EQ(SlotOf(&Extended<ZULTavIntervalReal>::Last), 92);
}

}  // namespace
