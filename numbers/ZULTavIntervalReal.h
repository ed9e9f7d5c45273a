#ifndef ZULTAV_NUMBERS_ZULTAV_INTERVAL_REAL_H
#define ZULTAV_NUMBERS_ZULTAV_INTERVAL_REAL_H

#include "framework/intervals/ZULTavIntervals.h"
#include "framework/solver/ZULTaVoFrame.h"
#include "numbers/Export.h"
#include "numbers/detail/Slots.h"

class ZULTavIntervalInteger;
class ZULTavSingleInteger;
class ZULTavSingleReal;

/// One closed interval of reals. Nil when lower > upper; Any, the whole line, when both bounds
/// reach ±SubdefReal::sMaxValue.
///
/// Every operation intersects its target with an outward rounded enclosure, so that no solution
/// is lost; where a relation has a tolerance its docstring says so.
///
/// Operands: a generic overload takes any real or integer domain by its bounds, and answers 0 for
/// other types. What is narrowed in a domain of another class is written back into it
/// (IntersectInverse). A Nil target stays as it is (0), a Nil operand makes the target Nil (1).
class ZULTAV_NUMBERS_API ZULTavIntervalReal
    : public ZULTaVoFrame<
          ZULTavIntervalReal,
          zultav::detail::RealSlots<ZULTavIntervalReal, zultav::detail::IntervalDispatch>> {
 public:
  static constexpr char kClassName[] = "ZULTavIntervalReal";
  static constexpr char kTypeName[] = "interval real";

  /// The whole line.
  ZULTavIntervalReal() = default;
  ZULTavIntervalReal(const ZULTavIntervalReal&) = default;
  ZULTavIntervalReal& operator=(const ZULTavIntervalReal&) = default;
  explicit ZULTavIntervalReal(ZULStreamableInit init) : ZULTaVoFrame(init) {}
  /// [lower, upper], then CheckValue: Nil when nothing of it lies within the limits of the line, or
  /// a bound is NaN.
  ZULTavIntervalReal(double lower, double upper);
  explicit ZULTavIntervalReal(const SubdefReal& set) : ZULTavIntervalReal(set.lower, set.upper) {}
  /// The same set of numbers; the second argument means nothing.
  ZULTavIntervalReal(const ZULTavSingleReal& from, int);
  ZULTavIntervalReal(const ZULTavSingleInteger& from, int);
  ZULTavIntervalReal(const ZULTavIntervalInteger& from, int);
  ZULTavIntervalReal& operator=(const ZULTavSingleReal& from);
  ZULTavIntervalReal& operator=(const ZULTavSingleInteger& from);
  ZULTavIntervalReal& operator=(const ZULTavIntervalInteger& from);
  ~ZULTavIntervalReal() override;

  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  void PrintOn(std::ostream& out) const override;
  void InputValue(std::istream& in) override;

  /// Converts any real or integer domain; Nil for other types.
  int Assign(const ZULTaVoAny& other) override;
  void SetNil() override;
  void SetAny() override;
  int IsNil() const override { return mSet.IsEmpty(); }
  int IsAny() const override;
  int IsIntersected(const ZULTaVoAny& other) const override;
  int Intersect(const ZULTaVoAny& other) override;
  int Intersect(const ZULTavIntervalReal& other);
  /// Assign for the real and integer classes; false, and nothing stored, for any other type.
  bool Convert(const ZULTaVoAny& value);
  /// Narrows a value of any class that Convert takes to the receiver. A single value accepts only a
  /// receiver of one value; it is tested without tolerance.
  int IntersectInverse(ZULTaVoAny& value) const;
  int IntersectInverse(ZULTavSingleReal& value) const;
  int IntersectInverse(ZULTavSingleInteger& value) const;
  int IntersectInverse(ZULTavIntervalInteger& value) const;
  /// Hull of the union; Any for a foreign type.
  int Unite(const ZULTaVoAny& other) override;
  int Unite(const ZULTavIntervalReal& other);
  /// Nil 0, one value 1, else the number of grid points p apart; -2 when beyond 4294967294.
  long GetCardinality() const override;
  /// Halves share the midpoint. The selections of an end value move the bound by p.
  void Bisect(ZULTaVoObject& other, ValueSelection selection) override;
  /// Brings the bounds into ±SubdefReal::sMaxValue. Nil when a library error is pending; the flag
  /// is down afterwards.
  void CheckValue();

  const SubdefReal& GetSubdef() const { return mSet; }
  /// Stores the set, its bounds brought between the limits of the line; a NaN bound makes it Nil.
  /// The stores below do the same.
  void SetSubdef(const SubdefReal& set);
  void SetExactValue(double value) override;
  void SetLowerBound(double value) override;
  void SetUpperBound(double value) override;
  int InsertExactValue(double value) override;
  /// An end at `value` moves inward by 2p.
  int RemoveExactValue(double value) override;
  double GetLowerBound() const override { return mSet.lower; }
  double GetUpperBound() const override { return mSet.upper; }
  double GetNextExactValue(double) const override { return mSet.lower; }
  double GetPrevExactValue(double) const override { return mSet.upper; }

  // Relations.
  ZULTAV_REAL_OPERATIONS(ZULTAV_USE, ZULTaVoFrame)
  int CalcMinValue() override;
  int CalcMaxValue() override;
  int CalcZeroValue() override;
  int CalcOneValue() override;
  /// Pi and E are known to 1e-10 either way.
  int CalcPiValue() override;
  int CalcEValue() override;
  int CalcEqualValue(const ZULTavIntervalReal& y);
  int CalcInverseEqualValue(ZULTavIntervalReal& y) const;
  /// Narrows only by more than GetCompPrecision(), exactly onto the other bound; may leave the
  /// bounds crossed, which is Nil.
  int CalcLessOrEqualValue(const ZULTavIntervalReal& y);
  int CalcInverseLessOrEqualValue(ZULTavIntervalReal& y) const;
  int CalcNotLessAndUnequalValue(const ZULTavIntervalReal& y);
  int CalcInverseNotLessAndUnequalValue(ZULTavIntervalReal& y) const;
  /// Nil where the sets overlap by no more than the relative tolerance GetRelEps allows; else the
  /// bound moves p/10 beyond the other one.
  int CalcLessValue(const ZULTavIntervalReal& y);
  int CalcInverseLessValue(ZULTavIntervalReal& y) const;
  int CalcNotLessValue(const ZULTavIntervalReal& y);
  int CalcInverseNotLessValue(ZULTavIntervalReal& y) const;

  // Order, sign, arithmetic.
  int CalcMinValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b);
  int CalcFirstInverseMinValue(ZULTavIntervalReal& a, const ZULTavIntervalReal& b) const;
  int CalcMaxValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b);
  int CalcFirstInverseMaxValue(ZULTavIntervalReal& a, const ZULTavIntervalReal& b) const;
  /// The successor of v is v + p.
  int CalcNextValue(const ZULTavIntervalReal& y);
  int CalcInverseNextValue(ZULTavIntervalReal& y) const;
  int CalcAbsoluteValue(const ZULTavIntervalReal& y);
  int CalcInverseAbsoluteValue(ZULTavIntervalReal& y) const;
  int CalcNegativeValue(const ZULTavIntervalReal& y);
  int CalcInverseNegativeValue(ZULTavIntervalReal& y) const;
  int CalcSignumValue(ZULTaVoInteger& sign) const override;
  int CalcInverseSignumValue(const ZULTaVoInteger& sign) override;
  int CalcSumValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b);
  int CalcFirstInverseSumValue(ZULTavIntervalReal& a, const ZULTavIntervalReal& b) const;
  int CalcProdValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b);
  int CalcFirstInverseProdValue(ZULTavIntervalReal& a, const ZULTavIntervalReal& b) const;

  /// Truncated remainder. A divisor that reaches both sides of zero only bounds the result.
  int CalcModValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b);
  int CalcFirstInverseModValue(ZULTavIntervalReal& a, const ZULTavIntervalReal& b) const;
  int CalcSecondInverseModValue(const ZULTavIntervalReal& a, ZULTavIntervalReal& b) const;

  /// An exponent of an integer class means its integers alone; a real one means all reals in it
  /// for a base that is not negative, and its integers for one that is.
  int CalcPowerValue(const ZULTaVoNumber& a, const ZULTaVoNumber& b) override;
  int CalcPowerValue(const ZULTaVoNumber& a, const SubdefInt& b);
  int CalcPowerValue(const ZULTavIntervalReal& a, const SubdefInt& b);
  int CalcPowerValue(const ZULTavSingleReal& a, const SubdefInt& b);
  int CalcPowerValue(const ZULTavIntervalReal& a, const ZULTavIntervalReal& b);
  int CalcPowerValue(const ZULTavIntervalReal& a, const ZULTavSingleReal& b);
  int CalcFirstInversePowerValue(ZULTaVoNumber& a, const ZULTaVoNumber& b) const override;
  int CalcFirstInversePowerValue(ZULTavIntervalReal& a, const SubdefInt& b) const;
  int CalcFirstInversePowerValue(ZULTavIntervalReal& a, const ZULTavSingleInteger& b) const;
  int CalcFirstInversePowerValue(ZULTavIntervalReal& a, const ZULTavIntervalReal& b) const;
  int CalcFirstInversePowerValue(ZULTavIntervalReal& a, const ZULTavSingleReal& b) const;
  int CalcSecondInversePowerValue(const ZULTaVoNumber& a, ZULTaVoNumber& b) const override;
  int CalcSecondInversePowerValue(const ZULTavIntervalReal& a, SubdefInt& b) const;
  int CalcSecondInversePowerValue(const ZULTavIntervalReal& a, ZULTavIntervalReal& b) const;

  // Elementary functions. Angles in radians.
  int CalcExpValue(const ZULTavIntervalReal& x);
  int CalcInverseExpValue(ZULTavIntervalReal& x) const;
  int CalcSqrtValue(const ZULTavIntervalReal& x);
  int CalcInverseSqrtValue(ZULTavIntervalReal& x) const;
  int CalcSinValue(const ZULTavIntervalReal& x);
  int CalcInverseSinValue(ZULTavIntervalReal& x) const;
  int CalcCosValue(const ZULTavIntervalReal& x);
  int CalcInverseCosValue(ZULTavIntervalReal& x) const;
  int CalcTanValue(const ZULTavIntervalReal& x);
  int CalcInverseTanValue(ZULTavIntervalReal& x) const;
  /// Whole numbers. The inverses are closed: that of floor holds the next whole number itself.
  int CalcFloorValue(const ZULTavIntervalReal& x);
  int CalcInverseFloorValue(ZULTavIntervalReal& x) const;
  int CalcCeilValue(const ZULTavIntervalReal& x);
  int CalcInverseCeilValue(ZULTavIntervalReal& x) const;
  int CalcRoundValue(const ZULTavIntervalReal& x);
  int CalcInverseRoundValue(ZULTavIntervalReal& x) const;

 private:
  SubdefReal mSet;
};

extern template class zultav::detail::RealSlots<ZULTavIntervalReal,
                                                zultav::detail::IntervalDispatch>;
extern template class ZULTaVoFrame<
    ZULTavIntervalReal,
    zultav::detail::RealSlots<ZULTavIntervalReal, zultav::detail::IntervalDispatch>>;

#endif
