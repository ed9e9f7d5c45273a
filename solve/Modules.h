#ifndef ZULTAV_SOLVE_MODULES_H
#define ZULTAV_SOLVE_MODULES_H

#include <optional>
#include <string>
#include <vector>

#include "framework/solver/ZULTaVoModuleManager.h"
#include "framework/solver/ZULTaVoRealSettings.h"
#include "solve/Options.h"

/// The modules that the options name, and those that they depend on. The precision and the window
/// of the options hold for this thread as long as the object lives, and so for the networks it
/// makes.
class Modules {
 public:
  /// Answers false, with the reason, when a module cannot be opened.
  bool Open(const Options& options, std::string& reason);

  /// In the order of the options.
  const std::vector<const ZULTaVoModule*>& Named() const { return mNamed; }
  /// They and those that each has loaded, itself first.
  std::vector<const ZULTaVoModule*> All() const;

 private:
  ZULTaVoRealSettings mSettings;
  std::optional<ZULTaVoRealScope> mScope;
  ZULTaVoModuleManager mManager;
  std::vector<const ZULTaVoModule*> mNamed;
};

#endif
