#ifndef ZULTAV_TESTS_NUMBERS_OTHER_INTEGER_H
#define ZULTAV_TESTS_NUMBERS_OTHER_INTEGER_H

#include "framework/solver/ZULTaVoInteger.h"

/// An integer of another module, which domains know by its bounds alone. They may lie beyond the
/// limits of this module, and writing one is counted. It does no arithmetic.
class OtherInteger : public ZULTaVoInteger {
 public:
  OtherInteger(long low, long high) : lower(low), upper(high) {}

  long lower, upper;
  int writes = 0;

  void SetNil() override { lower = 1, upper = 0; }
  int IsNil() const override { return lower > upper; }
  int IsAny() const override { return 0; }
  void SetLowerBound(long value) override { lower = value, ++writes; }
  void SetUpperBound(long value) override { upper = value, ++writes; }
  long GetLowerBound() const override { return lower; }
  long GetUpperBound() const override { return upper; }
  const char* CastableID() const override { return "OtherInteger"; }
  const ZULTaVoObjectDescriptor* GetDescriptor() const override { return nullptr; }

#define IDLE(result, name, arguments) \
  result name arguments override { return result(); }
#define IDLE_RELATION(name, Other)             \
  IDLE(int, Calc##name##Value, (const Other&)) \
  IDLE(int, CalcInverse##name##Value, (Other&) const)
#define IDLE_OPERATION(name, Other)                          \
  IDLE(int, Calc##name##Value, (const Other&, const Other&)) \
  IDLE(int, CalcFirstInverse##name##Value, (Other&, const Other&) const)
  IDLE(void, Write, (ZULopstream&) const)
  IDLE(void, Read, (ZULipstream&))
  IDLE(void, PrintOn, (std::ostream&) const)
  IDLE(void, InputValue, (std::istream&))
  IDLE(int, Assign, (const ZULTaVoAny&))
  IDLE(void, SetAny, ())
  IDLE(int, IsIntersected, (const ZULTaVoAny&) const)
  IDLE(int, Intersect, (const ZULTaVoAny&))
  IDLE(int, Unite, (const ZULTaVoAny&))
  IDLE(long, GetCardinality, () const)
  IDLE(void, Bisect, (ZULTaVoObject&, ValueSelection))
  IDLE(int, CalcMinValue, ())
  IDLE(int, CalcMaxValue, ())
  IDLE(int, CalcZeroValue, ())
  IDLE(int, CalcOneValue, ())
  IDLE_RELATION(Equal, ZULTaVoAny)
  IDLE_RELATION(LessOrEqual, ZULTaVoAny)
  IDLE_RELATION(NotLessAndUnequal, ZULTaVoAny)
  IDLE_RELATION(Less, ZULTaVoScalar)
  IDLE_RELATION(NotLess, ZULTaVoScalar)
  IDLE_RELATION(Next, ZULTaVoScalar)
  IDLE_RELATION(Absolute, ZULTaVoNumber)
  IDLE_RELATION(Negative, ZULTaVoNumber)
  IDLE(int, CalcSignumValue, (ZULTaVoInteger&) const)
  IDLE(int, CalcInverseSignumValue, (const ZULTaVoInteger&))
  IDLE_OPERATION(Min, ZULTaVoScalar)
  IDLE_OPERATION(Max, ZULTaVoScalar)
  IDLE_OPERATION(Sum, ZULTaVoNumber)
  IDLE_OPERATION(Prod, ZULTaVoNumber)
  IDLE_OPERATION(Mod, ZULTaVoNumber)
  IDLE_OPERATION(Power, ZULTaVoNumber)
  IDLE(int, CalcSecondInverseModValue, (const ZULTaVoNumber&, ZULTaVoNumber&) const)
  IDLE(int, CalcSecondInversePowerValue, (const ZULTaVoNumber&, ZULTaVoNumber&) const)
  IDLE(void, SetExactValue, (long))
  IDLE(int, InsertExactValue, (long))
  IDLE(int, RemoveExactValue, (long))
  IDLE(long, GetNextExactValue, (long) const)
  IDLE(long, GetPrevExactValue, (long) const)
#undef IDLE
#undef IDLE_RELATION
#undef IDLE_OPERATION
};

#endif
