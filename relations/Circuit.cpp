#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "relations/Relations.h"

namespace zultav::relations {

namespace {

using Outcome = ZULTaVoPropagator::Outcome;

/// The list names the successor of each node; all nodes, or those that do not name themselves,
/// form one circuit. None at all may.
///
/// Successors differ (what one has taken the others lose), no chain of fixed successors is closed
/// too early, and all nodes of the circuit can reach each other by what is left.
class Circuit final : public ZULTaVoPropagator {
 public:
  /// @param first      the number of the first node
  /// @param isPartial  whether nodes may stay outside, as their own successors
  Circuit(std::size_t size, std::int64_t first, bool isPartial);
  Wake GetWake(std::uint32_t /*argument*/) const override { return Wake::kOnValues; }
  Cost GetCost() const override { return Cost::kQuadratic; }
  std::uint32_t GetStateSize() const override { return kStateSize; }
  Outcome Propagate(ZULTaVoDomains& domains) override;

 private:
  enum State : std::uint32_t { kDone, kStateSize };
  static constexpr std::uint32_t kNone = 0xffffffff;

  std::int64_t ValueOf(std::uint32_t node) const { return mFirst + node; }
  std::uint32_t NodeOf(std::int64_t value) const {
    return static_cast<std::uint32_t>(value - mFirst);
  }
  /// Whether the node is in the circuit whatever follows.
  bool IsInside(const ZULTaVoDomains& domains, std::uint32_t node) const {
    return !mIsPartial || !domains.Contains(node, ValueOf(node));
  }
  bool Remove(ZULTaVoDomains& domains, std::uint32_t node, std::uint32_t successor);
  bool StayOutside(ZULTaVoDomains& domains, std::uint32_t node);
  bool TakeSuccessors(ZULTaVoDomains& domains);
  bool FollowFixed(ZULTaVoDomains& domains);
  bool KeepOpen(ZULTaVoDomains& domains, std::uint32_t start);
  bool KeepConnected(ZULTaVoDomains& domains);
  void FindComponent(const ZULTaVoDomains& domains, std::uint32_t root);

