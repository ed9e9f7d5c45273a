#include "solve/Modules.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "framework/solver/ZULTaVoReal.h"

namespace {

/// The user's directories come first, then those beside the program, so that a build tree and an
/// installed one both work without any setting.
void AddDirectories(ZULTaVoModuleManager& manager) {
  if (const char* variable = std::getenv("ZULTAV_MODULE_PATH")) {
    std::string_view rest = variable;
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find(':'), rest.size());
      if (end != 0) manager.AddSearchDirectory(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return;
  const std::filesystem::path folder = program.parent_path();
  manager.AddSearchDirectory((folder.parent_path() / "lib").string());
  manager.AddSearchDirectory((folder / "lib").string());
}

}  // namespace

bool Modules::Open(const Options& options, std::string& reason) {
  if (options.precision && !ZULTaVoReal::SetPrecision(*options.precision)) {
    reason = "the precision is out of range";
    return false;
  }
  if (options.trigLimits &&
      !ZULTaVoReal::SetTrigLimits(options.trigLimits->first, options.trigLimits->second)) {
    reason = "the trigonometric limits are out of range";
    return false;
  }
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
