#ifndef ZULTAV_SOLVER_FRAMEWORK_CONSTRAINTS_H
#define ZULTAV_SOLVER_FRAMEWORK_CONSTRAINTS_H

#include "framework/solver/ZULTaVoConstraint.h"
#include "framework/solver/ZULTaVoFrame.h"

/// One class for all constraints of the framework. Rule says what differs: the class name, the
/// arguments, and the pair of domain operations that the filter calls (FrameworkConstraints.cpp).
template <class Rule>
class ZULTAV_TYPES_API ZULTaVoFrameworkConstraint final
    : public ZULTaVoFrame<ZULTaVoFrameworkConstraint<Rule>, ZULTaVoConstraint> {
 public:
  static constexpr const auto& kClassName = Rule::kName;
  static constexpr const auto& kTypeName = Rule::kName;
  static constexpr unsigned int kArguments = Rule::kArguments;
  static void AddArguments(ZULTaVoConstraintDescriptor& descriptor);

  explicit ZULTaVoFrameworkConstraint(const void* from = nullptr);
  explicit ZULTaVoFrameworkConstraint(ZULStreamableInit init);
  int Filter(const ZULTaVoObjectEnvironment& environment, int event) override;
};

/// X(name, announced arguments): every constraint of the framework.
#define ZULTAV_FRAMEWORK_CONSTRAINTS(X) \
  X(Addition, 3)                        \
  X(Multiplication, 3)                  \
  X(Power, 3)                           \
  X(Remainder, 3)                       \
  X(Equal, 2)                           \
  X(EqualTernary, 3)                    \
  X(UnequalTernary, 3)                  \
  X(LessTernary, 3)                     \
  X(LessOrEqualTernary, 3)              \
  X(AllDifferent, 2)                    \
  X(Minimum, 3)                         \
  X(Maximum, 3)                         \
  X(BooleanEqual, 3)                    \
  X(BooleanUnequal, 3)                  \
  X(BooleanLess, 3)                     \
  X(BooleanLessOrEqual, 3)              \
  X(BooleanNegation, 2)                 \
  X(Count, 2)                           \
  X(NumberNegation, 2)                  \
  X(Absolute, 2)                        \
  X(Signum, 2)                          \
  X(Next, 2)                            \
  X(Exponent, 2)                        \
  X(Sqrt, 2)                            \
  X(Sine, 2)                            \
  X(Cosine, 2)                          \
  X(Tangent, 2)                         \
  X(Round, 2)                           \
  X(Floor, 2)                           \
  X(Ceil, 2)                            \
  X(PiValue, 1)                         \
  X(EValue, 1)

namespace zultav::framework_rules {
// Exported, as a template is hidden where an argument of it is.
#define ZULTAV_RULE(NAME, ARGUMENTS)                              \
  struct ZULTAV_TYPES_API NAME {                                  \
    static constexpr char kName[] = "ZULTaVo" #NAME "Constraint"; \
    static constexpr unsigned int kArguments = ARGUMENTS;         \
  };
ZULTAV_FRAMEWORK_CONSTRAINTS(ZULTAV_RULE)
#undef ZULTAV_RULE
}  // namespace zultav::framework_rules

#define ZULTAV_CONSTRAINT(NAME, ARGUMENTS) \
  using ZULTaVo##NAME##Constraint = ZULTaVoFrameworkConstraint<zultav::framework_rules::NAME>;
ZULTAV_FRAMEWORK_CONSTRAINTS(ZULTAV_CONSTRAINT)
#undef ZULTAV_CONSTRAINT

#define ZULTAV_CONSTRAINT(NAME, ARGUMENTS)                                          \
  extern template class ZULTaVoFrame<ZULTaVo##NAME##Constraint, ZULTaVoConstraint>; \
  extern template class ZULTaVoFrameworkConstraint<zultav::framework_rules::NAME>;
ZULTAV_FRAMEWORK_CONSTRAINTS(ZULTAV_CONSTRAINT)
#undef ZULTAV_CONSTRAINT

#endif
