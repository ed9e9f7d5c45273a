#include "framework/engine/detail/Rules.h"

namespace zultav::engine {

/// z is the number of truths among p1 … pn.
bool RunCount(Engine& engine, const Rule& rule) {
  const std::span<const Slot> slots = engine.GetProgram().GetArguments(rule);
  const Slot z = slots[0];
  const std::span<const Slot> truths = slots.subspan(1);
  std::int64_t certain = 0, possible = 0;
  for (const Slot p : truths) {
    certain += engine.IsTrue(p) ? 1 : 0;
    possible += engine.IsFalse(p) ? 0 : 1;
  }
  if (!engine.SetLower(z, certain) || !engine.SetUpper(z, possible)) return false;
  const bool allTrue = engine.GetLower(z) == possible, allFalse = engine.GetUpper(z) == certain;
  if (!allTrue && !allFalse) return true;
  engine.Retire();
  for (const Slot p : truths) {
    if (engine.IsTrue(p) || engine.IsFalse(p)) continue;
    if (!engine.Fix(p, allTrue ? 1 : 0)) return false;
  }
  return true;
}

}  // namespace zultav::engine
