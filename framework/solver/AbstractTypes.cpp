// Identity of the abstract value types.

#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"

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
