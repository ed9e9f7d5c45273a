#ifndef ZULTAV_NUMBERS_DETAIL_SLOTS_H
#define ZULTAV_NUMBERS_DETAIL_SLOTS_H

#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoReal.h"
#include "numbers/Export.h"

// The slots of a domain take abstract arguments: each has to find out whether they are of a class
// that the domain knows, and to call the domain's typed operation of the same name. This is written
// once for all of them, from the tables below.
//
// A domain shows its typed operations:
//
//     class D final : public ZULTaVoFrame<D, zultav::detail::RealSlots<D, Dispatch>> {
//      public:
//       ZULTAV_REAL_OPERATIONS(ZULTAV_USE, ZULTaVoFrame)
//       int CalcSumValue(const D& a, const D& b);
//       int CalcFirstInverseSumValue(D& a, const D& b) const;
//       …
//     };
//     extern template class zultav::detail::RealSlots<D, Dispatch>;
//
// and its source, which includes SlotBodies.h, instantiates that. Dispatch is SingleDispatch for a
// domain that accepts its own class only, and IntervalDispatch for one that converts others. A slot
// with a rule of its own is overridden in D.

// Arguments are types and names, which take no parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)
/// X(T, shape, name, abstract type of the arguments) for each operation; T is for X.
///
///     Unary      Calc<name>Value(y), CalcInverse<name>Value(y)
///     Symmetric  Calc<name>Value(a, b), CalcFirstInverse<name>Value(a, b)
///     Binary     the same and CalcSecondInverse<name>Value(a, b)
#define ZULTAV_SCALAR_OPERATIONS(X, T)       \
  X(T, Unary, Equal, ZULTaVoAny)             \
  X(T, Unary, LessOrEqual, ZULTaVoAny)       \
  X(T, Unary, NotLessAndUnequal, ZULTaVoAny) \
  X(T, Unary, Less, ZULTaVoScalar)           \
  X(T, Unary, NotLess, ZULTaVoScalar)        \
  X(T, Unary, Next, ZULTaVoScalar)           \
  X(T, Symmetric, Min, ZULTaVoScalar)        \
  X(T, Symmetric, Max, ZULTaVoScalar)
#define ZULTAV_BOOLEAN_OPERATIONS(X, T) \
  ZULTAV_SCALAR_OPERATIONS(X, T)        \
  X(T, Unary, Negative, ZULTaVoBoolean)
#define ZULTAV_ARITHMETIC_OPERATIONS(X, T) \
  X(T, Unary, Absolute, ZULTaVoNumber)     \
  X(T, Unary, Negative, ZULTaVoNumber)     \
  X(T, Symmetric, Sum, ZULTaVoNumber)      \
  X(T, Symmetric, Prod, ZULTaVoNumber)     \
  X(T, Binary, Mod, ZULTaVoNumber)
#define ZULTAV_INTEGER_OPERATIONS(X, T) \
  ZULTAV_SCALAR_OPERATIONS(X, T)        \
  ZULTAV_ARITHMETIC_OPERATIONS(X, T)    \
  X(T, Binary, Power, ZULTaVoNumber)
#define ZULTAV_REAL_OPERATIONS(X, T) \
  ZULTAV_INTEGER_OPERATIONS(X, T)    \
  X(T, Unary, Exp, ZULTaVoReal)      \
  X(T, Unary, Sqrt, ZULTaVoReal)     \
  X(T, Unary, Sin, ZULTaVoReal)      \
  X(T, Unary, Cos, ZULTaVoReal)      \
  X(T, Unary, Tan, ZULTaVoReal)      \
  X(T, Unary, Floor, ZULTaVoReal)    \
  X(T, Unary, Ceil, ZULTaVoReal)     \
  X(T, Unary, Round, ZULTaVoReal)

/// For the tables: keeps the slots of T visible beside typed operations, which would hide them.
#define ZULTAV_USE(T, SHAPE, NAME, ABSTRACT) ZULTAV_USE_##SHAPE(T, NAME)
#define ZULTAV_USE_Unary(T, NAME) \
  using T::Calc##NAME##Value;     \
  using T::CalcInverse##NAME##Value;
#define ZULTAV_USE_Symmetric(T, NAME) \
  using T::Calc##NAME##Value;         \
  using T::CalcFirstInverse##NAME##Value;
#define ZULTAV_USE_Binary(T, NAME)         \
  using T::CalcSecondInverse##NAME##Value; \
  ZULTAV_USE_Symmetric(T, NAME)

namespace zultav::detail {

// How a slot deals with its arguments (SingleDispatch.h, IntervalDispatch.h).
template <class Self>
class ZULTAV_NUMBERS_API SingleDispatch;
template <class Self>
class ZULTAV_NUMBERS_API IntervalDispatch;

#define ZULTAV_DECLARE(T, SHAPE, NAME, ABSTRACT) ZULTAV_DECLARE_##SHAPE(NAME, ABSTRACT)
#define ZULTAV_DECLARE_Unary(NAME, ABSTRACT)         \
  int Calc##NAME##Value(const ABSTRACT& y) override; \
  int CalcInverse##NAME##Value(ABSTRACT& y) const override;
#define ZULTAV_DECLARE_Symmetric(NAME, ABSTRACT)                        \
  int Calc##NAME##Value(const ABSTRACT& a, const ABSTRACT& b) override; \
  int CalcFirstInverse##NAME##Value(ABSTRACT& a, const ABSTRACT& b) const override;
#define ZULTAV_DECLARE_Binary(NAME, ABSTRACT)                                        \
  int CalcSecondInverse##NAME##Value(const ABSTRACT& a, ABSTRACT& b) const override; \
  ZULTAV_DECLARE_Symmetric(NAME, ABSTRACT)

/// Overrides only: no slot is added, and no data.
#define ZULTAV_SLOTS(T, BASE, OPERATIONS)                \
  template <class Self, template <class> class Dispatch> \
  class ZULTAV_NUMBERS_API T : public BASE {             \
   public:                                               \
    using BASE::BASE;                                    \
    using BASE::CalcMaxValue;                            \
    using BASE::CalcMinValue;                            \
    OPERATIONS(ZULTAV_DECLARE, T)                        \
  };
ZULTAV_SLOTS(BooleanSlots, ZULTaVoBoolean, ZULTAV_BOOLEAN_OPERATIONS)
ZULTAV_SLOTS(IntegerSlots, ZULTaVoInteger, ZULTAV_INTEGER_OPERATIONS)
ZULTAV_SLOTS(RealSlots, ZULTaVoReal, ZULTAV_REAL_OPERATIONS)

#undef ZULTAV_SLOTS
#undef ZULTAV_DECLARE
#undef ZULTAV_DECLARE_Unary
#undef ZULTAV_DECLARE_Symmetric
#undef ZULTAV_DECLARE_Binary

}  // namespace zultav::detail

// NOLINTEND(bugprone-macro-parentheses)

#endif
