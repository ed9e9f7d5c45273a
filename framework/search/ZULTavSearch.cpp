#include "framework/search/ZULTavSearch.h"

#include <new>
#include <utility>

#include "framework/search/detail/NodeReasoner.h"
#include "framework/search/detail/SearchRun.h"
#include "framework/search/detail/SearchTimer.h"
#include "framework/search/detail/SearchTree.h"

using namespace zultav::detail;

namespace {

std::vector<SearchVariable> VariablesOf(const ZULTaVoNetwork& network,
                                        const std::vector<ZULTaVoAny*>& declared) {
  std::vector<SearchVariable> variables;
  variables.reserve(declared.size());
  for (ZULTaVoAny* value : declared) variables.emplace_back(value, network.GetType(value));
  return variables;
}

ZULTavSearch::Verdict VerdictOn(const NodeReasoner& reasoner, NodeState state,
                                const SearchTree& tree) {
  using Verdict = ZULTavSearch::Verdict;
  using Finding = ZULTavProver::Finding;
  ZULTavSolution box, region;
  const Finding finding = reasoner.Prove(state, tree, box, region);
  if (finding == Finding::kNothing) return Verdict::kOpen;
  if (finding == Finding::kNoSolution) return Verdict::kContradiction;
  const auto declared = tree.GetDeclared();
  for (std::size_t i = 0; i < box.GetSize(); ++i)
    if (!declared[i].IsWithin(box.GetValue(i), *declared[i].GetValue())) return Verdict::kOpen;
  return Verdict::kSolved;
}

}  // namespace

ZULTavContractor::~ZULTavContractor() = default;
ZULTavProver::~ZULTavProver() = default;
ZULTavSymmetries::~ZULTavSymmetries() = default;

ZULTavSearch::ZULTavSearch(ZULTaVoNetwork& network, std::vector<ZULTaVoAny*> declared,
                           const Options& options)
    : mNetwork(network), mDeclared(std::move(declared)), mOptions(options) {}

/// Whatever ends the step, the network is given back.
template <class Step>
ZULTavSearch::Outcome ZULTavSearch::WithNetwork(Step step) {
  NetworkUse use(mNetwork, mInterrupt, mFrontier.statistics);
  try {
    return step(use);
  } catch (const std::bad_alloc&) {
    return Outcome::kOutOfMemory;
  }
}

ZULTavSearch::Outcome ZULTavSearch::Run(const SolutionCallback& report) {
  return WithNetwork([&](NetworkUse& use) {
    if (!mNetwork.PushState()) throw std::bad_alloc();
    return SearchRun(mNetwork, mDeclared, mOptions, report, mFrontier, use, mInterrupt).Execute();
  });
}

ZULTavSearch::Outcome ZULTavSearch::Propagate(Verdict& verdict) {
  verdict = Verdict::kOpen;
  return WithNetwork([&](NetworkUse&) {
    const SearchTimer timer(mOptions.limits.seconds, mInterrupt);
    NodeReasoner reasoner(mNetwork, mOptions.reasoning);
    const NodeState state = reasoner.HasEmptyValue() ? NodeState::kRefuted : reasoner.Settle();
    if (state == NodeState::kInterrupted)
      return timer.IsUp() ? Outcome::kTimeLimit : Outcome::kStopped;
    if (state == NodeState::kBadArguments) return Outcome::kBadModel;
    if (state == NodeState::kLimited) return Outcome::kPropagationLimit;
    if (state == NodeState::kRefuted) {
      verdict = Verdict::kContradiction;
    } else {
      ZULTavFrontier::Path none;
      const SearchTree tree(mNetwork, mDeclared, none);
      verdict = VerdictOn(reasoner, state, tree);
    }
    return Outcome::kExhausted;
  });
}

bool ZULTavSearch::ReadState(ZULipstream& in) {
  return mFrontier.Read(in, VariablesOf(mNetwork, mDeclared), mNetwork.GetNumberOfObjects());
}

ZULTavSolution ZULTavSearch::MakeSolution() const {
  return ZULTavSolution(VariablesOf(mNetwork, mDeclared));
}
