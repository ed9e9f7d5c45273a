#include "framework/solver/FrameworkConstraints.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <limits>
#include <tuple>

#include "framework/solver/LocalCopy.h"
#include "framework/solver/SingleValue.h"
#include "framework/solver/ZULTaVoBoolean.h"
#include "framework/solver/ZULTaVoInteger.h"
#include "framework/solver/ZULTaVoNetwork.h"
#include "framework/solver/ZULTaVoNumber.h"
#include "framework/solver/ZULTaVoObjectEnvironment.h"
#include "framework/solver/ZULTaVoReal.h"
#include "framework/solver/detail/KeepBetween.h"

using zultav::IsSingleValue;
using zultav::LocalCopy;

// A filter calls domain operations one after the other, tells the network of every change and
// stops at the first domain that becomes Nil. Below, each constraint names its operations; a0 is
// the result, a1 and a2 are the operands.

namespace {

using Any = ZULTaVoAny;
using Scalar = ZULTaVoScalar;
using Number = ZULTaVoNumber;
using Integer = ZULTaVoInteger;
using Real = ZULTaVoReal;
using Boolean = ZULTaVoBoolean;

/// The network's side of a filter call.
class Step {
 public:
  explicit Step(const ZULTaVoObjectEnvironment& environment) : mNetwork(environment.GetNetwork()) {}

  /// Takes the answer of an operation that narrowed x; true as long as x is not Nil.
  bool Took(int answer, Any& x) const {
    if (answer == 0) return true;
    if (x.IsNil()) return false;
    if (mNetwork != nullptr) mNetwork->PropagateValue(&x);
    return true;
  }

  /// Tells that the constraint holds for all values that are left.
  void Retire() const {
    if (mNetwork != nullptr) mNetwork->Retire();
  }

  /// Runs an inverse operation on x. A single value cannot be narrowed: the forward operation
  /// decides about it.
  template <class Operation>
  bool Inverse(Any& x, Operation operation) const {
    return IsSingleValue(x) || Took(operation(), x);
  }

  /// As Inverse, for operations that answer Nil where a single-valued domain that is still Any
  /// cannot take the one value they found: it stays Any.
  template <class Operation>
  bool InverseOrAny(Any& x, Operation operation) const {
    if (IsSingleValue(x)) return true;
    const bool unbounded = x.GetCardinality() == zultav::kSingleAny;
    const int answer = operation();
    if (answer != 0 && unbounded && x.IsNil()) {
      x.SetAny();
      return true;
    }
    return Took(answer, x);
  }

 private:
  ZULTaVoNetwork* mNetwork;
};

/// The operands of a constraint that takes any number of them.
template <class T>
class List {
 public:
  explicit List(const ZULTaVoObjectEnvironment& environment) : mEnvironment(environment) {}

  unsigned int GetSize() const { return mEnvironment.GetNumberOfArguments() - 1; }
  T& operator[](unsigned int i) const { return *static_cast<T*>(mEnvironment.GetArgument(i + 1)); }

