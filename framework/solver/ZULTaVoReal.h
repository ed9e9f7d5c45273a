#ifndef ZULTAV_SOLVER_ZULTAVO_REAL_H
#define ZULTAV_SOLVER_ZULTAVO_REAL_H

#include <atomic>

#include "framework/solver/ZULTaVoNumber.h"
#include "framework/solver/ZULTaVoRealSettings.h"

/// A set of reals.
class ZULTAV_TYPES_API ZULTaVoReal : public ZULTaVoNumber {
 public:
  using ZULTaVoNumber::ZULTaVoNumber;
  int IsDerivedFrom(const char* id) const override {
    return id == sIdent || ZULTaVoNumber::IsDerivedFrom(id);
  }

  double GetRelativeWidth(double scale) const override;
  int CalcUnequalValue(const ZULTaVoAny& y) override;
  int CalcInverseUnequalValue(ZULTaVoAny& y) const override;
  int CalcIsEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const override;
  int CalcIsLessOrEqual(const ZULTaVoAny& y, ZULTaVoBoolean& truth) const override;
  int CalcIsLess(const ZULTaVoScalar& y, ZULTaVoBoolean& truth) const override;

  virtual void SetExactValue(double value) = 0;
  virtual void SetLowerBound(double value) = 0;
  virtual void SetUpperBound(double value) = 0;
  virtual int InsertExactValue(double value) = 0;
  virtual int RemoveExactValue(double value) = 0;
  /// The lower bound lies above the upper one when the domain is Nil.
  virtual double GetLowerBound() const = 0;
  virtual double GetUpperBound() const = 0;

  virtual int CalcPiValue() = 0;
  virtual int CalcEValue() = 0;
  virtual int CalcExpValue(const ZULTaVoReal& x) = 0;
  virtual int CalcInverseExpValue(ZULTaVoReal& x) const = 0;
  virtual int CalcSqrtValue(const ZULTaVoReal& x) = 0;
  virtual int CalcInverseSqrtValue(ZULTaVoReal& x) const = 0;
  virtual int CalcSinValue(const ZULTaVoReal& x) = 0;
  virtual int CalcInverseSinValue(ZULTaVoReal& x) const = 0;
  virtual int CalcCosValue(const ZULTaVoReal& x) = 0;
  virtual int CalcInverseCosValue(ZULTaVoReal& x) const = 0;
  virtual int CalcTanValue(const ZULTaVoReal& x) = 0;
  virtual int CalcInverseTanValue(ZULTaVoReal& x) const = 0;
  virtual int CalcFloorValue(const ZULTaVoReal& x) = 0;
  virtual int CalcInverseFloorValue(ZULTaVoReal& x) const = 0;
  virtual int CalcCeilValue(const ZULTaVoReal& x) = 0;
  virtual int CalcInverseCeilValue(ZULTaVoReal& x) const = 0;
  virtual int CalcRoundValue(const ZULTaVoReal& x) = 0;
  virtual int CalcInverseRoundValue(ZULTaVoReal& x) const = 0;
  virtual double GetNextExactValue(double value) const = 0;
  virtual double GetPrevExactValue(double value) const = 0;

  // The settings that hold for this thread: those of the network in which it propagates, else those
  // of the process, which the setters change.

  /// The solver's precision p, the tolerance of real domains; always positive. Default 1e-6.
  static double GetPrecision() {
    const ZULTaVoRealSettings* settings = ZULTaVoRealScope::GetPresent();
    return settings != nullptr ? settings->GetPrecision()
                               : sPrecision.load(std::memory_order_relaxed);
  }
  /// Answers 1, or 0 and changes nothing unless 0 < precision < infinity.
  static int SetPrecision(double precision);
  /// The window of the inverse trigonometric functions, in radians. Default ±1e14.
  static void GetTrigLimits(double& low, double& high);
  /// Answers 1, or 0 and changes nothing unless low < high, both finite.
  static int SetTrigLimits(double low, double high);

  /// Who is told of the window when SetTrigLimits has changed it; null for nobody. There is one.
  using TrigLimitsListener = void (*)(double low, double high);
  static void ListenToTrigLimits(TrigLimitsListener listener);

  static const char* const sIdent;
  static const ZULTaVoObjectDescriptor* sDescriptor;

 private:
  static constinit std::atomic<double> sPrecision;  // of the process
};

#endif
