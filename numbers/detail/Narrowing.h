#ifndef ZULTAV_NUMBERS_DETAIL_NARROWING_H
#define ZULTAV_NUMBERS_DETAIL_NARROWING_H

#include <functional>
#include <type_traits>

#include "framework/intervals/IntervalControl.h"

namespace zultav::detail {

/// Stores the empty set, its bounds being the exchanged bounds of the full range. Answers 1.
template <class Set>
int StoreEmpty(Set& set) {
  const Set whole;
  set = Set(whole.upper, whole.lower);
  return 1;
}

/// The narrowing step in which every operation on interval sets (SubdefInt, SubdefReal) ends:
/// target := target ∩ compute(operands...).
///
/// `compute` is called with the operands only when none of them is empty, and its own errors are
/// forgotten: a saturated bound is an infinite side, and a candidate without a value is empty.
///
/// @return 1 when the target changed, becoming empty included. An empty target stays as it is, 0;
///         an empty operand or intersection empties the target, 1. The error flag is down.
///
/// Inlined always, so that a pointer to a member as `compute` costs no indirect call.
template <class Set, class Compute, class... Operands>
[[gnu::always_inline]] inline int Narrow(Set& target, Compute compute,
                                         const Operands&... operands) {
  if (target.IsEmpty()) return 0;
  const SDErrorScope errors;
  if ((operands.IsEmpty() || ...)) return StoreEmpty(target);
  const Set candidate = std::invoke(compute, operands...);
  SDClearError();
  const int changed = target.SDIntersect(candidate);
  return SDCheckError() ? StoreEmpty(target) : changed;
}

/// The narrowing step with a candidate that needs no computation.
template <class Set>
int NarrowTo(Set& target, const std::type_identity_t<Set>& candidate) {
  return Narrow(
      target, [](const Set& set) { return set; }, candidate);
}

/// The frame of operations that move one bound, such as the order relations: runs
/// `move(target, other)` unless one of the sets is empty. Answers as Narrow does.
template <class Set, class Move>
int NarrowBound(Set& target, const Set& other, Move move) {
  if (target.IsEmpty()) return 0;
  const SDErrorScope errors;
  if (other.IsEmpty()) return StoreEmpty(target);
  return move(target, other);
}

}  // namespace zultav::detail

#endif
