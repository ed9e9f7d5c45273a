#include "solve/Modules.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace {

/// The directories beside the program, so that a build tree and an installed one both work without
/// any setting.
void AddDirectories(ZULTaVoModuleManager& manager) {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return;
  const std::filesystem::path folder = program.parent_path();
  manager.AddFallbackDirectory((folder.parent_path() / "lib").string());
  manager.AddFallbackDirectory((folder / "lib").string());
}

}  // namespace

bool Modules::Open(const Options& options, std::string& reason) {
  if (options.precision && !mSettings.SetPrecision(*options.precision)) {
    reason = "the precision is out of range";
    return false;
  }
  if (options.trigLimits &&
      !mSettings.SetTrigLimits(options.trigLimits->first, options.trigLimits->second)) {
    reason = "the trigonometric limits are out of range";
    return false;
  }
  mScope.emplace(&mSettings);
  AddDirectories(mManager);
  for (const std::string& name : options.modules) {
    const ZULTaVoModule* module = mManager.OpenModule(ZULString(std::string_view(name)));
    if (module == nullptr) {
      reason = "cannot open module '" + name + "': " + mManager.GetReason();
      return false;
    }
    if (std::find(mNamed.begin(), mNamed.end(), module) == mNamed.end()) mNamed.push_back(module);
  }
  return true;
}

std::vector<const ZULTaVoModule*> Modules::All() const {
  std::vector<const ZULTaVoModule*> all;
  const auto add = [&all](const ZULTaVoModule* module) {
    if (std::find(all.begin(), all.end(), module) == all.end()) all.push_back(module);
  };
  for (const ZULTaVoModule* module : mNamed) {
    add(module);
    for (const ZULTaVoModule* loaded : module->GetLoadedModules()) add(loaded);
  }
  return all;
}
