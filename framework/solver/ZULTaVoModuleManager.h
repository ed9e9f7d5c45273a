#ifndef ZULTAV_SOLVER_ZULTAVO_MODULE_MANAGER_H
#define ZULTAV_SOLVER_ZULTAVO_MODULE_MANAGER_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/solver/ZULTaVoModule.h"

/// Opens modules by name and keeps them open. Managers of one process share their modules: each
/// library is initialised once and closed with the last manager that holds it. A manager is for one
/// thread at a time, the managers of a process are for any threads; so are the modules and the
/// descriptors they hold, which do not change once they are open.
///
/// A module NAME is the shared library "libNAME.so" in one of the directories of the search path,
/// which exports `extern "C" int InitModule(ZULTaVoModule*, ZULTaVoModuleManager*)`, answering 1.
/// Where is searched, in this order: directories added here, those of the environment variable
/// ZULTAV_MODULE_PATH (separated by ':'), directories added as fallbacks, the directory of the
/// framework library itself.
class ZULTAV_TYPES_API ZULTaVoModuleManager : public ZULTaVoBase {
 public:
  ZULTaVoModuleManager();
  /// Closes modules in the reverse order of opening. No object of theirs may be alive.
  ~ZULTaVoModuleManager();
  ZULTaVoModuleManager(const ZULTaVoModuleManager&) = delete;
  ZULTaVoModuleManager& operator=(const ZULTaVoModuleManager&) = delete;

  /// Searched before all others, in the order added.
  void AddSearchDirectory(std::string_view directory);
  /// Searched where the environment's directories have nothing, in the order added.
  void AddFallbackDirectory(std::string_view directory);

  /// The module, loaded and initialised once; null when that fails, GetReason() then says why. A
  /// module that refused is closed again and leaves the others usable.
  ZULTaVoModule* OpenModule(const ZULString& name);
  /// Why the last OpenModule answered null; empty when it did not.
  const std::string& GetReason() const { return mReason; }

  /// All open modules, in the order in which their initialisation ended.
  std::vector<ZULTaVoModule*> GetModules() const;

 private:
  struct Library;

  std::vector<std::string> SearchPath() const;
  ZULTaVoModule* Load(const std::string& name);
  const std::shared_ptr<Library>& Hold(const std::shared_ptr<Library>& library);

  std::vector<std::string> mDirectories;
  std::vector<std::string> mFallbacks;
  std::vector<std::shared_ptr<Library>> mLibraries;
  std::vector<std::string> mOpening;
  std::string mReason;
};

#endif
