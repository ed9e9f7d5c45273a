#ifndef ZULTAV_SOLVER_ZULTAVO_BOOLEAN_H
#define ZULTAV_SOLVER_ZULTAVO_BOOLEAN_H

#include "framework/solver/ZULTaVoScalar.h"

/// A set of truth values, False < True.
class ZULTAV_TYPES_API ZULTaVoBoolean : public ZULTaVoScalar {
 public:
  using ZULTaVoScalar::ZULTaVoScalar;
  int IsDerivedFrom(const char* id) const override {
    return id == sIdent || ZULTaVoScalar::IsDerivedFrom(id);
  }

  int CalcUnequalValue(const ZULTaVoAny& y) override;
  int CalcInverseUnequalValue(ZULTaVoAny& y) const override;
  int CalcIsEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const override;
  int CalcIsLessOrEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const override;
  int CalcIsLess(const ZULTaVoScalar& y, ZULTaVoBoolean& truth) const override;

  virtual void SetExactValue(int value) = 0;
  virtual int InsertExactValue(int value) = 0;
  virtual int RemoveExactValue(int value) = 0;
  /// 1 when exactly {True} (exactly {False}).
  virtual int IsTrue() const = 0;
  virtual int IsFalse() const = 0;
  /// Narrow to {False} ({True}).
  virtual int SetFalse() = 0;
  virtual int SetTrue() = 0;
  virtual int CalcNegativeValue(const ZULTaVoBoolean& y) = 0;
  virtual int CalcInverseNegativeValue(ZULTaVoBoolean& y) const = 0;

  static const char* const sIdent;
  static const ZULTaVoObjectDescriptor* sDescriptor;
};

#endif
