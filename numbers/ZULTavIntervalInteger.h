#ifndef ZULTAV_NUMBERS_ZULTAV_INTERVAL_INTEGER_H
#define ZULTAV_NUMBERS_ZULTAV_INTERVAL_INTEGER_H

#include "framework/intervals/SubdefInt.h"
#include "framework/solver/ZULTaVoFrame.h"
#include "numbers/Export.h"
#include "numbers/detail/Slots.h"

class ZULTavSingleInteger;

/// The domain of an integer variable whose values form one closed interval.
///
/// With M = SubdefInt::sMaxValue: Any is exactly [-M, M], and a bound at ±M is an infinite side in
/// arithmetic. Nil is any lower > upper; SetNil writes [M, -M], while relations may leave bounds
/// such as [5, 3] behind.
///
/// The slots take interval integers, single integers and, by their bounds, the integers of other
/// modules; any other argument is foreign: it narrows nothing, 0. The typed operations are sound
/// enclosures, the tightest ones where nothing else is said; they lower the error flag. A Nil
/// receiver (a Nil target of an inverse) is never narrowed further, 0; any other Nil operand makes
/// it Nil, 1.
class ZULTAV_NUMBERS_API ZULTavIntervalInteger final
    : public ZULTaVoFrame<
          ZULTavIntervalInteger,
          zultav::detail::IntegerSlots<ZULTavIntervalInteger, zultav::detail::IntervalDispatch>> {
 public:
  static constexpr char kClassName[] = "ZULTavIntervalInteger";
  static constexpr char kTypeName[] = "interval int";

  /// The full range.
  ZULTavIntervalInteger() = default;
  /// Bounds beyond ±M are stored as SetLowerBound and SetUpperBound store them.
  ZULTavIntervalInteger(long lower, long upper);
  explicit ZULTavIntervalInteger(const SubdefInt& set) : mSet(set) {}
  /// Nil, the full range for Any, or [v, v].
  ZULTavIntervalInteger(const ZULTavSingleInteger& value, int);
  explicit ZULTavIntervalInteger(ZULStreamableInit init) : ZULTaVoFrame(init) {}

  const SubdefInt& GetSubdef() const { return mSet; }
  SubdefInt& GetSubdef() { return mSet; }

  /// Two `long`: the lower, then the upper bound.
  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  void PrintOn(std::ostream& out) const override;
  void InputValue(std::istream& in) override;

  /// Brings the bounds into [-M, M]; Nil when the error flag is up, which it lowers.
  void CheckValue();

  // States and set operations ----------------------------------------------------------------

  /// Converts any integer, and a boolean to [0, 0], [1, 1] or [0, 1]; Nil for any other class.
  /// The answer means nothing.
  int Assign(const ZULTaVoAny& other) override;
  /// Stores the bounds of an integer of another class; false, and nothing stored, for other types.
  bool Convert(const ZULTaVoAny& value);
  void SetNil() override;
  void SetAny() override;
  int IsNil() const override { return mSet.IsEmpty(); }
  int IsAny() const override { return mSet == IntegerInterval::Whole(); }
  /// 1 when the intervals overlap, `other` being converted as Assign does.
  int IsIntersected(const ZULTaVoAny& other) const override;
  /// A foreign type makes the receiver Nil, 1.
  int Intersect(const ZULTaVoAny& other) override;
  int Intersect(const ZULTavIntervalInteger& other);
  int Intersect(const ZULTavSingleInteger& other);
  /// Narrows `target` to this interval: a single integer that is Any takes the value of a
  /// one-point interval only, the integers of other modules are narrowed through their bounds.
  /// A foreign type is left alone, 0.
  int IntersectInverse(ZULTavSingleInteger& target) const;
  int IntersectInverse(ZULTaVoAny& target) const;
  /// Hull; Nil for any class but interval and single integer. An empty side is ignored. Answers 1
  /// when the upper bound grew, and 0 even when the lower bound went down.
  int Unite(const ZULTaVoAny& other) override;
  int Unite(const ZULTavIntervalInteger& other);
  /// Nil 0, Any -2, else the number of values.
  long GetCardinality() const override;
  /// Splits at (lower + upper) / 2 - 1 where zero lies strictly inside, else in the middle, or
  /// splits off an end; see ValueSelection for what `other` gets. The receiver becomes Nil when
  /// `other` is no interval integer or the selection is none; both do when the receiver is Nil.
  void Bisect(ZULTaVoObject& other, ValueSelection selection) override;

  // Exact values and bounds ------------------------------------------------------------------

  /// Values are clamped to [-M, M], except ±(M + 1), which empty ranges use.
  void SetExactValue(long value) override;
  void SetLowerBound(long value) override;
  void SetUpperBound(long value) override;
  /// Widens to hold `value`; 1 when a bound moved.
  int InsertExactValue(long value) override;
  /// Moves a bound that equals `value` inward; Any and Nil stay.
  int RemoveExactValue(long value) override;
  long GetLowerBound() const override { return mSet.lower; }
  long GetUpperBound() const override { return mSet.upper; }
  /// The least value above `value`, or the nearest one when `value` lies outside: below the
  /// interval its lower bound, above it (and for Nil) `value` itself. value + 1 may lie outside.
  long GetNextExactValue(long value) const override;
  long GetPrevExactValue(long value) const override;

  // Constants and relations ------------------------------------------------------------------

  ZULTAV_INTEGER_OPERATIONS(ZULTAV_USE, ZULTaVoFrame)
  int CalcMinValue() override;
  int CalcMaxValue() override;
  int CalcZeroValue() override;
  int CalcOneValue() override;

  int CalcEqualValue(const ZULTavIntervalInteger& y) { return Intersect(y); }
  int CalcInverseEqualValue(ZULTavIntervalInteger& y) const { return y.Intersect(*this); }
  int CalcInverseEqualValue(ZULTavSingleInteger& y) const;

  /// Relations move one bound and leave the other where it is.
  int CalcLessOrEqualValue(const ZULTavIntervalInteger& y);
  int CalcInverseLessOrEqualValue(ZULTavIntervalInteger& y) const;
  int CalcInverseLessOrEqualValue(ZULTavSingleInteger& y) const;

  int CalcLessValue(const ZULTavIntervalInteger& y);
  int CalcInverseLessValue(ZULTavIntervalInteger& y) const;
  int CalcInverseLessValue(ZULTavSingleInteger& y) const;

  int CalcNotLessValue(const ZULTavIntervalInteger& y) {
    return y.CalcInverseLessOrEqualValue(*this);
  }
  int CalcInverseNotLessValue(ZULTavIntervalInteger& y) const {
    return y.CalcLessOrEqualValue(*this);
  }
  int CalcInverseNotLessValue(ZULTavSingleInteger& y) const;

  int CalcNotLessAndUnequalValue(const ZULTavIntervalInteger& y) {
    return y.CalcInverseLessValue(*this);
  }
  int CalcInverseNotLessAndUnequalValue(ZULTavIntervalInteger& y) const {
    return y.CalcLessValue(*this);
  }
  int CalcInverseNotLessAndUnequalValue(ZULTavSingleInteger& y) const;

  // Unary operations -------------------------------------------------------------------------

  /// x = y + 1; there is none for a y of M.
  int CalcNextValue(const ZULTavIntervalInteger& y);
  int CalcInverseNextValue(ZULTavIntervalInteger& y) const;
  int CalcInverseNextValue(ZULTavSingleInteger& y) const;

  int CalcAbsoluteValue(const ZULTavIntervalInteger& y);
  int CalcInverseAbsoluteValue(ZULTavIntervalInteger& y) const;
  int CalcInverseAbsoluteValue(ZULTavSingleInteger& y) const;

  int CalcNegativeValue(const ZULTavIntervalInteger& y);
  int CalcInverseNegativeValue(ZULTavIntervalInteger& y) const;
  int CalcInverseNegativeValue(ZULTavSingleInteger& y) const;

  int CalcSignumValue(ZULTaVoInteger& sign) const override;
  int CalcInverseSignumValue(const ZULTaVoInteger& sign) override;

  // Binary operations ------------------------------------------------------------------------

  int CalcMinValue(const ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b);
  int CalcFirstInverseMinValue(ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b) const;
  int CalcFirstInverseMinValue(ZULTavSingleInteger& a, const ZULTavIntervalInteger& b) const;

  int CalcMaxValue(const ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b);
  int CalcFirstInverseMaxValue(ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b) const;
  int CalcFirstInverseMaxValue(ZULTavSingleInteger& a, const ZULTavIntervalInteger& b) const;

  int CalcSumValue(const ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b);
  int CalcFirstInverseSumValue(ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b) const;
  int CalcFirstInverseSumValue(ZULTavSingleInteger& a, const ZULTavIntervalInteger& b) const;

  int CalcProdValue(const ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b);
  int CalcFirstInverseProdValue(ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b) const;
  int CalcFirstInverseProdValue(ZULTavSingleInteger& a, const ZULTavIntervalInteger& b) const;

  /// The remainder has the sign of `a`; see CalcAllModValue for its enclosure, which stops early
  /// and may lose remainders near zero when `b` is no single value.
  int CalcModValue(const ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b);
  /// From a = q*b + r over the hull of the quotients q; hence no tight enclosures.
  int CalcFirstInverseModValue(ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b) const;
  int CalcFirstInverseModValue(ZULTavSingleInteger& a, const ZULTavIntervalInteger& b) const;
  int CalcSecondInverseModValue(const ZULTavIntervalInteger& a, ZULTavIntervalInteger& b) const;
  int CalcSecondInverseModValue(const ZULTavIntervalInteger& a, ZULTavSingleInteger& b) const;

  /// 0^0 is 1; a negative exponent counts only where the power is an integer.
  int CalcPowerValue(const ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b);
  int CalcPowerValue(const ZULTavSingleInteger& a, const ZULTavIntervalInteger& b);
  int CalcFirstInversePowerValue(ZULTavIntervalInteger& a, const ZULTavIntervalInteger& b) const;
  int CalcFirstInversePowerValue(ZULTavIntervalInteger& a, const ZULTavSingleInteger& b) const;
  int CalcSecondInversePowerValue(const ZULTavIntervalInteger& a, ZULTavIntervalInteger& b) const;

 private:
  SubdefInt mSet;
};

extern template class zultav::detail::IntegerSlots<ZULTavIntervalInteger,
                                                   zultav::detail::IntervalDispatch>;
extern template class ZULTaVoFrame<
    ZULTavIntervalInteger,
    zultav::detail::IntegerSlots<ZULTavIntervalInteger, zultav::detail::IntervalDispatch>>;

#endif
