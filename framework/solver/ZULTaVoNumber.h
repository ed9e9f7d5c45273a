#ifndef ZULTAV_SOLVER_ZULTAVO_NUMBER_H
#define ZULTAV_SOLVER_ZULTAVO_NUMBER_H

#include "framework/solver/ZULTaVoScalar.h"

class ZULTaVoInteger;

/// A domain of numbers.
class ZULTAV_TYPES_API ZULTaVoNumber : public ZULTaVoScalar {
 public:
  using ZULTaVoScalar::ZULTaVoScalar;
  int IsDerivedFrom(const char* id) const override {
    return id == sIdent || ZULTaVoScalar::IsDerivedFrom(id);
  }

  virtual int CalcZeroValue() = 0;
  virtual int CalcOneValue() = 0;
  virtual int CalcAbsoluteValue(const ZULTaVoNumber& y) = 0;
  virtual int CalcInverseAbsoluteValue(ZULTaVoNumber& y) const = 0;
  virtual int CalcNegativeValue(const ZULTaVoNumber& y) = 0;
  virtual int CalcInverseNegativeValue(ZULTaVoNumber& y) const = 0;
  /// Narrows `sign` to the signs (-1, 0, 1) of the receiver.
  virtual int CalcSignumValue(ZULTaVoInteger& sign) const = 0;
  virtual int CalcInverseSignumValue(const ZULTaVoInteger& sign) = 0;
  virtual int CalcSumValue(const ZULTaVoNumber& a, const ZULTaVoNumber& b) = 0;
  virtual int CalcFirstInverseSumValue(ZULTaVoNumber& a, const ZULTaVoNumber& b) const = 0;
  virtual int CalcProdValue(const ZULTaVoNumber& a, const ZULTaVoNumber& b) = 0;
  virtual int CalcFirstInverseProdValue(ZULTaVoNumber& a, const ZULTaVoNumber& b) const = 0;
  /// Truncated remainder: it has the sign of the dividend.
  virtual int CalcModValue(const ZULTaVoNumber& a, const ZULTaVoNumber& b) = 0;
  virtual int CalcFirstInverseModValue(ZULTaVoNumber& a, const ZULTaVoNumber& b) const = 0;
  virtual int CalcSecondInverseModValue(const ZULTaVoNumber& a, ZULTaVoNumber& b) const = 0;
  virtual int CalcPowerValue(const ZULTaVoNumber& a, const ZULTaVoNumber& b) = 0;
  virtual int CalcFirstInversePowerValue(ZULTaVoNumber& a, const ZULTaVoNumber& b) const = 0;
  virtual int CalcSecondInversePowerValue(const ZULTaVoNumber& a, ZULTaVoNumber& b) const = 0;

  static const char* const sIdent;
  static const ZULTaVoObjectDescriptor* sDescriptor;
};

#endif
