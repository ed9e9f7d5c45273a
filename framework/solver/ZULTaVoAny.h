#ifndef ZULTAV_SOLVER_ZULTAVO_ANY_H
#define ZULTAV_SOLVER_ZULTAVO_ANY_H

#include "framework/solver/ZULTaVoObject.h"

class ZULTaVoBoolean;

/// A domain: the set of values that one variable may still take. Nil is the empty set, Any the
/// unconstrained one.
///
/// Narrowing operations answer 1 when the narrowed domain changed (becoming Nil included), else
/// 0. `Calc<Op>Value` narrows the receiver, the result of Op over the arguments; the const
/// `CalcInverse…` forms narrow the argument passed by non-const reference. An argument of a
/// foreign type narrows nothing.
class ZULTAV_TYPES_API ZULTaVoAny : public ZULTaVoObject {
 public:
  /// How Bisect splits: which half goes to the other object.
  enum ValueSelection : int { kLowerHalf = 0, kUpperHalf = 1, kLeastValue = 2, kGreatestValue = 3 };
  static constexpr int kValueSelections = kGreatestValue + 1;

  using ZULTaVoObject::ZULTaVoObject;
  int IsDerivedFrom(const char* id) const override {
    return id == sIdent || ZULTaVoObject::IsDerivedFrom(id);
  }

  /// Copies the other domain's value; Nil for a type that cannot be converted.
  virtual int Assign(const ZULTaVoAny& other) = 0;
  virtual void SetNil() = 0;
  virtual void SetAny() = 0;
  virtual int IsNil() const = 0;
  virtual int IsAny() const = 0;
  virtual int IsIntersected(const ZULTaVoAny& other) const = 0;
  virtual int Intersect(const ZULTaVoAny& other) = 0;
  virtual int Unite(const ZULTaVoAny& other) = 0;
  /// Number of values: 0 for Nil, -1 unbounded (single types), -2 too many to count.
  virtual long GetCardinality() const = 0;
  /// Upper minus lower bound; 1 for an undecided boolean; 0 for Nil and single values.
  virtual double GetWidth() const;
  /// Width over max(scale, |lower|, |upper|).
  virtual double GetRelativeWidth(double scale) const;
  /// Splits the domain between the receiver and `other`, an object of the same class.
  virtual void Bisect(ZULTaVoObject& other, ValueSelection selection) = 0;

  virtual int CalcMinValue() = 0;
  virtual int CalcMaxValue() = 0;
  virtual int CalcEqualValue(const ZULTaVoAny& y) = 0;
  virtual int CalcInverseEqualValue(ZULTaVoAny& y) const = 0;
  virtual int CalcUnequalValue(const ZULTaVoAny& y) = 0;
  virtual int CalcInverseUnequalValue(ZULTaVoAny& y) const = 0;
  virtual int CalcIsEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const = 0;
  virtual int CalcLessOrEqualValue(const ZULTaVoAny& y) = 0;
  virtual int CalcInverseLessOrEqualValue(ZULTaVoAny& y) const = 0;
  virtual int CalcNotLessAndUnequalValue(const ZULTaVoAny& y) = 0;
  virtual int CalcInverseNotLessAndUnequalValue(ZULTaVoAny& y) const = 0;
  virtual int CalcIsLessOrEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const = 0;

  static const char* const sIdent;
  static const ZULTaVoObjectDescriptor* sDescriptor;
};

#endif
