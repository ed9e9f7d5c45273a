#ifndef ZULTAV_TESTS_NUMBER_MODULE_H
#define ZULTAV_TESTS_NUMBER_MODULE_H

#include <gtest/gtest.h>

#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoModuleManager.h"

/// A module, opened by name and open to the end.
inline const ZULTaVoModule& OpenedModule(const char* name) {
  static ZULTaVoModuleManager manager;
  const ZULTaVoModule* opened = manager.OpenModule(name);
  if (opened == nullptr) ADD_FAILURE() << manager.GetReason();
  return *opened;
}

/// The module of values.
inline const ZULTaVoModule& NumberModule() {
  static const ZULTaVoModule& module = OpenedModule("ZULTavNumbers");
  return module;
}

/// The second one, whose functions have values of the first.
inline const ZULTaVoModule& RelationModule() {
  NumberModule();
  static const ZULTaVoModule& module = OpenedModule("ZULTavRelations");
  return module;
}

/// Before any test, since classes of the module that a program links are not ready until then.
class OpenNumberModule : public testing::Environment {
  void SetUp() override { NumberModule(); }
};
inline testing::Environment* const kOpenNumberModule =
    testing::AddGlobalTestEnvironment(new OpenNumberModule);

#endif
