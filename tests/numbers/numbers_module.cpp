#include "tests/numbers/numbers_module.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

std::unique_ptr<ZULTaVoModuleManager> manager;
ZULTaVoModule* module = nullptr;

class OpenNumbers : public testing::Environment {
 public:
  void SetUp() override {
    manager = std::make_unique<ZULTaVoModuleManager>();
    module = manager->OpenModule("ZULTavNumbers");
    ASSERT_NE(module, nullptr) << manager->GetReason();
  }
  void TearDown() override { manager.reset(); }
};

const testing::Environment* const environment = testing::AddGlobalTestEnvironment(new OpenNumbers);

}  // namespace

ZULTaVoModuleManager& NumbersManager() { return *manager; }
ZULTaVoModule& NumbersModule() { return *module; }
