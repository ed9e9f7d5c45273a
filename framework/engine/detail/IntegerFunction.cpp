#include "framework/engine/detail/Rules.h"

namespace zultav::engine {

/// z = function(x, y) over integers.
bool RunFunction(Engine& engine, const Rule& rule) {
  const FunctionRow& row = RowOf(static_cast<Function>(rule.data));
  const Slot* slots = engine.GetProgram().GetArguments(rule).data();
  const Slot z = slots[0], x = slots[1], y = slots[2];
  IntegerRange first = engine.GetIntegers(x), second = engine.GetIntegers(y);
  const IntegerRange values = row.evaluateIntegers(first, second);
  if (values.IsEmpty() || !engine.Narrow(z, values)) return false;
  const IntegerRange result = engine.GetIntegers(z);
  // All values are allowed: no operand is out of place.
  if (result == values && !row.isPartial) return true;
  if (!row.projectIntegers(result, first, second)) return false;
  return engine.Narrow(x, first) && (row.operands == 1 || engine.Narrow(y, second));
}

}  // namespace zultav::engine
