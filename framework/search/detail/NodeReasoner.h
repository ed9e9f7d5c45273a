#ifndef ZULTAV_SEARCH_DETAIL_NODE_REASONER_H
#define ZULTAV_SEARCH_DETAIL_NODE_REASONER_H

#include "framework/search/ZULTavReasoning.h"
#include "framework/search/detail/SearchTree.h"

namespace zultav::detail {

/// What a step of the search found, or left behind, at a node.
enum class NodeState {
  kLimited,      ///< open; the network gave up before the fixpoint, and what it narrowed is sound
  kFixpoint,     ///< open; propagation narrows no more
  kSettled,      ///< open; every constraint has accepted the values that remain
  kRefuted,      ///< holds no solution
  kBranched,     ///< its first half is the present node now
  kFound,        ///< is a box of the frontier now
  kInterrupted,  ///< open; the interrupt flag was seen
  kBadArguments  ///< a constraint cannot work on its arguments
};

/// Whether the values may hold solutions and wait for the next step.
constexpr bool IsOpen(NodeState state) { return state <= NodeState::kSettled; }

/// Narrows the values of a node, and says what is known of those that remain. Throws
/// std::bad_alloc when memory ran out.
class NodeReasoner {
 public:
  NodeReasoner(ZULTaVoNetwork& network, const ZULTavReasoning& reasoning)
      : mNetwork(network), mReasoning(reasoning) {}

  /// A value that no constraint looks at may be empty from the start.
  bool HasEmptyValue() const;
  /// Contracts and propagates in turn until neither narrows.
  /// @param again  whether it was done for this node before
  NodeState ReachFixpoint(bool again);
  /// Gives every constraint its say on the values that remain: those that were passive when values
  /// narrowed, and those to which small narrowings were not passed on.
  NodeState Settle();
  /// What is known of the solutions among the values of an open node.
  /// @param[out] box, region  as for ZULTavProver::Prove, where there are reals
  ZULTavProver::Finding Prove(NodeState state, const SearchTree& tree, ZULTavSolution& box,
                              ZULTavSolution& region) const;

 private:
  ZULTaVoNetwork& mNetwork;
  ZULTavReasoning mReasoning;
};

}  // namespace zultav::detail

#endif
