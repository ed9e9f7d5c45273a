#ifndef ZULTAV_SOLVE_MODULES_H
#define ZULTAV_SOLVE_MODULES_H

#include <string>
#include <vector>

#include "framework/solver/ZULTaVoModuleManager.h"
#include "solve/Options.h"

/// The module that the options name, and those that it depends on.
class Modules {
 public:
  /// Sets what modules read when they are opened (the precision), and opens the module. Answers
  /// false, with the reason, when it cannot be opened.
  bool Open(const Options& options, std::string& reason);

  const ZULTaVoModule& Main() const { return *mMain; }
  /// The module and those that it loaded, itself first.
  std::vector<const ZULTaVoModule*> All() const;

 private:
  ZULTaVoModuleManager mManager;
  ZULTaVoModule* mMain = nullptr;
};

#endif