 private:
  const ZULTaVoObjectEnvironment& mEnvironment;
};

// --- Functions --------------------------------------------------------------------------------

template <auto Forward, class T>
bool Constant(const Step& step, T& a0) {
  return step.Took((a0.*Forward)(), a0);
}

template <auto Forward, auto Backward, class T>
bool Unary(const Step& step, T& a0, T& a1) {
  return step.Took((a0.*Forward)(a1), a0) && step.Inverse(a1, [&] { return (a0.*Backward)(a1); });
}

template <class T>
using BinaryForward = int (T::*)(const T&, const T&);

/// Both operands are narrowed by the one inverse.
template <class T, BinaryForward<T> Forward, auto Backward>
bool Symmetric(const Step& step, T& a0, T& a1, T& a2) {
  return step.Took((a0.*Forward)(a1, a2), a0) &&
         step.Inverse(a1, [&] { return (a0.*Backward)(a1, a2); }) &&
         step.Inverse(a2, [&] { return (a0.*Backward)(a2, a1); });
}

bool Multiply(const Step& step, Number& a0, Number& a1, Number& a2) {
  return step.Took(a0.CalcProdValue(a1, a2), a0) &&
         step.InverseOrAny(a1, [&] { return a0.CalcFirstInverseProdValue(a1, a2); }) &&
         step.InverseOrAny(a2, [&] { return a0.CalcFirstInverseProdValue(a2, a1); });
}

// Real domains cut a base and a dividend into a negative part that ends at -1e-14 and a part from
// zero on. What lies between is the sliver. They see it only in sets that hold nothing else.
constexpr double kSliver = 1e-14;

/// Whether domain operations on x overlook a sliver of it.
bool HidesSliver(const Number& x) {
  const auto* real = ZULTaVoCast<Real>(&x);
  if (real == nullptr) return false;
  const double low = real->GetLowerBound(), high = real->GetUpperBound();
  return low < 0 && high > -kSliver && !(low > -kSliver && high < 0) && x.GetCardinality() != -1;
}

void CutToSliver(Real& x) {
  x.SetLowerBound(std::max(x.GetLowerBound(), std::nextafter(-kSliver, 0.0)));
  x.SetUpperBound(std::min(x.GetUpperBound(), -std::numeric_limits<double>::denorm_min()));
}

/// Calls `narrow(target, x)`, and for the sliver of x once more: the target keeps the hull of what
/// both leave. `target` may be x.
template <class Narrow>
int NarrowBySliverToo(Number& target, Number& x, Narrow narrow) {
  if (!HidesSliver(x)) return narrow(target, x);
  LocalCopy rest(target), sliver(x), ofSliver(target);
  if (!rest || !sliver || !ofSliver) return 0;
  CutToSliver(static_cast<Real&>(*sliver));
  const auto leave = [&](Any& left, Any& by) {
    const int changed = narrow(static_cast<Number&>(left), static_cast<Number&>(by));
    // A single-valued domain cannot say which of several values remain.
    if (left.IsNil() && target.GetCardinality() == -1) left.SetAny();
    return changed;
  };
  Any& other = &target == &x ? *sliver : *ofSliver;
  if (leave(*rest, x) == 0) return 0;
  leave(other, *sliver);
  rest->Unite(other);
  return target.Intersect(*rest);
}

bool RaiseToPower(const Step& step, Number& a0, Number& a1, Number& a2) {
  const auto forward = [&](Number& z, Number& x) { return z.CalcPowerValue(x, a2); };
  const auto toBase = [&](Number& x, Number&) { return a0.CalcFirstInversePowerValue(x, a2); };
  const auto toExponent = [&](Number& y, Number& x) {
    return a0.CalcSecondInversePowerValue(x, y);
  };
  return step.Took(NarrowBySliverToo(a0, a1, forward), a0) &&
         step.InverseOrAny(a1, [&] { return NarrowBySliverToo(a1, a1, toBase); }) &&
         step.InverseOrAny(a2, [&] { return NarrowBySliverToo(a2, a1, toExponent); });
}

void InsertZero(Any& x) {
  if (auto* integer = ZULTaVoCast<Integer>(&x)) integer->InsertExactValue(0);
  if (auto* real = ZULTaVoCast<Real>(&x)) real->InsertExactValue(0);
}

/// The forward remainder may miss remainders near zero while the divisor is no single value, so
/// its outcome is widened to zero before it narrows.
int NarrowRemainder(Number& a0, const Number& a1, const Number& a2) {
  if (IsSingleValue(a2)) return a0.CalcModValue(a1, a2);
  LocalCopy remainders(a0);
  if (!remainders) return 0;
  remainders->SetAny();
  static_cast<Number&>(*remainders).CalcModValue(a1, a2);
  InsertZero(*remainders);
  return a0.Intersect(*remainders);
}

bool TakeRemainder(const Step& step, Number& a0, Number& a1, Number& a2) {
  const auto forward = [&](Number& r, Number& x) { return NarrowRemainder(r, x, a2); };
  return step.Took(NarrowBySliverToo(a0, a1, forward), a0) &&
         step.InverseOrAny(a1, [&] { return a0.CalcFirstInverseModValue(a1, a2); }) &&
         step.InverseOrAny(a2, [&] { return a0.CalcSecondInverseModValue(a1, a2); });
}

bool TakeSign(const Step& step, Number& a0, Integer& a1) {
  return step.Took(a0.CalcSignumValue(a1), a1) &&
         step.Inverse(a0, [&] { return a0.CalcInverseSignumValue(a1); });
}

// --- Relations --------------------------------------------------------------------------------

/// Narrows both sides of `x relation y`.
template <auto Forward, auto Backward, class T>
bool Impose(const Step& step, T& x, T& y) {
  return step.Took((x.*Forward)(y), x) && step.Took((x.*Backward)(y), y);
}

bool ImposeEqual(const Step& step, Any& x, Any& y) {
  return &x == &y || Impose<&Any::CalcEqualValue, &Any::CalcInverseEqualValue>(step, x, y);
}
bool ImposeUnequal(const Step& step, Any& x, Any& y) {
  return Impose<&Any::CalcUnequalValue, &Any::CalcInverseUnequalValue>(step, x, y);
}
bool ImposeLessOrEqual(const Step& step, Any& x, Any& y) {
  return Impose<&Any::CalcLessOrEqualValue, &Any::CalcInverseLessOrEqualValue>(step, x, y);
}
bool ImposeGreater(const Step& step, Any& x, Any& y) {
  return Impose<&Any::CalcNotLessAndUnequalValue, &Any::CalcInverseNotLessAndUnequalValue>(step, x,
                                                                                           y);
}
bool ImposeLess(const Step& step, Scalar& x, Scalar& y) {
  return Impose<&Scalar::CalcLessValue, &Scalar::CalcInverseLessValue>(step, x, y);
}
bool ImposeGreaterOrEqual(const Step& step, Scalar& x, Scalar& y) {
  return Impose<&Scalar::CalcNotLessValue, &Scalar::CalcInverseNotLessValue>(step, x, y);
}

/// The value of `a0 relation a1` is a2, equal to a0.
template <auto Relation, class T>
bool Ternary(const Step& step, T& a0, T& a1, Any& a2) {
  return ImposeEqual(step, a0, a2) && Relation(step, a0, a1);
}

/// As Ternary; two values that have nothing in common any more stay unequal. Only values of one
/// type are sure to see what they have in common.
bool TernaryUnequal(const Step& step, Any& a0, Any& a1, Any& a2) {
  if (!Ternary<&ImposeUnequal>(step, a0, a1, a2)) return false;
  if (&a0 == &a2 && a0.GetDescriptor() == a1.GetDescriptor() && !a0.IsIntersected(a1))
    step.Retire();
  return true;
}

/// a2 is the truth of `a0 relation a1`.
template <auto Decision, auto Relation, auto Negation, class T>
bool Reified(const Step& step, T& a0, T& a1, Boolean& a2) {
  if (!a2.IsTrue() && !a2.IsFalse() && !step.Took((a0.*Decision)(a1, a2), a2)) return false;
  if (a2.IsTrue()) return Relation(step, a0, a1);
  if (a2.IsFalse()) return Negation(step, a0, a1);
  return !a2.IsNil();
}

int DecideUnequal(const Any& a0, const Any& a1, Boolean& a2) {
  LocalCopy equal(a2);
  if (!equal) return 0;
  equal->SetAny();
  auto& truth = static_cast<Boolean&>(*equal);
  return a0.CalcIsEqual(a1, truth) != 0 ? a2.CalcNegativeValue(truth) : 0;
}

bool ReifiedUnequal(const Step& step, Any& a0, Any& a1, Boolean& a2) {
  if (!a2.IsTrue() && !a2.IsFalse() && !step.Took(DecideUnequal(a0, a1, a2), a2)) return false;
  if (a2.IsTrue()) return ImposeUnequal(step, a0, a1);
  if (a2.IsFalse()) return ImposeEqual(step, a0, a1);
  return !a2.IsNil();
}

// --- Over lists -------------------------------------------------------------------------------

/// Values that are pairwise different: removes each single one from all others, and so on with what
/// becomes single thereby.
class Differences {
 public:
  Differences(const Step& step, Scalar& a0, const List<Scalar>& others)
      : mStep(step), mFirst(a0), mOthers(others) {}

