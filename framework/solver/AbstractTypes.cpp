// Identity of the abstract value types.

#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

// Identity is the address of a named array: equal literals may share one address.
#define ZULTAV_IDENTITY(CLASS)                       \
  static const char k##CLASS##Ident[] = #CLASS;      \
  const char* const CLASS::sIdent = k##CLASS##Ident; \
  const ZULTaVoObjectDescriptor* CLASS::sDescriptor = nullptr;

ZULTAV_IDENTITY(ZULTaVoAny)
ZULTAV_IDENTITY(ZULTaVoScalar)
ZULTAV_IDENTITY(ZULTaVoBoolean)
ZULTAV_IDENTITY(ZULTaVoNumber)
ZULTAV_IDENTITY(ZULTaVoInteger)
ZULTAV_IDENTITY(ZULTaVoReal)
#undef ZULTAV_IDENTITY
