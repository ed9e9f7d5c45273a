#ifndef ZULTAV_BENCH_FIXTURE_H
#define ZULTAV_BENCH_FIXTURE_H

#include <cstdlib>
#include <iostream>

#include "framework/solver/ZULTavAbstractTypes.h"

namespace bench {

/// The module of numbers, opened once for the whole program.
inline ZULTaVoModule& OpenNumbers() {
  static ZULTaVoModuleManager manager;
  static ZULTaVoModule* module = manager.OpenModule("ZULTavNumbers");
  if (module == nullptr) {
    std::cerr << manager.GetReason() << '\n';
    std::exit(1);
  }
  return *module;
}

}  // namespace bench

#endif
