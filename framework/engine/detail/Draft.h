#ifndef ZULTAV_ENGINE_DETAIL_DRAFT_H
#define ZULTAV_ENGINE_DETAIL_DRAFT_H

#include <cstdint>
#include <vector>

#include "framework/engine/Program.h"

namespace zultav::engine {

/// Truths by number: bytes, which take less time than bits.
using Flags = std::vector<std::uint8_t>;

/// A model while it is compiled: what the network says, in terms of slots that may turn out to be
/// equal. All members may name united slots until Resolve was called.
struct Draft {
  /// A value that an integer does not have.
  struct Hole {
    Slot slot;
    std::int64_t value;
  };

  Slot AddSlot(const SlotInfo& info, const IntegerRange& range);
  Slot AddSlot(const SlotInfo& info, const RealRange& range);
  Slot AddConstant(std::int64_t value);

  /// The slot that stands for x and all that is equal to it.
  Slot Find(Slot x) {
    while (parents[x] != x) x = parents[x] = parents[parents[x]];
    return x;
  }
  /// Makes both one slot, if they are of one kind and nothing is lost by it: two constants that are
  /// known by their enclosures alone may differ.
  bool Unite(Slot x, Slot y);
  bool IsConstant(Slot x) { return slots[Find(x)].isConstant; }
  /// Whether an integer has one known value.
  bool IsFixed(Slot x) { return integers(x).IsScalar(); }

  IntegerRange integers(Slot x) {
    const std::size_t at = 2 * std::size_t{Find(x)};
    return {initial[at], initial[at + 1]};
  }
  RealRange reals(Slot x) {
    const std::size_t at = 2 * std::size_t{Find(x)};
    return {std::bit_cast<double>(initial[at]), std::bit_cast<double>(initial[at + 1])};
  }
  void Narrow(Slot x, const IntegerRange& range);
  void Narrow(Slot x, const RealRange& range);

  /// Puts the slots that stand for others in their place.
  void Resolve();

  std::vector<SlotInfo> slots;
  std::vector<std::int64_t> initial;
  std::vector<Slot> parents;
  std::vector<Slot> declared, observed;
  std::vector<Slot> slotOfObject;
  std::vector<Formula> formulas;
  std::vector<Comparison> comparisons;
  std::vector<Group> groups;
  std::vector<Hole> holes;
  bool infeasible = false;

 private:
  void SetReals(Slot x, const RealRange& range);
};

}  // namespace zultav::engine

#endif