  bool Narrow() {
    for (mChanged = true; mChanged;) {
      mChanged = false;
      for (unsigned int i = 0; i <= mOthers.GetSize(); ++i) {
        if (IsRemoved(i) || !IsSingleValue(At(i))) continue;
        if (i < mRemoved.size()) mRemoved.set(i);
        for (unsigned int j = 0; j <= mOthers.GetSize(); ++j)
          if (i != j && Remove(i, j) && !RemoveMore(j)) return false;
      }
    }
    return true;
  }

 private:
  Scalar& At(unsigned int i) const { return i == 0 ? mFirst : mOthers[i - 1]; }
  bool IsRemoved(unsigned int i) const { return i < mRemoved.size() && mRemoved[i]; }

  /// Removes the value of i from j; true where that changes j.
  bool Remove(unsigned int i, unsigned int j) {
    const int answer = At(j).CalcUnequalValue(At(i));
    mStep.Took(answer, At(j));
    mChanged = mChanged || answer != 0;
    return answer != 0;
  }
  /// What lay inside the values of j when it was removed from all may now be a bound. False where j
  /// has no value left.
  bool RemoveMore(unsigned int j) {
    for (unsigned int i = 0; i <= mOthers.GetSize() && !At(j).IsNil() && !IsSingleValue(At(j));)
      i = i != j && IsRemoved(i) && Remove(i, j) ? 0 : i + 1;
    return !At(j).IsNil();
  }

