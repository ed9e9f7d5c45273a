#ifndef ZULTAV_ENGINE_FUNCTION_H
#define ZULTAV_ENGINE_FUNCTION_H

#include <cstdint>

#include "framework/engine/Export.h"
#include "framework/intervals/IntegerRange.h"
#include "framework/intervals/RealRange.h"

namespace zultav::engine {

/// The functions that the engine knows; FunctionRow says what each of them is.
enum class Function : std::uint8_t {
  kIdentity,
  kSum,
  kDifference,
  kProduct,
  kQuotient,
  kNegative,
  kPower,
  kRemainder,  ///< truncated
  kMinimum,
  kMaximum,
  kAbsolute,
  kSign,
  kExp,
  kLog,
  kSquare,
  kSqrt,
  kSine,
  kCosine,
  kTangent,
  kRound,
  kFloor,
  kCeil
};
inline constexpr int kFunctions = static_cast<int>(Function::kCeil) + 1;

/// All that a function is to the engine: the rows stand in Function.cpp, and nothing else tells
/// functions apart. Unary functions ignore y.
struct FunctionRow {
  const char* name;
  int operands;
  /// All values for x and y; empty where there are none.
  RealRange (*evaluate)(const RealRange& x, const RealRange& y);
  /// Narrows x and y to what may have a value in z. False when nothing has.
  bool (*project)(const RealRange& z, RealRange& x, RealRange& y);
  /// The same over integers; null where it has no integer values.
  IntegerRange (*evaluateIntegers)(const IntegerRange& x, const IntegerRange& y);
  bool (*projectIntegers)(const IntegerRange& z, IntegerRange& x, IntegerRange& y);
  /// Slopes between x and a center c of it; null where there are none. `z` and `zc` are the values
  /// there. The results hold for all pairs of a point of x and one of c.
  bool (*slopes)(const RealRange& x, const RealRange& y, const RealRange& z, const RealRange& xc,
                 const RealRange& yc, const RealRange& zc, RealRange& first, RealRange& second);
  /// Whether it is defined and continuous for all x and y. Poles show themselves by values that are
  /// not bounded.
  bool (*isContinuous)(const RealRange& x, const RealRange& y);
  bool isPartial;      ///< projecting may narrow operands even where z holds all values
  bool isEven;         ///< f(-x) = f(x)
  bool isCommutative;  ///< f(x, y) = f(y, x)
};

ZULTAV_ENGINE_API extern const FunctionRow kFunctionRows[kFunctions];
inline const FunctionRow& RowOf(Function function) {
  return kFunctionRows[static_cast<int>(function)];
}

}  // namespace zultav::engine

#endif
