#ifndef ZULTAV_TESTS_NUMBER_MODULE_H
#define ZULTAV_TESTS_NUMBER_MODULE_H

#include <gtest/gtest.h>

#include "framework/solver/ZULTaVoModule.h"
#include "framework/solver/ZULTaVoModuleManager.h"

/// The module of values, opened by name and open to the end.
inline const ZULTaVoModule& NumberModule() {
  static ZULTaVoModuleManager manager;
  static const ZULTaVoModule* const module = [] {
    const ZULTaVoModule* opened = manager.OpenModule("ZULTavNumbers");
    if (opened == nullptr) ADD_FAILURE() << manager.GetReason();
    return opened;
  }();
  return *module;
}

/// Before any test, since classes of the module that a program links are not ready until then.
class OpenNumberModule : public testing::Environment {
  void SetUp() override { NumberModule(); }
};
inline testing::Environment* const kOpenNumberModule =
    testing::AddGlobalTestEnvironment(new OpenNumberModule);

#endif