  const Step& mStep;
  Scalar& mFirst;
  const List<Scalar>& mOthers;
  std::bitset<4096> mRemoved;  // of the first arguments: whose value was removed from all others
  bool mChanged = false;
};

bool AllDifferent(const Step& step, Scalar& a0, const List<Scalar>& others) {
  return Differences(step, a0, others).Narrow();
}

/// a0 is how many of x are true.
bool Count(const Step& step, Integer& a0, const List<Boolean>& x) {
  long certain = 0, possible = 0;
  for (unsigned int i = 0; i < x.GetSize(); ++i) {
    certain += x[i].IsTrue();
    possible += !x[i].IsFalse();
  }
  if (!step.Took(zultav::detail::KeepBetween(a0, certain, possible), a0)) return false;
  const bool none = a0.GetUpperBound() == certain, all = a0.GetLowerBound() == possible;
  for (unsigned int i = 0; certain < possible && (none || all) && i < x.GetSize(); ++i)
    if (!IsSingleValue(x[i]) && !step.Took(all ? x[i].SetTrue() : x[i].SetFalse(), x[i]))
      return false;
  return true;
}

// --- The table --------------------------------------------------------------------------------

constexpr int kOnce = ZULTaVoConstraintDescriptor::kIdempotent;
constexpr int kRelation = ZULTaVoConstraintDescriptor::kRelation;
constexpr int kWaits = ZULTaVoConstraintDescriptor::kWaitsForSingleValue;
constexpr int kRepeats = ZULTaVoConstraintDescriptor::kRepeatsOperand;

/// The filter of a constraint, what it says, and whether one call reaches its own fixpoint.
template <class Rule>
struct Body;

#define ZULTAV_BODY(NAME, RULE, FLAGS, ...)                 \
  template <>                                               \
  struct Body<zultav::framework_rules::NAME> {              \
    static constexpr auto kNarrow = (__VA_ARGS__);          \
    static constexpr ZULTaVoRule kRule = ZULTaVoRule::RULE; \
    static constexpr int kFlags = FLAGS;                    \
  };

ZULTAV_BODY(Addition, kSum, kOnce,
            &Symmetric<Number, &Number::CalcSumValue, &Number::CalcFirstInverseSumValue>)
ZULTAV_BODY(Multiplication, kProduct, 0, &Multiply)
ZULTAV_BODY(Power, kPower, 0, &RaiseToPower)
ZULTAV_BODY(Remainder, kRemainder, 0, &TakeRemainder)
ZULTAV_BODY(Minimum, kMinimum, 0,
            &Symmetric<Scalar, &Scalar::CalcMinValue, &Scalar::CalcFirstInverseMinValue>)
ZULTAV_BODY(Maximum, kMaximum, 0,
            &Symmetric<Scalar, &Scalar::CalcMaxValue, &Scalar::CalcFirstInverseMaxValue>)
ZULTAV_BODY(Absolute, kAbsolute, 0,
            &Unary<&Number::CalcAbsoluteValue, &Number::CalcInverseAbsoluteValue, Number>)
ZULTAV_BODY(NumberNegation, kNegation, kOnce,
            &Unary<&Number::CalcNegativeValue, &Number::CalcInverseNegativeValue, Number>)
ZULTAV_BODY(BooleanNegation, kBooleanNegation, kOnce,
            &Unary<&Boolean::CalcNegativeValue, &Boolean::CalcInverseNegativeValue, Boolean>)
ZULTAV_BODY(Next, kNext, kOnce,
            &Unary<&Scalar::CalcNextValue, &Scalar::CalcInverseNextValue, Scalar>)
ZULTAV_BODY(Signum, kSign, 0, &TakeSign)
ZULTAV_BODY(Exponent, kExp, 0, &Unary<&Real::CalcExpValue, &Real::CalcInverseExpValue, Real>)
ZULTAV_BODY(Sqrt, kSqrt, 0, &Unary<&Real::CalcSqrtValue, &Real::CalcInverseSqrtValue, Real>)
ZULTAV_BODY(Sine, kSine, 0, &Unary<&Real::CalcSinValue, &Real::CalcInverseSinValue, Real>)
ZULTAV_BODY(Cosine, kCosine, 0, &Unary<&Real::CalcCosValue, &Real::CalcInverseCosValue, Real>)
ZULTAV_BODY(Tangent, kTangent, 0, &Unary<&Real::CalcTanValue, &Real::CalcInverseTanValue, Real>)
ZULTAV_BODY(Round, kRound, 0, &Unary<&Real::CalcRoundValue, &Real::CalcInverseRoundValue, Real>)
ZULTAV_BODY(Floor, kFloor, 0, &Unary<&Real::CalcFloorValue, &Real::CalcInverseFloorValue, Real>)
ZULTAV_BODY(Ceil, kCeil, 0, &Unary<&Real::CalcCeilValue, &Real::CalcInverseCeilValue, Real>)
ZULTAV_BODY(PiValue, kPi, 0, &Constant<&Real::CalcPiValue, Real>)
ZULTAV_BODY(EValue, kE, 0, &Constant<&Real::CalcEValue, Real>)
ZULTAV_BODY(Equal, kEqual, kOnce, &ImposeEqual)
ZULTAV_BODY(EqualTernary, kEqualTernary, kRelation, &Ternary<&ImposeEqual, Any>)
ZULTAV_BODY(UnequalTernary, kUnequalTernary, kRelation | kWaits, &TernaryUnequal)
ZULTAV_BODY(LessOrEqualTernary, kLessOrEqualTernary, kRelation, &Ternary<&ImposeLessOrEqual, Any>)
ZULTAV_BODY(LessTernary, kLessTernary, kRelation, &Ternary<&ImposeLess, Scalar>)
ZULTAV_BODY(BooleanEqual, kBooleanEqual, 0,
            &Reified<&Any::CalcIsEqual, &ImposeEqual, &ImposeUnequal, Any>)
ZULTAV_BODY(BooleanUnequal, kBooleanUnequal, 0, &ReifiedUnequal)
ZULTAV_BODY(BooleanLess, kBooleanLess, 0,
            &Reified<&Scalar::CalcIsLess, &ImposeLess, &ImposeGreaterOrEqual, Scalar>)
ZULTAV_BODY(BooleanLessOrEqual, kBooleanLessOrEqual, 0,
            &Reified<&Any::CalcIsLessOrEqual, &ImposeLessOrEqual, &ImposeGreater, Any>)
ZULTAV_BODY(AllDifferent, kAllDifferent, kOnce | kRepeats, &AllDifferent)
ZULTAV_BODY(Count, kCount, kRepeats, &Count)
#undef ZULTAV_BODY

/// Casts the arguments to what the filter takes and calls it.
template <class... A>
int Run(bool (*narrow)(const Step&, A&...), const ZULTaVoObjectEnvironment& environment) {
  return [&]<std::size_t... I>(std::index_sequence<I...>)->int {
    const bool checked = environment.AreArgumentsChecked();
    const std::tuple<A*...> arguments{checked ? static_cast<A*>(environment.GetArgument(I))
                                              : ZULTaVoCast<A>(environment.GetArgument(I))...};
    if (((std::get<I>(arguments) == nullptr) || ...)) return kFilterBadArguments;
    if ((std::get<I>(arguments)->IsNil() || ...)) return kFilterContradiction;
    return narrow(Step(environment), *std::get<I>(arguments)...) ? kFilterConsistent
                                                                 : kFilterContradiction;
  }
  (std::index_sequence_for<A...>{});
}

template <class A, class T>
int Run(bool (*narrow)(const Step&, A&, const List<T>&),
        const ZULTaVoObjectEnvironment& environment) {
  auto* result = ZULTaVoCast<A>(environment.GetArgument(0));
  if (result == nullptr || environment.GetNumberOfArguments() < 2) return kFilterBadArguments;
  bool isNil = result->IsNil() != 0;
  for (unsigned int i = 1; i < environment.GetNumberOfArguments(); ++i) {
    const ZULTaVoObject* argument = environment.GetArgument(i);
    if (!environment.AreArgumentsChecked() && ZULTaVoCast<const T>(argument) == nullptr)
      return kFilterBadArguments;
    isNil = isNil || static_cast<const T*>(argument)->IsNil();
  }
  return !isNil && narrow(Step(environment), *result, List<T>(environment)) ? kFilterConsistent
                                                                            : kFilterContradiction;
}

/// Announces the arguments: operands first, result last.
template <class... A>
void Announce(bool (*)(const Step&, A&...), ZULTaVoConstraintDescriptor& descriptor) {
  const ZULTaVoObjectDescriptor* types[] = {A::sDescriptor...};
  constexpr const char* kNames[] = {"Result", "First", "Second"};
  for (std::size_t i = 1; i < sizeof...(A); ++i)
    descriptor.AddArgument(kNames[i], types[i], ZULTaVoConstraint::kDefaultPriority);
  descriptor.AddArgument(kNames[0], types[0], ZULTaVoConstraint::kDefaultPriority);
}

template <class A, class T>
void Announce(bool (*)(const Step&, A&, const List<T>&), ZULTaVoConstraintDescriptor& descriptor) {
  descriptor.AddArgument("Values", T::sDescriptor, ZULTaVoConstraint::kDefaultPriority);
  descriptor.AddArgument("Result", A::sDescriptor, ZULTaVoConstraint::kDefaultPriority);
}

}  // namespace

