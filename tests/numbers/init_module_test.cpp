#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "framework/intervals/ZULTavIntervals.h"
#include "numbers/InitModule.h"
#include "numbers/ZULTavSingleInteger.h"
#include "numbers/ZULTavSingleReal.h"
#include "tests/number_module.h"

namespace {

using SI = ZULTavSingleInteger;
using SR = ZULTavSingleReal;

// Taken while the program is loaded, before any module is initialised.
const double kRealsBefore[] = {SR::sNC_REAL_MAX, SR::sNC_REAL_MIN, SR::sNC_REAL_ANY,
                               SR::sNC_REAL_NIL};
const long kIntegersBefore[] = {SI::sNC_INT_MAX, SI::sNC_INT_MIN, SI::sNC_INT_ANY, SI::sNC_INT_NIL};

/// The entry of this module: the framework's own module has one of that name, too.
decltype(&InitModule) Entry() {
  void* library = dlopen("libZULTavNumbers.so", RTLD_NOW | RTLD_NOLOAD);
  auto* entry = reinterpret_cast<decltype(&InitModule)>(dlsym(library, "InitModule"));
  dlclose(library);
  return entry;
}

TEST(InitModuleTest, SentinelsLieOneOutsideTheIntegersAndFarOutsideTheReals) {
  EXPECT_EQ(SI::sNC_INT_MAX, 2147483646);
  EXPECT_EQ(SI::sNC_INT_MIN, -2147483646);
  EXPECT_EQ(SI::sNC_INT_ANY, 2147483647);
  EXPECT_EQ(SI::sNC_INT_NIL, -2147483647);
  EXPECT_EQ(SR::sNC_REAL_MAX, 1e19);
  EXPECT_EQ(SR::sNC_REAL_MIN, -1e19);
  EXPECT_EQ(SR::sNC_REAL_ANY, 1e21);
  EXPECT_EQ(SR::sNC_REAL_NIL, -1e21);
  for (const double before : kRealsBefore) EXPECT_EQ(before, 0);
  for (const long before : kIntegersBefore) EXPECT_EQ(before, 0);
}

TEST(InitModuleTest, HandsTheSettingsOfTheFrameworkOn) {
  EXPECT_EQ(GetCompPrecision(), ZULTaVoReal::GetPrecision());
  EXPECT_NEAR(GetTrigLow(), -1e14, 1);  // through half-turns and back
  EXPECT_NEAR(GetTrigHigh(), 1e14, 1);
}

TEST(InitModuleTest, RefusesWithoutModuleOrManager) {
  ZULTaVoModule module("test");
  ZULTaVoModuleManager manager;
  EXPECT_EQ(Entry()(nullptr, &manager), 0);
  EXPECT_EQ(Entry()(&module, nullptr), 0);
  EXPECT_TRUE(module.GetDescriptors().empty());
  EXPECT_TRUE(manager.GetModules().empty());
}

TEST(InitModuleTest, RefusesWithoutTheAbstractTypes) {
  std::string directory = (std::filesystem::temp_directory_path() / "numbers_XXXXXX").string();
  ASSERT_NE(mkdtemp(directory.data()), nullptr);
  std::ofstream(directory + "/libZULTavAbstractTypes.so") << "no library";
  ZULTaVoModuleManager manager;
  manager.AddSearchDirectory(directory);
  ZULTaVoModule module("test");
  const long max = std::exchange(SI::sNC_INT_MAX, 5);
  EXPECT_EQ(Entry()(&module, &manager), 0);
  EXPECT_EQ(std::exchange(SI::sNC_INT_MAX, max), 5);
  EXPECT_TRUE(module.GetDescriptors().empty());
  EXPECT_TRUE(module.GetLoadedModules().empty());
  std::filesystem::remove_all(directory);
}

TEST(InitModuleTest, DependsOnTheAbstractTypes) {
  ASSERT_EQ(NumberModule().GetLoadedModules().size(), 1U);
  EXPECT_EQ(NumberModule().GetLoadedModules()[0]->GetName(), "ZULTavAbstractTypes");
}

}  // namespace
