#ifndef ZULTAV_SOLVER_ZULTAVO_INTEGER_H
#define ZULTAV_SOLVER_ZULTAVO_INTEGER_H

#include "framework/solver/ZULTaVoNumber.h"

/// A set of integers.
class ZULTAV_TYPES_API ZULTaVoInteger : public ZULTaVoNumber {
 public:
  using ZULTaVoNumber::ZULTaVoNumber;
  int IsDerivedFrom(const char* id) const override {
    return id == sIdent || ZULTaVoNumber::IsDerivedFrom(id);
  }

  int CalcUnequalValue(const ZULTaVoAny& y) override;
  int CalcInverseUnequalValue(ZULTaVoAny& y) const override;
  int CalcIsEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const override;
  int CalcIsLessOrEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const override;
  int CalcIsLess(const ZULTaVoScalar& y, ZULTaVoBoolean& truth) const override;

  virtual void SetExactValue(long value) = 0;
  virtual void SetLowerBound(long value) = 0;
  virtual void SetUpperBound(long value) = 0;
  virtual int InsertExactValue(long value) = 0;
  virtual int RemoveExactValue(long value) = 0;
  /// The lower bound lies above the upper one when the domain is Nil.
  virtual long GetLowerBound() const = 0;
  virtual long GetUpperBound() const = 0;

  virtual long GetNextExactValue(long value) const = 0;
  virtual long GetPrevExactValue(long value) const = 0;

  static const char* const sIdent;
  static const ZULTaVoObjectDescriptor* sDescriptor;
};

#endif
