// Identity of the abstract value types, and the settings of the reals.

#include <cmath>

#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

namespace {
double sTrigLow = -1e14;
double sTrigHigh = 1e14;
}  // namespace

// Identity is the address of a named array: equal literals may share one address.
#define ZULTAVO_IDENTITY(CLASS)                      \
  static const char k##CLASS##Ident[] = #CLASS;      \
  const char* const CLASS::sIdent = k##CLASS##Ident; \
  const ZULTaVoObjectDescriptor* CLASS::sDescriptor = nullptr;

ZULTAVO_IDENTITY(ZULTaVoAny)
ZULTAVO_IDENTITY(ZULTaVoScalar)
ZULTAVO_IDENTITY(ZULTaVoBoolean)
ZULTAVO_IDENTITY(ZULTaVoNumber)
ZULTAVO_IDENTITY(ZULTaVoInteger)
ZULTAVO_IDENTITY(ZULTaVoReal)
#undef ZULTAVO_IDENTITY

double ZULTaVoReal::sPrecision = 1e-6;

int ZULTaVoReal::SetPrecision(double precision) {
  if (!(precision > 0 && std::isfinite(precision))) return 0;
  sPrecision = precision;
  return 1;
}

void ZULTaVoReal::GetTrigLimits(double& low, double& high) {
  low = sTrigLow;
  high = sTrigHigh;
}

int ZULTaVoReal::SetTrigLimits(double low, double high) {
  if (!(low < high && std::isfinite(low) && std::isfinite(high))) return 0;
  sTrigLow = low;
  sTrigHigh = high;
  return 1;
}
