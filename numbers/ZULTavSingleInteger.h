#ifndef ZULTAV_NUMBERS_ZULTAV_SINGLE_INTEGER_H
#define ZULTAV_NUMBERS_ZULTAV_SINGLE_INTEGER_H

#include <concepts>

#include "framework/intervals/SubIntBase.h"
#include "framework/solver/ZULTaVoFrame.h"
#include "numbers/Export.h"
#include "numbers/detail/Slots.h"

class ZULTavSingleBoolean;

/// An integer that is unknown (Any), known to be one value, or contradictory (Nil).
///
/// Narrowing fixes, confirms or empties: what would be a range changes nothing. Beside each slot,
/// which takes abstract arguments and ignores those of another class, stands the operation over
/// this class. The typed ones trust their receiver and arguments to be neither Nil nor Any, except
/// where they say otherwise.
class ZULTAV_NUMBERS_API ZULTavSingleInteger final
    : public ZULTaVoFrame<
          ZULTavSingleInteger,
          zultav::detail::IntegerSlots<ZULTavSingleInteger, zultav::detail::SingleDispatch>> {
 public:
  static constexpr char kClassName[] = "ZULTavSingleInteger";
  static constexpr char kTypeName[] = "single int";
  static constexpr bool kAnyNarrowsNothing = true;

  /// Any.
  ZULTavSingleInteger() { SetAny(); }
  ZULTavSingleInteger(const ZULTavSingleInteger&) = default;
  ZULTavSingleInteger& operator=(const ZULTavSingleInteger&) = default;
  explicit ZULTavSingleInteger(ZULStreamableInit init) : ZULTaVoFrame(init) {}
  /// From the `long` at that address, as CheckValue leaves it; Any for null.
  explicit ZULTavSingleInteger(const void* value);
  explicit ZULTavSingleInteger(std::integral auto value) { Put(static_cast<long>(value)); }

  /// The value as it is encoded: sNC_INT_MIN … sNC_INT_MAX, sNC_INT_ANY or sNC_INT_NIL.
  long GetValue() const { return mValue; }

  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  void PrintOn(std::ostream& out) const override;
  void InputValue(std::istream& in) override;

  int Assign(const ZULTaVoAny& other) override;
  void SetNil() override { mValue = sNC_INT_NIL; }
  void SetAny() override { mValue = sNC_INT_ANY; }
  int IsNil() const override { return mValue == sNC_INT_NIL; }
  int IsAny() const override { return mValue == sNC_INT_ANY; }
  int IsIntersected(const ZULTaVoAny& other) const override;
  int Intersect(const ZULTaVoAny& other) override;
  int Intersect(const ZULTavSingleInteger& y);
  /// False counts as 0, True as 1. Answers 1 for a Nil boolean even if the receiver was Nil.
  int Intersect(const ZULTavSingleBoolean& y);
  /// Two different values unite to Any.
  int Unite(const ZULTaVoAny& other) override;
  long GetCardinality() const override;
  /// One value cannot be split: the receiver becomes Nil, `other` stays as it is.
  void Bisect(ZULTaVoObject& other, ValueSelection selection) override;
  /// Nil if the error flag is up, which is lowered; Any for a value out of range.
  void CheckValue();

  ZULTAV_INTEGER_OPERATIONS(ZULTAV_USE, ZULTaVoFrame)
  int CalcMinValue() override;
  int CalcMaxValue() override;
  int CalcEqualValue(const ZULTavSingleInteger& y);
  int CalcInverseEqualValue(ZULTavSingleInteger& y) const;
  int CalcLessOrEqualValue(const ZULTavSingleInteger& y);
  int CalcInverseLessOrEqualValue(ZULTavSingleInteger& y) const;
  int CalcNotLessAndUnequalValue(const ZULTavSingleInteger& y);
  int CalcInverseNotLessAndUnequalValue(ZULTavSingleInteger& y) const;

  int CalcMinValue(const ZULTavSingleInteger& a, const ZULTavSingleInteger& b);
  int CalcFirstInverseMinValue(ZULTavSingleInteger& a, const ZULTavSingleInteger& b) const;
  int CalcMaxValue(const ZULTavSingleInteger& a, const ZULTavSingleInteger& b);
  int CalcFirstInverseMaxValue(ZULTavSingleInteger& a, const ZULTavSingleInteger& b) const;
  int CalcLessValue(const ZULTavSingleInteger& y);
  int CalcInverseLessValue(ZULTavSingleInteger& y) const;
  int CalcNotLessValue(const ZULTavSingleInteger& y);
  int CalcInverseNotLessValue(ZULTavSingleInteger& y) const;
  /// The receiver is y + 1; there is nothing beyond sNC_INT_MAX.
  int CalcNextValue(const ZULTavSingleInteger& y);
  int CalcInverseNextValue(ZULTavSingleInteger& y) const;

  int CalcZeroValue() override;
  int CalcOneValue() override;
  int CalcAbsoluteValue(const ZULTavSingleInteger& y);
  int CalcInverseAbsoluteValue(ZULTavSingleInteger& y) const;
  int CalcNegativeValue(const ZULTavSingleInteger& y);
  int CalcInverseNegativeValue(ZULTavSingleInteger& y) const;
  int CalcSignumValue(ZULTaVoInteger& sign) const override;
  int CalcInverseSignumValue(const ZULTaVoInteger& sign) override;

  // Arithmetic beyond ±sNC_INT_MAX is a contradiction: the narrowed value becomes Nil.
  int CalcSumValue(const ZULTavSingleInteger& a, const ZULTavSingleInteger& b);
  int CalcFirstInverseSumValue(ZULTavSingleInteger& a, const ZULTavSingleInteger& b) const;
  int CalcProdValue(const ZULTavSingleInteger& a, const ZULTavSingleInteger& b);
  /// A fixed `a` is kept when the truncated quotient equals the receiver (not `a`): callers do not
  /// ask about a fixed argument.
  int CalcFirstInverseProdValue(ZULTavSingleInteger& a, const ZULTavSingleInteger& b) const;
  int CalcModValue(const ZULTavSingleInteger& a, const ZULTavSingleInteger& b);
  int CalcFirstInverseModValue(ZULTavSingleInteger& a, const ZULTavSingleInteger& b) const;
  /// An unconstrained `b` counts as the number sNC_INT_ANY, so that it becomes Nil unless a is
  /// the receiver's value; callers that cannot live with that restore it.
  int CalcSecondInverseModValue(const ZULTavSingleInteger& a, ZULTavSingleInteger& b) const;
  int CalcPowerValue(const ZULTavSingleInteger& a, const ZULTavSingleInteger& b);
  /// A base (exponent) that is not determined uniquely becomes Nil. A fixed `a` is kept when the
  /// base found equals the receiver (not `a`).
  int CalcFirstInversePowerValue(ZULTavSingleInteger& a, const ZULTavSingleInteger& b) const;
  int CalcSecondInversePowerValue(const ZULTavSingleInteger& a, ZULTavSingleInteger& b) const;

  /// Stores a value in its encoding; one beyond the encodings becomes Any. A bound of a single
  /// value is its value.
  void SetExactValue(long value) override { Put(value); }
  void SetLowerBound(long value) override { Put(value); }
  void SetUpperBound(long value) override { Put(value); }
  int InsertExactValue(long value) override;
  int RemoveExactValue(long value) override;
  long GetLowerBound() const override;
  long GetUpperBound() const override;
  /// The neighbour of `value` on the way to the domain, `value` ± 1 when it is the value held.
  long GetNextExactValue(long value) const override;
  long GetPrevExactValue(long value) const override;

  /// Least and greatest value, and the encodings of Any and Nil just outside; 0 until InitNumbers
  /// sets them.
  static long sNC_INT_MAX;
  static long sNC_INT_MIN;
  static long sNC_INT_ANY;
  static long sNC_INT_NIL;

 private:
  void Put(long value) {
    mValue = value;
    if (mValue > sNC_INT_ANY || mValue < sNC_INT_NIL) SetAny();
  }

  SubIntBase mValue;
};

extern template class zultav::detail::IntegerSlots<ZULTavSingleInteger,
                                                   zultav::detail::SingleDispatch>;
extern template class ZULTaVoFrame<
    ZULTavSingleInteger,
    zultav::detail::IntegerSlots<ZULTavSingleInteger, zultav::detail::SingleDispatch>>;

#endif
