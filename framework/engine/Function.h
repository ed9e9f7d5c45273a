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
  kCeil,
  kSinh,
  kCosh,
  kTanh,
  kAsinh,
  kAcosh,
  kAtanh,
  kLog2,
  kLog10,
  kExp2,
  kExp10,
  kCbrt,
  kHypot,
  kAsin,
  kAcos,
  kAtan,
  kAtan2,
  kDiv,  ///< quotient, truncated
  kGcd
};
inline constexpr int kFunctions = static_cast<int>(Function::kGcd) + 1;

/// Slopes of a function of x and y: f(x, y) - f(xc, yc) in first * (x - xc) + second * (y - yc).
struct Slopes {
  RealRange first, second;
};
/// Operands and values, over a box and at a center, which is a box, too.
struct SlopeArguments {
  const RealRange &x, &y, &z;
  const RealRange &xc, &yc, &zc;
  bool isSecondFixed;  ///< y is one number whatever the box is, so that its slope is of no use
};

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
  /// Slopes for all pairs of a point of the box and one of the center; false where there are none.
  bool (*slopes)(const SlopeArguments& at, Slopes& slopes);
  /// Whether it is defined and continuous for all x and y. Poles show themselves by values that are
  /// not bounded.
  bool (*isContinuous)(const RealRange& x, const RealRange& y);
  bool isPartial;      ///< not defined everywhere: projecting may narrow operands even where z
                       ///< holds all values
  bool hasInverse;     ///< an operand is a function of the result and of the other operand:
  Function inverse;    ///< operand = inverse(result, other)
  bool isEven;         ///< f(-x) = f(x), and so for y
  bool isCommutative;  ///< f(x, y) = f(y, x)
};

ZULTAV_ENGINE_API extern const FunctionRow kFunctionRows[kFunctions];
inline const FunctionRow& RowOf(Function function) {
  return kFunctionRows[static_cast<int>(function)];
}

}  // namespace zultav::engine

#endif
