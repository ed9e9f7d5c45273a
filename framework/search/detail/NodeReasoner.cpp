#include "framework/search/detail/NodeReasoner.h"

#include <algorithm>
#include <new>
#include <vector>

namespace zultav::detail {

namespace {

// A contractor that never has enough must not keep the search at one node.
constexpr int kContractions = 100;
// Integers settle within a round or two; reals may go on by less and less.
constexpr int kSettlings = 4;
// Of a width: losses that are passed on before Newton's method has tried.
constexpr double kLargeLoss = 0.2;
// Of rules over integers, before a split: far more than they take unless bounds creep.
constexpr std::uint64_t kRunsAtLeast = 1000;
constexpr std::uint64_t kRunsPerRule = 100;

NodeState StateAfter(Engine::Status status) {
  switch (status) {
    case Engine::Status::kFixpoint:
      break;
    case Engine::Status::kFailed:
      return NodeState::kRefuted;
    case Engine::Status::kLimit:
      return NodeState::kLimited;
    case Engine::Status::kInterrupted:
      return NodeState::kInterrupted;
    case Engine::Status::kBadArguments:
      return NodeState::kBadArguments;
    case Engine::Status::kOutOfMemory:
      throw std::bad_alloc();
  }
  return NodeState::kFixpoint;
}

}  // namespace

bool NodeReasoner::HasEmptyValue() const {
  const Program& program = mEngine.GetProgram();
  if (program.IsInfeasible()) return true;
  for (Slot slot = 0; slot < program.GetNumberOfSlots(); ++slot) {
    const Kind kind = program.GetSlot(slot).kind;
    if (kind == Kind::kOpaque ? mEngine.GetObject(slot).IsNil() != 0
        : kind == Kind::kReal ? mEngine.GetReals(slot).IsEmpty()
                              : mEngine.GetIntegers(slot).IsEmpty())
      return true;
  }
  return false;
}

void NodeReasoner::LimitRuns() {
  const Program& program = mEngine.GetProgram();
  if (mSpace.HasContinuousValues() || program.GetNetwork().GetFilterLimit() != 0) return;
  mRunLimit = kRunsAtLeast + kRunsPerRule * program.GetRules().size();
  mEngine.SetRunLimit(mRunLimit);
}

NodeState NodeReasoner::Propagate() {
  const NodeState state = StateAfter(mEngine.Propagate());
  mFailed = state == NodeState::kRefuted ? mEngine.GetFailed() : engine::kNone;
  return state;
}

NodeState NodeReasoner::Enter() {
  mNewton.Forget();
  return ReachFixpoint();
}

NodeState NodeReasoner::ReachFixpoint() {
  for (;;) {
    const NodeState state = Contract();
    if (!IsOpen(state)) return state;
    switch (mNogoods.Narrow(mEngine)) {
      case Nogoods::Answer::kFailed:
        mFailed = engine::kNone;
        return NodeState::kRefuted;
      case Nogoods::Answer::kNarrowed:
        break;
      case Nogoods::Answer::kNothing:
        return state;
    }
  }
}

/// Propagates large losses only, and gives Newton a try then: what lies near a solution need not
/// creep there.
NodeState NodeReasoner::Approach() {
  const double fraction = mEngine.GetNarrowingFraction();
  if (!mNewton.HasEquations() || fraction >= kLargeLoss) return NodeState::kFixpoint;
  mEngine.SetNarrowingFraction(kLargeLoss);
  NodeState state = Propagate();
  if (state == NodeState::kFixpoint && !mNewton.Approach()) state = NodeState::kRefuted;
  mEngine.SetNarrowingFraction(fraction);
  if (state == NodeState::kFixpoint) mEngine.TellKeptBack();
  return state;
}

NodeState NodeReasoner::Contract() {
  if (const NodeState state = Approach(); state != NodeState::kFixpoint) return state;
  for (int round = 0;; ++round) {
    const NodeState state = Propagate();
    if (state != NodeState::kFixpoint || round == kContractions) return state;
    switch (mNewton.Contract()) {
      case engine::Newton::Answer::kFailed:
        return NodeState::kRefuted;
      case engine::Newton::Answer::kNarrowed:
        break;
      case engine::Newton::Answer::kNothing:
        return state;
    }
  }
}

NodeState NodeReasoner::Settle() {
  const std::uint64_t limit = mEngine.GetProgram().GetNetwork().GetFilterLimit();
  mEngine.SetRunLimit(limit);
  const NodeState state = RunAll();
  mEngine.SetRunLimit(mRunLimit != 0 ? mRunLimit : limit);
  return state;
}

NodeState NodeReasoner::RunAll() {
  for (int round = 0; round < kSettlings; ++round) {
    const std::uint64_t before = mEngine.GetStatistics().narrowings;
    mEngine.ScheduleAll();
    const NodeState state = ReachFixpoint();
    if (state != NodeState::kFixpoint) return state;
    if (mEngine.GetStatistics().narrowings == before) return NodeState::kSettled;
  }
  return NodeState::kFixpoint;
}

NodeReasoner::Finding NodeReasoner::Prove(NodeState state, ZULTavBox& box, ZULTavBox& region) {
  if (state == NodeState::kLimited) return Finding::kNothing;
  if (!mExactCheck) mExactCheck.emplace(mEngine.GetProgram());
  const engine::ExactCheck::Verdict verdict = mExactCheck->Check(mEngine);
  if (verdict == engine::ExactCheck::Verdict::kFails) return Finding::kNoSolution;
  if (verdict == engine::ExactCheck::Verdict::kUnknown) return Finding::kNothing;
  if (mSpace.HasContinuousValues()) {
    const Program& program = mEngine.GetProgram();
    std::vector<Slot> slots = program.GetDeclared();
    slots.insert(slots.end(), program.GetObserved().begin(), program.GetObserved().end());
    std::vector<RealRange> inner(slots.size());
    for (std::size_t i = 0; i < slots.size(); ++i)
      if (program.GetSlot(slots[i]).kind != Kind::kOpaque) inner[i] = mEngine.GetReals(slots[i]);
    std::vector<RealRange> outer = inner;
    const Finding finding = mNewton.Prove(inner, outer);
    box = mSpace.Capture(mEngine);
    region = mSpace.Capture(mEngine);
    for (std::size_t i = 0; i < slots.size(); ++i) {
      if (program.GetSlot(slots[i]).kind != Kind::kReal) continue;
      box.ranges[i] = inner[i];
      region.ranges[i] = outer[i];
    }
    return finding;
  }
  const auto variables = mSpace.GetVariables().first(mSpace.GetHiddenEnd());
  const bool settled = state == NodeState::kSettled &&
                       std::all_of(variables.begin(), variables.end(), [&](const auto& variable) {
                         return mEngine.IsFixed(variable.slot);
                       });
  return settled && mNewton.HoldsForIntegers() ? Finding::kSolution : Finding::kNothing;
}

}  // namespace zultav::detail
