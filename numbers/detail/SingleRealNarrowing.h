#ifndef ZULTAV_NUMBERS_DETAIL_SINGLE_REAL_NARROWING_H
#define ZULTAV_NUMBERS_DETAIL_SINGLE_REAL_NARROWING_H

#include <algorithm>
#include <cmath>
#include <functional>

#include "numbers/ZULTavSingleReal.h"
#include "numbers/detail/SingleDispatch.h"

namespace zultav::detail {

// How the operations of single reals begin and end.

/// Calls `narrow` with the numbers of the operands. A Nil target stays as it is (0), a Nil operand
/// makes the target Nil (1), an operand that is Any narrows nothing (0).
template <class Narrow, class... Operands>
int WithValues(ZULTavSingleReal& target, Narrow narrow, const Operands&... operands) {
  if (target.IsNil()) return 0;
  if ((operands.IsNil() || ...)) return Contradict(target);
  if ((operands.IsAny() || ...)) return 0;
  return narrow(operands.GetValue()...);
}

/// The tolerance between two reals: they differ when more than 2p apart.
inline bool Differ(double a, double b) {
  const double margin = 2 * ZULTaVoReal::GetPrecision();
  return a + margin < b || b < a - margin;
}

/// The ending of a computed number: Any takes it, a value that differs from it becomes Nil.
inline int SettleReal(ZULTavSingleReal& target, double value) {
  return Settle(target, value, !Differ(target.GetValue(), value));
}

inline int NarrowToConstant(ZULTavSingleReal& target, double value) {
  return target.IsNil() ? 0 : SettleReal(target, value);
}

/// The number that an enclosure of one number stands for: its midpoint. An enclosure wider than
/// rounding or underflow explains is left as it is.
inline SubdefReal Collapsed(const SubdefReal& set) {
  constexpr double kRounding = 16 * 0x1p-52;
  constexpr double kUnderflow = 0x1p-1022;
  const double size = std::max(std::fabs(set.lower), std::fabs(set.upper));
  if (set.IsEmpty() || set.upper - set.lower > std::max(kRounding * size, kUnderflow)) return set;
  const double middle = (set.lower + set.upper) * 0.5 + 0.0;  // not the -0 of an underflow
  return {middle, middle};
}

/// What an unconstrained target takes of the enclosure of one number. Beyond the largest number
/// nothing is known.
inline SubdefReal Candidate(const ZULTavSingleReal& target, const SubdefReal& set) {
  if (!target.IsAny() || set.IsEmpty()) return set;
  const double max = SubdefReal::sMaxValue;
  return set.lower >= max || set.upper <= -max ? SubdefReal() : Collapsed(set);
}

/// The ending of most operations: intersects with `compute` of the operands as point intervals,
/// margin p.
template <class Compute, class... Operands>
int NarrowToResult(ZULTavSingleReal& target, Compute compute, const Operands&... operands) {
  return WithValues(
      target,
      [&](auto...) {
        SDClearError();
        return target.Intersect(Candidate(target, std::invoke(compute, operands.GetSubdef()...)));
      },
      operands...);
}

/// The same without a margin: a fixed target must lie in the enclosure.
template <class Compute, class... Operands>
int NarrowExactly(ZULTavSingleReal& target, Compute compute, const Operands&... operands) {
  return WithValues(
      target,
      [&](auto...) {
        const SDErrorScope errors;
        const SubdefReal set = std::invoke(compute, operands.GetSubdef()...);
        if (SDCheckError() || set.IsEmpty()) return Contradict(target);
        if (!target.IsAny()) return CheckRelation(target, set.Contains(target.GetValue()));
        return target.Intersect(Candidate(target, set));
      },
      operands...);
}

}  // namespace zultav::detail

#endif
