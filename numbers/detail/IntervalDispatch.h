#ifndef ZULTAV_NUMBERS_DETAIL_INTERVAL_DISPATCH_H
#define ZULTAV_NUMBERS_DETAIL_INTERVAL_DISPATCH_H

#include <optional>
#include <type_traits>

#include "framework/solver/ZULTaVoAny.h"

namespace zultav::detail {

/// From the slots of a domain, whose arguments are abstract, to its typed operations, for domains
/// that convert arguments of other classes.
///
/// A domain class needs, besides its typed operations and SetNil,
///  - `GetSubdef() const`: its set of values, which has IsEmpty;
///  - a default constructor, and `bool Convert(const ZULTaVoAny& value)`: stores what a value of
///    another class holds; false, and nothing stored, when the class is foreign to the slots;
///  - `int IntersectInverse(ZULTaVoAny& target) const`: narrows a value of any class that Convert
///    takes to the domain's values. Answers 1 when the target changed.
///
/// Relations defined by exchanging roles need nothing of their own: they are exchanged between
/// the typed operations, so that the other side is of the receiver's class already.
namespace interval_dispatch {

/// Domain, whatever Argument is: one typed argument for each abstract one.
template <class Domain, class Argument>
using Typed = std::enable_if_t<std::is_base_of_v<ZULTaVoAny, Argument>, Domain>;

/// `value` when it is a Domain by its own word, else null. A value whose static type already
/// tells another class is not asked.
template <class Domain, class Value>
auto AsDomain(Value& value) {
  using Result = std::conditional_t<std::is_const_v<Value>, const Domain, Domain>;
  if constexpr (std::is_base_of_v<Domain, Value>) {
    return static_cast<Result*>(&value);
  } else if constexpr (std::is_base_of_v<Value, Domain>) {
    return ZULTaVoCast<Domain>(&value);
  } else {
    return static_cast<Result*>(nullptr);
  }
}

/// A read-only argument as a Domain: the argument itself or a converted copy.
template <class Domain>
class Operand {
 public:
  template <class Value>
  explicit Operand(const Value& value) : mDomain(AsDomain<Domain>(value)) {
    if (mDomain == nullptr && mCopy.emplace().Convert(value)) mDomain = &*mCopy;
  }
  Operand(const Operand&) = delete;
  Operand& operator=(const Operand&) = delete;

  bool IsForeign() const { return mDomain == nullptr; }
  bool IsNil() const { return mDomain->GetSubdef().IsEmpty(); }
  bool IsAny() const { return mDomain->IsAny(); }
  const Domain& operator*() const { return *mDomain; }

 private:
  const Domain* mDomain;
  std::optional<Domain> mCopy;
};

template <class Domain, class Apply, class... Operands>
int Forward(Domain& self, Apply apply, const Operands&... operands) {
  if ((operands.IsForeign() || ...) || self.GetSubdef().IsEmpty()) return 0;
  if ((operands.IsNil() || ...)) {
    self.SetNil();
    return 1;
  }
  if constexpr (requires { Domain::kAnyNarrowsNothing; }) {
    if ((operands.IsAny() || ...)) return 0;
  }
  return apply(*operands...);
}

template <class Domain, class Target, class Apply, class... Operands>
int Inverse(const Domain& self, Target& target, Apply apply, const Operands&... operands) {
  if ((operands.IsForeign() || ...)) return 0;
  const auto narrow = [&](Domain& typed) {
    if (typed.GetSubdef().IsEmpty()) return 0;
    if (!self.GetSubdef().IsEmpty()) return apply(typed, *operands...);
    typed.SetNil();
    return 1;
  };
  if (Domain* typed = AsDomain<Domain>(target)) return narrow(*typed);
  Domain copy;
  return copy.Convert(target) && narrow(copy) ? copy.IntersectInverse(target) : 0;
}

}  // namespace interval_dispatch

template <class Domain>
class IntervalDispatch {
  template <class Argument>
  using Typed = interval_dispatch::Typed<Domain, Argument>;
  using Operand = interval_dispatch::Operand<Domain>;

 public:
  /// Forward operation: calls the typed operation on `self` with the arguments as Domain.
  ///
  /// @return 0 when an argument is foreign or `self` is Nil; 1, `self` made Nil, when an argument
  ///         is Nil; 0 when one is Any and Domain::kAnyNarrowsNothing; else the typed operation's
  ///         answer.
  template <class... Arguments>
  static int Forward(Domain& self, int (Domain::*operation)(const Typed<Arguments>&...),
                     const Arguments&... arguments) {
    return interval_dispatch::Forward(
        self, [&](const auto&... typed) { return (self.*operation)(typed...); },
        Operand(arguments)...);
  }

  /// Inverse operation on its first argument: calls the typed operation with `target` itself when
  /// that is a Domain, else with a copy as Domain whose narrowing is written back.
  ///
  /// @return 0 when an argument is foreign or `target` is Nil; 1, `target` made Nil, when `self` is
  ///         Nil; else 1 when `target` changed. What Nil among the other arguments means is left to
  ///         the typed operation.
  template <class Target, class... Others>
  static int Inverse(const Domain& self,
                     int (Domain::*operation)(Domain&, const Typed<Others>&...) const,
                     Target& target, const Others&... others) {
    return interval_dispatch::Inverse(
        self, target,
        [&](Domain& narrowed, const auto&... typed) {
          return (self.*operation)(narrowed, typed...);
        },
        Operand(others)...);
  }

  /// As Inverse for an operation that narrows its second argument.
  template <class Other, class Target>
  static int SecondInverse(const Domain& self,
                           int (Domain::*operation)(const Domain&, Domain&) const,
                           const Other& other, Target& target) {
    return interval_dispatch::Inverse(
        self, target,
        [&](Domain& narrowed, const Domain& typed) { return (self.*operation)(typed, narrowed); },
        Operand(other));
  }
};

/// Narrows a value of another module to [lower, upper] (Nil when `empty`) through its bounds, each
/// stored only where it moves inward. Answers 1 when the target changed.
template <class Target, class Bound>
int NarrowBounds(Target& target, bool empty, Bound lower, Bound upper) {
  const bool raise = lower > target.GetLowerBound();
  const bool cut = upper < target.GetUpperBound();
  if (empty) {
    target.SetNil();
    return 1;
  }
  if (raise) target.SetLowerBound(lower);
  if (cut) target.SetUpperBound(upper);
  return raise || cut;
}

}  // namespace zultav::detail

#endif
