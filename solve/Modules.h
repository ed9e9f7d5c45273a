#ifndef ZULTAV_SOLVE_MODULES_H
#define ZULTAV_SOLVE_MODULES_H

#include <optional>
#include <string>
#include <vector>

#include "framework/solver/ZULTaVoModuleManager.h"
#include "framework/solver/ZULTaVoRealSettings.h"
#include "solve/Options.h"

/// The module that the options name, and those that it depends on. The precision and the window of
/// the options hold for this thread as long as the object lives, and so for the networks it makes.
class Modules {
 public:
  /// Answers false, with the reason, when the module cannot be opened.
  bool Open(const Options& options, std::string& reason);

  const ZULTaVoModule& Main() const { return *mMain; }
  /// The module and those that it loaded, itself first.
  std::vector<const ZULTaVoModule*> All() const;

 private:
  ZULTaVoRealSettings mSettings;
  std::optional<ZULTaVoRealScope> mScope;
  ZULTaVoModuleManager mManager;
  ZULTaVoModule* mMain = nullptr;
};

#endif
