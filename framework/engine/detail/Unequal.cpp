#include "framework/engine/detail/Rules.h"

namespace zultav::engine {

/// x <> y + c: what is fixed takes its value from the other one.
bool RunUnequal(Engine& engine, const Rule& rule) {
  const Slot* slots = engine.GetProgram().GetArguments(rule).data();
  const Slot x = slots[0], y = slots[1];
  const std::int64_t c = engine.GetProgram().GetNumbers(rule)[0];
  std::int64_t forbidden = 0;
  if (engine.IsFixedInteger(y)) {
    if (__builtin_add_overflow(engine.GetLower(y), c, &forbidden)) return true;
    if (!engine.Remove(x, forbidden)) return false;
    if (!engine.Contains(x, forbidden)) engine.Retire();
    return true;
  }
  if (!engine.IsFixedInteger(x)) return true;
  if (__builtin_sub_overflow(engine.GetLower(x), c, &forbidden)) return true;
  if (!engine.Remove(y, forbidden)) return false;
  if (!engine.Contains(y, forbidden)) engine.Retire();
  return true;
}

}  // namespace zultav::engine