  std::uint32_t mSize;
  std::int64_t mFirst;
  bool mIsPartial;
  std::vector<std::uint32_t> mOrder;  // nodes; those whose successor all others have lost in front
  std::vector<std::uint32_t> mPredecessors;  // by fixed successors, or kNone
  std::vector<bool> mSeen;
  std::uint32_t mFixed = 0, mInside = 0;
  bool mIsAgain = false;  // whether what was narrowed may narrow more
  // Depth-first search: when a node was found, the oldest one that it reaches, and its next arc.
  std::vector<std::uint32_t> mFound, mOldest, mPath, mPending;
  std::vector<std::int64_t> mArcs;
};

Circuit::Circuit(std::size_t size, std::int64_t first, bool isPartial)
    : mSize(static_cast<std::uint32_t>(size)),
      mFirst(first),
      mIsPartial(isPartial),
      mOrder(size),
      mPredecessors(size),
      mSeen(size),
      mFound(size),
      mOldest(size),
      mArcs(size) {
  std::iota(mOrder.begin(), mOrder.end(), 0u);
  mPath.reserve(size);
  mPending.reserve(size);
}

Outcome Circuit::Propagate(ZULTaVoDomains& domains) {
  for (std::uint32_t node = 0; node < mSize; ++node)
    if (!domains.SetLower(node, ValueOf(0)) || !domains.SetUpper(node, ValueOf(mSize - 1)))
      return Outcome::kFailed;
  if (!TakeSuccessors(domains) || !FollowFixed(domains) || !KeepConnected(domains))
    return Outcome::kFailed;
  if (mIsAgain) return Outcome::kAgain;
  return mFixed == mSize ? Outcome::kEntailed : Outcome::kFixpoint;
}

bool Circuit::Remove(ZULTaVoDomains& domains, std::uint32_t node, std::uint32_t successor) {
  const std::int64_t lower = domains.GetLower(node), upper = domains.GetUpper(node);
  if (!domains.Remove(node, ValueOf(successor))) return false;
  if (lower == domains.GetLower(node) && upper == domains.GetUpper(node)) return true;
  // Where no set of values is kept, another one that is gone may have become a bound.
  std::int64_t base = 0;
  mIsAgain = mIsAgain || domains.IsFixed(node) || domains.GetBits(node, base) == nullptr;
  return true;
}

bool Circuit::StayOutside(ZULTaVoDomains& domains, std::uint32_t node) {
  if (!mIsPartial) return false;
  mIsAgain = mIsAgain || !domains.IsFixed(node);
  return domains.Fix(node, ValueOf(node));
}

/// No two nodes have the same successor.
bool Circuit::TakeSuccessors(ZULTaVoDomains& domains) {
  // The order outlives what is taken back: what stood in front has stayed there ever since.
  auto done = static_cast<std::size_t>(domains.GetState(kDone));
  mIsAgain = true;
  while (std::exchange(mIsAgain, false)) {
    for (std::uint32_t node = 0; node < mSize && !mIsPartial && mSize > 1; ++node)
      if (!Remove(domains, node, node)) return false;
    for (std::size_t i = done; i < mSize; ++i) {
      if (!domains.IsFixed(mOrder[i])) continue;
      const std::int64_t taken = domains.GetLower(mOrder[i]);
      bool isGone = true;
      for (std::size_t other = done; other < mSize; ++other) {
        if (other == i) continue;
        if (!Remove(domains, mOrder[other], NodeOf(taken))) return false;
        isGone = isGone && !domains.Contains(mOrder[other], taken);
      }
      if (isGone) std::swap(mOrder[i], mOrder[done++]);
    }
  }
  domains.SetState(kDone, static_cast<std::int64_t>(done));
  // Where sets of values are kept, this finds nothing more.
  std::ranges::fill(mPredecessors, kNone);
  mFixed = mInside = 0;
  for (std::uint32_t node = 0; node < mSize; ++node) {
    mInside += IsInside(domains, node) ? 1 : 0;
    if (!domains.IsFixed(node)) continue;
    ++mFixed;
    std::uint32_t& predecessor = mPredecessors[NodeOf(domains.GetLower(node))];
    if (predecessor != kNone) return false;
    predecessor = node;
  }
  return true;
}

/// What is fixed makes chains. Circuits that are closed are left to KeepConnected.
bool Circuit::FollowFixed(ZULTaVoDomains& domains) {
  std::fill(mSeen.begin(), mSeen.end(), false);
  for (std::uint32_t node = 0; node < mSize; ++node)
    if (mPredecessors[node] == kNone && !KeepOpen(domains, node)) return false;
  return true;
}

/// The end of a chain leads to its start only if nothing else must be in the circuit.
bool Circuit::KeepOpen(ZULTaVoDomains& domains, std::uint32_t start) {
  std::uint32_t end = start, inside = 1;
  mSeen[start] = true;
  for (; domains.IsFixed(end) && !mSeen[NodeOf(domains.GetLower(end))]; ++inside) {
    end = NodeOf(domains.GetLower(end));
    mSeen[end] = true;
  }
  if (end == start) return true;
  // Its end may still seem to be outside, where no set of values is kept.
  const std::uint32_t others = mInside + (IsInside(domains, end) ? 0 : 1) - inside;
  return others == 0 || Remove(domains, end, start);
}

/// Nodes that the circuit cannot pass through stay outside.
bool Circuit::KeepConnected(ZULTaVoDomains& domains) {
  std::uint32_t root = 0;
  while (root < mSize && !IsInside(domains, root)) ++root;
  if (root == mSize) return true;
  FindComponent(domains, root);
  for (std::uint32_t node = 0; node < mSize; ++node)
    if (!mSeen[node] && !StayOutside(domains, node)) return false;
  return true;
}

/// Sees the nodes that reach the root and are reached from it: R. Tarjan's algorithm, without
/// recursion, and of the other components nothing is kept.
void Circuit::FindComponent(const ZULTaVoDomains& domains, std::uint32_t root) {
  std::ranges::fill(mFound, kNone);
  std::fill(mSeen.begin(), mSeen.end(), false);
  mPath.clear();
  mPending.clear();
  std::uint32_t time = 0;
  const auto enter = [&](std::uint32_t node) {
    mFound[node] = mOldest[node] = time++;
    mArcs[node] = domains.GetLower(node);
    mPath.push_back(node);
    mPending.push_back(node);
    mSeen[node] = true;  // for as long as it is pending
  };
  enter(root);
  while (!mPath.empty()) {
    const std::uint32_t node = mPath.back();
    if (mArcs[node] <= domains.GetUpper(node)) {
      const std::uint32_t next = NodeOf(mArcs[node]);
      mArcs[node] = domains.GetNext(node, mArcs[node]);
      if (mFound[next] == kNone)
        enter(next);
      else if (mSeen[next])
        mOldest[node] = std::min(mOldest[node], mFound[next]);
      continue;
    }
    mPath.pop_back();
    if (mPath.empty()) break;  // what is pending reaches the root
    mOldest[mPath.back()] = std::min(mOldest[mPath.back()], mOldest[node]);
    if (mOldest[node] != mFound[node]) continue;
    for (std::uint32_t member = kNone; member != node; mPending.pop_back()) {
      member = mPending.back();
      mSeen[member] = false;
    }
  }
}

template <bool IsPartial>
std::unique_ptr<ZULTaVoPropagator> MakeCircuit(Arguments arguments) {
  return std::make_unique<Circuit>(arguments[0].GetSize(), arguments[0].firstIndex, IsPartial);
}

}  // namespace

Definition DescribeCircuit() {
  return {.name = "circuit",
          .meaning = "following the successors leads through all nodes and back",
          .parameters = {{.name = "successors", .size = "n"}},
          .make = &MakeCircuit<false>};
}

Definition DescribeSubcircuit() {
  return {.name = "subcircuit",
          .meaning = "the same of some nodes, of which the others are their own successors",
          .parameters = {{.name = "successors", .size = "n"}},
          .make = &MakeCircuit<true>};
}

}  // namespace zultav::relations
