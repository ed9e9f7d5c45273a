#include "framework/search/detail/NodeReasoner.h"

#include <algorithm>

namespace zultav::detail {

namespace {

// A contractor that never has enough must not keep the search at one node.
constexpr int kContractions = 100;
// Integers settle within a round or two; reals may go on by less and less.
constexpr int kSettlings = 4;

NodeState StateAfter(ZULTaVoNetwork::Status status) {
  switch (status) {
    case ZULTaVoNetwork::Status::kConsistent:
      break;
    case ZULTaVoNetwork::Status::kContradiction:
      return NodeState::kRefuted;
    case ZULTaVoNetwork::Status::kLimit:
      return NodeState::kLimited;
    case ZULTaVoNetwork::Status::kInterrupted:
      return NodeState::kInterrupted;
    case ZULTaVoNetwork::Status::kBadArguments:
      return NodeState::kBadArguments;
    case ZULTaVoNetwork::Status::kOutOfMemory:
      throw std::bad_alloc();
  }
  return NodeState::kFixpoint;
}

}  // namespace

bool NodeReasoner::HasEmptyValue() const {
  for (std::size_t i = 0; i < mNetwork.GetNumberOfObjects(); ++i)
    if (mNetwork.GetObject(i)->IsNil()) return true;
  return false;
}

NodeState NodeReasoner::ReachFixpoint(bool again) {
  for (int round = 0;; ++round) {
    const bool contracted = mReasoning.contractor != nullptr && round < kContractions &&
                            mReasoning.contractor->Contract(mNetwork, again || round > 0) != 0;
    const NodeState state = StateAfter(mNetwork.Propagate());
    if (!contracted || state != NodeState::kFixpoint) return state;
  }
}

NodeState NodeReasoner::Settle() {
  for (int round = 0; round < kSettlings; ++round) {
    const std::uint64_t before = mNetwork.GetStatistics().narrowings;
    mNetwork.ScheduleAll();
    const NodeState state = ReachFixpoint(true);
    if (state != NodeState::kFixpoint) return state;
    if (mNetwork.GetStatistics().narrowings == before) return NodeState::kSettled;
  }
  return NodeState::kFixpoint;
}

ZULTavProver::Finding NodeReasoner::Prove(NodeState state, const SearchTree& tree,
                                          ZULTavSolution& box, ZULTavSolution& region) const {
  using Finding = ZULTavProver::Finding;
  if (state == NodeState::kLimited) return Finding::kNothing;
  if (tree.HasContinuousValues()) {
    if (mReasoning.prover == nullptr) return Finding::kNothing;
    box = ZULTavSolution(tree.GetDeclared());
    region = ZULTavSolution(tree.GetDeclared());
    return mReasoning.prover->Prove(mNetwork, box, region);
  }
  const auto variables = tree.GetVariables();
  const bool settled = state == NodeState::kSettled &&
                       std::all_of(variables.begin(), variables.end(),
                                   [](const SearchVariable& each) { return each.IsSingle(); });
  return settled ? Finding::kSolution : Finding::kNothing;
}

}  // namespace zultav::detail
