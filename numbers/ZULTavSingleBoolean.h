#ifndef ZULTAV_NUMBERS_ZULTAV_SINGLE_BOOLEAN_H
#define ZULTAV_NUMBERS_ZULTAV_SINGLE_BOOLEAN_H

#include "framework/intervals/SubdefBool.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoFrame.h"
#include "numbers/Export.h"

/// A truth value: False, True, undecided (Any) or contradictory (Nil). False < True, so that the
/// minimum is the logical and, the maximum the logical or.
///
/// Beside each slot, which takes abstract arguments and ignores those of another class, stands the
/// operation over this class.
class ZULTAV_NUMBERS_API ZULTavSingleBoolean final
    : public ZULTaVoFrame<ZULTavSingleBoolean, ZULTaVoBoolean> {
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

  int CalcMinValue() override;
  int CalcMaxValue() override;
  int CalcEqualValue(const ZULTaVoAny& y) override;
  int CalcEqualValue(const ZULTavSingleBoolean& y);
  int CalcInverseEqualValue(ZULTaVoAny& y) const override;
  int CalcInverseEqualValue(ZULTavSingleBoolean& y) const;
  int CalcLessOrEqualValue(const ZULTaVoAny& y) override;
  int CalcLessOrEqualValue(const ZULTavSingleBoolean& y);
  int CalcInverseLessOrEqualValue(ZULTaVoAny& y) const override;
  int CalcInverseLessOrEqualValue(ZULTavSingleBoolean& y) const;
  int CalcNotLessAndUnequalValue(const ZULTaVoAny& y) override;
  int CalcNotLessAndUnequalValue(const ZULTavSingleBoolean& y);
  int CalcInverseNotLessAndUnequalValue(ZULTaVoAny& y) const override;
  int CalcInverseNotLessAndUnequalValue(ZULTavSingleBoolean& y) const;

  int CalcMinValue(const ZULTaVoScalar& a, const ZULTaVoScalar& b) override;
  int CalcMinValue(const ZULTavSingleBoolean& a, const ZULTavSingleBoolean& b);
  int CalcFirstInverseMinValue(ZULTaVoScalar& a, const ZULTaVoScalar& b) const override;
  int CalcFirstInverseMinValue(ZULTavSingleBoolean& a, const ZULTavSingleBoolean& b) const;
  int CalcMaxValue(const ZULTaVoScalar& a, const ZULTaVoScalar& b) override;
  int CalcMaxValue(const ZULTavSingleBoolean& a, const ZULTavSingleBoolean& b);
  int CalcFirstInverseMaxValue(ZULTaVoScalar& a, const ZULTaVoScalar& b) const override;
  int CalcFirstInverseMaxValue(ZULTavSingleBoolean& a, const ZULTavSingleBoolean& b) const;
  int CalcLessValue(const ZULTaVoScalar& y) override;
  int CalcLessValue(const ZULTavSingleBoolean& y);
  int CalcInverseLessValue(ZULTaVoScalar& y) const override;
  int CalcInverseLessValue(ZULTavSingleBoolean& y) const;
  int CalcNotLessValue(const ZULTaVoScalar& y) override;
  int CalcNotLessValue(const ZULTavSingleBoolean& y);
  int CalcInverseNotLessValue(ZULTaVoScalar& y) const override;
  int CalcInverseNotLessValue(ZULTavSingleBoolean& y) const;
  /// The receiver is True and y False: nothing else has a successor.
  int CalcNextValue(const ZULTaVoScalar& y) override;
  int CalcNextValue(const ZULTavSingleBoolean& y);
  int CalcInverseNextValue(ZULTaVoScalar& y) const override;
  int CalcInverseNextValue(ZULTavSingleBoolean& y) const;

  // A number counts as True unless it is 0.
  void SetExactValue(int value) override { mSet = Of(value); }
  int InsertExactValue(int value) override;
  int RemoveExactValue(int value) override;
  int IsTrue() const override { return mSet == SubdefBool::kTrue; }
  int IsFalse() const override { return mSet == SubdefBool::kFalse; }
  int SetFalse() override { return Narrow(SubdefBool::kFalse); }
  int SetTrue() override { return Narrow(SubdefBool::kTrue); }
  int CalcNegativeValue(const ZULTaVoBoolean& y) override;
  int CalcNegativeValue(const ZULTavSingleBoolean& y);
  int CalcInverseNegativeValue(ZULTaVoBoolean& y) const override;
  int CalcInverseNegativeValue(ZULTavSingleBoolean& y) const;

 private:
  static SubdefBool::Code Of(int value) {
    return value != 0 ? SubdefBool::kTrue : SubdefBool::kFalse;
  }
  /// Keeps what `allowed` holds too. Nil stays Nil, unchanged.
  int Narrow(const SubdefBool& allowed);

  SubdefBool mSet;
};

extern template class ZULTaVoFrame<ZULTavSingleBoolean, ZULTaVoBoolean>;

#endif
