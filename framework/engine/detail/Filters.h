#ifndef ZULTAV_ENGINE_DETAIL_FILTERS_H
#define ZULTAV_ENGINE_DETAIL_FILTERS_H

#include <cstddef>
#include <vector>

#include "framework/engine/Engine.h"

namespace zultav::engine {

/// Constraints whose rule is not known: their filters run on the objects of the network, which are
/// shown what the engine knows.
class Filters {
 public:
  explicit Filters(const Program& program);
  Engine::Status Run(Engine& engine, ZULTaVoNetwork& network, const Rule& rule);
  std::size_t GetMemoryUsed() const { return mShown.capacity() * sizeof(Shown); }

 private:
  /// The bounds of an object when the filter began.
  struct Shown {
    IntegerRange integers;
    RealRange reals;
  };
  static void Show(const Engine& engine, Slot slot, ZULTaVoAny& x, Shown& shown);
  static bool Take(Engine& engine, Slot slot, const ZULTaVoAny& x, const Shown& shown);

  std::vector<Shown> mShown;  // of the arguments of the running filter
};

}  // namespace zultav::engine

#endif
