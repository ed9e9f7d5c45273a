#ifndef ZULTAV_NUMBERS_INIT_MODULE_H
#define ZULTAV_NUMBERS_INIT_MODULE_H

#include "numbers/Export.h"

class ZULTaVoModule;
class ZULTaVoModuleManager;

/// The entry of the module: adds its value types, operators and constraint to `module`, after
/// opening the framework's abstract types through `manager`, and fixes the numeric limits.
/// Answers 1; 0, and adds nothing, when an argument is null or the abstract types cannot be opened.
///
/// Every module exports an entry of this name: a solver finds it in the library it has opened.
extern "C" ZULTAV_NUMBERS_API int InitModule(ZULTaVoModule* module, ZULTaVoModuleManager* manager);

/// Hands the framework's precision and trigonometric limits to the interval library, and sets the
/// encodings of Nil, Any, the least and the greatest value of the single domains. No domain may be
/// used before.
ZULTAV_NUMBERS_API void InitNumbers();

#endif
