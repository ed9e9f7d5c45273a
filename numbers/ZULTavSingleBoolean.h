#ifndef ZULTAV_NUMBERS_ZULTAV_SINGLE_BOOLEAN_H
#define ZULTAV_NUMBERS_ZULTAV_SINGLE_BOOLEAN_H

#include "framework/intervals/SubdefBool.h"
#include "framework/solver/ZULTaVoFrame.h"
#include "numbers/Export.h"
#include "numbers/detail/Slots.h"

/// A truth value: False, True, undecided (Any) or contradictory (Nil). False < True, so that the
/// minimum is the logical and, the maximum the logical or.
///
/// Beside each slot, which takes abstract arguments and ignores those of another class, stands the
/// operation over this class.
class ZULTAV_NUMBERS_API ZULTavSingleBoolean final
    : public ZULTaVoFrame<
          ZULTavSingleBoolean,
          zultav::detail::BooleanSlots<ZULTavSingleBoolean, zultav::detail::SingleDispatch>> {
 public:
  static constexpr char kClassName[] = "ZULTavSingleBoolean";
  static constexpr char kTypeName[] = "single bool";
  static constexpr bool kAnyNarrowsNothing = false;

  /// Any.
  ZULTavSingleBoolean() = default;
  ZULTavSingleBoolean(const ZULTavSingleBoolean&) = default;
  ZULTavSingleBoolean& operator=(const ZULTavSingleBoolean&) = default;
  explicit ZULTavSingleBoolean(ZULStreamableInit init) : ZULTaVoFrame(init) {}
  /// From the `int` code at that address, as CheckValue leaves it; Any for null.
  explicit ZULTavSingleBoolean(const void* code);
  explicit ZULTavSingleBoolean(SubdefBool::Code code) : mSet(code) {}

  const SubdefBool& GetSet() const { return mSet; }

  void Write(ZULopstream& out) const override;
  void Read(ZULipstream& in) override;
  void PrintOn(std::ostream& out) const override;
  void InputValue(std::istream& in) override;

  int Assign(const ZULTaVoAny& other) override;
  void SetNil() override { mSet = SubdefBool::kNil; }
  void SetAny() override { mSet = SubdefBool::kAny; }
  int IsNil() const override { return mSet == SubdefBool::kNil; }
  int IsAny() const override { return mSet == SubdefBool::kAny; }
  int IsIntersected(const ZULTaVoAny& other) const override;
  int Intersect(const ZULTaVoAny& other) override;
  int Intersect(const ZULTavSingleBoolean& y);
  int Unite(const ZULTaVoAny& other) override;
  /// 2 for Any.
  long GetCardinality() const override;
  /// Splits Any into True and False, True here for selections 0 and 2, False for 1 and 3. Both
  /// become Nil when there is nothing to split, the receiver alone when `other` is no boolean.
  void Bisect(ZULTaVoObject& other, ValueSelection selection) override;
  /// A code that is none of the four becomes Any. Answers 1.
  int CheckValue();

  ZULTAV_BOOLEAN_OPERATIONS(ZULTAV_USE, ZULTaVoFrame)
  int CalcMinValue() override;
  int CalcMaxValue() override;
  int CalcEqualValue(const ZULTavSingleBoolean& y);
  int CalcInverseEqualValue(ZULTavSingleBoolean& y) const;
  int CalcLessOrEqualValue(const ZULTavSingleBoolean& y);
  int CalcInverseLessOrEqualValue(ZULTavSingleBoolean& y) const;
  int CalcNotLessAndUnequalValue(const ZULTavSingleBoolean& y);
  int CalcInverseNotLessAndUnequalValue(ZULTavSingleBoolean& y) const;

  int CalcMinValue(const ZULTavSingleBoolean& a, const ZULTavSingleBoolean& b);
  int CalcFirstInverseMinValue(ZULTavSingleBoolean& a, const ZULTavSingleBoolean& b) const;
  int CalcMaxValue(const ZULTavSingleBoolean& a, const ZULTavSingleBoolean& b);
  int CalcFirstInverseMaxValue(ZULTavSingleBoolean& a, const ZULTavSingleBoolean& b) const;
  int CalcLessValue(const ZULTavSingleBoolean& y);
  int CalcInverseLessValue(ZULTavSingleBoolean& y) const;
  int CalcNotLessValue(const ZULTavSingleBoolean& y);
  int CalcInverseNotLessValue(ZULTavSingleBoolean& y) const;
  /// The receiver is True and y False: nothing else has a successor.
  int CalcNextValue(const ZULTavSingleBoolean& y);
  int CalcInverseNextValue(ZULTavSingleBoolean& y) const;

  // A number counts as True unless it is 0.
  void SetExactValue(int value) override { mSet = Of(value); }
  int InsertExactValue(int value) override;
  int RemoveExactValue(int value) override;
  int IsTrue() const override { return mSet == SubdefBool::kTrue; }
  int IsFalse() const override { return mSet == SubdefBool::kFalse; }
  int SetFalse() override { return Narrow(SubdefBool::kFalse); }
  int SetTrue() override { return Narrow(SubdefBool::kTrue); }
  int CalcNegativeValue(const ZULTavSingleBoolean& y);
  int CalcInverseNegativeValue(ZULTavSingleBoolean& y) const;

 private:
  static SubdefBool::Code Of(int value) {
    return value != 0 ? SubdefBool::kTrue : SubdefBool::kFalse;
  }
  /// Keeps what `allowed` holds too. Nil stays Nil, unchanged.
  int Narrow(const SubdefBool& allowed);

  SubdefBool mSet;
};

extern template class zultav::detail::BooleanSlots<ZULTavSingleBoolean,
                                                   zultav::detail::SingleDispatch>;
extern template class ZULTaVoFrame<
    ZULTavSingleBoolean,
    zultav::detail::BooleanSlots<ZULTavSingleBoolean, zultav::detail::SingleDispatch>>;

#endif
