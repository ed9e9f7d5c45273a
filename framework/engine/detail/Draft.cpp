#include "framework/engine/detail/Draft.h"

#include <algorithm>

namespace zultav::engine {

Slot Draft::AddSlot(const SlotInfo& info, const IntegerRange& range) {
  const auto slot = static_cast<Slot>(slots.size());
  slots.push_back(info);
  initial.push_back(range.lower);
  initial.push_back(range.upper);
  parents.push_back(slot);
  if (range.IsEmpty()) infeasible = true;
  return slot;
}

Slot Draft::AddSlot(const SlotInfo& info, const RealRange& range) {
  const Slot slot = AddSlot(info, IntegerRange(0, 0));
  SetReals(slot, range);
  return slot;
}

Slot Draft::AddConstant(std::int64_t value) {
  SlotInfo info;
  info.isConstant = true;
  return AddSlot(info, IntegerRange::Only(value));
}

void Draft::SetReals(Slot x, const RealRange& range) {
  const std::size_t at = 2 * std::size_t{Find(x)};
  initial[at] = std::bit_cast<std::int64_t>(range.lower);
  initial[at + 1] = std::bit_cast<std::int64_t>(range.upper);
  if (range.IsEmpty()) infeasible = true;
}

void Draft::Narrow(Slot x, const IntegerRange& range) {
  const std::size_t at = 2 * std::size_t{Find(x)};
  initial[at] = std::max(initial[at], range.lower);
  initial[at + 1] = std::min(initial[at + 1], range.upper);
  if (initial[at] > initial[at + 1]) infeasible = true;
}

void Draft::Narrow(Slot x, const RealRange& range) {
  RealRange both = reals(x);
  both.Intersect(range);
  SetReals(x, both);
}

bool Draft::Unite(Slot x, Slot y) {
  x = Find(x);
  y = Find(y);
  if (x == y) return true;
  // What was there first stands for both: declared values come before the results of operators.
  if (y < x) std::swap(x, y);
  SlotInfo& kept = slots[x];
  const SlotInfo& other = slots[y];
  // A truth value that is equal to a number is none: its negation is another one.
  if (kept.kind != other.kind || kept.isBoolean != other.isBoolean || kept.kind == Kind::kOpaque)
    return false;
  const bool isReal = kept.kind == Kind::kReal;
  if (isReal && kept.isConstant && other.isConstant &&
      !(reals(x).IsScalar() && reals(y).IsScalar()))
    return false;
  // A constant is any number of its enclosure, so nothing may be cut off it.
  if (isReal && kept.isConstant != other.isConstant) {
    const RealRange number = reals(kept.isConstant ? x : y);
    if (Intersection(number, reals(kept.isConstant ? y : x)) != number && !number.IsScalar())
      return false;
  }
  kept.isConstant = kept.isConstant || other.isConstant;
  parents[y] = x;
  const std::size_t at = 2 * std::size_t{y};
  if (isReal)
    Narrow(x,
           RealRange(std::bit_cast<double>(initial[at]), std::bit_cast<double>(initial[at + 1])));
  else
    Narrow(x, IntegerRange(initial[at], initial[at + 1]));
  return true;
}

void Draft::Resolve() {
  const auto resolve = [this](Slot& x) { x = Find(x); };
  for (Formula& formula : formulas) {
    resolve(formula.result);
    resolve(formula.first);
    resolve(formula.second);
  }
  for (Comparison& comparison : comparisons) {
    resolve(comparison.left);
    resolve(comparison.right);
    if (comparison.truth != kNone) resolve(comparison.truth);
  }
  for (Group& group : groups) std::for_each(group.slots.begin(), group.slots.end(), resolve);
  for (Hole& hole : holes) resolve(hole.slot);
  std::for_each(declared.begin(), declared.end(), resolve);
  std::for_each(observed.begin(), observed.end(), resolve);
  for (Slot& slot : slotOfObject)
    if (slot != kNone) resolve(slot);
}

}  // namespace zultav::engine
