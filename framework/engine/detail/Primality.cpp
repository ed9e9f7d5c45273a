#include "framework/intervals/Primality.h"

#include "framework/engine/detail/Rules.h"

namespace zultav::engine {

/// p is whether x is a prime.
bool RunPrimality(Engine& engine, const Rule& rule) {
  const Slot* slots = engine.GetProgram().GetArguments(rule).data();
  const Slot p = slots[0], x = slots[1];
  for (;;) {
    const IntegerRange before = engine.GetIntegers(x);
    const bool none = PrimesWithin(before).IsEmpty(), all = NonPrimesWithin(before).IsEmpty();
    if (none || all) {
      engine.Retire();
      return !(none && all) && engine.Fix(p, all ? 1 : 0);
    }
    if (!engine.IsFixedInteger(p)) return true;
    if (!engine.Narrow(x, engine.IsTrue(p) ? PrimesWithin(before) : NonPrimesWithin(before)))
      return false;
    // A bound that has skipped a hole may have to move on.
    if (engine.GetIntegers(x) == before) return true;
  }
}

}  // namespace zultav::engine
