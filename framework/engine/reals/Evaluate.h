#ifndef ZULTAV_ENGINE_REALS_EVALUATE_H
#define ZULTAV_ENGINE_REALS_EVALUATE_H

#include "framework/engine/Function.h"

namespace zultav::engine {

/// All function(x, y). The most frequent functions are done in line: a call through the table costs
/// as much as they do.
ZULTAV_HOT RealRange Evaluate(Function function, const RealRange& x, const RealRange& y) {
  if (function == Function::kSum) return x + y;
  if (function == Function::kProduct) return x * y;
  if (function == Function::kSquare) return Square(x);
  if (function == Function::kDifference) return x - y;
  return RowOf(function).evaluate(x, y);
}

}  // namespace zultav::engine

#endif
