#ifndef ZULTAV_NUMBERS_ZULTAV_SINGLE_REAL_H
#define ZULTAV_NUMBERS_ZULTAV_SINGLE_REAL_H

#include <iosfwd>

#include "framework/intervals/ZULTavIntervals.h"
#include "framework/solver/ZULTaVoFrame.h"
#include "numbers/Export.h"
#include "numbers/detail/Slots.h"

class ZULTavSingleInteger;

/// One real number, or Nil (none), or Any (not known yet).
///
/// Values are compared with a tolerance that follows the solver's precision p, read anew by every
/// test: two values differ when they are more than 2p apart, a real and an integer or an interval
/// when more than p. An operation whose result would be a range narrows nothing.
///
/// Operands: a generic overload takes single reals and single integers, and answers 0 for any
/// other type. Then, in typed and generic overloads alike: a Nil target stays as it is (0), a Nil
/// operand makes the target Nil (1), an operand that is Any narrows nothing (0); but where the
/// values of a function have bounds, its typed overload refuses a result beyond them.
class ZULTAV_NUMBERS_API ZULTavSingleReal final
    : public ZULTaVoFrame<
          ZULTavSingleReal,
          zultav::detail::RealSlots<ZULTavSingleReal, zultav::detail::IntervalDispatch>> {
 public:
  static constexpr char kClassName[] = "ZULTavSingleReal";
  static constexpr char kTypeName[] = "single real";
  static constexpr bool kAnyNarrowsNothing = true;

  /// Any.
  ZULTavSingleReal() = default;
  ZULTavSingleReal(const ZULTavSingleReal&) = default;
  ZULTavSingleReal& operator=(const ZULTavSingleReal&) = default;
  explicit ZULTavSingleReal(ZULStreamableInit init) : ZULTaVoFrame(init) {}
  /// The double at `value`, then CheckValue. Null: Any.
  explicit ZULTavSingleReal(const void* value);
  explicit ZULTavSingleReal(double value);
  /// The same number; the second argument means nothing.
  ZULTavSingleReal(const ZULTavSingleInteger& integer, int);
  ~ZULTavSingleReal() override;

  /// The sentinels, 0 until InitNumbers sets them: largest and smallest value (±1e19), and the
  /// encodings of the states Any (1e21) and Nil (-1e21).
  static double sNC_REAL_MAX;
  static double sNC_REAL_MIN;
  static double sNC_REAL_ANY;
  static double sNC_REAL_NIL;

  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  void PrintOn(std::ostream& out) const override;
  void InputValue(std::istream& in) override;
  /// Prints `value` with the digits that follow from `precision`, '.' as the decimal point.
  static void PrintReal(std::ostream& out, double value, double precision);
  /// Reads a number with '.' as the decimal point, whatever the locale.
  static double InputReal(std::istream& in);

  int Assign(const ZULTaVoAny& other) override;
  void SetNil() override { mValue = sNC_REAL_NIL; }
  void SetAny() override { mValue = sNC_REAL_ANY; }
  int IsNil() const override { return mValue == sNC_REAL_NIL; }
  int IsAny() const override { return mValue == sNC_REAL_ANY; }
  int IsIntersected(const ZULTaVoAny& other) const override;
  int Intersect(const ZULTaVoAny& other) override;
  int Intersect(const ZULTavSingleReal& other);
  /// Margin p.
  int Intersect(const ZULTavSingleInteger& other);
  /// Margin p. A pending library error counts as an empty set; the flag is down afterwards.
  int Intersect(const SubdefReal& set);
  /// Assign for the classes that generic overloads take; false, nothing stored, for another one.
  bool Convert(const ZULTaVoAny& value);
  /// Narrows a value of one of those classes to the receiver.
  int IntersectInverse(ZULTaVoAny& value) const;
  /// Margin p around the receiver truncated toward zero: 2.5 leaves no integer.
  int IntersectInverse(ZULTavSingleInteger& integer) const;
  int Unite(const ZULTaVoAny& other) override;
  int Unite(const ZULTavSingleReal& other);
  /// Nil 0, Any -1, else 1.
  long GetCardinality() const override;
  /// One value cannot be split: Nil.
  void Bisect(ZULTaVoObject& other, ValueSelection selection) override;
  /// Nil when a library error is pending (the flag is lowered), Any when out of range.
  void CheckValue();

  /// The number itself, sentinels included.
  double GetValue() const { return mValue; }
  /// The point interval of the value; the whole line for Any, an empty set for Nil.
  SubdefReal GetSubdef() const;
  void SetExactValue(double value) override;
  void SetLowerBound(double value) override { SetExactValue(value); }
  void SetUpperBound(double value) override { SetExactValue(value); }
  int InsertExactValue(double value) override;
  int RemoveExactValue(double value) override;
  double GetLowerBound() const override;
  double GetUpperBound() const override;
  double GetNextExactValue(double) const override { return mValue; }
  double GetPrevExactValue(double) const override { return mValue; }

  // Relations.
  ZULTAV_REAL_OPERATIONS(ZULTAV_USE, ZULTaVoFrame)
  int CalcMinValue() override;
  int CalcMaxValue() override;
  int CalcZeroValue() override;
  int CalcOneValue() override;
  int CalcPiValue() override;
  int CalcEValue() override;
  int CalcEqualValue(const ZULTaVoAny& y) override;
  int CalcEqualValue(const ZULTavSingleReal& y);
  int CalcInverseEqualValue(ZULTaVoAny& y) const override;
  int CalcInverseEqualValue(ZULTavSingleReal& y) const;
  int CalcInverseEqualValue(ZULTavSingleInteger& y) const;
  int CalcLessOrEqualValue(const ZULTavSingleReal& y);
  int CalcInverseLessOrEqualValue(ZULTavSingleReal& y) const;
  int CalcNotLessAndUnequalValue(const ZULTavSingleReal& y);
  int CalcInverseNotLessAndUnequalValue(ZULTavSingleReal& y) const;
  /// Strict relations have the fixed margin 1e-14.
  int CalcLessValue(const ZULTavSingleReal& y);
  int CalcInverseLessValue(ZULTavSingleReal& y) const;
  int CalcNotLessValue(const ZULTavSingleReal& y);
  int CalcInverseNotLessValue(ZULTavSingleReal& y) const;

  // Order, sign, arithmetic.
  int CalcMinValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b);
  int CalcFirstInverseMinValue(ZULTavSingleReal& a, const ZULTavSingleReal& b) const;
  int CalcMaxValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b);
  int CalcFirstInverseMaxValue(ZULTavSingleReal& a, const ZULTavSingleReal& b) const;
  /// The successor of v is v + 2p.
  int CalcNextValue(const ZULTavSingleReal& y);
  int CalcInverseNextValue(ZULTavSingleReal& y) const;
  int CalcAbsoluteValue(const ZULTavSingleReal& y);
  int CalcInverseAbsoluteValue(ZULTavSingleReal& y) const;
  int CalcNegativeValue(const ZULTavSingleReal& y);
  int CalcInverseNegativeValue(ZULTavSingleReal& y) const;
  /// `sign` must be a single integer.
  int CalcSignumValue(ZULTaVoInteger& sign) const override;
  int CalcInverseSignumValue(const ZULTaVoInteger& sign) override;
  int CalcSumValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b);
  int CalcFirstInverseSumValue(ZULTavSingleReal& a, const ZULTavSingleReal& b) const;
  int CalcProdValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b);
  int CalcFirstInverseProdValue(ZULTavSingleReal& a, const ZULTavSingleReal& b) const;

  /// Truncated remainder. Nothing is narrowed by a divisor 0 or a quotient beyond ±sNC_INT_MAX.
  int CalcModValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b);
  int CalcFirstInverseModValue(ZULTavSingleReal& a, const ZULTavSingleReal& b) const;
  int CalcSecondInverseModValue(const ZULTavSingleReal& a, ZULTavSingleReal& b) const;

  /// No margin: a fixed receiver must lie in the enclosure of the power.
  int CalcPowerValue(const ZULTaVoNumber& a, const ZULTaVoNumber& b) override;
  int CalcPowerValue(const ZULTavSingleReal& a, const ZULTavSingleReal& b);
  int CalcPowerValue(const ZULTavSingleReal& a, const ZULTavSingleInteger& b);
  int CalcFirstInversePowerValue(ZULTavSingleReal& a, const ZULTavSingleReal& b) const;
  int CalcFirstInversePowerValue(ZULTavSingleReal& a, const ZULTavSingleInteger& b) const;
  /// Whole-number exponents only.
  int CalcSecondInversePowerValue(const ZULTavSingleReal& a, ZULTavSingleReal& b) const;

  // Elementary functions. Angles in radians; beyond ±1e14 they narrow (almost) nothing.
  int CalcExpValue(const ZULTavSingleReal& x);
  int CalcInverseExpValue(ZULTavSingleReal& x) const;
  int CalcSqrtValue(const ZULTavSingleReal& x);
  int CalcInverseSqrtValue(ZULTavSingleReal& x) const;
  int CalcSinValue(const ZULTavSingleReal& x);
  int CalcInverseSinValue(ZULTavSingleReal& x) const;
  int CalcCosValue(const ZULTavSingleReal& x);
  int CalcInverseCosValue(ZULTavSingleReal& x) const;
  int CalcTanValue(const ZULTavSingleReal& x);
  int CalcInverseTanValue(ZULTavSingleReal& x) const;
  int CalcFloorValue(const ZULTavSingleReal& x);
  int CalcInverseFloorValue(ZULTavSingleReal& x) const;
  int CalcCeilValue(const ZULTavSingleReal& x);
  int CalcInverseCeilValue(ZULTavSingleReal& x) const;
  int CalcRoundValue(const ZULTavSingleReal& x);
  int CalcInverseRoundValue(ZULTavSingleReal& x) const;

  /// Nearest whole number, halves away from zero.
  static double my_round(double value);

 private:
  double mValue = sNC_REAL_ANY;
};

extern template class zultav::detail::RealSlots<ZULTavSingleReal, zultav::detail::IntervalDispatch>;
extern template class ZULTaVoFrame<
    ZULTavSingleReal,
    zultav::detail::RealSlots<ZULTavSingleReal, zultav::detail::IntervalDispatch>>;

#endif
