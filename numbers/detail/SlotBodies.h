#ifndef ZULTAV_NUMBERS_DETAIL_SLOT_BODIES_H
#define ZULTAV_NUMBERS_DETAIL_SLOT_BODIES_H

#include "numbers/detail/Slots.h"

// The bodies of the slots, for the sources of the domains, which instantiate them.
namespace zultav::detail {

// Arguments are types and names, which take no parentheses.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define ZULTAV_DEFINE(T, SHAPE, NAME, ABSTRACT) ZULTAV_DEFINE_##SHAPE(T, NAME, ABSTRACT)
#define ZULTAV_DEFINE_Unary(T, NAME, ABSTRACT)                                              \
  template <class Self, template <class> class Dispatch>                                    \
  int T<Self, Dispatch>::Calc##NAME##Value(const ABSTRACT& y) {                             \
    return Dispatch<Self>::Forward(static_cast<Self&>(*this), &Self::Calc##NAME##Value, y); \
  }                                                                                         \
  template <class Self, template <class> class Dispatch>                                    \
  int T<Self, Dispatch>::CalcInverse##NAME##Value(ABSTRACT& y) const {                      \
    return Dispatch<Self>::Inverse(static_cast<const Self&>(*this),                         \
                                   &Self::CalcInverse##NAME##Value, y);                     \
  }
#define ZULTAV_DEFINE_Symmetric(T, NAME, ABSTRACT)                                             \
  template <class Self, template <class> class Dispatch>                                       \
  int T<Self, Dispatch>::Calc##NAME##Value(const ABSTRACT& a, const ABSTRACT& b) {             \
    return Dispatch<Self>::Forward(static_cast<Self&>(*this), &Self::Calc##NAME##Value, a, b); \
  }                                                                                            \
  template <class Self, template <class> class Dispatch>                                       \
  int T<Self, Dispatch>::CalcFirstInverse##NAME##Value(ABSTRACT& a, const ABSTRACT& b) const { \
    return Dispatch<Self>::Inverse(static_cast<const Self&>(*this),                            \
                                   &Self::CalcFirstInverse##NAME##Value, a, b);                \
  }
#define ZULTAV_DEFINE_Binary(T, NAME, ABSTRACT)                                                 \
  template <class Self, template <class> class Dispatch>                                        \
  int T<Self, Dispatch>::CalcSecondInverse##NAME##Value(const ABSTRACT& a, ABSTRACT& b) const { \
    return Dispatch<Self>::SecondInverse(static_cast<const Self&>(*this),                       \
                                         &Self::CalcSecondInverse##NAME##Value, a, b);          \
  }                                                                                             \
  ZULTAV_DEFINE_Symmetric(T, NAME, ABSTRACT)

ZULTAV_BOOLEAN_OPERATIONS(ZULTAV_DEFINE, BooleanSlots)
ZULTAV_INTEGER_OPERATIONS(ZULTAV_DEFINE, IntegerSlots)
ZULTAV_REAL_OPERATIONS(ZULTAV_DEFINE, RealSlots)

#undef ZULTAV_DEFINE
#undef ZULTAV_DEFINE_Unary
#undef ZULTAV_DEFINE_Symmetric
#undef ZULTAV_DEFINE_Binary

}  // namespace zultav::detail

// NOLINTEND(bugprone-macro-parentheses)

#endif
