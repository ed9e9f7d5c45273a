#ifndef ZULTAV_SEARCH_DETAIL_NODE_REASONER_H
#define ZULTAV_SEARCH_DETAIL_NODE_REASONER_H

#include <optional>

#include "framework/engine/ExactCheck.h"
#include "framework/engine/reals/Newton.h"
#include "framework/search/detail/Nogoods.h"
#include "framework/search/detail/SearchSpace.h"

namespace zultav::detail {

/// What a step of the search found, or left behind, at a node.
enum class NodeState {
  kLimited,      ///< open; the engine gave up before the fixpoint, and what it narrowed is sound
  kFixpoint,     ///< open; propagation narrows no more
  kSettled,      ///< open; every rule has accepted the values that remain
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
  using Finding = engine::Newton::Finding;

  NodeReasoner(Engine& engine, engine::Newton& newton, const SearchSpace& space, Nogoods& nogoods)
      : mEngine(engine), mNewton(newton), mSpace(space), mNogoods(nogoods) {}

  /// Splits early where bounds of integers go on moving by little: a split moves them farther.
  void LimitRuns();
  /// A value that no rule looks at may be empty from the start.
  bool HasEmptyValue() const;
  /// Another node: propagates, contracts and looks at the nogoods in turn until nothing is
  /// narrowed.
  NodeState Enter();
  /// Gives every rule its say on the values that remain: those that were retired when values
  /// narrowed, and those to which small narrowings were not passed on.
  NodeState Settle();
  /// The rule that refuted the node; kNone where it was something else.
  std::uint32_t GetFailed() const { return mFailed; }
  /// What is known of the solutions among the values of an open node.
  /// @param[out] box, region  as for engine::Newton::Prove, where there are reals
  Finding Prove(NodeState state, ZULTavBox& box, ZULTavBox& region);

 private:
  NodeState Propagate();
  NodeState ReachFixpoint();
  NodeState Approach();
  NodeState Contract();
  NodeState RunAll();

  Engine& mEngine;
  engine::Newton& mNewton;
  const SearchSpace& mSpace;
  Nogoods& mNogoods;
  std::optional<engine::ExactCheck> mExactCheck;  // made for the first proof
  std::uint64_t mRunLimit = 0;                    // before a split; of the network otherwise
  std::uint32_t mFailed = engine::kNone;
};

}  // namespace zultav::detail

#endif
