#include "framework/search/ZULTavSearch.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "framework/search/detail/CompiledSearch.h"
#include "framework/search/detail/Incumbent.h"
#include "framework/search/detail/NodeReasoner.h"
#include "framework/search/detail/SearchRun.h"
#include "framework/search/detail/SearchTimer.h"

using namespace zultav::detail;
using zultav::IntegerRange;
using zultav::RealRange;

namespace {

ZULTavSearch::Verdict VerdictOn(NodeReasoner& reasoner, NodeState state, const Engine& engine,
                                const SearchSpace& space) {
  using Verdict = ZULTavSearch::Verdict;
  using Finding = NodeReasoner::Finding;
  ZULTavBox box, region;
  const Finding finding = reasoner.Prove(state, box, region);
  if (finding == Finding::kNothing) return Verdict::kOpen;
  if (finding == Finding::kNoSolution) return Verdict::kContradiction;
  return space.HasContinuousValues() && !space.IsWithin(box, space.Capture(engine))
             ? Verdict::kOpen
             : Verdict::kSolved;
}

}  // namespace

ZULTavSearch::ZULTavSearch(ZULTaVoNetwork& network, std::vector<ZULTaVoAny*> declared,
                           const Options& options, std::vector<ZULTaVoAny*> observed)
    : mNetwork(network),
      mDeclared(std::move(declared)),
      mObserved(std::move(observed)),
      mOptions(options) {}

/// Whatever ends the step, the network is given back.
template <class Step>
ZULTavSearch::Outcome ZULTavSearch::WithCompiled(Step step) {
  try {
    CompiledSearch compiled(mNetwork, mDeclared, mObserved, mInterrupt, mFrontier.statistics);
    return step(compiled);
  } catch (const std::bad_alloc&) {
    return Outcome::kOutOfMemory;
  }
}

ZULTavSearch::Outcome ZULTavSearch::Run(const SolutionCallback& report) {
  return WithCompiled([&](CompiledSearch& compiled) {
    return SearchRun(compiled, mOptions, report, mFrontier, mInterrupt).Execute();
  });
}

ZULTavSearch::Outcome ZULTavSearch::Propagate(Verdict& verdict) {
  verdict = Verdict::kOpen;
  ZULTavSolution narrowed;
  const Outcome outcome = WithCompiled([&](CompiledSearch& compiled) {
    const SearchTimer timer(mOptions.limits.seconds, mInterrupt);
    Engine& engine = compiled.GetEngine();
    const SearchSpace& space = compiled.GetSpace();
    std::vector<ZULTavFrontier::Nogood> none;
    Nogoods nogoods(none, space);
    NodeReasoner reasoner(engine, compiled.GetNewton(), space, nogoods);
    const NodeState state = reasoner.HasEmptyValue() ? NodeState::kRefuted : reasoner.Settle();
    if (state != NodeState::kRefuted) {
      narrowed = space.MakeSolution();
      space.Fill(space.Capture(engine), narrowed);
    }
    if (state == NodeState::kInterrupted)
      return timer.IsUp() ? Outcome::kTimeLimit : Outcome::kStopped;
    if (state == NodeState::kBadArguments) return Outcome::kBadModel;
    if (state == NodeState::kLimited) return Outcome::kPropagationLimit;
    verdict = state == NodeState::kRefuted ? Verdict::kContradiction
                                           : VerdictOn(reasoner, state, engine, space);
    return Outcome::kExhausted;
  });
  // When the engine has given the network back.
  for (std::size_t i = 0; i < narrowed.GetSize(); ++i) mDeclared[i]->Assign(narrowed.GetValue(i));
  return outcome;
}

ZULTavObserved ZULTavSearch::GetObjectiveBounds() const {
  using Kind = ZULTavObserved::Kind;
  const ZULTavFrontier::Optimum& optimum = mFrontier.optimum;
  const std::size_t objective = mOptions.objective->observed;
  const bool isReal = ZULTaVoCast<const ZULTaVoReal>(mObserved[objective]) != nullptr;
  ZULTavObserved bounds;
  bounds.kind = isReal ? Kind::kReal : Kind::kInteger;
  const ZULTavBox::Range best =
      optimum.isFound ? optimum.best.ranges[mDeclared.size() + objective] : ZULTavBox::Range();
  if (isReal) {
    const double bound = NumberAt(std::clamp(optimum.bound, OrderOf(-HUGE_VAL), OrderOf(HUGE_VAL)));
    const RealRange found = optimum.isFound ? best.GetReals() : RealRange();
    bounds.reals = mOptions.objective->isMaximized ? RealRange(found.lower, -bound)
                                                   : RealRange(bound, found.upper);
  } else {
    const IntegerRange found = optimum.isFound ? best.GetIntegers() : IntegerRange();
    bounds.integers =
        mOptions.objective->isMaximized
            ? IntegerRange(found.lower, (-IntegerRange(optimum.bound, optimum.bound)).upper)
            : IntegerRange(optimum.bound, found.upper);
  }
  return bounds;
}

bool ZULTavSearch::ReadState(ZULipstream& in) {
  CompiledSearch compiled(mNetwork, mDeclared, mObserved, mInterrupt, mFrontier.statistics);
  return mFrontier.Read(in, compiled.GetSpace());
}

ZULTavSolution ZULTavSearch::MakeSolution() const {
  return ZULTavSolution(mNetwork, mDeclared, mObserved.size());
}
