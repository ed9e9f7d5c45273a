#ifndef ZULTAV_NUMBERS_DETAIL_SINGLE_DISPATCH_H
#define ZULTAV_NUMBERS_DETAIL_SINGLE_DISPATCH_H

namespace zultav::detail {

/// The ending of a contradiction: the target becomes Nil, which counts as a change.
template <class Self>
int Contradict(Self& target) {
  target.SetNil();
  return 1;
}

/// The step from abstract arguments to typed ones, for domains that accept their own class only.
///
/// In this order: an argument of another class narrows nothing; a Nil target stays as it is; a Nil
/// operand empties the target; where Self::kAnyNarrowsNothing, an unconstrained operand deduces
/// nothing; else `typed`, the operation over Self, decides. An inverse looks at the result only:
/// the state of the other argument is the typed operation's to judge.
template <class Self>
class SingleDispatch {
 public:
  template <class Abstract>
  static int Forward(Self& result, int (Self::*typed)(const Self&), const Abstract& y) {
    if (!AreOwn(y)) return 0;
    return Step(
        result, [&] { return (result.*typed)(Own(y)); }, Own(y));
  }
  template <class Abstract>
  static int Forward(Self& result, int (Self::*typed)(const Self&, const Self&), const Abstract& a,
                     const Abstract& b) {
    if (!AreOwn(a, b)) return 0;
    return Step(
        result, [&] { return (result.*typed)(Own(a), Own(b)); }, Own(a), Own(b));
  }

  template <class Abstract>
  static int Inverse(const Self& result, int (Self::*typed)(Self&) const, Abstract& y) {
    if (!AreOwn(y)) return 0;
    return Step(
        Own(y), [&] { return (result.*typed)(Own(y)); }, result);
  }
  template <class Abstract>
  static int Inverse(const Self& result, int (Self::*typed)(Self&, const Self&) const, Abstract& a,
                     const Abstract& b) {
    if (!AreOwn(a, b)) return 0;
    return Step(
        Own(a), [&] { return (result.*typed)(Own(a), Own(b)); }, result);
  }
  template <class Abstract>
  static int SecondInverse(const Self& result, int (Self::*typed)(const Self&, Self&) const,
                           const Abstract& a, Abstract& b) {
    if (!AreOwn(a, b)) return 0;
    return Step(
        Own(b), [&] { return (result.*typed)(Own(a), Own(b)); }, result);
  }

 private:
  template <class... Abstract>
  static bool AreOwn(const Abstract&... arguments) {
    return (arguments.IsDerivedFrom(Self::sIdent) && ...);
  }
  template <class Abstract>
  static Self& Own(Abstract& argument) {
    return static_cast<Self&>(argument);
  }
  template <class Abstract>
  static const Self& Own(const Abstract& argument) {
    return static_cast<const Self&>(argument);
  }

  template <class Typed, class... Operands>
  static int Step(Self& target, Typed typed, const Operands&... operands) {
    if (target.IsNil()) return 0;
    if ((operands.IsNil() || ...)) return Contradict(target);
    if constexpr (Self::kAnyNarrowsNothing) {
      if ((operands.IsAny() || ...)) return 0;
    }
    return typed();
  }
};

/// The ending of a computed value: an unconstrained target takes it, one that `agrees` with it
/// stays, any other becomes Nil.
template <class Self, class Value>
int Settle(Self& target, Value value, bool agrees) {
  if (target.IsAny()) {
    target.SetExactValue(value);
    return 1;
  }
  return agrees ? 0 : Contradict(target);
}

/// The ending of a relation, which never gives a value to an unconstrained target.
template <class Self>
int CheckRelation(Self& target, bool holds) {
  return target.IsAny() || holds ? 0 : Contradict(target);
}

}  // namespace zultav::detail

#endif
