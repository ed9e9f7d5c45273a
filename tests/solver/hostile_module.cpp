// Modules that do what they should not; CASE says which.

#include <stdexcept>

#include "framework/solver/ZULTavAbstractTypes.h"

#define NO_ENTRY 0
#define REFUSES 1
#define REGISTERS_NONSENSE 2
#define NEEDS_ITSELF 3
#define NEEDS_A_CIRCLE 4
#define CLOSES_A_CIRCLE 5
#define THROWS 6

/// Depends on the framework, whose library has an entry of the same name.
extern "C" ZULTAV_TYPES_API int UseFramework() { return ZULTaVoReal::GetPrecision() > 0; }

#if CASE != NO_ENTRY

namespace {

[[maybe_unused]] ZULTaVoObjectDescriptor* MakeType(const char* name) {
  return new ZULTaVoObjectDescriptor(name, nullptr, 1);
}

[[maybe_unused]] int RegisterNonsense(ZULTaVoModule& module, ZULTaVoModuleManager& manager) {
  const ZULTaVoModule* types = manager.OpenModule("ZULTavAbstractTypes");
  module.AddObjectDescriptor(nullptr);
  ZULTaVoObjectDescriptor* twice = MakeType("twice");
  module.AddObjectDescriptor(twice);
  module.AddObjectDescriptor(twice);
  module.AddObjectDescriptor(MakeType("twice"));
  module.AddObjectDescriptor(MakeType(""));
  for (const ZULTaVoObjectDescriptor* foreign : types->GetDescriptors())
    module.AddObjectDescriptor(foreign);
  using Operator = ZULTaVoOperatorDescriptor;
  const auto* constraint = types->FindConstraint("ZULTaVoAdditionConstraint");
  for (const auto* type : {static_cast<ZULTaVoObjectDescriptor*>(nullptr), twice}) {
    module.AddObjectDescriptor(new Operator("+", Operator::Shape::kBinary, {type}, constraint));
    module.AddObjectDescriptor(
        new Operator("+", Operator::Shape::kBinary, {type, type, type}, nullptr));
    module.AddObjectDescriptor(ZULTaVoCreateBinaryOperator("+", type, type, type, twice));
  }
  module.AddLoadedModule(nullptr);
  return 1;
}

}  // namespace

extern "C" ZULTAV_TYPES_API int InitModule(ZULTaVoModule* module, ZULTaVoModuleManager* manager) {
  switch (CASE) {
    case REGISTERS_NONSENSE:
      return RegisterNonsense(*module, *manager);
    case NEEDS_ITSELF:
    case CLOSES_A_CIRCLE:
      return manager->OpenModule(CASE == NEEDS_ITSELF ? "NeedsItself" : "NeedsACircle") != nullptr;
    case NEEDS_A_CIRCLE:
      return manager->OpenModule("ClosesACircle") != nullptr;
    case THROWS:
      throw std::runtime_error("not expected here");
    default:
      module->AddObjectDescriptor(MakeType("leftover"));
      return 0;
  }
}

#endif
