// Opening modules: where they are found, why they are refused, and what is left afterwards.

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/solver/world.h"

namespace {

namespace fs = std::filesystem;

/// Lines of the process's memory map that name the library, or all.
std::size_t CountMappings(const std::string& name = "") {
  std::ifstream maps("/proc/self/maps");
  std::size_t count = 0;
  for (std::string line; std::getline(maps, line);) count += line.find(name) != std::string::npos;
  return count;
}

std::size_t ResidentKilobytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t all = 0, resident = 0;
  statm >> all >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

}  // namespace

TEST(ModuleManagerTest, ARefusalNamesItsReasonAndLeavesOtherModulesUsable) {
  const fs::path folder = fs::temp_directory_path() / ("modules" + std::to_string(getpid()));
  fs::create_directories(folder / "libFolder.so");
  std::ofstream(folder / "libText.so") << "no library";
  std::ofstream(folder / "libEmpty.so").flush();
  World world;
  world.manager.AddSearchDirectory(folder.string());
  world.manager.AddSearchDirectory("");
  const ZULTaVoModule* bits = &world.Open("BitModule");
  struct Row {
    const char *name, *reason;
  } rows[] = {
      {"Missing",                 "module \"Missing\" was not found; searched: "   },
      {"Text",                    "module \"Text\" cannot be loaded: "             },
      {"Empty",                   "module \"Empty\" cannot be loaded: "            },
      {"Folder",                  "module \"Folder\" cannot be loaded: "           },
      {"NoEntry",                 "module \"NoEntry\" has no entry InitModule: "   },
      {"Refuses",                 "module \"Refuses\" refused to start: "          },
      {"Throws",                  "module \"Throws\" refused to start: "           },
      {"NeedsItself",             "(module \"NeedsItself\" needs itself)"          },
      {"NeedsACircle",            "(module \"NeedsACircle\" needs itself))"        },
      {"",                        "\"\" is no module name: "                       },
      {"../lib/libZULTavNumbers", "\"../lib/libZULTavNumbers\" is no module name: "},
      {"/tmp/x",                  "\"/tmp/x\" is no module name: "                 },
      {"BitModule.so",            "\"BitModule.so\" is no module name: "           },
      {"Bit Module",              "is no module name"                              },
      {"Bit\nModule",             "is no module name"                              },
      {"caf\xc3\xa9",             "is no module name"                              },
  };
  for (int round = 0; round < 2; ++round) {  // a refusal is not remembered against a module
    for (const Row& row : rows) {
      EXPECT_EQ(world.manager.OpenModule(row.name), nullptr) << row.name;
      EXPECT_NE(world.manager.GetReason().find(row.reason), std::string::npos)
          << row.name << ": " << world.manager.GetReason();
      EXPECT_LT(world.manager.GetReason().size(), 4000U);
    }
    EXPECT_EQ(world.manager.OpenModule(ZULString(std::string(1000000, 'x').c_str())), nullptr);
    EXPECT_EQ(&world.Open("BitModule"), bits);
    EXPECT_EQ(world.manager.GetReason(), "");
    EXPECT_EQ(world.manager.GetModules().size(), 2U);
  }
  const char* kClosed[] = {"NoEntry", "Refuses", "Throws", "NeedsItself", "NeedsACircle"};
  for (const char* name : kClosed) EXPECT_EQ(CountMappings(std::string("lib") + name), 0U) << name;
  ZULTaVoAny* x = world.Add("bit int", "0,9");
  ASSERT_TRUE(
      world.Post("Addition", {x, world.Add("bit int", "5,6"), world.Add("bit int", "2,3")}));
  EXPECT_EQ(world.network.Propagate(), ZULTaVoNetwork::Status::kConsistent);
  EXPECT_EQ(Show(*x), "7,9");
  fs::remove_all(folder);
}

TEST(ModuleManagerTest, NonsenseInOneModuleStaysThere) {
  World world;
  const ZULTaVoModule& module = world.Open("RegistersNonsense");
  ASSERT_EQ(module.GetDescriptors().size(), 3U) << "two types of one name and one without a name";
  EXPECT_EQ(module.FindType("twice"), module.GetDescriptors()[0]);
  EXPECT_TRUE(module.FindOperators("+").empty());
  EXPECT_TRUE(module.GetLoadedModules().empty());
  ZULTaVoNetwork network;
  EXPECT_EQ(network.AddObject(module.FindType("twice")), nullptr);
  EXPECT_EQ(world.Open("BitModule").FindOperators("+").size(), 1U);
}

TEST(ModuleManagerTest, FindsModulesAlongTheSearchPath) {
  ZULTaVoModuleManager manager;
  EXPECT_EQ(manager.OpenModule("BitModule"), nullptr);
  setenv("ZULTAV_MODULE_PATH", ":/nowhere::" TEST_MODULES ":", 1);
  const ZULTaVoModule* bits = manager.OpenModule("BitModule");
  unsetenv("ZULTAV_MODULE_PATH");
  ASSERT_NE(bits, nullptr) << manager.GetReason();
  EXPECT_EQ(manager.OpenModule("BitModule"), bits) << "an open module needs no search";
  const ZULTaVoModule* numbers = manager.OpenModule("ZULTavNumbers");
  ASSERT_NE(numbers, nullptr) << manager.GetReason();
  const auto modules = manager.GetModules();
  ASSERT_EQ(modules.size(), 3U);
  EXPECT_EQ(modules[0]->GetName(), "ZULTavAbstractTypes");
  EXPECT_EQ(modules[2], numbers);
  EXPECT_EQ(numbers->GetLoadedModules(), (std::vector<ZULTaVoModule*>{modules[0]}));
  EXPECT_EQ(modules[0]->GetDescriptors().size(), 39U)
      << "six abstract types, 32 constraints, a relation";
}

TEST(ModuleManagerTest, OpeningAThousandTimesDoesNotGrow) {
  [[maybe_unused]] std::size_t mappings = 0;
  [[maybe_unused]] std::size_t resident = 0;
  for (int i = 0; i < 1000; ++i) {
    if (i == 100) {
      mappings = CountMappings();
      resident = ResidentKilobytes();
    }
    ZULTaVoModuleManager manager;
    manager.AddSearchDirectory(TEST_MODULES);
    for (const char* name : {"ZULTavNumbers", "BitModule"})
      ASSERT_NE(manager.OpenModule(name), nullptr) << manager.GetReason();
    ASSERT_EQ(manager.OpenModule("Refuses"), nullptr);
  }
  for (const char* name : {"libZULTavNumbers", "libBitModule", "libRefuses"})
    EXPECT_EQ(CountMappings(name), 0U) << name << " stays loaded";
// Sanitizers keep freed memory and map more for themselves.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_LE(CountMappings(), mappings + 2);
  EXPECT_LE(ResidentKilobytes(), resident + 512);
#endif
}