template <class Rule>
ZULTaVoFrameworkConstraint<Rule>::ZULTaVoFrameworkConstraint(const void* from)
    : ZULTaVoFrame<ZULTaVoFrameworkConstraint, ZULTaVoConstraint>(from) {}

template <class Rule>
ZULTaVoFrameworkConstraint<Rule>::ZULTaVoFrameworkConstraint(ZULStreamableInit init)
    : ZULTaVoFrame<ZULTaVoFrameworkConstraint, ZULTaVoConstraint>(init) {}

template <class Rule>
void ZULTaVoFrameworkConstraint<Rule>::AddArguments(ZULTaVoConstraintDescriptor& descriptor) {
  descriptor.SetFlags(Body<Rule>::kFlags);
  descriptor.SetRule(Body<Rule>::kRule);
  Announce(Body<Rule>::kNarrow, descriptor);
}

template <class Rule>
int ZULTaVoFrameworkConstraint<Rule>::Filter(const ZULTaVoObjectEnvironment& environment, int) {
  return Run(Body<Rule>::kNarrow, environment);
}

#define ZULTAV_CONSTRAINT(NAME, ARGUMENTS)                                   \
  template class ZULTaVoFrame<ZULTaVo##NAME##Constraint, ZULTaVoConstraint>; \
  template class ZULTaVoFrameworkConstraint<zultav::framework_rules::NAME>;  \
  static ZULStreamableClass r##NAME##_Descriptor =                           \
      ZULTaVo##NAME##Constraint::MakeDescriptorRecord();                     \
  static ZULStreamableClass r##NAME = ZULTaVo##NAME##Constraint::MakeRecord();
ZULTAV_FRAMEWORK_CONSTRAINTS(ZULTAV_CONSTRAINT)
#undef ZULTAV_CONSTRAINT
