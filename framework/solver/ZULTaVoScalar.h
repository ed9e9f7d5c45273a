#ifndef ZULTAV_SOLVER_ZULTAVO_SCALAR_H
#define ZULTAV_SOLVER_ZULTAVO_SCALAR_H

#include "framework/solver/ZULTaVoAny.h"

/// A domain over ordered values.
class ZULTAV_TYPES_API ZULTaVoScalar : public ZULTaVoAny {
 public:
  using ZULTaVoAny::ZULTaVoAny;
  int IsDerivedFrom(const char* id) const override {
    return id == sIdent || ZULTaVoAny::IsDerivedFrom(id);
  }

  using ZULTaVoAny::CalcMaxValue;
  using ZULTaVoAny::CalcMinValue;
  virtual int CalcMinValue(const ZULTaVoScalar& a, const ZULTaVoScalar& b) = 0;
  virtual int CalcFirstInverseMinValue(ZULTaVoScalar& a, const ZULTaVoScalar& b) const = 0;
  virtual int CalcMaxValue(const ZULTaVoScalar& a, const ZULTaVoScalar& b) = 0;
  virtual int CalcFirstInverseMaxValue(ZULTaVoScalar& a, const ZULTaVoScalar& b) const = 0;
  virtual int CalcLessValue(const ZULTaVoScalar& y) = 0;
  virtual int CalcInverseLessValue(ZULTaVoScalar& y) const = 0;
  virtual int CalcNotLessValue(const ZULTaVoScalar& y) = 0;
  virtual int CalcInverseNotLessValue(ZULTaVoScalar& y) const = 0;
  virtual int CalcIsLess(const ZULTaVoScalar& y, ZULTaVoBoolean& truth) const = 0;
  virtual int CalcNextValue(const ZULTaVoScalar& y) = 0;
  virtual int CalcInverseNextValue(ZULTaVoScalar& y) const = 0;

  static const char* const sIdent;
  static const ZULTaVoObjectDescriptor* sDescriptor;
};

#endif
