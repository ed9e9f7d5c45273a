#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoModuleManager.h"
#include "relations/Export.h"
#include "relations/Relations.h"

extern "C" ZULTAV_RELATIONS_API int InitModule(ZULTaVoModule* module,
                                               ZULTaVoModuleManager* manager) {
  if (module == nullptr || manager == nullptr) return 0;
  // The framework's module has the abstract types.
  ZULTaVoModule* types = manager->OpenModule(ZULString("ZULTavAbstractTypes"));
  if (types == nullptr) return 0;
  module->AddLoadedModule(types);
#define ZULTAV_RELATION(NAME) \
  module->AddObjectDescriptor(new ZULTaVoRelationDescriptor(zultav::relations::Describe##NAME()));
  ZULTAV_RELATIONS(ZULTAV_RELATION)
#undef ZULTAV_RELATION
  zultav::relations::RegisterFunctions(*module, manager->GetModules());
  return 1;
}
