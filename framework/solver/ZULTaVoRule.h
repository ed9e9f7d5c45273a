#ifndef ZULTAV_SOLVER_ZULTAVO_RULE_H
#define ZULTAV_SOLVER_ZULTAVO_RULE_H

#include <cstdint>

/// What a constraint says mathematically about its arguments: a0 the result, a1, a2, … the
/// operands.
///
/// A constraint whose descriptor carries a rule promises that it holds for values of its
/// arguments exactly when the rule holds for the numbers and truth values that they are: without
/// limits on size, without rounding, without tolerance. Whoever knows the rule may decide by it
/// alone and never run the filter; the filter must not forbid what the rule allows, but for what
/// the types do to values on their own (limits, a tolerance within which they are equal). A
/// constraint that means anything else, or more, has the rule kNone.
enum class ZULTaVoRule : std::uint8_t {
  kNone,  ///< not known: the filter decides

  // Numbers
  kSum,        ///< a0 = a1 + a2
  kProduct,    ///< a0 = a1 * a2
  kQuotient,   ///< a0 = a1 * a2 and a2 is not 0: a1 is the quotient a0 / a2
  kPower,      ///< a0 = a1 ^ a2; 0 ^ 0 is 1; a negative base has whole exponents only
  kRemainder,  ///< a0 = a1 - a2 * t with t = a1 / a2 truncated; a2 is not 0
  kMinimum,    ///< a0 is the least of a1 and a2
  kMaximum,    ///< a0 is the greatest of a1 and a2
  kNegation,   ///< a0 = -a1
  kAbsolute,   ///< a0 = |a1|
  kSign,       ///< a1 is the sign of a0: -1, 0 or 1
  kNext,       ///< a0 = a1 + 1, of integers; of values of other types nothing is known
  kExp,        ///< a0 = e ^ a1
  kSqrt,       ///< a0 is the root of a1 that is not negative
  kSine,       ///< a0 = sin(a1), in radians
  kCosine,     ///< a0 = cos(a1)
  kTangent,    ///< a0 = tan(a1)
  kRound,      ///< a0 is the integer nearest to a1, of two the one farther from zero
  kFloor,      ///< a0 is the greatest integer that is not greater than a1
  kCeil,       ///< a0 is the least integer that is not less than a1
  kPi,         ///< a0 is the number pi
  kE,          ///< a0 is the number e

  // Relations that hold; the truth value False is less than True
  kEqual,               ///< a0 = a1
  kEqualTernary,        ///< a0 = a1, and a2 = a0
  kUnequalTernary,      ///< a0 <> a1, and a2 = a0
  kLessTernary,         ///< a0 < a1, and a2 = a0
  kLessOrEqualTernary,  ///< a0 <= a1, and a2 = a0
  kAllDifferent,        ///< all arguments, a0 like the others, are pairwise different

  // Truth values
  kBooleanEqual,        ///< a2 says whether a0 = a1
  kBooleanUnequal,      ///< a2 says whether a0 <> a1
  kBooleanLess,         ///< a2 says whether a0 < a1
  kBooleanLessOrEqual,  ///< a2 says whether a0 <= a1
  kBooleanNegation,     ///< a0 says whether a1 is false
  kCount,               ///< a0, an integer, is the number of operands that are true
  kPrimality,           ///< a0 says whether a1, an integer, is a prime

  // Further functions of numbers
  kSinh,       ///< a0 = sinh(a1)
  kCosh,       ///< a0 = cosh(a1)
  kTanh,       ///< a0 = tanh(a1)
  kAsinh,      ///< a0 = asinh(a1)
  kAcosh,      ///< a0 = acosh(a1), not negative
  kAtanh,      ///< a0 = atanh(a1)
  kLog2,       ///< a0 is the logarithm of a1 to the base 2
  kLog10,      ///< a0 is the logarithm of a1 to the base 10
  kExp2,       ///< a0 = 2 ^ a1
  kCbrt,       ///< a0 is the cubic root of a1
  kHypot,      ///< a0 is the root of a1^2 + a2^2 that is not negative
  kArcsin,     ///< a0 = arcsin(a1) within [-pi/2, pi/2]
  kArccos,     ///< a0 = arccos(a1) within [0, pi]
  kArctan,     ///< a0 = arctan(a1) within (-pi/2, pi/2)
  kAtan2,      ///< a0 is the angle of the point (x, y) = (a2, a1) within (-pi, pi]; not of (0, 0)
  kDiv,        ///< a0 = a1 / a2 truncated, of integers; a2 is not 0
  kGcd,        ///< a0 is the greatest common divisor of the integers a1 and a2; of 0 and 0 it is 0
  kPiecewise,  ///< of a relation: a0 = f(a1), f linear between the points of its last parameter,
               ///< the rows (x, y) of a matrix, and without a value outside of them
};

#endif
