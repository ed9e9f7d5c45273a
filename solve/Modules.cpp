#include "solve/Modules.h"

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
  mMain = mManager.OpenModule(ZULString(std::string_view(options.module)));
  if (mMain == nullptr)
    reason = "cannot open module '" + options.module + "': " + mManager.GetReason();
  return mMain != nullptr;
}

std::vector<const ZULTaVoModule*> Modules::All() const {
  std::vector<const ZULTaVoModule*> all{mMain};
  all.insert(all.end(), mMain->GetLoadedModules().begin(), mMain->GetLoadedModules().end());
  return all;
}
